"""The harness with the real programs: what they are given, what is told of them, how all ends."""

import json
import os
import signal
import subprocess
from pathlib import Path
from typing import Iterator, Sequence

import pytest

from harness.busy import busy_process
from harness.cores import LAST
from harness.environment import STEERING, nobody_steered
from harness.failure import MeasurementFailed
from harness.programs import AFTERNOON, FRAME, PRESS, RIVAL, SERVICE, Programs
from harness.setup import QUICK_ROUNDS
from harness.stand import Stand
from sandbox.loop import wait_until
from sandbox.names import SERVICE as MODULE
from sandbox.names import bus_name
from sandbox.processes import Process, clean_environment
from servers import BENCH

SERVERS = (SERVICE, RIVAL, AFTERNOON, FRAME, PRESS)
FALSE_SERVER = f"""#!/usr/bin/python3
import os, signal, sys, dbus.bus
def end(*_arguments):
    print("the tables are torn", file=sys.stderr)
    sys.exit(7)
signal.signal(signal.SIGTERM, end)
bus = dbus.bus.BusConnection(os.environ["DBUS_SYSTEM_BUS_ADDRESS"])
bus.request_name("{bus_name(MODULE)}")
while True:
    signal.pause()
"""


@pytest.fixture
def programs(bin_dir: Path) -> Programs:
    """What was built; fails if something is missing."""
    programs = Programs(bin_dir.parent, bin_dir.parent)
    programs.require(SERVERS)
    return programs


def harness(programs: Programs, *arguments: str) -> list[str]:
    """The command that measures, ended by signals whoever started the tests."""
    start = ["/usr/bin/env", "--default-signal", "/usr/bin/python3", str(BENCH / "harness")]
    return [*start, "--build", str(programs.build), *arguments]


def children(pid: int) -> Iterator[int]:
    """The processes that a process has started and not yet taken leave of."""
    for listed in Path(f"/proc/{pid}/task").glob("*/children"):
        yield from map(int, listed.read_text(encoding="ascii").split())


def names_of_environment(pid: int) -> set[str]:
    entries = Path(f"/proc/{pid}/environ").read_bytes().split(b"\0")
    return {entry.partition(b"=")[0].decode() for entry in entries if entry}


