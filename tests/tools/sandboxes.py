"""Runs sandboxes and finds their processes."""

import contextlib
import os
import signal
import subprocess
from pathlib import Path
from typing import Iterator, Mapping, NamedTuple, Optional

from sandbox.loop import LIMIT, wait_until
from sandbox.processes import clean_environment

HOLD = "echo $PROGKEYS_SANDBOX; read end"
"""A command that prints the directory of its sandbox and runs until its input ends."""


class Process(NamedTuple):
    pid: int
    name: str


def processes_of(directory: str) -> list[Process]:
    """The processes of the sandbox with this directory, including its bus."""
    found = []
    for entry in Path("/proc").iterdir():
        with contextlib.suppress(OSError):
            if not entry.name.isdigit():
                continue
            name = os.path.basename(os.readlink(entry / "exe"))
            is_inside = f"PROGKEYS_SANDBOX={directory}\0".encode() in (entry / "environ").read_bytes()
            if is_inside or (name == "dbus-daemon" and f"{directory}/bus".encode() in (entry / "cmdline").read_bytes()):
                found.append(Process(int(entry.name), name))
    return found


def children_of(parent: int) -> list[int]:
    found = []
    for entry in Path("/proc").iterdir():
        with contextlib.suppress(OSError):
            if entry.name.isdigit() and int((entry / "stat").read_text().rpartition(")")[2].split()[1]) == parent:
                found.append(int(entry.name))
    return found


def nothing_is_left(directory: str) -> bool:
    return not processes_of(directory) and not Path(directory).exists()


class Sandbox:
    """A sandbox that runs until its input ends."""

    def __init__(self, tool: Path, options: tuple[str, ...], command: str) -> None:
        self.child = subprocess.Popen(
            [tool, "sandbox", *options, "--", "sh", "-c", command],
            env=clean_environment(),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        self.directory = self.child.stdout.readline().strip()
        assert Path(self.directory).is_dir(), self.child.communicate()

    def wait_for(self, name: str) -> None:
        """Waits until a process with this name runs."""
        wait_until(lambda: name in {process.name for process in processes_of(self.directory)}, f"{name} runs")

    def end(self) -> tuple[int, str]:
        """Closes its input, and returns its exit status and its messages."""
        _, errors = self.child.communicate(timeout=LIMIT)
        return self.child.returncode, errors

    def close(self) -> None:
        if self.child.poll() is None:
            self.child.send_signal(signal.SIGTERM)
        self.child.communicate(timeout=LIMIT)


@contextlib.contextmanager
def sandbox(tool: Path, *options: str, command: str = HOLD) -> Iterator[Sandbox]:
    running = Sandbox(tool, options, command)
    try:
        yield running
    finally:
        running.close()


def run(
    tool: Path, *words: str, environment: Optional[Mapping[str, str]] = None
) -> "subprocess.CompletedProcess[str]":
    """Runs a sandbox with these arguments, without a terminal."""
    return subprocess.run(
        [tool, "sandbox", *words],
        env={**clean_environment(), **(environment or {})},
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=3 * LIMIT,
        check=False,
    )
