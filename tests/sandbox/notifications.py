"""A fake service manager that receives the notifications of a process."""

import socket
import time
from typing import NamedTuple, Optional

from gi.repository import GLib

from .loop import LIMIT, wait_until

READY = "READY=1"
STOPPING = "STOPPING=1"
ALIVE = "WATCHDOG=1"

LONGEST_MESSAGE = 4096


class Notification(NamedTuple):
    """A message, and its time of arrival in seconds of the monotonic clock."""

    what: str
    when: float
    status: str


class ServiceManager:
    """Receives messages of sd_notify on the main loop."""

    def __init__(self, address: str) -> None:
        """Listens at a path, or at a name in the abstract namespace that starts with `@`."""
        self.address = address
        self._received: list[Notification] = []
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK)
        self._socket.bind("\0" + address[1:] if address.startswith("@") else address)
        self._watch = GLib.io_add_watch(
            self._socket.fileno(), GLib.PRIORITY_HIGH, GLib.IO_IN, self._receive
        )

    def close(self) -> None:
        """Stops listening. A process that then sends a message gets an error."""
        if self._socket.fileno() >= 0:
            GLib.source_remove(self._watch)
            self._socket.close()

    def environment(self, watchdog_us: Optional[int] = None) -> dict[str, str]:
        """The environment of a process, with a watchdog of that interval in microseconds or none."""
        watchdog = {} if watchdog_us is None else {"WATCHDOG_USEC": str(watchdog_us)}
        return {"NOTIFY_SOCKET": self.address, **watchdog}

    def _receive(self, *_source: object) -> bool:
        while True:
            try:
                message = self._socket.recv(LONGEST_MESSAGE).decode()
            except BlockingIOError:
                return GLib.SOURCE_CONTINUE
            what, _, status = message.partition("\nSTATUS=")
            self._received.append(Notification(what, time.monotonic(), status))

    def take(self) -> list[Notification]:
        """The messages received since the last call."""
        self._receive()
        taken, self._received = self._received, []
        return taken

    def words(self) -> list[str]:
        """The messages received since the last call, without times and status texts."""
        return [notification.what for notification in self.take()]

    def wait_for(self, count: int, limit: float = LIMIT) -> None:
        """Waits until that many messages have arrived since the last call of `take`."""
        wait_until(lambda: len(self._received) >= count, f"{count} messages", limit)
