"""The database file: path, schema, check, ids, durability and locks."""

from pathlib import Path

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION
from samples import CALL, SET_KEY
from sandbox.names import SERVICE
from wrapping import without_lock_wait, wrapped

KEY_COLUMNS = "idKey container idAction position icon type aom_type aom_addr dmId".split()
ACTION_COLUMNS = "idAction type action webAppName arguments label shortLabel dmId".split()

KEY_CHECK_FAILS = "Table Key is not correct. Check fails"
ACTION_CHECK_FAILS = "Table Action is not correct. Check fails"
DEPLOYING = "ZelProgrammableKeys deploying..."
SCHEMA = {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}


def without(columns, missing):
    return ", ".join(column for column in columns if column != missing)


def check_failures(service):
    failures = (KEY_CHECK_FAILS, ACTION_CHECK_FAILS)
    return [text for text in service.log.texts("info") if text in failures]


def traced(directory: Path, bin_dir: Path, options: str) -> Path:
    """Executables whose service runs under strace, which writes the file `trace` next to them."""
    strace = f"strace -D -f -o {directory}/trace"
    return wrapped(directory, bin_dir, strace, options)


# Path and schema


def test_the_first_start_creates_the_directory_and_the_tables(start, data_root, database):
    assert not data_root.parent.exists()
    service = start()
    assert database.path == data_root / "ZelProgrammableKeys" / "zelprogrammablekeys.data"
    assert f"Connecting to database at {database.path}..." in service.log.texts("debug")
    assert database.schema() == SCHEMA


def test_a_reset_leaves_only_the_reserved_action_and_the_same_schema(service, client, database):
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    client.restore_default()
    assert (database.actions(), database.keys()) == ([RESERVED_ACTION], [])
    assert database.schema() == SCHEMA


@pytest.mark.parametrize("table", ["KEY", "ACTION"])
def test_a_reset_that_cannot_drop_a_table_logs_an_error_and_resets_the_other_table(
    service, client, database, table
):
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    service.log.take()
    database.execute(f"DROP TABLE {table}", f"CREATE VIEW {table} AS SELECT 1 AS idKey")
    client.restore_default()
    line = service.log.take("error")[0]
    assert line.startswith(f"Error: DROP TABLE IF EXISTS {table} ")
    assert "DROP VIEW" in line
    if table == "KEY":
        assert database.actions() == [RESERVED_ACTION]
    else:
        assert database.keys() == []


# The check


@pytest.mark.parametrize("missing", KEY_COLUMNS)
def test_a_key_table_without_a_column_fails_the_check_and_the_actions_are_not_checked(
    start, database, missing
):
    database.create(
        f"CREATE TABLE KEY ({without(KEY_COLUMNS, missing)})", "CREATE TABLE ACTION (unrelated)"
    )
    service = start()
    assert check_failures(service) == [KEY_CHECK_FAILS]
    assert DEPLOYING in service.log.texts()
    assert service.log.texts("error") == []
    assert database.schema() == SCHEMA


@pytest.mark.parametrize("missing", ACTION_COLUMNS)
def test_an_action_table_without_a_column_fails_the_check(start, database, missing):
    database.create(KEY_SCHEMA, f"CREATE TABLE ACTION ({without(ACTION_COLUMNS, missing)})")
    service = start()
    assert check_failures(service) == [ACTION_CHECK_FAILS]
    assert DEPLOYING in service.log.texts()
    assert database.schema() == SCHEMA


@pytest.mark.parametrize(
    "present, failure",
    [(ACTION_SCHEMA, KEY_CHECK_FAILS), (KEY_SCHEMA, ACTION_CHECK_FAILS)],
    ids=["no key table", "no action table"],
)
def test_a_missing_table_fails_the_check(start, database, present, failure):
    database.create(present)
    service = start()
    assert check_failures(service) == [failure]
    assert database.schema() == SCHEMA


