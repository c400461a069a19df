// The wizard at a terminal, where a prompt must be on the screen before its answer is typed.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <csignal>
#include <gtest/gtest.h>
#include <utility>

namespace {

// A prompt and what is typed at it.
using exchange = std::pair<std::string, std::string>;

const std::vector<exchange> kestrel_session = {
    {"What do you want to do [1]? ", "\n"},
    {"\n[@/cgi-bin]? ", "\n"},
    {"Directory for templates [@/spool/kestrel]? ", "\n"},
    {"\n[@/html/vlimg]? ", "\n"},
    {"\n[/vlimg]? ", "\n"},
    {"What is your domain name [example.com]? ", "site.test\n"},
    {"What is the name of your pop host [mail.site.test]? ", "\n"},
    {"What is the name of your smtp host [mail.site.test]? ", "\n"},
    {"Do you want to install/upgrade the merlin cgi [NO]? ", "\n"},
    {"Do you want to change any of your answers [NO]? ", "\n"},
    {"Make a copy of the original templates to \"@/spool/kestrel/originals\" [YES]? ", "no\n"},
    {"Shall I delete the temporary files [YES]? ", "no\n"},
    {"\nPlease press enter to quit...\n", "\n"},
};

TEST(Terminal, EveryPromptIsOnTheScreenBeforeItsAnswerIsTyped) {
    const world host("kestrel");
    terminal_session terminal(host);
    for (const auto &[prompt, answer] : kestrel_session) {
        ASSERT_TRUE(terminal.wait_for(prompt));
        terminal.type(answer);
    }
    EXPECT_EQ(terminal.wait_for_end(), 0);
    EXPECT_EQ(
        terminal.screen(),
        welcome + menu("kestrel") + "\nInstalling kestrel, version 3.2a\n\n" +
            install_questions("kestrel") +
            "\n"
            "Webserver directory for cgi-files (This must be a valid script directory)\n"
            "[@/cgi-bin]? \n"
            "\n"
            "Directory for templates [@/spool/kestrel]? \n"
            "@/spool/kestrel does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Directory for .gif, .jpg and .wav files\n"
            "[@/html/vlimg]? \n"
            "@/html/vlimg does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Relative URL for HTML references to these images\n"
            "[/vlimg]? \n"
            "\n"
            "\n"
            "What is your domain name [example.com]? site.test\n"
            "\n"
            "What is the name of your pop host [mail.site.test]? \n"
            "\n"
            "What is the name of your smtp host [mail.site.test]? \n"
            "\n"
            "Do you want to install/upgrade the merlin cgi [NO]? \n"
            "\n"
            "\n"
            "-------------------------------------------------------------------------------\n"
            "gxsetup is ready to install kestrel, to version 3.2a\n"
            "using the following answers:\n"
            "\n"
            "Directories\n"
            "webserver directory: @/cgi-bin\n"
            "images directory:    @/html/vlimg\n"
            "templates directory: @/spool/kestrel\n"
            "ini file settings\n"
            "pop host:            mail.site.test\n"
            "smtp host:           mail.site.test\n"
            "domain name:         site.test\n"
            "relative images URL: /vlimg\n"
            "\n"
            "\n"
            "Do you want to change any of your answers [NO]? \n"
            "\n"
            "Please wait while gxsetup installs kestrel\n"
            "\n"
            "Copying template files........................\n"
            "Copying graphic and wav files...\n"
            "Copying VBS and JS files..\n"
            "Copying cgi files.\n"
            "Creating kestrel.ini file." +
            outcome("@/spool/kestrel") +
            "no\n"
            "\n"
            "Shall I delete the temporary files [YES]? no\n" +
            farewell("kestrel", "http://site.test/cgi-bin/kestrel.cgi") + "\n");
}

TEST(Terminal, PromptsComeInTimeThroughAPipeToo) {
    const world host("kestrel");
    terminal_session terminal(host, {}, print_through_pipe);
    for (const auto &[prompt, answer] : kestrel_session) {
        ASSERT_TRUE(terminal.wait_for(prompt));
        terminal.type(answer);
    }
    EXPECT_EQ(terminal.wait_for_end(), 0);
}

TEST(Terminal, InterruptEndsTheSessionAndSavesNothing) {
    const world host("kestrel");
    terminal_session terminal(host);
    ASSERT_TRUE(terminal.wait_for("What do you want to do [1]? "));
    terminal.type("\n");
    ASSERT_TRUE(terminal.wait_for("[@/cgi-bin]? "));
    terminal.type("\x03");
    EXPECT_EQ(terminal.wait_for_end(), killed_by_signal + SIGINT);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "spool") + tree_of(host, "html"), "");
}

TEST(Terminal, EndOfInputKeyQuits) {
    const world host("kestrel");
    terminal_session terminal(host);
    ASSERT_TRUE(terminal.wait_for("What do you want to do [1]? "));
    terminal.type("\x04");
    EXPECT_EQ(terminal.wait_for_end(), 0);
    EXPECT_EQ(terminal.screen(), welcome + menu("kestrel") + quit_at_a_question);
}

TEST(Terminal, HangingUpEndsTheSessionAndSavesNothing) {
    const world host("kestrel");
    terminal_session terminal(host);
    ASSERT_TRUE(terminal.wait_for("What do you want to do [1]? "));
    terminal.hang_up();
    EXPECT_EQ(terminal.wait_for_end(), killed_by_signal + SIGHUP);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

// As under nohup: the end of the terminal is not a signal then but the end of input.
TEST(Terminal, HangingUpAProgramThatIgnoresItIsTheEndOfInput) {
    const world host("kestrel");
    terminal_session terminal(host, {}, [] { std::signal(SIGHUP, SIG_IGN); });
    ASSERT_TRUE(terminal.wait_for("What do you want to do [1]? "));
    terminal.hang_up();
    EXPECT_EQ(terminal.wait_for_end(), 0);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

TEST(Terminal, HangingUpInTheMiddleOfTheWorkLeavesWholeFilesOrNone) {
    const world host("kestrel");
    terminal_session terminal(host);
    ASSERT_TRUE(terminal.wait_for("What do you want to do [1]? "));
    terminal.type("1\n\n\n\n\n\n\n\n\n");
    ASSERT_TRUE(terminal.wait_for("Do you want to change any of your answers [NO]? "));
    add_file("cgi-bin/kestrel.ini", "old 1\n");
    terminal.type("\n");
    terminal.hang_up();
    EXPECT_EQ(terminal.wait_for_end(), killed_by_signal + SIGHUP);
    const std::string ini = read_file("cgi-bin/kestrel.ini");
    EXPECT_TRUE(ini == "old 1\n" || ini.ends_with("\noriginal_pophost mail.example.com\n")) << ini;
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

TEST(Terminal, QuitWaitsForEnter) {
    const world host("kestrel");
    terminal_session terminal(host);
    ASSERT_TRUE(terminal.wait_for("What do you want to do [1]? "));
    terminal.type("q\n");
    ASSERT_TRUE(terminal.wait_for("Please press enter to quit...\n"));
    terminal.type("\n");
    EXPECT_EQ(terminal.wait_for_end(), 0);
}

} // namespace
