"""Fixtures: a Debian root directory with the built packages, its bus and its users."""

import os
import tempfile
from dataclasses import dataclass
from pathlib import Path
from typing import Iterator

import pytest

from bus_users import BusUser
from target_root import TargetRoot

CHECKOUT = Path(__file__).resolve().parents[2]
IN_ROOT = ("zelprogrammablekeys", "progkeysctl", "zelprogrammablekeys-devtools", "cockpit-progkeys")


@pytest.fixture(scope="session")
def packages() -> dict[str, Path]:
    """The built packages by name."""
    directory = Path(os.environ.get("PROGKEYS_PACKAGES", CHECKOUT / "build/packages"))
    found = {path.name.partition("_")[0]: path for path in directory.glob("*.deb")}
    missing = {*IN_ROOT, "libzelcore-dev"} - found.keys()
    assert (
        not missing
    ), f"no package of {', '.join(sorted(missing))} in {directory}; run scripts/maintain/package"
    return found


@pytest.fixture(scope="session")
def root(packages: dict[str, Path]) -> Iterator[TargetRoot]:
    """A Debian root directory with the service, progkeysctl and the development tools."""
    assert os.geteuid() == 0, "these tests need root"
    # Other users cannot read the temporary directories of pytest.
    the_root = TargetRoot(Path(tempfile.mkdtemp(prefix="phone-root-")))
    try:
        the_root.make()
        the_root.install([packages[name] for name in IN_ROOT])
        the_root.demand("useradd", "visitor")
        the_root.demand("useradd", "secretary")
        the_root.demand("usermod", "--append", "--groups", "progkeys-admin", "secretary")
        the_root.start_bus()
        yield the_root
        the_root.stop_bus()
    finally:
        the_root.remove()


@dataclass
class People:
    """An ordinary user, a member of the group, root, and the user of the service."""

    visitor: BusUser
    secretary: BusUser
    root: BusUser
    service: BusUser


@pytest.fixture(scope="session")
def people(root: TargetRoot) -> People:
    return People(
        *(BusUser(root, name) for name in ("visitor", "secretary", "root", "zelprogkeys"))
    )
