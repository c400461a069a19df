#include "templates/checksum.h"

#include "core/log.h"
#include "core/text.h"
#include "templates/header.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <unistd.h>

namespace {

// --- Sums ---

constexpr std::size_t weights = 3;

// No branch, so that many bytes are taken at once.
constexpr std::uint8_t value_of(char character) {
    const int is_line_end =
        static_cast<int>(character == '\n') | static_cast<int>(character == '\r');
    return static_cast<std::uint8_t>(character & ~-is_line_end);
}

// Sums of bytes by their distance from the first one modulo 3.
using class_sums = std::array<std::uint32_t, weights>;

// Adds as many bytes as there are whole stripes in them, and at most 257 stripes (16 bits hold the
// sum of a lane then). Gives their number. `stripe` is a whole number of weight cycles and of
// vectors.
template <std::size_t stripe>
[[gnu::always_inline]] inline std::size_t add_stripes(std::string_view bytes, class_sums &sums) {
    constexpr std::size_t most = 257;
    const std::size_t stripes = std::min(bytes.size() / stripe, most);
    const char *row = bytes.data();
    std::array<std::uint16_t, stripe> lanes{};
    for (std::size_t count = 0; count < stripes; count++, row += stripe) {
        for (std::size_t lane = 0; lane < stripe; lane++) {
            lanes[lane] = static_cast<std::uint16_t>(lanes[lane] + value_of(row[lane]));
        }
    }
    for (std::size_t lane = 0; lane < stripe; lane++) {
        sums[lane % weights] += lanes[lane];
    }
    return stripes * stripe;
}

std::size_t add_many(std::string_view bytes, class_sums &sums) {
    constexpr std::size_t stripe = 48;
    return add_stripes<stripe>(bytes, sums);
}

#if defined(__x86_64__)
// The same in the wider vectors that most of these processors have.
[[gnu::target("avx2")]] std::size_t add_more(std::string_view bytes, class_sums &sums) {
    constexpr std::size_t stripe = 96;
    return add_stripes<stripe>(bytes, sums);
}

bool has_wide_vectors() {
    return static_cast<bool>(__builtin_cpu_supports("avx2"));
}
#else
constexpr auto add_more = add_many;

constexpr bool has_wide_vectors() {
    return false;
}
#endif

std::uint32_t weighted_sum(std::string_view bytes, std::size_t offset) {
    static const auto add = has_wide_vectors() ? add_more : add_many;
    class_sums sums{};
    while (const std::size_t count = add(bytes, sums)) {
        bytes.remove_prefix(count);
    }
    for (std::size_t at = 0; at < bytes.size(); at++) {
        sums[at % weights] += value_of(bytes[at]);
    }
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < weights; at++) {
        sum += sums[at] << ((offset + at) % weights);
    }
    return sum;
}

// --- Pieces ---

constexpr std::size_t marker_length = checksum_line_start.size();
constexpr std::size_t look_size = 1024; // looked through at once
constexpr std::size_t page_size = 4096;

// The most that a window keeps of the one before it: the piece around a place at the end of what
// was searched may begin one piece before it and end one piece behind it, and the page in which the
// first one begins is kept whole.
constexpr std::size_t kept_size = 2 * piece_limit + page_size;

// The bytes of the template being walked; read anew by each walk, one at a time. Whole pages are
// read to whole pages and, without markers, handed on as such: the system copies those faster.
alignas(page_size) std::array<char, kept_size + template_read_size + marker_length> window;

// Whether "||" and `third` stand anywhere among the first `count` places of `bytes`, of which two
// more can be read.
bool may_hold_marker(const char *bytes, std::size_t count, char third) {
    std::uint8_t found = 0;
    for (std::size_t at = 0; at < count; at++) {
        found |= static_cast<std::uint8_t>(static_cast<int>(bytes[at] == '|') &
                                           static_cast<int>(bytes[at + 1] == '|') &
                                           static_cast<int>(bytes[at + 2] == third));
    }
    return found != 0;
}

