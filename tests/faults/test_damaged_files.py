"""Database files that are cut short, overwritten, empty or no databases at all."""

import random
from pathlib import Path

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION, Database
from operations import METHODS
from phones import DEPLOYING, Phone
from samples import CALL, SET_KEY, action_created
from sandbox.client import Client
from sandbox.records import ACTION, KEY

HEADER = 100
"""Bytes at the beginning of a database."""
SHORTEST = 512
"""SQLite takes a shorter file for a new one."""
SEED = 20260112
NO_DATABASES = (b"", b"garbage " * 1000, b"SQLite format 3\0" + bytes(4080))


def fill(path: Path, rows: int) -> None:
    database = Database(path)
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    actions = [CALL._replace(idAction=number + 1, label="z" * 200) for number in range(rows)]
    keys = [SET_KEY._replace(idKey=number + 1, idAction=number + 1) for number in range(rows)]
    database.insert(RESERVED_ACTION, *actions, *keys)


def damage(source: random.Random, whole: bytes) -> bytes:
    """The file cut short, with random bytes somewhere, or with a page in another's place."""
    kind = source.randrange(4)
    if kind == 0:
        return whole[: source.randrange(SHORTEST, len(whole))]
    place = source.randrange(len(whole))
    length = source.choice((1, 16, 512, 4096))
    if kind == 1:
        return whole[:place] + source.randbytes(length) + whole[place + length :]
    if kind == 2:
        return source.randbytes(len(whole))
    other = source.randrange(len(whole) // 4096) * 4096
    page = place // 4096 * 4096
    return whole[:page] + whole[other : other + 4096] + whole[page + 4096 :]


def call_everything(client: Client) -> None:
    """Calls each operation on rows that may be there or not; each must answer."""
    for number in (1, 7, 40):
        values = {
            ACTION: (CALL._replace(idAction=number),),
            KEY: (SET_KEY._replace(idKey=number, idAction=number),),
            "x": (number,),
            "xi": (number, 1),
            "xii": (number, 1, 1),
            "a{ii}": ({number: 3},),
            "i": (1,),
            "is": (1, "main"),
            "s": ("main",),
            "": (),
        }
        for operation in METHODS:
            operation.result_of(operation.send(client, *values[operation.takes]))


def is_kept(database: Path, damaged: bytes) -> bool:
    """Whether the damaged file is in one of the places where it may be put.

    Its header may differ: SQLite writes the kind of journal there when the file is opened.
    """
    found = [path.read_bytes() for path in database.parents[1].rglob(database.name)]
    return any(
        len(content) == len(damaged) and content[HEADER:] == damaged[HEADER:] for content in found
    )


def serves_on(phone: Phone, damaged: bytes, what: str) -> bool:
    """Starts on a damaged file, twice if need be; whether the rows that are left are used."""
    phone.database.path.parent.mkdir(parents=True)
    phone.database.path.write_bytes(damaged)
    service = phone.launch()
    if not service.starts(phone.client):
        assert service.status == 1, f"{what}: {service.log.raw()}"
        assert "set aside to" in service.log.texts("error")[-1], what
        assert is_kept(phone.database.path, damaged), what
        phone.start()
        assert phone.client.get_all_actions() == [RESERVED_ACTION], what
        return False
    if DEPLOYING in service.log.texts():
        assert not damaged or is_kept(phone.database.path, damaged), what
        return False
    return True


def test_damaged_files_crash_nothing_and_are_never_lost(phone, tmp_path, amount, figures):
    fill(tmp_path / "whole", 60)
    whole = (tmp_path / "whole").read_bytes()
    source = random.Random(SEED)
    used = 0
    tries = amount(25, 500)
    for number in range(tries):
        phone.use_data_root(tmp_path / f"data {number}")
        used += serves_on(phone, damage(source, whole), f"damage {number} of seed {SEED}")
        call_everything(phone.client)
        phone.service.stop()
    assert used < tries
    figures(f"{tries} damaged files (seed {SEED}): {used} used, {tries - used} set aside, 0 lost")


def test_a_file_that_is_no_database_is_set_aside_within_two_starts(phone, tmp_path, figures):
    for number, content in enumerate(NO_DATABASES):
        phone.use_data_root(tmp_path / f"data {number}")
        assert not serves_on(phone, content, f"{content[:10]!r}")
        phone.events.take()
        action = CALL._replace(idAction=phone.client.add_action(CALL))
        assert phone.events.take() == [action_created(action)]
        assert phone.client.get_action(action.idAction) == [action]
        phone.service.stop()
    figures(f"{len(NO_DATABASES)} files that are no databases: set aside, the phone serves")
