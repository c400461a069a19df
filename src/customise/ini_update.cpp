#include "customise/ini_update.h"

#include "core/log.h"
#include "core/paths.h"
#include "core/stream.h"
#include "dialogue/answers.h"
#include "files/search.h"
#include "setup/answer_store.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

const INI_NAMES_INFO custom_values[] = {
    {"set", "", 1, 0},       {"body_add", "", 1, 0},   {"vlimg_dir", "", 0, 0},
    {"cgi_name", "", 0, 0},  {"cgi_path", "", 0, 0},   {"version", "", 0, 0},
    {"prod_name", "", 0, 0}, {nullptr, nullptr, 0, 0},
};

namespace {

// The settings that update_ini replaces.
constexpr INI_NAMES_INFO update_list[] = {
    {"set", "", 1, 0},
    {"body_add", "", 1, 0},
    {nullptr, nullptr, 0, 0},
};

constexpr std::string_view blanks = " \t";
constexpr std::string_view line_ends = "\r\n";
constexpr std::string_view blanks_and_line_ends = " \t\r\n";
constexpr std::string_view continuation_mark = " /";

// What the line before decides about the next line of the old .ini.
enum class next_line { begins_anew, continues_a_kept_one, continues_a_dropped_one };

// How far the copying of the old .ini has come. update_ini resets it; match_setting, whose
// arguments are fixed, finds it here.
struct copy_state {
    next_line next = next_line::begins_anew;
    bool lacks_line_end = false; // the line written last
} copying;

bool ends_in_mark(std::string_view text, std::string_view trailing) {
    return text.substr(0, text.find_last_not_of(trailing) + 1).ends_with(continuation_mark);
}

// A kept line as ini_load will read it: with the line end that it gets, up to a NUL.
std::string loaded_text(std::string_view line) {
    std::string text(line);
    if (!text.ends_with('\n')) {
        text.push_back('\n');
    }
    return text.substr(0, text.find('\0'));
}

// ini_load skips such a line, and a continued one ends there.
bool is_skipped(std::string_view text) {
    return text.size() <= 2 || text.starts_with('#');
}

bool has_text_before_mark(std::string_view text) {
    text = text.substr(0, text.rfind(continuation_mark));
    return text.find_first_not_of(blanks) != std::string_view::npos;
}

// Whether ini_load will read the line after a kept one as part of it.
bool goes_on(std::string_view line, bool continues_another) {
    const std::string text = loaded_text(line);
    // Blanks and a mark begin no setting: the next line begins it.
    const bool belongs_to_a_setting = continues_another || has_text_before_mark(text);
    return belongs_to_a_setting && !is_skipped(text) && ends_in_mark(text, line_ends);
}

void write_text(std::FILE *file, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), file);
}

void keep_line(std::FILE *file, std::string_view line) {
    write_text(file, line);
    const bool continues_another = copying.next == next_line::continues_a_kept_one;
    copying.next =
        goes_on(line, continues_another) ? next_line::continues_a_kept_one : next_line::begins_anew;
    copying.lacks_line_end = !line.ends_with('\n');
}

// What is written next did not follow the last line in the old file: it gets a line of its own.
void write_missing_line_end(std::FILE *file) {
    if (copying.lacks_line_end) {
        write_text(file, "\n");
        copying.lacks_line_end = false;
    }
}

// Copies the lines that belong to none of the names of `update`. Returns false if the old file
// could not be read.
bool keep_other_lines(std::FILE *old_file, std::FILE *new_file, pINI_SETTINGS update) {
    std::array<char, setting_piece_size> piece{};
    for (std::string_view line = read_piece(old_file, piece); !line.empty();
         line = read_piece(old_file, piece)) {
        if (copying.next == next_line::continues_a_kept_one ||
            match_setting(piece.data(), update) == 0) {
            keep_line(new_file, line);
        } else {
            write_missing_line_end(new_file);
        }
    }
    return std::ferror(old_file) == 0;
}

void add_settings(std::FILE *file, pINI_SETTINGS update) {
    if (ini_number(update) == 0) {
        return;
    }
    write_missing_line_end(file);
    if (copying.next == next_line::continues_a_kept_one) {
        // An empty line ends the kept setting, or the first new one would be read as part of it.
        write_text(file, "\n");
    }
    ini_start(update);
    while (const char *name = ini_get(update)) {
        write_setting(file, formatted("%s %s", name, ini_get(update)).c_str());
    }
}

stream_handle open_old_ini(const std::string &path) {
    if (path.size() > path_limit) {
        errno = ENAMETOOLONG;
        return nullptr;
    }
    return open_plain_file(path.c_str());
}

