"""How the time of a synchronisation grows with the number of records, and where it goes."""

from typing import Iterator, Sequence

from sandbox.bus import PrivateBus

from .. import names
from ..comparing import Comparison, compare
from ..cores import ONE, on_cores
from ..driver import LIMIT, printed_by
from ..environment import environment_of
from ..figures import spread
from ..programs import SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..storage import fresh_directory
from ..tables import Column, Row, Table, plain
from .section import Section
from .showing import limits_table, milli

NAME = names.SYNCHRONISATION
FEW, MANY = 100, 1000
SHARES = ("settings", "statements", "events")

MODULE_KEYS = "module keys"
SET_KEYS = "set keys"
OPTIONS: dict[str, tuple[str, ...]] = {MODULE_KEYS: (), SET_KEYS: ("--set-keys",)}
LIMIT_OF_GROWTH = 13.0
"""Ten times the records: each creation of a key counts the keys of the set."""

QUICK_RUNS = 2
REPORTED_RUNS = 3
SECONDS_OF_RUN = 20
"""The most that one of each size may take; a few are usual."""


def _series(keys: str, records: int) -> Series:
    return Series(NAME, keys, SERVICE, rows=records)


def _measure(setup: Setup) -> list[Run]:
    rounds = QUICK_RUNS if setup.is_quick else setup.rounds
    runs = _synchronised(setup, MODULE_KEYS, rounds)
    return runs + _synchronised(setup, SET_KEYS, min(rounds, REPORTED_RUNS))


def _synchronised(setup: Setup, keys: str, rounds: int) -> list[Run]:
    setup.progress.show(f"{NAME}: {rounds} rounds, {keys}")
    programs = setup.programs
    command = [str(programs.synchronisation), str(programs.settings_manager), "--json"]
    command += ["--runs", str(rounds), "--records", str(FEW), str(MANY), *OPTIONS[keys]]
    with on_cores(ONE), PrivateBus() as bus, fresh_directory(setup.memory) as data:
        limit = LIMIT + SECONDS_OF_RUN * rounds
        printed = printed_by(command, environment_of(bus.address, data), limit)
    return [
        Run(
            _series(keys, each["records"]),
            each["run"],
            each["seconds"],
            shares={share: each[share] for share in SHARES},
        )
        for each in printed
    ]


def _compare(runs: Runs) -> list[Comparison]:
    return [
        compare(
            runs,
            f"ten times the {keys}",
            _series(keys, MANY),
            _series(keys, FEW),
            limit=LIMIT_OF_GROWTH,
        )
        for keys in OPTIONS
    ]


def _tables(runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    yield limits_table("Synchronisation: ms", f"with {FEW}", comparisons, milli, f"with {MANY:,}")
    headings = ("records", "ms", "ms each", *SHARES, "rest")
    columns = [Column("keys"), *(Column(heading, is_number=True) for heading in headings)]
    rows = [_shares(runs, keys, records) for keys in OPTIONS for records in (FEW, MANY)]
    yield Table("Where a synchronisation's time goes", columns, rows)


def _shares(runs: Runs, keys: str, records: int) -> Row:
    of_records = runs.of(_series(keys, records))
    seconds = spread([run.figure for run in of_records]).median
    shares = [
        spread([run.shares[share] for run in of_records if run.shares]).median for share in SHARES
    ]
    parts = [*shares, max(0.0, 1 - sum(shares))]
    each = f"{seconds / records * 1e3:.3f}"
    return plain(keys, f"{records:,}", milli(seconds), each, *(f"{part:.0%}" for part in parts))


SECTION = Section(NAME, frozenset(), _measure, _compare, _tables)
