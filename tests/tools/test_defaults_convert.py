"""`defaults convert`: provisioned records as text, CSV and JSON."""

import csv
import io
import json
import os
import subprocess
from pathlib import Path

import pytest

from progkeysctl import Tool, environment

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"
FILES = sorted(EXAMPLES.glob("settings*/Default*"))
KEYS = "dmId,container,position,icon,type,aom_type,aom_addr"
ACTIONS = "dmId,type,action,webAppName,arguments,label,shortLabel"
SCHEMA = "com.velmora.Tessaro.ProgrammableKeys.Defaults"


def convert(tool: Tool, start: str, end: str, *words: object, **options):
    return tool("defaults", "convert", "--from", start, "--to", end, *words, **options)


@pytest.mark.parametrize("file", FILES, ids=lambda file: f"{file.parent.name}/{file.name}")
def test_a_rollout_is_the_same_after_conversion_to_each_format(offline: Tool, tmp_path: Path, file: Path) -> None:
    as_csv, as_json, as_text = (tmp_path / name for name in ("rows.csv", "records.json", "text"))
    for start, end, source, target in [
        ("text", "csv", file, as_csv),
        ("csv", "json", as_csv, as_json),
        ("json", "text", as_json, as_text),
    ]:
        result = convert(offline, start, end, "-o", target, source)
        assert (result.status, result.out, result.err) == (0, "", "")
    assert as_text.read_bytes() == file.read_bytes()


def test_each_format_has_the_same_records(offline: Tool) -> None:
    text = 'a\\,b,main,-7,i\\#c,1,+2,3O#D, "m" ,,,0,0,\\\n'
    rows = convert(offline, "text", "csv", "--kind", "keys", stdin=text)
    assert list(csv.reader(io.StringIO(rows.out, newline=""), strict=True)) == [
        KEYS.split(","),
        ["a,b", "main", "-7", "i#c", "1", "+2", "3O"],
        ["D", ' "m" ', "", "", "0", "0", "\\"],
    ]
    records = convert(offline, "csv", "json", "-", stdin=rows.out)
    assert json.loads(records.out) == {
        "schema": SCHEMA,
        "version": 1,
        "kind": "keys",
        "records": [
            dict(zip(KEYS.split(","), ["a,b", "main", -7, "i#c", 1, "+2", "3O"])),
            dict(zip(KEYS.split(","), ["D", ' "m" ', "", "", 0, 0, "\\"])),
        ],
    }
    assert convert(offline, "json", "text", stdin=records.out).out == text


def test_each_format_can_have_no_records(offline: Tool) -> None:
    rows = convert(offline, "text", "csv", "--kind", "keys", stdin="\n").out
    assert rows == f"{KEYS}\n"
    records = convert(offline, "csv", "json", stdin=rows).out
    assert json.loads(records)["records"] == []
    assert convert(offline, "json", "text", stdin=records).out == "\n"


@pytest.mark.parametrize(
    ("source", "text"),
    [
        pytest.param("\ufeff" + "label,dmId,type,action,webAppName,arguments,shortLabel\r\n"
                     '"Smith, John ""JS""",D1,1,call,,"1\r\n2", J#S \r\n',
                     'D1,1,call,,1\r\n2,Smith\\, John "JS", J\\#S \n', id="other column order, quotes, a byte order mark"),
        pytest.param(ACTIONS.replace(",", ";") + "\nD1;1;call;;5,6;L;S\n", "D1,1,call,,5\\,6,L,S\n", id="semicolons"),
        pytest.param(ACTIONS.replace(",", "\t") + "\nD1\t1\tcall\t\t5;6\tL\tS", "D1,1,call,,5;6,L,S\n", id="tabs, no newline at the end"),
        pytest.param('"dmId","type",action,webAppName,arguments,label,shortLabel\r', "\n", id="a quoted header, a carriage return"),
    ],
)  # fmt: skip
def test_csv_files_of_other_programs_are_read(offline: Tool, tmp_path: Path, source: str, text: str) -> None:
    rows, target = tmp_path / "rows.csv", tmp_path / "text"
    rows.write_bytes(source.encode())
    result = convert(offline, "csv", "text", "-o", target, rows)
    assert (result.status, result.err) == (0, "")
    assert target.read_bytes() == text.encode()


