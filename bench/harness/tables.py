"""Tables that fit into a terminal."""

from dataclasses import dataclass
from typing import Optional, Sequence

GAP = "  "
CUT = "…"
LEAST_TEXT = 8
"""To how few characters the first column is cut."""

BOLD = "\x1b[1m"
GOOD = "\x1b[32m"
BAD = "\x1b[1;31m"
RESET = "\x1b[0m"


@dataclass(frozen=True)
class Cell:
    """A text, and the colour that it may have."""

    text: str
    style: str = ""


@dataclass(frozen=True)
class Column:
    """A heading; numbers stand right, and what is spare goes first when room is short."""

    heading: str
    is_number: bool = False
    is_spare: bool = False


Row = tuple[Cell, ...]


@dataclass(frozen=True)
class Table:
    """Rows under a title; those that judge limits come first in a report."""

    title: str
    columns: Sequence[Column]
    rows: Sequence[Row]
    has_limits: bool = False


def plain(*texts: str) -> Row:
    """Cells without a colour."""
    return tuple(Cell(text) for text in texts)


def render(table: Table, width: Optional[int] = None, has_colour: bool = False) -> str:
    """The lines of a table, none wider than `width` if that can be done at all."""
    columns, rows = list(table.columns), [list(row) for row in table.rows]
    for index in reversed(range(len(columns))):
        if not _is_too_wide(columns, rows, width):
            break
        if columns[index].is_spare:
            del columns[index]
            for row in rows:
                del row[index]
    widths = _widths(columns, rows)
    if width is not None:
        excess = max(0, _total(widths) - width)
        widths[0] = max(min(LEAST_TEXT, widths[0]), widths[0] - excess)
    heading = [Cell(column.heading) for column in columns]
    lines = [_styled(_cut(table.title, width), BOLD, has_colour)]
    lines += [_line(row, columns, widths, has_colour) for row in (heading, *rows)]
    return "\n".join(lines)


def _widths(columns: Sequence[Column], rows: Sequence[Sequence[Cell]]) -> list[int]:
    return [
        max([len(column.heading), *(len(row[index].text) for row in rows)])
        for index, column in enumerate(columns)
    ]


def _total(widths: Sequence[int]) -> int:
    return sum(widths) + len(GAP) * (len(widths) - 1)


def _is_too_wide(
    columns: Sequence[Column], rows: Sequence[Sequence[Cell]], width: Optional[int]
) -> bool:
    return width is not None and _total(_widths(columns, rows)) > width


def _line(
    row: Sequence[Cell], columns: Sequence[Column], widths: Sequence[int], has_colour: bool
) -> str:
    cells = []
    for cell, column, width in zip(row, columns, widths, strict=True):
        text = _cut(cell.text, width)
        padding = " " * (width - len(text))
        text = _styled(text, cell.style, has_colour)
        cells.append(padding + text if column.is_number else text + padding)
    return GAP.join(cells).rstrip()


def _cut(text: str, width: Optional[int]) -> str:
    if width is None or len(text) <= width:
        return text
    return text[: width - len(CUT)] + CUT


def _styled(text: str, style: str, has_colour: bool) -> str:
    return f"{style}{text}{RESET}" if has_colour and style else text
