"""What every measurement is given."""

from dataclasses import dataclass, field
from pathlib import Path
from typing import Optional

from .programs import Programs
from .progress import Progress

ROUNDS = 11
LEAST_ROUNDS = 7
QUICK_ROUNDS = 3
QUICK_PART = 20


@dataclass(frozen=True)
class Setup:
    """Programs, places, and how much to do."""

    programs: Programs
    memory: Path
    disk: Path
    rounds: int = ROUNDS
    is_quick: bool = False
    works: Optional[frozenset[str]] = None
    progress: Progress = field(default_factory=Progress)

    @property
    def reported_rounds(self) -> int:
        """The rounds of what has no limit."""
        return min(self.rounds, LEAST_ROUNDS)

    def wants(self, work: str) -> bool:
        return self.works is None or work in self.works

    def count(self, count: int) -> int:
        """How often something is done in one run."""
        return max(count // QUICK_PART, 2) if self.is_quick else count
