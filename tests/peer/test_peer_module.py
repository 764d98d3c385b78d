"""The example of a peer module, built and run as docs/peer-module.md describes."""

import os
import re
import subprocess
from pathlib import Path
from typing import Callable, Iterator, NamedTuple

import pytest

from samples import MODULE_KEY
from sandbox.client import Client
from sandbox.loop import LIMIT, WAIT_FACTOR
from sandbox.processes import Module, clean_environment

CHECKOUT = Path(__file__).resolve().parents[2]
EXAMPLE = CHECKOUT / "examples" / "peer-module"
GUIDE = CHECKOUT / "docs" / "peer-module.md"
BUILD_LIMIT = 240 * WAIT_FACTOR
"""The time limit of a build in seconds."""


class Listing(NamedTuple):
    """A code block of the guide, and the heading of its section."""

    heading: str
    language: str
    text: str


def listings() -> list[Listing]:
    found = []
    text = GUIDE.read_text(encoding="utf-8")
    for section in re.split(r"^#+ ", text, flags=re.MULTILINE)[1:]:
        heading = section.partition("\n")[0]
        for language, listing in re.findall(r"^```(\w*)\n(.*?)^```$", section, re.M | re.S):
            found.append(Listing(heading, language, listing))
    return found


def listing(language: str, heading: str) -> str:
    (text,) = [
        each.text for each in listings() if (each.language, each.heading) == (language, heading)
    ]
    return text


def build_dir() -> Path:
    return Path(os.environ.get("PROGKEYS_BUILD_DIR", CHECKOUT / "build" / "qt5")).resolve()


def follow(heading: str, directory: Path) -> None:
    """Runs the commands of a section of the guide in the directory."""
    done = subprocess.run(
        ["bash", "-euo", "pipefail", "-c", listing("sh", heading)],
        cwd=directory,
        env=clean_environment(),
        stdin=subprocess.DEVNULL,
        capture_output=True,
        text=True,
        timeout=BUILD_LIMIT,
        check=False,
    )
    assert done.returncode == 0, f"{heading}:\n{done.stdout}{done.stderr}"
    assert "warning" not in done.stdout + done.stderr


