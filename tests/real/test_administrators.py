"""What the administrators' guide says, done as it is written."""

import os
import re
import shutil
import subprocess
import tarfile

import pytest
from dialogue import Session, converse, question_of
from guide import DOCS, commands, put, section
from terminal import Terminal
from world import DEFAULTS, KEEP, ROOT, Site, derived_images_url, errors_in, images_of, need, printed_url, run

GUIDE = "administrators.md"
REPEAT = {"What do you want to do": "1", "switch to the upgrade": "no", **KEEP}


@pytest.fixture
def kestrel(place):
    return Site(place, "kestrel")


def lines_of(file, *names):
    """The lines of a settings file that begin with one of the names."""
    return [line for line in file.read_text().splitlines() if line.split(" ")[0] in names]


def outcome(transcript):
    """The lines that tell success, of those that the guide names."""
    return [line for line in transcript.splitlines() if "successful" in line]


def has_all_success_lines(transcript, run_name):
    """Judges a transcript as the guide's table does."""
    table = section(GUIDE, "Answers from a file").partition("| run | all went well")[2].partition("\n\n")[0]
    row = [line for line in table.splitlines() if line.startswith(f"| {run_name} |")]
    wanted = row[0].split("|")[2].split("`")[1::2]
    return all(line in transcript.splitlines() for line in wanted)


def block_images(site):
    """Makes the images directory one that cannot be made."""
    (site.directory / "html").rmdir()
    (site.directory / "html").write_text("")


def unblock_images(site):
    (site.directory / "html").unlink()
    (site.directory / "html").mkdir()


def tree_of(*directories):
    """Owner, group, mode and content of every file below."""
    return {
        path: (
            path.owner(),
            path.group(),
            oct(path.stat().st_mode),
            path.read_bytes() if path.is_file() else b"",
        )
        for directory in directories
        for path in directory.rglob("*")
    }


# Before you start


def test_the_commands_to_begin_with(place, kestrel):
    packed = place / "kestrel-3.1.tar.gz"
    kestrel.stage("3.1", "--pack", packed)
    shutil.rmtree(place / "kestrel-3.1")
    typed = put("\n".join(commands(GUIDE, "Before you start")), {"/root": place})
    transcript = run("sh", "-ec", typed, input=DEFAULTS)
    assert has_all_success_lines(transcript, "installation")


def test_in_the_templates_directory_the_menu_suggests_removal(kestrel):
    kestrel.stage("3.1").run_wizard()
    templates = kestrel.directory / "spool" / "kestrel"
    shown = converse(templates, {"What do you want to do [3]": ["1", "2", "4"]})
    assert shown.count("This function cannot be run from within the templates directory") == 2
    begun = converse(templates, {"Where are the cgi files": None})
    assert (
        "Where are the cgi files\n(this will be a scripts or cgi directory setup for the webserver)\n"
        in begun
    )


# Answering


@pytest.mark.parametrize(
    "typed, taken",
    [
        ("y", True),
        ("Y", True),
        ("yes", True),
        ("yEs", True),
        ("n", False),
        ("no", False),
        ("NO", False),
        ("N", None),
    ],
)
def test_yes_and_no(kestrel, typed, taken):
    replies = {"merlin cgi": [typed, None] if taken is None else typed, "any of your answers": None}
    if taken is None:
        del replies["any of your answers"]
    shown = converse(kestrel.stage("3.1").directory, replies)
    assert ('Please enter either "YES" or "NO"' in shown) == (taken is None)
    again = (
        converse(kestrel.place / "kestrel-3.1", {"merlin cgi": typed, "any of your answers": ["yes", None]})
        if taken
        else ""
    )
    assert ("merlin cgi [YES]" in again) == bool(taken)


@pytest.mark.parametrize("typed", ["q", "Q", None])
def test_quitting_saves_nothing(kestrel, typed):
    distribution = kestrel.stage("3.1")
    shown = converse(distribution.directory, {"any of your answers": typed})
    assert shown.endswith("Please press enter to quit...\n" + ("\n" if typed else ""))
    assert not (distribution.directory / "gxsetup.dat").exists()
    assert not (kestrel.directory / "spool" / "kestrel").exists()


def test_a_blank_before_an_answer_belongs_to_it(kestrel):
    shown = converse(
        kestrel.stage("3.1").directory, {"domain name": " example.org", "any of your answers": None}
    )
    assert "domain name:          example.org\n" in shown


