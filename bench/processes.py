"""Times whole processes in turn and writes the medians as JSON.

Start-up: a process that loads the module and unloads it, against one that also
reads a small document; and the tool from start to exit, against taking the same
document's members out of their zip. Memory: the peak of reading a large document
with the module and with the plain one. Growth: reading a document a hundred times as
large. Throughput: the tool over a list of 2,000
real documents, with one worker and with two, against the bare reader, which finds
them in memory. The machine's speed drifts, so the commands of a pair take turns and
only their ratio counts; where others work on it, that of the processor time.
"""

import argparse
import itertools
import json
import os
import pathlib
import shutil
import statistics
import sys
import tempfile
import time


LISTED_DOCUMENTS = 2000

# The second is 100 times as large as the first, and read so many times.
PAIRS = (
    ("objects-3k", "objects-300k", 5),
    ("rows-10k", "rows-1000k", 8),
    ("storages-4k", "storages-400k", 5),
    ("members-30", "members-3000", 20),
    ("text-500k", "text-50000k", 8),
)


def run(command, allowed=(0,)):
    """Seconds, processor seconds and peak KiB of a command; what it prints is lost."""
    start = time.perf_counter()
    nowhere = (os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)
    pid = os.posix_spawn(command[0], command, os.environ, file_actions=[nowhere])
    _, status, usage = os.wait4(pid, 0)
    if os.waitstatus_to_exitcode(status) not in allowed:
        sys.exit(f"{command} failed")
    processor = usage.ru_utime + usage.ru_stime
    return time.perf_counter() - start, processor, usage.ru_maxrss


def take_turns(commands, runs, allowed=(0,)):
    """Medians of what run gives for each of the named commands."""
    figures = {name: [] for name in commands}
    for command in commands.values():
        run(command, allowed)
    for _ in range(runs):
        for name, command in commands.items():
            figures[name].append(run(command, allowed))
    return {
        name: {
            key: statistics.median(values)
            for key, values in zip(("seconds", "processor_seconds", "peak_kib"), zip(*taken))
        }
        for name, taken in figures.items()
    }


def throughput(build, corpus, runs):
    """The tool over the corpus, repeated. Some of its files are no documents."""
    documents = sorted(str(path) for path in (corpus / "documents").iterdir())
    with tempfile.NamedTemporaryFile("w", encoding="utf-8", suffix=".txt") as listing:
        repeated = itertools.islice(itertools.cycle(documents), LISTED_DOCUMENTS)
        listing.write("".join(f"{path}\n" for path in repeated))
        listing.flush()
        batch = [str(build / "bin" / "dorvex"), "batch", "--quiet", "--files-from", listing.name]
        commands = {f"{jobs} jobs": [*batch, "--jobs", str(jobs)] for jobs in (1, 2)}
        commands["bare reader"] = [str(build / "bench" / "dorvex_bench"), f"--read={listing.name}"]
        return take_turns(commands, runs, allowed=(0, 1))


def growth(program, generated, runs):
    """How many times as long as the small document of each pair the large one takes.

    A reader gives nothing of a document back, so that in a process that reads many, as in
    a worker, each finds fresh memory. The first reading of each process goes off.
    """
    ratios = {}
    with tempfile.TemporaryDirectory() as folder:
        def reading(name, times):
            listing = pathlib.Path(folder) / f"{name}-{times}"
            listing.write_text(f"{generated / name}.zip\n" * times, encoding="utf-8")
            return [program, f"--read={listing}"]

        for small, large, times in PAIRS:
            readings = {small: 100 * times, large: times}
            commands = {(name, count): reading(name, count)
                        for name, most in readings.items() for count in (1, most)}
            taken = {}
            figures = take_turns(commands, runs)
            for name, most in readings.items():
                first, all_of_them = (figures[name, count]["processor_seconds"]
                                      for count in (1, most))
                taken[name] = (all_of_them - first) / (most - 1)
            ratios[large] = {"times": taken[large] / taken[small], "of": small}
    return ratios


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--samples", type=pathlib.Path, required=True)
    parser.add_argument("--generated", type=pathlib.Path, required=True)
    parser.add_argument("--corpus", type=pathlib.Path, required=True)
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
    unzip = shutil.which("unzip")
    if unzip:
        tool = str(arguments.build / "bin" / "dorvex")
        commands = {"text": [tool, "text", sample], "unzip": [unzip, "-p", sample]}
        figures["start to exit"] = take_turns(commands, arguments.runs)
    figures["memory"] = {}
    for large in ("objects-300k", "rows-1000k", "text-50000k"):
        document = str(arguments.generated / f"{large}.zip")
        ways = {"whole": [program, reader, container, document],
                "plain": [program, plain, container, document]}
        figures["memory"][large] = take_turns(ways, 1)
    bench = str(arguments.build / "bench" / "dorvex_bench")
    figures["growth"] = growth(bench, arguments.generated, 7)
    if (arguments.corpus / "documents").exists():
        figures["throughput"] = throughput(arguments.build, arguments.corpus, 7)
    figures["module bytes"] = os.path.getsize(reader)
    arguments.out.write_text(json.dumps(figures, indent=1) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
