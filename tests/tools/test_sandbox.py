"""The command `sandbox`: another command with a private phone."""

import json
import os
import shutil
import signal
import subprocess
import tempfile
from pathlib import Path

import pytest

from sandbox.loop import LIMIT, wait_until
from sandbox.processes import clean_environment
from sandbox.settings import write_settings
from sandboxes import children_of, nothing_is_left, run, sandbox

PROGRAMS = ["dbus-daemon", "settingsmanager", "zelprogrammablekeys"]
SERVICE = "zelprogrammablekeys"
MODULES = ["settingsmanager", SERVICE]
START_DAEMONS = "setsid sleep 1000 & (setsid sleep 1000 &) "
NEVER_READY = "#!/bin/sh\nexec sleep 1000\n"
ENDS_AT_ONCE = "#!/bin/sh\necho the disk is full >&2\nexit 3\n"


@pytest.fixture
def tool(bin_dir: Path) -> Path:
    return bin_dir / "progkeysctl"


@pytest.fixture
def programs(bin_dir: Path, tmp_path: Path) -> Path:
    """A directory with links to the programs of the phone, which a test can replace."""
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
        pytest.param(["true"], 0, id="success"),
        pytest.param(["sh", "-c", "exit 7"], 7, id="failure"),
        pytest.param(["sh", "-c", "kill -KILL $$"], 128 + signal.SIGKILL, id="killed"),
    ],
)
def test_the_exit_status_is_that_of_the_command(tool: Path, command: list[str], status: int) -> None:
    result = run(tool, "--", *command)
    assert (result.returncode, result.stdout, result.stderr) == (status, "", "")


@pytest.mark.parametrize(
    ("command", "status", "reason"),
    [
        pytest.param("no-such-program", 127, "No such file", id="missing"),
        pytest.param("/etc/passwd", 126, "Permission denied", id="not executable"),
    ],
)
def test_a_command_that_cannot_be_run_is_reported(tool: Path, command: str, status: int, reason: str) -> None:
    result = run(tool, "--", command)
    assert result.returncode == status
    assert command in result.stderr
    assert reason in result.stderr


def test_the_arguments_of_the_command_are_not_changed(tool: Path) -> None:
    words = ["[a,b]", "", "--", "--json", "key", "two words", "*"]
    assert run(tool, "--", "printf", "<%s>", *words).stdout == "".join(f"<{word}>" for word in words)


def test_the_command_finds_the_phone_and_the_tool(tool: Path) -> None:
    result = run(tool, "--", "progkeysctl", "status", "--json=short")
    status = json.loads(result.stdout)
    assert status["running"] is True
    assert status["peers"] == ["SettingsManager", "ZelProgrammableKeys"]
    assert (status["setKeys"], status["provisionedActions"], status["limit"]) == (0, 0, 100)


def test_the_environment_of_the_command(tool: Path) -> None:
    names = ["PROGKEYS_SANDBOX", "ZEL_DATA_ROOT", "DBUS_SYSTEM_BUS_ADDRESS", "PATH"]
    result = run(tool, "--", "printenv", *names)
    directory, data, address, path = result.stdout.splitlines()
    assert data == f"{directory}/data/"
    assert address == f"unix:path={directory}/bus"
    assert path == f"{tool.parent}:{os.environ['PATH']}"
    assert not Path(directory).exists()


@pytest.mark.parametrize(
    "name", [pytest.param(" ,;=<d>&%41~é", id="unusual"), pytest.param("long" * 40, id="long")]
)
def test_the_name_of_the_temporary_directory_does_not_matter(tool: Path, name: str) -> None:
    with tempfile.TemporaryDirectory(suffix=name) as directory:
        result = run(tool, "--", "sh", "-c", "progkeysctl status >&2 && echo $PROGKEYS_SANDBOX", environment={"TMPDIR": directory})
        assert result.returncode == 0, result.stderr
        assert not Path(result.stdout.strip()).exists()
        assert not os.listdir(directory)


def test_temporary_files_are_in_memory_if_possible(tool: Path, tmp_path: Path) -> None:
    show = ["--", "printenv", "PROGKEYS_SANDBOX"]
    filesystem = subprocess.run(["stat", "-f", "-c", "%T", "/dev/shm"], capture_output=True, text=True, check=False)
    expected = "/dev/shm" if filesystem.stdout == "tmpfs\n" else "/tmp"
    with_default = run(tool, *show, environment={"TMPDIR": ""})
    assert Path(with_default.stdout.strip()).parent == Path(expected)
    specified = run(tool, *show, environment={"TMPDIR": str(tmp_path)})
    assert Path(specified.stdout.strip()).parent == tmp_path


