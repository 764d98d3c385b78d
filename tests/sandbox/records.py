"""The records on the bus, and the conversion of D-Bus values to plain Python values."""

from typing import Any, NamedTuple

import dbus


class Key(NamedTuple):
    """A programmable key. The fields are in wire order; the defaults are those of an empty key."""

    idKey: int = -1
    dmId: str = ""
    idAction: int = -1
    container: str = ""
    position: int = -1
    icon: str = ""
    type: int = -1
    aom_type: int = -1
    aom_addr: int = -1


class Action(NamedTuple):
    """An action. The fields are in wire order; the defaults are those of an empty action."""

    idAction: int = -1
    dmId: str = ""
    type: int = 0
    action: str = ""
    webAppName: str = ""
    arguments: str = ""
    label: str = ""
    shortLabel: str = ""


KEY = "(xsxsisiii)"
ACTION = "(xsisssss)"
CAPABILITY = "(si)"
RECORDS = {KEY: Key, ACTION: Action}

BASIC_TYPES = {
    dbus.Boolean: "b",
    dbus.Byte: "y",
    dbus.Int16: "n",
    dbus.UInt16: "q",
    dbus.Int32: "i",
    dbus.UInt32: "u",
    dbus.Int64: "x",
    dbus.UInt64: "t",
    dbus.Double: "d",
    dbus.ObjectPath: "o",
    dbus.Signature: "g",
    dbus.String: "s",
}


def signature_of(value: Any) -> str:
    """The D-Bus signature that a received value had on the wire."""
    if isinstance(value, dbus.Struct):
        return f"({''.join(signature_of(field) for field in value)})"
    if isinstance(value, dbus.Array):
        return f"a{value.signature}"
    if isinstance(value, dbus.Dictionary):
        return f"a{{{value.signature}}}"
    return BASIC_TYPES[type(value)]


def plain(value: Any) -> Any:
    """A received value as a plain Python value. A structure of a record becomes that record."""
    if isinstance(value, dbus.Struct):
        fields = (plain(field) for field in value)
        record = RECORDS.get(signature_of(value))
        return record(*fields) if record else tuple(fields)
    if isinstance(value, dbus.Array):
        return [plain(item) for item in value]
    if isinstance(value, dbus.Dictionary):
        return {plain(name): plain(item) for name, item in value.items()}
    if isinstance(value, dbus.Boolean):
        return bool(value)
    return (
        float(value)
        if isinstance(value, float)
        else str(value)
        if isinstance(value, str)
        else int(value)
    )
