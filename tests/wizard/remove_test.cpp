// Removing an installation of each product, part by part, and all that must survive.

#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

const std::string rule =
    "\n-------------------------------------------------------------------------------\n";

std::string first_remove_questions(const std::string &product, const std::string &menu_shown) {
    return welcome + menu_shown + "Removing " + product + ", version 3.2a\n" + rule +
           "Please answer the following questions so I can remove " + product +
           " correctly from\n"
           "your system\n"
           "You will be asked for directories then prompted to delete them\n"
           "Notes: Defaults are shown [thus], just press enter to accept default\n"
           "       Type 'q' then press enter to quit at anytime\n"
           "       Type '?' then press enter at any time for help on a particular question\n"
           "       All directory names must be entered from the root\n"
           "       There will be the option to change any answers at the end\n"
           "-------------------------------------------------------------------------------\n"
           "\n"
           "Where are the cgi files\n"
           "(this will be a scripts or cgi directory setup for the webserver)\n"
           "[@/cgi-bin]? ";
}

std::string first_remove_questions(const std::string &product) {
    return first_remove_questions(product, menu(product, "3.2a", "upgrade", "2"));
}

std::string program_question(const std::string &name) {
    return "\nRemove " + name + " CGI files from @/cgi-bin [YES]? ";
}

std::string images_questions(const std::string &offered = "@/html/vlimg") {
    return "\n"
           "\n"
           "Where are the old graphics and wav files (this must be an existing directory)\n"
           "[" +
           offered +
           "]? "
           "\n"
           "\n"
           "Remove all graphics and wav files from @/html/vlimg and all subdirectories\n"
           "(Warning: this may affect other Varnel Ltd. products) [NO]? ";
}

constexpr const char *images_not_empty = "Error: Cannot remove @/html/vlimg: Directory not empty\n";

std::string users_questions(const std::string &directory, const std::string &offered) {
    return "\n"
           "\n"
           "Where is your work area (this must be an existing directory)\n"
           "[" +
           offered +
           "]? "
           "\n"
           "\n"
           "Remove all user information from " +
           directory + " [NO]? ";
}

std::string users_questions(const std::string &directory) {
    return users_questions(directory, directory);
}

std::string templates_questions(const std::string &directory) {
    return "\n"
           "\n"
           "Where are your template files (this must be an existing directory)\n"
           "[" +
           directory +
           "]? "
           "\n"
           "\n"
           "Remove template files and subdirectories from " +
           directory + " [YES]? ";
}

std::string end_of_removal(const std::string &how = "remove successful") {
    return "\n" + rule + how + "\n\n\nPlease press enter to quit...\n";
}

std::string dots(std::size_t count) {
    return std::string(count, '.');
}

// An answer to each question of a removal: programs, WML program, images, users, templates.
std::string answers(const std::string &programs, const std::string &wml, const std::string &images,
                    const std::string &users, const std::string &templates) {
    return "3\n\n" + programs + "\n" + wml + "\n@/html/vlimg\n" + images + "\n\n" + users + "\n\n" +
           templates + "\n\n";
}

const std::string no_to_all = answers("no", "no", "no", "no", "no");
const std::string yes_to_all = answers("yes", "yes", "yes", "yes", "yes");

// --- All of it ---

TEST(RemoveKestrel, YesToAllHoldsThisDialogue) {
    const world host("kestrel");
    install_31_and_unpack_32(host, "yes");
    add_file("spool/kestrel/u_ann/mail", "mail\n");
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_EQ(run.transcript, first_remove_questions("kestrel") + program_question("kestrel") +
                                  ".." + program_question("merlin") + ".." + images_questions() +
                                  "..." + images_not_empty + users_questions("@/spool/kestrel") +
                                  "..\n" + templates_questions("@/spool/kestrel").substr(1) +
                                  dots(35) + end_of_removal());
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(RemoveKestrel, LeavesScriptsTheDistributionAndItsAnswersAndSavesNothing) {
    const world host("kestrel");
    install_31_and_unpack_32(host, "yes");
    const std::string distribution = tree_of(host, "dist/tpl") + tree_of(host, "dist/wap");
    const std::string answers_before = read_file("dist/gxsetup.dat");
    run_wizard(host, {}, yes_to_all);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "");
    EXPECT_EQ(tree_of(host, "spool"), "");
    EXPECT_EQ(tree_of(host, "html"), "0755 html/vlimg/\n"
                                     "0660 html/vlimg/menu.js \"31 menu.js\"\n"
                                     "0660 html/vlimg/menu.vbs \"31 menu.vbs\"\n");
    EXPECT_EQ(tree_of(host, "dist/tpl") + tree_of(host, "dist/wap"), distribution);
    EXPECT_EQ(read_file("dist/gxsetup.dat"), answers_before);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Removing kestrel, version 3.2a\n"
              "Error: Cannot remove @/html/vlimg: Directory not empty\n"
              "Info:  No user directories found.\n"
              "Info:  remove successful\n"
              "Info:  * gxsetup finished *\n");
}

