// Files as other modules hold them: handles that close themselves, lines read in pieces, and a file
// that is replaced whole or not at all.
#pragma once

#include "core/new_file.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct file_closer {
    void operator()(std::FILE *file) const { static_cast<void>(std::fclose(file)); }
};

// An open stream, closed when it goes.
using stream_handle = std::unique_ptr<std::FILE, file_closer>;

// Wraps a descriptor in a stream, which owns it from then on, in a mode of fdopen (POSIX). On
// failure closes it and returns null with errno set. For a negative number returns null and keeps
// errno.
stream_handle stream_of(int descriptor, const char *mode);

// Open a plain file to read it, a file to write it anew, or to append to it (see `place`). Return
// null, with errno set, if it cannot be opened. To read, that is EISDIR or EINVAL for anything but
// a plain file, and EFBIG for a larger one than the limit. Never wait for the other end of a pipe.
stream_handle open_plain_file(const char *path, read_limit limit = no_limit);
stream_handle open_to_write(const char *path);
stream_handle open_to_append(const char *path);

// Closes a stream that was written. Returns false, with errno set, if anything written to it was
// lost.
bool close_file(stream_handle file);

// Reads one line, or as much of it as fits: the characters up to and including the line feed, at
// most buffer.size() - 1 of them, followed by a NUL (the rule of fgets, ISO C 7.21.7.2, but what
// follows a NUL in the file counts too). Returns them; an empty view at the end of the file.
std::string_view read_piece(std::FILE *file, std::span<char> buffer);

// The same as a text, which ends at the first NUL. Returns null at the end of the file.
const char *read_text_piece(std::FILE *file, std::span<char> buffer);

// A stream whose file is written beside the one it replaces and put in its place by `commit`, so
// that a failure leaves the old file whole (see new_file). Owner and mode of a file that is
// replaced are kept. The scratch file is removed unless `commit` succeeded.
class replacement_file {
  public:
    // Starts replacing `path`, of 511 characters at most. On failure `stream` is null and errno
    // says why. The scratch file gets a name that nothing has, or the last component of the given
    // path after removing any file of that name. The file gets no more rights than `most` has.
    explicit replacement_file(const char *path, const char *scratch_path = nullptr,
                              mode_t most = all_mode_bits);
    replacement_file(const replacement_file &) = delete;
    replacement_file &operator=(const replacement_file &) = delete;

    [[nodiscard]] std::FILE *stream() const { return stream_.get(); }

    // Gives the file to another owner. Only root may; for anyone else it stays, and so does one
    // that may not be given away (see new_file).
    void give(uid_t user, gid_t group);

    // Writes out, closes and puts the file in place. Returns false, with errno set, if a write, the
    // flush, the close or the rename failed.
    bool commit();

  private:
    named_place place_;
    new_file file_;
    stream_handle stream_;
};
