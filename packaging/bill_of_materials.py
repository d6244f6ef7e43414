#!/usr/bin/python3
"""What of others is in a package, from what was linked and compiled.

    bill_of_materials.py BUILD OUT PACKAGE VERSION [FILE...]

writes OUT/copyright and OUT/sbom.spdx.json (SPDX 2.3). BUILD is a folder that
ninja has built; FILE... are the built files of the package, relative to it.
Nothing is listed by hand: a file's shared libraries stand in the file, what was
linked into it or compiled from headers is in ninja's records, and dpkg knows
whose that is and under which licence."""

from __future__ import annotations

import datetime
import functools
import json
import os
import pathlib
import re
import subprocess
import sys
from dataclasses import dataclass

PROJECT = pathlib.Path(__file__).resolve().parent.parent

# Declarations of the kernel's interface; none of their code ends up in a program.
INTERFACES = {"linux-libc-dev"}

# Names of licences in Debian's copyright files, by their SPDX identifiers.
SPDX_NAMES = {
    "expat": "MIT",
    "mit": "MIT",
    "bsd-3-clause": "BSD-3-Clause",
    "bsd": "BSD-3-Clause",
    "bsd-3-clause~google": "BSD-3-Clause",
    "lgpl-2.1": "LGPL-2.1-only",
    "lgpl-2.1+": "LGPL-2.1-or-later",
}


@dataclass(frozen=True)
class Component:
    """A Debian package, or for protobuf the source package that is built along."""

    name: str
    version: str
    linked: str  # "shared" or "compiled in"

    @property
    def copyright_file(self) -> pathlib.Path:
        return pathlib.Path("/usr/share/doc", self.name, "copyright")


def run(*arguments: str, cwd: pathlib.Path | None = None) -> str:
    return subprocess.run(
        arguments, check=True, capture_output=True, text=True, cwd=cwd
    ).stdout


def field(package: str, name: str) -> str:
    return run("dpkg-query", "-W", "-f", f"${{{name}}}\n", package).splitlines()[0]


@functools.cache
def owners(folder: str) -> dict[str, str]:
    """The packages of the files of a folder."""
    found = {}
    search = subprocess.run(["dpkg", "-S", folder + "/*"], capture_output=True, text=True)
    for line in search.stdout.splitlines():
        packages, _, path = line.partition(": ")
        if not packages.startswith("diversion by"):
            found[path] = packages.split(",")[0].split(":")[0]
    return found


def owner(path: pathlib.Path) -> str | None:
    for name in (path, path.resolve()):
        for file in (str(name), str(name).removeprefix("/usr")):
            package = owners(os.path.dirname(file)).get(file)
            if package:
                return package
    return None


def shared_packages(file: pathlib.Path) -> set[str]:
    """Those of the shared libraries that a file asks for itself."""
    needed = set(re.findall(r"NEEDED\s+(\S+)", run("objdump", "-p", str(file))))
    found = set()
    for name, path in re.findall(r"(\S+) => (/\S+)", run("ldd", str(file))):
        if name in needed:
            package = owner(pathlib.Path(path))
            if package is None:
                raise SystemExit(f"{path}, which {file} asks for, is of no Debian package")
            found.add(package)
    return found


def inputs(build: pathlib.Path, target: str) -> list[str]:
    return run("ninja", "-t", "inputs", target, cwd=build).splitlines()


@functools.cache
def headers(build: pathlib.Path) -> dict[str, list[str]]:
    """What each object file was compiled from."""
    found: dict[str, list[str]] = {}
    current: list[str] = []
    for line in run("ninja", "-t", "deps", cwd=build).splitlines():
        if line.startswith("    "):
            current.append(line.strip())
        elif ": #deps" in line:
            current = found.setdefault(line.split(": #deps")[0], [])
    return found


def compiled_packages(build: pathlib.Path, target: str) -> set[str]:
    """Those of the headers and archives that a file was made of."""
    paths: set[str] = set()
    uses_protobuf = False
    for name in inputs(build, target):
        uses_protobuf |= name.endswith("libprotobuf.a")
        if name.endswith(".a") and name.startswith("/"):
            paths.add(name)
        if name.endswith(".o"):
            paths.update(path for path in headers(build).get(name, []) if path.startswith("/usr/"))
    found = {owner(pathlib.Path(path)) for path in paths}
    # Its source package is fetched and built along; this one has the same source.
    return {p for p in found if p} | ({"libprotobuf-dev"} if uses_protobuf else set())


