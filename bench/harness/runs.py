"""Runs: what was measured of one server in one round, and picking among them."""

from dataclasses import dataclass, replace
from typing import Any, Iterable, Iterator, Mapping, Optional

ROWS = 100
"""The keys, and the actions, that are stored unless a measurement says otherwise."""

SECONDS = "s"
BYTES = "B"
MEBIBYTE = 1024**2


@dataclass(frozen=True)
class Series:
    """The runs that differ in nothing but their round."""

    section: str
    work: str
    server: str
    rows: int = ROWS
    callers: int = 1
    cores: str = "one"

    def of(self, server: str) -> "Series":
        """The same of another server."""
        return replace(self, server=server)


@dataclass(frozen=True)
class Run:
    """One run: what it took altogether, in seconds or bytes, for `count` operations."""

    series: Series
    round: int
    total: float
    count: int = 1
    unit: str = SECONDS
    shares: Optional[Mapping[str, float]] = None

    @property
    def figure(self) -> float:
        """What one operation took."""
        return self.total / self.count


class Runs:
    """All runs of a measurement or of several."""

    def __init__(self, runs: Iterable[Run] = ()) -> None:
        self._runs = list(runs)

    def __iter__(self) -> Iterator[Run]:
        return iter(self._runs)

    def __len__(self) -> int:
        return len(self._runs)

    def of(self, series: Series) -> list[Run]:
        """The runs of a series, by round."""
        found = (run for run in self._runs if run.series == series)
        return sorted(found, key=lambda run: run.round)

    def figures(self, series: Series) -> list[float]:
        """What one operation took, by round."""
        return [run.figure for run in self.of(series)]

    def series(self, **where: Any) -> list[Series]:
        """The series in which these fields have these values, in the order of their first runs."""
        found = dict.fromkeys(run.series for run in self._runs)
        return [
            series
            for series in found
            if all(getattr(series, field) == value for field, value in where.items())
        ]
