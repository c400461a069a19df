// Upgrading kestrel and plover from release 3.1 to 3.2: templates, images, programs, .ini files.

#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

// Enter at every question of an upgrade that does not replace the templates, and at its pauses.
constexpr const char *enter_throughout = "\n\n\n\n\n\n\n\n\n\n\n\n\n\n";

// The same up to the summary; replacing the templates; the originals and the clean-up declined.
const std::string questions = "\n\n\n\n\n\n\n\n";
const std::string replacing_questions = "\nyes\n\n\n\n\n\n\n";
const std::string no_to_both = "no\nno\n\n";

const std::string rule = "\n" + std::string(79, '-') + "\n";
const std::string rule_of_78(78, '-');
const std::string rule_of_77(77, '-');

std::string other_questions(const std::string &product) {
    return "\n"
           "Where are your template files (this must be an existing directory)\n"
           "[@/spool/" +
           product +
           "]? "
           "\n"
           "Where are the .gif, .jpg and .wav files\n"
           "[@/html/vlimg]? "
           "\n"
           "Relative URL for HTML references to these images\n"
           "[/vlimg]? ";
}

// The version is that of the answers saved with the installation.
std::string summary(const std::string &product, const std::string &rules) {
    return "\n"
           "\n"
           "-------------------------------------------------------------------------------\n"
           "gxsetup is ready to upgrade " +
           product +
           ", to version 3.1a\n"
           "using the following answers:\n"
           "\n"
           "Directories\n"
           "webserver directory: @/cgi-bin\n"
           "images directory:    @/html/vlimg\n"
           "templates directory: @/spool/" +
           product +
           "\n"
           "Rules\n" +
           rules +
           "\n"
           "Do you want to change any of your answers [NO]? "
           "\n"
           "Please wait while gxsetup upgrades " +
           product + "\n";
}

constexpr const char *nothing_overwritten = "templates WILL NOT be overwritten\n"
                                            "\n"
                                            "ini file WILL NOT be overwritten\n"
                                            "\n";
constexpr const char *templates_overwritten = "templates WILL be overwritten\n"
                                              "\n"
                                              "ini file WILL NOT be overwritten\n"
                                              "\n";

const std::string templates_found =
    rule_of_78 + "\n"
                 "gxsetup has scanned your template directory, comparing them to the templates\n"
                 "in the current distribution set and has found some templates that have an\n"
                 "upgraded template available. These templates have been put into one of three\n"
                 "categories:\n"
                 "1. Templates that have not been modified and are safe to change now.\n"
                 "2. Templates have been modified but need to be inspected for any changes.\n"
                 "3. Templates belonging to a different template set from the ones currently.\n"
                 "   in the distribution set.\n"
                 "\n"
                 "Do you want to view these categories now [YES]? ";

const std::string safe_question =
    "\n"
    "Do you want to replace the templates that can be safely updated\n"
    "(category 1 templates)[YES]? ";

constexpr const char *list_saved =
    "\nA copy of the list has been saved to your templates directory as \"tmptlist.txt\"\n\n";

constexpr const char *press_enter = "\nPlease press enter to continue with the upgrade...";

// What an upgrade shows between "Please wait" and the outcome.
std::string steps_of(const std::string &transcript) {
    const std::string_view begin = "\nPlease wait while gxsetup upgrades ";
    const std::size_t from = transcript.find('\n', transcript.find(begin) + 1) + 1;
    return transcript.substr(from, transcript.find(rule + "Upgrade ") - from);
}

constexpr const char *list_header =
    "# \"tmptlist.txt\" created by gxsetup, version 3.0h\n"
    "#\n"
    "# Categories:\n"
    "# 1. These files have not been modified, are from the same template set\n"
    "#    as those in the distribution set and have an upgrade available.\n"
    "#    - Files can be easily upgraded to the new template.\n"
    "# 2. These files have been modified, are from the same template set as\n"
    "#    those in the distribution set and have an upgrade available\n"
    "#    - Files should be inspected for changes.\n"
    "# 3. These files belong to a different template set to the one that is\n"
    "#    in the current distribution set\n"
    "\n";

struct list_entry {
    std::string name;
    std::string lines;
};

