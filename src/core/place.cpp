#include "core/place_walk.h"

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <sys/file.h>
#include <sys/syscall.h>

namespace {

// The system's own walk (Linux 5.6), which gives up at the first link. Not open on any failure, and
// with "..", on which it has no rules of ours.
file_descriptor open_without_links(int from, const std::string &path, int flags) {
    struct {
        std::uint64_t flags, mode, resolve;
    } how = {static_cast<std::uint64_t>(flags), 0,
             0x04 | 0x02}; // RESOLVE_NO_SYMLINKS, RESOLVE_NO_MAGICLINKS
    constexpr long number_of_openat2 = 437;
    if (path.find("..") != std::string::npos) {
        errno = ELOOP;
        return {};
    }
    return file_descriptor(
        static_cast<int>(::syscall(number_of_openat2, from, path.c_str(), &how, sizeof(how))));
}

// Whether the system's own walk failed as ours would: no link was on the way.
bool is_final(int error) {
    return error == ENOENT || error == ENOTDIR;
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

} // namespace

bool is_of_ours(uid_t user) {
    return user == 0 || user == ::geteuid();
}

bool is_ours(const struct stat &entry) {
    return is_of_ours(entry.st_uid) && (entry.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

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
    file_descriptor directory = open_without_links(AT_FDCWD, whole, directory_flags);
    const bool needs_no_walk = directory.is_open();
    if (needs_no_walk) {
        *this = place(std::move(directory), whole);
    } else if (is_final(errno)) {
        *this = place(errno);
    } else {
        *this = walk(place(file_descriptor(::open(".", directory_flags)), "."), path);
    }
    path_ = whole;
    is_straight_ = needs_no_walk;
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
    return std::string(path_).append(path_.ends_with('/') ? "" : "/").append(name);
}

place place::enter(std::string_view path) const {
    if (!is_open()) {
        return place(error_);
    }
    if (path.starts_with('/')) {
        return place(path);
    }
    const std::string whole(path);
    file_descriptor directory = open_without_links(number(), whole, directory_flags);
    const bool needs_no_walk = directory.is_open();
    if (!needs_no_walk && is_final(errno)) {
        return place(errno);
    }
    place end =
        needs_no_walk
            ? place(std::move(directory), "")
            : walk(place(file_descriptor(::openat(number(), ".", directory_flags)), path_), path);
    end.path_ = path_of(path);
    end.is_straight_ = needs_no_walk && is_straight_;
    return end;
}

place place::enter_itself(const char *name) const {
    file_descriptor directory(::openat(number(), name, directory_flags | O_NOFOLLOW));
    if (!directory.is_open()) {
        return place(errno);
    }
    place end(std::move(directory), path_of(name));
    end.is_straight_ = is_straight_;
    return end;
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
    if (::fchmod(made.number(), mode) != 0) {
        return place(errno);
    }
    place end(std::move(made), path_of(name));
    end.is_straight_ = is_straight_;
    end.is_new_ = true;
    return end;
}

bool place::give(uid_t user, gid_t group) {
    if (status_.st_uid == user && status_.st_gid == group) {
        return true;
    }
    // What is empty discloses nothing. Nobody but root gives anything away.
    if (status_.st_uid != user && ::geteuid() == 0 && !is_new_ && !is_empty()) {
        if (!met().is_choice_of(status_.st_uid)) {
            report_refusal("Not given away: \"%s\" could have been put there by another user",
                           path_);
            errno = EPERM;
            return false;
        }
        remember_entries(*this);
    }
    if (::fchownat(number(), "", user, group, AT_EMPTY_PATH) != 0) {
        return false;
    }
    status_.st_uid = user;
    status_.st_gid = group;
    is_shared_ = !is_ours(status_);
    return true;
}

bool place::is_empty() const {
    const directory_handle names = list();
    while (const dirent *entry = names ? ::readdir(names.get()) : nullptr) {
        const std::string_view name = &entry->d_name[0];
        if (name != "." && name != "..") {
            return false;
        }
    }
    return names != nullptr;
}

const custody &place::met() const {
    if (!met_) {
        met_ = custody_of(*this);
    }
    return *met_;
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
    file_descriptor directory = open_itself();
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
    file_descriptor directory = open_itself();
    if (!directory.is_open()) {
        return nullptr;
    }
    directory_handle list(::fdopendir(directory.number()));
    if (list) {
        directory.release();
    }
    return list;
}

bool place::can_be_listed() const {
    return open_itself().is_open();
}

// Opens the directory for reading; not open, with errno set, on failure.
file_descriptor place::open_itself() const {
    return is_usable()
               ? file_descriptor(::openat(number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC))
               : file_descriptor();
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
        return file;
    }
    const custody path_custody = target.met(file.status);
    file.is_owners_choice = path_custody.is_choice_of(file.status.st_uid);
    file.is_private = !file.is_owners_choice && path_custody.is_hidden;
    if (has_foreign_name(target.directory(), file.status)) {
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
    for (int tries = 0; is_usable() && tries < most_tries; tries++) {
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
    auto [directory, name] = split_path(path);
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
