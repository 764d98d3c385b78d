"""What a section is."""

from dataclasses import dataclass
from typing import Callable, Iterable, Sequence

from ..comparing import Comparison
from ..runs import Run, Runs
from ..setup import Setup
from ..tables import Table


@dataclass(frozen=True)
class Section:
    """A measurement that can be made by itself, and what is made of its runs."""

    name: str
    servers: frozenset[str]
    measure: Callable[[Setup], list[Run]]
    compare: Callable[[Runs], list[Comparison]]
    tables: Callable[[Runs, Sequence[Comparison]], Iterable[Table]]


@dataclass(frozen=True)
class Measured:
    """A section, and what came of it."""

    section: Section
    runs: Runs
    comparisons: Sequence[Comparison]
    tables: Sequence[Table]
