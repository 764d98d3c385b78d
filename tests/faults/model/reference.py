"""An executable model of the service: operations, lifecycle and provisioned defaults."""

from typing import Any, NamedTuple, Optional

from model.defaults import Record, provisioned_action, provisioned_key, records_of
from model.rules import Rules
from samples import DATABASE_RESET
from sandbox.events import Event
from sandbox.records import Action, Key

FROM_VALUES, WITH_ERRORS, WITH_NUMBERS = "from values", "with errors", "with numbers"
"""The behavior of the SettingsManager."""


class Outcome(NamedTuple):
    """All observable effects of a step."""

    reply: Any
    events: list[Event]
    lines: list[tuple[str, str]]
    """The log lines: level and text."""
    settings_read: list[str]
    keys: list[Key]
    """The stored keys, in the order of their ids."""
    actions: list[Action]


class Reference(Rules):
    """A model of the service and its SettingsManager. Each step is a method."""

    def __init__(self, database_path: str, settings: dict[str, str]) -> None:
        super().__init__()
        self.settings.update(settings)
        self._database_path = database_path

    def perform(self, step: str, *values: Any) -> Outcome:
        """Executes a step and returns all its observable effects."""
        self._clear_effects()
        reply = getattr(self, step)(*values)
        rows = [*self.keys.values()], [*self.actions.values()]
        return Outcome(reply, self._events, self._lines, self._settings_read, *rows)

    # The SettingsManager

    def set(self, name: str, text: Optional[str]) -> None:
        """Changes a setting, or removes it if the text is None."""
        self.settings[name] = text

    def answer(self, behavior: str) -> None:
        """Sets the behavior of the SettingsManager. All but FROM_VALUES make reads fail."""
        self.settings_answer = behavior == FROM_VALUES

    # Lifecycle

    def firstStart(self) -> None:
        self._check()
        self._log("info", "Table Key is not correct. Check fails")
        self._log("debug", "ZelProgrammableKeys deploying...")
        self._reset_tables()
        self._init_and_start()

    def restart(self) -> None:
        self._check()
        self._init_and_start()

    def _check(self) -> None:
        self._log("debug", "ZelProgrammableKeys checking...")
        self._log("debug", f"Connecting to database at {self._database_path}...")

    def _init_and_start(self) -> None:
        self._log("debug", "ZelProgrammableKeys initialization...")
        self._log("debug", "ZelProgrammableKeys starting...")
        self._synchronize()

    def restoreDefault(self) -> bool:
        self._log("debug", "ZelProgrammableKeys restoring data to default ...")
        self._send(DATABASE_RESET)
        self._reset_tables()
        self._synchronize()
        return False

    def restoreFactory(self) -> bool:
        self._log("debug", "ZelProgrammableKeys restoring data to factory ...")
        return self.restoreDefault()

    def presentationLoaded(self) -> None:
        pass

    def presentationStop(self) -> None:
        pass

    def preSaveForSaveRestore(self) -> bool:
        return True

    def postRestoreForSaveRestore(self) -> bool:
        return True

    # Provisioned defaults

    def _synchronize(self) -> None:
        action_records = records_of(self._read_setting("DefaultActions") or "")
        key_records = records_of(self._read_setting("DefaultKeys") or "")
        counts = f"{len(action_records)} dm actions and {len(key_records)} dm keys"
        self._log("debug", f"Processing {counts}")
        provisioned = self._accepted_actions(action_records)
        self._update_stored(provisioned)
        self._add_new(provisioned)
        keys = self._accepted_keys(key_records)
        self.keys = {id_key: key for id_key, key in self.keys.items() if key.dmId == ""}
        for key in keys:
            self._create_provisioned(key)

    def _accepted_actions(self, records: list[Record]) -> list[Action]:
        actions = []
        for record in records:
            if record.fields is None:
                self._log("warning", f"Skipping invalid dm action: {record.hidden}")
                continue
            actions.append(provisioned_action(record.fields))
            self._log("debug", f"added action of dmId {actions[-1].dmId}")
        return actions

    def _accepted_keys(self, records: list[Record]) -> list[Key]:
        keys = []
        for record in records:
            if record.fields is None:
                self._log("warning", f"Skipping invalid dm key: {record.hidden}")
            else:
                keys.append(provisioned_key(record.fields))
        return keys

    def _update_stored(self, provisioned: list[Action]) -> None:
        stored = self.getAllActions()
        self._log("debug", f"found {len(stored)} db actions")
        for action in stored:
            found = False
            for place, candidate in enumerate(provisioned):
                if candidate.dmId == action.dmId:
                    self._log("debug", f"action of id {candidate.dmId} found, modifying")
                    provisioned[place] = candidate._replace(idAction=action.idAction)
                    self.modifyAction(provisioned[place])
                    found = True
            if not found and action.dmId != "":
                self._log("debug", f"action of id {action.dmId} not found, deleting")
                self.deleteAction(action.idAction)

    def _add_new(self, provisioned: list[Action]) -> None:
        for action in provisioned:
            if action.idAction == -1:
                self.addAction(action)
                self._log("debug", f"action of id {action.dmId} added")

    def _create_provisioned(self, key: Key) -> None:
        for action in self.actions.values():
            if action.dmId == key.dmId:
                self.createProgrammableKey(key._replace(idAction=action.idAction))
                return
