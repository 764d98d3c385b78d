"""Two series held against each other, and against a limit where there is one."""

from dataclasses import dataclass
from typing import Iterable, Optional

from .figures import Spread, differences, ratios, spread
from .runs import Runs, Series

RATIO = "ratio"
DIFFERENCE = "difference"

RELATIONS = {RATIO: ratios, DIFFERENCE: differences}


@dataclass(frozen=True)
class Comparison:
    """How one series stands to another over the rounds that both ran in."""

    name: str
    subject: Series
    against: Series
    relation: str
    result: Spread
    subject_median: float
    against_median: float
    unit: str
    limit: Optional[float] = None
    is_judged: bool = True

    @property
    def holds(self) -> bool:
        """Whether the median keeps the limit; where there is none, it does."""
        return self.limit is None or self.result.median <= self.limit


def compare(
    runs: Runs,
    name: str,
    subject: Series,
    against: Series,
    relation: str = RATIO,
    limit: Optional[float] = None,
) -> Comparison:
    """Compares two series that were measured in the same rounds."""
    figures, others = runs.figures(subject), runs.figures(against)
    return Comparison(
        name,
        subject,
        against,
        relation,
        spread(RELATIONS[relation](figures, others)),
        spread(figures).median,
        spread(others).median,
        runs.of(subject)[0].unit,
        limit,
    )


def broken(comparisons: Iterable[Comparison]) -> list[Comparison]:
    """Those whose limit is judged and does not hold."""
    return [each for each in comparisons if each.is_judged and not each.holds]
