// What the one argument of the program selects.

#include "support/expected.h"
#include "support/rows.h"
#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

constexpr const char *argument_help = "\n"
                                      "Start gxsetup without an argument.\n"
                                      "\n"
                                      "For more information, e-mail: support@varnel.example\n";

constexpr const char *started = "Info:  * gxsetup, version 3.0h started *\n";

constexpr const char *pause = "Please press enter to quit...\n";

// What each of the command lines shows and logs. Their arguments stand between bars.
struct command_line {
    const char *name;
    const char *lines;
    std::string shown;
    std::string errors_logged;
    int status = 0;
};

class CommandLine : public unpacked_test<kestrel> {
  protected:
    void check(const command_line &row) const {
        std::istringstream lines(row.lines);
        for (std::string argument; std::getline(lines, argument, '|');) {
            SCOPED_TRACE(argument);
            const wizard_run run = run_wizard(host, {argument}, {}, {.status = row.status});
            EXPECT_EQ(run.transcript, row.shown);
            EXPECT_EQ(run.errors, "");
            EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started + row.errors_logged);
        }
    }
};

constexpr const char *invalid = "Error: Invalid Argument\n";
constexpr const char *too_many = "Error: Too many command line arguments\n";

const std::vector<command_line> command_lines = {
    {"CommandLine.VersionIsShownBeforeThePause", "-version|-Version|-VERSION",
     std::string("gxsetup, version 3.0h\n\n") + pause, ""},
    {"CommandLine.HelpIsShownWithoutPause", "?|help|HELP|Help", argument_help, ""},
    {"CommandLine.UnknownArgumentEndsWithStatusOneWithoutPause",
     "-x||/debug|/version|/?|-help|debug|%s%n", std::string(invalid) + argument_help, invalid, 1},
};

const int registered = register_rows<CommandLine>(command_lines);

TEST_F(CommandLine, ASecondArgumentIsTooMany) {
    EXPECT_EQ(run_wizard(host, {"-version", "-version"}, {}).transcript,
              too_many + std::string(argument_help) + pause);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), std::string(started) + too_many);
}

TEST_F(CommandLine, MissingHelpFileIsReported) {
    shell("rm dist/vsetup.hlp");
    EXPECT_EQ(run_wizard(host, {"help"}, {}).transcript, "Error: Help file not found\n\n");
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              std::string(started) + "Error: Help file not found\n");
}

TEST_F(CommandLine, EndOfInputEndsEveryPause) {
    run_wizard(host, {"-version"}, typed(""));
    run_wizard(host, {"-version", "-version"}, typed(""));
}

TEST_F(CommandLine, DebugRunsTheWizardWithEveryLogLine) {
    const wizard_run run = run_wizard(host, {"-DEBUG"}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + goodbye);
    expect_kept("log", shown_log_without(host, "dist/gxsetup.log", {"INI: "}));
}

TEST_F(CommandLine, EveryRunStartsALogAndKeepsTwoOlderOnes) {
    run_wizard(host, {"first"}, {}, {.status = 1});
    run_wizard(host, {"-version", "second"}, {});
    run_wizard(host, {"-version"}, {});
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started);
    EXPECT_EQ(shown_log(host, "dist/gxsetup1.log"), std::string(started) + too_many);
    EXPECT_EQ(shown_log(host, "dist/gxsetup2.log"), std::string(started) + invalid);
    run_wizard(host, {"help"}, {});
    EXPECT_EQ(shown_log(host, "dist/gxsetup2.log"), std::string(started) + too_many);
    EXPECT_FALSE(is_there("dist/gxsetup3.log"));
}

} // namespace
