#!/usr/bin/env python3
"""Jobs of zvr_al_spark on generated logs, measured: run_cluster_benchmark.py BUILD SOURCE MILLIONS_OF_LINES...

Processor time of Spark and Python is taken from /proc, of all processes of the job's session, from the moment when the
stage load begins: before that, Spark starts. That of native processes is told by `time`, as is their memory."""

import collections
import json
import os
import subprocess
import sys
import threading
import time
from pathlib import Path

BUILD, SOURCE = (Path(argument).resolve() for argument in sys.argv[1:3])
sys.path.insert(0, str(SOURCE / "tests/companions/spark"))
import spark_jobs  # noqa: E402

SCENARIO = "bench"
CONFIG = "workspace/admin/default/quarvel/default/default/ReplayAccessLogs/bench/config"
TICKS = os.sysconf("SC_CLK_TCK")
STARTED = "check"  # the stage after whose line Spark has started


def processor_times(session):
    """Seconds of processor time by process and program, of a session."""
    times = {}
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            name, rest = (folder / "stat").read_text().split("(", 1)[1].rsplit(")", 1)
        except OSError:
            continue
        words = rest.split()
        if int(words[3]) == session:
            times[folder.name, name] = (int(words[11]) + int(words[12])) / TICKS
    return times


class Watch(threading.Thread):
    """Follows the processes of a job and the lines that it says."""

    def __init__(self, process):
        super().__init__()
        self.process = process
        self.times, self.before, self.stages = {}, {}, {}

    def run(self):
        reader = threading.Thread(target=self.read)
        reader.start()
        while self.process.poll() is None:
            self.times.update(processor_times(self.process.pid))
            time.sleep(0.1)
        reader.join()

    def read(self):
        for line in self.process.stderr:
            words = line.split()
            if len(words) > 2 and words[2] == "s":
                self.stages[words[0]] = float(words[1])
                if words[0] == STARTED:
                    self.before = processor_times(self.process.pid)

    def seconds(self, *names):
        """Of the programs whose names begin so, since Spark has started."""
        return sum(seconds - self.before.get(key, 0) for key, seconds in self.times.items()
                   if key[1].startswith(names))


def timed_native(folder, programs):
    """A program that notes of each native process: stage, kilobytes of memory, seconds of processor time."""
    native, notes = folder / "zvr_al_shard", folder / "notes"
    native.write_text('#!/bin/sh\nexec /usr/bin/time -q -a -o %s -f "$1 %%M %%U %%S" %s "$@"\n' % (notes, programs.native))
    native.chmod(0o755)
    return native, notes


def shuffled_bytes(folder):
    """By Spark's own event log."""
    total = 0
    for log in folder.iterdir():
        for line in log.open():
            event = json.loads(line)
            if event["Event"] == "SparkListenerTaskEnd" and event.get("Task Metrics"):
                total += event["Task Metrics"]["Shuffle Write Metrics"]["Shuffle Bytes Written"]
    return total


def tool_figures(programs, root):
    """Seconds and megabytes of memory of the tool with two threads."""
    run = subprocess.run(["/usr/bin/time", "-f", "%e %M", programs.tool, "-s", SCENARIO, "-t", "2"], cwd=root,
                         env=spark_jobs.environment(root, PATH="/nonexistent"), capture_output=True, text=True)
    seconds, kilobytes = run.stderr.split()[-2:]
    return float(seconds), int(kilobytes) / 1024


def measure(programs, scratch, lines):
    root, events = scratch / "installation", scratch / "events"
    subprocess.run([BUILD / "bench/generate_installation", "--directory", root, "--lines", str(lines)], check=True)
    events.mkdir()
    native, notes = timed_native(scratch, programs)
    process = spark_jobs.start_job(programs, root, SCENARIO, native=native, conf={
        "spark.eventLog.enabled": "true", "spark.eventLog.dir": events.as_uri()})
    watch = Watch(process)
    watch.start()
    process.stdout.read()
    watch.join()
    if process.returncode != 0:
        sys.exit("the job has failed")
    results = {file.name: file.read_bytes() for file in (root / CONFIG).iterdir()}
    seconds, memory = tool_figures(programs, root)
    if results != {file.name: file.read_bytes() for file in (root / CONFIG).iterdir()}:
        sys.exit("the results differ")
    tell(lines, watch, notes, shuffled_bytes(events), seconds, memory)


def tell(lines, watch, notes, shuffled, seconds, memory):
    native_memory, native_seconds = collections.Counter(), 0.0
    for line in notes.read_text().splitlines():
        stage, kilobytes, user, system = line.split()
        native_memory[stage] = max(native_memory[stage], int(kilobytes))
        native_seconds += float(user) + float(system)
    java, python = watch.seconds("java"), watch.seconds("python")
    work = sum(watch.stages[stage] for stage in ("load", "settle", "collapse", "merge"))
    print("\n%d million lines" % (lines // 1_000_000))
    print("stages: " + ", ".join("%s %.1f s" % entry for entry in watch.stages.items()))
    print("load to merge: %.1f s; the tool with -t 2: %.1f s, %.0f MB" % (work, seconds, memory))
    print("processor time: native %.1f s, Spark %.1f s, Python %.1f s; Spark and Python: %.0f %%" % (
        native_seconds, java, python, 100 * (java + python) / (java + python + native_seconds)))
    print("memory of a native process, MB: " + ", ".join(
        "%s %d" % (stage, kilobytes // 1024) for stage, kilobytes in native_memory.items() if stage != "--version"))
    print("shuffled: %.0f bytes a line" % (shuffled / lines), flush=True)


def main():
    programs = spark_jobs.Programs(BUILD, SOURCE)
    for millions in sys.argv[3:]:
        with spark_jobs.scratch_folder() as scratch:
            measure(programs, scratch, int(millions) * 1_000_000)


if __name__ == "__main__":
    main()
