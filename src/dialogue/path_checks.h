// Checks of directory answers, on top of the directory search: does it exist, is it the one the
// program runs in. The question engine and the flows use them.
#pragma once

// The results of check_valid_dir.
inline constexpr int directory_is_there = 0;
inline constexpr int directory_lacks_root = 1;
inline constexpr int directory_is_missing = 3;

// Looks for a directory given from the root. "/" alone counts as missing, an empty path as one
// without root. For a path without root prints "No path given! " or "No root given! "; the caller
// prints the rest of the line.
int check_valid_dir(const char *path);

// Returns 1 if `dir` is the current working directory, else 0. Creates a probe file here, looks for
// it in `dir` and removes it; returns 0 also if it cannot be created.
int match_root_dir(const char *dir);
