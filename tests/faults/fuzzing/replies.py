"""How often each call was answered, as a monitor of the bus saw it."""

from collections import Counter
from typing import Any

import dbus
from dbus.lowlevel import HANDLER_RESULT_HANDLED

from sandbox.client import connect
from sandbox.loop import LIMIT, wait_until

REPLIES = ("method_return", "error")


class ReplyCounter:
    """Counts the replies to one peer by the serials of its calls, also those that nobody waits for."""

    def __init__(self, address: str, peer: str) -> None:
        self.counts: "Counter[int]" = Counter()
        self._connection = connect(address)
        bus = "org.freedesktop.DBus"
        rules = [f"type='{kind}',destination='{peer}'" for kind in REPLIES]
        values = (dbus.Array(rules, signature="s"), dbus.UInt32(0))
        self._connection.call_blocking(
            bus, "/org/freedesktop/DBus", f"{bus}.Monitoring", "BecomeMonitor", "asu", values
        )
        self._connection.add_message_filter(self._receive)

    def close(self) -> None:
        self._connection.close()

    def _receive(self, _connection: object, message: Any) -> int:
        if message.get_reply_serial():
            self.counts[message.get_reply_serial()] += 1
        return HANDLER_RESULT_HANDLED

    def wait_for(self, serial: int, limit: float = LIMIT) -> None:
        """Returns once a reply to this call has been seen, and so all that were sent before it."""
        wait_until(lambda: self.counts[serial], f"the monitor sees a reply to {serial}", limit)
