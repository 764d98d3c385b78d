"""Calls of the service at random: as they should be, and wrong in every way that the bus passes on."""

import random
import re
from typing import Any, NamedTuple, Optional, Sequence

import dbus

from fuzzing.values import DEEPEST_OF_ALL, ValueMaker
from operations import HOOKS, METHODS, STOP, Operation
from sandbox.names import EVENTS, LIFECYCLE

ERROR = "an error"
ANYTHING = "anything"
NOTHING = "nothing"
"""What a call must be answered with, beside a signature; nothing means that it is an event."""
LONGEST_SIGNATURE = 255
LEVELS_OF_AN_ARGUMENT = 2
PRESS_EVENT = "AOM_KEY_PRESS_EVENT"

BUS = "org.freedesktop.DBus"
STANDARD = (
    Operation("Introspect", "", "s", f"{BUS}.Introspectable"),
    Operation("Ping", "", "", f"{BUS}.Peer"),
    Operation("GetMachineId", "", "s", f"{BUS}.Peer"),
    Operation("Get", "ss", ANYTHING, f"{BUS}.Properties"),
    Operation("GetAll", "s", ANYTHING, f"{BUS}.Properties"),
    Operation("Set", "ssv", ANYTHING, f"{BUS}.Properties"),
)
KNOWN = (*METHODS, *HOOKS, *STANDARD, STOP)
WRONG_NAMES = ("", "nothing", "addaction", "destroyed", "deleteLater", "aomKeyPressed", "x" * 255)


class Call(NamedTuple):
    """One call, and the signature that its reply must have."""

    member: str
    signature: str
    values: tuple[Any, ...]
    interface: Optional[str]
    returns: str

    def __str__(self) -> str:
        return (
            f"Call({self.member!r}, {self.signature!r}, {_typed(self.values)},"
            f" {self.interface!r}, {self.returns!r})"
        )


def _typed(values: tuple[Any, ...]) -> str:
    """The values as Python writes them; what a file descriptor was is not told."""
    written = f"({''.join(f'{value!r}, ' for value in values)})"
    return re.sub("<dbus.UnixFd[^>]*>", "dbus.types.UnixFd(0)", written)


class CallMaker:
    """Makes calls of one operation."""

    def __init__(self, source: random.Random) -> None:
        self._source = source
        self._values = ValueMaker(source)

    def call(self, operation: Operation) -> Call:
        chance = self._source.random()
        if chance < 0.5:
            return self._right(operation)
        if chance < 0.6:
            return self._without_interface(operation)
        if chance < 0.9:
            return self._of_wrong_signature(operation)
        return self._of_wrong_name(operation)

    def event(self) -> Call:
        """An event as it should be or not, its name aside."""
        signature = "a(svb)" if self._source.random() < 0.7 else self._wrong_signature("a(svb)")
        values = self._values.values(signature)
        if signature == "a(svb)":
            names = self._source.choices(("aom_key_num", "aom_type", "addr", ""), k=4)
            arguments = [self._argument(name) for name in names]
            values = (dbus.Array(arguments, signature="(svb)"),)
        return Call("event", f"s{signature}", (PRESS_EVENT, *values), EVENTS, NOTHING)

    def _argument(self, name: str) -> Any:
        kind = self._source.choice("iv")
        value = self._values.value(kind, DEEPEST_OF_ALL - LEVELS_OF_AN_ARGUMENT)
        return dbus.Struct((name, value, True), signature="svb")

    def _right(self, operation: Operation) -> Call:
        values = self._values.values(operation.takes)
        return Call(operation.name, operation.takes, values, operation.interface, operation.returns)

    def _without_interface(self, operation: Operation) -> Call:
        """Found by name alone, but for the standard interfaces, which need not be."""
        call = self._right(operation)._replace(interface=None)
        return call._replace(returns=ANYTHING) if operation in STANDARD else call

    def _of_wrong_signature(self, operation: Operation) -> Call:
        """What the bus library itself answers, it may answer without a look at the signature."""
        signature = self._wrong_signature(operation.takes)
        values = self._values.values(signature)
        returns = _returned(operation.name, signature, operation.interface)
        call = Call(operation.name, signature, values, operation.interface, returns)
        return call._replace(returns=ANYTHING) if operation in STANDARD else call

    def _of_wrong_name(self, operation: Operation) -> Call:
        call = self._right(operation)
        if self._source.random() < 0.5:
            name = self._source.choice(WRONG_NAMES) or f"{operation.name}_"
            return call._replace(member=name, returns=ERROR)
        interface = self._source.choice((LIFECYCLE, EVENTS, "x.y", f"{operation.interface}.z"))
        returns = _returned(operation.name, operation.takes, interface)
        return call._replace(interface=interface, returns=returns)

    def _wrong_signature(self, right: str) -> str:
        kinds = [str(kind) for kind in dbus.Signature(right)]
        place = self._source.randrange(len(kinds) + 1)
        way = self._source.randrange(6)
        if way == 0:
            kinds.insert(place, self._values.kind())
        elif way == 1:
            kinds[place:place] = [self._values.deep_kind()]
        elif way == 2:
            return "".join(self._values.kind() for _ in range(self._source.randrange(5)))
        else:
            kinds[place : place + 1] = self._instead_of(kinds[place : place + 1], way)
        signature = "".join(kinds)
        return signature if len(signature) <= LONGEST_SIGNATURE else ""

    def _instead_of(self, kinds: Sequence[str], way: int) -> list[str]:
        """Nothing, another type, or the same within something."""
        if way == 3:
            return []
        if way == 4:
            return [self._values.kind()]
        within = ("v", "a{}", "({})", "{}{}")
        return [self._source.choice(within).replace("{}", kind) for kind in kinds]


def _returned(member: str, signature: str, interface: str) -> str:
    """What a method of this name, signature and interface returns, if there is one after all."""
    return next(
        (
            operation.returns
            for operation in KNOWN
            if (operation.name, operation.takes, operation.interface)
            == (member, signature, interface)
        ),
        ERROR,
    )
