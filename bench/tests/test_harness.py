"""A short run of scripts/bench, with high limits and with limits that are exceeded."""

import json
import os
import runpy
import sys
from pathlib import Path

import pytest

HARNESS = Path(__file__).resolve().parents[1] / "harness"
BUILD = os.environ.get("PROGKEYS_BUILD_DIR", str(HARNESS.parents[1] / "build/qt5"))


@pytest.mark.parametrize("limit, status", [(1000.0, 0), (0.001, 1)], ids=["no", "yes"])
def test_the_status_depends_on_whether_a_limit_is_exceeded(
    limit: float, status: int, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.syspath_prepend(str(HARNESS))
    import limits

    for operation in limits.LIMITS["disk"]:
        monkeypatch.setitem(limits.LIMITS["disk"], operation, limit)
    figures = tmp_path / "figures.json"
    command = ["--quick", "--only", "disk", "--build", BUILD, "--json", str(figures)]
    monkeypatch.setattr(sys, "argv", ["scripts/bench", *command])
    with pytest.raises(SystemExit) as end:
        runpy.run_path(str(HARNESS), run_name="__main__")
    assert end.value.code == status
    rows = json.loads(figures.read_text(encoding="utf-8"))["comparisons"]
    assert [row["name"] for row in rows] == ["modify-action", "create-key"]
    assert {row["verdict"] for row in rows} == {"exceeded" if status else "holds"}