// The lines of a list, in the order in which the system lists the installed templates.
std::string in_listed_order(const std::string &directory, const std::vector<list_entry> &entries) {
    std::string lines;
    for (const std::string &name : listed_names(directory)) {
        for (const list_entry &one : entries) {
            lines += one.name == name ? one.lines : "";
        }
    }
    return lines;
}

const list_entry moved_entry = {"moved.tpl",
                                "3. moved.tpl          Current template set: kst_s2 version 2.0a\n"
                                "                 Distribution template set: pad_s1 version 1.0\n"};
const list_entry edited_entry = {
    "edited.tpl", "2. edited.tpl         Current template set: kst_s2 version 2.0a\n"
                  "                 Distribution template set: kst_s2 version 2.1\n"};
const list_entry clean_entry = {"clean.tpl",
                                "1. clean.tpl          Current template set: kst_s2 version 2.0a\n"
                                "                 Distribution template set: kst_s2 version 2.1\n"};

// The texts of the installed templates, in the order of their names.
std::vector<std::string> installed_texts(const std::string &directory) {
    std::vector<std::string> texts;
    for (const char *name :
         {"brandnew.tpl", "clean.tpl", "dropped.tpl", "edited.tpl", "moved.tpl", "same.tpl"}) {
        texts.push_back(template_text(directory + "/" + name));
    }
    return texts;
}

// --- Without replacing the templates ---

