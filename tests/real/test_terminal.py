"""The dialogue at a real terminal."""

import pytest
from terminal import Terminal
from world import Site


@pytest.fixture
def distribution(place):
    return Site(place, "kestrel").stage("3.1")


@pytest.fixture
def terminal(place, distribution):
    with Terminal(place, distribution.directory) as opened:
        yield opened


CGI_QUESTION = "/site/cgi-bin]? "
TEMPLATES_QUESTION = "/site/spool/kestrel]? "
DOMAIN_QUESTION = "What is your domain name [localhost]? "


def log_of(distribution):
    return (distribution.directory / "gxsetup.log").read_text()


def begin_install(terminal):
    terminal.start_wizard()
    terminal.type("1")
    terminal.wait_for(CGI_QUESTION)


def answer_until_domain(terminal):
    for question in (TEMPLATES_QUESTION, "/site/html/vlimg]? ", "\n[/vlimg]? ", DOMAIN_QUESTION):
        terminal.type("")
        terminal.wait_for(question)


def finish_install(terminal, domain):
    terminal.type(domain)
    terminal.wait_for(f"What is the name of your pop host [mail.{domain}]? ")
    terminal.type("")
    terminal.wait_for(f"What is the name of your smtp host [mail.{domain}]? ")
    terminal.type("")
    terminal.wait_for("Do you want to install/upgrade the merlin cgi [NO]? ")
    terminal.type("")
    terminal.wait_for("Do you want to change any of your answers [NO]? ")
    terminal.type("")
    terminal.wait_for('/site/spool/kestrel/originals" [YES]? ')
    terminal.type("no")
    terminal.wait_for("Shall I delete the temporary files [YES]? ")
    terminal.type("no")
    terminal.wait_for("Please press enter to quit...")
    terminal.type("")
    return terminal.wait_for("\nshell> ")


def terminal_settings(terminal):
    return terminal.ask_shell("stty -g")


def test_prompts_appear_before_anything_is_typed(terminal):
    terminal.start_wizard()
    column = terminal.do("display-message", "-p", "#{cursor_x}").strip()
    assert column == str(len("What do you want to do [1]? "))
    terminal.type("1")
    terminal.wait_for(CGI_QUESTION)


def test_the_wizard_as_a_terminal_shows_it(terminal, artefacts):
    terminal.resize(80, 28)
    begin_install(terminal)
    terminal.take_picture(artefacts / "wizard.png")


def test_resizing_harms_nothing(terminal):
    begin_install(terminal)
    terminal.resize(40, 10)
    answer_until_domain(terminal)
    terminal.resize(132, 50)
    shown = finish_install(terminal, "localhost")
    assert "Installation successful." in shown
    assert "install successful" in shown


def test_utf8_answers_are_kept_byte_for_byte(terminal, distribution):
    begin_install(terminal)
    answer_until_domain(terminal)
    shown = finish_install(terminal, "bücher-邮.example")
    assert "domain name:         bücher-邮.example" in shown
    assert "http://bücher-邮.example/cgi-bin/kestrel.cgi" in shown
    installed = distribution.directory.parent / "site" / "cgi-bin" / "kestrel.ini"
    assert "\ndomain bücher-邮.example\n" in installed.read_text()


def test_control_c_ends_the_program_and_leaves_the_terminal_and_the_log_whole(terminal, distribution):
    before = terminal_settings(terminal)
    begin_install(terminal)
    terminal.press("C-c")
    terminal.wait_for("\nshell> ")
    assert terminal.ask_shell("echo $?") == "130"
    assert terminal_settings(terminal) == before
    log = log_of(distribution)
    assert "* gxsetup, version 3.0h started *\n" in log
    assert log.endswith("Info:  Installing kestrel, version 3.1\n")
    assert not (distribution.directory / "gxsetup.dat").exists()


@pytest.mark.parametrize("key", ["C-d", "q"])
def test_control_d_ends_the_program_like_q(terminal, distribution, key):
    before = terminal_settings(terminal)
    begin_install(terminal)
    if key == "q":
        terminal.type("q")
        terminal.wait_for("Please press enter to quit...")
        terminal.type("")
    else:
        terminal.press(key)
    shown = terminal.wait_for("shell> ")
    assert "Please press enter to quit...\n" in shown
    assert terminal.ask_shell("echo $?") == "0"
    assert terminal_settings(terminal) == before
    assert log_of(distribution).endswith("Info:  Installing kestrel, version 3.1\n")
    assert not (distribution.directory / "gxsetup.dat").exists()
    assert not (distribution.directory.parent / "site" / "spool" / "kestrel").exists()
