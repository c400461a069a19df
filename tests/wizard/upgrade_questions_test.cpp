// The questions of the upgrade: the old installation that is looked for, second passes, and the
// switches between upgrade and install.

#include "support/tree.h"
#include "wizard/dialogues.h"
#include "wizard/screens.h"

#include <filesystem>

namespace {

using testing::HasSubstr;
using testing::Not;

const console_script upgrade = {{"What do you want to do", "2"}};
const console_script replacing = {{"replace the old templates", "yes"}};

std::string templates_question(const std::string &offered) {
    return "\nWhere are your template files (this must be an existing directory)\n[" + offered +
           "]? ";
}

using UpgradeSearch = dialogue_test<unpacked_test<kestrel>>;
using UpgradeQuestions = dialogue_test<upgraded_test<kestrel>>;
using UpgradeSetQuestions = dialogue_test<upgraded_test<tanager>>;

// Where the wizard has installed nothing.
const std::vector<dialogue> searches = {
    {"UpgradeSearch.WithoutOldProgramAYesSwitchesToTheInstall", "",
     upgrade + answering("install questions", "y") + answering("Webserver directory", "q")},
    {"UpgradeSearch.AnEmptyLineAtTheSwitchIsAskedAgain", "",
     in_order({{"What do you want to do", "2"},
               {"install questions", ""},
               {"install questions", ""},
               {"install questions", "q"}}),
     "\ninstall questions ? \ninstall questions ? \ninstall questions ? " + quit_at_a_question},
    {"UpgradeSearch.ANoAtTheSwitchIsANameThatIsDropped", "mkdir spool/kestrel",
     upgrade + answering("install questions", "no") + answering("template files", "q"),
     "install questions ? " + templates_question("@/spool/kestrel") + quit_at_a_question},
    {"UpgradeSearch.TheOldInstallationIsLookedForWhereItWasStoredNotWhereItIsAnswered",
     "mkdir cgi-new spool/stored spool/typed; touch cgi-bin/kestrel.cgi\n"
     "echo templates @/spool/stored >cgi-bin/kestrel.ini\n"
     "echo templates @/spool/typed >cgi-new/kestrel.ini",
     upgrade + answering("Where are the cgi files", "@/cgi-new") + answering("template files", "q"),
     "\n[@/cgi-bin]? " + templates_question("@/spool/stored") + quit_at_a_question},
    {"UpgradeSearch.AProgramWhereItIsAnsweredAloneIsNotFound",
     "mkdir cgi-new; touch cgi-new/kestrel.cgi",
     upgrade + answering("Where are the cgi", "@/cgi-new") + answering("install questions", "q")},
};

const std::vector<dialogue> dialogues = {
    {"UpgradeQuestions.TheAnswersSavedWithTheInstallationAreLoadedThoughTheSessionHasLoadedSome",
     "echo vlimg_dir @/html/saved >>spool/kestrel/gxsetup.dat\n"
     "echo vlimg_dir @/html/ini >>cgi-bin/kestrel.ini\n"
     "echo domain ini.test >>cgi-bin/kestrel.ini",
     answering("Where are the .gif", "q"), "\n[@/html/saved]? " + quit_at_a_question},
    // The paths' texts are compared.
    {"UpgradeQuestions.AnImagesDirectoryThatIsTheTemplatesIsRefusedUntilItDiffers", "",
     in_order({{"Where are the .gif", "@/spool/kestrel"},
               {"Where are the .gif", "@/spool/kestrel"},
               {"Where are the .gif", "@/spool/./kestrel"},
               {"Relative URL", "q"}})},
    // There is no program in cgi-new, but it is not looked for.
    {"UpgradeQuestions.ASecondPassLooksNothingUpAndOffersTheStoredUrl", "mkdir cgi-new",
     in_order({{"replace the old templates", "yes"},
               {"Where are the cgi", "@/cgi-new"},
               {"Relative URL", "/pictures"},
               {"merlin cgi", "yes"},
               {"change any", "yes"},
               {"change any", "q"}})},
    {"UpgradeQuestions.TheInstallThatFindsAnOldProgramSwitchesHere", "",
     answering("What do you want to do", "1") + answering("upgrade questions", "yes") +
         answering("template files (", "q")},
};

const std::vector<dialogue> set_dialogues = {
    {"UpgradeSetQuestions.ASetProductIsOfferedItsOldWorkAreaForTheTemplates", "",
     answering("template files (", "q"),
     templates_question("@/spool/tanager") + quit_at_a_question},
};

const int registered = register_rows<UpgradeSearch>(searches) +
                       register_rows<UpgradeQuestions>(dialogues) +
                       register_rows<UpgradeSetQuestions>(set_dialogues);

TEST_F(UpgradeSearch, ANewNameForTheProgramIsDroppedAndTheStoredOneUsed) {
    shell(host.meant("mkdir spool/old; touch cgi-bin/mail.cgi\n"
                     "echo templates @/spool/kestrel >cgi-bin/mail.ini\n"
                     "echo templates @/spool/old >cgi-bin/kestrel.ini"));
    const wizard_run run =
        run_wizard(host, {}, no_to_both + upgrade + answering("install questions", "mail"));
    expect_kept("screen", run.transcript);
    EXPECT_THAT(read_file("dist/gxsetup.dat"), HasSubstr("\ncgi_name kestrel\n"));
}

TEST_F(UpgradeQuestions, WhatIsLoadedDoesNotUndoTheAnswersOfThisPass) {
    std::filesystem::create_directory("cgi-new");
    edit_by_hand("cgi-bin/kestrel.ini", host.meant("cgi_path @/html\nreplace_tmplts FALSE"));
    const wizard_run run =
        run_wizard(host, {}, no_to_both + replacing + answering("Where are the cgi", "@/cgi-new"));
    EXPECT_THAT(run.transcript, HasSubstr("webserver directory: @/cgi-new\n"));
    EXPECT_THAT(run.transcript, HasSubstr("templates WILL be overwritten\n"));
    EXPECT_TRUE(is_there("cgi-new/kestrel.cgi"));
    EXPECT_TRUE(is_there("cgi-new/kestrel.new"));
    EXPECT_FALSE(is_there("cgi-bin/kestrel.new"));
}

TEST_F(UpgradeQuestions, AMissingOldIniIsPassedOverInSilence) {
    std::filesystem::remove("cgi-bin/kestrel.ini");
    const wizard_run run = run_wizard(host, {}, {{"template files (", "q"}});
    expect_kept("screen", run.transcript);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Upgrading kestrel to version 3.2a\n"
              "Error: INI: file {@/cgi-bin/kestrel.ini} could not be opened for ini settings\n");
}

