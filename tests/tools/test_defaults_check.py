"""`defaults check`: the problems that it finds, and its output."""

import re
from pathlib import Path

import pytest

from progkeysctl import Tool

GOOD_ACTION = "D1,3,call,,501,Reception,Rec"
GOOD_KEY = "D1,main,0,ic1,0,0,0"
FILES = ("DefaultActions", "DefaultKeys", "ProgKeysMax")
HEAD = re.compile(r"^(.+?):(\d+):(\d+):(\d+): (error|warning): .+$")


@pytest.fixture
def write(tmp_path: Path):
    """Writes a file of the rollout and returns its path."""

    def write_file(name: str, text: "str | bytes") -> Path:
        path = tmp_path / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    return write_file


@pytest.fixture
def problems(offline: Tool, write, tmp_path: Path):
    """The problems of a rollout, each as "FILE RECORD:FIELD:COLUMN severity code"."""

    def check(*texts, options=()):
        for name, text in zip(FILES, texts):
            if text is not None:
                write(name, text)
        result = offline("defaults", "check", "--json=short", *options, tmp_path)
        rows = result.json
        assert result.status == (4 if any(row["severity"] == "error" for row in rows) else 0)
        return [
            f"{Path(row['file']).name.removeprefix('Default')} {row['record']}:{row['field'] or 0}:{row['column']} "
            f"{row['severity']} {row['code']}"
            for row in rows
        ]

    return check


ACTIONS = [
    ("a valid action", "D,1,c,w,a,l,s", []),
    ("an empty text", "", []),
    ("a newline at the end of the file", "D,1,c,w,a,l,s\n", []),
    ("a hash at the end", "D,1,c,w,a,l,s#", ["2:0:1 warning empty-record"]),
    ("a hash at the start", "#D,1,c,w,a,l,s", ["1:0:1 warning empty-record"]),
    ("two hashes", "D,1,c,w,a,l,s##E,1,c,w,a,l,s", ["2:0:1 warning empty-record"]),
    ("too many fields", "D,1,c,w,a,l,s,t", ["1:0:1 error field-count"]),
    ("too few fields", "D,1,c", ["1:0:1 error field-count"]),
    ("an unescaped comma that must be in the identifier", "A,B,1,c,w,a,l,s", ["1:1:2 error field-count"]),
    ("a number with a letter", "D,1O,c,w,a,l,s", ["1:2:3 error not-a-number"]),
    ("a number of more than 32 bits", "D,2147483648,c,w,a,l,s", ["1:2:3 error not-a-number"]),
    ("numbers that the phone accepts", "D, +5 ,c,w,a,l,s#E,-0,c,w,a,l,s#F,2147483647,,,,,", []),
    ("an empty number", "D,,c,w,a,l,s", ["1:2:3 warning empty-number"]),
    ("a number that is a space", "D, ,c,w,a,l,s", ["1:2:3 warning empty-number"]),
    ("no identifier", ",1,c,w,a,l,s", ["1:1:1 error empty-identifier"]),
    ("both placeholder words", "D,1,c,w,aescSharp,lescComa,s", ["1:5:10 error placeholder-word", "1:6:20 error placeholder-word"]),
    ("a placeholder word in an invalid record", "D,escComa", ["1:0:1 error field-count", "1:2:3 error placeholder-word"]),
    ("other spellings of the words", "D,1,c,w,esccoma,ESCSHARP,esc\\,Coma", []),
    ("a line break in a field", "D,1,c,w,a,l\nm,s", ["1:6:12 warning line-break"]),
    ("line breaks instead of hashes", "D,1,c,w,a,l,s\nE,1,c,w,a,l,s", ["1:0:1 error field-count"]),
    ("an identifier twice", "A,1,,,,,#B,1,,,,,#A,2,,,,,", ["3:1:1 error repeated-identifier"]),
    ("identifiers that differ in case", "P6,1,,,,,#p6,2,,,,,", ["2:1:1 warning similar-identifier"]),
    ("identifiers that differ in spaces", "p25,1,,,,,#p25 ,2,,,,,", ["2:1:1 warning similar-identifier"]),
    ("a null character", "D,1,c,w,\0,l,s", ["1:5:9 error null-character"]),
    ("a byte order mark", b"\xef\xbb\xbfD,1,c,w,a,l,s", ["1:0:1 error byte-order-mark"]),
    ("multibyte characters", "ü🙂,1,,,,,#藤🙂,x,,,,,", ["2:2:4 error not-a-number"]),
]

