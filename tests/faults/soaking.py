"""A long time of everyday use: many requests at once, held to the replies of the reference."""

import random
from pathlib import Path
from typing import Any, Mapping

from hostile import LARGE_TEXTS
from model.making import MIXED, StepMaker, Taste
from model.phone import FIRST_SETTINGS, Phone, operation_of
from model.reference import Reference
from model.steps import PRESS, RESTART, SETTING, SETTINGS_MANNER, Step
from operations import Operation
from sandbox.client import PendingReply
from sandbox.records import Action

AT_ONCE = 32
"""Requests on their way together."""
NOT_EVERYDAY = (RESTART, SETTING, SETTINGS_MANNER, "restoreFactory")
EVERYDAY: Mapping[str, float] = {
    **{name: weight for name, weight in MIXED.items() if name not in NOT_EVERYDAY},
    "restoreDefault": 0.05,
}
LARGE_ACTION = Action(-1, "", 0, *LARGE_TEXTS, *LARGE_TEXTS, "large")
TASTE = Taste(EVERYDAY, large=0.0002)


class Soak:
    """A phone in use for as long as one likes."""

    def __init__(self, phone: Phone, seed: int) -> None:
        self._phone = phone
        self._reference = Reference(str(phone.database.path), FIRST_SETTINGS)
        self._maker = StepMaker(random.Random(seed), self._reference, TASTE)
        self._on_the_way: list[tuple[Step, Operation, PendingReply, Any]] = []

    def use(self, count: int) -> None:
        """Makes so many requests: large ones first, and a reset last, so that each use ends alike."""
        self._request(Step("addAction", (LARGE_ACTION,)))
        self._request(Step("getAllActions"))
        for _ in range(count - 3):
            self._request(self._maker.next())
        self._request(Step("restoreDefault"))
        self._collect()
        assert self._phone.tables.rows() == self._reference.tables()

    def _request(self, step: Step) -> None:
        expected = self._reference.perform(step).reply
        operation = operation_of(step)
        if operation is not None:
            pending = self._phone.send(operation, step)
            self._on_the_way.append((step, operation, pending, expected))
        elif step.name == PRESS:
            self._phone.press(step)
        else:
            self._collect()
            self._phone.perform(step)
        if len(self._on_the_way) >= AT_ONCE:
            self._collect()

    def _collect(self) -> None:
        for step, operation, pending, expected in self._on_the_way:
            found = self._phone.value(operation, pending)
            assert found == expected, f"{str(step)[:500]}: {found!r:.500}, not {expected!r:.500}"
        self._on_the_way.clear()
        self._phone.forget_what_was_seen()


def private_kibibytes(pid: int) -> int:
    """The memory that a process has written to and has for itself alone, swapped out or not.

    What it has only read, of its program and libraries, is its own or not as other processes come and go.
    """
    lines = Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii").splitlines()[1:]
    sizes = dict(line.split(":") for line in lines)
    return sum(int(sizes[name].split()[0]) for name in ("Private_Dirty", "Swap"))
