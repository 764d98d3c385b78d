"""A server and all that it needs."""

import signal
from contextlib import ExitStack, suppress
from pathlib import Path
from typing import Mapping, Optional

from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.loop import GaveUp
from sandbox.names import SERVICE as MODULE
from sandbox.processes import Module, Process, start_settings_manager
from sandbox.settings import NO_DEFAULTS, write_settings

from .cores import ONE, on_cores
from .driver import Timed, drive
from .environment import environment_of
from .failure import MeasurementFailed
from .programs import FRAME, PRESS, RIVAL, SERVICE, Programs
from .runs import ROWS
from .stock import write_stock
from .storage import fresh_directory

NOTHING_PROVISIONED = {**NO_DEFAULTS, "ProgKeysMax": "1000000"}
MAKERS = {FRAME: SERVICE, PRESS: SERVICE}
"""Who makes the tables, for servers that do not make them themselves."""

ENDED_BY_SIGNAL = {RIVAL}
"""Who does not handle the signal that ends it."""

LAST_SECONDS = 0.5
LAST_LINES = 10
"""As many lines of a server's log are told when it fails."""


class Stand:
    """A private bus, a SettingsManager, a server and its data; up from `with` on."""

    def __init__(
        self,
        programs: Programs,
        server: str,
        storage: Path,
        rows: int = ROWS,
        cores: str = ONE,
        is_server_up: bool = True,
        settings: Mapping[str, str] = NOTHING_PROVISIONED,
    ) -> None:
        self.server = server
        self.rows = rows
        self.cores = cores
        self._programs = programs
        self._storage = storage
        self._is_server_up = is_server_up
        self._settings = settings
        self._environment: dict[str, str] = {}
        self._process: Optional[Module] = None
        self._resources = ExitStack()

    def __enter__(self) -> "Stand":
        with ExitStack() as resources, on_cores(self.cores):
            self._come_up(resources)
            self._resources = resources.pop_all()
        return self

    def __exit__(self, *_exception: object) -> None:
        self._resources.close()

    @property
    def pid(self) -> int:
        """The process of the server."""
        assert self._process is not None
        return self._process.pid

    def do(self, work: str, count: int, warmup: int, callers: int = 1) -> Timed:
        """Has the server do a work `count` times."""
        options = ("--count", count, "--warmup", warmup, "--callers", callers)
        rows = ("--rows", self.rows)
        with on_cores(self.cores):
            try:
                return drive(self._programs.client, self._environment, work, *options, *rows)
            except MeasurementFailed as error:
                raise MeasurementFailed(f"{error}{self._last_words()}") from error

    def start(self) -> Timed:
        """Starts the server until it is on the bus, and ends it again."""
        command = self._programs.server(self.server)
        with on_cores(self.cores):
            return drive(self._programs.client, self._environment, "start", "--", *command)

    def _come_up(self, resources: ExitStack) -> None:
        directory = resources.enter_context(fresh_directory(self._storage))
        bus = resources.enter_context(PrivateBus())
        self._environment = environment_of(bus.address, directory)
        settings = write_settings(directory / "settings", self._settings)
        log = directory / "settingsmanager.log"
        manager = start_settings_manager(self._programs.bin_dir, bus.address, settings, log)
        resources.enter_context(manager)
        client = Client(bus.address)
        try:
            self._wait(manager, client)
            self._prepare(directory, client)
            if self._is_server_up:
                self._process = self._launched(self.server, directory, client)
                resources.callback(self._process.kill)
        finally:
            client.close()

    def _prepare(self, directory: Path, client: Client) -> None:
        """Has tables made, and fills them while nobody has them open."""
        maker = MAKERS.get(self.server, self.server)
        with self._launched(maker, directory, client) as server:
            server.send_signal(signal.SIGTERM)
            status = server.wait_for_exit()
            if status != (-signal.SIGTERM if maker in ENDED_BY_SIGNAL else 0):
                raise MeasurementFailed(
                    f"{maker} made tables and {_ending(server)}{_end_of_log(server)}"
                )
        write_stock(directory / MODULE / "zelprogrammablekeys.data", self.rows)

    def _last_words(self) -> str:
        """What became of the server, and what it said, as further lines of a message."""
        if self._process is None:
            return ""
        # It may have left the bus and not yet ended.
        with suppress(GaveUp):
            self._process.wait_for_exit(LAST_SECONDS)
        return f"\n{self.server} {_ending(self._process)}{_end_of_log(self._process)}"

    def _launched(self, name: str, directory: Path, client: Client) -> Module:
        command = self._programs.server(name)
        server = Module(MODULE, command, self._environment, directory / f"{name}.log")
        try:
            self._wait(server, client)
        except BaseException:
            server.kill()
            raise
        return server

    @staticmethod
    def _wait(module: Module, client: Client) -> None:
        try:
            module.wait_until_ready(client)
        except AssertionError as error:
            raise MeasurementFailed(f"a process does not come up: {error}") from error


def _ending(server: Process) -> str:
    return "still runs" if server.running else f"ended with status {server.status}"


def _end_of_log(server: Process) -> str:
    lines = server.log.raw().splitlines()[-LAST_LINES:]
    return ", with nothing in its log" if not lines else "\n".join(("; its log:", *lines))
