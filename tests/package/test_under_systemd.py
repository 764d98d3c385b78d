"""The unit under systemd."""

import json
from pathlib import Path
from typing import Iterator

import pytest

from booted_system import BootedSystem
from conftest import IN_ROOT, People
from installation import DATABASE, stop
from sandbox.loop import wait_until
from target_root import TargetRoot

NEW_ACTION = ("action", "add", "type=1", "action=call")
UNIT = "zelprogrammablekeys.service"
BUS_OBJECT = (
    "com.velmora.Tessaro.ZelProgrammableKeys",
    "/com/velmora/Tessaro/ZelProgrammableKeys",
    "com.velmora.Tessaro.ZELInterface",
)


@pytest.fixture(scope="module")
def system(root: TargetRoot, people: People, packages: dict[str, Path]) -> Iterator[BootedSystem]:
    """The booted root directory with the built packages."""
    stop(people.root)
    root.install([packages[name] for name in IN_ROOT])
    root.stop_bus()
    booted = BootedSystem(root)
    try:
        booted.wait_until_up()
        yield booted
    finally:
        booted.power_off()
        root.start_bus()


def show(system: BootedSystem, name: str) -> str:
    """A property of the unit."""
    return system.demand("systemctl", "show", "--value", f"--property={name}", UNIT)


def main_process(system: BootedSystem) -> str:
    wait_until(lambda: show(system, "MainPID") != "0", "the service runs")
    return show(system, "MainPID")


def wait_until_active(system: BootedSystem) -> None:
    wait_until(lambda: show(system, "ActiveState") == "active", "the unit is active")


@pytest.fixture(autouse=True)
def active_unit(system: BootedSystem) -> None:
    system.run("systemctl", "reset-failed", UNIT)
    system.demand("systemctl", "start", UNIT)


def test_the_unit_is_started_at_boot(system: BootedSystem) -> None:
    assert system.demand("systemctl", "is-enabled", UNIT) == "enabled"
    assert show(system, "WantedBy") == "multi-user.target"


def test_the_service_notifies_systemd_that_it_is_ready(system: BootedSystem) -> None:
    assert show(system, "StatusText") == "com.velmora.Tessaro.ZelProgrammableKeys is on the bus"


def test_the_first_call_starts_the_unit(system: BootedSystem) -> None:
    system.demand("systemctl", "stop", UNIT)
    assert (show(system, "ActiveState"), show(system, "Result")) == ("inactive", "success")
    listed = system.demand("busctl", "call", *BUS_OBJECT, "getAllActions", user="visitor")
    assert listed.startswith("a(xsisssss) ")
    assert show(system, "ActiveState") == "active"


def test_only_the_service_can_read_the_database(system: BootedSystem) -> None:
    system.demand("systemctl", "stop", UNIT)
    system.demand("rm", f"/{DATABASE}")
    system.demand("progkeysctl", *NEW_ACTION, "label=Lena", user="secretary")
    assert system.demand("stat", "--format=%U %a", f"/{DATABASE}") == "zelprogkeys 600"


def test_systemctl_can_change_the_log_level_of_the_running_service(system: BootedSystem) -> None:
    system.demand("systemctl", "service-log-level", UNIT, "debug")
    assert system.demand("systemctl", "service-log-level", UNIT) == "debug"
    system.demand("progkeysctl", *NEW_ACTION, "label=Mira", user="secretary")
    wait_until(lambda: "ACTION_CREATE_NTF" in debug_lines(system), "the event is in the journal")
    system.demand("systemctl", "service-log-level", UNIT, "info")


def debug_lines(system: BootedSystem) -> str:
    """The debug lines of the unit in the journal."""
    journal = system.demand(
        "journalctl", "--unit", UNIT, "--priority=debug..debug", "--output=json"
    )
    return "\n".join(str(json.loads(line)["MESSAGE"]) for line in journal.splitlines())


