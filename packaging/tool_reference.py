#!/usr/bin/python3
"""The man page and the completions of a tool, from what its --help prints.

    tool_reference.py TOOL man|bash|zsh|fish|json

The help texts are the one source: a command or an option that is added to the
tool appears here without a change."""

from __future__ import annotations

import json
import os
import re
import subprocess
import sys
import textwrap
from dataclasses import asdict, dataclass, field

DOCUMENTS = ("pages", "key", "numbers")


@dataclass
class Option:
    """One option or positional argument."""

    flags: list[str]  # none for a positional
    value: str  # what it takes, such as FILE; empty for a flag
    choices: list[str]
    default: str
    help: str

    @property
    def takes_path(self) -> bool:
        return any(word in self.value for word in ("FILE", "DIR", "PATH"))


@dataclass
class Command:
    """The tool itself, or one of its commands."""

    name: str
    summary: str
    usage: str
    positionals: list[Option] = field(default_factory=list)
    options: list[Option] = field(default_factory=list)
    commands: list[str] = field(default_factory=list)
    footer: list[str] = field(default_factory=list)


@dataclass
class Tool:
    name: str
    version: str
    main: Command
    commands: list[Command]


# --- Reading the help -------------------------------------------------------

# Flags, a value, choices and a default: "--app APP:{a,b}=a".
_HEAD = re.compile(
    r"(?P<flags>-\S+|\w+)"
    r"(?: (?!REQUIRED|Needs:|Excludes:|\.\.\.)(?P<value>[^\s=:{}]+)?"
    r"(?::?\{(?P<choices>[^}]*)\})?(?:=(?P<default>\S+))?)?"
    r"(?: x \d+)?(?: \.\.\.)?(?: REQUIRED)?(?: (?:Needs|Excludes): .*)?$"
)


# What a check says about sizes in bytes: "SIZE:SIZE [b, kb(=1024b), ...]=4294967296".
_CHECK = re.compile(r":[A-Z]+ \[[^\]]*\]")


def parse_item(head: str, text: str) -> Option:
    """An option from the two columns of a help text."""
    found = _HEAD.match(_CHECK.sub("", head.strip()))
    if found is None:
        raise ValueError(f"cannot read the help of {head!r}")
    default = found["default"] or ""
    positional = not head.strip().startswith("-")
    value = found["value"] or (found["flags"].upper() if positional else "")
    choices = found["choices"].split(",") if found["choices"] else []
    if re.fullmatch(r"[a-z-]+(\|[a-z-]+)+", value):  # the words themselves: text|json
        value, choices = "", value.split("|")
    return Option(
        flags=[] if positional else found["flags"].split(","),
        value=value,
        choices=choices,
        # A path of the machine that the help was asked on means nothing elsewhere.
        default="" if default.startswith("/") else default.strip('"'),
        help=text.strip(),
    )


def sections(lines: list[str]) -> list[tuple[str, list[str]]]:
    """The parts of a help text by their headings."""
    parts: list[tuple[str, list[str]]] = []
    for line in lines:
        if re.fullmatch(r"\S.*:", line):
            parts.append((line[:-1], []))
        elif parts:
            parts[-1][1].append(line)
    return parts


_FIRST_COLUMN = 30


def items(lines: list[str]) -> list[tuple[str, str]]:
    """The two columns of a part; a long first column stands on its own line. One
    that just fits has a single blank behind it."""
    found: list[tuple[str, str]] = []
    for line, after in zip(lines, [*lines[1:], ""]):
        if not line.strip():
            continue
        if line.startswith("   ") and found:
            found[-1] = (found[-1][0], found[-1][1] + " " + line.strip())
            continue
        head, _, text = line.strip().partition("  ")
        if not text and not after.startswith("   "):
            head, text = line[:_FIRST_COLUMN].strip(), line[_FIRST_COLUMN:]
        found.append((head, text))
    return found


def ask(arguments: list[str]) -> str:
    run = subprocess.run(
        arguments, check=True, capture_output=True, text=True, env=os.environ | {"LC_ALL": "C.UTF-8"}
    )
    return run.stdout


