"""Events that nobody should send, and more presses than anybody can make."""

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
SHAPE = "sa(svb)"
LONG_TEXT = "0123456789abcdef" * 2**20
FLOOD = 10_000
BAD_NUMBER = f"Argument aom_key_num passed to event {PRESS} has got an invalid value."
BUS = "org.freedesktop.DBus"

# What the bus still lets through inside the argument of an event.
DEEPEST_PAIRS = 31
DEEPEST_VARIANTS = 62


def nested(containers: int) -> Any:
    """A number inside so many arrays, each of them in a structure."""
    value: Any = dbus.Int32(5)
    for _ in range(containers):
        value = dbus.Struct((dbus.Array([value]),))
    return value


def with_number(value: Any) -> list[tuple[str, Any, bool]]:
    """A press whose key number is this."""
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

ANSWERED = {
    **{f"{name} before": [("other", VALUES[name], True), *PLACE_ARGUMENTS] for name in VALUES},
    "10,000 empty names before": [("", 1, True)] * 10_000 + PLACE_ARGUMENTS,
    "a name of 16 MiB": [(LONG_TEXT, 1, True), *PLACE_ARGUMENTS],
    "names repeated, of which the first count": PLACE_ARGUMENTS + with_number("no number"),
    "flags that are false": [(name, value, False) for name, value, _flag in PLACE_ARGUMENTS],
    "arguments behind": [*PLACE_ARGUMENTS, ("exists", False, True), ("", nested(5), True)],
}
"""Events that are strange, but name the pressed key."""

NO_NUMBERS = {
    **{name: value for name, value in VALUES.items() if name != "boolean"},
    "a variant": dbus.Int32(5, variant_level=2),
    "structure of the number": dbus.Struct((5,)),
    "array of the number": dbus.Array([5]),
    "5 beyond 32 bits, as text": str(2**32 + 5),
}
"""Key numbers that are no numbers."""

OTHER_SHAPES: dict[str, tuple[Any, ...]] = {
    "s" * 255: (PRESS,) * 255,
    "s" + "a" * 32 + "i": (PRESS, []),
    "sss": (PRESS, LONG_TEXT, LONG_TEXT[::2]),
}
"""Presses of other signatures, of which the fuzzing of the bus tries many more."""

HIDDEN_NAMES: dict[str, tuple[Any, ...]] = {
    "as": ([PRESS],),
    "ay": (PRESS.encode(),),
    "asa(svb)": ([PRESS], PLACE_ARGUMENTS),
}
"""Bodies from which the bus library still reads the name, sent to the service alone."""

OTHER_NAMES = ("", PRESS.lower(), f"{PRESS}S", f" {PRESS}", f"{PRESS}'", "%1", "DB_RESET_NTF")


@pytest.fixture
def pressed(service, client, events, action) -> Event:
    """The answer to a good press of a stored key."""
    key = MODULE_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    events.take()
    service.log.take()
    return module_key_pressed(key, action, exists=True)


@pytest.fixture
def check(service, client, events, pressed) -> Callable[..., None]:
    """Sends something, and then a good press, and compares the answers and the log lines."""

    def check_case(
        case: str, send: Callable[[], None], answers: int = 0, line: Optional[str] = None
    ) -> None:
        send()
        client.send_event(PRESS, **PLACE)
        assert events.take() == [pressed] * (answers + 1), case
        lines = service.log.take("warning", "error")
        assert lines == ([line] if line else []), case

    return check_case


@pytest.fixture
def send_directly(client) -> Callable[..., None]:
    """Sends a signal to the service alone, for which it needs no subscription."""

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


# Shapes, names and values


@pytest.mark.sanitizers
def test_a_press_of_another_shape_is_warned_of_and_the_next_one_is_answered(
    client, check, send_directly, figures
):
    sender = client.connection.get_unique_name()
    for signature, body in {**OTHER_SHAPES, **HIDDEN_NAMES}.items():
        told = f'dropped: its signature is "{signature}", not "{SHAPE}"'
        line = f"Event {PRESS} from {sender} {told}"
        check(signature, lambda: send_directly(signature, *body), line=line)
        if signature in OTHER_SHAPES:
            check(signature, lambda: client.send_raw_event(signature, *body), line=line)
    figures(f"{len(OTHER_SHAPES) + len(HIDDEN_NAMES)} other shapes, all warned of and dropped")


@pytest.mark.sanitizers
def test_a_strange_event_that_names_the_key_is_answered(client, check, send_directly, figures):
    for name, arguments in ANSWERED.items():
        check(name, lambda: client.send_raw_event(SHAPE, PRESS, arguments), answers=1)
        check(name, lambda: send_directly(SHAPE, PRESS, arguments), answers=1)
    figures(f"{2 * len(ANSWERED)} strange events that name the key, all answered once")


