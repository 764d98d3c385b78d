"""A bus that goes away and comes back, or stands still for a while."""

import os
import random
import signal
import time
from collections import Counter
from contextlib import contextmanager
from typing import Callable, Iterator

import pytest

from database import RESERVED_ACTION
from peers.lived_in import PROVISIONED_ACTIONS, SETTINGS, STORED, USER_ACTION, USER_KEYS
from peers.phones import Phone
from peers.selective_peer import INVALID_REPLY
from samples import CALL, action_created, key_created
from sandbox.client import PendingReply
from sandbox.loop import wait_until
from sandbox.names import SERVICE, bus_name
from sandbox.records import ACTION, KEY

pytest_plugins = ["peers.several_phones"]

LOST = "The connection to the system bus is lost; ending"
NO_BUS = "Cannot reach the system bus: "
STORED_ACTIONS = [RESERVED_ACTION, USER_ACTION, *PROVISIONED_ACTIONS]
AT_ONCE = 0.25
"""The share of the restarts that come right after a launch, so that it meets no bus or the new one only."""

FROZEN_SECONDS = 6.0
"""Longer than a read of a setting may take."""


@pytest.fixture
def make(phones) -> Callable[[str], Phone]:
    """Makes a phone with rows of every kind; its service is not started yet."""

    def make_phone(name: str = "phone") -> Phone:
        phone = phones(name, SETTINGS)
        phone.store(*STORED)
        return phone

    return make_phone


def ask_to_create(phone: Phone) -> PendingReply:
    """A creation that waits for the SettingsManager."""
    phone.settings.hang()
    reply = phone.client.send("createProgrammableKey", KEY, USER_KEYS[0])
    phone.settings.wait_for_held_read()
    return reply


def add(phone: Phone, count: int, first: int = 0) -> list[PendingReply]:
    """So many additions on their way, their labels numbered."""
    replies = [
        phone.client.send("addAction", ACTION, CALL._replace(label=f"{first + number}"))
        for number in range(count)
    ]
    phone.client.connection.flush()
    return replies


def check_rows(phone: Phone, acknowledged: list[int]) -> None:
    """What users made before and every row that was acknowledged is there, and no half of one."""
    actions = phone.database.actions()
    assert actions[: len(STORED_ACTIONS)] == STORED_ACTIONS
    added = actions[len(STORED_ACTIONS) :]
    assert {action.idAction for action in added} >= set(acknowledged)
    first = STORED_ACTIONS[-1].idAction + 1
    assert added == [
        CALL._replace(idAction=first + number, label=f"{number}") for number in range(len(added))
    ]
    assert phone.database.keys()[: len(USER_KEYS)] == USER_KEYS


def check_serves(phone: Phone) -> None:
    """An addition is answered and told of."""
    phone.events.take()
    added = CALL._replace(idAction=phone.client.add_action(CALL))
    assert phone.events.take() == [action_created(added)]
    assert phone.client.delete_action(added.idAction) == 0


# Going away and coming back


def be_idle(phone: Phone) -> list[PendingReply]:
    phone.start()
    replies = add(phone, 5)
    replies[-1].wait()
    return replies


def be_at_work(phone: Phone) -> list[PendingReply]:
    phone.start()
    replies = add(phone, 100)
    replies[10].wait()
    return replies


def wait_for_the_peer(phone: Phone) -> list[PendingReply]:
    phone.start()
    replies = add(phone, 5)
    replies[-1].wait()
    ask_to_create(phone)
    return replies


def wait_with_a_queue(phone: Phone) -> list[PendingReply]:
    replies = wait_for_the_peer(phone)
    add(phone, 100, first=len(replies))
    phone.client.bus_round_trip()
    return replies


def start_in(phone: Phone, *hanging: str) -> list[PendingReply]:
    phone.settings.hang_on(*hanging)
    phone.launch()
    phone.settings.wait_for_held_read()
    return []


MOMENTS = {
    "idle": be_idle,
    "with calls in hand": be_at_work,
    "waiting for the peer": wait_for_the_peer,
    "waiting, with calls behind": wait_with_a_queue,
    "in the first read of a start": lambda phone: start_in(phone, "DefaultActions"),
    "in the second read of a start": lambda phone: start_in(phone, "DefaultKeys"),
    "in the limit of a start": lambda phone: start_in(phone, "ProgKeysMax"),
}


