"""Which measurements are wanted, by their names."""

from dataclasses import dataclass
from typing import Optional, Sequence

from .sections import calls, callers, cores, growth, memory, qt6, start, synchronisation
from .sections.section import Section
from .sections.works import IN_MEMORY

SECTIONS = (
    calls.ON_TMPFS,
    calls.ON_A_DISK,
    memory.SECTION,
    start.SECTION,
    synchronisation.SECTION,
    cores.SECTION,
    callers.SECTION,
    qt6.SECTION,
    growth.SECTION,
)

RIVAL = ("tmpfs", "disk")
FRAME = ("memory", "start", "synchronisation")
GROUPS = {
    "rival": RIVAL,
    "frame": FRAME,
    "limits": RIVAL + FRAME,
    "reported": ("cores", "callers", "qt6", "growth"),
}

WORKS = tuple(work.name for work in IN_MEMORY)
NAMES = (*GROUPS, *(section.name for section in SECTIONS), *WORKS)


@dataclass(frozen=True)
class Selection:
    """Sections, and the works of the first two if not all."""

    sections: tuple[Section, ...]
    works: Optional[frozenset[str]] = None

    @property
    def servers(self) -> frozenset[str]:
        """The servers that must be there."""
        return frozenset().union(*(section.servers for section in self.sections))


def select(names: Sequence[str], is_quick: bool = False) -> Selection:
    """What these names mean; a work stands for itself against the rival, no name for everything."""
    words = frozenset(names or (section.name for section in SECTIONS))
    chosen = {name for word in words for name in GROUPS.get(word, (word,))}
    works = words & frozenset(WORKS)
    has_all_works = not works or bool(chosen & set(RIVAL))
    chosen |= set(RIVAL) if works else set()
    if is_quick and qt6.NAME not in names:
        chosen.discard(qt6.NAME)
    picked = tuple(section for section in SECTIONS if section.name in chosen)
    return Selection(picked, None if has_all_works else works)
