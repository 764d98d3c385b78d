"""Another process that keeps the database to itself while calls come."""

import sqlite3
import time
from contextlib import ExitStack, contextmanager
from typing import Any, Callable, Iterator, NamedTuple

import pytest

from peers.lived_in import SETTINGS, STORED, USER_ACTION, USER_KEYS
from peers.phones import Phone
from samples import (
    MODULE_KEY,
    SET_KEY,
    action_created,
    action_deleted,
    action_modified,
    key_created,
    key_deleted,
    key_modified,
    module_key_pressed,
)
from sandbox.client import PendingReply
from sandbox.events import Event
from sandbox.loop import PATIENCE, GaveUp, wait_until
from sandbox.records import ACTION, KEY, Action, Key

pytest_plugins = ["peers.several_phones"]

BUSY_LIMIT = 5.0
REASON = "database is locked"

ACTION_OF_NOBODY = USER_ACTION._replace(idAction=9)
MODULES_KEY = MODULE_KEY._replace(idKey=9, idAction=USER_ACTION.idAction)
NEW_KEY = SET_KEY._replace(idAction=USER_ACTION.idAction)
OTHER_KEY = USER_KEYS[0]._replace(icon="other")
OTHER_ACTION = USER_ACTION._replace(label="other")


class Write(NamedTuple):
    """A call that writes: what it answers when it cannot and when it can, and what it then changes."""

    method: str
    signature: str
    argument: Any
    refusal: Any
    refusal_lines: int
    success: Any
    events: list[Event]
    is_done: Callable[[list[Action], list[Key]], bool]


ADDED = USER_ACTION._replace(idAction=10)
# At the start the provisioned keys are made anew, and given the two ids before this.
CREATED = NEW_KEY._replace(idKey=12)

MOVES = {1: 7, 2: 8}

WRITES = [
    Write(
        "addAction",
        ACTION,
        USER_ACTION,
        refusal=-3,
        refusal_lines=1,
        success=10,
        events=[action_created(ADDED)],
        is_done=lambda actions, _keys: actions[-1] == ADDED,
    ),
    Write(
        "modifyAction",
        ACTION,
        OTHER_ACTION,
        refusal=-3,
        refusal_lines=2,
        success=0,
        events=[action_modified(OTHER_ACTION)],
        is_done=lambda actions, _keys: OTHER_ACTION in actions and USER_ACTION not in actions,
    ),
    Write(
        "deleteAction",
        "x",
        ACTION_OF_NOBODY.idAction,
        refusal=-3,
        refusal_lines=1,
        success=0,
        events=[action_deleted(ACTION_OF_NOBODY.idAction)],
        is_done=lambda actions, _keys: ACTION_OF_NOBODY not in actions,
    ),
    Write(
        "createProgrammableKey",
        KEY,
        NEW_KEY,
        refusal=-2,
        refusal_lines=1,
        success=12,
        events=[key_created(CREATED)],
        is_done=lambda _actions, keys: keys[-1] == CREATED,
    ),
    Write(
        "modifyProgrammableKey",
        KEY,
        OTHER_KEY,
        refusal=-3,
        refusal_lines=1,
        success=0,
        events=[key_modified(OTHER_KEY)],
        is_done=lambda _actions, keys: keys[0] == OTHER_KEY,
    ),
    Write(
        "deleteProgrammableKey",
        "x",
        USER_KEYS[0].idKey,
        refusal=-3,
        refusal_lines=1,
        success=0,
        events=[key_deleted(USER_KEYS[0].idKey)],
        is_done=lambda _actions, keys: USER_KEYS[0] not in keys,
    ),
    Write(
        "changeProgrammableKeysPosition",
        "a{ii}",
        MOVES,
        refusal=False,
        refusal_lines=1,
        success=True,
        events=[],
        is_done=lambda _actions, keys: {key.idKey: key.position for key in keys[:2]} == MOVES,
    ),
]


@contextmanager
def locked(phone: Phone) -> Iterator[sqlite3.Connection]:
    """Keeps the database to another connection than the service's meanwhile."""
    with phone.database.kept_open() as other:
        other.execute("BEGIN EXCLUSIVE")
        yield other


@pytest.fixture
def make(phones) -> Callable[[str], Phone]:
    """Makes a phone with rows of every kind, its service ready."""

    def make_phone(name: str) -> Phone:
        phone = phones(name, SETTINGS)
        phone.store(*STORED, ACTION_OF_NOBODY, MODULES_KEY)
        phone.start()
        phone.events.take()
        phone.service.log.take()
        return phone

    return make_phone


