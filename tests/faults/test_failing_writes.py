"""The disk fails or is full at any write or sync of an operation, once or from there on."""

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
"""What the database writes and syncs with; the service itself uses none of them."""

FILES = {"zelprogrammablekeys.data", "zelprogrammablekeys.data-wal", SERVICE}
"""What is written and synced: the directory, too, when a log is begun in it."""

MANNERS = [("EIO", False), ("ENOSPC", True), ("ENOSPC", False), ("EIO", True)]
"""The error, and whether it stays."""

FRAME = 24 + 4096
"""The size of a page in the write-ahead log."""
FRAMES_TO_CHECKPOINT = 100
"""The write that makes the log so long copies it back into the database."""


class Stock(NamedTuple):
    """A copy of a data directory, and what is in it."""

    directory: Path
    rows: Rows
    action: Action
    """An action without keys."""
    key: Key


def make_stock(phone: Phone, has_long_log: bool) -> Stock:
    """As a clean end leaves the data, or with a log that the next write copies back."""
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
    rows = phone.found()
    if has_long_log:
        phone.kill()
    else:
        phone.service.stop()
    copy = directory.with_name("stock")
    directory.rename(copy)
    return Stock(copy, rows, action, key)


class Outcome(NamedTuple):
    """What became of an operation whose writes failed."""

    done: bool
    """By its answer, its event and the rows that the service returns."""
    done_if_killed: bool
    """By what the next start would find if the service were killed right after the answer."""
    hit: set[str]
    """The names of the files whose writes failed."""


def try_all(
    phone: Phone, stock: Stock, operation: Operation, manners: list[tuple[str, bool]]
) -> Iterator[Outcome]:
    """Each write and sync that the operation makes fails in turn."""
    for call, (error, for_good) in itertools.product(CALLS, manners):
        for number in itertools.count(1):
            outcome = try_once(phone, stock, operation, failing(call, number, error, for_good))
            if not outcome.hit:
                break
            yield outcome


def try_once(phone: Phone, stock: Stock, operation: Operation, fault: Fault) -> Outcome:
    shutil.rmtree(phone.data_root)
    shutil.copytree(stock.directory, phone.database.path.parent)
    phone.start()
    write = operation.write(stock.action, stock.key)
    phone.events.take()
    with Tracer(phone.service.pid, fault, stock.directory.parents[1]) as tracer:
        write.send(phone.client)
        answer = write.answer()
        left = phone.left()
        announced = phone.events.take()
        returned = phone.returned()

    done = write.was_done(answer)
    assert done or answer == operation.failure
    if done and write.creates:
        write.identify(answer)
    _before, after = possible_states(stock.rows, [write], left)
    assert left in ([after.rows] if done else [stock.rows, after.rows]), "half there, or lost"
    assert announced == (operation.events_of(write) if done else [])
    rows = after.rows if done else stock.rows
    assert returned == rows
    check_goes_on(phone, rows)
    return Outcome(done, left == after.rows, tracer.files_hit())


def check_goes_on(phone: Phone, rows: Rows) -> None:
    """With a disk in order the service works, and keeps what it must."""
    assert phone.found() == rows
    further = CALL._replace(label="further")
    further = further._replace(idAction=phone.client.add_action(further))
    assert phone.events.take() == [action_created(further)]
    phone.kill()
    phone.start()
    assert phone.data_was_kept()
    assert phone.found() == {**rows, **rows_of([further])}
    phone.kill()


@pytest.mark.sanitizers
@pytest.mark.parametrize("name", OPERATIONS)
def test_a_failing_write_is_answered_with_its_error_and_harms_nothing_else(
    phones, tmp_path, amount, figures, name
):
    operation = OPERATIONS[name]
    first = list(OPERATIONS).index(name) % 2
    manners = MANNERS[amount(first, 0) : amount(first + 1, 4)]
    outcomes = []
    for has_long_log in (False, True):
        phone = phones(f"phone {has_long_log}")
        (tmp_path / f"made {has_long_log}").mkdir()
        phone.use_data_root(tmp_path / f"made {has_long_log}" / "data")
        stock = make_stock(phone, has_long_log)
        phone.use_data_root(tmp_path / f"tried {has_long_log}")
        phone.data_root.mkdir()
        outcomes += try_all(phone, stock, operation, manners)

    assert set().union(*(outcome.hit for outcome in outcomes)) == FILES
    done = [outcome for outcome in outcomes if outcome.done]
    failed = [outcome for outcome in outcomes if not outcome.done]
    back = sum(outcome.done_if_killed for outcome in failed)
    figures(
        f"{len(outcomes)} faults: {len(done)} times answered with success, announced and done; "
        f"{len(failed)} times with failure, neither announced nor done ({back} times done after a "
        "kill right then)"
    )
    assert done and failed
