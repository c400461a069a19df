#include "files/operations.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/stream.h"
#include "files/search.h"
#include "products/product.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t block_size = std::size_t{128} * 1024;

// A directory that is being copied, within the one that was being copied before it.
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

// Whether an entry that was looked at already stands at `path`.
bool stands_at(const struct stat &entry, const char *path) {
    struct stat there {};
    return ::stat(path, &there) == 0 && is_same_file(entry, there);
}

bool write_all(int file, const char *bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(file, bytes, count);
        if (written < 0) {
            return false;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

enum class move_result { done, read_failed, write_failed };

move_result move_bytes(int from, int to) {
    static std::array<char, block_size> block;
    for (;;) {
        const ssize_t count = ::read(from, block.data(), block.size());
        if (count < 0) {
            return move_result::read_failed;
        }
        if (count == 0) {
            return move_result::done;
        }
        if (!write_all(to, block.data(), static_cast<std::size_t>(count))) {
            return move_result::write_failed;
        }
    }
}

// Copies a regular file that was looked at already.
int copy_file(const char *src, const struct stat &source, const char *destination, int overwrite) {
    constexpr int flags = O_NONBLOCK | O_CLOEXEC;
    // What cannot be opened may be in place already: nobody may write into a program that runs.
    const auto fail_unless_in_place = [&](int (*failed)(const char *, int), const char *path) {
        const int error = errno;
        return stands_at(source, destination) ? 1 : failed(path, error);
    };
    const file_descriptor from(::open(src, O_RDONLY | flags));
    if (!from.is_open()) {
        return fail_unless_in_place(copy_failed, src);
    }
    if (overwrite == 0 && file_exists(destination) == 1) {
        return 1;
    }
    // Not truncated yet: it may be the source by another name.
    file_descriptor to(::open(destination, O_WRONLY | O_CREAT | flags, file_mode));
    struct stat old {};
    if (!to.is_open() || ::fstat(to.number(), &old) != 0) {
        return fail_unless_in_place(open_failed, destination);
    }
    if (is_same_file(source, old)) {
        return 1;
    }
    if (old.st_size > 0 && ::ftruncate(to.number(), 0) != 0) {
        return open_failed(destination, errno);
    }
    switch (move_bytes(from.number(), to.number())) {
    case move_result::read_failed:
        return copy_failed(src, errno);
    case move_result::write_failed:
        return write_failed(destination, errno);
    case move_result::done:
        break;
    }
    // A device or a pipe that stands in the file's place stays whose it is.
    if (S_ISREG(old.st_mode)) {
        ::fchmod(to.number(), file_mode);
        [[maybe_unused]] const int result = ::fchown(to.number(), gx_user, gx_group);
    }
    if (!to.close()) {
        return write_failed(destination, errno);
    }
    print_dot();
    return 1;
}

// The nearest directory above `place`, or `place` itself, that exists.
std::string existing_part(std::string place) {
    struct stat here {};
    while (::stat(place.c_str(), &here) != 0 && place.size() > 1) {
        const std::size_t separator = place.find_last_of('/');
        place = separator == std::string::npos
                    ? "."
                    : place.substr(0, std::max<std::size_t>(separator, 1));
    }
    return place;
}

// Whether the directory is `place` or stands somewhere above it.
bool holds(const struct stat &directory, const char *place) {
    std::string path = existing_part(place);
    struct stat here {};
    struct stat parent {};
    if (::stat(path.c_str(), &here) != 0) {
        return false;
    }
    while (!is_same_file(directory, here)) {
        path.append("/..");
        if (::stat(path.c_str(), &parent) != 0 || is_same_file(parent, here)) {
            return false;
        }
        here = parent;
    }
    return true;
}

bool is_being_copied(const struct stat &directory, const tree_level *level) {
    while (level != nullptr && !is_same_file(directory, level->directory)) {
        level = level->above;
    }
    return level != nullptr;
}

int copy_into(const char *src, const char *xdst, int overwrite, const tree_level *above);

int copy_directory(const char *src, const tree_level &level, const char *destination) {
    if (make_owned_dir(destination, directory_mode) == 0) {
        print_emsg("\nError creating template set directory %s.\n", src);
        return 0;
    }
    dmsg("Find all files in [%s]", src);
    found_names names;
    const int count = wild_find2(src, "*", names);
    for_each_name(names, count, [&](const char *name) {
        const std::string entry = path_in(src, name);
        if (copy_into(entry.c_str(), destination, 1, &level) == 0) {
            print_emsg("Error copying %s->%s", entry.c_str(), destination);
        }
    });
    return 1;
}

int copy_into(const char *src, const char *xdst, int overwrite, const tree_level *above) {
    const char *name = strip_directory(src);
    if (is_dot_entry(name)) {
        return 1;
    }
    const std::string destination = path_in(xdst, name);
    dmsg("DoCopy[%s]-[%s][%s]", src, destination.c_str(), name);
    if (s_strlen(src) > path_limit || destination.size() > path_limit) {
        return copy_failed(src, ENAMETOOLONG);
    }
    struct stat source {};
    if (::stat(src, &source) != 0) {
        return copy_failed(src, errno);
    }
    if (destination == src) {
        return 0;
    }
    if (S_ISREG(source.st_mode)) {
        return copy_file(src, source, destination.c_str(), overwrite);
    }
    if (!S_ISDIR(source.st_mode)) {
        return copy_failed(src, EINVAL);
    }
    if (stands_at(source, destination.c_str())) {
        return 1;
    }
    if (holds(source, xdst)) {
        return copy_failed(src, EINVAL);
    }
    if (is_being_copied(source, above)) {
        return copy_failed(src, ELOOP);
    }
    return copy_directory(src, {source, above}, destination.c_str());
}

// Copies one name that a search found, at `path`, into `dst`.
bool copy_found(const char *name, const char *path, const char *dst, int overwrite,
                bool is_program) {
    if (!is_program) {
        return do_copy(path, dst, overwrite) == 1;
    }
    imsg("Copying %s", name);
    return do_exe_copy(path, dst, overwrite) == 1;
}

} // namespace

int do_copy(const char *src, const char *xdst, int overwrite) {
    return copy_into(src, xdst, overwrite, nullptr);
}

int do_copy2(const char *src, const char *xdst, int overwrite) {
    if (is_dot_entry(strip_directory(src))) {
        return 1;
    }
    if (s_strlen(src) > path_limit || s_strlen(xdst) > path_limit) {
        return copy_failed(src, ENAMETOOLONG);
    }
    struct stat source {};
    if (::stat(src, &source) != 0) {
        return copy_failed(src, errno);
    }
    if (S_ISDIR(source.st_mode) || s_strcmp(src, xdst) == 0) {
        return 1;
    }
    if (!S_ISREG(source.st_mode)) {
        return copy_failed(src, EINVAL);
    }
    return copy_file(src, source, xdst, overwrite);
}

int do_exe_copy(const char *src, const char *dst, int overwrite) {
    return do_exe_copy2(src, path_in(dst, strip_directory(src)).c_str(), overwrite);
}

int do_exe_copy2(const char *src, const char *dst, int overwrite) {
    if (do_copy2(src, dst, overwrite) == 0) {
        return 0;
    }
    if (::chmod(dst, program_mode) != 0) {
        print_emsg("%s mode not changed, %s", dst, std::strerror(errno));
    }
    give_to_owner(dst);
    return 1;
}

int do_xcopy(const char *src, const char *dst, int overwrite) {
    found_names names;
    const int count = wild_find(src, names);
    if (count == 0) {
        imsg("No files found in %s", src);
    }
    int result = 1;
    for_each_name(names, count, [&](const char *name) {
        if (!copy_found(name, name, dst, overwrite, is_program_here(name))) {
            result = 0;
        }
    });
    return result;
}

int do_xcopy2(const char *path, const char *src, const char *dst, int overwrite) {
    found_names names;
    const int count = wild_find2(path, src, names);
    if (count == 0) {
        imsg("No files found in %s", src);
    }
    int result = 1;
    for_each_name(names, count, [&](const char *name) {
        if (!copy_found(name, path_in(path, name).c_str(), dst, overwrite, is_program(name))) {
            result = 0;
        }
    });
    return result;
}
