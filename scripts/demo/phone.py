"""A phone of one's own: a private bus, the settings, the service, and a client that talks to it."""

import contextlib
import os
import shutil
import signal
import tempfile
from pathlib import Path
from typing import Any, Optional

from dbus.exceptions import DBusException

from sandbox.bus import PrivateBus
from sandbox.client import BusError, Client
from sandbox.events import Event, EventRecorder
from sandbox.log import LogLine
from sandbox.loop import GaveUp
from sandbox.names import SERVICE, SETTINGS_MANAGER, object_path
from sandbox.processes import Module, start_service, start_settings_manager

BROKEN = (BusError, DBusException, GaveUp, AssertionError, OSError)
"""What goes wrong here when something on the phone does."""

UNREADABLE = (AssertionError, KeyError, TypeError, ValueError)
"""What reading an event raises that is none."""

QUIET_LEVELS = ("info", "debug")
PROGRAMS = ("zelprogrammablekeys", "settingsmanager")


class LoudLines:
    """The lines of a module's log that tell of trouble, each given once."""

    def __init__(self, module: Module) -> None:
        self._module = module
        self._taken = 0

    def take(self) -> list[LogLine]:
        lines = self._module.log.lines()
        fresh, self._taken = lines[self._taken:], len(lines)
        return [line for line in fresh if line.level not in QUIET_LEVELS]


class Phone:
    """Everything that runs and everything that is written; `close` leaves nothing of either."""

    def __init__(self, bin_dir: Path, settings: Path) -> None:
        missing = [program for program in PROGRAMS if not os.access(bin_dir / program, os.X_OK)]
        if missing:
            raise FileNotFoundError(f"{bin_dir} has no program {' and no '.join(missing)}")
        self._bin_dir = bin_dir
        self._directory = Path(tempfile.mkdtemp(prefix="phone-"))
        self._modules: dict[str, Module] = {}
        self._logs: list[LoudLines] = []
        self._bus: Optional[PrivateBus] = None
        self._client: Optional[Client] = None
        try:
            shutil.copytree(settings, self._settings)
            self._bus = PrivateBus()
            self._bus.start()
            self._client = Client(self._bus.address, "Demo")
            self.events = EventRecorder(self._client, object_path(SERVICE))
        except BaseException:
            self.close()
            raise

    @property
    def _settings(self) -> Path:
        return self._directory / "settings"

    @property
    def address(self) -> str:
        assert self._bus is not None
        return self._bus.address

    @property
    def client(self) -> Client:
        assert self._client is not None
        return self._client

    # Processes

    def start_settings_manager(self) -> None:
        log = self._directory / "settingsmanager.log"
        self._started(start_settings_manager(self._bin_dir, self.address, self._settings, log))

    def start_service(self) -> None:
        log = self._directory / f"service-{len(self._logs)}.log"
        self._started(start_service(self._bin_dir, self.address, self._directory / "data", log))

    def _started(self, module: Module) -> None:
        self._modules[module.name] = module
        self._logs.append(LoudLines(module))
        module.wait_until_ready(self.client)

    def stop_service(self) -> None:
        """Ends the service in the normal way and holds it to a clean end."""
        self._modules[SERVICE].stop()

    def stop(self) -> None:
        """Ends both modules in the normal way and holds them to a clean end."""
        self.stop_service()
        self._modules[SETTINGS_MANAGER].stop()

    def kill(self) -> None:
        """Ends both modules at once, so that nobody waits for their replies any longer; may be called at any time."""
        for module in self._modules.values():
            module.send_signal(signal.SIGKILL)

    def close(self) -> None:
        """Ends everything and removes everything."""
        for module in self._modules.values():
            module.kill()
        if self._client is not None:
            self._client.close()
            self._client = None
        if self._bus is not None:
            self._bus.close()
        shutil.rmtree(self._directory, ignore_errors=True)

    # What it tells

    def deaths(self) -> list[str]:
        """What has ended that ought to run, with what it wrote last."""
        found = [
            f"{module} has ended with status {module.status}; its log:\n{module.log.raw().strip() or '(empty)'}"
            for module in self._modules.values()
            if not module.running
        ]
        return found if self._bus is None or self._bus.running else [*found, "the bus has ended"]

    def take_events(self) -> list[Event]:
        """Every event that the service has sent since the last call, also from a service that answers no more."""
        with contextlib.suppress(*BROKEN):
            self.client.round_trip()
        return self.events.take_received()

    def take_loud_lines(self) -> list[LogLine]:
        """The warnings and errors that stand in the logs since the last call."""
        return [line for log in self._logs for line in log.take()]

    def set_setting(self, name: str, value: str) -> None:
        """Changes a setting, as device management would."""
        self.client.call("setSettingValue", "ss", name, value, module=SETTINGS_MANAGER)

    def roll_out(self, settings: Path) -> None:
        """Puts the settings of a directory in place of those of the same names, as device management would."""
        shutil.copytree(settings, self._settings, dirs_exist_ok=True)

    def get_setting(self, name: str) -> Any:
        return self.client.call("getSettingValue", "s", name, module=SETTINGS_MANAGER).values[0]
