"""A phone of one's own, for as long as a command runs."""

import json
import os
import signal
import subprocess
import tempfile
from pathlib import Path

import pytest

from sandbox.loop import LIMIT, wait_until
from sandbox.processes import clean_environment
from sandbox.settings import write_settings
from sandboxes import children_of, nothing_is_left, processes_of, run, sandbox

PROGRAMS = ["dbus-daemon", "settingsmanager", "zelprogrammablekeys"]
SERVICE = "zelprogrammablekeys"
MODULES = ["settingsmanager", SERVICE]
LEAVE_A_DAEMON = "setsid sleep 1000 & (setsid sleep 1000 &) "
NEVER_READY = "#!/bin/sh\nexec sleep 1000\n"
ENDS_AT_ONCE = "#!/bin/sh\necho the disk is made of cheese >&2\nexit 3\n"


@pytest.fixture
def tool(bin_dir: Path) -> Path:
    return bin_dir / "progkeysctl"


@pytest.fixture
def programs(bin_dir: Path, tmp_path: Path) -> Path:
    """A directory with the phone's programs, where some may be replaced."""
    directory = tmp_path / "programs"
    directory.mkdir()
    for name in MODULES:
        (directory / name).symlink_to(bin_dir / name)
    return directory


def replace(program: Path, script: str) -> None:
    program.unlink()
    program.write_text(script, encoding="utf-8")
    program.chmod(0o755)


# The command

@pytest.mark.parametrize(
    ("command", "status"),
    [
        pytest.param(["true"], 0, id="done"),
        pytest.param(["sh", "-c", "exit 7"], 7, id="failed"),
        pytest.param(["sh", "-c", "kill -KILL $$"], 128 + signal.SIGKILL, id="killed"),
    ],
)
def test_its_status_is_that_of_the_command(tool: Path, command: list[str], status: int) -> None:
    result = run(tool, "--", *command)
    assert (result.returncode, result.stdout, result.stderr) == (status, "", "")


@pytest.mark.parametrize(
    ("command", "status", "reason"),
    [
        pytest.param("no-such-program", 127, "No such file", id="not there"),
        pytest.param("/etc/passwd", 126, "Permission denied", id="no program"),
    ],
)
def test_a_command_that_cannot_be_run_is_named(tool: Path, command: str, status: int, reason: str) -> None:
    result = run(tool, "--", command)
    assert result.returncode == status
    assert f"Cannot run {command}: {reason}" in result.stderr


def test_the_words_of_the_command_are_left_as_they_are(tool: Path) -> None:
    words = ["[a,b]", "", "--", "--json", "key", "two words", "*"]
    assert run(tool, "--", "printf", "<%s>", *words).stdout == "".join(f"<{word}>" for word in words)


def test_the_command_finds_the_phone_and_the_tool(tool: Path) -> None:
    result = run(tool, "--", "progkeysctl", "status", "--json=short")
    status = json.loads(result.stdout)
    assert status["running"] is True
    assert status["peers"] == ["SettingsManager", "ZelProgrammableKeys"]
    assert (status["setKeys"], status["provisionedActions"], status["limit"]) == (0, 0, 100)


def test_the_command_is_told_where_everything_is(tool: Path) -> None:
    names = ["PROGKEYS_SANDBOX", "ZEL_DATA_ROOT", "DBUS_SYSTEM_BUS_ADDRESS", "PATH"]
    result = run(tool, "--", "printenv", *names)
    directory, data, address, path = result.stdout.splitlines()
    assert data == f"{directory}/data/"
    assert address == f"unix:path={directory}/bus"
    assert path == f"{tool.parent}:{os.environ['PATH']}"
    assert not Path(directory).exists()


@pytest.mark.parametrize(
    "name", [pytest.param(" ,;=<d>&%41~é", id="odd"), pytest.param("long" * 40, id="long")]
)
def test_the_name_of_the_temporary_directory_does_not_matter(tool: Path, name: str) -> None:
    with tempfile.TemporaryDirectory(suffix=name) as directory:
        result = run(tool, "--", "progkeysctl", "status", environment={"TMPDIR": directory})
        assert (result.returncode, result.stderr) == (0, "")
        assert not os.listdir(directory)


def test_without_a_command_the_shell_reads_what_to_do(tool: Path) -> None:
    with sandbox(tool, command="SHELL=/bin/sh exec progkeysctl sandbox <<'END'\necho $PROGKEYS_SANDBOX\nexit 9\nEND") as inner:
        assert inner.end() == (9, "")


