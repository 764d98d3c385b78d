"""A long time of everyday use: many requests at once, held to the replies of the reference."""

import random
from pathlib import Path
from typing import Any, Mapping

from hostile import LARGE_TEXTS
from model.making import MIXED, StepMaker, Taste
from model.phone import FIRST_SETTINGS, Phone, operation_of
from model.reference import Reference
from model.steps import PRESS, PROPERLY, RESTART, SETTING, SETTINGS_MANNER, Step
from operations import Operation
from rollout import Rollout
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.client import PendingReply
from sandbox.records import Action

AT_ONCE = 32
"""Requests on their way together."""
EVERYDAY: Mapping[str, float] = {**MIXED, "restoreDefault": 0.5, RESTART: 0}
LAST_ROLLOUT = Rollout(
    [CALL._replace(dmId="D1"), CALL._replace(dmId="D2")],
    [SET_KEY._replace(dmId="D1"), MODULE_KEY._replace(dmId="D2")],
)
PUT_BACK = (
    Step(SETTINGS_MANNER, (PROPERLY,)),
    *(Step(SETTING, item) for item in {**FIRST_SETTINGS, **LAST_ROLLOUT.settings}.items()),
    Step("restoreDefault"),
)
"""What a use ends with: a rollout that is always the same, and nothing else."""
DM_IDS_AT_THE_END = ["D1", "D2", "", "D1", "D2"]
RESETS = ("restoreDefault", "restoreFactory")
LARGE_ACTION = Action(-1, "", 0, *LARGE_TEXTS, *LARGE_TEXTS, "large")
TASTE = Taste(EVERYDAY, large=0.0002)


class Soak:
    """A phone in use for as long as one likes."""

    def __init__(self, phone: Phone, seed: int) -> None:
        self._phone = phone
        self._reference = Reference(str(phone.database.path), FIRST_SETTINGS)
        self._maker = StepMaker(random.Random(seed), self._reference, TASTE)
        self._on_the_way: list[tuple[Step, Operation, PendingReply, Any]] = []
        self.provisioned = 0
        """Rows that resets have made of rollouts."""

    def use(self, count: int) -> None:
        """Does so much: large requests first, and last what makes each use end alike."""
        self._take(Step("addAction", (LARGE_ACTION,)))
        self._take(Step("getAllActions"))
        for _ in range(count - 2 - len(PUT_BACK)):
            self._take(self._maker.next())
        for step in PUT_BACK:
            self._take(step)
        self._collect()
        assert self._phone.tables.rows() == self._reference.tables()
        assert self._dm_ids() == DM_IDS_AT_THE_END

    def _dm_ids(self) -> list[str]:
        """Those of all rows, keys first; empty ones are of what was not provisioned."""
        return [row.dmId for rows in self._reference.tables() for row in rows]

    def _take(self, step: Step) -> None:
        expected = self._reference.perform(step).reply
        if step.name in RESETS:
            self.provisioned += sum(map(bool, self._dm_ids()))
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