KEYS = [
    ("a valid key", "D,c,1,i,0,0,0", []),
    ("all numbers of a key", "D,c,a,i,b,d,", ["1:3:5 error not-a-number", "1:5:9 error not-a-number", "1:6:11 error not-a-number", "1:7:13 warning empty-number"]),
    ("a negative position", "D,c,-1,i,0,0,0", ["1:3:5 warning negative-position"]),
    ("an unknown key type", "D,c,1,i,2,0,0", ["1:5:9 warning unknown-key-type"]),
    ("no identifier", ",c,1,i,0,0,0", ["1:1:1 error empty-identifier"]),
    ("an unescaped comma that must be in the icon", "D,main,0,ic,1,1,0,0", ["1:4:12 error field-count"]),
    ("an unescaped comma that can be in two fields", "D,main, left,0,ic1,1,0,0", ["1:0:1 error field-count"]),
    ("no action", "X,c,1,i,0,0,0", ["1:1:1 error key-without-action"]),
    ("an action that differs in spaces", "D ,c,1,i,0,0,0", ["1:1:1 error key-without-action"]),
    ("two keys of one action", "D,c,1,i,0,0,0#D,c,2,i,0,0,0", []),
    ("a position on the set twice", "D,c,1,i,0,0,0#D,c,+01,j,00,1,1", ["2:2:3 error same-place"]),
    ("a position in another container", "D,c,1,i,0,0,0#D,d,1,j,0,0,0", []),
    ("a position on a module twice", "D,c,1,i,1,2,3#D,d,1,j,1,2,3", ["2:3:5 error same-place"]),
    ("a position that is not a number", "D,c,0,i,0,0,0#D,c,O,i,0,0,0", ["2:3:5 error not-a-number"]),
    ("a position on different modules", "D,c,1,i,1,2,3#D,c,1,i,1,2,4#D,c,1,i,1,3,3#D,c,1,i,0,2,3", []),
]  # fmt: skip


@pytest.mark.parametrize(("text", "expected"), [pytest.param(*row[1:], id=row[0]) for row in ACTIONS])
def test_the_problems_of_actions(problems, text, expected) -> None:
    assert problems(text) == [f"Actions {problem}" for problem in expected]


@pytest.mark.parametrize(("text", "expected"), [pytest.param(*row[1:], id=row[0]) for row in KEYS])
def test_the_problems_of_keys(problems, text, expected) -> None:
    assert problems("D,1,,,,,", text) == [f"Keys {problem}" for problem in expected]


LIMITED = f"{GOOD_KEY}#X,main,1,i,0,0,0#D1,main,2,i,1,0,0#D1,main,3,i,0,0,0"
WITHOUT_ACTION = "Keys 2:1:1 error key-without-action"


@pytest.mark.parametrize(
    ("limit", "options", "expected"),
    [
        pytest.param(None, [], [], id="no limit"),
        pytest.param("2\n", [], [], id="as many keys with an action as the limit"),
        pytest.param("1", [], ["Keys 4:0:1 error too-many-keys"], id="more keys than the limit"),
        pytest.param("1", ["--limit=2"], [], id="the option overrides the file"),
        pytest.param(None, ["--limit=1"], ["Keys 4:0:1 error too-many-keys"], id="a limit only in the option"),
    ],
)
def test_keys_beyond_the_limit_are_reported(problems, limit, options, expected) -> None:
    assert problems(GOOD_ACTION, LIMITED, limit, options=options) == [WITHOUT_ACTION, *expected]


