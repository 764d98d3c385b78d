"""Statements that fail or match no row: result codes, log lines, events and recovery."""

from typing import Any, Callable, NamedTuple

import pytest

from database import RESERVED_ACTION, Database, ignoring, failing
from samples import (
    CALL,
    MODULE_KEY,
    SET_KEY,
    SETTING_NOT_READ,
    action_deleted,
    action_modified,
    failed_statement,
    module_key_pressed,
)
from sandbox.names import UNKNOWN_SETTING
from sandbox.records import Action, Key

KEY_SELECT = (
    "SELECT idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId FROM KEY"
)
KEY_SELECT_DM = (
    "SELECT idKey, DMID, container, idAction, position, icon, type, aom_type, aom_addr FROM KEY"
)
BY_KEY_ID = f"{KEY_SELECT} WHERE idKey=?"
BY_CONTAINER = f"{KEY_SELECT} WHERE container=?"
BY_TYPE_AND_ACTION = f"{KEY_SELECT_DM} WHERE type=? and idAction=?"
BY_PLACE = f"{KEY_SELECT_DM} WHERE type=? and position=? and aom_type=? and aom_addr=?"
KEY_IDS = "SELECT idKey FROM KEY WHERE idAction=?"
KEY_COUNT = "SELECT COUNT(*) FROM KEY WHERE type=?"
KEY_INSERT = (
    "INSERT INTO KEY (container, idAction, position, icon, type, aom_type, aom_addr, dmId) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?)"
)
KEY_UPDATE = (
    "UPDATE KEY SET container=?, idAction=?, position=?, icon=?, type=?, "
    "aom_type=?, aom_addr=?, dmId=? WHERE idKey=?"
)
KEY_MOVE = "UPDATE KEY SET position=? WHERE idKey=?"
KEY_DELETE = "DELETE FROM KEY WHERE idKey=?"
ACTION_SELECT = (
    "SELECT idAction, type, action, webAppName, arguments, label, shortLabel, dmId FROM ACTION"
)
BY_ACTION_ID = (
    "SELECT idAction, DMID, type, action, webAppName, arguments, label, shortLabel, dmId "
    "FROM ACTION WHERE idAction=?"
)
ACTION_INSERT = (
    "INSERT INTO ACTION (type, action, webAppName, arguments, label, shortLabel, dmId) "
    "VALUES (?, ?, ?, ?, ?, ?, ?)"
)
ACTION_UPDATE = (
    "UPDATE ACTION SET type=?, action=?, webAppName=?, arguments=?, label=?, shortLabel=?, "
    "dmId=? WHERE idAction=?"
)
ACTION_DELETE = "DELETE FROM ACTION WHERE idAction=?"
MODIFY_ACTION_FAILS = "ZelProgrammableKeys::modifyAction(1) : fail !"
STORED_ACTION = CALL._replace(idAction=1)
STORED_KEY = MODULE_KEY._replace(idKey=1, idAction=1)


class Store(NamedTuple):
    """A database with one action and one module key."""

    client: Any
    database: Database

    def fill(self) -> None:
        self.database.execute("DELETE FROM KEY", "DELETE FROM ACTION")
        self.database.insert(RESERVED_ACTION, STORED_ACTION, STORED_KEY)

    def create_module_key(self) -> int:
        return self.client.create_programmable_key(STORED_KEY)

    def create_set_key(self) -> int:
        return self.client.create_programmable_key(SET_KEY._replace(idAction=1))

    def modify_key(self) -> int:
        return self.client.modify_programmable_key(STORED_KEY._replace(icon="other"))

    def move_key(self) -> bool:
        return self.client.change_programmable_keys_position({1: 77})

    def delete_key(self) -> int:
        return self.client.delete_programmable_key(1)

    def add_action(self) -> int:
        return self.client.add_action(STORED_ACTION)

    def modify_action(self) -> int:
        return self.client.modify_action(STORED_ACTION._replace(shortLabel="other"))

    def delete_action(self) -> int:
        return self.client.delete_action(1)

    def all_keys(self) -> list[Key]:
        return self.client.get_all_programmable_keys()

    def one_key(self) -> list[Key]:
        return self.client.get_programmable_key(1)

    def container(self) -> list[Key]:
        return self.client.get_programmable_keys_by_container(STORED_KEY.container)

    def all_actions(self) -> list[Action]:
        return self.client.get_all_actions()

    def one_action(self) -> list[Action]:
        return self.client.get_action(1)

    def press(self) -> None:
        self.client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=5, aom_type=1, addr=2)
        self.client.round_trip()


Operation = Callable[[Store], Any]


@pytest.fixture
def store(service, client, database, events) -> Store:
    the_store = Store(client, database)
    the_store.fill()
    return the_store


def operations(*rows):
    """Rows of a parametrized test. The last value of a row is its id."""
    return [pytest.param(*values, id=name) for *values, name in rows]


@pytest.mark.parametrize(
    "operation, what, table, answer, statement, more_lines",
    operations(
        (Store.create_module_key, "INSERT", "KEY", -2, KEY_INSERT, [], "creating a key"),
        (Store.modify_key, "UPDATE", "KEY", -3, KEY_UPDATE, [], "modifying a key"),
        (Store.move_key, "UPDATE", "KEY", False, KEY_MOVE, [], "moving a key"),
        (Store.delete_key, "DELETE", "KEY", -3, KEY_DELETE, [], "deleting a key"),
        (Store.add_action, "INSERT", "ACTION", -3, ACTION_INSERT, [], "adding an action"),
        (
            *(Store.modify_action, "UPDATE", "ACTION", -3, ACTION_UPDATE, [MODIFY_ACTION_FAILS]),
            "modifying an action",
        ),
        (Store.delete_action, "DELETE", "ACTION", -3, ACTION_DELETE, [], "deleting an action"),
    ),
)
def test_a_failed_write_returns_its_code_logs_its_statement_and_sends_no_event(
    service,
    store,
    events,
    database,
    operation: Operation,
    what,
    table,
    answer,
    statement,
    more_lines,
):
    before = database.actions(), database.keys()
    fault = failing(what, table)
    database.execute(fault.trigger)
    assert operation(store) == answer
    line, *others = service.log.take("error")
    assert failed_statement(line, statement, fault.message)
    assert others == more_lines
    assert events.take() == []
    assert (database.actions(), database.keys()) == before


