"""Creating, reading, modifying, moving and deleting keys."""

import pytest

from database import failing
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
    """A stored key on the set. Its events and log lines are taken."""
    return stored(service, client, events, SET_KEY._replace(idAction=action.idAction))


@pytest.fixture
def module_key(service, client, events, action) -> Key:
    """A stored key on an add-on module. Its events and log lines are taken."""
    return stored(service, client, events, MODULE_KEY._replace(idAction=action.idAction))


def stored(service, client, events, key):
    key = key._replace(idKey=client.create_programmable_key(key))
    events.take()
    service.log.take()
    return key


# Creating


def test_a_created_key_gets_the_next_id_and_an_event_has_all_its_fields(
    service, client, events, database, action
):
    first, second = (SET_KEY._replace(idAction=action.idAction, idKey=id_key) for id_key in (1, 2))
    assert client.create_programmable_key(first._replace(idKey=77)) == 1
    assert client.create_programmable_key(first) == 2
    assert database.keys() == [first, second]
    assert events.take() == [key_created(first), key_created(second)]
    assert service.log.take() == sent("KEY_CREATE_NTF", "KEY_CREATE_NTF")


def test_a_key_with_an_unknown_action_is_rejected_before_the_limit_is_read(
    service, client, events, database, settings
):
    service.log.take()
    settings.calls.clear()
    assert client.create_programmable_key(SET_KEY._replace(idAction=7)) == -2
    assert service.log.take() == ["Action of id 7 does not exist"]
    assert service.log.lines()[-1].level == "error"
    assert database.keys() == []
    assert events.take() == []
    assert settings.calls == []


def test_a_key_can_have_the_reserved_action(service, client):
    assert client.create_programmable_key(SET_KEY._replace(idAction=-1)) == 1


def test_the_icon_of_a_new_module_key_is_set_to_0_0_after_its_event(client, events, action):
    key = MODULE_KEY._replace(idAction=action.idAction, idKey=1)
    assert client.create_programmable_key(key) == 1
    assert events.take() == [key_created(key), icon_set(key, 0, 0)]


def test_a_new_key_is_a_module_key_if_its_type_is_1(client, events, action):
    key = MODULE_KEY._replace(idAction=action.idAction)
    keys = [
        key._replace(idKey=1 + number, type=type_of_key, aom_type=aom_type)
        for number, (type_of_key, aom_type) in enumerate([(0, 1), (2, 1), (-1, 1), (1, 2)])
    ]
    for each in keys:
        assert client.create_programmable_key(each) == each.idKey
    assert events.take() == [*map(key_created, keys), icon_set(keys[-1])]


# The limit


