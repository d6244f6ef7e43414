#!/usr/bin/python3
"""Runs the recipes of a document and holds their output against what it says.

usage: run_recipes.py DOCUMENT TOOL SAMPLES [PART OF A HEADING]

A recipe is a heading with a block of sh and, behind it, a block of text that is
its standard output. Each runs in a folder of its own that holds the samples,
with the tool on the path. Exits with 1 at a recipe that fails or says something
else, and where there is none.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

RECIPE = re.compile(r"^## (.+?)$(?:(?!^## ).)*?^```sh\n(.*?)^```$\s*^```text\n(.*?)^```$", re.M | re.S)


def run(script: str, tool: pathlib.Path, samples: pathlib.Path) -> subprocess.CompletedProcess:
    with tempfile.TemporaryDirectory(prefix="dorvex-recipe-") as folder:
        shutil.copytree(
            samples, pathlib.Path(folder, "samples"), ignore=shutil.ignore_patterns("*.json", "*.cpp", "*.h", "*.txt")
        )
        environment = dict(os.environ, PATH=f"{tool.parent}:{os.environ['PATH']}", HOME=folder)
        return subprocess.run(
            ["/bin/bash", "-eu", "-o", "pipefail", "-c", script],
            cwd=folder, env=environment, capture_output=True, text=True, check=False, timeout=120,
        )


def main() -> int:
    document, tool, samples = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
    wanted = sys.argv[4] if len(sys.argv) > 4 else ""
    count = failures = 0
    for heading, script, expected in RECIPE.findall(document.read_text(encoding="utf-8")):
        if wanted not in heading:
            continue
        count += 1
        done = run(script, tool, samples)
        if done.returncode != 0 or done.stdout != expected:
            failures += 1
            print(f"--- {heading}: status {done.returncode}\n{done.stdout}{done.stderr}")
    headings = document.read_text(encoding="utf-8").count("\n## ")
    if not wanted and count != headings:
        print(f"{headings} headings, but {count} recipes")
        return 1
    print(f"{count} recipes, {failures} failed")
    return 0 if count > 0 and failures == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
