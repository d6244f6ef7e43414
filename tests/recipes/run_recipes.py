#!/usr/bin/python3
"""Runs the recipes of documents and holds their output against what they say.

usage: run_recipes.py TOOL SAMPLES DOCUMENT...

A recipe is a heading with a block of sh and, behind it, a block of text that is
its standard output. All run in one folder, one after the other, as a reader
does: it holds the samples as they are, and the tool is on the path. Exits with
1 at a recipe that fails or says something else, where a heading has none, and
where one has left something among the samples.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

RECIPE = re.compile(r"^## (.+?)$(?:(?!^## ).)*?^```sh\n(.*?)^```$\s*^```text\n(.*?)^```$", re.M | re.S)


def run(script: str, tool: pathlib.Path, folder: str) -> subprocess.CompletedProcess:
    environment = dict(os.environ, PATH=f"{tool.parent}:{os.environ['PATH']}", HOME=folder)
    return subprocess.run(
        ["/bin/bash", "-eu", "-o", "pipefail", "-c", script],
        cwd=folder, env=environment, capture_output=True, text=True, check=False, timeout=120,
    )


def run_all(document: pathlib.Path, tool: pathlib.Path, folder: str) -> bool:
    page = document.read_text(encoding="utf-8")
    recipes = RECIPE.findall(page)
    failures = 0
    for heading, script, expected in recipes:
        done = run(script, tool, folder)
        if done.returncode != 0 or done.stdout != expected:
            failures += 1
            print(f"--- {heading}: status {done.returncode}\n{done.stdout}{done.stderr}")
    headings = page.count("\n## ")
    print(f"{document.name}: {headings} headings, {len(recipes)} recipes, {failures} failed")
    return failures == 0 and len(recipes) == headings > 0


def main() -> int:
    tool, samples, *documents = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    with tempfile.TemporaryDirectory(prefix="dorvex-recipes-") as folder:
        copy = pathlib.Path(folder, "samples")
        shutil.copytree(samples, copy)
        good = all([run_all(document, tool, folder) for document in documents])
        left = sorted(set(os.listdir(copy)) - set(os.listdir(samples)))
    if left:
        print(f"left among the samples: {left}")
    return 0 if documents and good and not left else 1


if __name__ == "__main__":
    sys.exit(main())