@pytest.fixture(scope="module")
def work_dir(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """A directory as the guide expects it, with the examples and this build."""
    directory = tmp_path_factory.mktemp("work_dir")
    (directory / "examples").symlink_to(CHECKOUT / "examples")
    (directory / "build").mkdir()
    (directory / "build" / "qt5").symlink_to(build_dir())
    return directory


@pytest.fixture(scope="module")
def installed(work_dir: Path) -> Path:
    """The installed library, moved to another directory after the installation."""
    follow("Install the library", work_dir)
    prefix = work_dir / "build" / "zelcore"
    moved = work_dir / "moved"
    prefix.rename(moved)
    prefix.symlink_to(moved)
    return moved


@pytest.fixture(scope="module")
def built_with_cmake(work_dir: Path, installed: Path) -> Path:
    assert installed.is_dir()
    follow("With CMake", work_dir)
    return work_dir / "build" / "peer-module" / "keylog"


@pytest.fixture(scope="module")
def built_with_pkg_config(work_dir: Path, installed: Path) -> Path:
    assert installed.is_dir()
    follow("With pkg-config", work_dir)
    return work_dir / "build" / "by-hand" / "keylog"


@pytest.fixture(
    params=["built_with_cmake", "built_with_pkg_config"], ids=["with CMake", "with pkg-config"]
)
def keylog(request: pytest.FixtureRequest) -> Path:
    return request.getfixturevalue(request.param)


@pytest.fixture
def run_module(
    bus, client: Client, data_root: Path, tmp_path: Path
) -> Iterator[Callable[..., Module]]:
    """Starts the module. After the test it must end with status 0."""
    running: list[Module] = []

    def start(executable: Path) -> Module:
        environment = clean_environment()
        environment.update(DBUS_SYSTEM_BUS_ADDRESS=bus.address, ZEL_DATA_ROOT=f"{data_root}/")
        running.append(Module("KeyLog", [str(executable)], environment, tmp_path / "keylog.log"))
        running[-1].wait_until_ready(client)
        return running[-1]

    yield start
    try:
        for module in running:
            module.stop()
    finally:
        for module in running:
            module.kill()


def presses(client: Client) -> int:
    reply = client.call("presses", module="KeyLog")
    assert reply.signature == "i"
    return reply.values[0]


def press(client: Client, key_number: int) -> None:
    """Presses a key and waits until the service has reported the press."""
    client.send_event("AOM_KEY_PRESS_EVENT", aom_key_num=key_number, aom_type=1, addr=2)
    client.round_trip()


def test_the_module_counts_presses_of_programmed_keys(service, client, action, keylog, run_module):
    client.create_programmable_key(MODULE_KEY._replace(idAction=action.idAction))
    run_module(keylog)
    assert presses(client) == 0
    press(client, MODULE_KEY.position)
    assert presses(client) == 1
    press(client, MODULE_KEY.position + 1)
    assert presses(client) == 1
    press(client, MODULE_KEY.position)
    assert presses(client) == 2


def test_only_the_operations_of_the_module_and_the_platform_are_on_the_bus(client, keylog, run_module):
    run_module(keylog)
    methods = re.findall(r'<method name="(\w+)"', client.introspect("KeyLog"))
    assert "presses" in methods and "stop" in methods
    assert "count" not in methods


def test_the_listings_in_the_guide_are_those_of_the_example():
    assert listing("cpp", "The module") == (EXAMPLE / "main.cpp").read_text(encoding="utf-8")
    assert listing("cmake", "With CMake") == (EXAMPLE / "CMakeLists.txt").read_text(
        encoding="utf-8"
    )


def test_installed_files_contain_no_paths_of_the_build_or_the_installation(work_dir, installed):
    files = [path for path in installed.rglob("*") if path.is_file()]
    texts = [path for path in files if path.suffix != ".a"]
    assert {path.name for path in texts} >= {
        "ZELModule.h",
        "zelcore.pc",
        "zelcoreConfig.cmake",
        "zelcoreConfigVersion.cmake",
        "zelcoreTargets.cmake",
    }
    assert [path.name for path in files if path.suffix == ".a"] == ["libzelcore.a"]
    for path in texts:
        text = path.read_text(encoding="utf-8")
        for place in (CHECKOUT, build_dir(), work_dir):
            assert str(place) not in text, f"{path.name} contains {place}"


def test_the_installed_headers_are_the_public_ones(installed):
    public = CHECKOUT / "platform" / "include"
    assert {path.relative_to(installed / "include") for path in installed.rglob("*.h")} == {
        path.relative_to(public) for path in public.rglob("*.h")
    }


def test_cmake_refuses_another_major_version_of_the_package(work_dir, installed, tmp_path):
    (tmp_path / "CMakeLists.txt").write_text(
        "cmake_minimum_required(VERSION 3.16)\nproject(consumer LANGUAGES CXX)\n"
        "find_package(zelcore 2.0 REQUIRED)\n",
        encoding="utf-8",
    )
    done = subprocess.run(
        ["cmake", "-S", ".", "-B", "build", f"-DCMAKE_PREFIX_PATH={installed}"],
        cwd=tmp_path,
        capture_output=True,
        text=True,
        timeout=BUILD_LIMIT,
        check=False,
    )
    assert done.returncode != 0
    assert re.search(r'compatible with requested\s+version "2.0"', done.stderr), done.stderr


def test_the_session_in_the_guide_has_the_described_output(work_dir, built_with_cmake):
    assert built_with_cmake.exists()
    heading = "Try it on a private phone"
    start, _, typed = listing("sh", heading).partition("\n")
    done = subprocess.run(
        start.split(),
        input=typed,
        cwd=work_dir,
        env={**clean_environment(), "SHELL": "/bin/bash", "NO_COLOR": "1"},
        capture_output=True,
        text=True,
        timeout=3 * LIMIT,
        check=False,
    )
    assert done.returncode == 0, done.stderr
    assert done.stdout.strip() == listing("", heading).strip(), done.stderr