def test_a_no_for_a_directory_comes_back_until_its_line_is_deleted(kestrel):
    distribution = kestrel.stage("3.1").directory
    failed = converse(distribution, {"Directory for templates": "no"})
    assert outcome(failed) == ["install unsuccessful"]
    again = converse(
        distribution, {"What do you want to do": "1", "Directory for templates [NO]": ["/tmp", None]}
    )
    assert 'Please enter either "YES" or "NO"' in again

    saved = distribution / "gxsetup.dat"
    assert "templates FALSE" in lines_of(saved, "templates")
    saved.write_text(
        "".join(line for line in saved.read_text().splitlines(True) if not line.endswith(" FALSE\n"))
    )
    shown = converse(distribution, {"What do you want to do": "1", "Directory for templates [/": None})
    assert "Directory for templates [/var/spool/kestrel]? " in shown


def test_a_slash_as_url_swallows_the_next_setting(kestrel):
    distribution = kestrel.stage("3.1").directory
    converse(distribution, {"Relative URL": "/", **KEEP})
    assert lines_of(distribution / "gxsetup.dat", "vlimg", "pophost") == ["vlimg /", "pophost mail.localhost"]
    converse(
        distribution, {**REPEAT, "any of your answers": None, "original templates": [], "temporary files": []}
    )
    converse(distribution, {**REPEAT, "domain name": "example.org"})
    saved = (distribution / "gxsetup.dat").read_text()
    assert "\npophost mail.localhost\n" not in saved


def test_the_dot_behind_the_url_is_progress(kestrel):
    shown = kestrel.stage("3.1").run_wizard()
    assert "    http://localhost/cgi-bin/kestrel.cgi.\n" in shown


# Installing


def test_the_questions_come_in_the_order_of_the_table(place):
    rows = [
        line.split("|")[1].strip()
        for line in section(GUIDE, "Installing").splitlines()
        if line.startswith("| ")
    ]
    table = rows[1 : rows.index("Shall I delete the temporary files") + 1]
    shown = converse(Site(place, "tanager").stage("3.1").directory, KEEP)
    position = 0
    for row in table:
        for part in row.split(", for ")[0].split(" ... "):
            words = part.replace("pop (imap) host, smtp host", "imap host")
            assert words in shown[position:], words
            position = shown.index(words, position)


def test_what_is_offered_for_hosts_and_url(kestrel):
    shown = converse(
        kestrel.stage("3.1").directory, {"domain name": "example.org", "pop host": "pop.example.org", **KEEP}
    )
    assert "What is the name of your pop host [mail.example.org]? " in shown
    assert "What is the name of your smtp host [pop.example.org]? " in shown
    assert derived_images_url(shown) == "/vlimg"


def test_enter_deletes_the_distribution_but_what_the_table_names(kestrel):
    distribution = kestrel.stage("3.1").directory
    (distribution / "u_ada").mkdir()
    (distribution / "u_ada" / "mail").write_text("")
    converse(distribution, {"original templates": "no"})
    left = {path.name for path in distribution.iterdir()}
    assert left >= {"gxsetup", "gxsetup.dat", "gxsetup.log", "u_ada"}
    assert all(name.startswith(("gxsetup", "u_")) for name in left)


@pytest.mark.parametrize("product, directory", [("tanager", "imap"), ("osprey", "mail")])
def test_the_images_directory_of_sets_is_the_built_in_one(place, product, directory):
    site = Site(place, product)
    distribution = site.stage("3.1").directory
    offered = f"Directory for .gif, .jpg and .wav files\n[/home/httpd/html/vlimg/{directory}]"
    (site.directory / "spool" / product / "gxsetup.dat").unlink()
    assert offered in converse(distribution, {offered: None})
    defaults = (distribution / "gxdflt.dat").read_text()
    (distribution / "gxsetup.dat").write_text(f"{defaults}vlimg_dir {place}/pictures\n")
    assert offered in converse(distribution, {offered: None})
    (distribution / "gxsetup.dat").unlink()
    (site.directory / "spool" / product / "gxsetup.dat").write_text(f"vlimg_dir {place}/pictures\n")
    assert f"[{place}/pictures]? " in converse(distribution, {f"[{place}/pictures]": None})


