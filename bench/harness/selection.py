"""Which measurements are wanted, by their names."""

from dataclasses import dataclass
from typing import Optional, Sequence

from .names import GROUPS, QT6, RIVAL, SECTIONS
from .sections.works import IN_MEMORY

WORKS = tuple(work.name for work in IN_MEMORY)
NAMES = (*GROUPS, *SECTIONS, *WORKS)


@dataclass(frozen=True)
class Selection:
    """Sections, and the works of the first two if not all."""

    sections: tuple[str, ...]
    works: Optional[frozenset[str]] = None

    @property
    def builds(self) -> tuple[str, ...]:
        """The presets whose programs are measured."""
        return ("bench", "bench-qt6") if QT6 in self.sections else ("bench",)


def select(names: Sequence[str], is_quick: bool = False) -> Selection:
    """What these names mean; a work stands for itself against the rival, no name for everything."""
    words = frozenset(names or SECTIONS)
    chosen = {name for word in words for name in GROUPS.get(word, (word,))}
    works = words & frozenset(WORKS)
    has_all_works = not works or bool(chosen & set(RIVAL))
    chosen |= set(RIVAL) if works else set()
    if is_quick and QT6 not in names:
        chosen.discard(QT6)
    picked = tuple(section for section in SECTIONS if section in chosen)
    return Selection(picked, None if has_all_works else works)