@pytest.mark.parametrize("limit", ["many", "", "2#3"])
def test_a_limit_that_is_not_a_number_is_reported(problems, limit) -> None:
    assert problems(GOOD_ACTION, GOOD_KEY, limit) == [
        "Keys 1:0:1 error too-many-keys",
        "ProgKeysMax 1:0:1 error not-a-number",
    ]


def many(count: int, end: str = "") -> tuple[str, str]:
    """A valid rollout with that many actions and keys, and `end` after each record separator."""
    actions = f"#{end}".join(f"D{number},1,call,,{number},L,S" for number in range(count))
    keys = f"#{end}".join(f"D{number},main,{number},i,0,0,0" for number in range(count))
    return actions, keys


def as_csv(tool: Tool, kind: str, text: str) -> str:
    return tool("defaults", "convert", "--from=text", "--to=csv", "--kind", kind, stdin=text).out


def test_the_same_mistake_in_all_records_is_one_problem(offline: Tool, problems) -> None:
    actions, keys = many(60)
    assert problems(*many(60, "\r\n")) == [
        "Actions 2:1:1 error line-break",
        "Keys 2:1:1 error line-break",
    ]
    assert problems(actions, keys + "#\r\n") == ["Keys 61:1:1 error line-break"]
    csv = as_csv(offline, "actions", actions)
    assert problems(csv, keys) == ["Actions 1:0:1 error wrong-format"]
    assert problems(csv.replace(",", ";"), keys) == ["Actions 1:0:1 error wrong-format"]
    assert problems(actions, '{ "schema": 1 }') == ["Keys 1:0:1 error wrong-format"]
    assert problems(actions.encode("utf-16"), keys) == ["Actions 1:1:1 error not-utf8"]
    assert problems(actions.encode("utf-16-le"), keys) == ["Actions 1:1:2 error null-character"]
    refused = actions.replace("L,S", "L")
    assert [problem[:7] for problem in problems(refused, keys)] == ["Actions"] * 60


@pytest.mark.parametrize(
    ("text", "byte", "place"),
    [
        pytest.param("ü🙂,1,".encode() + b"\xe9,w,a,l,s#x", 10, "1:3:6", id="Latin-1 after wide characters"),
        pytest.param(b"D,1,c,w,a,l,s\xef", 14, "1:7:14", id="truncated at the end"),
        pytest.param(b"\xef\xbf\xbd,1,\xe9,w,a,l,s", 7, "1:3:5", id="after a replacement character"),
        pytest.param(b"D,1,c,w,a,l,s#E,\xe9", 17, "2:2:3", id="in another record"),
    ],
)
def test_bytes_that_are_not_utf8_are_reported(offline: Tool, write, problems, text, byte, place) -> None:
    assert problems(text) == [f"Actions {place} error not-utf8"]
    assert f"error: byte {byte}, 0x" in offline("defaults", "check", write("DefaultActions", text)).out


# The output


def test_a_record_with_too_many_or_too_few_fields_is_shown_field_by_field(offline: Tool) -> None:
    text = "D4,1,call,,501,Smith, John,Smith#D5,1"
    assert offline("defaults", "check", "--kind=actions", "-", stdin=text).lines == [
        "-:1:0:1: error: 8 fields instead of 7: write a comma that is part of a field as `\\,`",
        "    dmId        D4",
        "    type        1",
        "    action      call",
        "    webAppName",
        "    arguments   501",
        "    label       Smith",
        "    shortLabel   John",
        "    -           Smith",
        "-:2:0:1: error: 2 fields instead of 7: each empty field needs a comma, and a field cannot end in `\\`",
        "    dmId        D5",
        "    type        1",
        *(f"    {name:12}(missing)" for name in ("action", "webAppName", "arguments", "label", "shortLabel")),
        "2 errors in -",
    ]