def test_what_is_where_afterwards(kestrel):
    if os.getuid() != 0:
        pytest.skip("only root gives files to nobody")
    os.umask(0o022)
    kestrel.stage("3.1", "--wml").run_wizard()
    script, templates, images = (
        kestrel.directory / name for name in ("cgi-bin", "spool/kestrel", "html/vlimg")
    )
    modes = {path: oct(path.stat().st_mode)[-4:] for path in kestrel.directory.rglob("*")}
    programs = [
        script / "kestrel.cgi",
        script / "merlin.cgi",
        templates / "kestrel.cgi",
        templates / "gxsetup",
    ]
    assert {modes[path] for path in programs} == {"0770"}
    assert {modes[script / "kestrel.ini"], modes[script / "merlin.ini"]} == {"0644"}
    for name in ("index.tpl", "gxsetup.dat", "gxsetup.log", "kestrel.ini", "vsetup.hlp"):
        assert modes[templates / name] == "0660", name
    assert (modes[templates / "originals"], modes[images], modes[images / "kestrel.gif"]) == (
        "0770",
        "0755",
        "0660",
    )
    created = [
        path
        for path in modes
        if path not in (script, kestrel.directory / "html", kestrel.directory / "spool")
    ]
    assert {path.owner() for path in created} == {"nobody"}


# A word of the help for the questions that share one text.
SHARED_HELP = {
    "What do you want to do": "Menu ", "switch to the upgrade": "Switch to upgrade ", "manual files": "Manuals ",
    "bulletin files": "Bulletins ", "restrict the": "Restrict hosts ",
}  # fmt: skip


@pytest.mark.parametrize("product", ["kestrel", "tanager"])
def test_a_question_mark_helps_at_every_question(place, product):
    site = Site(place, product)
    (site.directory / "cgi-bin").mkdir(parents=True)
    distribution = site.stage("3.1").directory
    (site.directory / "cgi-bin" / f"{product}.cgi").write_text("")
    session = Session(distribution)
    asked = 0
    while printed := session.read_prompt():
        if not printed.endswith("? "):
            session.type("")
            continue
        question = question_of(printed)
        asked += 1
        session.type("?")
        helped = session.read_prompt()
        assert f"For more information, e-mail: {product}-support@" in helped, question
        assert "No specific help" not in helped, question
        for words, start in SHARED_HELP.items():
            assert words not in question or f"\n{start}" in helped, question
        session.type(
            "1"
            if "want to do" in question
            else "no"
            if "switch" in question or "temporary" in question
            else ""
        )
    session.close()
    assert asked > 10
    assert has_all_success_lines(session.transcript, "installation")


# What the next run offers


def test_hosts_and_url_are_never_offered_again(kestrel):
    distribution = kestrel.stage("3.1").directory
    own = {"domain name": "example.org", "pop host": "pop.example.net", "smtp host": "smtp.example.net"}
    converse(distribution, {**own, "Relative URL": "/pictures", **KEEP})
    assert lines_of(distribution / "gxsetup.dat", "pophost", "vlimg") == [
        "vlimg /pictures",
        "pophost pop.example.net",
    ]
    shown = converse(
        distribution, {**REPEAT, "any of your answers": None, "original templates": [], "temporary files": []}
    )
    assert "What is your domain name [example.org]? " in shown
    assert "pop host [mail.example.org]? " in shown
    assert "smtp host [mail.example.org]? " in shown
    assert derived_images_url(shown) == "/vlimg"


def test_install_dir_sends_the_files_to_the_old_directory(kestrel):
    distribution = kestrel.stage("3.1").directory
    other = kestrel.directory / "spool" / "other"
    converse(distribution, {"merlin cgi": "yes", **KEEP})
    again = {**REPEAT, "Directory for templates": str(other), "merlin cgi": "no"}
    shown = converse(distribution, again)
    assert f'"{kestrel.directory}/spool/kestrel/gxsetup.log"' in shown
    assert not (other / "index.tpl").exists()

    saved = distribution / "gxsetup.dat"
    assert lines_of(saved, "install_dir") == [f"install_dir {kestrel.directory}/spool/kestrel"]
    kept = [line for line in saved.read_text().splitlines(True) if not line.startswith("install_dir ")]
    for file in (saved, kestrel.directory / "spool" / "kestrel" / "gxsetup.dat"):
        file.write_text("".join(kept))
    converse(distribution, again)
    assert (other / "index.tpl").exists()


