"""What a screen reader is told: roles, names and announcements."""

from typing import Any, Callable

import pytest
from selenium.webdriver.common.keys import Keys

from browsing import Browser, Phone

# Notes each text that appears in a live region.
LISTEN = """
window.heard = [];
new MutationObserver((changes) => {
  for (const { target, addedNodes } of changes) {
    const region = (target.closest ? target : target.parentElement)?.closest('[role=status], [role=alert]');
    const text = [...addedNodes].map((node) => node.textContent).join(' ').trim();
    if (region && text || [...addedNodes].some((node) => node.role === 'alert'))
      window.heard.push(text);
  }
}).observe(document.body, { childList: true, subtree: true });
const readAll = app.bus.readAll.bind(app.bus);
window.reads = 0;
app.bus.readAll = async () => { const all = await readAll(); window.reads += 1; return all; };
"""


def heard(browser: Browser) -> list[str]:
    return browser.run("return window.heard")


def send(browser: Browser, *keys: str) -> None:
    for key in keys:
        browser.driver.switch_to.active_element.send_keys(key)


def focus(browser: Browser, css: str) -> None:
    browser.run("arguments[0].focus()", browser.one(css))


def focused(browser: Browser) -> dict[str, Any]:
    """The role, the name and the description of the focused element, as the browser reports them."""
    reference = browser.driver.execute_cdp_cmd("Runtime.evaluate", {"expression": "document.activeElement"})["result"]["objectId"]
    found = browser.driver.execute_cdp_cmd("Accessibility.getPartialAXTree", {"objectId": reference})["nodes"]
    named = [(node["role"]["value"], node["name"]["value"]) for node in found if node.get("role", {}).get("value") != "none" and "name" in node]
    properties = {item["name"]: item["value"].get("value") for item in found[0].get("properties", [])}
    return {"self": named[0], "within": named[1:], "description": found[0].get("description", {}).get("value", ""), **properties}


@pytest.fixture(autouse=True)
def listening(page: None, browser: Browser) -> None:
    browser.run(LISTEN)


def test_nothing_is_said_while_nothing_changes(browser: Browser) -> None:
    browser.go("#/rollout")
    browser.paste("[name=DefaultActions]", "X1,1,call,,501,Smith,Smith")
    browser.wait(lambda: "1 added" in browser.text(".summary"), "the plan")
    browser.run("window.heard = []")
    for view in ("#/rollout", "#/actions", "#/labels", "#/phone"):
        browser.go(view)
        before = browser.run("return window.reads")
        browser.wait(lambda: browser.run("return window.reads") >= before + 2, "two reads")
    assert heard(browser) == []


def test_a_key_is_a_button_of_a_tool_bar(browser: Browser) -> None:
    focus(browser, '[data-place="home/0"]')
    found = focused(browser)
    assert found["self"] == ("button", "Voice mail: home, position 0, provisioned")
    assert [name for name in found["within"] if name[0] in ("group", "toolbar")] == [("group", "home"), ("toolbar", "Telephone")]


def test_a_key_of_a_rollout_is_a_picture_that_cannot_be_focused(browser: Browser) -> None:
    browser.go("#/rollout")
    browser.paste("[name=DefaultActions]", "X1,1,call,,501,Smith,Smith")
    key = browser.one('.result [data-place="home/0"]')
    assert (key.aria_role, key.accessible_name) == ("image", "Voice mail: home, position 0, provisioned, withdrawn")
    assert not browser.all(".result [data-place][tabindex], .result button")


def test_a_selected_key_of_the_set_is_described(browser: Browser) -> None:
    focus(browser, '[data-place="home/0"]')
    send(browser, Keys.ENTER)
    assert heard(browser) == ["Key 1: action 1 “Voice mail”, call *86"]


def test_the_answer_to_each_press_is_said(browser: Browser) -> None:
    focus(browser, '[data-place="1/1"]')
    answer = "Key 13: action 11 “Reception”, call 500"
    send(browser, Keys.ENTER)
    browser.wait(lambda: heard(browser) == [answer], "the answer")
    browser.run("[...document.querySelectorAll('.panel button')].find((button) => button.textContent === 'Press').focus()")
    send(browser, Keys.ENTER)
    browser.wait(lambda: heard(browser) == [answer, answer], "the second answer")


