"""The commands `icon`, `label` and `press`."""

import json
import signal

import dbus
import pytest

from progkeysctl import Tool
from samples import CALL, MODULE_KEY, SET_KEY, icon_set, label_set
from sandbox.client import Client
from sandbox.events import EventRecorder
from sandbox.loop import LIMIT
from sandbox.names import SERVICE, object_path
from sandbox.processes import Module
from sandbox.records import Action, Key


@pytest.fixture
def action(client: Client, phone: Module) -> Action:
    return CALL._replace(idAction=client.add_action(CALL))


@pytest.fixture
def key(client: Client, action: Action) -> Key:
    bound = MODULE_KEY._replace(idAction=action.idAction)
    return bound._replace(idKey=client.create_programmable_key(bound))


def test_an_icon_is_sent_to_the_module(ctl: Tool, client: Client, key: Key) -> None:
    events = EventRecorder(client, object_path(SERVICE))
    result = ctl("icon", key.idKey, 4, -5)
    assert (result.status, result.out) == (0, "Sent icon 4, -5 for key 5 to module 2.\n")
    assert events.take() == [icon_set(key, 4, -5)]
    assert ctl.json("icon", key.idKey, 0, 0) == {"idKey": key.idKey, "addr": 2, "key_num": 5, "icon_x": 0, "icon_y": 0}


def test_a_label_is_sent_to_the_module(ctl: Tool, client: Client, key: Key) -> None:
    events = EventRecorder(client, object_path(SERVICE))
    result = ctl("label", key.idKey, 3)
    assert (result.status, result.out) == (0, "Sent label state 3 for key 5 to module 2.\n")
    assert events.take() == [label_set(key, "Rec", 3)]
    assert ctl.json("label", key.idKey, 0) == {"idKey": key.idKey, "addr": 2, "key_num": 5, "label_state": 0}


@pytest.mark.parametrize("words", [["icon", "{id}", 1, 1], ["label", "{id}", 1]], ids=["icon", "label"])
def test_a_key_on_the_set_is_refused(ctl: Tool, client: Client, action: Action, words: list[object]) -> None:
    id_key = client.create_programmable_key(SET_KEY._replace(idAction=action.idAction))
    refused = ctl(*(str(word).format(id=id_key) for word in words))
    assert (refused.status, refused.out) == (1, "")
    assert "is not on an add-on module: its type is 0, not 1 (-2)" in refused.err
    assert "aom_type" not in refused.err
    unknown = ctl(*(str(word).format(id=77) for word in words))
    assert unknown.status == 10
    assert "There is no key 77" in unknown.err


def test_a_press_shows_the_key_and_its_action(ctl: Tool, key: Key, action: Action) -> None:
    pressed = ctl("press", "2/5")
    assert (pressed.status, pressed.out) == (0, f'Key {key.idKey}: action {action.idAction} "Reception", type 3, call 501\n')
    assert ctl.json("press", "2/5") == {
        "exists": True,
        "idKey": key.idKey,
        "idAction": action.idAction,
        "key": key._asdict(),
        "action": action._asdict(),
    }


def test_a_press_shows_an_action_with_empty_fields(ctl: Tool, client: Client, phone: Module) -> None:
    id_action = client.add_action(Action(0, "", 0, "", "", "", "", ""))
    id_key = client.create_programmable_key(MODULE_KEY._replace(idAction=id_action))
    assert ctl("press", "2/5").out == f'Key {id_key}: action {id_action} "", type 0\n'


def test_a_press_of_an_unprogrammed_key_succeeds(ctl: Tool, key: Key) -> None:
    pressed = ctl("press", "2/6")
    assert (pressed.status, pressed.out) == (0, "No key is programmed there.\n")
    other_type = ctl.json("press", "2/5", "--module-type", 2)
    assert other_type["exists"] is False
    assert (other_type["key"]["position"], other_type["key"]["aom_type"], other_type["key"]["aom_addr"]) == (5, 2, 2)


def test_a_press_is_the_event_that_a_module_sends(ctl: Tool, client: Client, key: Key) -> None:
    events = EventRecorder(client)
    ctl("press", "2/5")
    sent = events.wait_for("AOM_KEY_PRESS_EVENT")
    assert [(each.name, each.signature, each.value, each.flag) for each in sent.arguments] == [
        ("aom_key_num", "i", 5, True),
        ("aom_type", "i", 1, True),
        ("addr", "i", 2, True),
    ]


@pytest.mark.parametrize("place", ["2", "2-5", "a/b", "2/", "/5", "2/5/6", "4294967298/5"])
def test_an_invalid_key_position_is_refused(ctl: Tool, phone: Module, place: str) -> None:
    result = ctl("press", place)
    assert result.status == 2
    assert f'"{place}" is not of the form ADDRESS/NUMBER' in result.err


def test_a_press_without_a_reply_is_a_timeout(ctl: Tool, phone: Module) -> None:
    """The service is stopped."""
    phone.send_signal(signal.SIGSTOP)
    try:
        result = ctl("press", "2/5", "--timeout", "0.3")
    finally:
        phone.send_signal(signal.SIGCONT)
    assert result.status == 3
    assert "did not answer the press" in result.err


def test_the_reply_to_a_press_must_come_from_the_service(ctl: Tool, client: Client, phone: Module, key: Key) -> None:
    """Another peer sends a forged reply first, with the object path of the service."""
    forger = Client(ctl.address, SERVICE)
    presses = EventRecorder(client)
    forged = dbus.Struct([dbus.Int64(0), "", dbus.Int64(0), "", 5, "", 1, 1, 2], signature="xsxsisiii")
    phone.send_signal(signal.SIGSTOP)
    try:
        process = ctl.start("press", "2/5", "--json=short")
        presses.wait_for("AOM_KEY_PRESS_EVENT")
        forger.send_event("AOMKEY_PRESS_NTF", key=forged, exists=False)
        forger.bus_round_trip()
    finally:
        phone.send_signal(signal.SIGCONT)
    out, _ = process.communicate(timeout=LIMIT)
    forger.close()
    assert (process.returncode, json.loads(out)["exists"]) == (0, True)


def test_a_service_that_ends_during_a_press_is_not_running(ctl: Tool, client: Client, phone: Module) -> None:
    presses = EventRecorder(client)
    phone.send_signal(signal.SIGSTOP)
    process = ctl.start("press", "2/5", "--timeout", "1")
    presses.wait_for("AOM_KEY_PRESS_EVENT")
    phone.kill()
    _, err = process.communicate(timeout=LIMIT)
    assert process.returncode == 8
    assert "ZelProgrammableKeys is not running" in err
