// What the tests of places and of files written into them share: directories that others may write
// or not, what another user plants there, and what was told of it.
#pragma once

#include "core/place.h"
#include "support/scratch_test.h"
#include "unit/kept_messages.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

inline constexpr uid_t other_user = 4711;
inline std::vector<std::string> refusals;

// Why a file was not opened (as errno), or 0.
inline int error_of(const auto &opened) {
    return opened.is_open() ? 0 : errno;
}

// An own directory `ours`, a directory `shared` that another user may write, and `kept` with a file
// that is none of that user's business.
class Place : public scratch_test {
  protected:
    Place() : umask_before(::umask(022)) {
        for (const char *directory : {"ours", "shared", "kept", "kept/below"}) {
            std::filesystem::create_directory(directory);
        }
        ::chmod("shared", 0777);
        write_file("kept/file", "kept");
        tell_refusals(keep_in<refusals>);
        refusals.clear();
    }

    ~Place() override {
        tell_refusals(nullptr);
        ::umask(umask_before);
    }

    [[nodiscard]] place at(std::string_view name) const { return place(scratch.path(name)); }

    // What was told last, with "@" for the test's directory.
    [[nodiscard]] std::string refusal() const {
        return refusals.empty() ? "" : scratch.with_at(refusals.back());
    }

    void link_to(std::string_view target, const std::string &link) const {
        std::filesystem::create_symlink(scratch.path(target), link);
    }

    // Gives a file or directory another owner and mode.
    static void change(const std::string &path, uid_t user, gid_t group, mode_t mode) {
        ASSERT_EQ(::chown(path.c_str(), user, group), 0);
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    }

    // A link and a pipe that another user made.
    void plant_link(std::string_view target, const std::string &link) const {
        link_to(target, link);
        ASSERT_EQ(::lchown(link.c_str(), other_user, other_user), 0);
    }
    static void plant_pipe(const std::string &path) {
        ASSERT_EQ(::mkfifo(path.c_str(), 0666), 0);
        change(path, other_user, other_user, 0666);
    }

    mode_t umask_before;
};

// Plants as another user, which only root can.
class PlaceAmongOthers : public Place {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root can plant files as another user";
        }
    }
};
