"""Figures out of rounds: the middle one beside the lowest and the highest."""

from dataclasses import dataclass
from statistics import median
from typing import Sequence


@dataclass(frozen=True)
class Spread:
    """The median of some figures, and the two ends."""

    median: float
    lowest: float
    highest: float


def spread(figures: Sequence[float]) -> Spread:
    """The spread of at least one figure."""
    return Spread(median(figures), min(figures), max(figures))


def ratios(figures: Sequence[float], others: Sequence[float]) -> list[float]:
    """Round by round, one server's figure over the other's."""
    return [figure / other for figure, other in zip(figures, others, strict=True)]


def differences(figures: Sequence[float], others: Sequence[float]) -> list[float]:
    """Round by round, one server's figure less the other's."""
    return [figure - other for figure, other in zip(figures, others, strict=True)]
