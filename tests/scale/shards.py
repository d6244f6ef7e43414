"""What the tests of the programs for clusters share."""

import collections
import json
import pathlib
import sys
import time
from collections.abc import Callable
from typing import TypeVar

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))

from small_documents import write_document  # noqa: E402  # found through the path above

Found = TypeVar("Found")

# Hands the paths to the tool slowly, so that there is a way on which to be killed, and notes each start.
SLOW_TOOL = """#!/bin/sh
echo started >> "{starts}"
while IFS= read -r path; do
  printf '%s\\n' "$path"
  sleep {pause}
done | "{tool}" "$@"
"""


def write_documents(folder: pathlib.Path, count: int) -> pathlib.Path:
    """Documents 0, 1, ... with texts of their own, and the manifest of them."""
    documents = folder / "documents"
    documents.mkdir()
    for number in range(count):
        write_document(documents / str(number), f"text {number}")
    manifest = folder / "manifest"
    manifest.write_text("".join(f"{documents}/{number}\n" for number in range(count)), encoding="utf-8")
    return manifest


def write_slow_tool(folder: pathlib.Path, tool: str, pause: float) -> tuple[pathlib.Path, pathlib.Path]:
    """The tool, and the file of its starts."""
    slow, starts = folder / "slow-dorvex", folder / "starts"
    slow.write_text(SLOW_TOOL.format(tool=tool, starts=starts, pause=pause), encoding="utf-8")
    slow.chmod(0o755)
    return slow, starts


def records_in(folder: pathlib.Path) -> list[dict]:
    shards = sorted(folder.glob("part-*.jsonl"))
    return [json.loads(line) for shard in shards for line in shard.read_bytes().splitlines()]


def assert_each_once(records: list[dict], count: int) -> None:
    """Every document has one record, and in it its own text."""
    seen = collections.Counter(record["path"].rsplit("/", 1)[1] for record in records)
    lost = [number for number in range(count) if str(number) not in seen]
    doubled = [number for number, times in seen.items() if times > 1]
    assert not lost and not doubled and seen.total() == count, f"lost {lost}, doubled {doubled}"
    for record in records:
        number = record["path"].rsplit("/", 1)[1]
        assert record["status"] == "ok" and record["texts"] == [f"text {number}"], record


def wait_for(what: Callable[[], Found | None], seconds: float = 60) -> Found:
    """The first thing it gives that counts as true."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        found = what()
        if found:
            return found
        time.sleep(0.02)
    raise TimeoutError(f"waited {seconds} s for {what.__qualname__}")
