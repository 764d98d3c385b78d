"""Each script prints its help and refuses wrong arguments before it does anything else."""

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
WORKERS = ("apt-get", "cmake", "clang-format", "ctest", "dpkg-query", "gcovr", "git", "sudo")
"""Programs that the scripts start their work with."""


class Caller:
    """Runs scripts with programs that only record that they were called."""

    def __init__(self, directory: Path) -> None:
        self._directory = directory
        self._calls = directory / "calls"
        for worker in WORKERS:
            (directory / worker).write_text(f"#!/bin/sh\necho {worker} >>'{self._calls}'\n")
            (directory / worker).chmod(0o755)

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
    def work(self) -> str:
        """The programs that were called."""
        return self._calls.read_text() if self._calls.exists() else ""


@pytest.fixture
def caller(tmp_path: Path) -> Caller:
    return Caller(tmp_path)


def test_there_are_scripts() -> None:
    assert {"run", "test", "lint", "demo/show", "maintain/target/root"} <= set(NAMES)


def test_work_is_noticed(caller: Caller) -> None:
    caller.run("lint", "--fix")
    assert "dpkg-query\n" in caller.work


@pytest.mark.parametrize("name", NAMES)
@pytest.mark.parametrize("option", ["--help", "-h"])
def test_help_is_printed_and_nothing_else_done(caller: Caller, name: str, option: str) -> None:
    done = caller.run(name, option)
    assert (done.returncode, done.stderr, caller.work) == (0, "", "")
    first, _, rest = done.stdout.partition("\n")
    assert first.lower().startswith(f"usage: scripts/{name}")
    assert "--help" in rest
    assert "\nset -" not in done.stdout


@pytest.mark.parametrize("name", NAMES)
def test_an_unknown_option_is_refused(caller: Caller, name: str) -> None:
    done = caller.run(name, "--no-such-option")
    assert (done.returncode, done.stdout, caller.work) == (2, "", "")
    assert f"scripts/{name}: " in done.stderr
    assert "option: --no-such-option\n" in done.stderr or "error: " in done.stderr