def test_what_upgrades_repeat(place):
    tanager = Site(place, "tanager")
    old, new = tanager.stage("3.1").directory, tanager.stage("3.2").directory
    converse(old, {"restrict the": "yes", "a . to finish": "mail.example.org\n.", **KEEP})
    converse(new, KEEP)
    for file in (tanager.directory / "cgi-bin" / "tanager.new", new / "gxsetup.dat"):
        assert lines_of(file, "allow_host_login") == ["allow_host_login mail.example.org"] * 2

    kestrel = Site(place, "kestrel")
    old, new = kestrel.stage("3.1", "--wml").directory, kestrel.stage("3.2", "--wml").directory
    converse(old, KEEP)
    once = lines_of(old / "gxsetup.dat", "wap_tpl_set")
    converse(new, {"replace the old": "yes", **KEEP})
    again = lines_of(new / "gxsetup.dat", "wap_tpl_set")
    assert len(again) > len(once) and set(again) == set(once)


def page_of(site):
    environment = {
        "PATH": "/usr/bin:/bin",
        "GATEWAY_INTERFACE": "CGI/1.1",
        "SCRIPT_NAME": "/cgi-bin/x",
        "QUERY_STRING": "page=compose",
    }
    return run(site.directory / "cgi-bin" / f"{site.product}.cgi", env=environment)


def test_the_look_is_changed_in_the_settings(kestrel):
    kestrel.stage("3.1").run_wizard()
    settings = kestrel.directory / "cgi-bin" / "kestrel.ini"
    printed = [
        line[4:] for line in section(GUIDE, "Changing the look").splitlines() if line.startswith("    ")
    ]
    assert printed == lines_of(settings, "set", "body_add")
    settings.write_text(
        settings.read_text()
        .replace("set logo kestrel.gif", "set logo new.gif")
        .replace("Sent with Kestrel", "Sent from the weir")
    )
    assert "/vlimg/new.gif" in images_of(page_of(kestrel))
    assert "Sent from the weir" in page_of(kestrel)


def test_the_format_of_the_answers(kestrel):
    """What gxsetup.dat(5) says of lines, seen in what is offered and in what is saved."""
    distribution = kestrel.stage("3.1").directory
    answers = distribution / "gxsetup.dat"
    answers.write_text(
        (distribution / "gxdflt.dat").read_text()
        + "# domain comment.example\nDomain case.example\ndomain first.example\ndomain last.example\r\ndomain \n"
        + "nothing\nunknown kept  as\tit is\ncontinued a /\n \t b\n"
    )
    shown = converse(distribution, KEEP)
    assert "What is your domain name [last.example]? " in shown
    saved = answers.read_text()
    for line in ("Domain case.example", "domain last.example", "unknown kept  as\tit is", "continued ab"):
        assert f"\n{line}\n" in saved, line
    assert "nothing" not in saved and "comment.example" not in saved and "first.example" not in saved


# Upgrading


@pytest.fixture
def upgraded(kestrel):
    """A site with version 3.1, to be upgraded."""
    kestrel.stage("3.1").run_wizard()
    return kestrel


def places(site):
    return {"/var/spool/kestrel": site.directory / "spool/kestrel"}


def edit_template(site, name):
    template = site.directory / "spool" / "kestrel" / name
    template.write_text(template.read_text().replace("\n\n||checksum", "\n<p>Ours</p>\n\n||checksum"))
    return template


def test_what_was_saved_is_restored(upgraded, place):
    site = upgraded
    user = site.directory / "spool" / "kestrel" / "u_ada"
    user.mkdir()
    (user / "mail").write_text("old")
    edit_template(site, "menu.tpl")
    save, restore = (
        put(command, {"/root/": f"{place}/"} | own)
        for command, own in zip(
            commands(GUIDE, "Before an upgrade")[:2],
            [{"/home/httpd": site.directory, **places(site)}, {}],
        )
    )
    directories = [site.directory / name for name in ("cgi-bin", "html/vlimg", "spool/kestrel")]
    before = tree_of(*directories)
    run("sh", "-ec", save)
    site.stage("3.2").run_wizard({"What do you want to do": "2", "replace the old": "yes"})
    assert run(site.directory / "cgi-bin" / "kestrel.cgi", "-version") == "Version: KESTREL v3.2\n"
    (user / "mail").write_text("new")

    run("sh", "-ec", restore)
    after = tree_of(*directories)
    assert run(site.directory / "cgi-bin" / "kestrel.cgi", "-version") == "Version: KESTREL v3.1\n"
    assert (user / "mail").read_text() == "new"
    del before[user / "mail"]
    assert {path: after[path] for path in before} == before
    assert "Kestrel 3.1" in page_of(site)


