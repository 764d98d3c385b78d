"""`defaults plan`: its output, its input and its exit status."""

import json
import shutil
from pathlib import Path

import pytest

pytest.register_assert_rewrite("planning")

from planning import Rows, check_plan
from sandbox.records import Action, Key

CHECKOUT = Path(__file__).resolve().parents[2]
FIRST, NEXT = CHECKOUT / "examples/settings", CHECKOUT / "examples/settings-next"

STORED = {
    "DefaultActions": "kept,1,call,,501,Kept,K#changed,1,call,,502,Old,O#gone,1,call,,503,Gone,G"
    "#goes,1,call,,504,Goes,G",
    "DefaultKeys": "kept,home,0,bell,0,0,0#changed,home,1,bell,0,0,0#gone,home,2,bell,0,0,0"
    "#goes,module,1,bell,1,0,2",
    "ProgKeysMax": "10",
}
# On the phone in use, this rollout has every outcome.
ALL_OUTCOMES = {
    "DefaultActions": "kept,1,call,,501,Kept,K#changed,2,call,,502,Old \\, new\x1b[1m,O#new,1,call,,505,N,N"
    "#too,few#goes,1,call,,504,Goes,G#,1,call,,,Nobody's,",
    "DefaultKeys": "kept,home,0,bell,0,0,0#changed,home,5,lamp,0,0,0#new,home,6,bell,0,0,0#unknown,home,7,,0,0,0"
    "#,home,8,,0,0,0#kept,home,9,,0,0,0#goes,module,3,bell,1,0,2#goes,module,1,lamp,1,0,2#",
    "ProgKeysMax": "6",
}
TABLE = r"""
what       kind    id  dmId     detail
changed    action  -1           type -1 -> 1: no identifier: overwrites the reserved action
changed    action  -1           action "" -> "call": no identifier: overwrites the reserved action
changed    action  -1           label "" -> "Nobody's": no identifier: overwrites the reserved action
changed    action   2  changed  type 1 -> 2
changed    action   2  changed  label "Old" -> "Old , new\x1b[1m"
withdrawn  action   3  gone     Gone: stays in the database, user keys that trigger it: 1
changed    action   5           arguments "600" -> "": no identifier: overwrites a user's action
changed    action   5           label "Mine" -> "Nobody's": no identifier: overwrites a user's action
changed    action   5           shortLabel "M" -> "": no identifier: overwrites a user's action
added      action   -  new      N
changed    key      2  changed  position 1 -> 5
changed    key      2  changed  icon "bell" -> "lamp"
added      key      -  new      home, position 6
dropped    key      -  unknown  home, position 7: no such action
added      key      -           home, position 8: no identifier: becomes a user's key, and each start adds another one
dropped    key      -  kept     home, position 9: key limit reached
added      key      -  goes     module 2, key 3
changed    key      4  goes     icon "bell" -> "lamp"
removed    key      3  gone     home, position 2
refused    action   -           too,few: 2 instead of 7 fields
refused    key      -           1 instead of 7 fields
Actions: 1 added, 3 changed, 2 kept, 1 refused, 1 withdrawn
Keys: 3 added, 2 changed, 2 dropped, 1 kept, 1 refused, 1 removed
"""


@pytest.fixture
def provision(settings_dir):
    """Replaces the phone's settings."""

    def provide(settings):
        for path in settings_dir.iterdir():
            path.unlink()
        write(settings_dir, settings)

    return provide


@pytest.fixture
def start_on(launch, settings_manager, client, provision):
    """Replaces the phone's settings and starts the service."""

    def start(settings):
        provision(settings)
        service = launch()
        service.wait_until_ready(client)
        return service

    return start


@pytest.fixture
def phone_in_use(start_on, client):
    """A phone with the rollout STORED, a user action, a key for it, and a user key for a provisioned action."""
    service = start_on(STORED)
    mine = client.add_action(Action(-1, "", 1, "call", "", "600", "Mine", "M"))
    client.create_programmable_key(Key(-1, "", mine, "home", 3, "", 0, 0, 0))
    gone = next(action for action in client.get_all_actions() if action.dmId == "gone")
    client.create_programmable_key(Key(-1, "", gone.idAction, "home", 4, "", 0, 0, 0))
    return service


@pytest.fixture
def rollout(tmp_path):
    """A directory with ALL_OUTCOMES."""
    return write(tmp_path / "rollout", ALL_OUTCOMES)


def write(directory, settings):
    directory.mkdir(exist_ok=True)
    for name, text in settings.items():
        (directory / name).write_text(text, encoding="utf-8")
    return directory


# The output


def test_each_outcome_is_a_row(ctl, phone_in_use, rollout):
    plan = ("defaults", "plan", rollout)
    result = ctl(*plan)
    assert (result.lines, result.err) == (TABLE.strip().split("\n"), "")
    whole = ctl(*plan, "--all").lines
    assert [line.split() for line in whole if line.startswith("kept")] == [
        ["kept", "action", "1", "kept", "Kept"],
        ["kept", "action", "4", "goes", "Goes"],
        ["kept", "key", "1", "kept", "home,", "position", "0"],
    ]
    assert ctl(*plan, "--no-legend").lines[-1].startswith("refused")


