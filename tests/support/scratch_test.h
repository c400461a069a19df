// What most unit tests start from: a directory of their own, and a log.
#pragma once

#include "core/log.h"
#include "support/scratch_directory.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

// A test that runs in a scratch directory. Whatever was logged before it, the log is closed, and
// what is logged goes to gxsetup.log in the directory that is worked in then.
class scratch_test : public testing::Test {
  protected:
    scratch_test() {
        inilog(".", "gxsetup");
        close_log();
        std::remove("gxsetup.log");
    }

    scratch_directory scratch;
};

// The log of such a test, open and empty. It ends with the test, as does the level set in it.
class test_log {
  public:
    // `directory` is made; it is named so that it is found from wherever the test goes.
    explicit test_log(const std::string &directory) : path_(directory + "/gxsetup.log") {
        std::filesystem::create_directories(directory);
        EXPECT_EQ(inilog(directory.c_str(), "gxsetup"), 1);
    }

    ~test_log() {
        set_loglvl(LOG_ERROR);
        close_log();
    }

    test_log(const test_log &) = delete;
    test_log &operator=(const test_log &) = delete;

    // The lines without the time stamps of twelve characters that begin them.
    [[nodiscard]] std::string text() const {
        const std::string stamped = read_file(path_);
        std::string lines;
        for (std::size_t at = 0; at < stamped.size(); at = stamped.find('\n', at) + 1) {
            lines += stamped.substr(at + 12, stamped.find('\n', at) + 1 - at - 12);
        }
        return lines;
    }

  private:
    std::string path_;
};
