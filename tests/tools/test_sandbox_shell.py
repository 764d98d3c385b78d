"""The shell in a sandbox, on a terminal."""

import contextlib
import os
import signal
from pathlib import Path
from typing import Iterator

import pytest

from sandbox.loop import wait_until
from sandbox.processes import clean_environment
from sandboxes import nothing_is_left, processes_of
from terminals import CTRL_C, CTRL_Z, Terminal

@pytest.fixture
def environment(tmp_path: Path) -> dict[str, str]:
    return {**clean_environment(), "HOME": str(tmp_path), "SHELL": "/bin/bash", "TERM": "dumb"}


@pytest.fixture
def tool(bin_dir: Path) -> str:
    return str(bin_dir / "progkeysctl")


@pytest.fixture
def shell(tool: str, environment: dict[str, str]) -> Iterator[Terminal]:
    terminal = Terminal([tool, "sandbox"], environment)
    yield terminal
    terminal.close()
    with contextlib.suppress(ChildProcessError):
        os.waitpid(terminal.pid, 0)


def directory_of(shell: Terminal) -> str:
    shell.line("echo at=$PROGKEYS_SANDBOX=")
    shell.read_until("at=/")
    return "/" + shell.read_until("=")


def test_the_shell_prints_a_greeting_and_returns_its_exit_status(shell: Terminal) -> None:
    greeting = shell.read_until("(phone)")
    for words in ("unix:path=", "settings", "data", "progkeysctl status", "exit"):
        assert words in greeting
    shell.line("exit 5")
    assert shell.status() == 5


def test_the_shell_has_the_completion(shell: Terminal) -> None:
    shell.read_until("(phone)")
    shell.line("complete -p progkeysctl")
    shell.read_until("-F _progkeysctl")


def test_the_start_file_of_the_user_is_read(
    shell: Terminal, tmp_path: Path, tool: str, environment: dict[str, str]
) -> None:
    (tmp_path / ".bashrc").write_text("PATH=/usr/bin:/bin\nPS1='mine> '\n", encoding="utf-8")
    second = Terminal([tool, "sandbox"], environment)
    second.read_until("(phone) mine>")
    second.line("command -v progkeysctl; exit")
    second.read_until(tool)
    assert second.status() == 0


def test_ctrl_c_ends_a_command_in_the_shell_but_not_the_sandbox(shell: Terminal) -> None:
    shell.read_until("(phone)")
    shell.line("sh -c 'echo go''ing; exec sleep 1000'")
    shell.read_until("going")
    shell.type(CTRL_C)
    shell.read_until("(phone)")
    shell.line("progkeysctl status --terse --fields running; exit 3")
    shell.read_until("yes")
    assert shell.status() == 3


def test_jobs_can_be_stopped_and_continued(shell: Terminal) -> None:
    shell.read_until("(phone)")
    shell.line("sh -c 'echo go''ing; read line; echo got $line'")
    shell.read_until("going")
    shell.type(CTRL_Z)
    shell.read_until("Stopped")
    shell.read_until("(phone)")
    shell.line("fg")
    shell.read_until("sh -c")
    shell.line("this")
    shell.read_until("got this")
    shell.line("exit")
    assert shell.status() == 0


def test_a_hangup_ends_all_processes(shell: Terminal) -> None:
    directory = directory_of(shell)
    assert processes_of(directory)
    shell.close()
    wait_until(lambda: nothing_is_left(directory), "all processes have ended")


def test_a_signal_ends_the_shell(shell: Terminal) -> None:
    directory = directory_of(shell)
    os.kill(shell.pid, signal.SIGTERM)
    assert shell.status() == -signal.SIGTERM
    assert nothing_is_left(directory)


def test_the_sandbox_is_a_job_of_the_outer_shell(tool: str, environment: dict[str, str]) -> None:
    outer = Terminal(["/bin/bash", "--norc", "-i"], {**environment, "PS1": "outer> "})
    outer.read_until("outer>")
    outer.line(f"{tool} sandbox -- sh -c 'echo go''ing; exec sleep 1000'")
    outer.read_until("going")
    outer.type(CTRL_C)
    outer.read_until("outer>")
    outer.line("echo status=$?; exit 0")
    outer.read_until(f"status={128 + signal.SIGINT}")
    assert outer.status() == 0
