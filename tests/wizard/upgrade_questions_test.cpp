// The questions of the upgrade: the old installation that is looked for, second passes, and the
// switches between upgrade and install.

#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

const std::string replace_question = "\nWould you like to replace the old templates [NO]? ";

std::string cgi_question(const std::string &offered) {
    return "\n"
           "Where are the cgi files\n"
           "(this will be a scripts or cgi directory setup for the webserver)\n"
           "[" +
           offered + "]? ";
}

std::string templates_question(const std::string &offered) {
    return "\n"
           "Where are your template files (this must be an existing directory)\n"
           "[" +
           offered + "]? ";
}

std::string images_question(const std::string &offered) {
    return "\n"
           "Where are the .gif, .jpg and .wav files\n"
           "[" +
           offered + "]? ";
}

std::string url_question(const std::string &offered) {
    return "\n"
           "Relative URL for HTML references to these images\n"
           "[" +
           offered + "]? ";
}

std::string wml_question(const std::string &offered) {
    return "\nDo you want to install/upgrade the merlin cgi [" + offered + "]? ";
}

const std::string cannot_find =
    "\n"
    "gxsetup cannot find an old version of kestrel in this directory. If "
    "you\n"
    "have changed the name of the cgi, please enter the new name now. If "
    "there\n"
    "is no previous version of kestrel, please press enter now to switch "
    "to the"
    "\n"
    "install questions ? ";

const std::string change_question = "\nDo you want to change any of your answers [NO]? ";

// A transcript up to and with its first question whether to change anything.
std::string up_to_the_summary(const std::string &transcript) {
    const std::size_t at = transcript.find("\n\n" + std::string(79, '-') + "\ngxsetup is ready");
    return transcript.substr(0, at);
}

// The part behind the first such question.
std::string behind_the_summary(const std::string &transcript) {
    return transcript.substr(transcript.find(change_question) + change_question.size());
}

void add_answers(const world &host, const std::string &path, std::string_view lines) {
    add_file(path, host.meant(lines));
}

// --- No old program ---

TEST(UpgradeQuestions, WithoutOldProgramAYesSwitchesToTheInstall) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, "2\n\n\ny\nq\n\n");
    EXPECT_EQ(run.transcript,
              welcome + menu("kestrel") + "Upgrading kestrel to version 3.2a\n\n" +
                  questions_banner("kestrel", "upgrade") + replace_question +
                  cgi_question("@/cgi-bin") + cannot_find + install_questions("kestrel") +
                  "\n"
                  "Webserver directory for cgi-files (This must be a valid script directory)\n"
                  "[@/cgi-bin]? " +
                  quit_at_a_question);
    EXPECT_EQ(run.status, 0);
}

TEST(UpgradeQuestions, AnEmptyLineAtTheSwitchIsAskedAgain) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, "2\n\n\n\n\nq\n\n");
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + "Upgrading kestrel to version 3.2a\n\n" +
                                  questions_banner("kestrel", "upgrade") + replace_question +
                                  cgi_question("@/cgi-bin") + cannot_find +
                                  "\ninstall questions ? \ninstall questions ? " +
                                  quit_at_a_question);
}

TEST(UpgradeQuestions, ANewNameForTheProgramIsDroppedAndTheStoredOneUsed) {
    const world host("kestrel");
    std::filesystem::create_directory("spool/old");
    add_answers(host, "cgi-bin/mail.ini", "templates @/spool/kestrel\n");
    add_answers(host, "cgi-bin/kestrel.ini", "templates @/spool/old\n");
    add_file("cgi-bin/mail.cgi", "");
    const wizard_run run = run_wizard(host, {}, "2\n\n\nmail\n\n\n\n\n\nno\nno\n\n");
    EXPECT_EQ(up_to_the_summary(run.transcript),
              welcome + menu("kestrel") + "Upgrading kestrel to version 3.2a\n\n" +
                  questions_banner("kestrel", "upgrade") + replace_question +
                  cgi_question("@/cgi-bin") + cannot_find + templates_question("@/spool/old") +
                  images_question("@/html/vlimg") +
                  "@/html/vlimg does not exist... gxsetup will create it\n\n" +
                  url_question("/vlimg") + wml_question("NO"));
    EXPECT_NE(read_file("dist/gxsetup.dat").find("\ncgi_name kestrel\n"), std::string::npos);
}

