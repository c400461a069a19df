// Upgrading tanager and osprey, whose templates come in sets, from release 3.1 to 3.2.

#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

// Enter wherever the default lies in the world, up to the WML question; and behind it the summary,
// the originals, the clean-up and the end.
const std::string questions = "\n\n\n\n@/html/vlimg\n\n";
const std::string replacing_questions = "\nyes\n\n\n@/html/vlimg\n\n";
const std::string enter_on = "\n\n\n\n\n";
const std::string no_to_both = "\nno\nno\n\n";

std::string upgrade_dialogue(const std::string &product, const std::string &images,
                             const std::string &wml, const std::string &manuals,
                             const std::string &rules) {
    return first_upgrade_questions(product) +
           "\n"
           "Where are your template files (this must be an existing directory)\n"
           "[@/spool/" +
           product +
           "]? "
           "\n"
           "Where are the .gif, .jpg and .wav files\n"
           "[" +
           images +
           "]? "
           "\n"
           "Relative URL for HTML references to these images\n"
           "[/vlimg]? "
           "\n"
           "Do you want to install/upgrade the merlin cgi [" +
           wml +
           "]? "
           "\n"
           "\n"
           "-------------------------------------------------------------------------------\n"
           "gxsetup is ready to upgrade " +
           product +
           ", to version 3.2a\n"
           "using the following answers:\n"
           "\n"
           "Directories\n"
           "webserver directory: @/cgi-bin\n"
           "images directory:    @/html/vlimg\n"
           "templates directory: @/spool/" +
           product + "\n" + manuals +
           "Rules\n"
           "templates " +
           rules +
           " be overwritten\n"
           "\n"
           "ini file WILL NOT be overwritten\n"
           "\n"
           "\n"
           "Do you want to change any of your answers [NO]? "
           "\n"
           "Please wait while gxsetup upgrades " +
           product + "\n";
}

// The session looks for the manuals below the default set, whose directory the answers name.
const std::string tanager_manuals = "manuals directory:   @/spool/tanager/marble/manuals\n\n";
const std::string tanager_images = "/home/httpd/html/vlimg/imap";
const std::string osprey_images = "/home/httpd/html/vlimg/mail";

std::string upgraded_images() {
    return "0755 html/vlimg/\n"
           "0770 html/vlimg/blue/\n"
           "0660 html/vlimg/blue/bell.wav \"32 img/common/bell.wav\"\n"
           "0660 html/vlimg/blue/logo.gif \"32 img/blue/logo.gif\"\n"
           "0770 html/vlimg/marble/\n"
           "0660 html/vlimg/marble/bell.wav \"32 img/common/bell.wav\"\n"
           "0660 html/vlimg/marble/logo.gif \"32 img/marble/logo.gif\"\n"
           "0770 html/vlimg/slate/\n"
           "0660 html/vlimg/slate/bell.wav \"32 img/common/bell.wav\"\n"
           "0660 html/vlimg/slate/logo.gif \"32 img/slate/logo.gif\"\n";
}

// "tpl_set NUMBER DIRECTORY/SET URL/SET SET Set".
std::string set_line(const std::string &key, const std::string &source, const std::string &set,
                     const std::string &directory) {
    return key + " " + set_number(source, set) + " " + directory + "/" + set + " /vlimg/" + set +
           " " + set + " Set\n";
}

// The lines of all sets, the default one first.
std::string set_lines(const std::string &key, const std::string &source,
                      const std::string &default_set, const std::string &directory) {
    std::string lines = set_line(key, source, default_set, directory);
    for (const std::string &set : set_names(source)) {
        lines += set == default_set ? "" : set_line(key, source, set, directory);
    }
    return lines;
}

// --- Without replacing the templates ---

