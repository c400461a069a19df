#include "core/stream.h"

#include "core/format.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int open_flags = O_NONBLOCK | O_CLOEXEC;
constexpr mode_t creation_mode = 0666;

// The mode that a newly created file gets under the process's umask (POSIX open, umask).
mode_t new_file_mode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return creation_mode & ~mask;
}

// A pattern for a file beside `path`. It leans on no name, since that of `path` may be as long as
// names can be.
std::string beside(const std::string &path) {
    return path.substr(0, path.find_last_of('/') + 1) + "gxsetup.XXXXXX";
}

} // namespace

stream_handle stream_of(int descriptor, const char *mode) {
    if (descriptor < 0) {
        return nullptr;
    }
    stream_handle stream(::fdopen(descriptor, mode));
    if (!stream) {
        const int error = errno;
        ::close(descriptor);
        errno = error;
    }
    return stream;
}

stream_handle open_to_read(const char *path) {
    return stream_of(::open(path, O_RDONLY | open_flags), "r");
}

stream_handle open_to_write(const char *path) {
    return stream_of(::open(path, O_WRONLY | O_CREAT | O_TRUNC | open_flags, creation_mode), "w");
}

stream_handle open_to_append(const char *path) {
    return stream_of(::open(path, O_WRONLY | O_CREAT | O_APPEND | open_flags, creation_mode), "a");
}

stream_handle open_plain_file(const char *path) {
    stream_handle file = open_to_read(path);
    struct stat status {};
    if (file && ::fstat(::fileno(file.get()), &status) == 0 && !S_ISREG(status.st_mode)) {
        file.reset();
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    return file;
}

int create_anew(const char *path) {
    if (::unlink(path) != 0 && errno != ENOENT) {
        return -1;
    }
    return ::open(path, O_WRONLY | O_CREAT | O_EXCL | open_flags, S_IRUSR | S_IWUSR);
}

bool close_file(stream_handle file) {
    const bool written = std::ferror(file.get()) == 0 && std::fflush(file.get()) == 0;
    const int write_error = errno;
    const bool closed = std::fclose(file.release()) == 0;
    if (!written) {
        errno = write_error;
    }
    return written && closed;
}

std::string_view read_piece(std::FILE *file, std::span<char> buffer) {
    std::size_t length = 0;
    while (length + 1 < buffer.size()) {
        const int character = ::getc_unlocked(file);
        if (character == EOF) {
            break;
        }
        buffer[length++] = static_cast<char>(character);
        if (character == '\n') {
            break;
        }
    }
    buffer[length] = '\0';
    return {buffer.data(), length};
}

const char *read_text_piece(std::FILE *file, std::span<char> buffer) {
    return read_piece(file, buffer).empty() ? nullptr : buffer.data();
}

replacement_file::replacement_file(const char *path, const char *scratch_name) {
    if (std::string_view(path).size() > path_text::capacity) {
        errno = ENAMETOOLONG;
        return;
    }
    // Links are followed, so that the link itself stays. A file that is not there yet is meant as
    // written; where a link leads to it, there is no older file to keep either.
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path, nullptr), &std::free);
    if (!real && errno != ENOENT) {
        return;
    }
    target_ = real ? real.get() : path;
    struct stat old {};
    if (!real && ::lstat(path, &old) == 0) {
        file_ = open_to_write(path);
        return;
    }
    const bool is_there = ::stat(target_.c_str(), &old) == 0;
    if (!is_there && errno != ENOENT) {
        return; // its owner and mode are not known
    }
    if (is_there && !S_ISREG(old.st_mode)) {
        file_ = open_to_write(target_.c_str());
        return;
    }
    if (is_there && ::access(target_.c_str(), W_OK) != 0) {
        return;
    }
    std::string scratch = scratch_name != nullptr ? scratch_name : beside(target_);
    const int descriptor =
        scratch_name != nullptr ? create_anew(scratch_name) : ::mkstemp(scratch.data());
    if (descriptor < 0) {
        return;
    }
    scratch_ = std::move(scratch);
    // The owner first: a change of owner can clear mode bits (POSIX chown).
    const bool is_owned = !is_there || ::fchown(descriptor, old.st_uid, old.st_gid) == 0;
    const mode_t mode = is_there ? old.st_mode & 07777 : new_file_mode();
    if (!is_owned || ::fchmod(descriptor, mode) != 0) {
        ::close(descriptor);
        return;
    }
    file_ = stream_of(descriptor, "w");
}

replacement_file::~replacement_file() {
    const int error = errno;
    file_.reset();
    if (!scratch_.empty()) {
        ::unlink(scratch_.c_str());
    }
    errno = error;
}

bool replacement_file::commit() {
    if (!close_file(std::move(file_))) {
        return false;
    }
    if (scratch_.empty()) {
        return true;
    }
    if (std::rename(scratch_.c_str(), target_.c_str()) != 0) {
        return false;
    }
    scratch_.clear();
    return true;
}
