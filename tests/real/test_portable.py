"""The portable programs where they have to run: roots that hold nothing, older systems, another C
library, another processor, kernels without the newer calls. Everywhere they show and leave the very
same as the program of the Debian package does here.
"""

import hashlib
import os
import platform
import re
import shutil
import subprocess
from pathlib import Path

import pytest
from debian import Debian
from dialogue import converse
from world import GONE, KEEP, ROOT, Site, errors_in, need, removal, run

NATIVE = platform.machine()
LARGEST = 1_600_000

# Calls that Linux 3.2 does not have, by the version that brought them. A kernel without them refuses
# them all with this error; the programs and their C library then do with older ones.
NEWER_CALLS = {
    "renameat2": 3.15, "getrandom": 3.17, "memfd_create": 3.17, "execveat": 3.19, "copy_file_range": 4.5,
    "statx": 4.11, "rseq": 4.18, "clone3": 5.3, "openat2": 5.6, "faccessat2": 5.8, "close_range": 5.9,
}  # fmt: skip

# What else the programs ask of a kernel. A name that is missing here belongs there, if it is newer.
OLDER_CALLS = set(
    """access arch_prctl brk chdir chmod chown clock_gettime clone close dup dup2 execve exit exit_group fadvise64 fchmod
    fchmodat fchown fchownat fcntl fdatasync fstat fstatfs fsync ftruncate futex getcwd getdents getdents64
    getegid geteuid getgid getpid getrlimit gettid gettimeofday getuid ioctl kill link linkat lseek lstat
    mkdir mkdirat mmap mprotect mremap munmap nanosleep newfstatat open openat pipe2 poll pread64 prlimit64
    pwrite64 read readlink readlinkat rename renameat restart_syscall rmdir rt_sigaction rt_sigprocmask
    rt_sigreturn sendfile set_robust_list set_tid_address stat symlink symlinkat sysinfo tgkill umask uname
    unlink unlinkat utimensat vfork wait4 write writev faccessat""".split()
)


def build(preset):
    """The build directory of a preset, built."""
    run("cmake", "--preset", preset, cwd=ROOT)
    run("cmake", "--build", "--preset", preset, cwd=ROOT, timeout=600)
    return ROOT / "build" / preset


def programs_in(directory):
    found = [path for path in sorted(directory.glob("gxsetup*")) if path.is_file() and os.access(path, os.X_OK)]
    assert found, directory
    return found


@pytest.fixture(scope="module", params=["portable", "portable-aarch64"])
def portable(request):
    if request.param == "portable-aarch64":
        need("aarch64-linux-gnu-g++")
    return build(request.param)


def test_the_programs_need_nothing_but_a_kernel(portable):
    for program in programs_in(portable):
        shown = run(need("readelf"), "-ldnW", program)
        assert "INTERP" not in shown and "NEEDED" not in shown, shown
        oldest = "3.2.0" if portable.name == "portable" else "3.7.0"  # the first for 64-bit ARM
        assert f"ABI: {oldest}" in shown, shown
        assert program.stat().st_size <= LARGEST, program


def test_the_programs_hold_nothing_that_loads_libraries(portable):
    for program in programs_in(portable):
        content = program.read_bytes()
        for words in (b"invalid mode for dlopen()", b"libnss", b"nsswitch.conf"):
            assert words not in content, (program, words)


def test_the_programs_are_stripped_and_hardened(portable):
    for program in programs_in(portable):
        shown = run(need("readelf"), "-ldSW", program)
        assert ".symtab" not in shown
        assert re.search(r"Flags: NOW PIE", shown), shown
        assert "GNU_RELRO" in shown
        assert re.search(r"GNU_STACK .* RW  ", shown), "the stack can be executed"
        content = program.read_bytes()
        assert b"stack smashing detected" in content
        assert b"buffer overflow detected" in content


class Sample:
    """Two versions of the sample kestrel, laid out in a root as often as they are needed."""

    def __init__(self, place, program_of_product):
        self.place = place
        site = Site(place / "world", "kestrel")
        for version in ("3.1", "3.2"):
            distribution = site.stage(version).directory
            program_of_product(version, distribution / "kestrel.cgi")
        self.removal = removal(site)
        (place / "world").rename(place / "pristine")

    def run(self, root, program, words=("./gxsetup",), prepare=lambda world: None):
        """Installs, upgrades and removes in the root. Returns all that was shown and left."""
        world = Path(f"{root}/{self.place}/world")
        shutil.rmtree(world, ignore_errors=True)
        shutil.copytree(self.place / "pristine", world, symlinks=True)
        os.chmod(world, 0o755)
        for version in ("3.1", "3.2"):
            shutil.copy(program, world / f"kestrel-{version}" / "gxsetup")
        prepare(world)
        seen = []
        for version, replies in (("3.1", {}), ("3.2", KEEP), ("3.2", self.removal)):
            seen.append(self.run_wizard(root, version, replies, words))
            seen.append(tree(world / "site"))
        return seen

    def run_wizard(self, root, version, replies, words):
        def enter():
            if root != "/":
                os.chroot(root)
            os.chdir(self.place / "world" / f"kestrel-{version}")

        return converse(None, replies, *words[1:], program=words[0], preexec_fn=enter, env={})


