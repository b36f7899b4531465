#!/usr/bin/env python3
"""Opens pages of zvr_al_report in Chromium, uses them, and compares what they show with url.list and
with what is counted here from the logs: page_test.py BUILD_DIRECTORY SOURCE_DIRECTORY"""

import fcntl
import math
import os
import random
import struct
import sys
import tempfile
import time
import unittest
from collections import Counter
from pathlib import Path

from selenium.webdriver.common.keys import Keys

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent))
from browser import Browser  # noqa: E402
from page_installation import (BEGIN, Installation, Traffic, log_line, minute_text, percentile)  # noqa: E402

BUILD, SOURCE = (Path(argument).resolve() for argument in sys.argv[1:3])


class PageTest(unittest.TestCase):
    """One browser for all; each class of tests opens its own page."""

    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(prefix="zvr_page_")
        cls.root = Path(cls.scratch.name) / "installation"
        cls.browser = Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.scratch.cleanup()

    def setUp(self):
        self.browser.open(self.page)

    def tearDown(self):
        """Nothing that a test does may ask the network for anything or break a script."""
        self.assertEqual(self.browser.console(), [])
        self.assertEqual(set(self.browser.requested()), {self.page.as_uri()})

    def number(self, selector):
        return int(self.browser.text(selector).replace(",", ""))

    def found(self):
        """How many URLs and requests the table of URLs says that it shows."""
        words = self.browser.text("#found").replace(",", "").split()
        return int(words[0]), int(words[4])

    def search(self, text):
        """Types the last character only, so that there is one search to wait for."""
        field = self.browser.driver.find_element("id", "search")
        self.browser.run("document.getElementById('found').textContent = ''; arguments[0].value = arguments[1];",
                         field, text[:-1])
        if text:
            field.send_keys(Keys.END, text[-1])
        else:
            self.browser.run("arguments[0].dispatchEvent(new Event('input'))", field)
        self.browser.wait_for("return document.getElementById('found').textContent !== ''")

    def choose(self, label, value):
        select = self.browser.driver.find_element("css selector", f"select[aria-label='{label}']")
        self.browser.run("arguments[0].value = arguments[1];"
                         "arguments[0].dispatchEvent(new Event('change'))", select, value)
        self.assertEqual(select.get_property("value"), value)

    def all_rows(self):
        """(requests, method, host, URL, type, transaction) of all pages of the table of URLs."""
        self.browser.run("document.querySelector('[aria-label=\"First page\"]').click()")
        rows = []
        while True:
            rows += [row[:6] for row in self.browser.table(".urls")]
            if self.browser.run("const next = document.querySelector('[aria-label=\"Next page\"]');"
                                "const isLast = next.ariaDisabled === 'true'; next.click(); return isLast"):
                return rows


def shown_row(row):
    """A row of url.list as the table shows it."""
    kind = ("filtered" if row["Filter"] == "YES" else "inline" if row["Type"] == "INLINE"
            else "no pattern" if row["URL-Pattern"] == "NA"
            else "no transaction" if row["Txn-Name"] == "NA" else "main")
    dash = {"NA": "–"}
    return [f"{int(row['Count']):,}", row["Method"], dash.get(row["Host"], row["Host"]),
            row["URL"].replace("\0", "|"), kind, dash.get(row["Txn-Name"], row["Txn-Name"])]


