"""Tests of what the packages hold beside the built files.

DORVEX_BUILD is the build folder, DORVEX_PROGRAM the tool, DORVEX_SOURCE the
project; DORVEX_LINKED the reader module, as ninja names it."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["DORVEX_SOURCE"])
BUILD = pathlib.Path(os.environ["DORVEX_BUILD"])
PROGRAM = os.environ["DORVEX_PROGRAM"]
BASH_COMPLETION = pathlib.Path("/usr/share/bash-completion/bash_completion")

sys.path.insert(0, str(SOURCE / "packaging"))
import bill_of_materials  # noqa: E402
import tool_reference  # noqa: E402


def run(*arguments, **options):
    return subprocess.run(
        arguments, check=True, capture_output=True, text=True, timeout=60, **options
    ).stdout


class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.tool = tool_reference.describe(PROGRAM)
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.files = {}
        for form, write in tool_reference.FORMS.items():
            cls.files[form] = pathlib.Path(cls.folder.name, form)
            cls.files[form].write_text(write(cls.tool), encoding="utf-8")

    def test_knows_the_commands_and_their_options(self):
        commands = {command.name: command for command in self.tool.commands}
        self.assertLessEqual({"text", "tokens", "inspect"}, set(commands))
        flags = [option.flags for option in commands["text"].options]
        self.assertIn(["-0", "--null"], flags)
        application = next(o for o in commands["inspect"].options if o.flags == ["--app"])
        self.assertEqual(application.choices, ["auto", "pages", "keynote", "numbers"])
        self.assertEqual(application.default, "auto")

    def test_names_no_path_of_this_machine(self):
        for form, file in self.files.items():
            self.assertNotIn(str(BUILD), file.read_text(encoding="utf-8"), form)

    def test_is_a_man_page_without_warnings(self):
        if not shutil.which("groff"):
            self.skipTest("there is no groff")
        checked = subprocess.run(
            ["groff", "-man", "-ww", "-z", "-K", "utf8", "-T", "utf8", self.files["man"]],
            capture_output=True,
            text=True,
        )
        self.assertEqual((checked.returncode, checked.stderr), (0, ""))

    def test_gives_every_option_in_the_man_page(self):
        page = self.files["man"].read_text(encoding="utf-8").replace("\\-", "-")
        for command in [self.tool.main, *self.tool.commands]:
            for option in command.options:
                for flag in option.flags:
                    self.assertIn(f"\\fB{flag}\\fR", page, command.name)

    def complete_in_bash(self, *words):
        quoted = " ".join(f"'{word}'" for word in words)
        script = (
            f". {BASH_COMPLETION}; . {self.files['bash']}\n"
            f"COMP_WORDS=(dorvex {quoted}); COMP_CWORD={len(words)}\n"
            'COMP_LINE="${COMP_WORDS[*]}"; COMP_POINT=${#COMP_LINE}\n'
            '_dorvex; printf "%s\\n" "${COMPREPLY[@]}"\n'
        )
        return run("bash", "-c", script, cwd=self.folder.name).split()

    def test_completes_in_bash(self):
        if not BASH_COMPLETION.exists():
            self.skipTest("there is no bash-completion")
        self.assertIn("inspect", self.complete_in_bash("ins"))
        self.assertIn("--object", self.complete_in_bash("inspect", "--o"))
        self.assertIn("--timeout", self.complete_in_bash("inspect", "--t"))
        self.assertEqual(self.complete_in_bash("inspect", "--app", "k"), ["keynote"])
        pathlib.Path(self.folder.name, "Letter.pages").touch()
        pathlib.Path(self.folder.name, "Letter.txt").touch()
        self.assertEqual(self.complete_in_bash("text", "Let"), ["Letter.pages"])

    def test_completes_in_fish(self):
        if not shutil.which("fish"):
            self.skipTest("there is no fish")

        def complete(line):
            script = f"source {self.files['fish']}; complete -C '{line}'"
            with tempfile.TemporaryDirectory() as home:
                printed = run("fish", "-c", script, env=os.environ | {"HOME": home})
            return [found.split("\t")[0] for found in printed.splitlines()]

        self.assertIn("inspect", complete("dorvex ins"))
        self.assertIn("--object", complete("dorvex inspect --o"))
        self.assertNotIn("--object", complete("dorvex text --o"))
        self.assertEqual(complete("dorvex inspect --app k"), ["keynote"])

    def test_is_sound_in_zsh(self):
        if not shutil.which("zsh"):
            self.skipTest("there is no zsh")
        run("zsh", "-n", self.files["zsh"])


class Help(unittest.TestCase):
    """The forms of a line of help, as the command line library prints them."""

    def test_is_read_in_all_its_forms(self):
        cases = {
            "-h,--help": (["-h", "--help"], "", [], ""),
            "--timeout SECONDS=60": (["--timeout"], "SECONDS", [], "60"),
            "--app APP:{a,b}=a": (["--app"], "APP", ["a", "b"], "a"),
            "--format {a,b}": (["--format"], "", ["a", "b"], ""),
            "--shard I/N REQUIRED": (["--shard"], "I/N", [], ""),
            "--resume FILE Needs: --output": (["--resume"], "FILE", [], ""),
            "-o,--output FILE|DIR": (["-o", "--output"], "FILE|DIR", [], ""),
            "--format text|json": (["--format"], "", ["text", "json"], ""),
            "--max SIZE:SIZE [b, kb(=1024b), ...]=4": (["--max"], "SIZE", [], "4"),
            "--no-sandbox Excludes: --require-sandbox": (["--no-sandbox"], "", [], ""),
            "--module FILE=/a/b.so": (["--module"], "FILE", [], ""),
            "documents FILE ... REQUIRED": ([], "FILE", [], ""),
            "document REQUIRED": ([], "DOCUMENT", [], ""),
        }
        for head, expected in cases.items():
            with self.subTest(head=head):
                item = tool_reference.parse_item(head, "words")
                self.assertEqual((item.flags, item.value, item.choices, item.default), expected)

    def test_that_is_not_understood_is_an_error(self):
        with self.assertRaises(ValueError):
            tool_reference.parse_item("--odd A B C D", "words")


class BillOfMaterials(unittest.TestCase):
    def test_names_what_is_linked_and_what_is_compiled_in(self):
        if not (BUILD / "build.ninja").exists() or not shutil.which("dpkg"):
            self.skipTest("not built by ninja on a Debian")
        linked = [os.environ["DORVEX_LINKED"]]
        found = {c.name: c.linked for c in bill_of_materials.components(BUILD, linked)}
        self.assertEqual(found.get("libsnappy1v5"), "shared")
        self.assertEqual(found.get("libstdc++6"), "shared")
        self.assertEqual(found.get("libprotobuf-dev"), "compiled in")
        self.assertNotIn("nlohmann-json3-dev", found)

    def test_gives_the_licence_of_each_component(self):
        component = bill_of_materials.Component("libsnappy1v5", "1", "compiled in")
        self.assertEqual(bill_of_materials.declared_licence(component)[0], "BSD-3-Clause")
        text = bill_of_materials.copyright_text("p", [component])
        self.assertIn((SOURCE / "LICENSE").read_text(encoding="utf-8"), text)
        self.assertIn(component.copyright_file.read_text(encoding="utf-8"), text)

    def test_is_spdx_with_a_relation_for_each_component(self):
        found = [
            bill_of_materials.Component("libsnappy1v5", "1", "shared"),
            bill_of_materials.Component("libzip4", "2", "compiled in"),
        ]
        os.environ["SOURCE_DATE_EPOCH"] = "0"
        document = json.loads(json.dumps(bill_of_materials.sbom("p", "0.1", found)))
        self.assertEqual(document["spdxVersion"], "SPDX-2.3")
        self.assertEqual(document["creationInfo"]["created"], "1970-01-01T00:00:00Z")
        self.assertEqual([p["name"] for p in document["packages"]], ["p", "libsnappy1v5", "libzip4"])
        kinds = [r["relationshipType"] for r in document["relationships"]]
        self.assertEqual(kinds, ["DYNAMIC_LINK", "STATIC_LINK"])
        known = {p["SPDXID"] for p in document["packages"]}
        for relation in document["relationships"]:
            self.assertIn(relation["relatedSpdxElement"], known)


class Changelog(unittest.TestCase):
    def test_is_of_the_version_of_the_project(self):
        first = (SOURCE / "packaging/changelog").read_text(encoding="utf-8").splitlines()[0]
        self.assertIn(f"({os.environ['DORVEX_VERSION']}-", first)


if __name__ == "__main__":
    unittest.main()
