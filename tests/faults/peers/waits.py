"""The waits for a SettingsManager that hangs, wherever the service may be caught in one."""

import time
from typing import Callable, Sequence, Union

from peers.lived_in import PROVISIONED_KEYS, USER_ACTION
from peers.phones import Phone
from peers.selective_peer import INVALID_REPLY, SelectivePeer
from samples import MODULE_KEY
from sandbox.loop import LIMIT
from sandbox.names import LIFECYCLE, SERVICE, bus_name
from sandbox.records import KEY, Action, Key

READ_LIMIT = 5.0

IsDone = Callable[[], bool]


def _launch(phone: Phone) -> IsDone:
    service = phone.launch()
    owner = phone.client.watch_owner(bus_name(SERVICE))
    return lambda: owner.current != "" or not service.running


def _restore(phone: Phone) -> IsDone:
    reply = phone.client.send("restoreDefault", interface=LIFECYCLE)
    return lambda: reply.arrived and reply.wait().values == (False,)


def _create(phone: Phone) -> IsDone:
    key = MODULE_KEY._replace(idAction=USER_ACTION.idAction)
    reply = phone.client.send("createProgrammableKey", KEY, key)
    return lambda: reply.arrived and reply.wait().values[0] > 0


class Wait:
    """A phone whose service does something during which its peer hangs in so many reads."""

    def __init__(
        self,
        phone: Phone,
        stored: Sequence[Union[Action, Key]],
        do: Callable[[Phone], IsDone],
        hang: Callable[[SelectivePeer], None],
        reads: int,
    ) -> None:
        self.phone = phone
        self.took = 0.0
        self._reads = reads
        phone.store(*stored)
        if do is not _launch:
            phone.start()
        hang(phone.settings)
        self._begun = time.monotonic()
        self._is_done = do(phone)

    def is_over(self) -> bool:
        if not self.took and self._is_done():
            self.took = time.monotonic() - self._begun
        return self.took > 0

    def check_reads(self) -> None:
        """Each of the reads was told of, and given up after its limit."""
        assert self.phone.service.log.texts("error") == [INVALID_REPLY] * self._reads
        whole = self._reads * READ_LIMIT
        assert whole - 1 <= self.took <= whole + LIMIT / 2


START = "a start"
START_AT_KEYS = "a start, from its second read on"
START_AT_LIMIT = "a start, at the limit of each key"
RESTORE = "a restore"
RESTORE_AT_LIMIT = "a restore, at the limit of each key"
CREATION = "a creation"

WAITS = {
    START: (_launch, lambda peer: peer.hang(), 2),
    START_AT_KEYS: (_launch, lambda peer: peer.hang_on("DefaultKeys"), 1),
    START_AT_LIMIT: (_launch, lambda peer: peer.hang_on("ProgKeysMax"), len(PROVISIONED_KEYS)),
    RESTORE: (_restore, lambda peer: peer.hang(), 2),
    RESTORE_AT_LIMIT: (_restore, lambda peer: peer.hang_on("ProgKeysMax"), len(PROVISIONED_KEYS)),
    CREATION: (_create, lambda peer: peer.hang(), 1),
}
