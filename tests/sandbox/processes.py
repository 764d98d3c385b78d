"""Child processes that end with their parent and write their error output to a log file."""

import os
import signal
import subprocess
from pathlib import Path
from typing import Mapping, Optional, Sequence

from .client import Client
from .log import LogReader
from .loop import LIMIT, wait_until
from .names import SERVICE, SETTINGS_MANAGER, bus_name
from .orphans import die_with_parent


def clean_environment() -> dict[str, str]:
    """The environment without the variables that change the behavior of the platform."""
    return {
        name: value
        for name, value in os.environ.items()
        if not name.startswith(("ZEL_", "DBUS_", "JOURNAL_", "NOTIFY_", "WATCHDOG_"))
    }


class Process:
    """A program that writes its output to a log file."""

    def __init__(
        self, command: Sequence[str], environment: Mapping[str, str], log_path: Path
    ) -> None:
        self.command = [str(word) for word in command]
        self.log = LogReader(log_path)
        with open(log_path, "ab") as log_file:
            self._child = subprocess.Popen(
                self.command,
                env=dict(environment),
                stdin=subprocess.DEVNULL,
                stdout=log_file,
                stderr=log_file,
                preexec_fn=die_with_parent,
            )

    def __enter__(self) -> "Process":
        return self

    def __exit__(self, *_exception: object) -> None:
        self.kill()

    def __str__(self) -> str:
        return f"{Path(self.command[0]).name}[{self.pid}]"

    @property
    def pid(self) -> int:
        return self._child.pid

    @property
    def running(self) -> bool:
        return self._child.poll() is None

    @property
    def status(self) -> Optional[int]:
        """The exit status, or the negative number of the signal that killed it. None while it runs."""
        return self._child.poll()

    def send_signal(self, number: int) -> None:
        self._child.send_signal(number)

    def wait_for_exit(self, limit: float = LIMIT) -> int:
        """Waits until the process ends and returns its exit status."""
        wait_until(lambda: not self.running, f"{self} ends", limit)
        return self._child.returncode

    def stop(self, number: int = signal.SIGTERM, status: int = 0, limit: float = LIMIT) -> None:
        """Sends the process a signal, waits until it ends and checks its exit status."""
        if self.running:
            self.send_signal(number)
        found = self.wait_for_exit(limit)
        assert (
            found == status
        ), f"{self} ended with status {found}, not {status}; its log:\n{self.log.raw()}"

    def kill(self) -> None:
        """Kills the process if it still runs."""
        if self.running:
            self._child.kill()
        self._child.wait()


class Module(Process):
    """A module of the platform. It claims its name on the bus when it is ready."""

    def __init__(
        self, name: str, command: Sequence[str], environment: Mapping[str, str], log_path: Path
    ) -> None:
        self.name = name
        super().__init__(command, environment, log_path)

    def wait_until_ready(self, client: Client, limit: float = LIMIT) -> None:
        """Waits until this process owns its name. Fails if the process ends before."""
        is_up = self.starts(client, limit)
        assert is_up, f"{self} ended with status {self.status}; its log:\n{self.log.raw()}"
        name = bus_name(self.name)
        owned_by = client.process_of(name)
        assert owned_by == self.pid, f"{name} belongs to process {owned_by}, not to {self}"

    def starts(self, client: Client, limit: float = LIMIT) -> bool:
        """Waits until the name has an owner or the process ends. Returns whether it still runs."""
        name = bus_name(self.name)
        # Polls, because the bus allows a connection only a few hundred matches.
        wait_until(
            lambda: client.connection.name_has_owner(name) or not self.running,
            f"{self} claims {name}",
            limit,
        )
        return self.running


def start_service(
    bin_dir: Path,
    address: str,
    data_root: Path,
    log_path: Path,
    log_level: Optional[int] = None,
    extra: Optional[Mapping[str, str]] = None,
) -> Module:
    """Starts the service with its data below `data_root`."""
    environment = clean_environment()
    environment.update(DBUS_SYSTEM_BUS_ADDRESS=address, ZEL_DATA_ROOT=f"{data_root}{os.sep}")
    if log_level is not None:
        environment["ZEL_LOG_LEVEL"] = str(log_level)
    environment.update(extra or {})
    return Module(SERVICE, [str(bin_dir / "zelprogrammablekeys")], environment, log_path)


def start_settings_manager(
    bin_dir: Path,
    address: str,
    settings_dir: Path,
    log_path: Path,
    data_root: Optional[Path] = None,
    extra: Optional[Mapping[str, str]] = None,
) -> Module:
    """Starts the SettingsManager peer, which serves the files in `settings_dir`."""
    environment = clean_environment()
    environment.update(DBUS_SYSTEM_BUS_ADDRESS=address)
    environment.update(ZEL_DATA_ROOT=f"{data_root or log_path.parent}{os.sep}")
    environment.update(extra or {})
    return Module(
        SETTINGS_MANAGER,
        [str(bin_dir / "settingsmanager"), str(settings_dir)],
        environment,
        log_path,
    )
