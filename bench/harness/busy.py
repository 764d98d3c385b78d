"""Another process that wants the core as well."""

from contextlib import contextmanager
from pathlib import Path
from typing import Iterator

from sandbox.processes import Process, clean_environment

from .cores import ONE, on_cores
from .failure import MeasurementFailed
from .programs import PYTHON
from .storage import fresh_directory

SPIN = "while True: pass"


@contextmanager
def busy_process(storage: Path) -> Iterator[Process]:
    """Meanwhile one process keeps the one core busy, in a session of its own as servers are."""
    with fresh_directory(storage) as directory:
        with on_cores(ONE):
            process = Process([PYTHON, "-c", SPIN], clean_environment(), directory / "log")
        with process:
            yield process
            if not process.running:
                raise MeasurementFailed(f"the busy process ended with status {process.status}")
