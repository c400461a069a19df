// What the tests of the file operations share: a scratch directory with a log beside it, an umask
// that must not matter, and looks at modes and names.
#pragma once

#include "core/log.h"
#include "files/operations.h"
#include "support/console_capture.h"
#include "support/scratch_directory.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>

class FileWorld : public scratch_test {
  protected:
    FileWorld() : umask_before(::umask(0077)) {
        set_loglvl(LOG_DEBUG);
        std::filesystem::create_directory("logs");
        std::filesystem::create_directory("here");
        std::filesystem::create_directory("there");
        inilog(scratch.path("logs").c_str(), "gxsetup");
        close_log();
        write_file("logs/gxsetup.log", "");
        std::filesystem::current_path("here");
    }

    ~FileWorld() override {
        std::filesystem::current_path(scratch.path());
        inilog(".", "gxsetup");
        close_log();
        set_loglvl(LOG_ERROR);
        gx_user = 0;
        gx_group = 0;
        ::umask(umask_before);
    }

    // The log without its time stamps.
    std::string log() const {
        const std::string text = read_file(scratch.path("logs/gxsetup.log"));
        std::string lines;
        for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
            lines += text.substr(at + 12, text.find('\n', at) + 1 - at - 12);
        }
        return lines;
    }

    static std::string mode_of(const std::string &path) {
        struct stat entry {};
        if (::stat(path.c_str(), &entry) != 0) {
            return "(none)";
        }
        return formatted("%d%d%d%d", entry.st_mode >> 9 & 7, entry.st_mode >> 6 & 7,
                         entry.st_mode >> 3 & 7, entry.st_mode & 7);
    }

    static std::string owner_of(const std::string &path) {
        struct stat entry {};
        ::stat(path.c_str(), &entry);
        return formatted("%u:%u", entry.st_uid, entry.st_gid);
    }

    // Everything below a directory, by its path from there.
    static std::set<std::string> names_below(const std::string &directory) {
        std::set<std::string> names;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
            names.insert(entry.path().lexically_relative(directory));
        }
        return names;
    }

    // What `code` shows on the console; its result must be `result`.
    static std::string shown(int result, const std::function<int()> &code) {
        int given = -1;
        const std::string text = console_of([&] { given = code(); });
        EXPECT_EQ(given, result) << text;
        return text;
    }

    mode_t umask_before;
};

using string_set = std::set<std::string>;