def upgrade(site):
    return converse(site.place / "kestrel-3.2", {"temporary files": "no"})


def listed(site):
    text = (site.directory / "spool" / "kestrel" / "tmptlist.txt").read_text()
    return {line.split()[1]: line[0] for line in text.splitlines() if line[:1] in ("1", "2", "3")}


def test_originals_are_mixed_unless_they_are_moved(upgraded):
    site = upgraded
    site.stage("3.2")
    shutil.copytree(site.place / "kestrel-3.2", site.place / "again")
    templates = site.directory / "spool" / "kestrel"
    upgrade(site)
    assert "kst_s1" in (templates / "originals" / "menu.tpl").read_text()
    assert (templates / "originals" / "folders.tpl").exists()


def test_an_edited_template_is_merged_and_not_listed_again(upgraded, place):
    site = upgraded
    templates = site.directory / "spool" / "kestrel"
    edit_template(site, "menu.tpl")
    edit_template(site, "options.tpl")
    site.stage("3.2")
    move = [command for command in commands(GUIDE, "Before an upgrade") if command.startswith("mv ")]
    run("sh", "-ec", put(move[0], places(site)))
    shown = upgrade(site)
    assert has_all_success_lines(shown, "upgrade")
    assert listed(site) == {"menu.tpl": "2", "options.tpl": "3", "welcome.tpl": "1"}

    become = commands(GUIDE, "Merging an edited template")[0]
    merge = put("\n".join(commands(GUIDE, "Merging an edited template", "$")), places(site))
    for name in ("menu.tpl", "options.tpl"):
        typed = merge.replace("menu.tpl", name)
        assert become == "su -s /bin/sh nobody"
        run("sh", "-ec", typed if os.getuid() != 0 else f"{become} -c 'set -e\n{typed}'")
    merged = (templates / "menu.tpl").read_text()
    assert "<p>Ours</p>" in merged
    assert merged.startswith("||header: modified=false tpl_set=kst_s2 ")
    assert "page=folders" in merged
    if os.getuid() == 0:
        assert ((templates / "menu.tpl").owner(), oct((templates / "menu.tpl").stat().st_mode)[-3:]) == (
            "nobody",
            "660",
        )

    shown = upgrade(site)
    assert listed(site) == {"welcome.tpl": "1"}
    assert errors_in(shown)[-2:] == ["Can't copy ./tpl/welcome.tpl", "Can't do safe save"]
    (templates / "welcome.tpl").unlink()
    assert errors_in(upgrade(site)) == []


def test_a_merged_template_counts_as_edited_until_it_is_stamped(upgraded):
    site = upgraded
    templates = site.directory / "spool" / "kestrel"
    edit_template(site, "menu.tpl")
    (templates / "welcome.tpl").unlink()
    distribution = site.stage("3.2").directory
    assert "menu.tpl" in upgrade(site).partition("inspected for any changes:")[2].partition("----")[0]
    converse(distribution, {"Directory for templates": str(templates)}, "-checksum")
    assert "menu.tpl" in upgrade(site).partition("upgraded safely:")[2].partition("----")[0]


def test_an_upgrade_of_sets_overwrites_templates_without_being_told_to(place):
    site = Site(place, "tanager")
    old, new = site.stage("3.1").directory, site.stage("3.2").directory
    converse(old, {"temporary files": "no"})
    templates = site.directory / "spool" / "tanager"
    for name in ("index.tpl", "menu.tpl"):
        template = templates / "marble" / name
        template.write_text("ours\n")
    assert (templates / "originals" / "tpl" / "marble" / "index.tpl").exists()
    shown = converse(new, {"replace the old": "no", "temporary files": "no"})
    assert "No files found in " in shown
    assert (templates / "marble" / "index.tpl").read_bytes() == (
        new / "tpl" / "marble" / "index.tpl"
    ).read_bytes()
    assert (templates / "marble" / "menu.tpl").read_text() == "ours\n"
    assert (templates / "common" / "menu.tpl").exists()
    assert (templates / "originals" / "marble" / "index.tpl").exists()
    assert lines_of(site.directory / "cgi-bin" / "tanager.new", "tpl_set") == []
    assert lines_of(site.directory / "cgi-bin" / "tanager.new", "templates") == [f"templates {templates}"]


