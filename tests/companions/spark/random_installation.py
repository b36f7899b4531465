"""Installations by chance, in which what happens in one part of a log has a say in others: sessions over all
instances, requests that wait for their session over files and pieces of 4 MB, redirects, lines cut by a budget."""

import random
import shutil
from datetime import datetime, timedelta
from pathlib import Path

PROJECT = "workspace/admin/default/quarvel/default/default"
SCENARIO = "web"
BEGIN = datetime(2026, 3, 10, 9, 0, 0)
PATTERNS = """status|type|method|id|transaction|host|description|post|pattern
active|main|GET|1|Start|na|x|NA|/
active|main|na|2|Shop|na|x|NA|/shop/[0-9]+*
active|inline|na|3|Image|na|x|NA|*.png
"""
FILTERS = "status|method|id|host|pattern\nactive|na|1|na|/health*\n"


class Request:
    """One line to be: when, whose (session cookie, secondary cookie, address), what, and what it redirects to."""

    def __init__(self, second, session, secondary, address, url, method, location, sets_cookie):
        self.time = BEGIN + timedelta(seconds=second)
        self.address, self.url, self.method = address, url, method
        self.location, self.status = location, 302 if location != "-" else 200
        cookies = (["JSESSIONID=" + session] if session and not sets_cookie else []) + (
            ["trk=" + secondary] if secondary else [])
        self.cookie = "; ".join(["lang=en", *cookies])
        self.set_cookie = "JSESSIONID=%s; Path=/" % session if sets_cookie else "-"


def apache_line(request, agent):
    return '%s - - [%s +0000] 12 "%s %s HTTP/1.1" %d 100 "-" "%s" "text/html" "%s" "%s" "www.example.com" "%s"' % (
        request.address, request.time.strftime("%d/%b/%Y:%H:%M:%S"), request.method, request.url, request.status,
        agent, request.cookie, request.set_cookie, request.location)


def iis_line(request, agent):
    path, _, query = request.url.partition("?")
    words = [request.address, request.time.strftime("%Y-%m-%d %H:%M:%S"), request.method, path, query or "-",
             "HTTP/1.1", str(request.status), agent.replace(" ", "+"), "-", "text/html",
             request.cookie.replace(" ", "+"), request.set_cookie.replace(" ", "+"), "www.example.com",
             request.location]
    return " ".join(words)


def custom_line(request, agent):
    words = [request.address, request.time.strftime("%Y-%m-%d"), request.time.strftime("%H:%M:%S"), request.method,
             request.url.partition("?")[0], request.url, str(request.status)]
    return '%s "%s" - text/html "%s" "%s" www.example.com %s' % (
        "\t".join(words), agent, request.cookie, request.set_cookie, request.location)


DIALECTS = {"APACHE": apache_line, "IIS": iis_line, "custom": custom_line}


