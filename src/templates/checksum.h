// A template in one pass: read and summed in blocks, taken apart into pieces only where a marker
// stands, so that neither the length of its lines nor its own size costs anything. For the sources
// of the header room.
#pragma once

#include "core/stream.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

// The longest piece.
inline constexpr std::size_t piece_limit = 511;

// A template is read so many bytes at once.
inline constexpr std::size_t template_read_size = std::size_t{512} * 1024;

// How every checksum line begins; lines are dropped by it.
inline constexpr std::string_view checksum_line_start = "||checksu";

// What a pass hands on: one whole piece that holds the marker, or a run of bytes in which no piece
// holds it.
struct template_part {
    std::string_view bytes;
    std::size_t offset; // in the file
    bool is_marked;
};
using part_receiver = std::function<bool(const template_part &)>;

enum class walk_result { done, read_failed, refused };

// Hands on the whole file in its order, until `receive` gives false (refused) or a read fails, with
// errno set. `marker` begins with "||" and has 9 characters; nothing was read of `file` before.
walk_result walk_template(std::FILE *file, std::string_view marker, const part_receiver &receive);

// The checksum of a template whose parts, walked with checksum_line_start, are added one by one.
class running_checksum {
  public:
    void add(const template_part &part);
    [[nodiscard]] int sum() const { return static_cast<int>(sum_); }
    // The sum less the number of the checksum line.
    [[nodiscard]] int difference() const { return static_cast<int>(sum_ - stored_); }

  private:
    void add_checksum_line(std::string_view line, std::size_t offset);

    std::uint32_t sum_ = 0;
    std::uint32_t stored_ = 0;
};
