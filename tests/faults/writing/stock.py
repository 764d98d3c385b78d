"""Data directories to begin with, each used as often as one likes."""

import shutil
from pathlib import Path
from typing import NamedTuple

from samples import CALL, SET_KEY
from sandbox.client import Client
from sandbox.records import Action, Key
from writing.restarts import RestartedService
from writing.writes import Rows

FRAME = 24 + 4096
"""What one page takes in the write-ahead log."""

FRAMES_TO_FOLD = 100
"""The log is folded back into the database by the write that makes it so long."""


class Stock(NamedTuple):
    """A copy of a data directory, and what is in it."""

    directory: Path
    rows: Rows
    action: Action
    """An action without keys."""
    key: Key

    def lay_out(self, directory: Path) -> None:
        """Puts a copy of it in the place of whatever is there."""
        shutil.rmtree(directory, ignore_errors=True)
        shutil.copytree(self.directory, directory)


def _fill(client: Client) -> tuple[Action, Key]:
    """So many rows that they take several pages; the last action and the last key."""
    for number in range(20):
        action = CALL._replace(label=f"{number} " + "long " * 100)
        action = action._replace(idAction=client.add_action(action))
        key = SET_KEY._replace(icon=f"{number} " + "long " * 100)
        key = key._replace(idKey=client.create_programmable_key(key))
    return action, key


def clean(service: RestartedService, client: Client, directory: Path) -> Stock:
    """As it is after a clean end: the next write begins a log."""
    service.start()
    action, key = _fill(client)
    rows = service.found()
    service.module.stop()
    shutil.copytree(service.database.path.parent, directory)
    return Stock(directory, rows, action, key)


def with_long_log(service: RestartedService, client: Client, directory: Path) -> Stock:
    """As it is in the midst of work: the next write, whichever, folds the log back."""
    service.start()
    action, key = _fill(client)
    log = service.database.path.with_name(f"{service.database.path.name}-wal")
    while log.stat().st_size // FRAME < FRAMES_TO_FOLD - 1:
        key = key._replace(position=key.position + 1)
        assert client.modify_programmable_key(key) == 0
    rows = service.found()
    service.kill()
    shutil.copytree(service.database.path.parent, directory)
    return Stock(directory, rows, action, key)
