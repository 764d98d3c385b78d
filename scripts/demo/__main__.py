"""Shows the service at work."""

import signal

# As long as there is nothing to clean up, Ctrl-C may end this as quietly as other signals do.
signal.signal(signal.SIGINT, signal.SIG_DFL)

import argparse  # noqa: E402
import os  # noqa: E402
import sys  # noqa: E402

from .interruption import Interruption  # noqa: E402
from .screen import NobodyReads  # noqa: E402
from .show import show  # noqa: E402


def main() -> int:
    parser = argparse.ArgumentParser(prog="demo", description=__doc__)
    parser.add_argument("--once", action="store_true", help="end after the show, also on a terminal")
    options = parser.parse_args()
    stay_up = not options.once and sys.stdin.isatty() and sys.stdout.isatty()
    interruption = Interruption()
    try:
        return show(stay_up, interruption)
    except NobodyReads:
        # What Python would still write at its own end goes nowhere either.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return 1
    finally:
        interruption.forget()


sys.exit(main())
