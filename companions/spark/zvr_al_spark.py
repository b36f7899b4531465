#!/usr/bin/env python3
"""Makes the URL lists of a scenario on a Spark cluster, byte for byte as zvr_al_gen_url_list makes them.

The work is done by zvr_al_shard, a stage at a time, on the workers. What happens here is what a cluster needs
besides: which worker does what, and the way of frames (docs/cluster_format.md) from stage to stage. Frames are
moved whole; of what they hold, only their labels are read.

    spark-submit [OPTION OF SPARK...] zvr_al_spark.py -s SCENARIO [OPTION...]
    zvr_al_spark --master URL -s SCENARIO [OPTION...]
"""

import argparse
import bisect
import collections
import concurrent.futures
import contextlib
import fcntl
import itertools
import json
import logging
import os
import re
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time
import types
import urllib.parse
from pathlib import Path

NATIVE = "zvr_al_shard"
FAILURE_STATUS = 3
MEGABYTE = 1 << 20
F_SETPIPE_SZ = 1031  # of Linux; Python 3.9 has no name for it


class Failure(Exception):
    """The job cannot go on; the text is the error line."""


# Frames, as far as one has to know them who moves them. A frame is handed on as (label, bytes): its label as a
# dictionary, and all of it, head and label included.

FRAME_HEAD = "<4sIIQQ"  # magic, format, size of the label, size of the packed payload, checksum
FRAME_HEAD_SIZE = struct.calcsize(FRAME_HEAD)
FRAME_MAGIC = b"ZVRF"
FRAME_FORMAT = 2


def read_frame(stream):
    """The next frame of a binary stream, nothing at its end."""
    head = stream.read(FRAME_HEAD_SIZE)
    if not head:
        return None
    if len(head) < FRAME_HEAD_SIZE:
        raise Failure("the stream of frames was cut off")
    magic, form, label_size, payload_size, _ = struct.unpack(FRAME_HEAD, head)
    if magic != FRAME_MAGIC or form != FRAME_FORMAT:
        raise Failure("this is no stream of frames of format %d" % FRAME_FORMAT)
    body = stream.read(label_size + payload_size)
    if len(body) < label_size + payload_size:
        raise Failure("the stream of frames was cut off")
    return json.loads(body[:label_size]), head + body


def read_frames(stream):
    """All frames of what a stage writes, but for the one that marks its end. Fails where that is missing."""
    while True:
        frame = read_frame(stream)
        if frame is None:
            raise Failure("the stream of frames has no end")
        if frame[0]["kind"] == "end":
            return
        yield frame


# The native program. All of this runs on workers, too.


def make_job(native, places, version, plan):
    """What every task has to know. Goes to the workers once. No class of its own: workers could not unpickle it."""
    return types.SimpleNamespace(
        native=native,  # where the program is on the workers, if the user has said it
        places=places,  # else folders in which it may be
        version=version,  # of the driver's program
        plan=plan,  # the bytes of the plan
        settled=[],  # the frames that tell where loading ended, once they are there
    )


def find_native(native, places):
    """Where the program is on this machine: where the user says, shipped with the job, beside the application,
    or on the path."""
    for path in [native] if native else [os.path.join(place, NATIVE) for place in places]:
        if os.access(path, os.X_OK) and os.path.isfile(path):
            return path
    return None if native else shutil.which(NATIVE)


def native_missing(native):
    """The failure of a machine on which the program has not been found."""
    if native:
        return Failure("%s is not there, or is no program" % native)
    return Failure("%s is not there: install it, or ship it with --files" % NATIVE)


def shipped_files():
    """The folder of the files that were shipped with the job."""
    from pyspark import SparkFiles

    return SparkFiles.getRootDirectory()


def folders_of_shipped(files):
    """The folders on the driver from which the program is shipped. `files`: as spark-submit notes them, URLs or
    paths with commas between."""
    urls = [urllib.parse.urlsplit(file) for file in files.split(",")]
    paths = [urllib.parse.unquote(url.path) for url in urls if url.scheme in ("", "file")]
    return [os.path.dirname(path) for path in paths if os.path.basename(path) == NATIVE]


def folders_shipped_from():
    """The same for this job, if spark-submit has started it: before there is a context, only it has a Spark to ask."""
    if "PYSPARK_GATEWAY_PORT" not in os.environ:
        return []
    from pyspark import SparkConf, SparkContext

    SparkContext._ensure_initialized()
    conf = SparkConf()
    return folders_of_shipped(conf.get("spark.files", "") + "," + conf.get("spark.yarn.dist.files", ""))


