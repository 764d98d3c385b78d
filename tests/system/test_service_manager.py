"""Notifications to the service manager."""

import os
import signal

import pytest

from samples import CALL
from sandbox.client import Client
from sandbox.names import LIFECYCLE, SERVICE, SETTINGS_MANAGER, bus_name
from sandbox.notifications import ALIVE, READY, STOPPING, ServiceManager
from sandbox.processes import start_settings_manager

ALWAYS_DUE_US = 1
HOUR_US = 3_600_000_000
READS_OF_DEFAULTS = 2
"""The number of settings that a start or a reset reads."""


@pytest.fixture
def manager(tmp_path):
    service_manager = ServiceManager(str(tmp_path / "notify"))
    yield service_manager
    service_manager.close()


@pytest.fixture
def service(start, manager):
    """The service, after it has sent READY."""
    module = start(extra=manager.environment())
    manager.wait_for(1)
    assert manager.words() == [READY]
    return module


# The start


def test_the_process_is_ready_when_it_owns_its_name(launch, client, manager, settings):
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


def test_a_process_whose_name_is_taken_during_its_start_is_never_ready(
    launch, bus, manager, settings
):
    settings.hang()
    process = launch(extra=manager.environment())
    settings.wait_for_calls(1)
    other_peer = Client(bus.address, "Other")
    other_peer.connection.request_name(bus_name(SERVICE))
    settings.release()
    assert process.wait_for_exit() == 1
    assert manager.words() == [STOPPING]
    other_peer.close()


def test_a_process_that_gets_sigterm_during_its_start_is_never_ready(launch, manager, settings):
    settings.hang()
    process = launch(extra=manager.environment())
    settings.wait_for_calls(1)
    process.send_signal(signal.SIGTERM)
    settings.release()
    assert process.wait_for_exit() == 0
    assert manager.words() == [STOPPING]


def test_a_socket_in_the_abstract_namespace_is_notified(start):
    manager = ServiceManager(f"@phone-{os.getpid()}")
    start(extra=manager.environment()).stop()
    assert manager.words() == [READY, STOPPING]
    manager.close()


def test_without_a_socket_nothing_is_notified_or_logged(start, client, manager):
    service = start(extra={"WATCHDOG_USEC": "1000"})
    client.round_trip()
    service.log.take()
    service.stop()
    assert manager.take() == []
    assert service.log.take() == []


def test_a_notification_that_cannot_be_sent_is_logged_as_a_warning(start, manager):
    service = start(extra=manager.environment())
    manager.close()
    service.log.take()
    service.stop()
    assert service.log.take() == ["Cannot tell the service manager: Connection refused"]
    assert service.log.lines()[-1].level == "warning"


def test_the_settings_manager_sends_notifications(
    bin_dir, bus, client, settings_dir, tmp_path, manager
):
    with start_settings_manager(
        bin_dir,
        bus.address,
        settings_dir,
        tmp_path / "settingsmanager.log",
        extra=manager.environment(ALWAYS_DUE_US),
    ) as module:
        manager.wait_for(2)
        assert {notification.what for notification in manager.take()} == {READY, ALIVE}
        assert client.process_of(bus_name(SETTINGS_MANAGER)) == module.pid
        module.stop()
    assert STOPPING in manager.words()


# The end


def test_stop_sends_a_notification(service, client, manager):
    assert client.lifecycle("stop").values == (True,)
    assert service.wait_for_exit() == 0
    assert manager.words() == [STOPPING]


def test_a_lost_bus_ends_the_process_with_status_1_and_a_notification(service, bus, manager):
    bus.stop()
    assert service.wait_for_exit() == 1
    assert service.log.texts("error") == ["The connection to the system bus is lost; ending"]
    assert manager.words() == [STOPPING]


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=lambda number: number.name)
def test_a_termination_signal_sends_a_notification(service, manager, number):
    service.stop(number)
    (notification,) = manager.take()
    assert (notification.what, notification.status) == (STOPPING, "Ending")


def test_sigterm_during_a_call_sends_one_notification_before_the_reply(
    service, client, manager, settings
):
    settings.hang()
    restore = client.send("restoreDefault", interface=LIFECYCLE)
    settings.wait_for_calls(READS_OF_DEFAULTS + 1)
    service.send_signal(signal.SIGTERM)
    settings.release()
    settings.hang()
    settings.wait_for_calls(READS_OF_DEFAULTS + 2)
    assert manager.words() == [STOPPING]
    service.send_signal(signal.SIGTERM)
    settings.release()
    restore.wait()
    assert service.wait_for_exit() == 0
    assert manager.words() == []


# The watchdog


def test_a_process_does_not_feed_the_watchdog_of_another_process(start, client, manager):
    service = start(extra={**manager.environment(1000), "WATCHDOG_PID": "1"})
    for _ in range(20):
        client.add_action(CALL)
    service.stop()
    assert manager.words() == [READY, STOPPING]


def test_the_event_loop_feeds_the_watchdog(start, manager):
    start(extra=manager.environment(ALWAYS_DUE_US))
    manager.wait_for(6)
    words = manager.words()
    words.remove(READY)
    assert set(words) == {ALIVE}


def test_each_remote_call_feeds_a_watchdog_that_is_due(start, client, manager, settings):
    start(extra=manager.environment(ALWAYS_DUE_US))
    settings.hang()
    restore = client.send("restoreDefault", interface=LIFECYCLE)
    settings.wait_for_calls(READS_OF_DEFAULTS + 1)
    manager.take()
    settings.release()
    settings.hang()
    settings.wait_for_calls(READS_OF_DEFAULTS + 2)
    assert manager.words() == [ALIVE]
    settings.release()
    restore.wait()


def test_a_remote_call_does_not_feed_a_watchdog_that_is_not_due(start, client, manager):
    start(extra=manager.environment(HOUR_US))
    manager.wait_for(1)
    assert manager.words() == [READY]
    client.restore_default()
    assert manager.words() == []
