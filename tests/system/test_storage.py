"""The database file: its place, schema, check, ids and durability."""

from pathlib import Path

import pytest

from database import ACTION_SCHEMA, KEY_SCHEMA, RESERVED_ACTION
from samples import CALL, SET_KEY
from sandbox.loop import wait_until
from sandbox.names import LIFECYCLE, SERVICE

KEY_COLUMNS = [
    "idKey",
    "container",
    "idAction",
    "position",
    "icon",
    "type",
    "aom_type",
    "aom_addr",
    "dmId",
]
ACTION_COLUMNS = [
    "idAction",
    "type",
    "action",
    "webAppName",
    "arguments",
    "label",
    "shortLabel",
    "dmId",
]

KEY_CHECK_FAILS = "Table Key is not correct. Check fails"
ACTION_CHECK_FAILS = "Table Action is not correct. Check fails"
CHECK_FAILURES = [KEY_CHECK_FAILS, ACTION_CHECK_FAILS]
DEPLOYING = "ZelProgrammableKeys deploying..."


def without(columns, missing):
    return ", ".join(column for column in columns if column != missing)


def check_failures(service):
    return [text for text in service.log.texts("info") if text in CHECK_FAILURES]


# Place and schema


def test_the_first_use_makes_the_whole_path(start, data_root, database):
    assert not data_root.parent.exists()
    service = start()
    assert database.path == data_root / "ZelProgrammableKeys" / "zelprogrammablekeys.data"
    assert database.path.is_file()
    assert f"Connecting to database at {database.path}..." in service.log.texts("debug")


def test_the_tables_have_exactly_their_schema(service, database):
    assert database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}


def test_a_reset_leaves_the_reserved_action_no_key_and_the_same_schema(service, client, database):
    client.create_programmable_key(SET_KEY._replace(idAction=client.add_action(CALL)))
    client.restore_default()
    assert database.actions() == [RESERVED_ACTION]
    assert database.keys() == []
    assert database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}


def test_a_reset_that_cannot_drop_a_table_says_so_and_goes_on(service, client, database):
    view = "CREATE VIEW KEY AS SELECT 1 AS idKey"
    database.execute("DROP TABLE KEY", view, "INSERT INTO ACTION (label) VALUES ('old')")
    client.restore_default()
    line = service.log.texts("error")[0]
    assert line.startswith("Error: DROP TABLE IF EXISTS KEY ")
    assert "DROP VIEW" in line
    assert database.actions() == [RESERVED_ACTION]


# The check


@pytest.mark.parametrize("missing", KEY_COLUMNS)
def test_a_key_table_that_lacks_a_column_fails_the_check_without_a_look_at_the_action_table(
    start, database, missing
):
    database.create(
        f"CREATE TABLE KEY ({without(KEY_COLUMNS, missing)})", "CREATE TABLE ACTION (unrelated)"
    )
    service = start()
    assert check_failures(service) == [KEY_CHECK_FAILS]
    assert DEPLOYING in service.log.texts()
    assert service.log.texts("error") == []
    assert database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}


@pytest.mark.parametrize("missing", ACTION_COLUMNS)
def test_an_action_table_that_lacks_a_column_fails_the_check(start, database, missing):
    database.create(KEY_SCHEMA, f"CREATE TABLE ACTION ({without(ACTION_COLUMNS, missing)})")
    service = start()
    assert check_failures(service) == [ACTION_CHECK_FAILS]
    assert DEPLOYING in service.log.texts()
    assert database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}


@pytest.mark.parametrize(
    "present, failure",
    [(ACTION_SCHEMA, KEY_CHECK_FAILS), (KEY_SCHEMA, ACTION_CHECK_FAILS)],
    ids=["no key table", "no action table"],
)
def test_a_missing_table_fails_the_check(start, database, present, failure):
    database.create(present)
    service = start()
    assert check_failures(service) == [failure]
    assert database.schema() == {"KEY": KEY_SCHEMA, "ACTION": ACTION_SCHEMA}


@pytest.mark.parametrize(
    "tables",
    [
        (KEY_SCHEMA, ACTION_SCHEMA),
        (
            f"CREATE TABLE key ({', '.join(reversed(KEY_COLUMNS))}, more)",
            f"CREATE TABLE action ({', '.join(ACTION_COLUMNS)}, more)",
        ),
    ],
    ids=["empty tables", "more columns in another order"],
)
def test_tables_that_answer_their_probe_pass_the_check_and_stay_as_they_are(
    start, database, tables
):
    database.create(*tables)
    before = database.schema()
    service = start()
    assert check_failures(service) == []
    assert DEPLOYING not in service.log.texts()
    assert database.schema() == before
    assert database.actions() == []


def test_columns_are_found_by_name_whatever_their_order_in_the_table(start, client, database):
    database.create(f"CREATE TABLE KEY ({', '.join(reversed(KEY_COLUMNS))})", ACTION_SCHEMA)
    start()
    key = SET_KEY._replace(idKey=3, dmId="dm", idAction=7, type=5)
    database.insert(key)
    assert client.get_all_programmable_keys() == [key]
    assert client.get_programmable_key(3) == [key]
    assert client.get_programmable_keys_by_container("main") == [key]


# Ids


def test_ids_of_both_tables_begin_at_1_also_after_a_reset(service, client):
    for _round in range(2):
        assert [client.add_action(CALL) for _ in range(3)] == [1, 2, 3]
        assert [
            client.create_programmable_key(SET_KEY._replace(idAction=1)) for _ in range(3)
        ] == [1, 2, 3]
        client.restore_default()


