#include "unattended/named_answers.h"

#include "core/format.h"
#include "core/place.h"
#include "core/stream.h"
#include "settings/store.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::size_t piece_size = 512;
constexpr std::size_t longest_line = 509; // of a settings file, its end left out
constexpr std::size_t longest_value = path_text::capacity;

// Which names take many values in a file.
constexpr INI_NAMES_INFO many_values[] = {{list_of_hosts.data(), nullptr, 1, 0},
                                          {nullptr, nullptr, 0, 0}};

// The settings of one file, freed with it.
class file_settings {
  public:
    file_settings() {
        ini_init(&store_, nullptr, nullptr);
        ini_setup(&store_, many_values, nullptr);
    }
    ~file_settings() { ini_clear(&store_); }
    file_settings(const file_settings &) = delete;
    file_settings &operator=(const file_settings &) = delete;

    [[nodiscard]] pINI_SETTINGS get() { return &store_; }

  private:
    INI_SETTINGS store_{};
};

bool is_question(std::string_view name) {
    return name == list_of_hosts ||
           std::any_of(quest_pool.begin(), quest_pool.end(), [name](const QUESTIONS &row) {
               return row.name == name && !is_answered_by_action(row);
           });
}

// What is wrong with an answer, whatever the question; "" if nothing.
std::string fault_of(std::string_view name, std::string_view value) {
    if (!is_question(name)) {
        return "no question has this name";
    }
    if (value.find_first_not_of(" \t") == std::string_view::npos) {
        return "no value is given";
    }
    if (value.size() > longest_value) {
        return formatted("the value has more than %u characters",
                         static_cast<unsigned>(longest_value));
    }
    if (value.find_first_of("\r\n") != std::string_view::npos) {
        return "the value has more than one line";
    }
    if (value == "q" || value == "Q" || value == "?") {
        return formatted("%s is a request to the wizard and no answer", std::string(value).c_str());
    }
    if (name == list_of_hosts && value == ".") {
        return ". ends the list and is no host";
    }
    return {};
}

std::string with_name(std::string_view name, const std::string &fault) {
    return fault.empty() ? fault : std::string(name) + ": " + fault;
}

// Whether a line of a settings file, its end left out, has no value. One that goes on from the line
// before needs none.
bool lacks_value(std::string_view line, bool goes_on) {
    const std::size_t name = line.find_first_not_of(" \t");
    if (goes_on || name == std::string_view::npos || line.front() == '#') {
        return false;
    }
    const std::size_t separator = line.find_first_of(" \t", name);
    return separator == std::string_view::npos || separator + 1 == line.size();
}

// What loading would pass over or cut in a file; "" if nothing.
std::string fault_of_lines(std::FILE *file) {
    std::array<char, piece_size> piece{};
    bool goes_on = false;
    unsigned number = 1;
    for (std::string_view line = read_piece(file, piece); !line.empty();
         line = read_piece(file, piece)) {
        line = line.substr(0, line.find_last_not_of("\r\n") + 1);
        if (line.find('\0') != std::string_view::npos) {
            return formatted("line %u has a NUL byte", number);
        }
        if (line.size() > longest_line) {
            return formatted("line %u has more than %u characters", number,
                             static_cast<unsigned>(longest_line));
        }
        if (lacks_value(line, goes_on)) {
            return formatted("line %u has no value", number);
        }
        goes_on = line.ends_with(" /") && line.front() != '#';
        number++;
    }
    return std::ferror(file) != 0 ? std::strerror(errno) : std::string();
}

// Why an open file is not to be trusted; "" if it is.
std::string fault_of_owner(const struct stat &status) {
    constexpr mode_t writable_by_others = 022;
    if (status.st_uid != 0 && status.st_uid != ::geteuid()) {
        return "it belongs to another user";
    }
    return (status.st_mode & writable_by_others) != 0 ? "others may write it" : "";
}

// What is wrong with a file of answers that was opened to be loaded; "" if nothing. Leaves the file
// at its beginning.
std::string fault_of_file(const open_file &file) {
    if (!file.is_open()) {
        return std::strerror(errno);
    }
    std::string fault = fault_of_owner(file.status);
    if (fault.empty()) {
        const stream_handle stream = stream_of(::dup(file.descriptor.number()), "r");
        fault = stream ? fault_of_lines(stream.get()) : std::strerror(errno);
        ::lseek(file.descriptor.number(), 0, SEEK_SET);
    }
    return fault;
}

// Adds the answers of a file. Returns what is wrong with it.
std::string read_file(const std::string &path, named_answers &answers) {
    open_file file = open_settings(locate(path));
    std::string fault = fault_of_file(file);
    if (!fault.empty()) {
        return fault;
    }
    file_settings settings;
    if (ini_load_opened(settings.get(), path.c_str(), std::move(file)) == 0) {
        return std::strerror(errno);
    }
    named_answers found;
    ini_start(settings.get());
    while (const char *name = ini_get(settings.get())) {
        const char *value = ini_get(settings.get());
        fault = with_name(name, fault_of(name, value));
        if (!fault.empty()) {
            return fault;
        }
        found[name].emplace_back(value);
    }
    for (auto &[name, values] : found) {
        answers[name] = std::move(values);
    }
    return {};
}

// Where the value of NAME=VALUE begins; npos for a FILE, which may hold a "=" after a "/".
std::size_t value_in(std::string_view given) {
    const std::size_t equals = given.find('=');
    return equals == std::string_view::npos || given.substr(0, equals).find('/') < equals
               ? std::string_view::npos
               : equals + 1;
}

} // namespace

bool is_answered_by_action(const QUESTIONS &row) {
    constexpr std::array answered = {I_MENU_Q, YN_CHANS_Q, YN_SWITCHU_Q, I_SWITCHI_Q};
    return std::find(answered.begin(), answered.end(), row.quest_num) != answered.end();
}

std::string read_answers(const std::vector<std::string> &given, named_answers &answers) {
    named_answers typed;
    for (const std::string &one : given) {
        const std::size_t value = value_in(one);
        if (value == std::string::npos) {
            std::string fault = with_name(one, read_file(one, answers));
            if (!fault.empty()) {
                return fault;
            }
            continue;
        }
        const std::string name = one.substr(0, value - 1);
        const std::string fault = fault_of(name, one.substr(value));
        if (!fault.empty()) {
            return with_name(name, fault);
        }
        std::vector<std::string> &values = typed[name];
        if (name != list_of_hosts) {
            values.clear();
        }
        values.push_back(one.substr(value));
    }
    for (auto &[name, values] : typed) {
        answers[name] = std::move(values);
    }
    return {};
}

const std::string *answer_named(const named_answers &answers, std::string_view name) {
    const auto found = answers.find(name);
    return found == answers.end() ? nullptr : &found->second.back();
}
