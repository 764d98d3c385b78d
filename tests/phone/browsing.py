"""A sandbox with its page, and a browser that shows the page."""

import os
import subprocess
import tempfile
import time
from pathlib import Path
from typing import Any, Callable, Mapping, Optional, TypeVar

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.remote.webelement import WebElement

from sandbox.client import Client
from sandbox.loop import LIMIT, WaitTimeout
from sandbox.processes import clean_environment

T = TypeVar("T")

HOLD = "echo $PROGKEYS_SANDBOX; echo $DBUS_SYSTEM_BUS_ADDRESS; read end"
ARGUMENTS = ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
             "--window-size=1700,1250")


class Phone:
    """A sandbox with its page."""

    def __init__(self, bin_dir: Path, *options: str, environment: Optional[Mapping[str, str]] = None) -> None:
        self.bin_dir = bin_dir
        self.child = subprocess.Popen(
            [bin_dir / "progkeysctl", "sandbox", "--page", *options, "--", "sh", "-c", HOLD],
            env={**clean_environment(), **(environment or {})},
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        self.url, self.directory, self.address = (self.child.stdout.readline().strip() for _ in range(3))
        assert self.address, f"the sandbox ended with status {self.child.wait(LIMIT)}"
        self.client = Client(self.address)

    def tool(self, *words: object, status: int = 0) -> str:
        """Runs progkeysctl in the sandbox."""
        result = subprocess.run(
            [self.bin_dir / "progkeysctl", *map(str, words)],
            env={**clean_environment(), "DBUS_SYSTEM_BUS_ADDRESS": self.address},
            capture_output=True,
            text=True,
            timeout=LIMIT,
            check=False,
        )
        assert result.returncode == status, result.stderr
        return result.stdout

    def close(self) -> None:
        self.client.close()
        self.child.communicate(timeout=LIMIT)


class Browser:
    """Headless Chromium that shows the page."""

    def __init__(self, url: str) -> None:
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for argument in ARGUMENTS:
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        # Chromium leaves temporary files when it ends.
        self._temporary = tempfile.TemporaryDirectory(prefix="browser-", ignore_cleanup_errors=True)
        environment = {**os.environ, "TMPDIR": self._temporary.name}
        service = Service("/usr/bin/chromedriver", env=environment)
        self.driver = webdriver.Chrome(service=service, options=options)
        self.url = url

    def open(self, view: str = "#/phone") -> None:
        """Loads the page, opens a view and waits until the page is connected to the phone."""
        self.driver.get("about:blank")
        self.driver.get(self.url + view)
        self.wait(lambda: self.all(".service.running"), "the page is connected")

    def go(self, view: str) -> None:
        self.driver.execute_script("location.hash = arguments[0]", view)
        self.wait(lambda: self.all(f'nav a[href="{view}"][aria-current]'), f"the view {view}")

    def all(self, css: str) -> list[WebElement]:
        return self.driver.find_elements("css selector", css)

    def one(self, css: str) -> WebElement:
        """Waits for an element and returns the first one."""
        return self.wait(lambda: next(iter(self.all(css)), None), css)

    def click(self, css: str) -> None:
        self._click(lambda: next(iter(self.all(css)), None), css)

    def press_button(self, name: str, within: str = "body") -> None:
        """Clicks the button with this text."""
        self._click(lambda: self._button(name, within), f"a button {name}")

    def _click(self, find: Callable[[], Optional[WebElement]], what: str) -> None:
        """Clicks an element. Finds it again if the page replaces it before the click."""

        def click() -> bool:
            element = find()
            if element:
                element.click()
            return element is not None

        self.wait(click, what)

    def _button(self, name: str, within: str) -> Optional[WebElement]:
        return next((button for button in self.all(f"{within} button:not(.place)") if button.text == name), None)

    def text(self, css: str) -> str:
        return self.wait(lambda: [element.text for element in self.all(css)], css)[0]

    def alert(self) -> str:
        """Waits for an error message and returns its text."""
        return self.wait(lambda: next((alert.text for alert in self.all('[role="alert"]')), ""), "an error message")

    def has(self, css: str) -> None:
        """Waits until there is such an element."""
        self.one(css)

    def lacks(self, css: str) -> None:
        """Waits until there is no such element."""
        self.wait(lambda: not self.all(css), f"no {css}")

    def fill(self, css: str, value: str) -> None:
        field = self.one(css)
        field.clear()
        field.send_keys(value)

    def paste(self, css: str, text: str) -> None:
        """Enters a long text at once."""
        script = "arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('input'))"
        self.run(script, self.one(css), text)

    def run(self, script: str, *arguments: Any) -> Any:
        return self.driver.execute_script(script, *arguments)

    def set_width(self, width: int) -> None:
        metrics = {"width": width, "height": 1200, "deviceScaleFactor": 1, "mobile": False}
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)

    def wait(self, condition: Callable[[], T], what: str, limit: float = LIMIT) -> T:
        deadline = time.monotonic() + limit
        while True:
            try:
                if result := condition():
                    return result
            except StaleElementReferenceException:
                pass
            if time.monotonic() > deadline:
                raise WaitTimeout(f"not within {limit:g} s: {what}; the page shows: {self.run('return document.body.innerText')[:1500]}")
            time.sleep(0.03)

    def errors(self) -> list[str]:
        """The errors that the browser has logged since the last call."""
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"]

    def picture(self, name: str, height: int = 1250) -> None:
        """Saves a screenshot for the documentation in PROGKEYS_PICTURES_DIR, if that is set."""
        if directory := os.environ.get("PROGKEYS_PICTURES_DIR"):
            metrics = {"width": 1640, "height": height, "deviceScaleFactor": 1, "mobile": False}
            self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)
            self.driver.save_screenshot(str(Path(directory) / f"{name}.png"))

    def close(self) -> None:
        self.driver.quit()
        self._temporary.cleanup()
