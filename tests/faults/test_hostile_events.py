"""Invalid and unusual events, and large numbers of presses."""

import time
from typing import Any, Callable, Optional

import dbus
import pytest
from dbus.lowlevel import ErrorMessage, SignalMessage

from samples import MODULE_KEY, module_key_pressed
from sandbox.client import BusError, Client
from sandbox.events import Event
from sandbox.loop import LIMIT, wait_until
from sandbox.names import EVENTS, SERVICE, bus_name, object_path

PRESS = "AOM_KEY_PRESS_EVENT"
PLACE = {"aom_key_num": 5, "aom_type": 1, "addr": 2}
PLACE_ARGUMENTS = [(name, value, True) for name, value in PLACE.items()]
SIGNATURE = "sa(svb)"
LONG_TEXT = "0123456789abcdef" * 2**20
FLOOD = 10_000
INVALID_NUMBER = f"Argument aom_key_num passed to event {PRESS} has got an invalid value."
BUS = "org.freedesktop.DBus"

# The deepest nesting that the bus accepts inside the argument of an event.
DEEPEST_PAIRS = 31
DEEPEST_VARIANTS = 62


def nested(containers: int) -> Any:
    """A number inside that many arrays, each inside a structure."""
    value: Any = dbus.Int32(5)
    for _ in range(containers):
        value = dbus.Struct((dbus.Array([value]),))
    return value


def with_number(value: Any) -> list[tuple[str, Any, bool]]:
    """The arguments of a press with this key number."""
    return [("aom_key_num", value, True), *PLACE_ARGUMENTS[1:]]


VALUES = {
    "boolean": dbus.Boolean(True),
    "path": dbus.ObjectPath("/a/path"),
    "descriptor": dbus.types.UnixFd(2),
    "bytes": dbus.ByteArray(b"\x00\xff"),
    "structure": dbus.Struct((1, "a", (2.5, [True]))),
    "map of maps": dbus.Dictionary({"a": {"b": [("c", 1)]}}, signature="sa{sa(si)}"),
    "deep containers": nested(DEEPEST_PAIRS),
    "deep variants": dbus.Int32(5, variant_level=DEEPEST_VARIANTS),
    "16 MiB": LONG_TEXT,
}

VALID_PRESSES = {
    **{f"{name} first": [("other", VALUES[name], True), *PLACE_ARGUMENTS] for name in VALUES},
    "10,000 empty names first": [("", 1, True)] * 10_000 + PLACE_ARGUMENTS,
    "a name of 16 MiB": [(LONG_TEXT, 1, True), *PLACE_ARGUMENTS],
    "repeated names": PLACE_ARGUMENTS + with_number("no number"),
    "false flags": [(name, value, False) for name, value, _flag in PLACE_ARGUMENTS],
    "more arguments at the end": [*PLACE_ARGUMENTS, ("exists", False, True), ("", nested(5), True)],
}
"""Unusual events with the arguments of a press."""

INVALID_NUMBERS = {
    **{name: value for name, value in VALUES.items() if name != "boolean"},
    "a variant": dbus.Int32(5, variant_level=2),
    "a structure with the number": dbus.Struct((5,)),
    "an array with the number": dbus.Array([5]),
    "a text with a number of more than 32 bits": str(2**32 + 5),
}
"""Key numbers that are not 32-bit numbers."""

OTHER_SIGNATURES: dict[str, tuple[Any, ...]] = {
    "s" * 255: (PRESS,) * 255,
    "s" + "a" * 32 + "i": (PRESS, []),
    "sss": (PRESS, LONG_TEXT, LONG_TEXT[::2]),
}
"""Presses with other signatures. test_bus_fuzz tries many more."""

UNICAST_SIGNATURES: dict[str, tuple[Any, ...]] = {
    "as": ([PRESS],),
    "ay": (PRESS.encode(),),
    "asa(svb)": ([PRESS], PLACE_ARGUMENTS),
}
"""Signatures from which the bus library reads the event name in a signal to the service only."""

OTHER_NAMES = ("", PRESS.lower(), f"{PRESS}S", f" {PRESS}", f"{PRESS}'", "%1", "DB_RESET_NTF")


@pytest.fixture
def pressed(service, client, events, action) -> Event:
    """The event that a press of a stored key causes."""
    key = MODULE_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    events.take()
    service.log.take()
    return module_key_pressed(key, action, exists=True)


@pytest.fixture
def check(service, client, events, pressed) -> Callable[..., None]:
    """Sends something and then a valid press, and checks the events and the log lines."""

    def check_case(
        case: str, send: Callable[[], None], reports: int = 0, line: Optional[str] = None
    ) -> None:
        send()
        client.send_event(PRESS, **PLACE)
        assert events.take() == [pressed] * (reports + 1), case
        lines = service.log.take("warning", "error")
        assert lines == ([line] if line else []), case

    return check_case


@pytest.fixture
def send_directly(client) -> Callable[..., None]:
    """Sends a signal to the service only, which needs no subscription for it."""

    def send(
        signature: str,
        *body: Any,
        path: str = "/a/path",
        interface: str = EVENTS,
        member: str = "event",
    ) -> None:
        signal = SignalMessage(path, interface, member)
        signal.set_destination(bus_name(SERVICE))
        signal.append(*body, signature=signature)
        client.connection.send_message(signal)

    return send


# Signatures, names and values


