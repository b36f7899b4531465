#!/usr/bin/env python3
"""Jobs of zvr_al_spark on a small Spark, against the tool: cluster_test.py BUILD_DIRECTORY SOURCE_DIRECTORY [TEST...]
To be run by the python that has pyspark."""

import contextlib
import itertools
import os
import shutil
import signal
import sys
import threading
import time
import types
import unittest
import unittest.mock
from pathlib import Path

sys.dont_write_bytecode = True
BUILD, SOURCE = (Path(argument).resolve() for argument in sys.argv[1:3])
sys.path[:0] = [str(Path(__file__).parent), str(SOURCE / "companions/spark")]
import faulty_native  # noqa: E402
import spark_jobs  # noqa: E402
import zvr_al_spark  # noqa: E402
from random_installation import DIALECTS, SCENARIO, RandomInstallation  # noqa: E402

PROGRAMS = spark_jobs.Programs(BUILD, SOURCE)


class JobTest(unittest.TestCase):
    """A folder for each test, and comparing results."""

    def setUp(self):
        self.scratch = self.enterContext(spark_jobs.scratch_folder())

    def installation(self, seed=1, dialect="APACHE", mode="cookie", **options):
        return RandomInstallation(self.scratch / "installation", seed, dialect, mode, **options)

    def tool_results(self, installation):
        """What one machine makes: its results, and its summary."""
        installation.forget_results()
        run = spark_jobs.run_tool(PROGRAMS, installation.root, SCENARIO, "-t", installation.instances)
        self.assertEqual(run.status, 0, run.output)
        return installation.results(), run.output

    def assert_as_tool(self, installation, summary):
        """The results that are there are those of the tool."""
        results = installation.results()
        expected, expected_summary = self.tool_results(installation)
        self.assertEqual(summary, expected_summary)
        self.assertEqual(sorted(results), sorted(expected))
        for name, content in expected.items():
            self.assertTrue(results[name] == content, "%s differs" % name)

    def run_job(self, installation, *options, **more):
        return spark_jobs.run_job(PROGRAMS, installation.root, SCENARIO, *options, **more)

    def faulty(self, stage, fault):
        return faulty_native.make(self.scratch / "faulty", PROGRAMS.native, stage, fault)

    def wait_for(self, path, process):
        while not path.exists():
            self.assertIsNone(process.poll(), "the job has ended")
            time.sleep(0.05)

    def assert_fails(self, job, *words):
        """With one line that has these words, and no summary."""
        self.assertEqual(job.status, zvr_al_spark.FAILURE_STATUS, job.messages)
        self.assertEqual(job.output, "")
        self.assertEqual(len(job.error_lines()), 1, job.messages)
        for word in words:
            self.assertIn(word, job.error_lines()[0])
        self.assertNotIn("Traceback", job.messages)


class RandomJobsTest(JobTest):
    """Ten jobs one after the other on one Spark, as a start of Spark takes longer than each."""

    @classmethod
    def setUpClass(cls):
        cls.scratch_of_all = cls.enterClassContext(spark_jobs.scratch_folder())
        environment = spark_jobs.environment(cls.scratch_of_all / "all")
        cls.enterClassContext(unittest.mock.patch.dict(os.environ, environment))
        options = types.SimpleNamespace(scenario="tests", master=spark_jobs.LOCAL_CLUSTER)
        cls.context = zvr_al_spark.start_spark(options)
        cls.addClassCleanup(cls.context.stop)
        cls.context.addPyFile(str(PROGRAMS.application))  # here it is a module, which workers have to import

    def test_results_are_the_tools(self):
        chance = zip(range(10), itertools.cycle(itertools.product(DIALECTS, ("cookie", "client_ip"))))
        for seed, (dialect, mode) in chance:
            with self.subTest(seed=seed, dialect=dialect, mode=mode):
                self.try_installation(seed, dialect, mode)

    def try_installation(self, seed, dialect, mode):
        root = self.scratch / str(seed)
        installation = RandomInstallation(root, seed, dialect, mode)
        words = ["-s", SCENARIO, "--work-dir", str(root), "--native", str(PROGRAMS.native),
                 "--pieces", str(1 + seed % 5), "--partitions", str(1 + seed % 4)]
        start = unittest.mock.patch.object(zvr_al_spark, "start_spark", lambda _: SharedContext(self.context))
        with start:
            summary = zvr_al_spark.run(zvr_al_spark.read_options(words))
        self.assert_as_tool(installation, summary.decode())


class SharedContext:
    """A Spark that goes on when a job has done with it."""

    def __init__(self, context):
        self.context = context

    def __getattr__(self, name):
        return getattr(self.context, name)

    def stop(self):
        pass


