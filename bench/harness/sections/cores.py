"""Everything on one core, alone or beside a busy process, and free on all of them."""

from dataclasses import replace
from typing import Iterator, Mapping, Sequence

from .. import names
from ..busy import busy_process
from ..comparing import Comparison, compare
from ..cores import ALL, ALLOWED, ONE
from ..programs import RIVAL, SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..stand import Stand
from ..tables import Table
from ..trials import Trial, run_trials, trial
from .section import Section
from .showing import against_table
from .stands import stands

NAME = names.CORES
SERVERS = (SERVICE, RIVAL)
COUNTS = {"get-action": 800, "press": 600}

BUSY = "one, busy"
BUSY_COUNT = 200
"""Fewer, for each may wait for the other process's slices of time; but enough of those."""

PLACES = {
    ONE: "one core",
    BUSY: "one core beside a busy process",
    ALL: f"free on {len(ALLOWED)} cores",
}

Counts = Mapping[str, int]


def _groups(setup: Setup, up: Sequence[Stand], counts: Counts) -> list[list[Trial]]:
    return [
        [trial(setup, NAME, work, count, stand) for stand in up] for work, count in counts.items()
    ]


def _beside_busy(planned: Trial) -> Trial:
    return replace(planned, series=replace(planned.series, cores=BUSY))


def _measure(setup: Setup) -> list[Run]:
    rounds = setup.reported_rounds
    with stands(setup, NAME) as raise_stand:
        on_one = [raise_stand(server, setup.memory, cores=ONE) for server in SERVERS]
        on_all = [raise_stand(server, setup.memory, cores=ALL) for server in SERVERS]
        runs = run_trials(setup, NAME, _groups(setup, [*on_one, *on_all], COUNTS), rounds)
        few = _groups(setup, on_one, dict.fromkeys(COUNTS, BUSY_COUNT))
        beside_busy = [[_beside_busy(planned) for planned in group] for group in few]
        with busy_process(setup.memory):
            runs += run_trials(setup, f"{NAME}, {BUSY}", beside_busy, rounds)
    return runs


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(runs, f"{work}, {place}", service, service.of(RIVAL))
        for work in COUNTS
        for cores, place in PLACES.items()
        for service in [Series(NAME, work, SERVICE, cores=cores)]
    ]


def _tables(_runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    yield against_table(
        "All processes on one core, or free on all: µs a call", "service", "rival", comparisons
    )


SECTION = Section(NAME, frozenset(SERVERS), _measure, _compare, _tables)
