"""Runs as the harness would have made them."""

from typing import Optional

from harness.comparing import Comparison, compare
from harness.programs import RIVAL, SERVICE
from harness.runs import Run, Runs, Series

PRESS = Series("tmpfs", "press", SERVICE)


def runs_of(series: Series, *seconds: float, count: int = 10) -> list[Run]:
    return [Run(series, round_, total * count, count) for round_, total in enumerate(seconds)]


def presses(*of_service: float, rival: tuple[float, ...] = (1.0, 2.0, 4.0)) -> Runs:
    return Runs(runs_of(PRESS, *of_service) + runs_of(PRESS.of(RIVAL), *rival))


def press_limit(*of_service: float, limit: Optional[float] = 1.7) -> Comparison:
    return compare(presses(*of_service), "press", PRESS, PRESS.of(RIVAL), limit=limit)
