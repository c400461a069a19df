// The questions of the upgrade: the old installation that is looked for, second passes, and the
// switches between upgrade and install.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

const console_script upgrade = {{"What do you want to do", "2"}};
const console_script replacing = {{"replace the old templates", "yes"}};

std::string templates_question(const std::string &offered) {
    return "\nWhere are your template files (this must be an existing directory)\n[" + offered +
           "]? ";
}

// --- No old program ---

TEST(UpgradeQuestions, WithoutOldProgramAYesSwitchesToTheInstall) {
    const world host("kestrel");
    const wizard_run run = run_wizard(
        host, {},
        upgrade + console_script{{"install questions", "y"}, {"Webserver directory", "q"}});
    expect_kept("screen", run.transcript);
}

TEST(UpgradeQuestions, AnEmptyLineAtTheSwitchIsAskedAgain) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"What do you want to do", "2"},
                                                {"install questions", ""},
                                                {"install questions", ""},
                                                {"install questions", "q"}}));
    EXPECT_THAT(run.transcript,
                EndsWith("\ninstall questions ? \ninstall questions ? \ninstall questions ? " +
                         quit_at_a_question));
}

TEST(UpgradeQuestions, ANewNameForTheProgramIsDroppedAndTheStoredOneUsed) {
    const world host("kestrel");
    std::filesystem::create_directory("spool/old");
    add_answers(host, "cgi-bin/mail.ini", "templates @/spool/kestrel\n");
    add_answers(host, "cgi-bin/kestrel.ini", "templates @/spool/old\n");
    add_file("cgi-bin/mail.cgi", "");
    const wizard_run run =
        run_wizard(host, {}, no_to_both + upgrade + console_script{{"install questions", "mail"}});
    expect_kept("screen", run.transcript);
    EXPECT_THAT(read_file("dist/gxsetup.dat"), HasSubstr("\ncgi_name kestrel\n"));
}

TEST(UpgradeQuestions, ANoAtTheSwitchIsANameThatIsDropped) {
    const world host("kestrel");
    std::filesystem::create_directory("spool/kestrel");
    const wizard_run run = run_wizard(
        host, {}, upgrade + console_script{{"install questions", "no"}, {"template files", "q"}});
    EXPECT_THAT(run.transcript,
                EndsWith("install questions ? " + templates_question("@/spool/kestrel") +
                         quit_at_a_question));
}

// --- Which installation ---

TEST(UpgradeQuestions, TheOldInstallationIsLookedForWhereItWasStoredNotWhereItIsAnswered) {
    const world host("kestrel");
    for (const char *directory : {"cgi-new", "spool/stored", "spool/typed"}) {
        std::filesystem::create_directory(directory);
    }
    add_file("cgi-bin/kestrel.cgi", "");
    add_answers(host, "cgi-bin/kestrel.ini", "templates @/spool/stored\n");
    add_answers(host, "cgi-new/kestrel.ini", "templates @/spool/typed\n");
    const wizard_run run =
        run_wizard(host, {},
                   upgrade + console_script{{"Where are the cgi files", "@/cgi-new"},
                                            {"template files", "q"}});
    EXPECT_THAT(run.transcript, EndsWith("\n[@/cgi-bin]? " + templates_question("@/spool/stored") +
                                         quit_at_a_question));
}

TEST(UpgradeQuestions, AProgramWhereItIsAnsweredAloneIsNotFound) {
    const world host("kestrel");
    add_file("cgi-new/kestrel.cgi", "");
    const wizard_run run = run_wizard(
        host, {},
        upgrade + console_script{{"Where are the cgi", "@/cgi-new"}, {"install questions", "q"}});
    EXPECT_THAT(
        run.transcript,
        HasSubstr("\n[@/cgi-bin]? \ngxsetup cannot find an old version of kestrel in this"));
}

TEST(UpgradeQuestions, WhatIsLoadedDoesNotUndoTheAnswersOfThisPass) {
    const upgrade_world host("kestrel");
    std::filesystem::create_directory("cgi-new");
    edit_by_hand("cgi-bin/kestrel.ini", host.meant("cgi_path @/html\nreplace_tmplts FALSE"));
    const wizard_run run = run_wizard(
        host, {}, no_to_both + replacing + console_script{{"Where are the cgi", "@/cgi-new"}});
    EXPECT_THAT(run.transcript, HasSubstr("webserver directory: @/cgi-new\n"));
    EXPECT_THAT(run.transcript, HasSubstr("templates WILL be overwritten\n"));
    EXPECT_TRUE(is_there("cgi-new/kestrel.cgi"));
    EXPECT_TRUE(is_there("cgi-new/kestrel.new"));
    EXPECT_FALSE(is_there("cgi-bin/kestrel.new"));
}

TEST(UpgradeQuestions, TheAnswersSavedWithTheInstallationAreLoadedThoughTheSessionHasLoadedSome) {
    const upgrade_world host("kestrel");
    edit_by_hand("spool/kestrel/gxsetup.dat", host.meant("vlimg_dir @/html/saved"));
    edit_by_hand("cgi-bin/kestrel.ini", host.meant("vlimg_dir @/html/ini\ndomain ini.test"));
    const wizard_run run = run_wizard(host, {}, {{"Where are the .gif", "q"}});
    EXPECT_THAT(run.transcript, EndsWith("\n[@/html/saved]? " + quit_at_a_question));
}

