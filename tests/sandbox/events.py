"""Platform events received from the bus."""

from typing import Any, Callable, NamedTuple, Optional

from dbus.lowlevel import HANDLER_RESULT_NOT_YET_HANDLED, MESSAGE_TYPE_SIGNAL

from .client import Client
from .loop import LIMIT, wait_until
from .names import EVENTS
from .records import plain, signature_of

EVENT_MEMBER = "event"
EVENT_SIGNATURE = "sa(svb)"


class Argument(NamedTuple):
    """An argument of an event: its plain value, and the signature that it had on the wire."""

    name: str
    signature: str
    value: Any
    flag: bool = True


class Event(NamedTuple):
    """A platform event with its arguments in order."""

    name: str
    arguments: tuple[Argument, ...] = ()

    def __str__(self) -> str:
        values = (f"{argument.name}={argument.value}" for argument in self.arguments)
        return f"{self.name}({', '.join(values)})"

    @property
    def values(self) -> dict[str, Any]:
        """The arguments' values by name."""
        return {argument.name: argument.value for argument in self.arguments}


def decode(message: Any) -> Event:
    """The event in a signal. Fails if the signal has another signature."""
    signature = str(message.get_signature())
    assert signature == EVENT_SIGNATURE, f"an event has the signature {signature}"
    name, arguments = message.get_args_list()
    return Event(
        str(name),
        tuple(
            Argument(str(label), signature_of(value), plain(value), bool(flag))
            for label, value, flag in arguments
        ),
    )


class EventRecorder:
    """Records all events on the bus, or only those of the object at `path`."""

    def __init__(
        self,
        client: Client,
        path: Optional[str] = None,
        on_event: Optional[Callable[[Event], None]] = None,
    ) -> None:
        self._client = client
        self._path = path
        self.on_event = on_event
        self._signals: list[Any] = []
        rule = f"type='signal',interface='{EVENTS}',member='{EVENT_MEMBER}'"
        client.connection.add_message_filter(self._receive)
        client.connection.add_match_string(rule if path is None else f"{rule},path='{path}'")

    def _receive(self, _connection: object, message: Any) -> int:
        if (
            message.get_type() == MESSAGE_TYPE_SIGNAL
            and message.get_interface() == EVENTS
            and message.get_member() == EVENT_MEMBER
            and self._path in (None, message.get_path())
        ):
            self._signals.append(message)
            if self.on_event is not None:
                self.on_event(decode(message))
        return HANDLER_RESULT_NOT_YET_HANDLED

    def seen(self) -> list[Event]:
        """The events received so far that `take` has not returned."""
        return [decode(message) for message in self._signals]

    def wait_for(self, name: str, limit: float = LIMIT) -> Event:
        """Waits for an event of that name and returns the first one. Does not take it."""

        def found() -> Optional[Event]:
            return next((event for event in self.seen() if event.name == name), None)

        return wait_until(found, f"event {name}", limit)

    def take(self) -> list[Event]:
        """Returns all events that the service has sent since the last call, in order.

        Makes a call first: the service's events and replies arrive in order on one connection, so
        when the reply is here, so is every event that was sent before it.
        """
        self._client.round_trip()
        return self.take_received()

    def take_received(self) -> list[Event]:
        """Returns the events received since the last call. Use it when the service has ended."""
        events = self.seen()
        self._signals.clear()
        return events
