"""The manual pages document the commands, the common options and the exit statuses of the tool."""

import re
import shlex
import subprocess
from pathlib import Path
from typing import Any, Iterator

import pytest

from progkeysctl import Tool

CHECKOUT = Path(__file__).resolve().parents[2]
SOURCES = CHECKOUT / "tools" / "progkeysctl" / "man"
STATUSES = CHECKOUT / "tools" / "progkeysctl" / "outcome" / "ExitStatus.h"
PAGES = sorted(SOURCES.glob("*.scd"))

by_page = pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)


@pytest.fixture
def commands(offline: Tool) -> list[dict[str, Any]]:
    """All commands with their arguments and options."""
    return offline.json("help", "--list")


def terms(title: str) -> list[str]:
    """The terms that a section of the first page explains, without markup."""
    parts = re.split(r"^# (.+)$", (SOURCES / "progkeysctl.1.scd").read_text(encoding="utf-8"), flags=re.MULTILINE)
    text = dict(zip(parts[1::2], parts[2::2]))[title]
    return [re.sub(r"\*|(?<![A-Z])_|_(?![A-Z])", "", line.removesuffix("++")) for line in text.splitlines() if line.startswith("*")]


def test_every_command_is_documented_with_its_arguments(commands: list[dict[str, Any]]) -> None:
    expected = []
    for command in commands:
        arguments = [argument["names"][0] + "..." * argument["repeatable"] for argument in command["arguments"]]
        required = [argument["required"] for argument in command["arguments"]]
        shown = [name if needed else f"[{name}]" for name, needed in zip(arguments, required)]
        expected.append(" ".join(["progkeysctl", command["command"], *shown]))
    documented = [term for term in terms("COMMANDS") if re.match("progkeysctl [a-z]", term)]
    assert sorted(documented) == sorted(expected)


def test_the_common_options_are_documented(commands: list[dict[str, Any]]) -> None:
    assert terms("OPTIONS") == [
        " ".join([", ".join(option["names"]), option["value"] or ""]).strip() for option in commands[0]["commonOptions"]
    ]


def test_all_exit_statuses_are_documented() -> None:
    known = re.findall(r"^\s+\w+ = (\d+),", STATUSES.read_text(encoding="utf-8"), re.MULTILINE)
    assert [term for term in terms("EXIT STATUS") if term.isdigit()] == known
    assert re.findall(r"^\| (\d+) \|", (CHECKOUT / "docs" / "progkeysctl.md").read_text(encoding="utf-8"), re.MULTILINE) == known


@by_page
def test_referenced_pages_exist(page: Path) -> None:
    named = set(re.findall(r"\*(progkeysctl[\w-]*)\*\(1\)", page.read_text(encoding="utf-8")))
    assert named and named <= {each.name.removesuffix(".1.scd") for each in PAGES}


def examples(page: Path) -> Iterator[list[str]]:
    """Each run of the tool in the examples of the page, as words."""
    for literal in page.read_text(encoding="utf-8").split("```")[1::2]:
        for typed in re.findall(r"^(?:\$ |id=\$\()?progkeysctl ([^:\n]*)$", literal, re.MULTILINE):
            words = shlex.split(typed.rstrip(")"))
            for end in ("--", "||"):
                words = words[: words.index(end)] if end in words else words
            yield words


@by_page
def test_examples_use_existing_commands_and_options(page: Path, commands: list[dict[str, Any]]) -> None:
    runs = list(examples(page))
    assert runs
    for words in runs:
        (command,) = [each for each in commands if words[: len(each["command"].split())] == each["command"].split()]
        names = {name for option in command["options"] + command["commonOptions"] for name in option["names"]}
        assert {word.partition("=")[0] for word in words if word.startswith("-")} <= names


@by_page
def test_pages_are_converted_without_messages(page: Path) -> None:
    made = subprocess.run(["scdoc"], input=page.read_text(encoding="utf-8"), capture_output=True, encoding="utf-8", check=False)
    assert (made.returncode, made.stderr) == (0, "")


def test_the_built_pages_are_of_this_version(bin_dir: Path, offline: Tool) -> None:
    version = offline("--version").out.strip()
    for page in PAGES:
        text = (bin_dir.parent / "share" / "man" / "man1" / page.name.removesuffix(".scd")).read_text(encoding="utf-8")
        assert f'"progkeysctl {version}"' in text
        assert "@" not in text
