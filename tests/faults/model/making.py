"""Steps made at random, with an eye on what the phone holds so that many of them meet something."""

import random
from typing import Any, Callable, Mapping, NamedTuple

from hostile import DOUBLES, INT_MAX, INT_MIN, INTS, LARGE_TEXTS, LONGS, NUMBERS, TEXTS
from model.provisioning import provisioning_text
from model.reference import Reference
from model.steps import (
    PRESS,
    PROPERLY,
    RESTART,
    SETTING,
    SETTINGS_MANNER,
    WITH_ERRORS,
    WITH_NUMBERS,
    Moves,
    Step,
)
from rollout import DM_IDS
from sandbox.records import Action, Key

MOST_STORED = 6 * 2**20
"""Bytes of text: all of it must fit into one message, and there is more in each row."""
MOST_ROWS = 80
CONTAINERS = ("main", "module", "Main", "", "it's", "%1")
SHORT_TEXTS = ("a", "bell", "lamp", "Rec", "501", "ü", "☎", "main")

MIXED: Mapping[str, float] = {
    "createProgrammableKey": 14,
    "modifyProgrammableKey": 9,
    "changeProgrammableKeysPosition": 4,
    "deleteProgrammableKey": 6,
    "getProgrammableKey": 3,
    "getProgrammableKeysByContainer": 3,
    "getAllProgrammableKeys": 1.5,
    "addAction": 9,
    "modifyAction": 9,
    "deleteAction": 6,
    "getAction": 3,
    "getAllActions": 1.5,
    "setIconStateForKey": 4,
    "setLabelStateForKey": 4,
    "getCapabilities": 1,
    "getCapability": 1,
    PRESS: 8,
    SETTING: 4,
    SETTINGS_MANNER: 1,
    "restoreDefault": 0.25,
    "restoreFactory": 0.1,
    "presentationLoaded": 0.2,
    "presentationStop": 0.2,
    "preSaveForSaveRestore": 0.2,
    "postRestoreForSaveRestore": 0.2,
    RESTART: 1,
}
"""How often each kind of step is made, of everything that the phone knows."""


class Taste(NamedTuple):
    """How often what comes: the weights of the kinds of step, and the share of large texts."""

    weights: Mapping[str, float] = MIXED
    large: float = 0.002


