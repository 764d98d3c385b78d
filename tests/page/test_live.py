"""Changes made elsewhere, the log of events, and the end and return of the service."""

import json
import os
import signal
import subprocess
import time
from pathlib import Path
from typing import Callable

from browsing import Browser, Phone
from sandbox.loop import LIMIT
from sandbox.processes import clean_environment
from sandbox.records import Key

BURST = 10_000


def process_of_service(phone: Phone) -> int:
    return phone.client.process_of("com.velmora.Tessaro.ZelProgrammableKeys")


def test_changes_by_another_client_appear(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    at = f'[data-key-id="{key}"]'
    browser.has(f'[data-place="home/12"]{at}')
    action = phone.client.get_programmable_key(key)[0].idAction
    phone.tool("action", "set", action, "label=Front desk")
    browser.wait(lambda: "Front desk" in browser.text(at), "the new label")
    phone.tool("key", "move", f"{key}=15")
    browser.has(f'[data-place="home/15"]{at}')
    phone.tool("key", "delete", key)
    browser.lacks(at)


def test_a_form_is_kept_while_others_change_the_phone(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    user_key("home/12")
    browser.click('[data-place="home/13"]')
    browser.fill("dialog [name=label]", "Half typed")
    other = user_key("home/14")
    browser.has(f'[data-key-id="{other}"]')
    assert browser.one("dialog [name=label]").get_attribute("value") == "Half typed"


def test_a_restore_is_read_again(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    browser.has(f'[data-key-id="{key}"]')
    phone.tool("restore", "default", "--yes")
    browser.lacks(f'[data-key-id="{key}"]')
    browser.wait(lambda: len(browser.all("[data-key-id]")) == 60, "the provisioned keys")


def test_the_service_is_killed_and_started_again(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    user_key("home/12")
    browser.click('[data-place="home/13"]')
    browser.fill("dialog [name=label]", "Half typed")
    os.kill(process_of_service(phone), signal.SIGKILL)
    browser.has(".service.gone")
    assert not browser.one('dialog [type="submit"]').is_enabled()
    assert "not running" in browser.text(".notice")
    assert browser.one(".toolbar [data-writes]").get_attribute("disabled")
    environment = {**clean_environment(), "DBUS_SYSTEM_BUS_ADDRESS": phone.address, "PROGKEYS_SANDBOX": phone.directory,
                   "ZEL_DATA_ROOT": f"{phone.directory}/data/"}
    subprocess.Popen(
        [phone.bin_dir / "zelprogrammablekeys"], env=environment, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL
    )
    browser.has(".service.running")
    browser.wait(lambda: not browser.text(".notice"), "no notice")
    assert browser.one("dialog [name=label]").get_attribute("value") == "Half typed"
    assert browser.one('dialog [type="submit"]').is_enabled()
    later = user_key("home/14")
    browser.has(f'[data-place="home/14"][data-key-id="{later}"]')
    assert browser.one(".toolbar [data-writes]").is_enabled()


def test_the_log_is_filtered_paused_and_copied(browser: Browser, phone: Phone) -> None:
    phone.tool("press", "1/5")
    browser.has('[data-event="AOMKEY_PRESS_NTF"]')
    phone.tool("icon", phone.client.get_all_programmable_keys()[20].idKey, 1, 1)
    browser.has('[data-event="AOM_SET_ICON_PROPERTY_REC"]')
    assert 'label="IT help desk"' in browser.text('[data-event="AOMKEY_PRESS_NTF"]')
    browser.fill(".log input", "icon_x")
    browser.lacks('[data-event="AOMKEY_PRESS_NTF"]')
    browser.has('[data-event="AOM_SET_ICON_PROPERTY_REC"]')
    browser.driver.execute_cdp_cmd(
        "Browser.grantPermissions", {"permissions": ["clipboardReadWrite", "clipboardSanitizedWrite"]}
    )
    browser.press_button("Copy as JSON")
    browser.wait(lambda: "Copied 1 event." == browser.text(".saying"), "the copy")
    copied = json.loads(browser.driver.execute_async_script("navigator.clipboard.readText().then(arguments[0])"))
    assert [(event["event"], event["module"], event["arguments"][3]) for event in copied] == [
        ("AOM_SET_ICON_PROPERTY_REC", "ZelProgrammableKeys", {"name": "icon_x", "value": 1})
    ]
    browser.run("const f = document.querySelector('.log input'); f.value = ''; f.dispatchEvent(new Event('input'))")
    browser.press_button("Pause")
    phone.tool("press", "1/6")
    browser.has('[data-place="1/6"].lit')
    assert len(browser.all('[data-event="AOMKEY_PRESS_NTF"]')) == 1
    browser.fill(".log input", "icon_x")
    browser.lacks('[data-event="AOMKEY_PRESS_NTF"]')
    browser.run("const f = document.querySelector('.log input'); f.value = ''; f.dispatchEvent(new Event('input'))")
    assert len(browser.all('[data-event="AOMKEY_PRESS_NTF"]')) == 1
    browser.press_button("Pause")
    browser.wait(lambda: len(browser.all('[data-event="AOMKEY_PRESS_NTF"]')) == 2, "the events of the pause")


def test_ten_thousand_events_leave_the_page_responsive(browser: Browser, phone: Phone) -> None:
    browser.run(
        "window.longest = 0; let last = performance.now();"
        "setInterval(() => { const now = performance.now(); window.longest = Math.max(window.longest, now - last); last = now; }, 10)"
    )
    key = next(key for key in phone.client.get_all_programmable_keys() if key.type == 1)
    replies = [phone.client.send("setIconStateForKey", "xii", key.idKey, index, 1) for index in range(BURST)]
    for reply in replies:
        reply.wait()
    browser.wait(lambda: f"icon_x={BURST - 1} " in browser.text(".rows li"), "the last event", 3 * LIMIT)
    assert browser.all('[title="Icon state 9999, 1"]')
    assert len(browser.all(".rows li")) == 1000
    assert browser.run("return window.longest") < 1000
    browser.click('[data-place="home/2"]')
    assert "Company directory" in browser.text(".panel h2")


def test_a_thousand_keys_are_drawn_within_a_second(browser: Browser, phone: Phone, settings: Path) -> None:
    (settings / "ProgKeysMax").write_text("2000\n")
    keys = [Key(0, "", -1, f"container {index // 250}", index % 250, "bell", 0, 0, 0) for index in range(500)]
    keys += [Key(0, "", -1, "m", index % 50, "bell", 1, 1, 10 + index // 50) for index in range(500)]
    for reply in [phone.client.send("createProgrammableKey", "(xsxsisiii)", key) for key in keys]:
        assert reply.wait().values[0] > 0
    browser.open("#/labels")
    start = time.monotonic()
    milliseconds = browser.driver.execute_async_script(
        "const done = arguments[0]; const start = performance.now(); location.hash = '#/phone';"
        "const look = () => document.querySelectorAll('[data-key-id]').length >= 1060"
        " ? requestAnimationFrame(() => setTimeout(() => done(performance.now() - start))) : setTimeout(look, 5); look()"
    )
    assert time.monotonic() - start < 5
    print(f"1,060 keys drawn in {milliseconds:.0f} ms")
    assert milliseconds < 1000
