"""Creating, reading, modifying, moving and deleting keys."""

import pytest

from database import refusing
from samples import (
    DATABASE_FULL,
    MODULE_KEY,
    SET_KEY,
    failed_statement,
    icon_set,
    key_created,
    key_deleted,
    key_modified,
    sent,
)
from sandbox.records import Key


@pytest.fixture
def set_key(service, client, events, action) -> Key:
    """A stored key of the set; what its making sent and logged has been taken."""
    return stored(service, client, events, SET_KEY._replace(idAction=action.idAction))


@pytest.fixture
def module_key(service, client, events, action) -> Key:
    """A stored key of an add-on module; what its making sent and logged has been taken."""
    return stored(service, client, events, MODULE_KEY._replace(idAction=action.idAction))


def stored(service, client, events, key):
    key = key._replace(idKey=client.create_programmable_key(key))
    events.take()
    service.log.take()
    return key


# Creating


def test_a_created_key_gets_the_next_id_and_is_announced_whole(
    service, client, events, database, action
):
    key = SET_KEY._replace(idAction=action.idAction, idKey=1)
    assert client.create_programmable_key(key._replace(idKey=77)) == 1
    assert database.keys() == [key]
    assert events.take() == [key_created(key)]
    assert service.log.take() == [*sent("KEY_CREATE_NTF")]


def test_the_id_that_a_new_key_comes_with_is_not_looked_at(client, events, set_key, database):
    key = set_key._replace(container="other")
    new_key = key._replace(idKey=client.create_programmable_key(key))
    assert new_key.idKey == set_key.idKey + 1
    assert database.keys() == [set_key, new_key]
    assert events.take() == [key_created(new_key)]


def test_a_key_whose_action_does_not_exist_is_refused_and_nothing_is_inserted(
    service, client, events, database
):
    service.log.take()
    assert client.create_programmable_key(SET_KEY._replace(idAction=7)) == -2
    assert service.log.take() == ["Action of id 7 does not exist"]
    assert service.log.lines()[-1].level == "error"
    assert database.keys() == []
    assert events.take() == []


def test_a_key_without_an_action_does_not_even_ask_for_the_limit(service, client, settings):
    settings.calls.clear()
    assert client.create_programmable_key(SET_KEY._replace(idAction=7)) == -2
    assert settings.calls == []


def test_a_key_may_trigger_the_reserved_action(service, client):
    assert client.create_programmable_key(SET_KEY._replace(idAction=-1)) == 1


def test_a_module_key_is_announced_and_then_its_icon_is_set_to_0_0(client, events, action):
    key = MODULE_KEY._replace(idAction=action.idAction, idKey=1)
    assert client.create_programmable_key(key) == 1
    assert events.take() == [key_created(key), icon_set(key, 0, 0)]


@pytest.mark.parametrize("type_of_key", [0, 2, -1], ids=lambda number: f"type {number}")
def test_a_key_of_another_type_sets_no_icon_even_on_a_module(client, events, action, type_of_key):
    key = MODULE_KEY._replace(idAction=action.idAction, idKey=1, type=type_of_key)
    assert client.create_programmable_key(key) == 1
    assert events.take() == [key_created(key)]


def test_the_type_and_not_the_module_type_makes_a_new_key_a_module_key(client, events, action):
    key = MODULE_KEY._replace(idAction=action.idAction, idKey=1, aom_type=2)
    client.create_programmable_key(key)
    assert events.take() == [key_created(key), icon_set(key)]


def test_a_key_with_a_dm_id_is_created_like_any_other(client, events, database, action):
    key = SET_KEY._replace(idAction=action.idAction, idKey=1, dmId="dm-1")
    assert client.create_programmable_key(key) == 1
    assert database.keys() == [key]
    assert events.take() == [key_created(key)]


def test_two_keys_may_have_the_same_place(client, set_key):
    assert client.create_programmable_key(set_key) == set_key.idKey + 1


# The limit


def test_the_fourth_key_is_refused_at_a_limit_of_3_while_a_module_key_is_still_created(
    service, client, events, database, settings, action
):
    settings.values["ProgKeysMax"] = "3"
    key = SET_KEY._replace(idAction=action.idAction)
    assert [client.create_programmable_key(key) for _ in range(3)] == [1, 2, 3]
    events.take()
    service.log.take()
    assert client.create_programmable_key(key) == -1
    assert events.take() == [DATABASE_FULL]
    assert service.log.take() == sent("KO_PROGKEYS_DB_FULL")
    assert len(database.keys()) == 3
    assert client.create_programmable_key(MODULE_KEY._replace(idAction=action.idAction)) == 4


def test_only_keys_of_type_0_count_against_the_limit(client, settings, action):
    settings.values["ProgKeysMax"] = "1"
    for type_of_key in (1, 2, 3):
        key = MODULE_KEY._replace(idAction=action.idAction, type=type_of_key)
        assert client.create_programmable_key(key) == type_of_key
    assert client.create_programmable_key(SET_KEY._replace(idAction=action.idAction)) == 4
    assert client.create_programmable_key(SET_KEY._replace(idAction=action.idAction)) == -1


