// Checks of directory answers, on top of the directory search: does it exist, is it the one the
// program runs in. The question engine and the flows use them.
#pragma once

// Returns 0 for an existing directory given from the root, 1 for an empty path or one without root,
// 3 if it does not exist. "/" alone counts as not existing. For a 1 prints "No path given! " or "No
// root given! "; the caller prints the rest of the line.
int check_valid_dir(const char *path);

// Returns 1 if `dir` is the current working directory, else 0. Creates a probe file here, looks for
// it in `dir` and removes it; returns 0 also if it cannot be created.
int match_root_dir(const char *dir);