def version_of(native):
    """What the program says of its version."""
    try:
        return subprocess.run([native, "--version"], capture_output=True, text=True).stdout.strip()
    except OSError as error:
        raise Failure("%s: %s" % (native, error.strerror)) from None


def native_of_worker(job):
    """The program on this worker, which has to be the driver's."""
    native = find_native(job.native, [shipped_files()] + job.places)
    if not native:
        raise native_missing(job.native)
    version = version_of(native)
    if version != job.version:
        raise Failure('%s is "%s", on the driver it is "%s"' % (native, version, job.version))
    return native


def scratch_folder():
    """A folder of this worker that Spark has on its disks for such use; which of several, by chance."""
    folders = [folder for folder in os.environ.get("SPARK_LOCAL_DIRS", "").split(",") if folder]
    return folders[os.getpid() % len(folders)] if folders else tempfile.gettempdir()


class Feeder(threading.Thread):
    """Writes frames to a process, which may be writing itself meanwhile."""

    def __init__(self, frames, pipe):
        super().__init__(daemon=True)
        self.frames = frames
        self.pipe = pipe
        self.fault = None

    def run(self):
        try:
            with self.pipe:
                for frame in self.frames:
                    self.pipe.write(frame)
        except BrokenPipeError:
            pass  # the process has ended, and says why
        except BaseException as fault:  # whatever it is, the task has to fail by it
            self.fault = fault


def widen(pipe):
    """Lets a pipe hold a whole frame, so that its two ends need not take turns as often, where the system allows it."""
    if pipe:
        with contextlib.suppress(OSError):
            fcntl.fcntl(pipe, F_SETPIPE_SZ, MEGABYTE)


def last_line(text):
    lines = [line for line in text.splitlines() if line.strip()]
    return lines[-1].strip() if lines else ""


class Stage:
    """One run of a stage of the native program on this worker."""

    def __init__(self, job, name, arguments, frames=None):
        """`frames`: the bytes of the frames that it reads, one by one."""
        self.name = name
        self.scratch = tempfile.TemporaryDirectory(prefix="zvr_al_spark_", dir=scratch_folder())
        plan = self.file("plan", [job.plan])
        command = [native_of_worker(job), name, "--plan", plan, *arguments]
        if name == "collapse":
            command += ["--settled", self.file("settled", job.settled)]
        self.complaints = open(os.path.join(self.scratch.name, "complaints"), "w+b")
        self.process = subprocess.Popen(
            command,
            stdin=subprocess.DEVNULL if frames is None else subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=self.complaints,
            env=dict(os.environ, TMPDIR=self.scratch.name),
        )
        for pipe in (self.process.stdin, self.process.stdout):
            widen(pipe)
        self.feeder = None
        if frames is not None:
            self.feeder = Feeder(frames, self.process.stdin)
            self.feeder.start()

    def file(self, name, parts):
        path = os.path.join(self.scratch.name, name)
        with open(path, "wb") as file:
            file.writelines(parts)
        return path

    def frames(self):
        """What it puts out. Fails with its error line when it fails."""
        try:
            try:
                yield from read_frames(self.process.stdout)
            except Failure:
                self.end()
                raise
            self.end()
        finally:
            self.process.kill()
            self.process.wait()
            self.process.stdout.close()
            self.complaints.close()
            self.scratch.cleanup()

    def end(self):
        status = self.process.wait()
        if self.feeder:
            self.feeder.join()
            if self.feeder.fault:
                raise self.feeder.fault
        if status == 0:
            return
        self.complaints.seek(0)
        complaint = last_line(self.complaints.read().decode(errors="replace"))
        raise Failure(complaint or "%s %s ended with status %d" % (NATIVE, self.name, status))


MOST_ERROR_TEXT = 500  # characters of what Spark says

# An error line on its way through Spark's own messages.
ERROR_MARK = "zvr_al_spark<"
ERROR_LINE = re.compile(re.escape(ERROR_MARK) + "(.*?)>zvr_al_spark", re.DOTALL)


# How Spark names the worker of a task that has failed.
LOST_TASK = re.compile(r"Lost task \S+ in stage \S+ \(TID \d+\) \((\S+) executor ")


