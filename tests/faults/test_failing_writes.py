"""The disk fails, or is full, at any write or sync of an operation: at that one, or for good from there on."""

import itertools
from pathlib import Path
from typing import Any, Callable, Iterator, NamedTuple, Optional

import pytest

from samples import (
    CALL,
    action_created,
    action_deleted,
    action_modified,
    key_created,
    key_deleted,
    key_modified,
)
from sandbox.client import Client
from sandbox.events import Event, EventRecorder
from sandbox.names import SERVICE
from sandbox.records import Action, Key
from writing import stock, writes
from writing.ledger import possible_states
from writing.restarts import RestartedService
from writing.tracing import Fault, Tracer, failing
from writing.writes import Rows, Write, rows_of

CALLS = ("pwrite64", "fdatasync", "ftruncate", "fsync,fallocate")
"""What the database writes and syncs with; the service itself uses none of them."""

FILES = {"zelprogrammablekeys.data", "zelprogrammablekeys.data-wal", SERVICE}
"""What is written and synced: the directory, too, when a log is begun in it."""

MANNERS = [("EIO", False), ("ENOSPC", True), ("ENOSPC", False), ("EIO", True)]
"""The error, and whether it is for good."""


class Operation(NamedTuple):
    """A change of one row: the call, its answer if it fails, and if not, the event that tells of the row."""

    write: Callable[[Action, Key], Write]
    failure: Any
    event: Optional[Callable[[Any], Event]]

    def events_of(self, write: Write) -> list[Event]:
        ((row, record),) = write.changes
        subject = record or row[1]  # of what is deleted, the id
        return [self.event(subject)] if self.event else []


def adding_an_action(action: Action, _key: Key) -> Write:
    return writes.add_action(action._replace(label="new"))


def modifying_an_action(action: Action, _key: Key) -> Write:
    return writes.modify_action(action._replace(label="other"))


def deleting_an_action(action: Action, _key: Key) -> Write:
    return writes.delete_action(action.idAction)


def creating_a_key(_action: Action, key: Key) -> Write:
    return writes.create_key(key._replace(icon="new"))


def modifying_a_key(_action: Action, key: Key) -> Write:
    return writes.modify_key(key._replace(icon="other"))


def moving_a_key(_action: Action, key: Key) -> Write:
    return writes.move_keys([key], {key.idKey: 777})


def deleting_a_key(_action: Action, key: Key) -> Write:
    return writes.delete_key(key.idKey)


OPERATIONS = [
    Operation(adding_an_action, -3, action_created),
    Operation(modifying_an_action, -3, action_modified),
    Operation(deleting_an_action, -3, action_deleted),
    Operation(creating_a_key, -2, key_created),
    Operation(modifying_a_key, -3, key_modified),
    Operation(moving_a_key, False, None),
    Operation(deleting_a_key, -3, key_deleted),
]


class Outcome(NamedTuple):
    """What an operation came to whose writes failed."""

    done: bool
    """By its answer, its event and what the service tells."""
    done_if_killed: bool
    """By what the next start would find, were the service killed right after the answer."""
    hit: set[str]
    """The names of the files whose writes failed."""


class Bench:
    """Tries an operation again and again, each time on the same data and with another fault."""

    def __init__(
        self, service: RestartedService, client: Client, events: EventRecorder, directory: Path
    ) -> None:
        self._service = service
        self._client = client
        self._events = events
        self._directory = directory

    def try_all(
        self, data: stock.Stock, operation: Operation, manners: list[tuple[str, bool]]
    ) -> Iterator[Outcome]:
        """Every write and sync that the operation makes fails in turn."""
        for call, (error, for_good) in itertools.product(CALLS, manners):
            for number in itertools.count(1):
                outcome = self._try(data, operation, failing(call, number, error, for_good))
                if not outcome.hit:
                    break
                yield outcome

    def _try(self, data: stock.Stock, operation: Operation, fault: Fault) -> Outcome:
        data.lay_out(self._service.database.path.parent)
        self._service.start()
        write = operation.write(data.action, data.key)
        self._events.take()
        with Tracer(self._service.module.pid, fault, self._directory) as tracer:
            write.send(self._client)
            answer = write.answer()
            left = self._service.left()
            announced = self._events.take()
            told = self._service.told()

        done = write.was_done(answer)
        assert done or answer == operation.failure
        if done and write.creates:
            write.identify(answer)
        _before, after = possible_states(data.rows, [write], left)
        assert left in ([after.rows] if done else [data.rows, after.rows]), "half there, or lost"
        assert announced == (operation.events_of(write) if done else [])
        rows = after.rows if done else data.rows
        assert told == rows
        self._go_on(rows)
        return Outcome(done, left == after.rows, tracer.files_hit())

    def _go_on(self, rows: Rows) -> None:
        """With a disk in order the service works as ever, and keeps what it should."""
        assert self._service.found() == rows
        further = CALL._replace(label="further")
        further = further._replace(idAction=self._client.add_action(further))
        assert self._events.take() == [action_created(further)]
        self._service.kill()
        self._service.start()
        assert self._service.data_was_kept()
        assert self._service.found() == {**rows, **rows_of([further])}
        self._service.kill()


@pytest.fixture
def bench(launch, client, events, data_root, settings_manager, tmp_path) -> Bench:
    return Bench(RestartedService(launch, client, data_root), client, events, tmp_path)


@pytest.mark.sanitizers
@pytest.mark.parametrize("operation", OPERATIONS, ids=lambda operation: operation.write.__name__)
def test_a_failing_write_is_answered_as_what_it_is(
    launch, client, bench, tmp_path, amount, figures, operation
):
    manners = MANNERS[: amount(2, 4)]
    outcomes = []
    for make in (stock.clean, stock.with_long_log):
        maker = RestartedService(launch, client, tmp_path / f"made {make.__name__}")
        data = make(maker, client, tmp_path / f"stock {make.__name__}")
        outcomes += bench.try_all(data, operation, manners)

    assert set().union(*(outcome.hit for outcome in outcomes)) == FILES
    done = [outcome for outcome in outcomes if outcome.done]
    failed = [outcome for outcome in outcomes if not outcome.done]
    back = sum(outcome.done_if_killed for outcome in failed)
    figures(
        f"{len(outcomes)} faults: {len(done)} times answered with success, announced and done; "
        f"{len(failed)} times with failure, neither announced nor done, though {back} times a kill "
        "right then would leave it wholly done; served on every time"
    )
    assert done and failed