def test_an_answer_is_not_repeated_when_the_key_changes(browser: Browser, phone: Phone) -> None:
    browser.click('[data-place="1/1"]')
    browser.wait(lambda: len(heard(browser)) == 1, "the answer")
    phone.tool("action", "set", 11, "label=Front desk")
    browser.wait(lambda: browser.text(".panel h2") == "Front desk", "the new label")
    phone.tool("action", "set", 11, "label=Reception")
    browser.wait(lambda: browser.text(".panel h2") == "Reception", "the old label")
    assert len(heard(browser)) == 1


def test_a_form_is_named_and_what_was_done_is_said(browser: Browser, phone: Phone) -> None:
    focus(browser, ".create")
    send(browser, Keys.ENTER)
    assert focused(browser)["self"] == ("combobox", "Place")
    assert ("dialog", "New key") in focused(browser)["within"]
    browser.fill("dialog [name=position]", "14")
    browser.fill("dialog [name=label]", "Night desk")
    send(browser, Keys.ENTER)
    browser.wait(lambda: heard(browser) == ["The key was created."], "the message")
    assert focused(browser)["self"] == ("button", "New key…")
    action = int(browser.one('[data-place="home/14"]').get_attribute("data-action-id"))
    assert phone.client.delete_action(action) == 0


def test_a_question_is_read_and_enter_does_not_delete(browser: Browser, user_key: Callable[..., int], phone: Phone) -> None:
    key = user_key("home/12")
    focus(browser, f'[data-key-id="{key}"]')
    send(browser, Keys.DELETE)
    assert focused(browser)["self"] == ("button", "Cancel")
    dialog = browser.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
    (asked,) = [node for node in dialog if node["role"]["value"] == "dialog"]
    assert asked["name"]["value"] == "Delete this key?"
    assert asked["description"]["value"] == f"This deletes key {key} (home, position 12), but not its action."
    send(browser, Keys.ENTER)
    browser.lacks("dialog")
    assert phone.client.get_programmable_key(key)


def test_a_refusal_is_said(browser: Browser) -> None:
    focus(browser, '[data-place="home/0"]')
    send(browser, Keys.DELETE)
    browser.press_button("Delete key", "dialog")
    browser.wait(lambda: any("Key 1 was not deleted. It is provisioned" in text for text in heard(browser)), "the refusal")


def test_a_move_by_keyboard_is_said(browser: Browser, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    focus(browser, f'[data-key-id="{key}"]')
    send(browser, "m", Keys.ARROW_DOWN, Keys.ENTER)
    browser.wait(lambda: f"Key {key} is now at home, position 13." in heard(browser), "the new place")
    assert "Press Escape to cancel" in heard(browser)[0]
    assert focused(browser)["self"] == ("button", "Lena Brandt: home, position 13")


def test_a_view_is_named_when_it_is_opened(browser: Browser) -> None:
    focus(browser, 'nav a[href="#/actions"]')
    send(browser, Keys.ENTER)
    browser.wait(lambda: focused(browser)["self"] == ("main", "Actions"), "the view has the focus")


def test_the_state_of_the_pause_is_told(browser: Browser) -> None:
    focus(browser, ".pause")
    assert (focused(browser)["self"], focused(browser)["pressed"]) == (("button", "Pause"), "false")
    send(browser, Keys.ENTER)
    assert (focused(browser)["self"], focused(browser)["pressed"]) == (("button", "Pause"), "true")


def test_the_focus_stays_on_the_phone_when_its_last_key_of_a_module_goes(
    browser: Browser, phone: Phone, user_key: Callable[..., int]
) -> None:
    key = user_key("9/3")
    focus(browser, f'[data-key-id="{key}"]')
    phone.tool("key", "delete", key)
    browser.lacks('[data-place^="9/"]')
    assert focused(browser)["self"][0] == "button"