class WorkerKilledTest(JobTest):
    """Whatever a worker was at when it died, the job ends with the same bytes."""

    def try_stage(self, stage):
        installation = self.installation(seed=3)
        native, mark = self.faulty(stage, "kill")
        job = self.run_job(installation, "--pieces", 4, "--partitions", 3, native=native)
        self.assertEqual(job.status, 0, job.messages)
        self.assertTrue(mark.exists(), "no worker was killed")
        self.assert_as_tool(installation, job.output)

    def test_check(self):
        self.try_stage("check")

    def test_load(self):
        self.try_stage("load")

    def test_settle(self):
        self.try_stage("settle")

    def test_cut(self):
        self.try_stage("cut")

    def test_collapse(self):
        self.try_stage("collapse")

    def test_merge(self):
        self.try_stage("merge")


class FaultTest(JobTest):
    """What cannot be right ends the job with one line, and leaves the results that were there."""

    def try_fault(self, stage, fault, *words):
        installation = self.installation(seed=3)
        before, _ = self.tool_results(installation)
        native, mark = self.faulty(stage, fault)
        job = self.run_job(installation, "--pieces", 3, "--partitions", 2, native=native)
        self.assertTrue(mark.exists(), job.messages)
        self.assert_fails(job, *words)
        return installation, before

    def test_damaged_block(self):
        installation, before = self.try_fault("load", "damage", "damaged")
        self.assertTrue(installation.results() == before)

    def test_damaged_table(self):
        installation, before = self.try_fault("collapse", "damage", "damaged")
        self.assertTrue(installation.results() == before)

    def test_stream_without_its_end(self):
        installation, before = self.try_fault("load", "shorten", "cut off")
        self.assertTrue(installation.results() == before)

    def test_full_disk_of_the_driver(self):
        installation, _ = self.try_fault("merge", "fill disk")
        again = self.run_job(installation)
        self.assertEqual(again.status, 0, again.messages)
        self.assert_as_tool(installation, again.output)

    def test_log_that_differs_between_hosts(self):
        installation = self.installation()
        other = self.scratch / "other_logs"
        shutil.copytree(installation.root / "logs", other)
        log = sorted(other.rglob("*.log"))[0]
        log.write_bytes(log.read_bytes()[:-1])
        with spark_jobs.two_hosts(installation.root, other) as master:
            job = self.run_job(installation, master=master, conf={
                "spark.cores.max": 2, "spark.scheduler.minRegisteredResourcesRatio": 1,
                "spark.executor.memory": "1g"})
        self.assert_fails(job, "other: ", str(installation.root / "logs" / log.relative_to(other)))
        self.assertNotRegex(job.messages, "(?m)^load ")

    def test_native_program_of_another_version(self):
        installation = self.installation()
        native = self.scratch / "zvr_al_shard"
        # The second and later calls are those of workers.
        native.write_text('#!/bin/sh\n[ "$1" = --version ] || exec %s "$@"\n'
                          'if mkdir %s 2>/dev/null; then exec %s --version; fi\necho zvr_al_shard 0.0.1\n'
                          % (PROGRAMS.native, self.scratch / "asked", PROGRAMS.native))
        native.chmod(0o755)
        self.assert_fails(self.run_job(installation, native=native), "zvr_al_shard 0.0.1")

    def test_native_program_that_is_not_there(self):
        installation = self.installation()
        self.assert_fails(self.run_job(installation, native=self.scratch / "none"), "none is not there")


class InterruptedTest(JobTest):
    """Whenever a job is interrupted, it says so in one line, leaves the results that were there and no process."""

    def interrupt(self, process):
        os.killpg(process.pid, signal.SIGINT)  # as a terminal does
        self.assert_interrupted(process)

    def assert_interrupted(self, process):
        job = spark_jobs.Ended(process)  # which waits for all that have its standard error
        self.assert_fails(job, "interrupted")
        self.wait_until_nothing_is_left_of(process)

    def wait_until_nothing_is_left_of(self, process):
        """What has ended is there until init has noticed."""
        with contextlib.suppress(ProcessLookupError):
            for _ in range(100):
                os.killpg(process.pid, 0)
                time.sleep(0.05)
            self.fail("a process is left")

    def backups(self, process):
        """The folders into which this job has copied the inputs. Their names end with the process."""
        return [folder for folder in Path("/tmp").glob("zvr_al_gen_url_list.backup.*")
                if self.session(int(folder.suffix[1:])) == process.pid]

    def session(self, pid):
        with contextlib.suppress(ProcessLookupError):
            return os.getsid(pid)

    def test_while_java_starts(self):
        installation = self.installation()
        for delay in (0, 0.3, 0.7, 1.2):
            process = spark_jobs.start_job(PROGRAMS, installation.root, SCENARIO)
            self.assertRegex(process.stderr.readline(), "^plan ")
            time.sleep(delay)
            self.interrupt(process)

    def try_while_a_stage_works(self, interrupt):
        installation = self.installation()
        before, _ = self.tool_results(installation)
        native, go_on = self.faulty("load", "wait")
        process = spark_jobs.start_job(PROGRAMS, installation.root, SCENARIO, native=native)
        self.wait_for(go_on.with_suffix(".waiting"), process)
        backups = self.backups(process)
        self.assertEqual(len(backups), 1)
        interrupt(process)
        self.assertTrue(installation.results() == before)
        self.assertFalse(backups[0].exists())

    def test_while_a_stage_works(self):
        self.try_while_a_stage_works(self.interrupt)

    def test_ended_while_a_stage_works(self):
        """As by kill, which knows the job alone."""

        def end(process):
            process.terminate()
            self.assert_interrupted(process)

        self.try_while_a_stage_works(end)