TEST(UpgradeTanager, WithoutReplacingHoldsThisDialogue) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    const wizard_run run = run_wizard(host, {}, questions + enter_on);
    EXPECT_EQ(run.transcript,
              upgrade_dialogue("tanager", tanager_images, "NO", tanager_manuals, "WILL NOT") +
                  "No files found in @/spool/tanager\n"
                  "\n"
                  "Copying new template files.....\n"
                  "Copying graphic and wav files............\n"
                  "Copying cgi files.\n"
                  "Copying manual files.." +
                  upgrade_outcome("@/spool/tanager", kept_note) +
                  "Copying original template files.....\n"
                  "Copy complete.\n"
                  "\n"
                  "Shall I delete the temporary files [YES]? "
                  "\n"
                  "Deleting temporary files............................" +
                  upgrade_farewell("tanager"));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(UpgradeTanager, DebugLogNamesEachStep) {
    const std::vector<std::string_view> details = {"INI: ", "DoCopy[", "Wild finding",
                                                   "Find all files", "directory"};
    const world host("tanager");
    install_31_and_unpack_32(host);
    run_wizard(host, {"-debug"}, replacing_questions + enter_on);
    EXPECT_EQ(shown_log_without(host, "dist/gxsetup.log", details),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Logging set to DEBUG.\n"
              "Debug: Loading gxvalues defaults\n"
              "Debug: Loading gxvalues from default file\n"
              "Debug: Forming product name\n"
              "Debug: Getting cgi_name\n"
              "Debug: Getting version #\n"
              "Debug: Getting version from [./tanager.cgi -version >ver.txt]\n"
              "Debug: Case 2: Upgrade product\n"
              "Info:  Upgrading tanager to version 3.2a\n"
              "Debug: Change replace ini to FALSE\n"
              "Debug: gxupgrade_main()\n"
              "Debug: upgrade questions\n"
              "Debug: replace templates?\n"
              "Debug: CGI Path?\n"
              "Debug: load gxvalues with ini file settings\n"
              "Debug: Templates ?\n"
              "Debug: vlimg dir ?\n"
              "Debug: relative URL\n"
              "Debug: Action to upgrade\n"
              "Debug: upgrade\n"
              "Debug: Copying template files\n"
              "Debug: Copying graphic and wav files\n"
              "Debug: Copying CGI files\n"
              "Debug: Copying manual files\n"
              "Debug: Creaing .new file\n"
              "Debug: Copy originals\n"
              "Debug: Deleting temporary files\n"
              "Debug: Copy gxsetup.log\n"
              "Info:  upgrade successful\n"
              "Info:  * gxsetup finished *\n"
              "Debug: Save gxvalues to default file\n"
              "Debug: Clear gxvalues\n");
}

TEST(UpgradeTanager, WithoutReplacingTheSetsAreCopiedAsTreesWhichOverwritesInsideThem) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, questions + enter_on);
    EXPECT_EQ(tree_of(host, "html"), upgraded_images());
    EXPECT_EQ(tree_of(host, "spool"),
              "0770 spool/tanager/\n"
              "0770 spool/tanager/blue/\n"
              "0660 spool/tanager/blue/head.tpl \"31 tpl/common/head.tpl\"\n"
              "0660 spool/tanager/blue/index.tpl \"32 tpl/blue/index.tpl\"\n"
              "0660 spool/tanager/blue/words.dat \"31 tpl/common/words.dat\"\n"
              "0770 spool/tanager/bulletins/\n"
              "0770 spool/tanager/common/\n"
              "0660 spool/tanager/common/head.tpl \"32 tpl/common/head.tpl\"\n"
              "0660 spool/tanager/common/words.dat \"32 tpl/common/words.dat\"\n"
              "0660 spool/tanager/gxsetup.dat\n"
              "0660 spool/tanager/gxsetup.log\n"
              "0770 spool/tanager/img/\n"
              "0770 spool/tanager/img/blue/\n"
              "0660 spool/tanager/img/blue/bell.wav \"32 img/common/bell.wav\"\n"
              "0660 spool/tanager/img/blue/logo.gif \"32 img/blue/logo.gif\"\n"
              "0770 spool/tanager/img/marble/\n"
              "0660 spool/tanager/img/marble/bell.wav \"32 img/common/bell.wav\"\n"
              "0660 spool/tanager/img/marble/logo.gif \"32 img/marble/logo.gif\"\n"
              "0770 spool/tanager/img/slate/\n"
              "0660 spool/tanager/img/slate/bell.wav \"32 img/common/bell.wav\"\n"
              "0660 spool/tanager/img/slate/logo.gif \"32 img/slate/logo.gif\"\n"
              "0770 spool/tanager/manuals/\n"
              "0660 spool/tanager/manuals/index.html \"31 manuals/index.html\"\n"
              "0770 spool/tanager/marble/\n"
              "0660 spool/tanager/marble/head.tpl \"31 tpl/common/head.tpl\"\n"
              "0660 spool/tanager/marble/index.tpl \"32 tpl/marble/index.tpl\"\n"
              "0770 spool/tanager/marble/manuals/\n"
              "0660 spool/tanager/marble/manuals/index.html \"32 manuals/index.html\"\n"
              "0660 spool/tanager/marble/tanager.ini\n"
              "0660 spool/tanager/marble/words.dat \"31 tpl/common/words.dat\"\n"
              "0770 spool/tanager/originals/\n"
              "0770 spool/tanager/originals/blue/\n"
              "0660 spool/tanager/originals/blue/index.tpl \"32 tpl/blue/index.tpl\"\n"
              "0770 spool/tanager/originals/common/\n"
              "0660 spool/tanager/originals/common/head.tpl \"32 tpl/common/head.tpl\"\n"
              "0660 spool/tanager/originals/common/words.dat \"32 tpl/common/words.dat\"\n"
              "0770 spool/tanager/originals/marble/\n"
              "0660 spool/tanager/originals/marble/index.tpl \"32 tpl/marble/index.tpl\"\n"
              "0770 spool/tanager/originals/slate/\n"
              "0660 spool/tanager/originals/slate/index.tpl \"32 tpl/slate/index.tpl\"\n"
              "0770 spool/tanager/slate/\n"
              "0660 spool/tanager/slate/index.tpl \"32 tpl/slate/index.tpl\"\n"
              "0660 spool/tanager/tanager.new\n");
}

