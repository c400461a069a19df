#include "core/place.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <random>
#include <sys/file.h>
#include <sys/syscall.h>

namespace {

constexpr int most_links = 40; // as many as the system follows
constexpr int most_tries = 100;
constexpr int scratch_letters = 6;
constexpr int directory_flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr int file_flags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

int (*refusal_receiver)(const char *format, ...) = nullptr;

void report_refusal(const char *format, const std::string &path) {
    if (refusal_receiver != nullptr) {
        const int error = errno;
        refusal_receiver(format, path.c_str());
        errno = error;
    }
}

// A link of ours that another user gave a second name leads where that user wants.
bool may_follow(const place &directory, const struct stat &link) {
    return !directory.is_shared() || (is_of_ours(link.st_uid) && link.st_nlink == 1);
}

bool has_foreign_name(const place &directory, const struct stat &file) {
    return directory.is_shared() && S_ISREG(file.st_mode) && file.st_nlink > 1;
}

// What may not be written through.
bool is_foreign(const place &directory, const struct stat &file) {
    const bool is_special = !S_ISREG(file.st_mode) && !S_ISDIR(file.st_mode);
    return has_foreign_name(directory, file) ||
           (directory.is_shared() && is_special && !is_of_ours(file.st_uid));
}

// Looks at an open file of whatever flags (fstat needs Linux 3.6 for O_PATH).
bool look_at_open(int number, struct stat &entry) {
    return ::fstatat(number, "", &entry, AT_EMPTY_PATH) == 0;
}

// The text of an open link; empty, with errno set, on failure.
std::string text_of_link(int link) {
    std::array<char, 4096> text{}; // the system's longest path
    const ssize_t length = ::readlinkat(link, "", text.data(), text.size());
    return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

// Opens the link `name` itself. Not open, with errno set, for anything else.
open_file open_link(const place &directory, const char *name) {
    open_file link;
    link.descriptor =
        file_descriptor(::openat(directory.number(), name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (link.is_open() &&
        (!look_at_open(link.descriptor.number(), link.status) || !S_ISLNK(link.status.st_mode))) {
        link.descriptor = file_descriptor();
        errno = ENOTDIR;
    }
    return link;
}

// The system's own walk (Linux 5.6), which gives up at the first link. Not open on any failure, and
// with "..", on which it has no rules of ours.
file_descriptor open_without_links(int from, const std::string &path, int flags) {
    struct {
        std::uint64_t flags, mode, resolve;
    } how = {static_cast<std::uint64_t>(flags), 0,
             0x04 | 0x02}; // RESOLVE_NO_SYMLINKS, RESOLVE_NO_MAGICLINKS
    constexpr long number_of_openat2 = 437;
    if (path.find("..") != std::string::npos) {
        return {};
    }
    return file_descriptor(
        static_cast<int>(::syscall(number_of_openat2, from, path.c_str(), &how, sizeof(how))));
}

// The directory and the last component of a path. What leads to a directory itself has the name
// ".".
std::pair<std::string_view, std::string_view> split(std::string_view path) {
    const std::size_t separator = path.rfind('/');
    const std::string_view name = path.substr(separator + 1); // all of it without a separator
    if (name == "." || name == ".." || (name.empty() && !path.empty())) {
        return {path, "."};
    }
    return {path.substr(0, separator == 0 ? 1 : path.size() - name.size()), name};
}

file_descriptor make_file(const place &directory, const char *name, mode_t mode) {
    return file_descriptor(
        ::openat(directory.number(), name, O_WRONLY | O_CREAT | O_EXCL | file_flags, mode));
}

// What stands where a file is to be written: nothing, something foreign, or a file and what it is.
struct standing_file {
    bool is_missing = false;
    bool is_foreign = false;
    std::optional<struct stat> status;
    file_descriptor file; // open to be written, but not a program that is being run
    int error = 0;        // why the file cannot be written (as errno)
};

// What cannot be opened to be written: a program that is being run can be replaced all the same.
void judge_unopened(const settled_name &target, int error, standing_file &found) {
    struct stat entry {};
    found.is_missing = error == ENOENT;
    if (found.is_missing) {
        return;
    }
    const bool is_seen = target.directory().look_at_name(target.name(), entry);
    found.is_foreign = is_seen && is_foreign(target.directory(), entry);
    if (is_seen && S_ISREG(entry.st_mode) && (error == ETXTBSY || error == EAGAIN)) {
        found.status = entry;
    } else {
        found.error = error;
    }
}

standing_file find_standing(settled_name &target, int how) {
    standing_file found;
    const auto open = [&] {
        found.file = file_descriptor(
            ::openat(target.directory().number(), target.name(), O_WRONLY | file_flags | how));
        return found.file.is_open() || errno != ELOOP;
    };
    while (!open()) {
        if (!target.follow()) {
            found.is_foreign = target.is_refused();
            found.error = found.is_foreign ? 0 : errno;
            return found;
        }
    }
    struct stat entry {};
    if (!found.file.is_open()) {
        judge_unopened(target, errno, found);
    } else if (::fstat(found.file.number(), &entry) != 0) {
        found.error = errno;
    } else if (is_foreign(target.directory(), entry)) {
        found.is_foreign = true;
        found.file = file_descriptor();
    } else {
        found.status = entry;
    }
    return found;
}

// Opens a file to be written, made if it is missing or foreign.
file_descriptor open_or_make(const place &directory, const char *name, int how) {
    settled_name target(directory, name);
    file_descriptor made;
    if (!directory.is_usable()) {
        return made;
    }
    for (int tries = 0; tries < most_tries; tries++) {
        standing_file found = find_standing(target, how);
        if (!found.is_foreign && (found.error != 0 || found.status)) {
            errno = found.error != 0 ? found.error : ETXTBSY; // unless it is open
            return std::move(found.file);
        }
        if (found.is_foreign && !target.directory().remove(target.name()) && errno != ENOENT) {
            return {};
        }
        made =
            file_descriptor(::openat(target.directory().number(), target.name(),
                                     O_WRONLY | O_CREAT | O_EXCL | file_flags | how, usual_mode));
        if (made.is_open() || errno != EEXIST) {
            return made;
        }
    }
    return made;
}

// The device is slow: it is asked for the first name, and again for each after one that was taken,
// which somebody may have foreseen.
std::string scratch_file_name(bool is_first_try) {
    constexpr std::string_view letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    static std::mt19937_64 random(std::random_device{}());
    if (!is_first_try) {
        random.seed(std::random_device{}());
    }
    std::string name = "gxsetup.";
    for (int letter = 0; letter < scratch_letters; letter++) {
        name += letters[random() % letters.size()];
    }
    return name;
}

} // namespace

bool is_of_ours(uid_t user) {
    return user == 0 || user == ::geteuid();
}

bool is_ours(const struct stat &entry) {
    return is_of_ours(entry.st_uid) && (entry.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Goes from directory to directory.
class walker {
  public:
    explicit walker(place begin) : here_(std::move(begin)) {}

    // False if the end was not reached: `here` says why.
    bool go(std::string_view path) {
        if (path.empty()) {
            return fail(ENOENT);
        }
        if (path.starts_with('/')) {
            here_.path_.clear();
            enter(::open("/", directory_flags));
        }
        bool is_reached = here_.is_open();
        while (is_reached && !path.empty()) {
            const std::string name(path.substr(0, path.find('/')));
            path.remove_prefix(std::min(name.size() + 1, path.size()));
            is_reached = name.empty() || name == "." || step(name);
        }
        return is_reached;
    }

    place end() { return std::move(here_); }

  private:
    bool fail(int error, bool is_refused = false) {
        here_ = place(error);
        here_.is_refused_ = is_refused;
        return false;
    }

    bool enter(int directory) {
        if (directory < 0) {
            return fail(errno);
        }
        std::string path = std::move(here_.path_);
        here_ = place(file_descriptor(directory), std::move(path));
        return here_.is_open();
    }

    bool step(const std::string &name) {
        if (name == ".." && here_.is_shared()) {
            report_refusal("Not followed: \"%s\" leads out of a directory that others may write",
                           here_.path_of(name));
            return fail(EACCES, true);
        }
        const int next = ::openat(here_.number(), name.c_str(), directory_flags | O_NOFOLLOW);
        if (next >= 0) {
            here_.path_ = here_.path_of(name);
            return enter(next);
        }
        return errno == ENOTDIR || errno == ELOOP ? follow(name) : fail(errno);
    }

    bool follow(const std::string &name) {
        const open_file link = open_link(here_, name.c_str());
        if (!link.is_open()) {
            return fail(errno);
        }
        if (!may_follow(here_, link.status)) {
            report_refusal("Not followed: \"%s\" is a link that another user made",
                           here_.path_of(name));
            return fail(ELOOP, true);
        }
        return links_++ < most_links ? go(text_of_link(link.descriptor.number())) : fail(ELOOP);
    }

    place here_;
    int links_ = 0;
};

place::place(file_descriptor directory, std::string path)
    : directory_(std::move(directory)), path_(std::move(path)) {
    if (!directory_.is_open() || !look_at_open(directory_.number(), status_)) {
        error_ = errno;
        directory_ = file_descriptor();
        return;
    }
    is_shared_ = !is_ours(status_);
}

place::place(std::string_view path) {
    const std::string whole(path);
    if (file_descriptor directory = open_without_links(AT_FDCWD, whole, directory_flags);
        directory.is_open()) {
        *this = place(std::move(directory), whole);
        return;
    }
    walker walk(place(file_descriptor(::open(".", directory_flags)), "."));
    walk.go(path);
    *this = walk.end();
    path_ = whole;
}

place::place(const char *path)
    : place(path != nullptr ? place(std::string_view(path)) : place(EFAULT)) {}

bool place::is_usable() const {
    if (!is_open()) {
        errno = error_;
    }
    return is_open();
}

std::string place::path_of(std::string_view name) const {
    return std::string(path_).append("/").append(name);
}

place place::enter(std::string_view path) const {
    const std::string whole(path);
    if (!is_open()) {
        return place(error_);
    }
    file_descriptor directory = path.starts_with('/')
                                    ? file_descriptor()
                                    : open_without_links(number(), whole, directory_flags);
    if (directory.is_open()) {
        return {std::move(directory), path_of(path)};
    }
    walker walk(place(file_descriptor(::openat(number(), ".", directory_flags)), path_));
    walk.go(path);
    place end = walk.end();
    end.path_ = path_of(path);
    return end;
}

place place::enter_itself(const char *name) const {
    file_descriptor directory(::openat(number(), name, directory_flags | O_NOFOLLOW));
    return directory.is_open() ? place(std::move(directory), path_of(name)) : place(errno);
}

place place::make(const char *name, mode_t mode) const {
    constexpr mode_t only_ours = S_IRUSR; // which no other directory has that could be slipped in
    constexpr mode_t rights = S_IRWXU | S_IRWXG | S_IRWXO;
    const mode_t mask = ::umask(0);
    const bool is_made = is_usable() && ::mkdirat(number(), name, only_ours) == 0;
    ::umask(mask);
    if (!is_made) {
        return place(errno);
    }
    file_descriptor made(::openat(number(), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat entry {};
    if (!made.is_open() || ::fstat(made.number(), &entry) != 0) {
        return place(errno);
    }
    if ((entry.st_mode & rights) != only_ours) {
        return place(EEXIST);
    }
    return ::fchmod(made.number(), mode) == 0 ? place(std::move(made), path_of(name))
                                              : place(errno);
}

bool place::give(uid_t user, gid_t group) const {
    return ::fchownat(number(), "", user, group, AT_EMPTY_PATH) == 0;
}

// Upwards ".." leads wherever the system says: only numbers are compared.
bool place::is_within(const struct stat &directory) const {
    struct stat here = status_;
    file_descriptor above(::openat(number(), ".", directory_flags));
    while (above.is_open() && !is_same_file(directory, here)) {
        const struct stat below = here;
        above = file_descriptor(::openat(above.number(), "..", directory_flags));
        if (!look_at_open(above.number(), here) || is_same_file(below, here)) {
            return false;
        }
    }
    return above.is_open();
}

file_descriptor place::lock() const {
    constexpr int most_waits = 600;
    constexpr timespec tenth_of_a_second = {0, 100'000'000};
    file_descriptor directory(::openat(number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!is_shared()) {
        ::flock(directory.number(), LOCK_EX);
        return directory;
    }
    for (int waits = 0; waits < most_waits; waits++) {
        if (::flock(directory.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
            break;
        }
        ::nanosleep(&tenth_of_a_second, nullptr);
    }
    return directory;
}

directory_handle place::list() const {
    if (!is_usable()) {
        return nullptr;
    }
    file_descriptor directory(::openat(number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.is_open()) {
        return nullptr;
    }
    directory_handle list(::fdopendir(directory.number()));
    if (list) {
        directory.release();
    }
    return list;
}

bool place::look(const char *name, struct stat &entry) const {
    return is_usable() && ::fstatat(number(), name, &entry, 0) == 0;
}

bool place::look_at_name(const char *name, struct stat &entry) const {
    return is_usable() && ::fstatat(number(), name, &entry, AT_SYMLINK_NOFOLLOW) == 0;
}

open_file place::open_to_read(const char *name) const {
    open_file file;
    if (!is_usable()) {
        return file;
    }
    settled_name target(*this, name);
    do {
        file.descriptor = file_descriptor(
            ::openat(target.directory().number(), target.name(), O_RDONLY | file_flags));
    } while (!file.is_open() && errno == ELOOP && target.follow());
    if (target.is_refused()) {
        report_refusal("Not followed: \"%s\" is a link that another user made", path_of(name));
    }
    if (!file.is_open()) {
        return file;
    }
    file.is_shared = target.directory().is_shared();
    if (::fstat(file.descriptor.number(), &file.status) != 0) {
        file.descriptor = file_descriptor();
    } else if (has_foreign_name(target.directory(), file.status)) {
        report_refusal("Not read: \"%s\" has more names in a directory that others may write",
                       path_of(name));
        file.descriptor = file_descriptor();
        errno = EMLINK;
    }
    return file;
}

open_file place::open_plain(const char *name, read_limit limit) const {
    open_file file = open_to_read(name);
    if (!file.is_open()) {
        return file;
    }
    const bool is_limited = limit.bytes > 0 && (file.is_shared || !limit.only_if_shared);
    int reason = 0;
    if (!S_ISREG(file.status.st_mode)) {
        reason = S_ISDIR(file.status.st_mode) ? EISDIR : EINVAL;
    } else if (is_limited && file.status.st_size > limit.bytes) {
        reason = EFBIG;
    }
    if (reason != 0) {
        file.descriptor = file_descriptor();
        errno = reason;
    }
    return file;
}

bool place::can_be_read(const char *name) const {
    settled_name target(*this, name);
    do {
        const file_descriptor file(
            ::openat(target.directory().number(), target.name(), O_RDONLY | file_flags));
        if (file.is_open()) {
            return true;
        }
    } while (errno == ELOOP && target.follow());
    return false;
}

file_descriptor place::open_to_write(const char *name) const {
    file_descriptor file = open_or_make(*this, name, 0);
    struct stat entry {};
    // Emptied once it is known not to be foreign.
    if (file.is_open() && ::fstat(file.number(), &entry) == 0 && entry.st_size > 0 &&
        ::ftruncate(file.number(), 0) != 0) {
        file = file_descriptor();
    }
    return file;
}

file_descriptor place::open_to_append(const char *name) const {
    return open_or_make(*this, name, O_APPEND);
}

file_descriptor place::create_anew(const char *name) const {
    for (int tries = 0; tries < most_tries; tries++) {
        if (!remove(name) && errno != ENOENT) {
            break;
        }
        file_descriptor file(
            ::openat(number(), name, O_RDWR | O_CREAT | O_EXCL | file_flags, S_IRUSR | S_IWUSR));
        if (file.is_open() || errno != EEXIST) {
            return file;
        }
    }
    return file_descriptor();
}

bool place::remove(const char *name) const {
    return is_usable() && ::unlinkat(number(), name, 0) == 0;
}

bool place::remove_directory(const char *name) const {
    return is_usable() && ::unlinkat(number(), name, AT_REMOVEDIR) == 0;
}

bool place::rename(const char *from, const char *to) const {
    return is_usable() && ::renameat(number(), from, number(), to) == 0;
}

named_place locate(std::string_view path) {
    auto [directory, name] = split(path);
    return {place(directory.empty() ? "." : directory), std::string(name)};
}

named_place locate_directory(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return locate(path);
}

file_descriptor open_plain_at(const std::string &path, read_limit limit) {
    file_descriptor file = open_without_links(AT_FDCWD, path, O_RDONLY | file_flags);
    struct stat status {};
    // With one name and within the limit it may be read wherever it stands.
    if (file.is_open() && ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_nlink == 1 && (limit.bytes == 0 || status.st_size <= limit.bytes)) {
        return file;
    }
    const named_place where = locate(path);
    return std::move(where.directory.open_plain(where.name.c_str(), limit).descriptor);
}

bool settled_name::follow() {
    const place &here = directory();
    const open_file link = open_link(here, name());
    if (!link.is_open()) {
        return false;
    }
    is_refused_ = !may_follow(here, link.status);
    if (is_refused_ || links_++ == most_links) {
        errno = ELOOP;
        return false;
    }
    const std::string text = text_of_link(link.descriptor.number());
    const auto [path, last] = split(text);
    if (!path.empty()) {
        place next = here.enter(path);
        if (!next.is_open()) {
            errno = next.error();
            return false;
        }
        elsewhere_ = std::move(next);
    }
    name_ = last;
    return true;
}

new_file::new_file(const place &directory, const char *name, when_missing how, mode_t mode)
    : target_(directory, name), mode_(mode) {
    // Of the files of a directory mostly all are there already, or none is.
    static bool is_old_expected = false;
    if (!directory.is_open()) {
        error_ = directory.error();
    } else if (how == when_missing::beside) {
        find_old(how);
    } else if (is_old_expected || !make_in_place()) {
        find_old(how);
        is_old_expected = old_.has_value();
    }
}

// False if something is there already.
bool new_file::make_in_place() {
    file_ = make_file(target_.directory(), target_.name(), mode_);
    error_ = file_.is_open() || errno == EEXIST ? 0 : errno;
    return file_.is_open() || error_ != 0;
}

void new_file::find_old(when_missing how) {
    // Root may write every plain file: there is nothing to find out by opening it.
    if (::geteuid() == 0) {
        struct stat entry {};
        const bool is_there = directory().look_at_name(target_.name(), entry);
        if (!is_there && errno != ENOENT) {
            error_ = errno;
            return;
        }
        if (is_there && S_ISREG(entry.st_mode) && !is_foreign(directory(), entry)) {
            old_ = entry;
            return;
        }
    }
    standing_file found = find_standing(target_, 0);
    if (!found.is_foreign) {
        error_ = found.error;
        old_ = found.status;
    }
    old_file_ = std::move(found.file);
    // Also behind a link a file may not be there yet.
    if (found.is_missing && how == when_missing::in_place) {
        make_in_place();
    }
}

new_file::~new_file() {
    if (!scratch_.empty()) {
        const int reason = errno;
        scratch_place_->remove(scratch_.c_str());
        errno = reason;
    }
}

bool new_file::start(const char *scratch_name) {
    if (file_.is_open()) {
        return true;
    }
    if (is_special()) {
        file_ = std::move(old_file_);
        return true;
    }
    return make_beside(scratch_name) || write_directly();
}

bool new_file::make_beside(const char *scratch_name) {
    const mode_t mode = old_ ? S_IRUSR | S_IWUSR : mode_ & most_;
    scratch_place_ = scratch_name != nullptr ? &target_.first_directory() : &directory();
    if (scratch_name != nullptr && !scratch_place_->remove(scratch_name) && errno != ENOENT) {
        return false;
    }
    for (int tries = 0; tries < most_tries && !file_.is_open(); tries++) {
        scratch_ = scratch_name != nullptr ? scratch_name : scratch_file_name(tries == 0);
        file_ = make_file(*scratch_place_, scratch_.c_str(), mode);
        if (!file_.is_open() && errno != EEXIST) {
            break;
        }
    }
    if (!file_.is_open()) {
        scratch_.clear();
        return false;
    }
    // The owner first: a change of owner can clear mode bits (POSIX chown).
    const bool is_owned = !old_ || ::fchown(file_.number(), old_->st_uid, old_->st_gid) == 0;
    if (is_owned && (!old_ || ::fchmod(file_.number(), old_->st_mode & most_) == 0)) {
        return true;
    }
    const int reason = is_owned ? errno : EPERM;
    file_ = file_descriptor();
    scratch_place_->remove(scratch_.c_str());
    scratch_.clear();
    errno = reason;
    return false;
}

bool new_file::write_directly() {
    const int reason = errno;
    if (!old_ || (reason != EACCES && reason != EPERM && reason != EROFS)) {
        return false;
    }
    struct stat entry {};
    if (!old_file_.is_open()) {
        old_file_ =
            file_descriptor(::openat(directory().number(), target_.name(), O_WRONLY | file_flags));
    }
    if (!old_file_.is_open() || ::fstat(old_file_.number(), &entry) != 0 ||
        !is_same_file(entry, *old_)) {
        errno = reason;
        return false;
    }
    file_ = std::move(old_file_);
    const mode_t narrowed = entry.st_mode & most_;
    if (narrowed != (entry.st_mode & all_mode_bits) && ::fchmod(file_.number(), narrowed) != 0) {
        return false;
    }
    return entry.st_size == 0 || ::ftruncate(file_.number(), 0) == 0;
}

bool new_file::put_in_place() {
    if (!file_.close()) {
        return false;
    }
    if (scratch_.empty()) {
        return true;
    }
    if (::renameat(scratch_place_->number(), scratch_.c_str(), directory().number(),
                   target_.name()) != 0) {
        return false;
    }
    scratch_.clear();
    return true;
}

void tell_refusals(int (*receiver)(const char *format, ...)) {
    refusal_receiver = receiver;
}
