"""Parsing provisioning texts."""

import re
from typing import NamedTuple, Optional

from hostile import INT_MAX, INT_MIN
from sandbox.records import Action, Key

SPACES = "\t\n\v\f\r \x85\xa0\u1680\u2028\u2029\u202f\u205f\u3000" + "".join(
    map(chr, range(0x2000, 0x200B))
)
FIELDS_OF_A_RECORD = 7


class Record(NamedTuple):
    """A record: its text with hidden escapes, and its fields if there are exactly seven."""

    hidden: str
    fields: Optional[list[str]]


def whole_number(text: str) -> Optional[int]:
    """The 32-bit number in a text with optional outer spaces, or None."""
    digits = text.strip(SPACES)
    if not re.fullmatch("[+-]?[0-9]+", digits):
        return None
    number = int(digits)
    return number if INT_MIN <= number <= INT_MAX else None


def number_or_zero(text: str) -> int:
    return whole_number(text) or 0


def records_of(text: str) -> list[Record]:
    hidden = text.replace("\\,", "escComa").replace("\\#", "escSharp")
    return [_record(part) for part in hidden.split("#")]


def _record(hidden: str) -> Record:
    fields = [
        field.replace("escComa", ",").replace("escSharp", "#") for field in hidden.split(",")
    ]
    return Record(hidden, fields if len(fields) == FIELDS_OF_A_RECORD else None)


def provisioned_action(fields: list[str]) -> Action:
    dm_id, type_of_action, *texts = fields
    return Action(-1, dm_id, number_or_zero(type_of_action), *texts)


def provisioned_key(fields: list[str]) -> Key:
    dm_id, container, position, icon, *numbers = fields
    place = (-1, dm_id, -1, container, number_or_zero(position), icon)
    return Key(*place, *map(number_or_zero, numbers))
