"""Holding one server's transcript against another's."""

from typing import Any, Iterator, NamedTuple

from conversation import Step
from database import Database
from sandbox.records import Action, Key

REPORTED = 12
"""As many differences are told; those that follow mostly come of the first."""


class File(NamedTuple):
    """What a server leaves behind."""

    tables: dict[str, str]
    last_ids: dict[str, int]
    keys: list[Key]
    actions: list[Action]


class Transcript(NamedTuple):
    """A conversation from beginning to end."""

    steps: list[Step]
    file: File


def read_file(database: Database) -> File:
    last_ids = {name: last for name, last in database.rows("SELECT * FROM sqlite_sequence")}
    return File(database.schema(), last_ids, database.keys(), database.actions())


def differences(expected: Transcript, found: Transcript) -> list[str]:
    """What is different in the second transcript, for a reader; empty if nothing is."""
    told = list(_in_steps(expected, found)) + list(
        _in_fields("the file", expected.file, found.file)
    )
    if len(expected.steps) != len(found.steps):
        told.append(f"{len(expected.steps)} steps, but {len(found.steps)}")
    return told[:REPORTED]


def _in_steps(expected: Transcript, found: Transcript) -> Iterator[str]:
    for number, (left, right) in enumerate(zip(expected.steps, found.steps)):
        yield from _in_fields(f"step {number}, {left}", left, right)


def _in_fields(what: str, expected: Any, found: Any) -> Iterator[str]:
    for field in expected._fields:
        left, right = getattr(expected, field), getattr(found, field)
        if left != right:
            yield f"{what}: {field}\n    {_apart(left, right)}\n    {_apart(right, left)}"


def _apart(one: Any, other: Any) -> Any:
    """What only the first has; all of it where they differ in order or number."""
    if not isinstance(one, list) or not isinstance(other, list):
        return one
    if all(item in other for item in one) and all(item in one for item in other):
        return one
    return [item for item in one if item not in other]