def test_the_old_settings_stay_and_the_new_ones_lie_beside(upgraded):
    site = upgraded
    settings = site.directory / "cgi-bin" / "kestrel.ini"
    settings.write_text(settings.read_text() + "ours yes\n")
    before = settings.read_bytes()
    site.stage("3.2")
    upgrade(site)
    assert settings.read_bytes() == before
    assert (site.directory / "cgi-bin" / "kestrel.new").read_bytes() == (
        site.directory / "spool" / "kestrel" / "kestrel.new"
    ).read_bytes()


# Removing


def test_a_removal_beside_an_emptied_distribution(kestrel):
    distribution = kestrel.stage("3.1").directory
    templates = kestrel.directory / "spool" / "kestrel"
    converse(distribution, {"original templates": "no"})
    saved = (distribution / "gxsetup.dat").read_bytes()
    (templates / "u_ada").mkdir()
    shown = converse(
        distribution,
        {
            "What version of kestrel": "3.1", "What do you want to do": "3",
            "Remove all graphics and wav": "yes", "Remove all user information": "yes",
        },
    )  # fmt: skip
    assert has_all_success_lines(shown, "removal")
    assert errors_in(shown) == [f"Cannot remove {kestrel.images}: Directory not empty"]
    assert {path.suffix for path in kestrel.images.iterdir()} == {".js", ".vbs"}
    assert not templates.exists()
    assert (distribution / "gxsetup.dat").read_bytes() == saved


# Answers from a file


def test_the_exit_status_does_not_tell(kestrel):
    distribution = kestrel.stage("3.1").directory

    def status(*arguments):
        return subprocess.run(
            ["./gxsetup", *arguments], cwd=distribution, input=b"", capture_output=True
        ).returncode

    assert (status(), status("-wrong"), status("-debug", "-make"), status("help")) == (0, 1, 0, 0)


@pytest.mark.parametrize("product", ["kestrel", "plover", "tanager", "osprey"])
def test_the_answers_stand_in_the_order_of_the_tables(place, product):
    """Each answer of the tables is put where they say, by their words, for an installation and an upgrade."""
    site = Site(place, product)
    has_sets = product in ("tanager", "osprey")
    words = {
        "1": "1", "2": "2", "no": "no", "empty": "", "script directory": site.directory / "cgi-bin",
        "templates": site.directory / "spool" / "t", "manuals": site.directory / "m", "bulletins": site.directory / "b",
        "images": site.images, "URL": "/pictures", "domain": "example.org", "pop host": "pop.example.org",
        "imap or pop host": "in.example.org", "restrict": "yes", "(hosts": "in.example.org", "`.`": ".",
        "smtp host": "out.example.org", "WML": "yes", "originals": "yes", "delete": "no", "replace": "yes",
    }  # fmt: skip

    def answers(heading):
        table = (
            section(GUIDE, "Answers from a file").partition(f"| {heading} | answers")[2].partition("\n\n")[0]
        )
        row = [line for line in table.splitlines() if product in line.split("|")[1]]
        given = row[0].split("|")[2].replace("(view, safe, empty,) ", "").replace(",)", ",")
        parts = given.replace("`1`", "1").replace("`2`", "2").replace("`no`", "no").split(",")
        return [str(words[part.strip()]) for part in parts]

    shown = site.stage("3.1").run_with_lines(answers("installation"))
    assert errors_in(shown) == [] and has_all_success_lines(shown, "installation")
    installed = site.directory / "cgi-bin" / f"{product}.ini"
    host = "imaphost" if product == "tanager" else "pophost"
    assert lines_of(installed, "domain", host, "smtphost") == [
        "domain example.org", f"{host} {'in' if has_sets else 'pop'}.example.org", "smtphost out.example.org"
    ]  # fmt: skip
    assert lines_of(installed, "allow_host_login") == (
        ["allow_host_login in.example.org"] if has_sets else []
    )
    assert (site.directory / "cgi-bin" / "merlin.ini").exists()

    new = site.stage("3.2")
    shutil.copy(site.directory / "spool" / "t" / "gxsetup.dat", new.directory)
    shown = new.run_with_lines(answers("upgrade"))
    assert errors_in(shown) == [] and has_all_success_lines(shown, "upgrade")
    assert new.directory.joinpath("tpl").exists()