TEST(UpgradeKestrel, EnterThroughoutHoldsThisDialogue) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const wizard_run run = run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(run.transcript,
              first_upgrade_questions("kestrel") + other_questions("kestrel") +
                  "\n"
                  "Do you want to install/upgrade the merlin cgi [NO]? " +
                  summary("kestrel", nothing_overwritten) + templates_found + "\n" + rule_of_77 +
                  "\n"
                  "Templates that belong to a different template set from the ones currently in\n"
                  "the distribution set:\n"
                  "\n"
                  "moved.tpl          Current template set: kst_s2 version 2.0a\n"
                  "              Distribution template set: pad_s1 version 1.0\n"
                  "\n" +
                  rule_of_77 +
                  "\n"
                  "Templates that have been modified but have an upgrade available and should be\n"
                  "inspected for any changes:\n"
                  "\n"
                  "edited.tpl         Current template set: kst_s2 version 2.0a\n"
                  "              Distribution template set: kst_s2 version 2.1\n"
                  "\n" +
                  rule_of_77 +
                  "\n"
                  "Templates that have not been modified but have an upgrade available and can be\n"
                  "upgraded safely:\n"
                  "\n"
                  "clean.tpl          Current template set: kst_s2 version 2.0a\n"
                  "              Distribution template set: kst_s2 version 2.1\n" +
                  rule_of_77 + safe_question + "\nUpdating unmodified template files.." +
                  list_saved + press_enter +
                  "\n"
                  "Copying new template files..\n"
                  "Copying graphic and wav files.\n"
                  "Copying VBS and JS files\n"
                  // The second dot stands for the copy of kestrel.new among the templates.
                  "Copying cgi files.." +
                  upgrade_outcome("@/spool/kestrel", kept_note) +
                  "Copying original template files.....\n"
                  "Copy complete.\n"
                  "\n"
                  "Shall I delete the temporary files [YES]? "
                  "\n"
                  "Deleting temporary files...................." +
                  upgrade_farewell("kestrel"));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(UpgradeKestrel, TemplatesAndPicturesThatAreThereStayAndNewOnesArriveWithTheirModes) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const std::string edited = read_file("spool/kestrel/edited.tpl");
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(installed_texts("spool/kestrel"),
              (std::vector<std::string>{"brand new", "new clean", "old dropped", "old edited",
                                        "old moved", "old same"}));
    EXPECT_EQ(read_file("spool/kestrel/edited.tpl"), edited);
    EXPECT_EQ(tree_of(host, "html"), "0755 html/vlimg/\n"
                                     "0660 html/vlimg/back.jpg \"31 back.jpg\"\n"
                                     "0660 html/vlimg/bell.wav \"31 bell.wav\"\n"
                                     "0660 html/vlimg/extra.gif \"32 extra.gif\"\n"
                                     "0660 html/vlimg/logo.gif \"31 logo.gif\"\n"
                                     "0660 html/vlimg/menu.js \"31 menu.js\"\n"
                                     "0660 html/vlimg/menu.vbs \"31 menu.vbs\"\n");
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n"
                                      "0660 spool/kestrel/back.jpg \"31 back.jpg\"\n"
                                      "0660 spool/kestrel/bell.wav \"31 bell.wav\"\n"
                                      "0660 spool/kestrel/brandnew.tpl\n"
                                      "0660 spool/kestrel/clean.tpl\n"
                                      "0660 spool/kestrel/dropped.tpl\n"
                                      "0660 spool/kestrel/edited.tpl\n"
                                      "0660 spool/kestrel/extra.gif \"32 extra.gif\"\n"
                                      "0660 spool/kestrel/gxdflt.dat\n"
                                      "0770 spool/kestrel/gxsetup \"the setup program\"\n"
                                      "0660 spool/kestrel/gxsetup.dat\n"
                                      "0660 spool/kestrel/gxsetup.log\n"
                                      "0660 spool/kestrel/gxsetup1.log \"\"\n"
                                      "0770 spool/kestrel/kestrel.cgi\n"
                                      "0660 spool/kestrel/kestrel.ini\n"
                                      "0660 spool/kestrel/kestrel.new\n"
                                      "0660 spool/kestrel/logo.gif \"31 logo.gif\"\n"
                                      "0660 spool/kestrel/menu.js \"31 menu.js\"\n"
                                      "0660 spool/kestrel/menu.vbs \"31 menu.vbs\"\n"
                                      "0660 spool/kestrel/merlin.ini \"deck 31\"\n"
                                      "0660 spool/kestrel/moved.tpl\n"
                                      "0770 spool/kestrel/originals/\n"
                                      "0660 spool/kestrel/originals/brandnew.tpl\n"
                                      "0660 spool/kestrel/originals/clean.tpl\n"
                                      "0660 spool/kestrel/originals/edited.tpl\n"
                                      "0660 spool/kestrel/originals/moved.tpl\n"
                                      "0660 spool/kestrel/originals/same.tpl\n"
                                      "0660 spool/kestrel/same.tpl\n"
                                      "0660 spool/kestrel/tmptlist.txt\n"
                                      "0770 spool/kestrel/tpl/\n"
                                      "0660 spool/kestrel/tpl/back.jpg \"31 back.jpg\"\n"
                                      "0660 spool/kestrel/tpl/bell.wav \"31 bell.wav\"\n"
                                      "0660 spool/kestrel/tpl/clean.tpl\n"
                                      "0660 spool/kestrel/tpl/dropped.tpl\n"
                                      "0660 spool/kestrel/tpl/edited.tpl\n"
                                      "0660 spool/kestrel/tpl/logo.gif \"31 logo.gif\"\n"
                                      "0660 spool/kestrel/tpl/moved.tpl\n"
                                      "0660 spool/kestrel/tpl/same.tpl\n"
                                      "0660 spool/kestrel/tpl/words.dat \"31 words.dat\"\n"
                                      "0660 spool/kestrel/vsetup.hlp\n"
                                      "0770 spool/kestrel/wap/\n"
                                      "0770 spool/kestrel/wap/common/\n"
                                      "0660 spool/kestrel/wap/common/words.dat \"31 deck words\"\n"
                                      "0770 spool/kestrel/wap/wml/\n"
                                      "0660 spool/kestrel/wap/wml/index.tpl \"31 deck\"\n"
                                      "0660 spool/kestrel/words.dat \"31 words.dat\"\n");
    EXPECT_EQ(tree_of(host, "dist"), "0644 dist/gxsetup \"the setup program\"\n"
                                     "0644 dist/gxsetup.dat\n"
                                     "0644 dist/gxsetup.log\n"
                                     "0644 dist/gxsetup1.log\n"
                                     "0644 dist/gxsetup2.log \"\"\n");
}

TEST(UpgradeKestrel, ListHoldsWhatIsLeftInTheOrderOfTheDirectoryAndACopyIsInstalled) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const std::string lines = in_listed_order("spool/kestrel", {moved_entry, edited_entry});
    run_wizard(host, {}, questions + "\n\n\n" + no_to_both);
    EXPECT_EQ(read_file("spool/kestrel/tmptlist.txt"), list_header + lines);
    EXPECT_EQ(read_file("dist/tmptlist.txt"), list_header + lines);
}