class RandomInstallation:
    """The tree below `root`. `long_lines`: the share of lines that are kilobytes long, so that few make several
    pieces of a log."""

    def __init__(self, root, seed, dialect, mode, users=250, long_lines=0.6):
        self.random = random.Random(seed)
        self.root, self.dialect = Path(root), dialect
        self.instances = self.random.randint(1, 4)
        self.config = self.root / PROJECT / "ReplayAccessLogs" / SCENARIO / "config"
        self.profile = self.root / PROJECT / "replay_profiles" / SCENARIO
        for folder in (self.config, self.config.parent / ".tmp", self.profile, self.root / PROJECT / "scenarios",
                       self.root / "sys", self.root / "logs", self.root / "webapps/zivrano/logs"):
            folder.mkdir(parents=True)
        (self.root / "sys/replay_settings.default").write_text("GMT_OFFSET +0000\n")
        (self.profile / "replay_url_patterns.dat").write_text(PATTERNS)
        (self.profile / "replay_url_filter_patterns.dat").write_text(FILTERS)
        self.write_settings(mode)
        logs = self.write_logs(users, long_lines)
        self.write_scenario(list(logs))

    def write_settings(self, mode):
        flip = lambda: self.random.randint(0, 1)
        (self.profile / "replay_settings.dat").write_text(
            "ACCESS_LOG_TYPE %s\nUSER_SESSION_KEY %s\nCOOKIE_NAME JSESSIONID\nSECONDARY_COOKIE %d trk\n"
            "AUTO_REDIRECT %d\nIGNORE_NON_SESSION_URLS %d\nIGNORE_URL_QUERY_PARAM %d\n"
            % (self.dialect, mode, self.random.random() < 0.8, flip(), flip(), flip()))

    def write_scenario(self, logs, budgets=None):
        """`budgets`: of the lines of each log; by chance."""
        budget = lambda: self.random.choice([0, 0, 0, self.random.randint(1, 1500)])
        budgets = budgets or [budget() for _ in logs]
        lines = ["REPLAY_LOG_FILE %s x %d HTTP\n" % entry for entry in zip(logs, budgets)]
        self.random.shuffle(lines)
        if self.random.random() < 0.5:
            lines.append("REPLAY_PERIOD START 03/10/2026 09:10:00\nREPLAY_PERIOD END 03/10/2026 10:40:00\n")
        (self.root / PROJECT / "scenarios" / (SCENARIO + ".conf")).write_text("".join(lines))

    def requests(self, user):
        """Of one user; at some time the session cookie is set, which the requests before it wait for."""
        chance = self.random
        session = "%08X%s" % (chance.getrandbits(32), chance.choice(["", ".node1"]))
        secondary = chance.choice(["", "id%d" % user, "id%d" % chance.randrange(40)])
        address = "10.%d.0.%d" % (chance.randrange(4), chance.randrange(1, 250))
        count, second = chance.randint(1, 40), chance.randrange(6000)
        begin = chance.choice([0, 0, chance.randrange(count), count])
        location = "-"
        for i in range(count):
            url = location if location != "-" and chance.random() < 0.8 else self.url()
            location = self.url() if chance.random() < 0.2 else "-"
            method = chance.choice(["GET"] * 6 + ["POST", "HEAD"])
            yield Request(second, session if i >= begin else "", secondary, address, url, method, location,
                          i == begin and chance.random() < 0.7)
            second += chance.choice([0, 0, 1, 1, 2, 30, 300])

    def url(self):
        chance = self.random
        path = chance.choice(["/", "/health", "/shop/%d" % chance.randrange(30), "/img/%d.png" % chance.randrange(9),
                              "/p%d/%d" % (chance.randrange(5), chance.randrange(60))])
        return path + chance.choice(["", "", "?q=%d" % chance.randrange(100)])

    def write_logs(self, users, long_lines):
        requests = [request for user in range(users) for request in self.requests(user)]
        requests.sort(key=lambda request: request.time)
        line_of, chance = DIALECTS[self.dialect], self.random
        texts = [[] for _ in range(self.instances)]
        for request in requests:
            agent = "Mozilla/5.0 probe" + "x" * (chance.random() < long_lines and chance.randrange(9000))
            texts[chance.randrange(self.instances)].append(line_of(request, agent).encode() + b"\n")
            if chance.random() < 0.01:
                texts[0].append(chance.choice([b"no request\n", b"\n", b"a\0b\0c\n"]))
        return [log for i, lines in enumerate(texts) for log in self.write_instance(i, lines)]

    def write_instance(self, number, lines):
        """The lines in one to three files of one folder, which makes them an instance."""
        folder = self.root / "logs" / ("server%d" % number)
        folder.mkdir()
        count = self.random.randint(1, 3)
        for i in range(count):
            log = folder / ("access_%d.log" % i)
            log.write_bytes(b"".join(lines[len(lines) * i // count : len(lines) * (i + 1) // count]))
            yield log

    def results(self):
        """Bytes of the result files by their names."""
        return {file.name: file.read_bytes() for file in sorted(self.config.iterdir()) if file.is_file()}

    def forget_results(self):
        for folder in (self.config, self.config.parent / ".tmp"):
            shutil.rmtree(folder)
            folder.mkdir()