def test_a_deleted_key_makes_room_for_another(client, settings, set_key):
    settings.values["ProgKeysMax"] = "1"
    assert client.create_programmable_key(set_key) == -1
    assert client.delete_programmable_key(set_key.idKey) == 0
    assert client.create_programmable_key(set_key) == set_key.idKey + 1


@pytest.mark.parametrize("type_of_key", [0, 1, 2], ids=lambda number: f"type {number}")
def test_the_limit_is_read_afresh_for_a_key_of_every_type(client, settings, action, type_of_key):
    key = MODULE_KEY._replace(idAction=action.idAction, type=type_of_key)
    for _ in range(2):
        settings.calls.clear()
        client.create_programmable_key(key)
        assert settings.names_read() == ["ProgKeysMax"]


# Modifying


def test_a_modified_key_is_stored_and_announced_whole(service, client, events, database, set_key):
    changed = set_key._replace(container="other", position=9, icon="star", dmId="dm", aom_addr=4)
    assert client.modify_programmable_key(changed) == 0
    assert database.keys() == [changed]
    assert events.take() == [key_modified(changed)]
    assert service.log.take() == sent("KEY_MODIFY_NTF")


def test_a_key_cannot_be_bound_to_an_action_that_does_not_exist(
    service, client, events, database, set_key
):
    assert client.modify_programmable_key(set_key._replace(idAction=2**40, icon="star")) == -2
    assert service.log.take() == [f"Action of id {2**40} does not exist"]
    assert database.keys() == [set_key]
    assert events.take() == []


@pytest.mark.parametrize("sample", [SET_KEY, MODULE_KEY], ids=["of the set", "of a module"])
def test_modifying_an_unknown_key_gives_minus_2_and_sends_nothing(
    service, client, events, database, action, sample
):
    assert (
        client.modify_programmable_key(sample._replace(idKey=99, idAction=action.idAction)) == -2
    )
    assert service.log.take() == []
    assert database.keys() == []
    assert events.take() == []


def test_a_module_key_with_another_icon_is_announced_and_its_icon_set(client, events, module_key):
    changed = module_key._replace(icon="star", position=8, aom_type=3, aom_addr=4)
    assert client.modify_programmable_key(changed) == 0
    assert events.take() == [key_modified(changed), icon_set(changed, 0, 0)]


def test_a_module_key_with_the_same_icon_is_only_announced(client, events, module_key):
    changed = module_key._replace(container="other", position=8, aom_type=3, aom_addr=4, dmId="dm")
    assert client.modify_programmable_key(changed) == 0
    assert events.take() == [key_modified(changed)]


def test_an_icon_that_differs_only_in_case_is_another_icon(client, events, module_key):
    changed = module_key._replace(icon=module_key.icon.upper())
    assert client.modify_programmable_key(changed) == 0
    assert events.take() == [key_modified(changed), icon_set(changed)]


def test_a_key_of_the_set_with_another_icon_is_only_announced(client, events, set_key):
    changed = set_key._replace(icon="star")
    assert client.modify_programmable_key(changed) == 0
    assert events.take() == [key_modified(changed)]


def test_the_new_type_of_a_key_decides_whether_its_icon_is_set(client, events, set_key):
    on_module = set_key._replace(type=1, icon="star")
    off_module = on_module._replace(type=0, icon="moon")
    client.modify_programmable_key(on_module)
    client.modify_programmable_key(off_module)
    assert events.take() == [
        key_modified(on_module),
        icon_set(on_module),
        key_modified(off_module),
    ]


def test_modifying_a_key_does_not_ask_for_the_limit(client, settings, set_key, module_key):
    settings.values["ProgKeysMax"] = "1"
    settings.calls.clear()
    assert client.modify_programmable_key(module_key._replace(type=0)) == 0
    assert settings.calls == []


# Deleting


def test_a_deleted_key_is_gone_and_announced_by_its_id(service, client, events, database, set_key):
    assert client.delete_programmable_key(set_key.idKey) == 0
    assert database.keys() == []
    assert events.take() == [key_deleted(set_key.idKey)]
    assert service.log.take() == [
        f"deleteProgrammableKey : idKey={set_key.idKey}",
        "deleteProgrammableKey : listKey.size=1",
        "deleteProgrammableKey : get key from the list",
        f"deleteProgrammableKey : id={set_key.idKey}",
        f"isProgrammableKeyRemovable : id={set_key.idKey}",
        "isProgrammableKeyRemovable : idDM=",
        "isProgrammableKeyRemovable : value=1",
        "deleteProgrammableKey : delete key from database",
        "event KEY_DELETE_NTF sent",
    ]