# Directories

def test_settings_are_served_as_they_are_at_each_moment(tool: Path, tmp_path: Path) -> None:
    settings = write_settings(tmp_path / "settings", {"ProgKeysMax": "3"})
    limit = "progkeysctl status --terse --fields limit"
    result = run(tool, "--settings", str(settings), "--", "sh", "-c", f"{limit}; echo 5 >'{settings}/ProgKeysMax'; {limit}")
    assert result.stdout == "3\n5\n"
    assert (settings / "ProgKeysMax").read_text() == "5\n"


def test_data_is_kept_from_one_run_to_the_next(tool: Path, tmp_path: Path) -> None:
    data = tmp_path / "new" / "data"
    add = ["key", "add", "container=home", "position=4", "idAction=-1", "type=0"]
    assert run(tool, "--data", str(data), "--", "progkeysctl", *add).returncode == 0
    listing = run(tool, "--data", str(data), "--", "progkeysctl", "key", "list", "--terse", "--fields", "container,position")
    assert listing.stdout == "home:4\n"
    assert [path.name for path in data.rglob("*.data*")] == ["zelprogrammablekeys.data"], "the service ended cleanly"


def test_logs_are_kept_where_they_are_wanted(tool: Path, tmp_path: Path) -> None:
    logs = tmp_path / "logs"
    assert run(tool, "--logs", str(logs), "--", "true").returncode == 0
    assert sorted(path.name for path in logs.iterdir()) == sorted(f"{name}.log" for name in PROGRAMS)
    assert "ZelProgrammableKeys[" in (logs / f"{SERVICE}.log").read_text()


# The end

def test_nothing_is_left_of_it(tool: Path) -> None:
    with sandbox(tool, command=f"echo $PROGKEYS_SANDBOX; {LEAVE_A_DAEMON}; read end; exit 4") as running:
        for name in [*PROGRAMS, "sleep"]:
            running.running(name)
        assert running.end() == (4, "")
        assert nothing_is_left(running.directory)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGQUIT], ids=lambda number: number.name)
def test_a_signal_ends_the_command_and_then_everything(tool: Path, number: signal.Signals) -> None:
    command = f"trap 'echo told; exit 6' TERM; echo $PROGKEYS_SANDBOX; {LEAVE_A_DAEMON}; while :; do sleep 0.01; done"
    with sandbox(tool, command=command) as running:
        running.running("sleep")
        running.child.send_signal(number)
        output, _ = running.child.communicate(timeout=LIMIT)
        assert (running.child.returncode, output) == (6, "told\n")
        assert nothing_is_left(running.directory)


def test_a_command_that_ignores_the_end_is_killed(tool: Path) -> None:
    with sandbox(tool, command="trap '' TERM; echo $PROGKEYS_SANDBOX; while :; do sleep 1000; done") as running:
        running.child.send_signal(signal.SIGTERM)
        assert running.end()[0] == 128 + signal.SIGKILL
        assert nothing_is_left(running.directory)


def test_nothing_is_left_if_the_tool_is_killed(tool: Path) -> None:
    with sandbox(tool, command=f"echo $PROGKEYS_SANDBOX; {LEAVE_A_DAEMON}; sleep 1000; true") as running:
        running.running("sleep")
        running.child.kill()
        wait_until(lambda: nothing_is_left(running.directory), "everything has ended")


def test_nothing_is_left_if_its_other_process_is_killed(tool: Path) -> None:
    with sandbox(tool, command=f"echo $PROGKEYS_SANDBOX; {LEAVE_A_DAEMON}; sleep 1000; true") as running:
        running.running("sleep")
        (worker,) = children_of(running.child.pid)
        os.kill(worker, signal.SIGKILL)
        status, errors = running.end()
        assert status == 128 + signal.SIGKILL
        assert "the sandbox was killed" in errors
        assert nothing_is_left(running.directory)


# Supervision

@pytest.mark.parametrize("name", MODULES)
@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM], ids=lambda number: number.name)
def test_a_module_that_ends_is_started_again(tool: Path, name: str, number: signal.Signals) -> None:
    with sandbox(tool) as running:
        first = running.running(name)
        os.kill(first, number)
        log = Path(running.directory, "logs", f"{name}.log")
        wait_until(lambda: "started again" in log.read_text(), "its end is noticed")
        running.running(name, other_than=first)
        assert running.end()[1] == ""


