"""Each script prints its help and refuses unknown options before it does anything else."""

import os
import subprocess
from pathlib import Path

import pytest

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"
NAMES = sorted(
    str(file.relative_to(SCRIPTS))
    for file in SCRIPTS.rglob("*")
    if file.is_file() and os.access(file, os.X_OK)
)
PROGRAMS = ("apt-get", "cmake", "clang-format", "ctest", "dpkg-query", "gcovr", "git", "sudo")
"""The programs that the scripts run first."""


class Caller:
    """Runs scripts with fake programs that only record their calls."""

    def __init__(self, directory: Path) -> None:
        self._directory = directory
        self._calls = directory / "calls"
        for program in PROGRAMS:
            (directory / program).write_text(f"#!/bin/sh\necho {program} >>'{self._calls}'\n")
            (directory / program).chmod(0o755)

    def run(self, name: str, *arguments: str) -> "subprocess.CompletedProcess[str]":
        path = f"{self._directory}{os.pathsep}{os.environ['PATH']}"
        return subprocess.run(
            [str(SCRIPTS / name), *arguments],
            cwd=self._directory,
            env={**os.environ, "PATH": path, "PYTHONDONTWRITEBYTECODE": "1"},
            capture_output=True,
            text=True,
            timeout=60,
            check=False,
        )

    @property
    def calls(self) -> str:
        """The called programs, one in each line."""
        return self._calls.read_text() if self._calls.exists() else ""


@pytest.fixture
def caller(tmp_path: Path) -> Caller:
    return Caller(tmp_path)


def test_there_are_scripts() -> None:
    assert {"run", "test", "lint", "demo/show", "maintain/target/root"} <= set(NAMES)


def test_calls_of_programs_are_recorded(caller: Caller) -> None:
    caller.run("lint", "--fix")
    assert "dpkg-query\n" in caller.calls


@pytest.mark.parametrize("name", NAMES)
@pytest.mark.parametrize("option", ["--help", "-h"])
def test_help_is_printed_and_no_program_is_called(caller: Caller, name: str, option: str) -> None:
    done = caller.run(name, option)
    assert (done.returncode, done.stderr, caller.calls) == (0, "", "")
    first, _, rest = done.stdout.partition("\n")
    assert first.lower().startswith(f"usage: scripts/{name}")
    assert "--help" in rest
    assert "\nset -" not in done.stdout


@pytest.mark.parametrize("name", NAMES)
def test_an_unknown_option_is_refused(caller: Caller, name: str) -> None:
    done = caller.run(name, "--no-such-option")
    assert (done.returncode, done.stdout, caller.calls) == (2, "", "")
    assert f"scripts/{name}: " in done.stderr
    assert "option: --no-such-option\n" in done.stderr or "error: " in done.stderr