class SamplePageTest(PageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.sample = Installation.sample(cls.root, BUILD, SOURCE)
        cls.summary = cls.sample.run_tool().strip()
        cls.rows = cls.sample.rows()
        cls.page = cls.sample.make_page()

    def test_says_that_the_funnel_adds_up_to_the_summary_of_the_run(self):
        steps = {row[0]: int(row[1].replace(",", "")) for row in self.browser.table("#funnel-table")}
        summary = dict(pair.split("=") for pair in self.summary.split(";"))
        self.assertEqual(steps["Requests"], int(summary["Total"]))
        self.assertEqual(steps["Redirect follow-ups"], int(summary["Redirected"]))
        self.assertEqual(steps["Before the replay period"] + steps["After the replay period"],
                         int(summary["TimeBasedFiltered"]))
        self.assertEqual(steps["Bad: cannot be read"], int(summary["BadRequest"]))
        self.assertEqual(steps["Without a session"], int(summary["NonSessionRequest"]))
        self.assertEqual(steps["Inline, left out"], int(summary["InlineFilteredRequest"]))
        listed = Counter()
        for row in self.rows:
            listed[shown_row(row)[4]] += int(row["Count"])
        self.assertEqual((steps["Filtered"], steps["Main with a transaction"],
                          steps["Main without a transaction"], steps["Main, as no pattern fits"]),
                         (listed["filtered"], listed["main"], listed["no transaction"], listed["no pattern"]))
        self.assertEqual(self.browser.text("#funnel-sums code"), self.summary)
        self.assertIn("It adds up.", self.browser.text("#adds-up"))

    def test_shows_every_row_of_the_list(self):
        self.assertEqual(sorted(self.all_rows()), sorted(shown_row(row) for row in self.rows))
        self.assertEqual(self.found(), (len(self.rows), sum(int(row["Count"]) for row in self.rows)))

    def test_sorts_by_the_keyboard(self):
        for label, at in (("URL", 3), ("Host", 2), ("Transaction", 5), ("Type", 4), ("Method", 1)):
            self.browser.run("[...document.querySelectorAll('button.sort')]"
                             ".find((button) => button.textContent === arguments[0]).focus()", label)
            for order in ("ascending", "descending"):
                self.browser.press(Keys.ENTER)
                self.assertEqual(self.browser.run(
                    "return document.activeElement.parentElement.getAttribute('aria-sort')"), order)
                values = [row[at] for row in self.all_rows() if row[at] != "–"]
                self.assertEqual(values, sorted(values, reverse=order == "descending"))
        requests = [int(row[0].replace(",", "")) for row in self.rows_by("Requests")]
        self.assertEqual(requests, sorted(requests, reverse=True))

    def rows_by(self, label):
        self.browser.run("[...document.querySelectorAll('button.sort')]"
                         ".find((button) => button.textContent === arguments[0]).click()", label)
        return self.all_rows()

    def test_searches_words_and_filters(self):
        def count(test):
            rows = [row for row in self.rows if test(row)]
            return len(rows), sum(int(row["Count"]) for row in rows)

        self.search("PRODUCT www")
        self.assertEqual(self.found(), count(lambda row: all(
            word in f"{row['Method']} {row['Host']}{row['URL']} {row['Txn-Name']} {row['URL-Pattern']}".lower()
            for word in ("product", "www"))))
        self.browser.click("#url-table .controls > button")
        self.assertEqual(self.found()[0], len(self.rows))
        for label, value, column in (("Method", "POST", "Method"), ("Host", "m.shop.example.com", "Host"),
                                     ("Transaction", "ProductView", "Txn-Name")):
            self.choose(label, value)
            self.assertEqual(self.found(), count(lambda row: row[column].upper() == value.upper()))
            self.choose(label, "")
        self.choose("Type", "without")
        self.assertEqual(self.found(), count(lambda row: shown_row(row)[4] in ("no transaction", "no pattern")))
        self.choose("Method", "POST")
        self.assertEqual(self.found(), count(lambda row: row["Method"] == "POST"
                                             and shown_row(row)[4] in ("no transaction", "no pattern")))
        self.choose("Method", "")
        self.choose("Type", "no-body")
        self.assertEqual(self.found(), count(lambda row: row["Method"].upper() in ("POST", "PUT")
                                             and shown_row(row)[4] in ("main", "no transaction", "no pattern")
                                             and row["POST-DATA_FILE"] == "NA"))
        self.search("no such url")
        self.assertEqual(self.found(), (0, 0))
        self.assertIn("No URL is like that", self.browser.text(".urls"))

    def test_shows_the_most_frequent_queries_of_a_cut_url(self):
        queries = Counter(line.partition("?")[2]
                          for line in (self.sample.config / "query_url.list").read_text().splitlines()
                          if line.startswith("/shop/list.jsp?"))
        self.search("/shop/list.jsp?*")
        shown = Counter()
        while buttons := self.browser.driver.find_elements("css selector", ".more-of[aria-expanded='false']"):
            buttons[0].click()
        for query, requests, _ in self.browser.table(".queries table"):
            shown[query] += int(requests)
        self.assertTrue(queries)
        self.assertEqual(shown, queries)

    def test_mix_adds_up_with_the_list_and_leads_to_its_urls(self):
        of_transaction, urls = Counter(), Counter()
        for row in self.rows:
            if shown_row(row)[4] == "main":
                of_transaction[row["Txn-Name"]] += int(row["Count"])
                urls[row["Txn-Name"]] += 1
        table = self.browser.table("#mix-parts > div > .scroller[aria-label='Mix by transaction']")
        self.assertEqual({row[0]: int(row[1]) for row in table}, dict(of_transaction))
        self.assertEqual({row[0]: int(row[6]) for row in table}, dict(urls))
        self.browser.run("document.querySelector('#mix button.link').click()")
        self.assertEqual(self.found(), (urls[table[0][0]], of_transaction[table[0][0]]))
        self.assertEqual(self.browser.focused().get_attribute("id"), "search")

    def test_goes_by_the_theme_of_the_system_until_the_reader_chooses(self):
        colour = "return getComputedStyle(document.body).backgroundColor"
        self.browser.set_media(prefers_color_scheme="light")
        light = self.browser.run(colour)
        self.browser.set_media(prefers_color_scheme="dark")
        self.browser.wait_for("return document.documentElement.dataset.theme === 'dark'")
        self.assertNotEqual(self.browser.run(colour), light)
        self.browser.click("#theme")
        self.assertEqual(self.browser.run(colour), light)
        self.browser.driver.refresh()
        self.assertEqual(self.browser.run(colour), light)
        self.browser.run("localStorage.clear()")
        self.browser.set_media()

    def test_is_usable_with_the_keyboard(self):
        self.browser.press(Keys.TAB)
        self.assertEqual(self.browser.focused().get_attribute("class"), "skip")
        outline = self.browser.run("return getComputedStyle(document.activeElement).outlineStyle")
        self.assertNotEqual(outline, "none")
        self.browser.press(Keys.ENTER)
        self.assertTrue(self.browser.driver.current_url.endswith("#content"))
        self.assertEqual(self.browser.run("return [...document.querySelectorAll('button, input, select, canvas')]"
                                          ".filter((element) => !(element.ariaLabel || element.textContent"
                                          " || element.labels?.length)).length"), 0)

    def test_keeps_the_place_of_the_keyboard(self):
        self.browser.run("document.querySelector('[aria-label=\"Next page\"]').focus()")
        for _ in range(3):
            self.browser.press(Keys.ENTER)
        self.assertTrue(self.browser.text("#page").endswith("110 of 110"))
        self.assertEqual(self.browser.focused().get_attribute("aria-label"), "Next page")
        self.browser.run("document.querySelector('#settings-shares button.more').focus()")
        self.browser.press(Keys.ENTER)
        self.assertEqual(self.browser.focused().get_attribute("aria-label"), "Share of each transaction")
        self.assertEqual(len(self.browser.table("#settings-shares")), 14)

    def test_fits_a_telephone(self):
        self.browser.set_width(390)
        self.assertEqual(self.browser.run("return document.documentElement.scrollWidth"), 390)
        self.browser.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})

    def test_prints_in_light_colours(self):
        self.browser.set_media(prefers_color_scheme="dark")
        self.browser.wait_for("return document.documentElement.dataset.theme === 'dark'")
        self.browser.run("addEventListener('beforeprint', () => {"
                         " window.printed = document.documentElement.dataset.theme; })")
        printed = self.browser.driver.execute_cdp_cmd("Page.printToPDF", {"printBackground": True})
        self.assertGreater(len(printed["data"]), 50_000)
        self.assertEqual(self.browser.run("return window.printed"), "light")
        self.assertEqual(self.browser.run("return document.documentElement.dataset.theme"), "dark")
        self.browser.set_media()

    def test_charts_can_be_read_as_tables(self):
        total = self.number("#tile-requests .value")
        self.choose("By", "3600")
        self.browser.click("#time-charts details summary")
        self.browser.run("document.querySelector('#time-charts button.more')?.click()")
        self.browser.wait_for("return document.querySelector('#time-charts table') !== null")
        self.browser.run("document.querySelector('#time-charts button.more')?.click()")
        rows = self.browser.table("#time-charts details")
        self.assertEqual(sum(int(row[1]) for row in rows), total)


