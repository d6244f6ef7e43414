#!/usr/bin/python3
"""Tests of scale/dask_batch.py. usage: dask_test.py PROGRAM TOOL [TEST]"""

import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest

from distributed import LocalCluster
from shards import assert_each_once, records_in, wait_for, write_documents, write_slow_tool

PROGRAM, TOOL = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:3])
COUNT = 300
CHUNK = 20
# .part-00000003.jsonl.HOST.PROCESS.RANDOM
PARTIAL = re.compile(r"\.part-\d+\.jsonl\..*\.(\d+)\.[0-9a-f]+")


class DaskBatch(unittest.TestCase):
    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory(prefix="dorvex-dask-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.manifest = write_documents(self.folder, COUNT)
        self.shards = self.folder / "shards"

    def command(self, *options: str, tool: object = TOOL) -> list[str]:
        arguments = [str(self.manifest), str(self.shards), "--chunk", str(CHUNK), "--tool", str(tool)]
        return ["/usr/bin/python3", PROGRAM, *arguments, *(options or ("--workers", "2"))]

    def run_program(self, *options: str, tool: object = TOOL) -> subprocess.CompletedProcess:
        command = self.command(*options, tool=tool)
        return subprocess.run(command, capture_output=True, text=True, check=False, timeout=120)

    def worker_on_its_way(self) -> int | None:
        """One that has records, and not yet all of its chunk."""
        for partial in self.shards.glob(".part-*"):
            name = PARTIAL.fullmatch(partial.name)
            try:
                if name and partial.stat().st_size > 0:
                    return int(name[1])
            except FileNotFoundError:
                pass
        return None

    def assert_complete(self) -> None:
        assert_each_once(records_in(self.shards), COUNT)
        self.assertEqual(len(list(self.shards.glob("part-*"))), COUNT // CHUNK)
        self.assertEqual(list(self.shards.glob(".*")), [])

    def test_loses_and_doubles_nothing_when_a_worker_is_killed(self) -> None:
        slow, starts = write_slow_tool(self.folder, TOOL, 0.02)
        with subprocess.Popen(self.command(tool=slow), stderr=subprocess.PIPE, text=True) as program:
            worker = wait_for(self.worker_on_its_way)
            os.kill(worker, signal.SIGKILL)
            _, messages = program.communicate(timeout=120)
        self.assertEqual(program.returncode, 0, messages)
        self.assertGreater(len(starts.read_text().splitlines()), COUNT // CHUNK, "nothing was begun again")
        self.assert_complete()

    def test_goes_on_after_it_was_killed_itself(self) -> None:
        slow, starts = write_slow_tool(self.folder, TOOL, 0.02)
        with subprocess.Popen(self.command(tool=slow), stderr=subprocess.DEVNULL, start_new_session=True) as program:
            wait_for(lambda: len(list(self.shards.glob("part-*"))) >= 2)
            os.killpg(program.pid, signal.SIGKILL)
        before = {shard: shard.stat().st_mtime_ns for shard in self.shards.glob("part-*")}
        self.assertLess(len(before), COUNT // CHUNK)
        starts.unlink()
        done = self.run_program(tool=slow)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(starts.read_text().splitlines()), COUNT // CHUNK - len(before))
        self.assertEqual(before, {shard: shard.stat().st_mtime_ns for shard in before})
        self.assert_complete()

    def test_uses_a_cluster_that_is_there(self) -> None:
        with LocalCluster(n_workers=1, threads_per_worker=2, dashboard_address=None) as cluster:
            done = self.run_program("--scheduler", cluster.scheduler_address)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assert_complete()

    def test_says_so_when_documents_were_not_read(self) -> None:
        (self.folder / "documents" / "7").write_bytes(b"no package")
        done = self.run_program("--workers", "2", "--", "--timeout", "5")
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn(f"{COUNT} documents, {COUNT - 1} read whole, 0 chunks failed", done.stderr)
        self.assertEqual([r["path"][-2:] for r in records_in(self.shards) if r["status"] != "ok"], ["/7"])

    def test_leaves_no_file_of_a_chunk_whose_tool_fails(self) -> None:
        done = self.run_program(tool="/bin/false")  # its status is that of a batch, but there are no records
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertIn(f"{COUNT // CHUNK} chunks failed", done.stderr)
        self.assertEqual([entry.name for entry in self.shards.iterdir()], ["run.json"])

    def test_refuses_a_folder_of_another_manifest(self) -> None:
        self.assertEqual(self.run_program().returncode, 0)
        with self.manifest.open("a") as manifest:
            manifest.write("one more\n")
        done = self.run_program()
        self.assertEqual(done.returncode, 2)
        self.assertIn("another manifest", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