@pytest.mark.parametrize(
    ("width", "text", "shown", "marks"),
    [
        pytest.param(80, "D,12x,c,w,a,l,s", "D,12x,c,w,a,l,s", "  ^~~", id="the whole text"),
        pytest.param(80, "藤\u202e\n,12x,c,w,a,l,s", "藤\\u202e\\n,12x,c,w,a,l,s", "           ^~~", id="non-ASCII characters"),
        pytest.param(24, f"{'i' * 50},12x,{'c' * 50},w,a,l,s", "…iiiiiiii,12x,ccccc…", "          ^~~", id="a part of the text"),
        pytest.param(24, f"藤{'田' * 30},1x,{'c' * 50},w,a,l,s", "…田田田田,1x,cccccc…", "          ^~", id="wide characters"),
        pytest.param(24, f"D,{'x' * 50},c,w,a,l,s", "D,xxxxxxxxxxxxxxxxx…", "  ^~~~~~~~~~~~~~~~~~", id="a long marked part"),
    ],
)  # fmt: skip
def test_other_problems_are_marked_in_the_text(offline: Tool, write, width, text, shown, marks) -> None:
    file = write("DefaultActions", text)
    lines = offline.on_terminal(width, "defaults", "check", file, env={"NO_COLOR": "1"}).lines
    head = next(number for number, line in enumerate(lines) if "not a 32-bit" in line)
    assert lines[head + 1 : head + 3] == [f"    {shown}", f"    {marks}"]
    assert HEAD.match(lines[head])


def test_at_most_fifty_problems_are_shown(offline: Tool, problems, tmp_path: Path) -> None:
    actions, _ = many(60)
    refused = actions.replace(",1,call", ",x,call")
    assert len(problems(refused)) == 60
    lines = offline("defaults", "check", tmp_path / "DefaultActions").lines
    assert len([line for line in lines if HEAD.match(line)]) == 50
    assert lines[-2:] == ["10 more problems are not shown", f"60 errors in {tmp_path}/DefaultActions"]


def test_rows_have_the_name_and_position_of_the_field(offline: Tool, write) -> None:
    keys = write("DefaultKeys", "D1,main,1O,ic1,0,0,0#D1\n")
    first, second = offline.json("defaults", "check", keys, status=4)
    assert first == {
        "file": str(keys),
        "record": 1,
        "field": 3,
        "fieldName": "position",
        "column": 9,
        "character": 9,
        "severity": "error",
        "code": "not-a-number",
        "message": "the position `1O` is not a 32-bit decimal number and becomes 0",
    }
    assert (second["field"], second["fieldName"], second["character"]) == (None, None, 22)
    terse = offline("defaults", "check", "--terse", "--fields", "code,record", keys)
    assert (terse.lines, terse.status) == (["not-a-number:1", "field-count:2"], 4)


def test_problems_have_colors_on_a_terminal(offline: Tool, write) -> None:
    file = write("DefaultActions", "D1,x,call,,,,")
    assert "\x1b[31merror:\x1b[0m" in offline.on_terminal(80, "defaults", "check", file).out
    plain = offline.on_terminal(80, "defaults", "check", file, env={"NO_COLOR": "1"}).out
    assert "\x1b" not in plain
    assert plain == offline("defaults", "check", file).out


# Arguments and exit status


@pytest.mark.parametrize(
    ("text", "options", "status"),
    [
        pytest.param(GOOD_ACTION, ["--strict"], 0, id="no problems"),
        pytest.param(f"{GOOD_ACTION}#", [], 0, id="a warning"),
        pytest.param(f"{GOOD_ACTION}#", ["--strict"], 4, id="a warning with --strict"),
        pytest.param(f"{GOOD_ACTION},x", [], 4, id="an error"),
        pytest.param(GOOD_ACTION, ["--limit", "many"], 2, id="an invalid limit"),
        pytest.param(GOOD_ACTION, ["--limit", "-1"], 2, id="a negative limit"),
        pytest.param(GOOD_ACTION, ["--kind", "doors"], 2, id="an unknown kind"),
    ],
)
def test_the_exit_status(offline: Tool, write, text, options, status: int) -> None:
    assert offline("defaults", "check", *options, write("DefaultActions", text)).status == status


