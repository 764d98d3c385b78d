"""A SettingsManager that is absent, dies, hangs or answers wrongly when the service asks it."""

import signal
import time
from typing import Any, Callable, NamedTuple

import dbus.types
import pytest

from database import RESERVED_ACTION
from lived_in import (
    D1_KEY,
    PROVISIONED_ACTIONS,
    PROVISIONED_KEYS,
    SETTINGS,
    STORED,
    USER_ACTION,
    USER_KEYS,
    without_id,
)
from phones import ROOMY, Phone
from rollout import Rollout
from samples import DATABASE_FULL, MODULE_KEY, SET_KEY, SETTING_NOT_READ, key_created
from sandbox.loop import LIMIT, wait_until
from sandbox.names import LIFECYCLE, SERVICE, bus_name
from sandbox.records import KEY, Action, Key
from sandbox.settings import FakeSettingsManager
from selective_peer import SelectivePeer

SKIPPED_ACTION, SKIPPED_KEY = "Skipping invalid dm action: ", "Skipping invalid dm key: "
MEBIBYTE = 2**20
READ_LIMIT = 5.0

NO_TEXTS = {
    **{"b": True, "i": 1, "x": 1, "d": 1.0, "o": "/1", "g": "s", "v": "1"},
    **{"h": dbus.types.UnixFd(2), "ay": b"1", "as": ["1"], "(s)": ("1",), "a{ss}": {"1": "1"}},
}
"""A value of each of these types."""


def answers_with(signature: str, body: Any) -> Callable[[FakeSettingsManager], None]:
    return lambda peer: peer.answer_with(signature, body)


ILL_MANNERS: dict[str, Callable[[FakeSettingsManager], None]] = {
    "absent": FakeSettingsManager.close,
    "dying during the call": FakeSettingsManager.disconnect_on_call,
    "answering with an error": lambda peer: peer.fail("org.freedesktop.DBus.Error.Failed"),
    "answering with an error without a text": lambda peer: peer.fail("a.b", ""),
    "answering with an error of a mebibyte": lambda peer: peer.fail("a.b", "x" * MEBIBYTE),
    "answering with nothing": lambda peer: peer.answer_with(""),
    "answering with a number and a text": lambda peer: peer.answer_with("is", 1, "1"),
    **{f"answering with {kind}": answers_with(kind, body) for kind, body in NO_TEXTS.items()},
}
"""Each way not to answer a read with a text, except hanging."""


@pytest.fixture
def phone(phones) -> Phone:
    """A phone with user rows and provisioned ones; its service is not started yet."""
    one = phones(settings=SETTINGS)
    one.store(*STORED)
    return one


def check_rows(phone: Phone, actions: list[Action], keys: list[Key]) -> None:
    """These actions are stored, beside the reserved one, and these keys apart from their ids."""
    assert phone.database.actions() == [RESERVED_ACTION, *actions]
    assert without_id(phone.database.keys()) == without_id(keys)


def check_kept(phone: Phone, provisioned_keys: list[Key]) -> None:
    """The users' rows are as they were, and so are all actions, which no merge deletes."""
    check_rows(phone, [USER_ACTION, *PROVISIONED_ACTIONS], [*USER_KEYS, *provisioned_keys])


def check_limit_holds(phone: Phone) -> None:
    """With a well peer a key of the set is refused as soon as the limit says so."""
    phone.events.take()
    limit, phone.settings.values["ProgKeysMax"] = phone.settings.values["ProgKeysMax"], "0"
    assert phone.client.create_programmable_key(SET_KEY) == -1
    assert phone.events.take() == [DATABASE_FULL]
    phone.settings.values["ProgKeysMax"] = limit


# Ill at once


def test_an_ill_peer_stops_no_start_and_no_creation_and_costs_no_user_row(phone, figures):
    for name, fall_ill in ILL_MANNERS.items():
        fall_ill(phone.settings)
        service = phone.start()
        assert service.log.texts("error") == [SETTING_NOT_READ] * 2, name
        assert service.log.take("warning") == [SKIPPED_ACTION, SKIPPED_KEY], name
        check_kept(phone, [])
        phone.replace_peer()
        check_limit_holds(phone)
        fall_ill(phone.settings)
        key = USER_KEYS[0]._replace(container=name)
        key = key._replace(idKey=phone.client.create_programmable_key(key))
        assert phone.events.take() == [key_created(key)], name
        assert service.log.take("error") == [SETTING_NOT_READ], name
        assert phone.client.delete_programmable_key(key.idKey) == 0, name
        service.stop()
        phone.replace_peer()
        phone.start().stop()
        check_kept(phone, PROVISIONED_KEYS)
    figures(f"{len(ILL_MANNERS)} ill peers at a start and a creation, no user row lost")


