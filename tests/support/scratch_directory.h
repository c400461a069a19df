// A directory of a test's own: made and entered when the test begins, left and removed when it
// ends. With it, whole files, deep directories and texts with other paths in them.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

// A text with each `from` written `to`.
inline std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// Makes a new directory below the system's temporary directory and works in it.
class scratch_directory {
  public:
    scratch_directory() : before_(std::filesystem::current_path()), maker_(::getpid()) {
        std::string name = std::filesystem::temp_directory_path() / "gxsetup-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no scratch directory: " + name + std::strerror(errno));
        }
        path_ = std::filesystem::canonical(name);
        std::filesystem::current_path(path_);
    }

    // A child process that ends by itself leaves its parent's directory alone.
    ~scratch_directory() {
        if (::getpid() == maker_) {
            std::error_code ignored;
            std::filesystem::current_path(before_, ignored);
            std::filesystem::remove_all(path_, ignored);
        }
    }

    scratch_directory(const scratch_directory &) = delete;
    scratch_directory &operator=(const scratch_directory &) = delete;

    [[nodiscard]] std::string path() const { return path_; }
    [[nodiscard]] std::string path(std::string_view name) const { return path_ / name; }

    // The text with "@" for the directory.
    [[nodiscard]] std::string with_at(const std::string &text) const {
        return replaced(text, path(), "@");
    }

  private:
    std::filesystem::path before_;
    std::filesystem::path path_;
    ::pid_t maker_;
};

// Writes a whole file.
inline void write_file(const std::string &path, std::string_view content) {
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

// The content of a file; for one that cannot be read a text that says so.
inline std::string read_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return "(no file " + path + ")";
    }
    std::ostringstream content;
    content << file.rdbuf();
    return std::move(content).str();
}

// Makes directories below `path` until the path has `length` characters, and gives it.
inline std::string make_deep_directory(std::string path, std::size_t length) {
    while (path.size() < length) {
        const std::size_t left = length - path.size();
        path += "/" + std::string(left > 255 ? 100 : left - 1, 'd');
    }
    std::filesystem::create_directories(path);
    return path;
}

inline bool is_there(const std::string &path) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}
