"""The commands `key` and `action`."""

import re

import pytest

from database import Database, failing
from progkeysctl import Tool
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.client import Client
from sandbox.processes import Module
from sandbox.records import Action, Key

pytestmark = pytest.mark.usefixtures("phone")

PROVISIONED = "INSERT INTO ACTION (type, action, webAppName, arguments, label, shortLabel, dmId) VALUES (3, 'call', '', '7', 'Desk', 'D', 'D1')"


@pytest.fixture
def action(client: Client, phone: Module) -> Action:
    return CALL._replace(idAction=client.add_action(CALL))


@pytest.fixture
def key(client: Client, action: Action) -> Key:
    bound = SET_KEY._replace(idAction=action.idAction)
    return bound._replace(idKey=client.create_programmable_key(bound))


@pytest.fixture
def module_key(client: Client, action: Action) -> Key:
    bound = MODULE_KEY._replace(idAction=action.idAction)
    return bound._replace(idKey=client.create_programmable_key(bound))


def provisioned(database: Database, client: Client) -> tuple[Action, Key]:
    """A provisioned action with a provisioned key, as after a merge."""
    database.execute(PROVISIONED)
    desk = next(row for row in client.get_all_actions() if row.dmId)
    key_id = client.create_programmable_key(SET_KEY._replace(dmId="D1", idAction=desk.idAction, position=9))
    return desk, client.get_programmable_key(key_id)[0]


# Keys


def test_keys_are_listed_with_the_labels_of_their_actions(ctl: Tool, database: Database, key: Key, module_key: Key) -> None:
    database.execute(f"UPDATE KEY SET idAction = 99 WHERE idKey = {module_key.idKey}")
    assert ctl.json("key", "list") == [
        {**key._asdict(), "label": "Reception"},
        {**module_key._asdict(), "idAction": 99, "label": None},
    ]
    shown = ctl("key", "list", "--fields", "idKey,label", "--no-legend")
    assert [line.split() for line in shown.lines] == [["1", "Reception"], ["2", "-"]]
    assert ctl("key", "list", "--terse").lines[1] == "2::99:-:module:5:lamp:1:1:2"
    assert ctl("key", "list").lines[0].split() == [
        "idKey", "idAction", "label", "container", "position", "icon", "type", "aom_addr"
    ]


@pytest.mark.parametrize(
    ("options", "found"),
    [
        (["--container", "main"], [1]),
        (["--module", 2], [2]),
        (["--module", 99], []),
        (["--type", 1], [2]),
        (["--type", 1, "--container", "main"], []),
        (["--action", 1], [1, 2]),
        (["--action", -1], []),
    ],
    ids=lambda value: " ".join(map(str, value)),
)
def test_keys_are_listed_by_their_fields(ctl: Tool, key: Key, module_key: Key, options: list[object], found: list[int]) -> None:
    assert (key.container, module_key.aom_addr, key.idAction) == ("main", 2, 1)
    assert [row["idKey"] for row in ctl.json("key", "list", *options)] == found


def test_a_key_is_shown_with_all_fields(ctl: Tool, key: Key) -> None:
    assert ctl.json("key", "show", key.idKey) == key._asdict()
    shown = ctl("key", "show", key.idKey)
    assert [line.split()[-1] for line in shown.lines if line.startswith(("idKey ", "container "))] == ["1", "main"]


def test_a_key_is_created_from_assignments(ctl: Tool, client: Client, action: Action) -> None:
    made = ctl("key", "add", "container=my keys", "position=3", f"idAction={action.idAction}", "icon=a=b")
    assert (made.status, made.out) == (0, "Created key 1.\n")
    expected = Key(1, "", action.idAction, "my keys", 3, "a=b", 0, -1, -1)
    assert client.get_programmable_key(1) == [expected]
    in_json = ctl.json("key", "add", "position=4", f"idAction={action.idAction}", "type=1", "aom_type=1", "aom_addr=2")
    assert in_json == client.get_programmable_key(2)[0]._asdict()


