"""The manual pages document exactly the commands and options of the tool."""

import re
import shlex
import subprocess
from pathlib import Path
from typing import Any, Iterator

import pytest

from manual import SOURCES, Page, option_line, page_of, pages, synopsis
from progkeysctl import Tool

CHECKOUT = Path(__file__).resolve().parents[2]
STATUSES = CHECKOUT / "tools" / "progkeysctl" / "outcome" / "ExitStatus.h"
EVENTS = CHECKOUT / "docs" / "events.md"

by_page = pytest.mark.parametrize("page", pages(), ids=lambda page: page.name)


@pytest.fixture
def commands(offline: Tool) -> list[dict[str, Any]]:
    """All commands with their arguments and options."""
    listed = offline.json("help", "--list")
    assert len(listed) > 20
    return listed


def test_every_command_is_documented_with_its_arguments(commands: list[dict[str, Any]]) -> None:
    documented = {page.name: sorted(page.commands()) for page in pages()}
    there: dict[str, list[str]] = {name: [] for name in documented}
    for command in commands:
        there[page_of(command["command"])].append(synopsis(command))
    assert documented == {name: sorted(lines) for name, lines in there.items()}


def test_every_option_is_documented_with_its_value(commands: list[dict[str, Any]]) -> None:
    documented = {line: sorted(options) for page in pages() for line, options in page.commands().items()}
    assert documented == {
        synopsis(command): sorted(option_line(option) for option in command["options"]) for command in commands
    }


def test_the_common_options_are_on_the_first_page(commands: list[dict[str, Any]]) -> None:
    assert sorted(Page("progkeysctl").options()) == sorted(option_line(option) for option in commands[0]["commonOptions"])


def known_statuses() -> set[int]:
    return {int(number) for number in re.findall(r"^\s+\w+ = (\d+),", STATUSES.read_text(encoding="utf-8"), re.MULTILINE)}


def test_the_first_page_has_all_exit_statuses() -> None:
    documented = Page("progkeysctl").statuses()
    assert documented == sorted(known_statuses())
    assert len(documented) > 5


@by_page
def test_the_exit_statuses_of_a_page_exist(page: Page) -> None:
    statuses = page.statuses()
    assert statuses == sorted(set(statuses))
    assert set(statuses) <= known_statuses()


@pytest.mark.parametrize("kind", ["key", "action"])
def test_the_fields_are_those_of_the_tool(kind: str, offline: Tool) -> None:
    complaint = offline(kind, "add", "nonsense=1").err
    fields = re.search(r"The fields are (.*)\.", complaint)
    assert fields, complaint
    assert Page(f"progkeysctl-{kind}").terms("DESCRIPTION") == fields[1].split(", ")


def test_the_events_are_those_of_the_service() -> None:
    events = re.findall(r"^\| `(\w+)`", EVENTS.read_text(encoding="utf-8"), re.MULTILINE)
    documented = [term for term in Page("progkeysctl-monitor").terms("EVENTS") if term.isupper()]
    assert sorted(documented) == sorted(events)


@by_page
def test_referenced_pages_exist(page: Page) -> None:
    named = set(re.findall(r"\*(progkeysctl[\w-]*)\*\(1\)", page.text))
    assert named
    assert named <= {each.name for each in pages()}
    assert page.text.startswith(f"{page.name}(1) ")


def lines_of_tool(page: Page) -> Iterator[list[str]]:
    """Each run of the tool in the page's examples, as words."""
    for literal in page.literals():
        for line in literal.splitlines():
            if typed := re.match(r"(?:\(phone\) )?(?:\$ )?(progkeysctl [^:].*)", line):
                words = shlex.split(re.split(r" \|", typed[1])[0])
                for end in ("--", "||"):
                    words = words[: words.index(end)] if end in words else words
                yield words[1:]


@by_page
def test_examples_use_existing_commands_and_options(page: Page, commands: list[dict[str, Any]]) -> None:
    runs = list(lines_of_tool(page))
    assert runs
    for words in runs:
        (command,) = [each for each in commands if words[: len(each["command"].split())] == each["command"].split()]
        names = {name for option in command["options"] + command["commonOptions"] for name in option["names"]}
        assert {word.partition("=")[0] for word in words if word.startswith("-")} <= names


@by_page
def test_backslashes_in_examples_are_escaped(page: Page) -> None:
    for literal in page.literals():
        assert not re.search(r"(?<!\\)(\\\\)*\\(?!\\)", literal)


@by_page
def test_pages_are_converted_without_messages(page: Page) -> None:
    made = subprocess.run(["scdoc"], input=page.text, capture_output=True, encoding="utf-8", check=False)
    assert (made.returncode, made.stderr) == (0, "")


def test_the_built_pages_are_of_this_version(bin_dir: Path, offline: Tool) -> None:
    cache = bin_dir.parent / "CMakeCache.txt"
    if cache.exists() and "PROGKEYS_MAN:BOOL=OFF" in cache.read_text(encoding="utf-8"):
        pytest.skip("built without manual pages")
    version = offline("--version").out.strip()
    built = sorted((bin_dir.parent / "share" / "man" / "man1").glob("progkeysctl*.1"))
    assert [path.name for path in built] == sorted(path.name.removesuffix(".scd") for path in SOURCES.glob("*.scd"))
    for path in built:
        text = path.read_text(encoding="utf-8")
        assert f'"progkeysctl {version}"' in text
        assert "@" not in text
