// Directories held open, and the few things that are done below them. The program works as root
// where other users may write, so a path that was looked at may lead elsewhere a moment later. All
// access to files goes through here: a directory is walked to once, component by component, and
// what stands in it is opened, made, renamed and removed by its name there.
//
// A directory is ours if root or the one who runs the program owns it and nobody else may write in
// it; any other is shared. A link is followed in a directory of ours, or if root or the one who
// runs the program made it. Any other link, and a plain file with more than one name in a shared
// directory, is foreign: it is never followed, read or written through. ".." is refused in a shared
// directory.
//
// How to ask: `place(path).is_open()` says whether a directory can be reached by these rules (and
// `error` why not), `is_shared` whether others may write in it, `status` who owns it.
// `open_to_read` gives an open file with its owner, mode and size.
#pragma once

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

// An open file descriptor, closed when it goes. A negative number is none.
class file_descriptor {
  public:
    file_descriptor() = default;
    explicit file_descriptor(int number) : number_(number) {}
    ~file_descriptor() {
        const int error = errno;
        close();
        errno = error;
    }
    file_descriptor(file_descriptor &&other) noexcept : number_(other.release()) {}
    file_descriptor &operator=(file_descriptor &&other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    file_descriptor(const file_descriptor &) = delete;
    file_descriptor &operator=(const file_descriptor &) = delete;

    [[nodiscard]] bool is_open() const { return number_ >= 0; }
    [[nodiscard]] int number() const { return number_; }

    // Hands the descriptor to the caller.
    int release() { return std::exchange(number_, -1); }

    // False, with errno set, if what was written is lost (POSIX close).
    bool close() {
        const int closing = release();
        return closing < 0 || ::close(closing) == 0;
    }

  private:
    int number_ = -1;
};

struct directory_closer {
    void operator()(DIR *directory) const { ::closedir(directory); }
};

// A directory that is being listed (POSIX readdir), closed when it goes.
using directory_handle = std::unique_ptr<DIR, directory_closer>;

// A file that is open, and what it was when it was opened. `descriptor` is closed, with errno set,
// if it could not be opened.
struct open_file {
    file_descriptor descriptor;
    struct stat status {};
    bool is_shared = false;       // it stands in a shared directory
    bool is_owners_choice = true; // nobody but its owner could have put it there
    bool is_private = false;      // somebody else could have, who may not read it

