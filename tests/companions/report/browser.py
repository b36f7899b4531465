"""A page in Debian's Chromium, without a display, and what it did there."""

import json
import tempfile
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.support.ui import WebDriverWait


class Browser:
    def __init__(self):
        self.profile = tempfile.TemporaryDirectory(prefix="zvr_browser_", ignore_cleanup_errors=True)
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage",
                         "--force-prefers-reduced-motion",  # a click need not wait for scrolling
                         f"--user-data-dir={self.profile.name}"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.driver.set_page_load_timeout(120)

    def close(self):
        self.driver.quit()
        self.profile.cleanup()

    def set_media(self, **features):
        """Media features as CSS asks for them, with _ for -; media itself: `media="print"`."""
        media = features.pop("media", "")
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "media": media,
            "features": [{"name": name.replace("_", "-"), "value": value}
                         for name, value in features.items()]})

    def set_width(self, width):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": 900, "deviceScaleFactor": 1, "mobile": width < 600})

    def open(self, path):
        self.driver.get("about:blank")
        self.driver.get_log("browser")
        self.driver.get_log("performance")
        self.driver.get(Path(path).as_uri())

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def console(self):
        """What was written to the console since the page was opened, errors of scripts included."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requested(self):
        """Every address that was asked for since the page was opened."""
        events = (json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance"))
        return [event["params"]["request"]["url"] for event in events
                if event["method"] == "Network.requestWillBeSent"]

    def click(self, selector):
        element = self.driver.find_element("css selector", selector)
        self.run("arguments[0].scrollIntoView({block: 'center'})", element)
        element.click()

    def wait_for(self, script):
        """Until a script returns true; fails after ten seconds."""
        WebDriverWait(self.driver, 10, 0.02).until(lambda _: self.run(script))

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0])?.innerText ?? null", selector)

    def table(self, selector):
        """Rows of a table as lists of texts, without its heading."""
        return self.run(
            "return [...document.querySelectorAll(arguments[0] + ' tbody tr')].map((row) =>"
            " [...row.cells].map((cell) => cell.textContent))", selector)

    def press(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()

    def focused(self):
        return self.driver.switch_to.active_element
