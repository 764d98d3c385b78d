"""Starts that fail, and the data after a failed check."""

import shutil

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION, Database
from samples import CALL
from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.loop import wait_until
from sandbox.names import SERVICE, bus_name
from wrapping import without_lock_wait

DAMAGED_KEY_SCHEMA = KEY_SCHEMA.replace("icon      VARCHAR,", "")


@pytest.fixture
def other_peer(bus):
    """Another peer on the bus that can claim the service's name."""
    client = Client(bus.address, "Other")
    yield client
    client.close()


# The name and the data


def test_a_second_process_logs_that_the_name_is_taken_ends_with_status_1_and_uses_no_data(
    service, launch, client, tmp_path
):
    untouched = tmp_path / "untouched"
    second = launch(data_root=untouched)
    assert second.wait_for_exit() == 1
    (line,) = second.log.texts("error")
    assert bus_name(SERVICE) in line
    assert not untouched.exists()
    assert "ZelProgrammableKeys checking..." not in second.log.texts()
    assert client.add_action(CALL) == 1


def test_a_start_ends_with_status_1_if_another_peer_claims_the_name_meanwhile(
    launch, settings, other_peer
):
    settings.hang()
    process = launch()
    settings.wait_for_calls(1)
    other_peer.connection.request_name(bus_name(SERVICE))
    settings.release()
    assert process.wait_for_exit() == 1
    assert bus_name(SERVICE) in process.log.texts("error")[-1]


def test_a_second_process_ends_with_status_1_while_the_first_one_starts(
    launch, client, settings, data_root
):
    settings.hang()
    first = launch()
    settings.wait_for_calls(1)
    second = launch()
    assert_refused_because_data_is_in_use(second, data_root)
    settings.release()
    settings.answer_from_values()
    first.wait_until_ready(client)
    first.stop()


def assert_refused_because_data_is_in_use(process, data_root):
    assert process.wait_for_exit() == 1
    (line,) = process.log.texts("error")
    assert f"Another process uses the data in {data_root / SERVICE}" in line
    assert "ZelProgrammableKeys checking..." not in process.log.texts()


def test_a_second_process_on_another_bus_does_not_use_the_same_data(service, launch, data_root):
    with PrivateBus() as other:
        assert_refused_because_data_is_in_use(launch(address=other.address), data_root)


def test_one_of_several_simultaneous_starts_succeeds_with_intact_data(
    launch, client, settings, database
):
    database.path.parent.mkdir(parents=True)
    settings.hang()
    processes = [launch() for _ in range(4)]
    wait_until(lambda: sum(process.running for process in processes) == 1, "three give up")
    (first,) = [process for process in processes if process.running]
    settings.release()
    settings.answer_from_values()
    first.wait_until_ready(client)
    for process in processes:
        if process is not first:
            assert_refused_because_data_is_in_use(process, database.path.parent.parent)
    assert database.actions() == client.get_all_actions() == [RESERVED_ACTION]
    first.stop()


def test_a_killed_process_leaves_no_lock(service, start, client):
    client.add_action(CALL)
    service.kill()
    start()
    assert len(client.get_all_actions()) == 2


# The bus


def test_a_start_without_a_bus_logs_an_error_ends_with_status_1_and_uses_no_data(
    launch, tmp_path, data_root
):
    process = launch(address=f"unix:path={tmp_path}/nobody")
    assert process.wait_for_exit() == 1
    (line,) = process.log.texts("error")
    assert "bus" in line.lower()
    assert not data_root.exists()


# Backups before a deployment


def test_data_that_fails_the_check_is_backed_up_before_deploy(
    start, database, data_root
):
    database.create(
        DAMAGED_KEY_SCHEMA, ACTION_SCHEMA, "INSERT INTO KEY (container, dmId) VALUES ('old', '')"
    )
    service = start()
    backup = data_root / f"{SERVICE}.before-deploy"
    assert sorted(path.name for path in data_root.iterdir()) == [SERVICE, backup.name]
    assert Database(backup / database.path.name).rows("SELECT idKey, container FROM KEY") == [
        (1, "old")
    ]
    assert any(str(backup) in text for text in service.log.texts())
    assert database.keys() == []