def test_without_a_command_the_shell_reads_stdin(tool: Path) -> None:
    with sandbox(tool, command="SHELL=/bin/sh exec progkeysctl sandbox <<'END'\necho $PROGKEYS_SANDBOX\nexit 9\nEND") as inner:
        assert inner.end() == (9, "")


# Directories

def test_changed_settings_take_effect_immediately(tool: Path, tmp_path: Path) -> None:
    settings = write_settings(tmp_path / "settings", {"ProgKeysMax": "3"})
    limit = "progkeysctl status --terse --fields limit"
    result = run(tool, "--settings", str(settings), "--", "sh", "-c", f"{limit}; echo 5 >'{settings}/ProgKeysMax'; {limit}")
    assert result.stdout == "3\n5\n"
    assert (settings / "ProgKeysMax").read_text() == "5\n"


def test_data_is_kept_between_runs(tool: Path, tmp_path: Path) -> None:
    data = tmp_path / "new" / "data"
    add = ["key", "add", "container=home", "position=4", "idAction=-1", "type=0"]
    assert run(tool, "--data", str(data), "--", "progkeysctl", *add).returncode == 0
    listing = run(tool, "--data", str(data), "--", "progkeysctl", "key", "list", "--terse", "--fields", "container,position")
    assert listing.stdout == "home:4\n"
    assert [path.name for path in data.rglob("*.data*")] == ["zelprogrammablekeys.data"], "the service did not end cleanly"


def test_logs_are_kept_in_the_specified_directory(tool: Path, tmp_path: Path) -> None:
    logs = tmp_path / "logs"
    assert run(tool, "--logs", str(logs), "--", "true").returncode == 0
    assert sorted(path.name for path in logs.iterdir()) == sorted(f"{name}.log" for name in PROGRAMS)
    assert "ZelProgrammableKeys[" in (logs / f"{SERVICE}.log").read_text()


# The end

def test_nothing_is_left_behind(tool: Path) -> None:
    with sandbox(tool, command=f"echo $PROGKEYS_SANDBOX; {START_DAEMONS}; read end; exit 4") as running:
        for name in [*PROGRAMS, "sleep"]:
            running.wait_for(name)
        assert running.end() == (4, "")
        assert nothing_is_left(running.directory)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP], ids=lambda number: number.name)
def test_a_signal_ends_the_command_and_then_all_processes(tool: Path, number: signal.Signals) -> None:
    command = f"trap 'echo trapped; exit 6' TERM; echo $PROGKEYS_SANDBOX; {START_DAEMONS}; while :; do sleep 0.01; done"
    with sandbox(tool, command=command) as running:
        running.wait_for("sleep")
        running.child.send_signal(number)
        output, _ = running.child.communicate(timeout=LIMIT)
        assert (running.child.returncode, output) == (-number, "trapped\n")
        assert nothing_is_left(running.directory)


def test_a_command_that_ignores_signals_is_killed(tool: Path) -> None:
    with sandbox(tool, command="trap '' TERM HUP; echo $PROGKEYS_SANDBOX; while :; do sleep 1000; done") as running:
        running.child.send_signal(signal.SIGTERM)
        assert running.end()[0] == -signal.SIGTERM
        assert nothing_is_left(running.directory)


def test_nothing_is_left_if_the_tool_is_killed(tool: Path) -> None:
    with sandbox(tool, command=f"echo $PROGKEYS_SANDBOX; {START_DAEMONS}; sleep 1000; true") as running:
        running.wait_for("sleep")
        running.child.kill()
        wait_until(lambda: nothing_is_left(running.directory), "all processes have ended")


def test_nothing_is_left_if_its_guard_is_killed(tool: Path) -> None:
    with sandbox(tool, command="echo $PROGKEYS_SANDBOX; read end; exit 4") as running:
        (guard,) = [pid for pid in children_of(running.child.pid) if b"--guard" in Path(f"/proc/{pid}/cmdline").read_bytes()]
        os.kill(guard, signal.SIGKILL)
        assert running.end() == (4, "")
        assert nothing_is_left(running.directory)


# Failed starts

