"""What is told at the end: first the limits, then the rest."""

import os
import shutil
from typing import Iterable, Optional, Sequence, TextIO

from .comparing import Comparison, broken
from .sections.section import Measured
from .setup import LEAST_ROUNDS
from .tables import Table, render


def room_on(stream: TextIO) -> Optional[int]:
    """How wide a table may be; None for no bound."""
    if stream.isatty() or os.environ.get("COLUMNS"):
        return shutil.get_terminal_size().columns
    return None


def is_coloured(stream: TextIO) -> bool:
    return stream.isatty() and not os.environ.get("NO_COLOR")


def heading(rounds: int, load: float) -> str:
    """The first line: how much was done, on how busy a machine."""
    reported = min(rounds, LEAST_ROUNDS)
    fewer = f", at most {reported} of what has no limit" if reported < rounds else ""
    return f"{rounds} rounds{fewer}; load average {load:.2f} at the start."


def tables_of(measured: Iterable[Measured]) -> list[Table]:
    """The tables of the sections, those with limits first."""
    tables = [table for each in measured for table in each.tables]
    return sorted(tables, key=lambda table: not table.has_limits)


def write_tables(tables: Iterable[Table], stream: TextIO) -> None:
    """Writes tables as the stream can show them."""
    room, has_colour = room_on(stream), is_coloured(stream)
    for table in tables:
        stream.write(render(table, room, has_colour) + "\n\n")


def verdict(comparisons: Sequence[Comparison]) -> str:
    """The last line: which limits do not hold, if any."""
    limits = [each for each in comparisons if each.limit is not None]
    if not limits:
        return "No limit was measured."
    if not all(each.is_judged for each in limits):
        return "No limit is judged: these rounds are too few and too short."
    names = [f"{each.subject.section}: {each.name}" for each in broken(limits)]
    if names:
        return f"Not every limit holds: {'; '.join(names)}."
    return "Every limit holds."