TEST(RemoveKestrel, DebugLogNamesEachStep) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    add_file("spool/kestrel/u_x", "");
    run_wizard(host, {"-debug"}, answers("no", "no", "no", "yes", "no"));
    const std::string log =
        shown_log_without(host, "dist/gxsetup.log", {"INI: ", "Wild finding", "No files found"});
    EXPECT_EQ(log.substr(log.find("Debug: Case 4")), "Debug: Case 4: Remove product\n"
                                                     "Debug: Change replace ini to FALSE\n"
                                                     "Info:  Removing kestrel, version 3.2a\n"
                                                     "Debug: Remove cgi\n"
                                                     "Debug: Remove vlimg files\n"
                                                     "Error: Cannot remove @/html/vlimg: Directory "
                                                     "not empty\n"
                                                     "Debug: Remove user files\n"
                                                     "Debug: u_ file found weird?\n"
                                                     "Debug: Remove template files\n"
                                                     "Debug: Change action to remove\n"
                                                     "Info:  remove successful\n"
                                                     "Info:  * gxsetup finished *\n"
                                                     "Debug: Clear gxvalues\n");
}

TEST(RemoveKestrel, NoToAllStillReportsTheImagesDirectoryAndRemovesNothing) {
    const world host("kestrel");
    install_31_and_unpack_32(host, "yes");
    const std::string before =
        tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool");
    const wizard_run run = run_wizard(host, {}, no_to_all);
    EXPECT_EQ(run.transcript, first_remove_questions("kestrel") + program_question("kestrel") +
                                  program_question("merlin") + images_questions() +
                                  images_not_empty + users_questions("@/spool/kestrel") +
                                  templates_questions("@/spool/kestrel") + end_of_removal());
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool"), before);
}

TEST(RemoveKestrel, NoToTheImagesStillRemovesAnEmptyDirectory) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    for (const std::string &name : listed_names("html/vlimg")) {
        std::filesystem::remove("html/vlimg/" + name);
    }
    const wizard_run run = run_wizard(host, {}, no_to_all);
    EXPECT_EQ(run.transcript.find("Error"), std::string::npos) << run.transcript;
    EXPECT_FALSE(is_there("html/vlimg"));
}

TEST(RemovePlover, AfterAnUpgradeTakesBothReleasesWithListAndOriginals) {
    const world host("plover");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, "\n\n\n\n\n\n\n\n\n\n\nyes\nno\n\n");
    EXPECT_TRUE(is_there("spool/plover/tmptlist.txt"));
    EXPECT_TRUE(is_there("spool/plover/originals"));
    EXPECT_TRUE(is_there("cgi-bin/plover.new"));
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_TRUE(run.transcript.ends_with(end_of_removal())) << run.transcript;
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "spool"), "");
}

TEST(RemoveTanager, TakesSetsManualsAndBulletinsFromTheDirectoryAboveTheSets) {
    const world host("tanager");
    install_31_and_unpack_32(host, "yes");
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_EQ(run.transcript,
              first_remove_questions("tanager") + program_question("tanager") + ".." +
                  program_question("merlin") + ".." +
                  images_questions("/home/httpd/html/vlimg/imap") + dots(6) +
                  users_questions("@/spool/tanager") + "No user directories found.\n" +
                  templates_questions("@/spool/tanager") + dots(25) + end_of_removal());
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool"), "");
}

TEST(RemoveOsprey, AfterAnUpgradeNothingOfItIsLeft) {
    const world host("osprey");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, "\nyes\n\n\n@/html/vlimg\n\nyes\n\n\nno\n\n");
    const wizard_run run = run_wizard(host, {}, yes_to_all);
    EXPECT_TRUE(run.transcript.ends_with(end_of_removal())) << run.transcript;
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool"), "");
}

// --- The programs ---

