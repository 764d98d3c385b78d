#!/usr/bin/python3
"""The programmable keys as one would write them in an afternoon."""

import logging
import os
import signal
from pathlib import Path
from typing import Any

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

from store import FAILED, OK, Action, Key, Store

INTERFACE = "com.velmora.Tessaro.ZELInterface"
EVENTS = "com.velmora.Tessaro.ZELEvents"
NAME = "com.velmora.Tessaro.ZelProgrammableKeys"
PATH = "/com/velmora/Tessaro/ZelProgrammableKeys"
SETTINGS_NAME = "com.velmora.Tessaro.SettingsManager"
SETTINGS_PATH = "/com/velmora/Tessaro/SettingsManager"

KEY = "xsxsisiii"
ACTION = "xsisssss"

KEYS_FULL = -1
REFUSED = -2
SET_KEY = 0
MODULE_KEY = 1
SETTABLE_MODULE = 1
RESERVED_ACTION_ID = -1
LABEL_SHOWN = 1


def as_number(text: str) -> int:
    """What a text says as a number; 0 if it is none."""
    try:
        return int(text)
    except ValueError:
        return 0


def as_struct(record: tuple[Any, ...], signature: str) -> dbus.Struct:
    """A record for an event, where no signature says which of its numbers are the long ones."""
    return dbus.Struct(
        dbus.Int64(field) if code == "x" else field for field, code in zip(record, signature)
    )