TEST(UpgradeQuestions, AMissingOldIniIsPassedOverInSilence) {
    const upgrade_world host("kestrel");
    std::filesystem::remove("cgi-bin/kestrel.ini");
    const wizard_run run = run_wizard(host, {}, {{"template files (", "q"}});
    expect_kept("screen", run.transcript);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Upgrading kestrel to version 3.2a\n"
              "Error: INI: file {@/cgi-bin/kestrel.ini} could not be opened for ini settings\n");
}

TEST(UpgradeQuestions, ASetProductIsOfferedItsOldWorkAreaForTheTemplates) {
    const upgrade_world host("tanager");
    const wizard_run run = run_wizard(host, {}, {{"template files (", "q"}});
    EXPECT_THAT(run.transcript,
                EndsWith(templates_question("@/spool/tanager") + quit_at_a_question));
}

// --- Directories ---

TEST(UpgradeQuestions, AnImagesDirectoryThatIsTheTemplatesIsRefusedUntilItDiffers) {
    const upgrade_world host("kestrel");
    // The paths' texts are compared.
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"Where are the .gif", "@/spool/kestrel"},
                                                {"Where are the .gif", "@/spool/kestrel"},
                                                {"Where are the .gif", "@/spool/./kestrel"},
                                                {"Relative URL", "q"}}));
    expect_kept("screen", run.transcript);
}

// --- Passes ---

TEST(UpgradeQuestions, ASecondPassLooksNothingUpAndOffersTheStoredUrl) {
    const upgrade_world host("kestrel");
    std::filesystem::create_directory("cgi-new");
    // There is no program in cgi-new, but it is not looked for.
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"replace the old templates", "yes"},
                                                {"Where are the cgi", "@/cgi-new"},
                                                {"Relative URL", "/pictures"},
                                                {"merlin cgi", "yes"},
                                                {"change any", "yes"},
                                                {"change any", "q"}}));
    expect_kept("screen", run.transcript);
}

TEST(UpgradeQuestions, AFlatProductIsAskedForNoSets) {
    const upgrade_world host("plover");
    run_wizard(host, {}, no_to_both + replacing + console_script{{"Relative URL", "/pictures"}});
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/plover\n"));
    EXPECT_THAT(saved, HasSubstr("\nvlimg /pictures\n"));
    EXPECT_THAT(saved, Not(HasSubstr("\ntpl_set ")));
}

// The answers of a first pass that chooses sets, up to a second one that takes `replace` for an
// answer.
console_script two_passes(const std::string &replace) {
    return in_order({{"replace the old templates", "yes"},
                     {"Where are the .gif", "@/html/vlimg"},
                     {"change any", "yes"},
                     {"replace the old templates", replace},
                     {"Relative URL", "/pictures"},
                     {"original templates", "no"},
                     {"temporary files", "no"}});
}

TEST(UpgradeQuestions, TheChoiceOfSetsOfAnEarlierPassStaysWhenALaterOneAsksNone) {
    const upgrade_world host("tanager");
    const wizard_run run = run_wizard(host, {}, two_passes(""));
    EXPECT_THAT(run.transcript, HasSubstr("templates WILL NOT be overwritten\n"));
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/tanager/marble\n"));
    EXPECT_THAT(saved, HasSubstr("\nvlimg /vlimg/marble\n"));
}

TEST(UpgradeQuestions, ALaterPassThatNumbersTheSetsReplacesTheChoice) {
    const upgrade_world host("tanager");
    run_wizard(host, {}, two_passes("yes"));
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    // The lines of the first pass stay and are found first.
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/tanager/marble\n"));
    EXPECT_THAT(saved, HasSubstr("\nvlimg /vlimg/marble\n"));
    EXPECT_THAT(saved, HasSubstr(" @/spool/tanager/marble /pictures/marble marble Set\n"));
}

// --- Switches ---

TEST(UpgradeQuestions, TheInstallThatFindsAnOldProgramSwitchesHere) {
    const upgrade_world host("kestrel");
    const wizard_run run = run_wizard(
        host, {},
        {{"What do you want to do", "1"}, {"upgrade questions", "yes"}, {"template files (", "q"}});
    expect_kept("screen", run.transcript);
}

TEST(UpgradeQuestions, AfterASwitchThereAndBackTheInstallationIsLookedUpAgain) {
    const upgrade_world host("kestrel");
    std::filesystem::create_directory("cgi-old");
    for (const char *name : {"kestrel.cgi", "kestrel.ini"}) {
        std::filesystem::rename(std::string("cgi-bin/") + name, std::string("cgi-old/") + name);
    }
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"What do you want to do", "2"},
                                                {"install questions", "yes"},
                                                {"Webserver directory", "@/cgi-old"},
                                                {"upgrade questions", "yes"},
                                                {"replace the old templates", "yes"},
                                                {"original templates", "no"},
                                                {"temporary files", "no"}}));
    expect_kept("screen", run.transcript);
    EXPECT_TRUE(is_there("cgi-old/kestrel.new"));
}

} // namespace