def test_a_missing_program_is_reported(tool: Path, programs: Path) -> None:
    (programs / "settingsmanager").unlink()
    result = run(tool, "--bin", str(programs), "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (1, "")
    assert f"settingsmanager is not in {programs}" in result.stderr
    assert "--bin" in result.stderr


def test_a_missing_bus_is_reported_with_its_package(tool: Path, tmp_path: Path) -> None:
    for name in ("bash", "dirname", "realpath"):
        (tmp_path / name).symlink_to(shutil.which(name))
    result = run(tool, "--", "echo", "ran", environment={"PATH": str(tmp_path)})
    assert (result.returncode, result.stdout) == (1, "")
    assert "dbus-daemon is not on the PATH" in result.stderr
    assert "Debian package dbus-daemon" in result.stderr


def test_a_missing_script_is_reported_with_its_package(tool: Path, tmp_path: Path) -> None:
    copy = tmp_path / "progkeysctl"
    shutil.copy2(tool, copy)
    result = run(copy, "--", "echo", "ran", environment={"PATH": "/usr/bin:/bin"})
    assert (result.returncode, result.stdout) == (1, "")
    assert "progkeysctl-sandbox is neither beside this program nor on the PATH" in result.stderr
    assert run(copy, "--", "echo", "ran", environment={"PATH": f"{tool.parent}:/usr/bin:/bin"}).stdout == "ran\n"


def test_a_failed_start_is_reported_with_the_log(tool: Path, programs: Path, tmp_path: Path) -> None:
    replace(programs / SERVICE, ENDS_AT_ONCE)
    result = run(tool, "--bin", str(programs), "--", "echo", "ran", environment={"TMPDIR": str(tmp_path)})
    assert (result.returncode, result.stdout) == (1, "")
    assert f"{SERVICE}: the disk is full" in result.stderr
    assert f"{SERVICE} ended with status 3 before it was ready" in result.stderr
    assert not list(tmp_path.glob("progkeys-*"))


def test_a_service_that_does_not_start_is_a_timeout(tool: Path, programs: Path, tmp_path: Path) -> None:
    replace(programs / SERVICE, NEVER_READY)
    result = run(
        tool, "--timeout", "0.2", "--bin", str(programs), "--", "echo", "ran", environment={"TMPDIR": str(tmp_path)}
    )
    assert (result.returncode, result.stdout) == (3, "")
    assert f"{SERVICE} was not ready within 0.2 s" in result.stderr
    assert not list(tmp_path.glob("progkeys-*"))


@pytest.mark.parametrize(
    ("script", "expected"),
    [(ENDS_AT_ONCE, (1, "ended with status 3 before it was ready")), (NEVER_READY, (3, "was not ready within 0.001 s"))],
    ids=["ends at once", "never ready"],
)
def test_a_bus_that_does_not_start_is_reported(
    tool: Path, tmp_path: Path, script: str, expected: tuple[int, str]
) -> None:
    (tmp_path / "dbus-daemon").touch(0o755)
    replace(tmp_path / "dbus-daemon", script)
    limit = "1e-3" if script == NEVER_READY else "20"
    result = run(tool, "--timeout", limit, "--", "echo", "ran", environment={"PATH": f"{tmp_path}:/usr/bin:/bin"})
    assert (result.returncode, result.stdout) == (expected[0], "")
    assert f"dbus-daemon {expected[1]}" in result.stderr


def test_missing_directories_are_refused(tool: Path, tmp_path: Path) -> None:
    missing = str(tmp_path / "missing")
    for option in ("--settings", "--bin"):
        result = run(tool, option, missing, "--", "echo", "ran")
        assert (result.returncode, result.stdout) == (2, "")
        assert missing in result.stderr


def test_a_file_in_place_of_the_data_directory_is_reported(tool: Path, tmp_path: Path) -> None:
    (tmp_path / "file").touch()
    result = run(tool, "--data", str(tmp_path / "file" / "data"), "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (1, "")
    assert f"Cannot write to {tmp_path}/file/data" in result.stderr


@pytest.mark.parametrize("option", ["--data", "--logs"])
def test_a_read_only_directory_is_reported(tool: Path, option: str) -> None:
    result = run(tool, option, "/proc", "--", "echo", "ran")
    assert (result.returncode, result.stdout) == (1, "")
    assert "Cannot write to /proc." in result.stderr


def test_a_signal_during_the_start_ends_the_sandbox(tool: Path, programs: Path, tmp_path: Path) -> None:
    replace(programs / SERVICE, "#!/bin/sh\necho $PROGKEYS_SANDBOX >\"$0.started\"\nexec sleep 1000\n")
    started = programs / f"{SERVICE}.started"
    with subprocess.Popen([tool, "sandbox", "--bin", programs, "--", "true"], env=clean_environment()) as child:
        wait_until(lambda: started.exists() and started.read_text().endswith("\n"), "the service is starting")
        child.terminate()
        assert child.wait(LIMIT) == -signal.SIGTERM
    assert nothing_is_left(started.read_text().strip())