def test_the_id_of_a_deleted_record_is_not_given_again(service, client):
    assert [client.add_action(CALL) for _ in range(3)] == [1, 2, 3]
    assert [client.create_programmable_key(SET_KEY._replace(idAction=1)) for _ in range(2)] == [
        1,
        2,
    ]
    assert client.delete_programmable_key(2) == 0
    assert client.delete_action(3) == 0
    assert client.create_programmable_key(SET_KEY._replace(idAction=1)) == 3
    assert client.add_action(CALL) == 4


def test_ids_go_on_after_a_restart(start, client):
    first = start()
    assert client.add_action(CALL) == 1
    assert client.add_action(CALL) == 2
    assert client.delete_action(2) == 0
    first.stop()
    start()
    assert client.add_action(CALL) == 3


# Durability and locks


def test_a_reader_that_stays_for_the_whole_start_does_not_make_writes_less_durable(
    start, client, database
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


def test_a_reset_that_meets_a_lock_leaves_everything_as_it_was_also_when_the_lock_goes(
    service, client, database
):
    id_action = client.add_action(CALL)
    id_key = client.create_programmable_key(SET_KEY._replace(idAction=id_action))
    with database.locked():
        reply = client.send("restoreDefault", interface=LIFECYCLE)
        wait_until(
            lambda: any(
                line.startswith("Error: DROP TABLE IF EXISTS KEY ") for line in service.log.texts("error")
            ),
            "the first statement gives up",
        )
    reply.wait()
    assert [action.idAction for action in client.get_all_actions()] == [-1, id_action]
    assert [key.idKey for key in client.get_all_programmable_keys()] == [id_key]
    client.restore_default()
    assert client.get_all_actions() == [RESERVED_ACTION]


def test_a_merge_beside_another_process_that_reads_is_complete_and_logs_no_error(
    service, client, database, settings
):
    settings.values["DefaultActions"] = "D1,1,call,,501,Reception,Rec"
    settings.values["DefaultKeys"] = "D1,main,0,bell,0,0,0"
    with database.kept_open() as other:
        other.execute("BEGIN")
        other.execute("SELECT * FROM ACTION").fetchall()
        client.restore_default()
        assert [action.dmId for action in client.get_all_actions()] == ["", "D1"]
        assert [key.dmId for key in client.get_all_programmable_keys()] == ["D1"]
        assert service.log.texts("error") == []


def test_the_database_keeps_a_write_ahead_log(service, database):
    assert database.value("PRAGMA journal_mode") == "wal"


def test_what_was_answered_survives_a_killed_process(start, client, database):
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
        # The first column would tell of a reader or writer that lingers.
        assert database.rows("PRAGMA wal_checkpoint(TRUNCATE)") == [
            (0, 0, 0)
        ], f"after operation {number}"


def test_a_store_that_cannot_be_opened_is_not_told_of_and_the_service_goes_on(
    start, client, tmp_path
):
    in_the_way = tmp_path / "in-the-way"
    in_the_way.write_text("a file where a directory should be")
    service = start(data_root=in_the_way)
    opening = service.log.texts()
    connecting = opening.index(
        f"Connecting to database at {in_the_way / SERVICE / 'zelprogrammablekeys.data'}..."
    )
    until_the_check = opening[connecting + 1 : opening.index(KEY_CHECK_FAILS)]
    assert all(
        text.startswith("QSqlQuery::") for text in until_the_check
    ), "only the library may complain"
    service.log.take()
    assert client.get_all_actions() == []
    (line,) = service.log.take("error")
    assert line.startswith(
        "Error: SELECT idAction, type, action, webAppName, arguments, label, shortLabel, dmId "
    )
    assert client.add_action(CALL) == -3
    assert client.create_programmable_key(SET_KEY._replace(idAction=-1)) == -2
    assert client.change_programmable_keys_position({}) is True
    assert client.change_programmable_keys_position({1: 1}) is False


# A file system without shared memory


def without_shared_memory(directory: Path, bin_dir: Path, file: Path) -> Path:
    """A directory of executables whose service cannot map the file as flash file systems cannot."""
    directory.mkdir()
    script = directory / "zelprogrammablekeys"
    script.write_text(
        "#!/bin/sh\n"
        # A build that looks for leaks cannot do so while it is traced.
        "export ASAN_OPTIONS=detect_leaks=0\n"
        f"exec strace -D -f -o {directory}/trace -P {file} -P {file}-shm "
        f"-e trace=mmap -e inject=mmap:error=ENODEV {bin_dir}/zelprogrammablekeys\n"
    )
    script.chmod(0o755)
    return directory


@pytest.mark.parametrize("had_a_log", [False, True], ids=["from the first start", "moved there"])
def test_a_file_system_without_shared_memory_gets_a_journal_that_is_kept(
    start, client, bin_dir, database, tmp_path, had_a_log
):
    known = 0
    if had_a_log:
        first = start()
        known = client.add_action(CALL)
        first.kill()
    crippled = without_shared_memory(tmp_path / "bin", bin_dir, database.path)
    service = start(bin_dir=crippled)
    assert "(INJECTED)" in (crippled / "trace").read_text()
    assert service.log.texts("error") == []
    assert client.add_action(CALL) == known + 1
    assert len(client.get_all_actions()) == 2 + known
    suffixes = {path.suffix for path in database.path.parent.iterdir()}
    assert ".data-journal" in suffixes and ".data-wal" not in suffixes
    service.kill()
    start(bin_dir=crippled)
    assert len(client.get_all_actions()) == 2 + known
