// Removing an installation of each product, part by part, and all that must survive.

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

const console_script removal = {{"What do you want to do", "3"},
                                {"old graphics and wav", "@/html/vlimg"}};
const console_script keep_program = {{"Remove kestrel CGI", "no"}};
const console_script keep_wml = {{"Remove merlin CGI", "no"}};
const console_script keep_programs = keep_program + keep_wml;
const console_script take_images = {{"Remove all graphics", "yes"}};
const console_script take_users = {{"Remove all user information", "yes"}};
const console_script keep_templates = {{"Remove template files", "no"}};

const console_script yes_to_all = removal + take_images + take_users;
const console_script no_to_all = removal + keep_programs + keep_templates;

std::string site_tree(const world &host) {
    return tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool");
}

// --- All of it ---

TEST(RemoveKestrel, YesToAllHoldsThisDialogue) {
    const upgrade_world host("kestrel", "yes");
    add_file("spool/kestrel/u_ann/mail", "mail\n");
    expect_kept_run(host, run_wizard(host, {}, yes_to_all), {"cgi-bin", "html", "spool"});
}

TEST(RemoveKestrel, LeavesScriptsTheDistributionAndItsAnswersAndSavesNothing) {
    const upgrade_world host("kestrel", "yes");
    const std::string distribution = tree_of(host, "dist/tpl") + tree_of(host, "dist/wap");
    const std::string answers_before = read_file("dist/gxsetup.dat");
    run_wizard(host, {}, yes_to_all);
    EXPECT_EQ(tree_of(host, "dist/tpl") + tree_of(host, "dist/wap"), distribution);
    EXPECT_EQ(read_file("dist/gxsetup.dat"), answers_before);
    expect_kept("log", shown_log(host, "dist/gxsetup.log"));
}

TEST(RemoveKestrel, DebugLogNamesEachStep) {
    const upgrade_world host("kestrel");
    add_file("spool/kestrel/u_x", "");
    run_wizard(host, {"-debug"}, no_to_all + take_users);
    const std::string log =
        shown_log_without(host, "dist/gxsetup.log", {"INI: ", "Wild finding", "No files found"});
    expect_kept("log", log.substr(log.find("Debug: Case 4")));
}

TEST(RemoveKestrel, NoToAllStillReportsTheImagesDirectoryAndRemovesNothing) {
    const upgrade_world host("kestrel", "yes");
    const std::string before = site_tree(host);
    expect_kept("screen", run_wizard(host, {}, no_to_all).transcript);
    EXPECT_EQ(site_tree(host), before);
}

TEST(RemoveKestrel, NoToTheImagesStillRemovesAnEmptyDirectory) {
    const upgrade_world host("kestrel");
    for (const std::string &name : listed_names("html/vlimg")) {
        std::filesystem::remove("html/vlimg/" + name);
    }
    const wizard_run run = run_wizard(host, {}, no_to_all);
    EXPECT_THAT(run.transcript, Not(HasSubstr("Error")));
    EXPECT_FALSE(is_there("html/vlimg"));
}

TEST(RemovePlover, AfterAnUpgradeTakesBothReleasesWithListAndOriginals) {
    const upgrade_world host("plover");
    run_wizard(host, {}, {{"temporary files", "no"}});
    EXPECT_TRUE(is_there("spool/plover/tmptlist.txt"));
    EXPECT_TRUE(is_there("spool/plover/originals"));
    EXPECT_TRUE(is_there("cgi-bin/plover.new"));
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_THAT(run.transcript, EndsWith(end_of("remove successful")));
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "spool"), "");
}

TEST(RemoveTanager, TakesSetsManualsAndBulletinsFromTheDirectoryAboveTheSets) {
    const upgrade_world host("tanager", "yes");
    expect_kept("screen", run_wizard(host, {}, yes_to_all).transcript);
    EXPECT_EQ(site_tree(host), "");
}

TEST(RemoveOsprey, AfterAnUpgradeNothingOfItIsLeft) {
    const upgrade_world host("osprey");
    run_wizard(host, {},
               {{"replace the old templates", "yes"},
                {"Where are the .gif", "@/html/vlimg"},
                {"merlin cgi", "yes"},
                {"temporary files", "no"}});
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_THAT(run.transcript, EndsWith(end_of("remove successful")));
    EXPECT_EQ(site_tree(host), "");
}

// --- The programs ---

