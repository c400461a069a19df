// The log of a test.
#pragma once

#include "core/log.h"
#include "support/scratch_directory.h"

#include <string>

// A log that is open and empty, whatever was logged before the test. It ends with the test, as does
// the level set in it.
class test_log {
  public:
    // `directory` is made; it is named so that it is found from wherever the test goes.
    explicit test_log(const std::string &directory) : path_(directory + "/gxsetup.log") {
        std::filesystem::create_directories(directory);
        open(directory);
        write_file(path_, "");
        open(directory);
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
    static void open(const std::string &directory) {
        EXPECT_EQ(inilog(directory.c_str(), "gxsetup"), 1);
    }

    std::string path_;
};
