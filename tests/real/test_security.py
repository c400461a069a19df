"""What the page on security says that the wizard defends, tried as the web server's user."""

import os
import shutil

import pytest
from dialogue import converse
from terminal import Terminal
from world import KEEP, Site, run

REPLACE = {"replace the old": "yes", **KEEP}


@pytest.fixture
def site(place):
    """kestrel, installed by root; its files belong to nobody."""
    if os.getuid() != 0:
        pytest.skip("only root has another user's files to fear")
    site = Site(place, "kestrel")
    site.stage("3.1").run_wizard()
    site.new = site.stage("3.2").directory
    site.templates = site.directory / "spool" / "kestrel"
    return site


@pytest.fixture
def secret(place):
    """A file of root's that nobody else may read."""
    file = place / "secret"
    file.write_text("root's\n")
    file.chmod(0o600)
    return file


def is_untouched(secret):
    status = secret.stat()
    return (secret.read_text(), status.st_uid, status.st_mode & 0o777) == ("root's\n", 0, 0o600)


def as_nobody(command):
    return run("setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", "sh", "-ec", command)


def is_upgraded(transcript):
    return {"Upgrade successful.", "upgrade successful"} <= set(transcript.splitlines())


def test_planted_links_are_replaced(site, secret):
    planted = [site.templates / name for name in ("menu.tpl", "gxsetup.log", "gxsetup.dat", "kestrel.new")]
    for file in planted:
        as_nobody(f"ln -sf {secret} {file}")
    assert is_upgraded(converse(site.new, {"What do you want to do": "2", **REPLACE}))
    assert is_untouched(secret)
    for file in planted:
        assert file.is_file() and not file.is_symlink(), file
    assert (site.templates / "menu.tpl").read_bytes() == (site.new / "tpl" / "menu.tpl").read_bytes()


def test_a_second_name_of_a_file_is_not_written_through(site, secret):
    template = site.templates / "menu.tpl"
    template.unlink()
    os.link(secret, template)
    assert is_upgraded(converse(site.new, REPLACE))
    assert is_untouched(secret)
    assert template.read_bytes() == (site.new / "tpl" / "menu.tpl").read_bytes()


def test_a_link_in_place_of_a_directory_is_not_entered(site, place):
    mine = place / "mine"
    mine.mkdir(mode=0o700)
    as_nobody(
        f"mv {site.templates}/originals {site.templates}/old && ln -s {mine} {site.templates}/originals"
    )
    shown = converse(site.new, {"replace the old": "yes"})
    assert "upgrade unsuccessful" in shown.splitlines()
    assert list(mine.iterdir()) == []
    assert (mine.stat().st_uid, mine.stat().st_mode & 0o777) == (0, 0o700)


def test_a_removal_does_not_follow_links(site, place):
    mine = place / "mine"
    mine.mkdir()
    (mine / "file").write_text("root's\n")
    as_nobody(f"ln -s {mine} {site.templates}/more")
    converse(site.new, {"What do you want to do": "3"})
    assert (mine / "file").read_text() == "root's\n"


def test_saved_answers_are_weighed(site, place):
    mine = place / "mine"
    mine.mkdir()
    as_nobody(
        f"printf 'prod_name ../x\\ncgi_name */../y\\ninstall_dir {mine}\\n' >>{site.templates}/gxsetup.dat"
    )
    shown = converse(site.new, REPLACE)
    assert " 1 Install kestrel, version 3.2\n" in shown
    assert is_upgraded(shown)
    assert list(mine.iterdir()) == []
    log = (site.new / "gxsetup.log").read_text()
    for name in ("prod_name", "cgi_name", "install_dir"):
        assert name in log, log


def test_nothing_replaces_a_directory_that_was_typed(site, place):
    other = place / "scripts"
    other.mkdir()
    settings = site.directory / "cgi-bin" / "kestrel.ini"
    as_nobody(f"printf 'cgi_path {place}\\n' >>{settings}")
    shown = converse(site.new, {"Where are the cgi files": str(other), **REPLACE})
    assert f"webserver directory: {other}\n" in shown


@pytest.mark.parametrize("owner", ["root", "nobody"])
def test_the_version_is_asked_as_the_owner_of_the_program(site, place, owner):
    answers = place / "who"
    answers.mkdir()
    answers.chmod(0o777)
    program = site.new / "kestrel.cgi"
    program.write_text(f"#!/bin/sh\nid -un >{answers}/user\necho 'Version: KESTREL v3.2'\n")
    shutil.chown(program, owner)
    shown = converse(site.new, {"What do you want to do": "4"})
    assert " 1 Install kestrel, version 3.2\n" in shown
    assert (answers / "user").read_text() == f"{owner}\n"


def test_private_answers_stay_private(site):
    (site.templates / "gxsetup.dat").chmod(0o600)
    assert is_upgraded(converse(site.new, REPLACE))
    assert (site.new / "gxsetup.dat").stat().st_mode & 0o077 == 0


def test_nothing_is_writable_by_others_whatever_the_umask(site):
    before = os.umask(0)
    try:
        assert is_upgraded(converse(site.new, REPLACE))
    finally:
        os.umask(before)
    for file in (
        site.new / "gxsetup.log",
        site.new / "gxsetup.dat",
        site.directory / "cgi-bin" / "kestrel.new",
    ):
        assert file.stat().st_mode & 0o002 == 0, file


@pytest.mark.parametrize("kind", ["large", "pipe"])
def test_what_has_no_end_is_not_read(site, kind):
    saved = site.templates / "gxsetup.dat"
    if kind == "large":
        with saved.open("a") as file:
            file.truncate(16 * 2**20 + 1)
    else:
        saved.unlink()
        os.mkfifo(saved)
    assert "What do you want to do [1]? " in converse(site.new, {"What do you want to do": "4"})


def test_control_characters_do_not_reach_the_terminal(site, place):
    defaults = site.new / "gxdflt.dat"
    (site.templates / "gxsetup.dat").unlink()
    defaults.write_text(defaults.read_text().replace("cgi_path ", "cgi_path /tmp\x1b[2K"))
    with Terminal(place, site.new) as terminal:
        terminal.type("./gxsetup")
        terminal.wait_for("What do you want to do [1]? ")
        terminal.type("1")
        shown = terminal.wait_for("/site/cgi-bin]? ")
        assert "[/tmp?[2K/" in shown


def test_links_of_root_and_hard_linked_backups_keep_working(site, place):
    backup, link = place / "backup", place / "templates"
    run("cp", "-al", site.templates, backup)
    old = (backup / "menu.tpl").read_bytes()
    link.symlink_to(site.templates)
    shown = converse(site.new, {"Where are your template files": str(link), **REPLACE})
    assert is_upgraded(shown)
    assert (site.templates / "menu.tpl").read_bytes() == (site.new / "tpl" / "menu.tpl").read_bytes() != old
    assert (backup / "menu.tpl").read_bytes() == old
