"""Calls that queue up before the service, and replies and events that queue up behind it."""

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
MOST_CALLS = 128
"""The bus lets so many calls of one client wait for their answers, and refuses more."""
CALLS_OF_A_CLIENT = 80

AT_ONCE = 1.0 * WAIT_FACTOR
"""Seconds until the service goes on."""
PROMPT = 5.0 * WAIT_FACTOR
"""Seconds until it has also done what others asked for before."""
MEMORY_LIMIT = 250 * WAIT_FACTOR
"""MiB that the service may occupy; more in a build with sanitizers."""

NO_NUMBER = -1
ALL_EVENTS = f"type='signal',interface='{EVENTS}'"

DEAF_PEER = f"""
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
"""Subscribes or makes calls, stops, and after SIGCONT waits for so many events and replies."""


@contextmanager
def deaf_peer(
    address: str, log: Path, rule: str = "", calls: int = 0, wanted: int = 1
) -> Iterator[Process]:
    """A peer in a process of its own that reads nothing."""
    arguments = [address, rule, str(calls), str(wanted)]
    with Process([sys.executable, "-c", DEAF_PEER, *arguments], clean_environment(), log) as peer:

        def is_stopped() -> bool:
            assert peer.running, peer.log.raw()
            state = Path(f"/proc/{peer.pid}/stat").read_text(encoding="utf-8")
            return state.rpartition(")")[2].split()[0] == "T"

        wait_until(is_stopped, "the peer has stopped")
        yield peer


def check_messages_waited(peer: Process) -> None:
    """As soon as the peer reads, it finds the messages that it wants."""
    peer.send_signal(signal.SIGCONT)
    assert peer.wait_for_exit() == 0, peer.log.raw()


class EventNumbers:
    """The number of each event of the service, in order; the events themselves are not kept.

    A message that is kept counts against what its receiver may have waiting.
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
    """A text of that size that begins with its number."""
    return f"{number:06}".ljust(size, "x")


def number_of(event: Event) -> int:
    """The number with which the label of the event's action begins, if there is one."""
    action = event.values.get("idAction")
    return int(action.label[:6]) if action else NO_NUMBER


def peak_memory(pid: int) -> float:
    """What a process has occupied at most, in MiB."""
    with open(f"/proc/{pid}/status", encoding="utf-8") as status:
        fields = dict(line.split(":", 1) for line in status)
    return int(fields["VmHWM"].split()[0]) / 1024


# Calls that wait for the service


class Round:
    """Calls queued while a creation waits for the SettingsManager, and then answered."""

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
        self._freed = time.monotonic()
        settings.release()
        assert creation.wait().values[0] > 0
        assert [reply.wait().values for reply in self._replies] == [(0,)] * len(self._replies)

    def _queue(self, client: Client, stored: Action, size: int) -> None:
        number = len(self._replies)
        record = stored._replace(label=numbered(number, size))

        def note() -> None:
            self.seconds.append(time.monotonic() - self._freed)
            self.order.append(number)

        self._replies.append(client.send("modifyAction", ACTION, record, on_reply=note))


@pytest.mark.parametrize(
    "size, callers", [(MEGABYTE, 1), (MEGABYTE // 10, 9)], ids=["80 of 1 MB", "720 of 100 kB"]
)
def test_many_megabytes_that_queue_up_during_a_read_are_all_answered_at_once_and_in_order(
    bus, start, client, settings, database, figures, size, callers
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
        # Each client reads its own answers; the events show the order over all of them.
        assert sorted(queued.order, key=lambda number: number // CALLS_OF_A_CLIENT) == numbers
        assert events.taken == [NO_NUMBER, *numbers]
        assert database.actions()[-1].label == numbered(numbers[-1], size)
        first = max(first, queued.seconds[0])
        peaks.append(peak_memory(service.pid))
    assert first < AT_ONCE
    assert peaks[1] < 1.5 * peaks[0], "memory grows from round to round"
    for caller in clients:
        caller.close()
    figures(
        f"2 x {len(numbers)} calls of {size} bytes, all answered in order, the first after at most"
        f" {first:.2f} s; at most {peaks[0]:.0f} MiB, then {peaks[1]:.0f} MiB of memory"
    )


# Replies and events that wait for a peer which does not read them


def test_a_client_that_never_reads_its_replies_keeps_nobody_waiting(
    bus, start, client, tmp_path, figures
):
    service = start(log_level=4)
    for number in range(9):
        client.add_action(CALL._replace(label=numbered(number, MEGABYTE // 10)))
    whole = client.get_all_actions()
    delays = []
    log = tmp_path / "deaf.log"
    with deaf_peer(bus.address, log, calls=MOST_CALLS, wanted=MOST_CALLS) as deaf:
        for _ in range(100):
            begun = time.monotonic()
            assert client.get_all_actions() == whole
            delays.append(time.monotonic() - begun)
        check_messages_waited(deaf)
    assert max(delays) < PROMPT
    assert peak_memory(service.pid) < MEMORY_LIMIT
    figures(
        f"{MOST_CALLS} calls whose replies of 0.9 MB nobody reads: 100 calls of others answered,"
        f" each within {max(delays):.2f} s; at most {peak_memory(service.pid):.0f} MiB of memory"
    )


@pytest.fixture
def small_receivers(monkeypatch) -> None:
    """A bus that gives each receiver half the room of each sender."""
    limit = f'<limit name="max_outgoing_bytes">{64 * 2**20}</limit>'
    configuration = CONFIGURATION.replace("</busconfig>", f"{limit}</busconfig>")
    monkeypatch.setattr("sandbox.bus.CONFIGURATION", configuration)


def test_a_subscriber_that_never_reads_keeps_nobody_waiting_where_receivers_have_less_room(
    small_receivers, bus, start, client, tmp_path, figures
):
    start(log_level=4)
    stored = CALL._replace(idAction=client.add_action(CALL))
    events = EventNumbers(client)
    with deaf_peer(bus.address, tmp_path / "deaf.log", ALL_EVENTS, wanted=50) as deaf:
        for number in range(200):
            changed = stored._replace(label=numbered(number, MEGABYTE))
            assert client.modify_action(changed) == 0
        check_messages_waited(deaf)
    client.round_trip()
    assert events.taken == list(range(200))
    figures("200 events of 1 MB that one peer does not read: all sent to the others at once")


def test_a_subscriber_that_never_reads_delays_others_at_most_until_it_leaves(
    bus, start, client, tmp_path, figures
):
    start(log_level=4)
    stored = CALL._replace(idAction=client.add_action(CALL))
    events = EventNumbers(client)
    replies: list[PendingReply] = []
    with deaf_peer(bus.address, tmp_path / "deaf.log", ALL_EVENTS):
        while len(replies) < 100 and answers(replies):
            changed = stored._replace(label=numbered(len(replies), 2 * MEGABYTE))
            replies.append(client.send("modifyAction", ACTION, changed))
        answered = sum(reply.arrived for reply in replies)
        assert answered < len(replies) < 100, "nobody was kept waiting"
    # The bus may keep what it has read of the service already until the service sends more.
    client.round_trip()
    assert [reply.wait().values for reply in replies] == [(0,)] * len(replies)
    assert events.taken == list(range(len(replies)))
    figures(
        f"{len(replies)} events of 2 MB that one peer does not read: {answered} calls answered"
        " before it left, all afterwards; nothing lost"
    )


def answers(replies: list[PendingReply]) -> bool:
    """Whether the last reply comes soon."""
    try:
        return not replies or bool(replies[-1].wait(limit=1 * WAIT_FACTOR))
    except WaitTimeout:
        return False