def tree(directory):
    """Everything below a directory: mode, owner, name, and content where it is always the same."""
    lines = []
    for path in sorted(directory.rglob("*")):
        entry = path.lstat()
        content = ""
        if path.is_file() and path.name != "gxsetup" and path.suffix != ".log":
            content = hashlib.sha256(path.read_bytes()).hexdigest()
        name = path.relative_to(directory)
        lines.append(f"{entry.st_mode:o} {entry.st_uid}:{entry.st_gid} {name} {content}")
    return "\n".join(lines)


def compiled(*compiler):
    """Makes the product's program of a compiler: a root without a shell runs no script."""

    def make(version, target):
        source = f'#include <stdio.h>\nint main(void) {{ puts("Version: KESTREL v{version}"); }}\n'
        target.unlink()
        run(*compiler, "-x", "c", "-o", target, "-", input=source)
        target.chmod(0o755)

    return make


@pytest.fixture
def reference(place):
    """A sample, and what the program of the Debian package shows and leaves."""
    if os.getuid() != 0:
        pytest.skip("a root of its own needs root")
    sample = Sample(place, compiled("gcc", "-static"))
    seen = sample.run("/", ROOT / "build" / "release" / "gxsetup")
    assert "\nInstallation successful.\n" in seen[0] and errors_in(seen[0]) == []
    assert "\nUpgrade successful.\n" in seen[2] and errors_in(seen[2]) == GONE
    assert "\nremove successful\n" in seen[4] and "kestrel.cgi" not in seen[5]
    return sample, seen


@pytest.fixture(scope="module")
def native():
    return build("portable") / "gxsetup"


def bare_root(directory):
    """A root with nothing but the names of root and nobody."""
    (directory / "etc").mkdir(parents=True)
    known = Path("/etc/passwd").read_text().splitlines(keepends=True)
    names = [line for line in known if line.startswith(("root:", "nobody:"))]
    (directory / "etc" / "passwd").write_text("".join(names))
    return directory


def test_runs_in_an_empty_root(place, reference, native):
    sample, seen = reference
    assert sample.run(bare_root(place / "root"), native) == seen


def test_runs_on_a_musl_system(place, native):
    """The product's program needs the C library of that system, the wizard does not."""
    if os.getuid() != 0:
        pytest.skip("a root of its own needs root")
    loader = Path(f"/lib/ld-musl-{NATIVE}.so.1")
    sample = Sample(place, compiled(need("musl-gcc")))
    seen = sample.run("/", ROOT / "build" / "release" / "gxsetup")
    root = bare_root(place / "root")
    (root / "lib").mkdir()
    shutil.copy(loader.resolve(), root / "lib" / loader.name)
    assert sample.run(root, native) == seen
    assert "\nUpgrade successful.\n" in seen[2]


# The oldest systems that there may be packages for, and the C library that they have.
@pytest.mark.parametrize("suite", ["bullseye", "jammy"], ids=["Debian 11", "Ubuntu 22.04"])
def test_runs_on_an_old_system(memory, artefacts, reference, native, suite):
    sample, seen = reference
    root = memory / "root"
    shown = Debian(root, artefacts, suite, "libnss-extrausers").run("getconf", "GNU_LIBC_VERSION")
    assert float(shown.split()[1]) < 2.36, shown
    assert sample.run(root, native) == seen

    # A user whom only a module of that system knows.
    switch = root / "etc" / "nsswitch.conf"
    switch.write_text(re.sub(r"^(passwd:.*)$", r"\1 extrausers", switch.read_text(), flags=re.M))
    accounts = root / "etc" / "passwd"
    accounts.write_text(re.sub(r"^nobody:.*\n", "", accounts.read_text(), flags=re.M))
    extra = root / "var" / "lib" / "extrausers"
    extra.mkdir(parents=True, exist_ok=True)
    (extra / "passwd").write_text("nobody:x:4141:4142::/:/bin/false\n")
    again = sample.run(root, native)
    assert again[0] == seen[0]
    assert " 4141:4142 cgi-bin/kestrel.cgi " in again[1], again[1]


def test_runs_on_64_bit_arm(place):
    need("aarch64-linux-gnu-g++")
    emulator = need("qemu-aarch64")
    sample = Sample(place, compiled("gcc"))
    seen = sample.run("/", ROOT / "build" / "release" / "gxsetup")
    program = build("portable-aarch64") / "gxsetup"
    assert sample.run("/", program, [emulator, "./gxsetup"]) == seen
    assert "\nUpgrade successful.\n" in seen[2]


def calls_in(trace):
    """The names of the calls in a trace, and those among them that were refused."""
    found = re.findall(r"^(\w+)\(.*?(\(INJECTED\))?$", trace.read_text(), re.M)
    return {name for name, _ in found}, {name for name, refused in found if refused}


def test_needs_no_call_that_is_newer_than_linux_3_2(place, reference, native):
    sample, seen = reference
    if NATIVE != "x86_64":
        pytest.skip("the calls are known by name for x86-64")
    trace = place / "trace"
    refused = ",".join(NEWER_CALLS)
    words = [need("strace"), "-qq", "-A", "-o", trace, "-e", f"inject={refused}:error=ENOSYS", "./gxsetup"]
    assert sample.run("/", native, words) == seen
    made, injected = calls_in(trace)
    assert injected, "no call was refused"
    assert made <= OLDER_CALLS | NEWER_CALLS.keys(), made - OLDER_CALLS - NEWER_CALLS.keys()
    print("tried and done without:", ", ".join(sorted(injected)))
