"""What a command line comes to."""

import signal
import sys
from typing import Sequence

from .failure import told
from .options import BROKEN_LIMIT, NOT_MEASURED, PROGRAM, parser
from .selection import select


def main(arguments: Sequence[str]) -> int:
    """Measures, tells, and returns the exit status."""
    options = parser().parse_args(arguments)
    if options.help:
        # Who asks what help needs is told: nothing.
        print("" if options.needs else parser().format_help(), end="")
        return 0
    if options.needs:
        print(*select(options.only, options.quick).builds, sep="\n")
        return 0
    try:
        # Not before it is needed: it wants libraries that are not there before they are installed.
        from .measuring import measure_and_tell

        return 0 if measure_and_tell(options) else BROKEN_LIMIT
    except KeyboardInterrupt as interruption:
        return 128 + getattr(interruption, "number", signal.SIGINT)
    except Exception as error:
        print(f"{PROGRAM}: {told(error)}", file=sys.stderr)
        return NOT_MEASURED