TEST_F(UpgradeQuestions, AFlatProductIsAskedForNoSets) {
    run_wizard(host, {}, no_to_both + replacing + answering("Relative URL", "/pictures"));
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/kestrel\n"));
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

TEST_F(UpgradeSetQuestions, TheChoiceOfSetsOfAnEarlierPassStaysWhenALaterOneAsksNone) {
    const wizard_run run = run_wizard(host, {}, two_passes(""));
    EXPECT_THAT(run.transcript, HasSubstr("templates WILL NOT be overwritten\n"));
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/tanager/marble\n"));
    EXPECT_THAT(saved, HasSubstr("\nvlimg /vlimg/marble\n"));
}

TEST_F(UpgradeSetQuestions, ALaterPassThatNumbersTheSetsReplacesTheChoice) {
    run_wizard(host, {}, two_passes("yes"));
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    // The lines of the first pass stay and are found first.
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/tanager/marble\n"));
    EXPECT_THAT(saved, HasSubstr("\nvlimg /vlimg/marble\n"));
    EXPECT_THAT(saved, HasSubstr(" @/spool/tanager/marble /pictures/marble marble Set\n"));
}

TEST_F(UpgradeQuestions, AfterASwitchThereAndBackTheInstallationIsLookedUpAgain) {
    shell("mkdir cgi-old; mv cgi-bin/kestrel.* cgi-old");
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
