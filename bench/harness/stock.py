"""The keys and actions that a server finds: all user's, each key on a module of 24 keys."""

import sqlite3
from contextlib import closing
from pathlib import Path

KEYS_OF_MODULE = 24

ADD_ACTION = (
    "INSERT INTO ACTION (idAction, type, action, webAppName, arguments, label, shortLabel, dmId)"
    " VALUES (?, 1, 'call', '', ?, ?, ?, '')"
)
ADD_KEY = (
    "INSERT INTO KEY (idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId)"
    " VALUES (?, 'module', ?, ?, 'phone', 1, 1, ?, '')"
)


def provisioned_settings(count: int) -> dict[str, str]:
    """A rollout of `count` actions and a key for each, on modules of 24 keys."""
    actions = (f"P{i},1,call,,{500 + i},Office {i},Off {i}" for i in range(count))
    keys = (
        f"P{i},module,{i % KEYS_OF_MODULE},phone,1,1,{i // KEYS_OF_MODULE}" for i in range(count)
    )
    return {
        "DefaultActions": "#".join(actions),
        "DefaultKeys": "#".join(keys),
        "ProgKeysMax": "1000000",
    }


def write_stock(database: Path, rows: int) -> None:
    """Adds `rows` actions and a key for each to the empty tables of a database."""
    numbers = range(1, rows + 1)
    actions = ((i, str(500 + i), f"Office {i}", f"Off {i}") for i in numbers)
    keys = ((i, i, (i - 1) % KEYS_OF_MODULE, (i - 1) // KEYS_OF_MODULE) for i in numbers)
    with closing(sqlite3.connect(f"{database.as_uri()}?mode=rw", uri=True)) as connection:
        with connection:
            connection.executemany(ADD_ACTION, actions)
            connection.executemany(ADD_KEY, keys)