class ProgrammableKeys(dbus.service.Object):
    """The object on the bus."""

    def __init__(self, bus: dbus.Bus, store: Store) -> None:
        super().__init__(bus, PATH)
        self._store = store
        settings = bus.get_object(
            SETTINGS_NAME, SETTINGS_PATH, introspect=False, follow_name_owner_changes=True
        )
        self._settings = dbus.Interface(settings, INTERFACE)
        bus.add_signal_receiver(self.key_pressed, "event", EVENTS, arg0="AOM_KEY_PRESS_EVENT")

    # Keys

    @dbus.service.method(INTERFACE, in_signature="", out_signature=f"a({KEY})")
    def getAllProgrammableKeys(self) -> list[Key]:
        return self._store.all_keys()

    @dbus.service.method(INTERFACE, in_signature="s", out_signature=f"a({KEY})")
    def getProgrammableKeysByContainer(self, container: str) -> list[Key]:
        return self._store.keys_in_container(container)

    @dbus.service.method(INTERFACE, in_signature="x", out_signature=f"a({KEY})")
    def getProgrammableKey(self, id_key: int) -> list[Key]:
        return self._store.key(id_key)

    @dbus.service.method(INTERFACE, in_signature=f"({KEY})", out_signature="x")
    def createProgrammableKey(self, fields: dbus.Struct) -> int:
        key = Key(*fields)
        if not self._store.action(key.idAction):
            return REFUSED
        if not self._is_room_for(key):
            self.notify("KO_PROGKEYS_DB_FULL")
            return KEYS_FULL
        id_key = self._store.insert_key(key)
        if id_key is None:
            return REFUSED
        self.notify("KEY_CREATE_NTF", idKey=as_struct(key._replace(idKey=id_key), KEY))
        if key.type == MODULE_KEY:
            self._set_icon(key, 0, 0)
        return id_key

    def _is_room_for(self, key: Key) -> bool:
        try:
            limit = self._settings.getSettingValue("ProgKeysMax", timeout=5)
        except dbus.DBusException as error:
            logging.error("no limit: %s", error)
            return True
        if key.type != SET_KEY:
            return True
        return self._store.count_keys_of_type(SET_KEY) < as_number(limit)

    @dbus.service.method(INTERFACE, in_signature=f"({KEY})", out_signature="i")
    def modifyProgrammableKey(self, fields: dbus.Struct) -> int:
        key = Key(*fields)
        old = self._store.key(key.idKey)
        if not self._store.action(key.idAction):
            return REFUSED
        code = self._store.update_key(key)
        if code != OK:
            return code
        self.notify("KEY_MODIFY_NTF", idKey=fields)
        if key.type == MODULE_KEY and old[0].icon != key.icon:
            self._set_icon(key, 0, 0)
        return OK

    @dbus.service.method(INTERFACE, in_signature="a{ii}", out_signature="b")
    def changeProgrammableKeysPosition(self, positions: dict[int, int]) -> bool:
        return all(
            self._store.update_key_position(id_key, position) != FAILED
            for id_key, position in sorted(positions.items())
        )

    @dbus.service.method(INTERFACE, in_signature="x", out_signature="i")
    def deleteProgrammableKey(self, id_key: int) -> int:
        keys = self._store.key(id_key)
        if not keys or keys[0].dmId:
            return REFUSED
        code = self._store.delete_key(id_key)
        if code == OK:
            self.notify("KEY_DELETE_NTF", idKey=dbus.Int64(id_key))
        return code

    # Actions

    @dbus.service.method(INTERFACE, in_signature="", out_signature=f"a({ACTION})")
    def getAllActions(self) -> list[Action]:
        return self._store.all_actions()

    @dbus.service.method(INTERFACE, in_signature="x", out_signature=f"a({ACTION})")
    def getAction(self, id_action: int) -> list[Action]:
        return self._store.action(id_action)

    @dbus.service.method(INTERFACE, in_signature=f"({ACTION})", out_signature="x")
    def addAction(self, fields: dbus.Struct) -> int:
        action = Action(*fields)
        id_action = self._store.insert_action(action)
        if id_action is None:
            return FAILED
        stored = action._replace(idAction=id_action)
        self.notify("ACTION_CREATE_NTF", idAction=as_struct(stored, ACTION))
        return id_action

    @dbus.service.method(INTERFACE, in_signature=f"({ACTION})", out_signature="i")
    def modifyAction(self, fields: dbus.Struct) -> int:
        action = Action(*fields)
        old = self._store.action(action.idAction)
        if not old:
            return REFUSED
        code = self._store.update_action(action)
        if code != OK:
            return code
        self.notify("ACTION_MODIFY_NTF", idAction=fields)
        if old[0].shortLabel != action.shortLabel:
            for key in self._store.keys_of_type_with_action(MODULE_KEY, action.idAction):
                self._set_label(key, LABEL_SHOWN, action.shortLabel)
        return OK

    @dbus.service.method(INTERFACE, in_signature="x", out_signature="i")
    def deleteAction(self, id_action: int) -> int:
        if id_action == RESERVED_ACTION_ID:
            return REFUSED
        actions = self._store.action(id_action)
        if not actions or actions[0].dmId:
            return REFUSED
        code = self._store.delete_action(id_action)
        if code != OK:
            return code
        for id_key in self._store.key_ids_with_action(id_action):
            self.deleteProgrammableKey(id_key)
        self.notify("ACTION_DELETE_NTF", idAction=dbus.Int64(id_action))
        return OK

    # Add-on modules

    @dbus.service.method(INTERFACE, in_signature="xii", out_signature="i")
    def setIconStateForKey(self, id_key: int, icon_x: int, icon_y: int) -> int:
        keys = self._store.key(id_key)
        if not keys or keys[0].aom_type != SETTABLE_MODULE:
            return REFUSED
        self._set_icon(keys[0], icon_x, icon_y)
        return OK

    @dbus.service.method(INTERFACE, in_signature="xi", out_signature="i")
    def setLabelStateForKey(self, id_key: int, state: int) -> int:
        keys = self._store.key(id_key)
        if not keys or keys[0].aom_type != SETTABLE_MODULE:
            return REFUSED
        actions = self._store.action(keys[0].idAction)
        if not actions:
            return REFUSED
        self._set_label(keys[0], state, actions[0].shortLabel)
        return OK

    def key_pressed(self, _name: str, arguments: list[tuple[str, Any, bool]]) -> None:
        """Tells which key was pressed on an add-on module."""
        try:
            values = {name: value for name, value, _flag in arguments}
            place = [dbus.Int32(values[name]) for name in ("aom_key_num", "aom_type", "addr")]
        except (KeyError, TypeError, ValueError, OverflowError):
            logging.error("not a press: %s", arguments)
            return
        position, aom_type, aom_addr = place
        key = Key(type=MODULE_KEY, position=position, aom_type=aom_type, aom_addr=aom_addr)
        action = Action()
        keys = self._store.keys_at_place(MODULE_KEY, *place)
        if keys:
            key = keys[0]
            action = next(iter(self._store.action(key.idAction)), action)
        self.notify(
            "AOMKEY_PRESS_NTF",
            key=as_struct(key, KEY),
            action=as_struct(action, ACTION),
            exists=bool(keys),
        )

    # Events

    @dbus.service.signal(EVENTS, signature="sa(svb)")
    def event(self, name: str, arguments: list[tuple[str, Any, bool]]) -> None:
        """The signal that carries every event."""

    def notify(self, name: str, **arguments: Any) -> None:
        self.event(name, [(argument, value, True) for argument, value in arguments.items()])

    def _set_icon(self, key: Key, icon_x: int, icon_y: int) -> None:
        self.notify(
            "AOM_SET_ICON_PROPERTY_REC",
            addr=dbus.Int32(key.aom_addr),
            aom_type=dbus.Int32(key.aom_type),
            key_num=dbus.Int32(key.position),
            icon_x=dbus.Int32(icon_x),
            icon_y=dbus.Int32(icon_y),
        )

    def _set_label(self, key: Key, state: int, text: str) -> None:
        self.notify(
            "AOM_SET_LABEL_PROPERTY_REC",
            addr=dbus.Int32(key.aom_addr),
            aom_type=dbus.Int32(key.aom_type),
            key_num=dbus.Int32(key.position),
            label_state=dbus.Int32(state),
            label_str=text,
        )


def main() -> None:
    DBusGMainLoop(set_as_default=True)
    root = Path(os.environ["ZEL_DATA_ROOT"])
    store = Store(root / "ZelProgrammableKeys" / "zelprogrammablekeys.data")
    bus = dbus.SystemBus()
    ProgrammableKeys(bus, store)
    loop = GLib.MainLoop()
    GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, loop.quit)
    _held = dbus.service.BusName(NAME, bus, do_not_queue=True)
    loop.run()


if __name__ == "__main__":
    main()
