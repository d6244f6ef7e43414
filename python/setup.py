"""The version is that of the project; all else stands in pyproject.toml."""

import os
import pathlib
import re

from setuptools import setup


def version() -> str:
    """Set by the build of the packages; otherwise read from the project's file."""
    given = os.environ.get("DORVEX_VERSION")
    if given:
        return given
    project = pathlib.Path(__file__).resolve().parent.parent / "CMakeLists.txt"
    found = re.search(r"project\(dorvex VERSION ([0-9.]+)", project.read_text(encoding="utf-8"))
    if found is None:
        raise RuntimeError(f"{project} states no version")
    return found.group(1)


setup(version=version())
