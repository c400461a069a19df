// Files that are written into an open directory, over an older one or not. Copies, settings and
// saved answers are written through this.
#pragma once

#include "core/place_walk.h"

#include <optional>
#include <string>
#include <sys/stat.h>

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

    // Limits the mode of the file to the bits of `most`; call it before `start`. With private_mode
    // the one who runs the program owns the file, whoever owned the old one.
    void limit_mode(mode_t most) { most_ = most; }

    // Returns whether the file may be given to a user. A private file may not, nor, unless it
    // replaces one of that user's, a file behind a link that others could have put there.
    [[nodiscard]] bool may_be_given(uid_t user) const;

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
