"""Pressing keys of add-on modules."""

from browsing import Browser, Phone
from sandbox.events import EventRecorder


def test_a_click_presses_the_key_and_shows_the_answer(browser: Browser, phone: Phone) -> None:
    events = EventRecorder(phone.client)
    browser.click('[data-place="1/5"]')
    browser.wait(lambda: "IT help desk" in browser.text(".answer"), "the answer")
    assert "call 600" in browser.text(".answer")
    press = events.wait_for("AOM_KEY_PRESS_EVENT")
    assert press.values == {"aom_key_num": 5, "aom_type": 1, "addr": 1}
    browser.has('[data-event="AOMKEY_PRESS_NTF"]')
    browser.has('[data-event="AOM_KEY_PRESS_EVENT"]')


def test_a_place_without_a_key_is_not_programmed(browser: Browser, phone: Phone) -> None:
    phone.tool("key", "add", "idAction=-1", "container=module3", "type=1", "aom_type=1", "aom_addr=3", "position=1")
    browser.click('[data-place="3/17"]')
    browser.wait(lambda: "Not programmed" in browser.text(".answer"), "the answer")
    browser.press_button("Create a key here")
    browser.has("dialog form")


def test_a_press_lights_the_key_for_a_moment(browser: Browser, phone: Phone) -> None:
    browser.run(
        "window.lit = []; new MutationObserver(list => list.forEach(({target}) => target.classList.contains('lit') &&"
        " window.lit.push(target.dataset.place))).observe(document.body, {subtree: true, attributes: true})"
    )
    phone.tool("press", "2/9")
    browser.wait(lambda: "2/9" in browser.run("return window.lit"), "the light")
    browser.lacks(".lit")


def test_a_key_of_the_set_is_chosen_and_not_pressed(browser: Browser, phone: Phone) -> None:
    events = EventRecorder(phone.client)
    events.take()
    browser.click('[data-place="home/2"]')
    assert "Company directory" in browser.text(".panel")
    phone.tool("press", "1/1")
    assert events.wait_for("AOM_KEY_PRESS_EVENT").values["aom_key_num"] == 1