@pytest.mark.parametrize(
    "operation, what, table, lines",
    operations(
        (Store.modify_key, "UPDATE", "KEY", [], "modifying a key"),
        (Store.delete_key, "DELETE", "KEY", [], "deleting a key"),
        (Store.modify_action, "UPDATE", "ACTION", [MODIFY_ACTION_FAILS], "modifying an action"),
        (Store.delete_action, "DELETE", "ACTION", [], "deleting an action"),
    ),
)
def test_a_write_that_changes_no_row_returns_minus_2_and_sends_no_event(
    service, store, events, database, operation: Operation, what, table, lines
):
    before = database.actions(), database.keys()
    database.execute(ignoring(what, table).trigger)
    assert operation(store) == -2
    assert service.log.take("error") == lines
    assert events.take() == []
    assert (database.actions(), database.keys()) == before


@pytest.mark.parametrize(
    "table, operation, answer, statements",
    operations(
        ("KEY", Store.all_keys, [], [KEY_SELECT], "reading all keys"),
        ("KEY", Store.one_key, [], [BY_KEY_ID], "reading one key"),
        ("KEY", Store.container, [], [BY_CONTAINER], "reading the keys of a container"),
        ("KEY", Store.create_set_key, -2, [KEY_COUNT, KEY_INSERT], "creating a key on the set"),
        ("KEY", Store.create_module_key, -2, [KEY_COUNT, KEY_INSERT], "creating a module key"),
        ("KEY", Store.modify_key, -3, [BY_KEY_ID, KEY_UPDATE], "modifying a key"),
        ("KEY", Store.move_key, False, [KEY_MOVE], "moving a key"),
        ("KEY", Store.delete_key, -2, [BY_KEY_ID], "deleting a key"),
        ("KEY", Store.modify_action, 0, [BY_TYPE_AND_ACTION], "labeling the keys of an action"),
        ("KEY", Store.delete_action, 0, [KEY_IDS], "deleting the keys of an action"),
        ("KEY", Store.press, None, [BY_PLACE], "pressing a key"),
        ("ACTION", Store.all_actions, [], [ACTION_SELECT], "reading all actions"),
        ("ACTION", Store.one_action, [], [BY_ACTION_ID], "reading one action"),
        ("ACTION", Store.add_action, -3, [ACTION_INSERT], "adding an action"),
        ("ACTION", Store.delete_action, -2, [BY_ACTION_ID], "deleting an action"),
    ),
)
def test_a_statement_fails_with_one_line_without_its_table_and_works_when_the_table_is_back(
    service, store, database, table, operation: Operation, answer, statements
):
    for when in ("at its first use", "at a later use"):
        store.fill()
        database.execute(f"ALTER TABLE {table} RENAME TO LOST")
        # The service's connection notices the change: the next statement cannot be prepared.
        store.all_keys(), store.all_actions()
        service.log.take()
        assert operation(store) == answer, when
        lines = service.log.take("error")
        assert len(lines) == len(statements), when
        for line, statement in zip(lines, statements):
            assert failed_statement(line, statement, f"no such table: {table}")
        database.execute(f"ALTER TABLE LOST RENAME TO {table}")
        operation(store)
        assert service.log.take("error") == [], when


def test_the_keys_on_the_set_are_counted_before_the_limit_is_read(
    service, store, database, settings
):
    settings.fail(UNKNOWN_SETTING)
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    for create in (Store.create_set_key, Store.create_module_key):
        assert create(store) == -2
        count, read, _insert = service.log.take("error")
        assert failed_statement(count, KEY_COUNT, "no such table: KEY")
        assert read == SETTING_NOT_READ


def test_actions_and_presses_work_without_the_key_table(store, events, database):
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    store.press()
    assert store.modify_action() == 0
    assert store.delete_action() == 0
    assert events.take() == [
        module_key_pressed(Key(type=1, position=5, aom_type=1, aom_addr=2), Action(), exists=False),
        action_modified(STORED_ACTION._replace(shortLabel="other")),
        action_deleted(1),
    ]


@pytest.mark.parametrize(
    "table, operation, answer",
    operations(
        ("KEY", Store.create_module_key, -2, "keys"), ("ACTION", Store.add_action, -3, "actions")
    ),
)
def test_no_record_is_added_after_the_largest_id_has_been_assigned(
    store, events, database, table, operation: Operation, answer
):
    database.execute(f"UPDATE sqlite_sequence SET seq = {2**63 - 1} WHERE name = '{table}'")
    assert operation(store) == answer
    assert events.take() == []


def test_a_failed_statement_is_not_logged_at_level_2(start, client, database):
    service = start(log_level=2)
    database.execute(failing("INSERT", "ACTION").trigger)
    assert client.add_action(CALL) == -3
    assert service.log.lines() == []


def test_a_column_or_an_index_added_by_another_process_has_no_effect(store, database):
    assert store.all_keys() == store.one_key() == store.container() == [STORED_KEY]
    database.execute("ALTER TABLE KEY ADD COLUMN more", "CREATE INDEX quick ON KEY (container)")
    assert store.all_keys() == store.one_key() == store.container() == [STORED_KEY]
    assert store.modify_key() == 0
