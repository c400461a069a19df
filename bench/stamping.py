#!/usr/bin/env python3
"""Checksums: taking them against cksum, stamping them against one reading and one copying.

    cmake --preset bench && cmake --build --preset bench && bench/stamping.py build/bench
"""

import os
import shutil
import subprocess
import sys

from pairs import Memory, Way, compare, print_title, require, run

BUILD = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "build/bench")
PROGRAM = BUILD + "/gxsetup"
SUM_FILES = BUILD + "/bench/sum_files"
LARGE = 64 << 20

VALUES = bytes(0 if byte in b"\r\n" else byte for byte in range(256))


def checksum(content):
    """The rule: weights 1, 2 and 4 in turn, line ends left out, 32 bits, signed."""
    values = content.translate(VALUES)
    total = sum(sum(values[first::3]) << first for first in range(3)) % (1 << 32)
    return total - (1 << 32) if total >= 1 << 31 else total


def text(size, line):
    row = bytes(ord("!") + at % 90 for at in range(line - 1)).replace(b"|", b"/") + b"\n"
    return (row * (size // line + 1))[:size - 1] + b"\n"


class Templates:
    """The files to stamp, their originals kept in `from`."""

    def __init__(self, count, content):
        self.content = content
        self.stamped = content + b"\n||checksum=%d||\n" % checksum(content)
        self.names = [f"page{at}.tpl" for at in range(count)]
        os.mkdir("from")
        for name in self.names:
            with open("from/" + name, "wb") as file:
                file.write(content)

    def copies(self):
        shutil.rmtree("tpl", ignore_errors=True)
        shutil.copytree("from", "tpl")

    def originals(self):
        return ["from/" + name for name in self.names]

    def all_hold(self, folder, content):
        for name in self.names:
            with open(f"{folder}/{name}", "rb") as file:
                if file.read() != content:
                    return False
        return True

    def stamping(self):
        answers = os.getcwd() + "/tpl\n\n"
        return Way(self.copies, lambda: run([PROGRAM, "-checksum"], answers),
                   lambda _: require(self.all_hold("tpl", self.stamped), "stamped templates"))

    def reading_and_copying(self):
        def prepare():
            shutil.rmtree("copy", ignore_errors=True)
            os.mkdir("copy")

        def work():
            with open("/dev/null", "wb") as nowhere:
                subprocess.run(["cat", *self.originals()], stdout=nowhere, check=True)
            run(["cp", *self.originals(), "copy"])

        return Way(prepare, work,
                   lambda _: require(self.all_hold("copy", self.content), "copies"))

    def summing(self):
        expected = b"%d\n" % checksum(self.content) * len(self.names)
        return Way(lambda: None, lambda: run([SUM_FILES, *self.originals()]),
                   lambda result: require(result == expected, "checksums"))

    def cksum(self):
        return Way(lambda: None, lambda: run(["cksum", *self.originals()]),
                   lambda result: require(result.count(b"\n") == len(self.names), "cksum"))


def main():
    kinds = (("900 templates of 40 KB", 900, text(40 << 10, 80)),
             ("64 MB in lines of 80", 1, text(LARGE, 80)),
             ("64 MB in lines of 1 MB", 1, text(LARGE, 1 << 20)))
    stamped = {}
    print_title("stamping against cat and cp; do_checksum against cksum")
    for name, count, content in kinds:
        with Memory():
            templates = Templates(count, content)
            stamped[name] = compare("stamp " + name, templates.stamping(),
                                    templates.reading_and_copying(), "1.20")
            compare("sum   " + name, templates.summing(), templates.cksum(), "1.00")
    ratio = stamped[kinds[2][0]] / stamped[kinds[1][0]]
    print(f"stamping lines of 1 MB against lines of 80: {ratio:.2f} (limit 1.10)")


if __name__ == "__main__":
    main()