TEST(UpgradeKestrel, DecliningTheViewStillOffersTheSafeReplacementAndWritesTheList) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const std::string lines =
        in_listed_order("spool/kestrel", {moved_entry, edited_entry, clean_entry});
    const wizard_run run = run_wizard(host, {}, questions + "no\nno\n\n" + no_to_both);
    EXPECT_EQ(steps_of(run.transcript), templates_found + safe_question + "." + list_saved +
                                            press_enter +
                                            "\n"
                                            "Copying new template files..\n"
                                            "Copying graphic and wav files.\n"
                                            "Copying VBS and JS files\n"
                                            "Copying cgi files..");
    EXPECT_EQ(read_file("spool/kestrel/tmptlist.txt"), list_header + lines);
    EXPECT_EQ(template_text("spool/kestrel/clean.tpl"), "old clean");
}

TEST(UpgradeKestrel, WithSafeTemplatesAloneTheListIsDeletedButThePauseComes) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    for (const char *name : {"edited.tpl", "moved.tpl"}) {
        std::filesystem::remove(std::string("spool/kestrel/") + name);
    }
    const wizard_run run = run_wizard(host, {}, questions + "no\nyes\n\n" + no_to_both);
    EXPECT_EQ(steps_of(run.transcript), templates_found + safe_question +
                                            "\nUpdating unmodified template files." + press_enter +
                                            "\n"
                                            // Beside the new ones, the two that were missing.
                                            "Copying new template files....\n"
                                            "Copying graphic and wav files.\n"
                                            "Copying VBS and JS files\n"
                                            "Copying cgi files..");
    EXPECT_FALSE(is_there("dist/tmptlist.txt"));
    EXPECT_FALSE(is_there("spool/kestrel/tmptlist.txt"));
    EXPECT_EQ(template_text("spool/kestrel/clean.tpl"), "new clean");
}

TEST(UpgradeKestrel, WithNothingNewerNothingIsAskedListedOrWaitedFor) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    for (const char *name : {"clean.tpl", "edited.tpl", "moved.tpl"}) {
        std::filesystem::remove(std::string("spool/kestrel/") + name);
    }
    const wizard_run run = run_wizard(host, {}, questions + no_to_both);
    EXPECT_EQ(steps_of(run.transcript), "\n"
                                        "Copying new template files.....\n"
                                        "Copying graphic and wav files.\n"
                                        "Copying VBS and JS files\n"
                                        "Copying cgi files..");
    EXPECT_FALSE(is_there("dist/tmptlist.txt"));
    EXPECT_EQ(run.status, 0);
}

TEST(UpgradeKestrel, WithoutInstalledTemplatesThatIsSaidAndNothingAsked) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    for (const std::string &name : listed_names("spool/kestrel")) {
        if (name.ends_with(".tpl")) {
            std::filesystem::remove("spool/kestrel/" + name);
        }
    }
    const wizard_run run = run_wizard(host, {}, questions + no_to_both);
    EXPECT_EQ(steps_of(run.transcript), "No files found in @/spool/kestrel\n"
                                        "\n"
                                        "Copying new template files......\n"
                                        "Copying graphic and wav files.\n"
                                        "Copying VBS and JS files\n"
                                        "Copying cgi files..");
    EXPECT_FALSE(is_there("dist/tmptlist.txt"));
}

TEST(UpgradeKestrel, ASafeTemplateThatWasDroppedFailsItsCopyAndTheUpgradeSucceeds) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    add_templates(host, "spool/kestrel", {{"dropped.tpl", "kst_s1", "1.9", "old dropped"}});
    for (const char *name : {"clean.tpl", "edited.tpl", "moved.tpl"}) {
        std::filesystem::remove(std::string("spool/kestrel/") + name);
    }
    const wizard_run run = run_wizard(host, {}, questions + "no\nyes\n\n" + no_to_both);
    EXPECT_EQ(steps_of(run.transcript),
              templates_found + safe_question +
                  "\n"
                  "Updating unmodified template files"
                  "Error: Can't copy ./tpl/dropped.tpl: No such file or directory\n"
                  "Error: Can't copy ./tpl/dropped.tpl\n"
                  "Error: Can't do safe save\n"
                  "." +
                  list_saved + press_enter +
                  "\n"
                  "Copying new template files.....\n"
                  "Copying graphic and wav files.\n"
                  "Copying VBS and JS files\n"
                  "Copying cgi files..");
    EXPECT_TRUE(run.transcript.ends_with(upgrade_outcome("@/spool/kestrel", kept_note) +
                                         "\nShall I delete the temporary files [YES]? " +
                                         upgrade_farewell("kestrel")))
        << run.transcript;
    EXPECT_EQ(template_text("spool/kestrel/dropped.tpl"), "old dropped");
    EXPECT_EQ(read_file("spool/kestrel/tmptlist.txt"),
              std::string(list_header) +
                  "1. dropped.tpl        Current template set: kst_s1 version 1.9\n"
                  "                 Distribution template set: kst_s2 version 2.0a\n");
}

