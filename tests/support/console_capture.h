// The console of code that runs in the test's own process: what it reads from standard input is
// given, what it prints on standard output or standard error is gathered.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>

// A file without a name that holds `content`, as a descriptor to be closed by the caller.
inline int nameless_file(std::string_view content) {
    std::string name = "/tmp/gxsetup-console-XXXXXX";
    const int descriptor = ::mkstemp(name.data());
    if (descriptor < 0) {
        throw std::runtime_error("no file for the console");
    }
    ::unlink(name.c_str());
    if (::write(descriptor, content.data(), content.size()) !=
        static_cast<ssize_t>(content.size())) {
        throw std::runtime_error("no room for the console");
    }
    return descriptor;
}

// Makes `input` all that standard input holds from here on.
inline void feed_console(std::string_view input) {
    const int descriptor = nameless_file(input);
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    if (std::freopen(path.c_str(), "r", stdin) == nullptr) {
        throw std::runtime_error("cannot give the console its input");
    }
    ::close(descriptor);
}

// Sends what is printed on standard output to standard error, for a test that ends its process:
// there it can be looked at.
inline void print_on_standard_error() {
    std::fflush(stdout);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

// Gathers what is written to one stream of the process while it lives.
class stream_capture {
  public:
    explicit stream_capture(std::FILE *stream)
        : stream_(stream), gathered_(nameless_file("")), saved_(::dup(::fileno(stream))) {
        std::fflush(stream_);
        ::dup2(gathered_, ::fileno(stream_));
    }

    ~stream_capture() {
        restore();
        ::close(gathered_);
    }

    stream_capture(const stream_capture &) = delete;
    stream_capture &operator=(const stream_capture &) = delete;

    // Ends the gathering and gives what was written.
    std::string finish() {
        restore();
        std::ifstream file("/proc/self/fd/" + std::to_string(gathered_), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

  private:
    void restore() {
        if (saved_ >= 0) {
            std::fflush(stream_);
            ::dup2(saved_, ::fileno(stream_));
            ::close(saved_);
            saved_ = -1;
        }
    }

    std::FILE *stream_;
    int gathered_;
    int saved_;
};

// Code that ends the program with status 0 would end its test as if it had passed: while this
// lives, such an end is a failure.
class must_return {
  public:
    must_return() {
        static const int registered = std::atexit([] {
            if (process == ::getpid()) {
                ::_exit(1);
            }
        });
        (void)registered;
        process = ::getpid();
    }
    ~must_return() { process = 0; }
    must_return(const must_return &) = delete;
    must_return &operator=(const must_return &) = delete;

  private:
    static inline ::pid_t process = 0;
};

// Runs `code`, which must return, and gives what it prints on the console.
inline std::string console_of(const std::function<void()> &code) {
    const must_return guard;
    stream_capture console(stdout);
    code();
    return console.finish();
}

// The same with `input` to read from.
inline std::string console_of(std::string_view input, const std::function<void()> &code) {
    feed_console(input);
    return console_of(code);
}
