#include "core/stream.h"

#include "core/format.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "support/tree.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using namespace std::string_literals;

// Writes "new" in the place of a file. Gives the error (as errno) that it failed with, or 0.
int replace(const std::string &path) {
    replacement_file file(path.c_str());
    if (file.stream() == nullptr) {
        return errno;
    }
    format_file(file.stream(), "%s", "new");
    return file.commit() ? 0 : errno;
}

// Where "link" leads, which path is replaced, beside the file "file", the error that this gives,
// and what there is then.
struct replacement {
    const char *name;
    std::string link;
    std::string path;
    int error;
    std::string after;
};

class ReplacementFile : public scratch_test {
  protected:
    ReplacementFile() : umask_before_(::umask(022)) { write_file("file", "old"); }
    ~ReplacementFile() override { ::umask(umask_before_); }

    static void check(const replacement &row) {
        if (!row.link.empty()) {
            std::filesystem::create_symlink(row.link, "link");
        }
        EXPECT_EQ(replace(row.path), row.error);
        EXPECT_EQ(tree_of("."), row.after);
    }

  private:
    mode_t umask_before_;
};

const std::string longest_name(255, 'n');
const std::string old_file = "0644 ./file \"old\"\n";
const std::string link = "0777 ./link (special)\n";

// clang-format off
const std::vector<replacement> replacements = {
    {"ReplacementFile.PutsTheNewFileInPlace", "", "file", 0, "0644 ./file \"new\"\n"},
    {"ReplacementFile.AFileMayHaveTheLongestNameThereIs", "", longest_name, 0,
     old_file + "0644 ./" + longest_name + " \"new\"\n"},
    {"ReplacementFile.ALinkStaysAndItsFileIsReplaced", "file", "link", 0,
     "0644 ./file \"new\"\n" + link},
    {"ReplacementFile.ALinkToAFileThatIsNotThereYetStaysAndItsFileIsMade", "real", "link", 0,
     old_file + link + "0644 ./real \"new\"\n"},
    {"ReplacementFile.ALinkIntoAMissingDirectoryIsNotReplaced", "missing/real", "link", ENOENT,
     old_file + link},
    {"ReplacementFile.ALinkThatLeadsNowhereElseIsNotReplaced", "link", "link", ELOOP,
     old_file + link},
    {"ReplacementFile.CannotBeMadeInAMissingDirectory", "", "missing/file", ENOENT, old_file},
    {"ReplacementFile.CannotBeMadeForADirectory", "", ".", EISDIR, old_file},
    {"ReplacementFile.ADeviceIsWrittenDirectly", "", "/dev/null", 0, old_file},
    {"ReplacementFile.AFullDiskLosesTheText", "", "/dev/full", ENOSPC, old_file},
};
// clang-format on

const int registered = register_rows<ReplacementFile>(replacements);

using Open = scratch_test;
using ReadPiece = scratch_test;

// The pieces of a file, in room for four bytes; "|" behind each, the empty one at the end too.
std::string read_in_pieces(const std::string &content) {
    write_file("file", content);
    const stream_handle file = open_plain_file("file");
    std::array<char, 5> room{};
    std::string pieces;
    std::string piece;
    do {
        piece = read_piece(file.get(), room);
        pieces += piece + "|";
    } while (!piece.empty());
    return pieces;
}

} // namespace

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

TEST_F(ReadPiece, GivesALineOrAsMuchAsFits) {
    EXPECT_EQ(read_in_pieces("ab\n\nabcdef\nlast"), "ab\n|\n|abcd|ef\n|last||");
}

TEST_F(ReadPiece, GivesTheBytesBehindANul) {
    EXPECT_EQ(read_in_pieces("a\0b\nc\n"s), "a\0b\n|c\n||"s);
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

TEST_F(ReplacementFile, WithoutCommitTheOldFileStays) {
    {
        replacement_file file("file");
        format_file(file.stream(), "%s", "new");
        std::fflush(file.stream());
        EXPECT_EQ(read_file("file"), "old");
    }
    EXPECT_EQ(tree_of("."), old_file);
}

TEST_F(ReplacementFile, ANewFileGetsTheUsualModeAndAReplacedOneKeepsItsOwn) {
    ::umask(027);
    EXPECT_TRUE(replacement_file("fresh").commit());
    EXPECT_EQ(tree_of("."), old_file + "0640 ./fresh \"\"\n");
    ASSERT_EQ(::chmod("fresh", 0604), 0);
    EXPECT_TRUE(replacement_file("fresh").commit());
    EXPECT_EQ(tree_of("."), old_file + "0604 ./fresh \"\"\n");
    ASSERT_EQ(::chmod("fresh", 06777), 0);
    EXPECT_TRUE(replacement_file("fresh").commit());
    EXPECT_EQ(tree_of("."), old_file + "6777 ./fresh \"\"\n");
}

TEST_F(ReplacementFile, APathOfMoreThan511CharactersIsRefused) {
    std::string here;
    while (here.size() < 508) {
        here += "./";
    }
    EXPECT_EQ(replace(here + "abc"), 0);
    EXPECT_EQ(replace(here + "abcd"), ENAMETOOLONG);
    EXPECT_EQ(tree_of("."), "0644 ./abc \"new\"\n" + old_file);
}
