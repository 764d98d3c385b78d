"""A press takes the same answer of the server that does nothing else: as the service sends it."""

from contextlib import closing
from pathlib import Path

import pytest

from chapters import ODD_ACTION
from conftest import fake_settings
from conversation import PRESS as PRESSED
from conversation import Caller
from database import ACTION_SCHEMA, KEY_SCHEMA, Database
from samples import CALL, MODULE_KEY, module_key_pressed
from sandbox.bus import PrivateBus
from sandbox.events import Event, EventRecorder
from sandbox.loop import wait_until
from sandbox.names import SERVICE, object_path
from sandbox.records import Action, Key
from servers import PRESS, REFERENCE, Place, end_server, start_server

ACTIONS = (
    CALL._replace(idAction=1),
    CALL._replace(idAction=2, dmId="dm-a", type=7, shortLabel=""),
    ODD_ACTION._replace(idAction=2**40),
)
KEYS = (
    MODULE_KEY._replace(idKey=1, idAction=1),
    MODULE_KEY._replace(idKey=2, idAction=1, position=0, container="", icon="", dmId="dm-k"),
    MODULE_KEY._replace(idKey=3, idAction=2, aom_type=3, container="Zürich ☎ 𝄞"),
    MODULE_KEY._replace(idKey=2**40, idAction=2**40, aom_addr=-(2**31), icon="a" * 300),
)
NOT_PRESSED = (
    KEYS[0]._replace(idKey=10, type=0, icon="of the set"),
    KEYS[0]._replace(idKey=11, position=6),
)
TOLD_TWICE = (*KEYS, *reversed(KEYS))


def press(client: Caller, key: Key) -> None:
    """As the modules' driver tells of it."""
    client.send_event(PRESSED, aom_key_num=key.position, aom_type=key.aom_type, addr=key.aom_addr)


def answers(server: str, bin_dir: Path, directory: Path) -> list[Event]:
    """What a server sends while the keys are pressed, each when the one before is answered."""
    database = Database(directory / SERVICE / "zelprogrammablekeys.data")
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    with PrivateBus() as bus, closing(Caller(bus.address)) as client, fake_settings(bus.address):
        place = Place(bus.address, directory, directory / "server.log")
        module = start_server(server, bin_dir, place)
        with module:
            module.wait_until_ready(client)
            database.insert(*ACTIONS, *NOT_PRESSED, *KEYS)
            recorder = EventRecorder(client, object_path(SERVICE))
            for count, key in enumerate(TOLD_TWICE, start=1):
                press(client, key)
                wait_until(lambda: len(recorder.seen()) >= count, f"an answer to {key}")
            end_server(module)
            return recorder.take_received()


def action_of(key: Key) -> Action:
    (action,) = (action for action in ACTIONS if action.idAction == key.idAction)
    return action


@pytest.mark.parametrize("server", [REFERENCE, PRESS])
def test_all_arguments_of_the_answer_are_there(server: str, bin_dir: Path, tmp_path: Path) -> None:
    expected = [module_key_pressed(key, action_of(key), True) for key in TOLD_TWICE]
    assert answers(server, bin_dir, tmp_path) == expected
