"""The examples for peer modules, on a private phone with the example settings."""

import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

import pytest

from pages import CHECKOUT, listings
from sandbox.processes import clean_environment

MONITORED = """
exec 3< <(progkeysctl monitor --match AOMKEY_PRESS_NTF --limit 1 --terse --fields event 2>&1)
read -r listening <&3
{}
cat <&3
"""
"""Runs a listing, and prints the names of the presses that the service answers."""

INTERPRETERS = {"sh": ["bash", "-euo", "pipefail", "-c"], "python": [sys.executable, "-c"]}


class Example(NamedTuple):
    """A listing, and the line that it must print."""

    page: str
    start: str
    line: str
    script: str = "{}"


EXAMPLES = [
    pytest.param(
        Example("bus-interface.md", "busctl", 'a(xsisssss) 1 9 "park" 1 "call" "" "*68#1" "Park a call, slot #1" "Park #1"'),
        id="busctl calls the service",
    ),
    pytest.param(Example("bus-interface.md", "import dbus", "created 61"), id="Python calls the service"),
    pytest.param(Example("events.md", "busctl", "AOMKEY_PRESS_NTF", MONITORED), id="busctl sends an event"),
    pytest.param(
        Example("events.md", "import dbus", "AOMKEY_PRESS_NTF key 15 label Front door #1"),
        id="Python sends and receives an event",
    ),
]


@pytest.mark.parametrize("example", EXAMPLES)
def test_the_example_works(example: Example, bin_dir: Path) -> None:
    (listing,) = [
        each
        for each in listings(CHECKOUT / "docs" / example.page)
        if each.language in INTERPRETERS and each.text.startswith(example.start)
    ]
    command = [*INTERPRETERS[listing.language], example.script.replace("{}", listing.text)]
    settings = CHECKOUT / "examples" / "settings"
    done = subprocess.run(
        [bin_dir / "progkeysctl", "sandbox", "--settings", settings, "--", *command],
        env=clean_environment(),
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=60,
        check=False,
    )
    assert done.returncode == 0, done.stderr
    assert example.line in done.stdout.splitlines()
