"""A rollout: its problems, and the phone before and after it."""

from pathlib import Path

from browsing import Browser, Phone

NEXT = Path(__file__).resolve().parents[2] / "examples" / "settings-next"


def text_of(name: str) -> str:
    return (NEXT / name).read_text(encoding="utf-8").rstrip("\n")


def enter(browser: Browser, actions: str, keys: str) -> None:
    browser.go("#/rollout")
    browser.paste("[name=DefaultActions]", actions)
    browser.paste("[name=DefaultKeys]", keys)


def count(browser: Browser, what: str) -> str:
    return browser.text(f'[data-count="{what}"]')


def test_the_next_rollout_is_shown_before_and_after(browser: Browser, phone: Phone) -> None:
    before = phone.client.get_all_programmable_keys(), phone.client.get_all_actions()
    enter(browser, text_of("DefaultActions"), text_of("DefaultKeys"))
    browser.has(".problems .good")
    found = [count(browser, what) for what in ("action-added", "action-changed", "action-withdrawn", "key-added", "key-changed", "key-removed")]
    assert found == ["4 added", "5 changed", "5 withdrawn", "4 added", "2 changed", "5 removed"]
    added = browser.one('.result [data-place="home/8"]')
    assert "mark-added" in added.get_attribute("class") and "Join my next meeting" in added.text
    browser.picture("rollout", 1150)
    stage = browser.one(".result select")
    browser.run("arguments[0].value = 'before'; arguments[0].dispatchEvent(new Event('change'))", stage)
    removed = browser.one('.result [data-place="home/8"]')
    assert "mark-removed" in removed.get_attribute("class") and "Park a call" in removed.text
    assert (phone.client.get_all_programmable_keys(), phone.client.get_all_actions()) == before


def test_the_phone_is_not_shown_without_a_text(browser: Browser, phone: Phone) -> None:
    enter(browser, text_of("DefaultActions"), "")
    browser.wait(lambda: browser.one(".result").is_displayed(), "the result")
    browser.paste("[name=DefaultActions]", "")
    browser.wait(lambda: not browser.one(".result").is_displayed(), "no result")
    browser.run("app.draw()")
    assert not browser.one(".result").is_displayed()


def test_the_plan_follows_the_phone(browser: Browser, phone: Phone) -> None:
    enter(browser, text_of("DefaultActions"), text_of("DefaultKeys"))
    browser.wait(lambda: count(browser, "action-changed") == "5 changed", "the plan")
    phone.tool("action", "set", 1, "label=Messages")
    browser.wait(lambda: count(browser, "action-changed") == "6 changed", "the new plan")
    phone.tool("action", "set", 1, "label=Voice mail")


def test_the_result_fits_a_narrow_page(browser: Browser) -> None:
    browser.set_width(360)
    enter(browser, text_of("DefaultActions"), text_of("DefaultKeys"))
    browser.has(".summary .count")
    assert browser.run("return document.documentElement.scrollWidth") <= 360
    browser.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def test_problems_are_shown_beside_the_text(browser: Browser) -> None:
    actions = text_of("DefaultActions") + "#D4,1,call,,501,Smith, John,501"
    enter(browser, actions, text_of("DefaultKeys") + "#nobody,home,20,x,0,0,0")
    browser.has('[data-code="key-without-action"]')
    assert "8 fields instead of 7" in browser.text('[data-code="field-count"]')
    browser.click('[data-code="field-count"] button')
    selected = "const a = document.activeElement; return a.value.slice(a.selectionStart, a.selectionEnd)"
    assert browser.run(selected) == "D4,1,call,,501,Smith, John,501"
    assert count(browser, "key-dropped") == "1 dropped"
    assert "nobody" in browser.text(".result > .problems")


def test_an_empty_text_is_read_from_the_phone(browser: Browser) -> None:
    enter(browser, text_of("DefaultActions"), "")
    browser.wait(lambda: count(browser, "action-added") == "4 added", "the plan")


def test_files_are_dropped(browser: Browser) -> None:
    browser.go("#/rollout")
    browser.run(
        "const data = new DataTransfer();"
        "data.items.add(new File([arguments[0]], 'DefaultActions')); data.items.add(new File([arguments[1]], 'DefaultKeys'));"
        "document.querySelector('[name=DefaultKeys]').dispatchEvent(new DragEvent('drop', {dataTransfer: data, cancelable: true}))",
        text_of("DefaultActions") + "\n",
        text_of("DefaultKeys") + "\n",
    )
    browser.wait(lambda: count(browser, "key-added") == "4 added", "the plan")
    assert browser.one("[name=DefaultActions]").get_attribute("value") == text_of("DefaultActions")
