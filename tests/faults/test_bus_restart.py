"""Restarts of the bus while the service runs or starts."""

import random
import time
from collections import Counter
from typing import Callable

import pytest

from database import RESERVED_ACTION
from phones import Phone, pause
from sample_rows import PROVISIONED_ACTIONS, SETTINGS, STORED, USER_ACTION, USER_KEYS
from samples import CALL, action_created
from sandbox.client import PendingReply
from sandbox.loop import wait_until
from sandbox.names import SERVICE, bus_name
from sandbox.records import ACTION, KEY

LOST = "The connection to the system bus is lost; ending"
NO_BUS = "Cannot reach the system bus: "
STORED_ACTIONS = [RESERVED_ACTION, USER_ACTION, *PROVISIONED_ACTIONS]
IMMEDIATE = 0.25
"""The share of the restarts right after the launch, before the service connects to the bus."""


@pytest.fixture
def make(phones) -> Callable[..., Phone]:
    """Creates a phone with user rows and provisioned rows, and does not start the service."""

    def make_phone(name: str = "phone") -> Phone:
        phone = phones(name, settings=SETTINGS)
        phone.store(*STORED)
        return phone

    return make_phone


def add(phone: Phone, count: int, first: int = 0) -> list[PendingReply]:
    """Sends that many calls that add an action with a numbered label."""
    replies = [
        phone.client.send("addAction", ACTION, CALL._replace(label=f"{first + number}"))
        for number in range(count)
    ]
    phone.client.connection.flush()
    return replies


def check_rows(phone: Phone, acknowledged: list[int]) -> None:
    """Checks that the user rows and all acknowledged rows are stored completely."""
    actions = phone.database.actions()
    assert actions[: len(STORED_ACTIONS)] == STORED_ACTIONS
    added = actions[len(STORED_ACTIONS) :]
    assert {action.idAction for action in added} >= set(acknowledged)
    first = STORED_ACTIONS[-1].idAction + 1
    assert added == [
        CALL._replace(idAction=first + number, label=f"{number}") for number in range(len(added))
    ]
    assert phone.database.keys()[: len(USER_KEYS)] == USER_KEYS


def check_works(phone: Phone) -> None:
    """Checks that an added action causes a reply and an event."""
    phone.events.take()
    added = CALL._replace(idAction=phone.client.add_action(CALL))
    assert phone.events.take() == [action_created(added)]
    assert phone.client.delete_action(added.idAction) == 0


def handle_calls(phone: Phone) -> list[PendingReply]:
    phone.start()
    replies = add(phone, 100)
    replies[10].wait()
    return replies


def be_idle(phone: Phone) -> list[PendingReply]:
    phone.start()
    replies = add(phone, 5)
    replies[-1].wait()
    return replies


def wait_for_peer(phone: Phone) -> list[PendingReply]:
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


STATES = {
    "idle": be_idle,
    "handling calls": handle_calls,
    "waiting for the peer, with queued calls": wait_for_peer,
    "starting, first read": lambda phone: start_in(phone, "DefaultActions"),
    "starting, second read": lambda phone: start_in(phone, "DefaultKeys"),
    "starting, read of the limit": lambda phone: start_in(phone, "ProgKeysMax"),
}


@pytest.mark.sanitizers
def test_a_restart_of_the_bus_ends_the_service_with_status_1_and_loses_no_acknowledged_row(
    make, summarize
):
    ends = []
    for name, enter_state in STATES.items():
        phone = make(name)
        replies = enter_state(phone)
        service, begun = phone.service, time.monotonic()
        # The other replies are lost with the bus.
        acknowledged = [reply.wait().values[0] for reply in replies if reply.arrived]
        phone.restart_bus()
        assert service.wait_for_exit() == 1, name
        ends.append(f"{name} after {time.monotonic() - begun:.1f} s, {len(acknowledged)} rows")
        assert service.log.texts("error")[-1] == LOST, name
        check_rows(phone, acknowledged)
        phone.start()
        check_rows(phone, acknowledged)
        check_works(phone)
        phone.service.stop()
    summarize(f"{len(STATES)} restarts, all services ended with 1, no row lost: {'; '.join(ends)}")


def test_after_a_restart_of_the_bus_during_a_start_the_service_works_or_ends(
    make, amount, summarize
):
    seed = amount(1, random.randrange(2**32))
    source = random.Random(seed)
    phone = make()
    ends: Counter[str] = Counter()
    for number in range(amount(40, 400)):
        phone.launch()
        if source.random() >= IMMEDIATE:
            pause(source.uniform(0, 0.15))
        phone.restart_bus()
        ends[how_it_ends(phone, f"start {number} with seed {seed}")] += 1
        check_rows(phone, [])
    summarize(f"seed {seed}: {ends.total()} starts, no user row lost: {dict(ends)}")
    assert len(ends) >= 2, "all starts ended the same way"


def how_it_ends(phone: Phone, start: str) -> str:
    """Checks that the service works on the new bus, or has ended and logged the reason."""
    service = phone.service
    owner = phone.client.watch_owner(bus_name(SERVICE))
    wait_until(lambda: owner.current or not service.running, f"{start} ends or claims its name")
    if service.running:
        check_works(phone)
        service.stop()
        return "works on the new bus"
    reason = service.log.texts("error")[-1]
    assert service.status == 1, start
    assert reason == LOST or reason.startswith(NO_BUS), f"{start}: {reason}"
    return "lost the bus" if reason == LOST else "could not connect"
