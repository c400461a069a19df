#!/usr/bin/env python3
"""The flows: installs and upgrades against a script of cp, chmod and chown, the classification of
templates against md5sum and diff, removals against rm, the start against true.

    cmake --preset bench && cmake --build --preset bench && bench/flows.py build/bench

Installs and upgrades give files away, which only root can.
"""

import os
import random
import shutil
import subprocess
import sys

from pairs import Memory, Way, compare, print_title, require, run

BUILD = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "build/bench")
PROGRAM = BUILD + "/gxsetup"
RANDOM = random.Random(1)

INSTALL = "\n" * 10 + "no\nno\n\n"
UPGRADE_REPLACING = "2\nyes\n" + "\n" * 6 + "no\nno\n\n"
# The list of the templates is not viewed, and enter goes on with the upgrade.
UPGRADE_KEEPING = "2\nno\n" + "\n" * 6 + "no\n\nno\nno\n\n"


def write(path, content, mode=0o644):
    os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    os.chmod(path, mode)


def make_distribution():
    """690 templates of 4 to 40 KB, 300 images of 100 KB and what goes with them, in dist/. A search
    gives 1000 names, and kestrel's templates and images share a directory."""
    for number in range(690):
        write(f"dist/tpl/page{number}.tpl", RANDOM.randbytes(RANDOM.randint(4 << 10, 40 << 10)))
    for number in range(300):
        write(f"dist/tpl/image{number}.gif", RANDOM.randbytes(100 << 10))
    write("dist/kestrel.cgi", b"#!/bin/sh\necho 'Version: Kestrel v3.1'\n", 0o755)
    write("dist/kestrel.ini", b"key value\n")
    here = os.getcwd()
    write("dist/gxdflt.dat", f"cgi_path {here}/site/cgi-bin\ntemplates {here}/site/spool\n"
          f"vlimg_dir {here}/site/html\n".encode())


def make_site(site):
    shutil.rmtree(site, ignore_errors=True)
    for name in ("cgi-bin", "html", "spool"):
        os.makedirs(f"{site}/{name}")


def wizard(answers):
    return lambda: subprocess.run([PROGRAM], input=answers.encode(), cwd="dist",
                                  stdout=subprocess.PIPE, check=True).stdout


def forget():
    for name in ("gxsetup.dat", "gxsetup.log", "gxsetup1.log", "gxsetup2.log"):
        if os.path.exists("dist/" + name):
            os.remove("dist/" + name)


def holds_product(site):
    require(len(os.listdir(f"{site}/html")) == 300, "images")
    with open("dist/tpl/page7.tpl", "rb") as one, open(f"{site}/spool/page7.tpl", "rb") as other:
        require(one.read() == other.read(), "a template")


def holds_given_product(site):
    holds_product(site)
    require(os.stat(f"{site}/spool/page7.tpl").st_mode & 0o777 == 0o660, "the mode")


def script(lines):
    return lambda: run(["sh", "-c", "set -e\n" + lines])


COPY_ALL = """cp -r dist/. copy/spool
cp dist/tpl/* copy/spool
cp dist/tpl/*.gif copy/html
cp dist/kestrel.cgi copy/cgi-bin
"""
COPY_NEW = """cp dist/tpl/* copy/spool
cp dist/tpl/*.gif copy/html
cp dist/kestrel.cgi copy/cgi-bin
"""
GIVE_AWAY = "chmod -R ug=rwX,o= copy/spool copy/html\nchown -R nobody copy\n"


