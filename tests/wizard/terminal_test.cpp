// The wizard at a terminal, where a prompt must be on the screen before its answer is typed.

#include "support/expected.h"
#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

// A prompt that is not shown in time is never answered: the session hangs then.
TEST(Terminal, EveryPromptIsOnTheScreenBeforeItsAnswerIsTyped) {
    const world host("kestrel");
    terminal_session terminal(host);
    EXPECT_EQ(terminal.hold(no_to_both + console_script{{"domain name", "site.test"}}), 0);
    expect_kept("screen", terminal.screen());
}

TEST(Terminal, PromptsComeInTimeThroughAPipeToo) {
    const world host("kestrel");
    terminal_session terminal(host, {}, print_through_pipe);
    EXPECT_EQ(terminal.hold(no_to_both), 0);
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
    EXPECT_EQ(terminal.hold({{"What do you want to do", "q"}, {"Please press enter to quit", ""}}),
              0);
}

} // namespace
