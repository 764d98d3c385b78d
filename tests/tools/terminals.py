"""Runs programs on a terminal."""

import contextlib
import os
import pty
import select
import time
from typing import Mapping

from sandbox.loop import LIMIT

CTRL_C = b"\x03"
CTRL_Z = b"\x1a"


class Terminal:
    """A program that is the leader of a terminal's session."""

    def __init__(self, command: list[str], environment: Mapping[str, str]) -> None:
        self.pid, self._descriptor = pty.fork()
        if self.pid == 0:
            os.execve(command[0], command, environment)
        self._unread = ""

    def close(self) -> None:
        """Closes the terminal."""
        with contextlib.suppress(OSError):
            os.close(self._descriptor)

    def type(self, keys: bytes) -> None:
        os.write(self._descriptor, keys)

    def line(self, text: str) -> None:
        self.type(f"{text}\n".encode())

    def _read(self, deadline: float) -> bytes:
        """Waits for output. The result is empty after the program has closed the terminal."""
        readable, _, _ = select.select([self._descriptor], [], [], max(0, deadline - time.monotonic()))
        assert readable, f"no output after {self._unread!r}"
        with contextlib.suppress(OSError):
            return os.read(self._descriptor, 4096)
        return b""

    def read_until(self, text: str) -> str:
        """Waits for this text, and returns the output before it."""
        deadline = time.monotonic() + LIMIT
        while text not in self._unread:
            output = self._read(deadline)
            assert output, f"{text!r} is missing in {self._unread!r}"
            self._unread += output.decode(errors="replace")
        before, _, self._unread = self._unread.partition(text)
        return before

    def status(self) -> int:
        """Waits for the end of the program, and returns its exit status."""
        deadline = time.monotonic() + LIMIT
        while self._read(deadline):
            pass
        return os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])
