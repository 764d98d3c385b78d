"""A SettingsManager with other manners for some settings than for the rest."""

from typing import Any, Callable, Optional

import dbus
from dbus.lowlevel import ErrorMessage
from gi.repository import GLib

from sandbox.loop import wait_until
from sandbox.settings import FakeSettingsManager

INVALID_REPLY = (
    "ERROR: While calling method getSettingValue of module SettingsManager, reply is invalid"
)

BUS_NAME = "org.freedesktop.DBus"

Manner = Callable[[FakeSettingsManager], None]

BODIES = {
    "y": 1,
    "b": True,
    "n": 1,
    "q": 1,
    "i": 1,
    "u": 1,
    "x": 1,
    "t": 1,
    "d": 1.0,
    "o": "/1",
    "g": "s",
    "h": dbus.types.UnixFd(2),
    "v": "1",
    "ay": b"1",
    "ai": [1],
    "as": ["1"],
    "ao": ["/1"],
    "av": ["1"],
    "aas": [["1"]],
    "(s)": ("1",),
    "((s)s)": (("1",), "1"),
    "a(s)": [("1",)],
    "a{ss}": {"1": "1"},
    "a{sv}": {"1": "1"},
    "a{ia{is}}": {1: {1: "1"}},
}
"""One value of each basic type but the text, and of containers of many kinds."""


def _of_type(signature: str, body: Any) -> Manner:
    return lambda peer: peer.answer_with(signature, body)


ILL_MANNERS: dict[str, Manner] = {
    "absent": FakeSettingsManager.close,
    "dying during the call": FakeSettingsManager.die_on_call,
    "answering with an error": lambda peer: peer.fail("org.freedesktop.DBus.Error.Failed"),
    "answering with an error without a text": lambda peer: peer.fail("a.b", ""),
    "answering with an error of a mebibyte": lambda peer: peer.fail("a.b", "x" * 2**20),
    "answering with nothing": lambda peer: peer.answer_with(""),
    "answering with a number and a text": lambda peer: peer.answer_with("is", 1, "1"),
    **{f"answering with {kind}": _of_type(kind, body) for kind, body in BODIES.items()},
}
"""Each way not to answer a read with a text, but for hanging."""


class SelectivePeer(FakeSettingsManager):
    """Answers from `values`, but for the settings that it is told to treat otherwise."""

    def _for(self, names: tuple[str, ...], answer: Callable[[Any], Optional[Any]]) -> None:
        def choose(message: Any) -> Optional[Any]:
            is_named = str(message.get_args_list()[0]) in names
            return answer(message) if is_named else self._from_values(message)

        self._answer = choose

    def hang_on(self, *names: str) -> None:
        """From now on holds the reads of these back."""
        self._for(names, self._held.append)

    def wait_for_held_read(self) -> None:
        """Returns once a read hangs."""
        wait_until(lambda: self._held, "a read that hangs")

    def fail_on(self, *names: str) -> None:
        """From now on answers the reads of these with an error."""
        self._for(names, lambda message: ErrorMessage(message, "a.b", "refused"))

    def die_on(self, name: str) -> None:
        """Leaves the bus when this is read, without an answer."""
        self._for((name,), lambda _message: self._leave_soon())

    def die_after(self, name: str) -> None:
        """Answers the read of this, and leaves the bus."""

        def answer(message: Any) -> Any:
            self._leave_soon()
            self.hang()  # the next read may come before it has left
            return self._from_values(message)

        self._for((name,), answer)

    def _leave_soon(self) -> None:
        def leave() -> bool:
            # The bus has dealt with the answer by then; else it may drop it with the connection.
            self._connection.get_name_owner(BUS_NAME)
            self.close()
            return GLib.SOURCE_REMOVE

        GLib.idle_add(leave)
