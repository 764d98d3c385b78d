"""How much is tried, the phones it is tried on, and the line of figures that each test leaves."""

import os
import tempfile
from contextlib import ExitStack
from pathlib import Path
from typing import Callable, Iterator, TypeVar

import pytest
from hypothesis import HealthCheck, configuration, settings

from phones import Phone

T = TypeVar("T")

WHOLE = os.environ.get("PROGKEYS_FAULTS") == "all"
"""Whether everything is tried, which takes an hour, or a selection."""

# A selection tries the same each time. No test leaves anything in the checkout.
settings.register_profile(
    "faults",
    derandomize=not WHOLE,
    database=None,
    deadline=None,
    print_blob=WHOLE,
    suppress_health_check=list(HealthCheck),
)
settings.load_profile("faults")
configuration.set_hypothesis_home_dir(os.path.join(tempfile.gettempdir(), "progkeys-hypothesis"))


@pytest.fixture(scope="session")
def amount() -> Callable[[T, T], T]:
    """How much to try: the first in the default run, the second in a whole one."""
    return lambda selection, everything: everything if WHOLE else selection


@pytest.fixture
def phones(bin_dir: Path, tmp_path: Path) -> Iterator[Callable[..., Phone]]:
    """Makes one phone after another and closes them all."""
    with ExitStack() as stack:

        def make(name: str = "phone", **options: object) -> Phone:
            return stack.enter_context(Phone(bin_dir, tmp_path / name, **options))

        yield make


@pytest.fixture
def phone(phones: Callable[..., Phone]) -> Phone:
    """A phone whose service is not started yet."""
    return phones()


@pytest.fixture
def figures(request: pytest.FixtureRequest) -> Callable[[str], None]:
    """Leaves one line about the test: how much was tried, survived and lost."""

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
