// What the microbenchmarks measure: small pieces of work on the same input every time. The program
// `micro` takes their time, the program `count_work` is what their instructions are counted in.
#pragma once

#include <cstddef>
#include <span>
#include <string>

struct work {
    const char *name;
    void (*run)();     // does the work once
    int times;         // how often it is done to count its instructions
    std::size_t bytes; // that it reads, 0 where that says nothing
};

std::span<const work> all_work();

// The file that do_checksum reads.
inline constexpr const char *summed_file = "summed.tpl";

// A scratch directory with the input, the current one as long as this stands.
class workplace {
  public:
    workplace();
    ~workplace();
    workplace(const workplace &) = delete;
    workplace &operator=(const workplace &) = delete;

  private:
    std::string directory_;
};
