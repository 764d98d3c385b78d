"""Cases as files that a person can read; golden/README.md tells what they hold."""

import json
from pathlib import Path
from typing import Any, Iterable, NamedTuple, Sequence

from golden_files import check_golden
from sandbox.events import Event
from sandbox.log import LogLine
from sandbox.records import Action, Key

DIRECTORY = Path(__file__).with_name("golden")
SEPARATOR = " | "


class Contents(NamedTuple):
    """The rows of both tables."""

    actions: list[Action]
    keys: list[Key]


class Case(NamedTuple):
    """One directory of files."""

    directory: Path

    @property
    def settings(self) -> Path:
        return self.directory / "settings"

    def before(self) -> Contents:
        """What the tables hold at first."""
        text = (self.directory / "before.txt").read_text(encoding="utf-8")
        contents = read_contents(text)
        assert write_contents(contents) == text, f"{self.directory.name}/before.txt is not aligned"
        return contents

    def check(self, name: str, found: str) -> None:
        """Holds a text against the file of that name, or makes it the file if so asked."""
        check_golden(self.directory / name, found)


def cases() -> list[Case]:
    return [Case(path) for path in sorted(DIRECTORY.iterdir()) if path.is_dir()]


# Tables of text


def write_cell(value: Any) -> str:
    """A value as it is, or as a JSON string where a reader could not tell its ends."""
    text = str(value)
    is_plain = text == text.strip() and text.isprintable() and "|" not in text and text[:1] != '"'
    return text if is_plain else json.dumps(text, ensure_ascii=False)


def read_cell(cell: str) -> str:
    return json.loads(cell) if cell.startswith('"') else cell


def write_table(header: Sequence[str], rows: Iterable[Sequence[Any]]) -> str:
    lines = [list(header), *([write_cell(value) for value in row] for row in rows)]
    widths = [max(map(len, column)) for column in zip(*lines)]
    aligned = (
        SEPARATOR.join(cell.ljust(width) for cell, width in zip(line, widths)) for line in lines
    )
    return "".join(f"{line.rstrip()}\n" for line in aligned)


def read_table(lines: Sequence[str]) -> list[dict[str, str]]:
    header, *rows = ([cell.strip() for cell in line.split("|")] for line in lines)
    return [dict(zip(header, map(read_cell, row))) for row in rows]


# What the service has and does


def write_contents(contents: Contents) -> str:
    actions = write_table(Action._fields, contents.actions)
    keys = write_table(Key._fields, contents.keys)
    return f"ACTION\n{actions}\nKEY\n{keys}"


def read_contents(text: str) -> Contents:
    actions, keys = (part.splitlines()[1:] for part in text.split("\n\n"))
    return Contents(
        [_record(Action(), row) for row in read_table(actions)],
        [_record(Key(), row) for row in read_table(keys)],
    )


def _record(default: Any, row: dict[str, str]) -> Any:
    """A record of the default's kind, its fields converted to the types that the default has."""
    return type(default)(*(type(value)(row[name]) for name, value in default._asdict().items()))


def write_log(lines: Iterable[LogLine]) -> str:
    return write_table(("level", "text"), ((line.level, line.text) for line in lines))


def write_events(events: Iterable[Event]) -> str:
    rows = ((event.name, _arguments(event)) for event in events)
    return write_table(("event", "arguments"), rows)


def _arguments(event: Event) -> str:
    return "  ".join(f"{argument.name}={_value(argument.value)}" for argument in event.arguments)


def _value(value: Any) -> str:
    """A record without the names of its fields, which are the columns of its table."""
    name = type(value).__name__ if isinstance(value, (Action, Key)) else ""
    return f"{name}{tuple(value)!r}" if name else repr(value)
