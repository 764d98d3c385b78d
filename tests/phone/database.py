"""Access to the service's database file from the test process."""

import sqlite3
from contextlib import closing, contextmanager
from pathlib import Path
from typing import Any, Iterator, NamedTuple, Union

from sandbox.loop import LIMIT
from sandbox.records import Action, Key

KEY_SCHEMA = (
    "CREATE TABLE KEY (idKey     INTEGER PRIMARY KEY AUTOINCREMENT, "
    "container VARCHAR,idAction  BIGINT,position  INTEGER,icon      VARCHAR,type      INTEGER,"
    "aom_type  INTEGER,aom_addr  INTEGER,dmId  VARCHAR)"
)
ACTION_SCHEMA = (
    "CREATE TABLE ACTION (idAction   INTEGER PRIMARY KEY AUTOINCREMENT,type       INTEGER,"
    "action     VARCHAR,webAppName VARCHAR,arguments  VARCHAR,label      VARCHAR,"
    "shortLabel VARCHAR,dmId VARCHAR)"
)
RESERVED_ACTION = Action(idAction=-1, type=-1)


class Fault(NamedTuple):
    """A trigger that makes statements of the service fail or change nothing."""

    trigger: str
    message: str = ""


def failing(operation: str, table: str, condition: str = "1") -> Fault:
    """The operation on the table fails for rows that meet the condition."""
    message = "injected fault"
    return Fault(_trigger(operation, table, condition, f"RAISE(FAIL, '{message}')"), message)


def ignoring(operation: str, table: str, condition: str = "1") -> Fault:
    """The operation on the table succeeds but changes no row that meets the condition."""
    return Fault(_trigger(operation, table, condition, "RAISE(IGNORE)"))


def _trigger(operation: str, table: str, condition: str, what: str) -> str:
    event = f"BEFORE {operation} ON {table} WHEN {condition}"
    return f"CREATE TRIGGER fault {event} BEGIN SELECT {what}; END"


class Database:
    """An SQLite file. Each operation opens and closes it."""

    def __init__(self, path: Path) -> None:
        self.path = path

    def _open(self) -> sqlite3.Connection:
        return sqlite3.connect(
            f"file:{self.path}?mode=rw", uri=True, timeout=LIMIT, isolation_level=None
        )

    def rows(self, query: str, *values: Any) -> list[tuple[Any, ...]]:
        with closing(self._open()) as connection:
            return connection.execute(query, values).fetchall()

    def value(self, query: str, *values: Any) -> Any:
        return self.rows(query, *values)[0][0]

    def execute(self, *statements: str) -> None:
        """Runs statements that return no rows. Waits for locks of other processes."""
        with closing(self._open()) as connection:
            for statement in statements:
                connection.execute(statement)

    def create(self, *statements: str) -> None:
        """Creates the file and its directory before the service starts."""
        self.path.parent.mkdir(parents=True, exist_ok=True)
        self.path.touch()
        self.execute(*statements)

    def keys(self) -> list[Key]:
        """The stored keys in the order of their ids."""
        return [
            Key(*row)
            for row in self.rows(f"SELECT {', '.join(Key._fields)} FROM KEY ORDER BY idKey")
        ]

    def actions(self) -> list[Action]:
        """The stored actions in the order of their ids."""
        return [
            Action(*row)
            for row in self.rows(
                f"SELECT {', '.join(Action._fields)} FROM ACTION ORDER BY idAction"
            )
        ]

    def insert(self, *records: Union[Key, Action]) -> None:
        """Stores records with their ids."""
        with closing(self._open()) as connection:
            connection.execute("BEGIN")
            for record in records:
                table = "KEY" if isinstance(record, Key) else "ACTION"
                columns, marks = ", ".join(record._fields), ", ".join("?" * len(record))
                connection.execute(f"INSERT INTO {table} ({columns}) VALUES ({marks})", record)
            connection.execute("COMMIT")

    def schema(self) -> dict[str, str]:
        """The CREATE statements of the tables, by name."""
        return dict(
            self.rows(
                "SELECT name, sql FROM sqlite_master"
                " WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"
            )
        )

    @contextmanager
    def kept_open(self) -> Iterator[sqlite3.Connection]:
        """A connection that stays open until the context ends."""
        with closing(self._open()) as connection:
            yield connection

    @contextmanager
    def locked(self) -> Iterator[sqlite3.Connection]:
        """A connection that holds the write lock until the context ends, and then rolls back."""
        with self.kept_open() as connection:
            connection.execute("BEGIN IMMEDIATE")
            try:
                yield connection
            finally:
                connection.execute("ROLLBACK")
