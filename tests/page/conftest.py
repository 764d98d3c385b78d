"""One phone and one browser for each file of tests."""

import shutil
from pathlib import Path
from typing import Callable, Iterator

import pytest

from browsing import Browser, Phone

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"


@pytest.fixture(scope="module")
def settings(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """A copy of the settings of the example phone."""
    return Path(shutil.copytree(EXAMPLES / "settings", tmp_path_factory.mktemp("phone") / "settings"))


@pytest.fixture(scope="module")
def options(settings: Path) -> tuple[str, ...]:
    return ("--settings", str(settings))


@pytest.fixture(scope="module")
def phone(bin_dir: Path, options: tuple[str, ...]) -> Iterator[Phone]:
    running = Phone(bin_dir, *options)
    yield running
    running.close()


@pytest.fixture(scope="module")
def browser(phone: Phone) -> Iterator[Browser]:
    running = Browser(phone.url)
    yield running
    running.close()


@pytest.fixture(autouse=True)
def page(request: pytest.FixtureRequest) -> Iterator[None]:
    """Loads the page for each test that uses the browser; the browser must not complain meanwhile."""
    if "browser" not in request.fixturenames:
        yield
        return
    browser = request.getfixturevalue("browser")
    browser.open()
    yield
    assert browser.errors() == []


@pytest.fixture
def user_key(phone: Phone) -> Iterator[Callable[..., int]]:
    """Creates keys of users, with actions of their own; deletes them at the end."""
    actions = []

    def create(place: str, label: str = "Lena Brandt", short: str = "Lena") -> int:
        words = ("type=1", "action=call", "arguments=501", f"label={label}", f"shortLabel={short}")
        action = int(phone.tool("action", "add", *words, "--terse", "--fields", "idAction"))
        actions.append(action)
        unit, _, number = place.partition("/")
        where = [f"container={unit}", "type=0"] if not unit.isdigit() else [f"container=module{unit}", "type=1", "aom_type=1", f"aom_addr={unit}"]
        words = (f"idAction={action}", f"position={number}", "icon=person", *where)
        return int(phone.tool("key", "add", *words, "--terse", "--fields", "idKey"))

    yield create
    stored = {action.idAction for action in phone.client.get_all_actions()}
    for action in stored.intersection(actions):
        phone.client.delete_action(action)
