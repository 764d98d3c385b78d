"""The strips of labels, as they are printed."""

import base64
import re

from browsing import Browser

MM = 96 / 25.4


def test_strips_have_their_true_size(browser: Browser) -> None:
    browser.go("#/labels")
    assert [heading.text for heading in browser.all(".strips h3")] == ["home", "Module 1", "Module 2"]
    browser.picture("labels", 680)
    cell = browser.one('.strip [data-place="1/5"]')
    assert cell.text.split("\n")[0] == "IT help"
    size = browser.run("const r = arguments[0].getBoundingClientRect(); return [r.width, r.height]", cell)
    assert abs(size[0] - 42 * MM) < 1 and abs(size[1] - 9 * MM) < 1
    assert abs(browser.run("return document.querySelector('.ruler').getBoundingClientRect().width") - 100 * MM) < 1


def test_only_the_strips_are_printed(browser: Browser) -> None:
    browser.go("#/labels")
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print"})
    assert browser.one(".strip").is_displayed()
    assert not any(element.is_displayed() for element in browser.all("header, .toolbar, .hint"))
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": ""})
    pdf = base64.b64decode(browser.driver.print_page())
    pages = len(re.findall(rb"/Type\s*/Page\b", pdf))
    assert pages in (1, 2)


def test_the_print_dialog_is_opened(browser: Browser) -> None:
    browser.go("#/labels")
    browser.run("window.print = () => { window.hasPrinted = true; }")
    browser.press_button("Print…")
    assert browser.run("return window.hasPrinted") is True
