"""Makes a failing sequence short: delta debugging, each attempt on a phone of its own."""

import time
from typing import Callable, Optional, Sequence

from model.handles import PlacedStep, with_handles, with_ids
from model.steps import Step
from model.trial import Difference

Try = Callable[[Sequence[Step]], Optional[Difference]]


class Shrinker:
    """Leaves out steps for as long as the rest still fails, within bounds."""

    def __init__(self, try_steps: Try, attempts: int = 300, seconds: float = 240) -> None:
        self._try = try_steps
        self._attempts = attempts
        self._deadline = time.monotonic() + seconds

    def shrink(self, steps: Sequence[Step]) -> list[Step]:
        """A sequence, as short as could be found, that fails as well; the given one is known to."""
        shortest = with_handles(steps)
        parts = 2
        while len(shortest) > 1 and not self._exhausted:
            shorter = self._without_one_part(shortest, min(parts, len(shortest)))
            if shorter is not None:
                shortest, parts = shorter, max(parts - 1, 2)
            elif parts >= len(shortest):
                break
            else:
                parts *= 2
        return with_ids(shortest)

    @property
    def _exhausted(self) -> bool:
        return self._attempts <= 0 or time.monotonic() > self._deadline

    def _without_one_part(self, steps: list[PlacedStep], parts: int) -> Optional[list[PlacedStep]]:
        bounds = [len(steps) * part // parts for part in range(parts + 1)]
        for start, end in zip(bounds, bounds[1:]):
            if self._exhausted:
                break
            rest = steps[:start] + steps[end:]
            self._attempts -= 1
            difference = self._try(with_ids(rest))
            if difference is not None:
                return rest[: difference.number]  # what comes after the failure is not needed
        return None
