#include "core/log.h"

#include "core/console.h"
#include "core/failures.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/place.h"
#include "core/stream.h"
#include "core/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t line_size = 1024;
constexpr std::size_t newline_limit = 511; // a line this long gets no line feed of its own
constexpr std::size_t rotation_limit = 100000;
constexpr std::size_t stamp_length = 12;
constexpr std::size_t ctime_size = 26; // POSIX ctime_r
constexpr int generations = 2;         // NAME1.log and NAME2.log

using line_text = bounded_text<line_size>;

struct log_state {
    int loglvl = LOG_ERROR;
    stream_handle logf;
    path_text logname;
    path_text logfile;
    bool unloged = false; // a message had to open the log by itself
    bool rotating = false;
    bool is_kept = true; // cleared by keep_no_log
    std::size_t logged_bytes = 0;
};

// The log of the run. inilog names and opens it; a message before that opens init.log.
log_state state;

// Each message goes out in one write of its own, so that nothing is lost when the program is
// killed and a full disk shows at once.
bool open_log(stream_handle file) {
    state.logf = std::move(file);
    if (state.logf) {
        std::setvbuf(state.logf.get(), nullptr, _IONBF, 0);
    }
    return state.logf != nullptr;
}

bool open_log_lazily() {
    if (state.logfile.empty()) {
        state.logfile.assign("init.log");
    }
    if (!open_log(open_to_append(state.logfile.c_str()))) {
        print("Cant open logfile %s\n", state.logfile.c_str());
        return false;
    }
    // What an earlier run logged counts towards the next rotation. (A log that inilog opens is
    // rotated at once.)
    std::fseek(state.logf.get(), 0, SEEK_END);
    state.logged_bytes = static_cast<std::size_t>(std::max(0L, std::ftell(state.logf.get())));
    state.unloged = true;
    return true;
}

// Returns the day of the month and the time, cut out of "Sat Nov 21 23:37:02 2026" (ctime, ISO C).
std::string time_stamp() {
    std::array<char, ctime_size> text{};
    const std::time_t now = std::time(nullptr);
    if (::ctime_r(&now, text.data()) == nullptr) {
        return std::string(stamp_length, ' ');
    }
    return {text.data() + 8, stamp_length};
}

void end_line(line_text &line) {
    if (!line.view().ends_with('\n') && line.view().size() < newline_limit) {
        line.append("\n");
    }
}

int log_line(int level, const char *prefix, const char *format, std::va_list arguments) {
    if (state.loglvl < level) {
        return 0;
    }
    line_text text;
    text.vformat(format, arguments);
    line_text line(prefix);
    line.append(text.view());
    end_line(line);
    return logit(line.c_str(), line.view().size());
}

// Returns the name of a generation of the log in the current directory; 0 is the log itself.
path_text generation(int number) {
    path_text name;
    return number == 0 ? name.format("%s.log", state.logname.c_str())
                       : name.format("%s%d.log", state.logname.c_str(), number);
}

path_text shown_generation(int number) {
    return path_text(path_in(".", generation(number).c_str()));
}

// Prints a message and a line feed. Returns the message for the log, where its arguments are
// unfiltered.
std::string print_message(const char *msg, std::va_list arguments) {
    const path_text shown(vformatted(msg, arguments, as_shown));
    print_lines(shown.view());
    print("\n");
    const path_text logged(vformatted(msg, arguments));
    return format_without_arguments(logged.view());
}

} // namespace

int inilog(const char *path, const char *s) {
    close_log();
    state.logname.assign(s);
    state.logfile.assign(path_in(path, generation(0).c_str()));
    if (!open_log(open_to_append(state.logfile.c_str()))) {
        return 0;
    }
    tell_refusals(emsg); // core/place cannot log: it is used by the log
    if (state.unloged) {
        emsg("Errors logged before inilog called see init.log");
        state.unloged = false;
    }
    return 1;
}

void close_log() {
    state.logf.reset();
}

int get_loglvl() {
    return state.loglvl;
}

void set_loglvl(int level) {
    if (level >= 0) {
        state.loglvl = level;
    }
}

const char *get_loglvl_name(int level) {
    return level >= LOG_ERROR && level <= LOG_DEBUG ? log_names[level] : nullptr;
}

int get_loglvl_id(const char *name) {
    for (int level = LOG_ERROR; level <= LOG_DEBUG; level++) {
        if (s_strcmp(name, log_names[level]) == 0) {
            return level;
        }
    }
    return -1;
}

void keep_no_log() {
    state.is_kept = false;
}

int emsg(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int written = log_line(LOG_ERROR, "Error: ", format, arguments);
    va_end(arguments);
    return written;
}

int imsg(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int written = log_line(LOG_INFO, "Info:  ", format, arguments);
    va_end(arguments);
    return written;
}

int dmsg(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int written = log_line(LOG_DEBUG, "Debug: ", format, arguments);
    va_end(arguments);
    return written;
}

int filemsg(const char *format, ...) {
    const int error = errno;
    std::va_list arguments;
    va_start(arguments, format);
    path_text text;
    text.vformat(format, arguments);
    va_end(arguments);
    path_text message;
    message.format("Error: %s(%s)", text.c_str(), std::strerror(error));
    line_text line(message.c_str());
    end_line(line);
    return logit(line.c_str(), line.view().size());
}

int logit(const char *output, std::size_t len) {
    if (!state.is_kept) {
        return 0;
    }
    // Required: the limit is tested without the time stamp, which the count includes.
    if (state.logged_bytes + len > rotation_limit && !state.rotating) {
        rotate_logs();
    }
    if (!state.logf && !open_log_lazily()) {
        return 0;
    }
    const std::string line = time_stamp().append(output, len);
    if (std::fwrite(line.data(), 1, line.size(), state.logf.get()) != line.size()) {
        print("Error printing to log file\n");
        return 0;
    }
    state.logged_bytes += line.size();
    return static_cast<int>(len);
}

int rotate_logs() {
    // Messages logged during a rotation do not rotate. Required: it happens in the current
    // directory, wherever the log was opened.
    state.rotating = true;
    bool ok = true;

    close_log();
    const place here(".");
    here.remove(generation(generations).c_str()); // the first runs have none
    for (int number = generations; number > 1; number--) {
        if (!here.rename(generation(number - 1).c_str(), generation(number).c_str())) {
            ok = false;
        }
    }
    // Before the rename: a message about its failure opens the log anew under this name.
    state.logfile = shown_generation(0);
    if (!here.rename(generation(0).c_str(), generation(1).c_str())) {
        dmsg("rotate_logs: Cant rename %s as %s\n", state.logfile.c_str(),
             shown_generation(1).c_str());
        dmsg("Maybe using emsg before rotate done or multiple copies running \n");
        ok = false;
    }
    state.rotating = false;
    state.logged_bytes = 0;
    return open_log(open_to_write(state.logfile.c_str())) && ok ? 1 : 0;
}

void print_emsg(const char *msg, ...) {
    std::va_list arguments;
    va_start(arguments, msg);
    print("Error: ");
    const std::string message = print_message(msg, arguments);
    va_end(arguments);
    note_failure(message);
    emsg("%s", message.c_str());
}

void print_imsg(const char *msg, ...) {
    std::va_list arguments;
    va_start(arguments, msg);
    imsg("%s", print_message(msg, arguments).c_str());
    va_end(arguments);
}
