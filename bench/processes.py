"""Times whole processes in turn and writes the medians as JSON.

Start-up: a process that loads the module and unloads it, against one that also
reads a small document. Memory: the peak of reading with the module and with the
plain one. The machine's speed drifts, so the commands of a pair take turns and
only their ratio counts.
"""

import argparse
import json
import os
import pathlib
import statistics
import sys
import time


def run(command):
    """Seconds and peak KiB of one run of a command."""
    start = time.perf_counter()
    pid = os.posix_spawn(command[0], command, os.environ)
    _, status, usage = os.wait4(pid, 0)
    if status != 0:
        sys.exit(f"{command} failed")
    return time.perf_counter() - start, usage.ru_maxrss


def take_turns(commands, runs):
    """Medians of seconds and peak KiB for each of the named commands."""
    figures = {name: [] for name in commands}
    for command in commands.values():
        run(command)
    for _ in range(runs):
        for name, command in commands.items():
            figures[name].append(run(command))
    return {
        name: {
            "seconds": statistics.median(seconds for seconds, _ in taken),
            "peak_kib": statistics.median(peak for _, peak in taken),
        }
        for name, taken in figures.items()
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--samples", type=pathlib.Path, required=True)
    parser.add_argument("--out", type=pathlib.Path, required=True)
    parser.add_argument("--runs", type=int, default=41)
    arguments = parser.parse_args()

    program = str(arguments.build / "bench" / "startup_bench")
    reader = str(arguments.build / "lib" / "dorvex" / "dorvexsr.so")
    plain = str(arguments.build / "plain" / "dorvexsr_plain.so")
    container = str(arguments.build / "lib" / "dorvex" / "unzip.so")
    sample = str(sorted(arguments.samples.glob("*.pages"))[0])
    commands = {
        "load and unload": [program, reader, container],
        "read a small document": [program, reader, container, sample],
        "read a small document, plain": [program, plain, container, sample],
    }
    figures = take_turns(commands, arguments.runs)
    figures["module bytes"] = os.path.getsize(reader)
    arguments.out.write_text(json.dumps(figures, indent=1) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
