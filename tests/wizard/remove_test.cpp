// Removing an installation of each product, part by part, and all that must survive.

#include "support/expected.h"
#include "support/rows.h"
#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

const console_script removal_answers =
    answering("What do you want to do", "3") + answering("old graphics and wav", "@/html/vlimg");
const console_script keep_program = {{"Remove kestrel CGI", "no"}};
const console_script keep_wml = {{"Remove merlin CGI", "no"}};
const console_script keep_programs = keep_program + keep_wml;
const console_script take_images = {{"Remove all graphics", "yes"}};
const console_script take_users = {{"Remove all user information", "yes"}};
const console_script keep_templates = {{"Remove template files", "no"}};

const console_script yes_to_all = removal_answers + take_images + take_users;
const console_script no_to_all = removal_answers + keep_programs + keep_templates;

// A removal of 3.1. What it leaves of the directories is a kept text; its screen holds the words,
// or is a kept one where there are none.
struct removal {
    const char *name;
    std::string preparation; // commands of the shell, "@" is the root
    console_script answers;
    const char *words;
    std::string end; // of the screen
    std::vector<std::string> directories;
};

class Remove : public upgraded_test<kestrel> {
  protected:
    void check(const removal &row) const {
        shell(host.meant(row.preparation));
        const wizard_run run = run_wizard(host, {}, row.answers);
        EXPECT_EQ(run.errors, "");
        EXPECT_THAT(run.transcript, AllOf(HasSubstr(row.words), EndsWith(row.end)));
        if (std::string_view(row.words).empty()) {
            expect_kept("screen", run.transcript);
        }
        expect_kept_tree(host, row.directories);
    }
};

using RemoveKestrel = upgraded_test<kestrel, yes>;
using RemoveTanager = upgraded_test<tanager, yes>;
using RemovePlover = upgraded_test<plover>;
using RemoveOsprey = upgraded_test<osprey>;

const std::string add_user = "mkdir spool/kestrel/u_ann; echo mail >spool/kestrel/u_ann/mail\n";
const std::string successful = end_of("remove successful");
const std::string unsuccessful = end_of("remove unsuccessful");
const std::string rename_program = "mv cgi-bin/kestrel.cgi cgi-bin/mail.cgi";
const std::vector<std::string> site = {"cgi-bin", "html", "spool"};
const std::vector<std::string> programs = {"cgi-bin"};
const std::vector<std::string> images = {"html"};
const std::vector<std::string> spool = {"spool"};
const std::vector<std::string> work_area = {"spool/work"};
const std::string &quit = quit_at_a_question;

const std::vector<removal> removals = {
    {"Remove.NoToTheImagesStillRemovesAnEmptyDirectory", "rm html/vlimg/*", no_to_all,
     "[NO]? \n\nWhere is your work area", successful, images},
    // The files go by the name that was typed.
    {"Remove.AWrongDirectoryIsAskedForTheProgramsNameUntilItIsThere", rename_program,
     in_order({{"What do you want to do", "3"},
               {"please enter Q to quit\n?", "wrong"},
               {"please enter Q to quit\n?", ""},
               {"?", ""},
               {"?", "mail"},
               {"Remove merlin CGI", "no"},
               {"old graphics", "q"}}),
     "", quit, programs},
    {"Remove.TheNameOfTheProgramLosesItsExtension", rename_program,
     keep_wml + answering("What do you want to do", "3") + answering("to quit\n?", "mail.cgi") +
         answering("old graphics", "q"),
     "to quit\n? \nRemove kestrel CGI files", quit, programs},
    {"Remove.ProgramPatternsTakeEveryExtensionAndReachIntoSubdirectories",
     "cd cgi-bin; mkdir old mixed u_ann; touch kestrel.new kestrel.bak KESTREL.old kestrels.cgi "
     "other.cgi old/kestrel.cgi mixed/kestrel.ini mixed/keep u_ann/kestrel.cgi",
     removal_answers + keep_wml + keep_templates,
     "Error: \nCannot remove @/cgi-bin/mixed: Directory not empty\n", unsuccessful, programs},
    {"Remove.QuittingWhereTheProgramIsNotFoundLeavesEverything", "rm cgi-bin/kestrel.cgi",
     answering("What do you want to do", "3") + answering("enter Q to quit", "q"),
     "please enter Q to quit\n? ", quit, programs},
    {"Remove.TheWmlProgramIsAskedForWhateverWasInstalled", "", no_to_all,
     "\nRemove merlin CGI files from @/cgi-bin [YES]? ", successful, programs},
    // What is left does not fail the removal.
    {"Remove.ImagesGoByTheirExtensionsInSubdirectoriesTooAndTheRestIsReported",
     "cd html/vlimg; mkdir deep u_ann; touch LOUD.GIF keep.png deep/a.jpg deep/b.wav u_ann/c.gif",
     no_to_all + take_images, ".......Error: Cannot remove @/html/vlimg: Directory not empty\n",
     successful, images},
    {"Remove.UsersStayWithTheTemplatesDirectoryUnlessTheyAreToGo", add_user,
     removal_answers + keep_programs, "Error: Cannot remove @/spool/kestrel: Directory not empty\n",
     successful, spool},
    {"Remove.AWorkAreaInsideTheTemplatesOutlivesThem",
     "cd spool/kestrel; mkdir -p users/u_ann; echo mail >users/u_ann/mail; echo list "
     ">users/list.txt",
     removal_answers + keep_programs + answering("your work area", "@/spool/kestrel/users"),
     "Error: Cannot remove @/spool/kestrel: Directory not empty\n", successful, spool},
    {"Remove.UsersGoFromAWorkAreaElsewhereAndNothingElseThere",
     "mkdir -p spool/work/u_ann/deep; touch spool/work/u_ann/mail spool/work/u_ann/deep/mail\n"
     "echo a file >spool/work/u_x; echo notes >spool/work/notes",
     no_to_all + take_users + answering("your work area", "@/spool/work"), "", successful,
     work_area},
    {"Remove.WhatTheOldIniNamesIsOfferedAndOnlyThatIsTouched",
     "mkdir spool/other; touch spool/other/a.tpl html/other.gif cgi-bin/other.cgi", yes_to_all,
     "\n[@/spool/kestrel]? ", successful, site},
    {"Remove.TheAnswersSavedWithTheInstallationAreLoaded",
     "echo workarea @/spool/saved >>spool/kestrel/gxsetup.dat",
     removal_answers + keep_programs + answering("your work area", "q"), "[@/spool/saved]? ", quit,
     programs},
};

