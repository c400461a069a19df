// The wizard at a terminal, where a prompt must be on the screen before its answer is typed.

#include "support/expected.h"
#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

// A session at its main menu.
class Terminal : public testing::Test {
  protected:
    Terminal() { EXPECT_TRUE(terminal.wait_for("What do you want to do [1]? ")); }

    const world host{"kestrel"};
    terminal_session terminal{host};
};

// A prompt that is not shown in time is never answered: the session hangs then.
TEST_F(Terminal, EveryPromptIsOnTheScreenBeforeItsAnswerIsTyped) {
    EXPECT_EQ(terminal.hold(no_to_both + answering("domain name", "site.test")), 0);
    expect_kept("screen", terminal.screen());
}

TEST_F(Terminal, PromptsComeInTimeThroughAPipeToo) {
    terminal_session piped(host, {}, print_through_pipe);
    EXPECT_EQ(piped.hold(no_to_both), 0);
}

TEST_F(Terminal, InterruptEndsTheSessionAndSavesNothing) {
    terminal.type("\n");
    ASSERT_TRUE(terminal.wait_for("[@/cgi-bin]? "));
    terminal.type("\x03");
    EXPECT_EQ(terminal.wait_for_end(), killed_by_signal + SIGINT);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
    EXPECT_EQ(site_tree(host), "");
}

TEST_F(Terminal, EndOfInputKeyQuits) {
    terminal.type("\x04");
    EXPECT_EQ(terminal.wait_for_end(), 0);
    EXPECT_EQ(terminal.screen(), welcome + menu("kestrel") + quit_at_a_question);
}

TEST_F(Terminal, HangingUpEndsTheSessionAndSavesNothing) {
    terminal.hang_up();
    EXPECT_EQ(terminal.wait_for_end(), killed_by_signal + SIGHUP);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

// As under nohup: the end of the terminal is not a signal then but the end of input.
TEST_F(Terminal, HangingUpAProgramThatIgnoresItIsTheEndOfInput) {
    terminal_session deaf(host, {}, [] { std::signal(SIGHUP, SIG_IGN); });
    ASSERT_TRUE(deaf.wait_for("What do you want to do [1]? "));
    deaf.hang_up();
    EXPECT_EQ(deaf.wait_for_end(), 0);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

TEST_F(Terminal, HangingUpInTheMiddleOfTheWorkLeavesWholeFilesOrNone) {
    ASSERT_TRUE(terminal.press_enter_until("Do you want to change any of your answers [NO]? "));
    add_file("cgi-bin/kestrel.ini", "old 1\n");
    terminal.type("\n");
    terminal.hang_up();
    EXPECT_EQ(terminal.wait_for_end(), killed_by_signal + SIGHUP);
    const std::string ini = read_file("cgi-bin/kestrel.ini");
    EXPECT_TRUE(ini == "old 1\n" || ini.ends_with("\noriginal_pophost mail.example.com\n")) << ini;
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

TEST_F(Terminal, QuitWaitsForEnter) {
    EXPECT_EQ(terminal.hold({{"What do you want to do", "q"}, {"Please press enter to quit", ""}}),
              0);
}

} // namespace
