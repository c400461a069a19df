// Conversions in whatever reaches the program from outside: names of files and directories,
// settings, answers, the environment. They are text everywhere, and read nothing; only in the log,
// whose lines of errors and notes are formatted once more, they read as missing.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;

const std::string odd = "%s%n%d%%";
const std::string odd_in_log = "<NULL>%n0%";

// The log of a run at debug level, in which every path and answer is formatted.
const std::vector<std::string> debug = {"-debug"};

TEST(Conversions, InNamesAndSettingsOfAFlatProductAreText) {
    const world host("kestrel");
    add_program("dist/" + odd + ".cgi", "Version: v" + odd + "\n");
    add_file("dist/tpl/" + odd + ".tpl", "template\n");
    add_file("dist/tpl/" + odd + ".gif", "picture\n");
    add_file("dist/tpl/" + odd + "/in.tpl", "deep\n");
    add_file("dist/" + odd + ".js", "script\n");
    add_file("dist/wap/" + odd + "/deck.tpl", "deck\n");
    add_file("dist/kestrel.ini", odd + " " + odd + "\n");
    add_file("dist/vsetup.hlp",
             "[INI_HELP]\n" + odd + " in the help\n\n[NO_HELP]\n" + odd + "\n\n");
    add_file(
        "dist/gxdflt.dat",
        odd + " " + odd + "\nop_system " + odd + "\nlog_lvl " + odd + "\ncgi_name " + odd +
            "\nwml_name " + odd + "\nwml TRUE\n" +
            host.meant("cgi_path @/cgi-bin\nvlimg_dir @/html\ntemplates @/spool/" + odd + "\n"));
    std::filesystem::create_directory("cgi-" + odd);
    std::filesystem::rename("dist", odd);
    const wizard_run run = run_wizard(host, debug,
                                      in_order({{"Webserver directory", "@/cgi-" + odd},
                                                {"Directory for templates", "@/spool/" + odd},
                                                {"Directory for .gif", "@/html/" + odd},
                                                {"Relative URL", "/" + odd},
                                                {"domain name", "?"},
                                                {"domain name", odd},
                                                {"pop host", odd},
                                                {"smtp host", odd}}),
                                      {.directory = odd});
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.transcript, Not(HasSubstr("<NULL>")));
    expect_kept("screen", run.transcript);
    for (const std::string &path :
         {"spool/" + odd + "/" + odd + ".tpl", "html/" + odd + "/" + odd + ".gif",
          "spool/" + odd + "/originals/" + odd + ".tpl", "html/" + odd + "/" + odd + ".js",
          "spool/" + odd + "/" + odd + "/in.tpl", "cgi-" + odd + "/" + odd + ".cgi",
          "cgi-" + odd + "/" + odd + ".ini"}) {
        EXPECT_TRUE(is_there(path)) << path;
    }
    expect_kept("kestrel.ini", shown_file(host, "cgi-" + odd + "/kestrel.ini"));
    const std::string answers_saved = shown_file(host, odd + "/gxsetup.dat");
    for (const char *name :
         {"\n%s%n%d%% ", "\nop_system ", "\nlog_lvl ", "\npophost ", "\ndomain "}) {
        EXPECT_THAT(answers_saved, HasSubstr(name + odd + "\n"));
    }
    const std::string log = shown_log(host, odd + "/gxsetup.log");
    EXPECT_THAT(log,
                HasSubstr("Debug: Getting version from [./" + odd + ".cgi -version >ver.txt]\n"));
    EXPECT_THAT(log, HasSubstr("Info:  @/html/" + odd_in_log +
                               " does not exist... gxsetup will create it\n"));
}

TEST(Conversions, InSettingsOfTheProductAreText) {
    const world host("kestrel");
    add_program("dist/" + odd + ".cgi", "Version: v1\n");
    add_file(
        "dist/gxdflt.dat",
        "prod_name " + odd + "\naction " + odd + "\n" +
            host.meant("cgi_path @/cgi-bin\nvlimg_dir @/html\ntemplates @/spool/" + odd + "\n"));
    const wizard_run run = run_wizard(
        host, debug, in_order({{"What do you want to do", "7"}, {"What do you want to do", "4"}}));
    EXPECT_EQ(run.transcript, welcome + menu(odd, "1", odd, odd) +
                                  "That is not a valid choice, please choose again\n" +
                                  menu(odd, "1", odd, odd) + goodbye);
}

