// Who may read the answers that are saved.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/fixtures.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

unsigned mode_of(const std::string &path) {
    struct stat entry {};
    return ::stat(path.c_str(), &entry) == 0 ? entry.st_mode & 07777 : 0;
}

void upgrade(const world &host) {
    const wizard_run run = run_wizard(host, {},
                                      {{"replace the old templates", "yes"},
                                       {"original templates", "no"},
                                       {"temporary files", "no"}});
}

} // namespace

using SavedAnswers = upgraded_test<kestrel>;

TEST_F(SavedAnswers, AreReadByNoMoreThanThePrivateIniTheyWereLoadedFrom) {
    ASSERT_EQ(::chmod("cgi-bin/kestrel.ini", 0600), 0);
    upgrade(host);
    EXPECT_EQ(mode_of("dist/gxsetup.dat"), 0600U);
    EXPECT_EQ(mode_of("spool/kestrel/gxsetup.dat"), 0600U);
}

TEST_F(SavedAnswers, OfAnIniThatAGroupMayReadTheGroupMayReadToo) {
    ASSERT_EQ(::chmod("cgi-bin/kestrel.ini", 0640), 0);
    upgrade(host);
    EXPECT_EQ(mode_of("dist/gxsetup.dat"), 0640U);
    EXPECT_EQ(mode_of("spool/kestrel/gxsetup.dat"), 0660U);
}
