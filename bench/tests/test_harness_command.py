"""The command line: what it tells, and with which status it ends."""

import json
import os
import signal
import sqlite3
import subprocess
from pathlib import Path
from typing import Callable, Optional

import dbus
import pytest

from harness import cli, ending
from harness.comparing import compare
from harness.ending import Interrupted
from harness.failure import MeasurementFailed
from harness.programs import CHECKOUT, RIVAL, Programs
from harness.runs import Run
from harness.sections.every import SECTIONS
from harness.sections.section import Section
from harness.sections.showing import limits_table, micro
from made_runs import PRESS, presses, runs_of
from servers import BENCH

GOOD = ["--only", "tmpfs"]
GOOD_THEN_BAD = [*GOOD, "--only", "disk"]


class Made:
    """What the sections find: the runs of the one, and what happens in the other."""

    def __init__(self) -> None:
        self.runs: list[Run] = list(presses(1, 2, 4))
        self.trouble: Optional[BaseException] = None
        self.environment: dict[str, str] = {}

    def measure(self, _setup: object) -> list[Run]:
        self.environment = dict(os.environ)
        return self.runs

    def fail(self, _setup: object) -> list[Run]:
        assert self.trouble is not None
        raise self.trouble


def a_section(name: str, measure: Callable[[object], list[Run]]) -> Section:
    return Section(
        name,
        frozenset(),
        measure,
        lambda made: [compare(made, "press", PRESS, PRESS.of(RIVAL), limit=1.7)],
        lambda _runs, made: [limits_table("Presses", "rival", made, micro)],
    )


@pytest.fixture
def made(monkeypatch: pytest.MonkeyPatch) -> Made:
    """Sections of made runs in place of the real ones."""
    made = Made()
    monkeypatch.setitem(SECTIONS, "tmpfs", a_section("tmpfs", made.measure))
    monkeypatch.setitem(SECTIONS, "disk", a_section("disk", made.fail))
    monkeypatch.setattr(Programs, "require", lambda *_arguments: None)
    return made


# What is told


def test_the_status_says_whether_the_limits_hold(
    made: Made, capsys: pytest.CaptureFixture[str]
) -> None:
    assert cli.main(GOOD) == 0
    assert capsys.readouterr().out.endswith("Every limit holds.\n")
    made.runs = list(presses(9, 9, 9))
    assert cli.main(GOOD) == 1
    shown = capsys.readouterr().out
    assert "does not hold" in shown and "\x1b" not in shown
    assert shown.endswith("Not every limit holds: tmpfs: press.\n")
    assert cli.main([*GOOD, "--quick"]) == 0
    assert "not judged" in capsys.readouterr().out