def with_host(line):
    host = socket.gethostname() + ": "
    program = NATIVE + ": "
    if line.startswith(program + host):
        line = line[len(program) :]
    return line if line.startswith(host) else host + line


@contextlib.contextmanager
def failures_of_worker():
    """Lets a failure name the worker, and be found by the driver."""
    try:
        yield
    except Failure as failure:
        raise RuntimeError("%s%s>zvr_al_spark" % (ERROR_MARK, with_host(str(failure)))) from None


def run_stage(job, name, arguments, frames=None):
    """The frames that a stage makes on this worker of `frames`, bytes each."""
    with failures_of_worker():
        yield from Stage(job, name, arguments, frames).frames()


def error_line(fault):
    """What went wrong, in one line, out of what Spark says of it."""
    if isinstance(fault, OSError) and not isinstance(fault, ConnectionError):  # of this machine; a connection is Spark's
        return "%s: %s" % (fault.filename, fault.strerror) if fault.filename else fault.strerror or str(fault)
    text = str(fault)
    found = ERROR_LINE.search(text)
    if found:
        return found[1]
    trace = re.compile(r"\s*(at |File |\.\.\. \d+ more)|\s*$")
    lines = [line.strip() for line in text.split("Driver stacktrace")[0].splitlines() if not trace.match(line)]
    line = lines[-1] if lines else type(fault).__name__
    line = re.sub("^(Caused by|): ", "", line)[-MOST_ERROR_TEXT:]
    lost = LOST_TASK.search(text)
    return "Spark: " + ("%s: " % lost[1] if lost and lost[1] not in line else "") + line


# Tasks.


def check_worker(job, seen):
    """Looks at program and logs on this worker, unless its executor has been `seen`. Returns the executor, and
    an error line or nothing."""
    executor = "%s %s" % (socket.gethostname(), os.environ.get("SPARK_LOCAL_DIRS", ""))
    if executor in seen:
        time.sleep(0.05)  # so that another executor gets the next task
        return executor, None
    try:
        with tempfile.TemporaryDirectory(dir=scratch_folder()) as scratch:
            plan = os.path.join(scratch, "plan")
            with open(plan, "wb") as file:
                file.write(job.plan)
            command = [native_of_worker(job), "check", "--plan", plan]
            tried = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True)
    except Failure as failure:
        return executor, with_host(str(failure))
    if tried.returncode == 0:
        return executor, None
    complaint = last_line(tried.stderr.decode(errors="replace"))
    return executor, with_host(complaint or "%s check ended with status %d" % (NATIVE, tried.returncode))


def settle_instances(job, instances, frames):
    """What settle makes of the events of these instances, in the order of their log pieces."""
    arguments = ["--bare", "--instance", *map(str, instances)]
    return run_stage(job, "settle", arguments, (frame for _, frame in frames))


def span_of(label, frame):
    """What the choice of ranges has to know of a frame of rows."""
    return label["first"], label["last"], len(frame)


def noted_spans(frames, noted, partition):
    """Passes frames on and notes what the choice of ranges has to know. Noting it twice is as once."""
    spans = []
    for label, frame in frames:
        if label["kind"] == "rows":
            spans.append(span_of(label, frame))
        yield label, frame
    noted.add({partition: spans})


SLICE = 32 * MEGABYTE  # of tables that go to the driver at once
CUT_AT_ONCE = 64 * MEGABYTE


def frames_by_range(job, keys, frames):
    """The frames of rows as (range, bytes); those that lie in several ranges are cut."""
    crossing, size = [], 0
    for label, frame in frames:
        if label["kind"] != "rows":
            continue
        place = bisect.bisect_right(keys, label["first"])
        if place == bisect.bisect_right(keys, label["last"]):
            yield place, frame
            continue
        crossing.append(frame)
        size += len(frame)
        if size >= CUT_AT_ONCE:
            yield from cut_frames(job, keys, crossing)
            crossing, size = [], 0
    if crossing:
        yield from cut_frames(job, keys, crossing)


def cut_frames(job, keys, frames):
    for label, frame in run_stage(job, "cut", ["--bare", "--keys", ",".join(keys)], frames):
        yield label["range"], frame


def collapse_range(job, frames, noted, partition):
    """The tables of a range, and what they come to. Notes the size of each frame."""
    sizes = []
    for _, frame in run_stage(job, "collapse", ["--bare"], (frame for _, frame in frames)):
        sizes.append(len(frame))
        yield frame
    noted.add({partition: sizes})


