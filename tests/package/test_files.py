"""The installed files, checked with the tools that read them."""

import subprocess
from pathlib import Path

import pytest

from conftest import People
from target_root import TargetRoot

UNIT = "zelprogrammablekeys.service"


def test_systemd_accepts_the_unit(root: TargetRoot) -> None:
    result = root.run("systemd-analyze", "verify", "--man=no", UNIT)
    assert (result.returncode, result.stderr) == (0, "")


def test_systemd_analyze_rates_the_unit_as_hardened(root: TargetRoot) -> None:
    result = root.run(
        "systemd-analyze", "security", "--offline=true", "--threshold=10", "--no-pager", UNIT
    )
    assert result.returncode == 0, result.stdout + result.stderr


def test_the_data_directory_belongs_to_the_service(root: TargetRoot) -> None:
    directories = ["/data/ZELApplication", "/data/ZELApplication/ZelProgrammableKeys"]
    assert root.demand("stat", "--format=%U:%G %a", *directories).split("\n")[:2] == [
        "root:zelmodules 1775",
        "zelprogkeys:zelprogkeys 700",
    ]
    root.demand(
        "sh", "-c", "cd /data/ZELApplication && mkdir copy && rmdir copy", user="zelprogkeys"
    )


def test_the_manual_pages_are_installed(root: TargetRoot) -> None:
    manual = root.path / "usr/share/man"
    for page in (
        "man8/zelprogrammablekeys.8",
        "man1/progkeysctl.1",
        "man1/progkeysctl-defaults.1",
        "man1/progkeysctl-sandbox.1",
        "man1/settingsmanager.1",
    ):
        assert (manual / f"{page}.gz").exists(), page


def test_the_sandbox_runs_for_an_ordinary_user(root: TargetRoot, people: People) -> None:
    settings = "/usr/share/doc/zelprogrammablekeys-devtools/examples/settings"
    result = people.visitor.progkeysctl(
        "sandbox", "--settings", settings, "--", "progkeysctl", "status"
    )
    assert result.returncode == 0, result.stdout + result.stderr
    assert "58" in result.stdout, result.stdout


@pytest.fixture(scope="session")
def development(packages: dict[str, Path], tmp_path_factory: pytest.TempPathFactory) -> Path:
    """The unpacked package for peer modules."""
    directory = tmp_path_factory.mktemp("development")
    subprocess.run(
        ["dpkg-deb", "--extract", str(packages["libzelcore-dev"]), str(directory)], check=True
    )
    return directory


def test_a_peer_module_can_be_built_with_the_package(development: Path, tmp_path: Path) -> None:
    source = development / "usr/share/doc/libzelcore-dev/examples/peer-module"
    for command in (
        [
            "cmake",
            "-S",
            str(source),
            "-B",
            str(tmp_path),
            f"-DCMAKE_PREFIX_PATH={development / 'usr'}",
        ],
        ["cmake", "--build", str(tmp_path)],
    ):
        result = subprocess.run(
            command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False
        )
        assert result.returncode == 0, result.stdout
