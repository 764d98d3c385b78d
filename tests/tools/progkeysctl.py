"""Runs the tool, with or without a terminal."""

import fcntl
import json
import os
import pty
import struct
import subprocess
import termios
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Mapping, Optional

from sandbox.loop import LIMIT
from sandbox.orphans import die_with_parent
from sandbox.processes import clean_environment


@dataclass
class Result:
    """The result of a run."""

    status: int
    out: str
    err: str

    @property
    def json(self) -> Any:
        """The output, parsed as JSON."""
        return json.loads(self.out)

    @property
    def lines(self) -> list[str]:
        return self.out.splitlines()


def environment(address: Optional[str], extra: Mapping[str, str]) -> dict[str, str]:
    own = clean_environment()
    own.pop("NO_COLOR", None)
    own.pop("COLUMNS", None)
    own["TERM"] = "xterm"
    if address:
        own["DBUS_SYSTEM_BUS_ADDRESS"] = address
    own.update(extra)
    return own


class Tool:
    """The built progkeysctl, with the bus of the test as its system bus."""

    def __init__(self, bin_dir: Path, address: Optional[str]) -> None:
        self.executable = bin_dir / "progkeysctl"
        self.address = address

    def __call__(
        self,
        *words: object,
        stdin: Optional[str] = None,
        env: Optional[Mapping[str, str]] = None,
        limit: float = LIMIT,
    ) -> Result:
        """Runs the tool without a terminal."""
        ended = subprocess.run(
            self.command(*words),
            input=stdin,
            stdin=subprocess.DEVNULL if stdin is None else None,
            capture_output=True,
            encoding="utf-8",
            env=environment(self.address, env or {}),
            timeout=limit,
            check=False,
        )
        return Result(ended.returncode, ended.stdout, ended.stderr)

    def json(self, *words: object, status: int = 0) -> Any:
        """Runs a command, checks its status, and returns its output, parsed as JSON."""
        result = self(*words, "--json=short")
        assert result.status == status, f"status {result.status}: {result.err}"
        return result.json

    def command(self, *words: object) -> list[str]:
        return [str(self.executable), *(str(word) for word in words)]

    def start(self, *words: object, env: Optional[Mapping[str, str]] = None) -> subprocess.Popen[str]:
        """Starts the tool. The caller must end it."""
        return subprocess.Popen(
            self.command(*words),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            encoding="utf-8",
            env=environment(self.address, env or {}),
            preexec_fn=die_with_parent,
        )

    def on_terminal(self, width: int, *words: object, env: Optional[Mapping[str, str]] = None) -> Result:
        """Runs the tool on a terminal of this width."""
        controller, terminal = pty.openpty()
        fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
        child = subprocess.Popen(
            self.command(*words),
            stdin=subprocess.DEVNULL,
            stdout=terminal,
            stderr=subprocess.PIPE,
            env=environment(self.address, env or {}),
            preexec_fn=die_with_parent,
        )
        os.close(terminal)
        out = read_to_end(controller)
        assert child.stderr is not None
        err = child.stderr.read()
        status = child.wait(LIMIT)
        return Result(status, out.decode().replace("\r\n", "\n"), err.decode())


def read_to_end(descriptor: int) -> bytes:
    """Reads all output of a terminal."""
    parts = []
    try:
        while part := os.read(descriptor, 65536):
            parts.append(part)
    except OSError:
        pass  # the other end is closed
    finally:
        os.close(descriptor)
    return b"".join(parts)
