"""Fresh systems in directories, made of Debian's packages by debootstrap."""

import re
import subprocess
from pathlib import Path

import pytest
from world import need, run


def release_here():
    """The name of this machine's Debian."""
    return re.search("VERSION_CODENAME=(.*)", Path("/etc/os-release").read_text()).group(1)


class Debian:
    """A fresh system in a directory. What debootstrap made is kept packed in build/real."""

    def __init__(self, directory, artefacts, suite, *packages):
        self.directory = directory
        directory.mkdir()
        packed = artefacts / f"{suite}.tar"
        if packed.exists():
            run("tar", "-C", directory, "-xf", packed)
        else:
            self.bootstrap(suite, packages)
            run("tar", "-C", directory, "-cf", packed, ".")

    def bootstrap(self, suite, packages):
        debootstrap = need("debootstrap")
        sites = run("apt-get", "indextargets", "--format", "$(SITE)").split()
        options = ["--variant=minbase", *(f"--include={name}" for name in packages)]
        command = [debootstrap, *options, suite, str(self.directory), *sites[:1]]
        made = subprocess.run(command, capture_output=True, text=True, timeout=600)
        if made.returncode != 0:
            why = (made.stdout + made.stderr).strip().splitlines()[-1]
            pytest.skip(f"debootstrap cannot have the packages of {suite}: {why}")

    def run(self, *command, **options):
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8", "HOME": "/root"}
        return run("chroot", self.directory, *command, env=environment, **options)

    def files(self):
        return {str(path.relative_to(self.directory)) for path in self.directory.rglob("*")}
