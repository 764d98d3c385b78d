"""Completion in bash."""

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
    """Completion without a bus."""
    return Completer(offline)


@pytest.fixture
def phone(service: Module, client: Client, ctl: Tool) -> Tool:
    """A phone with two actions, keys in three containers, and a key on an add-on module."""
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


@pytest.fixture
def commands(offline: Tool) -> list[dict[str, Any]]:
    """All commands with their arguments and options."""
    listed = offline.json("help", "--list")
    assert len(listed) > 20
    return listed


def offered_names(options: list[dict[str, Any]]) -> set[str]:
    return {option["names"][-1] for option in options}


# Comparison with `help --list`

def test_every_command_is_offered_at_its_position(complete: Completer, commands: list[dict[str, Any]]) -> None:
    expected: dict[str, set[str]] = {}
    for command in commands:
        words = command["command"].split()
        for place, word in enumerate(words):
            expected.setdefault(" ".join(["progkeysctl", *words[:place], ""]), set()).add(word)
    answers = complete.all(list(expected))
    assert {line: set(answer.words) for line, answer in zip(expected, answers)} == expected
    assert complete.words("progkeysctl help key a") == ["add"]


def test_every_option_is_offered_for_its_command(complete: Completer, commands: list[dict[str, Any]]) -> None:
    expected = {
        f"progkeysctl {command['command']} -": offered_names(command["options"] + command["commonOptions"])
        for command in commands
    }
    answers = complete.all(list(expected))
    assert {line: set(answer.words) for line, answer in zip(expected, answers)} == expected


# A partly typed line

@pytest.mark.parametrize(
    ("line", "words"),
    [
        pytest.param("progkeysctl k", ["key"], id="a command"),
        pytest.param("progkeysctl --session --timeout 3 mon", ["monitor"], id="a command after options"),
        pytest.param("progkeysctl --timeout ", [], id="a value without candidates"),
        pytest.param("progkeysctl --json ", ["pretty", "short"], id="a choice"),
        pytest.param("progkeysctl --json=p", ["pretty"], id="a choice after an equals sign"),
        pytest.param("progkeysctl key list --terse --te", [], id="a flag is offered once"),
        pytest.param("progkeysctl key list --container=x --co", ["--color"], id="an option with a value is offered once"),
        pytest.param("progkeysctl restore -- f", ["factory"], id="an argument after --"),
        pytest.param("progkeysctl restore default f", [], id="no extra argument"),
        pytest.param("progkeysctl restore ", ["default", "factory"], id="the states to restore"),
        pytest.param("progkeysctl nonsense ", [], id="an unknown command"),
        pytest.param("progkeysctl key list --fields idKey,d", ["idKey,dmId"], id="the last of a list"),
        pytest.param("progkeysctl action set 1 lab", ["label="], id="a field of an action"),
        pytest.param("progkeysctl key set 1 icon=a aom", ["aom_type=", "aom_addr="], id="fields of a key"),
        pytest.param("progkeysctl key set 1 icon=a ic", [], id="a field is set once"),
    ],
)
def test_the_candidates_for_a_partly_typed_line(complete: Completer, line: str, words: list[str]) -> None:
    assert complete.words(line) == words


def test_options_are_offered_if_there_are_no_arguments(complete: Completer) -> None:
    assert "--type" in complete.words("progkeysctl key list ")
    assert "--yes" in complete.words("progkeysctl restore default ")


@pytest.mark.parametrize(("group", "fields"), [("key", KEY_FIELDS), ("action", ACTION_FIELDS)])
def test_field_names_are_offered(complete: Completer, group: str, fields: list[str]) -> None:
    assert complete(f"progkeysctl {group} show --fields ") == (fields, [])
    assert complete.words(f"progkeysctl {group} show --fields={fields[0]},") == [f"{fields[0]},{name}" for name in fields[1:]]
    assert complete(f"progkeysctl {group} add ") == ([f"{name}=" for name in fields[1:]], [])


def test_the_offered_fields_of_a_list_are_those_of_the_tool(complete: Completer, phone: Tool) -> None:
    for group in ("key", "action"):
        listed = complete.words(f"progkeysctl {group} list --fields ")
        assert sorted(phone.json(group, "list")[0]) == sorted(listed)


def test_the_offered_events_are_the_documented_ones(complete: Completer) -> None:
    documented = re.findall(r"^\| `(\w+)`", EVENTS.read_text(encoding="utf-8"), re.MULTILINE)
    assert complete.words("progkeysctl monitor --match ") == sorted(documented)
    assert "KEY_DELETE_NTF" in complete.words("progkeysctl monitor --match KEY_CREATE_NTF --match KEY_D")


def test_bash_completes_files_directories_and_programs(complete: Completer) -> None:
    assert complete("progkeysctl import x") == ([], ["default"])
    assert complete("progkeysctl export --output x") == ([], ["default"])
    assert complete("progkeysctl sandbox --data x") == ([], ["dirnames"])
    assert "true" in complete.words("progkeysctl sandbox -- tru")
    assert complete("progkeysctl sandbox -- cat fi") == ([], ["default"])


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
        ("key list --container a:b", ["b=c\\$d"]),
        ("key list --container=a:b=", ["c\\$d"]),
    ],
)
def test_values_of_the_phone_are_offered(on_phone: Completer, line: str, words: list[str]) -> None:
    assert on_phone.words(f"progkeysctl {line}") == words


def test_whole_words_are_completed_without_word_breaks(on_phone: Completer) -> None:
    assert on_phone("progkeysctl key list --container=a:", " \t\n").words == ["--container=a:b=c\\$d"]
    assert on_phone("progkeysctl key set 1 container=h", " \t\n").words == ["container=home"]


def test_the_bus_in_the_line_is_used(phone: Tool, offline: Tool) -> None:
    complete = Completer(offline)
    address = str(phone.address)
    assert complete.words("progkeysctl press ") == []
    assert complete.words(f"progkeysctl --address {address} press ") == ["2/5"]
    assert complete.words(f"progkeysctl press --address='{address}' ") == ["2/5"]


# Without a phone

@pytest.fixture
def silent_bus(tmp_path: Path) -> Iterator[str]:
    """A bus that accepts connections but sends nothing."""
    path = tmp_path / "bus"
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(path))
        listener.listen()
        yield f"unix:path={path}"


def test_without_a_service_nothing_is_offered(ctl: Tool) -> None:
    assert Completer(ctl)("progkeysctl key show ") == ([], [])


def test_completion_does_not_wait_for_a_silent_bus(silent_bus: str, offline: Tool) -> None:
    """The completion ends before the timeout of a call."""
    assert Completer(offline)(f"progkeysctl --address {silent_bus} key show ") == ([], [])


# At a terminal

@pytest.fixture(params=["alone", "with bash-completion"])
def bash(request: pytest.FixtureRequest, phone: Tool, tmp_path: Path) -> Iterator[Bash]:
    """An interactive bash with the completion."""
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


def test_tab_completes_words(bash: Bash) -> None:
    for typed, words in {
        "progkeysctl mon": "<progkeysctl><monitor>",
        "progkeysctl key set 1 container=my": "<progkeysctl><key><set><1><container=my keys>",
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


def test_tab_lists_the_candidates(bash: Bash) -> None:
    assert bash.offered("progkeysctl key delete ", "4").split() == ["1", "2", "3", "4"]
