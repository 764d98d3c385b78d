"""Texts can be read on their background, in light and in dark: WCAG 2, level AA."""

import pytest

from browsing import Browser, Phone

# The lowest contrast of each kind of text against what is painted behind its middle.
MEASURE = """
const canvas = Object.assign(document.createElement('canvas'), { width: 1, height: 1 }).getContext('2d', { willReadFrequently: true });
const painted = (colors) => {
  canvas.fillStyle = '#fff'; canvas.fillRect(0, 0, 1, 1);
  for (const color of colors) { canvas.fillStyle = color; canvas.fillRect(0, 0, 1, 1); }
  return [...canvas.getImageData(0, 0, 1, 1).data].slice(0, 3);
};
const light = (rgb) => rgb.map((part) => part / 255).map((part) => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)
  .reduce((sum, part, index) => sum + part * [0.2126, 0.7152, 0.0722][index], 0);
const found = {};
const texts = document.createTreeWalker(document.querySelector('dialog') ?? document.body, NodeFilter.SHOW_TEXT);
for (let text; (text = texts.nextNode());) {
  const element = text.parentElement;
  const style = getComputedStyle(element);
  const name = `${element.closest('[class]')?.className} ${element.tagName} ${style.color}`;
  if (!text.data.trim() || name in found || element.closest('[aria-hidden=true], :disabled, .spoken, template, option')
      || !element.checkVisibility({ opacityProperty: true }))
    continue;
  element.scrollIntoView({ block: 'center' });
  const range = document.createRange();
  range.selectNodeContents(text);
  const box = range.getBoundingClientRect();
  const behind = [];
  for (const below of document.elementsFromPoint(box.x + box.width / 2, box.y + box.height / 2)) {
    const { backgroundColor, backgroundImage } = getComputedStyle(below);
    const stop = backgroundImage.match(/(rgba?|color|oklab)\\([^()]*\\)/)?.[0];
    behind.unshift(stop ?? backgroundColor);
    if (stop || /^rgb\\(/.test(backgroundColor))
      break;
  }
  const [one, other] = [light(painted([...behind, style.color])), light(painted(behind))].sort((left, right) => right - left);
  found[name] = [(one + 0.05) / (other + 0.05), text.data.slice(0, 40)];
}
return found;
"""


@pytest.mark.parametrize("scheme", ["light", "dark"])
def test_texts_contrast_with_their_background(browser: Browser, phone: Phone, scheme: str) -> None:
    media = {"features": [{"name": "prefers-color-scheme", "value": scheme}]}
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", media)
    browser.click('[data-place="1/5"]')
    browser.wait(lambda: "call" in browser.text(".answer"), "the answer")
    browser.lacks(".lit")
    measured = dict(browser.run(MEASURE))
    browser.one('[data-place="home/0"]').click()
    browser.press_button("Delete", ".panel")
    measured.update(browser.run(MEASURE))
    browser.press_button("Delete key", "dialog")
    browser.alert()
    for view in ("#/actions", "#/labels", "#/rollout"):
        browser.go(view)
        if view == "#/rollout":
            browser.paste("[name=DefaultActions]", "voicemail,1,call,,99,Mail,Mail#X,1,call,,501,Smith,Smith,Smith")
            browser.has(".result .mark")
        measured.update(browser.run(MEASURE))
    browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})
    assert len(measured) > 30
    assert {name: found for name, found in measured.items() if found[0] < 4.5} == {}