def test_a_module_that_ends_time_and_again_stays_down(tool: Path) -> None:
    with sandbox(tool) as running:
        process = None
        for _ in range(3):
            process = running.running(SERVICE, other_than=process)
            os.kill(process, signal.SIGKILL)
        log = Path(running.directory, "logs", f"{SERVICE}.log")
        wait_until(lambda: "-- ended with status 137, stays down" in log.read_text(), "it is given up")
        assert SERVICE not in [found.name for found in processes_of(running.directory)]
        _, errors = running.end()
        assert f"{SERVICE} has ended 3 times" in errors
        assert "with status 137, and stays down" in errors


def test_the_end_of_the_bus_is_told(tool: Path) -> None:
    with sandbox(tool) as running:
        os.kill(running.running("dbus-daemon"), signal.SIGKILL)
        wait_until(lambda: not {found.name for found in processes_of(running.directory)} & set(PROGRAMS), "the phone is down")
        _, errors = running.end()
        assert errors.count("\n") == 1
        assert "bus has ended" in errors
        assert nothing_is_left(running.directory)


# What cannot start

def test_a_missing_program_is_named(tool: Path, programs: Path) -> None:
    (programs / "settingsmanager").unlink()
    result = run(tool, "--bin", str(programs), "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (1, "")
    assert "There is no settingsmanager in" in result.stderr
    assert "--bin" in result.stderr


def test_a_missing_bus_is_named_with_its_package(tool: Path, tmp_path: Path) -> None:
    result = run(tool, "--", "echo", "ran", environment={"PATH": str(tmp_path)})
    assert (result.returncode, result.stdout) == (1, "")
    assert "There is no dbus-daemon on the PATH" in result.stderr
    assert "Debian package dbus-daemon" in result.stderr


def test_a_service_that_cannot_start_is_told_with_its_log(tool: Path, programs: Path, tmp_path: Path) -> None:
    replace(programs / SERVICE, ENDS_AT_ONCE)
    result = run(tool, "--bin", str(programs), "--", "echo", "ran", environment={"TMPDIR": str(tmp_path)})
    assert (result.returncode, result.stdout) == (1, "")
    assert f"{SERVICE}: the disk is made of cheese" in result.stderr
    assert f"{SERVICE} ended with status 3 before it was ready" in result.stderr
    assert not list(tmp_path.glob("progkeys-*"))


def test_a_service_that_does_not_come_is_not_waited_for_longer_than_was_said(tool: Path, programs: Path, tmp_path: Path) -> None:
    replace(programs / SERVICE, NEVER_READY)
    result = run(
        tool, "--timeout", "0.2", "--bin", str(programs), "--", "echo", "ran", environment={"TMPDIR": str(tmp_path)}
    )
    assert (result.returncode, result.stdout) == (3, "")
    assert f"{SERVICE} was not ready within 0.2 s" in result.stderr
    assert not list(tmp_path.glob("progkeys-*"))


def test_directories_that_are_not_there_are_an_error_of_usage(tool: Path, tmp_path: Path) -> None:
    missing = str(tmp_path / "missing")
    for option in ("--settings", "--bin"):
        result = run(tool, option, missing, "--", "echo", "ran")
        assert (result.returncode, result.stdout) == (2, "")
        assert missing in result.stderr


def test_a_file_in_the_way_of_the_data_is_named(tool: Path, tmp_path: Path) -> None:
    (tmp_path / "file").touch()
    result = run(tool, "--data", str(tmp_path / "file" / "data"), "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (1, "")
    assert f"Cannot make {tmp_path}/file/data" in result.stderr


@pytest.mark.parametrize("option", ["--data", "--logs"])
def test_a_directory_that_takes_no_file_is_named(tool: Path, option: str) -> None:
    result = run(tool, option, "/proc", "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (1, "")
    assert "Cannot write in /proc." in result.stderr


def test_the_end_may_be_asked_for_before_everything_is_up(tool: Path, programs: Path, tmp_path: Path) -> None:
    replace(programs / SERVICE, "#!/bin/sh\necho $PROGKEYS_SANDBOX >\"$0.started\"\nexec sleep 1000\n")
    told = programs / f"{SERVICE}.started"
    with subprocess.Popen([tool, "sandbox", "--bin", programs, "--", "true"], env=clean_environment()) as child:
        wait_until(lambda: told.exists() and told.read_text().endswith("\n"), "the service is being started")
        child.terminate()
        assert child.wait(LIMIT) == 128 + signal.SIGTERM
    assert nothing_is_left(told.read_text().strip())