def test_a_removal_by_its_list(kestrel):
    distribution = kestrel.stage("3.1")
    distribution.run_wizard(KEEP)
    user = kestrel.directory / "spool" / "kestrel" / "u_ada"
    user.mkdir()
    given = [
        line[4:] for line in section(GUIDE, "Answers from a file").splitlines() if line.startswith("    3,")
    ][0]
    own = {
        "script directory": kestrel.directory / "cgi-bin", "images": kestrel.images, "empty": "",
        "work area": kestrel.directory / "spool" / "kestrel", "templates": kestrel.directory / "spool" / "kestrel",
        "yes or no": "no",
    }  # fmt: skip
    shown = distribution.run_with_lines([str(own.get(part, part)) for part in given.split(", ")])
    assert has_all_success_lines(shown, "removal")
    assert errors_in(shown) == [
        f"Cannot remove {kestrel.images}: Directory not empty",
        f"Cannot remove {kestrel.directory}/spool/kestrel: Directory not empty",
    ]
    assert list((kestrel.directory / "cgi-bin").iterdir()) == []
    assert [path.name for path in (kestrel.directory / "spool" / "kestrel").iterdir()] == ["u_ada"]


def test_a_rehearsal_shows_the_summary_and_changes_nothing(kestrel):
    distribution = kestrel.stage("3.1")
    before = tree_of(kestrel.directory)
    shown = distribution.run_wizard({"any of your answers": None})
    assert shown.endswith("Do you want to change any of your answers [NO]? Please press enter to quit...\n")
    assert f"templates directory: {kestrel.directory}/spool/kestrel\n" in shown
    assert tree_of(kestrel.directory) == before


def test_success_is_told_only_by_both_lines(kestrel):
    distribution = kestrel.stage("3.1").directory
    cut_short = converse(distribution, {"original templates": None})
    assert "Installation successful." in cut_short.splitlines()
    assert not has_all_success_lines(cut_short, "installation")
    assert not (distribution / "gxsetup.dat").exists()


# When something fails


def test_a_failed_installation_is_repeated_as_told(kestrel):
    distribution = kestrel.stage("3.1").directory
    block_images(kestrel)
    own = {
        "domain name": "example.org",
        "pop host": "pop.example.net",
        "smtp host": "smtp.example.net",
        "Relative URL": "/pictures",
    }
    failed = converse(distribution, {**own, **KEEP})
    assert outcome(failed) == ["Installation unsuccessful.", "install unsuccessful"]
    assert not has_all_success_lines(failed, "installation")
    assert f'created directory "{kestrel.images}"' in (distribution / "gxsetup.log").read_text()
    assert not kestrel.images.exists()
    assert (distribution / "gxsetup.dat").exists()

    unblock_images(kestrel)
    del own["domain name"]
    repeated = converse(
        distribution, {**REPEAT, "What do you want to do [2]": "1", **own} | {"What do you want to do": []}
    )
    assert has_all_success_lines(repeated, "installation") and errors_in(repeated) == []
    assert lines_of(kestrel.directory / "cgi-bin" / "kestrel.ini", "domain", "pophost", "smtphost", "vlimg") == [
        "domain example.org", "pophost pop.example.net", "smtphost smtp.example.net", "vlimg /pictures"
    ]  # fmt: skip


def test_a_deleted_distribution_is_unpacked_again_over_its_answers(place, kestrel):
    packed = place / "kestrel-3.1.tar.gz"
    distribution = kestrel.stage("3.1", "--pack", packed).directory
    block_images(kestrel)
    converse(distribution, {"domain name": "example.org", "original templates": "no"})
    assert not (distribution / "kestrel.cgi").exists()
    unblock_images(kestrel)
    with tarfile.open(packed) as archive:
        archive.extractall(place)
    repeated = converse(distribution, REPEAT)
    assert has_all_success_lines(repeated, "installation")
    assert "domain name:         example.org\n" in repeated


def test_the_debug_log_tells_every_step(kestrel):
    distribution = kestrel.stage("3.1").directory
    converse(distribution, {"What do you want to do": "4"}, "-debug")
    assert (
        "Debug: Getting version from [./kestrel.cgi -version >ver.txt]\n"
        in (distribution / "gxsetup.log").read_text()
    )


def test_without_help_texts_and_without_a_version(kestrel):
    distribution = kestrel.stage("3.1").directory
    (distribution / "vsetup.hlp").unlink()
    assert "Error: Help file not found\n" in converse(distribution, {"What do you want to do": ["?", "4"]})
    (distribution / "kestrel.cgi").write_text("#!/bin/sh\necho 3.1\n")
    shown = converse(distribution, {"What version": "3.1", "What do you want to do": "4"})
    assert "What version of kestrel is it? " in shown


