#include "files/move_bytes.h"

#include "core/place.h"
#include "support/rows.h"
#include "support/scratch_test.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// What the next calls of copy_file_range do instead of the system: copy so many bytes, or fail with
// an error (negative). The system answers again once they are used up.
std::vector<int> answers;

// Called before each call that is answered.
std::function<void()> before_call;

// What a call of write takes at the most.
std::size_t most_written = SIZE_MAX;

} // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
ssize_t __real_copy_file_range(int from, off64_t *from_offset, int to, off64_t *to_offset,
                               size_t count, unsigned flags);
ssize_t __wrap_copy_file_range(int from, off64_t *from_offset, int to, off64_t *to_offset,
                               size_t count, unsigned flags) {
    if (answers.empty()) {
        return __real_copy_file_range(from, from_offset, to, to_offset, count, flags);
    }
    const int answer = answers.front();
    answers.erase(answers.begin());
    if (before_call) {
        before_call();
    }
    if (answer < 0) {
        errno = -answer;
        return -1;
    }
    return __real_copy_file_range(from, from_offset, to, to_offset, static_cast<size_t>(answer),
                                  flags);
}

ssize_t __real_write(int file, const void *bytes, size_t count);
ssize_t __wrap_write(int file, const void *bytes, size_t count) {
    return __real_write(file, bytes, std::min(count, most_written));
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

// A copy whose calls are answered so; the source gets another size before the last answered one.
struct answered_copy {
    const char *name;
    std::size_t size;
    std::vector<int> answers;
    std::size_t size_at_end;
};

class MoveBytes : public scratch_test {
  protected:
    ~MoveBytes() override {
        answers.clear();
        before_call = nullptr;
        most_written = SIZE_MAX;
    }

    static move_result move(const char *source = "from", const char *destination = "to") {
        const file_descriptor from(::open(source, O_RDONLY | O_CLOEXEC));
        const file_descriptor to(
            ::open(destination, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        return move_bytes(from.number(), to.number());
    }

    static std::string text_of(std::size_t size) {
        std::string text;
        for (std::size_t at = 0; at < size; at++) {
            text.push_back(static_cast<char>('a' + at * 7 % 26));
        }
        return text;
    }

    static void check(const answered_copy &row) {
        write_file("from", text_of(row.size));
        answers = row.answers;
        before_call = [&row] {
            if (answers.empty()) {
                write_file("from", text_of(row.size_at_end));
            }
        };
        EXPECT_EQ(move(), move_result::done);
        EXPECT_EQ(read_file("to"), text_of(row.size_at_end));
    }
};

const std::vector<answered_copy> answered_copies = {
    {"MoveBytes.ARefusedCallGoesOnByReadingAndWriting", 300000, {-ENOSYS}, 300000},
    {"MoveBytes.ACallAcrossFileSystemsGoesOnByReadingAndWriting", 300000, {-EXDEV}, 300000},
    {"MoveBytes.AnInvalidCallGoesOnByReadingAndWriting", 300000, {-EINVAL}, 300000},
    {"MoveBytes.AForbiddenCallGoesOnByReadingAndWriting", 300000, {-EPERM}, 300000},
    {"MoveBytes.AnUnsupportedCallGoesOnByReadingAndWriting", 300000, {-EOPNOTSUPP}, 300000},
    {"MoveBytes.ACallThatCannotReadGoesOnByReadingAndWriting", 300000, {-EIO}, 300000},
    {"MoveBytes.ACallWithoutRoomGoesOnByReadingAndWriting", 300000, {-ENOSPC}, 300000},
    {"MoveBytes.AShortCallIsFollowedByAnother", 300000, {1, 7, 100000}, 300000},
    {"MoveBytes.ASingleByteIsWrittenWhereTheCallIsRefused", 1, {-EXDEV}, 1},
    {"MoveBytes.ACallThatFailsInTheMiddleGoesOnByReadingAndWriting", 300000, {1000, -EIO}, 300000},
    {"MoveBytes.ASourceThatShrinksGivesWhatIsThere", 300000, {1000, 1000}, 1500},
    {"MoveBytes.ASourceThatGrowsGivesWhatIsThereAtTheEnd", 2000, {1000, 1000}, 5000},
};

const int registered = register_rows<MoveBytes>(answered_copies);

} // namespace

TEST_F(MoveBytes, CopiesFilesOfEverySize) {
    for (const std::size_t size : {0U, 1U, 4096U, 131072U, 131073U, 1000000U}) {
        write_file("from", text_of(size));
        EXPECT_EQ(move(), move_result::done);
        EXPECT_EQ(read_file("to"), text_of(size)) << size;
    }
}

TEST_F(MoveBytes, AShortWriteIsFollowedByAnother) {
    write_file("from", text_of(1000));
    answers = {-EXDEV};
    most_written = 300;
    EXPECT_EQ(move(), move_result::done);
    EXPECT_EQ(read_file("to"), text_of(1000));
}

TEST_F(MoveBytes, AFullDiskIsAFailedWrite) {
    write_file("from", text_of(5000));
    EXPECT_EQ(move("from", "/dev/full"), move_result::write_failed);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(MoveBytes, WhatCannotBeReadIsAFailedRead) {
    EXPECT_EQ(move("/proc/self/mem"), move_result::read_failed);
    EXPECT_EQ(errno, EIO);
}

// The system says that such files are empty, and copies nothing of them.
TEST_F(MoveBytes, AFileWithoutASizeIsRead) {
    EXPECT_EQ(move("/proc/self/cmdline"), move_result::done);
    EXPECT_FALSE(read_file("to").empty());
}
