"""The root directory, booted with systemd."""

import subprocess
from pathlib import Path
from typing import Optional

from sandbox.loop import WaitTimeout, wait_until
from target_root import ENVIRONMENT, TargetRoot

HERE = Path(__file__).resolve().parent
BOOT_LIMIT = 60


class BootedSystem:
    """A booted root directory, with its units."""

    def __init__(self, root: TargetRoot) -> None:
        self._root = root
        self._log = root.path / "boot.log"
        with open(self._log, "wb") as log:
            self._outer = subprocess.Popen(
                [str(HERE / "boot-systemd"), str(root.path)],
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
            )

    def wait_until_up(self) -> None:
        try:
            wait_until(self._is_up, "systemd has started", BOOT_LIMIT)
        except WaitTimeout as error:
            log = self._log.read_text(encoding="utf-8", errors="replace")
            raise AssertionError(f"systemd did not start: {log[-400:]}") from error

    def run(self, *command: str, user: str = "root") -> "subprocess.CompletedProcess[str]":
        """Runs a command in the namespaces of the system."""
        return subprocess.run(
            ["nsenter", f"--target={self._first_process}", "--all", "--root", "--wd=/"]
            + ["chroot", f"--userspec={user}", "/", *command],
            env=ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            timeout=120,
            check=False,
        )

    def demand(self, *command: str, user: str = "root") -> str:
        result = self.run(*command, user=user)
        assert result.returncode == 0, f"{' '.join(command)}: {result.stdout}{result.stderr}"
        return result.stdout.strip()

    def power_off(self) -> None:
        """Kills the first process, and thus all processes of the system."""
        if (first := self._first_process) is not None:
            subprocess.run(["kill", "-KILL", str(first)], check=False)
        self._outer.wait(timeout=60)

    @property
    def _first_process(self) -> Optional[int]:
        """The process with id 1: the grandchild of boot-systemd, because unshare forks."""
        holder = child_of(self._outer.pid)
        return child_of(holder) if holder is not None else None

    def _is_up(self) -> bool:
        if self._outer.poll() is not None or self._first_process is None:
            return False
        state = self.run("systemctl", "is-system-running").stdout.strip()
        return state in ("running", "degraded")


def child_of(process: int) -> Optional[int]:
    try:
        children = Path(f"/proc/{process}/task/{process}/children").read_text(encoding="ascii")
    except FileNotFoundError:
        return None
    return int(children.split()[0]) if children else None
