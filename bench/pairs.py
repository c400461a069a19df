"""What the benchmarks share: work in memory, commands measured in pairs, and the table of the rows.

A benchmark prepares two ways of doing the same and compares them run by run, so that what disturbs
the machine disturbs both. What a run leaves behind is looked at before its time counts.
"""

import collections
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile

BUILD = os.path.abspath(os.path.join(os.path.dirname(__file__), "../build/bench"))
PROGRAM = BUILD + "/gxsetup"
PEAK_LIMIT = 6 << 20
GROWTH_LIMIT = 4.2

Cost = collections.namedtuple("Cost", "seconds busy peak")


class Memory:
    """A folder on a tmpfs, entered and removed with the block."""

    def __enter__(self):
        self.before = os.getcwd()
        self.path = tempfile.mkdtemp(prefix="gxsetup-bench-", dir="/dev/shm")
        os.chdir(self.path)

    def __exit__(self, *_):
        os.chdir(self.before)
        shutil.rmtree(self.path)


def processor():
    with open("/proc/cpuinfo", encoding="ascii") as file:
        names = [line.partition(": ")[2] for line in file if line.startswith("model name")]
    return names[0].strip() if names else platform.machine()


def tool(name):
    return f"{BUILD}/bench/{name}"


def require(holds, what):
    if not holds:
        sys.exit(f"wrong result: {what}")


def nothing(*_):
    pass


def read(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, content, mode=0o644):
    os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    os.chmod(path, mode)


class Way:
    """One way of doing it: commands that run one after the other in a folder, each so many times.
    `prepare` is not measured; `check` is given what was printed."""

    def __init__(self, *commands, prepare=nothing, check=nothing, answers="", folder=".", times=1,
                 output=None):
        self.commands, self.prepare, self.check = commands, prepare, check
        self.folder, self.times = os.path.abspath(folder), times
        self.answers = answers.encode()
        self.output = output or os.path.abspath("output")

    def run(self, command):
        write("answers", self.answers)
        line = subprocess.run([tool("measure"), str(self.times), os.path.abspath("answers"),
                               self.output, *command],
                              cwd=self.folder, stdout=subprocess.PIPE, check=True).stdout
        seconds, busy, peak = map(float, line.split())
        return Cost(seconds / self.times, busy / self.times, peak * 1024), read(self.output)

    def measure(self):
        self.prepare()
        costs, printed = zip(*map(self.run, self.commands))
        self.check(b"".join(printed))
        return Cost(sum(cost.seconds for cost in costs), sum(cost.busy for cost in costs),
                    max(cost.peak for cost in costs))


def script(lines, **how):
    return Way(["sh", "-c", "set -e\n" + lines], **how)


class Table:
    """Prints a row for each comparison, and remembers whether all kept their limits."""

    def __init__(self, pairs, only):
        self.pairs, self.only, self.beyond = pairs, only, 0
        print(f"{'row':48} {'ours ms':>8}  {'against':20} {'ms':>8} {'ratio':>6} {'cpu':>6} "
              f"{'limit':>6} {'peak MiB':>10}")

    def compare(self, name, ours, peer, theirs, limit=None):
        """How much longer `ours` takes than `theirs`: medians, on the clock and of the processors,
        and the peak memory of both. The first run of each only warms up."""
        if self.only not in f"{name} {peer}":
            return
        ours.measure()
        theirs.measure()
        pairs = [(ours.measure(), theirs.measure()) for _ in range(self.pairs)]

        def median(field, way):
            return statistics.median(getattr(pair[way], field) for pair in pairs)

        ratio = statistics.median(a.seconds / b.seconds for a, b in pairs)
        peaks = [max(pair[way].peak for pair in pairs) for way in (0, 1)]
        marks = ["beyond its limit"] if limit and ratio > limit else []
        marks += ["too much memory"] if peaks[0] > PEAK_LIMIT else []
        self.beyond += bool(marks)
        shown_limit = f"{limit:.2f}" if limit else "-"
        print(f"{name:48} {median('seconds', 0) * 1e3:8.2f}  {peer:20} "
              f"{median('seconds', 1) * 1e3:8.2f} {ratio:6.2f} "
              f"{median('busy', 0) / median('busy', 1):6.2f} {shown_limit:>6} "
              f"{peaks[0] / 2 ** 20:4.1f} {peaks[1] / 2 ** 20:5.1f}  {', '.join(marks)}".rstrip(),
              flush=True)

    def grow(self, name, ours, quarter):
        self.compare(name, ours, "a quarter of it", quarter, GROWTH_LIMIT)
