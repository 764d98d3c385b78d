"""A SettingsManager that is missing, disconnects, does not reply or sends invalid replies."""

import signal
import time
from typing import Any, Callable, NamedTuple

import dbus.types
import pytest

from database import RESERVED_ACTION
from phones import TEST_SETTINGS, Phone
from rollout import Rollout
from sample_rows import (
    D1_KEY,
    PROVISIONED_ACTIONS,
    PROVISIONED_KEYS,
    SETTINGS,
    STORED,
    USER_ACTION,
    USER_KEYS,
    without_id,
)
from samples import DATABASE_FULL, MODULE_KEY, SET_KEY, SETTING_NOT_READ, key_created
from sandbox.loop import LIMIT, wait_until
from sandbox.names import LIFECYCLE, SERVICE, bus_name
from sandbox.records import KEY, Action, Key
from sandbox.settings import FakeSettingsManager
from selective_peer import SelectivePeer

SKIPPED_ACTION, SKIPPED_KEY = "Skipping invalid dm action: ", "Skipping invalid dm key: "
MEBIBYTE = 2**20
READ_LIMIT = 5.0

OTHER_TYPES = {
    **{"b": True, "i": 1, "x": 1, "d": 1.0, "o": "/1", "g": "s", "v": "1"},
    **{"h": dbus.types.UnixFd(2), "ay": b"1", "as": ["1"], "(s)": ("1",), "a{ss}": {"1": "1"}},
}
"""A value of each type other than string, by signature."""


def answering_with(signature: str, body: Any) -> Callable[[FakeSettingsManager], None]:
    return lambda peer: peer.answer_with(signature, body)


PEER_FAULTS: dict[str, Callable[[FakeSettingsManager], None]] = {
    "missing": FakeSettingsManager.close,
    "disconnecting during the call": FakeSettingsManager.disconnect_on_call,
    "replying with an error": lambda peer: peer.fail("org.freedesktop.DBus.Error.Failed"),
    "replying with an error without a text": lambda peer: peer.fail("a.b", ""),
    "replying with an error of a mebibyte": lambda peer: peer.fail("a.b", "x" * MEBIBYTE),
    "replying with nothing": lambda peer: peer.answer_with(""),
    "replying with a number and a text": lambda peer: peer.answer_with("is", 1, "1"),
    **{f"replying with {kind}": answering_with(kind, body) for kind, body in OTHER_TYPES.items()},
}
"""All faults of the peer except a missing reply."""


@pytest.fixture
def phone(phones) -> Phone:
    """A phone with user rows and provisioned rows, whose service is not started yet."""
    one = phones(settings=SETTINGS)
    one.store(*STORED)
    return one


def check_rows(phone: Phone, actions: list[Action], keys: list[Key]) -> None:
    """Checks the stored actions, without the reserved one, and the stored keys, without ids."""
    assert phone.database.actions() == [RESERVED_ACTION, *actions]
    assert without_id(phone.database.keys()) == without_id(keys)


def check_kept(phone: Phone, provisioned_keys: list[Key]) -> None:
    """Checks that all actions and the keys of the user are unchanged."""
    check_rows(phone, [USER_ACTION, *PROVISIONED_ACTIONS], [*USER_KEYS, *provisioned_keys])


def check_limit_applies(phone: Phone) -> None:
    """Checks that the service reads the limit from a peer that works."""
    phone.events.take()
    limit, phone.settings.values["ProgKeysMax"] = phone.settings.values["ProgKeysMax"], "0"
    assert phone.client.create_programmable_key(SET_KEY) == -1
    assert phone.events.take() == [DATABASE_FULL]
    phone.settings.values["ProgKeysMax"] = limit


# Faults during all reads


