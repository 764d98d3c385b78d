"""The methods of the service with their signatures."""

from typing import Any, NamedTuple, Optional

import dbus

from sandbox.client import Client, PendingReply
from sandbox.names import INTERFACE, LIFECYCLE
from sandbox.records import ACTION, CAPABILITY, KEY

KEYS = f"a{KEY}"
ACTIONS = f"a{ACTION}"
CAPABILITIES = f"a{{s{CAPABILITY}}}"


class Operation(NamedTuple):
    """A method with the signatures of its arguments and its result."""

    name: str
    takes: str
    returns: str
    interface: str = INTERFACE

    def send(self, client: Client, *values: Any) -> PendingReply:
        """Calls the method without waiting for the reply."""
        return client.send(self.name, self.takes, *values, interface=self.interface)

    def result_of(self, reply: PendingReply) -> Any:
        """The value of a reply. Checks its signature."""
        signature, values = reply.wait()
        assert signature == self.returns, f"{self.name} returned {signature!r}"
        return values[0] if values else None


METHODS = (
    Operation("addAction", ACTION, "x"),
    Operation("changeProgrammableKeysPosition", "a{ii}", "b"),
    Operation("createProgrammableKey", KEY, "x"),
    Operation("deleteAction", "x", "i"),
    Operation("deleteProgrammableKey", "x", "i"),
    Operation("getAction", "x", ACTIONS),
    Operation("getAllActions", "", ACTIONS),
    Operation("getAllProgrammableKeys", "", KEYS),
    Operation("getCapabilities", "i", CAPABILITIES),
    Operation("getCapabilities", "", CAPABILITIES),
    Operation("getCapability", "is", CAPABILITY),
    Operation("getCapability", "s", CAPABILITY),
    Operation("getProgrammableKey", "x", KEYS),
    Operation("getProgrammableKeysByContainer", "s", KEYS),
    Operation("modifyAction", ACTION, "i"),
    Operation("modifyProgrammableKey", KEY, "i"),
    Operation("setIconStateForKey", "xii", "i"),
    Operation("setLabelStateForKey", "xi", "i"),
)

HOOKS = (
    Operation("restoreDefault", "", "b", LIFECYCLE),
    Operation("restoreFactory", "", "b", LIFECYCLE),
    Operation("presentationLoaded", "", "", LIFECYCLE),
    Operation("presentationStop", "", "", LIFECYCLE),
    Operation("preSaveForSaveRestore", "", "b", LIFECYCLE),
    Operation("postRestoreForSaveRestore", "", "b", LIFECYCLE),
)

STOP = Operation("stop", "", "b", LIFECYCLE)


def operation_of(name: str, count: int) -> Optional[Operation]:
    """The operation with this name and number of arguments, if there is one."""
    for operation in (*METHODS, *HOOKS):
        if operation.name == name and len(list(dbus.Signature(operation.takes))) == count:
            return operation
    return None
