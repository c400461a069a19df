// The settings file. The input is the file. Promised: what was loaded and can be written
// faithfully, loads again as the same settings in the same order; the counts are the settings'.
#include "support.h"

#include "core/log.h"
#include "settings/store.h"

#include <cstdarg>
#include <utility>
#include <vector>

namespace {

using settings = std::vector<std::pair<std::string, std::string>>;

constexpr INI_NAMES_INFO names[] = {
    {"cgi_path", nullptr, 0, 0}, {"set", nullptr, 1, 0},   {"password", nullptr, 0, 1},
    {"s", nullptr, 1, 1},        {nullptr, nullptr, 0, 0},
};

// Reads each message as the format that it is handed over as.
int receive(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    path_text text;
    text.vformat(format, arguments);
    va_end(arguments);
    return text.empty() ? 0 : 1;
}

class store {
  public:
    store() {
        ini_init(&ini_, receive, receive);
        ini_setup(&ini_, names, nullptr);
    }
    ~store() { ini_clear(&ini_); }
    store(const store &) = delete;
    store &operator=(const store &) = delete;

    pINI_SETTINGS get() { return &ini_; }

    settings all() {
        settings result;
        ini_start(&ini_);
        while (const char *name = ini_get(&ini_)) {
            const char *value = ini_get(&ini_);
            require(value != nullptr, "every name has a value");
            result.emplace_back(name, value);
        }
        require(ini_number(&ini_) == static_cast<int>(2 * result.size()), "the items are counted");
        return result;
    }

  private:
    INI_SETTINGS ini_{};
};

// Whether a written setting reads as itself: on one line, in one piece, not as a comment, and not
// going on on the next line.
bool is_faithful(const std::string &name, const std::string &value) {
    constexpr std::size_t piece = 510;
    const std::string line = name + " " + value;
    return line.size() + 1 <= piece && !line.starts_with('#') && !line.ends_with('\r') &&
           line.find('\n') == std::string::npos && !line.ends_with(" /");
}

void check_lookups(store &loaded, const settings &all) {
    for (const auto &[name, value] : all) {
        const char *first = ini_value(loaded.get(), name.c_str(), 1);
        require(first != nullptr && *first != '\0', "every setting is found");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    enter_scratch_folder();
    fuzz_input input(data, size);
    write_scratch_file("read.ini", input.rest());

    store loaded;
    require(ini_load(loaded.get(), "read.ini") >= 1, "an existing file loads");
    const settings all = loaded.all();
    check_lookups(loaded, all);

    const int written = ini_save(loaded.get(), "written.ini", "%s%n%d%%");
    require(written == static_cast<int>(all.size()) + 1, "every setting is written");
    for (const auto &[name, value] : all) {
        if (!is_faithful(name, value)) {
            return 0;
        }
    }
    store again;
    require(ini_load(again.get(), "written.ini") == written, "as many are read as were written");
    require(again.all() == all, "what was written loads as it was");
    return 0;
}
