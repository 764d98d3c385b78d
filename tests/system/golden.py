"""Test cases in text files. golden/README.md describes the format."""

import json
import os
from pathlib import Path
from typing import Any, Iterable, NamedTuple, Sequence

from sandbox.events import Event
from sandbox.log import LogLine
from sandbox.records import Action, Key

DIRECTORY = Path(__file__).with_name("golden")
REWRITE = "PROGKEYS_REWRITE_GOLDEN"


class Contents(NamedTuple):
    """The rows of both tables."""

    actions: list[Action]
    keys: list[Key]


class Case:
    """A file of blocks separated by empty lines. The first line of a block is its title."""

    def __init__(self, path: Path) -> None:
        self._path = path
        text = path.read_text(encoding="utf-8")
        self._blocks = {lines[0]: lines[1:] for lines in map(str.splitlines, text.split("\n\n"))}

    def __str__(self) -> str:
        return self._path.stem

    @property
    def settings(self) -> dict[str, str]:
        pairs = (line.partition(":") for line in self._blocks["SETTINGS"])
        return {name: value.removeprefix(" ") for name, _colon, value in pairs}

    @property
    def before(self) -> Contents:
        """The rows before the start."""
        return Contents(
            [_record(Action(), row) for row in _read_table(self._blocks["ACTION before"])],
            [_record(Key(), row) for row in _read_table(self._blocks["KEY before"])],
        )

    def check(self, log: Iterable[LogLine], events: Iterable[Event], after: Contents) -> None:
        """Compares the results with the file. If REWRITE is set, writes them to the file first."""
        event_rows = ((event.name, _arguments(event)) for event in events)
        blocks = {
            "SETTINGS": self._blocks["SETTINGS"],
            **_contents("before", self.before),
            "LOG": _write_table(("level", "text"), ((line.level, line.text) for line in log)),
            "EVENTS": _write_table(("event", "arguments"), event_rows),
            **_contents("after", after),
        }
        found = "\n\n".join("\n".join((title, *lines)) for title, lines in blocks.items()) + "\n"
        if os.environ.get(REWRITE):
            self._path.write_text(found, encoding="utf-8")
        assert found == self._path.read_text(encoding="utf-8")


def cases() -> list[Case]:
    return [Case(path) for path in sorted(DIRECTORY.glob("*.txt"))]


def _contents(when: str, contents: Contents) -> dict[str, list[str]]:
    return {
        f"ACTION {when}": _write_table(Action._fields, contents.actions),
        f"KEY {when}": _write_table(Key._fields, contents.keys),
    }


def _write_cell(value: Any) -> str:
    """The value, or a JSON string if the value has invisible characters or outer spaces."""
    text = str(value)
    is_plain = text == text.strip() and text.isprintable() and "|" not in text and text[:1] != '"'
    return text if is_plain else json.dumps(text, ensure_ascii=False)


def _write_table(header: Sequence[str], rows: Iterable[Sequence[Any]]) -> list[str]:
    cells = [list(header), *([_write_cell(value) for value in row] for row in rows)]
    widths = [max(map(len, column)) for column in zip(*cells)]
    return [
        " | ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in cells
    ]


def _read_table(lines: Sequence[str]) -> list[dict[str, str]]:
    header, *rows = ([cell.strip() for cell in line.split("|")] for line in lines)
    return [
        {name: json.loads(cell) if cell[:1] == '"' else cell for name, cell in zip(header, row)}
        for row in rows
    ]


def _record(default: Any, row: dict[str, str]) -> Any:
    """A record with the field types of `default`."""
    return type(default)(*(type(value)(row[name]) for name, value in default._asdict().items()))


def _arguments(event: Event) -> str:
    return "  ".join(f"{argument.name}={_value(argument.value)}" for argument in event.arguments)


def _value(value: Any) -> str:
    """The text of a value. Records are written without field names."""
    name = type(value).__name__ if isinstance(value, (Action, Key)) else ""
    return f"{name}{tuple(value)!r}" if name else repr(value)
