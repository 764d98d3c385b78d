"""Figures as text, and the tables that several sections have."""

from typing import Callable, Sequence

from ..comparing import RATIO, Comparison
from ..figures import Spread
from ..programs import SERVICE
from ..runs import MEBIBYTE
from ..tables import BAD, GOOD, Cell, Column, Table, plain

Formatter = Callable[[float], str]

NO_LIMIT = "-"


def micro(seconds: float) -> str:
    """Microseconds, three digits or all that are before the point."""
    figure = seconds * 1e6
    digits = 0 if figure >= 100 else 1 if figure >= 10 else 2
    return f"{figure:,.{digits}f}"


def milli(seconds: float) -> str:
    return f"{seconds * 1e3:,.1f}"


def mebibytes(size: float) -> str:
    return f"{size / MEBIBYTE:.2f}"


def factor(ratio: float) -> str:
    return f"{ratio:.2f}" if ratio < 100 else f"{ratio:.0f}"


def ends(result: Spread, formatted: Formatter) -> str:
    """From the lowest to the highest."""
    return f"{formatted(result.lowest)} to {formatted(result.highest)}"


def verdict(comparison: Comparison) -> Cell:
    """Whether a limit holds."""
    if comparison.limit is None:
        return Cell("none")
    if not comparison.is_judged:
        return Cell("not judged")
    return Cell("holds", GOOD) if comparison.holds else Cell("does not hold", BAD)


def limits_table(
    title: str,
    other: str,
    comparisons: Sequence[Comparison],
    amount: Formatter,
    subject: str = SERVICE,
) -> Table:
    """One row for each limit, or for what stands beside one."""
    is_ratio = all(comparison.relation == RATIO for comparison in comparisons)
    formatted = factor if is_ratio else amount
    rows = [
        plain(
            each.name,
            amount(each.subject_median),
            amount(each.against_median),
            formatted(each.result.median),
            ends(each.result, formatted),
            NO_LIMIT if each.limit is None else formatted(each.limit),
        )
        + (verdict(each),)
        for each in comparisons
    ]
    numbers = (subject, other, "ratio" if is_ratio else "more", "spread", "at most")
    columns = [
        Column("what"),
        *(Column(name, is_number=True, is_spare=name == "spread") for name in numbers),
        Column("limit"),
    ]
    return Table(title, columns, rows, has_limits=True)


def against_table(
    title: str, subject: str, other: str, comparisons: Sequence[Comparison]
) -> Table:
    """One row for each ratio, without a limit."""
    rows = [
        plain(each.name, micro(each.subject_median), micro(each.against_median), *_ratio(each))
        for each in comparisons
    ]
    return Table(title, _columns(subject, other), rows)


def others_table(title: str, comparisons: Sequence[Comparison]) -> Table:
    """What other servers take for the works, against the rival."""
    rows = [
        plain(f"{each.subject.server}: {each.name}", micro(each.subject_median))
        + plain(micro(each.against_median), *_ratio(each))
        for each in comparisons
    ]
    return Table(title, _columns("it takes", "rival"), rows)


def _ratio(comparison: Comparison) -> tuple[str, str]:
    return factor(comparison.result.median), ends(comparison.result, factor)


def _columns(subject: str, other: str) -> list[Column]:
    numbers = (subject, other, "ratio", "spread")
    return [
        Column("what"),
        *(Column(name, is_number=True, is_spare=name == "spread") for name in numbers),
    ]