def test_the_caller_steers_no_process(
    programs: Programs, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    for name in STEERING:
        monkeypatch.setenv(f"{name}X" if name.endswith("_") else name, "")
    before = set(children(os.getpid()))
    with nobody_steered(), Stand(programs, SERVICE, tmp_path):
        started = set(children(os.getpid())) - before
        found = [names_of_environment(pid) for pid in started]
    assert len(found) == 3, "the bus, the settings and the server"
    for names in found:
        assert "PATH" in names
        assert not [name for name in names if name.startswith(STEERING)]


@pytest.mark.parametrize("server", SERVERS)
def test_a_stand_comes_up_and_goes(programs: Programs, server: str, tmp_path: Path) -> None:
    before = set(children(os.getpid()))
    with Stand(programs, server, tmp_path) as stand:
        pid = stand.pid
        assert Path(f"/proc/{pid}").is_dir()
    assert set(children(os.getpid())) <= before and not list(tmp_path.iterdir())


def test_a_server_that_dies_is_told_with_the_end_of_its_log(
    programs: Programs, tmp_path: Path
) -> None:
    with Stand(programs, SERVICE, tmp_path) as stand:
        (log,) = tmp_path.glob("*/service.log")
        log.write_text("".join(f"line {number}\n" for number in range(30)), encoding="utf-8")
        os.kill(stand.pid, signal.SIGKILL)
        with pytest.raises(MeasurementFailed) as failure:
            stand.do("get-action", 10, 1)
    lines = str(failure.value).splitlines()
    assert "status 1 from " in lines[0] and "bench_client" in lines[0]
    told = lines.index("service ended with status -9; its log:")
    assert lines[told + 1 :] == [f"line {number}" for number in range(20, 30)]


def test_a_work_that_fails_is_told_with_the_server_s_state(
    programs: Programs, tmp_path: Path
) -> None:
    with Stand(programs, FRAME, tmp_path) as stand:
        with pytest.raises(
            MeasurementFailed, match=r"\nframe still runs, with nothing in its log"
        ):
            stand.do("get-action", 10, 1)


def test_who_makes_the_tables_must_end_well(programs: Programs, tmp_path: Path) -> None:
    false_build = tmp_path / "build"
    (false_build / "bin").mkdir(parents=True)
    (false_build / "bin" / "settingsmanager").symlink_to(programs.settings_manager)
    server = false_build / "bin" / "zelprogrammablekeys"
    server.write_text(FALSE_SERVER, encoding="utf-8")
    server.chmod(0o755)
    ending = r"^service made tables and ended with status 7; its log:\nthe tables are torn$"
    with pytest.raises(MeasurementFailed, match=ending):
        with Stand(Programs(false_build, false_build), SERVICE, tmp_path):
            pass


def test_a_busy_process_is_busy_on_the_one_core_and_ends(tmp_path: Path) -> None:
    def seconds(pid: int) -> float:
        fields = Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    with busy_process(tmp_path) as process:
        assert os.sched_getaffinity(process.pid) == {LAST}
        assert os.getsid(process.pid) == process.pid
        assert os.getpriority(os.PRIO_PROCESS, process.pid) == os.getpriority(os.PRIO_PROCESS, 0)
        wait_until(lambda: seconds(process.pid) > 0.1, "the process uses the core")
    assert process.status == -signal.SIGKILL


def test_a_busy_process_that_ended_makes_no_measurement(tmp_path: Path) -> None:
    with pytest.raises(MeasurementFailed, match="busy process ended with status -9"):
        with busy_process(tmp_path) as process:
            process.kill()


def run(command: Sequence[str]) -> "subprocess.CompletedProcess[str]":
    return subprocess.run(command, capture_output=True, text=True, timeout=90)


def test_a_short_measurement(programs: Programs) -> None:
    done = run(harness(programs, "--quick", "--only", "get-action", "--json", "-"))
    assert done.returncode == 0, done.stderr
    assert done.stderr == "No limit is judged: these rounds are too few and too short.\n"
    written = json.loads(done.stdout)
    servers = (SERVICE, RIVAL, AFTERNOON, FRAME)
    assert sorted(series["server"] for series in written["series"]) == sorted(servers)
    for series in written["series"]:
        assert len(series["totals"]) == QUICK_ROUNDS
        assert all(0 < seconds < 10 for seconds in series["totals"])
    assert [each["name"] for each in written["limits"]] == ["get-action"]


def test_a_short_measurement_of_synchronisations(programs: Programs) -> None:
    done = run(harness(programs, "--quick", "--only", "synchronisation", "--json", "-"))
    assert done.returncode == 0, done.stderr
    written = json.loads(done.stdout)
    assert [(series["work"], series["rows"]) for series in written["series"]] == [
        (keys, records) for keys in ("module keys", "set keys") for records in (100, 1000)
    ]
    for series in written["series"]:
        assert len(series["totals"]) == len(series["shares"]) == 2
    assert [(limit["name"], limit["limit"]) for limit in written["limits"]] == [
        ("ten times the module keys", 13),
        ("ten times the set keys", 13),
    ]


def test_a_short_measurement_beside_a_busy_process(programs: Programs) -> None:
    done = run(harness(programs, "--quick", "--only", "cores", "--json", "-"))
    assert done.returncode == 0, done.stderr
    found = {
        (series["work"], series["server"], series["cores"]): len(series["totals"])
        for series in json.loads(done.stdout)["series"]
    }
    assert found == {
        (work, server, cores): QUICK_ROUNDS
        for work in ("get-action", "press")
        for server in (SERVICE, RIVAL)
        for cores in ("one", "one, busy", "all")
    }


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_a_signal_ends_it_in_order(
    programs: Programs, number: signal.Signals, tmp_path: Path
) -> None:
    environment = {**clean_environment(), "TMPDIR": str(tmp_path)}
    command = harness(programs, "--only", "memory")
    log = tmp_path / "log"
    with Process(command, environment, log) as measuring:
        started: list[int] = []

        def are_three() -> bool:
            started[:] = children(measuring.pid)
            return len(started) == 3

        wait_until(are_three, "a bus, the settings and a server are there")
        measuring.send_signal(number)
        assert measuring.wait_for_exit() == 128 + number
    # One that was just being started goes by the kernel's hand, after its parent.
    wait_until(
        lambda: not [pid for pid in started if Path(f"/proc/{pid}").exists()], "all processes end"
    )
    assert list(tmp_path.iterdir()) == [log]
