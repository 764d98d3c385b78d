"""Random sequences of operations on the service, compared step by step with a model."""

import shutil
import tempfile
from collections import Counter
from pathlib import Path
from typing import Any, Callable, Mapping, Optional

import pytest
from hypothesis import Phase, settings
from hypothesis import strategies as st
from hypothesis.stateful import (
    RuleBasedStateMachine,
    initialize,
    rule,
    run_state_machine_as_test,
)

from model.driver import Driver
from model.reference import FROM_VALUES, WITH_ERRORS, WITH_NUMBERS, Reference
from model.values import (
    ACTIONS,
    CONTAINER,
    KEYS,
    LIMIT,
    MOVES,
    NUMBER,
    PRESSES,
    PROVISIONING,
    ROW,
    STORED,
    TEXT,
    UNUSUAL_KEYS,
    VALID_PROVISIONING,
    Nth,
)
from phones import TEST_SETTINGS, Phone
from sandbox.records import Action, Key

FIRST_SETTINGS = {**TEST_SETTINGS, "ProgKeysMax": "30"}
LIST_ID = st.none() | NUMBER
MERGING = ("restart", "restart", "restoreDefault", "restoreFactory")
HOOKS = (
    *("presentationLoaded", "presentationStop", "preSaveForSaveRestore"),
    *("postRestoreForSaveRestore", "restart"),
)


class Comparison(RuleBasedStateMachine):
    """A phone and a reference that execute the same steps."""

    def __init__(
        self,
        bin_dir: Path,
        make_reference: Callable[..., Reference] = Reference,
        steps: Optional[Counter[str]] = None,
    ) -> None:
        super().__init__()
        self._directory = Path(tempfile.mkdtemp(prefix="phone-"))
        self._phone = Phone(bin_dir, self._directory / "phone", FIRST_SETTINGS)
        self._driver = Driver(self._phone)
        self._reference = make_reference(str(self._phone.database.path), FIRST_SETTINGS)
        self._steps: Counter[str] = Counter() if steps is None else steps

    def teardown(self) -> None:
        try:
            self._phone.service.stop()
        finally:
            self._phone.close()
            shutil.rmtree(self._directory)

    def take(self, step: str, *values: Any) -> None:
        """Executes a step on both and compares the outcomes."""
        expected = self._reference.perform(step, *values)
        found = self._driver.perform(step, *values)
        self._steps[step] += 1
        for name in expected._fields:
            assert getattr(found, name) == getattr(expected, name), f"{name} after {step}"

    # Rows

    def _key_id(self, key: int, matches: Callable[[Key], bool] = lambda _key: True) -> int:
        return _id_in(self._reference.keys, key, matches)

    def _action_id(self, action: int, matches: Callable[[Action], bool] = lambda _: True) -> int:
        return _id_in(self._reference.actions, action, matches)

    def _is_orphan(self, key: Key) -> bool:
        return key.idAction not in self._reference.actions

    @initialize(
        actions=st.lists(ACTIONS, min_size=2, max_size=4),
        keys=st.lists(st.tuples(KEYS, STORED), min_size=3, max_size=6),
    )
    def start(self, actions: list[Action], keys: list[tuple[Key, int]]) -> None:
        self.take("firstStart")
        for action in actions:
            self.add_action(action)
        for key, id_action in keys:
            self.create_key(key, id_action)

    # Keys

    @rule(key=KEYS | UNUSUAL_KEYS, action=STORED | ROW)
    def create_key(self, key: Key, action: int) -> None:
        self.take("createProgrammableKey", key._replace(idAction=self._action_id(action)))

    @rule(key_id=ROW, key=KEYS | UNUSUAL_KEYS, action=ROW)
    def modify_key(self, key_id: int, key: Key, action: int) -> None:
        ids = {"idKey": self._key_id(key_id), "idAction": self._action_id(action)}
        self.take("modifyProgrammableKey", key._replace(**ids))

    @rule(key_id=STORED, icon=TEXT)
    def modify_icon(self, key_id: int, icon: str) -> None:
        key = self._reference.keys.get(self._key_id(key_id), Key())
        self.take("modifyProgrammableKey", key._replace(icon=icon))

    @rule(moves=MOVES)
    def move_keys(self, moves: list[tuple[int, int]]) -> None:
        moved = [(self._key_id(key), position) for key, position in moves]
        self.take("changeProgrammableKeysPosition", moved)

    @rule(key=ROW)
    def delete_key(self, key: int) -> None:
        self.take("deleteProgrammableKey", self._key_id(key))

    @rule(key=ROW)
    def get_key(self, key: int) -> None:
        self.take("getProgrammableKey", self._key_id(key))

    @rule(container=CONTAINER)
    def get_container(self, container: str) -> None:
        self.take("getProgrammableKeysByContainer", container)

    @rule(method=st.sampled_from(("getAllProgrammableKeys", "getAllActions")))
    def get_all(self, method: str) -> None:
        self.take(method)

    # Actions

    @rule(action=ACTIONS)
    def add_action(self, action: Action) -> None:
        self.take("addAction", action)

    @rule(id_action=ROW, action=ACTIONS)
    def modify_action(self, id_action: int, action: Action) -> None:
        self.take("modifyAction", action._replace(idAction=self._action_id(id_action)))

    @rule(action=STORED, label=TEXT)
    def modify_label(self, action: int, label: str) -> None:
        old = self._reference.actions[self._action_id(action)]
        self.take("modifyAction", old._replace(shortLabel=label))

    @rule(action=ROW)
    def delete_action(self, action: int) -> None:
        self.take("deleteAction", self._action_id(action))

    @rule(action=STORED)
    def delete_user_action(self, action: int) -> None:
        self.take("deleteAction", self._action_id(action, lambda stored: stored.dmId == ""))

    @rule(action=ROW)
    def get_action(self, action: int) -> None:
        self.take("getAction", self._action_id(action))

    # Add-on modules

    @rule(key=ROW, icon_x=NUMBER, icon_y=NUMBER)
    def set_icon(self, key: int, icon_x: int, icon_y: int) -> None:
        id_key = self._key_id(key, lambda stored: stored.aom_type == 1)
        self.take("setIconStateForKey", id_key, icon_x, icon_y)

    @rule(key=ROW, state=NUMBER)
    def set_label(self, key: int, state: int) -> None:
        id_key = self._key_id(key, lambda stored: stored.aom_type == 1)
        self.take("setLabelStateForKey", id_key, state)

    @rule(key=STORED)
    def use_orphan(self, key: int) -> None:
        """Sets the label of a key without an action, and presses the key."""
        orphan = self._key_id(key, lambda stored: self._is_orphan(stored) and stored.aom_type == 1)
        self.take("setLabelStateForKey", orphan, 1)
        self._press_place_of(orphan)

    @rule(arguments=PRESSES)
    def press(self, arguments: list[tuple[str, str, Any]]) -> None:
        self.take("press", *arguments)

    @rule(key=STORED)
    def press_key(self, key: int) -> None:
        self._press_place_of(self._key_id(key, lambda stored: stored.type == 1))

    def _press_place_of(self, id_key: int) -> None:
        pressed = self._reference.keys.get(id_key, Key())
        names = ("aom_key_num", "aom_type", "addr")
        place = (pressed.position, pressed.aom_type, pressed.aom_addr)
        self.take("press", *((name, "i", number) for name, number in zip(names, place)))

    # Settings and the rest

    @rule(name=st.sampled_from(("DefaultActions", "DefaultKeys")), text=PROVISIONING)
    def provision(self, name: str, text: str) -> None:
        self.take("set", name, text)

    @rule(limit=LIMIT)
    def limit_keys(self, limit: str) -> None:
        self.take("set", "ProgKeysMax", limit)

    @rule(name=st.sampled_from([*FIRST_SETTINGS]))
    def forget_setting(self, name: str) -> None:
        self.take("set", name, None)

    @rule(behavior=st.sampled_from((FROM_VALUES, FROM_VALUES, WITH_ERRORS, WITH_NUMBERS)))
    def answer_settings(self, behavior: str) -> None:
        self.take("answer", behavior)

    @rule(list_id=LIST_ID, name=TEXT)
    def get_capabilities(self, list_id: Optional[int], name: str) -> None:
        first = () if list_id is None else (list_id,)
        self.take("getCapabilities", *first)
        self.take("getCapability", *first, name)

    @rule(actions=VALID_PROVISIONING, keys=VALID_PROVISIONING, hook=st.sampled_from(MERGING))
    def roll_out(self, actions: str, keys: str, hook: str) -> None:
        self.take("set", "DefaultActions", actions)
        self.take("set", "DefaultKeys", keys)
        self.take("answer", FROM_VALUES)
        self.take(hook)

    @rule(hook=st.sampled_from(HOOKS))
    def run_hook(self, hook: str) -> None:
        self.take(hook)