def test_a_provisioned_key_cannot_be_deleted(service, client, events, database, set_key):
    provisioned = set_key._replace(dmId="dm-9")
    client.modify_programmable_key(provisioned)
    events.take()
    service.log.take()
    assert client.delete_programmable_key(set_key.idKey) == -2
    assert database.keys() == [provisioned]
    assert events.take() == []
    assert service.log.take() == [
        f"deleteProgrammableKey : idKey={set_key.idKey}",
        "deleteProgrammableKey : listKey.size=1",
        "deleteProgrammableKey : get key from the list",
        f"deleteProgrammableKey : id={set_key.idKey}",
        f"isProgrammableKeyRemovable : id={set_key.idKey}",
        "isProgrammableKeyRemovable : idDM=dm-9",
        "isProgrammableKeyRemovable : value=0",
    ]


def test_deleting_an_unknown_key_gives_minus_2(service, client, events, database, set_key):
    assert client.delete_programmable_key(99) == -2
    assert database.keys() == [set_key]
    assert events.take() == []
    assert service.log.take() == [
        "deleteProgrammableKey : idKey=99",
        "deleteProgrammableKey : listKey.size=0",
    ]


# Moving and reading


def test_keys_are_moved_without_an_event_or_a_log_line(
    service, client, events, database, set_key, module_key
):
    assert (
        client.change_programmable_keys_position({set_key.idKey: 12, module_key.idKey: -3}) is True
    )
    assert database.keys() == [set_key._replace(position=12), module_key._replace(position=-3)]
    assert events.take() == []
    assert service.log.take() == []


def test_moving_no_key_is_true_and_does_not_touch_the_database(service, client, database, set_key):
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    assert client.change_programmable_keys_position({}) is True
    assert service.log.take() == []


def test_moving_an_unknown_key_is_no_failure(client, database, set_key):
    assert client.change_programmable_keys_position({99: 1, set_key.idKey: 2, -5: 3}) is True
    assert database.keys() == [set_key._replace(position=2)]


class RepeatedId(int):
    """An id that a dictionary takes as often as it comes."""

    __hash__ = object.__hash__

    def __eq__(self, other: object) -> bool:
        return self is other


def test_the_last_position_of_an_id_that_comes_more_than_once_counts(client, database, set_key):
    positions = {RepeatedId(set_key.idKey): position for position in (11, 22, 33)}
    database.execute(
        "CREATE TABLE moves (position)",
        "CREATE TRIGGER moved AFTER UPDATE ON KEY"
        " BEGIN INSERT INTO moves VALUES (NEW.position); END",
    )
    assert client.change_programmable_keys_position(positions) is True
    assert database.rows("SELECT position FROM moves") == [(33,)]
    assert client.get_programmable_key(set_key.idKey) == [set_key._replace(position=33)]


def test_keys_are_moved_in_ascending_order_of_their_ids(client, database, action):
    ids = [
        client.create_programmable_key(SET_KEY._replace(idAction=action.idAction))
        for _ in range(11)
    ]
    database.execute(
        "CREATE TABLE TRACE (number INTEGER PRIMARY KEY, idKey, position)",
        "CREATE TRIGGER trace AFTER UPDATE OF position ON KEY BEGIN"
        " INSERT INTO TRACE (idKey, position) VALUES (NEW.idKey, NEW.position); END",
    )
    assert (
        client.change_programmable_keys_position(
            {id_key: 100 - id_key for id_key in reversed(ids)}
        )
        is True
    )
    trace = database.rows("SELECT idKey, position FROM TRACE ORDER BY number")
    assert trace == [(id_key, 100 - id_key) for id_key in ids]


def test_moving_stops_at_the_first_failure_and_keeps_what_was_done(
    service, client, events, database, action
):
    ids = [
        client.create_programmable_key(SET_KEY._replace(idAction=action.idAction))
        for _ in range(4)
    ]
    events.take()
    service.log.take()
    fault = refusing("UPDATE", "KEY", "NEW.idKey IN (2, 3)")
    database.execute(fault.trigger)
    assert client.change_programmable_keys_position({id_key: 50 for id_key in ids}) is False
    assert [key.position for key in database.keys()] == [50, 4, 4, 4]
    (line,) = service.log.take()
    assert failed_statement(line, "UPDATE KEY SET position=? WHERE idKey=?", fault.message)
    assert events.take() == []


@pytest.mark.parametrize("container", ["Main", "main ", "mai_", "%", "", "mаin"], ids=ascii)
def test_a_container_is_found_by_its_exact_name_only(client, set_key, container):
    assert client.get_programmable_keys_by_container(container) == []
    assert client.get_programmable_keys_by_container("main") == [set_key]


def test_reading_keys_sends_and_logs_nothing(service, client, events, set_key):
    client.get_all_programmable_keys()
    client.get_programmable_key(set_key.idKey)
    client.get_programmable_key(99)
    client.get_programmable_keys_by_container("main")
    assert events.take() == []
    assert service.log.take() == []
