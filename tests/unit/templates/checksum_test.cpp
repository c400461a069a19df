#include "templates/checksum.h"

#include "core/stream.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "templates.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

constexpr std::size_t piece = 511;

// What do_checksum gives; `difference` is the checksum less the number of the checksum line.
struct summed_file {
    const char *name;
    std::string content;
    int sum;
    int difference;
};

class ChecksumTest : public scratch_test {
  protected:
    static int checksum_of(std::string_view content, int less_stored = 0) {
        write_file("a.tpl", content);
        return do_checksum("a.tpl", less_stored);
    }

    static int difference_of(std::string_view content) { return checksum_of(content, 1); }

    static void check(const summed_file &row) {
        EXPECT_EQ(checksum_of(row.content), row.sum);
        EXPECT_EQ(difference_of(row.content), row.difference);
    }

    // Checks both answers against the rule worked out piece by piece.
    static void expect_by_the_rule(const std::string &content) {
        int stored = 0;
        const int expected = expected_checksum(content, &stored);
        EXPECT_EQ(checksum_of(content), expected);
        EXPECT_EQ(difference_of(content), static_cast<int>(static_cast<std::uint32_t>(expected) -
                                                           static_cast<std::uint32_t>(stored)));
    }
};

// calculate.

// clang-format off
const std::vector<rule> calculations = {
    {"Calculate.WeightsAreOneTwoAndFourByOffset", calculate,
     {{{"A", 0}, 65}, {{"A", 1}, 130}, {{"A", 2}, 260}, {{"A", 3}, 65},
      {{"AAAA", 0}, 65 + 130 + 260 + 65}, {{"AAAA", 2}, 260 + 65 + 130 + 260}}},
    {"Calculate.LineEndsTakeAPlaceAndAddNothing", calculate,
     {{{"\r\n", 0}, 0}, {{"\r\nA", 0}, 260}, {{"A\nA\rA", 0}, 65 + 260 + 130}}},
    {"Calculate.AnEmptyTextAddsNothing", calculate, {{{"", 2}, 0}}},
};
// clang-format on

TEST(Calculate, EveryOtherByteCountsUnsigned) {
    for (int byte = 0; byte < 256; byte++) {
        const auto character = static_cast<char>(byte);
        const int expected = byte == 10 || byte == 13 ? 0 : byte;
        EXPECT_EQ(calculate(std::string_view(&character, 1), 0), expected) << byte;
        EXPECT_EQ(calculate(std::string(5000, character), 0),
                  static_cast<int>(expected_part(std::string(5000, character), 0)))
            << byte;
    }
}

TEST(Calculate, TextsOfEveryLengthAtEveryWeight) {
    std::mt19937 random(1); // NOLINT: the same bytes each time
    std::string text;
    for (int length = 0; length < 400; length++) {
        for (std::size_t offset = 0; offset < 3; offset++) {
            ASSERT_EQ(static_cast<std::uint32_t>(calculate(text, offset)),
                      expected_part(text, offset))
                << length << " at " << offset;
        }
        text += static_cast<char>(random());
    }
}

