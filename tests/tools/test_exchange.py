"""`export` and `import` of keys and actions of users."""

import json
import signal
import subprocess
from pathlib import Path
from typing import Any, Callable

import pytest

from database import Database, failing
from progkeysctl import Tool, environment
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.client import Client
from sandbox.loop import LIMIT, wait_until
from sandbox.processes import Module
from sandbox.records import Action, Key

SCHEMA = "com.velmora.Tessaro.ProgrammableKeys.Export"
PROVISIONED = (
    "INSERT INTO ACTION (type, action, webAppName, arguments, label, shortLabel, dmId) "
    "VALUES (3, 'call', '', '7', 'Desk', 'D', '{0}')"
)


def document(actions: list[dict[str, Any]], keys: list[dict[str, Any]]) -> dict[str, Any]:
    return {"schema": SCHEMA, "version": 1, "actions": actions, "keys": keys}


@pytest.fixture
def import_file(ctl: Tool, tmp_path: Path) -> Callable[..., Any]:
    """Imports a document. Returns the rows, or the result if the expected status is not 0."""
    file = tmp_path / "export.json"

    def run(content: Any, *words: str, status: int = 0) -> Any:
        file.write_text(content if isinstance(content, str) else json.dumps(content), encoding="utf-8")
        result = ctl("import", "--json=short", *words, file)
        assert result.status == status, result.err
        return result if status else result.json

    return run


def without_ids(actions: list[Action], keys: list[Key]) -> tuple[list[Action], list[Key]]:
    """The rows without ids. Keys have their actions instead of the ids of their actions."""
    by_id = {action.idAction: action for action in actions}
    return (
        [action._replace(idAction=0) for action in actions],
        [key._replace(idKey=0, idAction=by_id[key.idAction]._replace(idAction=0)) for key in keys],
    )


def add_rows(client: Client, database: Database) -> None:
    """Adds rows with gaps between their ids, equal rows, unusual texts, and keys of all actions."""
    database.execute(PROVISIONED.format("D1"))
    for label in ("one", "two", "three", "two", "\u202eodd \"\\,#\n\U0001f4de"):
        client.add_action(CALL._replace(label=label))
    client.delete_action(3)
    for place, id_action in enumerate((2, 4, 5, 5, 6, 1, -1)):
        client.create_programmable_key(SET_KEY._replace(idAction=id_action, position=place))
        client.create_programmable_key(MODULE_KEY._replace(idAction=id_action, position=place))
    client.create_programmable_key(SET_KEY._replace(idAction=2, position=0))
    client.create_programmable_key(SET_KEY._replace(idAction=1, position=40, dmId="D1"))
    client.delete_programmable_key(1)


def test_an_import_restores_the_exported_rows(
    ctl: Tool, client: Client, phone: Module, database: Database, tmp_path: Path
) -> None:
    add_rows(client, database)
    before = without_ids(client.get_all_actions(), [key for key in client.get_all_programmable_keys() if not key.dmId])
    file = tmp_path / "export.json"
    assert ctl("export", "-o", file).out == ""
    assert json.loads(file.read_text(encoding="utf-8")) == ctl("export").json

    assert ctl("restore", "default", "--yes").status == 0
    database.execute(*(PROVISIONED.format(f"D{number}") for number in (9, 1)))
    rows = ctl.json("import", file)
    assert {row["outcome"] for row in rows} == {"done"}

    actions = client.get_all_actions()
    other = next(action for action in actions if action.dmId == "D9")
    after = without_ids([action for action in actions if action != other], client.get_all_programmable_keys())
    assert sorted(after[0]) == sorted(before[0])
    assert after[1] == before[1]

    again = ctl("import", file)
    assert again.lines[0].split() == ["step", "what", "fileId", "id", "content", "outcome", "reason"]
    assert again.lines[-1] == f"0 added, 0 changed, {len(rows)} skipped"
    assert client.get_all_actions() == actions


