"""Calls that queue up before the service, and replies and events that queue up behind it."""

import time

import pytest

from peers.event_notes import EventNotes
from peers.raw_connection import METHOD_RETURN, SIGNAL, RawCall, RawConnection
from samples import CALL, SET_KEY
from sandbox.bus import CONFIGURATION
from sandbox.client import Client, PendingReply
from sandbox.events import Event
from sandbox.loop import PATIENCE, GaveUp
from sandbox.names import EVENTS, INTERFACE, SERVICE, bus_name, object_path
from sandbox.records import ACTION, KEY, Action
from sandbox.settings import FakeSettingsManager

MEGABYTE = 10**6
MOST_CALLS = 128
"""The bus lets so many calls of one client wait for their answers, and refuses more."""

CALLS_OF_A_CLIENT = 80

AT_ONCE = 1.0 * PATIENCE
"""Seconds after which the service is at it again."""

PROMPT = 5.0 * PATIENCE
"""Seconds in which it has also done what others asked for before."""

MEMORY_LIMIT = 250 * PATIENCE
"""MiB that the service may occupy, whatever others do not read; more in a build with sanitizers."""

FULL = 100_000
"""Bytes: a socket that holds so many takes no further message of a megabyte."""

NO_NUMBER = -1
ALL_ACTIONS = RawCall(bus_name(SERVICE), object_path(SERVICE), INTERFACE, "getAllActions")
ALL_EVENTS = f"type='signal',interface='{EVENTS}'"


def numbered(number: int, size: int) -> str:
    """A text of that size that begins with its number."""
    return f"{number:06}".ljust(size, "x")


def number_of(event: Event) -> int:
    """The number with which the label of the event's action begins, if it is about an action."""
    action = event.values.get("idAction")
    return int(action.label[:6]) if action else NO_NUMBER


def peak_memory(pid: int) -> float:
    """What a process has occupied at most, in MiB."""
    with open(f"/proc/{pid}/status", encoding="utf-8") as status:
        fields = dict(line.split(":", 1) for line in status)
    return int(fields["VmHWM"].split()[0]) / 1024


# Calls that wait for the service


class Round:
    """Calls of one size, queued while a creation waits for the SettingsManager, and then answered."""

    def __init__(
        self, clients: list[Client], settings: FakeSettingsManager, stored: Action, size: int
    ) -> None:
        self.order: list[int] = []
        self.first = self.last = 0.0
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
            self.last = time.monotonic() - self._freed
            self.first = self.first or self.last
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
    notes = EventNotes(client, number_of)
    clients = [Client(bus.address, f"Caller{number}") for number in range(callers)]
    numbers = list(range(callers * CALLS_OF_A_CLIENT))
    rounds, peaks = [], []
    for _ in range(2):
        notes.taken.clear()
        queued = Round(clients, settings, stored, size)
        client.round_trip()
        # Each client reads its own answers; the events show the order over all of them.
        assert sorted(queued.order, key=lambda number: number // CALLS_OF_A_CLIENT) == numbers
        assert notes.taken == [NO_NUMBER, *numbers]
        assert database.actions()[-1].label == numbered(numbers[-1], size)
        assert queued.first < AT_ONCE
        rounds.append(f"first answer after {queued.first:.2f} s, last after {queued.last:.1f} s")
        peaks.append(peak_memory(service.pid))
    assert peaks[1] < 1.5 * peaks[0], "memory grows from round to round"
    for caller in clients:
        caller.close()
    figures(
        f"2 x {len(numbers)} calls of {size} bytes, all answered in order: {'; '.join(rounds)};"
        f" at most {peaks[0]:.0f} MiB, then {peaks[1]:.0f} MiB of memory"
    )


# Replies and events that wait for a peer which never reads them


def check_is_deaf(peer: RawConnection, kind: int, size: int) -> None:
    """The peer's socket is full, and what waits first is of that type and not smaller; it is read after all."""
    assert peer.unread > FULL
    message = peer.read()
    assert message.kind == kind and message.size >= size


def test_a_client_that_never_reads_its_replies_keeps_nobody_waiting(bus, start, client, figures):
    service = start(log_level=4)
    for number in range(9):
        client.add_action(CALL._replace(label=numbered(number, MEGABYTE // 10)))
    whole = client.get_all_actions()
    delays = []
    with RawConnection(bus.address) as deaf:
        deaf.send(ALL_ACTIONS, times=MOST_CALLS)
        for _ in range(100):
            begun = time.monotonic()
            assert client.get_all_actions() == whole
            delays.append(time.monotonic() - begun)
        check_is_deaf(deaf, METHOD_RETURN, 9 * MEGABYTE // 10)
    assert max(delays) < PROMPT
    assert client.get_all_actions() == whole
    assert peak_memory(service.pid) < MEMORY_LIMIT
    figures(
        f"{MOST_CALLS} calls whose replies of 0.9 MB nobody reads: 100 calls of others answered,"
        f" each within {max(delays):.2f} s; at most {peak_memory(service.pid):.0f} MiB of memory"
    )


@pytest.fixture
def stored(start, client) -> Action:
    """A stored user action of a service that logs little."""
    start(log_level=4)
    return CALL._replace(idAction=client.add_action(CALL))


@pytest.fixture
def small_receivers(monkeypatch) -> None:
    """A bus that gives each receiver half the room of each sender."""
    limit = f'<limit name="max_outgoing_bytes">{64 * 2**20}</limit>'
    configuration = CONFIGURATION.replace("</busconfig>", f"{limit}</busconfig>")
    monkeypatch.setattr("sandbox.bus.CONFIGURATION", configuration)


def test_a_subscriber_that_never_reads_keeps_nobody_waiting_where_senders_have_more_room_than_it(
    small_receivers, bus, stored, client, figures
):
    notes = EventNotes(client, number_of)
    with RawConnection(bus.address) as deaf:
        deaf.subscribe(ALL_EVENTS)
        for number in range(200):
            changed = stored._replace(label=numbered(number, MEGABYTE))
            assert client.modify_action(changed) == 0
        check_is_deaf(deaf, SIGNAL, MEGABYTE)
    client.round_trip()
    assert notes.taken == list(range(200))
    figures("200 events of 1 MB that one peer does not read: all told to the others at once")


def test_a_subscriber_that_never_reads_delays_others_at_most_until_it_leaves(
    bus, stored, client, figures
):
    notes = EventNotes(client, number_of)
    replies: list[PendingReply] = []
    with RawConnection(bus.address) as deaf:
        deaf.subscribe(ALL_EVENTS)
        while len(replies) < 100 and answers(replies):
            changed = stored._replace(label=numbered(len(replies), 2 * MEGABYTE))
            replies.append(client.send("modifyAction", ACTION, changed))
        answered = sum(reply.arrived for reply in replies)
        assert answered < len(replies) < 100, "nobody was kept waiting"
        check_is_deaf(deaf, SIGNAL, 2 * MEGABYTE)
    # The bus may keep what it has read of the service already until the service says more.
    client.round_trip()
    assert [reply.wait().values for reply in replies] == [(0,)] * len(replies)
    assert notes.taken == list(range(len(replies)))
    figures(
        f"{len(replies)} events of 2 MB that one peer does not read: {answered} calls answered"
        " before it left, all afterwards; nothing lost"
    )


def answers(replies: list[PendingReply]) -> bool:
    """Whether the last reply comes soon."""
    try:
        return not replies or bool(replies[-1].wait(limit=2 * PATIENCE))
    except GaveUp:
        return False