// Prints and logs which step failed on which file, and errno. Returns 0.
int update_failed(const char *step, const std::string &path) {
    const int error = errno;
    print_emsg("Cannot %s file %s, %s", step, shown_path(path.c_str(), error).c_str(),
               std::strerror(error));
    return 0;
}

} // namespace

scoped_store::scoped_store(const INI_NAMES_INFO *names) : store_() {
    ini_init(&store_, emsg, dmsg);
    ini_setup(&store_, names, nullptr);
}

void load_values(pINI_SETTINGS src, pINI_SETTINGS dst) {
    for (const INI_NAMES_INFO *entry = dst->ini_names; entry->name != nullptr; entry++) {
        for (const char *value = ini_value(src, entry->name, 1); value != nullptr;
             value = ini_next_value(src, entry->name)) {
            ini_add(dst, entry->name, value);
        }
    }
}

int update_values(pINI_SETTINGS settings, const char *label, const char *mode, LINK_LIST *text) {
    if (label == nullptr || text == nullptr || list_num(text) == 0) {
        return 0;
    }
    // Copies: replacing the values frees what the store returned.
    std::vector<std::string> values;
    list_start(text);
    while (const auto *added = static_cast<const char *>(list_get(text))) {
        if (mode == nullptr) {
            values.emplace_back(added);
            continue;
        }
        for (const char *value = ini_value(settings, label, 0); value != nullptr;
             value = ini_next_value(settings, label)) {
            if (first_word(value) != mode) {
                values.emplace_back(value);
            }
        }
        values.push_back(formatted("%s %s", mode, added));
    }
    ini_remove_all(settings, label);
    for (const std::string &value : values) {
        ini_add(settings, label, value.c_str());
    }
    return 1;
}

std::string_view first_word(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_first_of(blanks));
}

const char *get_set(const char *text) {
    if (*text == '\0') {
        return text;
    }
    const char *blank = std::strrchr(text, ' ');
    return (blank != nullptr ? blank : text) + 1;
}

int dflt_val(const char *text) {
    if (text == nullptr || *text == '\0') {
        return -1;
    }
    const std::string_view word(text);
    if (word == "TRUE" || word == "up") {
        return 1;
    }
    if (word == "FALSE" || word == "left") {
        return 0;
    }
    return std::isdigit(static_cast<unsigned char>(word.back())) != 0 ? s_atoi(text) : -1;
}

const char *give_dflt(int value) {
    return value != 0 ? "YES" : "NO";
}

int update_ini(pINI_SETTINGS settings) {
    scoped_store update(update_list);
    load_values(settings, update.get());
    const char *directory = ini_value_num(settings, D_CGI_PATH);
    const std::string stem =
        path_in(directory != nullptr ? directory : "(null)", ini_value_num(settings, D_CGI_NAME));
    const std::string old_path = stem + ".ini";
    const std::string new_path = stem + ".new";

    const stream_handle old_file = open_old_ini(old_path);
    if (!old_file) {
        return update_failed("find", old_path);
    }
    replacement_file new_file(old_path.c_str(), new_path.c_str());
    if (new_file.stream() == nullptr) {
        return update_failed("find", new_path);
    }
    copying = {};
    if (!keep_other_lines(old_file.get(), new_file.stream(), update.get())) {
        return update_failed("read", old_path);
    }
    add_settings(new_file.stream(), update.get());
    return new_file.commit() ? 1 : update_failed("write", new_path);
}

int write_setting(std::FILE *file, const char *text) {
    constexpr std::size_t longest_last_piece = 256;
    constexpr std::size_t piece_length = 255;
    std::string_view rest(text);
    while (rest.size() > longest_last_piece) {
        write_text(file, rest.substr(0, piece_length));
        write_text(file, " /\n");
        rest.remove_prefix(piece_length);
    }
    write_text(file, rest);
    write_text(file, "\n");
    return 1;
}

int match_setting(const char *text, pINI_SETTINGS settings) {
    if (copying.next != next_line::continues_a_dropped_one && is_set(text, settings) == 0) {
        return 0;
    }
    copying.next = ends_in_mark(text, blanks_and_line_ends) ? next_line::continues_a_dropped_one
                                                            : next_line::begins_anew;
    return 1;
}

int is_set(const char *text, pINI_SETTINGS settings) {
    const char *line = strip_leading_spaces(text);
    for (const INI_NAMES_INFO *entry = settings->ini_names; entry->name != nullptr; entry++) {
        if (s_strncmp(line, entry->name, std::strlen(entry->name)) == 0) {
            return 1;
        }
    }
    return 0;
}
