"""The commands, scripts and paths that the pages name."""

import re
import shlex
import subprocess
from pathlib import Path
from typing import Iterator

import pytest

from pages import CHECKOUT, PAGES, listings

TOOL = re.compile(r"^(?:\S*/)?progkeysctl$")
SCRIPT = re.compile(r"^(?:\./)?(scripts/[\w/-]+|\.ci/run)$")
FOLDERS = "bench|cmake|docs|examples|packaging|peers|platform|scripts|src|tests|tools"
by_page = pytest.mark.parametrize("page", PAGES, ids=lambda page: str(page.relative_to(CHECKOUT)))


def output_of(*command: str) -> str:
    return subprocess.run(
        command, cwd=CHECKOUT, capture_output=True, text=True, timeout=30, check=True
    ).stdout


def help_of(*command: str) -> str:
    return output_of(*command, "--help")


def typed_lines(page: Path) -> Iterator[str]:
    """Lines of listings that a reader types, with continued lines joined, and code within sentences."""
    for listing in listings(page):
        text = listing.text.replace("\\\n", " ")
        for line in text.splitlines():
            typed = re.match(r"^(?:\(phone\) )?\$ (.*)", line.strip())
            if typed or listing.language == "sh":
                yield typed[1] if typed else line.strip()
    text = page.read_text(encoding="utf-8")
    yield from re.findall(r"^ {4,}(progkeysctl .*)$", text, re.M)
    yield from re.findall(r"`([^`\n]+)`", text)


def commands(page: Path) -> Iterator[list[str]]:
    """The words of each command, without what follows a shell operator."""
    for line in typed_lines(page):
        try:
            words = shlex.split(line, comments=True)
        except ValueError:
            continue
        command: list[str] = []
        for word in [*words, ";"]:
            if re.fullmatch(r"[|&;<>]+.*", word):
                yield command
                command = []
            else:
                command.append(word)


def options(words: list[str]) -> list[str]:
    until_mark = words[: words.index("--")] if "--" in words else words
    return [word.partition("=")[0] for word in until_mark if re.match(r"--?[a-z]", word)]


@pytest.fixture(scope="module")
def tool(bin_dir: Path) -> str:
    return str(bin_dir / "progkeysctl")


@pytest.fixture(scope="module")
def tool_commands(tool: str) -> list[str]:
    return output_of(tool, "help", "--list", "--terse", "--fields", "command").splitlines()


@by_page
def test_the_tool_has_each_command_and_option(page: Path, tool: str, tool_commands: list[str]) -> None:
    unknown = []
    for words in commands(page):
        if not words or not TOOL.match(words[0]):
            continue
        named = [word for word in words[1:3] if re.fullmatch(r"[a-z]+", word)]
        known = [n for n in (2, 1) if " ".join(named[:n]) in tool_commands and len(named) >= n]
        described = help_of(tool, *named[: known[0]]) if known else help_of(tool)
        if (named and not known) or any(option not in described for option in options(words[1:])):
            unknown.append(" ".join(words))
    assert not unknown


@by_page
def test_each_script_exists_and_has_each_option(page: Path) -> None:
    unknown = []
    for words in commands(page):
        script = SCRIPT.match(words[0]) if words else None
        if not script or (CHECKOUT / script[1]).is_dir():
            continue
        given = options(words[1:])
        exists = (CHECKOUT / script[1]).is_file()
        described = help_of(script[1]) if exists and given else ""
        if not exists or any(option not in described for option in given):
            unknown.append(" ".join(words))
    assert not unknown


@by_page
def test_each_path_of_the_checkout_exists(page: Path) -> None:
    text = page.read_text(encoding="utf-8")
    named = set(re.findall(rf"`((?:{FOLDERS})/[\w./-]*)`", text))
    assert not [path for path in sorted(named) if not (CHECKOUT / path).exists()]
