#include "files/move_bytes.h"

#include <array>
#include <cstddef>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr std::size_t block_size = std::size_t{128} * 1024;

// As much as one call copies at the most (Linux 4.5); a whole number of blocks of any file system.
constexpr std::size_t most_at_once = std::size_t{1} << 30;

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

move_result read_and_write(int from, int to) {
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

} // namespace

move_result move_bytes(int from, int to) {
    if (::ioctl(to, FICLONE, from) == 0) {
        return move_result::done;
    }
    // Each call moves both offsets, so that reading goes on where the system refuses: what is wrong
    // then is seen by reading or by writing.
    bool has_moved = false;
    ssize_t count = 0;
    while ((count = ::copy_file_range(from, nullptr, to, nullptr, most_at_once, 0)) > 0) {
        has_moved = true;
    }
    // Files of /proc count as empty to this call, though they can be read.
    if (count == 0 && has_moved) {
        return move_result::done;
    }
    return read_and_write(from, to);
}