def test_tables_with_more_columns_in_another_order_pass_the_check_and_are_used(
    start, client, database
):
    database.create(
        f"CREATE TABLE key ({', '.join(reversed(KEY_COLUMNS))}, more)",
        f"CREATE TABLE action (more, {', '.join(reversed(ACTION_COLUMNS))})",
    )
    before = database.schema()
    action = CALL._replace(idAction=7)
    key = SET_KEY._replace(idKey=3, dmId="dm", idAction=7, type=5)
    database.insert(action)
    service = start()
    database.insert(key)
    assert check_failures(service) == []
    assert DEPLOYING not in service.log.texts()
    assert database.schema() == before
    assert client.get_all_actions() == client.get_action(7) == [action]
    assert client.get_all_programmable_keys() == client.get_programmable_key(3) == [key]
    assert client.get_programmable_keys_by_container("main") == [key]


# Ids


def test_ids_of_both_tables_start_at_1_even_after_a_reset(service, client):
    for _round in range(2):
        assert [client.add_action(CALL) for _ in range(2)] == [1, 2]
        key = SET_KEY._replace(idAction=1)
        assert [client.create_programmable_key(key) for _ in range(2)] == [1, 2]
        client.restore_default()


def test_the_id_of_a_deleted_record_is_not_reused_even_after_a_restart(start, client):
    first = start()
    assert [client.add_action(CALL) for _ in range(2)] == [1, 2]
    key = SET_KEY._replace(idAction=1)
    assert [client.create_programmable_key(key) for _ in range(2)] == [1, 2]
    assert client.delete_programmable_key(2) == 0
    assert client.delete_action(2) == 0
    first.stop()
    start()
    assert client.create_programmable_key(key) == 3
    assert client.add_action(CALL) == 3


# Durability and locks


def test_the_database_keeps_a_short_write_ahead_log(service, client, database):
    for _ in range(400):
        client.add_action(CALL)
    assert database.value("PRAGMA journal_mode") == "wal"
    log = database.path.with_name(f"{database.path.name}-wal")
    assert 0 < log.stat().st_size < 2**20


def check_that_a_write_is_synced(client, trace: Path) -> None:
    before = trace.read_text().count("sync(")
    assert client.add_action(CALL) > 0
    assert trace.read_text().count("sync(") > before


def test_a_write_is_synced_before_the_reply(start, client, tmp_path, bin_dir):
    bin_dir = traced(tmp_path / "bin", bin_dir, "-e trace=fsync,fdatasync")
    start(bin_dir=bin_dir)
    check_that_a_write_is_synced(client, bin_dir / "trace")


def test_acknowledged_writes_survive_a_killed_process(start, client, database):
    first = start()
    actions = [CALL._replace(idAction=client.add_action(CALL)) for _ in range(20)]
    key = SET_KEY._replace(idAction=7)
    key = key._replace(idKey=client.create_programmable_key(key))
    first.kill()
    start()
    assert client.get_all_actions() == [RESERVED_ACTION, *actions]
    assert client.get_all_programmable_keys() == [key]


def test_no_operation_leaves_a_lock_on_the_database(service, client, database):
    id_action = client.add_action(CALL)
    id_key = client.create_programmable_key(SET_KEY._replace(idAction=id_action))
    operations = [
        client.get_all_programmable_keys,
        client.get_all_actions,
        lambda: client.get_programmable_key(id_key),
        lambda: client.get_programmable_keys_by_container("main"),
        lambda: client.get_action(id_action),
        lambda: client.modify_action(CALL._replace(idAction=id_action, shortLabel="other")),
        lambda: client.modify_programmable_key(SET_KEY._replace(idKey=id_key, idAction=id_action)),
        lambda: client.change_programmable_keys_position({id_key: 8}),
        lambda: client.delete_programmable_key(id_key),
        lambda: client.delete_action(id_action),
    ]
    for number, operation in enumerate(operations):
        operation()
        # The first column is 1 if another connection reads or writes.
        result = database.rows("PRAGMA wal_checkpoint(TRUNCATE)")
        assert result == [(0, 0, 0)], f"after operation {number}"


