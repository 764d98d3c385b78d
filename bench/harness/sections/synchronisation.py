"""How the time of a synchronisation grows with the number of records, and where it goes."""

from typing import Iterator, Sequence

from sandbox.bus import PrivateBus
from sandbox.processes import clean_environment

from ..comparing import Comparison, compare
from ..cores import ONE, on_cores
from ..driver import printed_by
from ..figures import spread
from ..programs import SERVICE
from ..runs import Run, Runs, Series
from ..setup import Setup
from ..storage import fresh_directory
from ..tables import Column, Table, plain
from .section import Section
from .showing import limits_table, milli

NAME = "synchronisation"
FEW, MANY = 100, 1000
KINDS = ("settings", "statements", "events")
REPEATS = 3
"""Each is a median of several runs already."""


def _series(records: int) -> Series:
    return Series(NAME, NAME, SERVICE, rows=records)


def _measure(setup: Setup) -> list[Run]:
    programs = setup.programs
    command = [str(programs.synchronisation), str(programs.settings_manager), "--json"]
    command += ["--records", str(FEW), str(MANY)]
    repeats = 1 if setup.is_quick else REPEATS
    runs = []
    for round_ in range(repeats):
        setup.progress.show(f"{NAME}: {round_ + 1} of {repeats}")
        with on_cores(ONE), PrivateBus() as bus, fresh_directory(setup.memory) as data:
            environment = {
                **clean_environment(),
                "DBUS_SYSTEM_BUS_ADDRESS": bus.address,
                "ZEL_DATA_ROOT": f"{data}/",
                "ZEL_LOG_LEVEL": "3",
            }
            for measured in printed_by(command, environment):
                shares = {kind: measured[kind] for kind in KINDS}
                series = _series(measured["records"])
                runs.append(Run(series, round_, measured["seconds"], shares=shares))
    return runs


def _compare(runs: Runs) -> list[Comparison]:
    name = "ten times the records"
    return [compare(runs, name, _series(MANY), _series(FEW), limit=11)]


def _tables(runs: Runs, comparisons: Sequence[Comparison]) -> Iterator[Table]:
    yield limits_table("Synchronisation: ms", f"with {FEW}", comparisons, milli, f"with {MANY:,}")
    headings = ("records", "ms", "ms each", *KINDS, "rest")
    rows = []
    for records in (FEW, MANY):
        of_records = runs.of(_series(records))
        seconds = spread([run.figure for run in of_records]).median
        shares = [
            spread([run.shares[kind] for run in of_records if run.shares]).median for kind in KINDS
        ]
        parts = [*shares, max(0.0, 1 - sum(shares))]
        rows.append(
            plain(f"{records:,}", milli(seconds), f"{seconds / records * 1e3:.3f}")
            + plain(*(f"{part:.0%}" for part in parts))
        )
    columns = [Column(heading, is_number=True) for heading in headings]
    yield Table("Where a synchronisation's time goes", columns, rows)


SECTION = Section(NAME, frozenset(), _measure, _compare, _tables)
