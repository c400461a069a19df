#include "dialogue/path_checks.h"

#include "support/console_capture.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "unit/rights.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

// Paths, "@" for the test's directory, and what check_valid_dir gives and prints.
struct path_rule {
    const char *name;
    std::vector<std::pair<const char *, const char *>> paths;
};

class PathChecks : public scratch_test {
  protected:
    void check(const path_rule &row) const {
        write_file("file", "");
        for (std::pair<std::string, std::string> one : row.paths) {
            if (const std::size_t at = one.first.find('@'); at != std::string::npos) {
                one.first.replace(at, 1, scratch.path());
            }
            int result = -1;
            const std::string shown =
                console_of([&] { result = check_valid_dir(one.first.c_str()); });
            EXPECT_EQ(std::to_string(result) + " " + shown, one.second);
        }
    }

    static long names_here() { return std::distance(std::filesystem::directory_iterator("."), {}); }
};

using CheckValidDir = PathChecks;
using MatchRootDir = PathChecks;

const std::vector<path_rule> rules = {
    {"CheckValidDir.IsZeroForAnExistingDirectoryFromTheRoot", {{"@", "0 "}, {"@/", "0 "}}},
    {"CheckValidDir.AnEmptyPathIsOneAndSaysSo", {{"", "1 No path given! "}}},
    {"CheckValidDir.ARelativePathIsOneAndSaysSoEvenWhenItExists",
     {{".", "1 No root given! "}, {"missing", "1 No root given! "}, {" @", "1 No root given! "}}},
    {"CheckValidDir.AMissingDirectoryOrAFileIsThree", {{"@/missing", "3 "}, {"@/file", "3 "}}},
    {"CheckValidDir.TheRootAloneCountsAsMissing", {{"/", "3 "}}},
};

const int registered = register_rows<PathChecks>(rules);

} // namespace

TEST_F(CheckValidDir, ADirectoryThatMayNotBeReadCountsAsMissing) {
    const without_root_rights limited;
    std::filesystem::create_directory("closed");
    std::filesystem::permissions("closed", std::filesystem::perms::none);
    check({"", {{"@/closed", "3 "}}});
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

// The name of the next probe file, which another user can find out as well.
std::string foretold_name() {
    std::srand(1);
    unsigned product = 1;
    for (int factor = 0; factor < 3; factor++) {
        product *= static_cast<unsigned>(std::rand());
    }
    std::srand(1);
    return std::to_string(static_cast<int>(product)) + ".tmp";
}

TEST_F(MatchRootDir, NeverWritesThroughALinkOfTheProbesName) {
    write_file("kept", "text");
    std::filesystem::create_symlink("kept", foretold_name());
    EXPECT_EQ(match_root_dir("."), 1);
    EXPECT_EQ(read_file("kept"), "text");
    EXPECT_EQ(names_here(), 1);
}

TEST_F(MatchRootDir, AFileOfTheProbesNameElsewhereMakesNoWorkingDirectory) {
    std::filesystem::create_directory("other");
    write_file("other/" + foretold_name(), "");
    EXPECT_EQ(match_root_dir("other"), 0);
}

TEST_F(MatchRootDir, WhereNothingCanBeCreatedIsZero) {
    std::filesystem::create_directory("gone");
    std::filesystem::current_path("gone");
    std::filesystem::remove(scratch.path("gone"));
    EXPECT_EQ(match_root_dir("."), 0);
    std::filesystem::current_path(scratch.path());
}
