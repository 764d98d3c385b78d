"""A supervisor that starts the service again and again while its storage is in trouble."""

from pathlib import Path

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION
from mounts import memory_file_system
from samples import CALL, SET_KEY
from sandbox.loop import wait_until
from sandbox.names import LIFECYCLE, SERVICE

STARTS = 4
STATEMENT_OF_THE_LOCK = "Error: DROP TABLE IF EXISTS KEY "


def without_roots_privilege(directory: Path, bin_dir: Path) -> Path:
    """A directory of executables whose service has no leave to write where nobody has."""
    directory.mkdir()
    script = directory / "zelprogrammablekeys"
    privileges = "-dac_override,-dac_read_search"
    script.write_text(
        "#!/bin/sh\n"
        f"exec setpriv --bounding-set={privileges} --inh-caps={privileges} "
        f"{bin_dir}/zelprogrammablekeys\n"
    )
    script.chmod(0o755)
    return directory


@pytest.fixture
def refused(launch):
    """Starts the service over and over; each start must be refused with one reason."""

    def start_again_and_again(reason: str, **options: object) -> None:
        for _ in range(STARTS):
            service = launch(**options)
            assert service.wait_for_exit() == 1
            assert reason in service.log.texts("error")[-1]

    return start_again_and_again


def names_in(directory: Path) -> list[str]:
    return sorted(path.name for path in directory.iterdir())


def test_damaged_data_that_cannot_be_set_aside_is_copied_once_and_not_at_each_start(
    refused, settings, data_root, database, figures
):
    with memory_file_system(database.path.parent, 1 << 20):
        database.path.write_bytes(b"garbage " * 1000)
        refused("could not be set aside")
        assert names_in(data_root) == [SERVICE, f"{SERVICE}.before-deploy"]
    figures(f"{STARTS} starts on damaged data in a mount point: 1 copy")


def test_sound_data_in_a_directory_that_cannot_be_written_is_left_alone(
    refused, start, client, bin_dir, data_root, database, tmp_path, figures
):
    first = start()
    stored = CALL._replace(idAction=client.add_action(CALL))
    first.stop()
    database.path.parent.chmod(0o555)
    refused("cannot be written", bin_dir=without_roots_privilege(tmp_path / "bin", bin_dir))
    assert names_in(data_root) == [SERVICE]
    database.path.parent.chmod(0o755)
    start()
    assert client.get_all_actions() == [RESERVED_ACTION, stored]
    figures(f"{STARTS} starts on a directory that cannot be written: nothing aside, 0 rows lost")


def test_a_reader_that_stays_for_the_whole_start_does_not_make_writes_less_durable(
    start, client, database, figures
):
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    journal = database.path.with_name(f"{database.path.name}-journal")
    with database.kept_open() as other:
        other.execute("BEGIN")
        other.execute("SELECT * FROM ACTION").fetchall()
        service = start()
        other.execute("ROLLBACK")
    assert client.add_action(CALL) == 1
    # Kept, and not unlinked, which a power cut could undo.
    assert journal.is_file()
    service.stop()
    start()
    assert database.value("PRAGMA journal_mode") == "wal"
    figures("1 start beside a reader: a journal that is kept, and the log after the next start")


def test_a_reset_that_meets_a_lock_leaves_everything_as_it_was_also_when_the_lock_goes(
    service, client, database, figures
):
    id_action = client.add_action(CALL)
    id_key = client.create_programmable_key(SET_KEY._replace(idAction=id_action))
    with database.locked():
        reply = client.send("restoreDefault", interface=LIFECYCLE)
        wait_until(
            lambda: any(
                line.startswith(STATEMENT_OF_THE_LOCK) for line in service.log.texts("error")
            ),
            "the first statement gives up",
        )
    reply.wait()
    assert [action.idAction for action in client.get_all_actions()] == [-1, id_action]
    assert [key.idKey for key in client.get_all_programmable_keys()] == [id_key]
    client.restore_default()
    assert client.get_all_actions() == [RESERVED_ACTION]
    figures("1 reset during which a lock went: undone as a whole, and the next one done")
