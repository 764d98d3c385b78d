"""The service manager that started a process, as far as the process can tell."""

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
    """A message, and when it came, in seconds of the monotonic clock."""

    what: str
    when: float
    status: str


class ServiceManager:
    """Keeps what is sent to a socket by the protocol of sd_notify; runs on the main loop."""

    def __init__(self, address: str) -> None:
        """Listens at a path, or at `@` and a name in the abstract name space."""
        self.address = address
        self._came: list[Notification] = []
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK)
        self._socket.bind("\0" + address[1:] if address.startswith("@") else address)
        self._watch = GLib.io_add_watch(
            self._socket.fileno(), GLib.PRIORITY_HIGH, GLib.IO_IN, self._receive
        )

    def close(self) -> None:
        """Stops listening. A process that sends something gets an error."""
        if self._socket.fileno() >= 0:
            GLib.source_remove(self._watch)
            self._socket.close()

    def environment(self, watchdog_us: Optional[int] = None) -> dict[str, str]:
        """What a process is started with, with a watchdog of that many microseconds or none."""
        watchdog = {} if watchdog_us is None else {"WATCHDOG_USEC": str(watchdog_us)}
        return {"NOTIFY_SOCKET": self.address, **watchdog}

    def _receive(self, *_source: object) -> bool:
        while True:
            try:
                message = self._socket.recv(LONGEST_MESSAGE).decode()
            except BlockingIOError:
                return GLib.SOURCE_CONTINUE
            what, _, status = message.partition("\nSTATUS=")
            self._came.append(Notification(what, time.monotonic(), status))

    def take(self) -> list[Notification]:
        """What has come since the last call."""
        self._receive()
        taken, self._came = self._came, []
        return taken

    def words(self) -> list[str]:
        """What has come since the last call, without times and texts."""
        return [notification.what for notification in self.take()]

    def wait_for(self, count: int, limit: float = LIMIT) -> None:
        """Returns once that much has come since the last call of `take`."""
        wait_until(lambda: len(self._came) >= count, f"{count} messages", limit)
