// Stands in for libFuzzer in an ordinary build: runs every file of the folders (or every file)
// named on the command line through the target once, in the order of their names. A folder that is
// not there holds none.
#include "support.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

void replay(const std::filesystem::path &file) {
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(stream), {}};
    std::fprintf(stderr, "%s\n", file.c_str()); // the last one named is the one that failed
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(content.data()), content.size());
}

} // namespace

int main(int argc, char **argv) {
    std::vector<std::filesystem::path> files;
    for (int at = 1; at < argc; at++) {
        const std::filesystem::path place = std::filesystem::absolute(argv[at]);
        if (std::filesystem::is_directory(place)) {
            for (const auto &entry : std::filesystem::directory_iterator(place)) {
                files.push_back(entry.path());
            }
        } else if (std::filesystem::exists(place)) {
            files.push_back(place);
        }
    }
    std::sort(files.begin(), files.end());
    for (const auto &file : files) {
        replay(file);
    }
    std::fprintf(stderr, "%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
