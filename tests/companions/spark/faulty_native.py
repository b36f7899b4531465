"""Stands in for zvr_al_shard and lets something happen in one of its stages; all else is left to the real one."""

import contextlib
import os
import resource
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

PROGRAM = """#!{python}
import sys
sys.dont_write_bytecode = True
sys.path.insert(0, {folder!r})
import faulty_native
faulty_native.act({real!r}, {stage!r}, {fault!r}, {mark!r})
"""


def make(folder, real, stage, fault):
    """Makes the program. Returns it, and the path of its mark: there once the fault has happened, or, for fault
    "wait", what it waits for once it has itself made the mark's name with ".waiting"."""
    folder.mkdir()
    program, mark = folder / "zvr_al_shard", folder / "mark"
    program.write_text(PROGRAM.format(python=sys.executable, folder=str(Path(__file__).parent), real=str(real),
                                      stage=stage, fault=fault, mark=str(mark)))
    program.chmod(0o755)
    return program, mark


def act(real, stage, fault, mark):
    words = [real, *sys.argv[1:]]
    if sys.argv[1] == stage:
        FAULTS[fault](words, Path(mark))
    os.execv(real, words)


def status_of(pid):
    """Name, parent and session of a process."""
    name, rest = Path("/proc/%d/stat" % pid).read_text().split("(", 1)[1].rsplit(")", 1)
    words = rest.split()
    return name, int(words[1]), int(words[3])


def own_executor():
    """The executor that runs this task; on the driver, any of the job."""
    pid = os.getpid()
    while pid > 1:
        pid = status_of(pid)[1]
        if is_executor(pid):
            return pid
    session = os.getsid(0)
    for folder in Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):
            pid = int(folder.name)
            if is_executor(pid) and status_of(pid)[2] == session:
                return pid
    raise RuntimeError("no executor")


def is_executor(pid):
    return b"CoarseGrainedExecutorBackend" in Path("/proc/%d/cmdline" % pid).read_bytes()


def is_first(mark):
    try:
        mark.mkdir()
        return True
    except FileExistsError:
        return False


def kill(words, mark):
    """Kills a worker, when half of the output of a stage is there; on the driver, as the first byte comes back to it."""
    if words[1] == "merge":
        kill_as_input_comes(words, mark)
    if not is_first(mark):
        return
    output = subprocess.run(words, stdout=subprocess.PIPE).stdout
    sys.stdout.buffer.write(output[: len(output) // 2])
    sys.stdout.buffer.flush()
    time.sleep(0.2)
    os.kill(own_executor(), signal.SIGKILL)


def kill_as_input_comes(words, mark):
    """Stands between the driver and its stage."""
    process = subprocess.Popen(words, stdin=subprocess.PIPE)
    first = sys.stdin.buffer.read(1)
    if first and is_first(mark):
        os.kill(own_executor(), signal.SIGKILL)
    process.stdin.write(first)
    shutil.copyfileobj(sys.stdin.buffer, process.stdin)
    process.stdin.close()
    sys.exit(process.wait())


def damage(words, mark):
    """Changes one byte in the middle."""
    output = bytearray(subprocess.run(words, stdout=subprocess.PIPE).stdout)
    output[len(output) // 2] ^= 1
    sys.stdout.buffer.write(output)
    is_first(mark)
    sys.exit(0)


def shorten(words, mark):
    """Leaves out the last byte."""
    sys.stdout.buffer.write(subprocess.run(words, stdout=subprocess.PIPE).stdout[:-1])
    is_first(mark)
    sys.exit(0)


def wait(words, mark):
    is_first(mark.with_suffix(".waiting"))
    while not mark.exists():
        time.sleep(0.05)


def fill_disk(words, mark):
    """No file may grow beyond two kilobytes."""
    is_first(mark)
    resource.setrlimit(resource.RLIMIT_FSIZE, (2048, 2048))


FAULTS = {"kill": kill, "damage": damage, "shorten": shorten, "wait": wait, "fill disk": fill_disk}
