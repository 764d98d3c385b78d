"""A ledger of a client's writes, from which it computes the rows that must be stored.

The service executes calls one by one, in the order of arrival. If it is interrupted, all
acknowledged writes are stored, and the first few of the unacknowledged ones. Each of these is
complete, except that the last may have changed only some of its rows.
"""

from typing import Iterator, NamedTuple, Optional

from sandbox.client import Client
from sandbox.loop import wait_until
from writing.writes import Record, RowId, Rows, Write, apply


class State(NamedTuple):
    """A possible state of the stored rows after an interruption."""

    rows: Rows
    done: int
    """The number of complete unacknowledged writes."""
    begun: bool
    """Whether the next write has changed some of its rows."""


def possible_states(confirmed: Rows, unacknowledged: list[Write], found: Rows) -> Iterator[State]:
    """All possible states. The ids of created rows are taken from the found rows."""
    rows = dict(confirmed)
    yield State(dict(rows), 0, False)
    for number, write in enumerate(unacknowledged):
        if write.creates:
            _look_up(write, confirmed, found)
        for change in write.changes[:-1]:
            apply(rows, [change])
            yield State(dict(rows), number, True)
        apply(rows, write.changes[-1:])
        yield State(dict(rows), number + 1, False)


def _look_up(write: Write, confirmed: Rows, found: Rows) -> None:
    (kind, _placeholder), wanted = write.changes[0]
    for row, record in found.items():
        if row[0] is kind and row not in confirmed and record[1:] == wanted[1:]:
            write.set_id(record[0])


def shortened(record: Optional[Record]) -> str:
    """The text of a record with truncated fields."""
    if record is None:
        return "nothing"
    fields = (field[:12] if isinstance(field, str) else field for field in record)
    return str(type(record)(*fields))


def differences(expected: Rows, found: Rows) -> set[RowId]:
    """The rows that are missing, unexpected or different."""
    return {row for row in expected.keys() | found.keys() if expected.get(row) != found.get(row)}


class Ledger:
    """The writes of one client, over any number of restarts of the service."""

    def __init__(self, confirmed: Rows) -> None:
        self.confirmed = dict(confirmed)
        self.expected = dict(confirmed)
        """The rows when all writes in flight are done."""
        self.in_flight: list[Write] = []
        self.unacknowledged: list[Write] = []
        self.used: set[RowId] = set(confirmed)

        self.acknowledged = 0
        self.in_doubt = 0
        """The number of unacknowledged writes so far."""
        self.done_in_doubt = 0
        """The number of unacknowledged writes that were done."""
        self.deletions_cut = 0
        """The number of deleted actions whose keys were not all deleted."""
        self.moves_cut = 0
        """The number of moves that did not move all their keys."""
        self.refused: list[str] = []
        self.lost: list[str] = []
        self.incomplete: list[str] = []
        self.used_twice: list[str] = []

    # Before the interruption

    def send(self, client: Client, write: Write) -> None:
        write.send(client)
        self.in_flight.append(write)
        apply(self.expected, write.changes)

    def settle(self) -> None:
        """Waits for the replies to all writes in flight. A write without a reply is in doubt."""
        sent, self.in_flight = self.in_flight, []
        wait_until(lambda: all(write.reply.arrived for write in sent), "a reply to every write")
        for write in sent:
            answer = write.answer()
            if answer is not None and write.was_done(answer):
                self._confirm(write, answer)
            elif answer is None:
                self.unacknowledged.append(write)
            else:
                self.refused.append(f"{write} returned {answer}")
        self.in_doubt += len(self.unacknowledged)
        self.expected = dict(self.confirmed)

    def _confirm(self, write: Write, answer: int) -> None:
        self.acknowledged += 1
        if self.unacknowledged:
            first = self.unacknowledged[0]
            self.incomplete.append(f"{write} has a reply, but {first} before it has none")
        if write.creates:
            write.set_id(answer)
            self._use(write.changes[0].row)
        apply(self.confirmed, write.changes)

    def _use(self, row: RowId) -> None:
        if row in self.used:
            self.used_twice.append(f"{row[0].__name__} {row[1]}")
        self.used.add(row)

    # After the interruption

    def check(self, found: Rows) -> None:
        """Compares the stored rows with the possible states, and continues with the stored rows."""
        states = list(possible_states(self.confirmed, self.unacknowledged, found))
        nearest = min(states, key=lambda state: len(differences(state.rows, found)))
        self.done_in_doubt += nearest.done
        if nearest.begun:
            self._count_cut(self.unacknowledged[nearest.done])
        in_doubt = {change.row for write in self.unacknowledged for change in write.changes}
        for row in differences(nearest.rows, found):
            faults = self.incomplete if row in in_doubt else self.lost
            expected, stored = shortened(nearest.rows.get(row)), shortened(found.get(row))
            faults.append(f"{row[0].__name__} {row[1]} should be {expected}, but is {stored}")
        for row in found.keys() - self.confirmed.keys():
            self._use(row)
        self.unacknowledged = []
        self.confirmed = dict(found)
        self.expected = dict(found)

    def _count_cut(self, write: Write) -> None:
        if write.method == "deleteAction":
            self.deletions_cut += 1
        else:
            self.moves_cut += 1

    # The result

    def summary(self) -> str:
        return (
            f"{self.acknowledged:,} acknowledged writes: {len(self.lost)} lost, "
            f"{len(self.incomplete)} incomplete, {len(self.used_twice)} ids used twice; "
            f"{self.in_doubt:,} unacknowledged writes: {self.done_in_doubt} done, "
            f"{self.deletions_cut} deletions of actions and {self.moves_cut} moves interrupted"
        )

    def assert_balanced(self) -> None:
        for faults in (self.refused, self.lost, self.incomplete, self.used_twice):
            assert not faults, "\n".join(faults[:10])
