"""Runs the programs that measure, and reads what they print."""

import json
import os
import shlex
import signal
import subprocess
from contextlib import suppress
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Mapping, Sequence

from sandbox.orphans import die_with_parent

from .failure import MeasurementFailed

LIMIT = 60.0
"""Seconds after which a program that measures is given up."""


@dataclass(frozen=True)
class Timed:
    """So many operations took so many seconds."""

    count: int
    seconds: float


def printed_by(
    command: Sequence[str], environment: Mapping[str, str], limit: float = LIMIT
) -> Any:
    """The JSON that a program prints."""
    child = subprocess.Popen(
        command,
        env=dict(environment),
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        encoding="utf-8",
        errors="replace",
        preexec_fn=die_with_parent,
    )
    try:
        written, complaint = child.communicate(timeout=limit)
    except BaseException as interruption:
        # It leads a process group, in which is what it has started.
        with suppress(ProcessLookupError):
            os.killpg(child.pid, signal.SIGKILL)
        child.communicate()
        if isinstance(interruption, subprocess.TimeoutExpired):
            raise MeasurementFailed(f"not within {limit:g} s: {shlex.join(command)}") from None
        raise
    if child.returncode != 0:
        raise MeasurementFailed(
            f"status {child.returncode} from {shlex.join(command)}:\n{complaint.strip()}"
        )
    try:
        return json.loads(written)
    except ValueError:
        raise MeasurementFailed(f"no JSON from {shlex.join(command)}: {written!r}") from None


def drive(client: Path, environment: Mapping[str, str], *words: object) -> Timed:
    """Has the client do a work on the server of a bus."""
    result = printed_by([str(client), *map(str, words)], environment)
    return Timed(int(result["count"]), float(result["seconds"]))
