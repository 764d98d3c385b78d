"""Calls while another process locks the database."""

import sqlite3
import time
from contextlib import ExitStack, contextmanager
from typing import Callable, Iterator

import pytest

from phones import Phone, rows_in
from sample_rows import SETTINGS, STORED, USER_ACTION, USER_KEY, USER_KEYS
from samples import CALL, MODULE_KEY, module_key_pressed
from sandbox.loop import WAIT_FACTOR, WaitTimeout, wait_until
from writing.ledger import possible_states
from writing.single import OPERATIONS, Operation

BUSY_LIMIT = 5.0
REASON = "database is locked"
UNUSED_ACTION = USER_ACTION._replace(idAction=9)
STORED_MODULE_KEY = MODULE_KEY._replace(idKey=9, idAction=USER_ACTION.idAction)


@contextmanager
def locked(phone: Phone) -> Iterator[sqlite3.Connection]:
    """Another connection has an exclusive lock until the context ends."""
    with phone.database.kept_open() as other:
        other.execute("BEGIN EXCLUSIVE")
        yield other


@pytest.fixture
def make(phones) -> Callable[..., Phone]:
    """Creates a phone with user rows and provisioned rows, and starts the service."""

    def make_phone(name: str = "phone") -> Phone:
        phone = phones(name, settings=SETTINGS)
        phone.store(*STORED, UNUSED_ACTION, STORED_MODULE_KEY)
        phone.start()
        phone.events.take()
        phone.service.log.take()
        return phone

    return make_phone


class Attempt:
    """A write, on its own phone."""

    def __init__(self, phone: Phone, operation: Operation) -> None:
        self.phone = phone
        self._operation = operation
        self._before = phone.stored_rows()

    def send(self) -> None:
        self._write = self._operation.write(UNUSED_ACTION, USER_KEY)
        self._write.send(self.phone.client)

    @property
    def is_answered(self) -> bool:
        return self._write.reply.arrived

    def check_refused(self) -> None:
        """Checks that the write returns an error, logs the reason and has no effect."""
        assert self._write.answer() == self._operation.failure, self._write
        assert self.phone.events.take() == [], self._write
        assert REASON in self.phone.service.log.take("error")[0], self._write
        assert self.phone.stored_rows() == self._before, self._write

    def check_done(self) -> None:
        """Checks that the write returns success, changes its row and sends its event."""
        answer = self._write.answer()
        assert self._write.was_done(answer), self._write
        if self._write.creates:
            self._write.set_id(answer)
        *_, after = possible_states(self._before, [self._write], self._before)
        assert self.phone.stored_rows() == after.rows, self._write
        assert self.phone.events.take() == self._operation.events_of(self._write)
        assert self.phone.service.log.take("error") == [], self._write


@pytest.fixture
def attempts(make) -> list[Attempt]:
    """One attempt for each operation that writes, not sent yet."""
    return [Attempt(make(name), operation) for name, operation in OPERATIONS.items()]


def test_a_write_to_a_locked_database_fails_after_5_seconds_and_succeeds_without_the_lock(
    attempts, summarize
):
    with ExitStack() as locks:
        for attempt in attempts:
            locks.enter_context(locked(attempt.phone))
        begun = time.monotonic()
        for attempt in attempts:
            attempt.send()
        wait_until(lambda: all(attempt.is_answered for attempt in attempts), "all replies")
        took = time.monotonic() - begun
    assert BUSY_LIMIT - 0.5 <= took <= BUSY_LIMIT + 3 * WAIT_FACTOR
    for attempt in attempts:
        attempt.check_refused()
        attempt.send()
        attempt.check_done()
        attempt.phone.service.stop()
    summarize(f"{len(attempts)} writes to locked databases: refused after {took:.1f} s, 0 lost")


def test_a_write_that_waits_for_a_lock_succeeds_when_the_lock_is_released(make, summarize):
    for name, operation in OPERATIONS.items():
        attempt = Attempt(make(name), operation)
        with locked(attempt.phone):
            attempt.send()
            later = attempt.phone.client.send("getCapabilities")
            with pytest.raises(WaitTimeout):
                later.wait(limit=0.2)
        attempt.check_done()
        attempt.phone.service.stop()
    summarize(f"{len(OPERATIONS)} writes that waited for a lock, all done")


def test_reads_and_presses_do_not_wait_while_another_process_writes(make, summarize):
    phone = make()
    delays = []
    stored = phone.stored_rows()
    with locked(phone) as other:
        other.execute("DELETE FROM KEY")
        for _ in range(50):
            begun = time.monotonic()
            assert phone.returned_rows() == stored
            assert phone.client.get_programmable_key(1) == [USER_KEYS[0]]
            phone.client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)
            assert phone.events.take() == [module_key_pressed(STORED_MODULE_KEY, USER_ACTION, True)]
            delays.append(time.monotonic() - begun)
    assert max(delays) < BUSY_LIMIT / 2
    assert phone.stored_rows() == stored
    assert phone.service.log.take("error") == []
    phone.service.stop()
    summarize(f"200 reads during a write of another process, four within {max(delays):.2f} s")


@pytest.mark.parametrize("has_read", [False, True], ids=["before a read", "after a read"])
def test_another_process_cannot_get_exclusive_locking_mode_while_the_service_runs(
    make, summarize, has_read
):
    phone = make()
    with phone.database.kept_open() as other:
        if has_read:
            other.execute("SELECT * FROM KEY").fetchall()
        other.execute("PRAGMA busy_timeout = 0")
        other.execute("PRAGMA locking_mode = EXCLUSIVE")
        with pytest.raises(sqlite3.OperationalError, match=REASON):
            other.execute("BEGIN EXCLUSIVE")
        assert phone.client.add_action(CALL) > 0
    assert phone.service.log.take("error") == []
    phone.service.stop()
    summarize("1 process refused that wanted exclusive locking mode")


def test_a_lock_that_is_released_during_the_start_loses_no_row_and_later_writes_are_durable(
    phones, make, summarize
):
    stopped, killed = phones("stopped", settings=SETTINGS), make("killed")
    stopped.store(*STORED)
    rows = rows_in(stopped.database)
    killed.kill()
    with locked(stopped), killed.database.kept_open() as other:
        other.execute("PRAGMA locking_mode=EXCLUSIVE")
        other.execute("UPDATE ACTION SET type = 5 WHERE idAction = 1")
        services = [phone.launch() for phone in (stopped, killed)]
        wait_until(
            lambda: all(service.log.texts("error") for service in services),
            "both starts log the lock",
        )
    for phone in (stopped, killed):
        phone.service.wait_until_ready(phone.client)
    assert all(REASON in line for line in stopped.service.log.texts("error"))
    of_user = {row: record for row, record in rows.items() if not record.dmId}
    assert stopped.stored_rows().items() >= of_user.items()
    assert stopped.database.value("PRAGMA journal_mode") == "wal"
    stopped.service.stop()
    killed.database.actions()  # another program opens and closes the file
    written = killed.client.add_action(CALL)
    killed.kill()
    assert written in [action.idAction for action in killed.database.actions()]
    summarize("2 locks released during the start: 0 rows lost, writes durable")