def test_at_a_limit_of_3_a_fourth_key_on_the_set_is_rejected_and_a_module_key_is_created(
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


def test_deleting_a_key_makes_room_for_another_key(client, settings, set_key):
    settings.values["ProgKeysMax"] = "1"
    assert client.create_programmable_key(set_key) == -1
    assert client.delete_programmable_key(set_key.idKey) == 0
    assert client.create_programmable_key(set_key) == set_key.idKey + 1


def test_the_limit_is_read_once_for_each_new_key_whatever_its_type(client, settings, action):
    settings.calls.clear()
    for number, type_of_key in enumerate((0, 1, 2, -1, 0), 1):
        key = MODULE_KEY._replace(idAction=action.idAction, type=type_of_key)
        assert client.create_programmable_key(key) == number
        assert settings.names_read() == ["ProgKeysMax"] * number


# Modifying


def test_a_modified_key_is_stored_and_an_event_has_all_its_fields(
    service, client, events, database, set_key
):
    changed = set_key._replace(container="other", position=9, icon="star", dmId="dm", aom_addr=4)
    assert client.modify_programmable_key(changed) == 0
    assert database.keys() == [changed]
    assert events.take() == [key_modified(changed)]
    assert service.log.take() == sent("KEY_MODIFY_NTF")


def test_modifying_a_key_to_an_unknown_action_is_rejected(
    service, client, events, database, set_key
):
    assert client.modify_programmable_key(set_key._replace(idAction=2**40, icon="star")) == -2
    assert service.log.take() == [f"Action of id {2**40} does not exist"]
    assert database.keys() == [set_key]
    assert events.take() == []


def test_modifying_an_unknown_key_returns_minus_2(service, client, events, database, action):
    unknown = MODULE_KEY._replace(idKey=99, idAction=action.idAction)
    assert client.modify_programmable_key(unknown) == -2
    assert service.log.take() == []
    assert database.keys() == []
    assert events.take() == []


def test_modifying_a_module_key_sends_its_icon_only_if_it_changed(client, events, module_key):
    moved = module_key._replace(container="other", position=8, aom_type=3, aom_addr=4, dmId="dm")
    other_case = moved._replace(icon=moved.icon.upper())
    no_icon = other_case._replace(icon="", position=9)
    for key in (moved, other_case, no_icon):
        assert client.modify_programmable_key(key) == 0
    assert events.take() == [
        key_modified(moved),
        *(key_modified(other_case), icon_set(other_case, 0, 0)),
        *(key_modified(no_icon), icon_set(no_icon, 0, 0)),
    ]


def test_a_changed_icon_is_sent_if_the_new_type_of_the_key_is_1(client, events, set_key):
    still_on_set = set_key._replace(icon="sun")
    on_module = set_key._replace(type=1, icon="star")
    off_module = on_module._replace(type=0, icon="moon")
    for key in (still_on_set, on_module, off_module):
        assert client.modify_programmable_key(key) == 0
    assert events.take() == [
        key_modified(still_on_set),
        *(key_modified(on_module), icon_set(on_module)),
        key_modified(off_module),
    ]


def test_modifying_a_key_does_not_read_the_limit(client, settings, set_key, module_key):
    settings.values["ProgKeysMax"] = "1"
    settings.calls.clear()
    assert client.modify_programmable_key(module_key._replace(type=0)) == 0
    assert settings.calls == []


# Deleting


def test_a_key_is_deleted_and_an_event_has_its_id(service, client, events, database, set_key):
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


def test_deleting_an_unknown_key_returns_minus_2(service, client, events, database, set_key):
    assert client.delete_programmable_key(99) == -2
    assert database.keys() == [set_key]
    assert events.take() == []
    assert service.log.take() == [
        "deleteProgrammableKey : idKey=99",
        "deleteProgrammableKey : listKey.size=0",
    ]


# Moving and reading


def test_moving_keys_skips_unknown_ids_and_sends_and_logs_nothing(
    service, client, events, database, set_key, module_key
):
    moves = {set_key.idKey: 12, module_key.idKey: -3, 99: 1, -5: 3}
    assert client.change_programmable_keys_position(moves) is True
    assert database.keys() == [set_key._replace(position=12), module_key._replace(position=-3)]
    assert events.take() == []
    assert service.log.take() == []


def test_moving_no_key_returns_true_and_does_not_use_the_database(
    service, client, database, set_key
):
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    assert client.change_programmable_keys_position({}) is True
    assert service.log.take() == []


class RepeatedId(int):
    """A dictionary key that does not replace an equal key."""

    __hash__ = object.__hash__

    def __eq__(self, other: object) -> bool:
        return self is other


def test_keys_are_moved_once_to_their_last_position_in_the_order_of_their_ids(
    client, database, action
):
    key = SET_KEY._replace(idAction=action.idAction)
    ids = [client.create_programmable_key(key) for _ in range(11)]
    database.execute(
        "CREATE TABLE moves (idKey, position)",
        "CREATE TRIGGER moved AFTER UPDATE ON KEY"
        " BEGIN INSERT INTO moves VALUES (NEW.idKey, NEW.position); END",
    )
    last = {RepeatedId(id_key): id_key + 50 for id_key in reversed(ids)}
    moves = {RepeatedId(ids[2]): 11, **last}
    assert client.change_programmable_keys_position(moves) is True
    expected = [(id_key, id_key + 50) for id_key in ids]
    assert database.rows("SELECT idKey, position FROM moves ORDER BY rowid") == expected


def test_moving_stops_at_the_first_failure_and_keeps_the_keys_moved_before(
    service, client, events, database, action
):
    key = SET_KEY._replace(idAction=action.idAction)
    ids = [client.create_programmable_key(key) for _ in range(4)]
    events.take()
    service.log.take()
    fault = failing("UPDATE", "KEY", "NEW.idKey IN (2, 3)")
    database.execute(fault.trigger)
    assert client.change_programmable_keys_position({id_key: 50 for id_key in ids}) is False
    assert [key.position for key in database.keys()] == [50, 4, 4, 4]
    (line,) = service.log.take()
    assert failed_statement(line, "UPDATE KEY SET position=? WHERE idKey=?", fault.message)
    assert events.take() == []


def test_keys_are_found_by_the_exact_name_of_their_container(client, set_key):
    for name in ("Main", "main ", "mai_", "%", "", "mаin"):
        assert client.get_programmable_keys_by_container(name) == [], ascii(name)
    assert client.get_programmable_keys_by_container("main") == [set_key]


def test_reading_keys_sends_and_logs_nothing(service, client, events, set_key):
    client.get_all_programmable_keys()
    client.get_programmable_key(set_key.idKey)
    client.get_programmable_key(99)
    client.get_programmable_keys_by_container("main")
    assert events.take() == []
    assert service.log.take() == []
