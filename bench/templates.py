"""Rows around templates: stamping them, taking their checksums, classifying them."""

import hashlib
import os
import random
import shutil

from pairs import PROGRAM, Memory, Way, read, require, tool, write

LARGE = 64 << 20
VALUES = bytes(0 if byte in b"\r\n" else byte for byte in range(256))


def checksum(content):
    """The rule: weights 1, 2 and 4 in turn, line ends left out, 32 bits, signed."""
    values = content.translate(VALUES)
    total = sum(sum(values[first::3]) << first for first in range(3)) % (1 << 32)
    return total - (1 << 32) if total >= 1 << 31 else total


def stamped(content):
    return content + b"\n||checksum=%d||\n" % checksum(content)


def text(size, line):
    row = bytes(ord("!") + at % 90 for at in range(line - 1)).replace(b"|", b"/") + b"\n"
    return (row * (size // line + 1))[:size - 1] + b"\n"


HEADER = b"||header: modified=false tpl_set=kst_s2 tpl_version=%s||\n"


class Templates:
    """Templates to stamp, all of one content: the originals in `from`, those to stamp in `tpl`."""

    def __init__(self, root, count, content):
        self.root, self.content = os.path.abspath(root), content
        self.names = [f"page{at}.tpl" for at in range(count)]
        self.originals = ["from/" + name for name in self.names]
        for name in self.originals:
            write(f"{root}/{name}", content)

    def require_all(self, folder, content):
        for name in self.names:
            require(read(f"{self.root}/{folder}/{name}") == content, f"{folder}/{name}")

    def fresh(self, folder):
        shutil.rmtree(f"{self.root}/{folder}", ignore_errors=True)
        os.mkdir(f"{self.root}/{folder}")

    def fresh_templates(self):
        """What stamping works on was just written, so what it is compared with reads such, too: the
        system takes its time to first give out pages that it has just got."""
        self.fresh("tpl")
        for name in self.names:
            shutil.copy(f"{self.root}/from/{name}", f"{self.root}/tpl/{name}")

    def stamping(self):
        expected = stamped(self.content)
        return Way([PROGRAM, "-checksum"], answers=self.root + "/tpl\n\n", folder=self.root,
                   prepare=self.fresh_templates, check=lambda _: self.require_all("tpl", expected))

    def cat_and_cp(self):
        def prepare():
            self.fresh("copy")
            self.fresh_templates()

        files = ["tpl/" + name for name in self.names]
        return Way(["cat", *files], ["cp", *files, "copy"], folder=self.root, output="/dev/null",
                   prepare=prepare, check=lambda _: self.require_all("copy", self.content))

    def summing(self):
        expected = b"%d\n" % checksum(self.content) * len(self.names)
        return Way([tool("sum_files"), *self.originals], folder=self.root,
                   check=lambda printed: require(printed == expected, "checksums"))

    def printing_a_line_each(self, program):
        return Way([program, *self.originals], folder=self.root,
                   check=lambda printed: require(printed.count(b"\n") == len(self.names), program))


def stampings(table):
    short, long = "64 MB in lines of 80", "64 MB in lines of 1 MB"
    kinds = {"900 templates of 40 KB": lambda part: (900 // part, text(40 << 10, 80)),
             short: lambda part: (1, text(LARGE // part, 80)),
             long: lambda part: (1, text(LARGE // part, 1 << 20))}
    ways = {}
    with Memory():
        for name, size in kinds.items():
            templates = Templates(name, *size(1))
            stamping = ways[name] = templates.stamping()
            table.compare("-checksum of " + name, stamping, "cat and cp",
                          templates.cat_and_cp(), 1.10)
            table.compare("-checksum of " + name, stamping, "md5sum",
                          templates.printing_a_line_each("md5sum"), 1.00)
            table.compare("-checksum of " + name, stamping, "cksum",
                          templates.printing_a_line_each("cksum"))
            table.compare("do_checksum of " + name, templates.summing(), "cksum",
                          templates.printing_a_line_each("cksum"), 1.30 if name == long else 1.00)
            quarter = Templates("quarter of " + name, *size(4))
            table.grow("-checksum of " + name, stamping, quarter.stamping())
            table.grow("do_checksum of " + name, templates.summing(), quarter.summing())
        table.compare("-checksum of " + long, ways[long], "lines of 80", ways[short], 1.10)


class Classification:
    """Installed templates and those of a distribution. All but eight are the same; these are newer
    in the distribution, and half of what is installed for them was modified."""

    def __init__(self, root, count):
        self.root, self.count = os.path.abspath(root), count
        source = random.Random(1)
        sums = b""
        for number in range(count):
            page = source.randbytes(22 << 10).replace(b"|", b"/")
            installed = distributed = stamped(HEADER % b"2.0a" + page)
            if number < 8:
                distributed = stamped(HEADER % b"2.1a" + page)
            if number < 4:
                installed = installed.replace(page, page[:-1] + b"+")
            write(f"{root}/installed/page{number}.tpl", installed)
            write(f"{root}/tpl/page{number}.tpl", distributed)
            sums += b"%s  installed/page%d.tpl\n" % (hashlib.md5(installed).hexdigest().encode(),
                                                     number)
        write(root + "/sums", sums)
        self.list = self.root + "/installed/tmptlist.txt"

    def forget(self):
        if os.path.exists(self.list):
            os.remove(self.list)

    def ours(self):
        def check(_):
            listed = [line.partition(b"  ")[0] for line in read(self.list).splitlines()
                      if b"Current template set" in line]
            require(sorted(listed) == [b"%d. page%d.tpl" % (category, number)
                                       for category, numbers in ((1, range(4, 8)), (2, range(4)))
                                       for number in numbers], "the list of templates")
        # The list is not viewed, and the safe ones are not replaced.
        return Way([tool("classify_templates"), "installed"], folder=self.root,
                   answers="no\nno\n\n", prepare=self.forget, check=check)

    def diff(self):
        return Way(["diff", "-rq", "installed", "tpl"], folder=self.root, prepare=self.forget,
                   check=lambda printed: require(printed.count(b" differ\n") == 8, "diff"))

    def md5sum(self):
        return Way(["md5sum", "-c", "sums"], folder=self.root,
                   check=lambda printed: require(printed.count(b": OK") == self.count, "md5sum"))


def classifications(table):
    with Memory():
        whole = Classification("whole", 992)
        quarter = Classification("quarter", 248)
        name = "classify 992 templates of 22 KB"
        table.compare(name, whole.ours(), "diff -rq", whole.diff(), 1.25)
        table.compare(name, whole.ours(), "md5sum -c", whole.md5sum(), 1.00)
        table.grow(name, whole.ours(), quarter.ours())


def rows(table):
    stampings(table)
    classifications(table)
