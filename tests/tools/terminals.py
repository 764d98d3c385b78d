"""A terminal with a program in it."""

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
    """Runs the program from the start, as the leader of the terminal's session."""

    def __init__(self, command: list[str], environment: Mapping[str, str]) -> None:
        self.pid, self._descriptor = pty.fork()
        if self.pid == 0:
            os.execve(command[0], command, environment)
        self._unread = ""

    def close(self) -> None:
        """Hangs up."""
        with contextlib.suppress(OSError):
            os.close(self._descriptor)

    def type(self, keys: bytes) -> None:
        os.write(self._descriptor, keys)

    def line(self, text: str) -> None:
        self.type(f"{text}\n".encode())

    def _read(self, deadline: float) -> bytes:
        """What has come, once something has; nothing when the program has let go of the terminal."""
        readable, _, _ = select.select([self._descriptor], [], [], max(0, deadline - time.monotonic()))
        assert readable, f"nothing comes any more after {self._unread!r}"
        with contextlib.suppress(OSError):
            return os.read(self._descriptor, 4096)
        return b""

    def read_until(self, text: str) -> str:
        """What came up to this text, which must come."""
        deadline = time.monotonic() + LIMIT
        while text not in self._unread:
            came = self._read(deadline)
            assert came, f"{text!r} has not come, but {self._unread!r}"
            self._unread += came.decode(errors="replace")
        before, _, self._unread = self._unread.partition(text)
        return before

    def status(self) -> int:
        """The exit status of the program, which must end."""
        deadline = time.monotonic() + LIMIT
        while self._read(deadline):
            pass
        return os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])