// The last line feed. Looks in blocks from the end: the search for a character that is fast goes
// forward.
std::size_t last_line_feed(std::string_view text) {
    while (!text.empty()) {
        const std::size_t start = text.size() - std::min(text.size(), look_size);
        const std::string_view block = text.substr(start);
        if (block.find('\n') != std::string_view::npos) {
            return start + block.rfind('\n');
        }
        text = text.substr(0, start);
    }
    return std::string_view::npos;
}

// One walk. Places are counted from the start of the window.
class walk {
  public:
    walk(int descriptor, std::string_view marker, const part_receiver &receive)
        : descriptor_(descriptor), marker_(marker), receive_(receive) {}

    walk_result run() {
        while (!has_ended_) {
            if (!fill()) {
                return walk_result::read_failed;
            }
            if (const walk_result result = hand_on_window(); result != walk_result::done) {
                return result;
            }
            slide();
        }
        return walk_result::done;
    }

  private:
    // Reads until the window is full or the file has ended.
    bool fill() {
        const std::size_t full = filled_ + template_read_size;
        while (filled_ < full && !has_ended_) {
            const ssize_t count = ::read(descriptor_, window.data() + filled_, full - filled_);
            if (count < 0 && errno != EINTR) {
                return false;
            }
            has_ended_ = count == 0;
            filled_ += static_cast<std::size_t>(std::max(count, ssize_t{0}));
        }
        return true;
    }

    // Hands on what can be judged by now: in a window that is not the last, what may belong to a
    // piece that goes on behind its end is left.
    walk_result hand_on_window() {
        const std::size_t settled = has_ended_ ? filled_ : filled_ - piece_limit;
        for (;;) {
            const std::size_t found = find_marker(settled);
            if (found == std::string_view::npos) {
                break;
            }
            searched_ = found + 1;
            if (!note_lines(offset_ + found)) {
                return walk_result::read_failed;
            }
            if (!hand_on_piece_of(found)) {
                return walk_result::refused;
            }
        }
        searched_ = std::max(searched_, settled);
        const bool is_taken =
            hand_on_run(std::max(handed_, has_ended_ ? filled_ : last_page_end(settled)));
        return is_taken ? walk_result::done : walk_result::refused;
    }

    // The end of the last page of the file that no piece around a place from `settled` on reaches
    // back into.
    [[nodiscard]] std::size_t last_page_end(std::size_t settled) const {
        const std::size_t end = settled - piece_limit;
        return end - std::min(end, (offset_ + end) % page_size);
    }

    // The next place below `end` where the marker stands. Goes from one "|" to the next at first,
    // and looks closer where one is.
    [[nodiscard]] std::size_t find_marker(std::size_t end) const {
        const std::string_view text(window.data(), filled_);
        std::size_t at = searched_;
        while ((at = text.substr(0, end).find('|', at)) < end) {
            const std::size_t count = std::min(look_size, end - at);
            if (may_hold_marker(window.data() + at, count, marker_[2])) {
                const std::size_t found = text.substr(at, count + marker_length - 1).find(marker_);
                if (found != std::string_view::npos) {
                    return at + found;
                }
            }
            at += count;
        }
        return std::string_view::npos;
    }

    // Hands on the piece around a marker, and before it the run that it ends; nothing when the end
    // of the piece cuts the marker. The lines are noted up to there.
    bool hand_on_piece_of(std::size_t marker_at) {
        const std::size_t in_line = offset_ + marker_at - line_start_;
        const std::size_t begin = marker_at - in_line % piece_limit;
        const std::size_t limit = std::min(begin + piece_limit, filled_);
        if (marker_at + marker_length > limit) {
            return true;
        }
        std::string_view piece(window.data() + begin, limit - begin);
        piece = piece.substr(0, std::min(piece.find('\n'), piece.size() - 1) + 1);
        if (!hand_on_run(begin) || !receive_({piece, offset_ + begin, true})) {
            return false;
        }
        handed_ = searched_ = begin + piece.size();
        noted_ = offset_ + handed_;
        line_start_ = piece.ends_with('\n') ? noted_ : line_start_;
        return true;
    }

