"""Requests to end, made by a signal: what was started is taken down first."""

import signal
from types import FrameType
from typing import Optional

REQUESTS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Interrupted(KeyboardInterrupt):
    """A signal asked the harness to end."""

    def __init__(self, number: int) -> None:
        super().__init__(number)
        self.number = number


_requested: Optional[int] = None


def end_in_order() -> None:
    """Has a request to end interrupt what is done, so that it is taken down."""
    for number in REQUESTS:
        # Who starts this in the background may have had it ignore some.
        if signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, _interrupt)


def heed() -> None:
    """Interrupts again if that was asked for: what is raised in a callback of C goes no further."""
    if _requested is not None:
        raise Interrupted(_requested)


def _interrupt(number: int, _frame: Optional[FrameType]) -> None:
    global _requested
    _requested = number
    raise Interrupted(number)
