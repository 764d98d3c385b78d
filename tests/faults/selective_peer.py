"""A fake SettingsManager with different behavior for some settings."""

from typing import Any, Callable, Optional

from dbus.lowlevel import ErrorMessage
from gi.repository import GLib

from sandbox.loop import wait_until
from sandbox.settings import FakeSettingsManager


class SelectivePeer(FakeSettingsManager):
    """Replies from `values`, except for the settings that a test selects."""

    def _for(self, names: tuple[str, ...], answer: Callable[[Any], Optional[Any]]) -> None:
        def choose(message: Any) -> Optional[Any]:
            is_named = str(message.get_args_list()[0]) in names
            return answer(message) if is_named else self._from_values(message)

        self._answer = choose

    def hang_on(self, *names: str) -> None:
        """From now on replies to no read of these settings."""
        self._for(names, self._held.append)

    def wait_for_held_read(self) -> None:
        """Waits until a read gets no reply."""
        wait_until(lambda: self._held, "a read without a reply")

    def fail_on(self, *names: str) -> None:
        """From now on replies to reads of these settings with an error."""
        self._for(names, lambda message: ErrorMessage(message, "a.b", "refused"))

    def disconnect_on(self, name: str) -> None:
        """Disconnects from the bus at a read of this setting, without a reply."""
        self._for((name,), lambda _message: self._leave_soon())

    def disconnect_after(self, name: str) -> None:
        """Replies to a read of this setting and then disconnects from the bus."""

        def answer(message: Any) -> Any:
            self._leave_soon()
            self.hang()  # the next read may arrive before the disconnection
            return self._from_values(message)

        self._for((name,), answer)

    def _leave_soon(self) -> None:
        def leave() -> bool:
            # Wait until the bus has forwarded the reply. It could drop the reply otherwise.
            self._connection.get_name_owner("org.freedesktop.DBus")
            self.close()
            return GLib.SOURCE_REMOVE

        GLib.idle_add(leave)
