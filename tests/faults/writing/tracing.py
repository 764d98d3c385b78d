"""Injecting faults into the system calls of a running process."""

import re
from pathlib import Path
from typing import NamedTuple

from sandbox.loop import wait_until
from sandbox.processes import Process, clean_environment

INJECTED = re.compile(r"\(\d+<(?:[^>]*/)?([^>]*)>.*\(INJECTED\)")


class Fault(NamedTuple):
    """An effect at the nth call of a kind and, if permanent, at all later ones."""

    call: str
    number: int
    effect: str
    permanent: bool = False

    @property
    def rule(self) -> str:
        return f"inject={self.call}:{self.effect}:when={self.number}{'+' * self.permanent}"


def failing(call: str, number: int, error: str, permanent: bool) -> Fault:
    return Fault(call, number, f"error={error}", permanent)


def killing(call: str, number: int) -> Fault:
    return Fault(call, number, "signal=SIGKILL")


class Tracer:
    """Injects a fault into a running process until the context ends."""

    def __init__(self, pid: int, fault: Fault, directory: Path) -> None:
        self._fault = fault
        self._pid = pid
        self._trace = directory / "trace"
        self._messages = directory / "trace.messages"

    def __enter__(self) -> "Tracer":
        self._trace.unlink(missing_ok=True)
        self._messages.unlink(missing_ok=True)
        output = ["-f", "-y", "-o", str(self._trace)]
        calls = ["-e", f"trace={self._fault.call}", "-e", self._fault.rule]
        command = ["strace", *output, *calls, "-p", str(self._pid)]
        self._process = Process(command, clean_environment(), self._messages)
        wait_until(self._is_attached, "strace is attached")
        return self

    def _is_attached(self) -> bool:
        messages = self._process.log.raw()
        assert self._process.running, f"strace has ended:\n{messages}"
        return "attached" in messages

    def __exit__(self, *_exception: object) -> None:
        # SIGKILL, because strace may wait forever for a thread of a process that is being killed.
        self._process.kill()

    def failed_files(self) -> set[str]:
        """The names of the files whose calls failed."""
        lines = self._trace.read_text(errors="replace").splitlines()
        return {match[1] for line in lines if (match := INJECTED.search(line))}