TEST(Conversions, InNamesOfSetsAreText) {
    const world host("tanager");
    for (const char *directory : {"dist/tpl/", "dist/img/", "dist/wap/"}) {
        std::filesystem::remove_all(directory);
        add_file(directory + odd + "/" + odd, "own\n");
        add_file(std::string(directory) + "common/" + odd + ".dat", "common\n");
    }
    add_file("dist/manuals/" + odd + ".html", "manual\n");
    const std::string below = "@/spool/" + odd;
    const wizard_run run = run_wizard(host, debug,
                                      {{"Directory for templates", below},
                                       {"Directory for manual", below + "/man"},
                                       {"Directory for bulletin", below + "/bul"},
                                       {"Directory for .gif", "@/html/" + odd},
                                       {"Relative URL", "/" + odd},
                                       {"domain name", "site.test"},
                                       {"your imap host", odd},
                                       {"IMAP hosts", "yes\n" + odd + "\n."},
                                       {"smtp host", odd},
                                       {"merlin cgi", "yes"},
                                       {"temporary files", "no"}});
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.transcript, Not(HasSubstr("<NULL>")));
    EXPECT_TRUE(
        run.transcript.ends_with("\ninstall successful\n\n.\nPlease press enter to quit...\n"))
        << run.transcript;
    const std::string ini = shown_file(host, "cgi-bin/tanager.ini");
    EXPECT_THAT(ini, HasSubstr("\nimaphost " + odd + "\n"));
    EXPECT_THAT(ini, HasSubstr("\nallow_host_login " + odd + "\n"));
    EXPECT_THAT(ini, HasSubstr("\ntpl_set 1 " + below + "/" + odd + " /" + odd + "/" + odd + " " +
                               odd + " Set\n"));
    for (const std::string &path :
         {"spool/" + odd + "/" + odd + "/" + odd, "html/" + odd + "/" + odd + "/" + odd,
          "spool/" + odd + "/" + odd + "/" + odd + ".dat", "spool/" + odd + "/man/" + odd + ".html",
          "spool/" + odd + "/originals/tpl/" + odd + "/" + odd}) {
        EXPECT_TRUE(is_there(path)) << path;
    }
}

TEST(Conversions, InHeadersOfTemplatesAreText) {
    const upgrade_world host("kestrel");
    add_file("spool/kestrel/" + odd + ".tpl",
             "||header: modified=true tpl_set=" + odd + " tpl_version=" + odd + "||\nold\n");
    add_file("dist/tpl/" + odd + ".tpl",
             "||header: modified=false tpl_set=" + odd + " tpl_version=" + odd + "9||\nnew\n");
    const wizard_run run =
        run_wizard(host, debug, no_to_both + console_script{{"safely updated", "no"}});
    const std::string entry = "     Current template set: " + odd + " version " + odd + "\n";
    EXPECT_THAT(run.transcript, HasSubstr(odd + ".tpl  " + entry +
                                          "              Distribution template set: " + odd +
                                          " version " + odd + "9\n"));
    EXPECT_THAT(read_file("spool/kestrel/tmptlist.txt"), HasSubstr("2. " + odd + ".tpl  " + entry));
    EXPECT_TRUE(read_file("spool/kestrel/" + odd + ".tpl").ends_with("old\n"));
}

TEST(Conversions, InThePathsOfARemovalAreText) {
    const world host("kestrel");
    add_program("cgi-bin/" + odd + ".cgi", "");
    add_file("cgi-bin/" + odd + ".ini", odd + " " + odd + "\n");
    add_file("html/" + odd + "/" + odd + ".txt", "text\n");
    add_file("html/" + odd + "/" + odd + ".gif", "picture\n");
    add_file("spool/" + odd + "/" + odd + ".tpl", "template\n");
    add_file("spool/" + odd + "/u_" + odd + "/" + odd, "mail\n");
    add_file("dist/gxdflt.dat",
             "cgi_name " + odd + "\nwml_name " + odd + "\n" +
                 host.meant("cgi_path @/cgi-bin\nvlimg_dir @/html\ntemplates @/spool\n"));
    const wizard_run run = run_wizard(host, debug,
                                      {{"What version", "9"},
                                       {"What do you want to do", "3"},
                                       {"old graphics and wav", "@/html/" + odd},
                                       {"Remove all graphics", "yes"},
                                       {"your work area", "@/spool/" + odd},
                                       {"your template files", "@/spool/" + odd}});
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.transcript, HasSubstr("\nRemove " + odd + " CGI files from @/cgi-bin [YES]? "));
    EXPECT_THAT(run.transcript,
                HasSubstr("\nRemove all user information from @/spool/" + odd + " [NO]? "));
    EXPECT_THAT(run.transcript,
                HasSubstr("Error: Cannot remove @/html/" + odd + ": Directory not empty\n"));
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                HasSubstr("Error: Cannot remove @/html/" + odd_in_log + ": Directory not empty\n"));
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool"),
              "0755 html/" + odd + "/\n0644 html/" + odd + "/" + odd +
                  ".txt \"text\"\n0755 spool/" + odd + "/\n0755 spool/" + odd + "/u_" + odd +
                  "/\n0644 spool/" + odd + "/u_" + odd + "/" + odd + " \"mail\"\n");
}

