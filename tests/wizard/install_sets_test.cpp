// Installing tanager and osprey, whose templates come in sets.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::Not;

const console_script with_wml = images_here + answering("merlin cgi", "yes");

using InstallTanager = unpacked_test<tanager>;
using InstallOsprey = unpacked_test<osprey>;

TEST_F(InstallTanager, ShowsAndCopiesTheProgramTwice) {
    const set_numbers numbers("dist/tpl");
    expect_kept_run(host, run_wizard(host, {}, images_here));
    expect_kept("log", shown_log(host, "dist/gxsetup.log"));
    expect_kept("tanager.ini", numbers.named(shown_file(host, "cgi-bin/tanager.ini")));
    expect_kept("gxsetup.dat", numbers.named(shown_file(host, "dist/gxsetup.dat")));
    EXPECT_EQ(read_file("spool/tanager/marble/tanager.ini"), read_file("cgi-bin/tanager.ini"));
}

TEST_F(InstallTanager, EveryFileBelongsToTheOwnerOfInstalledFiles) {
    run_wizard(host, {}, with_wml);
    expect_owned_site(host);
}

TEST_F(InstallTanager, DebugLogNamesEachStep) {
    run_wizard(host, {"-debug"}, images_here);
    expect_kept("log", shown_log_without(host, "dist/gxsetup.log",
                                         {"INI: ", "DoCopy[", "Wild finding", "Find all files",
                                          "created directory", "directory already exists"}));
}

TEST_F(InstallTanager, WmlPartPointsAtItsOwnSet) {
    const set_numbers numbers("dist/tpl");
    expect_kept_run(host, run_wizard(host, {}, with_wml + no_to_both), {"cgi-bin"});
    EXPECT_EQ(tree_of(host, "spool/tanager/wml"),
              "0660 spool/tanager/wml/index.tpl \"new wap/wml/index.tpl\"\n"
              "0660 spool/tanager/wml/words.dat \"new wap/common/words.dat\"\n");
    EXPECT_TRUE(is_there("spool/tanager/marble/merlin.ini"));
    expect_kept("merlin.ini", shown_file(host, "cgi-bin/merlin.ini"));
    expect_kept("gxsetup.dat", numbers.named(shown_file(host, "dist/gxsetup.dat")));
}

TEST_F(InstallOsprey, HostsThatUsersMayLogInToStandInBothInis) {
    const set_numbers numbers("dist/tpl");
    const wizard_run run = run_wizard(
        host, {},
        no_to_both + console_script{{"Directory for templates", "@/spool/mail"},
                                    {"Directory for manual", "@/html/manuals"},
                                    {"Directory for .gif", "@/html/pictures"},
                                    {"Relative URL", "/p"},
                                    {"domain name", "site.test"},
                                    {"your pop host", "pop.site.test"},
                                    {"POP3 hosts", "Y\n  one.test \t\n\n . \r\ntwo.test\n."},
                                    {"merlin cgi", "y"}});
    expect_kept("screen", run.transcript);
    expect_kept("osprey.ini", numbers.named(shown_file(host, "cgi-bin/osprey.ini")));
    expect_kept("merlin.ini", shown_file(host, "cgi-bin/merlin.ini"));
    const std::string saved = shown_file(host, "spool/mail/gxsetup.dat");
    EXPECT_THAT(saved, HasSubstr("\npophost pop.site.test\n"));
    EXPECT_THAT(saved, Not(HasSubstr("imaphost")));
}

TEST_F(InstallOsprey, ProgramIsExecutableAndModesAreTheRightOnes) {
    run_wizard(host, {}, images_here + no_to_both);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/osprey.cgi\n"
                                        "0644 cgi-bin/osprey.ini\n");
    EXPECT_FALSE(is_there("spool/osprey/wml"));
    EXPECT_FALSE(is_there("spool/osprey/originals"));
}

} // namespace
