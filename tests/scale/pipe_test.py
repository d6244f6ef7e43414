#!/usr/bin/python3
"""Tests what scale/spark_pipe.py relies on. usage: pipe_test.py PROGRAM TOOL [TEST]

Spark itself is not run: a partition is played by a process that gives lines to its
command and takes lines from it.
"""

import json
import os
import pathlib
import runpy
import select
import shlex
import subprocess
import sys
import tempfile
import unittest

from shards import write_documents

PROGRAM, TOOL = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
COUNT = 200


# As Spark splits it.
COMMAND = shlex.split(runpy.run_path(str(PROGRAM))["COMMAND"])


class Pipe(unittest.TestCase):
    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory(prefix="dorvex-pipe-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.lines = write_documents(self.folder, COUNT).read_bytes().splitlines(keepends=True)

    def start(self) -> subprocess.Popen:
        environment = {"PATH": f"{TOOL.parent}:{os.environ['PATH']}"}
        return subprocess.Popen(COMMAND, stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment)

    def run_partition(self, lines: list[bytes]) -> tuple[int, list[dict]]:
        with self.start() as pipe:
            output, _ = pipe.communicate(b"".join(lines), timeout=120)
        return pipe.returncode, [json.loads(line) for line in output.splitlines()]

    def test_gives_one_line_for_each_in_their_order(self) -> None:
        status, records = self.run_partition(self.lines)
        self.assertEqual(status, 0)
        self.assertEqual([record["path"] for record in records], [line.decode().strip() for line in self.lines])

    def test_gives_a_line_for_a_document_that_cannot_be_read_and_succeeds(self) -> None:
        status, records = self.run_partition([self.lines[0], b"/no/such/file\n", self.lines[1]])
        self.assertEqual(status, 0)
        self.assertEqual([record["status"] for record in records], ["ok", "io", "ok"])

    def test_fails_when_nothing_can_be_read_at_all(self) -> None:
        alone = self.folder / "bin" / "dorvex"
        alone.parent.mkdir()
        alone.write_text("#!/bin/sh\nexit 3\n")
        alone.chmod(0o755)
        environment = {"PATH": f"{alone.parent}:{os.environ['PATH']}"}
        done = subprocess.run(COMMAND, input=b"", env=environment, check=False)
        self.assertNotEqual(done.returncode, 0)

    def test_gives_nothing_for_an_empty_partition(self) -> None:
        self.assertEqual(self.run_partition([]), (0, []))

    def test_gives_each_line_before_it_gets_the_next(self) -> None:
        with self.start() as pipe:
            assert pipe.stdin is not None and pipe.stdout is not None
            for line in self.lines[:20]:
                pipe.stdin.write(line)
                pipe.stdin.flush()
                self.assertTrue(select.select([pipe.stdout], [], [], 30)[0], "the line was held back")
                record = json.loads(pipe.stdout.readline())
                self.assertEqual(record["path"], line.decode().strip())
            pipe.stdin.close()
            self.assertEqual(pipe.stdout.read(), b"")
            self.assertEqual(pipe.wait(30), 0)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