TEST(Calculate, WrapsAtThirtyTwoBits) {
    // 255 * (1 + 2 + 4) for each three bytes: beyond 2^31 after some 3.6 million bytes.
    const std::string text(9'000'000, '\xff');
    const auto expected = static_cast<std::uint32_t>(std::uint64_t{255} * 7 * 3'000'000);
    EXPECT_EQ(static_cast<std::uint32_t>(calculate(text, 0)), expected);
    EXPECT_EQ(calculate(text, 0), 1'060'032'704); // 5355000000 less 2^32
}

// do_checksum.

using namespace std::string_literals;

const std::string abc_line = "ab\n"; // 97 + 196; the next line begins at weight 1
constexpr int abc_sum = 97 + 196;

// A checksum line behind that one: what it adds, and the number that is stored.
summed_file behind_abc(const char *name, const std::string &line, int sum, int stored) {
    return {name, abc_line + line, abc_sum + sum, abc_sum + sum - stored};
}

const std::string header_alone =
    expected_stamped("||header: modified=false tpl_set=kst_s2 tpl_version=2.0a||\n");

int part_at_start(std::string_view text) {
    return static_cast<int>(expected_part(text, 0));
}

const std::vector<summed_file> summed_files = {
    // a 97 * 1 + b 98 * 2 + c 99 * 4 + d 100 * 2, the line feed at weight 1
    {"ChecksumTest.OfAKnownText", "abc\nd\n", 97 + 196 + 396 + 200, 97 + 196 + 396 + 200},
    {"ChecksumTest.OfAnEmptyFileIsNothing", "", 0, 0},
    {"ChecksumTest.WithoutAChecksumLineTheDifferenceIsTheChecksum", "abc\n", 689, 689},
    {"ChecksumTest.AStampedFileAgrees", "abc\n\n||checksum=689||\n", 689, 0},
    {"ChecksumTest.AFileOfHeaderAndChecksumAloneAgrees", header_alone,
     expected_checksum(header_alone), 0},
    {"ChecksumTest.NulBytesAreSummedLikeOthers", "\0\0a\0b\n"s, 4 * 97 + 2 * 98, 4 * 97 + 2 * 98},
    {"ChecksumTest.ANulBeforeAChecksumLineIsSummed", "\0a||checksum=5||\n"s, 0, -5},
    {"ChecksumTest.TheLastOfSeveralLinesCounts", "||checksum=5||\n||checksum=7||\n", 0, -7},
    // The line begins at offset 1; its rest stands at 16 but is weighted as at 1.
    {"ChecksumTest.TheRestOfTheLineIsWeightedFromItsStart", "\n||checksum=12||A\n", 2 * 65,
     2 * 65 - 12},
    behind_abc("ChecksumTest.AMalformedLineIsReadByTheRules", "||checksum=12||\n", 0, 12),
    behind_abc("ChecksumTest.AWindowsLineEndIsNoPart", "||checksum=12||\r\n", 0, 12),
    behind_abc("ChecksumTest.ALineMayEndTheFile", "||checksum=12||", 0, 12),
    behind_abc("ChecksumTest.ALineMayBeCutBehindTheNumber", "||checksum=12", 0, 12),
    behind_abc("ChecksumTest.ALineMayBeCutBeforeTheNumber", "||checksum=", 0, 0),
    behind_abc("ChecksumTest.OneBarIsPassedOver", "||checksum=12|\n", 0, 12),
    behind_abc("ChecksumTest.TextBehindOneBarIsSummed", "||checksum=12|A\n", 65, 12),
    behind_abc("ChecksumTest.TextBehindTwoBarsIsSummed", "||checksum=12||A\n", 65, 12),
    behind_abc("ChecksumTest.AThirdBarIsSummed", "||checksum=12|||\n", 124, 12),
    behind_abc("ChecksumTest.BlanksMayStandBeforeTheNumber", "||checksum=  12||\n", 0, 12),
    behind_abc("ChecksumTest.BlanksMayStandBehindTheNumber", "||checksum=12  ||\n", 0, 12),
    behind_abc("ChecksumTest.ANumberMayHaveASign", "||checksum=+12||\n", 0, 12),
    behind_abc("ChecksumTest.ANumberMayBeNegative", "||checksum=-12||\n", 0, -12),
    behind_abc("ChecksumTest.WhatIsNoNumberIsNothing", "||checksum=x12||\n", 0, 0),
    behind_abc("ChecksumTest.ANulEndsTheNumber", "||checksum=1\0002||\n"s, 0, 1),
    behind_abc("ChecksumTest.AMarkMayStandInMidLine", "A ||checksum=12||\n", 0, 12),
    behind_abc("ChecksumTest.TheFirstEqualsSignTellsTheNumber", "a=7|||checksum=12||\n",
               part_at_start("|checksum=12||"), 7),
    behind_abc("ChecksumTest.WithoutEqualsSignItIsNoMark", "||checksum 12||\n",
               part_at_start("||checksum 12||\n"), 0),
    behind_abc("ChecksumTest.InAnotherLetterCaseItIsNoMark", "||Checksum=12||\n",
               part_at_start("||Checksum=12||\n"), 0),
};

const int registered = register_rows(calculations) + register_rows<ChecksumTest>(summed_files);

TEST_F(ChecksumTest, AnyOtherCharacterDisagrees) {
    const std::string content =
        expected_stamped("||header: modified=false tpl_set=kst_s2 tpl_version=2.0a||\n<b>\r\n");
    const std::size_t end = content.find("\n||checksum");
    for (std::size_t at = 0; at < end; at++) {
        if (content[at] == '\n' || content[at] == '\r') {
            continue;
        }
        std::string changed = content;
        changed[at] = changed[at] == '~' ? '}' : '~';
        EXPECT_NE(difference_of(changed), 0) << at;
    }
}

TEST_F(ChecksumTest, MovedTextDisagrees) {
    const std::string content = expected_stamped("<html>\n<body>\n");
    EXPECT_NE(difference_of("\n" + content), 0);
    EXPECT_NE(difference_of(content.substr(1)), 0);
}

TEST_F(ChecksumTest, ACarriageReturnMovesWhatFollowsAndAddsNothing) {
    EXPECT_EQ(checksum_of("a\r\nb"), 97 + 98);    // b at weight 1
    EXPECT_EQ(checksum_of("a\nb"), 97 + 4 * 98);  // b at weight 4
    EXPECT_EQ(checksum_of("a\r\r\nb"), 97 + 196); // b at weight 2
    EXPECT_EQ(checksum_of("a\r\n"), checksum_of("a\n"));
    const std::string unix_file = expected_stamped("<html>\n<body>\n");
    std::string windows_file = unix_file;
    windows_file.insert(6, "\r");
    EXPECT_NE(difference_of(windows_file), 0);
}

TEST_F(ChecksumTest, ANegativeChecksumAgreesWithItsNumber) {
    // 254 * 7 for each three bytes, 2667000000 in all, read as a signed number.
    const std::string content(4'500'000, '\xfe');
    EXPECT_EQ(checksum_of(content), -1'627'967'296);
    EXPECT_EQ(difference_of(content + "\n||checksum=-1627967296||\n"), 0);
}

TEST_F(ChecksumTest, ANumberOutsideThirtyTwoBitsIsReadAsTheLargestOrTheSmallest) {
    for (const char *number : {"99999999999999999999999999", "4294967297", "2147483648"}) {
        EXPECT_EQ(difference_of("||checksum=" + std::string(number) + "||\n"), -2147483647)
            << number;
    }
    EXPECT_EQ(difference_of("||checksum=-99999999999999999999999999||a\n"), -2147483647 - 1 + 97);
    expect_by_the_rule("abc\n||checksum=" + std::string(600, '9') + "||\n");
}

TEST_F(ChecksumTest, AMarkerCutByTheEndOfAPieceIsNone) {
    for (std::size_t before = piece - 15; before <= piece + 1; before++) {
        SCOPED_TRACE(before);
        expect_by_the_rule("x\n" + std::string(before, 'a') + "||checksum=12||b\ncd\n");
        expect_by_the_rule(std::string(piece + before, 'a') + "||checksum=12||b\ncd\n");
    }
}

TEST_F(ChecksumTest, APieceInMidLineIsALineOfItsOwn) {
    const std::string first(piece, 'a');
    // The second piece holds the marker; the first is summed whole.
    EXPECT_EQ(checksum_of(first + "b ||checksum=12||c"),
              static_cast<int>(expected_part(first, 0) + expected_part("c", piece)));
}

TEST_F(ChecksumTest, TwoMarkersInOnePieceAreOneLine) {
    expect_by_the_rule("||checksum=12||a||checksum=13||b\n");
    expect_by_the_rule(std::string(piece - 11, 'a') + "||checksum=12||b||checksum=13||c\n");
}

// Markers around the places where one block ends and the next begins.
TEST_F(ChecksumTest, MarkersAtTheEndsOfBlocks) {
    for (const std::size_t end : {template_read_size, 2 * template_read_size}) {
        for (std::size_t at = end - 1100; at < end + 20; at += 53) {
            SCOPED_TRACE(at);
            std::string content(at, 'a');
            content += "\nbb||checksum=12||cc\n" + std::string(2000, 'd') + "\n";
            expect_by_the_rule(content);
            content[at] = '|';
            expect_by_the_rule(content);
        }
    }
}

// The line begins blocks before its marker is read.
TEST_F(ChecksumTest, MarkersFarBehindTheBeginningOfTheirLine) {
    const std::string middle(2 * template_read_size, 'b');
    for (const std::size_t before : {1U, 300U, 511U, 700U}) {
        for (const char *first : {"", "||checksum=5||", "||checksum=5||\n"}) {
            SCOPED_TRACE(std::to_string(before) + first);
            const std::string begin = std::string(before, 'a') + "\n" + first;
            expect_by_the_rule(begin + middle + "||checksum=12||cc\n");
            expect_by_the_rule(begin + middle + "||checksum=12||" + middle + "||checksum=13||c\n");
        }
    }
}

TEST_F(ChecksumTest, FilesOfRandomPieces) {
    std::mt19937 random(7); // NOLINT: the same files each time
    for (int round = 0; round < 200; round++) {
        SCOPED_TRACE(round);
        expect_by_the_rule(random_file(random,
                                       round % 20 == 0 ? 2 * template_read_size + 20'000 : 3'000,
                                       round % 3 == 0 ? 600 : 20));
    }
}

TEST_F(ChecksumTest, AFileThatCannotBeOpenedIsLogged) {
    const test_log log(".");
    EXPECT_EQ(do_checksum("missing.tpl", 0), 0);
    EXPECT_EQ(do_checksum("missing.tpl", 1), 0);
    EXPECT_EQ(log.text(), "Error: can't open missing.tpl, No such file or directory\n"
                          "Error: can't open missing.tpl, No such file or directory\n");
}

TEST_F(ChecksumTest, WhatIsNoPlainFileIsNotRead) {
    const test_log log(".");
    std::filesystem::create_directory("d.tpl");
    ASSERT_EQ(::mkfifo("p.tpl", 0600), 0);
    EXPECT_EQ(do_checksum("d.tpl", 0), 0);
    EXPECT_EQ(do_checksum("p.tpl", 0), 0);
    EXPECT_EQ(do_checksum("/dev/zero", 0), 0);
}

// What can be opened but not read: /proc/self/mem has no page at 0.
TEST_F(ChecksumTest, AFileThatCannotBeReadNeverAgrees) {
    const test_log log(".");
    EXPECT_EQ(do_checksum("/proc/self/mem", 0), 0);
    EXPECT_EQ(do_checksum("/proc/self/mem", 1), 1);
    EXPECT_EQ(log.text(), "Error: can't open /proc/self/mem, Input/output error\n"
                          "Error: can't open /proc/self/mem, Input/output error\n");
}

// A template that grows while it is read, as somebody who may write it makes it.
TEST_F(ChecksumTest, ReadingEndsWhereTheFileGrowsPastTheLimit) {
    const std::string block(template_read_size, 'x');
    for (const bool is_growing : {false, true}) {
        write_file("a.tpl", block + block);
        const stream_handle file = open_plain_file("a.tpl");
        auto reader = std::make_unique<template_reader>(file.get(), "||", 1);
        EXPECT_TRUE(reader->next().has_value());
        if (is_growing) {
            write_file("a.tpl", block + block + "more");
        }
        while (reader->next()) {
        }
        EXPECT_EQ(reader->has_failed(), is_growing);
        EXPECT_TRUE(!is_growing || errno == EFBIG);
    }
}

TEST_F(ChecksumTest, OfALargeFileNeedsNoMemory) {
    for (const std::size_t line : {std::size_t{80}, std::size_t{1} << 20U}) {
        const large_template file = make_large_template(line);
        write_file("a.tpl", file.content);
        rusage before{};
        ::getrusage(RUSAGE_SELF, &before);
        EXPECT_EQ(do_checksum("a.tpl", 0), static_cast<int>(file.sum));
        rusage after{};
        ::getrusage(RUSAGE_SELF, &after);
        EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 1024); // KB
    }
}

} // namespace
