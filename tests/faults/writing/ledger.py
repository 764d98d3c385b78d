"""A ledger of a client's writes: what was sent, what was answered, and so what must be stored.

The service carries out one call after the other, in the order in which they came. So if it is cut
short, it leaves what it answered, and of the later calls the first few: each of them completely,
except that the last may have changed only some of its rows.
"""

from typing import Iterator, NamedTuple, Optional

from sandbox.client import Client
from sandbox.loop import wait_until
from writing.writes import Record, RowId, Rows, Write, apply


class State(NamedTuple):
    """The rows that may be stored once some of the writes in doubt have been done."""

    rows: Rows
    done: int
    """How many of these writes are complete."""
    begun: bool
    """Whether some rows of a further write are changed."""


def possible_states(confirmed: Rows, doubtful: list[Write], found: Rows) -> Iterator[State]:
    """The rows that may be stored; the ids of created rows are looked up in what was found."""
    rows = dict(confirmed)
    yield State(dict(rows), 0, False)
    for number, write in enumerate(doubtful):
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
            write.identify(record[0])


def in_short(record: Optional[Record]) -> str:
    """The record with its long texts cut off."""
    if record is None:
        return "nothing"
    fields = (field[:12] if isinstance(field, str) else field for field in record)
    return str(type(record)(*fields))


def differences(expected: Rows, found: Rows) -> set[RowId]:
    """The rows that are missing, superfluous or different."""
    return {row for row in expected.keys() | found.keys() if expected.get(row) != found.get(row)}


class Ledger:
    """The writes of one client, over any number of restarts of the service."""

    def __init__(self, confirmed: Rows) -> None:
        self.confirmed = dict(confirmed)
        self.presumed = dict(confirmed)
        """As `confirmed`, once everything in flight is done."""
        self.in_flight: list[Write] = []
        self.doubtful: list[Write] = []
        self.used: set[RowId] = set(confirmed)

        self.acknowledged = 0
        self.in_doubt = 0
        self.done_in_doubt = 0
        self.deletions_cut = 0
        """Deletions of an action whose keys were not all gone."""
        self.moves_cut = 0
        self.refused: list[str] = []
        self.lost: list[str] = []
        self.half: list[str] = []
        self.used_twice: list[str] = []

    # Before the cut

    def send(self, client: Client, write: Write) -> None:
        write.send(client)
        self.in_flight.append(write)
        apply(self.presumed, write.changes)

    def settle(self) -> None:
        """Enters every answer; what was not answered is in doubt."""
        sent, self.in_flight = self.in_flight, []
        wait_until(lambda: all(write.reply.arrived for write in sent), "an answer to every write")
        for write in sent:
            answer = write.answer()
            if answer is not None and write.was_done(answer):
                self._confirm(write, answer)
            elif answer is None:
                self.doubtful.append(write)
            else:
                self.refused.append(f"{write} was answered {answer}")
        self.in_doubt += len(self.doubtful)
        self._presume()

    def _confirm(self, write: Write, answer: int) -> None:
        self.acknowledged += 1
        if self.doubtful:
            self.half.append(f"{write} was answered, and {self.doubtful[0]} before it was not")
        if write.creates:
            write.identify(answer)
            self._use(write.changes[0].row)
        apply(self.confirmed, write.changes)

    def _use(self, row: RowId) -> None:
        if row in self.used:
            self.used_twice.append(f"{row[0].__name__} {row[1]}")
        self.used.add(row)

    def _presume(self) -> None:
        self.presumed = dict(self.confirmed)

    # After the cut

    def check(self, found: Rows) -> None:
        """Compares what is stored with what must be, and goes on from what is stored."""
        states = list(possible_states(self.confirmed, self.doubtful, found))
        nearest = min(states, key=lambda state: len(differences(state.rows, found)))
        self.done_in_doubt += nearest.done
        if nearest.begun:
            self._count_cut(self.doubtful[nearest.done])
        in_doubt = {change.row for write in self.doubtful for change in write.changes}
        for row in differences(nearest.rows, found):
            faults = self.half if row in in_doubt else self.lost
            expected, stored = in_short(nearest.rows.get(row)), in_short(found.get(row))
            faults.append(f"{row[0].__name__} {row[1]} should be {expected}, and is {stored}")
        for row in found.keys() - self.confirmed.keys():
            self._use(row)
        self.doubtful = []
        self.confirmed = dict(found)
        self._presume()

    def _count_cut(self, write: Write) -> None:
        if write.method == "deleteAction":
            self.deletions_cut += 1
        else:
            self.moves_cut += 1

    # The verdict

    def summary(self) -> str:
        return (
            f"{self.acknowledged:,} acknowledged writes: {len(self.lost)} lost, "
            f"{len(self.half)} half there, {len(self.used_twice)} ids used twice; "
            f"{self.in_doubt:,} not acknowledged: {self.done_in_doubt} done, "
            f"{self.deletions_cut} deletions of an action cut before its keys were gone, "
            f"{self.moves_cut} moves of several keys cut before the last of them"
        )

    def assert_balanced(self) -> None:
        for faults in (self.refused, self.lost, self.half, self.used_twice):
            assert not faults, "\n".join(faults[:10])
