"""Runs commands as whole processes, in interleaved rounds, and tells what the runs took."""

import mmap
import os
import shutil
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

# The phases that the tool reports, in the order of a run, each with what the progress line holds
# that starts it. Counting is a part of loading.
PHASES = {
    "count": "Counting total number",
    "load": "processing access log",
    "session order": "sorting of request",
    "unique URLs": "creating unique pattern",
    "complete list": "dumping complete url",
    "read cache": "reading urls data",
    "classify": "filling pattern type",
    "URL list": "dumping url pattern",
}
LOADING_STARTS = "Start processing access log"
SLOW_RUNS = 3


@dataclass(frozen=True)
class Subject:
    """A command of the benchmark. The logs of an input follow the words of a peer; the tool runs in
    the input's installation."""

    label: str
    words: list
    is_slow: bool = False  # run SLOW_RUNS times at most
    cache_level: int | None = None  # 2 reads the last result, 0 none; None: not the tool but a peer


@dataclass(frozen=True)
class Input:
    """A generated installation with its logs."""

    root: Path
    logs: list
    lines: int
    size: int  # bytes


@dataclass
class Run:
    """What one run of a command took."""

    wall: float = 0  # seconds, as are the others
    processor: float = 0  # user and system, with the processes that it waited for
    peak: int = 0  # bytes of the largest process; the system counts from before its exec on
    progress: list = field(default_factory=list)  # arrivals and texts of lines of standard error


@dataclass
class Measurement:
    """A subject, the input that it is run on, and what its runs took."""

    subject: Subject
    input: Input
    runs: list = field(default_factory=list)

    def median(self, value):
        """The median of an attribute of the runs, or of what a function tells of a run."""
        return statistics.median(self.values(value))

    def least(self, value):
        return min(self.values(value))

    def spread(self, value):
        """Largest less smallest, as a share of the median."""
        return (max(self.values(value)) - self.least(value)) / self.median(value)

    def values(self, value):
        return [value(run) if callable(value) else getattr(run, value) for run in self.runs]


def run_process(words, environment=None, output=subprocess.DEVNULL):
    """Runs a command to its end. Raises RuntimeError, with the last lines of its standard error,
    when it does not succeed."""
    run = Run()
    start = time.perf_counter()
    process = subprocess.Popen(
        words, env=environment, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.PIPE
    )
    for line in process.stderr:
        run.progress.append((time.perf_counter(), line.decode(errors="replace").strip()))
    _, status, usage = os.wait4(process.pid, 0)
    run.wall = time.perf_counter() - start
    run.processor = usage.ru_utime + usage.ru_stime
    run.peak = usage.ru_maxrss * 1024
    process.returncode = os.waitstatus_to_exitcode(status)
    process.stderr.close()
    if process.returncode != 0:
        last_lines = "".join(f"\n  {text}" for _, text in run.progress[-5:])
        raise RuntimeError(f"{words[0]} ended with status {process.returncode}{last_lines}")
    return run


def warm_memory(megabytes):
    """Touches that much memory and gives it back, in a process of its own. A virtual machine's host
    takes memory that has been free for a while back from it, and the next process to touch it pays
    for the host's work, more than for its own on most of them. After a warm-up, as with a warm page
    cache, every command meets the same memory."""
    if megabytes == 0:
        return
    child = os.fork()
    if child == 0:
        try:
            memory = mmap.mmap(-1, megabytes << 20, mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)
            memory.madvise(mmap.MADV_HUGEPAGE)
            for page in range(0, len(memory), mmap.PAGESIZE):
                memory[page] = 1
            os._exit(0)
        finally:
            os._exit(1)
    if os.waitpid(child, 0)[1] != 0:
        raise RuntimeError("the memory cannot be warmed up")


