// What the fuzz targets share: the entry point, the check of a promised property, pieces of an
// input, and a scratch folder. Each target states in its opening lines what its input means and
// what it promises beyond "no crash, no sanitizer report".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Every target defines it; libFuzzer or replay.cpp calls it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// Says which promise does not hold and aborts.
void require(bool holds, const char *promise);

// An input taken apart from its beginning.
class fuzz_input {
  public:
    fuzz_input(const std::uint8_t *data, std::size_t size);

    [[nodiscard]] bool empty() const { return rest_.empty(); }
    // The next byte, 0 at the end.
    unsigned byte();
    // The text up to the next NUL, which is dropped, or to the end.
    std::string text();
    // The text up to the next line feed, which is dropped, or to the end.
    std::string line();
    // Everything that is left.
    std::string rest();

  private:
    std::string until(char separator);

    std::string_view rest_;
};

// A new folder in memory (where there is one), entered at the first call and removed at the
// process's end. Targets whose code names files work in it.
void enter_scratch_folder();

// Writes a file of the scratch folder.
void write_scratch_file(const char *name, std::string_view content);
