// Installing kestrel and plover, whose templates lie flat in tpl/.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using testing::StartsWith;

using InstallKestrel = unpacked_test<kestrel>;
using InstallPlover = unpacked_test<plover>;

TEST_F(InstallKestrel, EnterThroughoutHoldsThisDialogue) {
    expect_kept_run(host, run_wizard(host, {}, {}));
    expect_kept("kestrel.ini", shown_file(host, "cgi-bin/kestrel.ini"));
    expect_kept("gxsetup.dat", shown_file(host, "dist/gxsetup.dat"));
    for (const std::string name : {"kestrel.ini", "kestrel.cgi"}) {
        EXPECT_EQ(read_file("spool/kestrel/" + name), read_file("cgi-bin/" + name));
    }
    EXPECT_EQ(read_file("spool/kestrel/gxsetup.dat"), read_file("dist/gxsetup.dat"));
}

TEST_F(InstallKestrel, LogTellsEachStep) {
    run_wizard(host, {}, {});
    const std::string log = shown_log(host, "dist/gxsetup.log");
    expect_kept("log", log);
    // It was copied before the last lines were written.
    const std::string last = "Info:  install successful\nInfo:  * gxsetup finished *\n";
    EXPECT_EQ(shown_log(host, "spool/kestrel/gxsetup.log") + last, log);
}

TEST_F(InstallKestrel, EveryFileBelongsToTheOwnerOfInstalledFiles) {
    run_wizard(host, {}, {});
    expect_owned_site(host);
}

TEST_F(InstallKestrel, ModesDoNotDependOnTheUmask) {
    run_wizard(host, {}, {}, {.prepare = [] { ::umask(077); }});
    EXPECT_THAT(tree_of(host, "html"), StartsWith("0755 html/vlimg/\n"));
    EXPECT_THAT(tree_of(host, "spool"), StartsWith("0770 spool/kestrel/\n"));
    EXPECT_EQ(tree_of(host, "spool/kestrel/originals"),
              "0660 spool/kestrel/originals/head.tpl \"new tpl/head.tpl\"\n"
              "0660 spool/kestrel/originals/index.tpl \"new tpl/index.tpl\"\n");
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0600 cgi-bin/kestrel.ini\n");
}

TEST_F(InstallPlover, WmlPartGetsAProgramAndAnIniOfItsOwn) {
    const wizard_run run = run_wizard(host, {},
                                      no_to_both + console_script{{"Relative URL", "/pictures"},
                                                                  {"domain name", "192.0.2.7"},
                                                                  {"smtp host", "smtp.site.test"},
                                                                  {"merlin cgi", "yes"}});
    expect_kept_run(host, run, {"cgi-bin"});
    EXPECT_EQ(read_file("cgi-bin/merlin.cgi"), read_file("dist/plover.cgi"));
    expect_kept("plover.ini", shown_file(host, "cgi-bin/plover.ini"));
    expect_kept("merlin.ini", shown_file(host, "cgi-bin/merlin.ini"));
    expect_kept("gxsetup.dat", shown_file(host, "dist/gxsetup.dat"));
}

TEST_F(InstallPlover, DecliningBothOffersLeavesTheDistributionAndNoOriginals) {
    run_wizard(host, {}, no_to_both);
    EXPECT_FALSE(is_there("spool/plover/originals"));
    expect_kept("tree", tree_of(host, "dist"));
}

} // namespace
