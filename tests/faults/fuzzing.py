"""Random values of all D-Bus types, and random valid and invalid calls of the service."""

from typing import Any, NamedTuple, Optional, Sequence

import dbus
from hypothesis import strategies as st

from hostile import DOUBLES, INTS, LONGS, TEXTS
from operations import HOOKS, METHODS, STOP, Operation
from sandbox.names import EVENTS, LIFECYCLE

# Values

INTEGERS = {
    "y": (dbus.Byte, 0, 2**8 - 1),
    "n": (dbus.Int16, -(2**15), 2**15 - 1),
    "q": (dbus.UInt16, 0, 2**16 - 1),
    "i": (dbus.Int32, -(2**31), 2**31 - 1),
    "u": (dbus.UInt32, 0, 2**32 - 1),
    "x": (dbus.Int64, -(2**63), 2**63 - 1),
    "t": (dbus.UInt64, 0, 2**64 - 1),
}
BASIC = {
    "b": st.booleans().map(dbus.Boolean),
    "d": st.sampled_from(DOUBLES).map(dbus.Double),
    "s": st.sampled_from((*TEXTS, "main", "addr", "aom_type", "5")).map(dbus.String),
    "o": st.sampled_from(("/", "/a", "/_" * 500)).map(dbus.ObjectPath),
    "g": st.sampled_from(("", "i", "a{sv}", "a" * 32 + "y", "y" * 255)).map(dbus.Signature),
    "h": st.builds(dbus.types.UnixFd, st.just(0)),
    **{
        kind: (
            st.integers(0, 12)
            | st.sampled_from([n for n in (least, most, *INTS, *LONGS) if least <= n <= most])
        ).map(make)
        for kind, (make, least, most) in INTEGERS.items()
    },
}


def values(signature: str) -> st.SearchStrategy[tuple[Any, ...]]:
    """The values of a message with this signature."""
    return st.tuples(*(value(str(kind)) for kind in dbus.Signature(signature)))


def value(kind: str) -> st.SearchStrategy[Any]:
    if kind in BASIC:
        return BASIC[kind]
    if kind == "v":
        return VARIANT
    inner = kind[2:-1] if kind.startswith("a{") else kind[1:]
    most = 1 if len(kind) > MANY_LEVELS else 2
    if kind.startswith("a{"):
        items = st.lists(values(inner), max_size=most).map(dict)
        return items.map(lambda chosen: dbus.Dictionary(chosen, signature=inner))
    if kind.startswith("a"):
        items = st.lists(value(inner), max_size=most)
        return items.map(lambda chosen: dbus.Array(chosen, signature=inner))
    return values(kind[1:-1]).map(lambda chosen: dbus.Struct(chosen, signature=kind[1:-1]))


def in_variants(typed: Any, levels: int) -> Any:
    """The value inside that many nested variants."""
    if isinstance(typed, dbus.types.UnixFd):
        return dbus.types.UnixFd(0, variant_level=levels)
    signature = getattr(typed, "signature", None)
    more = {} if signature is None else {"signature": signature}
    return type(typed)(typed, variant_level=levels, **more)


# Types