TEST(UpgradeKestrel, EveryNewFileBelongsToTheOwnerOfInstalledFiles) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    const world host("kestrel");
    install_31_and_unpack_32(host, "yes");
    for (const char *directory : {"html/vlimg", "cgi-bin/merlin.ini"}) {
        std::filesystem::remove_all(directory);
    }
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(not_owned("spool/kestrel"), "");
    EXPECT_EQ(not_owned("html/vlimg"), "");
    EXPECT_EQ(not_owned("cgi-bin"), "cgi-bin\n");
}

TEST(UpgradeKestrel, LogTellsEachStep) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Upgrading kestrel to version 3.2a\n"
              "Info:  Can't create \"@/html/vlimg\": directory already exists.\n"
              "Error: Can't open dropped.tpl, header information unobtainable\n"
              "Info:  A copy of the list has been saved to your templates directory as "
              "\"tmptlist.txt\"\n"
              "Info:  created directory \"@/spool/kestrel/originals\"\n"
              "Info:  upgrade successful\n"
              "Info:  * gxsetup finished *\n");
}

TEST(UpgradeKestrel, DebugLogNamesEachStep) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    run_wizard(host, {"-debug"}, enter_throughout);
    EXPECT_EQ(shown_log_without(
                  host, "dist/gxsetup.log",
                  {"INI: ", "DoCopy[", "Wild finding", "Find all files", "directory \"", "\": "}),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Logging set to DEBUG.\n"
              "Debug: Loading gxvalues defaults\n"
              "Debug: Loading gxvalues from default file\n"
              "Debug: Forming product name\n"
              "Debug: Building template directory\n"
              "Debug: Getting cgi_name\n"
              "Debug: Getting version #\n"
              "Debug: Getting version from [./kestrel.cgi -version >ver.txt]\n"
              "Debug: Case 2: Upgrade product\n"
              "Info:  Upgrading kestrel to version 3.2a\n"
              "Debug: Change replace ini to FALSE\n"
              "Debug: gxupgrade_main()\n"
              "Debug: upgrade questions\n"
              "Debug: replace templates?\n"
              "Debug: CGI Path?\n"
              "Debug: load gxvalues with ini file settings\n"
              "Debug: load gxsetup.dat from ini setting of templates directory\n"
              "Debug: Templates ?\n"
              "Debug: vlimg dir ?\n"
              "Debug: relative URL\n"
              "Debug: Action to upgrade\n"
              "Debug: upgrade\n"
              "Error: Can't open dropped.tpl, header information unobtainable\n"
              "Debug: New header info not found\n"
              "Info:  A copy of the list has been saved to your templates directory as "
              "\"tmptlist.txt\"\n"
              "Debug: Copying new template files\n"
              "Debug: Copying graphic and wav files\n"
              "Debug: Copy vbs and js files.\n"
              "Debug: Copying CGI files\n"
              "Debug: Creaing .new file\n"
              "Debug: Copy originals\n"
              "Debug: Deleting temporary files\n"
              "Debug: Copy gxsetup.log\n"
              "Info:  upgrade successful\n"
              "Info:  * gxsetup finished *\n"
              "Debug: Save gxvalues to default file\n"
              "Debug: Clear gxvalues\n");
}

