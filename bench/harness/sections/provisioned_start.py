"""The start of a phone with provisioned keys: its data on a disk, against its data in memory."""

from typing import Iterator, Sequence

from .. import names
from ..comparing import Comparison, compare
from ..programs import SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..stock import provisioned_settings
from ..tables import Table
from ..trials import in_turn
from .section import Section
from .showing import limits_table, milli
from .stands import stands

NAME = names.PROVISIONED_START
KEYS = (60, 1000)
IN_MEMORY, ON_DISK = "data in memory", "data on a disk"
LIMIT = 1.5


def _series(place: str, keys: int) -> Series:
    return Series(NAME, place, SERVICE, rows=keys)


def _measure(setup: Setup) -> list[Run]:
    runs = []
    for keys in KEYS:
        with stands(setup, NAME) as raise_stand:
            settings = provisioned_settings(keys)
            places = {
                place: raise_stand(SERVICE, directory, 0, with_server=False, settings=settings)
                for place, directory in ((IN_MEMORY, setup.memory), (ON_DISK, setup.disk))
            }
            for round_, place in in_turn([list(places)], setup.rounds):
                setup.progress.show(f"{NAME}: {keys} keys, {round_ + 1} of {setup.rounds}, {place}")
                runs.append(Run(_series(place, keys), round_, places[place].start().seconds))
    return runs


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(
            runs,
            f"{keys:,} provisioned keys",
            _series(ON_DISK, keys),
            _series(IN_MEMORY, keys),
            limit=LIMIT,
        )
        for keys in KEYS
    ]


def _tables(_runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    title = "Start with provisioned keys: ms"
    yield limits_table(title, "in memory", comparisons, milli, "on a disk")


SECTION = Section(NAME, frozenset(), _measure, _compare, _tables)
