"""Whole phones beside each other, so that waits which take seconds pass at the same time."""

from contextlib import ExitStack
from pathlib import Path
from typing import Mapping, Union

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION, Database
from peers.selective_peer import SelectivePeer
from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.events import EventRecorder
from sandbox.names import SERVICE, object_path
from sandbox.processes import Module, start_service
from sandbox.records import Action, Key
from sandbox.settings import NO_DEFAULTS

ROOMY = {**NO_DEFAULTS, "ProgKeysMax": "1000"}


class Phone:
    """A bus with its SettingsManager, a client, the service's data, and the service if launched."""

    def __init__(self, bin_dir: Path, directory: Path, settings: Mapping[str, str]) -> None:
        self._bin_dir = bin_dir
        self._directory = directory
        self._values = dict(settings)
        self._launched: list[Module] = []
        self._resources = ExitStack()
        directory.mkdir()
        self.data_root = directory / "data"
        self.database = Database(self.data_root / SERVICE / "zelprogrammablekeys.data")
        self.bus = self._resources.enter_context(PrivateBus())
        try:
            self._join_bus()
        except BaseException:
            self._resources.close()
            raise

    def _join_bus(self) -> None:
        self.settings = SelectivePeer(self.bus.address, self._values)
        self._resources.callback(self.settings.close)
        self.client = Client(self.bus.address)
        self._resources.callback(self.client.close)
        self.events = EventRecorder(self.client, object_path(SERVICE))

    def __enter__(self) -> "Phone":
        return self

    def __exit__(self, *_exception: object) -> None:
        for module in self._launched:
            module.kill()
        self._resources.close()

    @property
    def service(self) -> Module:
        """The service as it was launched last."""
        return self._launched[-1]

    def launch(self, log_level: int = 7) -> Module:
        """Starts the service and does not wait for it."""
        log_path = self._directory / f"service-{len(self._launched)}.log"
        self._launched.append(
            start_service(self._bin_dir, self.bus.address, self.data_root, log_path, log_level)
        )
        return self.service

    def start(self, log_level: int = 7) -> Module:
        """Starts the service and waits until it is ready."""
        self.launch(log_level).wait_until_ready(self.client)
        return self.service

    def store(self, *records: Union[Key, Action]) -> None:
        """Lays the database as an earlier run would have left it, with these records."""
        self.database.create(KEY_SCHEMA, ACTION_SCHEMA)
        self.database.insert(RESERVED_ACTION, *records)

    def restart_bus(self) -> None:
        """A new daemon at the same address, which the peers join anew; the service is on its own."""
        self.bus.restart()
        self._join_bus()

    def replace_peer(self) -> None:
        """A new, well SettingsManager in place of one that may be gone."""
        self.settings.close()
        self.settings = SelectivePeer(self.bus.address, self._values)
        self._resources.callback(self.settings.close)
