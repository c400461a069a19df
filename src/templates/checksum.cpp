#include "templates/checksum.h"

#include "core/log.h"
#include "core/stream.h"
#include "core/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <sys/stat.h>

namespace {

constexpr std::size_t cycle = 3;     // the weights are 1, 2, 4, 1, 2, 4, ...
constexpr std::size_t row_size = 96; // whole cycles and whole vectors

consteval auto make_weights() {
    std::array<std::int16_t, row_size + cycle> table{};
    for (std::size_t at = 0; at < table.size(); at++) {
        table[at] = static_cast<std::int16_t>(1 << (at % cycle));
    }
    return table;
}

constexpr auto weights = make_weights();

// Returns the number that a character is summed as. Has no branch: compilers then take many
// characters at once.
constexpr std::int16_t value_of(char character) {
    const int is_line_end =
        static_cast<int>(character == '\n') | static_cast<int>(character == '\r');
    return static_cast<std::uint8_t>(character & (is_line_end - 1));
}

int weighted_sum(std::string_view row, const std::int16_t *weight) {
    int sum = 0;
    for (std::size_t at = 0; at < row.size(); at++) {
        sum += value_of(row[at]) * weight[at];
    }
    return sum;
}

// Returns where the last line of `text` begins. Looks in blocks from the end: find takes many bytes
// at once, rfind one.
std::size_t last_line_start(std::string_view text) {
    constexpr std::size_t block_size = 4096;
    while (!text.empty()) {
        const std::size_t begin = text.size() - std::min(text.size(), block_size);
        if (text.find('\n', begin) != std::string_view::npos) {
            return text.rfind('\n') + 1;
        }
        text = text.substr(0, begin);
    }
    return 0;
}

// Returns where the piece that holds `place` begins. `text` begins with a piece.
std::size_t piece_start(std::string_view text, std::size_t place) {
    return place - (place - last_line_start(text.substr(0, place))) % piece_limit;
}

// Returns the size of an open file, 0 if it has none.
off_t size_of(std::FILE *file) {
    struct stat status {};
    return ::fstat(::fileno(file), &status) == 0 ? status.st_size : 0;
}

std::size_t first_piece_size(std::string_view text) {
    const std::string_view piece = text.substr(0, piece_limit);
    return std::min(piece.find('\n'), piece.size() - 1) + 1;
}

} // namespace

int calculate(std::string_view bf, std::size_t fpos) {
    const std::int16_t *weight = &weights[fpos % cycle];
    std::uint32_t sum = 0;
    for (; bf.size() >= row_size; bf.remove_prefix(row_size)) {
        sum += static_cast<std::uint32_t>(weighted_sum(bf.substr(0, row_size), weight));
    }
    sum += static_cast<std::uint32_t>(weighted_sum(bf, weight));
    return static_cast<int>(sum);
}

template_reader::template_reader(std::FILE *file, std::string_view marker, off_t most)
    : file_(file), marker_(marker), most_(most) {}

std::optional<template_part> template_reader::next() {
    if (block_.empty()) {
        read_block();
    }
    if (block_.empty()) {
        return std::nullopt;
    }
    const std::size_t found = block_.find(marker_);
    if (found == std::string_view::npos) {
        return cut(block_.size(), false);
    }
    if (const std::size_t start = piece_start(block_, found); start > 0) {
        return cut(start, false);
    }
    return cut(first_piece_size(block_), true);
}

// Reads the next block: the pieces that end in the buffer, so that no piece is torn. Leaves it
// empty at the end of the file and if a read fails.
void template_reader::read_block() {
    if (std::feof(file_) != 0) {
        return;
    }
    char *end = std::copy(unfinished_.begin(), unfinished_.end(), buffer_.data());
    const std::size_t room = buffer_.size() - unfinished_.size();
    const std::size_t count = std::fread(end, 1, room, file_);
    end += count;
    // A small file needs no other look.
    if (size_ == 0 && count == room) {
        most_ = std::max(most_, size_of(file_));
    }
    size_ += static_cast<off_t>(count);
    has_failed_ = std::ferror(file_) != 0 || size_ > most_;
    if (has_failed_) {
        errno = std::ferror(file_) != 0 ? errno : EFBIG;
        return;
    }
    const std::string_view text(buffer_.data(), static_cast<std::size_t>(end - buffer_.data()));
    const bool is_last = std::feof(file_) != 0;
    const std::size_t size = is_last ? text.size() : piece_start(text, text.size());
    block_ = text.substr(0, size);
    unfinished_ = text.substr(size);
}

template_part template_reader::cut(std::size_t size, bool is_marked) {
    const template_part part = {block_.substr(0, size), is_marked};
    block_.remove_prefix(size);
    return part;
}

void running_checksum::add(const template_part &part) {
    const bool is_checksum_line =
        part.is_marked && part.bytes.find("||checksum=") != std::string_view::npos;
    const std::string_view summed = is_checksum_line ? read_checksum_line(part.bytes) : part.bytes;
    // Required: what is left of a checksum line is weighed from the start of the line.
    sum_ += static_cast<std::uint32_t>(calculate(summed, offset_));
    offset_ += part.bytes.size();
}

// Stores the number after the line's first "=". Returns what follows the number and the two bars
// after it.
std::string_view running_checksum::read_checksum_line(std::string_view line) {
    line.remove_prefix(line.find('=') + 1);
    const std::size_t bar = std::min(line.find('|'), line.size());
    stored_ = static_cast<std::uint32_t>(s_atoi(std::string(line.substr(0, bar)).c_str()));
    line.remove_prefix(bar);
    for (int bars = 0; bars < 2 && line.starts_with('|'); bars++) {
        line.remove_prefix(1);
    }
    return line;
}

int do_checksum(const char *file, int compare) {
    const stream_handle stream = open_plain_file(file, template_limit);
    return checksum_of(stream.get(), file, compare);
}

int checksum_of(std::FILE *stream, const char *file, int compare) {
    running_checksum checksum;
    bool is_read = false;
    if (stream != nullptr) {
        template_reader reader(stream, checksum_line_start);
        while (const std::optional<template_part> part = reader.next()) {
            checksum.add(*part);
        }
        is_read = !reader.has_failed();
    }
    if (!is_read) {
        emsg("can't open %s, %s", file, std::strerror(errno));
        // Not 0 after a failed read: a template that was read in part must not count as unchanged.
        return stream != nullptr && compare != 0 ? 1 : 0;
    }
    return compare != 0 ? checksum.difference() : checksum.sum();
}
