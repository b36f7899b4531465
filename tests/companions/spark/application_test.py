#!/usr/bin/env python3
"""What zvr_al_spark decides by itself, without a Spark: application_test.py SOURCE_DIRECTORY"""

import bisect
import io
import json
import random
import signal
import socket
import struct
import sys
import types
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(sys.argv[1]).resolve() / "companions/spark"))
import zvr_al_spark as application  # noqa: E402


def frame(kind, payload=b"", form=2):
    label = json.dumps({"kind": kind}).encode()
    return struct.pack("<4sIIQQ", b"ZVRF", form, len(label), len(payload), 0) + label + payload


class FramesTest(unittest.TestCase):
    def read(self, stream):
        return [read for _, read in application.read_frames(io.BytesIO(stream))]

    def test_frames_are_handed_on_whole_but_for_the_end(self):
        frames = [frame("rows", b"x" * 100_000), frame("settled")]
        self.assertEqual(self.read(b"".join(frames) + frame("end")), frames)

    def test_stream_cut_anywhere_is_found_out(self):
        stream = frame("rows", b"xyz") + frame("end")
        for size in range(len(stream)):
            with self.assertRaises(application.Failure):
                self.read(stream[:size])

    def test_other_format_is_refused(self):
        with self.assertRaises(application.Failure):
            self.read(frame("rows", form=1) + frame("end"))


class RangesTest(unittest.TestCase):
    def chosen(self, spans, count):
        keys = application.choose_keys(spans, count)
        self.assertEqual(keys, sorted(set(keys)))
        self.assertLess(len(keys), count)
        return keys

    def test_ranges_are_even(self):
        """Of many runs, sorted each, whose frames hold a hundredth of their run."""
        chance = random.Random(7)
        spans = []
        for _ in range(50):
            bounds = sorted("%016x" % chance.getrandbits(64) for _ in range(101))
            spans += [(first, last, 1000) for first, last in zip(bounds, bounds[1:])]
        for count in (2, 3, 7, 40):
            keys = self.chosen(spans, count)
            sizes = [0] * (len(keys) + 1)
            for first, _, size in spans:
                sizes[bisect.bisect_right(keys, first)] += size
            self.assertEqual(len(sizes), count)
            self.assertLess(max(sizes), 1.3 * sum(sizes) / count)

    def test_sessions_that_are_too_large_for_a_range_stay_whole(self):
        spans = [("aa", "aa", 10_000)] * 50 + [("bb", "bc", 10), ("dd", "ee", 10)]
        keys = self.chosen(spans, 10)
        self.assertTrue(all(key > "aa" for key in keys), keys)

    def test_nothing_to_share_out(self):
        self.assertEqual(self.chosen([], 5), [])
        self.assertEqual(self.chosen([("aa", "bb", 10)], 1), [])

    def test_keys_fit_on_a_command_line(self):
        keys = ["%0400x" % number for number in range(1000)]
        fitting = application.fitting(keys)
        self.assertLessEqual(sum(map(len, fitting)), application.MOST_KEY_TEXT)
        self.assertGreater(len(fitting), 150)
        self.assertTrue(set(fitting) <= set(keys))

    def test_key_is_shortened_to_what_sets_it_apart(self):
        for key, before in (("aabbcc", "aabb"), ("aabbcc", "aaba"), ("bb", "aaffff"), ("aabbcc", "aabbcb")):
            short = application.shortened(key, before)
            self.assertTrue(before < short <= key and key.startswith(short) and len(short) % 2 == 0, short)


class SlicesTest(unittest.TestCase):
    def test_all_frames_once_and_in_order(self):
        chance = random.Random(3)
        for _ in range(200):
            sizes = [[chance.randrange(1, 20_000_000) for _ in range(chance.randrange(8))]
                     for _ in range(chance.randrange(1, 6))]
            taken = []
            for part in application.slices(sizes):
                numbers = [(partition, number) for partition, (begin, end) in part.items()
                           for number in range(begin, end)]
                self.assertTrue(len(numbers) < 2 or sum(
                    sizes[partition][number] for partition, number in numbers) <= application.SLICE)
                taken += numbers
            self.assertEqual(taken, [(partition, number) for partition, frames in enumerate(sizes)
                                     for number in range(len(frames))])