def test_systemd_restarts_a_killed_service_with_its_data(system: BootedSystem) -> None:
    system.demand("progkeysctl", *NEW_ACTION, "label=Nora", user="secretary")
    before = main_process(system)
    system.demand("systemctl", "kill", "--signal=KILL", UNIT)
    wait_until(lambda: main_process(system) != before, "a new process runs")
    wait_until_active(system)
    assert "Nora" in system.demand("progkeysctl", "action", "list", user="visitor")


@pytest.fixture
def short_watchdog(system: BootedSystem, root: TargetRoot) -> Iterator[None]:
    configuration = f"/run/systemd/system/{UNIT}.d"
    text = "[Service]\\nWatchdogSec=2s\\nTimeoutAbortSec=1s\\n"
    system.demand(
        "sh", "-c", f"mkdir -p {configuration} && printf '{text}' >{configuration}/test.conf"
    )
    system.demand("systemctl", "daemon-reload")
    system.demand("systemctl", "restart", UNIT)
    yield
    system.demand("rm", "-r", configuration)
    system.demand("systemctl", "daemon-reload")
    system.demand("systemctl", "restart", UNIT)


@pytest.mark.usefixtures("short_watchdog")
def test_the_watchdog_restarts_a_stopped_process(system: BootedSystem) -> None:
    before = main_process(system)
    system.demand("systemctl", "kill", "--signal=STOP", UNIT)
    wait_until(lambda: main_process(system) != before, "a new process runs", 60)
    wait_until_active(system)
    journal = system.demand("journalctl", "--unit", UNIT)
    assert "Watchdog timeout" in journal


def test_systemd_gives_up_if_the_service_cannot_start(system: BootedSystem) -> None:
    system.demand("systemctl", "stop", UNIT)
    system.demand("chown", "root:", "/data/ZELApplication/ZelProgrammableKeys")
    system.demand("chmod", "700", "/data/ZELApplication/ZelProgrammableKeys")
    try:
        system.run("systemctl", "start", UNIT)
        wait_until(lambda: show(system, "ActiveState") == "failed", "systemd gives up", 60)
        assert "repeated too quickly" in system.demand("journalctl", "--unit", UNIT)
    finally:
        system.demand("chown", "zelprogkeys:", "/data/ZELApplication/ZelProgrammableKeys")


def test_the_service_can_write_only_to_the_data_directory(system: BootedSystem) -> None:
    in_namespace = ("nsenter", f"--target={main_process(system)}", "--mount")
    system.demand(*in_namespace, "touch", "/data/ZELApplication/probe")
    system.demand("rm", "/data/ZELApplication/probe")
    for place in ("/etc/probe", "/usr/probe", "/var/lib/probe", "/home/probe"):
        refused = system.run(*in_namespace, "touch", place)
        assert "Read-only" in refused.stderr or "Permission denied" in refused.stderr, place


@pytest.fixture
def packages_start_services(system: BootedSystem) -> Iterator[None]:
    policy = "/usr/sbin/policy-rc.d"
    system.demand("mv", policy, f"{policy}.off")
    yield
    system.demand("mv", f"{policy}.off", policy)


@pytest.mark.usefixtures("packages_start_services")
def test_packages_start_restart_and_stop_the_service(
    system: BootedSystem, packages: dict[str, Path]
) -> None:
    apt = ("env", "DEBIAN_FRONTEND=noninteractive", "apt-get", "--yes")
    install = (*apt, "install", "--reinstall", f"/packages/{packages['zelprogrammablekeys'].name}")

    system.demand(*apt, "purge", "zelprogrammablekeys")
    assert show(system, "ActiveState") == "inactive"
    assert system.run("test", "-e", f"/{DATABASE}").returncode != 0
    system.demand(*install)
    assert (show(system, "ActiveState"), show(system, "NRestarts")) == ("active", "0")

    before = main_process(system)
    system.demand(*install)
    assert (show(system, "ActiveState"), show(system, "NRestarts")) == ("active", "0")
    assert main_process(system) != before

    system.demand(*apt, "remove", "zelprogrammablekeys")
    assert system.run("test", "-d", f"/proc/{before}").returncode != 0
    assert not system.run("systemctl", "is-active", UNIT).stdout.startswith("active")
    system.demand(*install)