class Attempt:
    """A write on a phone of its own."""

    def __init__(self, phone: Phone, write: Write) -> None:
        self.phone = phone
        self.write = write
        self.before = rows(phone)

    def send(self) -> None:
        self.reply = send(self.phone, self.write)

    def check_refused(self) -> None:
        """It answered its refusal, said why, and has changed and told nothing."""
        assert self.reply.wait().values == (self.write.refusal,), self.write.method
        assert self.phone.events.take() == [], self.write.method
        lines = self.phone.service.log.take("error")
        assert len(lines) == self.write.refusal_lines and REASON in lines[0], self.write.method
        assert rows(self.phone) == self.before, self.write.method

    def check_done(self) -> None:
        """It answered its success, and has changed its row and told of it."""
        assert self.reply.wait().values == (self.write.success,), self.write.method
        assert self.phone.events.take() == self.write.events, self.write.method
        assert self.write.is_done(*rows(self.phone)), self.write.method
        assert self.phone.service.log.take("error") == [], self.write.method


@pytest.fixture
def attempts(make) -> list[Attempt]:
    """Every write, not sent yet."""
    return [Attempt(make(write.method), write) for write in WRITES]


def send(phone: Phone, write: Write) -> PendingReply:
    return phone.client.send(write.method, write.signature, write.argument)


def rows(phone: Phone) -> tuple[list[Action], list[Key]]:
    return phone.database.actions(), phone.database.keys()


def test_each_write_on_a_locked_database_is_refused_after_5_seconds_and_done_once_it_is_free(
    attempts, figures
):
    with ExitStack() as locks:
        for attempt in attempts:
            locks.enter_context(locked(attempt.phone))
        begun = time.monotonic()
        for attempt in attempts:
            attempt.send()
        for attempt in attempts:
            attempt.reply.wait()
        took = time.monotonic() - begun
    assert BUSY_LIMIT - 0.5 <= took <= BUSY_LIMIT + 3 * PATIENCE
    for attempt in attempts:
        attempt.check_refused()
        attempt.send()
        attempt.check_done()
        attempt.phone.service.stop()
    figures(f"{len(WRITES)} writes on locked databases: refused after {took:.1f} s, nothing lost")


def test_reads_and_presses_are_answered_at_once_while_another_process_writes(make, figures):
    phone = make("phone")
    client, delays = phone.client, []
    actions, keys = rows(phone)
    with locked(phone) as other:
        other.execute("DELETE FROM KEY")
        for _ in range(50):
            begun = time.monotonic()
            assert client.get_all_actions() == actions
            assert client.get_all_programmable_keys() == keys
            assert client.get_programmable_key(1) == [USER_KEYS[0]]
            client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)
            assert phone.events.take() == [module_key_pressed(MODULES_KEY, USER_ACTION, True)]
            delays.append(time.monotonic() - begun)
    assert max(delays) < BUSY_LIMIT / 2
    assert rows(phone) == (actions, keys)
    assert phone.service.log.take("error") == []
    phone.service.stop()
    figures(f"200 reads beside a writer, all answered, four within {max(delays):.2f} s")


def test_a_write_that_waits_for_a_lock_is_done_as_soon_as_the_lock_is_gone(attempts, figures):
    with ExitStack() as locks:
        for attempt in attempts:
            locks.enter_context(locked(attempt.phone))
            attempt.send()
        behind = attempts[-1].phone.client.send("getCapabilities")
        with pytest.raises(GaveUp):
            behind.wait(limit=1.0)
    for attempt in attempts:
        attempt.check_done()
        attempt.phone.service.stop()
    figures(f"{len(WRITES)} writes that waited a second for a lock, all done")


@pytest.mark.parametrize("has_read", [False, True], ids=["at once", "after a read"])
def test_another_process_cannot_keep_the_database_for_good_while_the_service_runs(
    make, figures, has_read
):
    phone = make("phone")
    with phone.database.kept_open() as other:
        if has_read:
            other.execute("SELECT * FROM KEY").fetchall()
        other.execute("PRAGMA busy_timeout = 0")
        other.execute("PRAGMA locking_mode = EXCLUSIVE")
        with pytest.raises(sqlite3.OperationalError, match=REASON):
            other.execute("BEGIN EXCLUSIVE")
        for write in WRITES:
            assert send(phone, write).wait().values == (write.success,), write.method
    assert phone.service.log.take("error") == []
    phone.service.stop()
    figures(f"1 process that wanted the database for itself was refused; {len(WRITES)} writes done")


def test_a_lock_that_goes_during_the_start_costs_no_row_and_makes_no_write_less_durable(
    phones, figures
):
    phone = phones(settings=SETTINGS)
    phone.store(*STORED)
    before = rows(phone)
    with locked(phone):
        service = phone.launch()
        wait_until(lambda: service.log.texts("error"), "the start meets the lock")
    service.wait_until_ready(phone.client)
    assert all(REASON in line for line in service.log.texts("error"))
    actions, keys = rows(phone)
    assert (actions, keys[: len(USER_KEYS)]) == (before[0], USER_KEYS)
    assert phone.database.value("PRAGMA journal_mode") == "wal"
    service.stop()
    figures("1 lock that went during the start: no row lost, writes durable")
