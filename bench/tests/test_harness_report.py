"""What the harness tells: its tables, its JSON, and what is drawn from that."""

import json
from dataclasses import replace
from typing import Any

import pytest

from harness.comparing import compare
from harness.document import as_text, document
from harness.programs import AFTERNOON, RIVAL, SERVICE
from harness.runs import Runs, Series
from harness.sections.showing import limits_table, micro
from harness.tables import BAD, RESET, Cell, Column, Table, plain, render
from made_runs import PRESS, press_limit, presses, runs_of
from plots.plot_data import growth_blocks, ratio_blocks

# Tables


TABLE = Table(
    "Title",
    [Column("what"), Column("spread", True, True), Column("ratio", True), Column("limit")],
    [
        plain("a long description", "1.00 to 1.50", "1.25") + (Cell("does not hold", BAD),),
        plain("short", "1.00 to 9.00", "10.25") + (Cell("holds"),),
    ],
)


def test_a_table_in_its_full_width() -> None:
    assert render(TABLE).splitlines() == [
        "Title",
        "what                      spread  ratio  limit",
        "a long description  1.00 to 1.50   1.25  does not hold",
        "short               1.00 to 9.00  10.25  holds",
    ]


def test_what_is_spare_goes_first() -> None:
    assert render(TABLE, 53).splitlines()[1:] == [
        "what                ratio  limit",
        "a long description   1.25  does not hold",
        "short               10.25  holds",
    ]


def test_then_the_first_column_is_cut() -> None:
    assert render(TABLE, 33).splitlines()[1:] == [
        "what         ratio  limit",
        "a long des…   1.25  does not hold",
        "short        10.25  holds",
    ]


@pytest.mark.parametrize("width", range(32, 60))
def test_no_line_is_wider_than_the_room(width: int) -> None:
    assert max(map(len, render(TABLE, width).splitlines())) <= width


def test_colours_change_no_letter_and_no_place() -> None:
    coloured = render(TABLE, has_colour=True)
    assert f"{BAD}does not hold{RESET}" in coloured
    assert "\x1b" not in render(TABLE)
    for code in (BAD, RESET, "\x1b[1m"):
        coloured = coloured.replace(code, "")
    assert coloured == render(TABLE)


def test_a_limit_is_judged_in_words() -> None:
    limits = [press_limit(9, 9, 9), press_limit(1, 1, 1)]
    limits.append(replace(limits[0], is_judged=False))
    table = limits_table("", "rival", limits, micro)
    assert [row[-1].text for row in table.rows] == ["does not hold", "holds", "not judged"]
    assert [cell.text for cell in table.rows[0][:5]] == [
        "press",
        "9,000,000",
        "2,000,000",
        "4.50",
        "2.25 to 9.00",
    ]


# JSON, and what is drawn from it


def a_document() -> Any:
    runs = presses(9, 9, 9)
    limits = [press_limit(9, 9, 9), press_limit(1, 1, 1)]
    limits.append(replace(limits[0], is_judged=False))
    text = as_text(document({"rounds": 3}, runs, [*limits, press_limit(1, 1, 1, limit=None)]))
    return json.loads(text)


def test_the_json_has_every_round_and_what_comes_of_them() -> None:
    written = a_document()
    assert written["rounds"] == 3
    assert [each["holds"] for each in written["limits"]] == [False, True, None]
    assert {(each["limit"], each["median"]) for each in written["limits"]} == {
        (1.7, 4.5),
        (1.7, 0.5),
    }
    assert "limit" not in written["comparisons"][0]
    assert [series["server"] for series in written["series"]] == [SERVICE, RIVAL]
    assert written["series"][1] == {
        "section": "tmpfs",
        "work": "press",
        "server": RIVAL,
        "rows": 100,
        "callers": 1,
        "cores": "one",
        "unit": "s",
        "median": 2,
        "lowest": 1,
        "highest": 4,
        "counts": [10, 10, 10],
        "totals": [10, 20, 40],
    }


def test_a_run_may_tell_where_its_time_went() -> None:
    shares = {"settings": 0.5, "events": 0.25}
    runs = Runs([replace(run, shares=shares) for run in presses(1, 1, 1)])
    assert document({}, runs, [])["series"][0]["shares"] == [shares] * 3


def test_bars_are_drawn_from_the_limits() -> None:
    afternoon = PRESS.of(AFTERNOON)
    runs = Runs([*presses(9, 9, 9), *runs_of(afternoon, 2, 4, 8)])
    comparisons = [
        compare(runs, "press", PRESS, PRESS.of(RIVAL), limit=1.7),
        compare(runs, "press", afternoon, PRESS.of(RIVAL)),
    ]
    bars, headings = ratio_blocks(document({}, runs, comparisons))
    assert bars == [(-2, "press", 4.5, 2.25, 9.0, 1.7, 2.0)]
    assert headings == [(-1, "data in memory"), (-3, "data on a disk")]


def test_curves_are_drawn_from_medians() -> None:
    runs = Runs(
        run
        for rows in (100, 10)
        for cost, server in enumerate((SERVICE, RIVAL, AFTERNOON), start=1)
        for run in runs_of(Series("growth", "press", server, rows), cost * rows / 1e6)
    )
    (block,) = growth_blocks(document({}, runs, []))
    assert block == [
        (10, *map(pytest.approx, (10, 20, 30))),
        (100, *map(pytest.approx, (100, 200, 300))),
    ]
