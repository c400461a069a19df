"""What the distributors' guide, the README and INSTALL say, done as it is written."""

import os
import re
import shutil
import subprocess

import pytest
from dialogue import converse
from guide import DOCS, commands, put, section
from world import ROOT, Site, need, run

GUIDE = "distributing.md"


def dialogues(text):
    """The indented blocks that show the wizard, each from the command that starts it."""
    blocks = re.findall(r"(?:^(?:    .*)?\n)+", text, re.M)
    shown = ["\n".join(line[4:].rstrip() for line in block.strip("\n").splitlines()) for block in blocks]
    return [
        block.partition("\n")[2].strip("\n")
        for block in shown
        if re.match(r"\$ \./gxsetup -|\$ cd /tmp/demo", block)
    ]


def plain(transcript):
    """Without blanks at line ends, and without the first and last empty lines."""
    return "\n".join(line.rstrip() for line in transcript.splitlines()).strip("\n")


def typed_in(shown, *prompts):
    """What the guide's dialogue shows as typed, for each prompt in turn."""
    answers = {}
    for line in shown.splitlines():
        for prompt in prompts:
            if line.startswith(prompt):
                answers.setdefault(prompt, []).append(line.partition("? ")[2])
    return answers


@pytest.fixture
def kestrel(place):
    return Site(place, "kestrel").stage("3.1").directory


def test_the_stamping_as_it_is_shown(place, kestrel):
    shown = dialogues(section(GUIDE, "Stamping the templates"))[0]
    templates = place / "tpl"
    shutil.copytree(kestrel / "tpl", templates)
    replies = typed_in(shown, "Directory for templates", "New templates set", "New templates version")
    printed = replies["Directory for templates"][0]
    replies["Directory for templates"] = [str(templates)] * 2
    transcript = converse(kestrel, replies, "-header")
    assert plain(transcript) == shown.replace(printed, str(templates))

    header, _, checksum = [
        line[4:]
        for line in section(GUIDE, "Stamping the templates").splitlines()
        if line.startswith("    ||") or line == "    ..."
    ]
    stamped = (templates / "index.tpl").read_text().splitlines()
    assert stamped[0] == header
    assert re.sub(r"-?\d+", "N", stamped[-1]) == re.sub(r"\d+", "N", checksum)


def test_the_offered_directory_is_refused_and_temp_tpl_is_lost(place, kestrel):
    templates = place / "tpl"
    shutil.copytree(kestrel / "tpl", templates)
    (templates / "temp.tpl").write_text("mine\n")
    shown = converse(kestrel, {"Directory for templates": ["", str(templates)]}, "-checksum")
    assert "No root given! please enter a directory from the root\n" in shown
    assert not (templates / "temp.tpl").exists()


def test_the_defaults_as_they_are_made(kestrel):
    shown = dialogues(section(GUIDE, "Defaults"))[0]
    (kestrel / "gxdflt.dat").unlink()
    prompts = [
        "Version",
        "Product Name",
        "Operating System",
        "Do you want to change the default suggested .ini",
        "Enter file",
    ]
    transcript = converse(kestrel, typed_in(shown, *prompts), "-make")
    assert plain(transcript) == shown
    assert "\nprod_name kestrel\n" in (kestrel / "gxdflt.dat").read_text()


@pytest.mark.parametrize(
    "mode, replies, shared",
    [
        ("-make", {"Enter file": "x"}, {"Version": "Version ", "Operating System": "Operating system "}),
        ("-header", {}, {"templates set": "Template set ", "templates version": "Template version "}),
    ],
)
def test_a_question_mark_helps_at_the_questions_of_the_modes(place, kestrel, mode, replies, shared):
    asked = {question: ["?", "UNIX"] for question in shared}
    if mode == "-header":
        replies = {"Directory for templates": [str(place)] * 2}
    shown = converse(kestrel, replies | asked, mode)
    for question, start in shared.items():
        helped = shown.partition(question)[2].partition("For more information")[0]
        assert f"\n{start}" in helped, question


def test_the_version_follows_the_first_small_v(kestrel):
    for line, version in (("Version: KESTREL v3.1", "3.1"), ("Version: Plover v3.1", "er v3.1")):
        assert line in section(GUIDE, "What goes in")
        (kestrel / "kestrel.cgi").write_text(f"#!/bin/sh\necho '{line}'\n")
        assert f" 1 Install kestrel, version {version}\n" in converse(
            kestrel, {"What do you want to do": "4"}
        )


def test_what_a_template_without_a_header_counts_as(place):
    table = [
        line.split("|")[1:4]
        for line in section(GUIDE, "Stamping the templates").splitlines()
        if "`" in line and line.startswith("  |")
    ]
    named = {
        product.strip(): (old.strip(" `"), new.strip(" `"))
        for names, old, new in table
        for product in names.split(",")
    }
    assert set(named) == {"kestrel", "tanager", "plover", "osprey"}
    for product in ("kestrel", "plover"):
        site = Site(place, product)
        converse(site.stage("3.1").directory, {"temporary files": "no"})
        new = site.stage("3.2").directory
        templates = site.directory / "spool" / ("plov" if product == "plover" else product)
        for directory in (templates, new / "tpl"):
            for template in directory.glob("*.tpl"):
                template.write_text("no header\n")
        shown = converse(new, {"temporary files": "no"})
        old_set, new_set = named[product]
        assert f"Current template set: {old_set} version 1.0a\n" in shown
        assert f"Distribution template set: {new_set} version 2.0a\n" in shown
        assert "upgraded safely:\n\nNo files in this category" in shown


