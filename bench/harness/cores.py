"""Which cores this process and those that it starts may use."""

import os
from contextlib import contextmanager
from typing import Iterator

ONE = "one"
ALL = "all"

ALLOWED = frozenset(os.sched_getaffinity(0))
LAST = max(ALLOWED)

BY_NAME = {ONE: frozenset({LAST}), ALL: ALLOWED}


@contextmanager
def on_cores(name: str) -> Iterator[None]:
    """Meanwhile this process, and for good what it starts, stays on one core or uses all."""
    before = os.sched_getaffinity(0)
    os.sched_setaffinity(0, BY_NAME[name])
    try:
        yield
    finally:
        os.sched_setaffinity(0, before)
