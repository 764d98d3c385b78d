"""Holding a running service against the reference, step by step."""

import itertools
import tempfile
from pathlib import Path
from typing import Any, Callable, Iterable, NamedTuple, Optional

from model.phone import FIRST_SETTINGS, Phone
from model.reference import Reference
from model.steps import Outcome, Step, literal
from sandbox.client import BusError

FULL_LOOK_EVERY = 100
"""Steps after which the tables are read even if nobody seems to have written."""
MANY_CHARACTERS = 1500

MakeReference = Callable[[str, dict[str, str]], Reference]


class Difference(NamedTuple):
    """What a service did otherwise than it should have."""

    number: int
    """The step after which it showed, counted from 1; 0 is the first start."""
    step: Optional[Step]
    what: str

    def __str__(self) -> str:
        return f"step {self.number}, {_short(self.step)}:\n{self.what}"


class Trial:
    """A phone and a reference that go the same way."""

    def __init__(self, phone: Phone, make_reference: MakeReference) -> None:
        self._phone = phone
        self.reference = make_reference(str(phone.database.path), FIRST_SETTINGS)
        self._stored = self.reference.tables()
        self._number = 0

    def begin(self) -> Optional[Difference]:
        """Holds the first start against the reference's."""
        self._phone.client.round_trip()
        expected = self.reference.perform(Step("firstStart"))
        return self._difference(None, expected, self._phone.seen())

    def take(self, step: Step) -> Optional[Difference]:
        """Does a step on both sides; what differs then, if anything does."""
        self._number += 1
        expected = self.reference.perform(step)
        try:
            found = self._phone.perform(step)
        except (AssertionError, BusError) as failure:
            return Difference(self._number, step, f"{failure}\n{self._state_of_service()}")
        return self._difference(step, expected, found)

    def end(self) -> Optional[Difference]:
        """Ends the service, which must go cleanly and leave the same tables."""
        try:
            self._phone.service.stop()
        except AssertionError as failure:
            return Difference(self._number, None, str(failure))
        return self._difference_of_tables(None)

    def _state_of_service(self) -> str:
        service = self._phone.service
        return f"{service} runs" if service.running else f"{service} ended: {service.status}"

    def _difference(
        self, step: Optional[Step], expected: Outcome, found: Outcome
    ) -> Optional[Difference]:
        for name in Outcome._fields:
            what = _describe(name, getattr(expected, name), getattr(found, name))
            if what:
                return Difference(self._number, step, what)
        stored = self.reference.tables()
        seems_written = self._phone.tables.were_written()
        if stored == self._stored and not seems_written and self._number % FULL_LOOK_EVERY:
            return None
        self._stored = stored
        return self._difference_of_tables(step)

    def _difference_of_tables(self, step: Optional[Step]) -> Optional[Difference]:
        expected, found = self.reference.tables(), self._phone.tables.rows()
        for name, rows, others in zip(("KEY", "ACTION"), expected, found):
            what = _describe(f"table {name}", rows, others)
            if what:
                return Difference(self._number, step, what)
        return None


def _describe(name: str, expected: Any, found: Any) -> str:
    if expected == found:
        return ""
    if isinstance(expected, list) and isinstance(found, list):
        place = _first_difference(expected, found)
        name = f"{name}, entry {place} of {len(expected)} expected and {len(found)} found"
        expected, found = expected[place : place + 3], found[place : place + 3]
    return f"{name}\n  expected: {_short(expected)}\n  found:    {_short(found)}"


def _first_difference(expected: list[Any], found: list[Any]) -> int:
    alike = itertools.takewhile(lambda pair: pair[0] == pair[1], zip(expected, found))
    return len(list(alike))


def _short(value: Any) -> str:
    written = literal(value)
    return written if len(written) <= MANY_CHARACTERS else f"{written[:MANY_CHARACTERS]}..."


def try_steps(
    bin_dir: Path, steps: Iterable[Step], make_reference: MakeReference = Reference
) -> Optional[Difference]:
    """Takes the steps on a fresh phone, up to the first difference."""
    with tempfile.TemporaryDirectory(prefix="phone-") as directory:
        with Phone(bin_dir, Path(directory)) as phone:
            trial = Trial(phone, make_reference)
            difference = trial.begin()
            for step in steps:
                difference = difference or trial.take(step)
                if difference:
                    return difference
            return difference or trial.end()
