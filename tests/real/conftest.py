import shutil
import tempfile
from pathlib import Path

import pytest
from world import ARTEFACTS


@pytest.fixture
def place():
    """A scratch directory that every user may enter."""
    directory = Path(tempfile.mkdtemp(prefix="gxsetup-real."))
    directory.chmod(0o755)
    yield directory
    shutil.rmtree(directory)


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
