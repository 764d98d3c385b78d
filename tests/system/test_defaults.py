"""The merge of the provisioned defaults at each start and restore."""

import signal
from typing import Union

import pytest

import golden
from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION, Database, failing
from samples import (
    CALL,
    DATABASE_RESET,
    SET_KEY,
    action_created,
    action_modified,
    failed_statement,
    icon_set,
    key_created,
    sent,
)
from sandbox.client import BusError
from sandbox.log import LogLine
from sandbox.names import SERVICE, bus_name
from sandbox.records import Action, Key

STARTING = "ZelProgrammableKeys starting..."
RESTORING_DEFAULT = "ZelProgrammableKeys restoring data to default ..."
RESTORING_FACTORY = "ZelProgrammableKeys restoring data to factory ..."

D1 = Action(-1, "D1", 3, "call", "", "501", "Reception", "Rec")
D2 = Action(-1, "D2", 5, "open", "portal", "a,b", "Desk#1", "D")
D1_TEXT = "D1,3,call,,501,Reception,Rec"
D2_TEXT = "D2,5,open,portal,a\\,b,Desk\\#1,D"
D1_KEY = Key(-1, "D1", -1, "main", 0, "ic1", 0, 0, 0)
D2_KEY = Key(-1, "D2", -1, "module", 1, "ic2", 1, 1, 2)
D1_KEY_TEXT = "D1,main,0,ic1,0,0,0"
D2_KEY_TEXT = "D2,module,1,ic2,1,1,2"
BOTH = {"DefaultActions": f"{D1_TEXT}#{D2_TEXT}", "DefaultKeys": f"{D1_KEY_TEXT}#{D2_KEY_TEXT}"}


def after(lines: list[LogLine], text: str) -> list[LogLine]:
    """The lines after the only line with that text."""
    texts = [line.text for line in lines]
    assert texts.count(text) == 1
    return lines[texts.index(text) + 1 :]


def store(database: Database, *records: Union[Key, Action]) -> None:
    """Creates a database with these records, as an earlier run of the service leaves it."""
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    database.insert(*records)


@pytest.fixture
def provisioned(settings):
    """The settings provision two actions, each with a key."""
    settings.values.update(BOTH)
    return settings


# Test cases in files


@pytest.mark.parametrize("case", golden.cases(), ids=str)
def test_a_start_merges_the_settings_into_the_tables(case, settings, start, events, database):
    store(database, *case.before.actions, *case.before.keys)
    settings.values = case.settings
    service = start()
    lines = after(service.log.lines(), STARTING)
    case.check(lines, events.take(), golden.Contents(database.actions(), database.keys()))


# Time and order of the merge


def test_a_start_reads_the_actions_the_keys_and_then_the_limit_for_each_key(provisioned, start):
    start()
    assert provisioned.names_read() == ["DefaultActions", "DefaultKeys", *["ProgKeysMax"] * 2]


def test_the_service_claims_its_name_after_the_merge(provisioned, launch, client):
    provisioned.hang()
    service = launch()
    provisioned.wait_for_calls(1)
    assert not client.connection.name_has_owner(bus_name(SERVICE))
    with pytest.raises(BusError):
        client.get_all_actions()
    provisioned.release()
    service.wait_until_ready(client)
    assert [action.dmId for action in client.get_all_actions()] == ["", "D1", "D2"]
    service.stop()


def test_a_second_start_keeps_the_action_ids_and_creates_the_keys_again(
    provisioned, start, database
):
    start().stop()
    first = golden.Contents(database.actions(), database.keys())
    start().stop(signal.SIGINT)
    assert database.actions() == first.actions
    assert database.keys() == [key._replace(idKey=key.idKey + 2) for key in first.keys]


@pytest.mark.parametrize("hook", ["restore_default", "restore_factory"])
def test_a_restore_sends_its_event_and_merges_into_empty_tables(
    provisioned, start, client, events, database, hook
):
    service = start()
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    events.take()
    service.log.take()
    provisioned.calls.clear()
    assert getattr(client, hook)() is False
    d1, d2 = D1._replace(idAction=1), D2._replace(idAction=2)
    keys = [D1_KEY._replace(idKey=1, idAction=1), D2_KEY._replace(idKey=2, idAction=2)]
    assert database.actions() == [RESERVED_ACTION, d1, d2]
    assert database.keys() == keys
    assert events.take() == [
        DATABASE_RESET,
        action_created(d1),
        action_created(d2),
        key_created(keys[0]),
        key_created(keys[1]),
        icon_set(keys[1]),
    ]
    assert provisioned.names_read()[:2] == ["DefaultActions", "DefaultKeys"]
    lines = service.log.take()
    factory_line = [RESTORING_FACTORY] if hook == "restore_factory" else []
    assert lines == [
        *factory_line,
        RESTORING_DEFAULT,
        *sent("DB_RESET_NTF"),
        "Processing 2 dm actions and 2 dm keys",
        "added action of dmId D1",
        "added action of dmId D2",
        "found 1 db actions",
        *sent("ACTION_CREATE_NTF"),
        "action of id D1 added",
        *sent("ACTION_CREATE_NTF"),
        "action of id D2 added",
        *sent("KEY_CREATE_NTF", "KEY_CREATE_NTF", "AOM_SET_ICON_PROPERTY_REC"),
    ]


