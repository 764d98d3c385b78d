"""Keys and actions in SQLite."""

import logging
import sqlite3
from pathlib import Path
from typing import Any, NamedTuple, Optional, Type, TypeVar

OK = 0
NO_SUCH_ROW = -2
FAILED = -3

CREATE_KEYS = (
    "CREATE TABLE IF NOT EXISTS KEY (idKey     INTEGER PRIMARY KEY AUTOINCREMENT, "
    "container VARCHAR,idAction  BIGINT,position  INTEGER,icon      VARCHAR,type      INTEGER,"
    "aom_type  INTEGER,aom_addr  INTEGER,dmId  VARCHAR)"
)
CREATE_ACTIONS = (
    "CREATE TABLE IF NOT EXISTS ACTION (idAction   INTEGER PRIMARY KEY AUTOINCREMENT,"
    "type       INTEGER,action     VARCHAR,webAppName VARCHAR,arguments  VARCHAR,"
    "label      VARCHAR,shortLabel VARCHAR,dmId VARCHAR)"
)
INSERT_RESERVED_ACTION = (
    "INSERT INTO ACTION (idAction, type, action, webAppName, arguments, label, shortLabel, dmId) "
    "VALUES (-1, -1, '', '', '', '', '', '')"
)


class Key(NamedTuple):
    """A key in the order of its fields on the bus."""

    idKey: int = -1
    dmId: str = ""
    idAction: int = -1
    container: str = ""
    position: int = -1
    icon: str = ""
    type: int = -1
    aom_type: int = -1
    aom_addr: int = -1


class Action(NamedTuple):
    """An action in the order of its fields on the bus."""

    idAction: int = -1
    dmId: str = ""
    type: int = 0
    action: str = ""
    webAppName: str = ""
    arguments: str = ""
    label: str = ""
    shortLabel: str = ""


Record = TypeVar("Record", Key, Action)


class Store:
    """The database file. A statement that fails is logged; what it returns says so."""

    def __init__(self, path: Path) -> None:
        path.parent.mkdir(parents=True, exist_ok=True)
        self._database = sqlite3.connect(path, isolation_level=None)
        self._database.row_factory = sqlite3.Row
        self._database.execute(CREATE_KEYS)
        self._database.execute(CREATE_ACTIONS)
        if not self.action(-1):
            self._database.execute(INSERT_RESERVED_ACTION)

    def _execute(self, sql: str, values: tuple[Any, ...]) -> Optional[sqlite3.Cursor]:
        try:
            return self._database.execute(sql, values)
        except sqlite3.Error as error:
            logging.error("%s: %s", sql, error)
            return None

    def _rows(self, sql: str, *values: Any) -> list[sqlite3.Row]:
        cursor = self._execute(sql, values)
        return cursor.fetchall() if cursor else []

    def _read(self, record: Type[Record], sql: str, *values: Any) -> list[Record]:
        rows = self._rows(sql, *values)
        return [record(*(row[field] for field in record._fields)) for row in rows]

    def _insert(self, sql: str, *values: Any) -> Optional[int]:
        cursor = self._execute(sql, values)
        return cursor.lastrowid if cursor else None

    def _change(self, sql: str, *values: Any) -> int:
        cursor = self._execute(sql, values)
        if not cursor:
            return FAILED
        return OK if cursor.rowcount else NO_SUCH_ROW

    # Keys

    def all_keys(self) -> list[Key]:
        return self._read(
            Key,
            "SELECT idKey, container, idAction, position, icon, type, aom_type, aom_addr, "
            "dmId FROM KEY",
        )

    def keys_in_container(self, container: str) -> list[Key]:
        return self._read(
            Key,
            "SELECT idKey, container, idAction, position, icon, type, aom_type, "
            "aom_addr, dmId FROM KEY WHERE container=?",
            container,
        )

    def key(self, id_key: int) -> list[Key]:
        return self._read(
            Key,
            "SELECT idKey, container, idAction, position, icon, type, aom_type, "
            "aom_addr, dmId FROM KEY WHERE idKey=?",
            id_key,
        )

    def keys_of_type_with_action(self, type_: int, id_action: int) -> list[Key]:
        return self._read(
            Key,
            "SELECT idKey, DMID, container, idAction, position, icon, type, "
            "aom_type, aom_addr FROM KEY WHERE type=? and idAction=?",
            type_,
            id_action,
        )

    def keys_at_place(self, type_: int, position: int, aom_type: int, aom_addr: int) -> list[Key]:
        return self._read(
            Key,
            "SELECT idKey, DMID, container, idAction, position, icon, type, "
            "aom_type, aom_addr FROM KEY WHERE type=? and position=? and "
            "aom_type=? and aom_addr=?",
            type_,
            position,
            aom_type,
            aom_addr,
        )

    def key_ids_with_action(self, id_action: int) -> list[int]:
        rows = self._rows("SELECT idKey FROM KEY WHERE idAction=?", id_action)
        return [row["idKey"] for row in rows]

    def count_keys_of_type(self, type_: int) -> int:
        rows = self._rows("SELECT COUNT(*) FROM KEY WHERE type=?", type_)
        return rows[0][0] if rows else 0

    def insert_key(self, key: Key) -> Optional[int]:
        return self._insert(
            "INSERT INTO KEY (container, idAction, position, icon, type, "
            "aom_type, aom_addr, dmId) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
            key.container,
            key.idAction,
            key.position,
            key.icon,
            key.type,
            key.aom_type,
            key.aom_addr,
            key.dmId,
        )

    def update_key(self, key: Key) -> int:
        return self._change(
            "UPDATE KEY SET container=?, idAction=?, position=?, icon=?, type=?, "
            "aom_type=?, aom_addr=?, dmId=? WHERE idKey=?",
            key.container,
            key.idAction,
            key.position,
            key.icon,
            key.type,
            key.aom_type,
            key.aom_addr,
            key.dmId,
            key.idKey,
        )

    def update_key_position(self, id_key: int, position: int) -> int:
        return self._change("UPDATE KEY SET position=? WHERE idKey=?", position, id_key)

    def delete_key(self, id_key: int) -> int:
        return self._change("DELETE FROM KEY WHERE idKey=?", id_key)

    # Actions

    def all_actions(self) -> list[Action]:
        return self._read(
            Action,
            "SELECT idAction, type, action, webAppName, arguments, label, shortLabel, "
            "dmId FROM ACTION",
        )

    def action(self, id_action: int) -> list[Action]:
        return self._read(
            Action,
            "SELECT idAction, DMID, type, action, webAppName, arguments, label, "
            "shortLabel, dmId FROM ACTION WHERE idAction=?",
            id_action,
        )

    def insert_action(self, action: Action) -> Optional[int]:
        return self._insert(
            "INSERT INTO ACTION (type, action, webAppName, arguments, label, "
            "shortLabel, dmId) VALUES (?, ?, ?, ?, ?, ?, ?)",
            *action[2:],
            action.dmId,
        )

    def update_action(self, action: Action) -> int:
        return self._change(
            "UPDATE ACTION SET type=?, action=?, webAppName=?, arguments=?, "
            "label=?, shortLabel=?, dmId=? WHERE idAction=?",
            *action[2:],
            action.dmId,
            action.idAction,
        )

    def delete_action(self, id_action: int) -> int:
        return self._change("DELETE FROM ACTION WHERE idAction=?", id_action)
