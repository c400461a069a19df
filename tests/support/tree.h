// What the wizard leaves behind, as texts that a test compares with literals: trees of files with
// their modes and contents, their owners, the lines of a log.
#pragma once

#include "support/world.h"

#include <map>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

// What is seen of a file or directory from outside; of what is not there, nothing.
struct file_state {
    mode_t mode = 0;
    uid_t user = 0;
    gid_t group = 0;
    std::string content = {}; // of a plain file

    [[nodiscard]] unsigned permissions() const { return mode & 07777U; }

    bool operator==(const file_state &) const = default;
};

using tree_state = std::map<std::string, file_state>; // by path

file_state state_of(const std::string &path);

// The mode of a file or directory, "0770", and its owner, "USER:GROUP" in numbers. A link is
// looked at itself.
std::string mode_of(const std::string &path);
std::string owner_of(const std::string &path);

// The states of these files and directories and of all that lies below them.
tree_state states_of(const std::vector<std::string> &paths);

// A line for each entry below `directory`, sorted by path: mode and path, a directory with a "/" at
// its end, and the content of a file when it is short and printable. The root shows as "@".
std::string tree_of(const std::string &directory);
std::string tree_of(const world &host, const std::string &directory);

// The trees of the programs, the images and the templates.
std::string site_tree(const world &host);

// The entries at and below `directory` that the owner of installed files does not own: user nobody
// and its primary group, or the group nobody where there is one. Sorted, one a line.
std::string not_owned(const std::string &directory);

// The content of a file, with "@" for the root.
std::string shown_file(const world &host, const std::string &path);

// The lines of a log without their time stamps, with "@" for the root. A line without a stamp shows
// as it is, behind "(no stamp)". Where the wizard works through a directory, the order of its lines
// is the directory's: each run of lines about copies and new directories is sorted.
std::string shown_log(const world &host, const std::string &path);

// The same without the lines that hold one of `left_out`.
std::string shown_log_without(const world &host, const std::string &path,
                              const std::vector<std::string_view> &left_out);

// The numbers that the wizard gives the template sets of a directory: its order of listing them.
class set_numbers {
  public:
    explicit set_numbers(const std::string &directory) : sets_(set_names(directory)) {}

    // A text in which "tpl_set {SET} " stands in place of the line's number, where that is the
    // set's.
    [[nodiscard]] std::string named(const std::string &text) const;

  private:
    std::vector<std::string> sets_;
};
