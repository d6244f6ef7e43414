#!/usr/bin/python3
"""Reads what dorvex convert writes with other programs, and compares.

usage: read_back.py TOOL SCHEMA DOCUMENT_OR_FOLDER...

Of each document: its JSON is valid by the schema; its Markdown of both flavours, read by
pandoc, has every paragraph, list level and table cell of the JSON; its HTML has no error
by tidy; its CSV tables, read by Python, have the cells of the JSON. Exits with 1 and says
what is missing, with 77 where pandoc or tidy is not installed.
"""

import csv
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unicodedata

import jsonschema

ENDINGS = (".key", ".pages", ".numbers")
QUOTES = {"DoubleQuote": "\u201c\u201d", "SingleQuote": "\u2018\u2019"}


def flat(text):
    """White space and quotation marks are pandoc's to choose."""
    text = unicodedata.normalize("NFC", text or "")
    for quotes, plain in (("\u2018\u2019", "'"), ("\u201c\u201d", '"')):
        for quote in quotes:
            text = text.replace(quote, plain)
    return " ".join(text.split())


def inline(nodes):
    text = ""
    for node in nodes:
        kind, content = node["t"], node.get("c")
        if kind == "Str":
            text += content
        elif kind in ("Space", "SoftBreak", "LineBreak"):
            text += " "
        elif kind == "Quoted":
            first, last = QUOTES[content[0]["t"]]
            text += first + inline(content[1]) + last
        elif kind in ("Emph", "Strong", "Strikeout", "Superscript", "Subscript", "Underline"):
            text += inline(content)
        elif kind in ("Span", "Link", "Image", "Cite"):
            text += inline(content[1])
        elif kind in ("Code", "Math"):
            text += content[1]
        elif kind == "RawInline" and content[1].startswith("<br"):
            text += " "
    return text


def read_blocks(nodes, found, depth=None):
    """Adds (text, list level or None) of every paragraph, heading and cell."""
    for node in nodes:
        kind, content = node["t"], node.get("c")
        if kind in ("Para", "Plain"):
            found.add((flat(inline(content)), depth))
        elif kind == "Header":
            found.add((flat(inline(content[2])), depth))
        elif kind in ("BulletList", "OrderedList"):
            for item in content if kind == "BulletList" else content[1]:
                read_blocks(item, found, 0 if depth is None else depth + 1)
        elif kind == "Div":
            read_blocks(content[1], found, depth)
        elif kind == "Table":
            rows = content[3][1] + content[5][1]
            for body in content[4]:
                rows += body[2] + body[3]
            for row in rows:
                for cell in row[1]:
                    read_blocks(cell[4], found)
                    found.add((flat(" ".join(inline(b["c"]) for b in cell[4] if b["t"] in ("Para", "Plain"))), None))
        elif kind in ("BlockQuote", "DefinitionList"):
            found.add((f"a {kind} that the document has not", None))


def expected_in(blocks, title, expected, hidden_cells):
    for block in blocks or []:
        if block["type"] == "paragraph":
            heading = block["role"] in ("title", "heading")
            level = None if heading or "list" not in block else min(block["list"]["level"], 12)
            if flat(block["text"]):
                expected.append((flat(block["text"]), level))
        elif block["type"] == "table" and not hidden_cells(block):
            for row in block["cells"]:
                for cell in row:
                    if cell and flat(cell["text"]) and not cell.get("paragraphs"):
                        expected.append((flat(cell["text"]), None))
        # The paragraphs of a slide's title are one heading.
        is_title = block["type"] == "placeholder" and block["kind"] == "title" and title
        if not is_title:
            expected_in(block.get("blocks"), title, expected, hidden_cells)


def hides(table):
    return any(key in table for key in ("hidden_rows", "hidden_columns", "shown_rows", "shown_columns"))


def expected_of(content):
    expected = []
    for slide in content.get("slides", []):
        if slide["title"]:
            expected.append((flat(slide["title"]), None))
        expected_in(slide["blocks"], slide["title"], expected, hides)
        expected_in(slide.get("notes"), None, expected, hides)
    expected_in(content.get("body"), None, expected, hides)
    for part in content.get("floating", []) + content.get("sheets", []):
        expected_in(part["blocks"], None, expected, hides)
    return expected


def tables_in(blocks):
    for block in blocks or []:
        if block["type"] == "table":
            yield block
        yield from tables_in(block.get("blocks"))


class Check:
    def __init__(self, tool, schema):
        self.tool = tool
        self.validator = jsonschema.Draft202012Validator(schema)
        self.faults = 0
        self.facts = 0

    def say(self, document, fault):
        self.faults += 1
        print(f"{document.name}: {fault}")

    def convert(self, document, *options):
        return subprocess.run([self.tool, "convert", *options, document], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=False).stdout

    def document(self, document):
        output = self.convert(document, "--to", "json")
        if not output:
            return
        content = json.loads(output)
        for error in self.validator.iter_errors(content):
            self.say(document, f"schema: {error.message[:200]}")
        self.markdown(document, content)
        self.html(document)
        self.csv(document, content)

    def markdown(self, document, content):
        expected = expected_of(content)
        for flavor, form in (("github", "gfm"), ("pandoc", "markdown")):
            text = self.convert(document, "--flavor", flavor)
            read = subprocess.run(["pandoc", "-f", form, "-t", "json"], input=text,
                                  stdout=subprocess.PIPE, check=True)
            found = set()
            read_blocks(json.loads(read.stdout)["blocks"], found)
            self.facts += len(expected)
            for fact in expected:
                if fact not in found:
                    self.say(document, f"{flavor}: {str(fact)[:200]} is not in the Markdown")

    def html(self, document):
        page = self.convert(document, "--to", "html")
        tidy = subprocess.run(["tidy", "-q", "-e"], input=page, stderr=subprocess.PIPE, check=False)
        for line in tidy.stderr.decode(errors="replace").splitlines():
            if "trimming empty" not in line:
                self.say(document, f"html: {line}")

    def csv(self, document, content):
        wanted = [t for s in content.get("sheets", []) for t in tables_in(s["blocks"]) if not hides(t)]
        with tempfile.TemporaryDirectory() as folder:
            self.convert(document, "--to", "csv", "-o", folder + "/tables/")
            written = [list(csv.reader(file.open(newline="", encoding="utf-8")))
                       for file in pathlib.Path(folder).rglob("*.csv")]
        for table in wanted:
            rows = [[(cell or {}).get("text", "") for cell in row] for row in table["cells"]]
            self.facts += 1
            if rows and rows[0] and rows not in written:
                self.say(document, f"csv: no file has the cells of the table {table['name']}")


def documents_in(paths):
    for path in map(pathlib.Path, paths):
        if path.suffix in ENDINGS:
            yield path
        elif path.is_dir():
            yield from sorted(p for p in path.iterdir() if p.suffix in ENDINGS)


def main():
    if not shutil.which("pandoc") or not shutil.which("tidy"):
        print("pandoc or tidy is not installed")
        return 77
    with open(sys.argv[2], encoding="utf-8") as file:
        check = Check(sys.argv[1], json.load(file))
    count = 0
    for document in documents_in(sys.argv[3:]):
        check.document(document)
        count += 1
    print(f"{count} documents, {check.facts} facts, {check.faults} faults")
    return 1 if check.faults or not count else 0


sys.exit(main())
