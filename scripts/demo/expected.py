"""The events that ought to come, down to the signature of each argument."""

from typing import Any

from sandbox.events import Argument, Event
from sandbox.records import ACTION, KEY, Action, Key

from .merge import Merge
from .words import ON_MODULE

NUMBER, ID, TEXT, FLAG = "i", "x", "s", "b"


def event(name: str, **arguments: tuple[str, Any]) -> Event:
    """An event from its arguments, each given by its signature and value."""
    return Event(name, tuple(Argument(label, *argument) for label, argument in arguments.items()))


def key_created(key: Key) -> list[Event]:
    """A key on a module gets its icon right away."""
    return [event("KEY_CREATE_NTF", idKey=(KEY, key))] + ([icon(key, 0, 0)] if key.type == ON_MODULE else [])


def key_modified(key: Key) -> Event:
    return event("KEY_MODIFY_NTF", idKey=(KEY, key))


def key_deleted(id_key: int) -> Event:
    return event("KEY_DELETE_NTF", idKey=(ID, id_key))


def action_created(action: Action) -> Event:
    return event("ACTION_CREATE_NTF", idAction=(ACTION, action))


def action_modified(action: Action) -> Event:
    return event("ACTION_MODIFY_NTF", idAction=(ACTION, action))


def action_deleted(id_action: int) -> Event:
    return event("ACTION_DELETE_NTF", idAction=(ID, id_action))


def icon(key: Key, x: int, y: int) -> Event:
    return event("AOM_SET_ICON_PROPERTY_REC", **_place(key), icon_x=(NUMBER, x), icon_y=(NUMBER, y))


def label(key: Key, state: int, text: str) -> Event:
    return event("AOM_SET_LABEL_PROPERTY_REC", **_place(key), label_state=(NUMBER, state), label_str=(TEXT, text))


def _place(key: Key) -> dict[str, tuple[str, int]]:
    return {
        "addr": (NUMBER, key.aom_addr),
        "aom_type": (NUMBER, key.aom_type),
        "key_num": (NUMBER, key.position),
    }


def pressed(key: Key, action: Action, exists: bool) -> Event:
    return event("AOMKEY_PRESS_NTF", key=(KEY, key), action=(ACTION, action), exists=(FLAG, exists))


FULL = event("KO_PROGKEYS_DB_FULL")
RESET = event("DB_RESET_NTF")


def merged(merge: Merge) -> list[Event]:
    """What a merge of the provisioned defaults sends. Its first events find the provisioned keys still there."""
    events = []
    for old, new in merge.updated:
        events.append(action_modified(new))
        if new.shortLabel != old.shortLabel:
            on_module = (key for key in merge.before.keys if key.type == ON_MODULE and key.idAction == old.idAction)
            events += [label(key, 1, new.shortLabel) for key in on_module]
    events += map(action_created, merge.added)
    for key in merge.made:
        events += key_created(key)
    return events
