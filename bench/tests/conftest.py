"""A private phone for each conversation, with any of the servers that are measured."""

import os
from contextlib import closing, contextmanager
from pathlib import Path
from typing import Callable, Iterator, Sequence

import pytest

from chapters import ROOM, Chapter
from conversation import Caller, Conversation, Settings
from database import Database
from sandbox.bus import PrivateBus
from sandbox.names import SERVICE
from sandbox.processes import Module, start_settings_manager
from sandbox.settings import NO_DEFAULTS, FakeSettingsManager, write_settings
from servers import BENCH, Place, end_server, start_server
from settings_peers import LIMIT_SETTING, FakePeer, RealPeer
from transcripts import Transcript, read_file

SETTINGS = {**NO_DEFAULTS, LIMIT_SETTING: ROOM}

Converse = Callable[..., Transcript]


@pytest.fixture(scope="session")
def bin_dir() -> Path:
    """Where the service and the settings peer are."""
    return Path(os.environ.get("PROGKEYS_BIN_DIR", BENCH.parent / "build/bench/bin")).resolve()


@contextmanager
def fake_settings(address: str) -> Iterator[Settings]:
    """The peer played in Python."""
    with closing(FakeSettingsManager(address, SETTINGS)) as fake:
        yield FakePeer(fake)


@contextmanager
def real_settings(
    address: str, bin_dir: Path, directory: Path, client: Caller
) -> Iterator[Settings]:
    """The peer of the phone."""
    values = write_settings(directory / "settings", SETTINGS)
    log = directory / "settingsmanager.log"
    module = start_settings_manager(bin_dir, address, values, log)
    with module:
        module.wait_until_ready(client)
        yield RealPeer(values, module)


class Phone:
    """One server on a bus, and what becomes of it."""

    def __init__(self, server: str, bin_dir: Path, place: Place, client: Caller) -> None:
        self._start = lambda: start_server(server, bin_dir, place)
        self._client = client
        self._module: Module = self._start()

    def __enter__(self) -> "Phone":
        return self

    def __exit__(self, *_exception: object) -> None:
        self._module.kill()

    def wait(self) -> None:
        self._module.wait_until_ready(self._client)

    def end(self) -> None:
        end_server(self._module)

    def restart(self) -> None:
        self.end()
        self._module = self._start()
        self.wait()


def conversation(
    phone: Phone, place: Place, client: Caller, settings: Settings, chapters: Sequence[Chapter]
) -> Transcript:
    """Has it from the server's start to its end, and then reads the file that is left."""
    database = Database(place.data_root / SERVICE / "zelprogrammablekeys.data")
    phone.wait()
    settings.take_calls()
    talker = Conversation(client, database, settings, phone.restart)
    for chapter in chapters:
        chapter(talker)
    phone.end()
    return Transcript(talker.steps, read_file(database))


@pytest.fixture(scope="session")
def converse(bin_dir: Path, tmp_path_factory: pytest.TempPathFactory) -> Converse:
    """Has a conversation with a server, of one chapter or more, beside either settings peer."""

    def have(server: str, *chapters: Chapter, is_peer_real: bool = False) -> Transcript:
        directory = tmp_path_factory.mktemp(server)
        with PrivateBus() as bus, closing(Caller(bus.address)) as client:
            place = Place(bus.address, directory / "data", directory / "server.log")
            settings = (
                real_settings(bus.address, bin_dir, directory, client)
                if is_peer_real
                else fake_settings(bus.address)
            )
            with settings as peer, Phone(server, bin_dir, place, client) as phone:
                return conversation(phone, place, client, peer, chapters)

    return have
