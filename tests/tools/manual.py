"""Parses the sources of the manual pages."""

import re
from pathlib import Path
from typing import Any, Iterator

SOURCES = Path(__file__).resolve().parents[2] / "tools" / "progkeysctl" / "man"

PAGE_OF = {
    "status": "progkeysctl",
    "wait": "progkeysctl",
    "help": "progkeysctl",
    "icon": "progkeysctl-module",
    "label": "progkeysctl-module",
    "press": "progkeysctl-module",
    "export": "progkeysctl-exchange",
    "import": "progkeysctl-exchange",
}
"""The pages of the commands that have no page with their own name."""

COMMAND = re.compile(r"\*progkeysctl((?: [a-z]+)+)\*.*")
OPTION = re.compile(r"\t*(\*-.*)")
TERM = re.compile(r"\*(\w+)\*")
STATUS = re.compile(r"\*(\d+)\*")


def page_of(command: str) -> str:
    """The page that must document a command."""
    return PAGE_OF.get(command.split()[0], f"progkeysctl-{command.split()[0]}")


def synopsis(command: dict[str, Any]) -> str:
    """The line that a page must have for the command."""
    parts = [f"*progkeysctl {command['command']}*"]
    if command["options"]:
        parts.append("[_OPTION_]...")
    for argument in command["arguments"]:
        name = f"_{argument['names'][0]}_" + "..." * argument["repeatable"]
        parts.append(name if argument["required"] else f"[{name}]")
    return " ".join(parts)


def option_line(option: dict[str, Any]) -> str:
    """The line that a page must have for the option."""
    line = ", ".join(f"*{name}*" for name in option["names"])
    if option["value"]:
        line += f" _{option['value']}_"
    return line + "..." * option["repeatable"]


class Page:
    """One page."""

    def __init__(self, name: str) -> None:
        self.name = name
        self.text = (SOURCES / f"{name}.1.scd").read_text(encoding="utf-8")

    def section(self, title: str) -> list[str]:
        """The lines of a section; none if there is no such section."""
        parts = re.split(r"^# (.+)$", self.text, flags=re.MULTILINE)
        return dict(zip(parts[1::2], parts[2::2])).get(title, "").splitlines()

    def entries(self, title: str) -> Iterator[str]:
        """The lines of a section after an empty line, which begin its entries."""
        lines = self.section(title)
        for before, line in zip(lines, lines[1:]):
            if not before and line:
                yield line

    def commands(self) -> dict[str, list[str]]:
        """The options of each command, by the command's line."""
        found: dict[str, list[str]] = {}
        for line in self.entries("COMMANDS"):
            if COMMAND.fullmatch(line):
                found[line] = options = []
            elif option := OPTION.fullmatch(line):
                options.append(option[1])
        return found

    def options(self) -> list[str]:
        return [option[1] for line in self.entries("OPTIONS") if (option := OPTION.fullmatch(line))]

    def statuses(self) -> list[int]:
        return [int(status[1]) for line in self.entries("EXIT STATUS") if (status := STATUS.fullmatch(line))]

    def terms(self, title: str) -> list[str]:
        """The terms that a section explains."""
        lines = [line for line in self.entries(title) if line.startswith("*")]
        return [term for line in lines for term in TERM.findall(line)]

    def literals(self) -> Iterator[str]:
        """Its examples."""
        yield from self.text.split("```")[1::2]


def pages() -> list[Page]:
    return [Page(path.name.removesuffix(".1.scd")) for path in sorted(SOURCES.glob("*.1.scd"))]
