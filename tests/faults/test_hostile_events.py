"""Events malformed in every way that the bus lets through, and more of them than anybody can press."""

import os
import time
from typing import Any, Callable, Optional

import dbus
import pytest
from dbus.lowlevel import ErrorMessage, SignalMessage

from peers.hostile_events import (
    ANSWERED,
    BODIES_OF_OTHER_NAMES,
    BODIES_OF_OTHER_SHAPES,
    DEEPEST_PAIRS,
    DEEPEST_VARIANTS,
    HIDDEN_NAMES,
    NO_NUMBERS,
    OTHER_NAMES,
    PLACE,
    PLACE_ARGUMENTS,
    PRESS,
    SHAPE,
    nested,
    with_number,
    with_other,
    wrapped,
)
from samples import MODULE_KEY, module_key_pressed
from sandbox.client import BusError, Client
from sandbox.events import Event
from sandbox.loop import LIMIT, wait_until
from sandbox.names import EVENTS, SERVICE, SETTINGS_MANAGER, bus_name, object_path
from sandbox.records import Action, Key

FLOOD = 10_000
BAD_NUMBER = f"Argument aom_key_num passed to event {PRESS} has got an invalid value."
BUS = "org.freedesktop.DBus"


@pytest.fixture
def pressed(service, client, events, action) -> Event:
    """What a good press of a stored key is answered with."""
    key = MODULE_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    events.take()
    service.log.take()
    return module_key_pressed(key, action, exists=True)


@pytest.fixture
def check(service, client, events, pressed) -> Callable[..., None]:
    """Sends something, and holds the service to its answers and its lines, and to a good press."""

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
    """Sends a signal to the service alone, which needs no subscription of its."""

    def send(
        signature: str,
        *body: Any,
        path: str = "/a/path",
        interface: str = EVENTS,
        member: str = "event",
    ) -> None:
        signal = SignalMessage(path, interface, member)
        signal.set_destination(bus_name(SERVICE))
        if signature:
            signal.append(*body, signature=signature)
        client.connection.send_message(signal)

    return send


def warning(client: Client, signature: str) -> str:
    """What is logged of a press of this shape."""
    sender = client.connection.get_unique_name()
    return f'Event {PRESS} from {sender} dropped: its signature is "{signature}", not "{SHAPE}"'


# Shapes, names and values


@pytest.mark.sanitizers
def test_a_press_of_any_other_shape_is_warned_of_and_the_next_one_answered(
    client, check, send_directly, figures
):
    for signature, body in BODIES_OF_OTHER_SHAPES.items():
        line = warning(client, signature)
        check(signature, lambda: client.send_raw_event(signature, *body), line=line)
        check(signature, lambda: send_directly(signature, *body), line=line)
    for signature, body in HIDDEN_NAMES.items():
        check(signature, lambda: send_directly(signature, *body), line=warning(client, signature))
    tried = 2 * len(BODIES_OF_OTHER_SHAPES) + len(HIDDEN_NAMES)
    figures(f"{tried} presses of other shapes, all warned of and dropped")


@pytest.mark.sanitizers
def test_an_event_of_any_other_name_or_of_none_is_not_heard(
    client, check, send_directly, figures
):
    for signature, body in BODIES_OF_OTHER_NAMES.items():
        check(signature, lambda: client.send_raw_event(signature, *body) if signature else None)
        check(signature, lambda: send_directly(signature, *body))
    for name in OTHER_NAMES:
        check(name[:50], lambda: client.send_event(name, **PLACE))
        check(name[:50], lambda: send_directly(SHAPE, name, PLACE_ARGUMENTS))
    tried = 2 * (len(BODIES_OF_OTHER_NAMES) + len(OTHER_NAMES))
    figures(f"{tried} events of other names, none heard")


@pytest.mark.sanitizers
def test_a_strange_event_that_names_the_key_is_answered(client, check, send_directly, figures):
    for name, arguments in ANSWERED.items():
        check(name, lambda: client.send_raw_event(SHAPE, PRESS, arguments), answers=1)
        check(name, lambda: send_directly(SHAPE, PRESS, arguments), answers=1)
    figures(f"{2 * len(ANSWERED)} strange events that name the key, all answered once")


@pytest.mark.sanitizers
def test_a_number_that_is_none_is_told_of_and_the_press_dropped(client, check, figures):
    for name, value in NO_NUMBERS.items():
        arguments = with_number(value)
        check(name, lambda: client.send_raw_event(SHAPE, PRESS, arguments), line=BAD_NUMBER)
    repeated = with_number("none") + PLACE_ARGUMENTS
    check("repeated", lambda: client.send_raw_event(SHAPE, PRESS, repeated), line=BAD_NUMBER)
    figures(f"{len(NO_NUMBERS) + 1} numbers that are none, all told of and dropped")


