"""Completion of half-typed lines in bash."""

import re
import socket
from pathlib import Path
from typing import Any, Iterator

import pytest

from completing import BASH_COMPLETION, Bash, Completer, script_of
from progkeysctl import Tool
from samples import CALL, MODULE_KEY, SET_KEY
from sandbox.client import Client
from sandbox.processes import Module

EVENTS = Path(__file__).resolve().parents[2] / "docs" / "events.md"

KEY_FIELDS = ["idKey", "dmId", "idAction", "container", "position", "icon", "type", "aom_type", "aom_addr"]
ACTION_FIELDS = ["idAction", "dmId", "type", "action", "webAppName", "arguments", "label", "shortLabel"]


@pytest.fixture
def complete(offline: Tool) -> Completer:
    """Where there is no bus at all."""
    return Completer(offline)


@pytest.fixture
def phone(service: Module, client: Client, ctl: Tool) -> Tool:
    """A phone with two actions, a key in each of three containers and one on an add-on module."""
    assert service.running
    for label in ("Desk", "Door"):
        client.add_action(CALL._replace(label=label))
    for container in ("my keys", "home", "a:b=c$d"):
        client.create_programmable_key(SET_KEY._replace(idAction=1, container=container))
    client.create_programmable_key(MODULE_KEY._replace(idAction=2, container=""))
    return ctl


@pytest.fixture
def on_phone(phone: Tool) -> Completer:
    return Completer(phone)


def long_names(options: list[dict[str, Any]]) -> set[str]:
    return {option["names"][-1] for option in options}


# Against what the tool tells of itself

def test_every_command_is_offered_at_its_place(complete: Completer, offline: Tool) -> None:
    program = offline("__commands").json
    expected: dict[str, set[str]] = {}
    for command in program["commands"]:
        for place in range(len(command["words"])):
            group = " ".join(["progkeysctl", *command["words"][:place]])
            expected.setdefault(f"{group} ", set()).add(command["words"][place])
    answers = complete.all(list(expected))
    assert {line: set(answer.words) for line, answer in zip(expected, answers)} == expected
    assert len(expected) > 3


def test_every_option_is_offered_at_its_command(complete: Completer, offline: Tool) -> None:
    program = offline("__commands").json
    common = long_names(program["options"])
    expected = {
        f"progkeysctl {' '.join(command['words'])} -": common | long_names(command["options"])
        for command in program["commands"]
    }
    answers = complete.all(list(expected))
    assert {line: set(answer.words) for line, answer in zip(expected, answers)} == expected
    assert "--version" in complete.words("progkeysctl --v")


def test_every_argument_of_some_words_is_offered_them(complete: Completer, offline: Tool) -> None:
    program = offline("__commands").json
    expected: dict[str, list[str]] = {}
    for command in [program, *program["commands"]]:
        start = " ".join(["progkeysctl", *command["words"]])
        for option in command["options"]:
            if option["choices"]:
                expected[f"{start} {option['names'][-1]} "] = option["choices"]
                expected[f"{start} {option['names'][-1]}="] = option["choices"]
    answers = complete.all(list(expected))
    assert {line: answer.words for line, answer in zip(expected, answers)} == expected
    assert complete.words("progkeysctl restore ") == ["default", "factory"]


def test_every_file_and_directory_is_left_to_the_shell(complete: Completer, offline: Tool) -> None:
    program = offline("__commands").json
    expected: dict[str, list[str]] = {}
    for command in program["commands"]:
        start = " ".join(["progkeysctl", *command["words"]])
        for option in command["options"]:
            if option["argument"] in ("FILE", "DIR"):
                expected[f"{start} {option['names'][-1]} x"] = ["default" if option["argument"] == "FILE" else "dirnames"]
        if [each["argument"] for each in command["positionals"]] == ["FILE"]:
            expected[f"{start} "] = ["default"]
    answers = complete.all(list(expected))
    assert {line: answer.options for line, answer in zip(expected, answers)} == expected
    assert len(expected) > 10
    assert not any(answer.words for answer in answers)


# What may stand where