TEST(UpgradeQuestions, ANoAtTheSwitchIsANameThatIsDropped) {
    const world host("kestrel");
    std::filesystem::create_directory("spool/kestrel");
    const wizard_run run = run_wizard(host, {}, "2\n\n\nno\nq\n\n");
    EXPECT_TRUE(run.transcript.ends_with(cannot_find + templates_question("@/spool/kestrel") +
                                         quit_at_a_question))
        << run.transcript;
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
    const wizard_run run = run_wizard(host, {}, "2\n\n@/cgi-new\nq\n\n");
    EXPECT_TRUE(run.transcript.ends_with(cgi_question("@/cgi-bin") +
                                         templates_question("@/spool/stored") + quit_at_a_question))
        << run.transcript;
}

TEST(UpgradeQuestions, AProgramWhereItIsAnsweredAloneIsNotFound) {
    const world host("kestrel");
    add_file("cgi-new/kestrel.cgi", "");
    const wizard_run run = run_wizard(host, {}, "2\n\n@/cgi-new\nq\n\n");
    EXPECT_TRUE(
        run.transcript.ends_with(cgi_question("@/cgi-bin") + cannot_find + quit_at_a_question))
        << run.transcript;
}

TEST(UpgradeQuestions, WhatIsLoadedDoesNotUndoTheAnswersOfThisPass) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::create_directory("cgi-new");
    edit_by_hand("cgi-bin/kestrel.ini", host.meant("cgi_path @/html\nreplace_tmplts FALSE"));
    const wizard_run run = run_wizard(host, {}, "\nyes\n@/cgi-new\n\n\n\n\n\nno\nno\n\n");
    EXPECT_NE(run.transcript.find("webserver directory: @/cgi-new\n"), std::string::npos);
    EXPECT_NE(run.transcript.find("templates WILL be overwritten\n"), std::string::npos);
    EXPECT_TRUE(is_there("cgi-new/kestrel.cgi"));
    EXPECT_TRUE(is_there("cgi-new/kestrel.new"));
    EXPECT_FALSE(is_there("cgi-bin/kestrel.new"));
}

TEST(UpgradeQuestions, TheAnswersSavedWithTheInstallationAreLoadedThoughTheSessionHasLoadedSome) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    edit_by_hand("spool/kestrel/gxsetup.dat", host.meant("vlimg_dir @/html/saved"));
    edit_by_hand("cgi-bin/kestrel.ini", host.meant("vlimg_dir @/html/ini\ndomain ini.test"));
    const wizard_run run = run_wizard(host, {}, "\n\n\n\nq\n\n");
    EXPECT_TRUE(run.transcript.ends_with(images_question("@/html/saved") + quit_at_a_question))
        << run.transcript;
}

TEST(UpgradeQuestions, AMissingOldIniIsPassedOverInSilence) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::remove("cgi-bin/kestrel.ini");
    const wizard_run run = run_wizard(host, {}, "\n\n\nq\n\n");
    EXPECT_EQ(run.transcript, first_upgrade_questions("kestrel") +
                                  templates_question("@/spool/kestrel") + quit_at_a_question);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Upgrading kestrel to version 3.2a\n"
              "Error: INI: file {@/cgi-bin/kestrel.ini} could not be opened for ini settings\n");
}

TEST(UpgradeQuestions, ASetProductIsOfferedItsOldWorkAreaForTheTemplates) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    const wizard_run run = run_wizard(host, {}, "\n\n\nq\n\n");
    EXPECT_EQ(run.transcript, first_upgrade_questions("tanager") +
                                  templates_question("@/spool/tanager") + quit_at_a_question);
}

// --- Directories ---

TEST(UpgradeQuestions, AnImagesDirectoryThatIsTheTemplatesIsRefusedUntilItDiffers) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const std::string refusal =
        "For efficiency, kestrel now source graphic and wav files from an images directory\n"
        "that can be accessed from the cgi.\n"
        "Please enter a directory with such a path. For more information type '?' then press "
        "enter.\n";
    const wizard_run run =
        run_wizard(host, {}, "\n\n\n\n@/spool/kestrel\n@/spool/kestrel\n@/spool/./kestrel\nq\n\n");
    EXPECT_EQ(run.transcript,
              first_upgrade_questions("kestrel") + templates_question("@/spool/kestrel") +
                  images_question("@/html/vlimg") + refusal + images_question("@/html/vlimg") +
                  refusal + images_question("@/html/vlimg") +
                  // The paths' texts are compared.
                  url_question("/./kestrel") + quit_at_a_question);
}

// --- Passes ---

TEST(UpgradeQuestions, ASecondPassLooksNothingUpAndOffersTheStoredUrl) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::create_directory("cgi-new");
    const wizard_run run =
        run_wizard(host, {}, "\nyes\n@/cgi-new\n\n\n/pictures\nyes\nyes\n\n\n\n\n\n\nq\n\n");
    EXPECT_EQ(behind_the_summary(run.transcript)
                  .substr(0, up_to_the_summary(behind_the_summary(run.transcript)).size()),
              // There is no program in cgi-new, but it is not looked for.
              questions_banner("kestrel", "upgrade") + replace_question +
                  cgi_question("@/cgi-new") + templates_question("@/spool/kestrel") +
                  images_question("@/html/vlimg") + url_question("/pictures") +
                  wml_question("YES"));
    EXPECT_TRUE(run.transcript.ends_with(change_question + quit_at_a_question));
}

