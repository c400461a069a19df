// Conversions in whatever reaches the program from outside: names of files and directories,
// settings, answers, the environment. They are text everywhere, and read nothing; only in the log,
// whose lines of errors and notes are formatted once more, they read as missing.

#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

const std::string odd = "%s%n%d%%";
const std::string odd_in_log = "<NULL>%n0%";

void expect_in(const std::string &text, const std::string &part) {
    EXPECT_NE(text.find(part), std::string::npos) << "no\n" << part << "\nin\n" << text;
}

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
    const std::string answers = "1\n@/cgi-" + odd + "\n@/spool/" + odd + "\n@/html/" + odd + "\n/" +
                                odd + "\n?\n" + odd + "\n" + odd + "\n" + odd +
                                "\nyes\nno\nyes\nyes\n\n";
    const wizard_run run = run_wizard(host, debug, answers, {.directory = odd});

    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.transcript.find("<NULL>"), std::string::npos) << run.transcript;
    expect_in(run.transcript, menu("kestrel", odd));
    expect_in(run.transcript, "\n" + odd + " in the help\n");
    expect_in(run.transcript, "? @/html/" + odd + " does not exist... gxsetup will create it\n");
    expect_in(run.transcript, "Do you want to install/upgrade the " + odd + " cgi [YES]? ");
    expect_in(run.transcript,
              "webserver directory: @/cgi-" + odd + "\nimages directory:    @/html/" + odd +
                  "\ntemplates directory: @/spool/" + odd +
                  "\nini file settings\npop host:            " + odd + "\nsmtp host:           " +
                  odd + "\ndomain name:         " + odd + "\nrelative images URL: /" + odd + "\n");
    expect_in(run.transcript, "\nCreating " + odd + ".ini file");
    EXPECT_TRUE(run.transcript.ends_with(farewell(
        "kestrel", "http://" + odd + "/cgi-" + odd + "/" + odd + ".cgi", "install successful")))
        << run.transcript;

    for (const std::string &path :
         {"spool/" + odd + "/" + odd + ".tpl", "html/" + odd + "/" + odd + ".gif",
          "spool/" + odd + "/originals/" + odd + ".tpl", "html/" + odd + "/" + odd + ".js",
          "spool/" + odd + "/" + odd + "/in.tpl", "cgi-" + odd + "/" + odd + ".cgi",
          "cgi-" + odd + "/" + odd + ".ini"}) {
        EXPECT_TRUE(is_there(path)) << path;
    }
    EXPECT_EQ(shown_file(host, "cgi-" + odd + "/kestrel.ini"),
              "# kestrel.ini created by gxsetup, version 3.0h for kestrel, version " + odd +
                  "\n"
                  "\n" +
                  odd + " " + odd +
                  "\n"
                  "\n"
                  "\n"
                  "domain " +
                  odd + "\npophost " + odd + "\nsmtphost " + odd + "\ntemplates @/spool/" + odd +
                  "\nworkarea @/spool/" + odd + "\nvlimg /" + odd +
                  "\n"
                  "# Never change the next line, even if you change pophost\n"
                  "original_pophost " +
                  odd + "\n");
    const std::string answers_saved = shown_file(host, odd + "/gxsetup.dat");
    for (const char *name :
         {"\n%s%n%d%% ", "\nop_system ", "\nlog_lvl ", "\npophost ", "\ndomain "}) {
        expect_in(answers_saved, name + odd + "\n");
    }
    const std::string log = shown_log(host, odd + "/gxsetup.log");
    expect_in(log, "Debug: Getting version from [./" + odd + ".cgi -version >ver.txt]\n");
    expect_in(log, "Info:  @/html/" + odd_in_log + " does not exist... gxsetup will create it\n");
}