def test_a_wrong_url_leaves_the_page_without_pictures(kestrel):
    converse(kestrel.stage("3.1").directory, {"Relative URL": "/wrong", **KEEP})

    def pictures():
        return [
            (kestrel.directory / "html" / image.lstrip("/")).exists() for image in images_of(page_of(kestrel))
        ]

    assert pictures() and not any(pictures())
    settings = kestrel.directory / "cgi-bin" / "kestrel.ini"
    settings.write_text(settings.read_text().replace("vlimg /wrong", "vlimg /vlimg"))
    assert all(pictures())


def test_old_answers_are_found_beside_the_wizard_or_where_the_distribution_looks(kestrel):
    other = kestrel.directory / "spool" / "other"
    converse(kestrel.stage("3.1").directory, {"Directory for templates": str(other), **KEEP})
    new = kestrel.stage("3.2").directory
    assert "What do you want to do [1]? " in converse(new, {"What do you want to do": "4"})
    shutil.copy(other / "gxsetup.dat", new)
    assert "What do you want to do [2]? " in converse(new, {"What do you want to do": "4"})


# The rows of the table of symptoms, and the tests that show them. The servers' are in test_web_servers.
SYMPTOMS = {
    "The URL gives 404": "test_the_dot_behind_the_url_is_progress",
    "The URL gives 403, 500 or 502": None,
    "The page has no pictures": "test_a_wrong_url_leaves_the_page_without_pictures",
    "No help on `?`": "test_without_help_texts_and_without_a_version",
    "The version is asked for": "test_without_help_texts_and_without_a_version",
    "The menu offers 3": "test_in_the_templates_directory_the_menu_suggests_removal",
    "A directory question offers `[NO]`": "test_a_no_for_a_directory_comes_back_until_its_line_is_deleted",
    "Old answers are not offered": "test_old_answers_are_found_beside_the_wizard_or_where_the_distribution_looks",
    "Files arrive in the old templates directory": "test_install_dir_sends_the_files_to_the_old_directory",
}


def test_every_symptom_of_the_table_is_shown_by_a_test():
    table = section(GUIDE, "When something fails").partition("| symptom |")[2]
    assert [line.split("|")[1].strip() for line in table.splitlines()[2:] if line] == list(SYMPTOMS)
    assert all(name is None or name in globals() for name in SYMPTOMS.values())


def test_a_program_that_is_being_run_is_replaced(upgraded):
    program = upgraded.directory / "cgi-bin" / "kestrel.cgi"
    shutil.copy("/bin/sleep", program)
    sleeping = subprocess.Popen([program, "60"])
    try:
        upgraded.stage("3.2")
        shown = upgrade(upgraded)
    finally:
        sleeping.kill()
        sleeping.wait()
    assert "Text file busy" not in shown
    assert run(program, "-version") == "Version: KESTREL v3.2\n"


# The links


def test_every_link_leads_somewhere():
    def anchors(page):
        headings = re.findall(r"^#+ (.*)$", page.read_text(), re.M)
        return {re.sub(r"[^a-z0-9 _-]", "", heading.lower()).replace(" ", "-") for heading in headings}

    for page in [ROOT / "README.md", *DOCS.glob("*.md")]:
        for link in re.findall(r"\]\(([^)]+)\)", page.read_text()):
            file, _, anchor = link.partition("#")
            target = page if not file else (page.parent / file)
            assert target.exists(), f"{page.name}: {link}"
            assert not anchor or anchor in anchors(target), f"{page.name}: {link}"


def test_a_line_editor_keeps_arrow_keys_out_of_the_answer(place, kestrel):
    need("rlwrap")
    distribution = kestrel.stage("3.1").directory
    question = "What do you want to do [1]? "
    with Terminal(place, distribution) as terminal:
        for command, answer in (("./gxsetup", False), ("rlwrap -c ./gxsetup", True)):
            terminal.type(command)
            terminal.wait_for(question)
            terminal.do("send-keys", "-l", "14")
            for key in ("Left", "BSpace"):
                terminal.press(key)
            terminal.type("")
            if answer:
                terminal.wait_for("Goodbye\n\n\nPlease press enter to quit...")
            else:
                terminal.wait_for(question)
                terminal.type("4")
                terminal.wait_for("Please press enter to quit...")
            terminal.type("")
            terminal.wait_for("\nshell>")