TEST(UpgradeQuestions, AFlatProductIsAskedForNoSets) {
    const world host("plover");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, "\nyes\n\n\n\n/pictures\n\n\nno\nno\n\n");
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_NE(saved.find("\ntemplates @/spool/plover\n"), std::string::npos);
    EXPECT_NE(saved.find("\nvlimg /pictures\n"), std::string::npos);
    EXPECT_EQ(saved.find("\ntpl_set "), std::string::npos);
}

TEST(UpgradeQuestions, TheChoiceOfSetsOfAnEarlierPassStaysWhenALaterOneAsksNone) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    const wizard_run run =
        run_wizard(host, {}, "\nyes\n\n\n@/html/vlimg\n\n\nyes\n\n\n\n\n/pictures\n\n\nno\nno\n\n");
    EXPECT_NE(run.transcript.find("templates WILL NOT be overwritten\n"), std::string::npos);
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_NE(saved.find("\ntemplates @/spool/tanager/marble\n"), std::string::npos) << saved;
    EXPECT_NE(saved.find("\nvlimg /vlimg/marble\n"), std::string::npos) << saved;
}

TEST(UpgradeQuestions, ALaterPassThatNumbersTheSetsReplacesTheChoice) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, "\nyes\n\n\n@/html/vlimg\n\n\nyes\nyes\n\n\n\n/pictures\n\n\nno\nno\n\n");
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    // The lines of the first pass stay and are found first.
    EXPECT_NE(saved.find("\ntemplates @/spool/tanager/marble\n"), std::string::npos) << saved;
    EXPECT_NE(saved.find("\nvlimg /vlimg/marble\n"), std::string::npos) << saved;
    EXPECT_NE(saved.find(" @/spool/tanager/marble /pictures/marble marble Set\n"),
              std::string::npos)
        << saved;
}

// --- Switches ---

TEST(UpgradeQuestions, TheInstallThatFindsAnOldProgramSwitchesHere) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const wizard_run run = run_wizard(host, {}, "1\n\nyes\n\n\nq\n\n");
    EXPECT_EQ(run.transcript,
              welcome + menu("kestrel", "3.2a", "upgrade", "2") +
                  "Installing kestrel, version 3.2a\n\n" + install_questions("kestrel") +
                  "\n"
                  "Webserver directory for cgi-files (This must be a valid script directory)\n"
                  "[@/cgi-bin]? "
                  "\n"
                  "gxsetup has found an old version of kestrel in this directory"
                  "\n"
                  "Do you want to switch to the upgrade questions [YES]? " +
                  questions_banner("kestrel", "upgrade") + replace_question +
                  cgi_question("@/cgi-bin") + templates_question("@/spool/kestrel") +
                  quit_at_a_question);
}

TEST(UpgradeQuestions, AfterASwitchThereAndBackTheInstallationIsLookedUpAgain) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::create_directory("cgi-old");
    for (const char *name : {"kestrel.cgi", "kestrel.ini"}) {
        std::filesystem::rename(std::string("cgi-bin/") + name, std::string("cgi-old/") + name);
    }
    const wizard_run run =
        run_wizard(host, {}, "2\n\n\nyes\n@/cgi-old\nyes\nyes\n\n\n\n\n\n\nno\nno\n\n");
    EXPECT_EQ(up_to_the_summary(run.transcript),
              first_upgrade_questions("kestrel") + cannot_find + install_questions("kestrel") +
                  "\n"
                  "Webserver directory for cgi-files (This must be a valid script directory)\n"
                  "[@/cgi-bin]? "
                  "\n"
                  "gxsetup has found an old version of kestrel in this directory"
                  "\n"
                  "Do you want to switch to the upgrade questions [YES]? " +
                  questions_banner("kestrel", "upgrade") + replace_question +
                  cgi_question("@/cgi-old") + templates_question("@/spool/kestrel") +
                  images_question("@/html/vlimg") + url_question("/vlimg") + wml_question("NO"));
    EXPECT_TRUE(run.transcript.ends_with(farewell(
        "kestrel", "http://example.com/cgi-old/kestrel.cgi", "upgrade successful", "upgrading")))
        << run.transcript;
    EXPECT_TRUE(is_there("cgi-old/kestrel.new"));
}

} // namespace
