"""A private phone for each test: bus, data, settings, service, client."""

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
ROOMY = {**NO_DEFAULTS, "ProgKeysMax": "1000"}


@pytest.hookimpl(tryfirst=True)
def pytest_collection_modifyitems(config: pytest.Config, items: list[pytest.Item]) -> None:
    """Under an emulator, leaves out the tests that cannot pass there."""
    if "PROGKEYS_EMULATED" not in os.environ:
        return
    names = {item: name_in_exceptions(item) for item in items}
    programs = {name.partition("::")[0] for name in names.values()}
    exceptions = read_exceptions().keys()
    for name in exceptions - set(names.values()):
        program, _, function = name.partition("::")
        if function and program in programs:
            raise pytest.UsageError(f"tests/emulator/exceptions.txt: there is no test {name}")
    left_out = [item for item in items if names[item] in exceptions]
    items[:] = [item for item in items if names[item] not in exceptions]
    config.hook.pytest_deselected(items=left_out)


def name_in_exceptions(item: pytest.Item) -> str:
    """The name of a test function, with the name of the CTest test that runs it."""
    program = f"{item.path.parent.name}.{item.path.stem.removeprefix('test_')}"
    return f"{program}::{item.name.partition('[')[0]}"


@pytest.fixture(scope="session")
def bin_dir() -> Path:
    """Where the executables are."""
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
    """The directory below which modules keep their data; not there yet."""
    return tmp_path / "data" / "ZELApplication"


@pytest.fixture
def database(data_root: Path) -> Database:
    """The service's database file, seen by another process."""
    return Database(data_root / SERVICE / "zelprogrammablekeys.data")


@pytest.fixture
def settings_dir(tmp_path: Path) -> Path:
    """A directory of settings: nothing provisioned, and room for many keys."""
    return write_settings(tmp_path / "settings", ROOMY)


@pytest.fixture
def settings(bus: PrivateBus) -> Iterator[FakeSettingsManager]:
    """A SettingsManager that answers: nothing is provisioned, and there is room for many keys."""
    fake = FakeSettingsManager(bus.address, ROOMY)
    yield fake
    fake.close()


@pytest.fixture
def settings_manager(
    bin_dir: Path, bus: PrivateBus, client: Client, settings_dir: Path, tmp_path: Path
) -> Iterator[Module]:
    """The real SettingsManager peer on `settings_dir`."""
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
    """Starts service processes, each with a log of its own, and leaves none behind."""
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
    """Starts the service and waits until it is ready; after the test it must end cleanly."""
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
    """The service, ready on an empty database, logging everything; its start-up log is taken."""
    module = start()
    module.log.take()
    return module


@pytest.fixture
def events(client: Client) -> EventRecorder:
    """Every event that the service sends."""
    return EventRecorder(client, object_path(SERVICE))


@pytest.fixture
def action(service: Module, client: Client, events: EventRecorder) -> Action:
    """A stored user action; what its making sent and logged has been taken."""
    stored = CALL._replace(idAction=client.add_action(CALL))
    events.take()
    service.log.take()
    return stored
