"""What the harness measures, in which order, and what it makes of its runs."""

from dataclasses import replace
from pathlib import Path

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA, Database
from harness import names
from harness.comparing import DIFFERENCE, broken, compare
from harness.failure import MeasurementFailed
from harness.figures import Spread, differences, ratios, spread
from harness.programs import AFTERNOON, FRAME, RIVAL, SERVICE, Programs
from harness.report import verdict
from harness.runs import BYTES, Run, Runs, Series
from harness.sections import calls
from harness.sections.every import SECTIONS
from harness.selection import select
from harness.stock import write_stock
from harness.storage import file_system_of
from harness.trials import in_turn
from made_runs import PRESS, press_limit, presses, runs_of

# Figures


def test_a_median_is_the_middle_or_between_two() -> None:
    assert spread([5.0, 1.0, 3.0]) == Spread(3.0, 1.0, 5.0)
    assert spread([4.0, 1.0, 3.0, 2.0]).median == 2.5


def test_rounds_are_paired() -> None:
    assert ratios([2.0, 9.0], [1.0, 3.0]) == [2.0, 3.0]
    assert differences([2.0, 9.0], [1.0, 3.0]) == [1.0, 6.0]
    with pytest.raises(ValueError):
        ratios([1.0, 2.0], [1.0])


def test_a_comparison_is_by_round_whatever_ran_first() -> None:
    in_order = presses(1.5, 2.0, 4.0)
    runs = Runs([*reversed(in_order.of(PRESS)), *in_order.of(PRESS.of(RIVAL))])
    comparison = compare(runs, "press", PRESS, PRESS.of(RIVAL))
    assert comparison.result == Spread(1.0, 1.0, 1.5)
    assert (comparison.subject_median, comparison.against_median) == (2.0, 2.0)


def test_a_ratio_of_medians_is_not_the_median_of_ratios() -> None:
    comparison = press_limit(3.0, 2.0, 4.0, limit=None)
    assert comparison.subject_median / comparison.against_median == 1.5
    assert comparison.result.median == 1.0


def test_memory_is_compared_by_its_difference() -> None:
    idle = Series("memory", "idle", SERVICE)
    sizes = {SERVICE: (300, 320, 340), FRAME: (100, 110, 150)}
    runs = Runs(
        Run(idle.of(server), round_, size, unit=BYTES)
        for server, of_server in sizes.items()
        for round_, size in enumerate(of_server)
    )
    comparison = compare(runs, "idle", idle, idle.of(FRAME), DIFFERENCE, 205)
    assert (comparison.result, comparison.unit) == (Spread(200, 190, 210), BYTES)
    assert comparison.holds


# Limits


@pytest.mark.parametrize("factor, holds", [(1.6, True), (1.7, True), (1.8, False)])
def test_a_limit_may_be_reached(factor: float, holds: bool) -> None:
    comparison = press_limit(factor, 2 * factor, 4 * factor)
    assert comparison.holds == holds
    assert broken([comparison]) == ([] if holds else [comparison])


def test_a_limit_that_is_not_judged_does_not_break() -> None:
    comparison = replace(press_limit(9, 9, 9), is_judged=False)
    assert not broken([comparison])
    assert "No limit is judged" in verdict([comparison])


def test_the_verdict_names_what_does_not_hold() -> None:
    kept, missed = press_limit(1, 1, 1), replace(press_limit(9, 9, 9), name="slow")
    assert verdict([kept, missed]) == "Not every limit holds: tmpfs: slow."
    assert verdict([kept, press_limit(9, 9, 9, limit=None)]) == "Every limit holds."


# What is measured, and in which order


def test_every_server_is_first_in_its_turn() -> None:
    order = list(in_turn([["a", "b", "c"], ["d", "e"]], 3))
    assert [member for round_, member in order if round_ == 0] == ["a", "b", "c", "d", "e"]
    assert [member for round_, member in order if round_ == 1] == ["b", "c", "a", "e", "d"]
    assert [member for round_, member in order if round_ == 2] == ["c", "a", "b", "d", "e"]


def test_names_of_measurements() -> None:
    assert select([]).sections == names.SECTIONS == tuple(SECTIONS)
    assert "qt6" not in select([], is_quick=True).sections
    assert select(["qt6"], is_quick=True).sections == ("qt6",)
    assert select(["own", "disk"]).sections == (
        "disk",
        "memory",
        "start",
        "provisioned-start",
        "synchronisation",
    )
    assert select(["press"]).works == frozenset({"press"})
    assert select(["press", "start"]).sections == ("tmpfs", "disk", "start")
    assert select(["press", "limits"]).works is None
    assert SECTIONS["callers"].servers == {SERVICE, RIVAL, AFTERNOON}


def test_another_work_of_the_rival_is_named() -> None:
    noop, of_rival = Series("tmpfs", "noop", FRAME), Series("tmpfs", "get-action", RIVAL)
    runs = Runs([*runs_of(noop, 1, 2, 3), *runs_of(of_rival, 2, 4, 6)])
    (comparison,) = calls.ON_TMPFS.compare(runs)
    assert comparison.name == "noop, against get-action"
    assert comparison.result == Spread(0.5, 0.5, 0.5)


def test_a_stock_is_as_many_keys_as_actions(tmp_path: Path) -> None:
    database = Database(tmp_path / "data")
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    write_stock(database.path, 25)
    assert database.rows("SELECT count(*), max(idAction) FROM ACTION WHERE type = 1") == [(25, 25)]
    assert database.rows(
        "SELECT position, aom_addr, label FROM KEY JOIN ACTION USING (idAction)"
        " WHERE idKey IN (1, 24, 25)"
    ) == [(0, 0, "Office 1"), (23, 0, "Office 24"), (0, 1, "Office 25")]


def test_file_systems_are_told_by_the_deepest_mount() -> None:
    assert file_system_of(Path("/proc/self")) == "proc"
    assert file_system_of(Path("/")) != "proc"


def test_what_is_not_built_is_named(tmp_path: Path) -> None:
    with pytest.raises(MeasurementFailed, match="bench_rival"):
        Programs(tmp_path, tmp_path).require([RIVAL])
