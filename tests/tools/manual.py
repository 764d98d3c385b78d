"""The sources of the manual pages, taken apart."""

import re
from pathlib import Path
from typing import Any, Iterator

SOURCES = Path(__file__).resolve().parents[2] / "tools" / "progkeysctl" / "man"

PAGE_OF = {
    "status": "progkeysctl",
    "wait": "progkeysctl",
    "icon": "progkeysctl-module",
    "label": "progkeysctl-module",
    "press": "progkeysctl-module",
    "export": "progkeysctl-exchange",
    "import": "progkeysctl-exchange",
}
"""Where a command stands that has no page of its own name."""

COMMAND = re.compile(r"\*progkeysctl((?: [a-z]+)+)\*.*")
OPTION = re.compile(r"\t*(\*-.*)")
TERM = re.compile(r"\*(\w+)\*")
STATUS = re.compile(r"\*(\d+)\*")


def page_of(words: list[str]) -> str:
    """The page on which a command must stand."""
    return PAGE_OF.get(words[0], f"progkeysctl-{words[0]}")


def synopsis(command: dict[str, Any]) -> str:
    """The line that a page must have for the command."""
    parts = [f"*progkeysctl {' '.join(command['words'])}*"]
    if any("--help" not in option["names"] for option in command["options"]):
        parts.append("[_OPTION_]...")
    for positional in command["positionals"]:
        argument = f"_{positional['argument'] or positional['name']}_" + "..." * positional["several"]
        parts.append(argument if positional["required"] else f"[{argument}]")
    return " ".join(parts)


def option_line(option: dict[str, Any]) -> str:
    """The line that a page must have for the option."""
    line = ", ".join(f"*{name}*" for name in option["names"])
    if option["argument"]:
        line += f" _{option['argument']}_"
    return line + "..." * option["several"]


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
        """The lines of a section that begin something, as those after an empty line do."""
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
        """What a section explains."""
        lines = [line for line in self.entries(title) if line.startswith("*")]
        return [term for line in lines for term in TERM.findall(line)]

    def literals(self) -> Iterator[str]:
        """Its examples."""
        yield from self.text.split("```")[1::2]


def pages() -> list[Page]:
    return [Page(path.name.removesuffix(".1.scd")) for path in sorted(SOURCES.glob("*.1.scd"))]
