"""Statements that fail or match nothing: codes, log lines, no events, and no lasting harm."""

import itertools
from typing import Any, Callable, NamedTuple

import pytest

from database import Fault, ignoring, refusing
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


FRESH = itertools.count(1)


class Stored(NamedTuple):
    """What is in the database before each failure."""

    client: Any
    action: Action
    key: Key

    def create_module_key(self) -> int:
        return self.client.create_programmable_key(self.key)

    def create_set_key(self) -> int:
        key = SET_KEY._replace(idAction=self.key.idAction)
        return self.client.create_programmable_key(key)

    def modify_key(self) -> int:
        return self.client.modify_programmable_key(self.key._replace(icon="other"))

    def move_key(self) -> bool:
        return self.client.change_programmable_keys_position({self.key.idKey: 77})

    def delete_key(self) -> int:
        return self.client.delete_programmable_key(self.key.idKey)

    def add_action(self) -> int:
        return self.client.add_action(self.action)

    def modify_action(self) -> int:
        return self.client.modify_action(self.action._replace(shortLabel=f"label {next(FRESH)}"))

    def delete_action(self) -> int:
        return self.client.delete_action(self.action.idAction)

    def all_keys(self) -> list[Key]:
        return self.client.get_all_programmable_keys()

    def one_key(self) -> list[Key]:
        return self.client.get_programmable_key(self.key.idKey)

    def container(self) -> list[Key]:
        return self.client.get_programmable_keys_by_container(self.key.container)

    def all_actions(self) -> list[Action]:
        return self.client.get_all_actions()

    def one_action(self) -> list[Action]:
        return self.client.get_action(self.action.idAction)

    def press(self) -> None:
        place = {
            "aom_key_num": self.key.position,
            "aom_type": self.key.aom_type,
            "addr": self.key.aom_addr,
        }
        self.client.send_event("AOM_KEY_PRESS_EVENT", **place)


@pytest.fixture
def stored(service, client, events, action) -> Stored:
    key = MODULE_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    events.take()
    service.log.take()
    return Stored(client, action, key)


Operation = Callable[[Stored], Any]


@pytest.mark.parametrize(
    "fault, operation, answer, statement, more_lines",
    [
        pytest.param(
            refusing("INSERT", "KEY"),
            Stored.create_module_key,
            -2,
            KEY_INSERT,
            [],
            id="creating a key",
        ),
        pytest.param(
            refusing("UPDATE", "KEY"), Stored.modify_key, -3, KEY_UPDATE, [], id="modifying a key"
        ),
        pytest.param(
            refusing("UPDATE", "KEY"), Stored.move_key, False, KEY_MOVE, [], id="moving a key"
        ),
        pytest.param(
            refusing("DELETE", "KEY"), Stored.delete_key, -3, KEY_DELETE, [], id="deleting a key"
        ),
        pytest.param(
            refusing("INSERT", "ACTION"),
            Stored.add_action,
            -3,
            ACTION_INSERT,
            [],
            id="adding an action",
        ),
        pytest.param(
            refusing("UPDATE", "ACTION"),
            Stored.modify_action,
            -3,
            ACTION_UPDATE,
            [MODIFY_ACTION_FAILS],
            id="modifying an action",
        ),
        pytest.param(
            refusing("DELETE", "ACTION"),
            Stored.delete_action,
            -3,
            ACTION_DELETE,
            [],
            id="deleting an action",
        ),
    ],
)
def test_a_refused_write_gives_its_code_one_statement_line_and_no_event(
    service,
    stored,
    events,
    database,
    fault: Fault,
    operation: Operation,
    answer,
    statement,
    more_lines,
):
    before = database.actions(), database.keys()
    database.execute(fault.trigger)
    assert operation(stored) == answer
    line, *others = service.log.take("error")
    assert failed_statement(line, statement, fault.message)
    assert others == more_lines
    assert events.take() == []
    assert (database.actions(), database.keys()) == before


@pytest.mark.parametrize(
    "fault, operation, more_lines",
    [
        pytest.param(ignoring("UPDATE", "KEY"), Stored.modify_key, [], id="modifying a key"),
        pytest.param(ignoring("DELETE", "KEY"), Stored.delete_key, [], id="deleting a key"),
        pytest.param(
            ignoring("UPDATE", "ACTION"),
            Stored.modify_action,
            [MODIFY_ACTION_FAILS],
            id="modifying an action",
        ),
        pytest.param(
            ignoring("DELETE", "ACTION"), Stored.delete_action, [], id="deleting an action"
        ),
    ],
)
def test_a_write_that_matches_no_row_gives_minus_2_and_no_event(
    service, stored, events, database, fault: Fault, operation: Operation, more_lines
):
    before = database.actions(), database.keys()
    database.execute(fault.trigger)
    assert operation(stored) == -2
    assert service.log.take("error") == more_lines
    assert events.take() == []
    assert (database.actions(), database.keys()) == before


