#include "core/stream.h"
#include "settings/store.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view blanks = " \t";

// Strips the line end. Returns true, and strips " /" as well, if the next line continues this one.
bool strip_continuation(std::string_view &line) {
    line = line.substr(0, line.find_last_not_of("\r\n") + 1);
    const bool goes_on = line.ends_with(" /");
    if (goes_on) {
        line.remove_suffix(2);
    }
    return goes_on;
}

// Adds a logical line. Returns false if it is no setting or could not be added.
bool add_setting(pINI_SETTINGS ini, std::string &line) {
    const std::size_t separator = line.find_first_of(blanks);
    if (separator == std::string::npos) {
        return false;
    }
    line[separator] = '\0';
    const char *name = line.c_str();
    const char *value = name + separator + 1;
    if (ini_add(ini, name, value) == 0) {
        ini_emsg(ini, "Error in adding ini setting in ini_load {%s=%s}", name, value);
        return false;
    }
    return true;
}

constexpr const char *opening = "opened for ini settings";

// Logs what could not be done with a file. Returns 0 and leaves errno as it was.
int log_failure(pINI_SETTINGS ini, const char *filename, const char *step,
                const char *reason = "") {
    const int error = errno;
    ini_emsg(ini, "file {%s} could not be %s%s", filename, step, reason);
    errno = error;
    return 0;
}

// Reads the logical lines of an open file. Returns false, with errno set, if a read fails or the
// file grows past the limit while it is read.
bool read_logical_lines(std::FILE *file, std::vector<std::string> &lines) {
    std::string logical_line;
    const auto finish_line = [&] {
        if (!logical_line.empty()) {
            lines.push_back(std::move(logical_line));
        }
        logical_line.clear();
    };
    std::array<char, setting_piece_size> piece{};
    off_t size = 0;
    for (std::string_view bytes = read_piece(file, piece); !bytes.empty();
         bytes = read_piece(file, piece)) {
        size += static_cast<off_t>(bytes.size());
        if (size > settings_limit.bytes) {
            errno = EFBIG;
            return false;
        }
        std::string_view line(piece.data()); // up to the first NUL
        // Neither is a setting, and either ends one that would be continued.
        if (line.size() <= 2 || line.starts_with('#')) {
            finish_line();
            continue;
        }
        const bool goes_on = strip_continuation(line);
        logical_line.append(line.substr(std::min(line.find_first_not_of(blanks), line.size())));
        if (!goes_on) {
            finish_line();
        }
    }
    finish_line();
    return std::ferror(file) == 0;
}

} // namespace

open_file open_settings(const named_place &where) {
    return where.directory.open_plain(where.name.c_str(), settings_limit);
}

int ini_load(pINI_SETTINGS ini, const char *filename) {
    return ini_load_opened(ini, filename, open_settings(locate(filename)));
}

int ini_load_opened(pINI_SETTINGS ini, const char *filename, open_file opened) {
    const int error = errno;
    // 0 means that there is no store.
    if (ini_dmsg(ini, "Opening {%s}", filename) == 0) {
        return 0;
    }
    errno = error;
    const stream_handle file = stream_of(opened.descriptor.release(), "r");
    if (!file) {
        return log_failure(ini, filename, opening);
    }
    try {
        std::vector<std::string> lines;
        if (!read_logical_lines(file.get(), lines)) {
            return log_failure(ini, filename, "read: ", std::strerror(errno));
        }
        int count = 1; // a file without settings is no failure
        for (std::string &line : lines) {
            count += add_setting(ini, line) ? 1 : 0;
        }
        return count;
    } catch (const std::bad_alloc &) {
        ini_emsg(ini, "Memory Allocation Error in ini_load");
        return 0;
    }
}

int ini_save(pINI_SETTINGS ini, const char *filename, const char *written_by) {
    return ini_save_limited(ini, filename, written_by, all_mode_bits);
}

int ini_save_limited(pINI_SETTINGS ini, const char *filename, const char *written_by, mode_t most) {
    if (ini_start(ini) == 0) {
        return 0;
    }
    replacement_file file(filename, nullptr, most);
    if (file.stream() == nullptr) {
        return log_failure(ini, filename, opening);
    }
    format_file(file.stream(), "# file written by %s%s", written_by, "\n");
    format_file(file.stream(), "# library: %s%s%s", ini_library, "\n", "\n");
    format_file(file.stream(), "# Lines starting with # are comments%s%s", "\n", "\n");
    int count = 1; // nor is a store without settings
    while (const char *name = ini_get(ini)) {
        format_file(file.stream(), "%s %s%s", name, ini_get(ini), "\n");
        count++;
    }
    if (!file.commit()) {
        return log_failure(ini, filename, "written: ", std::strerror(errno));
    }
    return count;
}
