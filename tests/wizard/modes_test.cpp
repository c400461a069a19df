// The distributor's modes: headers, checksums, the defaults file.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/fixtures.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

const console_script in_these_templates = {{"Directory for templates", "@/dist/tpl"}};
constexpr const char *pause = "\nPlease press enter to quit...\n";
constexpr const char *started = "Info:  * gxsetup, version 3.0h started *\n";

// Makes the distribution of the host one of one template.
void leave_one_template(std::string_view content) {
    std::filesystem::remove_all("dist/tpl");
    add_file("dist/tpl/index.tpl", content);
}

using Modes = unpacked_test<kestrel>;

TEST_F(Modes, HeaderStampsHeadersAndThenChecksums) {
    for (const char *argument : {"-header", "/header", "-HEADER"}) {
        leave_one_template("<html>\n");
        const wizard_run run = run_wizard(host, {argument},
                                          in_order({{"Directory for templates", "@/dist/tpl"},
                                                    {"New templates set", "kst_s3"},
                                                    {"New templates version", "3.2a"},
                                                    {"Directory for templates", "@/dist/tpl"}}));
        expect_kept("screen", run.transcript);
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(read_file("dist/tpl/index.tpl"),
                  "||header: modified=false tpl_set=kst_s3 tpl_version=3.2a||\n"
                  "<html>\n"
                  "\n"
                  "||checksum=14428||\n");
        EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started);
    }
}

TEST_F(Modes, ChecksumStampsChecksumsAlone) {
    for (const char *argument : {"-checksum", "/Checksum"}) {
        leave_one_template("abc\n");
        const wizard_run run = run_wizard(host, {argument}, in_these_templates);
        EXPECT_EQ(run.transcript, std::string("\nDirectory for templates [./tpl]? "
                                              "\nUpdating checksums."
                                              "\nUpdate complete.\n") +
                                      pause);
        EXPECT_EQ(read_file("dist/tpl/index.tpl"), "abc\n\n||checksum=689||\n");
    }
}

TEST_F(Modes, QuittingLeavesTheTemplates) {
    leave_one_template("abc\n");
    const wizard_run run = run_wizard(
        host, {"-header"}, in_these_templates + console_script{{"New templates set", "q"}});
    EXPECT_EQ(run.transcript, "\nDirectory for templates [./tpl]? "
                              "\nNew templates set[kst_s2]? "
                              "Please press enter to quit...\n");
    EXPECT_EQ(read_file("dist/tpl/index.tpl"), "abc\n");
}

TEST_F(Modes, MakeWritesADefaultsFileThatTheWizardLoads) {
    const wizard_run made = run_wizard(host, {"-make"},
                                       {{"Version", "3.2a"},
                                        {"Product Name", "kestrel"},
                                        {"Operating System", "UNIX"},
                                        {"change the default suggested directories", "y"},
                                        {"Suggested templates directory", "@/spool"},
                                        {"Suggested image", "@/html/vlimg"},
                                        {"Suggested cgi path", "@/cgi-bin"},
                                        {"change the default suggested .ini", "y"},
                                        {"Suggested domain name", "varnel.example"},
                                        {"Enter file", "gxdflt"}});
    expect_kept("screen", made.transcript);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              std::string(started) + "Info:  gxdflt.dat saved\n");
    expect_kept("gxdflt.dat", shown_file(host, "dist/gxdflt.dat"));
    // The install offers what the file says.
    const wizard_run install = run_wizard(host, {}, {{"Directory for templates", "q"}});
    EXPECT_THAT(install.transcript, HasSubstr("[@/cgi-bin]? "));
}

TEST_F(Modes, MakeRefusesAnotherEnding) {
    for (const char *argument : {"-make", "/make", "-MAKE", "/Make"}) {
        const wizard_run run = run_wizard(
            host, {argument},
            {{"Version", "1"}, {"Operating System", "UNIX"}, {"Enter file", "mine.txt"}});
        EXPECT_THAT(run.transcript,
                    EndsWith("[gxdflt_UNIX.dat]? "
                             "mine.txt not valid: gxsetup will only read .dat files\n" +
                             std::string(pause)))
            << argument;
        EXPECT_FALSE(is_there("dist/mine.txt"));
    }
}

} // namespace