def parse_help(name: str, text: str) -> Command:
    lines = text.splitlines()
    start = next(n for n, line in enumerate(lines) if line.startswith("Usage: "))
    usage = lines[start].removeprefix("Usage: ")
    command = Command(name, " ".join(lines[:start]).strip(), usage)
    rest = lines[start + 1 :]
    for heading, body in sections(rest):
        if heading == "Positionals":
            command.positionals = [parse_item(*item) for item in items(body)]
        elif heading == "Subcommands":
            command.commands = [head for head, _ in items(body)]
        elif heading.lower().endswith("options"):
            command.options += [parse_item(*item) for item in items(body)]
    examples = next((n for n, line in enumerate(rest) if line == "Examples:"), len(rest))
    command.footer = rest[examples:]
    return command


def describe(program: str) -> Tool:
    main = parse_help("", ask([program, "--help"]))
    name, _, version = ask([program, "--version"]).splitlines()[0].partition(" ")
    commands = [parse_help(c, ask([program, c, "--help"])) for c in main.commands]
    return Tool(name, version, main, commands)


# --- The man page -----------------------------------------------------------


def roff(text: str) -> str:
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.M)


def roff_option(option: Option) -> list[str]:
    head = ", ".join(f"\\fB{roff(flag)}\\fR" for flag in option.flags)
    value = f"\\fI{roff(option.value)}\\fR" if option.value else ""
    text = option.help
    if option.choices and not value:
        head += " \\fI" + roff("|".join(option.choices)) + "\\fR"
    elif option.choices:
        text += ": " + ", ".join(option.choices)
    if option.default:
        text += f" (default: {option.default})"
    return [".TP", " ".join(part for part in (head, value) if part), roff(text) + "."]


def man_page(tool: Tool) -> str:
    name = tool.name
    summary = tool.main.summary.rstrip(".")
    out = [
        f'.TH {name.upper()} 1 "" "{name} {tool.version}" "User Commands"',
        ".SH NAME",
        f"{name} \\- {summary[0].lower()}{roff(summary[1:])}",
        ".SH SYNOPSIS",
    ]
    for command in tool.commands:
        out += [roff(command.usage), ".br"]
    common = [option.flags for option in tool.main.options]
    out += [".SH COMMANDS"]
    for command in tool.commands:
        out += [f".SS {name} {command.name}", roff(command.summary) + "."]
        for option in command.positionals + command.options:
            if option.flags not in common:
                out += roff_option(option)
    out += [".SH OPTIONS OF MORE THAN ONE COMMAND"]
    for option in tool.main.options:
        out += roff_option(option) + commands_that_take(option, tool)
    return "\n".join(out + man_footer(tool.main.footer)) + "\n"


def commands_that_take(option: Option, tool: Tool) -> list[str]:
    """A sentence where that is not all or none of them."""
    takers = [c.name for c in tool.commands if option.flags in [o.flags for o in c.options]]
    if len(takers) in (0, len(tool.commands)):
        return []
    return [f"Taken by {', '.join(takers)}."]


def man_footer(lines: list[str]) -> list[str]:
    """Examples as they stand; "Heading: text" as a section of its own."""
    out: list[str] = []
    examples = [line for line in lines if line.startswith("  ")]
    if examples:
        out += [".SH EXAMPLES", ".nf"]
        out += roff(textwrap.dedent("\n".join(examples))).splitlines() + [".fi"]
    for line in lines[1:]:
        heading, colon, text = line.partition(": ")
        if line.startswith(" ") or not line:
            continue
        out += [f".SH {heading.upper()}", roff(text)] if colon else [roff(line)]
    return out


# --- Completions ------------------------------------------------------------

_GLOB = "@(" + "|".join(DOCUMENTS) + ")"


def quoted(text: str) -> str:
    return "'" + text.replace("'", "'\\''") + "'"


def flags_of(options: list[Option]) -> str:
    return " ".join(flag for option in options for flag in option.flags)


def bash_completion(tool: Tool) -> str:
    values: list[str] = []
    seen: set[str] = set()
    for option in [o for c in [tool.main, *tool.commands] for o in c.options]:
        key = "|".join(option.flags)
        if not option.value and not option.choices or key in seen:
            continue
        seen.add(key)
        reply = (
            f'COMPREPLY=($(compgen -W "{" ".join(option.choices)}" -- "$cur"))'
            if option.choices
            else "_filedir"
            if option.takes_path
            else ":"
        )
        values.append(f"    {key}) {reply}; return ;;")
    cases = [
        f"    {c.name}) options={quoted(flags_of(c.options))} ;;" for c in tool.commands
    ]
    commands = " ".join(c.name for c in tool.commands)
    return f"""# Completion of {tool.name} for bash. Made from its help.
_{tool.name}() {{
  local cur prev words cword
  _init_completion || return

  case $prev in
{os.linesep.join(values)}
  esac

  local command= options= word
  for word in "${{words[@]:1:cword-1}}"; do
    case $word in
    {"|".join(c.name for c in tool.commands)}) command=$word; break ;;
    esac
  done
  case $command in
{os.linesep.join(cases)}
  esac

  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "${{options:-{flags_of(tool.main.options)}}}" -- "$cur"))
  elif [[ -z $command ]]; then
    COMPREPLY=($(compgen -W "{commands}" -- "$cur"))
  else
    _filedir '{_GLOB}'
  fi
}} && complete -F _{tool.name} {tool.name}
"""