    [[nodiscard]] bool is_open() const { return descriptor.is_open(); }
};

// How much is read of a file. A larger one cannot be opened (EFBIG).
struct read_limit {
    off_t bytes;
    bool only_if_shared; // counts in shared directories only
};

inline constexpr read_limit no_limit = {0, true};
inline constexpr read_limit settings_limit = {off_t{16} << 20, false}; // settings and help
inline constexpr read_limit template_limit = {off_t{1} << 30, true};

// Every bit of a mode.
inline constexpr mode_t all_mode_bits = 07777;

// The mode of a file that follows the umask, before the umask: others never write it.
inline constexpr mode_t usual_mode = 0664;

// As the limit of a mode: a file for the one who runs the program, never given to anybody else.
inline constexpr mode_t private_mode = S_IRUSR | S_IWUSR;

// Whether two entries are one file or directory.
inline bool is_same_file(const struct stat &one, const struct stat &other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Whether `user` is root or the one who runs the program; whether such a user owns a file or
// directory and nobody else may write it.
bool is_of_ours(uid_t user);
bool is_ours(const struct stat &entry);

// Whose choice it was that a walk led where it did. Whoever may write a directory may rename what
// stands in it, whosever that is: root's private directory, too.
struct custody {
    std::vector<uid_t> movers; // who may write the shared directories on the way
    bool is_hidden = false;    // they may not enter or read what was found

    // Whether nobody but `owner` and us had a choice.
    [[nodiscard]] bool is_choice_of(uid_t owner) const {
        return std::all_of(movers.begin(), movers.end(),
                           [owner](uid_t mover) { return mover == owner; });
    }
};

class place {
  public:
    // A directory that is not open, because of `error` (as errno).
    explicit place(int error = 0) : error_(error) {}

    // Walks to the directory `path`, from the root or the current directory. There is none at a
    // null path (EFAULT).
    explicit place(std::string_view path);
    explicit place(const char *path);

    [[nodiscard]] bool is_open() const { return directory_.is_open(); }

    // Why it is not open (as errno), and whether that is because of something foreign.
    [[nodiscard]] int error() const { return error_; }
    [[nodiscard]] bool is_refused() const { return is_refused_; }

    // Whether it is open, with errno set if it is not.
    [[nodiscard]] bool is_usable() const;

    [[nodiscard]] bool is_shared() const { return is_shared_; }
    [[nodiscard]] const struct stat &status() const { return status_; }

    // The path it was reached by. `path_of` adds a name.
    [[nodiscard]] const std::string &path() const { return path_; }
    [[nodiscard]] std::string path_of(std::string_view name) const;

    // --- Directories below it ---

    // Walks on to the directory `path`; enters the directory `name`, which must be no link.
    [[nodiscard]] place enter(std::string_view path) const;
    [[nodiscard]] place enter_itself(const char *name) const;

    // Makes the directory `name` with exactly this mode, whatever the umask. It is not open, with
    // `error` saying why, if it could not be made. Only the owner can enter it until it has its
    // mode.
    [[nodiscard]] place make(const char *name, mode_t mode) const;

    // Gives the directory away, which only root may do. One that holds anything stays whose it is
    // if others than its owner could have put it there (EPERM; the reason is reported, see
    // tell_refusals). Returns false, with errno set, if it was not given away.
    [[nodiscard]] bool give(uid_t user, gid_t group);

    // Who could have put the directory there.
    [[nodiscard]] const custody &met() const;

    // Whether no link was on the way to it.
    [[nodiscard]] bool is_straight() const { return is_straight_; }

    // Whether it is this directory, or stands in it at any depth.
    [[nodiscard]] bool is_within(const struct stat &directory) const;

    // Waits until no other run has the directory locked, and keeps others waiting as long as the
    // result is open (flock). In a shared directory, where anybody can keep it locked, it goes on
    // after a minute; not open if the system has no locks here.
    [[nodiscard]] file_descriptor lock() const;

    // Opens the directory to list it; null with errno set on failure.
    [[nodiscard]] directory_handle list() const;

    // Whether it can be listed.
    [[nodiscard]] bool can_be_listed() const;

    // --- What stands in it. On failure errno says why. ---

    // Looks at what `name` leads to, whoever made the links (POSIX fstatat): for decisions about
    // the name alone. `look_at_name` looks at a link itself.
    bool look(const char *name, struct stat &entry) const;
    bool look_at_name(const char *name, struct stat &entry) const;

    // Opens a file to read it; anything there is, or a plain file (EISDIR or EINVAL for others).
    // Never waits for the other end of a pipe. What is foreign gives ELOOP (a link) or EMLINK.
    [[nodiscard]] open_file open_to_read(const char *name) const;
    [[nodiscard]] open_file open_plain(const char *name, read_limit limit = no_limit) const;

    // Whether `name` can be opened for reading. The names of a file are not counted.
    [[nodiscard]] bool can_be_read(const char *name) const;

    // Opens a file to write it anew or to append to it, and makes it if it is missing, with the
    // usual mode. What is foreign is removed and a file made in its place.
    [[nodiscard]] file_descriptor open_to_write(const char *name) const;
    [[nodiscard]] file_descriptor open_to_append(const char *name) const;

    // Makes a new file, mode 0600, in the place of any file or link of that name, and opens it to
    // be written and read.
    [[nodiscard]] file_descriptor create_anew(const char *name) const;

    // Removes a file or a link; removes an empty directory.
    bool remove(const char *name) const;
    bool remove_directory(const char *name) const;

    // Renames a file here, over any file of the new name.
    bool rename(const char *from, const char *to) const;

    // The descriptor, for calls that this class does not make; -1 if it is not open.
    [[nodiscard]] int number() const { return directory_.number(); }

  private:
    friend class walker;
    place(file_descriptor directory, std::string path);
    [[nodiscard]] bool is_empty() const;
    [[nodiscard]] file_descriptor open_itself() const;

    file_descriptor directory_;
    std::string path_;
    struct stat status_ {};
    int error_ = 0;
    bool is_shared_ = true;
    bool is_refused_ = false;
    bool is_straight_ = false;
    bool is_new_ = false;                // made here, so nothing of anybody's is in it
    mutable std::optional<custody> met_; // once it was asked for
};

// A name in a directory that it was walked to for. The last component is not looked at.
struct named_place {
    place directory;
    std::string name;
};

// Takes the path of a file apart and walks to its directory: "a" stands in ".", "/a" in "/". A path
// that ends in "/" gives the name ".".
named_place locate(std::string_view path);

// The same for the path of a directory: a "/" at its end is left out.
named_place locate_directory(std::string_view path);

// Opens a plain file as `locate` and `open_plain` would, in one call if no link is on the way.
[[nodiscard]] file_descriptor open_plain_at(const std::string &path, read_limit limit);

// Receives the reason, printf-style, each time something foreign is not followed or read. Null, as
// at the start, for nobody.
void tell_refusals(int (*receiver)(const char *format, ...));