def test_terse_output_can_consist_of_the_id_of_a_new_key(ctl: Tool, action: Action) -> None:
    made = ctl("key", "add", "position=3", f"idAction={action.idAction}", "--terse", "--fields", "idKey")
    assert (made.status, made.out) == (0, "1\n")


def test_set_changes_only_the_given_fields_of_a_key(ctl: Tool, client: Client, key: Key) -> None:
    changed = ctl("key", "set", key.idKey, "icon=", "position=-7")
    assert (changed.status, changed.out) == (0, f"Changed key {key.idKey}.\n")
    assert client.get_programmable_key(key.idKey) == [key._replace(icon="", position=-7)]


def test_several_keys_are_moved(ctl: Tool, client: Client, key: Key, module_key: Key) -> None:
    moved = ctl.json("key", "move", f"{key.idKey}=8", f"{module_key.idKey}=9")
    expected = [key._replace(position=8), module_key._replace(position=9)]
    assert moved == [row._asdict() for row in expected]
    assert client.get_all_programmable_keys() == expected


def test_no_key_is_moved_if_one_is_unknown(ctl: Tool, client: Client, key: Key) -> None:
    moved = ctl("key", "move", f"{key.idKey}=8", "77=1")
    assert moved.status == 10
    assert "There is no key 77" in moved.err
    assert client.get_all_programmable_keys() == [key]


def test_a_refused_deletion_does_not_stop_the_other_deletions(
    ctl: Tool, client: Client, database: Database, key: Key
) -> None:
    _, fixed = provisioned(database, client)
    deleted = ctl("key", "delete", 77, fixed.idKey, key.idKey)
    assert deleted.status == 10
    assert deleted.out == f"Deleted key {key.idKey}.\n"
    assert "There is no key 77" in deleted.err
    assert f'Key {fixed.idKey} cannot be deleted: it is provisioned, with the dmId "D1" (-2)' in deleted.err
    assert client.get_all_programmable_keys() == [fixed]


def test_deleted_keys_are_printed_as_json(ctl: Tool, key: Key) -> None:
    assert ctl.json("key", "delete", key.idKey) == [key._asdict()]


# Actions


def test_actions_are_listed_and_shown(ctl: Tool, client: Client, action: Action) -> None:
    assert ctl.json("action", "list") == [row._asdict() for row in client.get_all_actions()]
    assert ctl.json("action", "show", action.idAction) == action._asdict()
    assert ctl.json("action", "show", -1)["idAction"] == -1


def test_an_action_is_added_and_changed(ctl: Tool, client: Client, phone: Module) -> None:
    added = ctl.json("action", "add", "type=3", "action=call", "arguments=501", "label=Böse, # \\", "shortLabel=B")
    assert client.get_action(added["idAction"]) == [Action(1, "", 3, "call", "", "501", "Böse, # \\", "B")]
    assert ctl("action", "set", 1, "label=Reception").out == "Changed action 1.\n"
    assert client.get_action(1)[0].label == "Reception"


def test_deleting_an_action_first_shows_its_keys(
    ctl: Tool, client: Client, database: Database, action: Action, key: Key, module_key: Key
) -> None:
    stays = client.create_programmable_key(SET_KEY._replace(dmId="D9", idAction=action.idAction, position=9))
    message = f'Action {action.idAction} "Reception": deletes keys {key.idKey}, {module_key.idKey}; leaves provisioned key {stays} without an action.\n'
    tried = ctl("action", "delete", action.idAction, "--dry-run")
    assert (tried.status, tried.out) == (0, message)
    assert len(client.get_all_programmable_keys()) == 3

    deleted = ctl("action", "delete", action.idAction)
    assert (deleted.status, deleted.out) == (0, f"{message}Deleted action {action.idAction}.\n")
    assert client.get_action(action.idAction) == []
    assert [each.idKey for each in client.get_all_programmable_keys()] == [stays]


