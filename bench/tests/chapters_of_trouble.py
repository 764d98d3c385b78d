"""What is done to every server: presses of any shape, and statements that fail."""

from typing import Any

import dbus

from chapters import UNKNOWN
from conversation import PRESS, Conversation
from database import ignoring, refusing
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.records import ACTION, KEY, Key

ADDRESS = 90
PLACE = {"aom_key_num": MODULE_KEY.position, "aom_type": 1, "addr": ADDRESS}
NAMES = tuple(PLACE)

OTHER_NUMBERS = (dbus.Byte(5), dbus.Int16(5), dbus.UInt32(5), dbus.Int64(5))
NO_NUMBERS = (
    "five",
    dbus.Struct((5, 6), signature="ii"),
    dbus.Array([5], signature="i"),
    dbus.Int64(2**32 + 5),
)
OTHER_SHAPES: tuple[tuple[Any, ...], ...] = (
    ("s", PRESS),
    ("sas", PRESS, ["aom_key_num"]),
    ("sa(sv)", PRESS, [("aom_key_num", 5)]),
    ("sa{sv}", PRESS, {"aom_key_num": 5}),
    ("sa(svb)s", PRESS, [(name, value, True) for name, value in PLACE.items()], "more"),
)


def _module_key(phone: Conversation) -> Key:
    """A stored key at `PLACE`, of an action of its own."""
    action = phone.add(CALL)
    return phone.create(MODULE_KEY._replace(idAction=action.idAction, aom_addr=ADDRESS))


def presses(phone: Conversation) -> None:
    phone.create(MODULE_KEY._replace(type=2, aom_addr=ADDRESS))
    phone.press(**PLACE)
    key = _module_key(phone)
    phone.create(key._replace(icon="later"))
    phone.create(key._replace(aom_type=2, icon="another type"))
    phone.press(**PLACE)
    for name, number in (("aom_key_num", 6), ("aom_type", 2), ("addr", -(2**31))):
        phone.press(**{**PLACE, name: number})
    phone.press(first="something", addr=ADDRESS, aom_type=1, between=True, aom_key_num=5)


def presses_with_numbers_of_other_types(phone: Conversation) -> None:
    _module_key(phone)
    for number in OTHER_NUMBERS:
        phone.press(**{**PLACE, "aom_key_num": number})


def presses_without_a_place(phone: Conversation) -> None:
    _module_key(phone)
    for name in NAMES:
        phone.press(**{other: value for other, value in PLACE.items() if other != name})
        for value in NO_NUMBERS:
            phone.press(**{**PLACE, name: value})
    phone.press()
    phone.press(**PLACE)


def events_of_other_shapes(phone: Conversation) -> None:
    _module_key(phone)
    for signature, *body in OTHER_SHAPES:
        phone.send_raw(signature, *body)
        phone.press(**PLACE)
    full = [(name, value, True) for name, value in PLACE.items()]
    phone.send_raw("sa(svb)", "AOM_KEY_RELEASE_EVENT", full)
    phone.send_raw("sa(svb)", "", full)


def keys_that_are_not_stored(phone: Conversation) -> None:
    key = _module_key(phone)
    with phone.failing(refusing("INSERT", "KEY")):
        phone.call("createProgrammableKey", KEY, key)
    for fault in (refusing("UPDATE", "KEY"), ignoring("UPDATE", "KEY")):
        with phone.failing(fault):
            phone.call("modifyProgrammableKey", KEY, key._replace(icon="changed"))
    for fault in (refusing("DELETE", "KEY"), ignoring("DELETE", "KEY")):
        with phone.failing(fault):
            phone.call("deleteProgrammableKey", "x", key.idKey)
    phone.create(key)


def moves_that_are_not_stored(phone: Conversation) -> None:
    first, second, third = (phone.create(SET_KEY) for _ in range(3))
    positions = {third.idKey: 33, UNKNOWN: 1, second.idKey: 32, first.idKey: 31}
    with phone.failing(refusing("UPDATE", "KEY", f"OLD.idKey = {second.idKey}")):
        phone.call("changeProgrammableKeysPosition", "a{ii}", positions)
    phone.call("changeProgrammableKeysPosition", "a{ii}", positions)


def actions_that_are_not_stored(phone: Conversation) -> None:
    action = phone.add(CALL)
    phone.create(MODULE_KEY._replace(idAction=action.idAction))
    with phone.failing(refusing("INSERT", "ACTION")):
        phone.call("addAction", ACTION, action)
    for fault in (refusing("UPDATE", "ACTION"), ignoring("UPDATE", "ACTION")):
        with phone.failing(fault):
            phone.call("modifyAction", ACTION, action._replace(shortLabel="changed"))
    for fault in (refusing("DELETE", "ACTION"), ignoring("DELETE", "ACTION")):
        with phone.failing(fault):
            phone.call("deleteAction", "x", action.idAction)
    with phone.failing(refusing("DELETE", "KEY")):
        phone.call("deleteAction", "x", action.idAction)
    phone.read_all()