TEST(UpgradeTanager, WithoutReplacingTheNewIniNamesNoSets) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    const std::string old = read_file("cgi-bin/tanager.ini");
    run_wizard(host, {}, questions + "\n" + no_to_both);
    EXPECT_EQ(read_file("cgi-bin/tanager.ini"), old);
    EXPECT_EQ(shown_file(host, "cgi-bin/tanager.new"),
              "# tanager.ini created by gxsetup, version 3.0h for tanager, version 3.2a\n"
              "\n"
              "timeout 32\n"
              "\n"
              "\n"
              "domain example.com\n"
              "imaphost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/tanager\n"
              "workarea @/spool/tanager\n"
              "vlimg /vlimg\n"
              "bulletin_path @/spool/tanager/bulletins\n");
}

TEST(UpgradeTanager, TemplatesBesideTheSetsAreClassifiedByTheirOwnFamily) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    add_file("spool/tanager/notes.tpl", "no header\n");
    const wizard_run run = run_wizard(host, {}, questions + "\n\nno\n\nno\nno\n\n");
    EXPECT_NE(run.transcript.find("\nA copy of the list has been saved to your templates directory "
                                  "as \"tmptlist.txt\"\n\n"
                                  "\nPlease press enter to continue with the upgrade..."
                                  "\nCopying new template files.....\n"),
              std::string::npos)
        << run.transcript;
    const std::string list = read_file("spool/tanager/tmptlist.txt");
    EXPECT_TRUE(list.ends_with("\n\n"
                               "2. notes.tpl          Current template set: tan_s1 version 1.0a\n"
                               "                 Distribution template set: tan_s2 version "
                               "2.0a\n"))
        << list;
}

TEST(UpgradeTanager, EveryNewFileBelongsToTheOwnerOfInstalledFiles) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    const world host("tanager");
    install_31_and_unpack_32(host);
    run_wizard(host, {}, replacing_questions + "yes\n\n\n\n\n");
    EXPECT_EQ(not_owned("spool/tanager"), "");
    EXPECT_EQ(not_owned("html/vlimg"), "");
    EXPECT_EQ(not_owned("cgi-bin"), "cgi-bin\n");
}

TEST(UpgradeTanager, AManualsDirectoryThatCannotBeMadeEndsIt) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    edit_by_hand("cgi-bin/tanager.ini", "manual no/root");
    const wizard_run run = run_wizard(host, {}, questions + "\n\n\n");
    EXPECT_EQ(
        run.transcript,
        upgrade_dialogue("tanager", tanager_images, "NO", "manuals directory:   no/root\n\n",
                         "WILL NOT") +
            ".\n"
            "\n"
            "-------------------------------------------------------------------------------\n"
            "upgrade unsuccessful\n"
            "\n"
            ".\n"
            "Please press enter to quit...\n");
    EXPECT_FALSE(is_there("cgi-bin/tanager.new"));
    EXPECT_EQ(run.status, 0);
}

