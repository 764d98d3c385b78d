"""Waiting for a condition with a time limit, while the main loop runs."""

import os
import time
from typing import Callable, TypeVar

from gi.repository import GLib

T = TypeVar("T")

WAIT_FACTOR = float(os.environ.get("PROGKEYS_TEST_WAIT_FACTOR", "1"))
"""How much slower than usual the processes may be, for instance when built with sanitizers."""

LIMIT = 20.0 * WAIT_FACTOR
"""The default time limit in seconds. A wait that takes longer is a failure."""

TICK_MS = 5


class WaitTimeout(AssertionError):
    """A condition did not become true within its time limit."""


def wait_until(condition: Callable[[], T], what: str, limit: float = LIMIT) -> T:
    """Runs the main loop until `condition` returns a true value, and returns that value."""
    deadline = time.monotonic() + limit
    context = GLib.MainContext.default()
    tick = GLib.timeout_add(TICK_MS, lambda: GLib.SOURCE_CONTINUE)
    try:
        while not (result := condition()):
            if time.monotonic() > deadline:
                raise WaitTimeout(f"not within {limit:g} s: {what}")
            context.iteration(True)
        return result
    finally:
        GLib.source_remove(tick)
