// What the tests of templates share: the rule of the checksum, worked out byte by byte in ways of
// its own, and a distribution's files, and random ones.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// The pieces of a file: each line in parts of at most 511 characters, line feeds included.
inline std::vector<std::string> pieces_of(std::string_view content) {
    std::vector<std::string> pieces;
    bool is_open = false;
    for (const char character : content) {
        if (!is_open) {
            pieces.emplace_back();
        }
        pieces.back() += character;
        is_open = character != '\n' && pieces.back().size() < 511;
    }
    return pieces;
}

// What `text` adds to a checksum when it stands at `offset`. Weights are 1, 2 and 4 in turn.
inline std::uint32_t expected_part(std::string_view text, std::size_t offset) {
    std::uint64_t sum = 0;
    for (std::size_t at = 0; at < text.size(); at++) {
        const std::uint64_t weight = (offset + at) % 3 == 0 ? 1 : (offset + at) % 3 == 1 ? 2 : 4;
        const auto value = static_cast<unsigned char>(text[at]);
        sum += value == 10 || value == 13 ? 0 : weight * value;
    }
    return static_cast<std::uint32_t>(sum % 0x1'0000'0000U);
}

// The checksum of a whole file; `stored` takes the number of its checksum line.
inline int expected_checksum(std::string_view content, int *stored = nullptr) {
    std::uint32_t sum = 0;
    std::size_t offset = 0;
    for (const std::string &piece : pieces_of(content)) {
        std::string summed = piece;
        if (piece.find("||checksum=") != std::string::npos) {
            const std::size_t number = piece.find('=') + 1;
            const std::size_t bar = piece.find('|', number);
            if (stored != nullptr) {
                *stored = static_cast<int>(std::clamp(
                    std::strtol(piece.c_str() + number, nullptr, 10), -2147483648L, 2147483647L));
            }
            summed = bar == std::string::npos ? "" : piece.substr(bar + 1);
            if (!summed.empty() && summed[0] == '|') {
                summed.erase(0, 1);
            }
        }
        sum += expected_part(summed, offset);
        offset += piece.size();
    }
    return static_cast<int>(sum);
}

// `content` less the pieces that begin with `start`.
inline std::string without_pieces(std::string_view content, std::string_view start) {
    std::string rest;
    for (const std::string &piece : pieces_of(content)) {
        if (piece.rfind(start, 0) != 0) {
            rest += piece;
        }
    }
    return rest;
}

// What the checksum mode makes of a template.
inline std::string expected_stamped(std::string_view content) {
    return without_pieces(content, "||checksu") +
           "\n||checksum=" + std::to_string(expected_checksum(content)) + "||\n";
}

// Random pieces that mean something in a template, or nearly do, the first ones in most files, with
// fewer than `distance` characters behind each. Ends with the first that reaches a random length
// below `size`.
inline std::string random_file(std::mt19937 &random, std::size_t size, std::size_t distance) {
    // clang-format off
    const std::string pieces[] = {
        "\n", "||header:", "||checksum=12", "||", "\r\n", "|", "=", "||checksu",
        "||checksum=-99||\n", "abc", "\xff", std::string(1, '\0'), "||checksum=12||",
        std::string(200, 'q')};
    // clang-format on
    const std::size_t kinds = 2 + random() % (std::size(pieces) - 1);
    const std::size_t enough = random() % size;
    std::string content;
    while (content.size() < enough) {
        content += pieces[random() % kinds];
        content.append(random() % distance, 'x');
    }
    return content;
}

// A large file of equal lines.
struct large_template {
    std::string content;
    std::uint32_t sum; // its checksum
};

// Some 64 MB in lines of `line` characters. Three lines weigh the same wherever they stand.
inline large_template make_large_template(std::size_t line) {
    std::string three_lines;
    for (int count = 0; count < 3; count++) {
        three_lines.append(line - 1, static_cast<char>('a' + count)).append("\n");
    }
    const std::size_t times = (std::size_t{64} << 20U) / three_lines.size() + 1;
    std::string content;
    content.reserve(times * three_lines.size() + 100);
    for (std::size_t count = 0; count < times; count++) {
        content += three_lines;
    }
    const std::uint64_t sum = std::uint64_t{expected_part(three_lines, 0)} * times;
    return {content, static_cast<std::uint32_t>(sum % 0x1'0000'0000U)};
}