// --- Replacing the templates ---

TEST(UpgradeTanager, ReplacingCopiesTheSetsWithTheirCommonFilesButTheWordList) {
    const world host("tanager");
    install_31_and_unpack_32(host);
    const std::string sets = set_lines("tpl_set", "dist/tpl", "marble", "@/spool/tanager");
    const wizard_run run = run_wizard(host, {}, replacing_questions + "\n" + no_to_both);
    EXPECT_EQ(run.transcript,
              upgrade_dialogue("tanager", tanager_images, "NO", tanager_manuals, "WILL") +
                  "\n"
                  "Copying template files...........\n"
                  "Copying graphic and wav files............\n"
                  "Copying cgi files.\n"
                  "Copying manual files.." +
                  upgrade_outcome("@/spool/tanager") +
                  "\nShall I delete the temporary files [YES]? " + upgrade_farewell("tanager"));
    EXPECT_EQ(tree_of(host, "html"), upgraded_images());
    EXPECT_EQ(tree_of(host, "spool/tanager/marble"),
              "0660 spool/tanager/marble/head.tpl \"32 tpl/common/head.tpl\"\n"
              "0660 spool/tanager/marble/index.tpl \"32 tpl/marble/index.tpl\"\n"
              "0770 spool/tanager/marble/manuals/\n"
              "0660 spool/tanager/marble/manuals/index.html \"32 manuals/index.html\"\n"
              "0660 spool/tanager/marble/tanager.ini\n"
              "0660 spool/tanager/marble/tanager.new\n"
              "0660 spool/tanager/marble/words.dat \"31 tpl/common/words.dat\"\n");
    EXPECT_EQ(tree_of(host, "spool/tanager/slate"),
              "0660 spool/tanager/slate/head.tpl \"32 tpl/common/head.tpl\"\n"
              "0660 spool/tanager/slate/index.tpl \"32 tpl/slate/index.tpl\"\n");
    EXPECT_FALSE(is_there("spool/tanager/wml"));
    EXPECT_EQ(shown_file(host, "cgi-bin/tanager.new"),
              "# tanager.ini created by gxsetup, version 3.0h for tanager, version 3.2a\n"
              "\n"
              "timeout 32\n"
              "\n"
              "\n"
              "domain example.com\n"
              "imaphost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/tanager/marble\n"
              "workarea @/spool/tanager\n"
              "vlimg /vlimg/marble\n"
              "bulletin_path @/spool/tanager/bulletins\n" +
                  sets);
}

