"""The installed page in a browser, with the installed policy and real user ids."""

from pathlib import Path
from typing import Callable, Iterator

import pytest

from browsing import Browser
from conftest import People
from sandbox.loop import wait_until
from target_root import TargetRoot

PORT = 9731
ADDRESS = f"127.0.0.1:{PORT}"
PAGE = f"http://{ADDRESS}/cockpit/@localhost/progkeys/index.html"
SERVER = ("/usr/lib/cockpit/cockpit-ws", "--no-tls", "--local-session=cockpit-bridge", "--address=127.0.0.1", f"--port={PORT}")


def is_served() -> bool:
    listening = f"0100007F:{PORT:04X} 00000000:0000 0A"
    return listening in Path("/proc/net/tcp").read_text(encoding="ascii")


@pytest.fixture(scope="module")
def cockpit(root: TargetRoot) -> None:
    """Installs Cockpit."""
    root.apt("install", "cockpit-ws")


@pytest.fixture
def browse_as(root: TargetRoot, cockpit: None) -> Iterator[Callable[[str], Browser]]:
    """Opens the page as a user."""
    running = []

    def browse(user: str) -> Browser:
        server = root.start(*SERVER, user=user)
        running.append((server.terminate, server.wait))
        wait_until(is_served, "Cockpit serves the page")
        browser = Browser(PAGE)
        running.append((browser.close, lambda: None))
        browser.open()
        return browser

    yield browse
    for end, wait in reversed(running):
        end()
        wait()


@pytest.fixture
def key(people: People) -> Iterator[str]:
    """A key on an add-on module, created by a member of the group."""
    words = ("idAction=-1", "container=module1", "type=1", "aom_type=1", "aom_addr=1", "position=5", "--terse", "--fields", "idKey")
    added = people.secretary.progkeysctl("key", "add", *words)
    assert added.returncode == 0, added
    yield added.stdout.strip()
    people.secretary.progkeysctl("key", "delete", added.stdout.strip())


def test_the_page_is_read_only_for_an_ordinary_user_and_names_the_group(browse_as: Callable[[str], Browser], key: str) -> None:
    browser = browse_as("visitor")
    browser.has(f'[data-place="1/5"][data-key-id="{key}"]')
    browser.wait(lambda: "progkeys-admin" in browser.text(".notice"), "the notice")
    browser.click('[data-place="1/5"]')
    browser.has(".panel [data-writes]")
    assert not any(control.is_enabled() for control in browser.all("[data-writes]"))
    assert not browser.all('[role="alert"]')


def test_a_member_of_the_group_can_press_and_change_keys(browse_as: Callable[[str], Browser], key: str, people: People) -> None:
    browser = browse_as("secretary")
    browser.click('[data-place="1/5"]')
    browser.wait(lambda: f"Key {key}" in browser.text(".answer"), "the answer")
    browser.has('[data-event="AOMKEY_PRESS_NTF"]')
    browser.press_button("Move")
    browser.click('[data-place="1/9"]')
    browser.has(f'[data-place="1/9"][data-key-id="{key}"]')
    shown = people.visitor.progkeysctl("key", "show", key, "--terse", "--fields", "position")
    assert shown.stdout.strip() == "9"