def test_descriptors_that_come_with_events_are_closed(service, client, check, figures):
    handles = f"/proc/{service.pid}/fd"
    before = len(os.listdir(handles))
    event = with_other(*[dbus.types.UnixFd(2)] * 10)
    for number in range(100):
        check(f"event {number}", lambda: client.send_raw_event(SHAPE, PRESS, event), answers=1)
    assert len(os.listdir(handles)) == before
    figures("100 events with 10 descriptors each, all answered, none left open")


# Senders


def test_a_press_may_come_from_any_path_and_any_peer(bus, client, check, settings, figures):
    paths = ["/", "/_", "/9", "/a/b", "/x" * 1000, "/org/freedesktop/DBus"]
    for path in [*paths, object_path(SETTINGS_MANAGER)]:
        client.path = path
        check(path[:50], lambda: client.send_event(PRESS, **PLACE), answers=1)
    for number in range(20):
        passer_by = Client(bus.address)
        check(f"passer-by {number}", lambda: press_and_leave(passer_by), answers=1)
    figures(f"{len(paths) + 1} paths and 20 senders that left at once, all answered")


def press_and_leave(passer_by: Client) -> None:
    passer_by.send_event(PRESS, **PLACE)
    passer_by.bus_round_trip()
    passer_by.close()


def test_a_sender_that_goes_too_deep_is_cut_off_and_the_service_hears_nothing(
    bus, check, figures
):
    def send(argument: Any) -> None:
        sender = Client(bus.address)
        sender.send_raw_event(SHAPE, PRESS, with_other(argument))
        with pytest.raises(dbus.DBusException, match="Disconnected"):
            sender.bus_round_trip()

    check("containers", lambda: send(nested(DEEPEST_PAIRS + 1)))
    check("variants", lambda: send(wrapped(DEEPEST_VARIANTS + 1)))
    figures("2 events deeper than the bus allows, none reached the service")


def test_what_only_looks_like_an_event_or_like_the_bus_is_not_taken_for_one(
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
    figures(f"{7 + len(bodies)} messages that look like events or come as if from the bus, ignored")


def call_event(client: Client, path: str) -> None:
    with pytest.raises(BusError, match="UnknownInterface|UnknownObject"):
        client.call("event", SHAPE, PRESS, PLACE_ARGUMENTS, interface=EVENTS, path=path)


def send_unasked_error(client: Client) -> None:
    """Answers a call of one's own in the service's place."""
    call = client.message("getCapabilities")
    client.connection.send_message(call)
    error = ErrorMessage(call, "a.b", PRESS)
    error.set_destination(bus_name(SERVICE))
    client.connection.send_message(error)


def claim_disconnection(sender: Client) -> None:
    """Says what only the bus library itself says; the bus cuts off who tries."""
    local = f"{BUS}.Local"
    lost = SignalMessage(f"/{local.replace('.', '/')}", local, "Disconnected")
    lost.set_destination(bus_name(SERVICE))
    sender.connection.send_message(lost)
    with pytest.raises(dbus.DBusException, match="Disconnected"):
        sender.bus_round_trip()


# Floods


@pytest.mark.sanitizers
@pytest.mark.parametrize("is_stored", [True, False], ids=["stored key", "unprogrammed keys"])
def test_ten_thousand_presses_are_answered_in_order_and_calls_among_them_in_time(
    bus, service, client, events, pressed, figures, is_stored
):
    other = Client(bus.address)
    delays: list[float] = []

    def call_now() -> None:
        begun = time.monotonic()
        other.send("getCapabilities", on_reply=lambda: delays.append(time.monotonic() - begun))
        other.connection.flush()

    def press(number: int) -> None:
        place = PLACE if is_stored else {**PLACE, "aom_key_num": number, "addr": 3}
        client.send_event(PRESS, **place)
        if number % 500 == 0:
            client.connection.flush()
            call_now()

    begun = time.monotonic()
    for number in range(FLOOD):
        press(number)
    wait_until(lambda: len(delays) == FLOOD // 500, "every call is answered")
    client.round_trip()
    took = time.monotonic() - begun
    expected = [pressed if is_stored else unprogrammed(number) for number in range(FLOOD)]
    assert events.take() == expected
    assert max(delays) < LIMIT / 2
    other.close()
    figures(f"{FLOOD} presses in {took:.1f} s, all answered; calls within {max(delays):.1f} s")


def unprogrammed(number: int) -> Event:
    return module_key_pressed(
        Key(type=1, position=number, aom_type=1, aom_addr=3), Action(), exists=False
    )
