"""Installations for the tests of the page, runs in them, and figures counted here from the logs."""

import math
import os
import shutil
import subprocess
from collections import Counter
from datetime import datetime, timedelta, timezone
from pathlib import Path

PROJECT = "workspace/admin/default/quarvel/default/default"


class Installation:
    """A tree for one scenario, whose results and page are made by the programs of a build."""

    def __init__(self, root, build, scenario):
        self.root, self.build, self.scenario = Path(root), Path(build), scenario
        self.config = self.root / PROJECT / "ReplayAccessLogs" / scenario / "config"

    @classmethod
    def sample(cls, root, build, source):
        shutil.copytree(Path(source) / "examples/installation", root)
        return cls(root, build, "shop")

    @classmethod
    def made(cls, root, build, log, patterns="", settings="", period=""):
        """One with sessions by client address and the combined log format."""
        self = cls(root, build, "web")
        profile = self.root / PROJECT / "replay_profiles/web"
        for directory in (self.config, self.config.parent / ".tmp", profile, self.root / "logs",
                          self.root / PROJECT / "scenarios", self.root / "sys",
                          self.root / "webapps/zivrano/logs"):
            directory.mkdir(parents=True)
        (self.root / "sys/replay_settings.default").write_text("GMT_OFFSET +0000\n")
        (self.root / PROJECT / "scenarios/web.conf").write_text(
            period + "REPLAY_LOG_FILE logs/access x 0 HTTP\n")
        (profile / "replay_settings.dat").write_text(
            "USER_SESSION_KEY client_ip\nAL_FIELD CLIENT_IP 1\nAL_FIELD DATE_AND_TIME 4\n"
            "AL_FIELD REQUEST_LINE 5\nAL_FIELD STATUS_CODE 6\nIGNORE_URL_QUERY_PARAM 1\n" + settings)
        (profile / "replay_url_patterns.dat").write_bytes(
            b"status|type|method|id|transaction|host|description|post|pattern\n" + patterns.encode())
        (profile / "replay_url_filter_patterns.dat").write_text("")
        (self.root / "logs/access").write_bytes(log.encode() if isinstance(log, str) else log)
        return self

    def call(self, program, *words):
        environment = {**os.environ, "ZV_WDIR": str(self.root), "TZ": "UTC", "PATH": "/nonexistent"}
        return subprocess.run([self.build / program, *words, "-s", self.scenario], cwd=self.root,
                              env=environment, capture_output=True, text=True, check=True)

    def run_tool(self):
        return self.call("zvr_al_gen_url_list").stdout

    def make_page(self, *words):
        path = self.root / "report.html"
        self.call("zvr_al_report", "page", "-o", str(path), *words)
        return path

    def rows(self):
        """Rows of url.list, each a dictionary by its heading."""
        lines = (self.config / "url.list").read_text().split("\n")
        names = lines[1].split("|")
        return [dict(zip(names, line.replace("&#124;", "\0").split("|"), strict=True))
                for line in lines[2:] if line]


BEGIN = datetime(2026, 3, 10, 9, 0, 0, tzinfo=timezone.utc)


def log_line(client, time, request, status):
    return f"{client} - - [{time:%d/%b/%Y:%H:%M:%S} +0000] \"{request}\" {status} 10\n"


class Traffic:
    """Requests of some users: all count but those outside the period, and a session is a client."""

    def __init__(self, requests):
        self.requests = requests  # (client, second after BEGIN, url, status), in the order of the log
        self.inside = [request for request in requests if 0 <= request[1] < 7200]

    def log(self):
        return "".join(log_line(client, BEGIN + timedelta(seconds=second), f"GET {url} HTTP/1.1", status)
                       for client, second, url, status in self.requests)

    @staticmethod
    def period():
        # First and last second that count.
        return ("REPLAY_PERIOD START 03/10/2026 09:00:00\n"
                "REPLAY_PERIOD END 03/10/2026 10:59:59\n")

    def sessions(self):
        """The seconds of each session, in order."""
        of_client = {}
        for client, second, _, _ in self.inside:
            of_client.setdefault(client, []).append(second)
        return [sorted(seconds) for seconds in of_client.values()]

    def minutes(self):
        return Counter(second // 60 for _, second, _, _ in self.inside)

    def most_at_work(self):
        busy = Counter()
        for seconds in self.sessions():
            busy.update(range(seconds[0], seconds[-1] + 1))
        most = max(busy.values())
        return most, min(second for second, count in busy.items() if count == most)


def percentile(values, part):
    return sorted(values)[math.ceil(part * len(values)) - 1]


def minute_text(minute):
    return f"{BEGIN + timedelta(minutes=minute):%Y-%m-%d %H:%M}"