TEST(Remove, AWrongDirectoryIsAskedForTheProgramsNameUntilItIsThere) {
    const upgrade_world host("kestrel");
    std::filesystem::rename("cgi-bin/kestrel.cgi", "cgi-bin/mail.cgi");
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"What do you want to do", "3"},
                                                {"please enter Q to quit\n?", "wrong"},
                                                {"please enter Q to quit\n?", ""},
                                                {"?", ""},
                                                {"?", "mail"},
                                                {"Remove merlin CGI", "no"},
                                                {"old graphics", "q"}}));
    expect_kept("screen", run.transcript);
    // The files go by the name that was typed.
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0644 cgi-bin/kestrel.ini\n");
}

TEST(Remove, QuittingWhereTheProgramIsNotFoundLeavesEverything) {
    const upgrade_world host("kestrel");
    std::filesystem::remove("cgi-bin/kestrel.cgi");
    const wizard_run run =
        run_wizard(host, {}, {{"What do you want to do", "3"}, {"enter Q to quit", "q"}});
    EXPECT_THAT(run.transcript, EndsWith("please enter Q to quit\n? " + quit_at_a_question));
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
}

TEST(Remove, TheNameOfTheProgramLosesItsExtension) {
    const upgrade_world host("kestrel");
    std::filesystem::rename("cgi-bin/kestrel.cgi", "cgi-bin/mail.cgi");
    const wizard_run run = run_wizard(host, {},
                                      keep_wml + console_script{{"What do you want to do", "3"},
                                                                {"enter Q to quit", "mail.cgi"},
                                                                {"old graphics", "q"}});
    EXPECT_FALSE(is_there("cgi-bin/mail.cgi")) << run.transcript;
}

TEST(Remove, ProgramPatternsTakeEveryExtensionAndReachIntoSubdirectories) {
    const upgrade_world host("kestrel");
    for (const char *name :
         {"kestrel.new", "kestrel.bak", "KESTREL.old", "kestrels.cgi", "other.cgi",
          "old/kestrel.cgi", "mixed/kestrel.ini", "mixed/keep", "u_ann/kestrel.cgi"}) {
        add_file(std::string("cgi-bin/") + name, "");
    }
    const wizard_run run = run_wizard(host, {}, removal + keep_wml + keep_templates);
    EXPECT_THAT(run.transcript,
                HasSubstr("Error: \nCannot remove @/cgi-bin/mixed: Directory not empty\n"));
    EXPECT_THAT(run.transcript, EndsWith(end_of("remove unsuccessful")));
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0644 cgi-bin/kestrels.cgi \"\"\n"
                                        "0755 cgi-bin/mixed/\n"
                                        "0644 cgi-bin/mixed/keep \"\"\n"
                                        "0644 cgi-bin/other.cgi \"\"\n"
                                        "0755 cgi-bin/u_ann/\n"
                                        "0644 cgi-bin/u_ann/kestrel.cgi \"\"\n");
}

TEST(Remove, TheWmlProgramIsAskedForWhateverWasInstalled) {
    const upgrade_world host("kestrel");
    const wizard_run run = run_wizard(host, {}, no_to_all);
    EXPECT_THAT(run.transcript, HasSubstr("\nRemove merlin CGI files from @/cgi-bin [YES]? "));
}

// --- The images ---

TEST(Remove, ImagesGoByTheirExtensionsInSubdirectoriesTooAndTheRestIsReported) {
    const upgrade_world host("kestrel");
    for (const char *name : {"LOUD.GIF", "keep.png", "deep/a.jpg", "deep/b.wav", "u_ann/c.gif"}) {
        add_file(std::string("html/vlimg/") + name, "");
    }
    const wizard_run run = run_wizard(host, {}, no_to_all + take_images);
    // What is left does not fail the removal.
    EXPECT_THAT(run.transcript, EndsWith(end_of("remove successful")));
    EXPECT_THAT(run.transcript,
                HasSubstr(".......Error: Cannot remove @/html/vlimg: Directory not empty\n"));
    EXPECT_EQ(tree_of(host, "html"), "0755 html/vlimg/\n"
                                     "0644 html/vlimg/keep.png \"\"\n"
                                     "0660 html/vlimg/menu.js \"31 menu.js\"\n"
                                     "0660 html/vlimg/menu.vbs \"31 menu.vbs\"\n"
                                     "0755 html/vlimg/u_ann/\n"
                                     "0644 html/vlimg/u_ann/c.gif \"\"\n");
}

// --- Users and templates ---

