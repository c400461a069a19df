// Conversions in whatever reaches the program from outside: names of files and directories,
// settings, answers, the environment. They are text everywhere, and read nothing; only in the log,
// whose lines of errors and notes are formatted once more, they read as missing.

#include "support/expected.h"
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
using testing::Not;
using testing::StartsWith;

const std::string odd = "%s%n%d%%";

// The text with conversions for each ODD, and for each LOGGED what becomes of them in the log.
std::string with_odd(const std::string &text) {
    return replaced(replaced(text, "ODD", odd), "LOGGED", "<NULL>%n0%");
}

// Runs commands of the shell in which "@" is the root.
void shell_with_odd(const world &host, const std::string &commands) {
    shell(host.meant(with_odd(commands)));
}

// A matcher of a text that holds this one.
auto holds(const std::string &text) {
    return HasSubstr(with_odd(text));
}

void expect_there(const std::vector<std::string> &paths) {
    for (const std::string &path : paths) {
        EXPECT_TRUE(is_there(with_odd(path))) << path;
    }
}

// The log of a run at debug level, in which every path and answer is formatted.
const std::vector<std::string> debug = {"-debug"};

using Conversions = unpacked_test<kestrel>;
using SetConversions = unpacked_test<tanager>;

TEST_F(Conversions, InNamesAndSettingsOfAFlatProductAreText) {
    add_program("dist/" + odd + ".cgi", "Version: v" + odd + "\n");
    add_file("dist/gxdflt.dat",
             host.meant(with_odd("ODD ODD\nop_system ODD\nlog_lvl ODD\ncgi_name ODD\nwml_name ODD\n"
                                 "wml TRUE\ncgi_path @/cgi-bin\nvlimg_dir @/html\n"
                                 "templates @/spool/ODD\n")));
    add_file("dist/vsetup.hlp", with_odd("[INI_HELP]\nODD in the help\n\n[NO_HELP]\nODD\n\n"));
    shell_with_odd(host,
                   "cd dist; echo template >tpl/ODD.tpl; echo picture >tpl/ODD.gif\n"
                   "mkdir tpl/ODD wap/ODD; echo deep >tpl/ODD/in.tpl\n"
                   "echo script >ODD.js; echo deck >wap/ODD/deck.tpl; echo ODD ODD >kestrel.ini\n"
                   "cd ..; mkdir cgi-ODD; mv dist ODD");
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
    expect_kept("screen", run.transcript);
    expect_there({"spool/ODD/ODD.tpl", "html/ODD/ODD.gif", "spool/ODD/originals/ODD.tpl",
                  "html/ODD/ODD.js", "spool/ODD/ODD/in.tpl", "cgi-ODD/ODD.cgi", "cgi-ODD/ODD.ini"});
    expect_kept("kestrel.ini", shown_file(host, "cgi-" + odd + "/kestrel.ini"));
    EXPECT_THAT(shown_file(host, odd + "/gxsetup.dat"),
                AllOf(holds("\nODD ODD\n"), holds("\nop_system ODD\n"), holds("\nlog_lvl ODD\n"),
                      holds("\npophost ODD\n"), holds("\ndomain ODD\n")));
    EXPECT_THAT(shown_log(host, odd + "/gxsetup.log"),
                AllOf(holds("Debug: Getting version from [./ODD.cgi -version >ver.txt]\n"),
                      holds("Info:  @/html/LOGGED does not exist... gxsetup will create it\n"),
                      holds("Info:  created directory \"@/spool/ODD\"\n")));
}

TEST_F(Conversions, InSettingsOfTheProductAreText) {
    add_program("dist/" + odd + ".cgi", "Version: v1\n");
    add_answers(host, "dist/gxdflt.dat",
                with_odd("prod_name ODD\naction ODD\ncgi_path @/cgi-bin\nvlimg_dir @/html\n"
                         "templates @/spool/ODD\n"));
    const wizard_run run = run_wizard(
        host, debug, in_order({{"What do you want to do", "7"}, {"What do you want to do", "4"}}));
    EXPECT_EQ(run.transcript, welcome + menu(odd, "1", odd, odd) +
                                  "That is not a valid choice, please choose again\n" +
                                  menu(odd, "1", odd, odd) + goodbye);
}