def test_each_failed_check_makes_a_backup_with_a_new_name(start, database, data_root):
    backups = [data_root / f"{SERVICE}.before-deploy{suffix}" for suffix in ("", ".1", ".2")]
    for number in range(len(backups)):
        if number == 0:
            database.create(DAMAGED_KEY_SCHEMA, ACTION_SCHEMA)
        else:
            database.execute("DROP TABLE KEY", DAMAGED_KEY_SCHEMA)
        database.execute(f"INSERT INTO KEY (container) VALUES ('round {number}')")
        service = start()
        service.stop()
    found = [
        Database(backup / database.path.name).rows("SELECT container FROM KEY")
        for backup in backups
    ]
    assert found == [[("round 0",)], [("round 1",)], [("round 2",)]]
    assert sorted(path.name for path in data_root.iterdir()) == [
        SERVICE,
        *(backup.name for backup in backups),
    ]


def test_a_file_that_is_not_a_database_is_set_aside_and_the_next_start_creates_a_new_one(
    launch, start, client, database, data_root
):
    garbage = b"not a database at all " * 500
    database.path.parent.mkdir(parents=True)
    database.path.write_bytes(garbage)
    first = launch()
    assert first.wait_for_exit() == 1
    aside = data_root / f"{SERVICE}.unusable"
    assert str(aside) in first.log.texts("error")[-1]
    for directory in (aside, data_root / f"{SERVICE}.before-deploy"):
        assert (directory / database.path.name).read_bytes() == garbage
    second = start()
    assert second.log.texts("error") == []
    assert client.get_all_actions() == [RESERVED_ACTION]


def test_a_database_that_another_program_keeps_locked_is_not_changed(
    launch, start, client, database, data_root, bin_dir, tmp_path
):
    first = start()
    stored = CALL._replace(idAction=client.add_action(CALL))
    first.stop()
    with database.kept_open() as other:
        other.execute("PRAGMA locking_mode=EXCLUSIVE")
        other.execute("BEGIN EXCLUSIVE")
        refused = launch(bin_dir=without_lock_wait(tmp_path / "bin", bin_dir))
        assert refused.wait_for_exit() == 1
        other.execute("ROLLBACK")
    assert "had it locked" in refused.log.texts("error")[-1]
    assert "ZelProgrammableKeys deploying..." not in refused.log.texts()
    assert [path.name for path in data_root.iterdir()] == [SERVICE]
    start()
    assert client.get_all_actions() == [RESERVED_ACTION, stored]


def test_a_backup_contains_rows_that_are_only_in_the_write_ahead_log(
    start, client, database, tmp_path
):
    first = start()
    id_action = client.add_action(CALL)
    moved = tmp_path / "moved"
    first.kill()
    with database.kept_open() as connection:
        connection.execute("ALTER TABLE KEY RENAME COLUMN icon TO picture")
        shutil.copytree(database.path.parent, moved / SERVICE)
    assert (moved / SERVICE / f"{database.path.name}-wal").stat().st_size > 0
    start(data_root=moved)
    backup = Database(moved / f"{SERVICE}.before-deploy" / database.path.name)
    assert backup.actions() == [RESERVED_ACTION, CALL._replace(idAction=id_action)]


def test_writes_after_a_backup_survive_a_kill_even_if_another_program_opened_the_file(
    start, client, database
):
    database.create(DAMAGED_KEY_SCHEMA, ACTION_SCHEMA, "INSERT INTO KEY (container) VALUES ('old')")
    service = start()
    client.add_action(CALL)
    assert len(database.actions()) == 2  # another program opens and closes the file
    client.add_action(CALL)
    service.kill()
    start()
    assert [action.idAction for action in client.get_all_actions()] == [-1, 1, 2]