def test_a_start_while_another_process_reads_uses_a_persistent_journal(
    start, client, database, tmp_path, bin_dir
):
    database.create(KEY_SCHEMA, ACTION_SCHEMA)
    journal = database.path.with_name(f"{database.path.name}-journal")
    with database.kept_open() as other:
        other.execute("BEGIN")
        other.execute("SELECT * FROM ACTION").fetchall()
        service = start(bin_dir=without_lock_wait(tmp_path / "bin", bin_dir))
        other.execute("ROLLBACK")
    assert client.add_action(CALL) == 1
    # SQLite's default journal is deleted after each write, and a power cut can undo the deletion.
    assert journal.is_file()
    service.stop()
    start()
    assert database.value("PRAGMA journal_mode") == "wal"


def test_a_reset_of_a_locked_database_changes_nothing(start, client, database, tmp_path, bin_dir):
    service = start(bin_dir=without_lock_wait(tmp_path / "bin", bin_dir))
    id_action = client.add_action(CALL)
    id_key = client.create_programmable_key(SET_KEY._replace(idAction=id_action))
    with database.locked():
        client.restore_default()
    assert service.log.texts("error")[0].startswith("Error: DROP TABLE IF EXISTS KEY ")
    assert [action.idAction for action in client.get_all_actions()] == [-1, id_action]
    assert [key.idKey for key in client.get_all_programmable_keys()] == [id_key]
    client.restore_default()
    assert client.get_all_actions() == [RESERVED_ACTION]


def test_a_merge_while_another_process_reads_succeeds(service, client, database, settings):
    settings.values["DefaultActions"] = "D1,1,call,,501,Reception,Rec"
    settings.values["DefaultKeys"] = "D1,main,0,bell,0,0,0"
    with database.kept_open() as other:
        other.execute("BEGIN")
        other.execute("SELECT * FROM ACTION").fetchall()
        client.restore_default()
        assert [action.dmId for action in client.get_all_actions()] == ["", "D1"]
        assert [key.dmId for key in client.get_all_programmable_keys()] == ["D1"]
        assert service.log.texts("error") == []


# Files that cannot be opened or shared


def test_a_file_that_cannot_be_opened_is_not_logged_and_not_opened_later(start, client, tmp_path):
    root = tmp_path / "root"
    root.write_text("a file where a directory is expected")
    service = start(data_root=root)
    texts = service.log.texts()
    path = root / SERVICE / "zelprogrammablekeys.data"
    connecting = texts.index(f"Connecting to database at {path}...")
    until_the_check = texts[connecting + 1 : texts.index(KEY_CHECK_FAILS)]
    assert all(text.startswith("QSqlQuery::") for text in until_the_check), "not only Qt's messages"
    service.log.take()
    root.unlink()
    path.parent.mkdir(parents=True)
    assert client.get_all_actions() == []
    (line,) = service.log.take("error")
    assert line.startswith(f"Error: SELECT {', '.join(ACTION_COLUMNS)} FROM ACTION ")
    assert client.add_action(CALL) == -3
    assert client.create_programmable_key(SET_KEY._replace(idAction=-1)) == -2
    assert client.change_programmable_keys_position({}) is True
    assert client.change_programmable_keys_position({1: 1}) is False
    assert not path.exists()


@pytest.mark.parametrize("had_a_log", [False, True], ids=["at the first start", "after a move"])
def test_a_file_system_without_shared_memory_uses_a_persistent_journal(
    start, client, bin_dir, database, tmp_path, had_a_log
):
    known = 0
    if had_a_log:
        first = start()
        known = client.add_action(CALL)
        first.kill()
    files = f"-P {database.path} -P {database.path}-shm"
    injection = "-e trace=mmap,fsync,fdatasync -e inject=mmap:error=ENODEV"
    without_mmap = traced(tmp_path / "bin", bin_dir, f"{files} {injection}")
    service = start(bin_dir=without_mmap)
    assert "(INJECTED)" in (without_mmap / "trace").read_text()
    assert service.log.texts("error") == []
    check_that_a_write_is_synced(client, without_mmap / "trace")
    assert len(client.get_all_actions()) == 2 + known
    suffixes = {path.suffix for path in database.path.parent.iterdir()}
    assert ".data-journal" in suffixes and ".data-wal" not in suffixes
    service.kill()
    start(bin_dir=without_mmap)
    assert len(client.get_all_actions()) == 2 + known
