"""`defaults check`: what it says of settings, to people, editors and scripts."""

import re
import shutil
from pathlib import Path

import pytest

from golden_files import check_golden
from progkeysctl import Tool

GOLDEN = Path(__file__).with_name("golden") / "defaults-check"
SETTINGS = ("DefaultActions", "DefaultKeys", "ProgKeysMax")
COMPLAINT = re.compile(r"^(.+?):(\d+):(\d+):(\d+): (error|warning): .+$")
INDENTATION = "    "

GOOD_ACTION = "D1,3,call,,501,Reception,Rec"
GOOD_KEY = "D1,main,0,ic1,0,0,0"


@pytest.fixture
def write(tmp_path: Path):
    def write_file(name: str, text: "str | bytes") -> Path:
        path = tmp_path / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    return write_file


@pytest.mark.parametrize("case", sorted(GOLDEN.iterdir()), ids=lambda case: case.name)
def test_complaints_are_those_of_the_files(offline: Tool, case: Path) -> None:
    files = [case / name for name in SETTINGS if (case / name).exists()]
    result = offline("defaults", "check", *files)
    check_golden(case / "expected.txt", result.out.replace(f"{case}/", ""))
    assert result.status == (4 if ": error: " in result.out else 0)
    assert result.err == ""


@pytest.mark.parametrize(
    ("text", "options", "status"),
    [
        pytest.param(GOOD_ACTION, [], 0, id="nothing to complain of"),
        pytest.param("", [], 0, id="nothing at all"),
        pytest.param(GOOD_ACTION, ["--strict"], 0, id="nothing to complain of, strictly"),
        pytest.param(f"{GOOD_ACTION}#", [], 0, id="a warning"),
        pytest.param(f"{GOOD_ACTION}#", ["--strict"], 4, id="a warning, strictly"),
        pytest.param(f"{GOOD_ACTION},x", [], 4, id="an error"),
        pytest.param(b"\xff", [], 4, id="no UTF-8"),
        pytest.param(GOOD_ACTION, ["--limit", "many"], 2, id="a limit that is no number"),
        pytest.param(GOOD_ACTION, ["--limit", "-1"], 2, id="a limit below 0"),
        pytest.param(GOOD_ACTION, ["--kind", "doors"], 2, id="an unknown kind"),
    ],
)
def test_the_status_tells_how_it_went(offline: Tool, write, text, options, status: int) -> None:
    assert offline("defaults", "check", *options, write("DefaultActions", text)).status == status


def test_a_file_that_cannot_be_read_is_a_failure(offline: Tool, tmp_path: Path) -> None:
    result = offline("defaults", "check", tmp_path / "DefaultKeys")
    assert (result.status, result.out) == (1, "")
    assert f"{tmp_path}/DefaultKeys cannot be read: No such file" in result.err
    (tmp_path / "KeysOfMine").mkdir()
    result = offline("defaults", "check", tmp_path / "KeysOfMine")
    assert (result.status, result.out) == (1, "")
    assert "is a directory" in result.err


def test_a_kind_that_nobody_tells_is_asked_for(offline: Tool, write) -> None:
    file = write("rollout.txt", GOOD_KEY)
    result = offline("defaults", "check", file)
    assert (result.status, result.out) == (2, "")
    assert "Say so with --kind actions or --kind keys." in result.err
    assert offline("defaults", "check", "--kind", "keys", file).status == 0
    assert offline("defaults", "check", "--kind", "actions", file).status == 4


def test_a_dash_is_stdin(offline: Tool) -> None:
    result = offline("defaults", "check", "--kind", "actions", "-", stdin=f"{GOOD_ACTION}#D2\n")
    assert result.status == 4
    assert result.lines[0].startswith("-:2:0:1: error: 1 field instead of 7")
    assert offline("defaults", "check", "-", stdin=GOOD_ACTION).status == 2
    assert offline("defaults", "check", "--kind", "actions", "-", "-", stdin=GOOD_ACTION).status == 2


def test_every_complaint_is_a_line_that_editors_understand(offline: Tool) -> None:
    file = GOLDEN / "slips-in-actions" / "DefaultActions"
    *lines, summary = offline("defaults", "check", file).lines
    heads = [line for line in lines if not line.startswith(INDENTATION)]
    assert len(heads) == len(lines) / 3
    found = offline.json("defaults", "check", file, status=4)
    assert summary.endswith(f" in {file}")
    places = [COMPLAINT.match(head).groups() for head in heads]
    assert places == [
        (row["file"], str(row["record"]), str(row["field"] or 0), str(row["column"]), row["severity"])
        for row in found
    ]


def test_columns_lead_to_the_place_in_the_record(offline: Tool) -> None:
    for case in ("slips-in-actions", "long-records", "other-scripts"):
        file = GOLDEN / case / "DefaultActions"
        text = file.read_text(encoding="utf-8").removesuffix("\n")
        records = re.split(r"(?<!\\)#", text)
        for row in offline.json("defaults", "check", file, status=4):
            if row["code"] != "empty-record" and row["column"] > 1:
                rest = records[row["record"] - 1][row["column"] - 1 :]
                assert text[row["character"] - 1 :].startswith(rest)


