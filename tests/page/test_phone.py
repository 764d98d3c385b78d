"""The telephone and what it shows."""

from typing import Callable

import pytest
from selenium.webdriver.common.keys import Keys

from browsing import Browser, Phone

LONG = "Rindfleischetikettierungsüberwachungsaufgabenübertragungsgesetz"


def test_every_key_of_the_phone_is_shown_at_its_place(browser: Browser, phone: Phone) -> None:
    keys = phone.client.get_all_programmable_keys()
    assert len(keys) == 60
    labels = {action.idAction: action for action in phone.client.get_all_actions()}
    browser.wait(lambda: len(browser.all("[data-key-id]")) == len(keys), "all keys")
    shown = browser.run(
        "return Object.fromEntries([...document.querySelectorAll('[data-key-id]')].map(e => [e.dataset.keyId,"
        " [e.dataset.place, e.dataset.actionId, e.querySelector('.text bdi').textContent, e.getAttribute('aria-label')]]))"
    )
    for key in keys:
        action = labels[key.idAction]
        place = f"{key.aom_addr if key.type == 1 else key.container}/{key.position}"
        label = action.shortLabel if key.type == 1 else action.label
        found = shown[str(key.idKey)]
        assert found[:3] == [place, str(key.idAction), label]
        assert label in found[3] and "provisioned" in found[3]


def test_icons_are_drawn_or_named(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    phone.tool("key", "set", key, "icon=zeppelin")
    assert browser.all('[data-place="home/0"] svg')
    browser.wait(lambda: browser.text(f'[data-key-id="{key}"] .icon-name') == "zeppelin", "the name of the icon")


def test_keys_of_users_differ_from_provisioned_ones(browser: Browser, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    assert "own" in browser.one(f'[data-key-id="{key}"]').get_attribute("class").split()
    assert "provisioned" in browser.one('[data-place="home/0"]').get_attribute("class").split()


def test_a_module_shows_the_icon_and_the_label_of_the_last_event(
    browser: Browser, phone: Phone, user_key: Callable[..., int]
) -> None:
    user_key("home/12")
    key = user_key("3/5")
    place = f'[data-key-id="{key}"]'
    browser.has(place)
    assert phone.client.set_icon_state_for_key(key, 2, 5) == 0
    assert phone.client.set_label_state_for_key(key, 4) == 0
    browser.has(f'{place} [title="Icon state 2, 5"]')
    browser.has(f'{place} [title="Label state 4"]')
    phone.tool("action", "set", browser.one(place).get_attribute("data-action-id"), "shortLabel=Lena B.")
    browser.wait(lambda: browser.text(f"{place} .text bdi") == "Lena B.", "the new label")
    browser.click('[data-place="1/5"]')
    browser.wait(lambda: "IT help" in browser.text(".answer"), "the answer")
    browser.picture("phone")


@pytest.mark.parametrize("width", [360, 800, 1280, 2560])
def test_the_page_fits_its_width_with_long_labels(browser: Browser, user_key: Callable[..., int], width: int) -> None:
    key = user_key("home/13", LONG, LONG)
    browser.has(f'[data-key-id="{key}"]')
    browser.set_width(width)
    for view in ("#/actions", "#/rollout", "#/labels", "#/phone"):
        browser.go(view)
        assert browser.run("return document.documentElement.scrollWidth") <= width
    label = browser.one(f'[data-key-id="{key}"]').rect
    screen = browser.one(".screen").rect
    assert label["x"] + label["width"] <= screen["x"] + screen["width"] + 1
    browser.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def test_arrow_keys_go_from_key_to_key(browser: Browser) -> None:
    first = browser.one('[data-place="home/0"]')
    browser.run("arguments[0].focus()", first)
    expected = [(Keys.ARROW_DOWN, "home/1"), (Keys.ARROW_RIGHT, "home/7"), (Keys.ARROW_LEFT, "home/1"), (Keys.END, "home/11"),
                (Keys.ARROW_DOWN, "1/1")]
    for key, place in expected:
        browser.driver.switch_to.active_element.send_keys(key)
        assert browser.driver.switch_to.active_element.get_attribute("data-place") == place
    assert len(browser.all('[data-place][tabindex="0"]')) == 1


def brightness(browser: Browser) -> float:
    color = browser.run("return getComputedStyle(document.body).backgroundColor")
    return sum(int(part) for part in color[4:-1].split(",")) / 3


@pytest.mark.parametrize("scheme", ["light", "dark"])
def test_the_page_follows_the_color_scheme(browser: Browser, scheme: str) -> None:
    media = {"features": [{"name": "prefers-color-scheme", "value": scheme}]}
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", media)
    assert (brightness(browser) > 128) == (scheme == "light")
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})


def test_the_style_that_is_selected_in_cockpit_is_used(browser: Browser) -> None:
    for style in ("dark", "light"):
        browser.run("localStorage.setItem('shell:style', arguments[0]); window.dispatchEvent(new StorageEvent('storage'))", style)
        assert (brightness(browser) > 128) == (style == "light")
    browser.run("localStorage.removeItem('shell:style')")
