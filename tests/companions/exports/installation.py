"""Installations of the tool: the sample, one of awkward requests, and one that reads a log back."""

import csv
import json
import os
import re
import shutil
import subprocess
from collections import Counter
from io import StringIO
from pathlib import Path
from urllib.parse import quote

PROJECT = "workspace/admin/default/quarvel/default/default"
COMBINED_LOG = """USER_SESSION_KEY client_ip
AL_FIELD CLIENT_IP 1
AL_FIELD DATE_AND_TIME 4
AL_FIELD REQUEST_LINE 5
AL_FIELD STATUS_CODE 6
"""
PATH_MARKS = "-._~!$&'()*+,;=:@/%"
QUERY_MARKS = PATH_MARKS + "?[]"


def requested_path(logged_url):
    """What a client that keeps to the rules for URLs sends for a logged one."""
    path = re.sub(rb"^[A-Za-z0-9+.-]+://[^/?#]*", b"", logged_url)
    path = path if path.startswith(b"/") else b"/" + path
    path = re.sub(rb"%(?![0-9A-Fa-f]{2})", b"%25", path)
    before, mark, query = path.partition(b"?")
    return quote(before, safe=PATH_MARKS) + mark.decode() + quote(query, safe=QUERY_MARKS)


class Installation:
    def __init__(self, root, scenario, programs):
        self.root = Path(root)
        self.scenario = scenario
        self.programs = Path(programs)

    @property
    def profile(self):
        return self.root / PROJECT / "replay_profiles" / self.scenario

    @property
    def results(self):
        return self.root / PROJECT / "ReplayAccessLogs" / self.scenario / "config"

    def run(self, program, *words):
        environment = {**os.environ, "ZV_WDIR": str(self.root), "TZ": "UTC"}
        command = [self.programs / program, *words]
        result = subprocess.run(command, cwd=self.root, env=environment, capture_output=True)
        if result.returncode != 0:
            raise RuntimeError(f"{words}: {result.stdout.decode()}{result.stderr.decode()}")
        return result

    def run_tool(self):
        self.run("zvr_al_gen_url_list", "-s", self.scenario)

    def export(self, form, base_url, output):
        """Returns what the report says of it."""
        return self.run("zvr_al_report", "export", "-s", self.scenario, "--format", form,
                        "--base-url", base_url, "-o", output).stderr.decode()

    def exported_data(self, form, base_url):
        """The rows of a format that is data, as dictionaries."""
        words = ["export", "-s", self.scenario, "--format", form, "--base-url", base_url]
        text = self.run("zvr_al_report", *words).stdout.decode()
        return json.loads(text)["targets"] if form == "json" else list(csv.DictReader(StringIO(text)))

    def rows(self):
        """The rows of url.list that are not filtered, as lists of columns."""
        lines = (self.results / "url.list").read_bytes().splitlines()[2:]
        return [row for row in (line.split(b"|") for line in lines) if row[0] == b"NO"]

    def requests(self):
        """How often each method, requested path, host and body file is listed, by the lists alone."""
        counts = Counter()
        for row in self.rows():
            method, url, count, host, offset, body = row[2], row[3], int(row[4]), *row[6:9]
            for full_url in self.full_urls(url, count, int(offset)):
                counts[method.decode(), requested_path(full_url), host.decode(), body.decode()] += 1
        return counts

    def full_urls(self, url, count, offset):
        if offset < 0:
            return [url.replace(b"&#124;", b"|")] * count
        queries = (self.results / "query_url.list").read_bytes()
        return queries[offset:].split(b"\n", count)[:count]


def sample(root, source, programs):
    shutil.copytree(source / "examples/installation", root)
    return Installation(root, "shop", programs)