TEST(Conversions, InSettingsOfTheProductAreText) {
    const world host("kestrel");
    add_program("dist/" + odd + ".cgi", "Version: v1\n");
    add_file(
        "dist/gxdflt.dat",
        "prod_name " + odd + "\naction " + odd + "\n" +
            host.meant("cgi_path @/cgi-bin\nvlimg_dir @/html\ntemplates @/spool/" + odd + "\n"));
    const wizard_run run = run_wizard(host, debug, "7\n4\n\n");
    EXPECT_EQ(run.transcript, welcome + menu(odd, "1", odd, odd) +
                                  "That is not a valid choice, please choose again\n" +
                                  menu(odd, "1", odd, odd) + goodbye);
    EXPECT_EQ(run.status, 0);
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
    const wizard_run run =
        run_wizard(host, debug,
                   "1\n@/cgi-bin\n" + below + "\n" + below + "/man\n" + below + "/bul\n@/html/" +
                       odd + "\n/" + odd + "\nsite.test\n" + odd + "\nyes\n" + odd + "\n.\n" + odd +
                       "\nyes\nno\nyes\nno\n\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.transcript.find("<NULL>"), std::string::npos) << run.transcript;
    EXPECT_TRUE(
        run.transcript.ends_with("\ninstall successful\n\n.\nPlease press enter to quit...\n"))
        << run.transcript;
    const std::string ini = shown_file(host, "cgi-bin/tanager.ini");
    expect_in(ini, "\nimaphost " + odd + "\n");
    expect_in(ini, "\nallow_host_login " + odd + "\n");
    expect_in(ini,
              "\ntpl_set 1 " + below + "/" + odd + " /" + odd + "/" + odd + " " + odd + " Set\n");
    for (const std::string &path :
         {"spool/" + odd + "/" + odd + "/" + odd, "html/" + odd + "/" + odd + "/" + odd,
          "spool/" + odd + "/" + odd + "/" + odd + ".dat", "spool/" + odd + "/man/" + odd + ".html",
          "spool/" + odd + "/originals/tpl/" + odd + "/" + odd}) {
        EXPECT_TRUE(is_there(path)) << path;
    }
}

TEST(Conversions, InHeadersOfTemplatesAreText) {
    const world host("kestrel");
    install_31_and_unpack_32(host);
    add_file("spool/kestrel/" + odd + ".tpl",
             "||header: modified=true tpl_set=" + odd + " tpl_version=" + odd + "||\nold\n");
    add_file("dist/tpl/" + odd + ".tpl",
             "||header: modified=false tpl_set=" + odd + " tpl_version=" + odd + "9||\nnew\n");
    const wizard_run run =
        run_wizard(host, debug, "2\nno\n@/cgi-bin\n\n\n\nno\nno\nyes\nno\n\nno\nno\n\n");
    const std::string entry = "     Current template set: " + odd + " version " + odd + "\n";
    EXPECT_EQ(run.status, 0);
    expect_in(run.transcript, odd + ".tpl  " + entry + "              Distribution template set: " +
                                  odd + " version " + odd + "9\n");
    expect_in(read_file("spool/kestrel/tmptlist.txt"), "2. " + odd + ".tpl  " + entry);
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
    const wizard_run run =
        run_wizard(host, debug,
                   "9\n3\n@/cgi-bin\nyes\nyes\n@/html/" + odd + "\nyes\n@/spool/" + odd +
                       "\nno\n@/spool/" + odd + "\nyes\n\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    expect_in(run.transcript, "\nRemove " + odd + " CGI files from @/cgi-bin [YES]? ");
    expect_in(run.transcript, "\nRemove all user information from @/spool/" + odd + " [NO]? ");
    expect_in(run.transcript, "Error: Cannot remove @/html/" + odd + ": Directory not empty\n");
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: Cannot remove @/html/" + odd_in_log + ": Directory not empty\n");
    EXPECT_EQ(tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool"),
              "0755 html/" + odd + "/\n0644 html/" + odd + "/" + odd +
                  ".txt \"text\"\n0755 spool/" + odd + "/\n0755 spool/" + odd + "/u_" + odd +
                  "/\n0644 spool/" + odd + "/u_" + odd + "/" + odd + " \"mail\"\n");
}

TEST(Conversions, InWhatIsStampedAreText) {
    const world host("kestrel");
    add_file(odd + "/" + odd + ".tpl", odd + "\n");
    const wizard_run run =
        run_wizard(host, {"-header"}, "@/" + odd + "\n" + odd + "\n" + odd + "\n@/" + odd + "\n\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(read_file(odd + "/" + odd + ".tpl")
                    .starts_with("||header: modified=false tpl_set=" + odd + " tpl_version=" + odd +
                                 "||\n" + odd + "\n\n||checksum="));
    std::filesystem::remove(odd + "/" + odd + ".tpl");
    std::filesystem::create_symlink("nowhere", odd + "/" + odd + ".tpl");
    EXPECT_EQ(run_wizard(host, {"-checksum"}, "@/" + odd + "\n\n").status, 0);
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: Can't open @/" + odd + "/" + odd + ".tpl, No such file or directory\n");
    std::filesystem::remove(odd + "/" + odd + ".tpl");
    expect_in(run_wizard(host, {"-checksum"}, "@/" + odd + "\n\n").transcript,
              "No files found in @/" + odd + "\n");
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Info:  No files found in @/" + odd_in_log + "\n");
}

TEST(Conversions, InAFileOfDefaultsAreText) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {"-make"},
                                      odd + "\n" + odd + "\n" + odd + "\nno\nyes\n" + odd + "\n" +
                                          odd + "\n" + odd + "\nno\n" + odd + "\n\n");
    EXPECT_EQ(run.status, 0);
    expect_in(run.transcript, "[gxdflt_" + odd + ".dat]? ");
    expect_in(run.transcript, "]? " + odd + ".dat saved\n");
    const std::string saved = read_file("dist/" + odd + ".dat");
    for (const char *name : {"version ", "prod_name ", "op_system ", "domain ", "pophost "}) {
        expect_in(saved, "\n" + (name + odd) + "\n");
    }
    expect_in(shown_log(host, "dist/gxsetup.log"), "Info:  " + odd_in_log + ".dat saved\n");
    std::filesystem::create_directory("dist/no");
    const wizard_run refused = run_wizard(host, {"-make"},
                                          odd + "\n" + odd + "\n" + odd + "\nno\nno\nno\nno/" +
                                              odd + "/" + odd + ".dat\n\n");
    expect_in(refused.transcript, "Error: cannot write to no/" + odd + "/" + odd + ".dat\n");
}

TEST(Conversions, InTheEnvironmentAndTheProgramsNameAreNotRead) {
    const world host("kestrel");
    run_place place = {.wrapper = {"/bin/bash", "-c", "exec -a '" + odd + "' \"$@\"", "bash"},
                       .settings = {{"PATH", "/usr/bin:/bin:" + odd}}};
    for (const char *name : {"HOME", "USER", "LOGNAME", "TERM", "LANG", "LC_ALL", "TMPDIR", "PWD",
                             "LANGUAGE", "NLSPATH", "%s%n%d%%"}) {
        place.settings[name] = odd;
    }
    EXPECT_EQ(run_wizard(host, debug, "4\n\n", place).transcript,
              welcome + menu("kestrel") + goodbye);
    place.settings["TZ"] = odd;
    EXPECT_EQ(run_wizard(host, {"-version"}, "\n", place).transcript,
              "gxsetup, version 3.0h\n\nPlease press enter to quit...\n");
}

} // namespace