def test_only_rows_of_users_are_exported(ctl: Tool, client: Client, phone: Module, database: Database) -> None:
    add_rows(client, database)
    exported = ctl("export", "--json=short")
    assert len(exported.lines) == 1
    rows = exported.json
    assert (rows["schema"], rows["version"]) == (SCHEMA, 1)
    assert [action["idAction"] for action in rows["actions"]] == [2, 4, 5, 6]
    assert {key.get("actionDmId") for key in rows["keys"] if "idAction" not in key} == {"D1"}
    assert all("dmId" not in row for row in rows["actions"] + rows["keys"])
    assert 40 not in {key["position"] for key in rows["keys"]}


def test_selected_keys_are_exported_with_their_actions(ctl: Tool, client: Client, phone: Module, database: Database) -> None:
    add_rows(client, database)
    client.create_programmable_key(SET_KEY._replace(idAction=5, container="other"))
    rows = ctl("export", "--container", "other").json
    assert ([action["idAction"] for action in rows["actions"]], len(rows["keys"])) == ([5], 1)
    on_module = ctl("export", "--module", MODULE_KEY.aom_addr).json
    assert {key["type"] for key in on_module["keys"]} == {1}
    assert ctl("export", "--module", 99).json == document([], [])


def test_a_dry_run_shows_what_the_import_does(import_file, client: Client, phone: Module, database: Database) -> None:
    database.execute(PROVISIONED.format("D1"))
    client.add_action(CALL)
    client.create_programmable_key(SET_KEY._replace(idAction=2, position=1))
    client.create_programmable_key(SET_KEY._replace(idAction=2, position=2))
    client.create_programmable_key(SET_KEY._replace(idAction=1, position=3, dmId="D1"))
    before = (client.get_all_actions(), client.get_all_programmable_keys())
    same = CALL._asdict() | {"idAction": 70}
    new = same | {"idAction": 71, "label": "New"}
    key = SET_KEY._asdict() | {"idKey": 1}
    content = document(
        [same, new],
        [
            key | {"idKey": 81, "idAction": 70, "position": 1},
            key | {"idKey": 82, "idAction": 71, "position": 2},
            key | {"idKey": 83, "idAction": 71, "position": 3},
            key | {"idKey": 84, "idAction": 71, "position": 4},
            key | {"idKey": 85, "idAction": -1, "position": 5},
            {name: value for name, value in key.items() if name != "idAction"} | {"idKey": 86, "actionDmId": "D1", "position": 6},
            {name: value for name, value in key.items() if name != "idAction"} | {"idKey": 87, "actionDmId": "D7", "position": 7},
        ],
    )
    expected = [
        ("skip", "action", 70, 2, "already exists as action 2"),
        ("add", "action", 71, None, ""),
        ("skip", "key", 81, 1, "already exists as key 1"),
        ("change", "key", 82, 2, ""),
        ("skip", "key", 83, None, "provisioned key 3 occupies the place"),
        ("add", "key", 84, None, ""),
        ("add", "key", 85, None, ""),
        ("add", "key", 86, None, ""),
        ("skip", "key", 87, None, 'there is no provisioned action "D7"'),
    ]
    rows = import_file(content, "--dry-run")
    assert [(row["step"], row["what"], row["fileId"], row["id"], row["reason"]) for row in rows] == expected
    assert {row["outcome"] for row in rows if row["step"] != "skip"} == {"planned"}
    assert (client.get_all_actions(), client.get_all_programmable_keys()) == before

    done = import_file(content)
    assert [(row["step"], row["fileId"]) for row in done] == [(step, file_id) for step, _, file_id, _, _ in expected]
    assert {row["outcome"] for row in done if row["step"] != "skip"} == {"done"}
    assert client.get_action(3) == [Action(**(new | {"idAction": 3}))]
    keys = {each.idKey: each for each in client.get_all_programmable_keys()}
    assert keys[2] == SET_KEY._replace(idKey=2, idAction=3, position=2)
    assert [(keys[number].position, keys[number].idAction) for number in (4, 5, 6)] == [(4, 3), (5, -1), (6, 1)]
    assert keys[3] == before[1][2]
    assert len(keys) == 6


