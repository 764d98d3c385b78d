"""A SettingsManager that is ill in every way, whenever the service asks it for something."""

import signal
import time
from typing import Callable, NamedTuple

import pytest

from database import RESERVED_ACTION
from peers.lived_in import (
    PROVISIONED_ACTIONS,
    PROVISIONED_KEYS,
    SETTINGS,
    STORED,
    USER_ACTION,
    USER_KEYS,
    without_id,
)
from peers.phones import Phone
from peers.selective_peer import ILL_MANNERS, INVALID_REPLY, SelectivePeer
from peers.waits import CREATION, RESTORE, RESTORE_AT_LIMIT, START_AT_LIMIT, WAITS, Wait
from rollout import Rollout
from samples import DATABASE_FULL, DATABASE_RESET, MODULE_KEY, SET_KEY, key_created
from sandbox.loop import LIMIT, wait_until
from sandbox.records import Action

pytest_plugins = ["peers.several_phones"]

SKIPPED_ACTION, SKIPPED_KEY = "Skipping invalid dm action: ", "Skipping invalid dm key: "
MEBIBYTE = 2**20


@pytest.fixture
def phone(phones) -> Phone:
    """A phone with user rows and provisioned ones; its service is not started yet."""
    one = phones(settings=SETTINGS)
    one.store(*STORED)
    return one


def check_actions(phone: Phone) -> None:
    """Nobody deletes a provisioned action, so they are all there, users' and provisioned ones."""
    assert phone.database.actions() == [RESERVED_ACTION, USER_ACTION, *PROVISIONED_ACTIONS]


def check_kept(phone: Phone) -> None:
    """The users' rows are as they were, and the provisioned ones as they are provisioned."""
    check_actions(phone)
    keys = phone.database.keys()
    assert keys[: len(USER_KEYS)] == USER_KEYS
    assert without_id(keys[len(USER_KEYS) :]) == without_id(PROVISIONED_KEYS)


def check_restored(phone: Phone) -> None:
    """After a restore there is what is provisioned, with numbers of its own, and nothing else."""
    first = PROVISIONED_ACTIONS[0].idAction - 1
    actions = [action._replace(idAction=action.idAction - first) for action in PROVISIONED_ACTIONS]
    assert phone.database.actions() == [RESERVED_ACTION, *actions]
    keys = [key._replace(idAction=key.idAction - first) for key in PROVISIONED_KEYS]
    assert without_id(phone.database.keys()) == without_id(keys)


def check_limit_holds(phone: Phone) -> None:
    """With a well peer a key of the set is refused as soon as its limit says so."""
    phone.events.take()
    phone.settings.values["ProgKeysMax"] = "0"
    assert phone.client.create_programmable_key(SET_KEY) == -1
    assert phone.events.take() == [DATABASE_FULL]
    phone.settings.values["ProgKeysMax"] = SETTINGS["ProgKeysMax"]


# Ill at once


def test_no_ill_peer_at_the_start_costs_a_user_a_row_and_the_next_start_provisions_again(
    phone, figures
):
    for name, fall_ill in ILL_MANNERS.items():
        fall_ill(phone.settings)
        service = phone.start()
        assert service.log.texts("error") == [INVALID_REPLY] * 2, name
        assert service.log.texts("warning") == [SKIPPED_ACTION, SKIPPED_KEY], name
        check_actions(phone)
        assert phone.database.keys() == USER_KEYS, name
        service.stop()
        phone.replace_peer()
        phone.start().stop()
        check_kept(phone)
    figures(f"{len(ILL_MANNERS)} ill peers at the start, no user row lost, provisioned rows back")


def test_no_ill_peer_during_a_restore_stops_it_and_the_next_one_provisions_again(phone, figures):
    service = phone.start()
    for name, fall_ill in ILL_MANNERS.items():
        phone.events.take()
        service.log.take()
        fall_ill(phone.settings)
        assert phone.client.restore_default() is False, name
        assert service.log.take("error") == [INVALID_REPLY] * 2, name
        assert phone.events.take() == [DATABASE_RESET], name
        assert (phone.database.actions(), phone.database.keys()) == ([RESERVED_ACTION], []), name
        phone.replace_peer()
        assert phone.client.restore_default() is False, name
        check_restored(phone)
    service.stop()
    figures(f"{len(ILL_MANNERS)} ill peers during a restore, all restored and provisioned again")


