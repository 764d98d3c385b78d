"""What `defaults plan` tells of a phone, in every form, and how it ends."""

import json
import os
import shutil
from pathlib import Path

import pytest

pytest.register_assert_rewrite("planning")

from planning import Rows, check_plan
from sandbox.records import Action, Key

CHECKOUT = Path(__file__).resolve().parents[2]
FIRST, NEXT = CHECKOUT / "examples/settings", CHECKOUT / "examples/settings-next"
GOLDEN = Path(__file__).parent / "golden/defaults-plan"
REWRITE = "PROGKEYS_REWRITE_GOLDEN"
NARROW, WIDE = 44, 100
PLAIN = {"NO_COLOR": "1"}

STORED = {
    "DefaultActions": "kept,1,call,,501,Kept,K#changed,1,call,,502,Old,O#gone,1,call,,503,Gone,G"
    "#goes,1,call,,504,Goes,G",
    "DefaultKeys": "kept,home,0,bell,0,0,0#changed,home,1,bell,0,0,0#gone,home,2,bell,0,0,0"
    "#goes,module,1,bell,1,0,2",
    "ProgKeysMax": "10",
}
EVERYTHING = {
    "DefaultActions": "kept,1,call,,501,Kept,K#changed,2,call,,502,Old \\, new\x1b[1m,O#new,1,call,,505,N,N"
    "#too,few#goes,1,call,,504,Goes,G#,1,call,,,Nobody's,",
    "DefaultKeys": "kept,home,0,bell,0,0,0#changed,home,5,lamp,0,0,0#new,home,6,bell,0,0,0#unknown,home,7,,0,0,0"
    "#,home,8,,0,0,0#kept,home,9,,0,0,0#",
    "ProgKeysMax": "5",
}


@pytest.fixture
def provision(settings_dir):
    """Makes these the phone's settings."""

    def provide(settings):
        for path in settings_dir.iterdir():
            path.unlink()
        write(settings_dir, settings)

    return provide


@pytest.fixture
def start_on(launch, settings_manager, client, provision):
    """Starts the service on a phone with these settings."""

    def start(settings):
        provision(settings)
        service = launch()
        service.wait_until_ready(client)
        return service

    return start


@pytest.fixture
def used_phone(start_on, client):
    """A phone on STORED whose user has an action, a key for it, and a key for a provisioned action."""
    service = start_on(STORED)
    mine = client.add_action(Action(-1, "", 1, "call", "", "600", "Mine", "M"))
    client.create_programmable_key(Key(-1, "", mine, "home", 3, "", 0, 0, 0))
    gone = next(action for action in client.get_all_actions() if action.dmId == "gone")
    client.create_programmable_key(Key(-1, "", gone.idAction, "home", 4, "", 0, 0, 0))
    return service


@pytest.fixture
def everything(tmp_path):
    """A rollout of which every outcome comes on the used phone."""
    return write(tmp_path / "everything", EVERYTHING)


def write(directory, settings):
    directory.mkdir(exist_ok=True)
    for name, text in settings.items():
        (directory / name).write_text(text, encoding="utf-8")
    return directory


def settings_of(directory):
    return {path.name: path.read_text(encoding="utf-8") for path in directory.iterdir()}


def check_golden(name, found):
    path = GOLDEN / name
    if os.environ.get(REWRITE):
        path.write_text(found, encoding="utf-8")
    assert found == path.read_text(encoding="utf-8"), f"other than {path}"


def pretty(content):
    return json.dumps(content, indent=1, ensure_ascii=False, sort_keys=True) + "\n"


# What is told


@pytest.fixture(params=["next", "everything"])
def planned(request):
    """A phone with a rollout to come: its name, and the directory of its settings."""
    if request.param == "next":
        request.getfixturevalue("start_on")(settings_of(FIRST))
        return "next", NEXT
    request.getfixturevalue("used_phone")
    return "everything", request.getfixturevalue("everything")


def test_people_read_an_account_that_fits_their_terminal(ctl, planned):
    name, directory = planned
    plan = ("defaults", "plan", "--settings", directory)
    for width in (12, 25, 60, 200):
        assert max(map(len, ctl.on_terminal(width, *plan, env=PLAIN).lines)) <= width
    for width in (NARROW, WIDE):
        on_terminal = ctl.on_terminal(width, *plan, env=PLAIN)
        assert on_terminal.status == 0
        assert max(map(len, on_terminal.lines)) <= width
        check_golden(f"{name}-{width}.txt", on_terminal.out)
    whole = ctl(*plan, "--all")
    assert whole.status == 0
    check_golden(f"{name}-all.txt", whole.out)
    check_golden(f"{name}-warnings.txt", whole.err)


def test_programs_read_one_object_or_a_line_a_row(ctl, planned):
    name, directory = planned
    plan = ("defaults", "plan", "--settings", directory)
    check_golden(f"{name}.json", pretty(ctl.json(*plan)))
    assert json.loads(ctl(*plan, "--json=pretty").out) == ctl.json(*plan)
    check_golden(f"{name}-terse.txt", ctl(*plan, "--terse").out)