def test_the_first_line_tells_how_much_was_done_on_how_busy_a_machine(
    made: Made, capsys: pytest.CaptureFixture[str], monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr(os, "getloadavg", lambda: (0.125, 3.0, 3.0))
    for rounds, told in (
        ("11", "11 rounds, at most 7 of what has no limit"),
        ("7", "7 rounds"),
    ):
        assert cli.main([*GOOD, "--rounds", rounds]) == 0
        first, empty, title = capsys.readouterr().out.splitlines()[:3]
        assert first == f"{told}; load average 0.12 at the start."
        assert (empty, title) == ("", "Presses")


def test_json_goes_to_a_file_or_in_place_of_the_tables(
    made: Made, capsys: pytest.CaptureFixture[str], tmp_path: Path
) -> None:
    target = tmp_path / "measurements.json"
    assert cli.main([*GOOD, "--json", str(target)]) == 0
    assert "Presses" in capsys.readouterr().out
    assert cli.main([*GOOD, "--json", "-"]) == 0
    written = json.loads(capsys.readouterr().out)
    assert written["series"] == json.loads(target.read_text(encoding="utf-8"))["series"]
    assert set(written["machine"]["versions"]) >= {"Qt 5", "Qt 6", "SQLite", "libsystemd"}
    assert "failed" not in written


def test_no_path_of_the_machine_is_recorded(
    made: Made, monkeypatch: pytest.MonkeyPatch, tmp_path: Path
) -> None:
    written: dict[Path, str] = {}
    monkeypatch.setattr(Path, "write_text", lambda path, text, **_: written.update({path: text}))
    for file, recorded in (
        (tmp_path / "figures.json", "figures.json"),
        (CHECKOUT / "bench" / "figures.json", "bench/figures.json"),
    ):
        assert cli.main([*GOOD, "--rounds", "8", f"--json={file}"]) == 0
        text = written[file]
        assert json.loads(text)["command"] == (
            f"scripts/bench --rounds 8 --only tmpfs --json {recorded}"
        )
        assert str(tmp_path) not in text and str(CHECKOUT) not in text


def test_nobody_steers_what_is_measured(made: Made, monkeypatch: pytest.MonkeyPatch) -> None:
    steering = {"QT_LOGGING_RULES", "MALLOC_ARENA_MAX", "GLIBC_TUNABLES", "LD_PRELOAD"}
    for name in steering:
        monkeypatch.setenv(name, "")
    assert cli.main(GOOD) == 0
    assert "PATH" in made.environment and not steering & made.environment.keys()
    assert steering <= os.environ.keys()


# What cannot be measured


@pytest.mark.parametrize(
    "trouble, reason",
    [
        (MeasurementFailed("the rival is away"), "the rival is away"),
        (OSError("no space"), "no space"),
        (AssertionError("a name is owned"), "AssertionError (measuring.py, line "),
        (dbus.DBusException("no reply"), "DBusException ("),
        (sqlite3.OperationalError("locked"), "OperationalError ("),
        (ValueError("not a number"), "ValueError ("),
        (KeyError("seconds"), "KeyError ("),
    ],
    ids=lambda value: type(value).__name__,
)
def test_what_was_measured_is_told_before_the_failure(
    made: Made,
    trouble: Exception,
    reason: str,
    capsys: pytest.CaptureFixture[str],
    tmp_path: Path,
) -> None:
    made.trouble = trouble
    made.runs = list(presses(9, 9, 9))
    target = tmp_path / "measurements.json"
    assert cli.main([*GOOD_THEN_BAD, "--json", str(target)]) == 3
    told = capsys.readouterr()
    assert "does not hold" in told.out and "limits hold" not in told.out
    assert told.err.startswith(f"scripts/bench: disk could not be measured: {reason}")
    assert str(trouble) in told.err and len(told.err.splitlines()) == 1
    written = json.loads(target.read_text(encoding="utf-8"))
    assert written["failed"] == "disk"
    assert {series["section"] for series in written["series"]} == {"tmpfs"}


def test_runs_of_which_nothing_can_be_made_are_a_failure_too(
    made: Made, capsys: pytest.CaptureFixture[str], tmp_path: Path
) -> None:
    made.runs = runs_of(PRESS, 1, 2, 3) + runs_of(PRESS.of(RIVAL), 1, 2)
    target = tmp_path / "measurements.json"
    target.write_text("those of last time", encoding="utf-8")
    assert cli.main([*GOOD, "--json", str(target)]) == 3
    told = capsys.readouterr()
    assert told.out == "" and "tmpfs could not be measured: ValueError" in told.err
    assert target.read_text(encoding="utf-8") == "those of last time"


def test_tables_are_told_before_json_is_written(
    made: Made,
    capsys: pytest.CaptureFixture[str],
    monkeypatch: pytest.MonkeyPatch,
    tmp_path: Path,
) -> None:
    def refuse(*_arguments: object, **_options: object) -> None:
        raise OSError("the disk is full")

    monkeypatch.setattr(Path, "write_text", refuse)
    assert cli.main([*GOOD, "--json", str(tmp_path / "measurements.json")]) == 3
    told = capsys.readouterr()
    assert "Presses" in told.out and told.err == "scripts/bench: the disk is full\n"


@pytest.mark.parametrize("trouble", [KeyboardInterrupt(), Interrupted(signal.SIGTERM)])
def test_an_interruption_is_no_failure(
    made: Made, trouble: BaseException, capsys: pytest.CaptureFixture[str]
) -> None:
    made.trouble = trouble
    number = getattr(trouble, "number", signal.SIGINT)
    assert cli.main(GOOD_THEN_BAD) == 128 + number
    assert capsys.readouterr() == ("", "")


def test_a_request_to_end_that_went_no_further_is_heeded(
    made: Made, monkeypatch: pytest.MonkeyPatch, capsys: pytest.CaptureFixture[str]
) -> None:
    monkeypatch.setattr(ending, "_requested", int(signal.SIGHUP))
    assert cli.main(GOOD) == 128 + signal.SIGHUP
    assert capsys.readouterr() == ("", "")


# What is asked for


@pytest.mark.parametrize(
    "arguments",
    [
        ["--rounds", "6"],
        ["--rounds", "many"],
        ["--quick", "--rounds", "8"],
        ["--only", "nothing"],
        ["--json", "/nowhere/measurements.json"],
        ["--json", "/proc/measurements.json"],
        ["--json", "/"],
        ["something"],
    ],
)
def test_misuse(arguments: list[str], capsys: pytest.CaptureFixture[str]) -> None:
    with pytest.raises(SystemExit) as end:
        cli.main(arguments)
    assert end.value.code == 2
    assert "scripts/bench: error: " in capsys.readouterr().err


@pytest.mark.parametrize(
    "arguments, presets",
    [
        ([], ["bench", "bench-qt6"]),
        (["--rounds", "9"], ["bench", "bench-qt6"]),
        (["--quick"], ["bench"]),
        (["--quick", "--only", "qt6"], ["bench", "bench-qt6"]),
        (["--only=qt6"], ["bench", "bench-qt6"]),
        (["--only", "reported"], ["bench", "bench-qt6"]),
        (["--only", "limits", "--json", "qt6"], ["bench"]),
        (["--only", "press", "--json=--help"], ["bench"]),
        (["--help"], []),
        (["-h", "--only", "qt6"], []),
    ],
)
def test_it_tells_what_must_be_built(
    arguments: list[str],
    presets: list[str],
    capsys: pytest.CaptureFixture[str],
    monkeypatch: pytest.MonkeyPatch,
    tmp_path: Path,
) -> None:
    monkeypatch.chdir(tmp_path)
    assert cli.main(["--needs", *arguments]) == 0
    assert capsys.readouterr().out.split() == presets
    assert not list(tmp_path.iterdir())


def test_help_wants_nothing_that_must_be_installed() -> None:
    program = "; ".join(
        (
            "import sys",
            "sys.modules.update(dict.fromkeys(('dbus', 'gi')))",
            f"sys.path.insert(0, {str(BENCH)!r})",
            "from harness.cli import main",
            "main(['--help'])",
        )
    )
    command = ["/usr/bin/python3", "-c", program]
    done = subprocess.run(command, capture_output=True, text=True, timeout=20)
    assert done.stdout.startswith("usage: scripts/bench ") and done.stderr == ""
