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
        """Until a script returns true; fails after a minute, so that a busy machine does not matter."""
        WebDriverWait(self.driver, 60, 0.02).until(lambda _: self.run(script))

    def slowness(self):
        """How many times as long a fixed piece of work takes here and now as on a machine with nothing
        else to do, for which limits of speed are meant; at least 1."""
        taken = self.run("""
            const begin = performance.now();
            for (let times = 0; times < 4; ++times) {
                const rows = Array.from({ length: 100000 }, (_, at) => [`/item${at * 7919 % 100000}.html`, at]);
                const read = JSON.parse(JSON.stringify(rows));
                read.sort((a, b) => (a[0] < b[0] ? -1 : 1));
            }
            return (performance.now() - begin) / 1000;""")
        calm = 0.35
        return max(1, taken / calm)

    def measured(self, act, times=5):
        """The seconds that act() returns, as they were without what else the machine does: the least of
        several, each divided by the mean slowness before and after it. act() may return a dictionary of
        them."""
        best = {}
        before = self.slowness()
        for _ in range(times):
            seconds = act()
            after = self.slowness()
            for name, taken in (seconds.items() if isinstance(seconds, dict) else [("", seconds)]):
                best[name] = min(best.get(name, taken), 2 * taken / (before + after))
            before = after
        return best.get("", best)

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
