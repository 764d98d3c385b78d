"""The service built with Qt 6, beside the one built with Qt 5."""

from typing import Iterator, Sequence

from ..comparing import Comparison, compare
from ..names import DISK, QT6, TMPFS
from ..programs import SERVICE, SERVICE_QT6
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..tables import Table
from ..trials import run_trials, trial
from .section import Section
from .showing import against_table
from .stands import stands
from .works import IN_MEMORY, ON_DISK

NAME = QT6
SERVERS = (SERVICE, SERVICE_QT6)
PLACES = {TMPFS: IN_MEMORY, DISK: ON_DISK}


def _section_of(place: str) -> str:
    return f"{NAME}-{place}"


def _measure(setup: Setup) -> list[Run]:
    storage = {TMPFS: setup.memory, DISK: setup.disk}
    with stands(setup, NAME) as raise_stand:
        up = {
            place: [raise_stand(server, storage[place]) for server in SERVERS] for place in PLACES
        }
        groups = [
            [trial(setup, _section_of(place), work.name, work.count, stand) for stand in up[place]]
            for place, works in PLACES.items()
            for work in works
        ]
        return run_trials(setup, NAME, groups, setup.reported_rounds)


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(runs, f"{work.name}, {place}", qt5.of(SERVICE_QT6), qt5)
        for place, works in PLACES.items()
        for work in works
        for qt5 in [Series(_section_of(place), work.name, SERVICE)]
    ]


def _tables(_runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    yield against_table("The service with Qt 6: µs a call", "Qt 6", "Qt 5", comparisons)


SECTION = Section(NAME, frozenset(SERVERS), _measure, _compare, _tables)
