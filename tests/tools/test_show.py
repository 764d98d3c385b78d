"""The demonstration of scripts/run, with the built programs."""

import os
import shutil
import signal
import subprocess
from pathlib import Path

import pytest

from sandbox.loop import LIMIT
from sandbox.processes import clean_environment
from terminals import CTRL_C, Terminal


CHECKOUT = Path(__file__).resolve().parents[2]


@pytest.fixture
def environment(bin_dir: Path, tmp_path: Path) -> dict[str, str]:
    temporary = tmp_path / "t"
    temporary.mkdir()
    return {
        **clean_environment(),
        "PROGKEYS_BIN_DIR": str(bin_dir),
        "TMPDIR": str(temporary),
        "HOME": str(tmp_path),
        "SHELL": "/bin/bash",
        "TERM": "dumb",
    }


def run(script: Path, *options: str, environment: dict[str, str]) -> "subprocess.CompletedProcess[str]":
    return subprocess.run(
        [script, *options],
        env=environment,
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=3 * LIMIT,
        check=False,
    )


@pytest.fixture
def script() -> Path:
    return CHECKOUT / "scripts" / "run"


def test_the_demonstration_succeeds_and_leaves_nothing_behind(script: Path, environment: dict[str, str]) -> None:
    result = run(script, environment=environment)
    assert (result.returncode, result.stderr) == (0, "")
    for line in ("$ progkeysctl press 3/12", "$ progkeysctl defaults plan --settings settings-next", "$ progkeysctl restore default --yes"):
        assert f"\n{line}\n" in result.stdout
    assert result.stdout.endswith("\nAll results are as expected.\n")
    assert not os.listdir(environment["TMPDIR"])


@pytest.mark.parametrize(
    ("file", "old", "new", "message"),
    [
        pytest.param(
            "examples/settings/DefaultActions", "voicemail,1,", "mail,1,", "provisioned keys: 59, not 60", id="a different provisioned action"
        ),
        pytest.param(
            "scripts/demo/first-day", "icon 61 2 5", "icon 63 2 5", "the status is 0, not 1", id="a command that succeeds instead of failing"
        ),
        pytest.param(
            "scripts/demo/next-rollout", "runs progkeysctl key delete 62", "runs progkeysctl key delete 1", "the status is 10", id="a command that fails instead of succeeding"
        ),
        pytest.param(
            "scripts/demo/first-day", "heard KO_PROGKEYS_DB_FULL", "heard KEY_CREATE_NTF", "the event is KO_PROGKEYS_DB_FULL", id="a different event"
        ),
        pytest.param(
            "scripts/demo/next-rollout", "KEY_CREATE_NTF 59", "KEY_CREATE_NTF 58", "number of events", id="a different number of events"
        ),
    ],
)
def test_an_unexpected_result_fails_the_demonstration(
    tmp_path: Path, environment: dict[str, str], file: str, old: str, new: str, message: str
) -> None:
    for directory in ("scripts", "examples"):
        shutil.copytree(CHECKOUT / directory, tmp_path / directory)
    changed = tmp_path / file
    text = changed.read_text(encoding="utf-8")
    assert old in text
    changed.write_text(text.replace(old, new), encoding="utf-8")
    result = run(tmp_path / "scripts" / "run", environment=environment)
    assert result.returncode == 1
    assert "Unexpected result: " in result.stderr
    assert message in result.stderr
    assert "All results are as expected" not in result.stdout
    assert not os.listdir(environment["TMPDIR"])


def test_missing_programs_are_reported(tmp_path: Path, environment: dict[str, str], script: Path) -> None:
    result = run(script, environment={**environment, "PROGKEYS_BIN_DIR": str(tmp_path)})
    assert (result.returncode, result.stdout) == (1, "")
    assert f"There is no progkeysctl in {tmp_path}" in result.stderr


def test_a_shell_follows_on_a_terminal(script: Path, environment: dict[str, str]) -> None:
    terminal = Terminal([str(script)], environment)
    terminal.read_until("All results are as expected.")
    terminal.read_until("(phone)")
    terminal.line("progkeysctl status --terse --fields provisionedActions; exit 6")
    terminal.read_until("57")
    assert terminal.status() == 0
    assert not os.listdir(environment["TMPDIR"])


def test_no_shell_follows_with_once(script: Path, environment: dict[str, str]) -> None:
    terminal = Terminal([str(script), "--once"], environment)
    terminal.read_until("All results are as expected.")
    assert terminal.status() == 0
    assert not os.listdir(environment["TMPDIR"])


def test_ctrl_c_ends_the_demonstration(script: Path, environment: dict[str, str]) -> None:
    terminal = Terminal([str(script)], environment)
    terminal.read_until("$ progkeysctl key list")
    terminal.type(CTRL_C)
    assert terminal.status() in (-signal.SIGINT, 128 + signal.SIGINT)
    assert not os.listdir(environment["TMPDIR"])
