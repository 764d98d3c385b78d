"""Fixtures: the number of tries, the phones, and the summary line that each test prints."""

import os
import tempfile
from contextlib import ExitStack
from pathlib import Path
from typing import Callable, Iterator, TypeVar

import pytest
from hypothesis import HealthCheck, configuration, settings

from phones import Phone

T = TypeVar("T")

RUN_ALL = os.environ.get("PROGKEYS_FAULTS") == "all"
"""Whether the tests try everything, which takes an hour, or a selection."""

# The selection is the same in each run. Hypothesis must not write files into the checkout.
settings.register_profile(
    "faults",
    derandomize=not RUN_ALL,
    database=None,
    deadline=None,
    print_blob=RUN_ALL,
    suppress_health_check=list(HealthCheck),
)
settings.load_profile("faults")
configuration.set_hypothesis_home_dir(os.path.join(tempfile.gettempdir(), "progkeys-hypothesis"))


@pytest.fixture(scope="session")
def amount() -> Callable[[T, T], T]:
    """Returns its first argument in the default run, and its second one if everything runs."""
    return lambda selection, everything: everything if RUN_ALL else selection


@pytest.fixture
def phones(bin_dir: Path, tmp_path: Path) -> Iterator[Callable[..., Phone]]:
    """Creates phones, and closes them after the test."""
    with ExitStack() as stack:

        def make(name: str = "phone", **options: object) -> Phone:
            return stack.enter_context(Phone(bin_dir, tmp_path / name, **options))

        yield make


@pytest.fixture
def phone(phones: Callable[..., Phone]) -> Phone:
    """A phone whose service is not started yet."""
    return phones()


@pytest.fixture
def summarize(request: pytest.FixtureRequest) -> Callable[[str], None]:
    """Adds a line about the test to the end of the output: the number of tries and results."""

    def add_line(line: str) -> None:
        request.node.user_properties.append(("summary", line))

    return add_line


def pytest_terminal_summary(terminalreporter) -> None:
    reports = [
        report
        for outcome in ("passed", "failed")
        for report in terminalreporter.stats.get(outcome, [])
    ]
    for report in reports:
        for name, line in report.user_properties:
            if name == "summary":
                terminalreporter.write_line(f"{report.location[2]}: {line}")
