"""Events that nobody should send, and what is due for each."""

from typing import Any

import dbus

PRESS = "AOM_KEY_PRESS_EVENT"
PLACE = {"aom_key_num": 5, "aom_type": 1, "addr": 2}
PLACE_ARGUMENTS = [(name, value, True) for name, value in PLACE.items()]
SHAPE = "sa(svb)"
LONG_TEXT = "0123456789abcdef" * 2**20

Arguments = list[tuple[str, Any, bool]]


def with_number(value: Any) -> Arguments:
    """A press whose number of the key is this."""
    return [("aom_key_num", value, True), *PLACE_ARGUMENTS[1:]]


def with_other(*values: Any) -> Arguments:
    """A good press behind other arguments of these values."""
    others = [(f"other {place}", value, True) for place, value in enumerate(values)]
    return others + PLACE_ARGUMENTS


def nested(containers: int) -> Any:
    """A number inside so many arrays, each of them in a structure of its own."""
    value: Any = dbus.Int32(5)
    for _ in range(containers):
        value = dbus.Struct((dbus.Array([value]),))
    return value


def wrapped(variants: int) -> Any:
    """A number inside so many variants, one in the other."""
    return dbus.Int32(5, variant_level=variants)


def in_structures(count: int) -> Any:
    """A number inside so many structures, one in the other."""
    value: Any = 5
    for _ in range(count):
        value = (value,)
    return value


# What the bus still lets through inside the argument of an event; it cuts off who sends one more.
DEEPEST_PAIRS = 31
DEEPEST_VARIANTS = 62

VALUES = {
    "byte": dbus.Byte(9),
    "boolean": dbus.Boolean(True),
    "16 bits": dbus.Int16(-9),
    "16 bits without a sign": dbus.UInt16(9),
    "32 bits": dbus.Int32(-9),
    "32 bits without a sign": dbus.UInt32(9),
    "64 bits": dbus.Int64(-9),
    "64 bits without a sign": dbus.UInt64(2**64 - 1),
    "fraction": dbus.Double(0.5),
    "text": "text",
    "empty text": "",
    "path": dbus.ObjectPath("/a/path"),
    "signature": dbus.Signature("a{sv}"),
    "descriptor": dbus.types.UnixFd(2),
    "bytes": dbus.ByteArray(b"\x00\xff"),
    "no numbers": dbus.Array([], signature="i"),
    "texts": dbus.Array(["a", ""], signature="s"),
    "variants": dbus.Array([1, "a", [1]], signature="v"),
    "structure": dbus.Struct((1, "a", (2.5, [True]))),
    "map": dbus.Dictionary({1: "a"}, signature="is"),
    "empty map": dbus.Dictionary({}, signature="sv"),
    "map of maps": dbus.Dictionary({"a": {"b": [("c", 1)]}}, signature="sa{sa(si)}"),
    "records": dbus.Array([], signature="(xsxsisiii)"),
    "deep containers": nested(DEEPEST_PAIRS),
    "deep variants": wrapped(DEEPEST_VARIANTS),
    "16 MiB": LONG_TEXT,
}
"""One value of every kind that an argument may have."""

ANSWERED: dict[str, Arguments] = {
    **{f"{name} before": with_other(value) for name, value in VALUES.items()},
    "every kind of value before": with_other(*VALUES.values()),
    "10,000 arguments before": with_other(*range(10_000)),
    "10,000 empty names before": [("", 1, True)] * 10_000 + PLACE_ARGUMENTS,
    "a name of 16 MiB": [(LONG_TEXT, 1, True), *PLACE_ARGUMENTS],
    "names told twice, of which the first count": PLACE_ARGUMENTS + with_number("no number"),
    "flags that are false": [(name, value, False) for name, value, _flag in PLACE_ARGUMENTS],
    "arguments behind": [*PLACE_ARGUMENTS, ("exists", False, True), ("", nested(5), True)],
}
"""Events that are strange, but say clearly enough which key was pressed."""

NUMBERS = (
    dbus.Byte,
    dbus.Boolean,
    dbus.Int16,
    dbus.UInt16,
    dbus.Int32,
    dbus.UInt32,
    dbus.Int64,
    dbus.UInt64,
    dbus.Double,
)

