"""Fixtures for the tests of the tool."""

from pathlib import Path
from typing import Callable, Iterator

import pytest

from progkeysctl import Tool
from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.processes import Module


@pytest.fixture
def ctl(bin_dir: Path, bus: PrivateBus) -> Tool:
    """The tool, with the private bus as its system bus."""
    return Tool(bin_dir, bus.address)


@pytest.fixture
def offline(bin_dir: Path) -> Tool:
    """The tool without a bus."""
    return Tool(bin_dir, "unix:path=/nonexistent/bus")


@pytest.fixture
def phone(launch: Callable[..., Module], client: Client, settings_manager: Module) -> Iterator[Module]:
    """The service with the real SettingsManager. The fake one cannot reply while the tool runs."""
    assert settings_manager.running
    module = launch()
    module.wait_until_ready(client)
    yield module
    if module.running:
        module.stop()
