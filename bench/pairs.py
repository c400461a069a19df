"""What the benchmarks share: work in memory, and commands measured in pairs.

A benchmark prepares two ways of doing the same, checks what each leaves behind, and compares them
run by run, so that what disturbs the machine disturbs both. Times are printed as ratios.
"""

import os
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

PAIRS = 9


class Memory:
    """A folder on a tmpfs, entered and removed with the block."""

    def __enter__(self):
        self.before = os.getcwd()
        self.path = tempfile.mkdtemp(prefix="gxsetup-bench-", dir="/dev/shm")
        os.chdir(self.path)
        return self.path

    def __exit__(self, *_):
        os.chdir(self.before)
        shutil.rmtree(self.path)


def require(holds, what):
    if not holds:
        sys.exit(f"wrong result: {what}")


def run(command, answers=""):
    """Runs a command to its end; gives its output."""
    return subprocess.run(command, input=answers.encode(), stdout=subprocess.PIPE,
                          check=True).stdout


class Way:
    """One way of doing it: `prepare` is not measured, `work` is, `check` looks at what it left."""

    def __init__(self, prepare, work, check):
        self.prepare, self.work, self.check = prepare, work, check

    def measure(self):
        """Seconds on the clock and of the processors."""
        self.prepare()
        used_before = resource.getrusage(resource.RUSAGE_CHILDREN)
        start = time.perf_counter()
        self.result = self.work()
        seconds = time.perf_counter() - start
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        busy = sum(getattr(used, name) - getattr(used_before, name)
                   for name in ("ru_utime", "ru_stime"))
        return seconds, busy


def compare(name, ours, theirs, limit):
    """Prints how much longer `ours` takes than `theirs`; gives our median seconds."""
    for way in (ours, theirs):
        way.measure()
        way.check(way.result)
    pairs = [(ours.measure(), theirs.measure()) for _ in range(PAIRS)]
    seconds = [statistics.median(pair[way][0] for pair in pairs) for way in (0, 1)]
    ratio = statistics.median(a[0] / b[0] for a, b in pairs)
    busy = statistics.median(a[1] for a, _ in pairs) / statistics.median(b[1] for _, b in pairs)
    print(f"{name:58} {seconds[0] * 1e3:7.1f} ms {seconds[1] * 1e3:7.1f} ms "
          f"{ratio:6.2f} {busy:6.2f} {limit:>6}", flush=True)
    return seconds[0]


def print_title(first):
    print(f"{first:58} {'ours':>10} {'theirs':>10} {'ratio':>6} {'cpu':>6} {'limit':>6}")
