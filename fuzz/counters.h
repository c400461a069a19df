// The compiler's counters of what was run, for a target that runs the program in another process
// and brings them home.
#pragma once

#include <cstdint>
#include <span>

// All counters of this program; none in an ordinary build.
std::span<std::uint8_t> counters();
