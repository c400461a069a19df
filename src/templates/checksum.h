// The checksum of a template, and the reader that finds a template's marker lines. The header
// module compares checksums; the stamping modes read, sum and copy with the reader.
#pragma once

#include "core/place.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>
#include <sys/types.h>

// The longest piece: a longer line is read in as many pieces as it takes.
inline constexpr std::size_t piece_limit = 511;

// The size of the reader's buffer.
inline constexpr std::size_t template_read_size = std::size_t{512} * 1024;

// How a checksum line begins.
inline constexpr std::string_view checksum_line_start = "||checksu";

// Returns the checksum of `file`, or with `compare` the checksum less the number on the file's
// checksum line (0 without such a line). If the file cannot be opened, logs it and returns 0. If it
// cannot be read to its end, logs it and returns 1 with `compare`, so that it never agrees, else 0.
int do_checksum(const char *file, int compare);

// The same for a file that is open at its start; null is one that could not be opened.
int checksum_of(std::FILE *stream, const char *file, int compare);

// Returns what the bytes `bf` add to a checksum if the first of them stands at the offset `fpos` of
// the file. Each byte but line feeds and carriage returns is shifted left by its offset modulo 3;
// the sum wraps at 32 bits.
int calculate(std::string_view bf, std::size_t fpos);

// A part of a template: one piece in which the marker begins (the end of the piece may cut it), or
// a run of pieces in which it never does.
struct template_part {
    std::string_view bytes;
    bool is_marked;
};

// Reads a template in parts, which together are the whole file in its order.
class template_reader {
  public:
    // Reads `file` from where it stands. The caller keeps `file` and `marker` while it reads. Fails
    // (EFBIG) at more than `most` bytes if the file was not that large when reading began: somebody
    // may write it all the while.
    template_reader(std::FILE *file, std::string_view marker, off_t most = template_limit.bytes);
    ~template_reader() = default;
    template_reader(const template_reader &) = delete; // the views lead into its own buffer
    template_reader &operator=(const template_reader &) = delete;

    // Returns the next part, which lasts until the next call. Returns none at the end of the file,
    // or if a read fails: then errno says why.
    std::optional<template_part> next();

    [[nodiscard]] bool has_failed() const { return has_failed_; }

  private:
    void read_block();
    template_part cut(std::size_t size, bool is_marked);

    std::FILE *file_;
    std::string_view marker_;
    off_t most_;
    off_t size_ = 0; // of what was read
    bool has_failed_ = false;
    std::string_view block_;      // whole pieces, not yet returned
    std::string_view unfinished_; // the piece after the block, as far as it was read
    std::array<char, template_read_size> buffer_;
};

// The checksum of a template whose parts, read with checksum_line_start, are added in their order.
class running_checksum {
  public:
    void add(const template_part &part);
    [[nodiscard]] int sum() const { return static_cast<int>(sum_); }
    // The sum less the number of the checksum line.
    [[nodiscard]] int difference() const { return static_cast<int>(sum_ - stored_); }

  private:
    [[nodiscard]] std::string_view read_checksum_line(std::string_view line);

    std::size_t offset_ = 0; // of the next part in the file
    std::uint32_t sum_ = 0;
    std::uint32_t stored_ = 0;
};