@pytest.mark.sanitizers
def test_a_bus_that_restarts_ends_the_service_with_1_and_the_next_one_has_every_acknowledged_row(
    make, figures
):
    ends = []
    for name, come_to in MOMENTS.items():
        phone = make(name)
        replies = come_to(phone)
        service, begun = phone.service, time.monotonic()
        # What has not arrived by now never will: the answers went down with the bus.
        acknowledged = [reply.wait().values[0] for reply in replies if reply.arrived]
        phone.restart_bus()
        assert service.wait_for_exit() == 1, name
        ends.append(f"{name} after {time.monotonic() - begun:.1f} s, {len(acknowledged)} rows")
        assert service.log.texts("error")[-1] == LOST, name
        check_rows(phone, acknowledged)
        phone.start()
        check_rows(phone, acknowledged)
        check_serves(phone)
        phone.service.stop()
    figures(f"{len(MOMENTS)} restarts, every service ended with 1, no row lost: {'; '.join(ends)}")


def test_a_bus_that_restarts_at_any_moment_of_a_start_leaves_no_deaf_service(
    make, amount, figures
):
    seed = amount(1, random.randrange(2**32))
    source = random.Random(seed)
    phone = make()
    ends: Counter[str] = Counter()
    for number in range(amount(40, 400)):
        phone.launch()
        if source.random() >= AT_ONCE:
            stand_by(source.uniform(0, 0.15))
        phone.restart_bus()
        ends[how_it_ends(phone, f"start {number} with seed {seed}")] += 1
        check_rows(phone, [])
    figures(f"seed {seed}: {ends.total()} starts, none deaf, no user row lost: {dict(ends)}")
    assert len(ends) >= 2, "all of them ended alike"


def how_it_ends(phone: Phone, start: str) -> str:
    """Whether the service ended, for a clear reason, or found the new bus and is well there."""
    service = phone.service
    owner = phone.client.watch_owner(bus_name(SERVICE))
    wait_until(lambda: owner.current or not service.running, f"{start} ends or appears on the bus")
    if service.running:
        check_serves(phone)
        service.stop()
        return "was well on the new bus"
    reason = service.log.texts("error")[-1]
    assert service.status == 1, start
    assert reason == LOST or reason.startswith(NO_BUS), f"{start}: {reason}"
    return "lost the bus" if reason == LOST else "found no bus"


def stand_by(seconds: float) -> None:
    """Lets time pass, as a part of the experiment."""
    end = time.monotonic() + seconds
    wait_until(lambda: time.monotonic() >= end, "time passes")


# Standing still


@contextmanager
def frozen(*phones: Phone) -> Iterator[None]:
    """The buses of these phones stand still meanwhile."""
    daemons = [phone.client.process_of("org.freedesktop.DBus") for phone in phones]
    try:
        for daemon in daemons:
            os.kill(daemon, signal.SIGSTOP)
        yield
    finally:
        for daemon in daemons:
            os.kill(daemon, signal.SIGCONT)


def test_a_bus_that_stands_still_for_a_while_loses_nothing(make, figures):
    at_work, waiting, starting = (make(name) for name in ("at work", "waiting", "starting"))
    at_work.start()
    at_work.events.take()
    replies = add(at_work, 100)
    replies[10].wait()
    waiting.start()
    waiting.events.take()
    waiting.service.log.take()
    creation = ask_to_create(waiting)
    starting.settings.hang_on("DefaultKeys")
    starting.launch()
    starting.settings.wait_for_held_read()
    with frozen(at_work, waiting, starting):
        replies += add(at_work, 20, first=100)
        stand_by(FROZEN_SECONDS)
    for phone in (waiting, starting):
        phone.settings.release()

    first = STORED_ACTIONS[-1].idAction + 1
    acknowledged = [reply.wait().values[0] for reply in replies]
    assert acknowledged == list(range(first, first + len(replies)))
    check_rows(at_work, acknowledged)
    added = at_work.database.actions()[len(STORED_ACTIONS) :]
    assert at_work.events.take() == [action_created(action) for action in added]
    assert at_work.service.log.texts("error") == []
    key = USER_KEYS[0]._replace(idKey=creation.wait().values[0])
    assert waiting.database.keys()[-1] == key
    assert waiting.events.take() == [key_created(key)]
    assert waiting.service.log.take("error") == [INVALID_REPLY]
    starting.service.wait_until_ready(starting.client)
    check_rows(starting, [])
    for phone in (at_work, waiting, starting):
        check_serves(phone)
        phone.service.stop()
    figures(f"3 buses stood still for {FROZEN_SECONDS:.0f} s: {len(replies)} calls, none lost")
