"""Database files that are truncated, overwritten, empty or not databases."""

import random
from pathlib import Path

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION, Database
from operations import METHODS
from phones import DEPLOYING, Phone
from samples import CALL, SET_KEY, action_created
from sandbox.client import Client
from sandbox.records import ACTION, KEY

HEADER = 100
"""The size of the header of a database in bytes."""
SHORTEST = 512
"""SQLite treats a shorter file as a new database."""
SEED = 20260112
OTHER_FILES = (b"", b"garbage " * 1000, b"SQLite format 3\0" + bytes(4080))


def fill(path: Path, rows: int) -> None:
    database = Database(path)
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    actions = [CALL._replace(idAction=number + 1, label="z" * 200) for number in range(rows)]
    keys = [SET_KEY._replace(idKey=number + 1, idAction=number + 1) for number in range(rows)]
    database.insert(RESERVED_ACTION, *actions, *keys)


def damage(source: random.Random, intact: bytes) -> bytes:
    """The file truncated, with random bytes, or with a page replaced by another page."""
    kind = source.randrange(4)
    if kind == 0:
        return intact[: source.randrange(SHORTEST, len(intact))]
    offset = source.randrange(len(intact))
    length = source.choice((1, 16, 512, 4096))
    if kind == 1:
        return intact[:offset] + source.randbytes(length) + intact[offset + length :]
    if kind == 2:
        return source.randbytes(len(intact))
    other = source.randrange(len(intact) // 4096) * 4096
    page = offset // 4096 * 4096
    return intact[:page] + intact[other : other + 4096] + intact[page + 4096 :]


def call_all_methods(client: Client) -> None:
    """Calls each method for rows that may or may not exist, and waits for the replies."""
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
    """Whether the service has kept the damaged file in some directory.

    The header may differ: SQLite writes the journal mode there when it opens the file.
    """
    found = [path.read_bytes() for path in database.parents[1].rglob(database.name)]
    return any(
        len(content) == len(damaged) and content[HEADER:] == damaged[HEADER:] for content in found
    )


def start_with(phone: Phone, damaged: bytes, what: str) -> bool:
    """Starts with a damaged file, twice if necessary. Returns whether the service uses the file."""
    phone.database.path.parent.mkdir(parents=True)
    phone.database.path.write_bytes(damaged)
    service = phone.launch()
    if not service.starts(phone.client):
        assert service.status == 1, f"{what}: {service.log.raw()}"
        assert "moved to" in service.log.texts("error")[-1], what
        assert is_kept(phone.database.path, damaged), what
        phone.start()
        assert phone.client.get_all_actions() == [RESERVED_ACTION], what
        return False
    if DEPLOYING in service.log.texts():
        assert not damaged or is_kept(phone.database.path, damaged), what
        return False
    return True


def test_damaged_files_cause_no_crash_and_are_kept(phone, tmp_path, amount, summarize):
    fill(tmp_path / "intact", 60)
    intact = (tmp_path / "intact").read_bytes()
    source = random.Random(SEED)
    used = 0
    tries = amount(25, 500)
    for number in range(tries):
        phone.use_data_root(tmp_path / f"data {number}")
        used += start_with(phone, damage(source, intact), f"damage {number} of seed {SEED}")
        call_all_methods(phone.client)
        phone.service.stop()
    assert used < tries
    summarize(f"{tries} damaged files (seed {SEED}): {used} used, {tries - used} set aside, 0 lost")


def test_a_file_that_is_not_a_database_is_set_aside_within_two_starts(phone, tmp_path, summarize):
    for number, content in enumerate(OTHER_FILES):
        phone.use_data_root(tmp_path / f"data {number}")
        assert not start_with(phone, content, f"{content[:10]!r}")
        phone.events.take()
        action = CALL._replace(idAction=phone.client.add_action(CALL))
        assert phone.events.take() == [action_created(action)]
        assert phone.client.get_action(action.idAction) == [action]
        phone.service.stop()
    summarize(f"{len(OTHER_FILES)} files that are not databases: all set aside")