TEST(UpgradeKestrel, SavedAnswersHoldTheUpgradeAndNoneOfTheOneRunAnswers) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"), "# file written by gxsetup, version 3.0h\n"
                                                    "# library: INI v1.3c\n"
                                                    "\n"
                                                    "# Lines starting with # are comments\n"
                                                    "\n"
                                                    "cgi_path @/cgi-bin\n"
                                                    "vlimg_dir @/html/vlimg\n"
                                                    "templates @/spool/kestrel\n"
                                                    "op_system UNIX\n"
                                                    "action upgrade\n"
                                                    "vlimg /vlimg\n"
                                                    "pophost mail.example.com\n"
                                                    "smtphost mail.example.com\n"
                                                    "domain example.com\n"
                                                    "log_lvl INFO\n"
                                                    "wml_name merlin\n"
                                                    "wml FALSE\n"
                                                    "prod_name kestrel\n"
                                                    "manual @/spool/kestrel/manuals\n"
                                                    "cgi_name kestrel\n"
                                                    "version 3.1a\n"
                                                    "workarea @/spool/kestrel\n"
                                                    "timeout 31\n"
                                                    "original_pophost mail.example.com\n");
    EXPECT_EQ(read_file("spool/kestrel/gxsetup.dat"), read_file("dist/gxsetup.dat"));
}

// --- The .ini file ---

TEST(UpgradeKestrel, TheNewIniLiesBesideTheOldOneWhichStays) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    edit_by_hand("cgi-bin/kestrel.ini", "by hand");
    const std::string old = read_file("cgi-bin/kestrel.ini");
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n"
                                        "0644 cgi-bin/kestrel.new\n");
    EXPECT_EQ(read_file("cgi-bin/kestrel.ini"), old);
    EXPECT_NE(read_file("cgi-bin/kestrel.cgi").find("3.2a"), std::string::npos);
    EXPECT_EQ(shown_file(host, "cgi-bin/kestrel.new"),
              "# kestrel.ini created by gxsetup, version 3.0h for kestrel, version 3.1a\n"
              "\n"
              "timeout 32\n"
              "\n"
              "\n"
              "domain example.com\n"
              "pophost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/kestrel\n"
              "workarea @/spool/kestrel\n"
              "vlimg /vlimg\n"
              "# Never change the next line, even if you change pophost\n"
              "original_pophost mail.example.com\n");
}

TEST(UpgradeKestrel, AnOldIniMayAskToBeReplaced) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    edit_by_hand("cgi-bin/kestrel.ini", "replace_ini TRUE");
    const wizard_run run = run_wizard(host, {}, replacing_questions + no_to_both);
    EXPECT_NE(run.transcript.find("templates WILL be overwritten\n"
                                  "\n"
                                  "ini file WILL be overwritten using the following "
                                  "ini file settings\n"
                                  "pop host:            mail.example.com\n"
                                  "smtp host:           mail.example.com\n"
                                  "domain name:         example.com\n"
                                  "relative images URL: /vlimg\n"
                                  "\n"
                                  "\n"
                                  "Do you want to change any of your answers [NO]? "),
              std::string::npos)
        << run.transcript;
    EXPECT_TRUE(
        steps_of(run.transcript).ends_with("\nCopying cgi files.\nCreating new kestrel.ini file."))
        << run.transcript;
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n");
    EXPECT_NE(read_file("cgi-bin/kestrel.ini").find("\ntimeout 32\n"), std::string::npos);
    // The next run does not remember it.
    EXPECT_EQ(read_file("dist/gxsetup.dat").find("replace_ini"), std::string::npos);
}

TEST(UpgradeKestrel, BothProgramsAreRenewedButAnOldWmlIniStays) {
    const world host("kestrel");
    install_31_and_unpack_32(host, "yes");
    const std::string old = read_file("cgi-bin/merlin.ini");
    const wizard_run run = run_wizard(host, {}, replacing_questions + no_to_both);
    EXPECT_EQ(run.transcript,
              welcome + menu("kestrel", "3.2a", "upgrade", "2") +
                  "Upgrading kestrel to version 3.2a\n\n" + questions_banner("kestrel", "upgrade") +
                  "\n"
                  "Would you like to replace the old templates [NO]? "
                  "\n"
                  "Where are the cgi files\n"
                  "(this will be a scripts or cgi directory setup for the webserver)\n"
                  "[@/cgi-bin]? " +
                  other_questions("kestrel") +
                  "\n"
                  "Do you want to install/upgrade the merlin cgi [YES]? " +
                  summary("kestrel", templates_overwritten) +
                  "\n"
                  "Copying template files...................."
                  "\n"
                  "Copying graphic and wav files....\n"
                  "Copying VBS and JS files..\n"
                  "Copying cgi files..." +
                  upgrade_outcome("@/spool/kestrel") +
                  "\n"
                  "Shall I delete the temporary files [YES]? " +
                  upgrade_farewell("kestrel"));
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n"
                                        "0644 cgi-bin/kestrel.new\n"
                                        "0770 cgi-bin/merlin.cgi\n"
                                        "0644 cgi-bin/merlin.ini\n");
    EXPECT_EQ(read_file("cgi-bin/merlin.ini"), old);
    EXPECT_EQ(read_file("cgi-bin/merlin.cgi"), read_file("dist/kestrel.cgi"));
    EXPECT_EQ(read_file("cgi-bin/kestrel.cgi"), read_file("dist/kestrel.cgi"));
}

