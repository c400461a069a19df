// What the one argument of the program selects.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

constexpr const char *argument_help = "\n"
                                      "Start gxsetup without an argument.\n"
                                      "\n"
                                      "For more information, e-mail: support@varnel.example\n";

constexpr const char *started = "Info:  * gxsetup, version 3.0h started *\n";

TEST(CommandLine, VersionIsShownBeforeThePause) {
    const world host("kestrel");
    for (const char *argument : {"-version", "-Version", "-VERSION"}) {
        const wizard_run run = run_wizard(host, {argument}, {});
        EXPECT_EQ(run.transcript, "gxsetup, version 3.0h\n"
                                  "\n"
                                  "Please press enter to quit...\n")
            << argument;
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 0) << argument;
        EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started);
    }
}

TEST(CommandLine, HelpIsShownWithoutPause) {
    const world host("kestrel");
    for (const char *argument : {"?", "help", "HELP", "Help"}) {
        const wizard_run run = run_wizard(host, {argument}, {});
        EXPECT_EQ(run.transcript, argument_help) << argument;
        EXPECT_EQ(run.status, 0) << argument;
        EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started);
    }
}

TEST(CommandLine, UnknownArgumentEndsWithStatusOneWithoutPause) {
    const world host("kestrel");
    for (const char *argument : {"-x", "", "/debug", "/version", "/?", "-help", "debug", "%s%n"}) {
        const wizard_run run = run_wizard(host, {argument}, {});
        EXPECT_EQ(run.transcript, std::string("Error: Invalid Argument\n") + argument_help)
            << argument;
        EXPECT_EQ(run.status, 1) << argument;
        EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
                  std::string(started) + "Error: Invalid Argument\n");
    }
}

TEST(CommandLine, ASecondArgumentIsTooMany) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {"-version", "-version"}, {});
    EXPECT_EQ(run.transcript, std::string("Error: Too many command line arguments\n") +
                                  argument_help + "Please press enter to quit...\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              std::string(started) + "Error: Too many command line arguments\n");
}

TEST(CommandLine, MissingHelpFileIsReported) {
    const world host("kestrel");
    std::filesystem::remove("dist/vsetup.hlp");
    const wizard_run run = run_wizard(host, {"help"}, {});
    EXPECT_EQ(run.transcript, "Error: Help file not found\n\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              std::string(started) + "Error: Help file not found\n");
}

TEST(CommandLine, EndOfInputEndsEveryPause) {
    const world host("kestrel");
    EXPECT_EQ(run_wizard(host, {"-version"}, typed("")).status, 0);
    EXPECT_EQ(run_wizard(host, {"-version", "-version"}, typed("")).status, 0);
}

TEST(CommandLine, DebugRunsTheWizardWithEveryLogLine) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {"-DEBUG"}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + goodbye);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(shown_log_without(host, "dist/gxsetup.log", {"INI: "}),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Logging set to DEBUG.\n"
              "Debug: Loading gxvalues defaults\n"
              "Debug: Loading gxvalues from default file\n"
              "Debug: Forming product name\n"
              "Debug: Building template directory\n"
              "Debug: loading gxsetup.dat from templates directory\n"
              "Debug: Getting cgi_name\n"
              "Debug: Getting version #\n"
              "Debug: Getting version from [./kestrel.cgi -version >ver.txt]\n");
}

TEST(CommandLine, EveryRunStartsALogAndKeepsTwoOlderOnes) {
    const world host("kestrel");
    run_wizard(host, {"first"}, {});
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

TEST(CommandLine, LogThatCannotBeOpenedIsSaidAndTheRunGoesOn) {
    const world host("kestrel");
    add_file("dist/gxsetup.log/full", "");
    add_file("dist/gxsetup1.log/full", "");
    add_file("dist/gxsetup2.log/full", "");
    const wizard_run run = run_wizard(host, {"-version"}, {});
    EXPECT_EQ(run.transcript, "Error: log file cannot be opened\n"
                              "Cant open logfile ./gxsetup.log\n"
                              "gxsetup, version 3.0h\n"
                              "\n"
                              "Please press enter to quit...\n");
    EXPECT_EQ(run.status, 0);
}

} // namespace