# Ranges of sessions.

MOST_KEY_TEXT = 100_000  # characters: keys go over a command line


def choose_keys(spans, count):
    """Keys that cut the rows into `count` ranges of about the same size, or fewer. `spans`: of each frame its first
    and last key and its size."""
    keys = sorted({key for first, last, _ in spans for key in (first, last)})
    changes = [0.0] * (len(keys) + 1)
    for first, last, size in spans:  # a frame weighs alike on all keys that it spans
        begin, end = bisect.bisect_left(keys, first), bisect.bisect_left(keys, last) + 1
        changes[begin] += size / (end - begin)
        changes[end] -= size / (end - begin)
    range_size = sum(size for _, _, size in spans) / count
    chosen, weight, weight_before = [], 0.0, 0.0
    for i in range(1, len(keys)):
        weight += changes[i - 1]  # of the key before
        weight_before += weight
        if weight_before >= range_size * (len(chosen) + 1) and len(chosen) + 1 < count:
            chosen.append(shortened(keys[i], keys[i - 1]))
    return fitting(chosen)


def shortened(key, before):
    """As much of a key as sets it apart from the one before. Two digits are a byte."""
    length = 2
    while key[:length] <= before:
        length += 2
    return key[:length]


def fitting(keys):
    """As many of the keys, evenly, as a command line takes."""
    step = 1
    while sum(len(key) + 1 for key in keys[step - 1 :: step]) > MOST_KEY_TEXT:
        step += 1
    return keys[step - 1 :: step]


# The driver.


class Progress:
    """Says on standard error how far the job is: a line for each stage with its time, and while one is at work, on a
    terminal, how many of its tasks are done."""

    INTERVAL = 0.5  # seconds

    def __init__(self):
        self.begin = time.monotonic()
        self.tracker = None  # Spark's
        self.times = {}  # of the stages, in seconds

    @contextlib.contextmanager
    def stage(self, name):
        """Takes the time of what is done within. What is appended to the list it gives is told beside it."""
        begin, told, done = time.monotonic(), [], threading.Event()
        watcher = threading.Thread(target=self.watch, args=(name, done), daemon=True)
        if sys.stderr.isatty():
            watcher.start()
        try:
            yield told
        finally:
            done.set()
            if watcher.ident:
                watcher.join()
        self.times[name] = time.monotonic() - begin
        self.say("%-10s %8.1f s  %s" % (name, self.times[name], ", ".join(told)))

    def watch(self, name, done):
        while not done.wait(self.INTERVAL):
            counts = self.task_counts()
            print("\r%-10s %d of %d tasks " % (name, *counts), end="", file=sys.stderr, flush=True)
        print("\r" + " " * 60 + "\r", end="", file=sys.stderr, flush=True)

    def task_counts(self):
        """Tasks done and all tasks of what Spark works at."""
        stages = [self.tracker.getStageInfo(id) for id in self.tracker.getActiveStageIds()] if self.tracker else []
        stages = [stage for stage in stages if stage]
        return sum(stage.numCompletedTasks for stage in stages), sum(stage.numTasks for stage in stages)

    def say(self, line):
        print(line, file=sys.stderr, flush=True)


class Merge:
    """The stage merge, which runs on the driver from the first to the last. It holds the scenario meanwhile. It
    writes nothing unless it gets all, which it knows by counts."""

    def __init__(self, native, plan):
        self.complaint = ""
        self.process = subprocess.Popen(
            [native, "merge", "--plan", plan, "--bare"],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )
        for line in self.process.stderr:
            if line.strip() == b"ready":
                break
            self.note(line)
        else:
            self.fail()
        self.listener = threading.Thread(target=self.listen, daemon=True)
        self.listener.start()
        self.reader = concurrent.futures.ThreadPoolExecutor(1)
        self.output = self.reader.submit(self.process.stdout.read)

    def note(self, line):
        self.complaint = line.decode(errors="replace").strip() or self.complaint

    def listen(self):
        for line in self.process.stderr:
            self.note(line)

    def fail(self):
        self.close()
        raise Failure(self.complaint or "%s merge ended with status %d" % (NATIVE, self.process.returncode))

    def write(self, frame):
        try:
            self.process.stdin.write(frame)
        except BrokenPipeError:
            self.fail()

    def finish(self):
        """Lets it write the results. Returns its summary."""
        if self.close() != 0:
            self.fail()
        return self.output.result()

    def close(self):
        """No more comes. Returns its status."""
        with contextlib.suppress(BrokenPipeError):
            self.process.stdin.close()
        if hasattr(self, "listener"):
            self.listener.join()
        return self.process.wait()