@pytest.mark.parametrize(
    "table, operation, answer, statements",
    [
        pytest.param("KEY", Stored.all_keys, [], [KEY_SELECT], id="all keys"),
        pytest.param("KEY", Stored.one_key, [], [BY_KEY_ID], id="one key"),
        pytest.param("KEY", Stored.container, [], [BY_CONTAINER], id="keys of a container"),
        pytest.param(
            "KEY",
            Stored.create_set_key,
            -2,
            [KEY_COUNT, KEY_INSERT],
            id="creating a key of the set",
        ),
        pytest.param(
            "KEY",
            Stored.create_module_key,
            -2,
            [KEY_COUNT, KEY_INSERT],
            id="creating a module key",
        ),
        pytest.param("KEY", Stored.modify_key, -3, [BY_KEY_ID, KEY_UPDATE], id="modifying a key"),
        pytest.param("KEY", Stored.move_key, False, [KEY_MOVE], id="moving a key"),
        pytest.param("KEY", Stored.delete_key, -2, [BY_KEY_ID], id="deleting a key"),
        pytest.param(
            "KEY", Stored.modify_action, 0, [BY_TYPE_AND_ACTION], id="labels of an action"
        ),
        pytest.param("KEY", Stored.delete_action, 0, [KEY_IDS], id="keys of a deleted action"),
        pytest.param("KEY", Stored.press, None, [BY_PLACE], id="pressed key"),
        pytest.param("ACTION", Stored.all_actions, [], [ACTION_SELECT], id="all actions"),
        pytest.param("ACTION", Stored.one_action, [], [BY_ACTION_ID], id="one action"),
        pytest.param("ACTION", Stored.add_action, -3, [ACTION_INSERT], id="adding an action"),
        pytest.param("ACTION", Stored.delete_action, -2, [BY_ACTION_ID], id="deleting an action"),
    ],
)
@pytest.mark.parametrize("used_before", [True, False], ids=["after use", "at first use"])
def test_a_lost_table_fails_each_statement_with_one_line_until_it_is_back(
    service, stored, database, used_before, table, operation: Operation, answer, statements
):
    if used_before:
        stored.client.change_programmable_keys_position({stored.key.idKey: stored.key.position})
        for warm_up in (
            Stored.all_keys,
            Stored.one_key,
            Stored.container,
            Stored.all_actions,
            Stored.one_action,
        ):
            warm_up(stored)
        stored.press()
        stored.modify_key(), stored.modify_action()
    stored.client.round_trip()
    service.log.take()
    database.execute(f"ALTER TABLE {table} RENAME TO LOST")
    assert operation(stored) == answer
    stored.client.round_trip()
    lines = service.log.take("error")
    assert len(lines) == len(statements)
    for line, statement in zip(lines, statements):
        assert failed_statement(line, statement, f"no such table: {table}")
    database.execute(f"ALTER TABLE LOST RENAME TO {table}")
    operation(stored)
    stored.client.round_trip()
    assert service.log.take("error") == []


@pytest.mark.parametrize("create", [Stored.create_set_key, Stored.create_module_key])
def test_the_keys_of_the_set_are_counted_before_the_limit_is_read(
    service, stored, database, settings, create: Operation
):
    settings.fail(UNKNOWN_SETTING)
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    assert create(stored) == -2
    count, read, _insert = service.log.take("error")
    assert failed_statement(count, KEY_COUNT, "no such table: KEY")
    assert read == SETTING_NOT_READ


def test_a_press_is_answered_even_when_the_keys_cannot_be_read(stored, events, database):
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    stored.press()
    pressed = Key(
        type=1,
        position=stored.key.position,
        aom_type=stored.key.aom_type,
        aom_addr=stored.key.aom_addr,
    )
    assert events.take() == [module_key_pressed(pressed, Action(), exists=False)]


def test_an_action_is_modified_and_announced_even_when_its_keys_cannot_be_read(
    stored, events, database
):
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    assert stored.modify_action() == 0
    (_reserved, modified) = database.actions()
    assert modified.shortLabel != stored.action.shortLabel
    assert events.take() == [action_modified(modified)]


def test_an_action_is_deleted_and_announced_even_when_its_keys_cannot_be_read(
    stored, events, database
):
    database.execute("ALTER TABLE KEY RENAME TO LOST")
    assert stored.delete_action() == 0
    assert events.take() == [action_deleted(stored.action.idAction)]


@pytest.mark.parametrize(
    "table, operation, answer",
    [("KEY", Stored.create_module_key, -2), ("ACTION", Stored.add_action, -3)],
    ids=["key", "action"],
)
def test_a_table_that_has_given_its_last_id_refuses_the_record(
    stored, events, database, table, operation, answer
):
    database.execute(f"UPDATE sqlite_sequence SET seq = {2**63 - 1} WHERE name = '{table}'")
    assert operation(stored) == answer
    assert events.take() == []


def test_a_refused_write_is_not_told_of_below_level_3(start, client, database):
    service = start(log_level=2)
    database.execute(refusing("INSERT", "ACTION").trigger)
    assert client.add_action(CALL) == -3
    assert service.log.lines() == []


def test_another_process_that_adds_a_column_and_an_index_does_not_disturb(stored, database):
    assert stored.all_keys() == stored.one_key() == stored.container() == [stored.key]
    database.execute("ALTER TABLE KEY ADD COLUMN more", "CREATE INDEX quick ON KEY (container)")
    assert stored.all_keys() == stored.one_key() == stored.container() == [stored.key]
    assert stored.modify_key() == 0
