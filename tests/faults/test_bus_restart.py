"""A bus that goes away and comes back."""

import random
import time
from collections import Counter
from typing import Callable

import pytest

from database import RESERVED_ACTION
from lived_in import PROVISIONED_ACTIONS, SETTINGS, STORED, USER_ACTION, USER_KEYS
from phones import Phone, pause
from samples import CALL, action_created
from sandbox.client import PendingReply
from sandbox.loop import wait_until
from sandbox.names import SERVICE, bus_name
from sandbox.records import ACTION, KEY

LOST = "The connection to the system bus is lost; ending"
NO_BUS = "Cannot reach the system bus: "
STORED_ACTIONS = [RESERVED_ACTION, USER_ACTION, *PROVISIONED_ACTIONS]
AT_ONCE = 0.25
"""The share of the restarts that come right after a launch, before it reaches the bus."""


@pytest.fixture
def make(phones) -> Callable[..., Phone]:
    """Makes a phone with rows of every kind; its service is not started yet."""

    def make_phone(name: str = "phone") -> Phone:
        phone = phones(name, settings=SETTINGS)
        phone.store(*STORED)
        return phone

    return make_phone


def add(phone: Phone, count: int, first: int = 0) -> list[PendingReply]:
    """Sends so many additions, their labels numbered."""
    replies = [
        phone.client.send("addAction", ACTION, CALL._replace(label=f"{first + number}"))
        for number in range(count)
    ]
    phone.client.connection.flush()
    return replies


def check_rows(phone: Phone, acknowledged: list[int]) -> None:
    """The users' rows and every acknowledged row are stored, and none is half there."""
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
    """An addition is answered and announced."""
    phone.events.take()
    added = CALL._replace(idAction=phone.client.add_action(CALL))
    assert phone.events.take() == [action_created(added)]
    assert phone.client.delete_action(added.idAction) == 0


def be_at_work(phone: Phone) -> list[PendingReply]:
    phone.start()
    replies = add(phone, 100)
    replies[10].wait()
    return replies


def be_idle(phone: Phone) -> list[PendingReply]:
    phone.start()
    replies = add(phone, 5)
    replies[-1].wait()
    return replies


def wait_with_a_queue(phone: Phone) -> list[PendingReply]:
    replies = be_idle(phone)
    phone.settings.hang()
    phone.client.send("createProgrammableKey", KEY, USER_KEYS[0])
    phone.settings.wait_for_held_read()
    add(phone, 100, first=len(replies))
    phone.client.bus_round_trip()
    return replies


def start_in(phone: Phone, setting: str) -> list[PendingReply]:
    phone.settings.hang_on(setting)
    phone.launch()
    phone.settings.wait_for_held_read()
    return []


MOMENTS = {
    "idle": be_idle,
    "with calls in hand": be_at_work,
    "waiting for the peer, with calls behind": wait_with_a_queue,
    "in the first read of a start": lambda phone: start_in(phone, "DefaultActions"),
    "in the second read of a start": lambda phone: start_in(phone, "DefaultKeys"),
    "in the limit of a start": lambda phone: start_in(phone, "ProgKeysMax"),
}


@pytest.mark.sanitizers
def test_a_bus_that_restarts_ends_the_service_with_1_and_loses_no_acknowledged_row(make, figures):
    ends = []
    for name, come_to in MOMENTS.items():
        phone = make(name)
        replies = come_to(phone)
        service, begun = phone.service, time.monotonic()
        # The other answers are lost with the bus.
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
    figures(f"{len(MOMENTS)} restarts, each service ended with 1, no row lost: {'; '.join(ends)}")


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
            pause(source.uniform(0, 0.15))
        phone.restart_bus()
        ends[how_it_ends(phone, f"start {number} with seed {seed}")] += 1
        check_rows(phone, [])
    figures(f"seed {seed}: {ends.total()} starts, none deaf, no user row lost: {dict(ends)}")
    assert len(ends) >= 2, "all of them ended alike"


def how_it_ends(phone: Phone, start: str) -> str:
    """The service ends with a clear reason, or finds the new bus and serves there."""
    service = phone.service
    owner = phone.client.watch_owner(bus_name(SERVICE))
    wait_until(lambda: owner.current or not service.running, f"{start} ends or appears on the bus")
    if service.running:
        check_serves(phone)
        service.stop()
        return "served on the new bus"
    reason = service.log.texts("error")[-1]
    assert service.status == 1, start
    assert reason == LOST or reason.startswith(NO_BUS), f"{start}: {reason}"
    return "lost the bus" if reason == LOST else "found no bus"
