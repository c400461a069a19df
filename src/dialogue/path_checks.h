// Checks of directory answers, on top of the directory search: does it exist, is it the one the
// program runs in. The question engine and the flows use them.
#pragma once

// 0 for an existing directory given from the root, 1 for an empty path ("No path given! " is
// printed) or one without root ("No root given! " is printed, without a line end: the caller
// completes the line), 3 when it does not exist. "/" alone counts as not existing.
int check_valid_dir(const char *path);

// 1 when `dir` is the current working directory, else 0 (also when nothing can be created here).
// Tried with a probe file, which never stays behind.
int match_root_dir(const char *dir);
