#include "core/console.h"
#include "core/format.h"
#include "core/log.h"
#include "core/paths.h"
#include "dialogue/question.h"
#include "files/search.h"
#include "templates/checksum.h"
#include "templates/header.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *scratch_name = "temp.tpl";

// What a mode writes into a template, and what it drops.
struct stamp {
    std::string_view dropped; // pieces that begin so
    std::string header_line;  // written first
    bool has_checksum;        // a checksum line is written last
};

void report(const char *failure, const path_text &path, int error) {
    emsg("%s %s, %s", failure, path.c_str(), std::strerror(error));
}

path_text path_in(const path_text &directory, const char *name) {
    return path_text().format("%s%c%s", directory.c_str(), '/', name);
}

// Whether a path can be acted on; a cut one never is.
bool fits(const path_text &path) {
    if (path.is_cut()) {
        errno = ENAMETOOLONG;
    }
    return !path.is_cut();
}

// The scratch file is always a new file of our own, never what a link of that name leads to.
stream_handle make_scratch(const path_text &path) {
    stream_handle file = fits(path) ? stream_of(create_anew(path.c_str()), "w") : nullptr;
    if (file) {
        // What is written comes in large parts, which a buffer would only split.
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    return file;
}

// Gives the scratch file the mode and, where that is allowed, the owner of the template. The owner
// first: a change of owner can clear mode bits (POSIX chown). False, with errno set, without the
// mode: nobody could read the template any more.
bool keep_owner_and_mode(std::FILE *from, std::FILE *to) {
    struct stat status {};
    if (::fstat(::fileno(from), &status) != 0) {
        return false;
    }
    const bool is_owned = ::fchown(::fileno(to), status.st_uid, status.st_gid) == 0;
    constexpr mode_t rights = S_IRWXU | S_IRWXG | S_IRWXO;
    constexpr mode_t special = S_ISUID | S_ISGID | S_ISVTX;
    return ::fchmod(::fileno(to), status.st_mode & (is_owned ? rights | special : rights)) == 0;
}

// Copies a template with its stamp. A write that fails, with errno set, gives `refused`.
walk_result write_stamped(const stamp &stamp, std::FILE *from, std::FILE *to) {
    running_checksum checksum;
    const auto write = [to](std::string_view text) {
        return std::fwrite(text.data(), 1, text.size(), to) == text.size();
    };
    const auto take = [&](const template_part &part) {
        if (stamp.has_checksum) {
            checksum.add(part);
        }
        return (part.is_marked && part.bytes.starts_with(stamp.dropped)) || write(part.bytes);
    };
    if (!write(stamp.header_line)) {
        return walk_result::refused;
    }
    const walk_result result = walk_template(from, stamp.dropped, take);
    if (result == walk_result::done && stamp.has_checksum &&
        !write(formatted("\n||checksum=%d||\n", checksum.sum()))) {
        return walk_result::refused;
    }
    return result;
}

// Stamps `from`, the template at `path`, into the new file `to` at `scratch` and puts that in the
// template's place, which at no time is empty. Gives 0, or why the template stays as it is, which
// is logged.
int replace_template(const stamp &stamp, const path_text &path, std::FILE *from,
                     const path_text &scratch, stream_handle to) {
    const walk_result result = keep_owner_and_mode(from, to.get())
                                   ? write_stamped(stamp, from, to.get())
                                   : walk_result::refused;
    if (result == walk_result::read_failed) {
        const int error = errno;
        report("Can't open", path, error);
        return error;
    }
    if (result == walk_result::refused || !close_file(std::move(to))) {
        const int error = errno;
        report("Can't write", scratch, error);
        return error;
    }
    if (std::rename(scratch.c_str(), path.c_str()) != 0) {
        const int error = errno;
        report("can't remove", path, error);
        return error;
    }
    return 0;
}

// False when the template keeps its old content.
bool stamp_template(const stamp &stamp, const path_text &path, const path_text &scratch) {
    const stream_handle from = fits(path) ? open_plain_file(path.c_str()) : nullptr;
    if (!from) {
        const int error = errno;
        if (stamp.has_checksum) {
            report("can't open", path, error);
        }
        report("Can't open", path, error);
        return false;
    }
    stream_handle to = make_scratch(scratch);
    if (!to) {
        report("Can't open", scratch, errno);
        return false;
    }
    const int error = replace_template(stamp, path, from.get(), scratch, std::move(to));
    // The test is inverted on purpose: what is logged is that a scratch file was left to remove.
    if (std::remove(scratch.c_str()) == 0) {
        report("can't remove", scratch, error);
    }
    return error == 0;
}

int stamp_directory(const stamp &stamp, const path_text &directory, const char *progress) {
    found_names names;
    const int count = wild_find2(directory.c_str(), "*.tpl", names);
    if (count == 0) {
        print_imsg("No files found in %s", directory.c_str());
        return 0;
    }
    print("\n%s", progress);
    const path_text scratch = path_in(directory, scratch_name);
    // Left behind by an interrupted run. It may be among the names and is then found missing.
    if (fits(scratch)) {
        ::unlink(scratch.c_str());
    }
    for_each_name(names, count, [&](const char *name) {
        if (stamp_template(stamp, path_in(directory, name), scratch)) {
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
    const stamp header = {
        .dropped = "||header:",
        .header_line = formatted("||header: modified=false tpl_set=%s tpl_version=%s||\n",
                                 set.c_str(), version.c_str()),
        .has_checksum = false,
    };
    return stamp_directory(header, directory, "Updating headers");
}

int add_checksum() {
    const stamp checksum = {
        .dropped = checksum_line_start, .header_line = {}, .has_checksum = true};
    return stamp_directory(checksum, ask_directory(), "Updating checksums");
}