TEST(UpgradeOsprey, ANewWmlPartLeavesItsFirstSetOutOfTheTemplateSets) {
    const world host("osprey");
    install_31_and_unpack_32(host);
    add_file("dist/wap/pocket/index.tpl", "32 pocket deck");
    const std::string sets = set_lines("tpl_set", "dist/tpl", "marble", "@/spool/osprey");
    const std::string wap_sets = set_lines("tpl_set", "dist/wap", "wml", "@/spool/osprey");
    const std::string pocket = set_line("tpl_set", "dist/wap", "pocket", "@/spool/osprey");
    const wizard_run run = run_wizard(host, {}, replacing_questions + "yes\n" + enter_on);
    EXPECT_EQ(run.transcript, upgrade_dialogue("osprey", osprey_images, "NO", "", "WILL") +
                                  "\n"
                                  "Copying template files...............\n"
                                  "Copying graphic and wav files............\n"
                                  "Copying cgi files..\n"
                                  "Copying manual files..\n"
                                  "Creating merlin.ini file." +
                                  upgrade_outcome("@/spool/osprey") +
                                  "Copying original template files.....\n"
                                  "Copy complete.\n"
                                  "\n"
                                  "Shall I delete the temporary files [YES]? "
                                  "\n"
                                  "Deleting temporary files.............................." +
                                  upgrade_farewell("osprey"));
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/merlin.cgi\n"
                                        "0644 cgi-bin/merlin.ini\n"
                                        "0770 cgi-bin/osprey.cgi\n"
                                        "0644 cgi-bin/osprey.ini\n"
                                        "0644 cgi-bin/osprey.new\n");
    EXPECT_EQ(tree_of(host, "spool/osprey/wml"),
              "0660 spool/osprey/wml/index.tpl \"32 deck\"\n"
              "0660 spool/osprey/wml/merlin.ini\n"
              "0660 spool/osprey/wml/words.dat \"32 deck words\"\n");
    EXPECT_EQ(tree_of(host, "spool/osprey/pocket"),
              "0660 spool/osprey/pocket/index.tpl \"32 pocket deck\"\n"
              "0660 spool/osprey/pocket/words.dat \"32 deck words\"\n");
    EXPECT_TRUE(shown_file(host, "cgi-bin/osprey.new")
                    .ends_with("\nbulletin_path @/spool/osprey/bulletins\n" + sets));
    EXPECT_EQ(shown_file(host, "cgi-bin/merlin.ini"),
              "# merlin.ini created by gxsetup, version 3.0h for merlin, version 3.2a\n"
              "\n"
              "deck 32\n"
              "\n"
              "\n"
              "domain example.com\n"
              "pophost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/osprey/wml\n"
              "workarea @/spool/osprey\n"
              "vlimg /vlimg/wml\n"
              "bulletin_path @/spool/osprey/bulletins\n" +
                  wap_sets);
    // The answers keep what the WML part needed.
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_TRUE(saved.ends_with("\nwap_templates @/spool/osprey/wml\n"
                                "wap_vlimg /vlimg/wml\n" +
                                pocket))
        << saved;
    EXPECT_NE(saved.find("\ntemplates @/spool/osprey/wml\n"), std::string::npos);
    EXPECT_NE(saved.find("\nvlimg /vlimg/wml\n"), std::string::npos);
}

TEST(UpgradeOsprey, AnOldWmlIniStaysAndSoDoTheTemplateSets) {
    const world host("osprey");
    install_31_and_unpack_32(host, "yes");
    const std::string old = read_file("cgi-bin/merlin.ini");
    const std::string sets = set_lines("tpl_set", "dist/tpl", "marble", "@/spool/osprey");
    const wizard_run run = run_wizard(host, {}, replacing_questions + "\n" + no_to_both);
    EXPECT_EQ(run.transcript, upgrade_dialogue("osprey", osprey_images, "YES", "", "WILL") +
                                  "\n"
                                  "Copying template files.............\n"
                                  "Copying graphic and wav files............\n"
                                  "Copying cgi files..\n"
                                  "Copying manual files.." +
                                  upgrade_outcome("@/spool/osprey") +
                                  "\nShall I delete the temporary files [YES]? " +
                                  upgrade_farewell("osprey"));
    EXPECT_EQ(read_file("cgi-bin/merlin.ini"), old);
    EXPECT_EQ(read_file("cgi-bin/merlin.cgi"), read_file("dist/osprey.cgi"));
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_NE(saved.find("\n" + sets), std::string::npos) << saved;
    EXPECT_NE(saved.find("\ntemplates @/spool/osprey/marble\n"), std::string::npos) << saved;
}

TEST(UpgradeOsprey, WithoutReplacingTheWmlSetsAreNotCopied) {
    const world host("osprey");
    install_31_and_unpack_32(host, "yes");
    const wizard_run run = run_wizard(host, {}, questions + "\n" + no_to_both);
    EXPECT_TRUE(run.transcript.ends_with(
        upgrade_dialogue("osprey", osprey_images, "YES", "", "WILL NOT") +
        "No files found in @/spool/osprey\n"
        "\n"
        "Copying new template files.....\n"
        "Copying graphic and wav files............\n"
        "Copying cgi files..\n"
        "Copying manual files.." +
        upgrade_outcome("@/spool/osprey", kept_note) +
        "\nShall I delete the temporary files [YES]? " + upgrade_farewell("osprey")))
        << run.transcript;
    EXPECT_EQ(read_file("spool/osprey/wml/index.tpl"), "31 deck");
    EXPECT_EQ(read_file("spool/osprey/marble/index.tpl"), "32 tpl/marble/index.tpl");
}

} // namespace
