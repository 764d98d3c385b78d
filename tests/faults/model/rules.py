"""A model of the operations: what they return, send, log and store."""

import math
from typing import Any, Optional

from database import RESERVED_ACTION
from hostile import INT_MAX, INT_MIN
from model.defaults import number_or_zero, whole_number
from samples import (
    DATABASE_FULL,
    action_created,
    action_deleted,
    action_modified,
    icon_set,
    key_created,
    key_deleted,
    key_modified,
    label_set,
    module_key_pressed,
)
from sandbox.events import Event
from sandbox.records import Action, Key

Moves = list[tuple[int, int]]
"""The ids and positions for changeProgrammableKeysPosition, possibly with repeated ids."""

REFUSED = -2
FULL = -1
PLACE_OF_A_PRESS = (("aom_key_num", "aom_key_num"), ("aom_type", "aom_type"), ("addr", "aom_addr"))
"""The arguments of a press, and their names in the log."""


class Rules:
    """The operations, with the same names as on the bus. Rows are in the order of their ids."""

    def __init__(self) -> None:
        self.settings: dict[str, Optional[str]] = {}
        self.settings_answer = True
        self._clear_effects()
        self._reset_tables()

    def _clear_effects(self) -> None:
        self._events: list[Event] = []
        self._lines: list[tuple[str, str]] = []
        self._settings_read: list[str] = []

    def _reset_tables(self) -> None:
        self.keys: dict[int, Key] = {}
        self.actions: dict[int, Action] = {RESERVED_ACTION.idAction: RESERVED_ACTION}
        self._last_key = 0
        self._last_action = 0

    def _log(self, level: str, text: str) -> None:
        self._lines.append((level, text))

    def _send(self, event: Event) -> None:
        self._events.append(event)
        self._log("debug", f"event {event.name} sent")

    def _read_setting(self, name: str) -> Optional[str]:
        self._settings_read.append(name)
        text = self.settings.get(name) if self.settings_answer else None
        if text is None:
            called = "method getSettingValue of module SettingsManager"
            self._log("error", f"ERROR: While calling {called}, reply is invalid")
        return text

    # Keys

    def getAllProgrammableKeys(self) -> list[Key]:
        return [*self.keys.values()]

    def getProgrammableKeysByContainer(self, container: str) -> list[Key]:
        return [key for key in self.keys.values() if key.container == container]

    def getProgrammableKey(self, id_key: int) -> list[Key]:
        return [self.keys[id_key]] if id_key in self.keys else []

    def createProgrammableKey(self, key: Key) -> int:
        if not self._action_exists(key.idAction):
            return REFUSED
        count = sum(other.type == 0 for other in self.keys.values())
        limit = self._read_setting("ProgKeysMax")
        if key.type == 0 and limit is not None and count >= number_or_zero(limit):
            self._send(DATABASE_FULL)
            return FULL
        self._last_key += 1
        key = key._replace(idKey=self._last_key)
        self.keys[key.idKey] = key
        self._send(key_created(key))
        if key.type == 1:
            self._set_icon(key)
        return key.idKey

    def modifyProgrammableKey(self, key: Key) -> int:
        old = self.keys.get(key.idKey)
        if not self._action_exists(key.idAction) or old is None:
            return REFUSED
        self.keys[key.idKey] = key
        self._send(key_modified(key))
        if key.type == 1 and old.icon != key.icon:
            self._set_icon(key)
        return 0

    def changeProgrammableKeysPosition(self, moves: Moves) -> bool:
        """Moves keys. For a repeated id, the last position applies."""
        for id_key, position in moves:
            if id_key in self.keys:
                self.keys[id_key] = self.keys[id_key]._replace(position=position)
        return True

    def deleteProgrammableKey(self, id_key: int) -> int:
        self._log("debug", f"deleteProgrammableKey : idKey={id_key}")
        key = self.keys.get(id_key)
        self._log("debug", f"deleteProgrammableKey : listKey.size={int(key is not None)}")
        if key is None:
            return REFUSED
        self._log("debug", "deleteProgrammableKey : get key from the list")
        self._log("debug", f"deleteProgrammableKey : id={id_key}")
        is_removable = key.dmId == ""
        self._log("debug", f"isProgrammableKeyRemovable : id={id_key}")
        self._log("debug", f"isProgrammableKeyRemovable : idDM={key.dmId}")
        self._log("debug", f"isProgrammableKeyRemovable : value={int(is_removable)}")
        if not is_removable:
            return REFUSED
        self._log("debug", "deleteProgrammableKey : delete key from database")
        del self.keys[id_key]
        self._send(key_deleted(id_key))
        return 0

    def _action_exists(self, id_action: int) -> bool:
        if id_action in self.actions:
            return True
        self._log("error", f"Action of id {id_action} does not exist")
        return False

    def _set_icon(self, key: Key, icon_x: int = 0, icon_y: int = 0) -> None:
        self._send(icon_set(key, icon_x, icon_y))

    # Actions

    def getAllActions(self) -> list[Action]:
        return [*self.actions.values()]

    def getAction(self, id_action: int) -> list[Action]:
        return [self.actions[id_action]] if id_action in self.actions else []

    def addAction(self, action: Action) -> int:
        self._last_action += 1
        action = action._replace(idAction=self._last_action)
        self.actions[action.idAction] = action
        self._send(action_created(action))
        return action.idAction

    def modifyAction(self, action: Action) -> int:
        old = self.actions.get(action.idAction)
        if old is None:
            self._log("error", "ZelProgrammableKeys::modifyAction(2) : fail !")
            return REFUSED
        self.actions[action.idAction] = action
        self._send(action_modified(action))
        if old.shortLabel != action.shortLabel:
            for key in self._keys_bound_to(action.idAction):
                if key.type == 1:
                    self._send(label_set(key, action.shortLabel))
        return 0

    def deleteAction(self, id_action: int) -> int:
        if id_action == RESERVED_ACTION.idAction:
            self._log(
                "error", "Action of id -1 is read only and reserved. Deletion is forbidden."
            )
            return REFUSED
        action = self.actions.get(id_action)
        if action is None or action.dmId != "":
            return REFUSED
        del self.actions[id_action]
        for key in self._keys_bound_to(id_action):
            self.deleteProgrammableKey(key.idKey)
        self._send(action_deleted(id_action))
        return 0

    def _keys_bound_to(self, id_action: int) -> list[Key]:
        return [key for key in self.keys.values() if key.idAction == id_action]

    # Add-on modules

    def press(self, *arguments: tuple[str, str, Any]) -> None:
        given = {name: (signature, value) for name, signature, value in arguments}
        place = []
        for name, name_in_log in PLACE_OF_A_PRESS:
            number = _number_of_press(*given.get(name, ("", None)))
            if number is None:
                event = f"Argument {name_in_log} passed to event AOM_KEY_PRESS_EVENT"
                self._log("error", f"{event} has got an invalid value.")
                return
            place.append(number)
        self._report_press(*place)

    def _report_press(self, position: int, aom_type: int, aom_addr: int) -> None:
        place = (1, position, aom_type, aom_addr)
        for key in self.keys.values():
            if (key.type, key.position, key.aom_type, key.aom_addr) == place:
                if key.idAction not in self.actions:
                    self._log("error", f"No action found for key of id {key.idAction}")
                action = self.actions.get(key.idAction, Action())
                self._send(module_key_pressed(key, action, exists=True))
                return
        unknown = Key(type=1, position=position, aom_type=aom_type, aom_addr=aom_addr)
        self._send(module_key_pressed(unknown, Action(), exists=False))

    def setIconStateForKey(self, id_key: int, icon_x: int, icon_y: int) -> int:
        key = self._settable_key(id_key, "setIconStateForKey")
        if key is None:
            return REFUSED
        self._set_icon(key, icon_x, icon_y)
        return 0

    def setLabelStateForKey(self, id_key: int, state: int) -> int:
        key = self._settable_key(id_key, "setLabelStateForKey")
        if key is None:
            return REFUSED
        action = self.actions.get(key.idAction)
        if action is None:
            line = "In setLabelStateForKey, internal error action does not exists"
            self._log("error", f"{line}, id[{key.idAction}]")
            return REFUSED
        self._send(label_set(key, action.shortLabel, state))
        return 0

    def _settable_key(self, id_key: int, method: str) -> Optional[Key]:
        key = self.keys.get(id_key)
        if key is not None and key.aom_type == 1:
            return key
        self._log("error", f"In {method}, not an aom key, id[{id_key}]")
        return None

    # Capabilities: there are none

    def getCapabilities(self, _list_id: Optional[int] = None) -> dict[str, tuple[str, int]]:
        return {}

    def getCapability(self, *_list_id_and_name: Any) -> tuple[str, int]:
        return "", 0


def _number_of_press(signature: str, value: Any) -> Optional[int]:
    if signature == "s":
        return whole_number(value)
    if signature == "d":
        value = math.floor(value + 0.5) if math.isfinite(value) else None
    return value if value is not None and INT_MIN <= value <= INT_MAX else None
