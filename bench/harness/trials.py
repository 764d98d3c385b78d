"""Trials, in turn: each round, each work, each server, with the first one last in the next round."""

from dataclasses import dataclass
from typing import Iterator, Sequence, TypeVar

from .runs import Run, Series
from .setup import Setup
from .stand import Stand

T = TypeVar("T")

WARMUP_PART = 5


@dataclass(frozen=True)
class Trial:
    """What is done on a stand in each round."""

    series: Series
    stand: Stand
    count: int

    def run(self, round_: int) -> Run:
        callers = self.series.callers
        warmup = max(self.count // WARMUP_PART // callers, 1)
        timed = self.stand.do(self.series.work, self.count, warmup, callers)
        return Run(self.series, round_, timed.seconds, timed.count)


def trial(setup: Setup, section: str, work: str, count: int, stand: Stand) -> Trial:
    """A work on a stand, by one caller."""
    series = Series(section, work, stand.server, stand.rows, 1, stand.cores)
    return Trial(series, stand, setup.count(count))


def rotated(items: Sequence[T], by: int) -> list[T]:
    """The items in a circle, begun at another one."""
    if not items:
        return []
    start = by % len(items)
    return [*items[start:], *items[:start]]


def in_turn(groups: Sequence[Sequence[T]], rounds: int) -> Iterator[tuple[int, T]]:
    """In each round each group, its members side by side in an order that rotates."""
    for round_ in range(rounds):
        for group in groups:
            for member in rotated(group, round_):
                yield round_, member


def run_trials(
    setup: Setup, title: str, groups: Sequence[Sequence[Trial]], rounds: int
) -> list[Run]:
    """Runs every trial once in each round."""
    runs = []
    for round_, trial in in_turn(groups, rounds):
        setup.progress.show(f"{title}: round {round_ + 1} of {rounds}, {trial.series.work}")
        runs.append(trial.run(round_))
    return runs