    bool hand_on_run(std::size_t end) {
        const std::string_view bytes(window.data() + handed_, end - handed_);
        const std::size_t offset = offset_ + handed_;
        handed_ = end;
        return bytes.empty() || receive_({bytes, offset, false});
    }

    // Sets line_start_ to the start of the line in which the byte at `offset` of the file stands.
    // Only markers make lines matter: at each one they are looked for back to the one before it.
    // False when what the window no longer holds cannot be read again. Should that have changed
    // since, the pieces begin elsewhere, but never before what was handed on.
    bool note_lines(std::size_t offset) {
        const std::size_t begin = std::max(noted_, offset_);
        const std::string_view held(window.data() + (begin - offset_), offset - begin);
        if (!take_last_line(held, begin) && !note_earlier_lines(begin)) {
            return false;
        }
        noted_ = offset;
        return true;
    }

    bool note_earlier_lines(std::size_t end) {
        static std::array<char, template_read_size> block;
        while (end > noted_) {
            const std::size_t begin = end - std::min(end - noted_, block.size());
            const ssize_t count =
                ::pread(descriptor_, block.data(), end - begin, static_cast<off_t>(begin));
            if (count < 0) {
                return false;
            }
            if (take_last_line({block.data(), static_cast<std::size_t>(count)}, begin)) {
                return true;
            }
            end = begin;
        }
        return true;
    }

    // Whether a line begins in or right behind the text, which stands at `offset` of the file.
    bool take_last_line(std::string_view text, std::size_t offset) {
        const std::size_t line_feed = last_line_feed(text);
        if (line_feed == std::string_view::npos) {
            return false;
        }
        line_start_ = offset + line_feed + 1;
        return true;
    }

    // Drops what was handed on from the window.
    void slide() {
        std::memmove(window.data(), window.data() + handed_, filled_ - handed_);
        offset_ += handed_;
        filled_ -= handed_;
        searched_ -= handed_;
        handed_ = 0;
    }

    int descriptor_;
    std::string_view marker_;
    const part_receiver &receive_;
    bool has_ended_ = false;
    std::size_t offset_ = 0;     // of the window in the file
    std::size_t filled_ = 0;     // bytes in the window
    std::size_t handed_ = 0;     // end of what was handed on
    std::size_t searched_ = 0;   // end of what was searched for the marker
    std::size_t noted_ = 0;      // offset in the file up to which line_start_ is known
    std::size_t line_start_ = 0; // offset in the file of the line in which noted_ stands
};

} // namespace

walk_result walk_template(std::FILE *file, std::string_view marker, const part_receiver &receive) {
    return walk(::fileno(file), marker, receive).run();
}

void running_checksum::add(const template_part &part) {
    if (part.is_marked && part.bytes.find("||checksum=") != std::string_view::npos) {
        add_checksum_line(part.bytes, part.offset);
    } else {
        sum_ += weighted_sum(part.bytes, part.offset);
    }
}

// The number stands behind the line's first "="; it and both bars behind it are not summed.
void running_checksum::add_checksum_line(std::string_view line, std::size_t offset) {
    line.remove_prefix(line.find('=') + 1);
    const std::size_t bar = std::min(line.find('|'), line.size());
    stored_ = static_cast<std::uint32_t>(s_atoi(std::string(line.substr(0, bar)).c_str()));
    line.remove_prefix(bar);
    for (int bars = 0; bars < 2 && line.starts_with('|'); bars++) {
        line.remove_prefix(1);
    }
    sum_ += weighted_sum(line, offset);
}

int calculate(std::string_view bf, std::size_t fpos) {
    return static_cast<int>(weighted_sum(bf, fpos));
}

int do_checksum(const char *file, int compare) {
    const stream_handle stream = open_plain_file(file);
    running_checksum checksum;
    const auto add = [&](const template_part &part) {
        checksum.add(part);
        return true;
    };
    if (!stream || walk_template(stream.get(), checksum_line_start, add) != walk_result::done) {
        emsg("can't open %s, %s", file, std::strerror(errno));
        return stream && compare != 0 ? 1 : 0;
    }
    return compare != 0 ? checksum.difference() : checksum.sum();
}