NO_NUMBERS: dict[str, Any] = {
    **{name: value for name, value in VALUES.items() if not isinstance(value, NUMBERS)},
    "deep variants": VALUES["deep variants"],
    "not a number": dbus.Double("nan"),
    "infinite": dbus.Double("inf"),
    "endlessly negative": dbus.Double("-inf"),
    "a huge fraction": dbus.Double(1e300),
    "just above 32 bits": dbus.Int64(2**31),
    "just below 32 bits": dbus.Int64(-(2**31) - 1),
    "all bits of 32": dbus.UInt32(2**32 - 1),
    "all bits of 64": dbus.UInt64(2**64 - 1),
    "5 beyond 32 bits": dbus.Int64(2**32 + 5),
    "5 beyond 32 bits, as text": str(2**32 + 5),
    "a hexadecimal text": "0x5",
    "a fraction as text": "5.0",
    "an exponent as text": "5e0",
    "two numbers as text": "5 5",
    "a digit of another script": "٥",
    "a wide digit": "５",
    "a text with a control character": "5\x01",
    "a variant": wrapped(2),
    "structure of the number": dbus.Struct((5,)),
    "array of the number": dbus.Array([5]),
}
"""Numbers of a key that are none."""

BODIES_OF_OTHER_SHAPES = {
    "s": (PRESS,),
    "ss": (PRESS, PRESS),
    "si": (PRESS, 5),
    "sv": (PRESS, 5),
    "sas": (PRESS, ["aom_key_num"]),
    "say": (PRESS, b"aom_key_num"),
    "sav": (PRESS, [5]),
    "sh": (PRESS, dbus.types.UnixFd(2)),
    "so": (PRESS, "/"),
    "sg": (PRESS, SHAPE),
    "sd": (PRESS, float("nan")),
    "s(svb)": (PRESS, PLACE_ARGUMENTS[0]),
    "sa(sv)": (PRESS, [("aom_key_num", 5)]),
    "sa(vsb)": (PRESS, [(5, "aom_key_num", True)]),
    "sa(svi)": (PRESS, [("aom_key_num", 5, 1)]),
    "sa(sib)": (PRESS, [("aom_key_num", 5, True)]),
    "sa(svbb)": (PRESS, [("aom_key_num", 5, True, True)]),
    "sa{sv}": (PRESS, PLACE),
    "saa(svb)": (PRESS, [PLACE_ARGUMENTS]),
    "sva(svb)": (PRESS, 5, PLACE_ARGUMENTS),
    "sa(svb)s": (PRESS, PLACE_ARGUMENTS, "more"),
    "sa(svb)a(svb)": (PRESS, PLACE_ARGUMENTS, PLACE_ARGUMENTS),
    "sai": (PRESS, range(10_000)),
    "s" * 255: (PRESS,) * 255,
    "s" + "a" * 32 + "i": (PRESS, []),
    "s" + "(" * 32 + "i" + ")" * 32: (PRESS, in_structures(32)),
    "sss": (PRESS, LONG_TEXT, LONG_TEXT[::2]),
}
"""Events of the name that the service listens to, by signature."""

BODIES_OF_OTHER_NAMES = {
    "": (),
    "i": (5,),
    "v": (PRESS,),
    "g": (SHAPE,),
    "a(svb)": (PLACE_ARGUMENTS,),
    "(sa(svb))": ((PRESS, PLACE_ARGUMENTS),),
    "a(svb)s": (PLACE_ARGUMENTS, PRESS),
}
"""Signals that name no event, by signature."""

OTHER_NAMES = (
    "",
    " ",
    PRESS.lower(),
    PRESS[:-1],
    f"{PRESS}S",
    f" {PRESS}",
    f"{PRESS}\n",
    f"{PRESS}*",
    f"{PRESS}'",
    "%1",
    "AOMKEY_PRESS_NTF",
    "DB_RESET_NTF",
    "KEY_DELETE_NTF",
    LONG_TEXT,
)
"""Names of events that the service does not listen to."""

HIDDEN_NAMES = {
    "as": ([PRESS],),
    "ay": (PRESS.encode(),),
    "asa(svb)": ([PRESS], PLACE_ARGUMENTS),
    "aya(svb)": (PRESS.encode(), PLACE_ARGUMENTS),
}
"""Bodies from which the bus library still reads the name; they come only to whom they are sent."""