def components(build: pathlib.Path, files: list[str]) -> list[Component]:
    shared: set[str] = set()
    compiled: set[str] = set()
    for file in files:
        if not file.endswith(".a"):
            shared |= shared_packages(build / file)
        compiled |= compiled_packages(build, file)
    sources = {field(package, "source:Package") for package in shared}
    # A header belongs to the shared library of its source, where there is one.
    compiled = {
        p for p in compiled - INTERFACES if field(p, "source:Package") not in sources
    }
    return [
        Component(package, field(package, "Version"), linked)
        for linked, packages in (("compiled in", compiled), ("shared", shared))
        for package in sorted(packages)
    ]


# --- Output -----------------------------------------------------------------


def copyright_text(package: str, found: list[Component]) -> str:
    text = f"{package} was built from the sources of dorvex.\n\n"
    text += (PROJECT / "LICENSE").read_text(encoding="utf-8")
    compiled = [c for c in found if c.linked == "compiled in"]
    shared = [c for c in found if c.linked == "shared"]
    if compiled:
        text += "\nIts files contain code of others, compiled in from these Debian packages:\n"
        text += "".join(f"\n  {c.name} {c.version}" for c in compiled) + "\n"
    if shared:
        text += "\nThey use these Debian packages, which have their own copyright files:\n"
        text += "".join(f"\n  {c.name}" for c in shared) + "\n"
    for c in compiled:
        text += f"\n{'-' * 78}\nThe copyright file of {c.name} {c.version}:\n\n"
        text += c.copyright_file.read_text(encoding="utf-8")
    return text


def declared_licence(component: Component) -> tuple[str, str]:
    """The SPDX expression, and what Debian says for all files of a package."""
    text = component.copyright_file.read_text(encoding="utf-8")
    stanza = re.search(r"^Files: \*\n(?:.+\n)*?License: (\S+)", text, flags=re.M)
    if stanza is None:
        return "NOASSERTION", "see " + str(component.copyright_file)
    return SPDX_NAMES.get(stanza[1].lower(), "NOASSERTION"), stanza[1]


def spdx_id(name: str) -> str:
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def spdx_package(component: Component) -> dict[str, object]:
    expression, words = declared_licence(component)
    return {
        "SPDXID": spdx_id(component.name),
        "name": component.name,
        "versionInfo": component.version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": expression,
        "licenseComments": f"Debian's copyright file: {words}",
        "copyrightText": "NOASSERTION",
        "externalRefs": [
            {
                "referenceCategory": "PACKAGE-MANAGER",
                "referenceType": "purl",
                "referenceLocator": f"pkg:deb/debian/{component.name}@{component.version}",
            }
        ],
    }


def created() -> str:
    """The time of the last commit, so that two builds give one file."""
    epoch = os.environ.get("SOURCE_DATE_EPOCH") or run(
        "git", "log", "-1", "--format=%ct", cwd=PROJECT
    )
    time = datetime.datetime.fromtimestamp(int(epoch), tz=datetime.timezone.utc)
    return time.strftime("%Y-%m-%dT%H:%M:%SZ")


def sbom(package: str, version: str, found: list[Component]) -> dict[str, object]:
    own = {
        "SPDXID": spdx_id(package),
        "name": package,
        "versionInfo": version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NOASSERTION",
        "copyrightText": "NOASSERTION",
    }
    kinds = {"compiled in": "STATIC_LINK", "shared": "DYNAMIC_LINK"}
    relations = [
        {
            "spdxElementId": spdx_id(package),
            "relationshipType": kinds[c.linked],
            "relatedSpdxElement": spdx_id(c.name),
        }
        for c in found
    ]
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"{package}-{version}",
        "documentNamespace": f"urn:dorvex:{package}:{version}",
        "creationInfo": {"created": created(), "creators": ["Tool: bill_of_materials.py"]},
        "documentDescribes": [spdx_id(package)],
        "packages": [own, *(spdx_package(c) for c in found)],
        "relationships": relations,
    }


def main() -> int:
    if len(sys.argv) < 5:
        print(__doc__, file=sys.stderr)
        return 2
    build, out = (pathlib.Path(argument) for argument in sys.argv[1:3])
    package, version = sys.argv[3:5]
    found = components(build, sys.argv[5:])
    out.mkdir(parents=True, exist_ok=True)
    (out / "copyright").write_text(copyright_text(package, found), encoding="utf-8")
    document = json.dumps(sbom(package, version, found), indent=2) + "\n"
    (out / "sbom.spdx.json").write_text(document, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
