// The checksum reader and the checksum mode. The input is a template; a byte before it says how
// often its text is repeated (now and then very often, so that small inputs make files of many
// blocks). Promised: the sum and the stored number are those of the rule worked out piece by piece;
// a stamped file holds what the rule says and nothing is left beside it.
#include "support.h"

#include "templates/checksum.h"
#include "templates/stamp.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

namespace {

struct by_the_rule {
    std::uint32_t sum = 0;
    std::uint32_t stored = 0;
    std::string stamped;
};

void add_part(by_the_rule &result, std::string_view text, std::size_t offset) {
    for (const char character : text) {
        if (character != '\n' && character != '\r') {
            const std::uint32_t value = static_cast<unsigned char>(character);
            result.sum += value << offset % 3;
        }
        offset++;
    }
}

by_the_rule work_out(std::string_view content) {
    by_the_rule result;
    std::size_t offset = 0;
    while (offset < content.size()) {
        std::string_view piece = content.substr(offset, 511);
        piece = piece.substr(0, std::min(piece.find('\n'), piece.size() - 1) + 1);
        if (piece.find("||checksum=") == std::string_view::npos) {
            add_part(result, piece, offset);
        } else {
            const std::string number(piece.substr(piece.find('=') + 1));
            const std::size_t bar = std::min(number.find('|'), number.size());
            const long stored = std::strtol(number.substr(0, bar).c_str(), nullptr, 10);
            result.stored = static_cast<std::uint32_t>(
                std::clamp<long>(stored, std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max()));
            const std::size_t bars = number.compare(bar, 2, "||") == 0 ? 2 : 1;
            add_part(result, std::string_view(number).substr(std::min(bar + bars, number.size())),
                     offset);
        }
        if (!piece.starts_with("||checksu")) {
            result.stamped += piece;
        }
        offset += piece.size();
    }
    result.stamped +=
        "\n||checksum=" + std::to_string(static_cast<std::int32_t>(result.sum)) + "||\n";
    return result;
}

void stamp() {
    write_scratch_file("answers", std::filesystem::current_path().string() + "/tpl\n");
    require(std::freopen("answers", "r", stdin) != nullptr, "the answers can be read");
    require(add_checksum() == 1, "there is a template to stamp");
}

std::string content_of(const char *name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    enter_scratch_folder();
    std::filesystem::create_directory("tpl");
    static const bool is_silent = std::freopen("/dev/null", "w", stdout) != nullptr;
    require(is_silent, "the console can be silenced");
    fuzz_input input(data, size);
    const unsigned often = input.byte();
    const unsigned times = often < 0xf0 ? often % 4 + 1 : often % 16 * 16 + 16;
    const std::string text = input.rest();
    std::string content;
    for (unsigned count = 0; count < times; count++) {
        content += text;
    }
    write_scratch_file("tpl/a.tpl", content);

    const by_the_rule expected = work_out(content);
    require(do_checksum("tpl/a.tpl", 0) == static_cast<int>(expected.sum), "the sum");
    require(do_checksum("tpl/a.tpl", 1) == static_cast<int>(expected.sum - expected.stored),
            "the sum less the stored number");
    stamp();
    require(content_of("tpl/a.tpl") == expected.stamped, "the stamped file");
    require(!std::filesystem::exists("tpl/temp.tpl"), "the scratch file is gone");
    return 0;
}
