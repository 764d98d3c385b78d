"""The service, ended by force and started again on the same data, many times over."""

import shutil
import tempfile
import time
from pathlib import Path
from typing import Callable

from database import RESERVED_ACTION, Database
from sandbox.client import Client
from sandbox.loop import wait_until
from sandbox.names import SERVICE, bus_name
from sandbox.processes import Module
from writing.writes import Rows, rows_of

CHECKING = "ZelProgrammableKeys checking..."
DEPLOYING = "ZelProgrammableKeys deploying..."

NOTHING_MADE = rows_of([RESERVED_ACTION])
"""What is stored on a phone that nobody has used yet."""


def rows_in(database: Database) -> Rows:
    """What is in a database file, which has to be sound."""
    assert database.value("PRAGMA integrity_check") == "ok"
    return rows_of([*database.actions(), *database.keys()])


class RestartedService:
    """One life of the service after the other, over the same data."""

    def __init__(self, launch: Callable[..., Module], client: Client, data_root: Path) -> None:
        self._launch = launch
        self._client = client
        self._data_root = data_root
        self.database = Database(data_root / SERVICE / "zelprogrammablekeys.data")
        self.module: Module
        self.seconds_to_start = 0.0

    def launch(self) -> None:
        """Starts the service and does not wait for it."""
        self.module = self._launch(data_root=self._data_root)

    def start(self) -> None:
        begin = time.monotonic()
        self.launch()
        wait_until(lambda: self._is_on_bus() or not self.module.running, "the service is there")
        assert self.module.running, self.module.log.raw()
        self.seconds_to_start = time.monotonic() - begin

    def kill(self) -> None:
        self.module.kill()
        wait_until(lambda: not self._is_on_bus(), "the bus knows that the service is gone")

    def _is_on_bus(self) -> bool:
        # Asked, not watched: the bus allows a client only some hundreds of matches.
        return self._client.connection.name_has_owner(bus_name(SERVICE))

    def found(self) -> Rows:
        """What is stored, which is what the service tells; the file is sound."""
        stored = rows_in(self.database)
        assert self.told() == stored
        return stored

    def left(self) -> Rows:
        """What the next start would find: read in a copy, so that reading it mends nothing."""
        with tempfile.TemporaryDirectory() as scratch:
            copy = Path(scratch) / SERVICE
            without = shutil.ignore_patterns("*-shm")  # which does not outlive the service's memory
            shutil.copytree(self.database.path.parent, copy, ignore=without)
            return rows_in(Database(copy / self.database.path.name))

    def told(self) -> Rows:
        actions = self._client.get_all_actions()
        return rows_of([*actions, *self._client.get_all_programmable_keys()])

    def data_was_kept(self) -> bool:
        """Whether this start found the data good, so that it neither copied it aside nor laid it anew."""
        log = self.module.log.texts()
        assert CHECKING in log
        names = [path.name for path in self._data_root.iterdir()]
        return DEPLOYING not in log and names == [SERVICE]
