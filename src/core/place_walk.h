// How the bodies of core/place and core/new_file look names up: which links are followed, what is
// foreign, and who could have put there what is found.
#pragma once

#include "core/place.h"

#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

inline constexpr int directory_flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
inline constexpr int file_flags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// How often a name is tried that others keep taking.
inline constexpr int most_tries = 100;

// Tells the receiver of tell_refusals. The format has one "%s".
void report_refusal(const char *format, const std::string &path);

// Looks at an open file of whatever flags. False, with errno set, on failure.
bool look_at_open(int number, struct stat &entry);

// Takes a path apart into directory and last component. What leads to a directory itself has the
// name ".".
std::pair<std::string_view, std::string_view> split_path(std::string_view path);

// Whether a plain file has more names where others may write; whether a file may not be written
// through.
bool has_foreign_name(const place &directory, const struct stat &file);
bool is_foreign(const place &directory, const struct stat &file);

// Walks on from an open directory, step by step.
place walk(place begin, std::string_view path);

// Walks to the directory once more and finds out who could have put it there.
custody custody_of(const place &directory);

// Keeps in mind what stands in a directory that is about to be given away: nobody could have moved
// that there.
void remember_entries(const place &directory);

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

    // Whether others could have moved a link there that was followed.
    [[nodiscard]] bool is_moved() const { return !links_met_.movers.empty(); }

    // Who could have put `entry` where the name leads now.
    [[nodiscard]] custody met(const struct stat &entry) const;

  private:
    const place *given_;
    std::optional<place> elsewhere_;
    std::string name_;
    custody links_met_;
    int links_ = 0;
    bool is_refused_ = false;
};

// What stands where a file is to be written: nothing, something foreign, or a file and what it is.
struct standing_file {
    bool is_missing = false;
    bool is_foreign = false;
    std::optional<struct stat> status;
    file_descriptor file; // open to be written, but not a program that is being run
    int error = 0;        // why the file cannot be written (as errno)
};

// Follows the name to its file and opens that, with further flags of open (POSIX).
standing_file find_standing(settled_name &target, int flags);