class OneAtATimeTest(JobTest):
    """A scenario is worked on by one run or job at a time."""

    RUNNING = "Url list processing Tool is already running, first close that and run again"

    def test_run_is_refused_while_a_job_works(self):
        installation = self.installation()
        native, go_on = self.faulty("load", "wait")
        process = spark_jobs.start_job(PROGRAMS, installation.root, SCENARIO, native=native)
        self.wait_for(go_on.with_suffix(".waiting"), process)
        run = spark_jobs.run_tool(PROGRAMS, installation.root, SCENARIO, has_checker=True)
        go_on.mkdir()
        job = spark_jobs.Ended(process)
        self.assertNotEqual(run.status, 0)
        self.assertIn(self.RUNNING, run.output)
        self.assertEqual(job.status, 0, job.messages)
        self.assert_as_tool(installation, job.output)

    def test_job_is_refused_while_a_run_works(self):
        installation = self.installation()
        log = sorted((installation.root / "logs").rglob("*.log"))[0]
        installation.write_scenario([log], budgets=[1000])  # lines of a pipe cannot be counted
        content = log.read_bytes()
        log.unlink()
        os.mkfifo(log)
        runs = []
        reading = threading.Thread(
            target=lambda: runs.append(
                spark_jobs.run_tool(PROGRAMS, installation.root, SCENARIO, has_checker=True)))
        reading.start()
        with open(self.open_for_reader(log, reading), "wb", buffering=0) as pipe:
            job = self.run_job(installation)
            os.set_blocking(pipe.fileno(), True)
            with contextlib.suppress(BrokenPipeError):  # it reads no more lines than it is told to
                pipe.write(content)
        reading.join()
        self.assert_fails(job, self.RUNNING)
        self.assertEqual(runs[0].status, 0, runs[0].output)


    def open_for_reader(self, pipe, run):
        """Opens the pipe once the run reads from it."""
        while run.is_alive():
            try:
                return os.open(pipe, os.O_WRONLY | os.O_NONBLOCK)
            except OSError:
                time.sleep(0.05)
        self.fail("the run has not read its logs")


class LaterRunTest(JobTest):
    """What a job leaves answers the tool's later runs, as if the tool had left it."""

    def test_cache_levels(self):
        installation = self.installation()
        job = self.run_job(installation)
        self.assertEqual(job.status, 0, job.messages)
        self.assertIn("Cache level is 1", self.run_again(installation, job.output.strip()))
        patterns = installation.profile / "replay_url_patterns.dat"
        patterns.write_text(patterns.read_text() + "active|main|na|9|New|na|x|NA|/p1*\n")
        time.sleep(2)  # of what was changed just now, no run makes use again
        self.assertIn("Cache level is 2", self.run_again(installation))

    def run_again(self, installation, summary=""):
        """Returns the debug log, which tells what is used again."""
        run = spark_jobs.run_tool(PROGRAMS, installation.root, SCENARIO, "-d", 2, "-t", installation.instances,
                                  has_checker=True)
        self.assertEqual(run.status, 0, run.output)
        self.assertIn(summary, run.output)
        return (installation.root / "webapps/zivrano/logs/zivrano_replay_debug.log").read_text()


class RefusedOptionTest(unittest.TestCase):
    """Needs no Spark."""

    def test_options_of_the_tool(self):
        for option in ("-t2", "--num_thread=2", "-d1", "-a", "-c", "-m", "--mode"):
            process = spark_jobs.start_job(PROGRAMS, Path("/tmp"), "web", option)
            job = spark_jobs.Ended(process)
            self.assertEqual(job.status, zvr_al_spark.FAILURE_STATUS)
            self.assertRegex(job.messages, r"^zvr_al_spark: option -\w/--\w+ is not taken: .+\n$")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