def run_here(command):
    """What a command puts out. Fails with its error line."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True)
    if done.returncode != 0:
        line = last_line(done.stderr.decode(errors="replace")) or last_line(done.stdout.decode(errors="replace"))
        raise Failure(line or "%s ended with status %d" % (" ".join(command[:2]), done.returncode))
    return done.stdout


FINE_PIECES = 100_000  # at most, to make even tasks of
LOG_PIECE_SIZE = 4 * MEGABYTE  # of which pieces are made
PIECE_SIZE = 1024 * MEGABYTE  # bytes of logs that one task loads, at most: some seconds of work
RANGE_SIZE = 48 * MEGABYTE  # bytes of packed rows that one task collapses, about
SMALL_RANGE_SIZE = 3 * MEGABYTE  # below that, a task costs more than it does
TASKS_PER_CORE = 3  # so that all cores end at about the same time


def group_pieces(pieces, cores):
    """The numbers of the pieces that each task loads."""
    size = sum(piece["bytes"] for piece in pieces)
    most = min(PIECE_SIZE, max(1, size // (cores * TASKS_PER_CORE)))
    groups, room = [], 0
    for number, piece in enumerate(pieces):
        if piece["bytes"] > room or not groups:
            groups.append([])
            room = most
        groups[-1].append(number)
        room -= piece["bytes"]
    return groups


def count_ranges(spans, cores):
    size = sum(size for _, _, size in spans)
    even = min(cores * TASKS_PER_CORE, -(-size // SMALL_RANGE_SIZE))
    return max(1, even, -(-size // RANGE_SIZE))


class Cluster:
    """The stages that run on the workers."""

    PATIENCE = 15  # seconds: an executor starts in less

    def __init__(self, context, job, plan, options, progress):
        from pyspark.accumulators import AccumulatorParam

        class JoinedDictionaries(AccumulatorParam):
            def zero(self, value):
                return {}

            def addInPlace(self, one, other):
                one.update(other)
                return one

        self.context = context
        self.job = job
        self.shared_job = context.broadcast(job)
        self.plan = plan
        self.options = options
        self.progress = progress
        self.noted = context.accumulator({}, JoinedDictionaries())  # spans of frames of rows
        self.table_sizes = context.accumulator({}, JoinedDictionaries())  # of the frames of each range

    def check(self):
        """Refuses workers that lack the program or see other logs."""
        job, rounds = self.shared_job, 20
        seen = {}
        waiting = threading.Timer(self.PATIENCE, self.say_what_it_waits_for)
        waiting.daemon = True
        waiting.start()
        for _ in range(rounds):
            count = 4 * self.context.defaultParallelism
            tasks = self.context.parallelize(range(count), count)
            known = set(seen)
            seen.update(tasks.map(lambda _: check_worker(job.value, known)).collect())
            waiting.cancel()
            faults = sorted(fault for fault in seen.values() if fault)
            if faults:
                raise Failure(faults[0])
            if len(seen) >= self.executor_count():
                break
        return len(seen)

    def say_what_it_waits_for(self):
        """The cluster may be busy, or never be able to: only who started the job knows."""
        self.progress.say("waiting for a first executor: are there workers with the cores and the memory asked for?")

    def executor_count(self):
        """Of those that are there now; the driver, which is one of them, counts where it works itself."""
        executors = self.context._jsc.sc().statusTracker().getExecutorInfos()
        return max(1, len(executors) - 1)

    def load(self):
        """Frames of kind rows and events."""
        job, noted = self.shared_job, self.noted

        def load_pieces(partition, groups):
            for group in groups:
                frames = run_stage(job.value, "load", map(str, group))
                yield from noted_spans(frames, noted, ("load", partition))

        pieces = self.plan.get("pieces", [])
        alone = [[number] for number in range(len(pieces))]
        groups = alone if self.options.pieces else group_pieces(pieces, self.context.defaultParallelism)
        tasks = self.context.parallelize(groups, max(1, len(groups)))
        return self.made(tasks.mapPartitionsWithIndex(load_pieces))

    def made(self, frames):
        """Has Spark make these frames now and keep them on its disks."""
        from pyspark import StorageLevel

        frames.persist(StorageLevel.DISK_ONLY)
        frames._jrdd.count()  # by Spark itself: with count() they would all go through Python once more
        return frames

    def settle(self, loaded):
        """Frames of kind rows and settled."""
        job, noted = self.shared_job, self.noted
        instances = sorted({log["instance"] for log in self.plan.get("logs", []) if not log["is_body_file"]})
        count = max(1, min(len(instances), 10 * TASKS_PER_CORE * self.context.defaultParallelism))
        shares = [instances[len(instances) * i // count : len(instances) * (i + 1) // count] for i in range(count)]
        place = {instance: i for i, share in enumerate(shares) for instance in share}

        def settle_share(partition, frames):
            if shares[partition]:
                settled = settle_instances(job.value, shares[partition], frames)
                yield from noted_spans(settled, noted, ("settle", partition))

        events = loaded.filter(lambda frame: frame[0]["kind"] == "events").map(
            lambda frame: ((frame[0]["instance"], frame[0]["first"]), frame[1])
        )
        ordered = events.repartitionAndSortWithinPartitions(count, lambda key: place[key[0]])
        return self.made(ordered.mapPartitionsWithIndex(settle_share))

    def spans(self):
        return [span for spans in self.noted.value.values() for span in spans]

    def collapse(self, loaded, settled):
        """The tables of each range, and how many ranges there are."""
        settled_frames = settled.filter(lambda frame: frame[0]["kind"] == "settled").values().collect()
        self.job.settled = settled_frames
        job = self.context.broadcast(self.job)
        spans = self.spans()
        count = self.options.partitions or count_ranges(spans, self.context.defaultParallelism)
        keys = choose_keys(spans, count)
        rows = loaded.union(settled).mapPartitions(lambda frames: frames_by_range(job.value, keys, frames))
        ranges = rows.partitionBy(len(keys) + 1, lambda key: key)
        sizes = self.table_sizes
        return self.made(
            ranges.mapPartitionsWithIndex(lambda number, frames: collapse_range(job.value, frames, sizes, number))
        )

    def hand_over(self, tables, merge):
        """Writes the settled frames and all tables to merge, range by range. While one slice is written the next is
        fetched, so that two of them are here at most."""
        for frame in self.job.settled:
            merge.write(frame)
        sizes = [self.table_sizes.value[partition] for partition in range(tables.getNumPartitions())]
        with concurrent.futures.ThreadPoolExecutor(1) as fetcher:
            parts = collections.deque()
            for part in slices(sizes):
                parts.append(fetcher.submit(self.fetch, tables, part))
                if len(parts) > 1:
                    write_all(parts.popleft().result(), merge)
            for part in parts:
                write_all(part.result(), merge)

    def fetch(self, tables, part):
        def take(partition, frames):
            return itertools.islice(frames, *part[partition])

        return self.context.runJob(tables.mapPartitionsWithIndex(take), list, list(part))


def slices(sizes):
    """What is fetched at once, piece by piece: which frames of which partitions, as {partition: (begin, end)}, in
    order. `sizes`: of the frames of each partition."""
    part, room = {}, SLICE
    for partition, frames in enumerate(sizes):
        begin = 0
        for number, size in enumerate(frames):
            if size > room and (part or number > begin):
                part.update({partition: (begin, number)} if number > begin else {})
                yield part
                part, room, begin = {}, SLICE, number
            room -= size
        part[partition] = (begin, len(frames))
    yield part


def write_all(frames, merge):
    for frame in frames:
        merge.write(frame)


REFUSED = {
    ("-t", "--num_thread"): "each instance is loaded for itself, as if it had a thread of its own",
    ("-d", "--debug"): "a debug log tells of the lines in the order in which one machine reads them",
    ("-a", "--akaau_trace"): "the trace is written in the order in which one machine reads the lines",
    ("-c", "--commentry"): "progress is shown stage by stage anyway",
    ("-m", "--mode"): "it makes no difference",
}


class Refuse(argparse.Action):
    """An option of the tool that has no place here."""

    def __call__(self, parser, namespace, values, option_string=None):
        parser.error("option %s is not taken: %s" % ("/".join(self.option_strings), self.const))


class OptionParser(argparse.ArgumentParser):
    def error(self, message):
        print("zvr_al_spark: %s" % message, file=sys.stderr)
        sys.exit(FAILURE_STATUS)


def at_least_one(text):
    if not re.fullmatch("0*[1-9][0-9]*", text):
        raise argparse.ArgumentTypeError("'%s' is no number from 1" % text)
    return int(text)


def read_options(arguments):
    parser = OptionParser(
        prog="zvr_al_spark",
        allow_abbrev=False,
        description="Makes the URL lists of a scenario on a Spark cluster, as zvr_al_gen_url_list does on one machine.",
    )
    parser.add_argument("-s", "--scenario", required=True, metavar="NAME", help="the scenario, as the tool takes it")
    parser.add_argument("-r", "--replay_profile", metavar="NAME", help="replay profile; that of the scenario")
    parser.add_argument("-q", "--dump_query_url", metavar="N", type=int, help="0: no query_url.list")
    parser.add_argument("--work-dir", metavar="DIR", help="directory of the installation, in place of ZV_WDIR")
    parser.add_argument("--pieces", metavar="N", type=at_least_one, help="tasks that load the logs")
    parser.add_argument("--partitions", metavar="N", type=at_least_one, help="ranges of sessions, a task each")
    parser.add_argument("--master", metavar="URL", help="Spark's master, where spark-submit has not named it")
    parser.add_argument("--native", metavar="PATH", help="%s, on the driver and on the workers" % NATIVE)
    for names, reason in REFUSED.items():
        parser.add_argument(*names, action=Refuse, nargs="?", const=reason, help=argparse.SUPPRESS)
    return parser.parse_args(arguments)


def own_folders():
    """Where the application lies, also by the name by which it was called."""
    path = os.path.abspath(sys.argv[0])
    return sorted({os.path.dirname(path), os.path.dirname(os.path.realpath(path))})


def plan_arguments(options, plan):
    arguments = ["-s", options.scenario, "-o", plan]
    for name in ("replay_profile", "dump_query_url", "work_dir"):
        value = getattr(options, name)
        if value is not None:
            arguments += ["--" + (name if name != "work_dir" else "work-dir"), str(value)]
    return arguments


def make_plan(native, options, plan):
    """Writes the plan. Unless the user says how many pieces there are, they are as small as they can be: of them,
    even tasks are made once it is known for how many cores."""
    command = [native, "plan", *plan_arguments(options, plan)]
    if options.pieces:
        run_here([*command, "--pieces", str(options.pieces)])
        return
    run_here(command)
    size = sum(piece["bytes"] for piece in json.loads(Path(plan).read_bytes()).get("pieces", []))
    run_here([*command, "--pieces", str(min(FINE_PIECES, size // LOG_PIECE_SIZE + 1))])


PATIENCE_WITH_JAVA = 10  # seconds, for what takes it less than one

# Spark does little but copy here, in code that is the C library's: compiling their own thoroughly takes longer than it saves.
SHORT_LIVED = "-XX:TieredStopAtLevel=1 -XX:+UseParallelGC"


INTERRUPTS = (signal.SIGINT, signal.SIGTERM)  # of the terminal, and of whatever else starts jobs


def take_interrupts():
    """Each of them ends the job as Ctrl-C does."""
    for number in INTERRUPTS:
        signal.signal(number, signal.default_int_handler)


@contextlib.contextmanager
def interrupt_put_off():
    """An interrupt within takes effect at the end."""
    interrupts = []
    before = {number: signal.signal(number, lambda *interrupt: interrupts.append(interrupt)) for number in INTERRUPTS}
    try:
        yield
    finally:
        for number, handler in before.items():
            signal.signal(number, handler)
    if interrupts:
        raise KeyboardInterrupt


def start_java(conf):
    from pyspark import SparkContext
    from pyspark.errors import PySparkRuntimeError

    try:
        with interrupt_put_off():  # in between, pyspark would leave its Java behind
            SparkContext._ensure_initialized(conf=conf)
    except PySparkRuntimeError:
        raise Failure("Spark does not start: the lines above, of spark-submit or Java, say why") from None


def end_java():
    """Waits for the Java that pyspark may have started, as it takes its files away when it ends."""
    pyspark = sys.modules.get("pyspark")
    process = getattr(pyspark.SparkContext._gateway, "proc", None) if pyspark else None
    if process:
        process.stdin.close()  # which ends it
        with contextlib.suppress(subprocess.TimeoutExpired, KeyboardInterrupt):
            process.wait(PATIENCE_WITH_JAVA)


def start_spark(options):
    try:
        from pyspark import SparkConf, SparkContext
    except ImportError as error:
        raise Failure("%s in %s: install pyspark there, or start with spark-submit" % (error, sys.executable)) from None

    conf = SparkConf().setAppName("zvr_al_spark %s" % options.scenario)
    if options.master:
        conf.setMaster(options.master)
    if not conf.contains("spark.master"):
        raise Failure("no master: name one with --master, or start with spark-submit")
    for name, value in (
        ("spark.log.level", "OFF"),
        ("spark.ui.showConsoleProgress", "false"),
        ("spark.locality.wait", "300ms"),
        ("spark.driver.extraJavaOptions", SHORT_LIVED),
        ("spark.executor.extraJavaOptions", SHORT_LIVED),
        ("spark.shuffle.compress", "false"),  # frames are packed
        ("spark.shuffle.spill.compress", "false"),
    ):
        conf.setIfMissing(name, value)
    start_java(conf)
    # One frame at a time: batches would be made of so many small frames that as many large ones are too much.
    context = SparkContext(conf=conf, batchSize=1)
    context.setLogLevel(conf.get("spark.log.level"))
    take_interrupts()  # pyspark's own handler asks Java something, which it cannot while a question is under way
    return context


def run_on_cluster(options, native, plan_path, merge, progress):
    """Returns merge's summary."""
    plan = Path(plan_path).read_bytes()
    with progress.stage("start"):
        context = start_spark(options)
    try:
        progress.tracker = context.statusTracker()
        job = make_job(options.native, own_folders(), version_of(native), plan)
        cluster = Cluster(context, job, json.loads(plan), options, progress)
        with progress.stage("check") as told:
            told.append("%d executors see the logs" % cluster.check())
        with progress.stage("load") as told:
            loaded = cluster.load()
            told.append("%d tasks" % loaded.getNumPartitions())
        with progress.stage("settle") as told:
            settled = cluster.settle(loaded)
            told.append("%d tasks" % settled.getNumPartitions())
        with progress.stage("collapse") as told:
            tables = cluster.collapse(loaded, settled)
            told.append("%d ranges of sessions" % tables.getNumPartitions())
        with progress.stage("merge"):
            cluster.hand_over(tables, merge)
            return merge.finish()
    except Exception as fault:
        raise what_ended(context, fault) from None
    finally:
        with contextlib.suppress(Exception):  # its Java may have been ended, too
            context.stop()


