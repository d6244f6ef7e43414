#!/usr/bin/python3
"""Tests of scale/slurm_array.sh on a cluster of one node. usage: slurm_test.py SCRIPT TOOL [TEST]

Exits with 77, which is a skip, where Slurm is not installed.
"""

import fcntl
import pathlib
import sys
import tempfile
import time
import unittest

from shards import assert_each_once, records_in, wait_for, write_documents, write_slow_tool
from slurm_cluster import SlurmCluster, missing_programs

SCRIPT, TOOL = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
COUNT = 200
SKIPPED = 77


class SlurmArray(unittest.TestCase):
    cluster: SlurmCluster

    @classmethod
    def setUpClass(cls) -> None:
        temporary = tempfile.TemporaryDirectory(prefix="dorvex-slurm-")
        cls.addClassCleanup(temporary.cleanup)
        cls.cluster = SlurmCluster(pathlib.Path(temporary.name))
        cls.enterClassContext(cls.cluster)

    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory(prefix="dorvex-slurm-test-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.manifest = write_documents(self.folder, COUNT)
        self.shards = self.folder / "shards"

    def submit(self, array: str, *options: str, tool: pathlib.Path = TOOL) -> str:
        """The job's number."""
        log = f"--output={self.folder}/%A-%a.log"
        export = f"--export=ALL,DORVEX={tool}"
        arguments = [str(SCRIPT), str(self.manifest), str(self.shards), *options]
        return self.cluster.run("sbatch", "--parsable", f"--array={array}", log, export, *arguments).strip()

    def states(self, job: str) -> dict[str, str]:
        """The state of each task that there is, by its number."""
        lines = self.cluster.run("squeue", "--array", "--noheader", "--states=all", "--format=%K %T", f"--jobs={job}")
        return dict(line.split(" ", 1) for line in lines.splitlines())

    def wait(self, job: str) -> set[str]:
        """The states in which its tasks ended."""
        running = {"PENDING", "CONFIGURING", "RUNNING", "COMPLETING", "REQUEUED"}
        wait_for(lambda: not running & set(self.states(job).values()), 120)
        return set(self.states(job).values())

    def messages(self) -> str:
        return "".join(log.read_text() for log in self.folder.glob("*.log"))

    def records_of(self, task: int, tasks: int) -> pathlib.Path:
        return self.shards / f"part-{task}-of-{tasks}.jsonl"

    def test_reads_each_document_in_one_of_its_tasks(self) -> None:
        self.assertEqual(self.wait(self.submit("0-3")), {"COMPLETED"}, self.messages())
        self.assertEqual(len(list(self.shards.glob("part-*-of-4.jsonl"))), 4)
        assert_each_once(records_in(self.shards), COUNT)

    def test_goes_on_where_a_requeued_task_was(self) -> None:
        slow, starts = write_slow_tool(self.folder, str(TOOL), 0.02)
        job = self.submit("0-1", tool=slow)
        records = self.records_of(0, 2)
        wait_for(lambda: records.exists() and len(records.read_bytes().splitlines()) >= 10)
        self.cluster.run("scontrol", "requeue", f"{job}_0")
        wait_for(lambda: self.states(job).get("0") == "PENDING")
        before = records.read_bytes()
        whole = before[: before.rindex(b"\n") + 1]
        self.assertLess(len(whole.splitlines()), COUNT // 3, "the task had ended before")
        # Slurm would wait for two minutes.
        self.cluster.run("scontrol", "update", f"JobId={job}_0", "StartTime=now")
        self.assertEqual(self.wait(job), {"COMPLETED"}, self.messages())
        self.assertTrue(records.read_bytes().startswith(whole), "it began anew")
        self.assertEqual(len(starts.read_text().splitlines()), 3)
        assert_each_once(records_in(self.shards), COUNT)

    def test_submits_again_only_the_task_that_was_killed(self) -> None:
        slow, _ = write_slow_tool(self.folder, str(TOOL), 0.02)
        job = self.submit("0-2", tool=slow)
        records = self.records_of(1, 3)
        wait_for(lambda: records.exists() and records.stat().st_size > 0)
        self.cluster.run("scancel", "--signal=KILL", "--full", f"{job}_1")
        self.assertEqual(len(self.wait(job)), 2, self.messages())
        self.assertLess(len(records_in(self.shards)), COUNT)
        self.assertEqual(self.wait(self.submit("1")), {"COMPLETED"}, self.messages())
        assert_each_once(records_in(self.shards), COUNT)

    def test_waits_for_what_is_left_of_its_former_self(self) -> None:
        self.shards.mkdir()
        with self.records_of(0, 1).open("wb") as records:
            fcntl.flock(records, fcntl.LOCK_EX)
            job = self.submit("0")
            wait_for(lambda: self.states(job).get("0") == "RUNNING")
            time.sleep(1)
            self.assertEqual(self.states(job), {"0": "RUNNING"}, self.messages())
            self.assertEqual(records_in(self.shards), [])
        self.assertEqual(self.wait(job), {"COMPLETED"}, self.messages())
        assert_each_once(records_in(self.shards), COUNT)

    def test_completes_though_a_document_was_not_read(self) -> None:
        (self.folder / "documents" / "7").write_bytes(b"no package")
        self.assertEqual(self.wait(self.submit("0-1", "--timeout", "5")), {"COMPLETED"}, self.messages())
        self.assertEqual([r["path"][-2:] for r in records_in(self.shards) if r["status"] != "ok"], ["/7"])

    def test_fails_when_nothing_can_be_read_at_all(self) -> None:
        self.assertEqual(self.wait(self.submit("0-1", "--module", "/no/such/module")), {"FAILED"}, self.messages())

    def test_refuses_a_task_that_has_no_shard(self) -> None:
        self.assertEqual(self.wait(self.submit("0-1")), {"COMPLETED"}, self.messages())
        self.assertEqual(self.wait(self.submit("2")), {"FAILED"})
        self.assertIn("has 2 shards, and no shard 2", self.messages())
        assert_each_once(records_in(self.shards), COUNT)


if __name__ == "__main__":
    absent = missing_programs()
    if absent:
        print(f"skipped: no {', '.join(absent)}; install slurm-wlm and munge")
        sys.exit(SKIPPED)
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
