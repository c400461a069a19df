#include "support/wizard_run.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using clock_type = std::chrono::steady_clock;

constexpr auto time_limit = 40s;
constexpr const char *program_path = GXSETUP_PROGRAM;

bool is_of_sanitizer(std::string_view name) {
    return name.starts_with("ASAN_") || name.starts_with("LSAN_") || name.starts_with("UBSAN_");
}

// The environment of the program; the sanitizers and the coverage keep their own settings.
std::vector<std::string> environment_with(const std::map<std::string, std::string> &more) {
    std::map<std::string, std::string> settings = {
        {"PATH", "/usr/bin:/bin"}, {"LC_ALL", "C"}, {"TZ", "UTC"}, {"TERM", "dumb"}};
    for (char **one = environ; *one != nullptr; one++) {
        const std::string_view text(*one);
        const std::string_view name = text.substr(0, text.find('='));
        if (is_of_sanitizer(name) || name.starts_with("LLVM_")) {
            settings[std::string(name)] = text.substr(std::min(name.size() + 1, text.size()));
        }
    }
    for (const auto &[name, value] : more) {
        std::string &setting = settings[name];
        setting = is_of_sanitizer(name) && !setting.empty() ? setting + ":" + value : value;
    }
    std::vector<std::string> texts;
    for (const auto &[name, value] : settings) {
        texts.push_back(name + "=" + value);
    }
    return texts;
}

std::vector<char *> pointers_to(std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    for (std::string &text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Becomes the program. Never returns.
[[noreturn]] void become_program(const std::string &directory,
                                 const std::vector<std::string> &arguments,
                                 const run_place &place) {
    constexpr int not_started = 127;
    std::vector<std::string> words = place.wrapper;
    words.emplace_back(program_path);
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> settings = environment_with(place.settings);
    // Whoever started the tests may ignore signals (POSIX: a shell's background job, nohup).
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) {
        std::signal(signal, SIG_DFL);
    }
    // Opened now: whom `prepare` makes of this process may have no way to the build directory.
    const std::string started = place.wrapper.empty() ? program_path : place.wrapper.front();
    const int program = ::open(started.c_str(), O_RDONLY | O_CLOEXEC);
    if (place.prepare) {
        place.prepare();
    }
    if (::chdir(directory.c_str()) == 0) {
        ::fexecve(program, pointers_to(words).data(), pointers_to(settings).data());
    }
    std::perror(started.c_str());
    ::_exit(not_started);
}

int status_of(int wait_status) {
    return WIFEXITED(wait_status) ? WEXITSTATUS(wait_status)
                                  : killed_by_signal + WTERMSIG(wait_status);
}

// Waits for a child to end; kills it at the deadline.
int wait_until(::pid_t child, clock_type::time_point deadline) {
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (clock_type::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return timed_out;
        }
        std::this_thread::sleep_for(1ms);
    }
    return status_of(status);
}

int milliseconds_until(clock_type::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - clock_type::now());
    return static_cast<int>(std::max<std::int64_t>(0, left.count()));
}

struct pipe_ends {
    int reading = -1;
    int writing = -1;

    pipe_ends() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        reading = ends[0];
        writing = ends[1];
    }
};

void close_end(int &end) {
    if (end >= 0) {
        ::close(end);
        end = -1;
    }
}

// Reads what is there; closes the end when nothing more will come.
void gather(int &end, std::string &text) {
    std::array<char, 4096> block{};
    const ssize_t count = ::read(end, block.data(), block.size());
    if (count > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
        close_end(end);
    }
}

// Writes what fits of the rest; closes the end when nobody reads.
void feed(int &end, std::string &rest) {
    const ssize_t count = ::write(end, rest.data(), rest.size());
    if (count > 0) {
        rest.erase(0, static_cast<std::size_t>(count));
    } else if (count < 0 && errno != EAGAIN && errno != EINTR) {
        close_end(end);
    }
}

// Ends the process where it must not mount.
void mount_privately(const std::string &source, const std::string &target, const std::string &type,
                     unsigned long flags, const std::string &options) {
    constexpr int not_allowed = 126;
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount("none", "/", "", MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount(source.c_str(), target.c_str(), type.c_str(), flags, options.c_str()) != 0) {
        std::perror("mount");
        ::_exit(not_allowed);
    }
}

} // namespace

wizard_run run_wizard(const world &host, const std::vector<std::string> &arguments,
                      const console_script &script, const run_place &place) {
    prompt_reader prompts(script);
    std::string rest = host.meant(script.typed_text().value_or(""));
    const std::string directory = host.path(place.directory);
    const auto deadline = clock_type::now() + time_limit;
    pipe_ends in;
    pipe_ends out;
    pipe_ends err;
    const ::pid_t child = ::fork();
    if (child == 0) {
        ::dup2(in.reading, STDIN_FILENO);
        ::dup2(out.writing, STDOUT_FILENO);
        ::dup2(err.writing, STDERR_FILENO);
        become_program(directory, arguments, place);
    }
    close_end(in.reading);
    close_end(out.writing);
    close_end(err.writing);
    ::fcntl(in.writing, F_SETFL, O_NONBLOCK);
    std::signal(SIGPIPE, SIG_IGN);

    std::string output;
    std::string errors;
    while (out.reading >= 0 || err.reading >= 0) {
        if (rest.empty() && (script.typed_text() || prompts.is_stuck())) {
            close_end(in.writing);
        }
        const int writing = rest.empty() ? -1 : in.writing;
        std::array<::pollfd, 3> ends = {
            {{writing, POLLOUT, 0}, {out.reading, POLLIN, 0}, {err.reading, POLLIN, 0}}};
        if (::poll(ends.data(), ends.size(), milliseconds_until(deadline)) <= 0) {
            break;
        }
        if (ends[0].revents != 0) {
            feed(in.writing, rest);
        }
        if (ends[1].revents != 0) {
            gather(out.reading, output);
            if (!script.typed_text()) {
                rest += host.meant(prompts.answer(host.shown(output)).value_or(""));
            }
        }
        if (ends[2].revents != 0) {
            gather(err.reading, errors);
        }
    }
    const int status = wait_until(child, deadline);
    close_end(in.writing);
    close_end(out.reading);
    close_end(err.reading);
    prompts.expect_all_asked(host.shown(output));
    EXPECT_EQ(status, place.status.value_or(status)) << host.shown(output) << host.shown(errors);
    return {host.shown(output), host.shown(errors), status};
}