class HalfIll(NamedTuple):
    """A peer that answers some of the reads of a start, and what is then missing."""

    fall_ill: Callable[[SelectivePeer], None]
    failed_reads: int
    warnings: list[str]
    provisioned_keys: list[Key]


HALF_ILL = {
    "dying between the two": HalfIll(
        lambda peer: peer.die_after("DefaultActions"), 1, [SKIPPED_KEY], []
    ),
    "dying in the second": HalfIll(
        lambda peer: peer.die_on("DefaultKeys"), 1, [SKIPPED_KEY], []
    ),
    # The provisioned actions cannot be deleted, so the keys still find theirs.
    "without the first": HalfIll(
        lambda peer: peer.fail_on("DefaultActions"), 1, [SKIPPED_ACTION], PROVISIONED_KEYS
    ),
    "dying before the limit": HalfIll(
        lambda peer: peer.die_after("DefaultKeys"), 2, [], PROVISIONED_KEYS
    ),
    "without the limit": HalfIll(
        lambda peer: peer.fail_on("ProgKeysMax"), 2, [], PROVISIONED_KEYS
    ),
}


def test_a_peer_that_falls_ill_during_a_start_costs_only_what_it_did_not_answer(phone, figures):
    for name, half_ill in HALF_ILL.items():
        half_ill.fall_ill(phone.settings)
        service = phone.start()
        assert service.log.texts("error") == [SETTING_NOT_READ] * half_ill.failed_reads, name
        assert service.log.texts("warning") == half_ill.warnings, name
        check_kept(phone, half_ill.provisioned_keys)
        service.stop()
        phone.replace_peer()
        phone.start().stop()
        check_kept(phone, PROVISIONED_KEYS)
    figures(f"{len(HALF_ILL)} peers fell ill during a start, only what was not answered is missing")


# Hanging: all phones wait side by side, each for one read


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
ONE_KEY = {**ROOMY, **Rollout(PROVISIONED_ACTIONS, [D1_KEY]).settings}


class Wait(NamedTuple):
    """Something that the service does, the setting that it waits for, and the rows afterwards."""

    do: Callable[[Phone], Callable[[], bool]]
    setting: str
    check: Callable[[Phone], None]


WAITS = [
    # Provisioned actions are not deleted, so the keys find theirs even if the actions hang.
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
        """The read was given up after its limit, logged, and counts as an empty setting."""
        assert self.phone.service.log.texts("error") == [SETTING_NOT_READ]
        assert READ_LIMIT - 1 <= self.took <= READ_LIMIT + LIMIT / 2
        self._wait.check(self.phone)


def test_a_hanging_read_is_given_up_after_5_seconds_also_if_the_service_is_told_to_end(
    phones, figures
):
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
        check_limit_holds(one.phone)
        one.phone.service.stop()
    took = ", ".join(f"{one.took:.1f} s" for one in both)
    figures(f"{len(both)} hanging reads, all given up: {took}")


# Answering with more than anybody expects


def rollout_of_16_mebibytes(records: int) -> Rollout:
    """So many actions, the first with a key, whose setting has that length in all."""
    piece = "0123456789" * 9 + ",#é\\x "
    label = piece * (16 * MEBIBYTE // len(piece.encode()) // records)
    actions = [Action(-1, f"M{number}", number, label=label) for number in range(records)]
    return Rollout(actions, [PROVISIONED_KEYS[0]._replace(dmId="M0")])


def check_merged(phone: Phone, rollout: Rollout, event: str) -> None:
    """The last rows are the provisioned ones, and an event announced each of them."""
    provisioned = phone.database.actions()[-len(rollout.actions) :]
    assert [action._replace(idAction=-1) for action in provisioned] == rollout.actions
    assert phone.database.keys()[-1].idAction == provisioned[0].idAction
    names = [event.name for event in phone.events.take()]
    assert names == [event] * len(rollout.actions) + ["KEY_CREATE_NTF"]


def test_defaults_of_16_mebibytes_are_merged_like_others(phones, amount, figures):
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
    figures(f"16 MiB of actions merged twice, in up to {records} records: {', '.join(took)}")