def installs():
    with Memory():
        make_distribution()

        def fresh_site():
            forget()
            make_site("site")

        ours = Way(fresh_site, wizard(INSTALL), lambda _: holds_given_product("site"))
        compare("install kestrel, against a script", ours,
                Way(lambda: make_site("copy"), script(COPY_ALL + GIVE_AWAY),
                    lambda _: holds_given_product("copy")), "1.00")
        compare("install kestrel, against cp -r of the result", ours,
                Way(lambda: shutil.rmtree("again", ignore_errors=True),
                    lambda: run(["cp", "-r", "site", "again"]), lambda _: holds_product("again")),
                "1.25")
        for name, answers in (("replacing", UPGRADE_REPLACING), ("keeping", UPGRADE_KEEPING)):
            lines = COPY_NEW * 2 if name == "replacing" else COPY_NEW.replace("cp ", "cp -n ")
            compare(f"upgrade kestrel, {name}, against a script",
                    Way(forget, wizard(answers), lambda _: holds_given_product("site")),
                    Way(lambda: None, script(lines + GIVE_AWAY), lambda _: holds_given_product("copy")),
                    "1.00")


def checksum(content):
    values = content.translate(bytes(0 if byte in b"\r\n" else byte for byte in range(256)))
    total = sum(sum(values[first::3]) << first for first in range(3)) % (1 << 32)
    return total - (1 << 32) if total >= 1 << 31 else total


def stamped(content):
    content = b"||header: modified=false tpl_set=kst_s2 tpl_version=2.0a||\n" + content
    return content + b"\n||checksum=%d||\n" % checksum(content)


def classify(count):
    """The templates are all of one version, so that nothing is asked."""
    for number in range(count):
        content = stamped(RANDOM.randbytes(22 << 10).replace(b"|", b"/"))
        write(f"installed/page{number}.tpl", content)
        write(f"tpl/page{number}.tpl", content)
    run(["sh", "-c", "md5sum installed/* >sums"])
    ours = Way(lambda: None, lambda: run([BUILD + "/bench/classify_templates", "installed"]),
               lambda result: require(result == b"", "nothing to upgrade"))
    compare(f"classify {count} templates, against md5sum -c", ours,
            Way(lambda: None, lambda: run(["md5sum", "-c", "sums"]),
                lambda result: require(result.count(b": OK") == count, "md5sum")), "1.00")
    return compare(f"classify {count} templates, against diff -rq", ours,
                   Way(lambda: None, lambda: run(["diff", "-rq", "installed", "tpl"]),
                       lambda result: require(result == b"", "diff")), "1.25")


def classifications():
    with Memory():
        few = classify(248)
    with Memory():
        many = classify(992)
    print(f"classify, four times as many: {many / few:.2f} (limit 4.2)")


def make_tree(root):
    shutil.rmtree(root, ignore_errors=True)
    path = root
    for _ in range(130):
        os.mkdir(path)
        for number in range(38):
            with open(f"{path}/file{number}.tpl", "wb"):
                pass
        path += "/d"


def removals():
    with Memory():
        def is_gone(root):
            require(not os.path.exists(root) or os.listdir(root) == [], "removal")

        compare("remove 5,000 files in 130 nested directories",
                Way(lambda: make_tree("ours"),
                    lambda: run([BUILD + "/bench/remove_files", "ours"]),
                    lambda _: is_gone("ours")),
                Way(lambda: make_tree("theirs"), lambda: run(["rm", "-r", "theirs"]),
                    lambda _: is_gone("theirs")), "1.20")


def starts():
    def many(command, answers):
        def work():
            for _ in range(50):
                run(command, answers)
        return work

    def nothing(_):
        pass

    for lines in (0, 200, 2000):
        with Memory():
            if lines:
                write("gxsetup.dat", b"prod_name plover\n"
                      + b"".join(b"name%d value %d\n" % (at, at) for at in range(lines)))
            answers = "1.0\n4\n\n" if lines else "plover\n1.0\n4\n\n"
            compare(f"50 starts, menu, quit; gxsetup.dat of {lines} lines, against true",
                    Way(lambda: None, many([PROGRAM], answers), nothing),
                    Way(lambda: None, many(["true"], ""), nothing), "4.00" if lines else "3.00")


def main():
    print_title("the flows")
    if os.getuid() == 0:
        installs()
    else:
        print("installs and upgrades: skipped, only root can give files away")
    classifications()
    removals()
    starts()


if __name__ == "__main__":
    main()