@pytest.mark.parametrize(
    ("line", "words"),
    [
        pytest.param("progkeysctl k", ["key"], id="a command"),
        pytest.param("progkeysctl --session --timeout 3 mon", ["monitor"], id="a command behind options"),
        pytest.param("progkeysctl --timeout ", [], id="an argument that is free"),
        pytest.param("progkeysctl --timeout -", [], id="an argument may look like an option"),
        pytest.param("progkeysctl key list --terse --te", [], id="a flag is given once"),
        pytest.param("progkeysctl --terse key list --te", [], id="also before the command"),
        pytest.param("progkeysctl key list --container=x --co", [], id="an option with one value, too"),
        pytest.param("progkeysctl monitor --match A --ma", ["--match"], id="one with several may be given again"),
        pytest.param("progkeysctl export -", None, id="an option with a short name"),
        pytest.param("progkeysctl export -o", ["-o"], id="the short name itself"),
        pytest.param("progkeysctl export -o x --o", [], id="given by its short name"),
        pytest.param("progkeysctl export -ox --o", [], id="or in one word with its argument"),
        pytest.param("progkeysctl export -- --o", [], id="no option behind the mark"),
        pytest.param("progkeysctl restore -- f", ["factory"], id="an argument behind the mark"),
        pytest.param("progkeysctl restore default f", [], id="no argument too many"),
        pytest.param("progkeysctl nonsense ", None, id="a command that there is not"),
        pytest.param("progkeysctl key list --fields idKey,d", ["idKey,dmId"], id="the last of a list"),
        pytest.param("progkeysctl action set 1 lab", ["label="], id="a field of an action"),
        pytest.param("progkeysctl key set 1 icon=a aom", ["aom_type=", "aom_addr="], id="fields of a key"),
        pytest.param("progkeysctl key set 1 icon=a ic", [], id="a field is set once"),
        pytest.param("progkeysctl key list 2> /dev/null --co", ["--container"], id="redirections are left out"),
        pytest.param("progkeysctl __", [], id="hidden commands"),
        pytest.param("progkeysctl __commands --", None, id="and what is behind them"),
    ],
)
def test_a_half_typed_line(complete: Completer, offline: Tool, line: str, words: list[str] | None) -> None:
    if words is None:
        given = {"progkeysctl export -": "progkeysctl export --", "progkeysctl __commands --": "progkeysctl --"}
        words = complete.words(given.get(line, "progkeysctl "))
        assert words
    found = complete.words(line)
    assert [word for word in found if word != "-j"] == [word for word in words if word != "-j"]


def test_options_come_by_themselves_where_nothing_else_can_stand(complete: Completer) -> None:
    assert "--type" in complete.words("progkeysctl key list ")
    assert "--yes" in complete.words("progkeysctl restore default ")
    assert complete.words("progkeysctl restore ") == ["default", "factory"]


@pytest.mark.parametrize(("group", "fields"), [("key", KEY_FIELDS), ("action", ACTION_FIELDS)])
def test_fields_by_their_names(complete: Completer, group: str, fields: list[str]) -> None:
    assert complete(f"progkeysctl {group} list --fields ") == (fields, ["nosort", "nospace"])
    assert complete.words(f"progkeysctl {group} list --fields={fields[0]},") == [f"{fields[0]},{name}" for name in fields[1:]]
    assert complete(f"progkeysctl {group} add ") == ([f"{name}=" for name in fields[1:]], ["nosort", "nospace"])


def test_events_are_those_that_are_documented(complete: Completer) -> None:
    documented = re.findall(r"^\| `(\w+)`", EVENTS.read_text(encoding="utf-8"), re.MULTILINE)
    assert complete.words("progkeysctl monitor --match ") == sorted(documented)
    assert "KEY_DELETE_NTF" in complete.words("progkeysctl monitor --match KEY_CREATE_NTF K")


def test_the_command_of_a_sandbox_is_a_program(complete: Completer) -> None:
    assert "true" in complete.words("progkeysctl sandbox -- tru")
    assert complete("progkeysctl sandbox -- cat fi") == ([], ["default"])
    assert complete("progkeysctl key list > fi") == ([], ["default"])


# From the phone

@pytest.mark.parametrize(
    ("line", "words"),
    [
        ("key show ", ["1", "2", "3", "4"]),
        ("key delete 1 3 ", ["2", "4"]),
        ("key move ", ["1=", "2=", "3=", "4="]),
        ("key move 1=7 ", ["2=", "3=", "4="]),
        ("key move 1=", []),
        ("icon ", ["1", "2", "3", "4"]),
        ("action show ", ["-1", "1", "2"]),
        ("key add idAction=", ["-1", "1", "2"]),
        ("key set 1 container=h", ["home"]),
        ("key list --module ", ["2"]),
        ("key list --module=", ["2"]),
        ("press ", ["2/5"]),
        ("key list --container ", ["a:b=c\\$d", "home", "my\\ keys"]),
        ("key list --container=my\\ ", ["my\\ keys"]),
        ("key list --container 'my ", ["my keys"]),
        ('key list --container="my ', ["my keys"]),
        ('key set 1 "container=my k', ["container=my keys"]),
        ("key list --container a:b", ["b=c\\$d"]),
        ("key list --container=a:b=", ["c\\$d"]),
        ('key list --container "a', ["a:b=c\\$d"]),
        ("key list --container 'a", ["a:b=c$d"]),
    ],
)
def test_what_is_on_the_phone(on_phone: Completer, line: str, words: list[str]) -> None:
    assert on_phone.words(f"progkeysctl {line}") == words


