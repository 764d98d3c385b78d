"""The manual pages, and whether the manual of the tool is complete."""

import os
import re
import subprocess
from pathlib import Path
from typing import Any

import pytest

from progkeysctl import Tool

CHECKOUT = Path(__file__).resolve().parents[2]
MANUAL = (CHECKOUT / "docs" / "progkeysctl.md").read_text(encoding="utf-8")
STATUSES = CHECKOUT / "tools" / "progkeysctl" / "outcome" / "Failure.h"
PAGES = {
    "progkeysctl(1)": "docs/progkeysctl.md",
    "progkeysctl-defaults(1)": "docs/provisioning.md",
    "settingsmanager(1)": "peers/settingsmanager/README.md",
    "zelprogrammablekeys(8)": "docs/operating.md",
}


@pytest.fixture
def commands(offline: Tool) -> list[dict[str, Any]]:
    """All commands with their arguments and options."""
    return offline.json("help", "--list")


def first_cells(heading: str) -> list[str]:
    """The first cells of the tables in a section of the tool's manual."""
    (section,) = re.findall(rf"^## {heading}$(.*?)(?=^## |\Z)", MANUAL, re.M | re.S)
    return re.findall(r"^\| (.*?) \|", section, re.M)


def test_every_command_is_documented(commands: list[dict[str, Any]]) -> None:
    documented = [term for cell in first_cells("Commands") for term in re.findall(r"`([a-z].*?)`", cell)]
    assert sorted(documented) == sorted(command["command"] for command in commands)


def test_the_common_options_are_documented(commands: list[dict[str, Any]]) -> None:
    documented = [term for cell in first_cells("Commands") for term in re.findall(r"`(-[^` ]+)", cell)]
    assert sorted(documented) == sorted(name for option in commands[0]["commonOptions"] for name in option["names"])


def test_all_exit_statuses_are_documented() -> None:
    known = re.findall(r"^\s+\w+ = (\d+),", STATUSES.read_text(encoding="utf-8"), re.M)
    assert [cell for cell in first_cells("Exit status") if cell.isdigit()] == known


@pytest.mark.parametrize("page", PAGES)
def test_the_page_is_shown_without_warnings(page: str, bin_dir: Path, offline: Tool) -> None:
    name, section = page.rstrip(")").split("(")
    shown = subprocess.run(
        ["man", "--warnings", "--local-file", bin_dir.parent / "share" / "man" / f"man{section}" / f"{name}.{section}"],
        env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"},
        capture_output=True,
        encoding="utf-8",
        check=True,
    )
    assert shown.stderr == ""
    assert re.search(rf"^NAME\n +{name} - \w", shown.stdout, re.M)
    version = offline("--version").out.split()[-1]
    assert re.search(rf"^{name} {version} +{re.escape(page)}\Z", shown.stdout.rstrip(), re.M)


@pytest.mark.parametrize("page", PAGES.values())
def test_referenced_manual_pages_exist(page: str) -> None:
    named = set(re.findall(r"\[([\w-]+\(\d\))\]", (CHECKOUT / page).read_text(encoding="utf-8")))
    assert named <= PAGES.keys()
