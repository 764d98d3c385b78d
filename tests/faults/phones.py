"""A whole phone in a directory of its own: bus, SettingsManager, client, data and service."""

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

ROOMY = {**NO_DEFAULTS, "ProgKeysMax": "1000"}
NOTHING_STORED = rows_of([RESERVED_ACTION])
"""The rows of a phone that nobody has used yet."""

CHECKING = "ZelProgrammableKeys checking..."
DEPLOYING = "ZelProgrammableKeys deploying..."


def pause(seconds: float) -> None:
    """Lets time pass as part of an experiment; the phone's SettingsManager answers meanwhile."""
    end = time.monotonic() + seconds
    wait_until(lambda: time.monotonic() >= end, "time passes", seconds + 1)


def rows_in(database: Database) -> Rows:
    """The rows of a database file, which must be sound."""
    assert database.value("PRAGMA integrity_check") == "ok"
    return rows_of([*database.actions(), *database.keys()])


class Phone:
    """Ends with everything on it when it is closed; its service starts when it is asked to."""

    def __init__(
        self,
        bin_dir: Path,
        directory: Path,
        settings: Mapping[str, str] = ROOMY,
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
        """A client that leaves the bus when the phone is closed."""
        client = Client(self.bus.address, name)
        self._resources.callback(client.close)
        return client

    def use_data_root(self, data_root: Path) -> None:
        """The service keeps its data below this directory from its next start on."""
        self.data_root = data_root
        self.database = Database(data_root / SERVICE / "zelprogrammablekeys.data")

    def store(self, *records: Union[Key, Action]) -> None:
        """Creates the database as an earlier run would have left it, with these records."""
        self.database.create(KEY_SCHEMA, ACTION_SCHEMA)
        self.database.insert(RESERVED_ACTION, *records)

    # Service

    @property
    def service(self) -> Module:
        """The service as it was launched last."""
        return self._launched[-1]

    def launch(self) -> Module:
        """Starts the service and does not wait for it."""
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
        """Kills the service; returns when its name is gone from the bus."""
        self.service.kill()
        name = bus_name(SERVICE)
        wait_until(lambda: not self.client.connection.name_has_owner(name), f"{name} is gone")

    # Surroundings

    def restart_bus(self) -> None:
        """Starts a new daemon at the same address, which all but the service join."""
        self.bus.restart()
        self._join_bus()

    def replace_peer(self) -> None:
        """Puts a well SettingsManager in the place of one that may be gone."""
        self.settings.close()
        self.settings = SelectivePeer(self.bus.address, self._values)
        self._resources.callback(self.settings.close)

    # Rows

    def found(self) -> Rows:
        """The stored rows, which must be those that the service returns."""
        stored = rows_in(self.database)
        assert self.returned() == stored
        return stored

    def returned(self) -> Rows:
        """The rows that the service returns."""
        return rows_of(
            [*self.client.get_all_actions(), *self.client.get_all_programmable_keys()]
        )

    def left(self) -> Rows:
        """The rows that the next start would find, read in a copy: reading may repair the file."""
        with tempfile.TemporaryDirectory() as scratch:
            copy = Path(scratch) / SERVICE
            without = shutil.ignore_patterns("*-shm")  # does not outlive the service's memory
            shutil.copytree(self.database.path.parent, copy, ignore=without)
            return rows_in(Database(copy / self.database.path.name))

    def data_was_kept(self) -> bool:
        """Whether the last start neither copied the data aside nor created it again."""
        log = self.service.log.texts()
        assert CHECKING in log
        names = [path.name for path in self.data_root.iterdir()]
        return DEPLOYING not in log and names == [SERVICE]
