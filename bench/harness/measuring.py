"""Measures what is wanted, and tells what came of it."""

import argparse
import sys
from dataclasses import dataclass, field, replace
from datetime import datetime, timezone
from pathlib import Path
from typing import Any, Mapping, Optional, Sequence

from .comparing import Comparison, broken
from .cores import ONE, on_cores
from .document import as_text, document
from .ending import heed
from .environment import nobody_steered
from .failure import MeasurementFailed, told
from .machine import describe
from .options import ON_STDOUT, command
from .programs import Programs
from .report import heading, tables_of, verdict, write_tables
from .runs import Runs
from .sections.every import SECTIONS
from .sections.section import Measured, Section
from .selection import Selection, select
from .setup import QUICK_ROUNDS, ROUNDS, Setup
from .storage import disk_directory, memory_directory


@dataclass
class Outcome:
    """What was measured, and what could not be, with which it ended."""

    measured: list[Measured] = field(default_factory=list)
    failed: Optional[str] = None
    reason: str = ""

    @property
    def runs(self) -> Runs:
        return Runs(run for each in self.measured for run in each.runs)

    @property
    def comparisons(self) -> list[Comparison]:
        return [comparison for each in self.measured for comparison in each.comparisons]


def measure_and_tell(options: argparse.Namespace) -> bool:
    """Whether every limit holds; fails if something could not be measured."""
    selection = select(options.only, options.quick)
    setup = _setup(options, selection)
    with nobody_steered():
        head: dict[str, Any] = {
            "date": datetime.now(timezone.utc).isoformat(timespec="seconds"),
            "command": command(options),
            "rounds": setup.rounds,
            "machine": describe(setup),
        }
        outcome = _measure(setup, [SECTIONS[name] for name in selection.sections])
    if outcome.measured:
        if options.json != ON_STDOUT:
            print(heading(setup.rounds, head["machine"]["load"]), end="\n\n")
            write_tables(tables_of(outcome.measured), sys.stdout)
        _write(head, outcome, options.json)
    if outcome.failed is not None:
        raise MeasurementFailed(f"{outcome.failed} could not be measured: {outcome.reason}")
    comparisons = outcome.comparisons
    print(verdict(comparisons), file=sys.stderr if options.json == ON_STDOUT else sys.stdout)
    return not broken(comparisons)


def _setup(options: argparse.Namespace, selection: Selection) -> Setup:
    programs = Programs(options.build.resolve(), options.build_qt6.resolve())
    programs.require(server for name in selection.sections for server in SECTIONS[name].servers)
    return Setup(
        programs,
        memory_directory(),
        disk_directory(),
        QUICK_ROUNDS if options.quick else options.rounds or ROUNDS,
        options.quick,
        selection.works,
    )


def _measure(setup: Setup, sections: Sequence[Section]) -> Outcome:
    outcome = Outcome()
    with on_cores(ONE):
        for section in sections:
            try:
                outcome.measured.append(_measured(setup, section))
            # Whatever it is, what was measured before is worth telling.
            except Exception as error:
                outcome.failed, outcome.reason = section.name, told(error)
                break
            finally:
                setup.progress.clear()
    heed()
    return outcome


def _measured(setup: Setup, section: Section) -> Measured:
    runs = Runs(section.measure(setup))
    comparisons = section.compare(runs)
    if setup.is_quick:
        comparisons = [replace(each, is_judged=False) for each in comparisons]
    return Measured(section, runs, comparisons, list(section.tables(runs, comparisons)))


def _write(head: Mapping[str, Any], outcome: Outcome, file: Optional[str]) -> None:
    if file is None:
        return
    ending = {} if outcome.failed is None else {"failed": outcome.failed}
    text = as_text(document({**head, **ending}, outcome.runs, outcome.comparisons))
    if file == ON_STDOUT:
        sys.stdout.write(text)
    else:
        Path(file).write_text(text, encoding="utf-8")
