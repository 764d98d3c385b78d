"""Creating, changing, moving and deleting keys and actions."""

from pathlib import Path
from typing import Callable

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from browsing import Browser, Phone


def place_of(phone: Phone, key: int) -> str:
    (found,) = phone.client.get_programmable_key(key)
    return f"{found.aom_addr if found.type == 1 else found.container}/{found.position}"


def choose(browser: Browser, field: str, value: str) -> None:
    browser.run("arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('change', {bubbles: true}))", browser.one(field), value)


def focus(browser: Browser, place: str) -> None:
    browser.run("arguments[0].focus()", browser.one(f'[data-place="{place}"]'))


def send(browser: Browser, *keys: str) -> None:
    for key in keys:
        browser.driver.switch_to.active_element.send_keys(key)


def test_an_empty_place_gets_a_key_with_a_new_action(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    user_key("home/12")
    browser.click('[data-place="home/20"]')
    browser.fill("dialog [name=label]", "Night desk")
    browser.fill("dialog [name=arguments]", "777")
    browser.fill("dialog [name=icon]", "moon")
    browser.press_button("Create key")
    browser.has('[data-place="home/20"][data-key-id]')
    (key,) = [key for key in phone.client.get_programmable_keys_by_container("home") if key.position == 20]
    (action,) = phone.client.get_action(key.idAction)
    assert (action.label, action.action, action.arguments, key.icon, key.type) == ("Night desk", "call", "777", "moon", 0)
    phone.client.delete_action(action.idAction)
    browser.has('[data-place="home/20"]:not([data-key-id])')


def test_an_empty_place_of_a_module_gets_a_key_with_a_stored_action(
    browser: Browser, phone: Phone, user_key: Callable[..., int]
) -> None:
    user_key("3/1")
    browser.click('[data-place="3/2"]')
    browser.press_button("Create a key here")
    choose(browser, "dialog [name=idAction]", "11")
    browser.press_button("Create key")
    browser.has('[data-place="3/2"][data-action-id="11"]')
    (key,) = [key for key in phone.client.get_all_programmable_keys() if (key.aom_addr, key.position) == (3, 2)]
    assert (key.type, key.aom_type, key.container) == (1, 1, "module3")
    assert phone.client.delete_programmable_key(key.idKey) == 0


def test_a_key_is_created_at_a_place_of_a_unit_that_is_not_shown(browser: Browser, phone: Phone) -> None:
    browser.press_button("New key…")
    choose(browser, "dialog [name=unit]", "module")
    browser.fill("dialog [name=address]", "7")
    browser.fill("dialog [name=position]", "3")
    choose(browser, "dialog [name=idAction]", "12")
    browser.press_button("Create key")
    key = int(browser.one('[data-place="7/3"][data-key-id]').get_attribute("data-key-id"))
    assert phone.client.delete_programmable_key(key) == 0


def test_a_key_is_edited(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    browser.click(f'[data-key-id="{key}"]')
    browser.press_button("Edit")
    choose(browser, "dialog [name=idAction]", "16")
    browser.press_button("Save key")
    browser.has(f'[data-key-id="{key}"][data-action-id="16"]')
    assert phone.client.get_programmable_key(key)[0].idAction == 16
    phone.client.delete_programmable_key(key)


def test_a_key_is_dragged_to_a_free_place(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    source = browser.one(f'[data-key-id="{key}"]')
    ActionChains(browser.driver).drag_and_drop(source, browser.one('[data-place="home/15"]')).perform()
    browser.has(f'[data-place="home/15"][data-key-id="{key}"]')
    assert place_of(phone, key) == "home/15"
    assert not browser.all('[data-place="home/12"][data-key-id]')


def test_a_key_is_exchanged_with_another_by_keyboard(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    one, other = user_key("home/12"), user_key("home/13")
    browser.has(f'[data-key-id="{other}"]')
    focus(browser, "home/12")
    send(browser, "m", Keys.ARROW_DOWN, Keys.ENTER)
    browser.has(f'[data-place="home/13"][data-key-id="{one}"]')
    browser.has(f'[data-place="home/12"][data-key-id="{other}"]')
    assert (place_of(phone, one), place_of(phone, other)) == ("home/13", "home/12")


def test_a_key_moves_from_the_set_to_a_module(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    user_key("3/1")
    browser.click(f'[data-key-id="{key}"]')
    browser.press_button("Move")
    browser.click('[data-place="3/9"]')
    browser.has(f'[data-place="3/9"][data-key-id="{key}"]')
    assert place_of(phone, key) == "3/9"


def test_escape_cancels_a_move(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    browser.has(f'[data-key-id="{key}"]')
    focus(browser, "home/12")
    send(browser, "m", Keys.ESCAPE)
    browser.lacks(".desk.moving")
    assert place_of(phone, key) == "home/12"


def test_a_key_is_deleted_after_a_question(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    browser.has(f'[data-key-id="{key}"]')
    focus(browser, "home/12")
    send(browser, Keys.DELETE)
    assert f"key {key}" in browser.text("dialog")
    browser.press_button("Cancel", "dialog")
    assert phone.client.get_programmable_key(key)
    focus(browser, "home/12")
    send(browser, Keys.DELETE)
    browser.press_button("Delete key", "dialog")
    browser.lacks(f'[data-key-id="{key}"]')
    assert not phone.client.get_programmable_key(key)


def test_an_action_is_edited_and_deleted_with_its_keys(browser: Browser, phone: Phone, user_key: Callable[..., int]) -> None:
    key = user_key("home/12")
    action = phone.client.get_programmable_key(key)[0].idAction
    browser.go("#/actions")
    row = f'tr[data-action-id="{action}"]'
    browser.press_button("Edit", row)
    browser.fill("dialog [name=label]", "Lena at home")
    browser.press_button("Save action")
    browser.wait(lambda: "Lena at home" in browser.text(row), "the new label")
    assert phone.client.get_action(action)[0].label == "Lena at home"
    browser.press_button("Delete", row)
    assert f"key {key} (home, position 12)" in browser.text("dialog")
    browser.press_button("Delete action", "dialog")
    browser.lacks(row)
    assert not phone.client.get_programmable_key(key)


def test_an_action_is_created(browser: Browser, phone: Phone) -> None:
    browser.go("#/actions")
    browser.press_button("New action…")
    browser.fill("dialog [name=label]", "Canteen menu")
    browser.press_button("Create action")
    browser.wait(lambda: "Canteen menu" in browser.text("tbody"), "the new action")
    (action,) = [action for action in phone.client.get_all_actions() if action.label == "Canteen menu"]
    assert phone.client.delete_action(action.idAction) == 0


def test_provisioned_and_reserved_rows_are_not_deleted(browser: Browser, phone: Phone) -> None:
    focus(browser, "home/0")
    send(browser, Keys.DELETE)
    browser.press_button("Delete key", "dialog")
    assert "provisioned" in browser.alert() and "DefaultKeys" in browser.alert()
    assert browser.all('[data-place="home/0"][data-key-id]')
    browser.open("#/actions")
    browser.press_button("Delete", 'tr[data-action-id="-1"]')
    browser.press_button("Delete action", "dialog")
    assert "reserved" in browser.alert()
    assert len(phone.client.get_action(-1)) == 1


def test_a_full_phone_refuses_a_key_and_keeps_no_action(browser: Browser, phone: Phone, settings: Path) -> None:
    before = phone.client.get_all_actions()
    browser.run("window.scrollTo(0, 0)")
    (settings / "ProgKeysMax").write_text("12\n")
    try:
        browser.press_button("New key…")
        browser.fill("dialog [name=position]", "14")
        browser.fill("dialog [name=label]", "One too many")
        browser.press_button("Create key")
        assert "12 keys" in browser.alert() and "ProgKeysMax" in browser.alert()
    finally:
        (settings / "ProgKeysMax").write_text("24\n")
    assert not browser.all('[data-place="home/14"][data-key-id]')
    assert phone.client.get_all_actions() == before
