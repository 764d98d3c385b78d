"""Notes about events, for a test that could not keep them all."""

from typing import Any, Callable

from dbus.lowlevel import HANDLER_RESULT_NOT_YET_HANDLED, MESSAGE_TYPE_SIGNAL

from sandbox.client import Client
from sandbox.events import Event, decode
from sandbox.names import EVENTS, SERVICE, object_path


class EventNotes:
    """Notes something of each event of the service, in order, and keeps no event.

    A message that is kept counts against what its receiver may have waiting.
    """

    def __init__(self, client: Client, note: Callable[[Event], Any]) -> None:
        self.taken: list[Any] = []
        self._note = note
        client.connection.add_message_filter(self._receive)
        client.connection.add_match_string(
            f"type='signal',interface='{EVENTS}',path='{object_path(SERVICE)}'"
        )

    def _receive(self, _connection: object, message: Any) -> int:
        if message.get_type() == MESSAGE_TYPE_SIGNAL and message.get_interface() == EVENTS:
            self.taken.append(self._note(decode(message)))
        return HANDLER_RESULT_NOT_YET_HANDLED