class PiecesTest(unittest.TestCase):
    def test_groups_are_even_and_whole(self):
        megabyte = application.MEGABYTE
        for count, cores in ((1, 8), (100, 2), (1000, 4), (40_000, 256)):
            groups = application.group_pieces([{"bytes": 4 * megabyte}] * count, cores)
            self.assertEqual([number for group in groups for number in group], list(range(count)))
            self.assertLessEqual(max(map(len, groups)) * 4 * megabyte, application.PIECE_SIZE)
            self.assertGreaterEqual(len(groups), min(count, cores))


class ErrorLineTest(unittest.TestCase):
    def test_line_of_a_worker_is_found(self):
        text = "An error occurred\n: Job aborted: RuntimeError: zvr_al_spark<host: a log>zvr_al_spark\n\tat x.y"
        self.assertEqual(application.error_line(RuntimeError(text)), "host: a log")

    def test_of_all_else_one_line_is_left(self):
        text = "An error occurred\n: Job aborted\nTraceback:\n  File \"x\"\nOSError: full\n\n\tat a.b\nDriver stacktrace:\n\tat"
        self.assertEqual(application.error_line(RuntimeError(text)), "Spark: OSError: full")
        self.assertEqual(application.error_line(RuntimeError()), "Spark: RuntimeError")
        text = "An error occurred\n: Job aborted\n\tat a.b\nCaused by: java.io.IOException: full\n\tat c.d\n\t... 30 more\n"
        self.assertEqual(application.error_line(RuntimeError(text)), "Spark: java.io.IOException: full")

        text = "An error occurred\n: org.apache.spark.SparkException: no URL\n\tat a.b\n"
        self.assertEqual(application.error_line(RuntimeError(text)), "Spark: org.apache.spark.SparkException: no URL")

    def test_worker_of_a_task_that_spark_has_lost(self):
        lost = "Job aborted: Lost task 3.3 in stage 7.0 (TID 52) (10.0.0.7 executor 0): java.io.IOException: full"
        self.assertEqual(application.error_line(RuntimeError(lost)), "Spark: " + lost)
        text = lost + "\n\tat a.b\nDriver stacktrace:\n\tat c.d\nCaused by: x"
        self.assertEqual(application.error_line(RuntimeError(text)), "Spark: " + lost)
        text = lost + "\n\tat a.b\nCaused by: java.io.IOException: full\n\tat c.d\n"
        self.assertEqual(application.error_line(RuntimeError(text)), "Spark: 10.0.0.7: java.io.IOException: full")

    def test_only_faults_of_spark_name_it(self):
        with self.assertRaises(OSError) as missing:
            open("/nowhere/file")
        self.assertEqual(application.error_line(missing.exception), "/nowhere/file: No such file or directory")
        self.assertEqual(application.error_line(ConnectionRefusedError(111, "refused")), "Spark: [Errno 111] refused")

    def test_spark_that_gives_up(self):
        """Only what fails for that is told so."""
        known = application.Failure("a log is missing"), RuntimeError("zvr_al_spark<host: a log>zvr_al_spark")
        other = RuntimeError("SparkContext has been shutdown")
        for is_stopped in (True, False):
            spark = types.SimpleNamespace(isStopped=lambda stopped=is_stopped: stopped)
            context = types.SimpleNamespace(
                master="spark://head:7077", _jsc=types.SimpleNamespace(sc=lambda spark=spark: spark))
            for fault in known:
                self.assertIs(application.what_ended(context, fault), fault)
            line = str(application.what_ended(context, other))
            self.assertEqual("Spark has ended: no master answers at spark://head:7077" in line, is_stopped)

    def test_host_is_named_once(self):
        host = socket.gethostname()
        for line in ("a fault", host + ": a fault", "zvr_al_shard: %s: a fault" % host):
            self.assertEqual(application.with_host(line), host + ": a fault")
        self.assertEqual(application.with_host("zvr_al_shard: a fault"), host + ": zvr_al_shard: a fault")


class ShippedTest(unittest.TestCase):
    def test_folder_of_the_program_among_shipped_files(self):
        files = "file:///a%20b/zvr_al_shard,/c/zvr_al_shard,/d/other,hdfs://e/zvr_al_shard,"
        self.assertEqual(application.folders_of_shipped(files), ["/a b", "/c"])


class InterruptTest(unittest.TestCase):
    def test_interrupt_waits_for_the_end(self):
        done = []
        with self.assertRaises(KeyboardInterrupt):
            with application.interrupt_put_off():
                signal.raise_signal(signal.SIGINT)
                done.append(True)
        self.assertEqual(done, [True])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
