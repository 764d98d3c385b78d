"""Child processes that end with their parent, whose log can be read while they run."""

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
    """This process's environment without what would steer its children unasked."""
    return {
        name: value
        for name, value in os.environ.items()
        if not name.startswith(("ZEL_", "DBUS_", "JOURNAL_", "NOTIFY_", "WATCHDOG_"))
    }


class Process:
    """One running program, its error output kept in a file."""

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
        """The exit status, or minus the signal that killed the process; None while it runs."""
        return self._child.poll()

    def send_signal(self, number: int) -> None:
        self._child.send_signal(number)

    def wait_for_exit(self, limit: float = LIMIT) -> int:
        """The exit status, once there is one."""
        wait_until(lambda: not self.running, f"{self} ends", limit)
        return self._child.returncode

    def stop(self, number: int = signal.SIGTERM, status: int = 0, limit: float = LIMIT) -> None:
        """Asks the process to end and holds it to its exit status."""
        if self.running:
            self.send_signal(number)
        found = self.wait_for_exit(limit)
        assert (
            found == status
        ), f"{self} ended with status {found}, not {status}; its log:\n{self.log.raw()}"

    def kill(self) -> None:
        """Ends the process without asking; does nothing when it has ended."""
        if self.running:
            self._child.kill()
        self._child.wait()


class Module(Process):
    """A module of the platform: a process that claims a name on the bus when it is ready."""

    def __init__(
        self, name: str, command: Sequence[str], environment: Mapping[str, str], log_path: Path
    ) -> None:
        self.name = name
        super().__init__(command, environment, log_path)

    def wait_until_ready(self, client: Client, limit: float = LIMIT) -> None:
        """Returns once this very process owns its name; fails as soon as it has ended instead."""
        is_up = self.comes_up(client, limit)
        assert is_up, f"{self} ended with status {self.status}; its log:\n{self.log.raw()}"
        name = bus_name(self.name)
        owned_by = client.process_of(name)
        assert owned_by == self.pid, f"{name} belongs to process {owned_by}, not to {self}"

    def comes_up(self, client: Client, limit: float = LIMIT) -> bool:
        """Waits until its name is owned or it has ended; whether it goes on."""
        name = bus_name(self.name)
        # Asked, not watched: the bus allows a connection only some hundreds of matches.
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
    """Starts the programmable keys service on a bus, with its data below `data_root`."""
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
    """Starts the SettingsManager peer on a bus, serving the files of `settings_dir`."""
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
