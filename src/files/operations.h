// Work on files: one owner for all that is made, directory chains, copies of files and trees with
// their modes, removals. Template sets and flows work through these.
//
// An int result is 1 for success and 0 for failure. A procedure that goes through a list goes
// through all of it and returns 0 if anything failed. Copies and removals print and log an error
// with the system's text for it, and print a "." for each file copied or removed. Links are
// followed by the rules of core/place, but a removal never enters a directory through one. A path
// of more than path_limit characters is refused (ENAMETOOLONG).
//
// The overwrite flag: 0 leaves an existing destination alone, which counts as success; any other
// value replaces it.
#pragma once

#include "core/place.h"
#include "settings/store.h"

#include <sys/stat.h>

// --- Owner (owner.cpp) ---

// User and group of every file and directory made here; 0 until get_uid has chosen them.
extern uid_t gx_user;
extern gid_t gx_group;

// Gives a directory to the owner. Only root may give it away; for anyone else it stays, and so does
// one that may not be given away (place::give).
void give_to_owner(place &directory);

// --- Creation (create.cpp) ---

// Makes a directory and every missing one above it, each with exactly the mode `permission` and
// given to the owner. Returns 1, also if it is there already; 0 for a path without root, one that
// is too long, or one that leads through a foreign link. Logs what was done. Does not ask whether
// the directory is there afterwards.
int make_dir(const char *dir, mode_t permission);

// make_dir, and the directory is given to the owner even if it was there already.
int make_owned_dir(const char *dir, mode_t permission);

// The same, with the directory left open. It is not open if it could not be reached afterwards.
struct made_directory {
    int result;
    place directory;
};
made_directory make_owned_directory(const char *dir, mode_t permission);

// The modes of what is made: programs and directories, other files, the images directory.
inline constexpr mode_t directory_mode = 0770;
inline constexpr mode_t program_mode = 0770;
inline constexpr mode_t file_mode = 0660;
inline constexpr mode_t images_mode = 0755;

// --- Copies (copy.cpp) ---

// Copies a file, or a directory with all it holds, into the directory `xdst`. Inside a directory
// everything is overwritten and failures are only reported: for a directory it returns 1. Returns 0
// if source and destination are the same path. If they are one file under two paths it copies
// nothing and returns 1.
//
// A private file that another user could have put there is copied for the one who runs the program
// alone; the log says so.
int do_copy(const char *src, const char *xdst, int overwrite);

// do_copy of a file, which gets no more rights than `most` has, and with private_mode no other
// owner than the one who runs the program.
int do_copy_limited(const char *src, const char *xdst, int overwrite, mode_t most);

// Copies a file to the file `xdst`. If both are one file, or `src` is a directory, it copies
// nothing and returns 1.
int do_copy2(const char *src, const char *xdst, int overwrite);

// do_copy2 into the directory `dst`, and to the file `dst`, with the mode of a program.
int do_exe_copy(const char *src, const char *dst, int overwrite);
int do_exe_copy2(const char *src, const char *dst, int overwrite);

// Copy what matches the pattern `src` in the current directory, or in `path`, into the directory
// `dst`, the products' programs with the mode of a program. (The current directory's osprey.cgi is
// taken for an ordinary file.)
int do_xcopy(const char *src, const char *dst, int overwrite);
int do_xcopy2(const char *path, const char *src, const char *dst, int overwrite);

// do_xcopy2, and do_copy of the file `name` with overwriting, between open directories. These are
// shown as `path` and `dst`. `is_plain`: it is known to be a plain file.
int do_xcopy_opened(const place &from, const char *path, const char *src, const place &to,
                    const char *dst, int overwrite);
int do_copy_opened(const place &from, const char *name, bool is_plain, const place &to,
                   const char *dst);

// --- Removal (remove.cpp) ---

// Removes what the directory `path` holds; `path` itself stays. A directory goes if it is empty
// then; one that is not is reported. `wild` is a list of patterns. The flags say what goes of what
// stands in `path` itself:
//
// - not_u_ 0, dirs_only 0: files that match, all directories.
// - not_u_ 0, dirs_only 1: no files, directories that match.
// - not_u_ 1, dirs_only 0: files that match, all directories but kept ones: users' ("u_...") and
//   the answers `workarea` and `templates`.
// - not_u_ 1, dirs_only 1: no files, all directories but kept ones.
//
// Further down it removes as with not_u_ 1 and dirs_only 0.
int do_xrmv(pINI_SETTINGS ini, const char *wild, const char *path, int not_u_, int dirs_only);

// Removes from the current directory what matches the pattern `wild`, directories with all they
// hold, but nothing whose name begins with "gxsetup" and no users' directory.
int do_tmprmv(pINI_SETTINGS ini, const char *wild);

// Removes the directory `name` of an open one with what it holds of the patterns `wild`, by the
// rules of do_xrmv further down. It is shown as `path`.
int remove_tree(pINI_SETTINGS ini, const char *wild, const place &directory, const char *name,
                const char *path);

// Removes an empty directory. Returns false, with errno set, on failure.
bool remove_empty_directory(const char *path);

// Removes a file of the current directory and prints nothing. Returns false, with errno set, on
// failure.
bool remove_here(const char *name);

// From here on a removal only shows what it would remove, a line each. It takes every directory for
// one that its removal can empty.
void rehearse_removals();

// Whether a removal takes the entry for a directory. It goes by one bit of the mode, which sockets
// and block devices have too.
bool has_directory_bit(const struct stat &entry);
