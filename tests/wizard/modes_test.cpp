// The distributor's modes: headers, checksums, the defaults file.

#include "support/tree.h"
#include "support/wizard_run.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

constexpr const char *pause = "\nPlease press enter to quit...\n";
constexpr const char *started = "Info:  * gxsetup, version 3.0h started *\n";

// Makes the distribution of the host one of one template.
void leave_one_template(std::string_view content) {
    std::filesystem::remove_all("dist/tpl");
    add_file("dist/tpl/index.tpl", content);
}

TEST(Modes, HeaderStampsHeadersAndThenChecksums) {
    const world host("kestrel");
    leave_one_template("<html>\n");
    for (const char *argument : {"-header", "/header", "-HEADER"}) {
        write_file("dist/tpl/index.tpl", "<html>\n");
        const wizard_run run =
            run_wizard(host, {argument}, "@/dist/tpl\nkst_s3\n3.2a\n@/dist/tpl\n\n");
        EXPECT_EQ(run.transcript, std::string("\nDirectory for templates [./tpl]? "
                                              "\nNew templates set[kst_s2]? "
                                              "\nNew templates version[2.0a]? "
                                              "\nUpdating headers."
                                              "\nUpdate complete.\n"
                                              "\nDirectory for templates [./tpl]? "
                                              "\nUpdating checksums."
                                              "\nUpdate complete.\n") +
                                      pause);
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(read_file("dist/tpl/index.tpl"),
                  "||header: modified=false tpl_set=kst_s3 tpl_version=3.2a||\n"
                  "<html>\n"
                  "\n"
                  "||checksum=14428||\n");
        EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started);
    }
}

TEST(Modes, ChecksumStampsChecksumsAlone) {
    const world host("kestrel");
    leave_one_template("abc\n");
    for (const char *argument : {"-checksum", "/Checksum"}) {
        write_file("dist/tpl/index.tpl", "abc\n");
        const wizard_run run = run_wizard(host, {argument}, "@/dist/tpl\n\n");
        EXPECT_EQ(run.transcript, std::string("\nDirectory for templates [./tpl]? "
                                              "\nUpdating checksums."
                                              "\nUpdate complete.\n") +
                                      pause);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(read_file("dist/tpl/index.tpl"), "abc\n\n||checksum=689||\n");
    }
}

TEST(Modes, QuittingLeavesTheTemplates) {
    const world host("kestrel");
    leave_one_template("abc\n");
    const wizard_run run = run_wizard(host, {"-header"}, "@/dist/tpl\nq\n\n");
    EXPECT_EQ(run.transcript, "\nDirectory for templates [./tpl]? "
                              "\nNew templates set[kst_s2]? "
                              "Please press enter to quit...\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(read_file("dist/tpl/index.tpl"), "abc\n");
}

TEST(Modes, AFullDiskKeepsTheTemplate) {
    if (!can_mount()) {
        GTEST_SKIP() << "a small disk needs the right to mount";
    }
    const world host("kestrel");
    std::filesystem::create_directories("dist/tpl");
    const std::string disk = host.path("dist/tpl");
    const wizard_run run = run_wizard(host, {"-checksum"}, "@/dist/tpl\n\n", {.prepare = [disk] {
                                          mount_small_disk(disk, "64k");
                                          write_file(disk + "/a.tpl", std::string(40'000, 'a'));
                                      }});
    EXPECT_EQ(run.transcript, std::string("\nDirectory for templates [./tpl]? "
                                          "\nUpdating checksumsx"
                                          "\nUpdate complete.\n") +
                                  pause);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              std::string(started) +
                  "Error: Can't write @/dist/tpl/temp.tpl, No space left on device\n"
                  "Error: can't remove @/dist/tpl/temp.tpl, No space left on device\n");
}

TEST(Modes, MakeWritesADefaultsFileThatTheWizardLoads) {
    const world host("kestrel");
    const wizard_run made =
        run_wizard(host, {"-make"},
                   "3.2a\nkestrel\nUNIX\ny\n@/spool\n@/html/vlimg\n@/cgi-bin\ny\nvarnel.example\n"
                   "\n\n\ngxdflt\n\n");
    EXPECT_EQ(
        made.transcript,
        std::string("To create a file of defaults for use in gxsetup, answer the following "
                    "questions\n"
                    "Notes: Suggestions are shown in square brackets [thus]\n"
                    "       Just press Enter to accept suggestion.\n"
                    "-------------------------------------------------------------------------"
                    "------\n"
                    "\nVersion? "
                    "\nProduct Name [plover]? "
                    "\nOperating System ? "
                    "\nDo you want to change the default suggested directories [NO]? "
                    "\nSuggested templates directory [/var/spool/kestrel]? "
                    "\nSuggested image and wav file directory [/home/httpd/html/vlimg]? "
                    "\nSuggested cgi path [/home/httpd/cgi-bin]? "
                    "\nDo you want to change the default suggested .ini settings [NO]? "
                    "\nSuggested domain name [example.com]? "
                    "\nSuggested pop host [mail.varnel.example]? "
                    "\nSuggested smtp host [mail.varnel.example]? "
                    "\nDo you want to install/upgrade the <NULL> cgi [NO]? "
                    "\nEnter file to store defaults in [gxdflt_UNIX.dat]? "
                    "gxdflt.dat saved\n\n") +
            pause);
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              std::string(started) + "Info:  gxdflt.dat saved\n");
    EXPECT_EQ(shown_file(host, "dist/gxdflt.dat"), "# file written by gxsetup, version 3.0h\n"
                                                   "# library: INI v1.3c\n"
                                                   "\n"
                                                   "# Lines starting with # are comments\n"
                                                   "\n"
                                                   "pophost mail.varnel.example\n"
                                                   "smtphost mail.varnel.example\n"
                                                   "domain varnel.example\n"
                                                   "version 3.2a\n"
                                                   "prod_name kestrel\n"
                                                   "op_system UNIX\n"
                                                   "cgi_path @/cgi-bin\n"
                                                   "vlimg_dir @/html/vlimg\n"
                                                   "templates @/spool\n"
                                                   "wml FALSE\n");
    // The install offers what the file says.
    const wizard_run install = run_wizard(host, {}, "1\n\nq\n\n");
    EXPECT_NE(install.transcript.find("[@/cgi-bin]? "), std::string::npos) << install.transcript;
}

TEST(Modes, MakeRefusesAnotherEnding) {
    const world host("kestrel");
    for (const char *argument : {"-make", "/make", "-MAKE", "/Make"}) {
        const wizard_run run = run_wizard(host, {argument}, "1\n\nUNIX\n\n\n\nmine.txt\n\n");
        EXPECT_TRUE(run.transcript.ends_with(
            std::string("[gxdflt_UNIX.dat]? "
                        "mine.txt not valid: gxsetup will only read .dat files\n") +
            pause))
            << argument << run.transcript;
        EXPECT_EQ(run.status, 0);
        EXPECT_FALSE(is_there("dist/mine.txt"));
    }
}

} // namespace
