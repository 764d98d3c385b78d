"""Texts from the bus are only ever text."""

import pytest

from browsing import Browser, Phone
from sandbox.records import Action, Key

MIB = 1 << 20
TEXTS = [
    pytest.param("<img src=x onerror=\"document.title='hacked'\">", id="markup"),
    pytest.param("<script>document.title='hacked'</script>", id="script"),
    pytest.param("&lt;b&gt; &amp; \"quotes\" 'too'", id="entities"),
    pytest.param("abc \u202e\u2067 fed", id="right to left"),
    pytest.param("x" * MIB, id="1 MiB"),
    pytest.param("", id="nothing"),
    pytest.param("   ", id="blanks"),
    pytest.param("line\nbreak\ttab \x07bell", id="control characters"),
    pytest.param("__proto__", id="a name of the language"),
]


@pytest.mark.parametrize("text", TEXTS)
def test_a_text_is_only_text(browser: Browser, phone: Phone, text: str) -> None:
    client = phone.client
    action = client.add_action(Action(0, text, 1, text, text, text, text, text))
    keys = [client.create_programmable_key(Key(0, "", action, *place)) for place in [
        (text, 3, text, 0, 0, 0), ("m", 5, text, 1, 1, 3)]]
    assert client.set_label_state_for_key(keys[1], 1) == 0
    for key in keys:
        element = browser.one(f'[data-key-id="{key}"]')
        shown = browser.run("return arguments[0].querySelector('.text bdi').textContent", element)
        assert shown == (text if text.strip() and len(text) < 200 else "(no label)" if not text.strip() else "x" * 160 + "…")
        assert shown in element.get_attribute("aria-label")
    browser.has('[data-event="KEY_CREATE_NTF"]')
    browser.click(f'[data-key-id="{keys[1]}"]')
    browser.wait(lambda: "action" in browser.text(".answer"), "the answer")
    browser.press_button("Edit action")
    assert browser.one("dialog [name=arguments]").get_attribute("value") == text.replace("\n", "")
    browser.press_button("Cancel", "dialog")
    for view in ("#/actions", "#/labels", "#/phone"):
        browser.go(view)
    assert not browser.all("main img, main script, bdi > *")
    assert browser.driver.title == "Programmable keys"
    for key in keys:
        assert client.delete_programmable_key(key) == 0
    browser.lacks(f'[data-key-id="{keys[0]}"]')