def test_an_import_beyond_the_key_limit_changes_nothing(
    import_file, client: Client, phone: Module, settings_dir: Path
) -> None:
    (settings_dir / "ProgKeysMax").write_text("1\n", encoding="utf-8")
    key = SET_KEY._asdict() | {"idAction": -1}
    refused = import_file(document([], [key | {"position": 1}, key | {"position": 2}]), status=1)
    assert "Nothing was imported: the phone would have 2 keys on the set, and the limit ProgKeysMax is 1" in refused.err
    assert client.get_all_programmable_keys() == []
    assert len(import_file(document([], [key | {"position": 1}]))) == 1


def test_a_failed_import_shows_the_outcome_of_each_step(import_file, client: Client, phone: Module, database: Database) -> None:
    database.execute(failing("INSERT", "KEY", "NEW.position = 2").trigger)
    key = SET_KEY._asdict() | {"idAction": 5}
    content = document(
        [CALL._asdict() | {"idAction": 5}], [key | {"idKey": place, "position": place} for place in (1, 2, 3)]
    )
    failed = import_file(content, status=1)
    assert [(row["fileId"], row["outcome"], row["id"]) for row in failed.json] == [
        (5, "done", 1),
        (1, "done", 1),
        (2, "failed", None),
        (3, "not done", None),
    ]
    assert "The service refused key 2 of the file (-2): the row or its action no longer exists, or the database could not be written" in failed.err
    assert len(client.get_all_programmable_keys()) == 1

    database.execute("DROP TRIGGER fault")
    rows = import_file(content)
    assert [row["outcome"] for row in rows] == ["skipped", "skipped", "done", "done"]
    assert [each.position for each in client.get_all_programmable_keys()] == [1, 2, 3]


def test_the_outcome_of_a_call_without_a_reply_is_unknown(import_file, client: Client, phone: Module, database: Database) -> None:
    """The lock lasts longer than the timeout of the tool, but not than that of the service."""
    with database.locked():
        failed = import_file(document([CALL._asdict() | {"idAction": 5}], []), "--timeout", "0.5", status=3)
    assert [row["outcome"] for row in failed.json] == ["unknown"]


def test_the_outcome_is_unknown_if_the_bus_disconnects(ctl: Tool, client: Client, phone: Module) -> None:
    """The bus disconnects a client that sends a message beyond the size limit."""
    large = CALL._asdict() | {"idAction": 1, "arguments": "x" * 34_000_000}
    lost = ctl("import", "--json=short", "--fields", "outcome", "-", stdin=json.dumps(document([large], [])))
    assert (lost.status, lost.json) == (1, [{"outcome": "unknown"}])
    assert "The connection to the system bus at" in lost.err


@pytest.fixture
def many(tmp_path: Path) -> Path:
    """An export with 900 keys, whose import takes some time."""
    key = SET_KEY._asdict() | {"idAction": -1}
    file = tmp_path / "many.json"
    file.write_text(json.dumps(document([], [key | {"idKey": place, "position": place} for place in range(900)])), encoding="utf-8")
    return file


def outcomes(out: str) -> list[str]:
    """The different outcomes in order."""
    return list(dict.fromkeys(row["outcome"] for row in json.loads(out)))


def test_an_interrupted_import_shows_the_outcome_of_each_step(ctl: Tool, client: Client, phone: Module, many: Path) -> None:
    importing = ctl.start("import", "--json=short", many)
    wait_until(client.get_all_programmable_keys, "the first key is stored")
    importing.send_signal(signal.SIGINT)
    out, err = importing.communicate(timeout=LIMIT)
    done = [row for row in json.loads(out) if row["outcome"] == "done"]
    stored = client.get_all_programmable_keys()
    assert importing.returncode == 1
    assert "The import was interrupted" in err
    assert outcomes(out) == ["done", "not done"]
    assert [(row["id"], row["fileId"]) for row in done] == [(each.idKey, each.position) for each in stored]