def what_ended(context, fault):
    """The fault that has ended the job. Where Spark gives up it ends by itself, at a time of its own, and whatever is
    asked of it then fails for that."""
    is_known = isinstance(fault, Failure) or ERROR_LINE.search(str(fault))
    if is_known or not context._jsc.sc().isStopped():
        return fault
    return Failure("Spark has ended: no master answers at %s, or it has given the job up" % context.master)


def counts_of_logs(plan):
    """Logs that are loaded, and instances. These are what the tool takes as -t to give the same."""
    instances = [log["instance"] for log in plan.get("logs", []) if not log["is_body_file"]]
    return len(instances), len(set(instances))


def run(options):
    progress = Progress()
    native = find_native(options.native, folders_shipped_from() + own_folders())
    if not native:
        raise native_missing(options.native)
    folder = os.environ.get("TMPDIR") or None  # itself: merge, which would miss it only at the end, takes no other
    with tempfile.TemporaryDirectory(prefix="zvr_al_spark_", dir=folder) as scratch:
        plan = os.path.join(scratch, "plan.json")
        with progress.stage("plan") as told:
            make_plan(native, options, plan)
            told.append("%d logs in %d instances" % counts_of_logs(json.loads(Path(plan).read_bytes())))
            merge = Merge(native, plan)
        try:
            return run_on_cluster(options, native, plan, merge, progress)
        finally:
            merge.close()


def main():
    options = read_options(sys.argv[1:])
    logging.disable(logging.ERROR)  # traces of the way to Java, for what ends in one line here
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        summary = run(options)
    except Failure as failure:
        line = str(failure)
    except KeyboardInterrupt:
        line = "interrupted"
    except Exception as fault:  # Spark's are of many kinds
        line = error_line(fault)
    else:
        sys.stdout.buffer.write(summary)
        sys.stdout.flush()
        end_java()
        return 0
    print("zvr_al_spark: %s" % line, file=sys.stderr)
    end_java()
    return FAILURE_STATUS


if __name__ == "__main__":
    sys.exit(main())