def phase_seconds(run):
    """Seconds of each phase by the arrival of its "Start" and "End" lines, and of what is outside
    of them: start-up, backup, hosts, the end of the process."""
    seconds = dict.fromkeys(PHASES, 0.0)
    started = []
    for arrival, text in run.progress:
        if text.startswith("Start "):
            started.append((arrival, text))
        elif text.startswith("End ") and started:
            # It ends the phase started last: phases nest, and the end line of one of them is
            # worded a little differently from its start line.
            start, text = started.pop()
            for label in [label for label, mark in PHASES.items() if mark in text]:
                seconds[label] += arrival - start
    seconds["outside"] = run.wall - sum(seconds.values()) + seconds["count"]
    return seconds


class Bench:
    """The scratch directory with the inputs of one table. Their files are removed with it."""

    def __init__(self, options):
        self.options = options
        self.directory = options.scratch / "inputs"
        self.inputs = {}

    def __enter__(self):
        self.directory.mkdir()
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.directory)

    def input(self, lines, *generator_options):
        """The input with so many lines and these options of the generator."""
        words = ("--lines", str(lines), *map(str, generator_options))
        if words not in self.inputs:
            self.inputs[words] = self.generate(lines, words)
        return self.inputs[words]

    def generate(self, lines, words):
        print("  generating", *words, file=sys.stderr)
        root = self.directory / str(len(self.inputs))
        run_process([self.options.generator, "--directory", root, *words])
        logs = sorted((root / "logs").glob("*/*"))
        run_process(["cat", *logs])  # into the page cache
        return Input(root, logs, lines, sum(log.stat().st_size for log in logs))

    def tool(self, label, *words, threads=1, cache_level=0):
        """The tool with these words besides those that it always needs."""
        all_words = [self.options.tool, "-s", "bench", "-c", "-t", str(threads), *words]
        return Subject(label, all_words, cache_level=cache_level)

    def run_rounds(self, measurements):
        """Runs each of them, one after the other in every round, so that a slow spell of the
        machine meets them all. Raises RuntimeError when one fails or the tool has not done its
        work."""
        for number in range(self.options.runs):
            for measurement in measurements:
                if number < SLOW_RUNS or not measurement.subject.is_slow:
                    print("  " + measurement.subject.label, file=sys.stderr)
                    warm_memory(self.options.warm_memory)
                    measurement.runs.append(self.run_once(measurement))

    def run_once(self, measurement):
        subject = measurement.subject
        output = self.options.scratch / "output"
        with output.open("wb") as file:
            if subject.cache_level is None:
                return run_process([*subject.words, *measurement.input.logs], None, file)
            run = run_process(subject.words, self.tool_environment(measurement), file)
        check_tool_run(measurement, run, output.read_text().splitlines())
        return run

    def tool_environment(self, measurement):
        """The checker command tells the tool what it may reuse. The benchmark brings its own, so
        that an installed one cannot turn a full run into a reading of the cache."""
        level = measurement.subject.cache_level
        checker = self.options.scratch / f"checker_{level}" / "zvr_al_gen_url_list_check"
        if not checker.exists():
            checker.parent.mkdir()
            checker.write_text(f"#!/bin/sh\nexit {level or 1}\n")
            checker.chmod(0o755)
        path = f"{checker.parent}:{os.environ.get('PATH', os.defpath)}"
        return {**os.environ, "ZV_WDIR": str(measurement.input.root), "PATH": path}


def check_tool_run(measurement, run, printed):
    """A run counts only if it did its work: no error, every log line accounted for, and the logs
    loaded or not, as the cache level says."""
    errors = [line for line in printed if line.startswith("ZVR_GUI_ERROR:")]
    if errors:
        raise RuntimeError(f"the tool reports: {errors[0]}")
    summary = f"Total={measurement.input.lines};"
    if not printed or not printed[-1].startswith(summary):
        raise RuntimeError(f"the tool's summary does not begin with {summary}: {printed[-1:]}")
    is_loaded = any(text.startswith(LOADING_STARTS) for _, text in run.progress)
    if is_loaded != (measurement.subject.cache_level == 0):
        raise RuntimeError(f"the tool {'loaded' if is_loaded else 'did not load'} the logs")
