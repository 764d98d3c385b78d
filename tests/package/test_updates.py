"""The database after updating, removing and purging packages."""

import re
import subprocess
from pathlib import Path

import pytest

from conftest import People
from installation import DATABASE, is_running, stop
from sandbox.names import INTERFACE
from target_root import TargetRoot, mount

SERVICE_PACKAGE = "zelprogrammablekeys"
MODULES = "data/ZELApplication"
ALL = (SERVICE_PACKAGE, "zelprogrammablekeys-devtools")


@pytest.fixture(scope="module")
def older(packages: dict[str, Path], tmp_path_factory: pytest.TempPathFactory) -> Path:
    """The package of the service with a lower version."""
    directory = tmp_path_factory.mktemp("older")
    content, package = directory / "content", directory / f"{SERVICE_PACKAGE}_0.9.0_all.deb"
    subprocess.run(
        ["dpkg-deb", "--raw-extract", str(packages[SERVICE_PACKAGE]), str(content)], check=True
    )
    control = content / "DEBIAN/control"
    text = control.read_text(encoding="utf-8")
    control.write_text(re.sub(r"(?m)^Version: .*$", "Version: 0.9.0", text), encoding="utf-8")
    subprocess.run(
        ["dpkg-deb", "--root-owner-group", "--build", str(content), str(package)], check=True
    )
    return package


def installed_version(root: TargetRoot) -> str:
    return root.run("dpkg-query", "--show", "--showformat=${Version}", SERVICE_PACKAGE).stdout


def add_action(people: People) -> None:
    added = people.secretary.progkeysctl("action", "add", "type=1", "action=call", "label=Lena")
    assert added.returncode == 0, added


def has_action(people: People) -> bool:
    return "Lena" in people.visitor.progkeysctl("action", "list").stdout


@pytest.fixture
def older_version_with_an_action(root: TargetRoot, people: People, older: Path) -> None:
    """The root directory with the older version and an action in the database."""
    stop(people.root)
    root.apt("purge", *ALL)
    root.install([older])
    assert installed_version(root) == "0.9.0"
    add_action(people)
    stop(people.root)


@pytest.mark.usefixtures("older_version_with_an_action")
def test_an_update_keeps_the_database(
    root: TargetRoot, people: People, packages: dict[str, Path]
) -> None:
    before = (root.path / DATABASE).read_bytes()
    root.install([packages[SERVICE_PACKAGE]])
    assert installed_version(root) != "0.9.0"
    assert (root.path / DATABASE).read_bytes() == before
    assert has_action(people)


@pytest.mark.usefixtures("older_version_with_an_action")
def test_an_update_ends_the_running_service_and_the_next_call_starts_the_new_version(
    root: TargetRoot, people: People, packages: dict[str, Path]
) -> None:
    assert not people.root.call(f"{INTERFACE}.getAllActions").error
    root.install([packages[SERVICE_PACKAGE]])
    assert not is_running(people.root)
    assert has_action(people)


@pytest.mark.usefixtures("older_version_with_an_action")
def test_a_removal_keeps_the_database_for_the_next_installation(
    root: TargetRoot, people: People, packages: dict[str, Path]
) -> None:
    root.apt("remove", SERVICE_PACKAGE)
    assert not (root.path / "usr/libexec/zelprogrammablekeys").exists()
    assert people.visitor.call(f"{INTERFACE}.getAllActions").error
    assert (root.path / DATABASE).exists()
    root.install([packages[SERVICE_PACKAGE]])
    assert has_action(people)


@pytest.mark.usefixtures("older_version_with_an_action")
def test_a_purge_removes_only_the_data_and_its_copies(root: TargetRoot) -> None:
    modules = root.path / MODULES
    (modules / "ZelProgrammableKeys.before-deploy").mkdir()
    (modules / "ZelProgrammableKeys.unusable.1").mkdir()
    (modules / "SettingsManager").mkdir(exist_ok=True)
    root.apt("purge", SERVICE_PACKAGE)
    assert [path.name for path in modules.iterdir()] == ["SettingsManager"]
    (modules / "SettingsManager").rmdir()


@pytest.mark.usefixtures("older_version_with_an_action")
def test_a_purge_empties_a_mount_point(root: TargetRoot, people: People) -> None:
    own = root.path / MODULES / "ZelProgrammableKeys"
    mount("--bind", str(own), str(own))
    try:
        root.apt("purge", SERVICE_PACKAGE)
        assert list(own.iterdir()) == []
    finally:
        subprocess.run(["umount", str(own)], check=True)
        own.rmdir()


@pytest.mark.usefixtures("older_version_with_an_action")
def test_a_purge_follows_a_symbolic_link_to_the_data(root: TargetRoot) -> None:
    (root.path / "data").rename(root.path / "srv/data")
    (root.path / "data").symlink_to("srv/data")
    try:
        root.apt("purge", SERVICE_PACKAGE)
        assert not (root.path / "srv" / MODULES).exists()
    finally:
        (root.path / "data").unlink()