class CountedPageTest(PageTest):
    """A log of which everything is known: what the page shows is worked out from its requests."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        chance = random.Random(20260310)
        requests = []
        for user in range(200):
            second = chance.randrange(-900, 7800)
            for _ in range(chance.choice((1, 2, 5, 13, 40))):
                path = chance.choice(("/buy", "/look", f"/page/{chance.randrange(30)}", "/find?q=1", "/find?q=2"))
                requests.append((f"10.0.{user // 100}.{user % 100 + 1}", second, path,
                                 chance.choice((200, 200, 200, 206, 404, 500, 503))))
                second += chance.choice((0, 1, 3, 10, 25, 70, 400))
        requests.sort(key=lambda request: request[1])
        cls.traffic = Traffic(requests)
        cls.installation = Installation.made(
            cls.root, BUILD, cls.traffic.log(), period=cls.traffic.period(),
            patterns="active|main|na|1|Buy|na|-|na|/buy\nactive|main|na|2|Look|na|-|na|/look\n")
        cls.page = cls.installation.make_page()

    def test_shows_peak_and_sessions(self):
        traffic = self.traffic
        sessions = traffic.sessions()
        minutes = traffic.minutes()
        most = max(minutes.values())
        peak = min(minute for minute, count in minutes.items() if count == most)
        self.assertEqual(self.number("#tile-requests .value"), len(traffic.inside))
        self.assertEqual(self.number("#tile-peak .value"), most)
        self.assertIn(minute_text(peak), self.browser.text("#tile-peak .detail"))
        self.assertEqual(self.number("#tile-sessions .value"), len(sessions))
        working, since = traffic.most_at_work()
        self.assertEqual(self.number("#tile-concurrent .value"), working)
        self.assertIn(minute_text(since // 60), self.browser.text("#tile-concurrent .detail"))

    def test_shows_percentiles(self):
        sessions = self.traffic.sessions()
        gaps = [after - before for seconds in sessions for before, after in zip(seconds, seconds[1:])]
        for name, values in (("requests-of-session", [len(seconds) for seconds in sessions]),
                             ("length-of-session", [seconds[-1] - seconds[0] for seconds in sessions]),
                             ("request-gaps", gaps)):
            (row,) = self.browser.table(f"#{name} > .scroller")
            self.assertEqual(int(row[0].replace(",", "")), len(values))
            self.assertEqual([seconds_of(cell) for cell in row[1:4]],
                             [shown_seconds(percentile(values, part)) for part in (0.5, 0.9, 0.99)])
            self.assertEqual(seconds_of(row[5]), shown_seconds(max(values)))

    def test_shows_what_lies_outside_the_period(self):
        before = sum(second < 0 for _, second, _, _ in self.traffic.requests)
        after = sum(second >= 7200 for _, second, _, _ in self.traffic.requests)
        self.assertGreater(before, 0)
        self.assertGreater(after, 0)
        self.assertIn(f"Before it the logs hold {before:,} requests, after it {after:,}.",
                      self.browser.text("#time-lead"))

    def test_counts_requests_and_responses_minute_by_minute(self):
        self.choose("By", "60")
        self.browser.click("#time-charts details summary")
        self.browser.wait_for("return document.querySelector('#time-charts table') !== null")
        self.browser.run("document.querySelector('#time-charts button.more').click()")
        shown = {row[0]: [int(cell) for cell in row[1:]] for row in self.browser.table("#time-charts details")}
        expected = {}
        for _, second, _, status in self.traffic.requests:
            row = expected.setdefault(minute_text(second // 60), Counter())
            row["requests"] += 0 <= second < 7200
            row[status // 100] += 1
        for seconds in self.traffic.sessions():
            expected[minute_text(seconds[0] // 60)]["begun"] += 1
        for moment, row in expected.items():
            self.assertEqual((shown[moment][0], shown[moment][2], shown[moment][5], shown[moment][7], shown[moment][8]),
                             (row["requests"], row["begun"], row[2], row[4], row[5]), moment)
        self.assertEqual(sum(row[0] for row in shown.values()), len(self.traffic.inside))

    def test_shows_the_share_of_each_transaction(self):
        named = Counter(url for _, _, url, _ in self.traffic.inside if url in ("/buy", "/look"))
        shares = {row[0]: row[1] for row in self.browser.table("#settings-shares")}
        self.assertEqual(shares, {name: f"{100 * named[url] / sum(named.values()):.1f}%"
                                  for name, url in (("Buy", "/buy"), ("Look", "/look"))})

    def test_shows_queries_only_where_they_are_wanted(self):
        queries = Counter(url for _, _, url, _ in self.traffic.inside if "?" in url)
        self.search("/find")
        self.browser.click(".more-of")
        self.assertEqual({row[0]: int(row[1].replace(",", "")) for row in self.browser.table(".queries")},
                         {"q=1": queries["/find?q=1"], "q=2": queries["/find?q=2"]})
        without = self.installation.make_page("--no-queries").read_text()
        self.assertNotIn("q=1", without)
        one = self.installation.make_page("--queries", "1").read_text()
        self.assertEqual(("q=1" in one) + ("q=2" in one), 1)
        self.installation.make_page()


def seconds_of(text):
    """"1 h 3 min" in seconds."""
    size = {"d": 86400, "h": 3600, "min": 60, "s": 1}
    words = text.replace(",", "").split()
    if len(words) == 1:
        return int(words[0])
    return sum(int(count) * size[unit] for count, unit in zip(words[::2], words[1::2]))


def shown_seconds(seconds):
    """What the page shows of a duration: its two largest units."""
    return seconds // 3600 * 3600 if seconds >= 86400 else seconds // 60 * 60 if seconds >= 3600 else seconds


class FreshnessTest(PageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.installation = Installation.made(
            cls.root, BUILD, log_line("10.0.0.1", BEGIN, "GET /a?b=c HTTP/1.1", 200))
        cls.page = cls.installation.make_page()

    def notices(self):
        self.page = self.installation.make_page()
        self.browser.open(self.page)
        return self.browser.text("#notices")

    def test_says_how_fresh_the_results_are(self):
        config = self.installation.config
        self.assertIn("No results yet.", self.notices())
        self.installation.run_tool()
        self.assertEqual(self.notices(), "")
        (config / "query_url.list").rename(config / "kept")
        self.assertIn("query_url.list is missing.", self.notices())
        (config / "kept").rename(config / "query_url.list")
        os.utime(self.root / "logs/access", (time.time() + 10, time.time() + 10))
        self.assertIn("Results are out of date.", self.notices())
        self.assertIn("logs/access", self.notices())
        run_at_work = os.open(config, os.O_RDONLY)
        fcntl.fcntl(run_at_work, 37, struct.pack("hhqqi4x", fcntl.F_RDLCK, 0, 0, 0, 0))  # F_OFD_SETLK
        self.assertIn("A run is at work.", self.notices())
        os.close(run_at_work)


class HostilePageTest(PageTest):
    """Whatever a log says is shown, and never run."""

    PATHS = ["/<script>window.hacked=1</script>", "/</script><script>window.hacked=2</script>", "/<!--", "/-->",
             "/]]>", "/<img/src=x/onerror=window.hacked=3>", "/'onfocus='window.hacked=4", "/${window.hacked=5}",
             "/\u2028window.hacked=6//", "/\u202egnp.exe", "/\\u003cscript\\u003e", "/&lt;script&gt;", "/%3Cscript%3E",
             "/`window.hacked=7`", "/javascript:window.hacked=8", "/__proto__", "/<!--<script>", "/\u0085\u200b",
             "/a|b", "/\\\"onclick=window.hacked=9", "/<style>*{display:none}</style>", "/{{7*7}}"]
    HOSTS = ["<script>window.hacked=10</script>", "\"><img/src=x/onerror=window.hacked=11>", "__proto__", "constructor"]
    METHODS = ["GET", "<SVG/ONLOAD=WINDOW.HACKED=12>", "POST"]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        requests = [f"{method} {path}?{path[1:]} HTTP/1.1" for path in cls.PATHS for method in cls.METHODS]
        requests += [f"GET http://{host}/ HTTP/1.1" for host in cls.HOSTS]
        log = "".join(log_line("10.0.0.1", BEGIN, request, 200) for request in requests).encode()
        log += b"\xff\xfe</script>\n" + log_line("10.0.0.2", BEGIN, "GET /x HTTP/1.1", 200).encode().replace(b"/x", b"/\xff\xc0<b>")
        name = "</script><script>window.hacked=13</script>\"'"
        cls.installation = Installation.made(cls.root, BUILD, log, patterns=f"active|main|na|1|{name}|na|-|na|/<*\n")
        cls.installation.run_tool()
        cls.page = cls.installation.make_page()

    def test_runs_nothing(self):
        self.browser.run("const choices = document.querySelectorAll('select[aria-label=Rows]');"
                         "choices[0].value = '500'; choices[0].dispatchEvent(new Event('change'))")
        self.browser.run("document.querySelectorAll('.more-of, button.more, summary').forEach((one) => one.click());")
        for label in ("Transaction", "Host", "Method", "Type"):
            values = self.browser.run("return [...document.querySelector(`select[aria-label=${arguments[0]}]`).options]"
                                      ".map((option) => option.value)", label)
            for value in values:
                self.choose(label, value)
            self.choose(label, "")
        self.search("<script>")
        self.search("")
        self.assertIsNone(self.browser.run("return window.hacked ?? null"))
        self.assertEqual(self.browser.run("return document.scripts.length"), 4)
        self.assertEqual(self.browser.run("return document.querySelectorAll('img, svg, iframe, object, link, b').length"), 0)
        self.assertEqual(self.browser.run("return document.querySelectorAll('style').length"), 1)

    def test_shows_every_text_as_it_is(self):
        shown = sorted({row[3] for row in self.all_rows()})
        hidden = {character: f"\\u{ord(character):04x}" for character in "\u2028\u202e\u0085\u200b"}
        expected = {row["URL"].replace("\0", "|") for row in self.installation_rows()}
        expected = {"".join(hidden.get(character, character) for character in url) for url in expected}
        self.assertEqual(shown, sorted(expected))
        self.assertTrue(any("<script>" in url for url in shown))
        self.assertIn("window.hacked=13", self.browser.text("#mix-parts"))

    def installation_rows(self):
        lines = (self.installation.config / "url.list").read_bytes().decode("utf-8", "surrogateescape").split("\n")
        names = lines[1].split("|")
        rows = [dict(zip(names, line.replace("&#124;", "\0").split("|"))) for line in lines[2:] if line]
        for row in rows:
            row["URL"] = "".join(f"\\x{ord(c) - 0xdc00:02x}" if 0xdc80 <= ord(c) <= 0xdcff else c for c in row["URL"])
        return rows

    def test_lets_no_other_script_run(self):
        """Even a script that got into the page is refused by the page's policy."""
        self.browser.run("const script = document.createElement('script');"
                         "script.textContent = 'window.injected = 1'; document.body.append(script);"
                         "document.body.insertAdjacentHTML('beforeend', '<button id=trap onclick=\"window.injected=2\">');"
                         "document.getElementById('trap').click()")
        self.assertIsNone(self.browser.run("return window.injected ?? null"))
        refusals = self.browser.console()
        self.assertEqual(len(refusals), 2, refusals)
        self.assertTrue(all("Content Security Policy" in refusal for refusal in refusals), refusals)