def test_no_ill_peer_during_a_creation_stops_it_and_the_limit_holds_again_afterwards(
    phone, figures
):
    service = phone.start()
    for name, fall_ill in ILL_MANNERS.items():
        check_limit_holds(phone)
        service.log.take()
        fall_ill(phone.settings)
        key = USER_KEYS[0]._replace(container=name)
        key = key._replace(idKey=phone.client.create_programmable_key(key))
        assert phone.events.take() == [key_created(key)], name
        assert service.log.take("error") == [INVALID_REPLY], name
        assert phone.database.keys()[-1] == key, name
        phone.replace_peer()
    check_limit_holds(phone)
    service.stop()
    figures(f"{len(ILL_MANNERS)} ill peers during a creation, all keys created")


class HalfIll(NamedTuple):
    """A peer that answers some of the reads of a start, and what is then amiss."""

    fall_ill: Callable[[SelectivePeer], None]
    failed_reads: int
    warnings: list[str]
    has_provisioned_keys: bool


HALF_ILL = {
    "dying between the two": HalfIll(
        lambda peer: peer.die_after("DefaultActions"), 1, [SKIPPED_KEY], False
    ),
    "dying in the second": HalfIll(
        lambda peer: peer.die_on("DefaultKeys"), 1, [SKIPPED_KEY], False
    ),
    "without the second": HalfIll(
        lambda peer: peer.fail_on("DefaultKeys"), 1, [SKIPPED_KEY], False
    ),
    # The provisioned actions cannot be deleted, so that the keys still find theirs.
    "without the first": HalfIll(
        lambda peer: peer.fail_on("DefaultActions"), 1, [SKIPPED_ACTION], True
    ),
    "dying before the limit": HalfIll(lambda peer: peer.die_after("DefaultKeys"), 2, [], True),
    "dying at the limit": HalfIll(lambda peer: peer.die_on("ProgKeysMax"), 2, [], True),
    "without the limit": HalfIll(lambda peer: peer.fail_on("ProgKeysMax"), 2, [], True),
}


def test_a_peer_that_falls_ill_in_the_middle_of_a_start_costs_only_what_it_did_not_tell(
    phone, figures
):
    for name, half_ill in HALF_ILL.items():
        half_ill.fall_ill(phone.settings)
        service = phone.start()
        assert service.log.texts("error") == [INVALID_REPLY] * half_ill.failed_reads, name
        assert service.log.texts("warning") == half_ill.warnings, name
        check_actions(phone)
        provisioned = PROVISIONED_KEYS if half_ill.has_provisioned_keys else []
        assert without_id(phone.database.keys()) == without_id([*USER_KEYS, *provisioned]), name
        service.stop()
        phone.replace_peer()
        phone.start().stop()
        check_kept(phone)
    figures(f"{len(HALF_ILL)} peers fell ill during a start, nothing lost but what was not told")


# Hanging: these phones wait side by side


def check_rows(name: str, phone: Phone) -> None:
    """What a wait leaves in the database: a setting that was not read counts as empty."""
    if name == RESTORE:
        assert (phone.database.actions(), phone.database.keys()) == ([RESERVED_ACTION], [])
    elif name == RESTORE_AT_LIMIT:
        check_restored(phone)
    elif name == START_AT_LIMIT:
        check_kept(phone)
    else:
        check_actions(phone)
        created = [MODULE_KEY._replace(idAction=USER_ACTION.idAction)] if name == CREATION else []
        provisioned = PROVISIONED_KEYS if name == CREATION else []
        expected = without_id([*USER_KEYS, *provisioned, *created])
        assert without_id(phone.database.keys()) == expected


@pytest.fixture
def waits(phones) -> dict[str, Wait]:
    """Every wait, begun, each on a phone of its own."""
    return {name: Wait(phones(name, SETTINGS), STORED, *what) for name, what in WAITS.items()}


