"""The command line."""

import argparse
import shlex
import signal
import sys
from dataclasses import replace
from datetime import datetime, timezone
from pathlib import Path
from types import FrameType
from typing import Optional, Sequence

from .comparing import Comparison, broken
from .cores import ONE, go_first, on_cores
from .document import as_text, document
from .failure import MeasurementFailed
from .machine import describe
from .programs import CHECKOUT, Programs
from .report import tables_of, verdict, write_tables
from .runs import Runs
from .sections.section import Measured
from .selection import GROUPS, NAMES, SECTIONS, WORKS, Selection, select
from .setup import LEAST_ROUNDS, QUICK_ROUNDS, ROUNDS, Setup
from .storage import disk_directory, memory_directory

PROGRAM = "scripts/bench"
BROKEN_LIMIT = 1
NOT_MEASURED = 3
ON_STDOUT = "-"

DESCRIPTION = "Measures the service against the other servers, and holds it to its limits."
EPILOGUE = "\n".join(
    (
        "NAME is a measurement, several of them, or a work that is held against the rival's:",
        f"  {', '.join(section.name for section in SECTIONS)}",
        *(f"  {group}: {', '.join(members)}" for group, members in GROUPS.items()),
        f"  {', '.join(WORKS)}",
        "",
        f"Status: 0 if every limit holds, {BROKEN_LIMIT} if one does not, 2 after misuse,",
        f"{NOT_MEASURED} if something could not be measured.",
    )
)


def _rounds(text: str) -> int:
    number = int(text)
    if number < LEAST_ROUNDS:
        raise argparse.ArgumentTypeError(f"fewer than {LEAST_ROUNDS}; --quick makes fewer")
    return number


def _file(text: str) -> str:
    """A file that could be written; said before the measurement, not after it."""
    path = Path(text)
    if text != ON_STDOUT and (path.is_dir() or not path.absolute().parent.is_dir()):
        raise argparse.ArgumentTypeError(f"{text} cannot be written")
    return text


def parser() -> argparse.ArgumentParser:
    options = argparse.ArgumentParser(
        PROGRAM,
        description=DESCRIPTION,
        epilog=EPILOGUE,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        allow_abbrev=False,
    )
    add = options.add_argument
    add(
        "--json",
        type=_file,
        metavar="FILE",
        help="write everything as JSON; - for stdout, then no tables",
    )
    how_much = options.add_mutually_exclusive_group()
    how_much.add_argument("--rounds", type=_rounds, metavar="N", help=f"rounds ({ROUNDS})")
    how_much.add_argument(
        "--quick",
        action="store_true",
        help=f"{QUICK_ROUNDS} rounds of little; limits are not judged",
    )
    add(
        "--only",
        action="append",
        default=[],
        choices=NAMES,
        metavar="NAME",
        help="only this; may be repeated",
    )
    add("--build", type=Path, default=CHECKOUT / "build/bench", help=argparse.SUPPRESS)
    add("--build-qt6", type=Path, default=CHECKOUT / "build/bench-qt6", help=argparse.SUPPRESS)
    return options


def main(arguments: Sequence[str]) -> int:
    """Measures, tells, and returns the exit status."""
    options = parser().parse_args(arguments)
    try:
        return _measure_and_tell(options, shlex.join([PROGRAM, *arguments]))
    except KeyboardInterrupt:
        return 128 + signal.SIGINT
    except (MeasurementFailed, OSError) as error:
        print(f"{PROGRAM}: {error}", file=sys.stderr)
        return NOT_MEASURED


def end_in_order() -> None:
    """Has a request to end take down first what was started."""
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, _interrupt)


def _interrupt(_number: int, _frame: Optional[FrameType]) -> None:
    raise KeyboardInterrupt


def _measure_and_tell(options: argparse.Namespace, command: str) -> int:
    selection = select(options.only, options.quick)
    setup = Setup(
        Programs(options.build.resolve(), options.build_qt6.resolve()),
        memory_directory(),
        disk_directory(),
        QUICK_ROUNDS if options.quick else options.rounds or ROUNDS,
        options.quick,
        selection.works,
    )
    setup.programs.require(selection.servers)
    go_first()
    head = {
        "date": datetime.now(timezone.utc).isoformat(timespec="seconds"),
        "command": command,
        "rounds": setup.rounds,
        "machine": describe(setup),
    }
    measured = _measure(setup, selection)
    comparisons = [comparison for each in measured for comparison in each.comparisons]
    if options.json is not None:
        runs = Runs(run for each in measured for run in each.runs)
        _write(as_text(document(head, runs, comparisons)), options.json)
    if options.json != ON_STDOUT:
        write_tables(tables_of(measured), sys.stdout)
    print(verdict(comparisons), file=sys.stderr if options.json == ON_STDOUT else sys.stdout)
    return BROKEN_LIMIT if broken(comparisons) else 0


def _measure(setup: Setup, selection: Selection) -> list[Measured]:
    measured = []
    try:
        with on_cores(ONE):
            for section in selection.sections:
                runs = Runs(section.measure(setup))
                comparisons = section.compare(runs)
                if setup.is_quick:
                    comparisons = [replace(each, is_judged=False) for each in comparisons]
                measured.append(Measured(section, runs, comparisons))
    finally:
        setup.progress.clear()
    return measured


def _write(text: str, file: str) -> None:
    if file == ON_STDOUT:
        sys.stdout.write(text)
    else:
        Path(file).write_text(text, encoding="utf-8")
