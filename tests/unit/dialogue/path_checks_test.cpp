#include "dialogue/path_checks.h"

#include "support/console_capture.h"
#include "support/scratch_test.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

class PathChecks : public scratch_test {
  protected:
    // The result and what is printed.
    static std::string check(const std::string &path) {
        int result = -1;
        const std::string shown = console_of([&] { result = check_valid_dir(path.c_str()); });
        return std::to_string(result) + " " + shown;
    }

    static int names_here() {
        int count = 0;
        for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(".")) {
            count++;
        }
        return count;
    }
};

using CheckValidDir = PathChecks;
using MatchRootDir = PathChecks;

} // namespace

TEST_F(CheckValidDir, IsZeroForAnExistingDirectoryFromTheRoot) {
    EXPECT_EQ(check(scratch.path()), "0 ");
    EXPECT_EQ(check(scratch.path() + "/"), "0 ");
}

TEST_F(CheckValidDir, AnEmptyPathIsOneAndSaysSo) {
    EXPECT_EQ(check(""), "1 No path given! ");
}

TEST_F(CheckValidDir, ARelativePathIsOneAndSaysSoEvenWhenItExists) {
    EXPECT_EQ(check("."), "1 No root given! ");
    EXPECT_EQ(check("missing"), "1 No root given! ");
    EXPECT_EQ(check(" " + scratch.path()), "1 No root given! ");
}

TEST_F(CheckValidDir, AMissingDirectoryOrAFileIsThree) {
    write_file("file", "");
    EXPECT_EQ(check(scratch.path("missing")), "3 ");
    EXPECT_EQ(check(scratch.path("file")), "3 ");
}

TEST_F(CheckValidDir, TheRootAloneCountsAsMissing) {
    EXPECT_EQ(check("/"), "3 ");
}

TEST_F(CheckValidDir, ADirectoryThatMayNotBeReadCountsAsMissing) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    std::filesystem::create_directory("closed");
    std::filesystem::permissions("closed", std::filesystem::perms::none);
    EXPECT_EQ(check(scratch.path("closed")), "3 ");
}

TEST_F(MatchRootDir, IsOneForTheWorkingDirectoryByAnyName) {
    EXPECT_EQ(match_root_dir("."), 1);
    EXPECT_EQ(match_root_dir(scratch.path().c_str()), 1);
    EXPECT_EQ(match_root_dir((scratch.path() + "/").c_str()), 1);
    std::filesystem::create_directory_symlink(".", "here");
    EXPECT_EQ(match_root_dir("here"), 1);
}

TEST_F(MatchRootDir, IsZeroForAnyOtherDirectory) {
    std::filesystem::create_directory("below");
    EXPECT_EQ(match_root_dir("below"), 0);
    EXPECT_EQ(match_root_dir(".."), 0);
    EXPECT_EQ(match_root_dir("/"), 0);
    EXPECT_EQ(match_root_dir("missing"), 0);
}

TEST_F(MatchRootDir, NeverLeavesItsProbeFileBehind) {
    match_root_dir(".");
    match_root_dir("/");
    match_root_dir("missing");
    EXPECT_EQ(names_here(), 0);
}

TEST_F(MatchRootDir, NeverWritesThroughALinkOfTheProbesName) {
    std::srand(1);
    unsigned product = 1;
    for (int factor = 0; factor < 3; factor++) {
        product *= static_cast<unsigned>(std::rand());
    }
    write_file("kept", "text");
    std::filesystem::create_symlink("kept", std::to_string(static_cast<int>(product)) + ".tmp");
    std::srand(1);
    EXPECT_EQ(match_root_dir("."), 1);
    EXPECT_EQ(read_file("kept"), "text");
    EXPECT_EQ(names_here(), 1);
}

TEST_F(MatchRootDir, WhereNothingCanBeCreatedIsZero) {
    std::filesystem::create_directory("gone");
    std::filesystem::current_path("gone");
    std::filesystem::remove(scratch.path("gone"));
    EXPECT_EQ(match_root_dir("."), 0);
    std::filesystem::current_path(scratch.path());
}