TEST(UpgradeKestrel, AWmlPartThatIsNewGetsItsIni) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const wizard_run run = run_wizard(host, {}, "\nyes\n\n\n\n\nyes\n\n" + no_to_both);
    // The WML set is what the .ini names, but only products with sets have a directory for it.
    EXPECT_TRUE(
        steps_of(run.transcript)
            .ends_with("\nCopying cgi files...\nCreating merlin.ini file" + rule +
                       "Error: Can't write to \"@/spool/kestrel/wml/merlin.ini\": No such file or "
                       "directory\n\n"))
        << run.transcript;
    EXPECT_EQ(shown_file(host, "cgi-bin/merlin.ini"),
              "# merlin.ini created by gxsetup, version 3.0h for merlin, version 3.1a\n"
              "\n"
              "deck 32\n"
              "\n"
              "\n"
              "domain example.com\n"
              "pophost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/kestrel/wml\n"
              "workarea @/spool/kestrel\n"
              "vlimg /vlimg/wml\n"
              "# Never change the next line, even if you change pophost\n"
              "original_pophost mail.example.com\n");
}

// --- Replacing the templates ---

TEST(UpgradePlover, ReplacingCopiesTheTemplatesTwiceAndOverwritesEveryOne) {
    const world host("plover");
    install_31_and_unpack_32(host);
    const wizard_run run = run_wizard(host, {}, replacing_questions + "\n\n\n");
    EXPECT_EQ(run.transcript, first_upgrade_questions("plover") + other_questions("plover") +
                                  "\n"
                                  "Do you want to install/upgrade the merlin cgi [NO]? " +
                                  summary("plover", templates_overwritten) +
                                  "\n"
                                  "Copying template files...................."
                                  "\n"
                                  "Copying graphic and wav files....\n"
                                  "Copying VBS and JS files..\n"
                                  "Copying cgi files.." +
                                  upgrade_outcome("@/spool/plover") +
                                  "Copying original template files.....\n"
                                  "Copy complete.\n"
                                  "\n"
                                  "Shall I delete the temporary files [YES]? "
                                  "\n"
                                  "Deleting temporary files..................." +
                                  upgrade_farewell("plover"));
    EXPECT_EQ(installed_texts("spool/plover"),
              (std::vector<std::string>{"brand new", "new clean", "old dropped", "new edited",
                                        "new moved", "new same"}));
    EXPECT_EQ(read_file("spool/plover/edited.tpl").find("by hand"), std::string::npos);
    EXPECT_EQ(tree_of(host, "html"), "0755 html/vlimg/\n"
                                     "0660 html/vlimg/back.jpg \"32 back.jpg\"\n"
                                     "0660 html/vlimg/bell.wav \"32 bell.wav\"\n"
                                     "0660 html/vlimg/extra.gif \"32 extra.gif\"\n"
                                     "0660 html/vlimg/logo.gif \"32 logo.gif\"\n"
                                     "0660 html/vlimg/menu.js \"32 menu.js\"\n"
                                     "0660 html/vlimg/menu.vbs \"32 menu.vbs\"\n");
    EXPECT_FALSE(is_there("spool/plover/tmptlist.txt"));
    // No sets are asked for: both stay as they were answered.
    EXPECT_NE(shown_file(host, "dist/gxsetup.dat").find("\ntemplates @/spool/plover\n"),
              std::string::npos);
    EXPECT_NE(shown_file(host, "dist/gxsetup.dat").find("\nvlimg /vlimg\n"), std::string::npos);
}

