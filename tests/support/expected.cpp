#include "support/expected.h"

#include "support/tree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

bool is_keeping = false;

// The file of the running test; that of a parameterized one has no "/" in its name.
std::filesystem::path kept_file(const std::string &name) {
    const testing::TestInfo *test = testing::UnitTest::GetInstance()->current_test_info();
    std::string folder = std::string(test->test_suite_name()) + "." + test->name();
    std::replace(folder.begin(), folder.end(), '/', '-');
    return std::filesystem::path(kept_texts()) / folder / name;
}

std::string difference(const std::string &kept, std::string_view seen) {
    const scratch_directory scratch;
    write_file("seen", seen);
    const std::string command =
        "diff -u --label expected --label seen '" + kept + "' seen >difference 2>&1";
    return std::system(command.c_str()) == 0 ? "" : read_file("difference");
}

} // namespace

void keep_what_is_seen() {
    is_keeping = true;
}

void expect_kept(const std::string &name, std::string_view seen) {
    const std::string kept = kept_file(name);
    if (is_keeping) {
        std::filesystem::create_directories(std::filesystem::path(kept).parent_path());
        write_file(kept, seen);
    } else if (read_file(kept) != seen) {
        ADD_FAILURE() << kept << " (--update writes it anew)\n" << difference(kept, seen);
    }
}

void expect_kept_tree(const world &host, const std::vector<std::string> &directories) {
    std::string tree;
    for (const std::string &directory : directories) {
        tree += tree_of(host, directory);
    }
    expect_kept("tree", tree);
}

void expect_kept_run(const world &host, const wizard_run &run,
                     const std::vector<std::string> &directories) {
    EXPECT_EQ(run.errors, "");
    expect_kept("screen", run.transcript);
    expect_kept_tree(host, directories);
}
