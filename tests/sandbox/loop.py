"""Waiting with a limit, while the main loop turns."""

import os
import time
from typing import Callable, TypeVar

from gi.repository import GLib

T = TypeVar("T")

PATIENCE = float(os.environ.get("PROGKEYS_TEST_PATIENCE", "1"))
"""How much slower than usual the processes may be, for instance when built with sanitizers."""

LIMIT = 20.0 * PATIENCE
"""Seconds after which a wait is given up: long enough to mean that something is broken."""

TICK_MS = 5


class GaveUp(AssertionError):
    """What was waited for did not come within its limit."""


def wait_until(holds: Callable[[], T], what: str, limit: float = LIMIT) -> T:
    """Turns the main loop until `holds` returns something true, and returns that."""
    deadline = time.monotonic() + limit
    context = GLib.MainContext.default()
    tick = GLib.timeout_add(TICK_MS, lambda: GLib.SOURCE_CONTINUE)
    try:
        while not (result := holds()):
            if time.monotonic() > deadline:
                raise GaveUp(f"not within {limit:g} s: {what}")
            context.iteration(True)
        return result
    finally:
        GLib.source_remove(tick)
