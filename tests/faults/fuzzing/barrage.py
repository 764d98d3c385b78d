"""Many calls at a time at a service, each held to one reply of the right form."""

from typing import Any, NamedTuple, Optional, Sequence

from dbus.lowlevel import ErrorMessage

from fuzzing.calls import ANYTHING, ERROR, Call
from fuzzing.replies import ReplyCounter
from sandbox.client import REPLY_TIMEOUT, BusError, Client
from sandbox.loop import LIMIT, GaveUp, wait_until

NOT_FROM_THE_SERVICE = (
    "org.freedesktop.DBus.Error.NoReply",
    "org.freedesktop.DBus.Error.ServiceUnknown",
    "org.freedesktop.DBus.Error.Disconnected",
)
SHOWN = 5


class Fault(AssertionError):
    """Something went wrong with these calls."""

    def __init__(self, what: str, calls: Sequence[Call]) -> None:
        shown = "\n".join(str(call) for call in calls[:SHOWN])
        super().__init__(f"{what}; {len(calls)} calls, first:\n{shown}")


class Sent(NamedTuple):
    """A call on its way, and where its reply will be."""

    call: Call
    message: Any
    replies: list[Any]

    @property
    def is_answered(self) -> bool:
        return bool(self.replies) and not self._was_given_up

    @property
    def _was_given_up(self) -> bool:
        reply = self.replies[0]
        return isinstance(reply, ErrorMessage) and reply.get_error_name() in NOT_FROM_THE_SERVICE

    @property
    def fault(self) -> Optional[str]:
        """What is wrong with the reply."""
        reply, returns = self.replies[0], self.call.returns
        found = ERROR if isinstance(reply, ErrorMessage) else str(reply.get_signature())
        if returns in (ANYTHING, found):
            return None
        told = reply.get_args_list()[:1] if found == ERROR else ""
        return f"answered with {found!r} {told}, not with {returns!r}"


class Barrage:
    """Sends bursts of calls to the service, and knows what became of each call."""

    def __init__(self, client: Client, address: str) -> None:
        self._client = client
        self._counter = ReplyCounter(address, client.connection.get_unique_name())
        self._serials: dict[int, Call] = {}
        self.since_reset: list[Call] = []
        """Everything that was sent since the data were reset."""

    def close(self) -> None:
        self._counter.close()

    def reset(self) -> None:
        """Resets the data, once each call was answered once."""
        self.check_that_each_was_answered_once()
        self._client.restore_factory()
        self.since_reset.clear()

    def fire(self, calls: Sequence[Call]) -> None:
        """Sends them all and waits for the replies; fails if one is missing or wrong."""
        self.since_reset += calls
        burst = [self._send(call) for call in calls]
        try:
            wait_until(lambda: all(sent.replies for sent in burst), "a reply to each", 2 * LIMIT)
        except GaveUp:
            pass
        self._check_connection()
        unanswered = [sent.call for sent in burst if not sent.is_answered]
        if unanswered:
            raise Fault("not answered", unanswered)
        faults = [sent for sent in burst if sent.fault]
        if faults:
            raise Fault(faults[0].fault, [sent.call for sent in faults])

    def send_events(self, events: Sequence[Call]) -> None:
        """Sends them all; fails if the service answers no more."""
        self.since_reset += events
        for event in events:
            self._client.send_raw_event(event.signature, *event.values)
        try:
            self._client.round_trip()
        except (BusError, GaveUp) as failure:
            self._check_connection()
            raise Fault(f"{failure} after events", events) from failure

    def check_that_each_was_answered_once(self) -> None:
        """Fails if a call of any burst since the last check got two replies."""
        barrier = self._send(Call("getCapabilities", "", (), None, ANYTHING))
        self._counter.wait_for(barrier.message.get_serial())
        for serial, call in self._serials.items():
            if self._counter.counts[serial] != 1:
                raise Fault(f"answered {self._counter.counts[serial]} times", [call])
        self._serials.clear()

    def _check_connection(self) -> None:
        assert self._client.connection.get_is_connected(), "the bus has cut off the test itself"

    def _send(self, call: Call) -> Sent:
        message = self._client.message(
            call.member, call.signature, *call.values, interface=call.interface
        )
        sent = Sent(call, message, [])
        self._client.connection.send_message_with_reply(
            message, sent.replies.append, REPLY_TIMEOUT, require_main_loop=True
        )
        self._serials[message.get_serial()] = call
        return sent