TEST(UpgradePlover, ListNamesItsOwnFamilyOfSets) {
    const world host("plover");
    install_31_and_unpack_32(host);
    std::filesystem::remove("spool/plover/moved.tpl");
    run_wizard(host, {}, questions + "no\nyes\n\n" + no_to_both);
    EXPECT_EQ(read_file("spool/plover/tmptlist.txt"),
              std::string(list_header) +
                  "2. edited.tpl         Current template set: plv_s2 version 2.0a\n"
                  "                 Distribution template set: plv_s2 version 2.1\n");
}

// --- Where it runs, and what fails ---

TEST(UpgradeKestrel, RunFromInsideTheInstallationItDoesNotOfferTheCleanUp) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    const wizard_run run = run_wizard(host, {}, "\nyes\n\n@/dist\n\n\n\n\nno\n\n");
    EXPECT_TRUE(run.transcript.ends_with(
        upgrade_outcome("@/dist") +
        "\n"
        "\n"
        "Thank-you for upgrading kestrel\n"
        "\n"
        "To connect to kestrel enter the following URL on your web browser\n"
        "\n"
        "    http://example.com/cgi-bin/kestrel.cgi\n"
        "\n"
        "-------------------------------------------------------------------------------\n"
        "upgrade successful\n\n\nPlease press enter to quit...\n"))
        << run.transcript;
    EXPECT_TRUE(is_there("dist/tpl/clean.tpl"));
    EXPECT_EQ(template_text("dist/clean.tpl"), "new clean");
}

TEST(UpgradeKestrel, AListThatCannotBeOpenedSkipsTheConfirmationAlone) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::create_directory("dist/tmptlist.txt");
    const wizard_run run = run_wizard(host, {}, questions + "no\nno\n\n" + no_to_both);
    EXPECT_EQ(steps_of(run.transcript), templates_found + safe_question +
                                            "Error: Can't open \"tmptlist.txt\": Is a directory\n" +
                                            press_enter +
                                            "\n"
                                            "Copying new template files..\n"
                                            "Copying graphic and wav files.\n"
                                            "Copying VBS and JS files\n"
                                            "Copying cgi files..");
    EXPECT_TRUE(run.transcript.ends_with(upgrade_farewell("kestrel"))) << run.transcript;
}

TEST(UpgradeKestrel, AFailedCopyIsReportedAndTheUpgradeGoesOn) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    std::filesystem::remove("dist/kestrel.ini");
    std::filesystem::remove("dist/tpl/extra.gif");
    std::filesystem::create_symlink("nowhere", "dist/tpl/extra.gif");
    const wizard_run run = run_wizard(host, {}, questions + "no\nyes\n\n" + no_to_both);
    const std::string steps = steps_of(run.transcript);
    EXPECT_TRUE(steps.ends_with("\n"
                                "Copying graphic and wav files"
                                "Error: Can't copy ./tpl/extra.gif: No such file or directory\n"
                                "\n"
                                "Copying VBS and JS files\n"
                                "Copying cgi files."
                                "Error: Can't open kestrel.ini\n"))
        << steps;
    // The outcome tells; the result of the run does not depend on it.
    EXPECT_TRUE(run.transcript.ends_with(
        upgrade_outcome("@/spool/kestrel", kept_note, "unsuccessful") +
        "\nShall I delete the temporary files [YES]? " + upgrade_farewell("kestrel")))
        << run.transcript;
}

TEST(UpgradeKestrel, OriginalsThatCannotBeMadeEndItWithoutThanks) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    edit_by_hand("cgi-bin/kestrel.ini", "install_dir nowhere");
    const wizard_run run = run_wizard(host, {}, replacing_questions + "yes\n\n");
    EXPECT_TRUE(run.transcript.ends_with(
        upgrade_outcome("nowhere", "", "unsuccessful") + rule +
        "Error: Can't write to \"nowhere/gxsetup.log\": No such file or directory\n\n" + "\n" +
        rule + "upgrade unsuccessful\n\n" + rule +
        "Error: Can't write to \"nowhere/gxsetup.dat\": No such file or directory\n\n"
        "\nPlease press enter to quit...\n"))
        << run.transcript;
    EXPECT_EQ(run.status, 0);
}

} // namespace
