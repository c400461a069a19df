// What comes from outside (answers, names, versions, help) cannot steer the administrator's
// terminal. Pipes, files and the log get the bytes as they are.

#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

void expect_in(const std::string &text, const std::string &part) {
    EXPECT_NE(text.find(part), std::string::npos) << "no\n" << part << "\nin\n" << text;
}

// Gives all that was on the screen at the end of a session.
std::string screen_of(const world &host, const console_script &script) {
    terminal_session terminal(host);
    EXPECT_EQ(terminal.hold(script), 0);
    std::string screen = terminal.screen();
    EXPECT_EQ(screen.find_first_of("\x1b\x07\x9b"), std::string::npos) << screen;
    return screen;
}

console_script domain(const std::string &name) {
    return no_to_both + answering("domain name", name);
}

// Makes a pipe, which cannot be copied, among the templates.
void add_pipe(const std::string &name) {
    ASSERT_EQ(::mkfifo(("dist/tpl/" + name).c_str(), S_IRUSR | S_IWUSR), 0);
}

using TerminalSafety = unpacked_test<kestrel>;

TEST_F(TerminalSafety, TypedAnswersAreShownWithoutControlCharacters) {
    const std::string screen = screen_of(host, domain("site\x1b[2Jtest"));
    expect_in(screen, "your pop host [mail.site?[2Jtest]? ");
    expect_in(screen, "\npop host:            mail.site?[2Jtest\n");
    expect_in(screen, "\ndomain name:         site?[2Jtest\n");
    expect_in(screen, "\n    http://site?[2Jtest/cgi-bin/kestrel.cgi");
    expect_in(read_file("cgi-bin/kestrel.ini"), "\ndomain site\x1b[2Jtest\n");
    expect_in(read_file("dist/gxsetup.dat"), "\ndomain site\x1b[2Jtest\n");
}

TEST_F(TerminalSafety, AnswersInUtf8AreShownAsTheyAre) {
    const std::string screen = screen_of(host, domain("b\xC3\xBC"
                                                      "cher\xE2\x82\xAC"));
    expect_in(screen, "\ndomain name:         b\xC3\xBC"
                      "cher\xE2\x82\xAC\n");
}

TEST_F(TerminalSafety, TheVersionOfAProgramIsShownWithoutControlCharacters) {
    add_program("dist/kestrel.cgi", "Version: v3.2\x1b[1m\x9b"
                                    "31m\n");
    expect_in(screen_of(host, quit_at_the_menu), menu("kestrel", "3.2?[1m?31m"));
}

TEST_F(TerminalSafety, NamesInErrorsAreShownWithoutControlCharactersAndLoggedAsTheyAre) {
    add_pipe("bad\x1b]0;x\x07\n.tpl");
    const std::string screen = screen_of(host, domain("site.test"));
    expect_in(screen, "Error: Can't copy ./tpl/bad?]0;x??.tpl: Invalid argument\n");
    expect_in(read_file("dist/gxsetup.log"),
              "Error: Can't copy ./tpl/bad\x1b]0;x\x07\n.tpl: Invalid argument\n");
}

TEST_F(TerminalSafety, TemplateNamesInTheListAreShownWithoutControlCharacters) {
    install_31_and_unpack_32(host);
    add_templates(host, "spool/kestrel", {{"\x1b[8m\n.tpl", "kst_s1", "1.9", "old"}});
    const std::string screen = screen_of(host, no_to_both);
    expect_in(screen, "\n?[8m?.tpl          Current template set: kst_s1 version 1.9\n");
    expect_in(read_file("spool/kestrel/tmptlist.txt"),
              "\n1. \x1b[8m\n.tpl          Current template set: kst_s1 version 1.9\n");
    // The program's own words keep their lines.
    expect_in(screen,
              "\nTemplates that have not been modified but have an upgrade available and can "
              "be\nupgraded safely:\n\n");
    expect_in(screen,
              "\n(This will not overwrite any templates already in this directory) [YES]? ");
}

TEST_F(TerminalSafety, TheHelpKeepsItsLinesAndTabsAndNoOtherControlCharacter) {
    add_file("dist/vsetup.hlp", "[NO_HELP]\n\x1b[31mred\tand\nmore\x08\n\n");
    expect_in(screen_of(host, in_order({{"What do you want", "?"}, {"What do you want", "4"}})),
              "\n?[31mred\tand\nmore?\n\nFor more information");
}

TEST_F(TerminalSafety, APipeGetsTheBytesAsTheyAre) {
    add_pipe("bad\x1b\n.tpl");
    add_file("dist/vsetup.hlp", "[NO_HELP]\n\x1b[31mred\n\n");
    add_program("dist/kestrel.cgi", "Version: v3.2\x1b[1m\n");
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"What do you want", "?"},
                                                {"What do you want", "1"},
                                                {"domain name", "site\x1b[2Jtest\xC2\x9b"},
                                                {"original templates", "no"},
                                                {"temporary files", "no"}}));
    expect_in(run.transcript, menu("kestrel", "3.2\x1b[1m"));
    expect_in(run.transcript, "\n\x1b[31mred\n");
    expect_in(run.transcript, "your pop host [mail.site\x1b[2Jtest\xC2\x9b]? ");
    expect_in(run.transcript, "\ndomain name:         site\x1b[2Jtest\xC2\x9b\n");
    expect_in(run.transcript, "Error: Can't copy ./tpl/bad\x1b\n.tpl: Invalid argument\n");
}

} // namespace
