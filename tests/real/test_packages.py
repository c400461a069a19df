"""The packages: well made, and installed, run and removed in a fresh Debian."""

import os
import platform
import shutil
import subprocess
import tarfile

import pytest
from debian import Debian, release_here
from world import DEFAULTS, ROOT, errors_in, need, run



@pytest.fixture(scope="module")
def packages(tmp_path_factory):
    need("dpkg-shlibdeps")
    directory = tmp_path_factory.mktemp("packages")
    run(ROOT / "tools" / "release", directory, platform.machine())
    return directory


def one(directory, pattern):
    found = list(directory.glob(pattern))
    assert len(found) == 1, found
    return found[0]


def test_each_package_has_a_synopsis_of_its_own(packages):
    descriptions = [run("dpkg-deb", "--field", package, "Description") for package in packages.glob("*.deb")]
    synopses = {description.splitlines()[0] for description in descriptions}
    assert len(synopses) == len(descriptions) > 1


def test_lintian_has_nothing_to_say(packages):
    lintian = need("lintian")
    for package in packages.glob("*.deb"):
        # Being run by root is all right: the packages are our own.
        said = run(
            lintian, "--allow-root", "--fail-on", "error,warning", "--display-level", ">=warning", package
        )
        assert said == "", package


def test_manual_pages_are_clean(packages):
    mandoc = need("mandoc")
    with tarfile.open(one(packages, "*.tar.gz")) as archive:
        archive.extractall(packages / "unpacked")
    manuals = one(packages / "unpacked", "*/share/man")
    pages = sorted(manuals.glob("*/*.gz"))
    assert [page.name for page in pages] == [
        "gxsetup-unattended.1.gz", "gxsetup.1.gz", "gxsetup.dat.5.gz",
    ]  # fmt: skip
    # The pages refer to each other, and mandoc looks for them among the installed ones.
    for page in pages:
        said = subprocess.run([mandoc, "-Tlint", page], capture_output=True, text=True, timeout=60)
        lines = (said.stdout + said.stderr).splitlines()
        assert [line for line in lines if "manual not found: Xr gxsetup" not in line] == []


def names_in(package):
    """The paths in a Debian package, below /usr."""
    listing = run("dpkg-deb", "--contents", package)
    return {line.split()[5].removeprefix("./usr/") for line in listing.splitlines()}


def test_the_packages_hold_what_they_should(packages):
    program = names_in(one(packages, "gxsetup_*.deb"))
    examples = names_in(one(packages, "gxsetup-examples_*_all.deb"))
    with tarfile.open(one(packages, "*.tar.gz")) as archive:
        together = {name.partition("/")[2] for name in archive.getnames()}
    for name in (
        "bin/gxsetup", "bin/gxsetup-unattended", "share/man/man1/gxsetup-unattended.1.gz", "share/gxsetup/vsetup.hlp", "share/man/man1/gxsetup.1.gz", "share/man/man5/gxsetup.dat.5.gz",
        "share/doc/gxsetup/copyright", "share/doc/gxsetup/changelog.gz", "share/doc/gxsetup/administrators.md",
    ):  # fmt: skip
        assert name in program & together
    assert "share/gxsetup/examples/stage" in examples & together
    assert not {name for name in program if "examples" in name}


def test_the_same_sources_give_the_same_bytes_elsewhere(packages, place):
    """Programs, packages and archives: all of them are in the sums."""
    sources = place / "of another name" / "sources"
    shutil.copytree(ROOT, sources, ignore=shutil.ignore_patterns("build", ".git", "__pycache__"))
    run(
        sources / "tools" / "release", place / "again", platform.machine(),
        env={"PATH": os.environ["PATH"], "TZ": "Asia/Kolkata", "LC_ALL": "C.UTF-8"}, umask=0o077, timeout=600,
    )  # fmt: skip
    assert (place / "again" / "SHA256SUMS").read_text() == (packages / "SHA256SUMS").read_text()
    run("sha256sum", "--check", "SHA256SUMS", cwd=packages)


def test_installs_runs_and_is_removed_in_a_fresh_debian(packages, memory, artefacts):
    if os.getuid() != 0:
        pytest.skip("a fresh Debian needs root")
    root = memory / "debian"
    debian = Debian(root, artefacts, release_here())
    for package in packages.glob("*.deb"):
        shutil.copy(package, root / "root")
    before = debian.files()

    debian.run("sh", "-c", "dpkg -i /root/*.deb")
    shown = debian.run("sh", "-c", "cd /srv && gxsetup -version", input="\n")
    assert shown == "gxsetup, version 3.0h\n\nPlease press enter to quit...\n"
    debian.run("/usr/share/gxsetup/examples/stage", "--site", "/srv/site", "kestrel", "/srv/kestrel-3.1")
    transcript = debian.run("sh", "-c", "cd /srv/kestrel-3.1 && ./gxsetup", input=DEFAULTS)
    assert "\nInstallation successful.\n" in transcript
    assert errors_in(transcript) == []
    assert debian.run("/srv/site/cgi-bin/kestrel.cgi", "-version") == "Version: KESTREL v3.1\n"

    debian.run("dpkg", "-P", "gxsetup-examples", "gxsetup")
    left = debian.files() - before
    assert {name for name in left if not name.startswith(("srv/", "var/lib/dpkg", "var/log/"))} == set()
