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

#include <cerrno>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

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
    bool is_shared = false; // it stands in a shared directory

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

// Whether two entries are one file or directory.
inline bool is_same_file(const struct stat &one, const struct stat &other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Whether `user` is root or the one who runs the program; whether such a user owns a file or
// directory and nobody else may write it.
bool is_of_ours(uid_t user);
bool is_ours(const struct stat &entry);

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

    // Gives the directory away. Only root may; false, with errno set, if it stays whose it was.
    [[nodiscard]] bool give(uid_t user, gid_t group) const;

    // Whether it is this directory, or stands in it at any depth.
    [[nodiscard]] bool is_within(const struct stat &directory) const;

    // Waits until no other run has the directory locked, and keeps others waiting as long as the
    // result is open (flock). In a shared directory, where anybody can keep it locked, it goes on
    // after a minute; not open if the system has no locks here.
    [[nodiscard]] file_descriptor lock() const;

    // Opens the directory to list it; null with errno set on failure.
    [[nodiscard]] directory_handle list() const;

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

    file_descriptor directory_;
    std::string path_;
    struct stat status_ {};
    int error_ = 0;
    bool is_shared_ = true;
    bool is_refused_ = false;
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

// A name and the directory it stands in, after the links that may be followed.
class settled_name {
  public:
    settled_name(const place &directory, const char *name) : given_(&directory), name_(name) {}

    [[nodiscard]] const place &directory() const { return elsewhere_ ? *elsewhere_ : *given_; }
    [[nodiscard]] const char *name() const { return name_.c_str(); }

    // The directory that the name was first looked for in.
    [[nodiscard]] const place &first_directory() const { return *given_; }

    // Goes on to what the link of this name leads to. False, with errno set, if that cannot be
    // reached; `is_refused` says whether the link is foreign.
    bool follow();
    [[nodiscard]] bool is_refused() const { return is_refused_; }

  private:
    const place *given_;
    std::optional<place> elsewhere_;
    std::string name_;
    int links_ = 0;
    bool is_refused_ = false;
};

// A file that is written into a directory. A file that is there already is replaced whole, by a
// file beside it and a rename, and stays as it is until then. It is written directly if nothing can
// be made beside it or its owner cannot be given to a new file, and if it is no plain file (a
// device, a pipe). A link that may be followed stays: the file it leads to is replaced. What is
// foreign, a pipe or socket of another user in a shared directory as well, is replaced itself.
class new_file {
  public:
    // Where a file is made that is not there yet.
    enum class when_missing { in_place, beside };

    // Looks at what is there. `mode`, less the umask, is that of a file that replaces no other one.
    new_file(const place &directory, const char *name, when_missing how, mode_t mode = usual_mode);
    // Removes the file beside if it was not put in place.
    ~new_file();
    new_file(const new_file &) = delete;
    new_file &operator=(const new_file &) = delete;

    // Takes the bits that `most` lacks from the mode of the file, before it is started.
    void limit_mode(mode_t most) { most_ = most; }

    // Why the file cannot be written (as errno), or 0.
    [[nodiscard]] int error() const { return error_; }

    // What is replaced or written directly; null for a file that is made.
    [[nodiscard]] const struct stat *old() const { return old_ ? &*old_ : nullptr; }
    [[nodiscard]] const place &directory() const { return target_.directory(); }

    // Whether a device or a pipe is written, which stays whose it is.
    [[nodiscard]] bool is_special() const { return old_ && !S_ISREG(old_->st_mode); }

    // Opens the file that is written. The one beside an old one has its owner and mode, and a name
    // that nothing has. A given name is used in the directory itself, even if the file to replace
    // stands elsewhere behind a link, and a file of that name goes. False, with errno set, on
    // failure.
    bool start(const char *scratch_name = nullptr);

    // The open file, once it is started. `release` hands it to the caller.
    [[nodiscard]] int number() const { return file_.number(); }
    int release() { return file_.release(); }

    // Closes the file and puts it in place. False, with errno set, if what was written is lost.
    bool put_in_place();

  private:
    bool make_in_place();
    void find_old(when_missing how);
    bool make_beside(const char *scratch_name);
    bool write_directly();

    settled_name target_;
    mode_t mode_;
    mode_t most_ = all_mode_bits;
    std::optional<struct stat> old_;
    file_descriptor old_file_;
    file_descriptor file_;
    std::string scratch_;                  // empty if no file beside is written
    const place *scratch_place_ = nullptr; // where it stands
    int error_ = 0;
};

// Receives the reason, printf-style, each time something foreign is not followed or read. Null, as
// at the start, for nobody.
void tell_refusals(int (*receiver)(const char *format, ...));
