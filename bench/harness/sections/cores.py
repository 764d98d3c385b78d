"""Everything on one core, and free on all of them."""

from typing import Iterator, Sequence

from ..comparing import Comparison, compare
from ..cores import ALL, ALLOWED, ONE
from ..programs import RIVAL, SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..tables import Table
from ..trials import run_trials
from .section import Section
from .showing import against_table
from .stands import stands
from .works import trial

NAME = "cores"
SERVERS = (SERVICE, RIVAL)
COUNTS = {"get-action": 800, "press": 600}


def _measure(setup: Setup) -> list[Run]:
    with stands(setup, NAME) as raise_stand:
        up = [
            raise_stand(server, setup.memory, cores=cores)
            for cores in (ONE, ALL)
            for server in SERVERS
        ]
        groups = [
            [trial(setup, NAME, work, count, stand) for stand in up]
            for work, count in COUNTS.items()
        ]
        return run_trials(setup, NAME, groups, setup.reported_rounds)


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(runs, f"{work}, {_place(cores)}", service, service.of(RIVAL))
        for work in COUNTS
        for cores in (ONE, ALL)
        for service in [Series(NAME, work, SERVICE, cores=cores)]
    ]


def _place(cores: str) -> str:
    return "one core" if cores == ONE else f"{len(ALLOWED)} cores"


def _tables(_runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    yield against_table(
        "All processes on one core, or free on all: µs a call", "service", "rival", comparisons
    )


SECTION = Section(NAME, frozenset(SERVERS), _measure, _compare, _tables)
