"""Executes the steps of the reference on a phone."""

from typing import Any, Optional

import dbus

from hostile import LONG_MAX
from model.reference import FROM_VALUES, WITH_ERRORS, Outcome
from operations import operation_of
from phones import Phone
from sandbox.names import UNKNOWN_SETTING

ON_THE_WIRE = {
    "y": dbus.Byte,
    "i": dbus.Int32,
    "u": dbus.UInt32,
    "x": dbus.Int64,
    "t": dbus.UInt64,
    "d": dbus.Double,
    "s": dbus.String,
}


class RepeatableId(int):
    """A dictionary key that does not replace an equal key."""

    __hash__ = int.__hash__

    def __eq__(self, other: object) -> bool:
        return self is other


def on_the_wire(value: Any) -> Any:
    """The value for the bus library. Converts a list of pairs to a dictionary in that order."""
    if isinstance(value, list):
        return {RepeatableId(id_key): position for id_key, position in value}
    return value


class Driver:
    """Executes steps on a phone."""

    def __init__(self, phone: Phone) -> None:
        self._phone = phone
        self._lines_taken = 0

    def perform(self, step: str, *values: Any) -> Outcome:
        """Executes a step and returns all its observable effects."""
        operation = operation_of(step, len(values))
        reply = None
        if operation is not None:
            pending = operation.send(self._phone.client, *map(on_the_wire, values))
            reply = operation.result_of(pending)
        else:
            getattr(self, step)(*values)
            self._phone.client.round_trip()
        return self._outcome(reply)

    def _outcome(self, reply: Any) -> Outcome:
        phone = self._phone
        events, settings_read = phone.events.take_received(), phone.settings.names_read()
        phone.settings.calls.clear()
        rows = phone.database.keys(), phone.database.actions()
        return Outcome(reply, events, self._new_lines(), settings_read, *rows)

    def _new_lines(self) -> list[tuple[str, str]]:
        lines = self._phone.service.log.lines()[self._lines_taken :]
        self._lines_taken += len(lines)
        return [(line.level, line.text) for line in lines]

    # Steps that are not calls

    def firstStart(self) -> None:
        self._phone.start()

    def restart(self) -> None:
        self._phone.service.stop()
        assert self._new_lines() == []
        self._lines_taken = 0
        self._phone.start()

    def press(self, *arguments: tuple[str, str, Any]) -> None:
        written = [(name, ON_THE_WIRE[kind](value), True) for name, kind, value in arguments]
        self._phone.client.send_raw_event("sa(svb)", "AOM_KEY_PRESS_EVENT", written)

    def set(self, name: str, text: Optional[str]) -> None:
        self._phone.settings.values[name] = text
        if text is None:
            del self._phone.settings.values[name]

    def answer(self, behavior: str) -> None:
        if behavior == FROM_VALUES:
            self._phone.settings.answer_from_values()
        elif behavior == WITH_ERRORS:
            self._phone.settings.fail(UNKNOWN_SETTING)
        else:
            self._phone.settings.answer_with("x", LONG_MAX)
