#include "files/operations.h"

#include "core/console.h"
#include "core/log.h"
#include "core/new_file.h"
#include "core/paths.h"
#include "files/move_bytes.h"
#include "files/search.h"
#include "products/product.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// What is copied: a name in an open directory, and its path as it is shown.
struct copy_source {
    const place &directory;
    const char *name;
    const char *path;
    bool is_plain;           // known to be a plain file
    bool is_private = false; // the copy is for the one who runs the program alone
};

// Where it is copied to.
struct copy_target {
    const place &directory;
    const char *name;
    const char *path;
};

// The directories that are being copied, innermost first.
struct tree_level {
    const struct stat &directory;
    const tree_level *above;
};

int copy_failed(const char *src, int error) {
    print_emsg("Can't copy %s: %s", shown_path(src, error).c_str(), std::strerror(error));
    return 0;
}

int open_failed(const char *destination, int error) {
    print("\n%s\n", dashed_rule);
    print_emsg("Can't write to \"%s\": %s\n", destination, std::strerror(error));
    return 0;
}

int write_failed(const char *destination, int error) {
    print("\n%s\n", dashed_rule);
    print_emsg("Problem writing \"%s\": %s\n", destination, std::strerror(error));
    return 0;
}

int mode_failed(const char *destination, int error) {
    print_emsg("%s mode not changed, %s", destination, std::strerror(error));
    return 1;
}

// Gives what is open to the owner. Only root may give files away; for anyone else it stays.
void give_to_owner(int file) {
    [[maybe_unused]] const int result = ::fchown(file, gx_user, gx_group);
}

// The name in a path of a file, or of the directory itself if the path ends in "/".
const char *name_in(const char *path) {
    const char *name = strip_directory(path);
    return *name != '\0' ? name : ".";
}

// Whether the source is in place already, under whatever name.
bool is_in_place(const copy_source &from, const copy_target &to) {
    struct stat source {};
    struct stat there {};
    return from.directory.look(from.name, source) && to.directory.look(to.name, there) &&
           is_same_file(source, there);
}

enum class copy_result { failed, left, copied };

// What is in place already need not be opened: a program that is being run cannot be.
copy_result fail_unless_in_place(const copy_source &from, const copy_target &to,
                                 int (*failed)(const char *, int), const char *path, int error) {
    if (is_in_place(from, to)) {
        return copy_result::left;
    }
    failed(path, error);
    return copy_result::failed;
}

// Moves the bytes and puts the file in place: on failure what was written.
bool fill(new_file &file, int source, const copy_source &from, const copy_target &to) {
    const move_result result = move_bytes(source, file.number());
    const int error = errno;
    if (result == move_result::done) {
        return true;
    }
    file.put_in_place();
    if (result == move_result::read_failed) {
        copy_failed(from.path, error);
    } else {
        write_failed(to.path, error);
    }
    return false;
}

// Gives the copy its mode and owner, which the file it replaces may have had. Returns 0 or the
// error of the change of mode.
int set_mode_and_owner(const new_file &file, mode_t mode) {
    const struct stat *old = file.old();
    if (!file.may_be_given(gx_user)) {
        return 0;
    }
    if (old == nullptr || old->st_uid != gx_user || old->st_gid != gx_group) {
        give_to_owner(file.number());
    }
    const bool has_mode = old != nullptr && (old->st_mode & all_mode_bits) == mode;
    return has_mode || ::fchmod(file.number(), mode) == 0 ? 0 : errno;
}

// Copies a plain file. Reports a mode of a program that cannot be set.
copy_result copy_file(const copy_source &from, const copy_target &to, int overwrite, mode_t mode) {
    const open_file source = from.directory.open_plain(from.name);
    if (!source.is_open()) {
        return fail_unless_in_place(from, to, copy_failed, from.path, errno);
    }
    if (overwrite == 0 && to.directory.can_be_read(to.name)) {
        return copy_result::left;
    }
    const bool is_private = from.is_private || source.is_private;
    new_file file(to.directory, to.name, new_file::when_missing::in_place,
                  is_private ? private_mode : mode & file_mode);
    file.limit_mode(is_private ? private_mode : all_mode_bits);
    if (file.error() != 0) {
        return fail_unless_in_place(from, to, open_failed, to.path, file.error());
    }
    if (file.old() != nullptr && is_same_file(source.status, *file.old())) {
        return copy_result::left;
    }
    if (!file.start()) {
        open_failed(to.path, errno);
        return copy_result::failed;
    }
    if (source.is_private) {
        emsg("Not given away: \"%s\" is private, and another user could have put it there",
             from.path);
    }
    if (!fill(file, source.descriptor.number(), from, to)) {
        return copy_result::failed;
    }
    // Owner and mode of a device or a pipe are left alone.
    const int mode_error = file.is_special() ? 0 : set_mode_and_owner(file, mode);
    if (!file.put_in_place()) {
        write_failed(to.path, errno);
        return copy_result::failed;
    }
    print_dot();
    if (mode_error != 0 && mode == program_mode) {
        mode_failed(to.path, mode_error);
    }
    return copy_result::copied;
}

