"""Rows around the wizard's flows: installs, upgrades, removals, and the start."""

import os
import pwd
import random
import shutil

from pairs import PROGRAM, Memory, Way, read, require, script, tool, write

OWNER = "nobody"


class Distribution:
    """A distribution in dist/, the site of the wizard and that of the script."""

    product = ""

    def __init__(self, root):
        self.root, self.random = os.path.abspath(root), random.Random(1)
        write(f"{root}/dist/{self.product}.cgi",
              b"#!/bin/sh\necho 'Version: %s v3.1'\n" % self.product.encode(), 0o755)
        write(f"{root}/dist/{self.product}.ini", b"key value\n")
        write(f"{root}/dist/gxdflt.dat", f"cgi_path {self.root}/ours/cgi-bin\n"
              f"templates {self.root}/ours/spool\nvlimg_dir {self.root}/ours/html\n".encode())

    def add(self, name, lowest, highest):
        size = self.random.randint(lowest << 10, highest << 10)
        write(f"{self.root}/dist/{name}", self.random.randbytes(size))

    def add_template(self, name):
        self.add(name, 4, 40)

    def add_image(self, name):
        self.add(name, 100, 100)

    def source(self, name):
        return read(f"{self.root}/dist/{name}")

    def make_site(self, site):
        shutil.rmtree(f"{self.root}/{site}", ignore_errors=True)
        for name in ("cgi-bin", "html", "spool"):
            os.makedirs(f"{self.root}/{site}/{name}")

    def forget(self):
        """The distribution as it was before the wizard ran in it."""
        for name in ("gxsetup.dat", "gxsetup.log", "gxsetup1.log", "gxsetup2.log"):
            if os.path.exists(f"{self.root}/dist/{name}"):
                os.remove(f"{self.root}/dist/{name}")

    def require_site(self, site, is_given=True):
        """Every file that was to be installed is there, with its bytes, mode and owner."""
        for name, content in self.installed():
            path = f"{self.root}/{site}/{name}"
            require(os.path.exists(path) and read(path) == content, path)
            status = os.stat(path)
            is_owned = status.st_uid == pwd.getpwnam(OWNER).pw_uid
            require(not is_given or (is_owned and status.st_mode & 0o777 == 0o660), "mode of " + path)

    def wizard(self, answers, **how):
        return Way([PROGRAM], answers=answers, folder=self.root + "/dist", **how)

    def install(self):
        def fresh():
            self.forget()
            self.make_site("ours")
        return self.wizard(self.install_answers(), prepare=fresh,
                           check=lambda _: self.require_site("ours"))

    def install_by_script(self):
        return script(self.install_script() + GIVE_AWAY, folder=self.root,
                      prepare=lambda: self.make_site("theirs"),
                      check=lambda _: self.require_site("theirs"))

    def copy_of_result(self):
        return Way(["cp", "-r", "ours", "again"], folder=self.root,
                   prepare=lambda: shutil.rmtree(self.root + "/again", ignore_errors=True),
                   check=lambda _: self.require_site("again", is_given=False))


GIVE_AWAY = f"chmod -R ug=rwX,o= theirs/spool theirs/html\nchown -R {OWNER} theirs\n"


class Kestrel(Distribution):
    """Templates and images share a directory, of which a search gives 1000 names."""

    product = "kestrel"

    def __init__(self, root, templates, images):
        super().__init__(root)
        self.templates = [f"page{number}.tpl" for number in range(templates)]
        self.images = [f"image{number}.gif" for number in range(images)]
        for name in self.templates:
            self.add_template("tpl/" + name)
        for name in self.images:
            self.add_image("tpl/" + name)

    def installed(self):
        for name in self.templates + self.images:
            yield "spool/" + name, self.source("tpl/" + name)
        for name in self.images:
            yield "html/" + name, self.source("tpl/" + name)

    def install_answers(self):
        return "\n" * 10 + "no\nno\n\n"

    def install_script(self):
        return "cp -r dist/. theirs/spool\n" + COPY_PRODUCT

    def upgraded(self, site, is_replaced):
        """One of the templates that are installed was edited."""
        edited = f"{self.root}/{site}/spool/{self.templates[0]}"

        def prepare():
            if site == "ours":
                self.forget()
            write(edited, b"edited", 0o660)

        def check(_):
            require(is_replaced or read(edited) == b"edited", "the edited template")
            if not is_replaced:
                write(edited, self.source("tpl/" + self.templates[0]), 0o660)
            self.require_site(site)
        return {"prepare": prepare, "check": check}

    def upgrade(self, is_replaced):
        # Kept, the list of the templates is not viewed, and enter goes on with the upgrade.
        answers = "2\nyes\n" + "\n" * 6 if is_replaced else "2\nno\n" + "\n" * 6 + "no\n\n"
        return self.wizard(answers + "no\nno\n\n", **self.upgraded("ours", is_replaced))

    def upgrade_by_script(self, is_replaced):
        lines = COPY_PRODUCT * 2 if is_replaced else COPY_PRODUCT.replace("cp ", "cp -n ")
        return script(lines + GIVE_AWAY, folder=self.root, **self.upgraded("theirs", is_replaced))


COPY_PRODUCT = """cp dist/tpl/* theirs/spool
cp dist/tpl/*.gif theirs/html
cp dist/kestrel.cgi theirs/cgi-bin
"""


