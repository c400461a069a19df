#include "work.h"

#include "core/log.h"
#include "core/paths.h"
#include "core/text.h"
#include "files/search.h"
#include "setup/answer_store.h"
#include "templates/checksum.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

constexpr std::size_t summed_bytes = 200'000 * 80; // lines of 80
constexpr int setting_count = 2000;
constexpr const char *settings_file = "settings.dat";

ini_settings settings; // a loaded store, for the look-ups

void match() {
    domatch("page417.tpl", "*.gif");
    domatch("page417.tpl", "page[0-9]*.t?l");
    domatch("a-name-with-many-parts-and-no-end-that-fits.tpl", "*a*e*p*t.gif");
}

void sum() {
    do_checksum(summed_file, 0);
}

void load() {
    ini_settings loaded;
    ini_init(&loaded, nullptr, nullptr);
    ini_load(&loaded, settings_file);
    ini_clear(&loaded);
}

void look_up() {
    ini_value(&settings, "name1", 1);
    ini_value(&settings, "name1999", 1);
    ini_value(&settings, "missing", 1);
}

void log() {
    constexpr std::string_view line = "Info:  A line of the length that lines of the log have\n";
    logit(line.data(), line.size());
}

void attach() {
    attach_path("/home/httpd/html/vlimg", "the logo of page 417.gif");
}

constexpr work pieces[] = {
    {"domatch", match, 1000, 0},      {"do_checksum", sum, 1, summed_bytes},
    {"ini_load", load, 1, 0},         {"ini_value", look_up, 1000, 0},
    {"logit", log, 2000, 0}, // the log is rotated once
    {"attach_path", attach, 1000, 0},
};

void write_summed_file() {
    std::string line;
    while (line.size() < 79) {
        line.push_back(static_cast<char>('!' + line.size()));
    }
    line.push_back('\n');
    std::ofstream file(summed_file);
    for (std::size_t written = 0; written < summed_bytes; written += line.size()) {
        file << line;
    }
}

void write_settings_file() {
    std::ofstream file(settings_file);
    for (int number = 0; number < setting_count; number++) {
        file << "name" << number << " value " << number << "\n";
    }
}

} // namespace

std::span<const work> all_work() {
    return pieces;
}

workplace::workplace() : directory_("/dev/shm/gxsetup-bench-XXXXXX") {
    if (::mkdtemp(directory_.data()) == nullptr) {
        std::perror("no scratch directory");
        std::exit(1);
    }
    std::filesystem::current_path(directory_);
    write_summed_file();
    write_settings_file();
    inilog(".", "gxsetup");
    ini_init(&settings, nullptr, nullptr);
    ini_setup(&settings, ans_values, ans_associations);
    ini_load(&settings, settings_file);
}

workplace::~workplace() {
    ini_clear(&settings);
    close_log();
    std::filesystem::current_path("/");
    std::filesystem::remove_all(directory_);
}
