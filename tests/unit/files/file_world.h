// What the tests of the file operations share: a scratch directory with a log beside it, an umask
// that must not matter, and looks at modes and names.
#pragma once

#include "files/operations.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>

class FileWorld : public scratch_test {
  protected:
    FileWorld() : umask_before(::umask(0077)) {
        set_loglvl(LOG_DEBUG);
        std::filesystem::create_directory("here");
        std::filesystem::create_directory("there");
        std::filesystem::current_path("here");
    }

    ~FileWorld() override {
        gx_user = 0;
        gx_group = 0;
        ::umask(umask_before);
    }

    [[nodiscard]] std::string log() const { return log_.text(); }

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

    // Makes directories below `path` until the path has `length` characters, and gives it.
    static std::string make_deep_directory(std::string path, std::size_t length) {
        while (path.size() < length) {
            const std::size_t left = length - path.size();
            path += "/" + std::string(left > 255 ? 100 : left - 1, 'd');
        }
        std::filesystem::create_directories(path);
        return path;
    }

    // What `code` shows on the console; its result must be `result`.
    static std::string shown(int result, const std::function<int()> &code) {
        int given = -1;
        const std::string text = console_of([&] { given = code(); });
        EXPECT_EQ(given, result) << text;
        return text;
    }

    mode_t umask_before;

  private:
    test_log log_{scratch.path("logs")};
};

using string_set = std::set<std::string>;