// Looks at what is copied, unless it is known to be a plain file. Returns 0 or the error.
int look_at_source(const copy_source &from, struct stat &source) {
    source.st_mode = S_IFREG;
    if (from.is_plain || from.directory.look(from.name, source)) {
        return 0;
    }
    return from.directory.is_open() ? errno : from.directory.error();
}

// The nearest directory above `path`, or `path` itself, that exists.
place existing_part(std::string path) {
    place here(path);
    while (!here.is_open() && path.size() > 1) {
        const std::size_t separator = path.find_last_of('/');
        path = separator == std::string::npos ? "."
                                              : path.substr(0, std::max<std::size_t>(separator, 1));
        here = place(path);
    }
    return here;
}

bool is_being_copied(const struct stat &directory, const tree_level *level) {
    while (level != nullptr && !is_same_file(directory, level->directory)) {
        level = level->above;
    }
    return level != nullptr;
}

int copy_into(const copy_source &from, const place &destination, const char *xdst, int overwrite,
              mode_t mode, const tree_level *above);

int copy_directory(const copy_source &from, const tree_level &level, const char *destination) {
    const place directory = from.directory.enter(from.name);
    if (!directory.is_open()) {
        return copy_failed(from.path, directory.error());
    }
    const made_directory to = make_owned_directory(destination, directory_mode);
    if (to.result == 0) {
        print_emsg("\nError creating template set directory %s.\n", from.path);
        return 0;
    }
    dmsg("Find all files in [%s]", from.path);
    found_names names;
    plain_files plain{};
    const int count = wild_find2(directory, from.path, "*", names, plain);
    for_each_name(names, count, plain, [&](const char *name, bool is_plain) {
        const std::string entry = path_in(from.path, name);
        const copy_source source = {directory, name, entry.c_str(), is_plain};
        if (copy_into(source, to.directory, destination, 1, file_mode, &level) == 0) {
            print_emsg("Error copying %s->%s", entry.c_str(), destination);
        }
    });
    return 1;
}

// Whether a tree may be copied: not into itself, and not round in a circle. Returns 0 or the error.
int error_of_tree(const struct stat &source, const place &destination, const char *xdst,
                  const tree_level *above) {
    const bool is_inside = destination.is_open() ? destination.is_within(source)
                                                 : existing_part(xdst).is_within(source);
    if (is_inside) {
        return EINVAL;
    }
    return is_being_copied(source, above) ? ELOOP : 0;
}

// A file gets `mode`.
int copy_into(const copy_source &from, const place &destination, const char *xdst, int overwrite,
              mode_t mode, const tree_level *above) {
    const char *name = strip_directory(from.path);
    if (is_dot_entry(name)) {
        return 1;
    }
    const std::string path = path_in(xdst, name);
    dmsg("DoCopy[%s]-[%s][%s]", from.path, path.c_str(), name);
    if (s_strlen(from.path) > path_limit || path.size() > path_limit) {
        return copy_failed(from.path, ENAMETOOLONG);
    }
    const copy_target to = {destination, name_in(path.c_str()), path.c_str()};
    struct stat source {};
    if (const int error = look_at_source(from, source); error != 0) {
        return copy_failed(from.path, error);
    }
    if (path == from.path) {
        return 0;
    }
    if (S_ISREG(source.st_mode)) {
        return copy_file(from, to, overwrite, mode) != copy_result::failed ? 1 : 0;
    }
    if (!S_ISDIR(source.st_mode)) {
        return copy_failed(from.path, EINVAL);
    }
    if (is_in_place(from, to)) {
        return 1;
    }
    if (const int error = error_of_tree(source, destination, xdst, above); error != 0) {
        return copy_failed(from.path, error);
    }
    return copy_directory(from, {source, above}, path.c_str());
}

// The directory that names are joined to: the empty path is the root's, as in what is shown.
place target_directory(const char *path) {
    return place(path_in(path, ""));
}

