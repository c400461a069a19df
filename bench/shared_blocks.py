"""Rows on file systems that share blocks between files, against copies that ask for it."""

import os
import shutil
import subprocess
import tempfile

from flows import Kestrel
from pairs import Way, nothing

FILE_SYSTEMS = {"XFS": ["mkfs.xfs", "-q", "-f"], "btrfs": ["mkfs.btrfs", "-q", "-f"]}
IMAGE_SIZE = 3 << 30


class Mounted:
    """A new file system in a file in memory, mounted at a folder that is entered; both go with the
    block. `reason` says why it could not be mounted, or is empty."""

    def __init__(self, name):
        self.make = FILE_SYSTEMS[name]
        self.reason = ""

    def __enter__(self):
        self.before = os.getcwd()
        self.path = tempfile.mkdtemp(prefix="gxsetup-bench-", dir="/dev/shm")
        image, folder = self.path + "/image", self.path + "/mounted"
        os.mkdir(folder)
        with open(image, "wb") as file:
            file.truncate(IMAGE_SIZE)
        for command in ([*self.make, image], ["mount", "-o", "loop", image, folder]):
            try:
                done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                      text=True, check=False)
                self.reason = done.stdout if done.returncode != 0 else ""
            except FileNotFoundError as missing:
                self.reason = str(missing)
            if self.reason:
                return self
        os.chdir(folder)
        return self

    def __exit__(self, *_):
        os.chdir(self.before)
        if not self.reason:
            subprocess.run(["umount", self.path + "/mounted"], check=True)
        shutil.rmtree(self.path)


class Sized(Kestrel):
    """As many templates as images, all of one size."""

    def __init__(self, root, count, size):
        self.size = size
        super().__init__(root, count, count)

    def add(self, name, lowest, highest):
        super().add(name, self.size >> 10, self.size >> 10)

    def copy_of_result(self):
        way = super().copy_of_result()
        way.commands = (["cp", "-r", "--reflink=auto", "ours", "again"],)
        return way

    def copy_over_result(self):
        """The same over what it made before: the old files go, as they do in an upgrade."""
        way = self.copy_of_result()
        way.commands = (["cp", "-r", "--reflink=auto", "--remove-destination", "ours/.", "again"],)
        way.prepare = nothing
        return way


def rows_on(table, name, count, size, limit=None):
    megabytes = 2 * count * size >> 20
    whole = Sized("whole", count, size)
    title = f"{name}, {2 * count} files of {megabytes} MB"
    peer = "cp -r --reflink=auto"
    for way in (whole.install(), whole.install_by_script(), whole.copy_of_result()):
        way.measure()
    table.compare("install on " + title, whole.install(), peer, whole.copy_of_result(), limit)
    table.compare("install on " + title, whole.install(), "a script", whole.install_by_script())
    table.compare("upgrade on " + title, whole.upgrade(True), "the same over it",
                  whole.copy_over_result(), 1.50)
    table.compare("upgrade on " + title, whole.upgrade(True), "a script",
                  whole.upgrade_by_script(True))
    quarter = Sized("quarter", count // 4, size)
    table.grow("install on " + title, whole.install(), quarter.install())
    for root in ("whole", "quarter"):
        shutil.rmtree(root)


def rows(table):
    for name in FILE_SYSTEMS:
        with Mounted(name) as mounted:
            if mounted.reason:
                print(f"{name}: skipped, {mounted.reason.strip()}")
                continue
            rows_on(table, name, 450, 20 << 10, 1.25)
            rows_on(table, name, 450, 400 << 10, 1.25)
            # Few files: mostly what starts and ends a run, and the product's program it asks.
            rows_on(table, name, 10, 20 << 20)
            few, large = Sized("few", 100, 20 << 10), Sized("large", 100, 1 << 20)
            table.compare(f"install on {name}, 200 files of 1 MB", large.install(),
                          "the same of 20 KB", few.install(), 1.25)
