"""Sample records, and the events and log lines that the tests expect."""

import re

from sandbox.events import Argument, Event
from sandbox.records import ACTION, KEY, Action, Key

CALL = Action(-1, "", 3, "call", "phonebook", "501", "Reception", "Rec")
SET_KEY = Key(-1, "", -1, "main", 4, "bell", 0, 0, 0)
MODULE_KEY = Key(-1, "", -1, "module", 5, "lamp", 1, 1, 2)

SETTING_NOT_READ = (
    "ERROR: While calling method getSettingValue of module SettingsManager, reply is invalid"
)
"""The error line for a setting that cannot be read."""


def key_event(name: str, key: Key) -> Event:
    return Event(name, (Argument("idKey", KEY, key),))


def key_created(key: Key) -> Event:
    return key_event("KEY_CREATE_NTF", key)


def key_modified(key: Key) -> Event:
    return key_event("KEY_MODIFY_NTF", key)


def key_deleted(id_key: int) -> Event:
    return Event("KEY_DELETE_NTF", (Argument("idKey", "x", id_key),))


def action_created(action: Action) -> Event:
    return Event("ACTION_CREATE_NTF", (Argument("idAction", ACTION, action),))


def action_modified(action: Action) -> Event:
    return Event("ACTION_MODIFY_NTF", (Argument("idAction", ACTION, action),))


def action_deleted(id_action: int) -> Event:
    return Event("ACTION_DELETE_NTF", (Argument("idAction", "x", id_action),))


def icon_set(key: Key, icon_x: int = 0, icon_y: int = 0) -> Event:
    return Event(
        "AOM_SET_ICON_PROPERTY_REC", (*_place(key), _int("icon_x", icon_x), _int("icon_y", icon_y))
    )


def label_set(key: Key, text: str, state: int = 1) -> Event:
    label = Argument("label_str", "s", text)
    return Event("AOM_SET_LABEL_PROPERTY_REC", (*_place(key), _int("label_state", state), label))


def module_key_pressed(key: Key, action: Action, exists: bool) -> Event:
    arguments = (
        Argument("key", KEY, key),
        Argument("action", ACTION, action),
        Argument("exists", "b", exists),
    )
    return Event("AOMKEY_PRESS_NTF", arguments)


DATABASE_FULL = Event("KO_PROGKEYS_DB_FULL")
DATABASE_RESET = Event("DB_RESET_NTF")


def _int(name: str, value: int) -> Argument:
    return Argument(name, "i", value)


def _place(key: Key) -> tuple[Argument, ...]:
    return (
        _int("addr", key.aom_addr),
        _int("aom_type", key.aom_type),
        _int("key_num", key.position),
    )


def failed_statement(line: str, statement: str, reason: str) -> bool:
    """Whether a log line reports the failure of this statement.

    The database driver may replace the question marks with its own placeholders.
    """
    pattern = re.escape(statement).replace(re.escape("?"), r"(\?|:\w+)")
    return re.fullmatch(rf"Error: {pattern} .*{re.escape(reason)}.*", line) is not None


def sent(*names: str) -> list[str]:
    """The debug lines for these events."""
    return [f"event {name} sent" for name in names]