TEST(Remove, UsersStayWithTheTemplatesDirectoryUnlessTheyAreToGo) {
    const upgrade_world host("kestrel");
    add_file("spool/kestrel/u_ann/mail", "mail\n");
    const wizard_run run = run_wizard(host, {}, removal + keep_programs);
    EXPECT_THAT(run.transcript,
                HasSubstr("Error: Cannot remove @/spool/kestrel: Directory not empty\n"));
    EXPECT_THAT(run.transcript, EndsWith(end_of("remove successful")));
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n"
                                      "0755 spool/kestrel/u_ann/\n"
                                      "0644 spool/kestrel/u_ann/mail \"mail\"\n");
}

TEST(Remove, AWorkAreaInsideTheTemplatesOutlivesThem) {
    const upgrade_world host("kestrel");
    add_file("spool/kestrel/users/u_ann/mail", "mail\n");
    add_file("spool/kestrel/users/list.txt", "list\n");
    run_wizard(host, {},
               removal + keep_programs +
                   console_script{{"your work area", "@/spool/kestrel/users"}});
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n"
                                      "0755 spool/kestrel/users/\n"
                                      "0644 spool/kestrel/users/list.txt \"list\"\n"
                                      "0755 spool/kestrel/users/u_ann/\n"
                                      "0644 spool/kestrel/users/u_ann/mail \"mail\"\n");
}

TEST(Remove, UsersGoFromAWorkAreaElsewhereAndNothingElseThere) {
    const upgrade_world host("kestrel");
    add_file("spool/work/u_ann/mail", "mail\n");
    add_file("spool/work/u_ann/deep/mail", "mail\n");
    add_file("spool/work/u_x", "a file\n");
    add_file("spool/work/notes", "notes\n");
    const wizard_run run = run_wizard(
        host, {}, no_to_all + take_users + console_script{{"your work area", "@/spool/work"}});
    expect_kept("screen", run.transcript);
    EXPECT_EQ(tree_of(host, "spool/work"), "0644 spool/work/notes \"notes\"\n"
                                           "0644 spool/work/u_x \"a file\"\n");
}

TEST(Remove, AWorkAreaThatDoesNotExistHasNoUsers) {
    const upgrade_world host("kestrel");
    const wizard_run run = run_wizard(
        host, {}, no_to_all + take_users + console_script{{"your work area", "@/spool/nowhere"}});
    EXPECT_THAT(run.transcript,
                HasSubstr("@/spool/nowhere does not exist... gxsetup will create it\n"));
    EXPECT_THAT(run.transcript, HasSubstr("[NO]? No user directories found.\n"));
    EXPECT_EQ(run.errors, "Could not read directory file: No such file or directory\n");
    EXPECT_FALSE(is_there("spool/nowhere"));
}

// --- From inside the templates directory ---

TEST(Remove, RunFromInsideTheTemplatesItKeepsTheSetupItsLogsAndTheUsers) {
    const upgrade_world host("kestrel");
    add_file("spool/kestrel/u_ann/mail", "mail\n");
    const wizard_run run =
        run_wizard(host, {}, keep_wml + take_images, {.directory = "spool/kestrel"});
    expect_kept("screen", run.transcript);
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n"
                                      "0770 spool/kestrel/gxsetup \"the setup program\"\n"
                                      "0644 spool/kestrel/gxsetup.log\n"
                                      "0660 spool/kestrel/gxsetup1.log\n"
                                      "0660 spool/kestrel/gxsetup2.log \"\"\n"
                                      "0755 spool/kestrel/u_ann/\n"
                                      "0644 spool/kestrel/u_ann/mail \"mail\"\n");
    EXPECT_EQ(tree_of(host, "cgi-bin"), "");
}

TEST(Remove, WhatTheOldIniNamesIsOfferedAndOnlyThatIsTouched) {
    const upgrade_world host("kestrel");
    add_file("spool/other/a.tpl", "other\n");
    add_file("html/other.gif", "other\n");
    add_file("cgi-bin/other.cgi", "other\n");
    run_wizard(host, {}, yes_to_all);
    EXPECT_EQ(tree_of(host, "spool"), "0755 spool/other/\n"
                                      "0644 spool/other/a.tpl \"other\"\n");
    EXPECT_TRUE(is_there("html/other.gif"));
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0644 cgi-bin/other.cgi \"other\"\n");
}

TEST(Remove, TheAnswersSavedWithTheInstallationAreLoaded) {
    const upgrade_world host("kestrel");
    edit_by_hand("spool/kestrel/gxsetup.dat", host.meant("workarea @/spool/saved"));
    const wizard_run run =
        run_wizard(host, {}, removal + keep_programs + console_script{{"your work area", "q"}});
    EXPECT_THAT(run.transcript, EndsWith("[@/spool/saved]? " + quit_at_a_question));
}

} // namespace
