"""Queued calls to the service, and replies and events that a peer does not read."""

import signal
import sys
import time
from contextlib import contextmanager
from pathlib import Path
from typing import Any, Iterator

import pytest
from dbus.lowlevel import HANDLER_RESULT_NOT_YET_HANDLED, MESSAGE_TYPE_SIGNAL

from samples import CALL, SET_KEY
from sandbox.bus import CONFIGURATION
from sandbox.client import Client, PendingReply
from sandbox.events import Event, decode
from sandbox.loop import WAIT_FACTOR, WaitTimeout, wait_until
from sandbox.names import EVENTS, INTERFACE, SERVICE, bus_name, object_path
from sandbox.processes import Process, clean_environment
from sandbox.records import ACTION, KEY, Action
from sandbox.settings import FakeSettingsManager

MEGABYTE = 10**6
MAX_PENDING_CALLS = 128
"""The number of pending calls that the bus allows a client."""
CALLS_OF_A_CLIENT = 80

FIRST_REPLY_LIMIT = 1.0 * WAIT_FACTOR
"""The limit in seconds for the first reply after a wait."""
REPLY_LIMIT = 5.0 * WAIT_FACTOR
"""The limit in seconds for a reply while the service also handles calls of other clients."""
MEMORY_LIMIT = 250 * WAIT_FACTOR
"""The limit of the service's memory in MiB. Sanitizer builds need more."""

NO_NUMBER = -1
ALL_EVENTS = f"type='signal',interface='{EVENTS}'"

STALLED_PEER = f"""
import os, signal, sys
import dbus.bus, dbus.lowlevel, dbus.mainloop.glib
from gi.repository import GLib

address, rule, calls, wanted = sys.argv[1:]
bus = dbus.bus.BusConnection(address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
received = []

def receive(_bus, message):
    is_reply = message.get_type() == dbus.lowlevel.MESSAGE_TYPE_METHOD_RETURN
    if is_reply or message.get_member() == "event":
        received.append(len(message.get_args_list()))

bus.add_message_filter(receive)
if rule:
    bus.add_match_string(rule)
for _ in range(int(calls)):
    bus.send_message(
        dbus.lowlevel.MethodCallMessage(
            "{bus_name(SERVICE)}", "{object_path(SERVICE)}", "{INTERFACE}", "getAllActions"
        )
    )
bus.flush()
os.kill(os.getpid(), signal.SIGSTOP)
while len(received) < int(wanted):
    GLib.MainContext.default().iteration(True)
"""
"""Subscribes or makes calls, stops, and after SIGCONT waits for that many events and replies."""


@contextmanager
def stalled_peer(
    address: str, log: Path, rule: str = "", calls: int = 0, wanted: int = 1
) -> Iterator[Process]:
    """A peer process that is stopped and therefore reads nothing."""
    arguments = [address, rule, str(calls), str(wanted)]
    command = [sys.executable, "-c", STALLED_PEER, *arguments]
    with Process(command, clean_environment(), log) as peer:

        def is_stopped() -> bool:
            assert peer.running, peer.log.raw()
            state = Path(f"/proc/{peer.pid}/stat").read_text(encoding="utf-8")
            return state.rpartition(")")[2].split()[0] == "T"

        wait_until(is_stopped, "the peer has stopped")
        yield peer


def check_messages_waited(peer: Process) -> None:
    """Continues the peer and checks that it receives the messages that it wants."""
    peer.send_signal(signal.SIGCONT)
    assert peer.wait_for_exit() == 0, peer.log.raw()


class EventNumbers:
    """Records the number of each event, but not the event.

    A stored message would count towards the limit of the receive queue.
    """

    def __init__(self, client: Client) -> None:
        self.taken: list[int] = []
        client.connection.add_message_filter(self._receive)
        rule = f"type='signal',interface='{EVENTS}',path='{object_path(SERVICE)}'"
        client.connection.add_match_string(rule)

    def _receive(self, _connection: object, message: Any) -> int:
        if message.get_type() == MESSAGE_TYPE_SIGNAL and message.get_interface() == EVENTS:
            self.taken.append(number_of(decode(message)))
        return HANDLER_RESULT_NOT_YET_HANDLED


def numbered(number: int, size: int) -> str:
    """A text of that size that begins with the number."""
    return f"{number:06}".ljust(size, "x")


def number_of(event: Event) -> int:
    """The number at the beginning of the label of the event's action, if there is an action."""
    action = event.values.get("idAction")
    return int(action.label[:6]) if action else NO_NUMBER


def peak_memory(pid: int) -> float:
    """The peak memory use of a process in MiB."""
    with open(f"/proc/{pid}/status", encoding="utf-8") as status:
        fields = dict(line.split(":", 1) for line in status)
    return int(fields["VmHWM"].split()[0]) / 1024


# Queued calls


class Round:
    """Calls that are queued while another call waits for the SettingsManager."""

    def __init__(
        self, clients: list[Client], settings: FakeSettingsManager, stored: Action, size: int
    ) -> None:
        self.order: list[int] = []
        self.seconds: list[float] = []
        self._replies: list[PendingReply] = []
        calls = len(settings.calls)
        settings.hang()
        key = SET_KEY._replace(idAction=stored.idAction)
        creation = clients[0].send("createProgrammableKey", KEY, key)
        settings.wait_for_calls(calls + 1)
        for client in clients:
            for _ in range(CALLS_OF_A_CLIENT):
                self._queue(client, stored, size)
            client.connection.flush()
            client.bus_round_trip()
        self._released = time.monotonic()
        settings.release()
        assert creation.wait().values[0] > 0
        assert [reply.wait().values for reply in self._replies] == [(0,)] * len(self._replies)

    def _queue(self, client: Client, stored: Action, size: int) -> None:
        number = len(self._replies)
        record = stored._replace(label=numbered(number, size))

        def note() -> None:
            self.seconds.append(time.monotonic() - self._released)
            self.order.append(number)

        self._replies.append(client.send("modifyAction", ACTION, record, on_reply=note))