// do_copy2 to a name in an open directory.
copy_result copy_to(const copy_source &from, const copy_target &to, int overwrite, mode_t mode) {
    if (is_dot_entry(strip_directory(from.path))) {
        return copy_result::left;
    }
    if (s_strlen(from.path) > path_limit || s_strlen(to.path) > path_limit) {
        copy_failed(from.path, ENAMETOOLONG);
        return copy_result::failed;
    }
    struct stat source {};
    if (const int error = look_at_source(from, source); error != 0) {
        copy_failed(from.path, error);
        return copy_result::failed;
    }
    if (S_ISDIR(source.st_mode) || s_strcmp(from.path, to.path) == 0) {
        return copy_result::left;
    }
    if (!S_ISREG(source.st_mode)) {
        copy_failed(from.path, EINVAL);
        return copy_result::failed;
    }
    return copy_file(from, to, overwrite, mode);
}

// Whether a file that was there already may be given to the owner.
bool may_be_given(const open_file &file) {
    return file.is_owners_choice || file.status.st_uid == gx_user || ::geteuid() != 0;
}

// What stands there already gets the mode and the owner of a program as well.
int copy_program(const copy_source &from, const copy_target &to, int overwrite) {
    const copy_result result = copy_to(from, to, overwrite, program_mode);
    if (result != copy_result::left) {
        return result == copy_result::copied ? 1 : 0;
    }
    const open_file program = to.directory.open_to_read(to.name);
    if (!program.is_open()) {
        return mode_failed(to.path, errno);
    }
    if (!may_be_given(program)) {
        return mode_failed(to.path, EPERM);
    }
    if (::fchmod(program.descriptor.number(), program_mode) != 0) {
        mode_failed(to.path, errno);
    }
    give_to_owner(program.descriptor.number());
    return 1;
}

// Copies one name that a search found into the directory at `dst`.
int copy_found(const copy_source &from, const place &directory, const char *dst, int overwrite,
               bool is_a_program) {
    if (!is_a_program) {
        return copy_into(from, directory, dst, overwrite, file_mode, nullptr);
    }
    imsg("Copying %s", from.name);
    const std::string path = path_in(dst, from.name);
    return copy_program(from, {directory, from.name, path.c_str()}, overwrite);
}

} // namespace

int do_copy(const char *src, const char *xdst, int overwrite) {
    return do_copy_limited(src, xdst, overwrite, all_mode_bits);
}

int do_copy_opened(const place &from, const char *name, bool is_plain, const place &to,
                   const char *xdst) {
    const std::string path = path_in(from.path(), name);
    return copy_into({from, name, path.c_str(), is_plain}, to, xdst, 1, file_mode, nullptr);
}

int do_copy_limited(const char *src, const char *xdst, int overwrite, mode_t most) {
    const named_place from = locate(src);
    return copy_into({from.directory, from.name.c_str(), src, false, most == private_mode},
                     target_directory(xdst), xdst, overwrite, file_mode & most, nullptr);
}

int do_copy2(const char *src, const char *xdst, int overwrite) {
    const named_place from = locate(src);
    const named_place to = locate(xdst);
    const copy_result result = copy_to({from.directory, from.name.c_str(), src, false},
                                       {to.directory, to.name.c_str(), xdst}, overwrite, file_mode);
    return result != copy_result::failed ? 1 : 0;
}

int do_exe_copy(const char *src, const char *dst, int overwrite) {
    return do_exe_copy2(src, path_in(dst, strip_directory(src)).c_str(), overwrite);
}

int do_exe_copy2(const char *src, const char *dst, int overwrite) {
    const named_place from = locate(src);
    const named_place to = locate(dst);
    return copy_program({from.directory, from.name.c_str(), src, false},
                        {to.directory, to.name.c_str(), dst}, overwrite);
}

int do_xcopy(const char *src, const char *dst, int overwrite) {
    const place here(".");
    const place to = target_directory(dst);
    found_names names;
    plain_files plain{};
    const int count = wild_find(here, src, names, plain);
    if (count == 0) {
        imsg("No files found in %s", src);
    }
    int result = 1;
    for_each_name(names, count, plain, [&](const char *name, bool is_plain) {
        if (copy_found({here, name, name, is_plain}, to, dst, overwrite, is_program_here(name)) !=
            1) {
            result = 0;
        }
    });
    return result;
}

int do_xcopy2(const char *path, const char *src, const char *dst, int overwrite) {
    return do_xcopy_opened(place(path), path, src, target_directory(dst), dst, overwrite);
}

int do_xcopy_opened(const place &from, const char *path, const char *src, const place &to,
                    const char *dst, int overwrite) {
    found_names names;
    plain_files plain{};
    const int count = wild_find2(from, path, src, names, plain);
    if (count == 0) {
        imsg("No files found in %s", src);
    }
    int result = 1;
    for_each_name(names, count, plain, [&](const char *name, bool is_plain) {
        const std::string source = path_in(path, name);
        if (copy_found({from, name, source.c_str(), is_plain}, to, dst, overwrite,
                       is_program(name)) != 1) {
            result = 0;
        }
    });
    return result;
}