def test_starts_and_creations_succeed_with_a_faulty_peer_and_user_rows_are_kept(phone, summarize):
    for name, break_peer in PEER_FAULTS.items():
        break_peer(phone.settings)
        service = phone.start()
        assert service.log.texts("error") == [SETTING_NOT_READ] * 2, name
        assert service.log.take("warning") == [SKIPPED_ACTION, SKIPPED_KEY], name
        check_kept(phone, [])
        phone.replace_peer()
        check_limit_applies(phone)
        break_peer(phone.settings)
        key = USER_KEYS[0]._replace(container=name)
        key = key._replace(idKey=phone.client.create_programmable_key(key))
        assert phone.events.take() == [key_created(key)], name
        assert service.log.take("error") == [SETTING_NOT_READ], name
        assert phone.client.delete_programmable_key(key.idKey) == 0, name
        service.stop()
        phone.replace_peer()
        phone.start().stop()
        check_kept(phone, PROVISIONED_KEYS)
    summarize(f"{len(PEER_FAULTS)} faulty peers at a start and a creation, no user row lost")


# Faults during some reads


class PartialFault(NamedTuple):
    """A peer that replies to some reads of a start, and the effects on the start."""

    break_peer: Callable[[SelectivePeer], None]
    failed_reads: int
    warnings: list[str]
    provisioned_keys: list[Key]


PARTIAL_FAULTS = {
    "disconnecting after the actions": PartialFault(
        lambda peer: peer.disconnect_after("DefaultActions"), 1, [SKIPPED_KEY], []
    ),
    "disconnecting at the keys": PartialFault(
        lambda peer: peer.disconnect_on("DefaultKeys"), 1, [SKIPPED_KEY], []
    ),
    # Provisioned actions are never deleted, so the keys still have actions.
    "replying with an error to the actions": PartialFault(
        lambda peer: peer.fail_on("DefaultActions"), 1, [SKIPPED_ACTION], PROVISIONED_KEYS
    ),
    "disconnecting after the keys": PartialFault(
        lambda peer: peer.disconnect_after("DefaultKeys"), 2, [], PROVISIONED_KEYS
    ),
    "replying with an error to the limit": PartialFault(
        lambda peer: peer.fail_on("ProgKeysMax"), 2, [], PROVISIONED_KEYS
    ),
}


def test_a_fault_of_the_peer_during_a_start_affects_only_the_settings_without_reply(
    phone, summarize
):
    for name, fault in PARTIAL_FAULTS.items():
        fault.break_peer(phone.settings)
        service = phone.start()
        assert service.log.texts("error") == [SETTING_NOT_READ] * fault.failed_reads, name
        assert service.log.texts("warning") == fault.warnings, name
        check_kept(phone, fault.provisioned_keys)
        service.stop()
        phone.replace_peer()
        phone.start().stop()
        check_kept(phone, PROVISIONED_KEYS)
    summarize(f"{len(PARTIAL_FAULTS)} faults during a start, only unread settings were affected")


# Missing replies. All phones wait at the same time, each for one read.


def launch(phone: Phone) -> Callable[[], bool]:
    service = phone.launch()
    connection = phone.client.connection
    return lambda: connection.name_has_owner(bus_name(SERVICE)) or not service.running


def restore(phone: Phone) -> Callable[[], bool]:
    reply = phone.client.send("restoreDefault", interface=LIFECYCLE)
    return lambda: reply.arrived and reply.wait().values == (False,)


def create(phone: Phone) -> Callable[[], bool]:
    reply = phone.client.send("createProgrammableKey", KEY, CREATED)
    return lambda: reply.arrived and reply.wait().values[0] > 0


CREATED = MODULE_KEY._replace(idAction=USER_ACTION.idAction)
ONE_KEY = {**TEST_SETTINGS, **Rollout(PROVISIONED_ACTIONS, [D1_KEY]).settings}


class Wait(NamedTuple):
    """An operation, the setting that it waits for, and a check of the rows afterwards."""

    do: Callable[[Phone], Callable[[], bool]]
    setting: str
    check: Callable[[Phone], None]


WAITS = [
    # Provisioned actions are never deleted, so the keys have actions even without DefaultActions.
    Wait(launch, "DefaultActions", lambda phone: check_kept(phone, [D1_KEY])),
    Wait(launch, "DefaultKeys", lambda phone: check_kept(phone, [])),
    Wait(launch, "ProgKeysMax", lambda phone: check_kept(phone, [D1_KEY])),
    Wait(restore, "DefaultActions", lambda phone: check_rows(phone, [], [])),
    Wait(create, "ProgKeysMax", lambda phone: check_kept(phone, [D1_KEY, CREATED])),
]


