"""What the processes that are measured find in their environment."""

import os
from contextlib import contextmanager
from pathlib import Path
from typing import Iterator

from sandbox.processes import clean_environment

STEERING = ("QT_", "MALLOC_", "GLIBC_TUNABLES", "LD_PRELOAD")
"""How the names begin of what would steer the libraries of those who are measured."""

ERRORS_ONLY = "3"


@contextmanager
def nobody_steered() -> Iterator[None]:
    """Meanwhile this process and those that it starts are not steered by its caller."""
    taken = {name: os.environ.pop(name) for name in list(os.environ) if name.startswith(STEERING)}
    try:
        yield
    finally:
        os.environ.update(taken)


def environment_of(address: str, data_root: Path) -> dict[str, str]:
    """The environment of a server on a bus."""
    return {
        **clean_environment(),
        "DBUS_SYSTEM_BUS_ADDRESS": address,
        "ZEL_DATA_ROOT": f"{data_root}/",
        "ZEL_LOG_LEVEL": ERRORS_ONLY,
    }