class Tanager(Distribution):
    """Template sets, each installed with the files that are common to them, and their images."""

    product = "tanager"

    def __init__(self, root, sets):
        super().__init__(root)
        self.sets = [f"set{number}" for number in range(sets)]
        self.pages = [f"page{number}.tpl" for number in range(100)]
        self.common = [f"common{number}.tpl" for number in range(50)]
        for name in self.common:
            self.add_template("tpl/common/" + name)
        self.add_image("img/common/back.gif")
        for name in self.sets:
            for page in self.pages:
                self.add_template(f"tpl/{name}/{page}")
            self.add_image(f"img/{name}/logo.gif")
        write(f"{root}/dist/manuals/index.html", b"manual\n")

    def installed(self):
        for name in self.sets:
            for page in self.pages:
                yield f"spool/{name}/{page}", self.source(f"tpl/{name}/{page}")
            for page in self.common:
                yield f"spool/{name}/{page}", self.source("tpl/common/" + page)
            for images in ("html", "spool/img"):
                yield f"{images}/{name}/logo.gif", self.source(f"img/{name}/logo.gif")
                yield f"{images}/{name}/back.gif", self.source("img/common/back.gif")
        yield "spool/manuals/index.html", self.source("manuals/index.html")

    def install_answers(self):
        # The images directory of this product is no matter of gxdflt.dat.
        return "1\n\n\n\n\n" + self.root + "/ours/html\n" + "\n" * 7 + "no\nno\n\n"

    def install_script(self):
        lines = "mkdir theirs/spool/img\n"
        for name in self.sets:
            for source, target in (("tpl", "spool"), ("img", "html"), ("img", "spool/img")):
                lines += (f"cp -r dist/{source}/{name} theirs/{target}\n"
                          f"cp dist/{source}/common/* theirs/{target}/{name}\n")
        return lines + "cp dist/tanager.cgi theirs/cgi-bin\ncp -r dist/manuals theirs/spool\n"


def installs(table):
    for name, make, limit in (
            ("install kestrel", lambda root, part: Kestrel(root, 690 // part, 300 // part), 1.25),
            ("install tanager", lambda root, part: Tanager(root, 8 // part), None)):
        with Memory():
            whole, quarter = make("whole", 1), make("quarter", 4)
            table.compare(name, whole.install(), "a script", whole.install_by_script(), 1.00)
            table.compare(name, whole.install(), "cp -r of the result", whole.copy_of_result(),
                          limit)
            table.grow(name, whole.install(), quarter.install())


def upgrades(table):
    with Memory():
        whole, quarter = Kestrel("whole", 690, 300), Kestrel("quarter", 172, 75)
        for way in (whole.install(), whole.install_by_script(), quarter.install()):
            way.measure()
        for name, is_replaced in (("upgrade kestrel, replacing", True),
                                  ("upgrade kestrel, keeping", False)):
            table.compare(name, whole.upgrade(is_replaced), "a script",
                          whole.upgrade_by_script(is_replaced), 1.00)
            table.compare(name, whole.upgrade(is_replaced), "cp -r of the result",
                          whole.copy_of_result())
            table.grow(name, whole.upgrade(is_replaced), quarter.upgrade(is_replaced))


def removals(table):
    """Directories in one another: a search gives 1000 names, and a path has 511 characters."""
    def make_tree(root, depth):
        shutil.rmtree(root, ignore_errors=True)
        path = root
        for _ in range(depth):
            for number in range(50):
                write(f"{path}/file{number}.tpl", b"")
            path += "/d"

    def removal(command, root, depth=100):
        # The wizard leaves the directory itself.
        def is_gone(_):
            require(not os.path.exists(root) or os.listdir(root) == [], "removal")
        return Way([*command, root], prepare=lambda: make_tree(root, depth), check=is_gone)

    with Memory():
        name = "remove 5,000 files in 100 directories"
        ours = removal([tool("remove_files")], "ours")
        table.compare(name, ours, "rm -r", removal(["rm", "-r"], "theirs"), 1.20)
        table.grow(name, ours, removal([tool("remove_files")], "quarter", 25))


class Start:
    """Starts in a distribution, or in a directory that has no product's program."""

    def __init__(self, root, lines, has_program=False):
        self.root = root
        self.answers = "4\n\n" if has_program else "1.0\n4\n\n"
        os.mkdir(root)
        if has_program:
            write(root + "/plover.cgi", b"#!/bin/sh\necho 'Version: Plover v3.1'\n", 0o755)
        elif not lines:
            self.answers = "plover\n" + self.answers
        if lines:
            write(root + "/gxsetup.dat", b"prod_name plover\n"
                  + b"".join(b"name%d value %d\n" % (at, at) for at in range(1, lines)))

    def ours(self):
        def check(printed):
            require(b"to plover, version" in printed and b"\nGoodbye\n" in printed, "menu")
        return Way([PROGRAM], folder=self.root, answers=self.answers, times=50, check=check)

    def probe(self):
        return Way(["./plover.cgi", "-version"], folder=self.root, times=50,
                   check=lambda printed: require(printed == b"Version: Plover v3.1\n", "version"))


def starts(table):
    with Memory():
        nothing_done = Way(["true"], times=50)
        for lines, limit in ((0, 3.00), (200, 4.00), (2000, 4.00)):
            name = f"start, menu, quit; gxsetup.dat of {lines} lines"
            start = Start(f"alone{lines}", lines)
            table.compare(name, start.ours(), "true", nothing_done, limit)
            with_program = Start(f"product{lines}", lines, has_program=True)
            table.compare(name, with_program.ours(), "the version probe", with_program.probe())
            if lines:
                quarter = Start(f"quarter{lines}", lines // 4)
                table.grow(name, start.ours(), quarter.ours())


def rows(table):
    if os.getuid() == 0:
        installs(table)
        upgrades(table)
    else:
        print("installs and upgrades: skipped, only root can give files away")
    removals(table)
    starts(table)
