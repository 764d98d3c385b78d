"""Random valid and invalid calls and events. Each call must get exactly one reply."""

import re
from collections import Counter
from pathlib import Path
from typing import Any, Callable, Sequence

import dbus
import pytest
from dbus.lowlevel import HANDLER_RESULT_HANDLED, ErrorMessage
from hypothesis import given, settings
from hypothesis import strategies as st

from database import ACTION_SCHEMA, KEY_SCHEMA
from fuzzing import ANYTHING, ERROR, RANDOM_EVENTS, STANDARD, Call, calls
from operations import HOOKS, METHODS, STOP, Operation
from phones import Phone
from sandbox.client import REPLY_TIMEOUT, connect
from sandbox.loop import LIMIT, wait_until
from sanitizing import check_end, end_cleanly

pytestmark = pytest.mark.sanitizers

BURST = 20
SIGNATURE_WARNING = re.compile('dropped: its signature is ("[^"]*")')
QT_WARNING = 'QDBusSignature: invalid signature ""'
"""The warning of Qt about an argument that is an empty signature, which D-Bus permits."""
MAX_ROWS = 100
NO_REPLY_ERRORS = (
    "org.freedesktop.DBus.Error.NoReply",
    "org.freedesktop.DBus.Error.ServiceUnknown",
    "org.freedesktop.DBus.Error.Disconnected",
)
"""Errors that the bus or the client library returns if the service does not reply."""


class ReplyCounter:
    """Monitors the bus and counts the replies to each call of a peer, by serial number."""

    def __init__(self, address: str, peer: str) -> None:
        self.counts: Counter[int] = Counter()
        self._connection = connect(address)
        bus = "org.freedesktop.DBus"
        rules = [f"type='{kind}',destination='{peer}'" for kind in ("method_return", "error")]
        values = (dbus.Array(rules, signature="s"), dbus.UInt32(0))
        self._connection.call_blocking(
            bus, "/org/freedesktop/DBus", f"{bus}.Monitoring", "BecomeMonitor", "asu", values
        )
        self._connection.add_message_filter(self._receive)

    def _receive(self, _connection: object, message: Any) -> int:
        if message.get_reply_serial():
            self.counts[message.get_reply_serial()] += 1
        return HANDLER_RESULT_HANDLED

    def close(self) -> None:
        self._connection.close()


class Fuzzer:
    """Sends bursts of calls and events to the service."""

    def __init__(self, phone: Phone) -> None:
        self._phone = phone
        client = phone.client
        self._replies = ReplyCounter(phone.bus.address, client.connection.get_unique_name())
        self._files = self._open_files()
        self.sent = 0
        phone.service.log.take()

    def _open_files(self) -> int:
        return len(list(Path(f"/proc/{self._phone.service.pid}/fd").iterdir()))

    def send_calls(self, burst: Sequence[Call]) -> None:
        """Sends the calls and checks that each one gets exactly one reply, of the expected type."""
        sent = [(call, *self._send(call)) for call in burst]
        wait_until(lambda: all(replies for _, _, replies in sent), "all replies", 2 * LIMIT)
        for call, _, replies in sent:
            check_reply(call, replies[0])
        # When the monitor sees the reply to another call, it has seen all earlier replies.
        serial, _ = self._send(Call("getCapabilities", "", (), None, ANYTHING))
        wait_until(lambda: self._replies.counts[serial], "the monitor sees the last reply")
        for call, serial, _ in sent:
            assert self._replies.counts[serial] == 1, f"not exactly one reply: {call}"
        self.sent += len(burst)

    def _send(self, call: Call) -> tuple[int, list[Any]]:
        client, replies = self._phone.client, []
        message = client.message(
            call.member, call.signature, *call.values, interface=call.interface
        )
        client.connection.send_message_with_reply(
            message, replies.append, REPLY_TIMEOUT, require_main_loop=True
        )
        return message.get_serial(), replies

    def send_events(self, events: Sequence[tuple[str, tuple[Any, ...]]]) -> None:
        """Sends presses. The service must log a warning for each invalid signature."""
        for signature, values in events:
            self._phone.client.send_raw_event(f"s{signature}", "AOM_KEY_PRESS_EVENT", *values)
        self._phone.client.round_trip()
        invalid = [f'"s{signature}"' for signature, _ in events if signature != "a(svb)"]
        log = self._phone.service.log.take("warning")
        warnings = [line for line in log if QT_WARNING not in line]
        assert [SIGNATURE_WARNING.search(line)[1] for line in warnings] == invalid
        self.sent += len(events)

    def clean_up(self) -> None:
        """Limits the number of stored rows and of recorded events and calls."""
        if self._phone.database.value("SELECT count(*) FROM ACTION") > MAX_ROWS:
            self._phone.client.restore_factory()
        self._phone.events.take_received()
        self._phone.settings.calls.clear()

    def close(self) -> None:
        """Checks the data and the number of open files, and ends the service."""
        phone = self._phone
        assert phone.database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}
        phone.stored_rows()
        assert self._open_files() == self._files
        self._replies.close()
        end_cleanly(phone.service)


def check_reply(call: Call, reply: Any) -> None:
    is_error = isinstance(reply, ErrorMessage)
    assert not is_error or reply.get_error_name() not in NO_REPLY_ERRORS, f"no reply: {call}"
    found = ERROR if is_error else str(reply.get_signature())
    assert call.returns in (ANYTHING, found), f"the reply was {found!r}: {call}"


@pytest.fixture
def ready_phone(phones: Callable[..., Phone]) -> Phone:
    phone = phones(log_level=6)
    phone.start()
    return phone


@pytest.mark.parametrize(
    "operations",
    [METHODS, HOOKS, STANDARD],
    ids=["methods", "lifecycle", "standard interfaces"],
)
def test_each_random_call_gets_one_reply_of_the_expected_type(
    ready_phone, amount, summarize, operations: Sequence[Operation]
):
    fuzzer = Fuzzer(ready_phone)

    @settings(max_examples=amount(120, 4000))
    @given(st.lists(calls(operations), min_size=5, max_size=BURST))
    def check(burst: list[Call]) -> None:
        fuzzer.send_calls(burst)
        fuzzer.clean_up()

    check()
    fuzzer.close()
    summarize(f"{fuzzer.sent} calls, one reply to each, 0 crashes")


def test_random_events_do_no_harm(ready_phone, amount, summarize):
    fuzzer = Fuzzer(ready_phone)

    @settings(max_examples=amount(120, 4000))
    @given(st.lists(RANDOM_EVENTS, min_size=5, max_size=BURST))
    def check(events: list[tuple[str, tuple[Any, ...]]]) -> None:
        fuzzer.send_events(events)
        fuzzer.clean_up()

    check()
    fuzzer.close()
    summarize(f"{fuzzer.sent} events, 0 crashes")


def test_only_a_valid_call_of_stop_ends_the_service(ready_phone, amount, summarize):
    fuzzer = Fuzzer(ready_phone)
    invalid_calls = calls([STOP]).filter(lambda call: call.returns != STOP.returns)

    @settings(max_examples=amount(120, 4000))
    @given(invalid_calls)
    def check(call: Call) -> None:
        fuzzer.send_calls([call])

    check()
    assert STOP.result_of(STOP.send(ready_phone.client)) is True
    check_end(ready_phone.service)
    summarize(f"{fuzzer.sent} invalid calls with replies; the valid one ended the service")
