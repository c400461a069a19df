#include "support/system_calls.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>

namespace {

constexpr const char *trace_file = "calls.txt";

// Calls on files and processes that a system may refuse. What a machine or a C library does not
// have is passed over ("?", strace(1)).
constexpr const char *traced_calls =
    "trace=%%stat,?open,openat,?openat2,read,?pread64,write,close,?getdents,?getdents64,?mkdir,"
    "?mkdirat,?rmdir,?unlink,?unlinkat,?rename,?renameat,?renameat2,?chmod,?fchmod,?fchmodat,"
    "?chown,?fchown,?fchownat,ftruncate,?access,?faccessat,?faccessat2,?readlink,wait4,?vfork,"
    "?clone,?clone3,?ioctl,?copy_file_range";

run_place traced(const world &host, const std::vector<std::string> &options) {
    run_place place = under_strace({"-y", "-o", host.path(trace_file)});
    place.wrapper.insert(place.wrapper.end(), options.begin(), options.end());
    return place;
}

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// Whether a call is about files of the world, streams or processes: what the C library reads of its
// own lies elsewhere, and so does what a coverage build writes.
bool is_of_interest(const system_call &call) {
    return !holds(call.text, "\"/") && !holds(call.text, "</");
}

// Knows which descriptors are open to be written.
class written_descriptors {
  public:
    // Whether the call opens or closes one.
    bool take(const system_call &call) {
        if (call.name.starts_with("open")) {
            const bool is_written = holds(call.text, "O_WRONLY") || holds(call.text, "O_RDWR");
            const std::size_t result = call.text.rfind(" = ") + 3;
            if (is_written) {
                open_.insert(call.text.substr(result, call.text.find('<', result) - result));
            }
            return is_written;
        }
        const std::size_t argument = std::string_view("close(").size();
        return call.name == "close" &&
               open_.erase(call.text.substr(argument, call.text.find('<') - argument)) > 0;
    }

  private:
    std::set<std::string> open_;
};

constexpr const char *copying = "copy_file_range";

// The options that trace these calls, and refuse the system's own copying to a script without it.
std::vector<std::string> tracing(const session_script &script, const std::string &calls) {
    if (!script.is_without_copying) {
        return {"-e", calls};
    }
    return {"-e", calls + "," + copying, "-e", std::string("inject=") + copying + ":error=EXDEV"};
}

refused_run run_refused(const world &host, const session_script &script, const std::string &name,
                        const std::string &how) {
    std::vector<std::string> options = tracing(script, "trace=" + name);
    options.insert(options.end(), {"-e", "inject=" + name + how});
    refused_run result;
    run_place place = traced(host, options);
    place.status = std::nullopt;
    result.run = run_wizard(host, script.arguments, typed(script.answers), place);
    for (const std::string &line : lines_of(host.shown(read_file(trace_file)))) {
        if (line.starts_with(name + "(") && line.ends_with("(INJECTED)")) {
            result.call = line;
            break;
        }
    }
    std::filesystem::remove(trace_file);
    return result;
}

} // namespace

run_place under_strace(const std::vector<std::string> &options) {
    run_place place;
    place.wrapper = {"/usr/bin/strace"};
    place.wrapper.insert(place.wrapper.end(), options.begin(), options.end());
    // The leak sanitizer is a tracer too, and there can be only one (ptrace(2)).
    place.settings = {{"ASAN_OPTIONS", "detect_leaks=0"}, {"LSAN_OPTIONS", "detect_leaks=0"}};
    return place;
}

bool can_refuse_calls() {
    const world host("kestrel");
    const refused_run probe =
        run_with_refused_call(host, {{"-version"}, "\n"}, {"write", 1, "", false}, "ENOSPC");
    return !probe.call.empty();
}

std::vector<system_call> calls_of(const world &host, const session_script &script) {
    run_wizard(host, script.arguments, typed(script.answers),
               traced(host, tracing(script, traced_calls)));
    std::map<std::string, int> counts;
    written_descriptors written;
    std::vector<system_call> calls;
    bool is_logging = false;
    for (const std::string &line : lines_of(host.shown(read_file(trace_file)))) {
        const std::string name = line.substr(0, line.find('('));
        system_call call = {name, ++counts[name], line, false};
        call.is_on_written = written.take(call);
        is_logging = is_logging || holds(line, "gxsetup.log\"");
        if (is_logging && holds(line, ") = ") && is_of_interest(call)) {
            calls.push_back(call);
        }
    }
    std::filesystem::remove(trace_file);
    return calls;
}

refused_run run_with_refused_call(const world &host, const session_script &script,
                                  const system_call &call, const std::string &error) {
    return run_refused(host, script, call.name,
                       ":error=" + error + ":when=" + std::to_string(call.number));
}

refused_run run_with_refused_calls(const world &host, const session_script &script,
                                   const system_call &first, const std::string &error) {
    return run_refused(host, script, first.name,
                       ":error=" + error + ":when=" + std::to_string(first.number) + "+");
}
