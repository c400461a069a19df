#include "support.h"

#include "core/stream.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace {

class scratch_folder {
  public:
    scratch_folder() {
        std::error_code none;
        const bool has_memory = std::filesystem::is_directory("/dev/shm", none);
        std::string name =
            has_memory ? "/dev/shm" : std::filesystem::temp_directory_path().string();
        name += "/gxsetup-fuzz.XXXXXX";
        require(::mkdtemp(name.data()) != nullptr, "a scratch folder can be made");
        place_ = name;
        std::filesystem::current_path(place_);
    }
    ~scratch_folder() {
        std::error_code none;
        std::filesystem::remove_all(place_, none);
    }
    scratch_folder(const scratch_folder &) = delete;
    scratch_folder &operator=(const scratch_folder &) = delete;

  private:
    std::filesystem::path place_;
};

} // namespace

void require(bool holds, const char *promise) {
    if (!holds) {
        std::fprintf(stderr, "Broken promise: %s\n", promise);
        std::abort();
    }
}

fuzz_input::fuzz_input(const std::uint8_t *data, std::size_t size)
    : rest_(reinterpret_cast<const char *>(data), size) {}

unsigned fuzz_input::byte() {
    if (rest_.empty()) {
        return 0;
    }
    const unsigned value = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return value;
}

std::string fuzz_input::text() {
    return until('\0');
}

std::string fuzz_input::line() {
    return until('\n');
}

std::string fuzz_input::rest() {
    const std::string all(rest_);
    rest_ = {};
    return all;
}

std::string fuzz_input::until(char separator) {
    const std::size_t end = std::min(rest_.find(separator), rest_.size());
    const std::string piece(rest_.substr(0, end));
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return piece;
}

void enter_scratch_folder() {
    static const scratch_folder folder;
}

void write_scratch_file(const char *name, std::string_view content) {
    stream_handle file = open_to_write(name);
    require(file != nullptr, "a scratch file can be made");
    std::fwrite(content.data(), 1, content.size(), file.get());
    require(close_file(std::move(file)), "a scratch file can be written");
}