TEST(Remove, AWrongDirectoryIsAskedForTheProgramsNameUntilItIsThere) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::rename("cgi-bin/kestrel.cgi", "cgi-bin/mail.cgi");
    const std::string cannot_find =
        "\n"
        "gxsetup cannot find an old version of kestrel in this directory. If you\n"
        "have changed the name of the cgi, please enter the new name now. If there\n"
        "is no previous version of kestrel, please enter Q to quit"
        "\n"
        "? ";
    const wizard_run run = run_wizard(host, {}, "3\n\nwrong\n\n\nmail\nyes\nno\nq\n\n");
    EXPECT_EQ(run.transcript, first_remove_questions("kestrel") + cannot_find + cannot_find +
                                  "\n? \n? " + program_question("kestrel") + "." +
                                  program_question("merlin") +
                                  "\n"
                                  "\n"
                                  "Where are the old graphics and wav files (this must be an "
                                  "existing directory)\n"
                                  "[@/html/vlimg]? " +
                                  quit_at_a_question);
    // The files go by the name that was typed.
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0644 cgi-bin/kestrel.ini\n");
}

TEST(Remove, QuittingWhereTheProgramIsNotFoundLeavesEverything) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::remove("cgi-bin/kestrel.cgi");
    const wizard_run run = run_wizard(host, {}, "3\n\nq\n\n");
    EXPECT_TRUE(run.transcript.ends_with("please enter Q to quit\n? " + quit_at_a_question))
        << run.transcript;
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
}

TEST(Remove, TheNameOfTheProgramLosesItsExtension) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::rename("cgi-bin/kestrel.cgi", "cgi-bin/mail.cgi");
    const wizard_run run = run_wizard(host, {}, "3\n\nmail.cgi\nyes\nno\nq\n\n");
    EXPECT_FALSE(is_there("cgi-bin/mail.cgi")) << run.transcript;
}

TEST(Remove, ProgramPatternsTakeEveryExtensionAndReachIntoSubdirectories) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    for (const char *name :
         {"kestrel.new", "kestrel.bak", "KESTREL.old", "kestrels.cgi", "other.cgi",
          "old/kestrel.cgi", "mixed/kestrel.ini", "mixed/keep", "u_ann/kestrel.cgi"}) {
        add_file(std::string("cgi-bin/") + name, "");
    }
    const wizard_run run = run_wizard(host, {}, answers("yes", "no", "no", "no", "no"));
    EXPECT_NE(run.transcript.find("Error: \nCannot remove @/cgi-bin/mixed: Directory not empty\n"),
              std::string::npos);
    EXPECT_TRUE(run.transcript.ends_with(end_of_removal("remove unsuccessful")));
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0644 cgi-bin/kestrels.cgi \"\"\n"
                                        "0755 cgi-bin/mixed/\n"
                                        "0644 cgi-bin/mixed/keep \"\"\n"
                                        "0644 cgi-bin/other.cgi \"\"\n"
                                        "0755 cgi-bin/u_ann/\n"
                                        "0644 cgi-bin/u_ann/kestrel.cgi \"\"\n");
}

TEST(Remove, TheWmlProgramIsAskedForWhateverWasInstalled) {
    const world host("kestrel");
    install_31_and_unpack_32(host, "no");
    const wizard_run run = run_wizard(host, {}, no_to_all);
    EXPECT_NE(run.transcript.find(program_question("merlin")), std::string::npos);
}

// --- The images ---

TEST(Remove, ImagesGoByTheirExtensionsInSubdirectoriesTooAndTheRestIsReported) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    for (const char *name : {"LOUD.GIF", "keep.png", "deep/a.jpg", "deep/b.wav", "u_ann/c.gif"}) {
        add_file(std::string("html/vlimg/") + name, "");
    }
    const wizard_run run = run_wizard(host, {}, answers("no", "no", "yes", "no", "no"));
    // What is left does not fail the removal.
    EXPECT_TRUE(run.transcript.ends_with(end_of_removal())) << run.transcript;
    EXPECT_NE(run.transcript.find("......." + std::string(images_not_empty)), std::string::npos);
    EXPECT_EQ(tree_of(host, "html"), "0755 html/vlimg/\n"
                                     "0644 html/vlimg/keep.png \"\"\n"
                                     "0660 html/vlimg/menu.js \"31 menu.js\"\n"
                                     "0660 html/vlimg/menu.vbs \"31 menu.vbs\"\n"
                                     "0755 html/vlimg/u_ann/\n"
                                     "0644 html/vlimg/u_ann/c.gif \"\"\n");
}