terminal_session::terminal_session(const world &host, const std::vector<std::string> &arguments,
                                   const std::function<void()> &prepare)
    : host_(host), deadline_(clock_type::now() + time_limit) {
    const std::string directory = host.path("dist");
    child_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (child_ == 0) {
        become_program(directory, arguments, {.prepare = prepare});
    }
    if (child_ < 0) {
        throw std::runtime_error("no pseudo-terminal");
    }
    ::fcntl(terminal_, F_SETFD, FD_CLOEXEC);
}

terminal_session::~terminal_session() {
    hang_up();
    if (child_ > 0) {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
}

// False at the deadline and when the program has gone (POSIX read: the last process that holds the
// other side of the terminal is gone, EIO).
bool terminal_session::read_more() {
    ::pollfd end = {terminal_, POLLIN, 0};
    if (terminal_ < 0 || ::poll(&end, 1, milliseconds_until(deadline_)) <= 0) {
        return false;
    }
    std::array<char, 4096> block{};
    const ssize_t count = ::read(terminal_, block.data(), block.size());
    if (count <= 0) {
        return false;
    }
    shown_.append(block.data(), static_cast<std::size_t>(count));
    return true;
}

bool terminal_session::read_more_for(std::string_view text) {
    if (!read_more()) {
        ADD_FAILURE() << "\"" << text << "\" did not come; on the screen:\n" << screen();
        return false;
    }
    return true;
}

bool terminal_session::wait_for(std::string_view text) {
    while (!screen().ends_with(text)) {
        if (!read_more_for(text)) {
            return false;
        }
    }
    return true;
}

bool terminal_session::press_enter_until(std::string_view text) {
    prompt_reader prompts({});
    while (!screen().ends_with(text)) {
        if (const std::optional<std::string> answer = prompts.answer(screen())) {
            type(*answer);
        }
        if (!read_more_for(text)) {
            return false;
        }
    }
    return true;
}

void terminal_session::type(std::string_view keys) {
    const std::string typed = host_.meant(keys);
    if (::write(terminal_, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) {
        ADD_FAILURE() << "cannot type";
    }
}

int terminal_session::hold(const console_script &script) {
    prompt_reader prompts(script);
    do {
        if (const std::optional<std::string> answer = prompts.answer(screen())) {
            type(*answer);
        }
    } while (read_more());
    prompts.expect_all_asked(screen());
    return wait_for_end();
}

void terminal_session::hang_up() {
    close_end(terminal_);
}

int terminal_session::wait_for_end() {
    while (read_more()) {
    }
    const int status = wait_until(child_, deadline_);
    child_ = -1;
    return status;
}

std::string terminal_session::screen() const {
    std::string plain = host_.shown(shown_);
    std::erase(plain, '\r');
    return plain;
}

void print_through_pipe() {
    const pipe_ends ends;
    if (::fork() == 0) {
        ::dup2(ends.reading, STDIN_FILENO);
        ::close(ends.writing);
        ::execl("/bin/cat", "cat", nullptr);
        ::_exit(1);
    }
    ::dup2(ends.writing, STDOUT_FILENO);
}

void mount_small_disk(const std::string &path, const std::string &size) {
    mount_privately("tmpfs", path, "tmpfs", 0, "size=" + size);
}

void mount_over_file(const std::string &path, const std::string &other) {
    mount_privately(other, path, "", MS_BIND, "");
}

bool can_mount() {
    if (::geteuid() != 0) {
        return false;
    }
    const ::pid_t child = ::fork();
    if (child == 0) {
        mount_small_disk("/tmp", "4k");
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status == 0;
}

run_place as_ordinary_user(const world &host) {
    const passwd *nobody = ::getpwnam("nobody");
    if (::geteuid() != 0 || nobody == nullptr) {
        return {};
    }
    const uid_t user = nobody->pw_uid;
    const gid_t group = nobody->pw_gid;
    shell("chown -hR " + std::to_string(user) + ":" + std::to_string(group) + " " + host.root());
    return {.prepare = [user, group] {
        constexpr int not_allowed = 126;
        if (::setgroups(0, nullptr) != 0 || ::setgid(group) != 0 || ::setuid(user) != 0) {
            ::_exit(not_allowed);
        }
        // A process that changed its user may not look into its own /proc, where valgrind finds the
        // program.
        ::prctl(PR_SET_DUMPABLE, 1);
    }};
}
