// Runs the tests of a program. With --update it writes their kept texts anew in place of comparing
// with them.
#include "support/expected.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

TEST(Expected, EveryFolderBelongsToATest) {
    std::string names;
    const testing::UnitTest &all = *testing::UnitTest::GetInstance();
    for (int suite = 0; suite < all.total_test_suite_count(); suite++) {
        const testing::TestSuite &tests = *all.GetTestSuite(suite);
        for (int test = 0; test < tests.total_test_count(); test++) {
            names += std::string(tests.name()) + "." + tests.GetTestInfo(test)->name() + "\n";
        }
    }
    std::replace(names.begin(), names.end(), '/', '-');
    for (const auto &folder : std::filesystem::directory_iterator(kept_texts())) {
        EXPECT_NE(names.find(folder.path().filename().string() + "\n"), std::string::npos)
            << folder.path();
    }
}

} // namespace

const char *kept_texts() {
    return EXPECTED_TEXTS;
}

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc > 1 && std::string_view(argv[1]) == "--update") {
        keep_what_is_seen();
    }
    return RUN_ALL_TESTS();
}
