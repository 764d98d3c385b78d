"""Calls that write, and the rows that each call changes, in order."""

from dataclasses import dataclass
from itertools import count
from typing import Any, Iterable, Mapping, NamedTuple, Optional, Union

from sandbox.client import BusError, Client, PendingReply
from sandbox.records import ACTION, KEY, Action, Key

Record = Union[Action, Key]
RowId = tuple[type, int]
Rows = dict[RowId, Record]

_placeholders = count(-2, -1)


class Change(NamedTuple):
    """An atomic change of one row: a new record, or None if the row is deleted."""

    row: RowId
    record: Optional[Record] = None


def row_id(record: Record) -> RowId:
    return type(record), record[0]


def rows_of(records: Iterable[Record]) -> Rows:
    return {row_id(record): record for record in records}


def with_id(record: Record, number: int) -> Record:
    """The record with another id."""
    return type(record)(number, *record[1:])


def apply(rows: Rows, changes: Iterable[Change]) -> None:
    for change in changes:
        if change.record is None:
            rows.pop(change.row, None)
        else:
            rows[change.row] = change.record


@dataclass
class Write:
    """A call and its changes, in order."""

    method: str
    signature: str
    argument: Any
    changes: list[Change]
    success: Any = 0
    reply: Optional[PendingReply] = None

    def __str__(self) -> str:
        rows = ", ".join(f"{kind.__name__} {number}" for (kind, number), _ in self.changes)
        return f"{self.method} of {rows}"

    def send(self, client: Client) -> None:
        self.reply = client.send(self.method, self.signature, self.argument)

    def answer(self) -> Any:
        """The result of the call, or None if there is no reply."""
        try:
            return self.reply.wait().values[0]
        except BusError:
            return None

    @property
    def creates(self) -> bool:
        return self.success is None

    def was_done(self, answer: Any) -> bool:
        """Whether the result means success."""
        return answer > 0 if self.creates else answer == self.success

    def set_id(self, number: int) -> None:
        """Sets the id that the database assigned to the created record."""
        record = with_id(self.changes[0].record, number)
        self.changes = [Change(row_id(record), record)]


def _creation(method: str, signature: str, record: Record) -> Write:
    placeholder = with_id(record, next(_placeholders))
    return Write(method, signature, record, [Change(row_id(placeholder), placeholder)], None)


def _modification(method: str, signature: str, record: Record) -> Write:
    return Write(method, signature, record, [Change(row_id(record), record)])


def add_action(action: Action) -> Write:
    return _creation("addAction", ACTION, action)


def modify_action(action: Action) -> Write:
    return _modification("modifyAction", ACTION, action)


def delete_action(number: int, bound_keys: Iterable[int] = ()) -> Write:
    """Deletes the action first, and then its keys one by one."""
    changes = [Change((Action, number)), *(Change((Key, key)) for key in sorted(bound_keys))]
    return Write("deleteAction", "x", number, changes)


def create_key(key: Key) -> Write:
    return _creation("createProgrammableKey", KEY, key)


def modify_key(key: Key) -> Write:
    return _modification("modifyProgrammableKey", KEY, key)


def move_keys(keys: Iterable[Key], positions: Mapping[int, int]) -> Write:
    """Moves the keys one by one, in the order of their ids."""
    moved = [key._replace(position=positions[key.idKey]) for key in sorted(keys)]
    changes = [Change(row_id(key), key) for key in moved]
    return Write("changeProgrammableKeysPosition", "a{ii}", dict(positions), changes, True)


def delete_key(number: int) -> Write:
    return Write("deleteProgrammableKey", "x", number, [Change((Key, number))])
