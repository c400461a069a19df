#include "core/stream.h"

#include "core/format.h"
#include "support/scratch_test.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using namespace std::string_literals;

mode_t mode_of(const std::string &path) {
    struct stat entry {};
    return ::stat(path.c_str(), &entry) == 0 ? entry.st_mode & 07777 : 0;
}

std::vector<std::string> names_here() {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(".")) {
        names.push_back(entry.path().filename());
    }
    return names;
}

using Open = scratch_test;
using ReadPiece = scratch_test;
using ReplacementFile = scratch_test;

} // namespace

TEST_F(Open, WhatIsNotThereCannotBeRead) {
    EXPECT_EQ(open_plain_file("missing"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Open, WritingBeginsAnewAndAppendingGoesOn) {
    write_file("file", "old");
    ASSERT_TRUE(close_file(open_to_append("file")));
    EXPECT_EQ(read_file("file"), "old");
    stream_handle more = open_to_append("file");
    format_file(more.get(), "%s", "+new");
    EXPECT_TRUE(close_file(std::move(more)));
    EXPECT_EQ(read_file("file"), "old+new");
    EXPECT_TRUE(close_file(open_to_write("file")));
    EXPECT_EQ(read_file("file"), "");
}

TEST_F(Open, APipeThatNobodyReadsCannotBeWritten) {
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(open_to_write("pipe"), nullptr);
    EXPECT_EQ(open_to_append("pipe"), nullptr);
}

TEST_F(Open, OnlyAPlainFileIsTakenForOne) {
    write_file("file", "text");
    EXPECT_NE(open_plain_file("file"), nullptr);
    EXPECT_EQ(open_plain_file("."), nullptr);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(open_plain_file("/dev/null"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(open_plain_file("pipe"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(open_plain_file("missing"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Open, AFileOfMoreThanTheLimitIsNotRead) {
    write_file("file", "");
    ASSERT_EQ(::truncate("file", settings_limit.bytes), 0);
    EXPECT_NE(open_plain_file("file", settings_limit), nullptr);
    ASSERT_EQ(::truncate("file", settings_limit.bytes + 1), 0);
    EXPECT_EQ(open_plain_file("file", settings_limit), nullptr);
    EXPECT_EQ(errno, EFBIG);
    EXPECT_NE(open_plain_file("file"), nullptr);
}

TEST(StreamOf, ClosesADescriptorThatNoStreamCanBeHadOver) {
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(stream_of(descriptor, "no mode"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST(CloseFile, SaysThatAFullDiskLostTheText) {
    stream_handle full = open_to_write("/dev/full");
    ASSERT_NE(full, nullptr);
    format_file(full.get(), "%s", "text");
    EXPECT_FALSE(close_file(std::move(full)));
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(ReadPiece, GivesALineOrAsMuchAsFits) {
    write_file("file", "ab\n\nabcdef\nlast");
    const stream_handle file = open_plain_file("file");
    std::array<char, 5> piece{};
    EXPECT_EQ(read_piece(file.get(), piece), "ab\n");
    EXPECT_EQ(read_piece(file.get(), piece), "\n");
    EXPECT_EQ(read_piece(file.get(), piece), "abcd");
    EXPECT_EQ(read_piece(file.get(), piece), "ef\n");
    EXPECT_EQ(read_piece(file.get(), piece), "last");
    EXPECT_EQ(read_piece(file.get(), piece), "");
}

TEST_F(ReadPiece, GivesTheBytesBehindANul) {
    write_file("file", "a\0b\nc\n"s);
    const stream_handle file = open_plain_file("file");
    std::array<char, 16> piece{};
    EXPECT_EQ(read_piece(file.get(), piece), "a\0b\n"s);
    EXPECT_EQ(read_piece(file.get(), piece), "c\n");
}

TEST_F(ReadPiece, AsATextEndsAtTheFirstNul) {
    write_file("file", "a\0b\n\0\nc"s);
    const stream_handle file = open_plain_file("file");
    std::array<char, 16> piece{};
    EXPECT_STREQ(read_text_piece(file.get(), piece), "a");
    EXPECT_STREQ(read_text_piece(file.get(), piece), "");
    EXPECT_STREQ(read_text_piece(file.get(), piece), "c");
    EXPECT_EQ(read_text_piece(file.get(), piece), nullptr);
}

TEST_F(ReplacementFile, PutsTheNewFileInPlace) {
    write_file("file", "old");
    replacement_file file("file");
    ASSERT_NE(file.stream(), nullptr);
    format_file(file.stream(), "%s", "new");
    EXPECT_EQ(read_file("file"), "old");
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(read_file("file"), "new");
    EXPECT_EQ(names_here(), std::vector<std::string>{"file"});
}

TEST_F(ReplacementFile, WithoutCommitTheOldFileStays) {
    write_file("file", "old");
    {
        replacement_file file("file");
        format_file(file.stream(), "%s", "new");
    }
    EXPECT_EQ(read_file("file"), "old");
    EXPECT_EQ(names_here(), std::vector<std::string>{"file"});
}

TEST_F(ReplacementFile, ANewFileGetsTheUsualModeAndAReplacedOneKeepsItsOwn) {
    const mode_t mask = ::umask(027);
    replacement_file fresh("fresh");
    EXPECT_TRUE(fresh.commit());
    EXPECT_EQ(mode_of("fresh"), 0640U);
    ASSERT_EQ(::chmod("fresh", 0604), 0);
    replacement_file again("fresh");
    EXPECT_TRUE(again.commit());
    EXPECT_EQ(mode_of("fresh"), 0604U);
    ASSERT_EQ(::chmod("fresh", 06777), 0);
    replacement_file once_more("fresh");
    EXPECT_TRUE(once_more.commit());
    EXPECT_EQ(mode_of("fresh"), 06777U);
    ::umask(mask);
}

TEST_F(ReplacementFile, AFileMayHaveTheLongestNameThereIs) {
    const std::string name(255, 'n');
    write_file(name, "old");
    replacement_file file(name.c_str());
    ASSERT_NE(file.stream(), nullptr);
    format_file(file.stream(), "%s", "new");
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(read_file(name), "new");
}

TEST_F(ReplacementFile, APathOfMoreThan511CharactersIsRefused) {
    std::string here;
    while (here.size() < 508) {
        here += "./";
    }
    EXPECT_TRUE(replacement_file((here + "abc").c_str()).commit());
    EXPECT_EQ(replacement_file((here + "abcd").c_str()).stream(), nullptr);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(names_here(), std::vector<std::string>{"abc"});
}

TEST_F(ReplacementFile, ALinkStaysAndItsFileIsReplaced) {
    write_file("real", "old");
    std::filesystem::create_symlink("real", "link");
    replacement_file file("link");
    format_file(file.stream(), "%s", "new");
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(std::filesystem::is_symlink("link"));
    EXPECT_EQ(read_file("real"), "new");
}

TEST_F(ReplacementFile, ALinkToAFileThatIsNotThereYetStaysAndItsFileIsMade) {
    std::filesystem::create_symlink("real", "link");
    replacement_file file("link");
    ASSERT_NE(file.stream(), nullptr);
    format_file(file.stream(), "%s", "new");
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(std::filesystem::is_symlink("link"));
    EXPECT_EQ(read_file("real"), "new");
}

TEST_F(ReplacementFile, ALinkIntoAMissingDirectoryIsNotReplaced) {
    std::filesystem::create_symlink("missing/real", "link");
    EXPECT_EQ(replacement_file("link").stream(), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(names_here(), std::vector<std::string>{"link"});
}

TEST_F(ReplacementFile, ALinkThatLeadsNowhereElseIsNotReplaced) {
    std::filesystem::create_symlink("link", "link");
    EXPECT_EQ(replacement_file("link").stream(), nullptr);
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(names_here(), std::vector<std::string>{"link"});
}

TEST_F(ReplacementFile, CannotBeMadeInAMissingDirectoryOrForADirectory) {
    EXPECT_EQ(replacement_file("missing/file").stream(), nullptr);
    EXPECT_EQ(errno, ENOENT);
    std::filesystem::create_directory("directory");
    EXPECT_EQ(replacement_file("directory").stream(), nullptr);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(names_here(), std::vector<std::string>{"directory"});
}

TEST_F(ReplacementFile, ADeviceIsWrittenDirectlyAndAFullOneFails) {
    replacement_file full("/dev/full");
    ASSERT_NE(full.stream(), nullptr);
    format_file(full.stream(), "%s", "text");
    EXPECT_FALSE(full.commit());
    EXPECT_EQ(errno, ENOSPC);
    replacement_file sink("/dev/null");
    EXPECT_TRUE(sink.commit());
}
