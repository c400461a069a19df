// What the tests of the file operations share: a scratch directory with a log beside it, an umask
// that must not matter, and looks at names.
#pragma once

#include "files/operations.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "support/world.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

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

    // The directory beside the current one, or the path of NAME in it.
    [[nodiscard]] std::string there(const std::string &name = "") const {
        return scratch.path(name.empty() ? "there" : "there/" + name);
    }

    // A text with "@" for that directory, and what is meant by one.
    [[nodiscard]] std::string with_at(const std::string &text) const {
        return replaced(text, there(), "@");
    }
    [[nodiscard]] std::string meant(const std::string &text) const {
        return replaced(text, "@", there());
    }

    // Everything below a directory, by its path from there.
    static std::set<std::string> names_below(const std::string &directory) {
        std::set<std::string> names;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
            names.insert(entry.path().lexically_relative(directory));
        }
        return names;
    }

    // Makes a socket, whose mode has the bit of a directory.
    static void make_socket(const char *path) {
        const file_descriptor made(::socket(AF_UNIX, SOCK_STREAM, 0));
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = ""};
        std::string_view(path).copy(address.sun_path, sizeof(address.sun_path) - 1);
        EXPECT_EQ(
            ::bind(made.number(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)),
            0);
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
