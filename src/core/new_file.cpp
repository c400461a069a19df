#include "core/new_file.h"

#include <cerrno>
#include <fcntl.h>
#include <random>
#include <string_view>
#include <unistd.h>

namespace {

constexpr int scratch_letters = 6;

file_descriptor make_file(const place &directory, const char *name, mode_t mode) {
    return file_descriptor(
        ::openat(directory.number(), name, O_WRONLY | O_CREAT | O_EXCL | file_flags, mode));
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
    const bool keeps_owner = old_ && most_ != private_mode;
    const mode_t mode = keeps_owner ? private_mode : mode_ & most_;
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
    const bool is_owned = !keeps_owner || ::fchown(file_.number(), old_->st_uid, old_->st_gid) == 0;
    // Where others may write, a set-user-ID bit could be one that they moved there.
    constexpr mode_t rights = S_IRWXU | S_IRWXG | S_IRWXO;
    const mode_t kept = directory().is_shared() ? rights & most_ : most_;
    if (is_owned && (!keeps_owner || ::fchmod(file_.number(), old_->st_mode & kept) == 0)) {
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
    if (!old_ || most_ == private_mode ||
        (reason != EACCES && reason != EPERM && reason != EROFS)) {
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

bool new_file::may_be_given(uid_t user) const {
    const bool is_theirs = old_ && old_->st_uid == user;
    if (target_.is_moved() && !is_theirs) {
        report_refusal("Not given away: \"%s\" is behind a link that another user could have put "
                       "there",
                       directory().path_of(target_.name()));
        return false;
    }
    return most_ != private_mode;
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
