"""From the start of the process to its name on the bus, beside the bare frame."""

from typing import Iterator, Sequence

from .. import names
from ..comparing import DIFFERENCE, Comparison, compare
from ..programs import FRAME, SERVICE
from ..runs import ROWS, Run, Runs, Series
from ..setup import Setup
from ..tables import Table
from ..trials import in_turn
from .section import Section
from .showing import limits_table, milli
from .stands import stands

NAME = names.START
SERVERS = (SERVICE, FRAME)
STARTS_OF_ROUND = 3


def _measure(setup: Setup) -> list[Run]:
    rounds = setup.rounds * STARTS_OF_ROUND
    runs = []
    with stands(setup, NAME) as raise_stand:
        ready = [raise_stand(name, setup.memory, with_server=False) for name in SERVERS]
        for round_, stand in in_turn([ready], rounds):
            setup.progress.show(f"{NAME}: {round_ + 1} of {rounds}, {stand.server}")
            series = Series(NAME, NAME, stand.server)
            runs.append(Run(series, round_, stand.start().seconds))
    return runs


def _compare(runs: Runs) -> list[Comparison]:
    service = Series(NAME, NAME, SERVICE)
    name = f"name on the bus, {ROWS} keys"
    return [compare(runs, name, service, service.of(FRAME), DIFFERENCE, 0.025)]


def _tables(_runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    yield limits_table("Start of the process: ms", "frame", comparisons, milli)


SECTION = Section(NAME, frozenset(SERVERS), _measure, _compare, _tables)