def test_ignored_signals_do_not_interrupt(ctl: Tool, client: Client, phone: Module, many: Path) -> None:
    """nohup makes the tool ignore SIGHUP."""
    process = subprocess.Popen(
        ["nohup", *ctl.command("import", "--json=short", many)],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        encoding="utf-8", env=environment(ctl.address, {}),
    )  # fmt: skip
    wait_until(client.get_all_programmable_keys, "the first key is stored")
    process.send_signal(signal.SIGHUP)
    out, _ = process.communicate(timeout=LIMIT)
    assert (process.returncode, outcomes(out)) == (0, ["done"])


def test_an_import_that_reaches_the_key_limit_reports_it(ctl: Tool, client: Client, phone: Module, settings_dir: Path, many: Path) -> None:
    importing = ctl.start("import", "--json=short", many)
    wait_until(client.get_all_programmable_keys, "the first key is stored")
    (settings_dir / "ProgKeysMax").write_text("1\n", encoding="utf-8")
    out, err = importing.communicate(timeout=LIMIT)
    assert (importing.returncode, outcomes(out)) == (1, ["done", "failed", "not done"])
    assert "the key limit ProgKeysMax is reached" in err


ACTION = {"idAction": 1, "type": 1, "action": ""}
KEY = {"type": 0, "position": 1, "idAction": -1}


@pytest.mark.parametrize(
    ("content", "message"),
    [
        ("", "is not valid JSON: line 1, column 1: "),
        ('{"schema":\n"ü" x', "is not valid JSON: line 2, column 6: "),
        ("[1, 2]", f"does not have the schema {SCHEMA}."),
        (document([], []) | {"version": 2}, "does not have version 1"),
        (document([], []) | {"color": 1}, 'unknown member "color"'),
        ({"schema": SCHEMA, "version": 1, "actions": []}, 'the member "keys" is missing'),
        (document([], []) | {"keys": {}}, '"keys" is not an array'),
        (document([1], []), "actions[0]: not an object"),  # type: ignore[list-item]
        (document([{"idAction": 1, "type": 1}], []), "actions[0]: the field action is missing"),
        (document([ACTION | {"type": "1"}], []), "actions[0]: the field type "),
        (document([ACTION | {"dmId": "D1"}], []), "actions[0]: the dmId is not empty"),
        (document([ACTION | {"idAction": -1}], []), "actions[0]: the idAction -1 is reserved"),
        (document([ACTION, ACTION], []), "actions[1]: the id 1 is used twice"),
        (document([], [{"type": 0, "position": 1}]), "keys[0]: exactly one of idAction and actionDmId is required"),
        (document([], [KEY | {"actionDmId": "D1"}]), "keys[0]: exactly one of idAction and actionDmId is required"),
        (document([], [{"type": 0, "position": 1, "actionDmId": ""}]), "keys[0]: actionDmId must be a non-empty string"),
        (document([ACTION], [KEY, KEY | {"idAction": 99}]), "keys[1]: the file does not contain action 99"),
        (document([], [{"type": 0, "idAction": -1}]), "keys[0]: the field position is missing"),
        (document([], [KEY | {"color": 1}]), "keys[0]: "),
    ],
)
def test_an_invalid_file_is_refused(import_file, client: Client, phone: Module, content: Any, message: str) -> None:
    refused = import_file(content, status=4)
    assert message in refused.err
    assert refused.out == ""
    assert (len(client.get_all_actions()), client.get_all_programmable_keys()) == (1, [])


def test_table_options_do_not_apply_to_an_export(ctl: Tool, phone: Module) -> None:
    for words in (["--terse"], ["--fields=keys"]):
        refused = ctl("export", *words)
        assert (refused.status, refused.out) == (2, "")
        assert "--terse and --fields do not apply" in refused.err


def test_a_missing_file_is_reported(ctl: Tool, phone: Module, tmp_path: Path) -> None:
    result = ctl("import", tmp_path / "none.json")
    assert result.status == 1
    assert "none.json" in result.err


def test_an_export_can_be_piped(ctl: Tool, client: Client, phone: Module) -> None:
    client.add_action(CALL)
    text = ctl("export").out
    client.delete_action(1)
    assert ctl("import", "-", stdin=text).status == 0
    assert client.get_action(2) == [CALL._replace(idAction=2)]