def zsh_text(text: str) -> str:
    return re.sub(r"([\[\]:])", r"\\\1", text)


def zsh_option(option: Option) -> str:
    action = ""
    if option.choices:
        action = f":{option.value.lower() or 'choice'}:({' '.join(option.choices)})"
    elif option.value:
        action = f":{option.value.lower()}:" + ("_files" if option.takes_path else "")
    body = quoted(f"[{zsh_text(option.help)}]{action}")
    if len(option.flags) == 1:
        return option.flags[0] + body
    group = " ".join(option.flags)
    return f"{quoted('(' + group + ')')}{{{','.join(option.flags)}}}{body}"


def zsh_completion(tool: Tool) -> str:
    pattern = "*.(" + "|".join(DOCUMENTS) + ")(-.,-/)"
    documents = quoted(f"*:document:_files -g {chr(34)}{pattern}{chr(34)}")

    def arguments(options: list[Option]) -> str:
        return " \\\n        ".join(zsh_option(option) for option in options)

    commands = "\n".join(
        f"    {quoted(c.name + ':' + zsh_text(c.summary))}" for c in tool.commands
    )
    main_options = arguments(tool.main.options)
    cases = "\n".join(
        f"    {c.name})\n      _arguments -s -S \\\n        {arguments(c.options)} \\\n"
        f"        {documents} ;;"
        for c in tool.commands
    )
    return f"""#compdef {tool.name}
# Completion of {tool.name} for zsh. Made from its help.
_{tool.name}() {{
  local context state state_descr line
  typeset -A opt_args
  local -a commands=(
{commands}
  )
  _arguments -C -s -S \\
        {main_options} \\
        '1:command:->command' '*::argument:->argument'
  case $state in
  command) _describe command commands ;;
  argument)
    case $words[1] in
{cases}
    esac ;;
  esac
}}
_{tool.name} "$@"
"""


def fish_option(tool: Tool, option: Option, condition: str) -> str:
    parts = [f"complete -c {tool.name}"]
    if condition:
        parts.append(f"-n {quoted(condition)}")
    for flag in option.flags:
        parts.append(f"-l {flag[2:]}" if flag.startswith("--") else f"-s {flag[1:]}")
    if option.choices:
        parts.append(f"-x -a {quoted(' '.join(option.choices))}")
    elif option.value:
        parts.append("-r -F" if option.takes_path else "-x")
    parts.append(f"-d {quoted(option.help)}")
    return " ".join(parts)


def fish_completion(tool: Tool) -> str:
    out = [f"# Completion of {tool.name} for fish. Made from its help."]
    out += [f"complete -c {tool.name} -n __fish_use_subcommand -f"]
    for c in tool.commands:
        out.append(
            f"complete -c {tool.name} -n __fish_use_subcommand -a {c.name} -d {quoted(c.summary)}"
        )
    out += [fish_option(tool, option, "") for option in tool.main.options]
    common = [option.flags for option in tool.main.options]
    for c in tool.commands:
        condition = f"__fish_seen_subcommand_from {c.name}"
        out += [
            fish_option(tool, o, condition) for o in c.options if o.flags not in common
        ]
    return "\n".join(out) + "\n"


FORMS = {
    "man": man_page,
    "bash": bash_completion,
    "zsh": zsh_completion,
    "fish": fish_completion,
    "json": lambda tool: json.dumps(asdict(tool), indent=2) + "\n",
}


def main() -> int:
    if len(sys.argv) != 3 or sys.argv[2] not in FORMS:
        print(__doc__, file=sys.stderr)
        return 2
    sys.stdout.write(FORMS[sys.argv[2]](describe(sys.argv[1])))
    return 0


if __name__ == "__main__":
    sys.exit(main())
