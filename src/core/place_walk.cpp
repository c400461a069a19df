#include "core/place_walk.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <tuple>
#include <unistd.h>

namespace {

constexpr int most_links = 40; // as many as the system follows
constexpr uid_t several_users = static_cast<uid_t>(-1);

int (*refusal_receiver)(const char *format, ...) = nullptr;

// What stood in directories before they were given away: the directory, the name in it and the
// entry of that name.
using entry_key = std::tuple<dev_t, ino_t, std::string, dev_t, ino_t>;
std::set<entry_key> remembered;

entry_key key_of(const place &directory, const char *name, const struct stat &entry) {
    const struct stat &above = directory.status();
    return {above.st_dev, above.st_ino, name, entry.st_dev, entry.st_ino};
}

// A link of ours that another user gave a second name leads where that user wants.
bool may_follow(const place &directory, const struct stat &link) {
    return !directory.is_shared() || (is_of_ours(link.st_uid) && link.st_nlink == 1);
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

// Whether others may rename a file or directory in a directory, whosever it is. In a sticky one of
// ours (/tmp) they may rename their own entries alone, and move only files there.
bool is_open_to_others(const struct stat &directory, bool has_directory) {
    const bool is_sticky = (directory.st_mode & S_ISVTX) != 0 && is_of_ours(directory.st_uid);
    return !is_ours(directory) && !(is_sticky && has_directory);
}

// Notes who could have moved the entry there.
void note_movers(custody &met, const place &directory, const char *name, const struct stat &entry) {
    if (!is_open_to_others(directory.status(), S_ISDIR(entry.st_mode)) ||
        remembered.contains(key_of(directory, name, entry))) {
        return;
    }
    const struct stat &status = directory.status();
    const bool is_one_user = !is_of_ours(status.st_uid) && (status.st_mode & S_IWOTH) == 0;
    met.movers.push_back(is_one_user ? status.st_uid : several_users);
}

// The rights of group and others to use what a walk finds.
constexpr mode_t to_enter = S_IXGRP | S_IXOTH;
constexpr mode_t to_read = S_IRGRP | S_IROTH;

// Takes one step of a walk into account.
void note_step(custody &met, const place &directory, const char *name, const struct stat &entry,
               mode_t rights) {
    const bool is_first = met.movers.empty();
    note_movers(met, directory, name, entry);
    if (met.is_choice_of(entry.st_uid)) {
        return;
    }
    const struct stat &above = directory.status();
    // The group counts if it is the one that may write the directory.
    const bool counts_group =
        is_first && entry.st_gid == above.st_gid && (above.st_mode & S_IWOTH) == 0;
    const mode_t counted = counts_group ? rights : rights & S_IRWXO;
    met.is_hidden = met.is_hidden || (entry.st_mode & counted) == 0;
}

// Whether others could have moved there what a path without links leads to. A look by path is
// enough: up to a shared directory nobody can change it between two looks.
bool can_be_moved(std::string_view path) {
    std::string above = path.starts_with('/') ? "/" : ".";
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(name.size() + 1, path.size()));
        if (name.empty() || name == ".") {
            continue;
        }
        struct stat status {};
        if (name == ".." || ::lstat(above.c_str(), &status) != 0 ||
            is_open_to_others(status, true)) {
            return true;
        }
        above.append("/").append(name);
    }
    return false;
}

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

} // namespace

void tell_refusals(int (*receiver)(const char *format, ...)) {
    refusal_receiver = receiver;
}

void report_refusal(const char *format, const std::string &path) {
    if (refusal_receiver != nullptr) {
        const int error = errno;
        refusal_receiver(format, path.c_str());
        errno = error;
    }
}

bool has_foreign_name(const place &directory, const struct stat &file) {
    return directory.is_shared() && S_ISREG(file.st_mode) && file.st_nlink > 1;
}

bool is_foreign(const place &directory, const struct stat &file) {
    const bool is_special = !S_ISREG(file.st_mode) && !S_ISDIR(file.st_mode);
    return has_foreign_name(directory, file) ||
           (directory.is_shared() && is_special && !is_of_ours(file.st_uid));
}

bool look_at_open(int number, struct stat &entry) {
    return ::fstatat(number, "", &entry, AT_EMPTY_PATH) == 0;
}

std::pair<std::string_view, std::string_view> split_path(std::string_view path) {
    const std::size_t separator = path.rfind('/');
    const std::string_view name = path.substr(separator + 1); // all of it without a separator
    if (name == "." || name == ".." || (name.empty() && !path.empty())) {
        return {path, "."};
    }
    return {path.substr(0, separator == 0 ? 1 : path.size() - name.size()), name};
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
            here_ = place(file_descriptor(::open("/", directory_flags)), "");
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

    [[nodiscard]] const custody &met() const { return met_; }

  private:
    bool fail(int error, bool is_refused = false) {
        here_ = place(error);
        here_.is_refused_ = is_refused;
        return false;
    }

    bool step(const std::string &name) {
        if (name == ".." && here_.is_shared()) {
            report_refusal("Not followed: \"%s\" leads out of a directory that others may write",
                           here_.path_of(name));
            return fail(EACCES, true);
        }
        place next = here_.enter_itself(name.c_str());
        if (!next.is_open()) {
            return next.error() == ENOTDIR || next.error() == ELOOP ? follow(name)
                                                                    : fail(next.error());
        }
        note_step(met_, here_, name.c_str(), next.status(), to_enter);
        here_ = std::move(next);
        return true;
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
        note_movers(met_, here_, name.c_str(), link.status);
        met_.is_hidden = met_.is_hidden || !met_.movers.empty();
        return links_++ < most_links ? go(text_of_link(link.descriptor.number())) : fail(ELOOP);
    }

    place here_;
    custody met_;
    int links_ = 0;
};

place walk(place begin, std::string_view path) {
    walker steps(std::move(begin));
    steps.go(path);
    return steps.end();
}

custody custody_of(const place &directory) {
    if (directory.is_straight() && !can_be_moved(directory.path())) {
        return {};
    }
    walker steps(place("."));
    steps.go(directory.path());
    custody met = steps.met();
    const place end = steps.end();
    if (!end.is_open() || !is_same_file(end.status(), directory.status())) {
        met.movers.push_back(several_users);
        met.is_hidden = true;
    }
    return met;
}

void remember_entries(const place &directory) {
    const directory_handle list = directory.list();
    while (const dirent *entry = list ? ::readdir(list.get()) : nullptr) {
        const char *name = &entry->d_name[0];
        struct stat status {};
        if (directory.look_at_name(name, status)) {
            remembered.insert(key_of(directory, name, status));
        }
    }
}

custody settled_name::met(const struct stat &entry) const {
    custody all = given_->met();
    for (const custody &other : {elsewhere_ ? elsewhere_->met() : custody(), links_met_}) {
        all.movers.insert(all.movers.end(), other.movers.begin(), other.movers.end());
        all.is_hidden = all.is_hidden || other.is_hidden;
    }
    note_step(all, directory(), name(), entry, to_read);
    return all;
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
    note_movers(links_met_, here, name(), link.status);
    links_met_.is_hidden = is_moved();
    const std::string text = text_of_link(link.descriptor.number());
    const auto [path, last] = split_path(text);
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

standing_file find_standing(settled_name &target, int flags) {
    standing_file found;
    const auto open = [&] {
        found.file = file_descriptor(
            ::openat(target.directory().number(), target.name(), O_WRONLY | file_flags | flags));
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
