"""All operations that write, each as a change of one row."""

from typing import Any, Callable, NamedTuple, Optional

from samples import (
    action_created,
    action_deleted,
    action_modified,
    key_created,
    key_deleted,
    key_modified,
)
from sandbox.events import Event
from sandbox.records import Action, Key
from writing import writes
from writing.writes import Write


class Operation(NamedTuple):
    """A call, its result on failure, and its event on success."""

    write: Callable[[Action, Key], Write]
    failure: Any
    event: Optional[Callable[[Any], Event]]

    def events_of(self, write: Write) -> list[Event]:
        ((row, record),) = write.changes
        return [self.event(record or row[1])] if self.event else []


OPERATIONS = {
    "addAction": Operation(
        lambda action, _key: writes.add_action(action._replace(label="new")), -3, action_created
    ),
    "modifyAction": Operation(
        lambda action, _key: writes.modify_action(action._replace(label="other")),
        -3,
        action_modified,
    ),
    "deleteAction": Operation(
        lambda action, _key: writes.delete_action(action.idAction), -3, action_deleted
    ),
    "createProgrammableKey": Operation(
        lambda _action, key: writes.create_key(key._replace(icon="new")), -2, key_created
    ),
    "modifyProgrammableKey": Operation(
        lambda _action, key: writes.modify_key(key._replace(icon="other")), -3, key_modified
    ),
    "changeProgrammableKeysPosition": Operation(
        lambda _action, key: writes.move_keys([key], {key.idKey: 777}), False, None
    ),
    "deleteProgrammableKey": Operation(
        lambda _action, key: writes.delete_key(key.idKey), -3, key_deleted
    ),
}