const int registered = register_rows<Remove>(removals);

TEST_F(RemoveKestrel, YesToAllHoldsThisDialogue) {
    shell(add_user);
    expect_kept_run(host, run_wizard(host, {}, yes_to_all), site);
}

TEST_F(RemoveKestrel, NoToAllStillReportsTheImagesDirectoryAndRemovesNothing) {
    expect_kept_run(host, run_wizard(host, {}, no_to_all), site);
}

TEST_F(RemoveTanager, TakesSetsManualsAndBulletinsFromTheDirectoryAboveTheSets) {
    expect_kept_run(host, run_wizard(host, {}, yes_to_all), site);
}

TEST_F(RemoveKestrel, LeavesScriptsTheDistributionAndItsAnswersAndSavesNothing) {
    const std::string distribution = tree_of(host, "dist/tpl") + tree_of(host, "dist/wap");
    const std::string answers_before = read_file("dist/gxsetup.dat");
    run_wizard(host, {}, yes_to_all);
    EXPECT_EQ(tree_of(host, "dist/tpl") + tree_of(host, "dist/wap"), distribution);
    EXPECT_EQ(read_file("dist/gxsetup.dat"), answers_before);
    expect_kept("log", shown_log(host, "dist/gxsetup.log"));
}

TEST_F(Remove, DebugLogNamesEachStep) {
    add_file("spool/kestrel/u_x", "");
    run_wizard(host, {"-debug"}, no_to_all + take_users);
    const std::string log =
        shown_log_without(host, "dist/gxsetup.log", {"INI: ", "Wild finding", "No files found"});
    expect_kept("log", log.substr(log.find("Debug: Case 4")));
}

TEST_F(RemovePlover, AfterAnUpgradeTakesBothReleasesWithListAndOriginals) {
    run_wizard(host, {}, {{"temporary files", "no"}});
    EXPECT_TRUE(is_there("spool/plover/tmptlist.txt"));
    EXPECT_TRUE(is_there("spool/plover/originals"));
    EXPECT_TRUE(is_there("cgi-bin/plover.new"));
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_THAT(run.transcript, EndsWith(end_of("remove successful")));
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "spool"), "");
}

TEST_F(RemoveOsprey, AfterAnUpgradeNothingOfItIsLeft) {
    run_wizard(host, {},
               {{"replace the old templates", "yes"},
                {"Where are the .gif", "@/html/vlimg"},
                {"merlin cgi", "yes"},
                {"temporary files", "no"}});
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_THAT(run.transcript, EndsWith(end_of("remove successful")));
    EXPECT_EQ(site_tree(host), "");
}

TEST_F(Remove, AWorkAreaThatDoesNotExistHasNoUsers) {
    const wizard_run run = run_wizard(
        host, {}, no_to_all + take_users + answering("your work area", "@/spool/nowhere"));
    EXPECT_THAT(run.transcript,
                HasSubstr("@/spool/nowhere does not exist... gxsetup will create it\n"));
    EXPECT_THAT(run.transcript, HasSubstr("[NO]? No user directories found.\n"));
    EXPECT_EQ(run.errors, "Could not read directory file: No such file or directory\n");
    EXPECT_FALSE(is_there("spool/nowhere"));
}

TEST_F(Remove, RunFromInsideTheTemplatesItKeepsTheSetupItsLogsAndTheUsers) {
    add_file("spool/kestrel/u_ann/mail", "mail\n");
    const wizard_run run =
        run_wizard(host, {}, keep_wml + take_images, {.directory = "spool/kestrel"});
    expect_kept_run(host, run, {"spool"});
    EXPECT_EQ(tree_of(host, "cgi-bin"), "");
}

} // namespace
