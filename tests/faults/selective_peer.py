"""A SettingsManager that treats some settings otherwise than the rest."""

from typing import Any, Callable, Optional

from dbus.lowlevel import ErrorMessage
from gi.repository import GLib

from sandbox.loop import wait_until
from sandbox.settings import FakeSettingsManager


class SelectivePeer(FakeSettingsManager):
    """Answers from `values`, except for the settings that it is told to treat otherwise."""

    def _for(self, names: tuple[str, ...], answer: Callable[[Any], Optional[Any]]) -> None:
        def choose(message: Any) -> Optional[Any]:
            is_named = str(message.get_args_list()[0]) in names
            return answer(message) if is_named else self._from_values(message)

        self._answer = choose

    def hang_on(self, *names: str) -> None:
        """From now on holds the reads of these settings back."""
        self._for(names, self._held.append)

    def wait_for_held_read(self) -> None:
        """Returns once a read hangs."""
        wait_until(lambda: self._held, "a read that hangs")

    def fail_on(self, *names: str) -> None:
        """From now on answers the reads of these settings with an error."""
        self._for(names, lambda message: ErrorMessage(message, "a.b", "refused"))

    def die_on(self, name: str) -> None:
        """Leaves the bus when this setting is read, without an answer."""
        self._for((name,), lambda _message: self._leave_soon())

    def die_after(self, name: str) -> None:
        """Answers the read of this setting and leaves the bus."""

        def answer(message: Any) -> Any:
            self._leave_soon()
            self.hang()  # the next read may come before it has left
            return self._from_values(message)

        self._for((name,), answer)

    def _leave_soon(self) -> None:
        def leave() -> bool:
            # The bus has passed the answer on by then; else it may drop it with the connection.
            self._connection.get_name_owner("org.freedesktop.DBus")
            self.close()
            return GLib.SOURCE_REMOVE

        GLib.idle_add(leave)