def test_packing_and_checking(place):
    """The distributor's commands, and those that the administrators' guides give to check the result."""
    need("gpg")
    Site(place, "kestrel").stage("3.1")
    (place / "keys").mkdir(mode=0o700)
    environment = {"PATH": os.environ["PATH"], "GNUPGHOME": str(place / "keys"), "LC_ALL": "C"}
    key = [
        "gpg",
        "--batch",
        "--passphrase",
        "",
        "--quick-generate-key",
        "distributor@example.com",
        "ed25519",
        "sign",
    ]
    try:
        run(*key, env=environment)
        for command in commands(GUIDE, "Packing", "$"):
            run("sh", "-ec", command, cwd=place, env=environment)
        listing = run("tar", "--numeric-owner", "-tvzf", "kestrel-3.1.tar.gz", cwd=place)
        assert {line.split()[1] for line in listing.splitlines()} == {"0/0"}

        printed = (place / "kestrel-3.1" / "INSTALL").read_text()
        checks = [
            re.findall(r"^ {4,}\$ ((?:sha256sum|gpg) .*)$", text, re.M)
            for text in (section("security.md", "What you must do"), printed)
        ]
        assert checks[0] == checks[1] and len(checks[0]) == 2
        for command in checks[0]:
            run("sh", "-ec", command, cwd=place, env=environment)
        with (place / "kestrel-3.1.tar.gz").open("ab") as packed:
            packed.write(b"changed")
        for command in checks[0]:
            assert (
                subprocess.run(
                    ["sh", "-c", command], cwd=place, env=environment, capture_output=True
                ).returncode
                != 0
            )
    finally:
        subprocess.run(["gpgconf", "--kill", "all"], env=environment, check=False)


@pytest.mark.parametrize("product", ["kestrel", "plover", "tanager", "osprey"])
def test_install_is_one_page_and_leads_to_the_guides(place, product):
    distribution = Site(place, product).stage("3.2").directory
    page = (distribution / "INSTALL").read_text()
    lines = page.splitlines()
    assert len(lines) <= 60 and max(map(len, lines)) <= 80
    assert "@" not in page
    assert f"{product}-3.2.tar.gz" in page
    named = set(re.findall(r"guides/[a-z-]+\.md", page))
    assert named == {f"guides/{guide.name}" for guide in (distribution / "guides").iterdir()}
    for guide in (distribution / "guides").iterdir():
        for link in re.findall(r"\]\(([^)#]+)[^)]*\)", guide.read_text()):
            assert (distribution / "guides" / link).exists(), f"{guide.name}: {link}"


def test_the_table_of_contents_is_that_of_the_sample(place):
    rows = [
        line.split("|")[1:4] for line in section(GUIDE, "What goes in").splitlines() if line.startswith("| `")
    ]
    for product, column in (("kestrel", 1), ("tanager", 2)):
        wanted = {
            name.strip("/").replace("PRODUCT", product)
            for row in rows if row[column].strip() != "–" for name in re.findall("`(.*?)`", row[0])
        }  # fmt: skip
        distribution = Site(place, product).stage("3.1").directory
        found = {path.name for path in distribution.iterdir()} - {"LICENSE"}
        patterns = {name for name in wanted if name.startswith("*")}
        assert {
            name for name in found if not any(name.endswith(pattern[1:]) for pattern in patterns)
        } == wanted - patterns
        for pattern in patterns:
            assert list(distribution.glob(pattern)), pattern


def test_paths_exist_in_a_checkout_or_in_the_package(place):
    run("cmake", "--install", ROOT / "build" / "release", "--prefix", place / "usr")
    for page in DOCS.glob("*.md"):
        for path in re.findall(r"`(/usr/[^`*\s]+)`", page.read_text()):
            assert (place / path.lstrip("/")).exists(), f"{page.name}: {path}"
    for file in (ROOT / "man").iterdir():
        for path in re.findall(r"(/usr/share/[\w./-]+\w)", file.read_text()):
            assert (place / path.lstrip("/")).exists(), f"{file.name}: {path}"
    for path in re.findall(
        r"`((?:examples|src|tests|tools|share|man|packaging|fuzz|bench|docs)(?:/[\w./-]+)?)`",
        (ROOT / "README.md").read_text(),
    ):
        assert (ROOT / path).exists(), path
    staged = place / "kestrel"
    run(place / "usr/share/gxsetup/examples/stage", "--site", place / "site", "kestrel", staged)
    assert (staged / "guides" / "administrators.md").exists()


@pytest.mark.parametrize("script", ["demo", "examples/stage", "check"])
def test_help_is_no_error(script):
    assert "usage" not in run(ROOT / script, "--help").lower()


def test_the_session_in_the_readme(place):
    """Every part between the dots occurs in a real session, in order."""
    text = re.search(r"^## A session$(.*?)^## ", (ROOT / "README.md").read_text(), re.M | re.S).group(1)
    parts = dialogues(text)[0].partition("\n")[2].split("\n...\n")
    run(ROOT / "examples" / "stage", "--site", place / "site", "kestrel", place / "kestrel-3.1")
    replies = {"pop host": ["?", "pop.example.com"], "smtp host": "smtp.example.com"}
    real = plain(converse(place / "kestrel-3.1", replies)).replace(str(place), "/tmp/demo")
    position = 0
    for part in parts:
        assert part.strip("\n") in real[position:], part
        position = real.index(part.strip("\n"), position)
