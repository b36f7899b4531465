"""Measures the tool, and what a user would take instead, and prints tables of what they took."""

import argparse
import shutil
import sys
from dataclasses import dataclass, field
from pathlib import Path

from measure import PHASES, Bench, Measurement, Subject, phase_seconds
from text_table import print_table, short_count

AWK = "mawk" if shutil.which("mawk") else "awk"
# Split at the quotes, the second field of a line is the request and the fourteenth the host.
AWK_SORT = """ -F'"' '{ split($2, request, " "); print request[1], $14, request[2] }' "$@" \
| LC_ALL=C sort | uniq -c"""
AWK_HASH = """ -F'"' '{ split($2, request, " "); count[request[1] " " $14 " " request[2]]++ } \
END { for (url in count) print count[url], url }' "$@" """
# The 15 fields of the logs as GoAccess names them.
GOACCESS_FORMAT = '%h %^ %^ [%d:%t %^] %D "%r" %s %b "%R" "%u" "%^" "%^" "%^" "%v" "%^"'
GOACCESS = ["goaccess", "--no-global-config", "--no-progress", f"--log-format={GOACCESS_FORMAT}"]
GOACCESS += ["--date-format=%d/%b/%Y", "--time-format=%H:%M:%S"]

# What a user would take instead, for logs in the Apache layout.
PEERS = [
    Subject("wc -l", ["wc", "-l"]),
    Subject("awk hash", ["sh", "-c", AWK + AWK_HASH, "sh"]),
    Subject("awk, sort, uniq -c", ["sh", "-c", AWK + AWK_SORT, "sh"], is_slow=True),
    Subject("GoAccess to JSON", [*GOACCESS, "--output=json"], is_slow=True),
]


@dataclass(frozen=True)
class Ratio:
    """How much longer one run may take than another, told by their labels."""

    name: str
    subject: str
    reference: str
    limit: float | None  # of the ratio of the medians
    is_least: bool = False  # at least the limit rather than at most
    least_lines: int = 0

    def verdict(self, ratio):
        if self.limit is None:
            return ["", ""]
        is_met = ratio >= self.limit if self.is_least else ratio <= self.limit
        words = "at least" if self.is_least else "at most"
        return [f"{words} {self.limit:g}", "yes" if is_met else "NO"]


def tool_label(threads):
    return f"tool, {threads} thread{'s' if threads > 1 else ''}"


# The fixed cost of a process is a large part of a run below a million lines.
SIZE_RATIOS = [
    Ratio("1 thread over wc -l", tool_label(1), "wc -l", 6.5, least_lines=1_000_000),
    Ratio("2 threads over wc -l", tool_label(2), "wc -l", 4.2, least_lines=1_000_000),
    Ratio("awk hash over 1 thread", "awk hash", tool_label(1), 3, is_least=True),
    Ratio("GoAccess over 1 thread", "GoAccess to JSON", tool_label(1), 60, is_least=True),
]
MOST_GROWTH_OF_A_LINE = 1.1  # from the smallest to the largest size, one thread
MOST_PEAK_OF_A_LINE = 110  # bytes at the largest size, one thread


@dataclass(frozen=True)
class Case:
    """A run of the tool that comparisons are made with."""

    label: str
    lines: int
    generator_options: list = field(default_factory=list)
    tool_options: list = field(default_factory=list)
    cache_level: int = 0