@pytest.mark.parametrize("newline", ["\n", "\r\n", "\r"])
def test_empty_rows_are_skipped_with_a_warning(offline: Tool, tmp_path: Path, newline: str) -> None:
    rows = tmp_path / "rows.csv"
    rows.write_bytes(newline.join((ACTIONS, "", "D1,1,call,,5,L,S", ",,,,,,", "D2,1,call,,5,L,S", ",,,,,,", "")).encode())
    result = convert(offline, "csv", "text", rows)
    assert (result.status, result.out) == (0, "D1,1,call,,5,L,S#D2,1,call,,5,L,S\n")
    assert result.err == f"progkeysctl: warning: {rows}: skipped empty lines: 2, 4, 6\n"


def keys_csv(*rows: str) -> str:
    return "\r\n".join((KEYS, *rows, ""))


VALID_KEY = "D,c,1,i,0,0,0"


@pytest.mark.parametrize(
    ("source", "message"),
    [
        ("", "standard input, line 1: invalid header: missing: `dmId`, "),
        (VALID_KEY, "separated by commas, semicolons or tabs."),
        (f"x,icon,{KEYS.removesuffix(',aom_addr')}", "standard input, line 1: invalid header: missing: `aom_addr`; unknown or repeated: `x`, `icon`."),
        (keys_csv(VALID_KEY, "", "D,c,1,i,0,0"), "standard input, line 4: 6 fields instead of 7"),
        (keys_csv('"a\n\nb",c,1,i,0,0,0', VALID_KEY + ",x"), "standard input, line 3: 8 fields instead of 7"),
        (keys_csv(VALID_KEY, 'D"D,c,1,i,0,0,0'), "standard input, line 3: a quote is misplaced or missing"),
        (keys_csv(VALID_KEY, '"D,c,1,i,0,0,0'), "standard input, line 3: a quote is misplaced or missing"),
        (keys_csv(VALID_KEY, "D,escComa,1,i,0,0,0"), "Line 3 cannot be written as text: the field container contains the reserved word `escComa`"),
        (keys_csv("", "D,C:\\,1,i,0,0,0"), "Line 3 cannot be written as text: the field container ends in a backslash"),
        (keys_csv("\ufeffD,c,1,i,0,0,0"), "Line 2 cannot be written as text: the field dmId begins with U+FEFF"),
        (keys_csv("D,c\0,1,i,0,0,0"), "Line 2 cannot be written as text: the field container contains U+0000"),
    ],
)  # fmt: skip
def test_invalid_csv_is_refused(offline: Tool, source: str, message: str) -> None:
    result = convert(offline, "csv", "text", stdin=source)
    assert (result.status, result.out) == (4, "")
    assert message in result.err


def test_records_of_another_kind_are_refused(offline: Tool) -> None:
    result = convert(offline, "csv", "json", "--kind", "actions", stdin=keys_csv())
    assert (result.status, result.out) == (4, "")
    assert "standard input contains keys" in result.err


JSON = """{
"schema": "%s",
"version": 1,
"kind": "keys",
"records": [{"dmId": "D", "container": "c", "position": 7, "icon": "i", "type": 0, "aom_type": 0, "aom_addr": 0}]}
""" % SCHEMA


@pytest.mark.parametrize(
    ("old", "new", "text"),
    [("7", "-2147483648", "-2147483648"), ("7", "1e2", "100"), ("7", '" +1"', " +1"), ('"c"', '"\ufeff"', None)],
)
def test_numbers_and_texts_in_json_are_converted(offline: Tool, old: str, new: str, text: str) -> None:
    result = convert(offline, "json", "text", stdin=JSON.replace(old, new))
    assert result.status == 0
    expected = ["D", "c", text, "i"] if text else ["D", "\ufeff", "7", "i"]
    assert result.out.split(",")[:4] == expected


