"""The programs that exports are for, each run so that every request is made exactly once."""

import subprocess
import sys
from pathlib import Path

SIEGE_SETTINGS = """verbose = false
quiet = true
logging = false
parser = false
cache = false
url-escaping = false
"""


class Siege:
    form = "siege"
    methods = {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS"}
    longest_line = 8000

    @staticmethod
    def run(targets, scratch, _):
        settings = scratch / "siege.conf"
        settings.write_text(SIEGE_SETTINGS)
        command = ["siege", "-R", settings, "-c", "1", "-r", "once", "-b", "-f", targets]
        run(command, scratch)

    @staticmethod
    def sent_path(path):
        return path.replace("$", "%24")

    @staticmethod
    def sent_host(_, authority):
        return authority

    @staticmethod
    def sent_body(body):
        return body.rstrip(b"\n")


class Exact:
    """What a program sends that changes nothing."""

    longest_line = None

    @staticmethod
    def sent_path(path):
        return path

    @staticmethod
    def sent_host(host, authority):
        return host or authority

    @staticmethod
    def sent_body(body):
        return body


class Vegeta(Exact):
    form = "vegeta"
    methods = {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "HEAD", "PROPFIND",
               "PROPFINDALLRESOU"}

    @staticmethod
    def run(targets, scratch, programs):
        command = [programs / "vegeta", "attack", "-lazy", "-targets", targets, "-rate", "0",
                   "-max-workers", "4", "-output", scratch / "results"]
        run(command, scratch)


class K6(Exact):
    form = "k6"
    methods = Vegeta.methods

    @staticmethod
    def run(targets, scratch, programs):
        run([programs / "k6", "run", "--quiet", "--no-usage-report", targets], scratch)


class JMeter(Exact):
    form = "jmeter"
    methods = Siege.methods | {"HEAD", "TRACE"}

    @staticmethod
    def run(targets, scratch, programs):
        home = programs / "jmeter"
        command = ["java", "-Djava.awt.headless=true", "-jar", home / "bin/ApacheJMeter.jar", "-n",
                   "-t", targets, "-l", scratch / "results.jtl", "-j", scratch / "jmeter.log",
                   "-Jthreads=3"]
        run(command, scratch)

    @staticmethod
    def sent_path(path):
        before, mark, query = path.partition("?")
        while "//" in before:
            before = before.replace("//", "/")
        return before + mark + query

    @staticmethod
    def sent_host(host, authority):
        port = authority.partition(":")[2]
        return authority if not host else host if ":" in host else f"{host}:{port}"


PROGRAMS = [Siege, JMeter, Vegeta, K6]


def run(command, scratch):
    """In the scratch directory, which is its home, too; its output is shown when it fails."""
    environment = {"HOME": str(scratch), "PATH": "/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8"}
    result = subprocess.run(command, cwd=scratch, env=environment, timeout=300,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if result.returncode != 0:
        sys.stdout.buffer.write(result.stdout)
        raise RuntimeError(f"{Path(command[0]).name} ended with status {result.returncode}")