def test_a_restore_reads_the_settings_again(provisioned, start, client, database):
    start()
    provisioned.values.update(DefaultActions=D2_TEXT, DefaultKeys=D2_KEY_TEXT)
    client.restore_default()
    assert database.actions() == [RESERVED_ACTION, D2._replace(idAction=1)]
    assert database.keys() == [D2_KEY._replace(idKey=1, idAction=1)]


@pytest.mark.parametrize(
    "level, lines",
    [(3, []), (4, ["Skipping invalid dm action: too,few", "Skipping invalid dm key: "])],
    ids=["nothing at level 3", "the skipped records at level 4"],
)
def test_a_merge_logs_its_warnings_at_level_4(settings, start, level, lines):
    settings.values["DefaultActions"] = f"{D1_TEXT}#too,few"
    assert start(log_level=level).log.texts() == lines


# Settings that cannot be read


@pytest.mark.parametrize(
    "signature, body",
    [("", []), ("i", [5]), ("as", [["D1,3,call,,501,Reception,Rec"]]), ("v", ["text"])],
    ids=["nothing", "a number", "a list", "a variant"],
)
def test_a_setting_of_another_type_is_treated_as_an_empty_one(
    settings, start, database, signature, body
):
    d1 = D1._replace(idAction=4)
    user_key = SET_KEY._replace(idKey=1, idAction=4)
    store(database, RESERVED_ACTION, d1, user_key, D1_KEY._replace(idKey=2, idAction=4))
    settings.answer_with(signature, *body)
    service = start()
    assert database.actions() == [RESERVED_ACTION, d1]
    assert database.keys() == [user_key]
    assert service.log.texts("warning") == [
        "Skipping invalid dm action: ",
        "Skipping invalid dm key: ",
    ]
    assert len(service.log.texts("error")) == 2


def test_provisioned_keys_are_deleted_by_a_start_without_settings_and_created_by_the_next(
    provisioned, start, database
):
    start().stop()
    actions = database.actions()
    provisioned.fail("com.velmora.Tessaro.Error.Busy")
    start().stop()
    assert (database.actions(), database.keys()) == (actions, [])
    provisioned.answer_from_values()
    start().stop()
    assert database.actions() == actions
    assert [key.dmId for key in database.keys()] == ["D1", "D2"]


# Statements that fail


def test_the_merge_continues_after_an_action_that_cannot_be_added(
    provisioned, start, events, database
):
    store(database, RESERVED_ACTION)
    fault = failing("INSERT", "ACTION", "NEW.dmId = 'D1'")
    database.execute(fault.trigger)
    service = start()
    d2 = D2._replace(idAction=1)
    key = D2_KEY._replace(idKey=1, idAction=1)
    assert database.actions() == [RESERVED_ACTION, d2]
    assert database.keys() == [key]
    assert events.take() == [action_created(d2), key_created(key), icon_set(key)]
    (line,) = service.log.texts("error")
    assert line.startswith("Error: INSERT INTO ACTION") and fault.message in line
    added = [text for text in service.log.texts() if text.endswith(" added")]
    assert added == ["action of id D1 added", "action of id D2 added"]


def test_the_merge_continues_after_an_action_that_cannot_be_modified(
    provisioned, start, events, database
):
    d1, d2 = D1._replace(idAction=1, label="old"), D2._replace(idAction=2)
    store(database, RESERVED_ACTION, d1, d2._replace(label="old"))
    database.execute(failing("UPDATE", "ACTION", "NEW.dmId = 'D1'").trigger)
    service = start()
    assert database.actions() == [RESERVED_ACTION, d1, d2]
    assert [key.idAction for key in database.keys()] == [1, 2]
    assert events.take()[0] == action_modified(d2)
    assert service.log.texts("error")[-1] == "ZelProgrammableKeys::modifyAction(1) : fail !"


def test_provisioned_keys_that_cannot_be_deleted_stay_and_new_ones_are_added(
    provisioned, start, database
):
    d1, old_key = D1._replace(idAction=1), D1_KEY._replace(idKey=5, idAction=1)
    store(database, RESERVED_ACTION, d1, old_key)
    fault = failing("DELETE", "KEY")
    database.execute(fault.trigger)
    service = start()
    assert [key.dmId for key in database.keys()] == ["D1", "D1", "D2"]
    assert database.keys()[0] == old_key
    (line,) = service.log.texts("error")
    assert failed_statement(line, "DELETE FROM KEY WHERE DMID<>''", fault.message)


def test_the_merge_continues_after_a_key_that_cannot_be_created(
    provisioned, start, database
):
    store(database, RESERVED_ACTION)
    database.execute(failing("INSERT", "KEY", "NEW.dmId = 'D1'").trigger)
    start()
    assert [key.dmId for key in database.keys()] == ["D2"]
