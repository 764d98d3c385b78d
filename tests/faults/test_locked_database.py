"""Another process locks the database while calls come."""

import sqlite3
import time
from contextlib import ExitStack, contextmanager
from typing import Callable, Iterator

import pytest

from lived_in import SETTINGS, STORED, USER_ACTION, USER_KEY, USER_KEYS
from phones import Phone, rows_in
from samples import CALL, MODULE_KEY, module_key_pressed
from sandbox.loop import WAIT_FACTOR, WaitTimeout, wait_until
from writing.ledger import possible_states
from writing.single import OPERATIONS, Operation

BUSY_LIMIT = 5.0
REASON = "database is locked"
ACTION_OF_NOBODY = USER_ACTION._replace(idAction=9)
MODULES_KEY = MODULE_KEY._replace(idKey=9, idAction=USER_ACTION.idAction)


@contextmanager
def locked(phone: Phone) -> Iterator[sqlite3.Connection]:
    """Another connection than the service's has the database to itself meanwhile."""
    with phone.database.kept_open() as other:
        other.execute("BEGIN EXCLUSIVE")
        yield other


@pytest.fixture
def make(phones) -> Callable[..., Phone]:
    """Makes a phone with rows of every kind, its service ready."""

    def make_phone(name: str = "phone") -> Phone:
        phone = phones(name, settings=SETTINGS)
        phone.store(*STORED, ACTION_OF_NOBODY, MODULES_KEY)
        phone.start()
        phone.events.take()
        phone.service.log.take()
        return phone

    return make_phone


class Attempt:
    """A write on a phone of its own."""

    def __init__(self, phone: Phone, operation: Operation) -> None:
        self.phone = phone
        self._operation = operation
        self._before = phone.found()

    def send(self) -> None:
        self._write = self._operation.write(ACTION_OF_NOBODY, USER_KEY)
        self._write.send(self.phone.client)

    @property
    def is_answered(self) -> bool:
        return self._write.reply.arrived

    def check_refused(self) -> None:
        """It answers its error, logs the reason, and has changed and announced nothing."""
        assert self._write.answer() == self._operation.failure, self._write
        assert self.phone.events.take() == [], self._write
        assert REASON in self.phone.service.log.take("error")[0], self._write
        assert self.phone.found() == self._before, self._write

    def check_done(self) -> None:
        """It answers success, and has changed its row and announced it."""
        answer = self._write.answer()
        assert self._write.was_done(answer), self._write
        if self._write.creates:
            self._write.identify(answer)
        *_, after = possible_states(self._before, [self._write], self._before)
        assert self.phone.found() == after.rows, self._write
        assert self.phone.events.take() == self._operation.events_of(self._write)
        assert self.phone.service.log.take("error") == [], self._write


@pytest.fixture
def attempts(make) -> list[Attempt]:
    """Every write, not sent yet."""
    return [Attempt(make(name), operation) for name, operation in OPERATIONS.items()]


def test_each_write_on_a_locked_database_is_refused_after_5_seconds_and_done_once_it_is_free(
    attempts, figures
):
    with ExitStack() as locks:
        for attempt in attempts:
            locks.enter_context(locked(attempt.phone))
        begun = time.monotonic()
        for attempt in attempts:
            attempt.send()
        wait_until(lambda: all(attempt.is_answered for attempt in attempts), "refusals")
        took = time.monotonic() - begun
    assert BUSY_LIMIT - 0.5 <= took <= BUSY_LIMIT + 3 * WAIT_FACTOR
    for attempt in attempts:
        attempt.check_refused()
        attempt.send()
        attempt.check_done()
        attempt.phone.service.stop()
    figures(f"{len(attempts)} writes on locked databases: refused after {took:.1f} s, nothing lost")


def test_a_write_that_waits_for_a_lock_is_done_as_soon_as_the_lock_is_gone(make, figures):
    for name, operation in OPERATIONS.items():
        attempt = Attempt(make(name), operation)
        with locked(attempt.phone):
            attempt.send()
            behind = attempt.phone.client.send("getCapabilities")
            with pytest.raises(WaitTimeout):
                behind.wait(limit=0.2)
        attempt.check_done()
        attempt.phone.service.stop()
    figures(f"{len(OPERATIONS)} writes that waited for a lock, all done")


def test_reads_and_presses_are_answered_at_once_while_another_process_writes(make, figures):
    phone = make()
    delays = []
    stored = phone.found()
    with locked(phone) as other:
        other.execute("DELETE FROM KEY")
        for _ in range(50):
            begun = time.monotonic()
            assert phone.returned() == stored
            assert phone.client.get_programmable_key(1) == [USER_KEYS[0]]
            phone.client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)
            assert phone.events.take() == [module_key_pressed(MODULES_KEY, USER_ACTION, True)]
            delays.append(time.monotonic() - begun)
    assert max(delays) < BUSY_LIMIT / 2
    assert phone.found() == stored
    assert phone.service.log.take("error") == []
    phone.service.stop()
    figures(f"200 reads beside a writer, all answered, four within {max(delays):.2f} s")


@pytest.mark.parametrize("has_read", [False, True], ids=["at once", "after a read"])
def test_another_process_cannot_keep_the_database_for_good_while_the_service_runs(
    make, figures, has_read
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
    figures("1 process that wanted the database for itself was refused")


def test_a_lock_that_goes_during_the_start_costs_no_row_and_makes_no_write_less_durable(
    phones, make, figures
):
    sound, killed = phones("sound", settings=SETTINGS), make("killed")
    sound.store(*STORED)
    rows = rows_in(sound.database)
    killed.kill()
    with locked(sound), killed.database.kept_open() as other:
        other.execute("PRAGMA locking_mode=EXCLUSIVE")
        other.execute("UPDATE ACTION SET type = 5 WHERE idAction = 1")
        services = [phone.launch() for phone in (sound, killed)]
        wait_until(
            lambda: all(service.log.texts("error") for service in services),
            "the starts meet their locks",
        )
    for phone in (sound, killed):
        phone.service.wait_until_ready(phone.client)
    assert all(REASON in line for line in sound.service.log.texts("error"))
    assert sound.found().items() >= {row: rows[row] for row in rows if not rows[row].dmId}.items()
    assert sound.database.value("PRAGMA journal_mode") == "wal"
    sound.service.stop()
    killed.database.actions()  # another program opens and closes the file
    written = killed.client.add_action(CALL)
    killed.kill()
    assert written in [action.idAction for action in killed.database.actions()]
    figures("2 locks that went during the start: no row lost, writes durable")
