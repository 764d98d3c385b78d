"""Storage that is full, read-only or not there."""

import resource
from contextlib import contextmanager
from pathlib import Path
from typing import Iterator

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION
from mounts import memory_file_system, read_only
from samples import CALL, SET_KEY, action_created, key_created
from sandbox.names import SERVICE

LONG = CALL._replace(label="x" * 8000)
LIMITED = 256 * 1024
"""Bytes: room for the empty database and its log, and for some records."""


@pytest.fixture
def full_disk(data_root: Path) -> Iterator[Path]:
    """The data root on a file system of its own, of half a mebibyte."""
    with memory_file_system(data_root, 512 * 1024):
        yield data_root


@contextmanager
def filled(directory: Path, spare: int = 0) -> Iterator[None]:
    """No more than so many bytes are free meanwhile."""
    filler = directory / "filler"
    with open(filler, "wb", buffering=0) as file:
        try:
            while file.write(bytes(4096)):
                pass
        except OSError:
            file.truncate(file.tell() - spare)
        yield
    filler.unlink()


def assert_refuses_every_write(client, events, known: int) -> None:
    """A long record of each kind is refused with the code of its operation, and not announced."""
    long_key = SET_KEY._replace(idAction=known, icon="x" * 8000)
    events.take()
    assert client.add_action(LONG) == -3
    assert client.create_programmable_key(long_key) == -2
    assert client.modify_action(LONG._replace(idAction=known, label="y" * 8000)) == -3
    assert events.take() == []


def assert_serves(client, events) -> None:
    """A new action and a key for it are stored and announced."""
    events.take()
    action = CALL._replace(idAction=client.add_action(CALL))
    key = SET_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    assert events.take() == [action_created(action), key_created(key)]
    assert client.get_action(action.idAction) == [action]
    assert client.get_programmable_key(key.idKey) == [key]


def store_until_refused(client) -> list[int]:
    """The ids of the actions that found room; the call after the last one was refused."""
    stored = []
    while (answer := client.add_action(LONG)) > 0:
        stored.append(answer)
        assert len(stored) < 1000, "nothing is refused"
    assert answer == -3
    return stored


def test_a_full_disk_refuses_writes_and_lets_stored_rows_be_read(
    start, client, events, database, full_disk, figures
):
    service = start()
    known = client.add_action(CALL)
    with filled(full_disk, 64 * 1024):
        stored = store_until_refused(client)
        assert_refuses_every_write(client, events, known)
        assert [action.idAction for action in client.get_all_actions()] == [-1, known, *stored]
        errors = service.log.texts("error")
        assert any(line.startswith("Error: INSERT INTO ACTION ") for line in errors)
    assert_serves(client, events)
    assert database.value("PRAGMA integrity_check") == "ok"
    figures(f"disk full after {len(stored)} records: 4 writes refused, 0 records lost, well again")


def test_a_limit_of_the_file_size_is_an_error_like_any_other(
    start, client, events, database, figures
):
    service = start()
    unlimited = resource.prlimit(service.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(service.pid, resource.RLIMIT_FSIZE, (LIMITED, unlimited[1]))
    stored = store_until_refused(client)
    assert events.take() == [action_created(LONG._replace(idAction=id)) for id in stored]
    assert [action.idAction for action in client.get_all_actions()] == [-1, *stored]
    resource.prlimit(service.pid, resource.RLIMIT_FSIZE, unlimited)
    assert_serves(client, events)
    assert database.value("PRAGMA integrity_check") == "ok"
    figures(f"file limit met after {len(stored)} records, 0 lost, well again")


@pytest.mark.parametrize("trouble", [filled, read_only])
def test_a_start_that_cannot_write_touches_no_data_and_a_later_start_finds_it(
    launch, start, client, full_disk, figures, trouble
):
    first = start()
    stored = CALL._replace(idAction=client.add_action(CALL))
    first.stop()
    before = (full_disk / SERVICE / "zelprogrammablekeys.data").read_bytes()
    with trouble(full_disk):
        refused = launch()
        assert refused.wait_for_exit() == 1
        assert "left as it is" in refused.log.texts("error")[-1]
        assert {path.name for path in full_disk.iterdir()} <= {SERVICE, "filler"}
        assert (full_disk / SERVICE / "zelprogrammablekeys.data").read_bytes() == before
    start()
    assert client.get_all_actions() == [RESERVED_ACTION, stored]
    figures("1 start that cannot write: refused, 0 records lost, the next one well")


def test_a_first_start_on_a_full_disk_is_well_once_there_is_room(
    start, client, events, full_disk, figures
):
    with filled(full_disk):
        crippled = start()
        assert client.add_action(CALL) == -3
        assert events.take() == []
        crippled.stop()
    start()
    assert_serves(client, events)
    assert not list(full_disk.glob("*.unusable*"))
    figures("1 first start on a full disk: no crash, the next one well")


def test_a_database_that_can_only_be_read_is_read(
    start, client, events, full_disk, database, figures
):
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    database.insert(RESERVED_ACTION, CALL._replace(idAction=1))
    with read_only(full_disk):
        limited = start()
        assert len(client.get_all_actions()) == 2
        assert_refuses_every_write(client, events, 1)
        limited.stop()
    start()
    assert_serves(client, events)
    figures("1 start on a read-only database: read, 3 writes refused, the next one well")


def test_a_directory_that_cannot_be_made_refuses_everything_until_a_start_can_make_it(
    start, client, events, data_root, figures
):
    data_root.parent.mkdir(parents=True)
    data_root.write_text("a file where a directory should be")
    crippled = start()
    assert client.add_action(CALL) == -3
    assert client.create_programmable_key(SET_KEY._replace(idAction=-1)) == -2
    assert client.get_all_actions() == []
    assert events.take() == []
    data_root.unlink()
    client.restore_default()
    assert client.add_action(CALL) == -3, "the connection is not attempted again"
    crippled.stop()
    start()
    assert_serves(client, events)
    figures("1 start without a directory: 2 writes refused, no crash, the next one well")