def test_json_and_terse_output_have_the_same_rows(ctl, phone_in_use, rollout):
    plan = ("defaults", "plan", rollout)
    rows = ctl.json(*plan)
    changed = next(row for row in rows if row["what"] == "changed" and row["kind"] == "key")
    assert changed == {
        "what": "changed",
        "kind": "key",
        "id": 2,
        "dmId": "changed",
        "field": "position",
        "old": 1,
        "new": 5,
        "record": 2,
        "reason": None,
        "detail": "position 1 -> 5",
        "content": None,
    }
    added = next(row for row in rows if row["what"] == "added" and row["kind"] == "action")
    assert added["content"] == Action(None, "new", 1, "call", "", "505", "N", "N")._asdict()
    terse = ctl(*plan, "--terse").lines
    assert len(terse) == len(rows)
    assert "changed:key:2:changed:position:1:5:2:-:position 1 -> 5" in terse
    assert ctl(*plan, "--terse", "--fields", "what,kind,dmId").lines[-3:] == ["removed:key:gone", "refused:action:", "refused:key:"]
    assert ctl(*plan, "--fields", "what,color").status == 2


def test_rows_have_colors_on_a_terminal(ctl, phone_in_use, rollout):
    colored = ctl.on_terminal(120, "defaults", "plan", rollout).out
    assert "\x1b[32madded" in colored and "\x1b[31mremoved" in colored
    assert "\x1b" not in ctl("defaults", "plan", rollout).out


def test_the_start_does_what_was_planned(ctl, phone_in_use, rollout, database, start_on):
    plan = ctl.json("defaults", "plan", rollout)
    before = Rows(database.actions(), database.keys())
    phone_in_use.stop()
    start_on(ALL_OUTCOMES)
    check_plan(plan, before, Rows(database.actions(), database.keys()))


# The input


def test_the_plan_is_the_same_for_every_source_of_the_settings(ctl, phone_in_use, rollout, provision, tmp_path):
    plan = ("defaults", "plan")
    expected = ctl.json(*plan, rollout)
    assert ctl.json(*plan, "--settings", rollout) == expected
    files = [rollout / name for name in ALL_OUTCOMES]
    assert ctl.json(*plan, *files) == expected
    provision(ALL_OUTCOMES)
    assert ctl.json(*plan) == expected
    shutil.copy(rollout / "DefaultActions", tmp_path / "a")
    shutil.copy(rollout / "DefaultKeys", tmp_path / "b")
    provision({"ProgKeysMax": "6"})
    assert ctl.json(*plan, "--actions", tmp_path / "a", "--keys", tmp_path / "b") == expected
    provision({})
    assert ctl.json(*plan, *files[:2], "--limit=6") == expected
    piped = ctl(
        *plan,
        *("--actions=-", "--keys", tmp_path / "b", "--limit=6", "--json=short"),
        stdin=ALL_OUTCOMES["DefaultActions"],
    )
    assert piped.json == expected


def test_a_missing_setting_is_treated_as_empty(ctl, phone_in_use, provision, tmp_path):
    keys = write(tmp_path / "keys", {"DefaultKeys": STORED["DefaultKeys"]})
    result = ctl("defaults", "plan", "--json=short", keys)
    assert [row["what"] for row in result.json] == ["withdrawn"] * 4 + ["kept"] * 4
    assert f"{keys} has no setting DefaultActions: it is treated as empty" in result.err
    assert f"{keys} has no setting ProgKeysMax: the number of keys is not limited" in result.err
    provision({})
    result = ctl("defaults", "plan", "--json=short")
    assert [row["what"] for row in result.json] == ["withdrawn"] * 4 + ["removed"] * 4
    assert "the phone has no setting DefaultKeys: it is treated as empty" in result.err


# The exit status


@pytest.mark.parametrize(
    ("settings", "status"),
    [
        pytest.param(STORED, 0, id="no changes"),
        pytest.param(STORED | {"DefaultKeys": ""}, 20, id="changes"),
        pytest.param(STORED | {"DefaultActions": STORED["DefaultActions"] + "#D1,1"}, 4, id="refused records"),
        pytest.param(ALL_OUTCOMES, 4, id="both"),
    ],
)
def test_the_detailed_exit_status(ctl, phone_in_use, tmp_path, settings, status):
    plan = ("defaults", "plan", write(tmp_path / "rollout", settings))
    assert ctl(*plan).status == 0
    result = ctl(*plan, "--detailed-exitcode")
    assert (result.status, result.err) == (status, "")
    assert ("No changes." in result.out) == (settings not in (ALL_OUTCOMES, STORED | {"DefaultKeys": ""}))


def test_a_plan_needs_a_running_service(ctl, settings_manager):
    result = ctl("defaults", "plan")
    assert (result.status, result.out) == (8, "")
    assert "not running" in result.err


@pytest.mark.parametrize("content", [b"D1\xff", b"D1\0", b"\xef\xbb\xbfD1", b"dmId,container,position,icon\n"])
def test_a_setting_that_cannot_be_delivered_is_refused(offline, tmp_path, content):
    (tmp_path / "DefaultKeys").write_bytes(content)
    result = offline("defaults", "plan", "--detailed-exitcode", tmp_path / "DefaultKeys")
    assert (result.status, result.out) == (4, "")
    assert "cannot be delivered to a phone" in result.err
    assert f"defaults check {tmp_path}/DefaultKeys" in result.err


@pytest.mark.parametrize(
    ("words", "message", "status"),
    [
        (["/dev/null"], "Specify --actions FILE or --keys FILE.", 2),
        (["/dev/null", "--keys=/dev/null", "--actions=/dev/null"], "Cannot tell", 2),
        (["--actions=-", "--keys=-"], "Standard input can be read only once", 2),
        ([FIRST, NEXT], "Specify one rollout at a time.", 2),
        (["--settings", "nowhere"], "--settings", 2),
        (["--limit", "many"], "--limit", 2),
        (["nowhere/DefaultKeys"], "Cannot read nowhere/DefaultKeys", 1),
    ],
)
def test_invalid_command_lines_are_refused(offline, words, message, status):
    result = offline("defaults", "plan", *words)
    assert (result.status, result.out) == (status, "")
    assert message in result.err
