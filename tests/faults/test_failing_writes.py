"""A disk that fails or is full at any write or sync of an operation, once or permanently."""

import itertools
import shutil
from pathlib import Path
from typing import Iterator, NamedTuple

import pytest

from phones import Phone
from samples import CALL, SET_KEY, action_created
from sandbox.names import SERVICE
from sandbox.records import Action, Key
from writing.ledger import possible_states
from writing.single import OPERATIONS, Operation
from writing.tracing import Fault, Tracer, failing
from writing.writes import Rows, rows_of

CALLS = ("pwrite64", "fdatasync", "ftruncate", "fsync,fallocate")
"""The system calls with which SQLite writes and syncs. Only SQLite uses them."""

FILES = {"zelprogrammablekeys.data", "zelprogrammablekeys.data-wal", SERVICE}
"""The written and synced files, and the directory, which is synced when a log is created."""

FAULTS = [("EIO", False), ("ENOSPC", True), ("ENOSPC", False), ("EIO", True)]
"""The errors, and whether they are permanent."""

FRAME = 24 + 4096
"""The size of a page in the write-ahead log."""
FRAMES_TO_CHECKPOINT = 100
"""When the log has this length, SQLite copies it into the database."""


class Snapshot(NamedTuple):
    """A copy of a data directory, and its rows."""

    directory: Path
    rows: Rows
    action: Action
    """An action without keys."""
    key: Key


def make_snapshot(phone: Phone, has_long_log: bool) -> Snapshot:
    """The data after a clean end, or with a log that the next write copies into the database."""
    phone.start()
    for number in range(20):
        action = CALL._replace(label=f"{number} " + "long " * 100)
        action = action._replace(idAction=phone.client.add_action(action))
        key = SET_KEY._replace(icon=f"{number} " + "long " * 100)
        key = key._replace(idKey=phone.client.create_programmable_key(key))
    directory = phone.database.path.parent
    log = phone.database.path.with_name(f"{phone.database.path.name}-wal")
    while has_long_log and log.stat().st_size // FRAME < FRAMES_TO_CHECKPOINT - 1:
        key = key._replace(position=key.position + 1)
        assert phone.client.modify_programmable_key(key) == 0
    rows = phone.stored_rows()
    if has_long_log:
        phone.kill()
    else:
        phone.service.stop()
    copy = directory.with_name("snapshot")
    directory.rename(copy)
    return Snapshot(copy, rows, action, key)


class Outcome(NamedTuple):
    """The result of an operation whose writes failed."""

    done: bool
    """Whether the operation succeeded, by its reply, its event and the returned rows."""
    done_if_killed: bool
    """Whether the next start would find the change if the service were killed after the reply."""
    failed_files: set[str]
    """The names of the files whose writes failed."""


def try_all(
    phone: Phone, snapshot: Snapshot, operation: Operation, faults: list[tuple[str, bool]]
) -> Iterator[Outcome]:
    """Repeats the operation, each time with a different write or sync that fails."""
    for call, (error, permanent) in itertools.product(CALLS, faults):
        for number in itertools.count(1):
            outcome = try_once(phone, snapshot, operation, failing(call, number, error, permanent))
            if not outcome.failed_files:
                break
            yield outcome


def try_once(phone: Phone, snapshot: Snapshot, operation: Operation, fault: Fault) -> Outcome:
    shutil.rmtree(phone.data_root)
    shutil.copytree(snapshot.directory, phone.database.path.parent)
    phone.start()
    write = operation.write(snapshot.action, snapshot.key)
    phone.events.take()
    with Tracer(phone.service.pid, fault, snapshot.directory.parents[1]) as tracer:
        write.send(phone.client)
        answer = write.answer()
        on_disk = phone.rows_on_disk()
        sent = phone.events.take()
        returned = phone.returned_rows()

    done = write.was_done(answer)
    assert done or answer == operation.failure
    if done and write.creates:
        write.set_id(answer)
    _before, after = possible_states(snapshot.rows, [write], on_disk)
    assert on_disk in ([after.rows] if done else [snapshot.rows, after.rows]), "incomplete or lost"
    assert sent == (operation.events_of(write) if done else [])
    rows = after.rows if done else snapshot.rows
    assert returned == rows
    check_recovery(phone, rows)
    return Outcome(done, on_disk == after.rows, tracer.failed_files())


def check_recovery(phone: Phone, rows: Rows) -> None:
    """Checks that the service works on a disk without faults and keeps its rows."""
    assert phone.stored_rows() == rows
    new = CALL._replace(label="new")
    new = new._replace(idAction=phone.client.add_action(new))
    assert phone.events.take() == [action_created(new)]
    phone.kill()
    phone.start()
    assert phone.data_was_kept()
    assert phone.stored_rows() == {**rows, **rows_of([new])}
    phone.kill()


@pytest.mark.sanitizers
@pytest.mark.parametrize("name", OPERATIONS)
def test_a_failed_write_returns_its_error_and_has_no_other_effect(
    phones, tmp_path, amount, summarize, name
):
    operation = OPERATIONS[name]
    first = list(OPERATIONS).index(name) % 2
    faults = FAULTS[amount(first, 0) : amount(first + 1, 4)]
    outcomes = []
    for has_long_log in (False, True):
        phone = phones(f"phone {has_long_log}")
        (tmp_path / f"made {has_long_log}").mkdir()
        phone.use_data_root(tmp_path / f"made {has_long_log}" / "data")
        snapshot = make_snapshot(phone, has_long_log)
        phone.use_data_root(tmp_path / f"tried {has_long_log}")
        phone.data_root.mkdir()
        outcomes += try_all(phone, snapshot, operation, faults)

    assert set().union(*(outcome.failed_files for outcome in outcomes)) == FILES
    done = [outcome for outcome in outcomes if outcome.done]
    failed = [outcome for outcome in outcomes if not outcome.done]
    done_after_kill = sum(outcome.done_if_killed for outcome in failed)
    summarize(
        f"{len(outcomes)} faults: {len(done)} operations succeeded, {len(failed)} failed without "
        f"an effect (a kill would have completed {done_after_kill} of these)"
    )
    assert done and failed