def test_json_says_the_field_by_name_and_null_for_a_record(offline: Tool, write) -> None:
    keys = write("DefaultKeys", "D1,main,1O,ic1,0,0,0#D1\n")
    assert offline.json("defaults", "check", keys, status=4) == [
        {
            "file": str(keys),
            "record": 1,
            "field": 3,
            "fieldName": "position",
            "column": 9,
            "character": 9,
            "severity": "error",
            "code": "not-a-number",
            "message": "the position `1O` is no decimal number of 32 bits and counts as 0",
        },
        {
            "file": str(keys),
            "record": 2,
            "field": None,
            "fieldName": None,
            "column": 1,
            "character": 22,
            "severity": "error",
            "code": "field-count",
            "message": "1 field instead of 7: wanted are identifier, container, position, icon, "
            "key type, kind of add-on module, address of the add-on module; an empty one still "
            "has its comma",
        },
    ]
    assert offline.json("defaults", "check", write("DefaultActions", GOOD_ACTION)) == []


def test_terse_lines_have_the_chosen_fields(offline: Tool, write) -> None:
    keys = write("DefaultKeys", "D1,main,1O,ic1,0,0,0#D1\n")
    result = offline("defaults", "check", "--terse", "--fields", "code,record", keys)
    assert result.lines == ["not-a-number:1", "field-count:2"]
    assert result.status == 4


def test_the_summary_may_be_left_out(offline: Tool, write) -> None:
    actions = write("DefaultActions", GOOD_ACTION)
    assert offline("defaults", "check", actions).out == f"{actions}: 1 action, no complaint\n"
    assert offline("defaults", "check", "--no-legend", actions).out == ""


def test_keys_alone_are_said_not_to_be_held_against_actions(offline: Tool, write) -> None:
    keys = write("DefaultKeys", GOOD_KEY)
    result = offline("defaults", "check", keys)
    assert (result.status, result.out) == (0, f"{keys}: 1 key, no complaint\n")
    assert "no actions were given" in result.err
    result = offline("defaults", "check", keys, write("DefaultActions", GOOD_ACTION))
    assert (result.status, result.err) == (0, "")
    assert result.out == "2 files: 1 key, 1 action, no complaint\n"


def test_the_limit_is_that_of_the_directory_unless_it_is_given(offline: Tool, write) -> None:
    keys = write("DefaultKeys", f"{GOOD_KEY}#D1,main,1,ic,0,0,0")
    write("ProgKeysMax", "1\n")
    codes = [row["code"] for row in offline.json("defaults", "check", keys, status=4)]
    assert codes == ["too-many-keys"]
    assert offline("defaults", "check", "--limit", "2", keys).status == 0


@pytest.mark.parametrize("width", [40, 24])
def test_a_narrow_terminal_shows_the_place_of_each_complaint(offline: Tool, width: int) -> None:
    file = GOLDEN / "long-records" / "DefaultActions"
    result = offline.on_terminal(width, "defaults", "check", file, env={"NO_COLOR": "1"})
    assert result.status == 4
    *lines, _ = result.lines
    marks = 0
    for head, text, mark in zip(lines[::3], lines[1::3], lines[2::3]):
        assert COMPLAINT.match(head)
        assert len(text) <= width
        place = text[len(mark.rstrip("~^")) : len(mark)]
        if "comma" in head:
            assert place == ","
            marks += 1
        elif "2nd" in head:
            assert place == "2nd"
            marks += 1
    assert marks == 3


def test_colours_are_for_terminals_that_want_them(offline: Tool, tmp_path: Path) -> None:
    file = tmp_path / "DefaultActions"
    shutil.copy(GOLDEN / "slips-in-actions" / "DefaultActions", file)
    assert "\x1b[31merror:\x1b[0m" in offline.on_terminal(80, "defaults", "check", file).out
    plain = offline.on_terminal(80, "defaults", "check", file, env={"NO_COLOR": "1"}).out
    assert "\x1b" not in plain
    assert plain == offline("defaults", "check", file).out


@pytest.mark.parametrize("case", ["slips-in-actions", "slips-in-keys", "long-records", "other-scripts"])
def test_what_is_said_to_be_refused_and_dropped_is(
    ctl: Tool, start, settings, client, case: str
) -> None:
    files = [GOLDEN / case / name for name in SETTINGS[:2] if (GOLDEN / case / name).exists()]
    texts = {file.name: file.read_text(encoding="utf-8").removesuffix("\n") for file in files}
    settings.values.update(texts)
    log = start().log.texts()
    rows = ctl.json("defaults", "check", "--limit", "1000", *files, status=4)
    for file in files:
        refused = [
            row["record"]
            for row in rows
            if row["file"] == str(file) and row["code"] in ("field-count", "empty-record")
        ]
        what = "action" if file.name == "DefaultActions" else "key"
        skipped = [text for text in log if text.startswith(f"Skipping invalid dm {what}: ")]
        assert len(skipped) == len(refused)
        if what == "key":
            dropped = [row for row in rows if row["code"] == "key-without-action"]
            records = len(re.split(r"(?<!\\)#", texts[file.name]))
            made = client.get_all_programmable_keys()
            assert len(made) == records - len(refused) - len(dropped)