class StepMaker:
    """Makes the next step for what the reference holds."""

    def __init__(self, source: random.Random, reference: Reference, taste: Taste = Taste()):
        self._source = source
        self._reference = reference
        self._taste = taste
        self._names = [name for name, weight in taste.weights.items() if weight > 0]
        self._weights = [taste.weights[name] for name in self._names]
        self._to_come: list[Step] = []

    def next(self) -> Step:
        if not self._to_come and self._is_full():
            emptied = (Step(SETTING, (name, "")) for name in ("DefaultActions", "DefaultKeys"))
            self._to_come = [*emptied, Step("restoreFactory")]
        if self._to_come:
            return self._to_come.pop(0)
        (name,) = self._source.choices(self._names, self._weights)
        make = MAKERS.get(name)
        return Step(name, make(self) if make else ())

    def _is_full(self) -> bool:
        keys, actions = self._reference.tables()
        if len(keys) + len(actions) > MOST_ROWS:
            return True
        texts = (field for row in (*keys, *actions) for field in row if isinstance(field, str))
        return sum(map(len, texts)) * 2 > MOST_STORED

    # Values

    def _int(self) -> int:
        return self._source.choice(INTS) if self._source.random() < 0.3 else self._small()

    def _small(self) -> int:
        return self._source.randrange(3)

    def _text(self) -> str:
        chance = self._source.random()
        if chance < self._taste.large:
            return self._source.choice(LARGE_TEXTS)
        return self._source.choice(TEXTS if chance < 0.3 else SHORT_TEXTS)

    def _dm_id(self) -> str:
        return self._source.choice(DM_IDS) if self._source.random() < 0.25 else ""

    def _container(self) -> str:
        return self._source.choice(CONTAINERS) if self._source.random() < 0.8 else self._text()

    def _id_among(self, rows: Mapping[int, Any]) -> int:
        chance = self._source.random()
        if chance < 0.75 and rows:
            return self._source.choice([*rows])
        if chance < 0.85:
            return self._source.randrange(-1, 100)
        return self._source.choice((*INTS, *LONGS))

    def _key_id(self) -> int:
        return self._id_among(self._reference.keys)

    def _module_key_id(self) -> int:
        """Often the id of a key that has an icon and a label, or had one until its action went."""
        rows = {id_key: key for id_key, key in self._reference.keys.items() if key.aom_type == 1}
        orphans = {i: key for i, key in rows.items() if key.idAction not in self._reference.actions}
        return self._id_among(orphans or rows)

    def _action_id(self) -> int:
        return self._id_among(self._reference.actions)

    def _key(self) -> Key:
        ids = (self._key_id(), self._dm_id(), self._action_id())
        numbers = (self._int() for _ in range(3))
        return Key(*ids, self._container(), self._int(), self._text(), *numbers)

    def _action(self) -> Action:
        texts = (self._text() for _ in range(5))
        return Action(self._action_id(), self._dm_id(), self._int(), *texts)

    # The values of each kind of step

    def key(self) -> tuple[Key]:
        """Often one that is stored already, changed in one field."""
        if self._source.random() < 0.5 and self._reference.keys:
            key = self._source.choice([*self._reference.keys.values()])
            field = self._source.choice(Key._fields[1:])
            return (key._replace(**{field: getattr(self._key(), field)}),)
        return (self._key(),)

    def action(self) -> tuple[Action]:
        """Often one that is stored already, changed in one field."""
        if self._source.random() < 0.5:
            action = self._source.choice([*self._reference.actions.values()])
            field = self._source.choice(Action._fields[1:])
            return (action._replace(**{field: getattr(self._action(), field)}),)
        return (self._action(),)

    def key_id(self) -> tuple[int]:
        return (self._key_id(),)

    def action_id(self) -> tuple[int]:
        return (self._action_id(),)

    def container(self) -> tuple[str]:
        return (self._container(),)

    def moves(self) -> tuple[Moves]:
        """Often with an id that comes more than once, among others."""
        count = self._source.randrange(6)
        ids = [min(max(self._key_id(), INT_MIN), INT_MAX) for _ in range(count)]
        if self._source.random() < 0.3:
            ids = self._source.choices(ids[:3], k=6) if ids else []
        return ([(id_key, self._int()) for id_key in ids],)

    def icon(self) -> tuple[int, int, int]:
        return self._module_key_id(), self._int(), self._int()

    def label(self) -> tuple[int, int]:
        return self._module_key_id(), self._int()

    def list_id(self) -> tuple[int, ...]:
        return (self._int(),) if self._source.random() < 0.5 else ()

    def capability(self) -> tuple[Any, ...]:
        return (*self.list_id(), self._text())

    def press(self) -> tuple[tuple[str, str, Any], ...]:
        place = (self._int(), self._int(), self._int())
        if self._source.random() < 0.5 and self._reference.keys:
            key = self._source.choice([*self._reference.keys.values()])
            place = (key.position, key.aom_type, key.aom_addr)
        names = ("aom_key_num", "aom_type", "addr")
        arguments = [(name, "i", number) for name, number in zip(names, place)]
        if self._source.random() < 0.3:
            spoilt = self._source.randrange(3)
            arguments[spoilt : spoilt + 1] = self._other_argument(names[spoilt])
        self._source.shuffle(arguments)
        return tuple(arguments)

    def _other_argument(self, name: str) -> list[tuple[str, str, Any]]:
        """Another type, a number that may be too large, a text that may be a number, or nothing."""
        long = self._source.choice((*INTS, *LONGS))
        return self._source.choice(
            (
                [],
                [(name, "s", self._source.choice(NUMBERS))],
                [(name, "s", self._source.choice(TEXTS))],
                [(name, "x", long)],
                [(name, "t", long % 2**64)],
                [(name, "u", long % 2**32)],
                [(name, "d", self._source.choice((*DOUBLES, float(long))))],
                [(name, "y", self._source.randrange(256))],
                [(f"{name} ", "i", 1)],
            )
        )

    def setting(self) -> tuple[str, Any]:
        name = self._source.choice(("ProgKeysMax", "DefaultActions", "DefaultKeys"))
        if self._source.random() < 0.05:
            return name, None
        if name == "ProgKeysMax":
            hostile = self._source.random() < 0.3
            return name, self._source.choice(NUMBERS if hostile else ("5", "10", "30", "100"))
        return name, provisioning_text(self._source, name)

    def settings_manner(self) -> tuple[str]:
        return (self._source.choice((PROPERLY, PROPERLY, WITH_ERRORS, WITH_NUMBERS)),)


MAKERS: Mapping[str, Callable[[StepMaker], tuple[Any, ...]]] = {
    "createProgrammableKey": StepMaker.key,
    "modifyProgrammableKey": StepMaker.key,
    "changeProgrammableKeysPosition": StepMaker.moves,
    "deleteProgrammableKey": StepMaker.key_id,
    "getProgrammableKey": StepMaker.key_id,
    "getProgrammableKeysByContainer": StepMaker.container,
    "addAction": StepMaker.action,
    "modifyAction": StepMaker.action,
    "deleteAction": StepMaker.action_id,
    "getAction": StepMaker.action_id,
    "setIconStateForKey": StepMaker.icon,
    "setLabelStateForKey": StepMaker.label,
    "getCapabilities": StepMaker.list_id,
    "getCapability": StepMaker.capability,
    PRESS: StepMaker.press,
    SETTING: StepMaker.setting,
    SETTINGS_MANNER: StepMaker.settings_manner,
}
