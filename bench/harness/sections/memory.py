"""The memory of the idle service: beside the bare frame's, and with many keys stored."""

from typing import Iterator, Sequence

from .. import names
from ..comparing import DIFFERENCE, Comparison, compare
from ..failure import MeasurementFailed
from ..programs import FRAME, SERVICE
from ..runs import BYTES, MEBIBYTE, Run, Runs, Series
from ..setup import Setup
from ..stand import Stand
from ..tables import Table
from ..trials import in_turn
from .section import Section
from .showing import limits_table, mebibytes

NAME = names.MEMORY
IDLE = "idle"
FEW, MANY = 1, 1000

ANSWER = {SERVICE: "get-action", FRAME: "noop"}

OF_FRAME = Series(NAME, IDLE, FRAME, rows=FEW)
SMALL = OF_FRAME.of(SERVICE)
LARGE = Series(NAME, IDLE, SERVICE, rows=MANY)


def proportional_memory(pid: int) -> int:
    """The bytes that a process has in memory, its part of what it shares counted in."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as rollup:
        for line in rollup:
            if line.startswith("Pss:"):
                return int(line.split()[1]) * 1024
    raise MeasurementFailed(f"process {pid} does not tell its memory")


def _measure(setup: Setup) -> list[Run]:
    runs = []
    for round_, series in in_turn([[OF_FRAME, SMALL, LARGE]], setup.rounds):
        setup.progress.show(f"{NAME}: round {round_ + 1} of {setup.rounds}, {series.server}")
        # One stand at a time: what others share of a library lowers everybody's part of it.
        with Stand(setup.programs, series.server, setup.memory, series.rows) as stand:
            stand.do(ANSWER[series.server], 1, 0)
            runs.append(Run(series, round_, proportional_memory(stand.pid), unit=BYTES))
    return runs


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(runs, "idle, against the frame", SMALL, OF_FRAME, DIFFERENCE, 1.5 * MEBIBYTE),
        compare(runs, f"{MANY:,} keys, against one", LARGE, SMALL, DIFFERENCE, 0.5 * MEBIBYTE),
    ]


def _tables(_runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    yield limits_table("Memory: MiB, shared pages in part", "the other", comparisons, mebibytes)


SECTION = Section(NAME, frozenset(ANSWER), _measure, _compare, _tables)
