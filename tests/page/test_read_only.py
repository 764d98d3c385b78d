"""A user who may only read: the bus denies everything else, as the installed policy does."""

from pathlib import Path
from typing import Iterator

import pytest
from selenium.webdriver.common.keys import Keys

from browsing import Browser, Phone
from sandbox.names import INTERFACE

WRITES = ["createProgrammableKey", "modifyProgrammableKey", "changeProgrammableKeysPosition", "deleteProgrammableKey",
          "addAction", "modifyAction", "deleteAction", "setIconStateForKey", "setLabelStateForKey"]
POLICY = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
  "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><auth>EXTERNAL</auth><policy context="default">
<allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/>
{denials}
<deny send_destination="com.velmora.Tessaro.ZelProgrammableKeys" send_interface="com.velmora.Tessaro.ZELEvents"/>
<deny receive_type="signal" receive_interface="com.velmora.Tessaro.ZELEvents"/>
</policy></busconfig>"""


@pytest.fixture(scope="module")
def phone(bin_dir: Path, options: tuple[str, ...], tmp_path_factory: pytest.TempPathFactory) -> Iterator[Phone]:
    directory = tmp_path_factory.mktemp("bus")
    service = "com.velmora.Tessaro.ZelProgrammableKeys"
    denials = "\n".join(f'<deny send_destination="{service}" send_interface="{INTERFACE}" send_member="{name}"/>' for name in WRITES)
    (directory / "bus.conf").write_text(POLICY.format(denials=denials))
    daemon = directory / "dbus-daemon"
    daemon.write_text(f'#!/bin/sh\nshift\nexec /usr/bin/dbus-daemon --config-file={directory}/bus.conf "$@"\n')
    daemon.chmod(0o755)
    running = Phone(bin_dir, *options, environment={"PATH": f"{directory}:/usr/bin:/bin"})
    yield running
    running.close()


def test_everything_is_shown_and_the_missing_group_told_once(browser: Browser) -> None:
    browser.wait(lambda: "progkeys-admin" in browser.text(".notice"), "the notice")
    assert len(browser.all("[data-key-id]")) == 60
    browser.press_button("Close", ".notice")
    browser.go("#/actions")
    browser.go("#/phone")
    assert not browser.text(".notice")
    assert not browser.all('[role="alert"]')


def test_controls_that_cannot_work_are_disabled(browser: Browser) -> None:
    browser.click('[data-place="1/5"]')
    browser.wait(lambda: "IT help desk" in browser.text(".panel"), "the key")
    browser.one('[data-place="1/5"]').send_keys("e", "m", Keys.DELETE)
    browser.click('[data-place="home/0"]')
    for view in ("#/phone", "#/actions"):
        browser.go(view)
        controls = browser.all("[data-writes]")
        assert controls and not any(control.is_enabled() for control in controls)
    assert not browser.all("dialog, form")