// --- Users and templates ---

TEST(Remove, UsersStayWithTheTemplatesDirectoryUnlessTheyAreToGo) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    add_file("spool/kestrel/u_ann/mail", "mail\n");
    const wizard_run run = run_wizard(host, {}, answers("no", "no", "no", "no", "yes"));
    EXPECT_NE(run.transcript.find("Error: Cannot remove @/spool/kestrel: Directory not empty\n"),
              std::string::npos)
        << run.transcript;
    EXPECT_TRUE(run.transcript.ends_with(end_of_removal()));
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n"
                                      "0755 spool/kestrel/u_ann/\n"
                                      "0644 spool/kestrel/u_ann/mail \"mail\"\n");
}

TEST(Remove, AWorkAreaInsideTheTemplatesOutlivesThem) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    add_file("spool/kestrel/users/u_ann/mail", "mail\n");
    add_file("spool/kestrel/users/list.txt", "list\n");
    run_wizard(host, {}, "3\n\nno\nno\n\nno\n@/spool/kestrel/users\nno\n\nyes\n\n");
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n"
                                      "0755 spool/kestrel/users/\n"
                                      "0644 spool/kestrel/users/list.txt \"list\"\n"
                                      "0755 spool/kestrel/users/u_ann/\n"
                                      "0644 spool/kestrel/users/u_ann/mail \"mail\"\n");
}

TEST(Remove, UsersGoFromAWorkAreaElsewhereAndNothingElseThere) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    add_file("spool/work/u_ann/mail", "mail\n");
    add_file("spool/work/u_ann/deep/mail", "mail\n");
    add_file("spool/work/u_x", "a file\n");
    add_file("spool/work/notes", "notes\n");
    const wizard_run run = run_wizard(host, {}, "3\n\nno\nno\n\nno\n@/spool/work\nyes\n\nno\n\n");
    EXPECT_TRUE(run.transcript.ends_with(
        users_questions("@/spool/work", "@/spool/kestrel") + "....\n" +
        templates_questions("@/spool/kestrel").substr(1) + end_of_removal()))
        << run.transcript;
    EXPECT_EQ(tree_of(host, "spool/work"), "0644 spool/work/notes \"notes\"\n"
                                           "0644 spool/work/u_x \"a file\"\n");
}

TEST(Remove, AWorkAreaThatDoesNotExistHasNoUsers) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const wizard_run run =
        run_wizard(host, {}, "3\n\nno\nno\n\nno\n@/spool/nowhere\nyes\n\nno\n\n");
    EXPECT_NE(run.transcript.find("@/spool/nowhere does not exist... gxsetup will create it\n"),
              std::string::npos);
    EXPECT_NE(run.transcript.find("[NO]? No user directories found.\n"), std::string::npos);
    EXPECT_EQ(run.errors, "Could not read directory file: No such file or directory\n");
    EXPECT_FALSE(is_there("spool/nowhere"));
}

// --- From inside the templates directory ---

TEST(Remove, RunFromInsideTheTemplatesItKeepsTheSetupItsLogsAndTheUsers) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    add_file("spool/kestrel/u_ann/mail", "mail\n");
    const wizard_run run =
        run_wizard(host, {}, "\n\nyes\nno\n\nyes\n\nno\n\nyes\n\n", {.directory = "spool/kestrel"});
    const std::string custom_menu = menu("kestrel", "3.1a", "custom", "3");
    EXPECT_TRUE(
        run.transcript.starts_with(welcome + custom_menu + "Removing kestrel, version 3.1a\n"))
        << run.transcript;
    EXPECT_TRUE(run.transcript.ends_with(templates_questions("@/spool/kestrel") + dots(29) +
                                         end_of_removal()))
        << run.transcript;
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
    const world host("kestrel");
    install_31_and_unpack_32(host);
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
    const world host("kestrel");
    install_31_and_unpack_32(host);
    edit_by_hand("spool/kestrel/gxsetup.dat", host.meant("workarea @/spool/saved"));
    const wizard_run run = run_wizard(host, {}, "3\n\nno\nno\n\nno\nq\n\n");
    EXPECT_TRUE(run.transcript.ends_with("[@/spool/saved]? " + quit_at_a_question))
        << run.transcript;
}

} // namespace