def comparison_cases(options):
    """In the order of a round: cache level 2 reads the result of the run before."""
    most, lines = max(options.sizes), options.comparison_lines
    unique = ["--unique", lines // 5]
    return [
        Case("full run", most),
        Case("cache level 2", most, cache_level=2),
        Case("--debug 1", most, tool_options=["--debug", "1"]),
        Case("50 patterns", lines, [*unique, "--patterns", 50]),
        Case("5000 patterns", lines, [*unique, "--patterns", 5000]),
        Case("plain log", lines, ["--instances", 1]),
        Case("waiting requests", lines, ["--instances", 1, "--waiting"]),
    ]


COMPARISONS = [
    Ratio("cache level 2 over a full run", "cache level 2", "full run", 0.25),
    Ratio("--debug 1 over no debugging", "--debug 1", "full run", 1.05),
    Ratio("many unique URLs: 5000 patterns over 50", "5000 patterns", "50 patterns", 1.5),
    Ratio("half of the requests wait, over a plain log", "waiting requests", "plain log", 2),
]


@dataclass(frozen=True)
class Shape:
    """A kind of log whose lines are doubled."""

    name: str
    generator_options: list = field(default_factory=list)
    divisor: int = 1  # of the lines that other shapes have
    files: int = 0  # of the smaller input, doubled like its lines; 0: as generated


SHAPES = [
    Shape("plain"),
    Shape("IIS layout", ["--iis"]),
    Shape("sessions by client address", ["--client-address"]),
    Shape("queries cut", ["--cut-queries"]),
    Shape("queries all different", ["--many-urls"]),
    Shape("requests waiting", ["--waiting", "--instances", 1]),
    Shape("one session", ["--one-session"]),
    Shape("session per request", ["--session-per-request"]),
    Shape("one URL", ["--one-url"]),
    Shape("URL per request", ["--url-per-request"]),
    Shape("500 and 1000 files", files=500),
    Shape("5000 patterns, URL per request", ["--url-per-request", "--patterns", 5000], divisor=5),
    Shape("URLs of 100 KB", ["--long-urls"], divisor=250),  # 250 times as many bytes a line
]
# A run that is linear doubles; this leaves room for noise and for caches that grow too small.
MOST_GROWTH = 2.3


def peak_of_a_line(measurement):
    return measurement.median("peak") / measurement.input.lines


RATIO_HEADER = ["ratio", "lines", "MB", "ns/line", "peak bytes/line", "wall s", "least"]
RATIO_HEADER += ["reference s", "least", "of medians", "of least", "limit", "met"]


def ratio_row(ratio, subject, reference, scale=1):
    """A row of a table of ratios; both of the row are multiplied by `scale`."""
    wall, least = subject.median("wall"), subject.least("wall")
    reference_wall, reference_least = reference.median("wall"), reference.least("wall")
    of_medians = wall / reference_wall * scale
    return [
        ratio.name,
        short_count(subject.input.lines),
        f"{subject.input.size / 1e6:.0f}",
        f"{wall / subject.input.lines * 1e9:.0f}",
        f"{peak_of_a_line(subject):.0f}",
        *(f"{seconds:.3f}" for seconds in (wall, least, reference_wall, reference_least)),
        f"{of_medians:.2f}",
        f"{least / reference_least * scale:.2f}",
        *ratio.verdict(of_medians),
    ]


def whole_run_row(measurement):
    wall = measurement.median("wall")
    return [
        measurement.subject.label,
        short_count(measurement.input.lines),
        len(measurement.runs),
        f"{wall:.3f}",
        f"{measurement.least('wall'):.3f}",
        f"{measurement.spread('wall') * 100:.0f}",
        f"{measurement.median('processor'):.3f}",
        f"{measurement.median('peak') / 1e6:.1f}",
        f"{measurement.input.size / wall / 1e6:.0f}",
        f"{measurement.input.lines / wall / 1e3:.0f}",
        f"{peak_of_a_line(measurement):.0f}",
    ]


def phase_row(measurement):
    medians = [
        f"{measurement.median(lambda run: phase_seconds(run)[phase]):.3f}"
        for phase in [*PHASES, "outside"]
    ]
    return [measurement.subject.label, short_count(measurement.input.lines), *medians]


def size_ratio_rows(by_run, sizes):
    """`by_run`: the measurements by label and lines."""
    for lines in sizes:
        for ratio in SIZE_RATIOS:
            pair = [by_run.get((label, lines)) for label in (ratio.subject, ratio.reference)]
            if all(pair) and lines >= ratio.least_lines:
                yield ratio_row(ratio, *pair)
    smallest, largest = min(sizes), max(sizes)
    for (label, lines), large in by_run.items():
        small = by_run.get((label, smallest))
        if lines == largest > smallest and small:
            limit = MOST_GROWTH_OF_A_LINE if label == tool_label(1) else None
            ratio = Ratio(f"time of a line over {short_count(smallest)}: {label}", "", "", limit)
            yield ratio_row(ratio, large, small, smallest / largest)


def installed_peers():
    for peer in PEERS:
        if not shutil.which(peer.words[0]):
            print(f"{peer.label} is left out, it is not installed.")
    return [peer for peer in PEERS if shutil.which(peer.words[0])]


def print_sizes(options):
    """The tool and its peers on the same files at each size, with the phase times of the tool and
    how the time of a line grows."""
    with Bench(options) as bench:
        subjects = installed_peers()
        for count in options.threads:
            subjects.append(bench.tool(tool_label(count), threads=count))
        measurements = [
            Measurement(subject, bench.input(lines))
            for lines in options.sizes
            for subject in subjects
            if lines <= options.slow_limit or not subject.is_slow
        ]
        bench.run_rounds(measurements)
    header = ["command", "lines", "runs", "wall s", "least", "spread %", "processor s"]
    header += ["peak MB", "MB/s", "1000 lines/s", "peak bytes/line"]
    title = "Whole runs (medians; peak of the largest process, at least that of the benchmark)"
    print_table(title, header, map(whole_run_row, measurements))
    tool_runs = [one for one in measurements if one.subject.cache_level is not None]
    title = "Phases in seconds (medians; counting is a part of loading)"
    print_table(title, ["tool", "lines", *PHASES, "outside"], map(phase_row, tool_runs))
    by_run = {(one.subject.label, one.input.lines): one for one in measurements}
    print_table("Ratios", RATIO_HEADER, size_ratio_rows(by_run, options.sizes))
    print_peak(by_run.get((tool_label(1), max(options.sizes))))


def print_peak(largest):
    if largest:
        peak = peak_of_a_line(largest)
        verdict = "yes" if peak <= MOST_PEAK_OF_A_LINE else "NO"
        lines = short_count(largest.input.lines)
        print(f"\nPeak memory, 1 thread, {lines} lines: {peak:.0f} bytes a line, ", end="")
        print(f"at most {MOST_PEAK_OF_A_LINE}: {verdict}")


def print_comparisons(options):
    """Runs of the tool of which one may cost a bounded multiple of the other."""
    by_label = {}
    with Bench(options) as bench:
        for case in comparison_cases(options):
            subject = bench.tool(case.label, *case.tool_options, cache_level=case.cache_level)
            case_input = bench.input(case.lines, *case.generator_options)
            by_label[case.label] = Measurement(subject, case_input)
        bench.run_rounds(by_label.values())
    rows = [ratio_row(one, by_label[one.subject], by_label[one.reference]) for one in COMPARISONS]
    print_table("Comparisons, 1 thread", RATIO_HEADER, rows)


def growth_row(options, shape):
    # Every file needs a line; fewer lines than this would measure the start of the process.
    lines = max(options.growth_lines // shape.divisor, 1000)
    with Bench(options) as bench:
        pair = []
        for factor in (1, 2):
            files = ["--files", shape.files * factor] if shape.files else []
            grown = bench.input(lines * factor, *shape.generator_options, *files)
            pair.append(Measurement(bench.tool(f"{shape.name} x {factor}"), grown))
        bench.run_rounds(pair)
    return ratio_row(Ratio(shape.name, "", "", MOST_GROWTH), pair[1], pair[0])


def print_growth(options):
    """Every shape of log that could hurt, at one size and at twice that size."""
    rows = [growth_row(options, shape) for shape in SHAPES]
    print_table("Growth: twice the lines over once, 1 thread", RATIO_HEADER, rows)


TABLES = {"sizes": print_sizes, "comparisons": print_comparisons, "growth": print_growth}
QUICK = {"sizes": "10000,40000", "runs": 2, "comparison_lines": 10_000, "growth_lines": 10_000}


def count(text):
    number = int(text)
    if number < 1:
        raise ValueError
    return number


def counts(text):
    return sorted(count(part) for part in text.split(","))


def path(text):
    return Path(text).absolute()


OPTIONS = [
    # Name, how it is read, default, help.
    ("tool", path, None, "the program to measure"),
    ("generator", path, None, "generate_installation"),
    ("scratch", path, None, "a directory for the inputs"),
    ("sizes", counts, "250000,1000000,4000000", "lines of the whole runs"),
    ("threads", counts, "1,2", "threads of the whole runs"),
    ("runs", count, 5, "runs of each command"),
    ("warm-memory", int, 2048, "MB of memory to warm up before each run; 0: none"),
    ("slow-limit", count, 1_000_000, "most lines for sort | uniq and GoAccess"),
    ("comparison-lines", count, 500_000, "lines of most comparisons"),
    ("growth-lines", count, 250_000, "lines of the smaller input of each shape"),
]


def read_options(words):
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    for name, kind, default, text in OPTIONS:
        text += " (needed)" if default is None else f" (default {default})"
        is_needed = default is None
        parser.add_argument(f"--{name}", type=kind, default=default, required=is_needed, help=text)
    parser.add_argument("--only", choices=TABLES, help="print this table alone")
    parser.add_argument("--quick", action="store_true", help="small inputs, 2 runs: does it work?")
    if "--quick" in words:
        parser.set_defaults(**QUICK)
    return parser.parse_args(words)


def main():
    options = read_options(sys.argv[1:])
    print(f"Memory warmed up before each run: {options.warm_memory} MB", flush=True)
    try:
        for name, print_tables in TABLES.items():
            if options.only in (None, name):
                print_tables(options)
    except (OSError, RuntimeError) as error:
        sys.exit(f"run_benchmark: {error}")
    except KeyboardInterrupt:
        sys.exit(130)


if __name__ == "__main__":
    main()