@pytest.mark.parametrize(
    ("old", "new", "message"),
    [
        ("]", "}", "standard input is not valid JSON: line 5, column "),
        ('"kind"', 'ü"kind"', "standard input is not valid JSON: line 4, column 2: "),
        (".Defaults", ".Other", f"standard input does not have the schema {SCHEMA}."),
        ("1,", "2,", "standard input does not have version 1"),
        ("1,", '"1",', "standard input does not have version 1"),
        ('"keys"', '"doors"', '"kind" must be "actions" or "keys"'),
        ('"records"', '"rows"', 'standard input: unknown member "rows"'),
        ('"kind": "keys",', "", 'standard input: the member "kind" is missing'),
        ("[{", '{"x": [{', "standard input is not valid JSON: line 6, column 1: "),
        ('"D"', "5", 'record 1: the member "dmId" must be a string'),
        ('"D"', '"\\ud83d"', 'record 1: the member "dmId" must be a string of Unicode characters'),
        ("7", "7.5", 'record 1: the member "position" must be a 32-bit integer or a string'),
        ("7", "2147483648", 'record 1: the member "position" must be'),
        ("7", "true", 'record 1: the member "position" must be'),
        ('"icon"', '"x": 1, "icon"', 'record 1: unknown member "x"'),
        ('"icon": "i", ', "", 'record 1: the member "icon" is missing'),
    ],
)
def test_invalid_json_is_refused(offline: Tool, old: str, new: str, message: str) -> None:
    result = convert(offline, "json", "text", stdin=JSON.replace(old, new, 1))
    assert (result.status, result.out) == (4, "")
    assert message in result.err


@pytest.mark.parametrize(
    ("text", "message"),
    [
        ("D1,main,0,i,0,0,0#D1,main, left,0,ic1,1,0,0", ": the phone does not accept record 2: 8 instead of 7 fields"),
        (f"{VALID_KEY}#", ": the phone does not accept record 2: 1 instead of 7 fields"),
        (KEYS, " cannot be delivered to a phone: the file is CSV"),
    ],
)
def test_text_that_the_phone_does_not_accept_is_refused(offline: Tool, tmp_path: Path, text: str, message: str) -> None:
    file = tmp_path / "DefaultKeys"
    file.write_text(text, encoding="utf-8")
    result = convert(offline, "text", "json", file)
    assert (result.status, result.out) == (4, "")
    assert f"{file}{message}" in result.err
    assert f'"progkeysctl defaults check {file}"' in result.err


def test_a_file_is_written_completely_or_not_at_all(offline: Tool, tmp_path: Path) -> None:
    target = tmp_path / "target"
    assert convert(offline, "json", "csv", "-o", target, stdin="{").status == 4
    assert list(tmp_path.iterdir()) == []
    target.write_text("old")
    assert convert(offline, "json", "csv", "-o", target, stdin="{").status == 4
    assert (target.read_text(), list(tmp_path.iterdir())) == ("old", [target])


@pytest.mark.parametrize("target", ["/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"])
def test_a_device_name_of_standard_output_does_not_replace_the_file(offline: Tool, tmp_path: Path, target: str) -> None:
    output = tmp_path / "output"
    output.write_text("old\n")
    inode = output.stat().st_ino
    words = ("defaults", "convert", "--from=csv", "--to=text", "-o", target)
    with output.open("a") as stream:
        subprocess.run(
            offline.command(*words), input=keys_csv(VALID_KEY), stdout=stream, encoding="utf-8",
            env=environment(None, {}), check=True,
        )  # fmt: skip
    assert (output.read_text(), output.stat().st_ino) == (f"old\n{VALID_KEY}\n", inode)


def test_the_output_can_be_a_named_pipe(offline: Tool, tmp_path: Path) -> None:
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
    try:
        result = convert(offline, "text", "text", "--kind", "keys", "-o", pipe, stdin=VALID_KEY)
        assert (result.status, result.out, result.err) == (0, "", "")
        assert os.read(reader, 1000).decode() == f"{VALID_KEY}\n"
    finally:
        os.close(reader)
    assert pipe.is_fifo()


def test_files_that_cannot_be_used_are_reported(offline: Tool, tmp_path: Path) -> None:
    nowhere = tmp_path / "nowhere" / "DefaultKeys"
    for words, message in ([nowhere], "Cannot read"), (["-o", nowhere, FILES[0]], "Cannot write"):
        result = convert(offline, "text", "csv", *words)
        assert (result.status, result.out) == (1, "")
        assert f"{message} {nowhere}" in result.err


@pytest.mark.parametrize(
    "words",
    [
        ["--from=text", "--to=xml", FILES[0]],
        ["--from=text", FILES[0]],
        ["--from=text", "--to=csv"],
        ["--from=text", "--to=csv", "--terse", FILES[0]],
        ["--from=text", "--to=csv", "--fields=dmId", FILES[0]],
    ],
    ids=["unknown format", "no format", "unknown kind", "--terse", "--fields"],
)
def test_invalid_command_lines_are_refused(offline: Tool, words) -> None:
    result = offline("defaults", "convert", *words)
    assert (result.status, result.out) == (2, "")