def test_a_rollout_is_a_directory_or_its_files(offline: Tool, write, tmp_path: Path) -> None:
    actions, keys = write("DefaultActions", GOOD_ACTION), write("DefaultKeys", GOOD_KEY)
    limit = write("ProgKeysMax", "1")
    for paths in ([tmp_path], [keys, limit, actions]):
        result = offline("defaults", "check", *paths)
        assert (result.status, result.err) == (0, "")
        assert result.out == "3 files: 1 action, 1 key, 1 limit, no problems\n"
    assert offline("defaults", "check", "--no-legend", tmp_path).out == ""
    own = write("my-actions", "X,1,,,,,")
    assert [row["code"] for row in offline.json("defaults", "check", tmp_path, own, status=4)] == ["key-without-action"]


def test_keys_without_actions_are_compared_with_the_limit_in_the_same_directory(offline: Tool, write) -> None:
    keys = write("DefaultKeys", f"{GOOD_KEY}#D1,main,1,ic,0,0,0")
    write("ProgKeysMax", "1\n")
    result = offline("defaults", "check", "--json=short", keys)
    assert [row["code"] for row in result.json] == ["too-many-keys"]
    assert "the keys were not compared with them" in result.err


def test_a_dash_is_standard_input(offline: Tool) -> None:
    result = offline("defaults", "check", "--kind", "actions", "-", stdin=f"{GOOD_ACTION}#D2\n")
    assert result.lines[0].startswith("-:2:0:1: error: 1 field instead of 7")
    assert offline("defaults", "check", "-", stdin=GOOD_ACTION).status == 2
    assert offline("defaults", "check", "--kind", "actions", "-", "-", stdin=GOOD_ACTION).status == 2


def test_the_kind_of_a_file_must_be_known(offline: Tool, write) -> None:
    file = write("rollout.txt", GOOD_KEY)
    result = offline("defaults", "check", file)
    assert (result.status, result.out) == (2, "")
    assert "Specify --kind actions or --kind keys." in result.err
    assert offline("defaults", "check", "--kind", "keys", file).status == 0
    assert offline("defaults", "check", "--kind", "actions", file).status == 4
    assert offline("defaults", "check", write("KEYS-and-actions", GOOD_KEY)).status == 2


def test_files_that_cannot_be_used_are_reported(offline: Tool, write, tmp_path: Path) -> None:
    (tmp_path / "empty").mkdir()
    file = tmp_path / "DefaultKeys"
    for paths, status, message in (
        ([file], 1, f"Cannot read {file}: No such file"),
        (["nowhere"], 1, "Cannot read nowhere: No such file"),
        ([tmp_path / "empty"], 1, "contains none of the files DefaultActions, DefaultKeys and ProgKeysMax"),
        ([write("keys1", GOOD_KEY), write("keys2", GOOD_KEY)], 2, "are both DefaultKeys"),
        ([tmp_path, tmp_path / "empty"], 2, "are both directories"),
    ):
        result = offline("defaults", "check", *paths)
        assert (result.status, result.out) == (status, "")
        assert message in result.err


def test_the_service_skips_the_reported_records(ctl: Tool, start, settings, client, write) -> None:
    actions = f"{GOOD_ACTION}#D2,1,call,,501,Smith, John,S##D3,1,call,,C:\\,L,S#"
    keys = f"{GOOD_KEY}#D2,main,1,i,0,0,0#DX,main,2,i,0,0,0#D1,main\\,8,i,0,0,0#D1,m,3,i,x,0,0"
    settings.values.update(DefaultActions=actions, DefaultKeys=keys)
    log = start().log.texts()
    files = write("DefaultActions", actions), write("DefaultKeys", keys)
    rows = ctl.json("defaults", "check", "--limit", "1000", *files, status=4)
    refused = [row for row in rows if row["code"] in ("field-count", "empty-record")]
    assert len([text for text in log if text.startswith("Skipping invalid dm ")]) == len(refused) == 5
    # The second key is dropped because its action is invalid, which is reported for the action.
    assert [row["record"] for row in rows if row["code"] == "key-without-action"] == [3]
    assert [key.position for key in client.get_all_programmable_keys()] == [0, 3]