TEST(Conversions, InWhatIsStampedAreText) {
    const world host("kestrel");
    add_file(odd + "/" + odd + ".tpl", odd + "\n");
    const wizard_run run = run_wizard(host, {"-header"},
                                      in_order({{"Directory for templates", "@/" + odd},
                                                {"New templates set", odd},
                                                {"New templates version", odd},
                                                {"Directory for templates", "@/" + odd}}));
    EXPECT_TRUE(read_file(odd + "/" + odd + ".tpl")
                    .starts_with("||header: modified=false tpl_set=" + odd + " tpl_version=" + odd +
                                 "||\n" + odd + "\n\n||checksum="));
    std::filesystem::remove(odd + "/" + odd + ".tpl");
    std::filesystem::create_symlink("nowhere", odd + "/" + odd + ".tpl");
    const console_script checksums = {{"Directory for templates", "@/" + odd}};
    run_wizard(host, {"-checksum"}, checksums);
    EXPECT_THAT(
        shown_log(host, "dist/gxsetup.log"),
        HasSubstr("Error: Can't open @/" + odd + "/" + odd + ".tpl, No such file or directory\n"));
    std::filesystem::remove(odd + "/" + odd + ".tpl");
    EXPECT_THAT(run_wizard(host, {"-checksum"}, checksums).transcript,
                HasSubstr("No files found in @/" + odd + "\n"));
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                HasSubstr("Info:  No files found in @/" + odd_in_log + "\n"));
}

TEST(Conversions, InAFileOfDefaultsAreText) {
    const world host("kestrel");
    const console_script answers = {{"Version", odd},
                                    {"Product Name", odd},
                                    {"Operating System", odd},
                                    {"change the default suggested directories", "no"},
                                    {"install/upgrade", "no"}};
    const wizard_run run = run_wizard(host, {"-make"},
                                      answers + console_script{{"default suggested .ini", "yes"},
                                                               {"Suggested domain", odd},
                                                               {"Suggested pop host", odd},
                                                               {"Suggested smtp host", odd},
                                                               {"Enter file", odd}});
    EXPECT_THAT(run.transcript, HasSubstr("[gxdflt_" + odd + ".dat]? "));
    EXPECT_THAT(run.transcript, HasSubstr("]? " + odd + ".dat saved\n"));
    const std::string saved = read_file("dist/" + odd + ".dat");
    for (const char *name : {"version ", "prod_name ", "op_system ", "domain ", "pophost "}) {
        EXPECT_THAT(saved, HasSubstr("\n" + (name + odd) + "\n"));
    }
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                HasSubstr("Info:  " + odd_in_log + ".dat saved\n"));
    std::filesystem::create_directory("dist/no");
    const wizard_run refused =
        run_wizard(host, {"-make"},
                   answers + console_script{{"Enter file", "no/" + odd + "/" + odd + ".dat"}});
    EXPECT_THAT(refused.transcript,
                HasSubstr("Error: cannot write to no/" + odd + "/" + odd + ".dat\n"));
}

TEST(Conversions, InTheEnvironmentAndTheProgramsNameAreNotRead) {
    const world host("kestrel");
    run_place place = {.wrapper = {"/bin/bash", "-c", "exec -a '" + odd + "' \"$@\"", "bash"},
                       .settings = {{"PATH", "/usr/bin:/bin:" + odd}}};
    for (const char *name : {"HOME", "USER", "LOGNAME", "TERM", "LANG", "LC_ALL", "TMPDIR", "PWD",
                             "LANGUAGE", "NLSPATH", "%s%n%d%%"}) {
        place.settings[name] = odd;
    }
    EXPECT_EQ(run_wizard(host, debug, quit_at_the_menu, place).transcript,
              welcome + menu("kestrel") + goodbye);
    place.settings["TZ"] = odd;
    EXPECT_EQ(run_wizard(host, {"-version"}, {}, place).transcript,
              "gxsetup, version 3.0h\n\nPlease press enter to quit...\n");
}

} // namespace
