"""The fixture that makes whole phones; a test file names this module as its plugin."""

from contextlib import ExitStack
from pathlib import Path
from typing import Callable, Iterator, Mapping

import pytest

from peers.phones import ROOMY, Phone


@pytest.fixture
def phones(bin_dir: Path, tmp_path: Path) -> Iterator[Callable[..., Phone]]:
    """Makes one phone after another, and leaves none behind."""
    with ExitStack() as stack:

        def make(name: str = "phone", settings: Mapping[str, str] = ROOMY) -> Phone:
            return stack.enter_context(Phone(bin_dir, tmp_path / name, settings))

        yield make
