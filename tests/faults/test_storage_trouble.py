"""Storage that is full, read-only or missing."""

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
FILE_SIZE_LIMIT = 256 * 1024
"""Enough for the empty database, its log, and some records."""


@pytest.fixture
def full_disk(data_root: Path) -> Iterator[Path]:
    """The data root on its own file system of 512 KiB."""
    with memory_file_system(data_root, 512 * 1024):
        yield data_root


@contextmanager
def filled(directory: Path, spare: int = 0) -> Iterator[None]:
    """Fills the file system up to `spare` bytes until the context ends."""
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
    """Checks that each write of a long record returns its error code and sends no event."""
    long_key = SET_KEY._replace(idAction=known, icon="x" * 8000)
    events.take()
    assert client.add_action(LONG) == -3
    assert client.create_programmable_key(long_key) == -2
    assert client.modify_action(LONG._replace(idAction=known, label="y" * 8000)) == -3
    assert events.take() == []


def assert_works(client, events) -> None:
    """Checks that an action and a key can be added."""
    events.take()
    action = CALL._replace(idAction=client.add_action(CALL))
    key = SET_KEY._replace(idAction=action.idAction)
    key = key._replace(idKey=client.create_programmable_key(key))
    assert events.take() == [action_created(action), key_created(key)]
    assert client.get_action(action.idAction) == [action]
    assert client.get_programmable_key(key.idKey) == [key]


def store_until_refused(client) -> list[int]:
    """Adds actions until the storage is full, and returns their ids."""
    stored = []
    while (answer := client.add_action(LONG)) > 0:
        stored.append(answer)
        assert len(stored) < 1000, "the storage is not full"
    assert answer == -3
    return stored


def test_on_a_full_disk_writes_fail_and_stored_rows_can_be_read(
    start, client, events, database, full_disk, summarize
):
    service = start()
    known = client.add_action(CALL)
    with filled(full_disk, 64 * 1024):
        stored = store_until_refused(client)
        assert_refuses_every_write(client, events, known)
        assert [action.idAction for action in client.get_all_actions()] == [-1, known, *stored]
        errors = service.log.texts("error")
        assert any(line.startswith("Error: INSERT INTO ACTION ") for line in errors)
    assert_works(client, events)
    assert database.value("PRAGMA integrity_check") == "ok"
    summarize(f"disk full after {len(stored)} records: 4 writes refused, 0 records lost")


def test_a_write_beyond_the_file_size_limit_returns_an_error(
    start, client, events, database, summarize
):
    service = start()
    unlimited = resource.prlimit(service.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(service.pid, resource.RLIMIT_FSIZE, (FILE_SIZE_LIMIT, unlimited[1]))
    stored = store_until_refused(client)
    assert events.take() == [action_created(LONG._replace(idAction=id)) for id in stored]
    assert [action.idAction for action in client.get_all_actions()] == [-1, *stored]
    resource.prlimit(service.pid, resource.RLIMIT_FSIZE, unlimited)
    assert_works(client, events)
    assert database.value("PRAGMA integrity_check") == "ok"
    summarize(f"file size limit reached after {len(stored)} records, 0 lost")


@pytest.mark.parametrize("trouble", [filled, read_only])
def test_a_start_that_cannot_write_fails_and_keeps_the_data_for_a_later_start(
    launch, start, client, full_disk, summarize, trouble
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
    summarize("1 start that could not write: refused, 0 records lost, the next start succeeded")


def test_after_a_first_start_on_a_full_disk_a_start_with_free_space_works(
    start, client, events, full_disk, summarize
):
    with filled(full_disk):
        service = start()
        assert client.add_action(CALL) == -3
        assert events.take() == []
        service.stop()
    start()
    assert_works(client, events)
    assert not list(full_disk.glob("*.unusable*"))
    summarize("1 first start on a full disk: no crash, the next start succeeded")


def test_a_read_only_database_can_be_read(start, client, events, full_disk, database, summarize):
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    database.insert(RESERVED_ACTION, CALL._replace(idAction=1))
    with read_only(full_disk):
        service = start()
        assert len(client.get_all_actions()) == 2
        assert_refuses_every_write(client, events, 1)
        service.stop()
    start()
    assert_works(client, events)
    summarize("1 start with a read-only database: 3 writes refused, the next start succeeded")


def test_without_a_data_directory_all_writes_fail_until_a_start_can_create_it(
    start, client, events, data_root, summarize
):
    data_root.parent.mkdir(parents=True)
    data_root.write_text("a file where a directory should be")
    service = start()
    assert client.add_action(CALL) == -3
    assert client.create_programmable_key(SET_KEY._replace(idAction=-1)) == -2
    assert client.get_all_actions() == []
    assert events.take() == []
    data_root.unlink()
    client.restore_default()
    assert client.add_action(CALL) == -3, "the service opened the database again"
    service.stop()
    start()
    assert_works(client, events)
    summarize("1 start without a directory: 2 writes refused, the next start succeeded")
