"""What a call costs when ten keys are stored, or ten thousand."""

from typing import Iterator, Sequence

from .. import names
from ..comparing import Comparison, compare
from ..figures import spread
from ..programs import AFTERNOON, RIVAL, SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..tables import Column, Table, plain
from ..trials import run_trials, trial
from .section import Section
from .showing import factor, micro
from .stands import stands

NAME = names.GROWTH
SERVERS = (SERVICE, RIVAL, AFTERNOON)
ROWS = (10, 100, 1000, 10000)
LIST = "get-all-keys"
COUNTS = {
    "get-action": (800, 800, 800, 800),
    LIST: (500, 200, 50, 6),
    "press": (600, 600, 400, 100),
    "create-key": (200, 200, 150, 60),
}


def _measure(setup: Setup) -> list[Run]:
    sizes = ROWS[:-1] if setup.is_quick else ROWS
    with stands(setup, NAME) as raise_stand:
        up = {
            rows: [raise_stand(server, setup.memory, rows) for server in SERVERS] for rows in sizes
        }
        groups = [
            [trial(setup, NAME, work, count, stand) for stand in up[rows]]
            for work, counts in COUNTS.items()
            for rows, count in zip(sizes, counts)
        ]
        return run_trials(setup, NAME, groups, setup.reported_rounds)


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(runs, f"{series.work}, {series.rows:,} keys", series, series.of(RIVAL))
        for series in runs.series(section=NAME)
        if series.server != RIVAL
    ]


def _tables(runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    by_subject = {each.subject: each.result for each in comparisons}
    rows = []
    for service in runs.series(section=NAME, server=SERVICE):
        medians = [spread(runs.figures(service.of(server))).median for server in SERVERS]
        ratio = factor(by_subject[service].median)
        rows.append(plain(service.work, f"{service.rows:,}", *map(micro, medians), ratio))
        if service.work == LIST:
            each = (micro(median / service.rows) for median in medians)
            rows.append(plain("  for each key", "", *each, ""))
    columns = [
        Column("work"),
        *(Column(heading, is_number=True) for heading in ("keys", *SERVERS, "service/rival")),
    ]
    yield Table("Cost by the number of stored keys: µs a call", columns, rows)


SECTION = Section(NAME, frozenset(SERVERS), _measure, _compare, _tables)