def test_fields_are_chosen_in_every_form(ctl, used_phone, everything):
    plan = ("defaults", "plan", "--settings", everything)
    assert ctl.json(*plan, "--fields=limit,hasChanges") == {"limit": 5, "hasChanges": True}
    terse = ctl(*plan, "--terse", "--fields", "what,kind,dmId").lines
    assert terse[0] == "added:action:new"
    table = ctl(*plan, "--fields", "what,dmId", "--no-legend").lines
    assert table[0].split() == ["added", "new"]
    assert ctl(*plan, "--terse", "--fields", "colour").status == 2


def test_no_sums_are_told_without_a_legend(ctl, used_phone, everything):
    out = ctl("defaults", "plan", "--settings", everything, "--no-legend").out
    assert "  + new" in out
    assert "Actions:" not in out and "Keys," not in out


def test_colours_come_on_a_terminal_alone(ctl, used_phone, everything):
    plan = ("defaults", "plan", "--settings", everything)
    coloured = ctl.on_terminal(WIDE, *plan).out
    assert "\x1b[32m  + new" in coloured
    assert "\x1b" not in ctl.on_terminal(WIDE, *plan, env=PLAIN).out
    assert "\x1b" not in ctl(*plan).out


def test_the_start_does_all_that_was_told(ctl, used_phone, everything, database, start_on):
    plan = ctl.json("defaults", "plan", "--settings", everything)
    before = Rows(database.actions(), database.keys())
    used_phone.stop()
    start_on(EVERYTHING)
    check_plan(plan, before, Rows(database.actions(), database.keys()))


# Where the settings come from


def test_every_source_leads_to_the_same_plan(ctl, used_phone, everything, provision, tmp_path):
    plan = ("defaults", "plan")
    expected = ctl.json(*plan, "--settings", everything)
    files = [everything / name for name in EVERYTHING]
    assert ctl.json(*plan, *files) == expected
    provision(EVERYTHING)
    assert ctl.json(*plan) == expected
    shutil.copy(everything / "DefaultActions", tmp_path / "a")
    shutil.copy(everything / "DefaultKeys", tmp_path / "b")
    provision({"ProgKeysMax": "5"})
    assert ctl.json(*plan, "--actions", tmp_path / "a", "--keys", tmp_path / "b") == expected
    provision({})
    assert ctl.json(*plan, *files[:2], "--limit=5") == expected
    piped = ctl(
        *plan,
        *("--actions=-", "--keys", tmp_path / "b", "--limit=5", "--json=short"),
        stdin=EVERYTHING["DefaultActions"],
    )
    assert piped.json == expected


def test_a_setting_that_cannot_be_read_counts_as_empty(ctl, used_phone, provision, tmp_path):
    (tmp_path / "none").mkdir()
    for words, where in ([], "the phone"), (["--settings", tmp_path / "none"], tmp_path / "none"):
        provision({})
        result = ctl("defaults", "plan", *words, "--json=short")
        assert result.status == 0
        assert [len(result.json["actions"][name]) for name in ("kept", "left")] == [0, 4]
        assert [row["becomes"] for row in result.json["keys"]["removed"]] == ["gone"] * 4
        assert result.json["limit"] is None
        assert [row["code"] for row in result.json["warnings"]] == ["unreadable-setting"] * 3
        assert f"{where} has no setting DefaultActions: it counts as empty" in result.err
        assert f"{where} has no setting ProgKeysMax: nothing limits" in result.err


# How it ends


@pytest.mark.parametrize("words", [[], ["--detailed-exitcode"]], ids=["plain", "detailed"])
def test_the_status_tells_of_changes_if_that_is_asked_for(ctl, used_phone, everything, words):
    plan = ("defaults", "plan", *words)
    nothing = ctl(*plan)
    assert (nothing.status, nothing.err) == (0, "")
    assert nothing.lines[-1] == "Nothing is to be changed."
    assert ctl(*plan, "--settings", everything).status == (20 if words else 0)


@pytest.mark.parametrize("words", [[], ["--detailed-exitcode"]], ids=["plain", "detailed"])
def test_a_plan_wants_a_running_service(ctl, settings_manager, words):
    result = ctl("defaults", "plan", *words)
    assert (result.status, result.out) == (8, "")
    assert "not running" in result.err


def test_texts_that_cannot_be_delivered_are_refused(ctl, used_phone, tmp_path):
    for bytes_of_it in b"D1\xff", b"D1\0", b"\xef\xbb\xbfD1":
        (tmp_path / "DefaultKeys").write_bytes(bytes_of_it)
        result = ctl("defaults", "plan", "--detailed-exitcode", tmp_path / "DefaultKeys")
        assert (result.status, result.out) == (4, "")
        assert "defaults check" in result.err


@pytest.mark.parametrize(
    "words, told",
    [
        (["x"], "Say so with --actions FILE or --keys FILE."),
        (["keys", "--keys", "other"], "Give one of them."),
        (["--actions=-", "--keys=-"], "Name a file for one of them."),
        (["--settings", "nowhere"], "--settings"),
        (["--limit", "many"], "--limit"),
    ],
    ids=["unclear", "twice", "stdin twice", "no directory", "no number"],
)
def test_words_that_make_no_sense_are_errors_of_usage(offline, words, told):
    result = offline("defaults", "plan", *words)
    assert (result.status, result.out) == (2, "")
    assert told in result.err


def test_a_file_that_is_not_there_is_a_failure(offline, tmp_path):
    result = offline("defaults", "plan", tmp_path / "DefaultKeys")
    assert result.status == 1
    assert f"{tmp_path}/DefaultKeys cannot be read" in result.err
