"""Everything that was measured, as JSON."""

import json
from dataclasses import asdict
from typing import Any, Mapping, Sequence

from .comparing import Comparison
from .figures import spread
from .runs import Run, Runs

FORMAT = 1


def document(
    head: Mapping[str, Any], runs: Runs, comparisons: Sequence[Comparison]
) -> dict[str, Any]:
    """The head, the limits, and what they come from, down to each round."""
    return {
        "format": FORMAT,
        **head,
        "limits": [_comparison(each) for each in comparisons if each.limit is not None],
        "comparisons": [_comparison(each) for each in comparisons if each.limit is None],
        "series": [_series(runs.of(series)) for series in runs.series()],
    }


def as_text(parts: Mapping[str, Any]) -> str:
    """The JSON, with one line for each element of a list."""
    members = []
    for name, value in parts.items():
        text = _list(value) if isinstance(value, list) else json.dumps(value, ensure_ascii=False)
        members.append(f"  {json.dumps(name)}: {text}")
    return "{\n" + ",\n".join(members) + "\n}\n"


def _list(values: list[Any]) -> str:
    lines = ",\n".join(f"    {json.dumps(value, ensure_ascii=False)}" for value in values)
    return f"[\n{lines}\n  ]" if values else "[]"


def _comparison(comparison: Comparison) -> dict[str, Any]:
    return {
        "section": comparison.subject.section,
        "name": comparison.name,
        "subject": asdict(comparison.subject),
        "against": asdict(comparison.against),
        "unit": comparison.unit,
        "subject median": comparison.subject_median,
        "against median": comparison.against_median,
        "relation": comparison.relation,
        **asdict(comparison.result),
        **_limit(comparison),
    }


def _limit(comparison: Comparison) -> dict[str, Any]:
    if comparison.limit is None:
        return {}
    return {
        "limit": comparison.limit,
        "holds": comparison.holds if comparison.is_judged else None,
    }


def _series(runs: Sequence[Run]) -> dict[str, Any]:
    """What one operation took, and beside it each round's total."""
    written: dict[str, Any] = {
        **asdict(runs[0].series),
        "unit": runs[0].unit,
        **asdict(spread([run.figure for run in runs])),
        "counts": [run.count for run in runs],
        "totals": [run.total for run in runs],
    }
    shares = [dict(run.shares) for run in runs if run.shares is not None]
    return {**written, "shares": shares} if shares else written
