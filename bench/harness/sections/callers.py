"""Several callers at the same time."""

from typing import Iterator, Sequence

from .. import names
from ..comparing import Comparison, compare
from ..figures import spread
from ..programs import AFTERNOON, RIVAL, SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..tables import Column, Table, plain
from ..trials import Trial, run_trials
from .section import Section
from .showing import ends, factor
from .stands import stands

NAME = names.CALLERS
SERVERS = (SERVICE, RIVAL, AFTERNOON)
WORK = "get-action"
CALLERS = (1, 4, 16)
COUNT = 800


def _series(server: str, callers: int) -> Series:
    return Series(NAME, WORK, server, callers=callers)


def _measure(setup: Setup) -> list[Run]:
    with stands(setup, NAME) as raise_stand:
        up = {server: raise_stand(server, setup.memory) for server in SERVERS}
        groups = [
            [
                Trial(_series(server, callers), stand, setup.count(COUNT))
                for server, stand in up.items()
            ]
            for callers in CALLERS
        ]
        return run_trials(setup, NAME, groups, setup.reported_rounds)


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(runs, f"{WORK}, {callers} callers", _series(server, callers), rival)
        for callers in CALLERS
        for rival in [_series(RIVAL, callers)]
        for server in (SERVICE, AFTERNOON)
    ]


def _tables(runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    by_subject = {each.subject: each.result for each in comparisons}
    rows = []
    for callers in CALLERS:
        rates = [
            f"{1 / spread(runs.figures(_series(server, callers))).median:,.0f}"
            for server in SERVERS
        ]
        result = by_subject[_series(SERVICE, callers)]
        rows.append(plain(str(callers), *rates, factor(result.median), ends(result, factor)))
    headings = ("callers", *SERVERS, "service/rival, time", "spread")
    columns = [
        Column(heading, is_number=True, is_spare=heading == "spread") for heading in headings
    ]
    yield Table(f"Callers at the same time: {WORK}, calls a second", columns, rows)


SECTION = Section(NAME, frozenset(SERVERS), _measure, _compare, _tables)
