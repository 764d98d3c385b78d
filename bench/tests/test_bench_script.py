"""scripts/bench: what it installs and builds before it measures, and its status if that fails."""

import os
import shutil
import subprocess
from pathlib import Path

import pytest

from servers import BENCH

TELLING = """#!/bin/sh
echo "$(basename "$0") $*" >>"$CALLS"
for word in "$@"; do
    [ "$word" != "$FAILING" ] || exit 1
done
"""
INSTALLED = "bootstrap --bench"
BUILDS = {
    preset: (
        f"cmake --preset {preset} --log-level=WARNING",
        f"cmake --build --preset {preset}{target} -- --quiet",
    )
    for preset, target in (("bench", ""), ("bench-qt6", " --target zelprogrammablekeys"))
}
ALL_CALLS = [INSTALLED, *BUILDS["bench"], *BUILDS["bench-qt6"]]
NOT_THERE = ("--build", "/nowhere")
"""So that nothing is measured in the end."""


class Checkout:
    """The script beside an installer and a build tool that only tell that they were called."""

    def __init__(self, directory: Path) -> None:
        self._directory = directory
        self._calls = directory / "calls"
        for name in ("scripts", "bin"):
            (directory / name).mkdir()
        shutil.copy2(BENCH.parent / "scripts" / "bench", directory / "scripts")
        (directory / "bench").symlink_to(BENCH)
        for program in ("scripts/bootstrap", "bin/cmake"):
            (directory / program).write_text(TELLING, encoding="utf-8")
            (directory / program).chmod(0o755)

    def run(self, *arguments: str, failing: str = "") -> "subprocess.CompletedProcess[str]":
        environment = {
            **os.environ,
            "PATH": f"{self._directory / 'bin'}:{os.environ['PATH']}",
            "CALLS": str(self._calls),
            "FAILING": failing,
        }
        return subprocess.run(
            [str(self._directory / "scripts" / "bench"), *arguments],
            cwd=self._directory,
            env=environment,
            capture_output=True,
            text=True,
            timeout=60,
        )

    @property
    def calls(self) -> list[str]:
        """The installer's and the build tool's, in order."""
        return self._calls.read_text("utf-8").splitlines() if self._calls.exists() else []


@pytest.fixture
def checkout(tmp_path: Path) -> Checkout:
    return Checkout(tmp_path)


@pytest.mark.parametrize("arguments", [("--help",), ("-h",), ("--only", "qt6", "--help")])
def test_help_installs_and_builds_nothing(checkout: Checkout, arguments: tuple[str, ...]) -> None:
    done = checkout.run(*arguments)
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.startswith("usage: scripts/bench ") and "--only NAME" in done.stdout
    assert checkout.calls == []


def test_neither_does_misuse(checkout: Checkout) -> None:
    done = checkout.run("--only", "nothing")
    assert done.returncode == 2 and done.stderr.count("scripts/bench: error: ") == 1
    assert checkout.calls == []


@pytest.mark.parametrize(
    "arguments, presets",
    [
        ((), ("bench", "bench-qt6")),
        (("--quick",), ("bench",)),
        (("--only", "reported"), ("bench", "bench-qt6")),
        (("--only", "limits", "--json", "qt6"), ("bench",)),
    ],
)
def test_what_is_measured_is_built(
    checkout: Checkout, arguments: tuple[str, ...], presets: tuple[str, ...]
) -> None:
    done = checkout.run(*arguments, *NOT_THERE)
    assert done.returncode == 3 and done.stdout == ""
    assert done.stderr.startswith("scripts/bench: not there: /nowhere/")
    assert checkout.calls == [INSTALLED, *(call for name in presets for call in BUILDS[name])]


@pytest.mark.parametrize(
    "failing, count, reason",
    [
        ("--bench", 1, "what it needs could not be installed"),
        ("bench", 2, "bench could not be built"),
        ("--build", 3, "bench could not be built"),
        ("bench-qt6", 4, "bench-qt6 could not be built"),
        ("--target", 5, "bench-qt6 could not be built"),
    ],
)
def test_what_cannot_be_built_cannot_be_measured(
    checkout: Checkout, failing: str, count: int, reason: str
) -> None:
    done = checkout.run(failing=failing)
    assert (done.returncode, done.stdout) == (3, "")
    assert done.stderr == f"scripts/bench: {reason}\n"
    assert checkout.calls == ALL_CALLS[:count]
