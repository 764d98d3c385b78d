"""Settings: a directory for the real SettingsManager, and a fake SettingsManager."""

from pathlib import Path
from typing import Any, Callable, Mapping, NamedTuple, Optional

from dbus.lowlevel import (
    HANDLER_RESULT_HANDLED,
    HANDLER_RESULT_NOT_YET_HANDLED,
    MESSAGE_TYPE_METHOD_CALL,
    ErrorMessage,
    MethodReturnMessage,
)
from gi.repository import GLib

from .client import connect
from .loop import LIMIT, wait_until
from .names import SETTINGS_MANAGER, UNKNOWN_SETTING, bus_name, object_path
from .records import plain

NO_DEFAULTS = {"DefaultActions": "", "DefaultKeys": ""}
"""The settings of a phone without provisioned defaults."""


def write_settings(directory: Path, settings: Mapping[str, str]) -> Path:
    """Writes one file for each setting, for the SettingsManager peer."""
    directory.mkdir(parents=True, exist_ok=True)
    for name, value in settings.items():
        (directory / name).write_text(f"{value}\n", encoding="utf-8")
    return directory


class SettingCall(NamedTuple):
    """A call that the fake peer received."""

    path: str
    interface: str
    method: str
    signature: str
    arguments: tuple[Any, ...]


Answer = Callable[[Any], Optional[Any]]
"""Returns the reply to a message, or None to send no reply."""


class FakeSettingsManager:
    """A SettingsManager on the main loop. It replies from `values` until a test changes that."""

    def __init__(self, address: str, values: Optional[Mapping[str, str]] = None) -> None:
        self.values = dict(NO_DEFAULTS if values is None else values)
        self.calls: list[SettingCall] = []
        self._held: list[Any] = []
        self._answer: Answer = self._from_values
        self._connection = connect(address)
        self._connection.add_message_filter(self._receive)
        self._connection.request_name(bus_name(SETTINGS_MANAGER))

    def close(self) -> None:
        """Disconnects from the bus. The bus then replies to waiting calls with an error."""
        self._connection.close()

    def _receive(self, _connection: object, message: Any) -> int:
        if message.get_type() != MESSAGE_TYPE_METHOD_CALL:
            return HANDLER_RESULT_NOT_YET_HANDLED
        self.calls.append(
            SettingCall(
                str(message.get_path()),
                str(message.get_interface()),
                str(message.get_member()),
                str(message.get_signature()),
                tuple(plain(value) for value in message.get_args_list()),
            )
        )
        self._reply(message)
        return HANDLER_RESULT_HANDLED

    def _reply(self, message: Any) -> None:
        reply = self._answer(message)
        if reply is not None:
            self._connection.send_message(reply)

    def _from_values(self, message: Any) -> Any:
        name = str(message.get_args_list()[0])
        if (message.get_path(), message.get_member()) != (
            object_path(SETTINGS_MANAGER),
            "getSettingValue",
        ):
            return ErrorMessage(
                message, "org.freedesktop.DBus.Error.UnknownMethod", "no such method"
            )
        if name not in self.values:
            return ErrorMessage(message, UNKNOWN_SETTING, f"no setting {name}")
        reply = MethodReturnMessage(message)
        reply.append(self.values[name], signature="s")
        return reply

    # Behavior

    def answer_from_values(self) -> None:
        """From now on replies from `values`."""
        self._answer = self._from_values

    def answer_with(self, signature: str, *body: Any) -> None:
        """From now on replies to every call with this body, which may be empty."""

        def answer(message: Any) -> Any:
            reply = MethodReturnMessage(message)
            if signature:
                reply.append(*body, signature=signature)
            return reply

        self._answer = answer

    def fail(self, error_name: str, text: str = "refused") -> None:
        """From now on replies to every call with an error."""
        self._answer = lambda message: ErrorMessage(message, error_name, text)

    def hang(self) -> None:
        """From now on replies to no call."""
        self._answer = self._held.append

    def release(self) -> None:
        """Replies to the calls that wait, in order, and to later calls, from `values`."""
        self.answer_from_values()
        held, self._held = self._held, []
        for message in held:
            self._reply(message)
        self._connection.flush()

    def disconnect_on_call(self) -> None:
        """Disconnects from the bus at the next call, without a reply."""

        def leave() -> bool:
            self.close()
            return GLib.SOURCE_REMOVE

        self._answer = lambda _message: GLib.idle_add(leave) and None

    # Received calls

    def names_read(self) -> list[str]:
        """The names of the requested settings, in order."""
        return [call.arguments[0] for call in self.calls]

    def wait_for_calls(self, count: int, limit: float = LIMIT) -> None:
        """Waits until that many calls have arrived in total."""
        wait_until(lambda: len(self.calls) >= count, f"{count} calls of {SETTINGS_MANAGER}", limit)
