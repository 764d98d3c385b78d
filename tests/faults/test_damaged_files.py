"""Database files that are cut short, overwritten, empty or no databases at all."""

import random
from pathlib import Path

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION, Database
from samples import CALL, SET_KEY, action_created
from sandbox.names import SERVICE

HEADER = 100
"""Bytes at the beginning of a database."""
SHORTEST = 512
"""SQLite takes what is shorter for a new file."""


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


def call_everything(client) -> None:
    """Every operation, on rows that may be there or not; whatever it answers, it answers."""
    client.get_all_actions()
    client.get_all_programmable_keys()
    client.get_programmable_keys_by_container("main")
    for number in (1, 7, 40):
        client.get_action(number)
        client.get_programmable_key(number)
        client.modify_action(CALL._replace(idAction=number))
        client.modify_programmable_key(SET_KEY._replace(idKey=number, idAction=number))
        client.change_programmable_keys_position({number: 3})
        client.set_icon_state_for_key(number, 1, 1)
        client.set_label_state_for_key(number, 1)
        client.delete_action(number)
        client.delete_programmable_key(number)
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    for list_id in (None, 1):
        client.get_capabilities(list_id)
        client.get_capability("x", list_id)


def is_kept(database: Path, damaged: bytes) -> bool:
    """Whether the damaged file is still to be found in one of the places where it may be put.

    Its header aside, where SQLite notes the kind of journal as soon as the file is opened.
    """
    found = [path.read_bytes() for path in database.parents[1].rglob(database.name)]
    return any(
        len(content) == len(damaged) and content[HEADER:] == damaged[HEADER:] for content in found
    )


def test_damaged_files_crash_nothing_and_are_never_lost(
    launch, client, data_root, settings, tmp_path, amount, figures
):
    fill(tmp_path / "whole", 60)
    whole = (tmp_path / "whole").read_bytes()
    seed = 20260112
    source = random.Random(seed)
    went_on = begun_afresh = 0
    tries = amount(25, 500)
    for number in range(tries):
        root = data_root / str(number)
        path = root / SERVICE / "zelprogrammablekeys.data"
        path.parent.mkdir(parents=True)
        damaged = damage(source, whole)
        path.write_bytes(damaged)
        what = f"damage {number} of seed {seed}"
        service = launch(data_root=root)
        if not service.comes_up(client):
            assert service.status == 1, f"{what}: {service.log.raw()}"
            assert "set aside to" in service.log.texts("error")[-1], what
            assert is_kept(path, damaged), what
            begun_afresh += 1
            service = launch(data_root=root)
            service.wait_until_ready(client)
            assert client.get_all_actions() == [RESERVED_ACTION], what
        elif "ZelProgrammableKeys deploying..." in service.log.texts():
            assert is_kept(path, damaged), what
            begun_afresh += 1
        else:
            went_on += 1
        call_everything(client)
        service.stop()
    assert begun_afresh > 0
    figures(
        f"{tries} damaged files (seed {seed}): {went_on} served on, {begun_afresh} begun afresh "
        "with the old file kept, 0 crashes, 0 files lost"
    )


@pytest.mark.parametrize(
    "content",
    [b"", b"garbage " * 1000, b"SQLite format 3\0" + bytes(4080)],
    ids=["nothing", "garbage", "a header and no more"],
)
def test_a_file_of_nothing_or_of_garbage_is_begun_afresh_within_two_starts(
    launch, client, events, database, settings, content, figures
):
    database.path.parent.mkdir(parents=True)
    database.path.write_bytes(content)
    starts = 1
    service = launch()
    if not service.comes_up(client):
        assert service.status == 1
        starts = 2
        service = launch()
        service.wait_until_ready(client)
    action = CALL._replace(idAction=client.add_action(CALL))
    assert events.take() == [action_created(action)]
    assert client.get_action(action.idAction) == [action]
    service.stop()
    assert starts == 1 if not content else is_kept(database.path, content)
    figures(f"serves after {starts} start(s), old file kept")