@pytest.mark.parametrize(
    "size, callers", [(MEGABYTE, 1), (MEGABYTE // 10, 9)], ids=["80 of 1 MB", "720 of 100 kB"]
)
def test_many_megabytes_of_queued_calls_get_prompt_replies_in_order(
    bus, start, client, settings, database, summarize, size, callers
):
    service = start(log_level=4)
    stored = CALL._replace(idAction=client.add_action(CALL))
    events = EventNumbers(client)
    clients = [Client(bus.address, f"Caller{number}") for number in range(callers)]
    numbers = list(range(callers * CALLS_OF_A_CLIENT))
    peaks, first = [], 0.0
    for _ in range(2):
        events.taken.clear()
        queued = Round(clients, settings, stored, size)
        client.round_trip()
        # Each client receives only its own replies. The events show the order of all calls.
        assert sorted(queued.order, key=lambda number: number // CALLS_OF_A_CLIENT) == numbers
        assert events.taken == [NO_NUMBER, *numbers]
        assert database.actions()[-1].label == numbered(numbers[-1], size)
        first = max(first, queued.seconds[0])
        peaks.append(peak_memory(service.pid))
    assert first < FIRST_REPLY_LIMIT
    assert peaks[1] < 1.5 * peaks[0], "the memory grows in each round"
    for caller in clients:
        caller.close()
    summarize(
        f"2 x {len(numbers)} calls of {size} bytes, all replies in order, the first after at most"
        f" {first:.2f} s; peak memory {peaks[0]:.0f} MiB, then {peaks[1]:.0f} MiB"
    )


# Replies and events that a peer does not read


def test_a_client_that_does_not_read_its_replies_does_not_delay_other_clients(
    bus, start, client, tmp_path, summarize
):
    service = start(log_level=4)
    for number in range(9):
        client.add_action(CALL._replace(label=numbered(number, MEGABYTE // 10)))
    actions = client.get_all_actions()
    delays = []
    log = tmp_path / "peer.log"
    count = MAX_PENDING_CALLS
    with stalled_peer(bus.address, log, calls=count, wanted=count) as peer:
        for _ in range(100):
            begun = time.monotonic()
            assert client.get_all_actions() == actions
            delays.append(time.monotonic() - begun)
        check_messages_waited(peer)
    assert max(delays) < REPLY_LIMIT
    assert peak_memory(service.pid) < MEMORY_LIMIT
    summarize(
        f"{count} unread replies of 0.9 MB: 100 calls of another client, each within"
        f" {max(delays):.2f} s; peak memory {peak_memory(service.pid):.0f} MiB"
    )


@pytest.fixture
def small_send_queues(monkeypatch) -> None:
    """A bus whose queue for each receiver is half as long as that for each sender."""
    limit = f'<limit name="max_outgoing_bytes">{64 * 2**20}</limit>'
    configuration = CONFIGURATION.replace("</busconfig>", f"{limit}</busconfig>")
    monkeypatch.setattr("sandbox.bus.CONFIGURATION", configuration)


def test_a_stalled_subscriber_does_not_delay_others_if_receivers_have_smaller_queues(
    small_send_queues, bus, start, client, tmp_path, summarize
):
    start(log_level=4)
    stored = CALL._replace(idAction=client.add_action(CALL))
    events = EventNumbers(client)
    with stalled_peer(bus.address, tmp_path / "peer.log", ALL_EVENTS, wanted=50) as peer:
        for number in range(200):
            changed = stored._replace(label=numbered(number, MEGABYTE))
            assert client.modify_action(changed) == 0
        check_messages_waited(peer)
    client.round_trip()
    assert events.taken == list(range(200))
    summarize("200 events of 1 MB that one peer does not read: the others get them without delay")


def test_a_stalled_subscriber_delays_others_only_until_it_disconnects(
    bus, start, client, tmp_path, summarize
):
    start(log_level=4)
    stored = CALL._replace(idAction=client.add_action(CALL))
    events = EventNumbers(client)
    replies: list[PendingReply] = []
    with stalled_peer(bus.address, tmp_path / "peer.log", ALL_EVENTS):
        while len(replies) < 100 and last_reply_arrives(replies):
            changed = stored._replace(label=numbered(len(replies), 2 * MEGABYTE))
            replies.append(client.send("modifyAction", ACTION, changed))
        answered = sum(reply.arrived for reply in replies)
        assert answered < len(replies) < 100, "no call was delayed"
    # The bus may hold messages that it has already read until the service sends more.
    client.round_trip()
    assert [reply.wait().values for reply in replies] == [(0,)] * len(replies)
    assert events.taken == list(range(len(replies)))
    summarize(
        f"{len(replies)} events of 2 MB that one peer does not read: {answered} replies before it"
        " disconnected, all others afterwards, 0 lost"
    )


def last_reply_arrives(replies: list[PendingReply]) -> bool:
    """Whether the last reply arrives within a second."""
    try:
        return not replies or bool(replies[-1].wait(limit=1 * WAIT_FACTOR))
    except WaitTimeout:
        return False
