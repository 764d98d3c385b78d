"""Random calls and events, right and wrong: each call is answered once, and nothing breaks."""

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
from fuzzing import ANYTHING, ERROR, EVENTS_OF_ANY_KIND, STANDARD, Call, calls
from operations import HOOKS, METHODS, STOP, Operation
from phones import Phone
from sandbox.client import REPLY_TIMEOUT, connect
from sandbox.loop import LIMIT, wait_until
from sanitizing import check_end, end_cleanly

pytestmark = pytest.mark.sanitizers

BURST = 20
WARNED = re.compile('dropped: its signature is ("[^"]*")')
MOST_ROWS = 100
GIVEN_UP = (
    "org.freedesktop.DBus.Error.NoReply",
    "org.freedesktop.DBus.Error.ServiceUnknown",
    "org.freedesktop.DBus.Error.Disconnected",
)
"""Errors that the bus and the client's library answer with in the service's place."""


class ReplyCounter:
    """Counts the replies to one peer by the serials of its calls, as a monitor of the bus."""

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


class Barrage:
    """Sends bursts of calls and events to a phone's service."""

    def __init__(self, phone: Phone) -> None:
        self._phone = phone
        client = phone.client
        self._replies = ReplyCounter(phone.bus.address, client.connection.get_unique_name())
        self._files = self._open_files()
        self.sent = 0
        phone.service.log.take()

    def _open_files(self) -> int:
        return len(list(Path(f"/proc/{self._phone.service.pid}/fd").iterdir()))

    def fire(self, burst: Sequence[Call]) -> None:
        """Sends the calls; each must be answered once, and as its signature deserves."""
        sent = [(call, *self._send(call)) for call in burst]
        wait_until(lambda: all(replies for _, _, replies in sent), "a reply to each", 2 * LIMIT)
        for call, _, replies in sent:
            check_reply(call, replies[0])
        # The monitor has seen all replies before that to a further call.
        serial, _ = self._send(Call("getCapabilities", "", (), None, ANYTHING))
        wait_until(lambda: self._replies.counts[serial], "the monitor sees the last reply")
        for call, serial, _ in sent:
            assert self._replies.counts[serial] == 1, f"not answered once: {call}"
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
        """Sends presses; the service must warn of each whose signature is wrong."""
        for signature, values in events:
            self._phone.client.send_raw_event(f"s{signature}", "AOM_KEY_PRESS_EVENT", *values)
        self._phone.client.round_trip()
        wrong = [f'"s{signature}"' for signature, _ in events if signature != "a(svb)"]
        warnings = self._phone.service.log.take("warning")
        assert [WARNED.search(line)[1] for line in warnings] == wrong
        self.sent += len(events)

    def tidy(self) -> None:
        """Keeps what was stored and received from growing without end."""
        if self._phone.database.value("SELECT count(*) FROM ACTION") > MOST_ROWS:
            self._phone.client.restore_factory()
        self._phone.events.take_received()
        self._phone.settings.calls.clear()

    def close(self) -> None:
        """The service answers, its data are sound, it kept no file open, and it ends cleanly."""
        phone = self._phone
        assert phone.database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}
        phone.found()
        assert self._open_files() == self._files
        self._replies.close()
        end_cleanly(phone.service)


def check_reply(call: Call, reply: Any) -> None:
    is_error = isinstance(reply, ErrorMessage)
    assert not is_error or reply.get_error_name() not in GIVEN_UP, f"not answered: {call}"
    found = ERROR if is_error else str(reply.get_signature())
    assert call.returns in (ANYTHING, found), f"answered with {found!r}: {call}"


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
def test_each_call_is_answered_once_and_as_its_signature_deserves(
    ready_phone, amount, figures, operations: Sequence[Operation]
):
    barrage = Barrage(ready_phone)

    @settings(max_examples=amount(120, 4000))
    @given(st.lists(calls(operations), min_size=5, max_size=BURST))
    def check(burst: list[Call]) -> None:
        barrage.fire(burst)
        barrage.tidy()

    check()
    barrage.close()
    figures(f"{barrage.sent} calls, each answered once; 0 crashes")


def test_events_of_any_content_are_survived(ready_phone, amount, figures):
    barrage = Barrage(ready_phone)

    @settings(max_examples=amount(120, 4000))
    @given(st.lists(EVENTS_OF_ANY_KIND, min_size=5, max_size=BURST))
    def check(events: list[tuple[str, tuple[Any, ...]]]) -> None:
        barrage.send_events(events)
        barrage.tidy()

    check()
    barrage.close()
    figures(f"{barrage.sent} events; 0 crashes")


def test_only_a_right_call_of_stop_ends_the_service(ready_phone, amount, figures):
    barrage = Barrage(ready_phone)
    wrong_calls = calls([STOP]).filter(lambda call: call.returns != STOP.returns)

    @settings(max_examples=amount(120, 4000))
    @given(wrong_calls)
    def check(call: Call) -> None:
        barrage.fire([call])

    check()
    right = STOP.send(ready_phone.client)
    assert STOP.result_of(right) is True
    check_end(ready_phone.service)
    figures(f"{barrage.sent} wrong calls, all answered; the right one ended the service")