class LargePageTest(PageTest):
    """A million lines and a hundred thousand URLs."""

    LINES, URLS = 1_000_000, 100_000

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        lines = []
        for at in range(cls.LINES):
            client = f"10.{at % 200}.{at // 7 % 200}.{at // 1400 % 200 + 1}"
            item = at * 7919 % cls.URLS
            path = f"/shop/department{item % 17}/item{item}.html"
            lines.append(f'{client} - - [10/Mar/2026:{9 + at // 250000:02d}:{at // 4167 % 60:02d}:{at // 70 % 60:02d} +0000]'
                         f' "GET {path} HTTP/1.1" 200 512 "-" "Mozilla/5.0"\n')
        patterns = "".join(f"active|main|na|{n}|Department{n}|na|-|na|/shop/department{n}/*\n" for n in range(9))
        cls.installation = Installation.made(cls.root, BUILD, "".join(lines), patterns=patterns)
        cls.page = cls.installation.make_page()

    def test_opens_in_two_seconds(self):
        def open_page():
            self.browser.open(self.page)
            self.assertEqual(len(self.browser.table(".urls")), 50)
            return self.browser.run(
                "return performance.getEntriesByType('navigation')[0].domContentLoadedEventEnd / 1000")

        opened = self.browser.measured(open_page)
        size = self.page.stat().st_size / 1e6
        urls = self.found()[0]
        print(f"\npage of {self.LINES} lines and {urls} URLs: {size:.1f} MB, opens in {opened:.2f} s")
        self.assertEqual(urls, self.URLS)
        self.assertLess(size, 30)
        self.assertLess(opened, 2)

    def test_searches_and_sorts_while_one_types(self):
        times = self.browser.measured(self.search_and_sort, 3)
        print("\n" + ", ".join(f"{name} {taken:.2f} s" for name, taken in times.items()))
        for name, taken in times.items():
            self.assertLess(taken, 1.5, name)

    def search_and_sort(self):
        self.browser.open(self.page)  # what was sorted once is kept
        times = self.browser.run("""
            const times = {};
            const measure = (name, act) => {
                const begin = performance.now();
                act();
                times[name] = (performance.now() - begin) / 1000;
            };
            for (const button of document.querySelectorAll("button.sort")) {
                measure(`sort by ${button.textContent}`, () => button.click());
            }
            const type = document.querySelector("select[aria-label=Type]");
            type.value = "with";
            measure("filter", () => type.dispatchEvent(new Event("change")));
            return times;""")
        begin = time.monotonic()
        self.search("item4711.html")
        times["search"] = time.monotonic() - begin
        self.assertLess(self.found()[0], 20)
        return times

    def test_is_made_nearly_as_fast_as_a_run(self):
        def measured(act):
            begin = time.monotonic()
            act()
            return time.monotonic() - begin

        run = page = math.inf
        for tries in range(1, 21):  # what else the machine does slows one or the other
            run = min(run, measured(self.installation.run_tool))
            page = min(page, measured(self.installation.make_page))
            if tries >= 3 and page < 1.5 * run:
                break
        print(f"\na run: {run:.2f} s, the page: {page:.2f} s, {page / run:.2f} times, as of {tries} tries")
        self.assertLess(page, 1.5 * run)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
