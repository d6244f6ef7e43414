#!/usr/bin/python3
"""Reads the documents of a manifest on a Dask cluster.

usage: dask_batch.py MANIFEST FOLDER [-- OPTION OF dorvex batch...]

The manifest has one path to a line and, like the documents and the folder, the
same name on every machine. Each chunk of it becomes one file of records,
FOLDER/part-NUMBER.jsonl, which appears whole or not at all. What a lost worker had
begun is begun again elsewhere. A run that was ended is gone on with by the same
command: chunks that have their file are left out.

Exit status: 0 every document of this run was read whole, 1 some were not and their
records say why, 2 bad usage, 3 some chunks have no file.
"""

import argparse
import contextlib
import dataclasses
import hashlib
import itertools
import json
import os
import pathlib
import socket
import subprocess
import sys
import tempfile
from collections.abc import Iterator
from typing import IO

from distributed import Client, Future, LocalCluster, as_completed

CHUNK = 1000  # documents
TRIES = 3  # of a chunk whose tool fails; a lost worker does not count
AHEAD = 4  # chunks that wait at the scheduler, for each thread of the cluster


@dataclasses.dataclass(frozen=True)
class Chunk:
    """Lines of a manifest that stand together."""

    number: int
    start: int  # bytes from the manifest's beginning
    size: int  # bytes


@dataclasses.dataclass(frozen=True)
class Job:
    """What a worker has to know besides the chunk."""

    manifest: str
    folder: str
    tool: str
    options: tuple[str, ...]


@dataclasses.dataclass(frozen=True)
class Counts:
    documents: int = 0
    read: int = 0

    def __add__(self, other: "Counts") -> "Counts":
        return Counts(self.documents + other.documents, self.read + other.read)


def shard_of(folder: str | pathlib.Path, chunk: Chunk) -> pathlib.Path:
    return pathlib.Path(folder, f"part-{chunk.number:08}.jsonl")


def read_chunk(job: Job, chunk: Chunk) -> Counts:
    """Runs in a worker. Raises when the tool fails or a record is missing."""
    shard = shard_of(job.folder, chunk)
    partial = shard.with_name(f".{shard.name}.{socket.gethostname()}.{os.getpid()}.{os.urandom(4).hex()}")
    try:
        with partial.open("xb", buffering=0) as records:
            counts = copy_records(job, chunk, records)
            os.fsync(records.fileno())
        partial.rename(shard)  # onto the same records, if a worker that was thought lost came first
    finally:
        partial.unlink(missing_ok=True)
    return counts


def copy_records(job: Job, chunk: Chunk, records: IO[bytes]) -> Counts:
    # The records go through this process so that the tool ends with it: a pipe breaks, a file would not.
    command = [job.tool, "batch", "--files-from", "-", "--quiet", "--jobs", "1", *job.options]
    counts = Counts()
    with paths_of(job.manifest, chunk) as paths:
        expected = sum(1 for line in paths if line.rstrip(b"\n"))
        paths.seek(0)
        with subprocess.Popen(command, stdin=paths, stdout=subprocess.PIPE) as tool:
            assert tool.stdout is not None
            for line in tool.stdout:
                records.write(line)
                # Within a string the quotes would be escaped.
                counts += Counts(1, int(b'"status":"ok"' in line))
    if tool.returncode not in (0, 1):
        raise RuntimeError(f"{job.tool} ended with {tool.returncode}")
    if counts.documents != expected:
        raise RuntimeError(f"{counts.documents} records for {expected} documents")
    return counts


@contextlib.contextmanager
def paths_of(manifest: str, chunk: Chunk) -> Iterator[IO[bytes]]:
    """The chunk's lines as a file."""
    with tempfile.TemporaryFile() as paths, open(manifest, "rb") as whole:
        whole.seek(chunk.start)
        paths.write(whole.read(chunk.size))
        paths.seek(0)
        yield paths


def chunks_of(manifest: pathlib.Path, documents: int) -> Iterator[Chunk]:
    """The manifest's chunks, found as they are needed: it may have a billion lines."""
    with manifest.open("rb") as lines:
        start = 0
        for number in itertools.count():
            size = sum(len(line) for line in itertools.islice(lines, documents))
            if size == 0:
                return
            yield Chunk(number, start, size)
            start += size


