// Paths ("/" only): joining, splitting and showing them. Every module that names a file builds the
// name here.
//
// Functions that return a `char *` keep it in one buffer each, overwritten by the next call of the
// same function; copy what is needed longer.
#pragma once

#include "core/format.h"

#include <string>
#include <string_view>

// The longest path the program acts on.
inline constexpr std::size_t path_limit = path_text::capacity;

// Returns DIRECTORY/NAME. A null text is joined as <NULL>.
std::string path_in(const char *directory, const char *name);
std::string path_in(const std::string &directory, const char *name);

// Returns the path as the message of a failure shows it. For ENAMETOOLONG it is cut at 400
// characters so that the error text still fits.
std::string shown_path(const char *path, int error);

// Whether a name is "." or "..".
bool is_dot_entry(std::string_view name);

// Returns 1 if `path` begins with "/", else 0.
int check_for_root(const char *path);

// Returns the first "/" of `text`, or its end; null for null.
const char *clean_up_root(const char *text);

// Returns what follows the last "/" of `path`; `path` itself if it holds none.
const char *strip_directory(const char *path);

// Returns a copy of `path`, 511 characters at most, without one trailing "/". Null counts as "".
char *rmv_end_sep(const char *path);

// --- Part of the fixed interface; the program itself does not call these ---

// As rmv_end_sep, with one "/" at the end.
char *add_end_sep(const char *path);

// Keeps the letters, digits and . _ * - # : / @ % of `file`, turns a blank into "_" and drops the
// rest. Looks at the first 511 characters at most.
char *valid_file(const char *file);

// Joins a directory and a file, which goes through `valid_file`, with one "/" between them. Either
// may be missing (null or ""). A file whose second character is ":" is joined without the "/".
char *attach_path(const char *work_path, const char *file);

// Adds an extension, with a "." between if `ext` has none.
char *attach_ext(const char *path_file, const char *ext);

// Cuts at the last "." of the whole text, directories included. A trailing dot is dropped unless it
// is among the first two characters or follows another dot.
char *strip_ext(const char *in);

// Returns what follows the last "/", without its extension (strip_ext) if `rm_extend` is set.
char *strip_path(const char *in, int rm_extend);

// Returns the directory with its "/"; null if there is none.
char *strip_filename(const char *in);

// Returns `strip_path(path, 0)` if `want_remove` is set, else `strip_filename(path)`; null for an
// empty result.
char *remove_path(const char *path, int want_remove);
