"""Writes tables to CSV and says how many cells a second that is, beside Python's csv module.

    tables.py --build DIR [--runs N] [--out FILE]

For each document: the tool with shown and with raw values, and Python's csv writing the
very same cells, all to nowhere. Seconds are those of the processor, of all
processes of the tool together; the peak is that of the largest process, beside the bytes
of the object streams.
"""

import argparse
import csv
import json
import os
import pathlib
import statistics
import subprocess
import sys
import time

MEBIBYTE = 1 << 20


def convert(tool, document, values):
    """Seconds of processor time and peak bytes of one run of the tool."""
    command = [tool, "convert", "--to", "csv", "--values", values, str(document)]
    nowhere = (os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)
    pid = os.posix_spawn(tool, command, os.environ, file_actions=[nowhere])
    _, status, usage = os.wait4(pid, 0)
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{command} failed")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def yardstick(tool, document, runs):
    """How many cells there are, how many bytes of CSV, and the seconds of csv.writer."""
    command = [tool, "convert", "--to", "csv", str(document)]
    written = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout
    rows = list(csv.reader(written.decode().splitlines()))
    seconds = []
    for _ in range(runs):
        with open(os.devnull, "w", encoding="utf-8", newline="") as nowhere:
            start = time.process_time()
            csv.writer(nowhere).writerows(rows)
            seconds.append(time.process_time() - start)
    return {"cells": sum(map(len, rows)), "csv_bytes": len(written), "seconds": seconds}


def measure(tool, document, runs):
    kind, rows, stream = document.stem.split("-")
    # In a process of its own: what is started by a process of much memory counts that as
    # its peak.
    script = [sys.executable, __file__, "--yardstick", str(document), "--runs", str(runs)]
    beside = json.loads(subprocess.run([*script, "--tool", tool], check=True,
                                       stdout=subprocess.PIPE).stdout)
    taken = {"shown": [], "raw": [], "python": beside.pop("seconds")}
    peak = 0
    for _ in range(runs):
        for values in ("shown", "raw"):
            seconds, bytes_used = convert(tool, document, values)
            taken[values].append(seconds)
            peak = max(peak, bytes_used)
    seconds = {way: statistics.median(all_runs) for way, all_runs in taken.items()}
    return {"kind": kind, "rows": int(rows), "stream_bytes": int(stream), "peak_bytes": peak,
            "seconds": seconds, **beside}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, default=pathlib.Path("build/release"))
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--out", type=pathlib.Path)
    parser.add_argument("--yardstick", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("--tool", help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    if arguments.yardstick:
        print(json.dumps(yardstick(arguments.tool, arguments.yardstick, arguments.runs)))
        return
    folder = arguments.build / "bench" / "tables"
    if not folder.exists():
        program = str(arguments.build / "bench" / "dorvex_content_tables_bench")
        subprocess.run([program, f"--write_documents={folder}"], check=True)
    tool = str((arguments.build / "bin" / "dorvex").resolve())
    figures = []
    print("million cells a second; MiB of CSV a second; MiB beyond the object streams")
    print(f"{'kind':<12}{'rows':>8}{'shown':>7}{'raw':>7}{'python':>8}{'MiB/s':>7}{'beyond':>8}")
    by_size = sorted(folder.glob("*.numbers"), key=lambda path: (len(path.stem), path.stem))
    for document in by_size:
        one = measure(tool, document, arguments.runs)
        figures.append(one)
        speed = {way: one["cells"] / s / 1e6 for way, s in one["seconds"].items()}
        flow = one["csv_bytes"] / one["seconds"]["shown"] / MEBIBYTE
        beyond = (one["peak_bytes"] - one["stream_bytes"]) / MEBIBYTE
        print(f"{one['kind']:<12}{one['rows']:>8}{speed['shown']:>7.2f}{speed['raw']:>7.2f}"
              f"{speed['python']:>8.2f}{flow:>7.1f}{beyond:>8.1f}", flush=True)
    if arguments.out:
        arguments.out.write_text(json.dumps(figures, indent=1) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
