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

// A stream over an open descriptor, which it takes over, in a mode of fdopen (POSIX). Null, with
// errno set and the descriptor closed, when no stream can be had; null, and errno as it was, for a
// negative number.
stream_handle stream_of(int descriptor, const char *mode);

// Open a plain file to read it, a file to write it anew, or to append to it (see `place`). Return
// null, with errno set, if it cannot be opened; to read: EISDIR or EINVAL for anything but a plain
// file, EFBIG for a larger one than the limit. Never wait for the other end of a pipe.
stream_handle open_plain_file(const char *path, read_limit limit = no_limit);
stream_handle open_to_write(const char *path);
stream_handle open_to_append(const char *path);

// Creates `path` as a file that nothing else leads to and only its owner reads; a file or link of
// that name goes. The descriptor, negative with errno set on failure.
int create_anew(const char *path);

// Closes a stream that was written. False, with errno set, when anything written to it was lost.
bool close_file(stream_handle file);

// Reads one line, or as much of it as fits: the characters up to and including the line feed, at
// most buffer.size() - 1 of them, followed by a NUL (the rule of fgets, ISO C 7.21.7.2, but bytes
// behind a NUL in the file are given too). The view is empty at the end of the file.
std::string_view read_piece(std::FILE *file, std::span<char> buffer);

// The same as a text: the piece ends at the first NUL the file holds. Null at the end of the file.
const char *read_text_piece(std::FILE *file, std::span<char> buffer);

// A stream whose file is written beside the one it replaces and put in its place by `commit`, so
// that a failure leaves the old file whole (see new_file). Owner and mode of a file that is
// replaced are kept. The scratch file is removed unless `commit` succeeded.
class replacement_file {
  public:
    // Starts replacing `path`, of 511 characters at most; on failure `stream` is null and errno
    // says why. The scratch file gets a name that nothing has, or the last component of the given
    // path: a file of that name goes.
    // The file gets no more rights than `most` has.
    explicit replacement_file(const char *path, const char *scratch_path = nullptr,
                              mode_t most = all_mode_bits);
    replacement_file(const replacement_file &) = delete;
    replacement_file &operator=(const replacement_file &) = delete;

    [[nodiscard]] std::FILE *stream() const { return stream_.get(); }

    // Gives the file to another owner. Only root may; for anyone else it stays, and so does one that
    // may not be given away (see new_file).
    void give(uid_t user, gid_t group);

    // Writes out, closes and puts the file in place. False, with errno set, if a write, the flush,
    // the close or the rename failed.
    bool commit();

  private:
    named_place place_;
    new_file file_;
    stream_handle stream_;
};