def test_where_equals_and_colons_do_not_break_words_they_are_given_whole(on_phone: Completer) -> None:
    assert on_phone("progkeysctl key list --container=a:", " \t\n").words == ["--container=a:b=c\\$d"]
    assert on_phone("progkeysctl key set 1 container=h", " \t\n").words == ["container=home"]


def test_the_phone_is_asked_on_the_bus_that_the_line_names(phone: Tool, offline: Tool) -> None:
    complete = Completer(offline)
    address = str(phone.address)
    assert complete.words("progkeysctl press ") == []
    assert complete.words(f"progkeysctl --address {address} press ") == ["2/5"]
    assert complete.words(f"progkeysctl press --address='{address}' ") == ["2/5"]


def test_the_session_bus_is_asked_for_it(phone: Tool, offline: Tool) -> None:
    ask = ("__complete", "--", "progkeysctl --session press ")
    assert offline(*ask, env={"DBUS_SESSION_BUS_ADDRESS": str(phone.address)}).lines == ["words", "2/5"]


# Without a phone

@pytest.fixture
def silent_bus(tmp_path: Path) -> Iterator[str]:
    """Takes connections and says nothing."""
    path = tmp_path / "bus"
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(path))
        listener.listen()
        yield f"unix:path={path}"


def test_without_a_service_there_is_nothing_and_no_word_of_it(ctl: Tool) -> None:
    result = ctl("__complete", "--", "progkeysctl key show ")
    assert (result.status, result.out, result.err) == (0, "words\n", "")


def test_a_bus_that_says_nothing_is_not_waited_for(silent_bus: str, offline: Tool) -> None:
    """Within the limit of every run, which a call to the phone may take longer than."""
    result = offline("__complete", "--", f"progkeysctl --address {silent_bus} key show ")
    assert (result.status, result.err) == (0, "")


# At a terminal

@pytest.fixture(params=["alone", "with the package"])
def bash(request: pytest.FixtureRequest, phone: Tool, tmp_path: Path) -> Iterator[Bash]:
    """A shell at a terminal that has the completion."""
    script = script_of(phone.executable.parent)
    home = tmp_path / "home"
    home.mkdir()
    (home / "an export.json").touch()
    (home / "a directory").mkdir()
    if request.param == "alone":
        preparation = [f". '{script}'"]
    else:
        preparation = [f"BASH_COMPLETION_USER_DIR='{script.parents[1]}'", f". {BASH_COMPLETION}"]
    terminal = Bash(phone, home, *preparation)
    yield terminal
    terminal.line("exit")
    terminal.status()


def test_pressing_tab(bash: Bash) -> None:
    for typed, words in {
        "progkeysctl mon": "<progkeysctl><monitor>",
        "progkeysctl key set 1 container=my": "<progkeysctl><key><set><1><container=my keys>",
        'progkeysctl key set 1 container="my': "<progkeysctl><key><set><1><container=my keys>",
        "progkeysctl key set 1 'container=my k": "<progkeysctl><key><set><1><container=my keys>",
        "progkeysctl key set 1 container=my\\ k": "<progkeysctl><key><set><1><container=my keys>",
        "progkeysctl key list --container=a:": "<progkeysctl><key><list><--container=a:b=c$d>",
        "progkeysctl key list --container a:b=": "<progkeysctl><key><list><--container><a:b=c$d>",
        "progkeysctl --json=pr": "<progkeysctl><--json=pretty>",
        "progkeysctl key set 1 ico": "<progkeysctl><key><set><1><icon=>",
        "progkeysctl key list --fields idKey,la\x7f\x7fico": "<progkeysctl><key><list><--fields><idKey,icon>",
        "progkeysctl import an": "<progkeysctl><import><an export.json>",
        "progkeysctl export --output=an": "<progkeysctl><export><--output=an export.json>",
        "progkeysctl sandbox --data a": "<progkeysctl><sandbox><--data><a directory/>",
        "progkeysctl press ": "<progkeysctl><press><2/5>",
    }.items():
        assert bash.complete(typed) == words, typed


def test_pressing_tab_shows_what_there_is(bash: Bash) -> None:
    assert bash.offered("progkeysctl key delete ", "4").split() == ["1", "2", "3", "4"]
