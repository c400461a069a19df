import ctypes
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

import pytest
from world import ARTEFACTS, ROOT

CLONE_NEWNS = 0x20000


def pytest_configure():
    """Gives root's tests a view of their own, in which the wizard's built-in directories are empty."""
    if os.getuid() != 0:
        return
    if ctypes.CDLL(None, use_errno=True).unshare(CLONE_NEWNS) != 0:
        raise OSError(ctypes.get_errno(), "no private mounts")
    subprocess.run(["mount", "--make-rprivate", "/"], check=True)
    for directory in ("/home", "/var/spool"):
        if not ROOT.is_relative_to(directory):
            subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=0755", "none", directory], check=True)


@pytest.fixture
def place():
    """A scratch directory that every user may enter."""
    directory = Path(tempfile.mkdtemp(prefix="gxsetup-real."))
    directory.chmod(0o755)
    yield directory
    shutil.rmtree(directory)


@pytest.fixture
def memory(place):
    """A directory in memory where that may be had: a whole system takes long to write to a disk."""
    directory = place / "memory"
    directory.mkdir()
    mount = ["mount", "-t", "tmpfs", "-o", "mode=0755,size=1g", "gxsetup-real", directory]
    mounted = os.getuid() == 0 and subprocess.run(mount, capture_output=True, check=False).returncode == 0
    yield directory
    if mounted:
        subprocess.run(["umount", "--lazy", directory], check=True)


@pytest.fixture
def artefacts():
    """Where pictures and packages are kept for whoever wants to look at them."""
    ARTEFACTS.mkdir(parents=True, exist_ok=True)
    return ARTEFACTS


def pytest_terminal_summary(terminalreporter):
    """Names every step that was skipped, and what it lacks."""
    for report in terminalreporter.stats.get("skipped", []):
        reason = report.longrepr[2].removeprefix("Skipped: ")
        terminalreporter.write_line(f"skipped: {report.nodeid}: {reason}")
