"""The end of the process while calls wait or peers do not reply."""

import os
import signal
import subprocess

import pytest

from database import RESERVED_ACTION
from samples import CALL, SET_KEY
from sandbox.client import BusError
from sandbox.loop import wait_until
from sandbox.names import LIFECYCLE, SERVICE, bus_name
from sandbox.orphans import die_with_parent
from sandbox.processes import clean_environment
from sandbox.records import KEY

HOME_KEY = SET_KEY._replace(idAction=RESERVED_ACTION.idAction)


@pytest.fixture
def busy(service, client, settings):
    """The creation of a key, blocked while it reads the limit until `settings.release()`."""
    calls = len(settings.calls)
    settings.hang()
    creation = client.send("createProgrammableKey", KEY, HOME_KEY)
    settings.wait_for_calls(calls + 1)
    return creation


def assert_refused(reply):
    with pytest.raises(BusError) as refusal:
        reply.wait()
    assert refusal.value.name == "com.velmora.Tessaro.Error.InvocationFailed"
    assert refusal.value.message == "The module is ending"


def test_sigterm_lets_the_current_call_finish_and_refuses_waiting_calls(
    service, client, settings, busy, database
):
    waiting = [client.send("createProgrammableKey", KEY, HOME_KEY) for _ in range(3)]
    client.bus_round_trip()
    service.send_signal(signal.SIGTERM)
    settings.release()
    assert busy.wait().values == (1,)
    for reply in waiting:
        assert_refused(reply)
    assert service.wait_for_exit() == 0
    assert len(database.keys()) == 1


def test_stop_returns_and_later_calls_are_refused(service, client, settings, busy, database):
    stop = client.send("stop", interface=LIFECYCLE)
    later = client.send("createProgrammableKey", KEY, HOME_KEY)
    client.bus_round_trip()
    settings.release()
    assert busy.wait().values == (1,)
    assert stop.wait().values == (True,)
    assert_refused(later)
    assert service.wait_for_exit() == 0
    assert len(database.keys()) == 1


def test_sigterm_during_the_start_ends_it_before_the_name_is_claimed(launch, client, settings):
    settings.hang()
    process = launch()
    settings.wait_for_calls(1)
    owner = client.watch_owner(bus_name(SERVICE))
    process.send_signal(signal.SIGTERM)
    settings.release()
    settings.answer_from_values()
    assert process.wait_for_exit() == 0
    assert owner.current == ""


def test_repeated_signals_end_the_service_cleanly(service, client, action, data_root):
    while service.running:
        service.send_signal(signal.SIGTERM)
        service.send_signal(signal.SIGINT)
    assert service.wait_for_exit() == 0
    assert [path.name for path in (data_root / SERVICE).iterdir()] == ["zelprogrammablekeys.data"]


def test_a_start_that_waits_for_a_peer_ends_with_status_1_if_the_bus_is_lost(
    launch, bus, settings
):
    settings.hang()
    process = launch()
    settings.wait_for_calls(1)
    bus.stop()
    assert process.wait_for_exit() == 1
    assert process.log.texts("error")


def test_a_closed_log_pipe_does_not_end_the_service(bin_dir, bus, client, data_root, settings):
    environment = {
        **clean_environment(),
        "DBUS_SYSTEM_BUS_ADDRESS": bus.address,
        "ZEL_DATA_ROOT": str(data_root),
        "ZEL_LOG_LEVEL": "7",
    }
    reader, writer = os.pipe()
    child = subprocess.Popen(
        [bin_dir / "zelprogrammablekeys"], env=environment, stderr=writer, preexec_fn=die_with_parent
    )
    try:
        os.close(writer)
        owner = client.watch_owner(bus_name(SERVICE))
        wait_until(lambda: owner.current, "the service claims its name")
        os.close(reader)
        assert client.delete_action(-1) == -2
        assert client.add_action(CALL) == 1
        child.send_signal(signal.SIGTERM)
        wait_until(lambda: child.poll() is not None, "the service ends")
        assert child.returncode == 0
    finally:
        child.kill()
        child.wait()
