"""Fixtures: a private bus, data directory, settings, service and client for each test."""

import os
from pathlib import Path
from typing import Callable, Iterator

import pytest

from database import Database
from emulator.exceptions import read_exceptions
from samples import CALL
from sandbox.bus import PrivateBus
from sandbox.client import Client
from sandbox.events import EventRecorder
from sandbox.names import SERVICE, object_path
from sandbox.processes import Module, start_service, start_settings_manager
from sandbox.records import Action
from sandbox.settings import NO_DEFAULTS, FakeSettingsManager, write_settings

CHECKOUT = Path(__file__).resolve().parents[1]
TEST_SETTINGS = {**NO_DEFAULTS, "ProgKeysMax": "1000"}


@pytest.hookimpl(tryfirst=True)
def pytest_collection_modifyitems(config: pytest.Config, items: list[pytest.Item]) -> None:
    """Under an emulator, deselects the tests in tests/emulator/exceptions.txt."""
    if "PROGKEYS_EMULATED" not in os.environ:
        return
    names = {item: name_in_exceptions(item) for item in items}
    programs = {name.partition("::")[0] for name in names.values()}
    exceptions = read_exceptions().keys()
    for name in exceptions - set(names.values()):
        program, _, function = name.partition("::")
        if function and program in programs:
            raise pytest.UsageError(f"tests/emulator/exceptions.txt: there is no test {name}")
    deselected = [item for item in items if names[item] in exceptions]
    items[:] = [item for item in items if names[item] not in exceptions]
    config.hook.pytest_deselected(items=deselected)


def name_in_exceptions(item: pytest.Item) -> str:
    """The names of the CTest test and of the test function, for instance `system.log::test_x`."""
    program = f"{item.path.parent.name}.{item.path.stem.removeprefix('test_')}"
    return f"{program}::{item.name.partition('[')[0]}"


@pytest.fixture(scope="session")
def bin_dir() -> Path:
    """The directory of the executables."""
    return Path(os.environ.get("PROGKEYS_BIN_DIR", CHECKOUT / "build/qt5/bin")).resolve()


@pytest.fixture
def bus() -> Iterator[PrivateBus]:
    with PrivateBus() as private_bus:
        yield private_bus


@pytest.fixture
def client(bus: PrivateBus) -> Iterator[Client]:
    the_client = Client(bus.address)
    yield the_client
    the_client.close()


@pytest.fixture
def data_root(tmp_path: Path) -> Path:
    """The directory of the data of all modules. It does not exist yet."""
    return tmp_path / "data" / "ZELApplication"


@pytest.fixture
def database(data_root: Path) -> Database:
    """The service's database file, opened by another process than the service."""
    return Database(data_root / SERVICE / "zelprogrammablekeys.data")


@pytest.fixture
def settings_dir(tmp_path: Path) -> Path:
    """A directory of settings: no provisioned defaults, and a limit of 1000 keys."""
    return write_settings(tmp_path / "settings", TEST_SETTINGS)


@pytest.fixture
def settings(bus: PrivateBus) -> Iterator[FakeSettingsManager]:
    """A fake SettingsManager: no provisioned defaults, and a limit of 1000 keys."""
    fake = FakeSettingsManager(bus.address, TEST_SETTINGS)
    yield fake
    fake.close()


@pytest.fixture
def settings_manager(
    bin_dir: Path, bus: PrivateBus, client: Client, settings_dir: Path, tmp_path: Path
) -> Iterator[Module]:
    """The real SettingsManager peer, which serves `settings_dir`."""
    with start_settings_manager(
        bin_dir, bus.address, settings_dir, tmp_path / "settingsmanager.log"
    ) as module:
        module.wait_until_ready(client)
        yield module
        module.stop()


@pytest.fixture
def launch(
    bin_dir: Path, bus: PrivateBus, data_root: Path, tmp_path: Path
) -> Iterator[Callable[..., Module]]:
    """Starts service processes, each with its own log, and kills them after the test."""
    launched: list[Module] = []

    def launch_service(**options: object) -> Module:
        arguments = {
            "bin_dir": bin_dir,
            "address": bus.address,
            "data_root": data_root,
            "log_path": tmp_path / f"service-{len(launched)}.log",
            "log_level": 7,
            **options,
        }
        launched.append(start_service(**arguments))
        return launched[-1]

    yield launch_service
    for module in launched:
        module.kill()


@pytest.fixture
def start(
    launch: Callable[..., Module], client: Client, settings: FakeSettingsManager
) -> Iterator[Callable[..., Module]]:
    """Starts the service and waits until it is ready. After the test it must end with status 0."""
    started: list[Module] = []

    def start_and_wait(**options: object) -> Module:
        module = launch(**options)
        module.wait_until_ready(client)
        started.append(module)
        return module

    yield start_and_wait
    for module in started:
        if module.running:
            module.stop()


@pytest.fixture
def service(start: Callable[..., Module]) -> Module:
    """The running service with an empty database and log level 7. Its start-up log is taken."""
    module = start()
    module.log.take()
    return module


@pytest.fixture
def events(client: Client) -> EventRecorder:
    """Every event that the service sends."""
    return EventRecorder(client, object_path(SERVICE))


@pytest.fixture
def action(service: Module, client: Client, events: EventRecorder) -> Action:
    """A stored user action. Its events and log lines are taken."""
    stored = CALL._replace(idAction=client.add_action(CALL))
    events.take()
    service.log.take()
    return stored
