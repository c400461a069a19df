"""The Ansible playbook: three sites on this machine, a first installation, an upgrade, nothing to do."""

import os

import pytest
from world import ROOT, Site, need, run

PLAYBOOK = ROOT / "docs" / "fleet" / "playbook.yml"


@pytest.fixture
def hosts(place):
    """Three sites, and an inventory in which each is a host."""
    text = "webmail:\n  vars:\n    ansible_connection: local\n    ansible_python_interpreter: /usr/bin/python3\n  hosts:\n"
    sites = [place / f"host{number}" for number in (1, 2, 3)]
    for site in sites:
        (site / "cgi-bin").mkdir(parents=True)
        text += f"""
    {site.name}:
      gxsetup_directory: {site}/gxsetup
      cgi_path: {site}/cgi-bin
      templates: {site}/spool/kestrel
      vlimg_dir: {site}/html/vlimg
      vlimg: /vlimg
      domain: {site.name}.example.com
      mail_host: pop.{site.name}.example.com
      smtp_host: smtp.{site.name}.example.com
"""
    (place / "inventory.yml").write_text(text)
    return sites


def play(place, distribution, *options):
    ansible = need("ansible-playbook")
    environment = {
        "PATH": os.environ["PATH"], "HOME": str(place), "LC_ALL": "C.UTF-8", "ANSIBLE_NOCOLOR": "1",
        "ANSIBLE_PIPELINING": "1",
        "ANSIBLE_LOCAL_TEMP": str(place / "temp"), "ANSIBLE_REMOTE_TEMP": str(place / "remote"),
    }  # fmt: skip
    return run(
        ansible, "-i", place / "inventory.yml", "-e", f"distribution={distribution}",
        "-e", f"report_directory={place}/reports", *options, PLAYBOOK, env=environment, timeout=300,
    )  # fmt: skip


def pack(place, version):
    """A distribution whose own defaults point into a site that is none of the hosts'."""
    packed = place / f"kestrel-{version}.tar.gz"
    Site(place, "kestrel").stage(version, "--pack", packed)
    return packed


def reports(place, version):
    """The report of each host, in the order of their names."""
    return [path.read_text() for path in sorted((place / "reports" / f"kestrel-{version}").iterdir())]


def summary(place, version):
    return [report.splitlines()[0] for report in reports(place, version)]


def test_the_playbook_is_well_formed(place, hosts):
    assert "playbook:" in play(place, "kestrel-3.1.tar.gz", "--syntax-check")


def state_of(site):
    """Every entry below a site, with mode and content."""
    return {
        str(path.relative_to(site)): (path.lstat().st_mode, path.read_bytes() if path.is_file() else b"")
        for path in sorted(site.rglob("*"))
    }


def test_installs_upgrades_and_then_leaves_alone(place, hosts):
    play(place, pack(place, "3.1"))
    assert summary(place, "3.1") == ["host1 install ok", "host2 install ok", "host3 install ok"]
    for site, report in zip(hosts, reports(place, "3.1")):
        assert "\nInstallation successful.\n" in report
        assert report.endswith("* gxsetup finished *\n")
        settings = (site / "cgi-bin" / "kestrel.ini").read_text()
        assert f"\ndomain {site.name}.example.com\npophost pop.{site.name}.example.com\n" in settings
        assert f"\nsmtphost smtp.{site.name}.example.com\n" in settings
        assert (site / "html" / "vlimg" / "kestrel.gif").exists()
        assert not (site / "gxsetup").exists()

    # One template was edited, and the new version has dropped one that was not.
    edited = hosts[1] / "spool" / "kestrel" / "menu.tpl"
    edited.write_text(edited.read_text() + "edited\n")
    menu = edited.read_text()
    newer = pack(place, "3.2")
    said = play(place, newer)
    assert summary(place, "3.2") == ["host1 upgrade ok", "host2 upgrade ok", "host3 upgrade ok"]
    assert said.count("changed=1") == 3, said
    for site, report in zip(hosts, reports(place, "3.2")):
        assert "Error: Can't copy ./tpl/welcome.tpl\n" in report
        assert run(site / "cgi-bin" / "kestrel.cgi", "-version") == "Version: KESTREL v3.2\n"
        assert (site / "spool" / "kestrel" / "folders.tpl").exists()
        assert (site / "cgi-bin" / "kestrel.new").exists()
    assert edited.read_text() == menu

    # The installed program is not run to find that out.
    for site in hosts:
        (site / "cgi-bin" / "kestrel.cgi").chmod(0o660)
    before = [state_of(site) for site in hosts]
    said = play(place, newer)
    assert summary(place, "3.2") == ["host1 none ok", "host2 none ok", "host3 none ok"]
    assert said.count("changed=0") == 3, said
    assert [state_of(site) for site in hosts] == before


def test_check_mode_rehearses(place, hosts):
    before = [state_of(site) for site in hosts]
    said = play(place, pack(place, "3.1"), "--check")
    assert summary(place, "3.1") == [f"{site.name} install rehearsed ok" for site in hosts]
    assert said.count("changed=1") == 3, said
    assert [state_of(site) for site in hosts] == before


def test_a_host_whose_answers_do_not_fit_is_reported_and_left_as_it_is(place, hosts):
    (hosts[1] / "cgi-bin").rmdir()
    with pytest.raises(AssertionError, match="does not exist... please enter a valid directory"):
        play(place, pack(place, "3.1"))
    host1, host2, host3 = summary(place, "3.1")
    assert (host1, host3) == ("host1 install ok", "host3 install ok")
    assert host2.startswith(
        "host2 install FAILED: Run gxsetup-unattended: gxsetup-unattended: cgi_path: "
        f"{hosts[1]}/cgi-bin is refused: "
    )
    assert list(hosts[1].iterdir()) == []


def test_a_host_where_a_step_fails_is_reported(place, hosts):
    (hosts[2] / "html" / "vlimg" / "kestrel.gif").mkdir(parents=True)
    with pytest.raises(AssertionError, match="steps? failed; see gxsetup.log"):
        play(place, pack(place, "3.1"))
    assert summary(place, "3.1")[2].startswith("host3 install FAILED: Run gxsetup-unattended: ")
    assert (hosts[2] / "gxsetup").exists()