@pytest.mark.sanitizers
def test_a_value_that_is_no_number_is_logged_and_the_press_dropped(client, check, figures):
    for name, value in NO_NUMBERS.items():
        arguments = with_number(value)
        check(name, lambda: client.send_raw_event(SHAPE, PRESS, arguments), line=BAD_NUMBER)
    figures(f"{len(NO_NUMBERS)} values that are no numbers, all logged and dropped")


@pytest.mark.sanitizers
def test_an_event_of_another_name_is_not_heard(client, check, send_directly, figures):
    for name in OTHER_NAMES:
        check(name, lambda: client.send_event(name, **PLACE))
        check(name, lambda: send_directly(SHAPE, name, PLACE_ARGUMENTS))
    figures(f"{2 * len(OTHER_NAMES)} events of other names, none heard")


# Senders


def test_a_press_may_come_from_any_path_and_any_peer(bus, client, check, figures):
    paths = ("/", "/a/b", "/x" * 1000, "/org/freedesktop/DBus")
    for path in paths:
        client.path = path
        check(path[:50], lambda: client.send_event(PRESS, **PLACE), answers=1)
    for number in range(5):
        check(f"passer-by {number}", lambda: press_and_leave(Client(bus.address)), answers=1)
    figures(f"{len(paths)} paths and 5 senders that left at once, all answered")


def press_and_leave(passer_by: Client) -> None:
    passer_by.send_event(PRESS, **PLACE)
    passer_by.bus_round_trip()
    passer_by.close()


def test_a_message_that_imitates_an_event_or_the_bus_is_ignored(
    bus, client, check, send_directly, figures
):
    for path in (object_path(SERVICE), "/", "/a/path"):
        check(f"call of {path}", lambda: call_event(client, path))
    check("error", lambda: send_unasked_error(client))
    check("member", lambda: send_directly(SHAPE, PRESS, PLACE_ARGUMENTS, member="Event"))
    check("interface", lambda: send_directly(SHAPE, PRESS, PLACE_ARGUMENTS, interface="a.b"))
    name = bus_name(SERVICE)
    bodies = {"NameLost": (name,), "NameAcquired": (name,), "NameOwnerChanged": (name, ":1.1", "")}
    for member, body in bodies.items():
        check(member, lambda: send_directly("s" * len(body), *body, interface=BUS, member=member))
    check("disconnection", lambda: claim_disconnection(Client(bus.address)))
    figures(f"{7 + len(bodies)} messages that imitate events or the bus, ignored")


def call_event(client: Client, path: str) -> None:
    with pytest.raises(BusError, match="UnknownInterface|UnknownObject"):
        client.call("event", SHAPE, PRESS, PLACE_ARGUMENTS, interface=EVENTS, path=path)


def send_unasked_error(client: Client) -> None:
    """Answers a call of its own in the service's place."""
    call = client.message("getCapabilities")
    client.connection.send_message(call)
    error = ErrorMessage(call, "a.b", PRESS)
    error.set_destination(bus_name(SERVICE))
    client.connection.send_message(error)


def claim_disconnection(sender: Client) -> None:
    """Sends what only the bus library itself sends; the bus cuts off who tries."""
    local = f"{BUS}.Local"
    lost = SignalMessage(f"/{local.replace('.', '/')}", local, "Disconnected")
    lost.set_destination(bus_name(SERVICE))
    sender.connection.send_message(lost)
    with pytest.raises(dbus.DBusException, match="Disconnected"):
        sender.bus_round_trip()


# Floods


@pytest.mark.sanitizers
def test_ten_thousand_presses_are_answered_in_order_and_calls_among_them_in_time(
    bus, service, client, events, pressed, figures
):
    other = Client(bus.address)
    delays: list[float] = []

    def call_now() -> None:
        begun = time.monotonic()
        other.send("getCapabilities", on_reply=lambda: delays.append(time.monotonic() - begun))
        other.connection.flush()

    begun = time.monotonic()
    for number in range(FLOOD):
        # Every other press is that of a key without a record, and tells its number.
        place = PLACE if number % 2 else {**PLACE, "aom_key_num": number, "addr": 3}
        client.send_event(PRESS, **place)
        if number % 500 == 0:
            client.connection.flush()
            call_now()
    wait_until(lambda: len(delays) == FLOOD // 500, "every call is answered")
    client.round_trip()
    took = time.monotonic() - begun
    answers = events.take()
    assert answers[1::2] == [pressed] * (FLOOD // 2)
    assert [event.values["key"].position for event in answers[::2]] == list(range(0, FLOOD, 2))
    assert max(delays) < LIMIT / 2
    other.close()
    figures(f"{FLOOD} presses in {took:.1f} s, all answered; calls within {max(delays):.1f} s")
