"""Installs on file systems that share blocks between files."""

import os
import random
import shutil
import subprocess

import pytest
from world import Distribution, Site, need, run

MEGABYTE = 1 << 20
IMAGE_SIZE = 40 * MEGABYTE


@pytest.fixture(params=["xfs", "btrfs"])
def disk(request, memory):
    """A new disk of 320 MB."""
    if os.getuid() != 0:
        pytest.skip("only root may mount a disk")
    image, directory = memory / "image", memory / "disk"
    image.touch()
    os.truncate(image, 320 * MEGABYTE)
    run(need(f"mkfs.{request.param}"), "-q", image)
    directory.mkdir()
    mounted = subprocess.run(["mount", "-o", "loop", image, directory], capture_output=True, text=True)
    if mounted.returncode != 0:
        pytest.skip(mounted.stderr.strip())
    yield directory
    run("umount", directory)


@pytest.fixture
def site(disk):
    return Site(disk, "kestrel")


def add_image(distribution):
    content = random.Random(1).randbytes(IMAGE_SIZE)
    (distribution.directory / "tpl" / "large.gif").write_bytes(content)
    return content


def free_bytes(directory):
    os.sync()
    state = os.statvfs(directory)
    return state.f_bavail * state.f_frsize


def installed_images(site):
    return [path.read_bytes() for path in site.directory.rglob("large.gif")]


def test_an_install_shares_the_blocks_of_its_distribution(site, disk):
    distribution = site.stage("3.1")
    content = add_image(distribution)
    before = free_bytes(disk)
    assert "Installation successful." in distribution.run_wizard()
    assert installed_images(site) == [content] * 3  # among images, templates and originals
    assert before - free_bytes(disk) < IMAGE_SIZE // 2


def test_a_disk_that_fills_up_keeps_the_part_that_was_written(site, disk, memory):
    distribution = Distribution(shutil.move(site.stage("3.1").directory, memory / "distribution"))
    content = add_image(distribution)
    with open(disk / "others", "wb") as others:
        os.posix_fallocate(others.fileno(), 0, free_bytes(disk) - IMAGE_SIZE // 2)
    transcript = distribution.run_wizard()
    assert f'Error: Problem writing "{site.directory}/' in transcript
    assert "No space left on device" in transcript
    assert "Installation unsuccessful" in transcript
    part = max(installed_images(site), key=len)
    assert 0 < len(part) < len(content)
    assert content.startswith(part)