MANY_LEVELS = 16
DEEPEST = 32
"""The number of nested arrays, or of nested structures, that the bus accepts."""
DEEPEST_VARIANTS = 50
"""A number of nested variants that the bus accepts inside any other type of this file."""
SIMPLE = st.sampled_from("ybnqiuxtdsog")
DEEP = st.sampled_from(
    (
        *("a" * depth + "y" for depth in (DEEPEST - 1, DEEPEST)),
        "(" * DEEPEST + "i" + ")" * DEEPEST,
        "a" * DEEPEST + "(" * DEEPEST + "i" + ")" * DEEPEST,
        "a{s" * (DEEPEST // 2) + "v" + "}" * (DEEPEST // 2),
    )
)


def _containers(inner: st.SearchStrategy[str]) -> st.SearchStrategy[str]:
    return st.one_of(
        inner.map("a{}".format),
        st.builds("({}{})".format, inner, SIMPLE),
        st.builds("a{{{}{}}}".format, SIMPLE, inner),
    )


PLAIN_KIND = st.recursive(SIMPLE, _containers, max_leaves=4)
KIND = st.one_of(PLAIN_KIND, st.sampled_from(("v", "h", "ah", "(h)", "av", "a{sv}", "(vs)")), DEEP)
VARIANT = st.builds(
    in_variants,
    st.one_of(PLAIN_KIND.flatmap(value), BASIC["h"]),
    st.sampled_from((1, 1, 1, 2, DEEPEST_VARIANTS)),
)

# Calls

ERROR = "an error"
ANYTHING = "anything"
"""Expected replies that are not a signature."""
BUS = "org.freedesktop.DBus"
STANDARD = (
    Operation("Introspect", "", "s", f"{BUS}.Introspectable"),
    Operation("Ping", "", "", f"{BUS}.Peer"),
    Operation("GetMachineId", "", "s", f"{BUS}.Peer"),
    Operation("Get", "ss", ANYTHING, f"{BUS}.Properties"),
    Operation("GetAll", "s", ANYTHING, f"{BUS}.Properties"),
    Operation("Set", "ssv", ANYTHING, f"{BUS}.Properties"),
)
RETURNED = {
    (operation.name, operation.takes, operation.interface): operation.returns
    for operation in (*METHODS, *HOOKS, *STANDARD, STOP)
}
WRONG_NAMES = ("nothing", "addaction", "destroyed", "deleteLater", "aomKeyPressed", "x" * 255)
WRONG_INTERFACES = (LIFECYCLE, EVENTS, "x.y", f"{BUS}.Peer")


class Call(NamedTuple):
    """A call, and the signature that its reply must have."""

    member: str
    signature: str
    values: tuple[Any, ...]
    interface: Optional[str]
    returns: str


def calls(operations: Sequence[Operation]) -> st.SearchStrategy[Call]:
    """Calls of these operations: valid, without an interface, or with one error."""
    return st.sampled_from(operations).flatmap(
        lambda operation: st.one_of(
            valid_calls(operation),
            valid_calls(operation).map(lambda call: call._replace(interface=None)),
            other_signatures(operation.takes).flatmap(
                lambda signature: valid_calls(operation._replace(takes=signature))
            ),
            st.builds(
                lambda call, name: call._replace(member=name, returns=ERROR),
                valid_calls(operation),
                st.sampled_from((*WRONG_NAMES, f"{operation.name}_")),
            ),
            st.sampled_from(WRONG_INTERFACES).flatmap(
                lambda interface: valid_calls(operation._replace(interface=interface))
            ),
        )
    ).map(_accept_any_reply_of_standard_interfaces)


def valid_calls(operation: Operation) -> st.SearchStrategy[Call]:
    """Calls with the signature of this operation, which may not exist."""
    name, takes, _, interface = operation
    returns = RETURNED.get((name, takes, interface), ERROR)
    return values(takes).map(lambda chosen: Call(name, takes, chosen, interface, returns))


def _accept_any_reply_of_standard_interfaces(call: Call) -> Call:
    """The bus library itself replies to invalid calls of the standard interfaces."""
    standard = {operation.name for operation in STANDARD}
    is_valid = (call.member, call.signature, call.interface) in RETURNED
    return call if is_valid or call.member not in standard else call._replace(returns=ANYTHING)


def other_signatures(signature: str) -> st.SearchStrategy[str]:
    """Signatures with one type added, removed, replaced or put into a container."""
    kinds = [str(kind) for kind in dbus.Signature(signature)]

    def change(place: int, kind: str, within: str, way: int) -> str:
        place %= len(kinds) + 1
        here = kinds[place : place + 1]
        instead = ([kind, *here], [], [kind], [within.format(old) for old in here])[way]
        signature = "".join((*kinds[:place], *instead, *kinds[place + 1 :]))
        return signature if len(signature) <= 255 else ""

    within = st.sampled_from(("v", "a{}", "({})", "{0}{0}"))
    return st.builds(change, st.integers(0, 9), KIND, within, st.integers(0, 3))


# Events

ARGUMENTS = st.lists(
    st.builds(
        lambda name, typed, flag: dbus.Struct((name, typed, flag), signature="svb"),
        st.sampled_from(("aom_key_num", "aom_type", "addr", "")),
        BASIC["i"] | VARIANT,
        st.booleans(),
    ),
    max_size=5,
).map(lambda chosen: (dbus.Array(chosen, signature="(svb)"),))
RANDOM_EVENTS = st.one_of(
    ARGUMENTS.map(lambda chosen: ("a(svb)", chosen)),
    other_signatures("a(svb)").flatmap(
        lambda signature: values(signature).map(lambda chosen: (signature, chosen))
    ),
)
"""The signature and the values of an event without its name."""