def test_a_deleted_action_is_printed_with_its_keys_as_json(ctl: Tool, action: Action, key: Key) -> None:
    deleted = ctl.json("action", "delete", action.idAction)
    assert deleted == [{**action._asdict(), "keysDeleted": [key.idKey], "keysLeft": []}]


def test_reserved_and_provisioned_actions_are_not_deleted(ctl: Tool, client: Client, database: Database) -> None:
    desk, _ = provisioned(database, client)
    tried = ctl("action", "delete", desk.idAction, "--dry-run")
    assert (tried.status, tried.out) == (1, "")
    assert f"Action {desk.idAction} cannot be deleted" in tried.err
    refused = ctl("action", "delete", -1, desk.idAction)
    assert (refused.status, refused.out) == (1, "")
    assert "Action -1 cannot be deleted: it is the reserved action (-2)" in refused.err
    assert f'Action {desk.idAction} cannot be deleted: it is provisioned, with the dmId "D1" (-2)' in refused.err
    assert desk in client.get_all_actions()


# Refusals


@pytest.mark.parametrize(
    "words",
    [["key", "show", 7], ["key", "set", 7, "icon=x"], ["key", "delete", 7], ["action", "show", 7], ["action", "set", 7, "type=1"], ["action", "delete", 7]],
    ids=lambda words: " ".join(map(str, words)),
)
def test_an_unknown_id_has_its_own_status(ctl: Tool, words: list[object]) -> None:
    result = ctl(*words)
    assert (result.status, result.out) == (10, "")
    assert f"There is no {words[0]} 7.\n" in result.err
    assert f'"progkeysctl {words[0]} list"' in result.err


@pytest.mark.parametrize("words", [["add", "position=1", "idAction=7"], ["set", "{key}", "idAction=7"]], ids=["add", "set"])
def test_a_key_with_an_unknown_action_is_refused(ctl: Tool, client: Client, key: Key, words: list[str]) -> None:
    result = ctl("key", *(word.format(key=key.idKey) for word in words))
    assert result.status == 10
    assert "there is no action 7 (-2)" in result.err
    assert client.get_all_programmable_keys() == [key]


def test_the_key_limit_is_reported(ctl: Tool, client: Client, key: Key, settings_dir) -> None:
    (settings_dir / "ProgKeysMax").write_text("1\n", encoding="utf-8")
    result = ctl("key", "add", "position=1", f"idAction={key.idAction}")
    assert result.status == 1
    assert "the key limit is reached (-1)" in result.err
    assert client.get_all_programmable_keys() == [key]


@pytest.mark.parametrize(
    ("fault", "words", "message"),
    [
        (failing("INSERT", "KEY"), ["key", "add", "position=1", "idAction=1"], "The key was not created: the database could not be written (-2)"),
        (failing("UPDATE", "KEY"), ["key", "set", 1, "icon=x"], "The key was not changed: the database could not be written (-3)"),
        (failing("DELETE", "KEY"), ["key", "delete", 1], "Key 1 was not deleted: the database could not be written (-3)"),
        (failing("UPDATE", "KEY"), ["key", "move", "1=5"], "A position could not be stored"),
        (failing("INSERT", "ACTION"), ["action", "add", "type=1"], "The action was not created: the database could not be written (-3)"),
        (failing("UPDATE", "ACTION"), ["action", "set", 1, "type=9"], "The action was not changed: the database could not be written (-3)"),
        (failing("DELETE", "ACTION"), ["action", "delete", 1], "Action 1 was not deleted: the database could not be written (-3)"),
    ],
    ids=lambda value: " ".join(map(str, value)) if isinstance(value, list) else None,
)
def test_a_write_error_is_reported(
    ctl: Tool, database: Database, key: Key, fault, words: list[object], message: str
) -> None:
    database.execute(fault.trigger)
    result = ctl(*words)
    assert result.status == 1
    assert message in result.err
    assert "log" in result.err


# Usage


