#include "templates/stamp.h"

#include "core/console.h"
#include "core/format.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/stream.h"
#include "dialogue/question.h"
#include "files/search.h"
#include "templates/checksum.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *scratch_name = "temp.tpl";

// What a mode changes in a template.
struct stamp_rules {
    std::string_view dropped; // pieces that begin so are left out
    std::string first_line;   // header mode
    bool has_checksum;        // checksum mode: its line is written last
};

// Returns `error`.
int log_failure(const char *failure, const path_text &path, int error) {
    emsg("%s %s, %s", failure, path.c_str(), std::strerror(error));
    return error;
}

// Returns whether a path can be acted on. One that was cut leads to another file: errno then says
// that the name is too long.
bool is_whole(const path_text &path) {
    if (path.is_cut()) {
        errno = ENAMETOOLONG;
    }
    return !path.is_cut();
}

// Opens and creates files. Both return null, with errno set, on failure.
stream_handle open_template(const path_text &path) {
    return is_whole(path) ? open_plain_file(path.c_str()) : nullptr;
}

stream_handle create_scratch(const path_text &path) {
    stream_handle file = is_whole(path) ? stream_of(create_anew(path.c_str()), "w") : nullptr;
    if (file) {
        // Large parts are written, which a buffer would only split.
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    return file;
}

void remove_old_scratch(const path_text &path) {
    if (is_whole(path)) {
        ::unlink(path.c_str());
    }
}

// Gives the scratch file the template's owner, if the system allows it, and its mode. Returns
// false, with errno set, without the mode: nobody could read the template any more.
bool copy_owner_and_mode(std::FILE *from, std::FILE *to) {
    struct stat status {};
    if (::fstat(::fileno(from), &status) != 0) {
        return false;
    }
    // The owner first: a change of owner can clear mode bits (POSIX chown).
    const bool is_owned = ::fchown(::fileno(to), status.st_uid, status.st_gid) == 0;
    // The set-user-ID bit of somebody else's file must not serve us.
    constexpr mode_t rights = S_IRWXU | S_IRWXG | S_IRWXO;
    constexpr mode_t special = S_ISUID | S_ISGID | S_ISVTX;
    return ::fchmod(::fileno(to), status.st_mode & (is_owned ? rights | special : rights)) == 0;
}

bool write_text(std::string_view text, std::FILE *to) {
    return std::fwrite(text.data(), 1, text.size(), to) == text.size();
}

// Copies a template with its stamp. Returns false, with errno set, if a read (ferror of `from`) or
// a write fails.
bool copy_stamped(const stamp_rules &rules, std::FILE *from, std::FILE *to) {
    if (!write_text(rules.first_line, to)) {
        return false;
    }
    running_checksum checksum;
    template_reader reader(from, rules.dropped);
    while (const std::optional<template_part> part = reader.next()) {
        if (rules.has_checksum) {
            checksum.add(*part);
        }
        if (!part->bytes.starts_with(rules.dropped) && !write_text(part->bytes, to)) {
            return false;
        }
    }
    if (std::ferror(from) != 0) {
        return false;
    }
    return !rules.has_checksum || write_text(formatted("\n||checksum=%d||\n", checksum.sum()), to);
}

// Stamps the template at `path`, open as `from`, into the new file `to` at `scratch` and renames
// that to `path`, where at no time a template is missing. Returns 0, or the error, which it logs.
int replace_template(const stamp_rules &rules, const path_text &path, std::FILE *from,
                     const path_text &scratch, stream_handle to) {
    const bool is_written = copy_owner_and_mode(from, to.get()) &&
                            copy_stamped(rules, from, to.get()) && close_file(std::move(to));
    if (std::ferror(from) != 0) {
        return log_failure("Can't open", path, errno);
    }
    if (!is_written) {
        return log_failure("Can't write", scratch, errno);
    }
    // It is the rename that removes the old template.
    if (std::rename(scratch.c_str(), path.c_str()) != 0) {
        return log_failure("can't remove", path, errno);
    }
    return 0;
}

// Returns false if the template keeps its old content.
bool stamp_template(const stamp_rules &rules, const path_text &path, const path_text &scratch) {
    const stream_handle from = open_template(path);
    if (!from) {
        const int error = errno;
        // The checksum mode fails twice: at the sum and at the copy.
        if (rules.has_checksum) {
            log_failure("can't open", path, error);
        }
        log_failure("Can't open", path, error);
        return false;
    }
    stream_handle to = create_scratch(scratch);
    if (!to) {
        log_failure("Can't open", scratch, errno);
        return false;
    }
    const int error = replace_template(rules, path, from.get(), scratch, std::move(to));
    // Required: logs "can't remove" when it could, which it can only after a failure.
    if (std::remove(scratch.c_str()) == 0) {
        log_failure("can't remove", scratch, error);
    }
    return error == 0;
}

int stamp_directory(const stamp_rules &rules, const path_text &directory, const char *progress) {
    found_names names;
    const int count = wild_find2(directory.c_str(), "*.tpl", names);
    if (count == 0) {
        print_imsg("No files found in %s", directory.c_str());
        return 0;
    }
    print("\n%s", progress);
    // An interrupted run leaves a scratch file. If the search listed it, it now shows an x.
    const path_text scratch(path_in(directory.c_str(), scratch_name).c_str());
    remove_old_scratch(scratch);
    for_each_name(names, count, [&](const char *name) {
        const path_text path(path_in(directory.c_str(), name).c_str());
        if (stamp_template(rules, path, scratch)) {
            print_dot();
        } else {
            print("x");
        }
    });
    print("\nUpdate complete.\n");
    return 1;
}

path_text ask_directory() {
    return path_text(question(D_TMPLTS2_Q, "./tpl"));
}

} // namespace

int tpl_add_header() {
    const path_text directory = ask_directory();
    const path_text set(question(I_TMPLT_SET_Q, "kst_s2"));
    const path_text version(question(I_TMPLT_VERS_Q, "2.0a"));
    const stamp_rules rules = {
        .dropped = "||header:",
        .first_line = formatted("||header: modified=false tpl_set=%s tpl_version=%s||\n",
                                set.c_str(), version.c_str()),
        .has_checksum = false,
    };
    return stamp_directory(rules, directory, "Updating headers");
}

int add_checksum() {
    const stamp_rules rules = {
        .dropped = checksum_line_start, .first_line = {}, .has_checksum = true};
    return stamp_directory(rules, ask_directory(), "Updating checksums");
}
