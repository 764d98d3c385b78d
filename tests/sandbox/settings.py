"""Settings: a directory for the real SettingsManager, and a peer of that name with any manners."""

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
"""The settings of a phone for which nothing is provisioned."""


def write_settings(directory: Path, settings: Mapping[str, str]) -> Path:
    """Writes one file per setting, as the SettingsManager peer reads them."""
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
"""Makes the reply to a call's message, or None for a call that is not answered."""


class FakeSettingsManager:
    """Answers from `values` until it is told to behave otherwise; runs on the main loop."""

    def __init__(self, address: str, values: Optional[Mapping[str, str]] = None) -> None:
        self.values = dict(NO_DEFAULTS if values is None else values)
        self.calls: list[SettingCall] = []
        self._held: list[Any] = []
        self._answer: Answer = self._from_values
        self._connection = connect(address)
        self._connection.add_message_filter(self._receive)
        self._connection.request_name(bus_name(SETTINGS_MANAGER))

    def close(self) -> None:
        """Leaves the bus. The bus answers calls that still wait with an error."""
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

    # Manners

    def answer_properly(self) -> None:
        """From now on answers from `values` again."""
        self._answer = self._from_values

    def answer_with(self, signature: str, *body: Any) -> None:
        """From now on answers every call with this body, which may be empty."""

        def answer(message: Any) -> Any:
            reply = MethodReturnMessage(message)
            if signature:
                reply.append(*body, signature=signature)
            return reply

        self._answer = answer

    def fail(self, error_name: str, text: str = "refused") -> None:
        """From now on answers every call with an error."""
        self._answer = lambda message: ErrorMessage(message, error_name, text)

    def hang(self) -> None:
        """From now on holds every call back."""
        self._answer = self._held.append

    def release(self) -> None:
        """Answers the calls held back, in order, and all later ones, from `values`."""
        self.answer_properly()
        held, self._held = self._held, []
        for message in held:
            self._reply(message)
        self._connection.flush()

    def die_on_call(self) -> None:
        """Leaves the bus as soon as the next call has come, without an answer."""

        def leave() -> bool:
            self.close()
            return GLib.SOURCE_REMOVE

        self._answer = lambda _message: GLib.idle_add(leave) and None

    # What came

    def names_read(self) -> list[str]:
        """The names of the settings asked for, in order."""
        return [call.arguments[0] for call in self.calls]

    def wait_for_calls(self, count: int, limit: float = LIMIT) -> None:
        """Returns once that many calls have come in all."""
        wait_until(lambda: len(self.calls) >= count, f"{count} calls of {SETTINGS_MANAGER}", limit)
