"""The start, resets, lifecycle calls and the end."""

import signal

import pytest

from database import RESERVED_ACTION
from samples import CALL, DATABASE_RESET, SET_KEY, sent
from sandbox.loop import wait_until
from sandbox.names import LIFECYCLE, PLATFORM, SERVICE, bus_name

PEER = "org.freedesktop.DBus.Peer"

CHECKING = "ZelProgrammableKeys checking..."
DEPLOYING = "ZelProgrammableKeys deploying..."
INITIALIZING = "ZelProgrammableKeys initialization..."
STARTING = "ZelProgrammableKeys starting..."
RESTORING_DEFAULT = "ZelProgrammableKeys restoring data to default ..."
RESTORING_FACTORY = "ZelProgrammableKeys restoring data to factory ..."
HOOKS = [CHECKING, DEPLOYING, INITIALIZING, STARTING, RESTORING_DEFAULT, RESTORING_FACTORY]


def hooks_in(texts):
    return [text for text in texts if text in HOOKS]


def contents(database):
    return database.actions(), database.keys()


def test_the_module_is_named_zelprogrammablekeys(service, client, data_root):
    names = [str(name) for name in client.connection.list_names() if name.startswith(PLATFORM)]
    assert [name for name in names if client.process_of(name) == service.pid] == [
        bus_name(SERVICE)
    ]
    assert [path.name for path in data_root.iterdir()] == ["ZelProgrammableKeys"]
    assert {(line.name, line.pid) for line in service.log.lines()} == {
        ("ZelProgrammableKeys", service.pid)
    }


def test_the_first_start_checks_deploys_initializes_and_starts_in_this_order(start, database):
    log = start().log
    expected = [
        CHECKING,
        f"Connecting to database at {database.path}...",
        "Table Key is not correct. Check fails",
        DEPLOYING,
        INITIALIZING,
        STARTING,
    ]
    assert [text for text in log.texts() if text in expected] == expected
    assert log.texts("error") == []


def test_a_later_start_does_not_deploy_and_keeps_the_data(start, client, database, data_root):
    first = start()
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    before = contents(database)
    first.stop()
    again = start()
    assert hooks_in(again.log.texts()) == [CHECKING, INITIALIZING, STARTING]
    assert contents(database) == before
    assert client.get_all_programmable_keys() == before[1]
    assert [path.name for path in data_root.iterdir()] == [SERVICE]


def test_calls_succeed_as_soon_as_the_name_has_an_owner(launch, client, settings):
    calls = []

    def call(*_change):
        calls.append(client.send("getAllActions"))
        calls.append(client.send("Ping", interface=PEER, path="/org/freedesktop/LogControl1"))

    client.connection.add_signal_receiver(
        call,
        "NameOwnerChanged",
        "org.freedesktop.DBus",
        arg0=bus_name(SERVICE),
    )
    launch()
    wait_until(lambda: calls, "the name is claimed")
    assert [call.wait().values for call in calls] == [([RESERVED_ACTION],), ()]


# Resets


def test_restore_default_sends_its_event_resets_the_tables_and_returns_false(
    service, client, events, database
):
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    events.take()
    service.log.take()
    assert client.restore_default() is False
    assert events.take() == [DATABASE_RESET]
    assert contents(database) == ([RESERVED_ACTION], [])
    lines = service.log.take()
    assert hooks_in(lines) == [RESTORING_DEFAULT]
    assert lines[:2] == [RESTORING_DEFAULT, *sent("DB_RESET_NTF")]
    assert client.restore_default() is False
    assert events.take() == [DATABASE_RESET]
    assert client.add_action(CALL) == 1


def test_restore_factory_logs_a_line_and_then_does_the_same_as_restore_default(
    service, client, events, database
):
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    events.take()
    service.log.take()
    assert client.restore_default() is False
    as_default = (service.log.take(), events.take(), contents(database))
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    events.take()
    service.log.take()
    assert client.restore_factory() is False
    first_line, *lines = service.log.take()
    assert first_line == RESTORING_FACTORY
    assert (lines, events.take(), contents(database)) == as_default


def test_the_event_of_a_reset_is_sent_before_the_tables_are_emptied(
    service, client, events, database
):
    id_action = client.add_action(CALL)
    id_key = client.create_programmable_key(SET_KEY._replace(idAction=id_action))
    events.take()
    with database.locked() as other:
        reply = client.send("restoreDefault", interface=LIFECYCLE)
        events.wait_for("DB_RESET_NTF")
        assert other.execute("SELECT idKey FROM KEY").fetchall() == [(id_key,)]
        assert not reply.arrived
    assert reply.wait().values == (False,)
    assert contents(database) == ([RESERVED_ACTION], [])


# Hooks that change nothing


@pytest.mark.parametrize(
    "hook, answer",
    [
        ("presentationLoaded", ()),
        ("presentationStop", ()),
        ("preSaveForSaveRestore", (True,)),
        ("postRestoreForSaveRestore", (True,)),
        ("stop", (True,)),
    ],
)
def test_a_lifecycle_call_returns_and_changes_nothing(
    service, client, events, database, hook, answer
):
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    before = contents(database)
    events.take()
    assert client.lifecycle(hook).values == answer
    if hook == "stop":
        assert service.wait_for_exit() == 0
    assert events.take_received() == []
    assert contents(database) == before


# The end


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=lambda number: number.name)
def test_a_signal_ends_the_process_with_status_0_and_leaves_one_database_file(
    service, client, database, number
):
    client.add_action(CALL)
    service.stop(number, status=0)
    assert [path.name for path in database.path.parent.iterdir()] == ["zelprogrammablekeys.data"]
    assert service.log.texts("error") == []