def test_help_lists_the_fields_with_types_and_an_example(ctl: Tool) -> None:
    for command in ("key add", "key set", "action add", "action set"):
        shown = ctl(*command.split(), "--help").out
        fields, example = re.findall(r"^  (\w+)=(?:NUMBER|TEXT) ", shown, re.M), re.search(r"^Example: progkeysctl (.*)", shown, re.M)
        assert fields == list((Key if "key" in command else Action)._fields)[1:]
        assert example and example[1].startswith(command)


def test_a_similar_field_is_suggested_for_a_mistyped_one(ctl: Tool, key: Key) -> None:
    assert 'Did you mean "position"?' in ctl("key", "add", "postion=3").err
    assert 'Did you mean "shortLabel"?' in ctl("action", "set", key.idAction, "shortlabel=x").err


@pytest.mark.parametrize(
    ("words", "message"),
    [
        (["key", "add", "position"], '"position" is not of the form FIELD=VALUE'),
        (["key", "add", "=3"], '"=3" is not of the form FIELD=VALUE'),
        (["key", "add", "color=red"], 'color=red: unknown field "color"'),
        (["key", "add", "position=x"], 'position=x: the field position is not a 32-bit integer'),
        (["key", "add", "position=2147483648"], 'position=2147483648: the field position is not a 32-bit integer'),
        (["key", "add", "position=1", "idAction=9223372036854775808"], 'idAction=9223372036854775808: the field idAction is not a 64-bit integer'),
        (["key", "add", "idAction=1"], "position is required (0 or greater)"),
        (["key", "add", "position=1", "idKey=5"], "The service assigns the idKey of a new key"),
        (["key", "set", 1, "idKey=5"], "idKey cannot be changed"),
        (["key", "move", "1"], '"1" is not of the form KEY_ID=POSITION'),
        (["key", "move", "1=2", "1=3"], "Key 1 is given more than once"),
        (["key", "move", "4294967297=2"], '"4294967297=2" is not of the form KEY_ID=POSITION'),
        (["action", "add", "idAction=5"], "The service assigns the idAction of a new action"),
        (["action", "set", 1, "idAction=5"], "idAction cannot be changed"),
    ],
    ids=lambda value: " ".join(map(str, value)) if isinstance(value, list) else None,
)
def test_an_invalid_argument_is_a_usage_error(
    ctl: Tool, client: Client, key: Key, words: list[object], message: str
) -> None:
    result = ctl(*words)
    assert (result.status, result.out) == (2, "")
    assert message in result.err
    assert client.get_all_programmable_keys() == [key]


def test_removing_the_dmid_causes_a_warning(ctl: Tool, client: Client, database: Database) -> None:
    desk, fixed = provisioned(database, client)
    changed = ctl("action", "set", desk.idAction, "dmId=")
    assert (changed.status, client.get_action(desk.idAction)[0].dmId) == (0, "")
    assert "warning: without its dmId, the action is no longer provisioned: it can be deleted" in changed.err
    assert "warning: without its dmId, the key is no longer provisioned" in ctl("key", "set", fixed.idKey, "dmId=").err
    assert ctl("action", "set", desk.idAction, "label=x").err == ""


def test_setting_the_dmid_causes_a_warning(ctl: Tool, action: Action) -> None:
    result = ctl("key", "add", "position=1", f"idAction={action.idAction}", "dmId=mine")
    assert result.status == 0
    assert "warning: with a dmId, the key is treated as provisioned" in result.err


def test_ids_of_64_bits_are_not_rounded(ctl: Tool, client: Client, database: Database) -> None:
    wide = 2**62 + 1
    database.insert(CALL._replace(idAction=wide), SET_KEY._replace(idKey=wide + 1, idAction=wide))
    assert ctl.json("key", "show", wide + 1)["idAction"] == str(wide)
    assert ctl("key", "set", wide + 1, "icon=x").status == 0
    assert client.get_programmable_key(wide + 1) == [SET_KEY._replace(idKey=wide + 1, idAction=wide, icon="x")]
    assert ctl("action", "delete", wide).out.startswith(f'Action {wide} "Reception": deletes key {wide + 1}.')
    assert ctl("key", "list", "--no-legend").out == ""