def digest(manifest: pathlib.Path) -> str:
    sha256 = hashlib.sha256()
    with manifest.open("rb") as content:
        while block := content.read(1 << 20):
            sha256.update(block)
    return sha256.hexdigest()


def claim(folder: pathlib.Path, manifest: pathlib.Path, documents: int) -> None:
    """Sees to it that the folder holds the chunks of one manifest, cut in one way."""
    run = {"manifest_sha256": digest(manifest), "chunk": documents}
    folder.mkdir(parents=True, exist_ok=True)
    note = folder / "run.json"
    if not note.exists():
        partial = folder / f".run.json.{os.getpid()}"
        partial.write_text(json.dumps(run) + "\n", encoding="utf-8")
        partial.rename(note)
    elif json.loads(note.read_text(encoding="utf-8")) != run:
        raise ValueError(f"{folder} holds the records of another manifest, or of chunks of another size")


def run_chunks(client: Client, job: Job, chunks: Iterator[Chunk]) -> tuple[Counts, int]:
    """What was counted, and the number of chunks that failed."""
    run = os.urandom(4).hex()  # keys are shared by all who use the scheduler

    def submit(chunk: Chunk) -> Future:
        key = f"part-{chunk.number:08}-{run}"
        future: Future = client.submit(read_chunk, job, chunk, key=key, retries=TRIES - 1)
        return future

    def more(waiting: int) -> list[Future]:
        room = AHEAD * max(sum(client.nthreads().values()), 1) - waiting
        return [submit(chunk) for chunk in itertools.islice(chunks, max(room, 0))]

    running = as_completed(more(0))
    counts, failures = Counts(), 0
    for future in running:
        if future.status == "finished":
            counts += future.result()
        else:
            failures += 1
            print(f"{future.key}: {future.exception()}", file=sys.stderr)
        running.update(more(running.count()))  # workers may have come or gone
    return counts, failures


def remove_partials(folder: pathlib.Path) -> None:
    """What lost workers left."""
    for partial in folder.glob(".part-*"):
        partial.unlink(missing_ok=True)


@contextlib.contextmanager
def connect(scheduler: str | None, workers: int) -> Iterator[Client]:
    if scheduler:
        with Client(scheduler) as client:
            yield client
        return
    with LocalCluster(n_workers=workers, threads_per_worker=1, dashboard_address=None) as cluster:
        with Client(cluster) as client:
            yield client


def parse(arguments: list[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        description=__doc__.splitlines()[0], epilog="What stands behind -- are options of dorvex batch."
    )
    parser.add_argument("manifest", type=pathlib.Path)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--scheduler", help="address of a cluster; without, one is made on this machine")
    parser.add_argument("--workers", type=int, default=os.cpu_count(), help="of the cluster that is made")
    parser.add_argument("--chunk", type=int, default=CHUNK, help="documents to a file of records (%(default)s)")
    parser.add_argument("--tool", default="dorvex", help="where it is not on the path of the workers")
    end = arguments.index("--") if "--" in arguments else len(arguments)
    options = parser.parse_args(arguments[:end])
    options.for_tool = tuple(arguments[end + 1 :])
    if options.chunk < 1 or options.workers < 1:
        parser.error("at least one worker, and one document to a chunk")
    return options


def main() -> int:
    options = parse(sys.argv[1:])
    manifest, folder = options.manifest.absolute(), options.folder.absolute()
    try:
        claim(folder, manifest, options.chunk)
    except (OSError, ValueError) as error:
        print(error, file=sys.stderr)
        return 2
    job = Job(str(manifest), str(folder), options.tool, options.for_tool)
    chunks = (c for c in chunks_of(manifest, options.chunk) if not shard_of(folder, c).exists())
    with connect(options.scheduler, options.workers) as client:
        counts, failures = run_chunks(client, job, chunks)
    remove_partials(folder)
    print(f"{counts.documents} documents, {counts.read} read whole, {failures} chunks failed", file=sys.stderr)
    if failures:
        return 3
    return 0 if counts.read == counts.documents else 1


if __name__ == "__main__":
    sys.exit(main())
