"""The command line, and the command as it is recorded."""

import argparse
import shlex
from pathlib import Path

from .names import GROUPS, SECTIONS
from .programs import CHECKOUT
from .selection import NAMES, WORKS
from .setup import LEAST_ROUNDS, QUICK_ROUNDS, ROUNDS

PROGRAM = "scripts/bench"
BROKEN_LIMIT = 1
NOT_MEASURED = 3
ON_STDOUT = "-"

DESCRIPTION = "Measures the service against the other servers, and holds it to its limits."
EPILOGUE = "\n".join(
    (
        "NAME is a measurement, several of them, or a work that is held against the rival's:",
        f"  {', '.join(SECTIONS)}",
        *(f"  {group}: {', '.join(members)}" for group, members in GROUPS.items()),
        f"  {', '.join(WORKS)}",
        "",
        f"Status: 0 if every limit holds, {BROKEN_LIMIT} if one does not, 2 after misuse,",
        f"{NOT_MEASURED} if something could not be measured; what was measured before it is told.",
    )
)


def _rounds(text: str) -> int:
    number = int(text)
    if number < LEAST_ROUNDS:
        raise argparse.ArgumentTypeError(f"fewer than {LEAST_ROUNDS}; --quick makes fewer")
    return number


def _file(text: str) -> str:
    """A file that can be written; said before the measurement, not after it."""
    path = Path(text)
    if text != ON_STDOUT and not path.is_fifo():
        is_new = not path.exists()
        try:
            path.open("ab").close()
        except OSError as error:
            reason = f"{text} cannot be written: {error.strerror}"
            raise argparse.ArgumentTypeError(reason) from error
        if is_new:
            path.unlink()
    return text


def parser() -> argparse.ArgumentParser:
    options = argparse.ArgumentParser(
        PROGRAM,
        description=DESCRIPTION,
        epilog=EPILOGUE,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        allow_abbrev=False,
        add_help=False,
    )
    add = options.add_argument
    add("-h", "--help", action="store_true", help="show this; nothing is installed or built")
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
    # For scripts/bench: the presets that it must build.
    add("--needs", action="store_true", help=argparse.SUPPRESS)
    add("--build", type=Path, default=CHECKOUT / "build/bench", help=argparse.SUPPRESS)
    add("--build-qt6", type=Path, default=CHECKOUT / "build/bench-qt6", help=argparse.SUPPRESS)
    return options


def command(options: argparse.Namespace) -> str:
    """The command as it is recorded: without a path of this machine."""
    words = [PROGRAM]
    if options.quick:
        words.append("--quick")
    if options.rounds is not None:
        words += ["--rounds", str(options.rounds)]
    for name in options.only:
        words += ["--only", name]
    if options.json is not None:
        words += ["--json", _within_checkout(options.json)]
    return shlex.join(words)


def _within_checkout(file: str) -> str:
    path = Path(file).resolve()
    if file == ON_STDOUT:
        return file
    return str(path.relative_to(CHECKOUT)) if CHECKOUT in path.parents else path.name
