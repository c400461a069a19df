#include "templates/stamp.h"

#include "core/console.h"
#include "core/format.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/place.h"
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
    std::string_view dropped; // pieces that begin with it are left out
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

// A file of the templates directory, and its path as it is logged.
struct named_file {
    const place &directory;
    const char *name;
    path_text path;
};

// Opens and creates files. Both return null, with errno set, on failure.
stream_handle open_template(const named_file &file) {
    if (!is_whole(file.path)) {
        return nullptr;
    }
    open_file opened = file.directory.open_plain(file.name, template_limit);
    return stream_of(opened.descriptor.release(), "r");
}

stream_handle create_scratch(const named_file &file) {
    if (!is_whole(file.path)) {
        return nullptr;
    }
    stream_handle stream = stream_of(file.directory.create_anew(file.name).release(), "w");
    if (stream) {
        // Large parts are written, which a buffer would only split.
        std::setvbuf(stream.get(), nullptr, _IONBF, 0);
    }
    return stream;
}

// Gives the scratch file the template's owner, if the system allows it, and its mode. Returns
// false, with errno set, without the mode: nobody could read the template any more.
bool copy_owner_and_mode(std::FILE *from, std::FILE *to, bool is_shared) {
    struct stat status {};
    if (::fstat(::fileno(from), &status) != 0) {
        return false;
    }
    // The owner first: a change of owner can clear mode bits (POSIX chown).
    const bool is_owned = ::fchown(::fileno(to), status.st_uid, status.st_gid) == 0;
    // The set-user-ID bit of somebody else's file must not serve us, nor ours somebody else.
    constexpr mode_t rights = S_IRWXU | S_IRWXG | S_IRWXO;
    constexpr mode_t special = S_ISUID | S_ISGID | S_ISVTX;
    const mode_t kept = is_owned && !is_shared ? rights | special : rights;
    return ::fchmod(::fileno(to), status.st_mode & kept) == 0;
}

bool write_text(std::string_view text, std::FILE *to) {
    return std::fwrite(text.data(), 1, text.size(), to) == text.size();
}

enum class step { none, reading, writing };

// Copies a template with its stamp. Returns the step that failed, with errno set.
step copy_stamped(const stamp_rules &rules, std::FILE *from, std::FILE *to) {
    if (!write_text(rules.first_line, to)) {
        return step::writing;
    }
    running_checksum checksum;
    template_reader reader(from, rules.dropped);
    while (const std::optional<template_part> part = reader.next()) {
        if (rules.has_checksum) {
            checksum.add(*part);
        }
        if (!part->bytes.starts_with(rules.dropped) && !write_text(part->bytes, to)) {
            return step::writing;
        }
    }
    if (reader.has_failed()) {
        return step::reading;
    }
    const std::string last_line =
        rules.has_checksum ? formatted("\n||checksum=%d||\n", checksum.sum()) : "";
    return write_text(last_line, to) ? step::none : step::writing;
}

// Stamps the template, open as `from`, into the new scratch file, open as `to`, and renames that to
// the template, which at no time is missing. Returns 0, or the error, which it logs.
int replace_template(const stamp_rules &rules, const named_file &file, std::FILE *from,
                     const named_file &scratch, stream_handle to) {
    step failed = step::writing;
    if (copy_owner_and_mode(from, to.get(), file.directory.is_shared())) {
        failed = copy_stamped(rules, from, to.get());
    }
    if (failed == step::none && !close_file(std::move(to))) {
        failed = step::writing;
    }
    if (failed == step::reading) {
        return log_failure("Can't open", file.path, errno);
    }
    if (failed == step::writing) {
        return log_failure("Can't write", scratch.path, errno);
    }
    // It is the rename that removes the old template.
    if (!file.directory.rename(scratch.name, file.name)) {
        return log_failure("can't remove", file.path, errno);
    }
    return 0;
}

// Returns false if the template keeps its old content.
bool stamp_template(const stamp_rules &rules, const named_file &file, const named_file &scratch) {
    const stream_handle from = open_template(file);
    if (!from) {
        const int error = errno;
        // The checksum mode fails twice: at the sum and at the copy.
        if (rules.has_checksum) {
            log_failure("can't open", file.path, error);
        }
        log_failure("Can't open", file.path, error);
        return false;
    }
    stream_handle to = create_scratch(scratch);
    if (!to) {
        log_failure("Can't open", scratch.path, errno);
        return false;
    }
    const int error = replace_template(rules, file, from.get(), scratch, std::move(to));
    // Required: logs "can't remove" when it could, which it can only after a failure.
    if (scratch.directory.remove(scratch.name)) {
        log_failure("can't remove", scratch.path, error);
    }
    return error == 0;
}

int stamp_directory(const stamp_rules &rules, const path_text &path, const char *progress) {
    const place directory(path.c_str());
    // Two runs over one directory would put each other's scratch file in place.
    const file_descriptor lock = directory.lock();
    found_names names;
    plain_files plain{};
    const int count = wild_find2(directory, path.c_str(), "*.tpl", names, plain);
    if (count == 0) {
        print_imsg("No files found in %s", path.c_str());
        return 0;
    }
    print("\n%s", progress);
    const auto file_of = [&](const char *name) {
        return named_file{directory, name, path_text(path_in(path.c_str(), name).c_str())};
    };
    // An interrupted run leaves a scratch file. If the search listed it, it now shows an x.
    const named_file scratch = file_of(scratch_name);
    directory.remove(scratch.name);
    for_each_name(names, count, [&](const char *name) {
        if (stamp_template(rules, file_of(name), scratch)) {
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