@pytest.mark.sanitizers
def test_a_press_with_a_wrong_signature_causes_a_warning_and_the_next_press_is_reported(
    client, check, send_directly, summarize
):
    sender = client.connection.get_unique_name()
    for signature, body in {**OTHER_SIGNATURES, **UNICAST_SIGNATURES}.items():
        reason = f'dropped: its signature is "{signature}", not "{SIGNATURE}"'
        line = f"Event {PRESS} from {sender} {reason}"
        check(signature, lambda: send_directly(signature, *body), line=line)
        if signature in OTHER_SIGNATURES:
            check(signature, lambda: client.send_raw_event(signature, *body), line=line)
    count = len(OTHER_SIGNATURES) + len(UNICAST_SIGNATURES)
    summarize(f"{count} wrong signatures, all logged and dropped")


@pytest.mark.sanitizers
def test_an_unusual_event_with_the_arguments_of_a_press_is_reported(
    client, check, send_directly, summarize
):
    for name, arguments in VALID_PRESSES.items():
        check(name, lambda: client.send_raw_event(SIGNATURE, PRESS, arguments), reports=1)
        check(name, lambda: send_directly(SIGNATURE, PRESS, arguments), reports=1)
    summarize(f"{2 * len(VALID_PRESSES)} unusual presses, all reported once")


@pytest.mark.sanitizers
def test_a_press_with_an_invalid_number_is_logged_and_dropped(client, check, summarize):
    for name, value in INVALID_NUMBERS.items():
        arguments = with_number(value)
        check(name, lambda: client.send_raw_event(SIGNATURE, PRESS, arguments), line=INVALID_NUMBER)
    summarize(f"{len(INVALID_NUMBERS)} invalid numbers, all logged and dropped")


@pytest.mark.sanitizers
def test_an_event_with_another_name_is_ignored(client, check, send_directly, summarize):
    for name in OTHER_NAMES:
        check(name, lambda: client.send_event(name, **PLACE))
        check(name, lambda: send_directly(SIGNATURE, name, PLACE_ARGUMENTS))
    summarize(f"{2 * len(OTHER_NAMES)} events with other names, all ignored")


# Senders


def test_a_press_can_come_from_any_path_and_any_peer(bus, client, check, summarize):
    paths = ("/", "/a/b", "/x" * 1000, "/org/freedesktop/DBus")
    for path in paths:
        client.path = path
        check(path[:50], lambda: client.send_event(PRESS, **PLACE), reports=1)
    for number in range(5):
        check(f"peer {number}", lambda: press_and_disconnect(Client(bus.address)), reports=1)
    summarize(f"{len(paths)} paths and 5 senders that disconnected, all presses reported")


def press_and_disconnect(peer: Client) -> None:
    peer.send_event(PRESS, **PLACE)
    peer.bus_round_trip()
    peer.close()


def test_a_forged_event_or_message_of_the_bus_is_ignored(
    bus, client, check, send_directly, summarize
):
    for path in (object_path(SERVICE), "/", "/a/path"):
        check(f"call of {path}", lambda: call_event(client, path))
    check("error", lambda: send_unexpected_error(client))
    check("member", lambda: send_directly(SIGNATURE, PRESS, PLACE_ARGUMENTS, member="Event"))
    check("interface", lambda: send_directly(SIGNATURE, PRESS, PLACE_ARGUMENTS, interface="a.b"))
    name = bus_name(SERVICE)
    bodies = {"NameLost": (name,), "NameAcquired": (name,), "NameOwnerChanged": (name, ":1.1", "")}
    for member, body in bodies.items():
        check(member, lambda: send_directly("s" * len(body), *body, interface=BUS, member=member))
    check("disconnection", lambda: claim_disconnection(Client(bus.address)))
    summarize(f"{7 + len(bodies)} forged messages, all ignored")


def call_event(client: Client, path: str) -> None:
    with pytest.raises(BusError, match="UnknownInterface|UnknownObject"):
        client.call("event", SIGNATURE, PRESS, PLACE_ARGUMENTS, interface=EVENTS, path=path)


def send_unexpected_error(client: Client) -> None:
    """Sends the service an error reply to a call that the service did not make."""
    call = client.message("getCapabilities")
    client.connection.send_message(call)
    error = ErrorMessage(call, "a.b", PRESS)
    error.set_destination(bus_name(SERVICE))
    client.connection.send_message(error)


def claim_disconnection(sender: Client) -> None:
    """Sends a signal that only the bus library may send. The bus disconnects the sender."""
    local = f"{BUS}.Local"
    lost = SignalMessage(f"/{local.replace('.', '/')}", local, "Disconnected")
    lost.set_destination(bus_name(SERVICE))
    sender.connection.send_message(lost)
    with pytest.raises(dbus.DBusException, match="Disconnected"):
        sender.bus_round_trip()


# Floods


@pytest.mark.sanitizers
def test_ten_thousand_presses_are_reported_in_order_and_concurrent_calls_get_replies_in_time(
    bus, service, client, events, pressed, summarize
):
    other = Client(bus.address)
    delays: list[float] = []

    def call_now() -> None:
        begun = time.monotonic()
        other.send("getCapabilities", on_reply=lambda: delays.append(time.monotonic() - begun))
        other.connection.flush()

    begun = time.monotonic()
    for number in range(FLOOD):
        # Every other press is for a key that is not stored, with the number of the press.
        place = PLACE if number % 2 else {**PLACE, "aom_key_num": number, "addr": 3}
        client.send_event(PRESS, **place)
        if number % 500 == 0:
            client.connection.flush()
            call_now()
    wait_until(lambda: len(delays) == FLOOD // 500, "every call has a reply")
    client.round_trip()
    took = time.monotonic() - begun
    reports = events.take()
    assert reports[1::2] == [pressed] * (FLOOD // 2)
    assert [event.values["key"].position for event in reports[::2]] == list(range(0, FLOOD, 2))
    assert max(delays) < LIMIT / 2
    other.close()
    summarize(f"{FLOOD} presses in {took:.1f} s, all reported; calls within {max(delays):.1f} s")
