"""Prints the ratios of a run of the benchmarks and draws its plot.

    report.py RESULTS
"""

import json
import pathlib
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402  the backend is chosen first


def medians(stages):
    """Milliseconds and stream bytes of each benchmark, by its name."""
    found = {}
    for row in stages["benchmarks"]:
        if row.get("aggregate_name") != "median":
            continue
        name = row["run_name"].removesuffix("/iterations:1")
        scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0}[row["time_unit"]]
        found[name] = {
            "ms": row["cpu_time"] * scale,
            "bytes": row.get("stream_bytes", 0.0),
            "rate": row.get("bytes_per_second", 0.0),
        }
    return found


def documents(figures):
    return [name.removeprefix("whole/") for name in figures if name.startswith("whole/")]


def print_ratios(figures, processes, out):
    def line(text):
        print(text)
        out.write(text + "\n")

    line(f"{'document':34} {'stream':>10} {'whole':>9} {'/limit':>7} {'/floor':>7} {'plain/':>7}")
    for name in documents(figures):
        ways = ("whole", "plain", "floor", "limit")
        whole, plain, floor, limit = (figures[f"{way}/{name}"]["ms"] for way in ways)
        line(
            f"{name:34} {figures[f'whole/{name}']['bytes'] / 1e6:7.2f} MB {whole:6.2f} ms"
            f" {whole / limit:7.2f} {whole / floor:7.2f} {plain / whole:7.1f}"
        )
    for large, growth in processes["growth"].items():
        line(f"{large} takes {growth['times']:.0f} times as long as {growth['of']}")
    if "containerStage" in figures:
        ratio = figures["containerStage"]["ms"] / figures["decompression"]["ms"]
        line(f"container stage / decompression: {ratio:.2f}")
    streams = {name: figures[f"whole/{name}"]["bytes"] / 1024 for name in processes["memory"]}
    for name, ways in processes["memory"].items():
        whole, plain = (ways[way]["peak_kib"] for way in ("whole", "plain"))
        line(
            f"peak memory for {name}: {whole / streams[name]:.1f} times the object streams,"
            f" plain {plain / streams[name]:.1f} times"
        )
    if "throughput" in processes:
        taken = processes["throughput"]
        one, two = (taken[f"{jobs} jobs"]["seconds"] for jobs in (1, 2))
        line(f"2,000 real documents: {2000 / one:.0f} a second with one job, {one / two:.2f} times with two")
        for key in ("seconds", "processor_seconds"):
            ratio = taken["bare reader"][key] / taken["1 jobs"][key]
            line(f"one job / bare reader: {ratio:.2f} of its documents, by {key.replace('_', ' ')}")
    base = processes["load and unload"]["seconds"]
    small = processes["read a small document"]["seconds"]
    line(f"small document, process to exit / load and unload: {small / base:.2f}")
    if "start to exit" in processes:
        ways = processes["start to exit"]
        for key in ("seconds", "processor_seconds"):
            text, unzip = ways["text"][key], ways["unzip"][key]
            line(f"text of a small document: {text * 1e3:.1f} ms, {text / unzip:.1f} times unzip -p, by {key.replace('_', ' ')}")
    line(f"module: {processes['module bytes'] / 1e6:.1f} MB")


def draw(figures, path):
    """Bars for each stage, and time over the size of generated documents."""
    stages = [name for name in figures if "/" not in name or name.split("/")[0] in
              ("objectWalk", "normalisation")]
    left, right = plt.subplots(1, 2, figsize=(12, 4.5))[1]
    left.barh(stages, [figures[name]["rate"] / 1e6 for name in stages], color="#4477aa")
    left.set_xscale("log")
    left.set_xlabel("MB/s")
    left.set_title("Stages")

    sizes = ["objects-3k", "objects-30k", "objects-300k"]
    for way, colour in (("whole", "#4477aa"), ("floor", "#888888"), ("plain", "#cc6677")):
        right.plot(
            [figures[f"{way}/{name}"]["bytes"] / 1e6 for name in sizes],
            [figures[f"{way}/{name}"]["ms"] for name in sizes],
            marker="o", color=colour, label=way,
        )
    right.set_xscale("log")
    right.set_yscale("log")
    right.set_xlabel("object streams, MB")
    right.set_ylabel("first fill, ms")
    right.set_title("Generated documents")
    right.legend()
    plt.tight_layout()
    plt.savefig(path, dpi=120)


def main():
    results = pathlib.Path(sys.argv[1])
    processes = json.loads((results / "processes.json").read_text(encoding="utf-8"))
    figures = {}
    for path in sorted(results.glob("stages-*.json")):
        figures |= medians(json.loads(path.read_text(encoding="utf-8")))
    with open(results / "ratios.txt", "w", encoding="utf-8") as out:
        print_ratios(figures, processes, out)
    draw(figures, results / "performance.png")


if __name__ == "__main__":
    main()
