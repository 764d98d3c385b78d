"""What a service manager is told, over a socket that the test holds."""

import os
import signal

import pytest

from samples import CALL, SET_KEY
from sandbox.client import Client
from sandbox.loop import wait_until
from sandbox.names import LIFECYCLE, SERVICE, SETTINGS_MANAGER, bus_name
from sandbox.notifications import ALIVE, READY, STOPPING, ServiceManager
from sandbox.processes import start_settings_manager
from sandbox.records import KEY

INTERVAL_US = 400_000


@pytest.fixture
def manager(tmp_path):
    service_manager = ServiceManager(str(tmp_path / "notify"))
    yield service_manager
    service_manager.close()


@pytest.fixture
def service(start, manager):
    """The service, ready and told of so."""
    module = start(extra=manager.environment())
    manager.wait_for(1)
    assert manager.words() == [READY]
    return module


# The start


def test_the_process_is_ready_no_sooner_than_its_start_is_through(
    launch, client, manager, settings
):
    settings.hang()
    process = launch(extra=manager.environment())
    settings.wait_for_calls(1)
    assert manager.take() == []
    settings.release()
    manager.wait_for(1)
    assert client.process_of(bus_name(SERVICE)) == process.pid
    (notification,) = manager.take()
    assert notification.what == READY
    assert notification.status == f"{bus_name(SERVICE)} is on the bus"


def test_a_process_whose_name_is_taken_at_the_last_moment_is_never_ready(
    launch, bus, manager, settings
):
    settings.hang()
    process = launch(extra=manager.environment())
    settings.wait_for_calls(1)
    squatter = Client(bus.address, "Squatter")
    squatter.connection.request_name(bus_name(SERVICE))
    settings.release()
    assert process.wait_for_exit() == 1
    assert manager.words() == [STOPPING]
    squatter.close()


def test_a_process_without_a_bus_is_never_ready(launch, tmp_path, manager):
    process = launch(address=f"unix:path={tmp_path}/nothing", extra=manager.environment())
    assert process.wait_for_exit() == 1
    assert manager.words() == [STOPPING]


def test_a_termination_during_the_start_leaves_the_process_never_ready(launch, manager, settings):
    settings.hang()
    process = launch(extra=manager.environment())
    settings.wait_for_calls(1)
    process.send_signal(signal.SIGTERM)
    settings.release()
    assert process.wait_for_exit() == 0
    assert manager.words() == [STOPPING]


def test_a_socket_in_the_abstract_name_space_is_told_too(start):
    manager = ServiceManager(f"@phone-{os.getpid()}")
    start(extra=manager.environment()).stop()
    assert manager.words() == [READY, STOPPING]
    manager.close()


def test_without_a_socket_nothing_is_told_and_nothing_said_of_it(start, client, manager):
    service = start(extra={"WATCHDOG_USEC": "1000"})
    client.round_trip()
    service.log.take()
    service.stop()
    assert manager.take() == []
    assert service.log.take() == []


def test_a_service_manager_that_is_gone_is_warned_of_and_no_failure(start, manager):
    service = start(extra=manager.environment())
    manager.close()
    service.log.take()
    service.stop()
    assert service.log.take() == ["Cannot tell the service manager: Connection refused"]
    assert service.log.lines()[-1].level == "warning"


def test_every_module_says_so(bin_dir, bus, client, settings_dir, tmp_path, manager):
    with start_settings_manager(
        bin_dir,
        bus.address,
        settings_dir,
        tmp_path / "settingsmanager.log",
        extra=manager.environment(INTERVAL_US),
    ) as module:
        manager.wait_for(2)
        assert {notification.what for notification in manager.take()} == {READY, ALIVE}
        assert client.process_of(bus_name(SETTINGS_MANAGER)) == module.pid
        module.stop()
    assert manager.words()[-1] == STOPPING


# The end


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_termination_is_told(service, manager, number):
    service.stop(number)
    (notification,) = manager.take()
    assert notification.what == STOPPING
    assert notification.status == "Ending"


def test_the_lifecycles_stop_is_told(service, client, manager):
    assert client.lifecycle("stop").values == (True,)
    assert service.wait_for_exit() == 0
    assert manager.words() == [STOPPING]


def test_a_lost_bus_is_told(service, bus, manager):
    bus.stop()
    assert service.wait_for_exit() == 1
    assert manager.words() == [STOPPING]


def test_a_process_that_is_killed_tells_nothing(service, manager):
    service.kill()
    assert manager.take() == []


# The watchdog


def test_the_watchdog_is_fed_again_and_again(start, manager):
    start(extra=manager.environment(INTERVAL_US))
    manager.wait_for(6)
    words = manager.words()
    words.remove(READY)
    assert set(words) == {ALIVE}


def test_the_watchdog_of_another_process_is_not_fed(start, client, manager):
    service = start(extra={**manager.environment(1000), "WATCHDOG_PID": "1"})
    for _ in range(20):
        client.add_action(CALL)
    service.stop()
    assert manager.words() == [READY, STOPPING]


def test_a_loop_that_is_stuck_feeds_nothing_until_it_gets_on(start, client, manager, settings):
    start(extra=manager.environment(INTERVAL_US))
    calls = len(settings.calls)
    settings.hang()
    restore = client.send("restoreDefault", interface=LIFECYCLE)
    settings.wait_for_calls(calls + 1)
    manager.take()
    settings.wait_for_calls(calls + 2)
    first = manager.take()
    restore.wait()
    second = manager.take()
    # The call for each of the two settings waits 5 s.
    assert [notification.what for notification in first] == [ALIVE]
    assert second[0].what == ALIVE
    assert second[0].when - first[0].when > 4.0


def test_a_call_that_hangs_lets_the_watchdog_wait(start, client, manager, settings):
    start(extra=manager.environment(INTERVAL_US))
    calls = len(settings.calls)
    settings.hang()
    creation = client.send("createProgrammableKey", KEY, SET_KEY)
    settings.wait_for_calls(calls + 1)
    manager.take()
    creation.wait()
    fed = manager.words()
    assert fed and set(fed) == {ALIVE}
    wait_until(lambda: manager.take(), "the loop feeds again")
