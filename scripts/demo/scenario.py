"""A day in the life of a phone, from its first start to its reset."""

from sandbox.records import Action, Key

from . import expected
from .merges import LIMIT, Merges
from .narrate import Suitable
from .stage import (
    AT_LIMIT,
    BORROWED_KEY,
    DONE,
    LENA,
    MODULE_ADDRESS,
    MODULE_KEY,
    MODULE_TYPE,
    REFUSED,
    TOKYO,
    UNPROGRAMMED_KEY,
    on_module,
    on_set,
)
from .words import ON_MODULE, ON_SET, RESERVED, in_words, new_key


class Scenario(Merges):
    """The steps, in order; each stands on those before it."""

    def run(self) -> None:
        self.first_start()
        self._actions_are_added()
        self._keys_are_created()
        self._keys_are_changed()
        self._module_keys_are_pressed()
        self._module_displays_follow()
        self._limit_is_kept()
        self.second_start()
        self._withdrawn_actions_stay()
        self._rows_are_deleted()
        self._rows_are_protected()
        self.reset()

    # Rows come

    def _actions_are_added(self) -> None:
        self.show.step("Actions say what a key does")
        self._lena = self.add(LENA)
        self._tokyo = self.add(TOKYO)
        self.show.call("getAction", self._tokyo.idAction, answer=[self._tokyo])

    def _keys_are_created(self) -> None:
        self.show.step("Keys bind an action to a place, on the set or on an add-on module, which is sent the icon")
        self._lena_key = self.create(on_set(self._lena.idAction, 12, "person"))
        self._tokyo_key = self.create(on_set(self._tokyo.idAction, 13, "globe"))
        self._module_key = self.create(on_module(self._lena.idAction, MODULE_KEY, "person"))
        provisioned = self.key_on_its_way_out()
        self._borrowed = next(row for row in self.actions if row.idAction == provisioned.idAction)
        self._borrowed_key = self.create(on_module(provisioned.idAction, BORROWED_KEY, provisioned.icon))
        at_home = [key for key in self.keys if key.container == "home"]
        self.show.call("getProgrammableKeysByContainer", "home", answer=at_home)

    # Rows change

    def _keys_are_changed(self) -> None:
        self.show.step("Keys change places, without an event, and icons")
        places = {self._lena_key.idKey: 13, self._tokyo_key.idKey: 12}
        subject = ", ".join(f"key {key} to {position}" for key, position in places.items())
        self.show.call("changeProgrammableKeysPosition", places, subject=subject, answer=True)
        self._lena_key = self.replace(self._lena_key, position=13)
        self._tokyo_key = self.replace(self._tokyo_key, position=12)
        self.show.call("getProgrammableKey", self._lena_key.idKey, answer=[self._lena_key])
        self._module_key = self.replace(self._module_key, icon="star")
        events = [expected.key_modified(self._module_key), expected.icon(self._module_key, 0, 0)]
        self.show.call("modifyProgrammableKey", self._module_key, answer=DONE, events=events)
        self.show.call("getProgrammableKey", self._module_key.idKey, answer=[self._module_key])

    # Add-on modules

    def _module_keys_are_pressed(self) -> None:
        self.show.step("A finger on the module: the service tells which key it was and what it does")
        self.press(MODULE_KEY, expected.pressed(self._module_key, self._lena, True))
        place = {"type": ON_MODULE, "aom_type": MODULE_TYPE, "aom_addr": MODULE_ADDRESS}
        unprogrammed = Key(position=UNPROGRAMMED_KEY, **place)
        self.press(UNPROGRAMMED_KEY, expected.pressed(unprogrammed, Action(), False))

    def _module_displays_follow(self) -> None:
        self.show.step("The display beside a module key follows its action, and whoever asks")
        self._lena = self._lena._replace(shortLabel="Lena B.")
        self.actions = [self._lena if old.idAction == self._lena.idAction else old for old in self.actions]
        events = [expected.action_modified(self._lena), expected.label(self._module_key, 1, "Lena B.")]
        self.show.call("modifyAction", self._lena, answer=DONE, events=events)
        key = self._module_key.idKey
        events = [expected.label(self._module_key, 3, "Lena B.")]
        self.show.call("setLabelStateForKey", key, 3, subject=f"key {key}, state 3", answer=DONE, events=events)
        events = [expected.icon(self._module_key, 2, 5)]
        self.show.call("setIconStateForKey", key, 2, 5, subject=f"key {key}, icon 2 5", answer=DONE, events=events)
        key = self._lena_key.idKey
        errors = [f"In setIconStateForKey, not an aom key, id[{key}]"]
        self.show.call("setIconStateForKey", key, 2, 5, subject=f"key {key}, icon 2 5", answer=REFUSED, errors=errors)

    # Limits

    def _set_limit(self, value: str) -> None:
        self.show.act(f'setSettingValue("{LIMIT}", "{value}")', lambda: self.phone.set_setting(LIMIT, value))

    def _limit_is_kept(self) -> None:
        self.show.step(f"{LIMIT} limits the keys of the set, and not those of modules")
        a_number = Suitable("a number", str.isdecimal)
        before = self.show.act(f'getSettingValue("{LIMIT}")', lambda: self.phone.get_setting(LIMIT), answer=a_number)
        count = sum(key.type == ON_SET for key in self.keys)
        self._set_limit(str(count))
        key = on_set(self._tokyo.idAction, 14, "globe")
        subject = new_key(key)
        self.show.call("createProgrammableKey", key, subject=subject, answer=AT_LIMIT, events=[expected.FULL])
        self.create(on_module(self._tokyo.idAction, MODULE_KEY + 1, "globe"))
        self._set_limit(before)
        self.create(key)

    # Rows stay

    def _withdrawn_actions_stay(self) -> None:
        self.show.step("A withdrawn action cannot be deleted either: what a user's key does, it goes on doing")
        action = self._borrowed
        self.show.call("deleteAction", action.idAction, subject=in_words(action), answer=REFUSED)
        self.press(BORROWED_KEY, expected.pressed(self._borrowed_key, action, True))

    # Rows go

    def _rows_are_deleted(self) -> None:
        self.show.step("A key is deleted, and an action, which takes its keys with it")
        key = self._tokyo_key.idKey
        self.show.call("deleteProgrammableKey", key, answer=DONE, events=[expected.key_deleted(key)])
        action = self._lena.idAction
        bound = [key.idKey for key in self.keys if key.idAction == action]
        events = [*map(expected.key_deleted, bound), expected.action_deleted(action)]
        self.show.call("deleteAction", action, answer=DONE, events=events)
        self.keys = [row for row in self.keys if row.idKey != key and row.idAction != action]
        self.actions = [row for row in self.actions if row.idAction != action]
        self.show.call("getAllProgrammableKeys", answer=self.keys)

    def _rows_are_protected(self) -> None:
        self.show.step("What may not be, is refused")
        errors = ["Action of id -1 is read only and reserved. Deletion is forbidden."]
        self.show.call("deleteAction", RESERVED, answer=REFUSED, errors=errors)
        for provisioned in [row for row in self.actions if row.dmId][:1]:
            self.show.call("deleteAction", provisioned.idAction, subject=in_words(provisioned), answer=REFUSED)
        for provisioned in [row for row in self.keys if row.dmId][:1]:
            self.show.call("deleteProgrammableKey", provisioned.idKey, subject=in_words(provisioned), answer=REFUSED)
        orphan = on_set(self._lena.idAction, 12, "person")
        errors = [f"Action of id {orphan.idAction} does not exist"]
        self.show.call("createProgrammableKey", orphan, subject=new_key(orphan), answer=REFUSED, errors=errors)
        self.show.call("getAllActions", answer=self.actions)
        self.show.call("getAllProgrammableKeys", answer=self.keys)
