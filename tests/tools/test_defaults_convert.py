"""`defaults convert`: provisioned records as text, CSV and JSON."""

import csv
import io
import json
import os
from pathlib import Path

import pytest

from progkeysctl import Tool

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"
FILES = sorted(EXAMPLES.glob("settings*/Default*"))
KEYS_HEADER = "dmId,container,position,icon,type,aom_type,aom_addr"


def convert(tool: Tool, start: str, end: str, *words: object, **options):
    return tool("defaults", "convert", "--from", start, "--to", end, *words, **options)


@pytest.mark.parametrize("file", FILES, ids=lambda file: f"{file.parent.name}/{file.name}")
def test_a_rollout_comes_back_as_it_was(offline: Tool, tmp_path: Path, file: Path) -> None:
    as_csv, as_json, as_text = (tmp_path / name for name in ("rows.csv", "records.json", "text"))
    for start, end, source, target in [
        ("text", "csv", file, as_csv),
        ("csv", "json", as_csv, as_json),
        ("json", "text", as_json, as_text),
    ]:
        result = convert(offline, start, end, "-o", target, source)
        assert (result.status, result.out, result.err) == (0, "", "")
    assert as_text.read_bytes() == file.read_bytes()


def test_a_pipe_needs_no_file(offline: Tool) -> None:
    text = "a\\,b,main,-7,i\\#c,1,+2,3O\n"
    rows = convert(offline, "text", "csv", "--kind", "keys", stdin=text)
    assert list(csv.reader(io.StringIO(rows.out, newline=""), strict=True)) == [
        KEYS_HEADER.split(","),
        ["a,b", "main", "-7", "i#c", "1", "+2", "3O"],
    ]
    records = convert(offline, "csv", "json", "-", stdin=rows.out)
    assert json.loads(records.out) == {
        "schema": "com.velmora.Tessaro.ProgrammableKeys.Defaults",
        "version": 1,
        "kind": "keys",
        "records": [
            {
                "dmId": "a,b",
                "container": "main",
                "position": -7,
                "icon": "i#c",
                "type": 1,
                "aom_type": "+2",
                "aom_addr": "3O",
            }
        ],
    }
    assert convert(offline, "json", "text", stdin=records.out).out == text


def test_csv_of_another_program_is_understood(offline: Tool) -> None:
    rows = (
        "\ufefflabel,dmId,type,action,webAppName,arguments,shortLabel\r\n"
        '"Smith, John ""JS""",D1,1,call,,"1\n2", J#S \r\n'
    )
    result = convert(offline, "csv", "text", stdin=rows)
    assert result.out == 'D1,1,call,,1\n2,Smith\\, John "JS", J\\#S \n'


@pytest.mark.parametrize(
    ("start", "end", "options", "source", "complaint"),
    [
        pytest.param(
            "text", "csv", ["--kind", "keys"], "D1,main, left,0,ic1,1,0,0",
            "-:1:2:8: error: 8 fields instead of 7", id="a refused record",
        ),
        pytest.param("csv", "json", [], "a,b,c", "a line of field names", id="no header"),
        pytest.param("csv", "json", [], f'{KEYS_HEADER}\na"b', "line 2 of -", id="a stray quote"),
        pytest.param(
            "csv", "text", [], f"{KEYS_HEADER}\nD,escComa,1,i,0,0,0\n",
            "Record 1 cannot be written as text: field 2, container, contains the word `escComa`",
            id="a placeholder word",
        ),
        pytest.param(
            "csv", "text", [], f"{KEYS_HEADER}\nD,C:\\,1,i,0,0,0\n",
            "Record 1 cannot be written as text: field 2, container, ends in a backslash",
            id="a backslash before a separator",
        ),
        pytest.param("json", "text", [], "[]", "- is no JSON object", id="another JSON"),
        pytest.param("json", "csv", [], "{", "line 1 of - is no JSON", id="no JSON"),
        pytest.param(
            "csv", "json", ["--kind", "actions"], f"{KEYS_HEADER}\n",
            "The columns of - are those of keys", id="the other kind",
        ),
    ],
)  # fmt: skip
def test_what_cannot_be_converted_leaves_no_file(
    offline: Tool, tmp_path: Path, start, end, options, source, complaint
) -> None:
    target = tmp_path / "target"
    result = convert(offline, start, end, *options, "-o", target, stdin=source)
    assert (result.status, result.out) == (4, "")
    assert complaint in result.err
    assert list(tmp_path.iterdir()) == []
    target.write_text("what was there")
    assert convert(offline, start, end, *options, "-o", target, stdin=source).status == 4
    assert target.read_text() == "what was there"
    assert list(tmp_path.iterdir()) == [target]


def test_refused_records_lead_to_the_check(offline: Tool, tmp_path: Path) -> None:
    file = tmp_path / "DefaultActions"
    file.write_text("D1,1,call,,501,Smith, John,Smith#\n")
    result = convert(offline, "text", "json", file)
    assert (result.status, result.out) == (4, "")
    assert f"{file}:1:6:21: error: 8 fields instead of 7" in result.err
    assert f"{file}:2:0:1: warning: the `#` at the end" in result.err
    assert f"`progkeysctl defaults check --kind actions {file}`" in result.err


def test_a_kind_that_nobody_tells_is_asked_for(offline: Tool) -> None:
    result = convert(offline, "text", "csv", stdin="")
    assert (result.status, result.out) == (2, "")
    assert "Say so with --kind actions or --kind keys." in result.err


def test_files_that_cannot_be_used_are_a_failure(offline: Tool, tmp_path: Path) -> None:
    nowhere = tmp_path / "nowhere" / "DefaultKeys"
    result = convert(offline, "text", "csv", nowhere)
    assert (result.status, result.out) == (1, "")
    assert f"{nowhere} cannot be read" in result.err
    result = convert(offline, "text", "csv", "-o", nowhere, FILES[0])
    assert (result.status, result.out) == (1, "")
    assert f"{nowhere} cannot be written" in result.err


def test_a_pipe_is_written_to_and_stays_one(offline: Tool, tmp_path: Path) -> None:
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
    try:
        source = "D1,main,0,ic1,1,0,0\n"
        result = convert(offline, "text", "text", "--kind", "keys", "-o", pipe, stdin=source)
        assert (result.status, result.out, result.err) == (0, "", "")
        assert os.read(reader, 1000).decode() == source
    finally:
        os.close(reader)
    assert pipe.is_fifo()


def test_forms_must_be_known_and_given(offline: Tool) -> None:
    assert convert(offline, "text", "xml", FILES[0]).status == 2
    assert offline("defaults", "convert", "--from", "text", FILES[0]).status == 2
