"""A complete phone in its own directory: bus, SettingsManager, client, data and service."""

import shutil
import tempfile
import time
from contextlib import ExitStack
from pathlib import Path
from typing import Mapping, Optional, Union

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION, Database
from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.events import EventRecorder
from sandbox.loop import wait_until
from sandbox.names import SERVICE, bus_name, object_path
from sandbox.processes import Module, start_service
from sandbox.records import Action, Key
from sandbox.settings import NO_DEFAULTS
from selective_peer import SelectivePeer
from writing.writes import Rows, rows_of

TEST_SETTINGS = {**NO_DEFAULTS, "ProgKeysMax": "1000"}
INITIAL_ROWS = rows_of([RESERVED_ACTION])
"""The rows after a first start."""

CHECKING = "ZelProgrammableKeys checking..."
DEPLOYING = "ZelProgrammableKeys deploying..."


def pause(seconds: float) -> None:
    """Runs the main loop for that time. The SettingsManager replies meanwhile."""
    end = time.monotonic() + seconds
    wait_until(lambda: time.monotonic() >= end, "time passes", seconds + 1)


def rows_in(database: Database) -> Rows:
    """The rows of a database file, which must be intact."""
    assert database.value("PRAGMA integrity_check") == "ok"
    return rows_of([*database.actions(), *database.keys()])


class Phone:
    """A phone whose service starts on request. `close` ends all its processes and connections."""

    def __init__(
        self,
        bin_dir: Path,
        directory: Path,
        settings: Mapping[str, str] = TEST_SETTINGS,
        log_level: int = 7,
        environment: Optional[Mapping[str, str]] = None,
    ) -> None:
        self._bin_dir = bin_dir
        self._directory = directory
        self._values = dict(settings)
        self._log_level = log_level
        self._environment = environment
        self._launched: list[Module] = []
        self._resources = ExitStack()
        self.seconds_to_start = 0.0
        directory.mkdir()
        self.use_data_root(directory / "data")
        self.bus = self._resources.enter_context(PrivateBus())
        try:
            self._join_bus()
        except BaseException:
            self._resources.close()
            raise

    def _join_bus(self) -> None:
        self.settings = SelectivePeer(self.bus.address, self._values)
        self._resources.callback(self.settings.close)
        self.client = self.another_client()
        self.events = EventRecorder(self.client, object_path(SERVICE))

    def __enter__(self) -> "Phone":
        return self

    def __exit__(self, *_exception: object) -> None:
        self.close()

    def close(self) -> None:
        for module in self._launched:
            module.kill()
        self._resources.close()

    def another_client(self, name: str = "Client") -> Client:
        """A client that is disconnected when the phone is closed."""
        client = Client(self.bus.address, name)
        self._resources.callback(client.close)
        return client

    def use_data_root(self, data_root: Path) -> None:
        """Sets the directory for the service's data, from its next start on."""
        self.data_root = data_root
        self.database = Database(data_root / SERVICE / "zelprogrammablekeys.data")

    def store(self, *records: Union[Key, Action]) -> None:
        """Creates the database with these records, as an earlier run leaves it."""
        self.database.create(KEY_SCHEMA, ACTION_SCHEMA)
        self.database.insert(RESERVED_ACTION, *records)

    # Service

    @property
    def service(self) -> Module:
        """The last started service process."""
        return self._launched[-1]

    def launch(self) -> Module:
        """Starts the service without waiting for it."""
        log_path = self._directory / f"service-{len(self._launched)}.log"
        self._launched.append(
            start_service(
                self._bin_dir,
                self.bus.address,
                self.data_root,
                log_path,
                self._log_level,
                self._environment,
            )
        )
        return self.service

    def start(self) -> Module:
        """Starts the service and waits until it is ready."""
        begin = time.monotonic()
        self.launch().wait_until_ready(self.client)
        self.seconds_to_start = time.monotonic() - begin
        return self.service

    def kill(self) -> None:
        """Kills the service and waits until its name has no owner."""
        self.service.kill()
        name = bus_name(SERVICE)
        wait_until(lambda: not self.client.connection.name_has_owner(name), f"{name} has no owner")

    # Bus and SettingsManager

    def restart_bus(self) -> None:
        """Starts a new daemon at the same address and reconnects everything except the service."""
        self.bus.restart()
        self._join_bus()

    def replace_peer(self) -> None:
        """Replaces the SettingsManager with a new one that works."""
        self.settings.close()
        self.settings = SelectivePeer(self.bus.address, self._values)
        self._resources.callback(self.settings.close)

    # Rows

    def stored_rows(self) -> Rows:
        """The rows in the database. Checks that the service returns the same rows."""
        stored = rows_in(self.database)
        assert self.returned_rows() == stored
        return stored

    def returned_rows(self) -> Rows:
        """The rows that the service returns."""
        return rows_of(
            [*self.client.get_all_actions(), *self.client.get_all_programmable_keys()]
        )

    def rows_on_disk(self) -> Rows:
        """The rows that the next start will find, read from a copy that reading may change."""
        with tempfile.TemporaryDirectory() as scratch:
            copy = Path(scratch) / SERVICE
            without = shutil.ignore_patterns("*-shm")  # the shared memory is lost with the process
            shutil.copytree(self.database.path.parent, copy, ignore=without)
            return rows_in(Database(copy / self.database.path.name))

    def data_was_kept(self) -> bool:
        """Whether the last start neither backed up the data nor created new data."""
        log = self.service.log.texts()
        assert CHECKING in log
        names = [path.name for path in self.data_root.iterdir()]
        return DEPLOYING not in log and names == [SERVICE]
