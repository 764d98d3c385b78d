"""Values of any type that the bus can carry, at the edges of the type."""

import random
from typing import Any, Callable, Mapping

import dbus
import dbus.types

from hostile import DOUBLES, INTS, LARGE_TEXTS, LONGS, TEXTS

BASIC_TYPES = "ybnqiuxtdsog"
INTEGERS = {
    "y": (dbus.Byte, 0, 2**8 - 1),
    "n": (dbus.Int16, -(2**15), 2**15 - 1),
    "q": (dbus.UInt16, 0, 2**16 - 1),
    "i": (dbus.Int32, -(2**31), 2**31 - 1),
    "u": (dbus.UInt32, 0, 2**32 - 1),
    "x": (dbus.Int64, -(2**63), 2**63 - 1),
    "t": (dbus.UInt64, 0, 2**64 - 1),
}
PATHS = ("/", "/a", "/com/velmora/Tessaro/ZelProgrammableKeys", "/_" * 500)
SIGNATURES = ("", "i", "a{sv}", "(xsxsisiii)", "a" * 32 + "y", "y" * 255)
DEEPEST = 32
"""Arrays in arrays, or structures in structures, that the bus takes."""
DEEPEST_OF_ALL = 64
"""Levels of any kind, variants included."""
ROOM_FOR_A_VARIANT = 8
"""Levels that are left for what is in it."""
LARGE = 0.001
MANY_ITEMS = 20_000
MOST_FILES_IN_VARIANTS = 16
"""A message may hold hundreds of variants, but the bus takes few files with one."""
A_FILE = 0
"""The descriptor that is passed along where one is asked for."""


class ValueMaker:
    """Makes values of a given type, and types."""

    def __init__(self, source: random.Random) -> None:
        self._source = source
        self._files_in_variants = 0
        self._simple: Mapping[str, Callable[[], Any]] = {
            "b": lambda: dbus.Boolean(source.random() < 0.5),
            "d": lambda: dbus.Double(source.choice(DOUBLES)),
            "s": lambda: dbus.String(self._text()),
            "o": lambda: dbus.ObjectPath(source.choice(PATHS)),
            "g": lambda: dbus.Signature(source.choice(SIGNATURES)),
            "h": lambda: dbus.types.UnixFd(A_FILE),
        }

    def values(self, signature: str, room: int = DEEPEST_OF_ALL) -> tuple[Any, ...]:
        """What a message holds: one value for each complete type; there is room for so many levels."""
        self._files_in_variants = 0
        return self._values(signature, room)

    def _values(self, signature: str, room: int) -> tuple[Any, ...]:
        return tuple(self.value(str(kind), room) for kind in dbus.Signature(signature))

    def value(self, kind: str, room: int = DEEPEST_OF_ALL) -> Any:
        if kind in INTEGERS:
            return self._integer(*INTEGERS[kind])
        if kind in self._simple:
            return self._simple[kind]()
        if kind == "v":
            return self._variant(room)
        if kind.startswith("a{"):
            return self._dictionary(kind[2:-1], room - 2)
        if kind.startswith("a"):
            return self._array(kind[1:], room - 1)
        return dbus.Struct(self._values(kind[1:-1], room - 1), signature=kind[1:-1])

    def _integer(self, make: Callable[[int], Any], least: int, most: int) -> Any:
        if self._source.random() < 0.5:
            return make(self._source.randrange(12))
        edges = (least, most, *INTS, *LONGS)
        return make(self._source.choice([edge for edge in edges if least <= edge <= most]))

    def _text(self) -> str:
        if self._source.random() < LARGE:
            return self._source.choice(LARGE_TEXTS)
        return self._source.choice((*TEXTS, "main", "addr", "aom_type", "5"))

    def _variant(self, room: int) -> Any:
        """A variant in a variant, and so on, now and then as deep as can be."""
        if room < ROOM_FOR_A_VARIANT:
            return dbus.Int32(5, variant_level=1)
        deep = self._source.random() < 0.05
        level = self._source.randint(1, room - ROOM_FOR_A_VARIANT + 1) if deep else 1
        kind = self.kind(2).replace("v", "i")
        self._files_in_variants += kind.count("h")
        if self._files_in_variants > MOST_FILES_IN_VARIANTS:
            kind = kind.replace("h", "i")
        if kind == "h":
            return dbus.types.UnixFd(A_FILE, variant_level=level)
        return _in_variants(self.value(kind, room - level), level)

    def _dictionary(self, kinds: str, room: int) -> Any:
        count = self._count(kinds)
        key, value = (str(kind) for kind in dbus.Signature(kinds))
        items = {self.value(key): self.value(value, room) for _ in range(count)}
        return dbus.Dictionary(items, signature=kinds)

    def _array(self, kind: str, room: int) -> Any:
        items = [self.value(kind, room) for _ in range(self._count(kind))]
        return dbus.Array(items, signature=kind)

    def _count(self, kinds: str) -> int:
        """Many of what is small; one or two of what holds more; few files at a time."""
        if "h" in kinds:
            return self._source.randrange(2)
        if len(kinds) == 1 and self._source.random() < LARGE:
            return MANY_ITEMS
        return self._source.randrange(3 if len(kinds) < DEEPEST else 2)

    # Types

    def kind(self, depth: int = 4) -> str:
        """A complete type that goes at most so deep."""
        if depth <= 0 or self._source.random() < 0.5:
            return self._source.choice(BASIC_TYPES + "hv")
        inner = self.kind(depth - 1)
        key = self._source.choice(BASIC_TYPES)
        return self._source.choice((f"a{inner}", f"({inner}{self.kind(0)})", f"a{{{key}{inner}}}"))

    def deep_kind(self) -> str:
        """A type that goes as deep as the bus allows, or almost."""
        depth = DEEPEST - self._source.randrange(2)
        inner = self._source.choice("yiv")
        return self._source.choice(
            (
                "a" * depth + inner,
                "(" * depth + inner + ")" * depth,
                "a" * depth + "(" * depth + "i" + ")" * depth,
                "a{s" * (depth // 2) + inner + "}" * (depth // 2),
            )
        )


def _in_variants(value: Any, level: int) -> Any:
    signature = getattr(value, "signature", None)
    if signature is None:
        return type(value)(value, variant_level=level)
    return type(value)(value, signature=signature, variant_level=level)
