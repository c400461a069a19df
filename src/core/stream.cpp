#include "core/stream.h"

#include "core/format.h"
#include "core/paths.h"

#include <cerrno>
#include <unistd.h>

namespace {

named_place locate_bounded(std::string_view path) {
    return path.size() <= path_text::capacity ? locate(path) : named_place{place(ENAMETOOLONG), ""};
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

stream_handle open_to_write(const char *path) {
    const named_place file = locate(path);
    return stream_of(file.directory.open_to_write(file.name.c_str()).release(), "w");
}

stream_handle open_to_append(const char *path) {
    const named_place file = locate(path);
    return stream_of(file.directory.open_to_append(file.name.c_str()).release(), "a");
}

stream_handle open_plain_file(const char *path, read_limit limit) {
    return stream_of(open_plain_at(path, limit).release(), "r");
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

replacement_file::replacement_file(const char *path, const char *scratch_path, mode_t most)
    : place_(locate_bounded(path)),
      file_(place_.directory, place_.name.c_str(), new_file::when_missing::beside) {
    file_.limit_mode(most);
    if (file_.error() != 0) {
        errno = file_.error();
    } else if (file_.start(scratch_path != nullptr ? strip_directory(scratch_path) : nullptr)) {
        stream_ = stream_of(file_.release(), "w");
    }
}

void replacement_file::give(uid_t user, gid_t group) {
    if (file_.may_be_given(user)) {
        [[maybe_unused]] const int result = ::fchown(::fileno(stream_.get()), user, group);
    }
}

bool replacement_file::commit() {
    return close_file(std::move(stream_)) && file_.put_in_place();
}
