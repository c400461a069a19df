// The rewriting of a product's .ini. The input holds the new settings, one a line (the first byte
// chooses the name), up to a NUL; what is left is the old file. Promised: a second rewriting
// changes nothing; settings that can be written faithfully load as they are, whatever file they
// stand in, at most behind old ones whose name is spelt across two lines; and where no line goes on
// on the next, they are all there is and every other setting loads as before.
#include "support.h"

#include "core/stream.h"
#include "customise/ini_update.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>
#include <vector>

namespace {

using texts = std::vector<std::string>;
using settings = std::vector<std::pair<std::string, std::string>>;

constexpr const char *ini_path = "(null)/x.ini";

struct new_values {
    texts set;
    texts body_add;
};

new_values read_new_values(const std::string &text) {
    new_values result;
    fuzz_input lines(reinterpret_cast<const std::uint8_t *>(text.data()), text.size());
    while (!lines.empty()) {
        const bool is_set = lines.byte() % 2 == 0;
        const std::string value = lines.line();
        if (!value.empty()) {
            (is_set ? result.set : result.body_add).push_back(value);
        }
    }
    return result;
}

// Whether a setting, broken into its pieces, is joined again as it was: no piece but the first
// begins with a blank, which would be dropped, or as a comment, and the last does not go on.
bool is_faithful(std::string line) {
    constexpr std::size_t longest_last = 256;
    constexpr std::size_t piece = 255;
    if (line.ends_with('\r') || line.ends_with(" /")) {
        return false;
    }
    while (line.size() > longest_last) {
        line.erase(0, piece);
        if (std::string_view(" \t#").find(line.front()) != std::string_view::npos) {
            return false;
        }
    }
    return line != "/";
}

bool is_faithful(const new_values &values) {
    for (const std::string &value : values.set) {
        if (!is_faithful("set " + value)) {
            return false;
        }
    }
    for (const std::string &value : values.body_add) {
        if (!is_faithful("body_add " + value)) {
            return false;
        }
    }
    return true;
}

bool ends_with(const texts &all, const texts &last) {
    return all.size() >= last.size() && std::equal(last.rbegin(), last.rend(), all.rbegin());
}

std::string content_of(const char *path) {
    const stream_handle file = open_plain_file(path);
    require(file != nullptr, "the .ini is there");
    std::string content;
    std::array<char, 4096> piece{};
    for (std::string_view read = read_piece(file.get(), piece); !read.empty();
         read = read_piece(file.get(), piece)) {
        content.append(read);
    }
    return content;
}

void rewrite(const new_values &values) {
    scoped_store store(custom_values);
    ini_add(store.get(), "prod_name", "x");
    for (const std::string &value : values.set) {
        ini_add(store.get(), "set", value.c_str());
    }
    for (const std::string &value : values.body_add) {
        ini_add(store.get(), "body_add", value.c_str());
    }
    require(update_ini(store.get()) == 1, "the .ini is rewritten");
    require(!std::filesystem::exists("(null)/x.new"), "no file is left beside it");
}

// The settings of the .ini: the replaced names' values, and the others in their order.
struct loaded_settings {
    new_values replaced;
    settings others;
};

loaded_settings load() {
    scoped_store store(custom_values);
    require(ini_load(store.get(), ini_path) >= 1, "the .ini loads");
    loaded_settings result;
    ini_start(store.get());
    while (const char *name = ini_get(store.get())) {
        const char *value = ini_get(store.get());
        if (std::string_view(name) == "set") {
            result.replaced.set.emplace_back(value);
        } else if (std::string_view(name) == "body_add") {
            result.replaced.body_add.emplace_back(value);
        } else if (!std::string_view(name).starts_with("set") &&
                   !std::string_view(name).starts_with("body_add")) {
            result.others.emplace_back(name, value);
        }
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    enter_scratch_folder();
    std::filesystem::create_directory("(null)");
    fuzz_input input(data, size);
    const new_values values = read_new_values(input.text());
    const std::string old_ini = input.rest();
    write_scratch_file(ini_path, old_ini);
    const loaded_settings before = load();

    rewrite(values);
    const std::string once = content_of(ini_path);
    const loaded_settings after = load();
    rewrite(values);

    require(content_of(ini_path) == once, "a second rewriting changes nothing");
    if (is_faithful(values)) {
        require(ends_with(after.replaced.set, values.set), "the set values load as they are");
        require(ends_with(after.replaced.body_add, values.body_add), "the footer loads as it is");
        if (old_ini.find(" /") == std::string::npos) {
            require(after.replaced.set == values.set, "no old set value is left");
            require(after.replaced.body_add == values.body_add, "no old footer line is left");
            require(after.others == before.others, "every other setting loads as before");
        }
    }
    return 0;
}
