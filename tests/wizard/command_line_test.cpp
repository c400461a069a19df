// What the one argument of the program selects.

#include "support/expected.h"
#include "support/rows.h"
#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *argument_help = "\n"
                                      "Start gxsetup without an argument.\n"
                                      "\n"
                                      "For more information, e-mail: support@varnel.example\n";

constexpr const char *started = "Info:  * gxsetup, version 3.0h started *\n";

constexpr const char *pause = "Please press enter to quit...\n";

// What each of the command lines shows and logs, in a world that is prepared with commands of the
// shell.
struct command_line {
    const char *name;
    std::vector<std::vector<std::string>> arguments;
    std::string shown;
    std::string errors_logged;
    int status = 0;
    const char *preparation = "";
};

class CommandLine : public testing::Test {
  protected:
    static void check(const command_line &row) {
        const world host("kestrel");
        shell(row.preparation);
        for (const std::vector<std::string> &arguments : row.arguments) {
            SCOPED_TRACE(testing::PrintToString(arguments));
            const wizard_run run = run_wizard(host, arguments, {}, {.status = row.status});
            EXPECT_EQ(run.transcript, row.shown);
            EXPECT_EQ(run.errors, "");
            EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started + row.errors_logged);
        }
    }
};

const std::vector<command_line> command_lines = {
    {"CommandLine.VersionIsShownBeforeThePause",
     {{"-version"}, {"-Version"}, {"-VERSION"}},
     std::string("gxsetup, version 3.0h\n\n") + pause,
     ""},
    {"CommandLine.HelpIsShownWithoutPause",
     {{"?"}, {"help"}, {"HELP"}, {"Help"}},
     argument_help,
     ""},
    {"CommandLine.UnknownArgumentEndsWithStatusOneWithoutPause",
     {{"-x"}, {""}, {"/debug"}, {"/version"}, {"/?"}, {"-help"}, {"debug"}, {"%s%n"}},
     std::string("Error: Invalid Argument\n") + argument_help,
     "Error: Invalid Argument\n",
     1},
    {"CommandLine.ASecondArgumentIsTooMany",
     {{"-version", "-version"}},
     std::string("Error: Too many command line arguments\n") + argument_help + pause,
     "Error: Too many command line arguments\n"},
    {"CommandLine.MissingHelpFileIsReported",
     {{"help"}},
     "Error: Help file not found\n\n",
     "Error: Help file not found\n",
     0,
     "rm dist/vsetup.hlp"},
};

const int registered = register_rows<CommandLine>(command_lines);

TEST_F(CommandLine, EndOfInputEndsEveryPause) {
    const world host("kestrel");
    run_wizard(host, {"-version"}, typed(""));
    run_wizard(host, {"-version", "-version"}, typed(""));
}

TEST_F(CommandLine, DebugRunsTheWizardWithEveryLogLine) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {"-DEBUG"}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + goodbye);
    expect_kept("log", shown_log_without(host, "dist/gxsetup.log", {"INI: "}));
}

TEST_F(CommandLine, EveryRunStartsALogAndKeepsTwoOlderOnes) {
    const world host("kestrel");
    run_wizard(host, {"first"}, {}, {.status = 1});
    run_wizard(host, {"-version", "second"}, {});
    run_wizard(host, {"-version"}, {});
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started);
    EXPECT_EQ(shown_log(host, "dist/gxsetup1.log"),
              std::string(started) + "Error: Too many command line arguments\n");
    EXPECT_EQ(shown_log(host, "dist/gxsetup2.log"),
              std::string(started) + "Error: Invalid Argument\n");
    run_wizard(host, {"help"}, {});
    EXPECT_EQ(shown_log(host, "dist/gxsetup2.log"),
              std::string(started) + "Error: Too many command line arguments\n");
    EXPECT_FALSE(is_there("dist/gxsetup3.log"));
}

} // namespace