def _id_in(rows: Mapping[int, Any], row: int, matches: Callable[[Any], bool]) -> int:
    """The id of the nth row that matches if `row` is an Nth; otherwise `row` is the id."""
    ids = [id_ for id_, stored in rows.items() if matches(stored)]
    return ids[row % len(ids)] if isinstance(row, Nth) and ids else int(row)


@pytest.mark.sanitizers
def test_replies_events_log_and_tables_match_the_model_after_each_step(bin_dir, amount, summarize):
    steps: Counter[str] = Counter()
    run_state_machine_as_test(
        lambda: Comparison(bin_dir, steps=steps),
        settings=settings(max_examples=amount(40, 800), stateful_step_count=50),
    )
    summarize(f"{steps.total()} steps, 0 differences")
    assert len(steps) == 27, f"some kinds of steps are missing: {sorted(steps)}"


class ReferenceWithoutIcon(Reference):
    """A wrong model that sends no event for a changed icon."""

    def modifyProgrammableKey(self, key: Key) -> int:
        result = super().modifyProgrammableKey(key)
        icon = "AOM_SET_ICON_PROPERTY_REC"
        self._events = [event for event in self._events if event.name != icon]
        return result


def test_the_comparison_detects_a_wrong_model(bin_dir):
    only_generated = settings(max_examples=100, phases=[Phase.generate])
    with pytest.raises(AssertionError, match="events after modifyProgrammableKey"):
        run_state_machine_as_test(
            lambda: Comparison(bin_dir, ReferenceWithoutIcon), settings=only_generated
        )
