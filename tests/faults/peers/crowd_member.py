"""A client in a crowd: works on rows of its own, and knows what each call must answer."""

import random
from collections import Counter
from typing import Any, Callable, Iterable, NamedTuple, Optional

from sandbox.client import Client
from sandbox.records import ACTION, KEY, Action, Key

MOST_ROWS = 8
NOBODYS_ID = 2**60
REFUSED = -2
MODULE_TYPE = 1


class Call(NamedTuple):
    """A method call, and what to do with the value that it is answered with."""

    method: str
    signature: str
    arguments: tuple[Any, ...]
    check: Callable[[Any], None]


class Member:
    """One connection with one call on its way at any time, until it is told to come to an end."""

    def __init__(self, address: str, number: int, seed: str) -> None:
        self.name = f"member {number}"
        self.actions: dict[int, Action] = {}
        self.keys: dict[int, Key] = {}
        self.created: list[tuple[str, int]] = []
        self.events: Counter[str] = Counter()
        self.calls = 0
        self.is_idle = True
        self.fault: Optional[BaseException] = None
        self._number = number
        self._source = random.Random(f"{seed} {number}")
        self._client = Client(address, f"Member{number}")

    def go_on(self, is_late: Callable[[], bool]) -> None:
        """Calls once more, and again whenever an answer was right, until it is late."""
        self.is_idle = is_late()
        if self.is_idle:
            return
        self._press_sometimes()
        call = self._source.choice(CALLS)(self)

        def answered() -> None:
            try:
                call.check(pending.wait().values[0])
                self.calls += 1
                self.go_on(is_late)
            except BaseException as fault:  # the bus library would swallow it
                self.fault, self.is_idle = fault, True

        pending = self._client.send(call.method, call.signature, *call.arguments, on_reply=answered)

    def _press_sometimes(self) -> None:
        if self._source.random() < 0.1:
            place = {"aom_key_num": self._source.randrange(9), "aom_type": 1, "addr": self._number}
            self._client.send_event("AOM_KEY_PRESS_EVENT", **place)
            self.events["AOMKEY_PRESS_NTF"] += 1

    # Values

    def _text(self) -> str:
        return "".join(self._source.choices("ab ,#'é☎%\\", k=self._source.randrange(40)))

    def _new_action(self, id_action: int = -1) -> Action:
        action, *rest = (self._text() for _ in range(4))
        return Action(id_action, "", self._source.randrange(9), action, self.name, *rest)

    def _new_key(self, id_key: int = -1) -> Key:
        number, icon = self._source.randrange(9), self._source.choice("ab")
        types = self._source.randrange(2), self._source.randrange(1, 3)
        id_action = self._some(self.actions)
        return Key(id_key, "", id_action, self.name, number, icon, *types, self._number)

    def _some(self, rows: dict[int, Any]) -> int:
        return self._source.choice(list(rows))

    def _own(self, rows: list[Any], mark: Callable[[Any], str]) -> list[Any]:
        assert len({row[0] for row in rows}) == len(rows), "a row was read twice"
        return [row for row in rows if mark(row) == self.name]

    # Actions

    def add_action(self) -> Call:
        if len(self.actions) >= MOST_ROWS:
            return self.delete_action()
        action = self._new_action()

        def check(id_action: int) -> None:
            assert id_action > 0, f"addAction gave {id_action}"
            self.created.append(("ACTION", id_action))
            self.actions[id_action] = action._replace(idAction=id_action)
            self.events["ACTION_CREATE_NTF"] += 1

        return Call("addAction", ACTION, (action,), check)

    def modify_action(self) -> Call:
        if not self.actions:
            return self.refused()
        old = self.actions[self._some(self.actions)]
        new = self._new_action(old.idAction)

        def check(code: int) -> None:
            assert code == 0, f"modifyAction gave {code}"
            self.actions[new.idAction] = new
            self.events["ACTION_MODIFY_NTF"] += 1
            if new.shortLabel != old.shortLabel:
                shown = [key for key in self._keys_with(new.idAction) if key.type == MODULE_TYPE]
                self.events["AOM_SET_LABEL_PROPERTY_REC"] += len(shown)

        return Call("modifyAction", ACTION, (new,), check)

    def _keys_with(self, id_action: int) -> list[Key]:
        return [key for key in self.keys.values() if key.idAction == id_action]

    def delete_action(self) -> Call:
        if not self.actions:
            return self.refused()
        id_action = self._some(self.actions)

        def check(code: int) -> None:
            assert code == 0, f"deleteAction gave {code}"
            del self.actions[id_action]
            for key in self._keys_with(id_action):
                del self.keys[key.idKey]
                self.events["KEY_DELETE_NTF"] += 1
            self.events["ACTION_DELETE_NTF"] += 1

        return Call("deleteAction", "x", (id_action,), check)

    # Keys

    def create_key(self) -> Call:
        if not self.actions:
            return self.add_action()
        if len(self.keys) >= MOST_ROWS:
            return self.delete_key()
        key = self._new_key()

        def check(id_key: int) -> None:
            assert id_key > 0, f"createProgrammableKey gave {id_key}"
            self.created.append(("KEY", id_key))
            self.keys[id_key] = key._replace(idKey=id_key)
            self.events["KEY_CREATE_NTF"] += 1
            self.events["AOM_SET_ICON_PROPERTY_REC"] += key.type == MODULE_TYPE

        return Call("createProgrammableKey", KEY, (key,), check)

    def modify_key(self) -> Call:
        if not self.keys:
            return self.refused()
        old = self.keys[self._some(self.keys)]
        new = self._new_key(old.idKey)

        def check(code: int) -> None:
            assert code == 0, f"modifyProgrammableKey gave {code}"
            self.keys[new.idKey] = new
            self.events["KEY_MODIFY_NTF"] += 1
            is_shown_anew = new.type == MODULE_TYPE and new.icon != old.icon
            self.events["AOM_SET_ICON_PROPERTY_REC"] += is_shown_anew

        return Call("modifyProgrammableKey", KEY, (new,), check)

    def delete_key(self) -> Call:
        if not self.keys:
            return self.refused()
        id_key = self._some(self.keys)

        def check(code: int) -> None:
            assert code == 0, f"deleteProgrammableKey gave {code}"
            del self.keys[id_key]
            self.events["KEY_DELETE_NTF"] += 1

        return Call("deleteProgrammableKey", "x", (id_key,), check)

    def move_keys(self) -> Call:
        positions = {id_key: self._source.randrange(99) for id_key in self.keys}

        def check(is_done: bool) -> None:
            assert is_done is True
            for id_key, position in positions.items():
                self.keys[id_key] = self.keys[id_key]._replace(position=position)

        return Call("changeProgrammableKeysPosition", "a{ii}", (positions,), check)

    def set_state(self) -> Call:
        if not self.keys:
            return self.refused()
        key = self.keys[self._some(self.keys)]
        method, signature, numbers, event = self._source.choice(STATES)

        def check(code: int) -> None:
            is_module_key = key.aom_type == MODULE_TYPE
            assert code == (0 if is_module_key else REFUSED), f"{method} gave {code}"
            self.events[event] += is_module_key

        return Call(method, signature, (key.idKey, *numbers), check)

    # Reads

    def _equals(self, expected: Iterable[Any], found: list[Any]) -> None:
        assert found == list(expected), f"read {found}, not {list(expected)}"

    def read_all_actions(self) -> Call:
        def check(rows: list[Action]) -> None:
            self._equals(self.actions.values(), self._own(rows, lambda row: row.webAppName))

        return Call("getAllActions", "", (), check)

    def read_all_keys(self) -> Call:
        def check(rows: list[Key]) -> None:
            self._equals(self.keys.values(), self._own(rows, lambda row: row.container))

        return Call("getAllProgrammableKeys", "", (), check)

    def read_container(self) -> Call:
        def check(rows: list[Key]) -> None:
            self._equals(self.keys.values(), rows)

        return Call("getProgrammableKeysByContainer", "s", (self.name,), check)

    def read_action(self) -> Call:
        id_action = self._some({**self.actions, NOBODYS_ID: None})
        expected = [self.actions[id_action]] if id_action in self.actions else []
        return Call("getAction", "x", (id_action,), lambda rows: self._equals(expected, rows))

    def read_key(self) -> Call:
        id_key = self._some({**self.keys, NOBODYS_ID: None})
        expected = [self.keys[id_key]] if id_key in self.keys else []
        return Call("getProgrammableKey", "x", (id_key,), lambda rows: self._equals(expected, rows))

    # Refusals

    def refused(self) -> Call:
        method, signature, argument = self._source.choice(REFUSALS)

        def check(code: int) -> None:
            assert code == REFUSED, f"{method} gave {code}"

        return Call(method, signature, (argument,), check)


STATES = (
    ("setIconStateForKey", "xii", (3, 4), "AOM_SET_ICON_PROPERTY_REC"),
    ("setLabelStateForKey", "xi", (2,), "AOM_SET_LABEL_PROPERTY_REC"),
)

REFUSALS = (
    ("deleteAction", "x", -1),
    ("deleteAction", "x", NOBODYS_ID),
    ("modifyAction", ACTION, Action(NOBODYS_ID)),
    ("deleteProgrammableKey", "x", NOBODYS_ID),
    ("createProgrammableKey", KEY, Key(idAction=NOBODYS_ID)),
    ("modifyProgrammableKey", KEY, Key(idKey=NOBODYS_ID, idAction=-1)),
)

CALLS = (
    *[Member.add_action, Member.create_key] * 3,
    *[Member.modify_action, Member.modify_key, Member.move_keys, Member.set_state] * 2,
    *[Member.delete_action, Member.delete_key, Member.refused],
    *[Member.read_action, Member.read_key, Member.read_container] * 2,
    *[Member.read_all_actions, Member.read_all_keys],
)