def wait_for_all(waits: dict[str, Wait]) -> str:
    """Returns once all are over, and says how long each took."""
    wait_until(lambda: all([wait.is_over() for wait in waits.values()]), "all waits end", 2 * LIMIT)
    return ", ".join(f"{name} {wait.took:.1f} s" for name, wait in waits.items())


def test_a_peer_that_hangs_is_given_up_read_by_read_and_the_service_is_well_afterwards(
    waits, figures
):
    took = wait_for_all(waits)
    for name, wait in waits.items():
        wait.check_reads()
        check_rows(name, wait.phone)
        wait.phone.settings.release()
        check_limit_holds(wait.phone)
        wait.phone.service.stop()
    figures(f"{len(waits)} waits for a hanging peer, all ended: {took}")


def test_a_termination_during_a_wait_ends_with_status_0_after_the_reads_in_hand(waits, figures):
    for wait in waits.values():
        wait.phone.settings.wait_for_held_read()
        wait.phone.service.send_signal(signal.SIGTERM)
        wait.phone.service.send_signal(signal.SIGINT)
    took = wait_for_all(waits)
    for name, wait in waits.items():
        assert wait.phone.service.wait_for_exit() == 0, name
        wait.check_reads()
        check_rows(name, wait.phone)
    figures(f"{len(waits)} services terminated while they waited, all ended with 0: {took}")


# Answering with more than anybody expects


def rollout_of_16_mebibytes(records: int) -> Rollout:
    """So many actions, the first with a key, whose setting is as long as that in all."""
    piece = "0123456789" * 9 + ",#é\\x "
    label = piece * (16 * MEBIBYTE // len(piece.encode()) // records)
    actions = [Action(-1, f"M{number}", number, label=label) for number in range(records)]
    return Rollout(actions, [PROVISIONED_KEYS[0]._replace(dmId="M0")])


def check_merged(phone: Phone, rollout: Rollout, *told: str) -> None:
    """The last rows are the provisioned ones, and each of them was told of."""
    provisioned = phone.database.actions()[-len(rollout.actions) :]
    assert [action._replace(idAction=-1) for action in provisioned] == rollout.actions
    assert phone.database.keys()[-1].idAction == provisioned[0].idAction
    assert [event.name for event in phone.events.take()] == [*told, "KEY_CREATE_NTF"]


def timed_start(phone: Phone) -> str:
    """Starts the service, which logs little, and tells how long that took."""
    begun = time.monotonic()
    phone.start(log_level=4)
    return f"{time.monotonic() - begun:.1f} s"


def test_defaults_of_16_mebibytes_are_merged_like_others(phones, amount, figures):
    took = []
    for records in (1, amount(1000, 5000)):
        rollout = rollout_of_16_mebibytes(records)
        phone = phones(f"records-{records}", {**SETTINGS, **rollout.settings})
        phone.store(USER_ACTION, USER_KEYS[0])
        took.append(timed_start(phone))
        check_merged(phone, rollout, *["ACTION_CREATE_NTF"] * records)
        phone.service.stop()
        took.append(timed_start(phone))
        check_merged(phone, rollout, *["ACTION_MODIFY_NTF"] * records)
        assert phone.database.actions()[:2] == [RESERVED_ACTION, USER_ACTION]
        assert phone.database.keys()[:-1] == [USER_KEYS[0]]
        assert phone.client.restore_default() is False
        check_merged(phone, rollout, "DB_RESET_NTF", *["ACTION_CREATE_NTF"] * records)
        assert len(phone.database.actions()) == 1 + records
        phone.service.stop()
        assert phone.service.log.texts() == []
    figures(f"16 MiB of actions in 1 and in {records} records merged twice: {', '.join(took)}")


def test_a_limit_of_16_mebibytes_of_digits_is_no_number_and_refuses_keys_of_the_set(
    phone, figures
):
    service = phone.start()
    phone.settings.values["ProgKeysMax"] = "9" * 16 * MEBIBYTE
    assert phone.client.create_programmable_key(USER_KEYS[0]) == -1
    assert phone.client.create_programmable_key(USER_KEYS[0]._replace(type=1)) > 0
    assert service.log.texts("error") == []
    check_limit_holds(phone)
    service.stop()
    figures("1 limit of 16 MiB: keys of the set refused, others created")
