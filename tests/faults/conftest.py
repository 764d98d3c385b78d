"""How much is tried, and the line of figures that each test leaves."""

import os
from typing import Callable

import pytest

WHOLE = os.environ.get("PROGKEYS_FAULTS") == "all"
"""Whether everything is tried, which takes an hour, and not a selection."""


@pytest.fixture(scope="session")
def amount() -> Callable[[int, int], int]:
    """How often to try: the first number in the default run, the second in a whole one."""
    return lambda selection, everything: everything if WHOLE else selection


@pytest.fixture
def figures(request: pytest.FixtureRequest) -> Callable[[str], None]:
    """Leaves one line about the test: how many were tried, how many survived, what was lost."""

    def leave(line: str) -> None:
        request.node.user_properties.append(("figures", line))

    return leave


def pytest_terminal_summary(terminalreporter) -> None:
    reports = [
        report
        for outcome in ("passed", "failed")
        for report in terminalreporter.stats.get(outcome, [])
    ]
    for report in reports:
        for name, line in report.user_properties:
            if name == "figures":
                terminalreporter.write_line(f"{report.location[2]}: {line}")
