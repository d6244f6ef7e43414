#!/usr/bin/python3
"""Reads very many documents while workers are killed at random.

usage: soak.py TOOL DOCUMENTS [--seed N] [--kills-per-second R] [--damaged SHARE]

Writes that many small documents, each with a text of its own and a share of
them damaged, has the tool read them as one batch, and kills workers on the way.
Exits with 1 unless workers were killed, every document has exactly one record, every sound document
whose worker was left alone came out whole, and the memory of the supervisor
stayed flat. Prints the figures as JSON.
"""

import argparse
import collections
import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "support"))

from small_documents import write_document  # noqa: E402  # found through the path above

FLAT = 1.25  # times the memory after a tenth of the run
ROOM_KIB = 8192  # and that much more, for small runs


def damage(path: pathlib.Path, chance: random.Random) -> None:
    content = bytearray(path.read_bytes())
    for _ in range(chance.randint(1, 8)):
        content[chance.randrange(len(content))] = chance.randrange(256)
    path.write_bytes(content)


def children_of(pid: int) -> list[int]:
    """The processes that any thread of a process has started."""
    found = []
    try:
        for listing in pathlib.Path("/proc", str(pid), "task").glob("*/children"):
            found += map(int, listing.read_text(encoding="ascii").split())
    except OSError:
        pass  # it ended meanwhile
    return found


def workers_of(tool: int) -> list[int]:
    return [worker for server in children_of(tool) for worker in children_of(server)]


class Killer(threading.Thread):
    def __init__(self, tool: int, per_second: float, chance: random.Random):
        super().__init__(daemon=True)
        self.tool, self.per_second, self.chance = tool, per_second, chance
        self.kills = 0

    def run(self) -> None:
        while True:
            time.sleep(self.chance.expovariate(self.per_second))
            workers = workers_of(self.tool)
            if not workers:
                continue
            try:
                os.kill(self.chance.choice(workers), signal.SIGKILL)
                self.kills += 1
            except ProcessLookupError:
                pass


def resident_kib(pid: int) -> int:
    for line in pathlib.Path("/proc", str(pid), "status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    return 0


def run_batch(tool: str, folder: pathlib.Path, count: int, options) -> dict:
    listing = folder / "list"
    listing.write_text("".join(f"{folder}/{i}\n" for i in range(count)))
    seen: collections.Counter[int] = collections.Counter()
    faults, statuses, memory = [], collections.Counter(), []
    start = time.monotonic()
    with subprocess.Popen(
        [tool, "batch", "--files-from", str(listing), "--timeout", "5", "--quiet"],
        stdout=subprocess.PIPE,
    ) as process:
        killer = Killer(process.pid, options.kills_per_second, random.Random(options.seed + 1))
        killer.start()
        for line in process.stdout:
            record = json.loads(line)
            number = int(record["path"].rsplit("/", 1)[1])
            seen[number] += 1
            statuses[record["status"]] += 1
            killed = record["status"] == "crash" and record["signal"] == signal.SIGKILL
            if not options.is_damaged(number) and not killed:
                if record["status"] != "ok" or record["texts"] != [f"text {number}"]:
                    faults.append(line.decode())
            if seen.total() % max(count // 100, 1) == 0:
                memory.append(resident_kib(process.pid))
    return {
        "documents": count,
        "records": seen.total(),
        "doubled": sum(1 for times in seen.values() if times > 1),
        "lost": count - len(seen),
        "faults": faults[:5],
        "statuses": dict(statuses),
        "kills": killer.kills,
        "seconds": round(time.monotonic() - start, 1),
        "exit": process.returncode,
        "supervisor_kib": {"after a tenth": memory[len(memory) // 10], "highest": max(memory)},
    }


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tool")
    parser.add_argument("documents", type=int)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--kills-per-second", type=float, default=100)
    parser.add_argument("--damaged", type=float, default=0.2)
    options = parser.parse_args()

    chance = random.Random(options.seed)
    damaged = [chance.random() < options.damaged for _ in range(options.documents)]
    options.is_damaged = damaged.__getitem__
    with tempfile.TemporaryDirectory(prefix="dorvex-soak-") as name:
        folder = pathlib.Path(name)
        for i in range(options.documents):
            write_document(folder / str(i), f"text {i}")
            if damaged[i]:
                damage(folder / str(i), chance)
        figures = run_batch(options.tool, folder, options.documents, options)
    print(json.dumps(figures, indent=2))
    memory = figures["supervisor_kib"]
    flat = memory["highest"] <= memory["after a tenth"] * FLAT + ROOM_KIB
    sound = not (figures["doubled"] or figures["lost"] or figures["faults"])
    tried = figures["kills"] > 0
    return 0 if sound and flat and tried and figures["exit"] in (0, 1) else 1


if __name__ == "__main__":
    sys.exit(main())
