"""Command lines with mistakes, and closed streams."""

import subprocess

import pytest

from progkeysctl import Tool, environment
from samples import CALL, SET_KEY
from sandbox.client import Client
from sandbox.processes import Module
from sandbox.records import Key


@pytest.fixture
def key(client: Client, phone: Module) -> Key:
    """A key with an action."""
    bound = SET_KEY._replace(idAction=client.add_action(CALL))
    return bound._replace(idKey=client.create_programmable_key(bound))


@pytest.mark.parametrize(
    "words",
    [
        ["key", "add", "position=2", "idAction=-1"],
        ["key", "set", 1, "icon=new"],
        ["key", "move", "1=9"],
        ["key", "delete", 1],
        ["restore", "default", "--yes"],
    ],
    ids=lambda words: " ".join(map(str, words[:2])),
)
def test_an_unknown_field_is_reported_before_any_change(
    ctl: Tool, client: Client, key: Key, words: list[object]
) -> None:
    before = (client.get_all_actions(), client.get_all_programmable_keys())
    result = ctl(*words, "--json=short", "--fields", "color")
    assert (result.status, result.out) == (2, "")
    assert "--fields: unknown field color" in result.err
    assert (client.get_all_actions(), client.get_all_programmable_keys()) == before


@pytest.mark.parametrize("words", [["import", "-"], ["monitor"], ["press", "2/5"]], ids=lambda words: words[0])
def test_an_unknown_field_is_reported_before_waiting(ctl: Tool, client: Client, key: Key, words: list[str]) -> None:
    result = ctl(*words, "--fields", "color", stdin=ctl("export").out)
    assert (result.status, result.out) == (2, "")
    assert "--fields: unknown field color" in result.err


@pytest.mark.parametrize("text", ["", "0x1", "1.0", "one", "9223372036854775808", "-9223372036854775809"])
def test_an_invalid_id_is_refused(ctl: Tool, client: Client, key: Key, text: str) -> None:
    result = ctl("key", "delete", text)
    assert (result.status, result.out) == (2, "")
    assert f'"{text}" is not a 64-bit integer' in result.err
    assert client.get_all_programmable_keys() == [key]


def test_numbers_are_decimal(ctl: Tool, client: Client, key: Key) -> None:
    assert ctl.json("key", "show", "001") == key._asdict()
    result = ctl("key", "show", "010")
    assert result.status == 10
    assert "There is no key 10" in result.err
    assert [row["idKey"] for row in ctl.json("key", "list", "--type", "00")] == [key.idKey]


@pytest.mark.parametrize("option", ["--address", "--fields"])
def test_an_empty_value_is_refused(ctl: Tool, phone: Module, option: str) -> None:
    result = ctl("status", option, "")
    assert (result.status, result.out) == (2, "")
    assert option in result.err


@pytest.mark.parametrize("words", ["key list", "key set 1 icon=new dmId=D1 -j", "export"])
def test_a_closed_stdout_is_an_error(ctl: Tool, client: Client, key: Key, words: str) -> None:
    ended = closing(ctl, words, "1>&-")
    assert ended.returncode == 1
    assert "Cannot write the output: Bad file descriptor" in ended.stderr


def test_warnings_are_lost_if_stderr_is_closed(ctl: Tool, client: Client, key: Key) -> None:
    """With stderr closed, the bus socket could get descriptor 2. Warnings must not be written there."""
    closing(ctl, "key set 1 icon=new dmId=D1", "0<&- 1>&- 2>&-")
    assert client.get_all_programmable_keys() == [key._replace(icon="new", dmId="D1")]
    ended = closing(ctl, "import -", "0<&-")
    assert ended.returncode == 1
    assert "Cannot read standard input: Bad file descriptor" in ended.stderr


def closing(ctl: Tool, words: str, redirections: str) -> subprocess.CompletedProcess[str]:
    """Runs the tool with closed streams."""
    return subprocess.run(
        ["sh", "-c", f'exec "$0" {words} {redirections}', ctl.executable],
        capture_output=True, encoding="utf-8", env=environment(ctl.address, {}), check=False,
    )
