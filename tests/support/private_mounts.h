// Keeps a process from writing anywhere but in one place, whatever it is told to do. For the tests
// and the fuzz target whose answers are random; nothing here needs a test framework.
#pragma once

#include <string>

// Makes the mounts of this process its own and all of them read-only but that of `directory`, which
// is mounted on itself; of all of them where it is empty. False where that cannot be had.
bool shut_in(const std::string &directory = "");