AWKWARD_URLS = [
    "/find?q=1", "/find?q=2", "/find?q=2", "/find?q=%3Cscript%3Ealert(1)%3C/script%3E",
    "/find?q=<script>alert('x')</script>", "/find?q=${HOST}&r=$(id)&s=`id`", "/find?q=]]>&lt;&amp;",
    "/find?q=a,b;c'd*e!f~g@h:i+j", "/find?a[]=1&a[]=2", "/find?q=\u00fc\u20ac\u2028", "/find?%zz%",
    "/find?q={x:1}|y^z", "/find?u=http://other.example/a//b", "/find?", "/find??", "/find?a?b/c",
    "/a;jsessionid=A1?x=1", "/a;b", "/a#top", "/a%2Fb%2e", "/a//b", "/a/./b/../c", "/a[1]", "/a|b",
    "/$HOME", "/a$", "/~user/", "/a'b(c)", "/a,b", "/POST%20x", "/__V(1)", "/${__time()}",
    "/-", "http://other.example:81/absolute?q=1", "/\\..\\x", "/a\x01\x1b[2Jb",
    "/long?" + "x" * 20_000,
]
AWKWARD_BODIES = {"body.txt": b"a=1&b=2", "with blank.txt": b"{\"a\": \"<b>\"}"}


def awkward(root, programs):
    """URLs that have a meaning for some format or program, in a log with hosts, and two bodies."""
    installation = Installation(root, "awkward", programs)
    settings = COMBINED_LOG + "AL_FIELD HOST_HEADER 8\nIGNORE_URL_QUERY_PARAM 1\n"
    write_profile(installation, settings,
                  "active|main|POST|1|Order, \"all\"|na|d|body.txt|/order\n"
                  "active|main|PUT|2|Change|na|d|with blank.txt|/order*\n"
                  "active|main|na|3|Find|na|d|na|/find*\n"
                  "active|MAIN_WITHOUT_TX|na|4|na|na|d|na|/*\n",
                  "active|na|1|na|/health*\n")
    for name, text in AWKWARD_BODIES.items():
        (installation.profile / name).write_bytes(text)
    requests = [("GET", url) for url in AWKWARD_URLS * 2]
    # So many that k6 has 90 to make, where a step of 0.618 of them would meet only every fifth.
    requests += [("POST", "/order")] * 8 + [("PUT", "/order?id=7")] * 2 + [("POST", "/find?q=1")]
    requests += [(method, "/find?q=9") for method in ("DELETE", "OPTIONS", "PATCH", "HEAD")]
    requests += [("PROPFIND", "/dav"), ("Get", "/mixed"), ("GET", "/health?x")]
    with (installation.root / "access.log").open("wb") as log:
        for i, (method, url) in enumerate(requests):
            host = ("www.example.com", "api.example.com:8443")[i % 2]
            log.write(f'10.0.0.1 - - [10/Oct/2025:13:55:36 +0000] "{method} {url} HTTP/1.1" 200 -'
                      f' "{host}"\n'.encode())
    return installation


def read_back(root, original, log):
    """A log in combined format, read by the settings and patterns of the original."""
    installation = Installation(root, "back", original.programs)
    cut = [line for line in (original.profile / "replay_settings.dat").read_text().splitlines()
           if line.startswith("IGNORE_URL_QUERY_PARAM")]
    write_profile(installation, COMBINED_LOG + "\n".join(cut) + "\n", "", "")
    for file in original.profile.iterdir():
        if file.name != "replay_settings.dat":
            shutil.copy(file, installation.profile)
    shutil.copy(log, installation.root / "access.log")
    installation.run_tool()
    return installation


def write_profile(installation, settings, patterns, filters):
    scenarios = installation.root / PROJECT / "scenarios"
    for directory in (scenarios, installation.profile, installation.root / "sys"):
        directory.mkdir(parents=True)
    (installation.root / "sys/replay_settings.default").write_text("GMT_OFFSET +0000\n")
    (scenarios / f"{installation.scenario}.conf").write_text(
        f"REPLAY_LOG_FILE {installation.root}/access.log web 0 HTTP\n"
        "REPLAY_PERIOD START NA\nREPLAY_PERIOD END NA\n")
    profile = installation.profile
    (profile / "replay_settings.dat").write_text(settings)
    (profile / "replay_url_patterns.dat").write_text(patterns)
    (profile / "replay_url_filter_patterns.dat").write_text(filters)