class Waiting:
    """A phone whose service waits for a setting."""

    def __init__(self, phone: Phone, wait: Wait) -> None:
        self.phone = phone
        self._wait = wait
        self.took = 0.0
        phone.store(*STORED)
        if wait.do is not launch:
            phone.start()
        phone.settings.hang_on(wait.setting)
        self._begun = time.monotonic()
        self._is_done = wait.do(phone)
        phone.settings.wait_for_held_read()

    def is_over(self) -> bool:
        if not self.took and self._is_done():
            self.took = time.monotonic() - self._begun
        return self.took > 0

    def check(self) -> None:
        """Checks that the read timed out, was logged, and counts as an empty setting."""
        assert self.phone.service.log.texts("error") == [SETTING_NOT_READ]
        assert READ_LIMIT - 1 <= self.took <= READ_LIMIT + LIMIT / 2
        self._wait.check(self.phone)


def test_a_read_times_out_after_5_seconds_even_if_the_service_gets_sigterm(phones, summarize):
    waiting, ending = (
        [
            Waiting(phones(f"{name} {number}", settings=ONE_KEY), wait)
            for number, wait in enumerate(WAITS)
        ]
        for name in ("waiting", "ending")
    )
    for one in ending:
        one.phone.service.send_signal(signal.SIGTERM)
        one.phone.service.send_signal(signal.SIGINT)
    both = [*waiting, *ending]
    wait_until(lambda: all([one.is_over() for one in both]), "all waits end", 2 * LIMIT)
    for one in ending:
        assert one.phone.service.wait_for_exit() == 0
        one.check()
    for one in waiting:
        one.check()
        one.phone.settings.release()
        check_limit_applies(one.phone)
        one.phone.service.stop()
    took = ", ".join(f"{one.took:.1f} s" for one in both)
    summarize(f"{len(both)} reads without a reply, all timed out: {took}")


# Large replies


def rollout_of_16_mebibytes(records: int) -> Rollout:
    """That many actions, with a total length of 16 MiB, and a key for the first one."""
    piece = "0123456789" * 9 + ",#é\\x "
    label = piece * (16 * MEBIBYTE // len(piece.encode()) // records)
    actions = [Action(-1, f"M{number}", number, label=label) for number in range(records)]
    return Rollout(actions, [PROVISIONED_KEYS[0]._replace(dmId="M0")])


def check_merged(phone: Phone, rollout: Rollout, event: str) -> None:
    """Checks that the last rows are the provisioned ones, with one event for each."""
    provisioned = phone.database.actions()[-len(rollout.actions) :]
    assert [action._replace(idAction=-1) for action in provisioned] == rollout.actions
    assert phone.database.keys()[-1].idAction == provisioned[0].idAction
    names = [event.name for event in phone.events.take()]
    assert names == [event] * len(rollout.actions) + ["KEY_CREATE_NTF"]


def test_defaults_of_16_mebibytes_are_merged(phones, amount, summarize):
    took = []
    for records in amount((1,), (1, 5000)):
        rollout = rollout_of_16_mebibytes(records)
        phone = phones(f"{records}", settings={**SETTINGS, **rollout.settings}, log_level=4)
        phone.store(USER_ACTION, USER_KEYS[0])
        for event in ("ACTION_CREATE_NTF", "ACTION_MODIFY_NTF"):
            phone.start()
            took.append(f"{phone.seconds_to_start:.1f} s")
            check_merged(phone, rollout, event)
            phone.service.stop()
            assert phone.service.log.texts() == []
        assert phone.database.actions()[:2] == [RESERVED_ACTION, USER_ACTION]
        assert phone.database.keys()[:-1] == [USER_KEYS[0]]
    summarize(f"16 MiB of actions merged twice, in up to {records} records: {', '.join(took)}")
