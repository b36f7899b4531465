"""Proves exports with the programs that they are for.

Exports a scenario, has the load made against a web server of its own, reads the server's log back
with the tool, and compares how often each method and URL is listed there with what the results of
the scenario list. Both sides are counted from the lists themselves, not by the export.
"""

import argparse
import shutil
import sys
import tempfile
from collections import Counter
from pathlib import Path

from installation import awkward, read_back, sample
from load_programs import PROGRAMS
from web_server import WebServer


class Case:
    """One installation in one format."""

    def __init__(self, original, program, scratch):
        self.original = original
        self.program = program
        self.scratch = scratch
        self.faults = []

    def run(self, programs):
        with WebServer(self.scratch / "server", programs) as server:
            targets = self.scratch / "targets"
            said = self.original.export(self.program.form, f"http://{server.authority}", targets)
            self.program.run(targets, self.scratch, programs)
            expected = self.expected(server.authority)
        self.compare("listed again", self.by_url(expected), self.listed_again(server))
        self.compare("sent", self.by_line(expected), self.sent(server))
        total = sum(expected.values())
        if f"Exported: {total} requests" not in said:
            self.faults.append(f"{total} requests, but the export says: {said}")
        return total

    def expected(self, authority):
        """Method, path, host and body size of what the program is to send, as it sends them."""
        requests = Counter()
        for (method, path, host, body), count in self.original.requests().items():
            if method in self.program.methods and self.is_short(path):
                text = Path(body).read_bytes() if body != "NA" else b""
                host = self.program.sent_host(host if host != "NA" else "", authority)
                size = len(self.program.sent_body(text))
                requests[method, self.program.sent_path(path), host, size] += count
        return requests

    def is_short(self, path):
        return self.program.longest_line is None or len(path) < self.program.longest_line

    @staticmethod
    def by_url(requests):
        counts = Counter()
        for (method, path, _, _), count in requests.items():
            counts[method, path] += count
        return counts

    @staticmethod
    def by_line(requests):
        counts = Counter()
        for (method, path, host, size), count in requests.items():
            counts[host, size, f"{method} {path}"] += count
        return counts

    def listed_again(self, server):
        back = read_back(self.scratch / "back", self.original, server.access_log)
        return self.by_url(back.requests())

    @staticmethod
    def sent(server):
        return Counter((host, int(size.replace("-", "0")), request.rpartition(" ")[0])
                       for host, size, request in server.sent())

    def compare(self, what, expected, found):
        for key in sorted(set(expected) | set(found), key=str):
            if expected[key] != found[key]:
                self.faults.append(f"{what}: {found[key]}, not {expected[key]}: {key}"[:300])


def faults_of_data(original, form):
    """Compares a format that is data with the lists, transactions aside."""
    base = "http://127.0.0.1"
    found = Counter()
    for row in original.exported_data(form, base):
        key = (row["method"], row["url"].removeprefix(base), row["host"], row["body_file"] or "NA")
        found[key] += int(row["count"])
    expected = Counter()
    for (method, path, host, body), count in original.requests().items():
        expected[method, path, host if host != "NA" else "127.0.0.1", body] += count
    return sorted((expected - found) + (found - expected))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", type=Path, required=True, help="directory of our programs")
    parser.add_argument("--programs", type=Path, required=True, help="directory of the others")
    parser.add_argument("formats", nargs="*", help="that need a program; default: all")
    arguments = parser.parse_args()
    arguments.tool = arguments.tool.resolve()
    arguments.programs = arguments.programs.resolve()
    chosen = [program for program in PROGRAMS
              if not arguments.formats or program.form in arguments.formats]
    scratch = Path(tempfile.mkdtemp(prefix="zvr_exports."))
    try:
        sys.exit(0 if prove(chosen, arguments, scratch) else 1)
    finally:
        shutil.rmtree(scratch)


def results(chosen, arguments, scratch):
    """Scenario, format, what was compared, and the faults of each case."""
    source = Path(__file__).resolve().parents[3]
    for original in (sample(scratch / "sample", source, arguments.tool),
                     awkward(scratch / "awkward", arguments.tool)):
        original.run_tool()
        for form in ("csv", "json"):
            count = sum(original.requests().values())
            yield original.scenario, form, count, faults_of_data(original, form)
        for program in chosen:
            place = scratch / f"{original.scenario}_{program.form}"
            place.mkdir()
            case = Case(original, program, place)
            yield original.scenario, program.form, case.run(arguments.programs), case.faults


def prove(chosen, arguments, scratch):
    passed = failed = 0
    for scenario, form, count, faults in results(chosen, arguments, scratch):
        print(f"{scenario} as {form}: {count} requests, {len(faults)} faults")
        print(*(f"  {fault}\n" for fault in faults), sep="", end="", flush=True)
        passed, failed = passed + (not faults), failed + bool(faults)
    print(f"{passed} passed, {failed} failed")
    return passed > 0 and failed == 0


if __name__ == "__main__":
    main()
