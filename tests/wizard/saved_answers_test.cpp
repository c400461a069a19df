// Who may read the answers that are saved.

#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using SavedAnswers = upgraded_test<kestrel>;

// Upgrades an installation whose .ini has this mode and checks the modes of its answers.
void expect_modes(const world &host, mode_t of_ini, unsigned of_answers, unsigned of_installed) {
    ASSERT_EQ(::chmod("cgi-bin/kestrel.ini", of_ini), 0);
    run_wizard(host, {}, no_to_both + answering("replace the old templates", "yes"));
    EXPECT_EQ(state_of("dist/gxsetup.dat").permissions(), of_answers);
    EXPECT_EQ(state_of("spool/kestrel/gxsetup.dat").permissions(), of_installed);
}

TEST_F(SavedAnswers, AreReadByNoMoreThanThePrivateIniTheyWereLoadedFrom) {
    expect_modes(host, 0600, 0600, 0600);
}

TEST_F(SavedAnswers, OfAnIniThatAGroupMayReadTheGroupMayReadToo) {
    expect_modes(host, 0640, 0640, 0660);
}

} // namespace
