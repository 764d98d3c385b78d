"""The keyboard focus stays when a part of the page is drawn again."""

from typing import Callable

from selenium.webdriver.common.keys import Keys

from browsing import Browser, Phone


def send(browser: Browser, key: str) -> None:
    browser.driver.switch_to.active_element.send_keys(key)


def is_focused(browser: Browser, css: str) -> bool:
    return bool(browser.run("return document.activeElement.matches(arguments[0])", css))


def test_a_button_of_the_panel_keeps_the_focus_when_it_is_used(browser: Browser) -> None:
    browser.click('[data-place="2/3"]')
    browser.wait(lambda: "Key" in browser.text(".answer"), "the answer")
    browser.click('[data-place="home/3"]')
    browser.click('[data-place="2/4"]')
    browser.run("[...document.querySelectorAll('.panel button')].find(b => b.textContent === 'Press').focus()")
    browser.wait(lambda: "Key" in browser.text(".answer"), "the answer")
    send(browser, Keys.ENTER)
    browser.wait(lambda: len(browser.all('[data-event="AOMKEY_PRESS_NTF"]')) == 3, "the presses")
    assert browser.driver.switch_to.active_element.text == "Press"


def test_the_focus_returns_to_the_key_when_the_form_is_saved(browser: Browser, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    browser.has(f'[data-key-id="{key}"]')
    browser.run("arguments[0].focus()", browser.one('[data-place="home/12"]'))
    send(browser, "e")
    assert is_focused(browser, "dialog [name=idAction]")
    browser.fill("dialog [name=icon]", "bell")
    send(browser, Keys.ENTER)
    browser.wait(lambda: "saved" in browser.text(".answer"), "the answer")
    assert is_focused(browser, '[data-place="home/12"]')


def test_the_panel_is_closed_with_escape(browser: Browser) -> None:
    browser.click('[data-place="home/0"]')
    browser.run("document.querySelector('.panel .close').focus()")
    send(browser, Keys.ESCAPE)
    assert browser.text(".panel h2") == "No key selected"
    assert is_focused(browser, '[data-place="home/0"]')


def test_the_focus_returns_to_the_row_of_an_edited_action(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    action = phone.client.get_programmable_key(user_key("home/12"))[0].idAction
    browser.go("#/actions")
    browser.press_button("Edit", f'tr[data-action-id="{action}"]')
    browser.fill("dialog [name=label]", "Front desk")
    send(browser, Keys.ENTER)
    browser.lacks("dialog")
    browser.wait(lambda: "Front desk" in browser.text(f'tr[data-action-id="{action}"]'), "the new label")
    assert is_focused(browser, f'tr[data-action-id="{action}"] [aria-label="Edit Front desk"]')


def test_a_refusal_is_shown_above_the_form_which_keeps_its_text(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    action = phone.client.get_programmable_key(user_key("home/12"))[0].idAction
    browser.go("#/actions")
    browser.press_button("Edit", f'tr[data-action-id="{action}"]')
    phone.client.delete_action(action)
    browser.fill("dialog [name=label]", "Too late")
    send(browser, Keys.ENTER)
    assert "someone else has deleted it" in browser.alert()
    browser.press_button("Close", 'dialog [role="alert"]')
    browser.lacks('[role="alert"]')
    assert browser.one("dialog [name=label]").get_attribute("value") == "Too late"
    assert is_focused(browser, "dialog, dialog *")
