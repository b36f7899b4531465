"""Jobs of zvr_al_spark on a Spark of this machine, and runs of the tool to compare them with."""

import contextlib
import importlib.util
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path

LOCAL_CLUSTER = "local-cluster[2,1,2048]"
LIMIT = 300  # seconds for any job


class Programs:
    """What is tried: the programs of a build, and the application."""

    def __init__(self, build, source):
        self.build = Path(build)
        self.native = self.build / "zvr_al_shard"
        self.tool = self.build / "zvr_al_gen_url_list"
        self.application = Path(source) / "companions/spark/zvr_al_spark.py"


def environment(root, **more):
    """Spark keeps to this machine, and its files to a folder beside the installation."""
    scratch = str(root) + "_spark"
    os.makedirs(scratch, exist_ok=True)
    return {**os.environ, "ZV_WDIR": str(root), "TZ": "UTC", "TMPDIR": scratch, "SPARK_LOCAL_IP": "127.0.0.1",
            "SPARK_WORKER_DIR": scratch, "SPARK_LOCAL_DIRS": scratch, **more}


def submit_words(conf):
    """How pyspark takes options of spark-submit."""
    words = ["--conf %s=%s" % entry for entry in conf.items()]
    return {"PYSPARK_SUBMIT_ARGS": " ".join([*words, "pyspark-shell"])}


def start_job(programs, root, scenario, *options, native=None, master=LOCAL_CLUSTER, conf=None):
    """A job in a session of its own, so that all of its processes are known by it."""
    words = [sys.executable, "-B", programs.application, "-s", scenario, "--master", master,
             "--native", native or programs.native, *options]
    return subprocess.Popen(list(map(str, words)), env=environment(root, **submit_words(conf or {})), cwd=root,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, start_new_session=True)


class Ended:
    """How a program ended."""

    def __init__(self, process):
        try:
            self.output, self.messages = process.communicate(timeout=LIMIT)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            self.output, self.messages = process.communicate()
            self.messages += "\nstopped after %d seconds" % LIMIT
        self.status = process.returncode

    def error_lines(self):
        """What the job says besides the progress of its stages."""
        return [line for line in self.messages.splitlines() if line.startswith("zvr_al_spark:")]


def run_job(*arguments, **options):
    return Ended(start_job(*arguments, **options))


def run_tool(programs, root, scenario, *options, has_checker=False):
    """A run on one machine, from its logs unless it `has_checker`."""
    path = "%s:%s" % (programs.build / "checker", programs.build) if has_checker else "/nonexistent"
    words = [programs.tool, "-s", scenario, *options]
    return Ended(subprocess.Popen(list(map(str, words)), env=environment(root, PATH=path), cwd=root,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True))


@contextlib.contextmanager
def two_hosts(root, other_logs):
    """A master and two workers on this machine, of which one is called "other" and sees the folder `other_logs` in
    the place of the installation's logs. Gives the master's URL."""
    spark_home = Path(importlib.util.find_spec("pyspark").origin).parent
    spark_class = spark_home / "bin/spark-class"
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    master = "spark://127.0.0.1:%d" % port
    deploy = "org.apache.spark.deploy."
    start_master = [deploy + "master.Master", "--host", "127.0.0.1", "--port", str(port), "--webui-port", "0"]
    start_worker = [deploy + "worker.Worker", "--host", "127.0.0.1", "--webui-port", "0", "--cores", "1",
                    "--memory", "1200m", master]
    elsewhere = ["unshare", *([] if os.getuid() == 0 else ["--map-root-user"]), "--mount", "--uts", "sh", "-c",
                 'hostname other && mount --bind "$0" "$1" && shift && exec "$@"', str(other_logs),
                 str(root / "logs")]
    with contextlib.ExitStack() as processes:
        for number, words in enumerate(([*start_master], [*start_worker], [*start_worker])):
            command = [*(elsewhere if number == 2 else []), str(spark_class), *words]
            log = processes.enter_context(open("%s_daemon%d.log" % (root, number), "wb"))
            process = subprocess.Popen(command, env=environment(root, SPARK_HOME=str(spark_home)), stdout=log, stderr=log,
                                       start_new_session=True)
            processes.callback(stop, process)
            if number == 0:
                wait_for_port(port)
        yield master


def stop(process):
    os.killpg(process.pid, signal.SIGTERM)
    process.wait()


def wait_for_port(port):
    for _ in range(600):
        with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), 1):
            return
        time.sleep(0.1)
    raise RuntimeError("the master has not started")


@contextlib.contextmanager
def scratch_folder():
    folder = Path(tempfile.mkdtemp(prefix="zvr_spark_test_"))
    try:
        yield folder
    finally:
        shutil.rmtree(folder, ignore_errors=True)