TEST_F(SetConversions, InNamesOfSetsAreText) {
    shell_with_odd(host, "for set in tpl img wap; do\n"
                         "rm -r dist/$set; mkdir -p dist/$set/ODD dist/$set/common\n"
                         "echo own >dist/$set/ODD/ODD; echo common >dist/$set/common/ODD.dat\n"
                         "done; echo manual >dist/manuals/ODD.html");
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
    EXPECT_THAT(run.transcript,
                AllOf(Not(HasSubstr("<NULL>")),
                      EndsWith("\ninstall successful\n\n.\nPlease press enter to quit...\n")));
    EXPECT_THAT(shown_file(host, "cgi-bin/tanager.ini"),
                AllOf(holds("\nimaphost ODD\n"), holds("\nallow_host_login ODD\n"),
                      holds("\ntpl_set 1 @/spool/ODD/ODD /ODD/ODD ODD Set\n")));
    expect_there({"spool/ODD/ODD/ODD", "html/ODD/ODD/ODD", "spool/ODD/ODD/ODD.dat",
                  "spool/ODD/man/ODD.html", "spool/ODD/originals/tpl/ODD/ODD"});
}

TEST_F(Conversions, InHeadersOfTemplatesAreText) {
    install_31_and_unpack_32(host);
    const std::string header = "||header: modified=MODIFIED tpl_set=ODD tpl_version=ODD";
    add_file("spool/kestrel/" + odd + ".tpl",
             with_odd(replaced(header, "MODIFIED", "true") + "||\nold\n"));
    add_file("dist/tpl/" + odd + ".tpl",
             with_odd(replaced(header, "MODIFIED", "false") + "9||\nnew\n"));
    const wizard_run run = run_wizard(host, debug, no_to_both + answering("safely updated", "no"));
    const std::string entry = "ODD.tpl       Current template set: ODD version ODD\n";
    EXPECT_THAT(run.transcript,
                holds(entry + "              Distribution template set: ODD version ODD9\n"));
    EXPECT_THAT(read_file("spool/kestrel/tmptlist.txt"), holds("2. " + entry));
    EXPECT_THAT(read_file("spool/kestrel/" + odd + ".tpl"), EndsWith("old\n"));
}

TEST_F(Conversions, InThePathsOfARemovalAreText) {
    shell_with_odd(host, "mkdir -p html/ODD spool/ODD/u_ODD; touch cgi-bin/ODD.cgi\n"
                         "echo ODD ODD >cgi-bin/ODD.ini; echo text >html/ODD/ODD.txt\n"
                         "echo picture >html/ODD/ODD.gif; echo template >spool/ODD/ODD.tpl\n"
                         "echo mail >spool/ODD/u_ODD/ODD");
    add_answers(host, "dist/gxdflt.dat",
                with_odd("cgi_name ODD\nwml_name ODD\ncgi_path @/cgi-bin\nvlimg_dir @/html\n"
                         "templates @/spool\n"));
    const wizard_run run = run_wizard(host, debug,
                                      {{"What version", "9"},
                                       {"What do you want to do", "3"},
                                       {"old graphics and wav", "@/html/" + odd},
                                       {"Remove all graphics", "yes"},
                                       {"your work area", "@/spool/" + odd},
                                       {"your template files", "@/spool/" + odd}});
    expect_kept_run(host, run, {"cgi-bin", "html", "spool"});
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                holds("Error: Cannot remove @/html/LOGGED: Directory not empty\n"));
}

TEST_F(Conversions, InWhatIsStampedAreText) {
    const std::string file = odd + "/" + odd + ".tpl";
    add_file(file, odd + "\n");
    run_wizard(host, {"-header"},
               in_order({{"Directory for templates", "@/" + odd},
                         {"New templates set", odd},
                         {"New templates version", odd},
                         {"Directory for templates", "@/" + odd}}));
    EXPECT_THAT(read_file(file), StartsWith(with_odd("||header: modified=false tpl_set=ODD "
                                                     "tpl_version=ODD||\nODD\n\n||checksum=")));
    std::filesystem::remove(file);
    std::filesystem::create_symlink("nowhere", file);
    const console_script checksums = {{"Directory for templates", "@/" + odd}};
    run_wizard(host, {"-checksum"}, checksums);
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                holds("Error: Can't open @/ODD/ODD.tpl, No such file or directory\n"));
    std::filesystem::remove(file);
    EXPECT_THAT(run_wizard(host, {"-checksum"}, checksums).transcript,
                holds("No files found in @/ODD\n"));
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"), holds("Info:  No files found in @/LOGGED\n"));
}

TEST_F(Conversions, InAFileOfDefaultsAreText) {
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
    EXPECT_THAT(run.transcript, holds("[gxdflt_ODD.dat]? ODD.dat saved\n"));
    expect_kept("defaults", read_file("dist/" + odd + ".dat"));
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"), holds("Info:  LOGGED.dat saved\n"));
    std::filesystem::create_directory("dist/no");
    const console_script refused = {{"Enter file", "no/" + odd + "/" + odd + ".dat"}};
    EXPECT_THAT(run_wizard(host, {"-make"}, answers + refused).transcript,
                holds("Error: cannot write to no/ODD/ODD.dat\n"));
}

TEST_F(Conversions, InTheEnvironmentAndTheProgramsNameAreNotRead) {
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
