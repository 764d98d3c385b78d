"""Ctrl-C and its relatives, noticed between two steps and never in the middle of one."""

import signal
from typing import Callable, Optional

SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Interrupted(Exception):
    """Somebody wants this to end."""


class Interruption:
    """Remembers the first signal that asks for the end.

    An exception thrown from a signal handler could get lost in a callback of the main loop, or tear a process from
    whoever has to end it. So the handler only takes note, and wakes whoever waits for a process.
    """

    def __init__(self) -> None:
        self.number: Optional[int] = None
        self.wake: Callable[[], None] = lambda: None
        for number in SIGNALS:
            signal.signal(number, self._receive)

    def _receive(self, number: int, _frame: object) -> None:
        if self.number is None:
            self.number = number
            self.wake()

    def check(self) -> None:
        """Raises if the end has been asked for."""
        if self.number is not None:
            raise Interrupted

    @staticmethod
    def forget() -> None:
        """From now on nothing interrupts: whoever is impatient must not turn a clean end into another one."""
        for number in SIGNALS:
            signal.signal(number, signal.SIG_IGN)

    @property
    def status(self) -> int:
        """The exit status of a process that was asked to end before it was done."""
        return 128 + (self.number or 0)
