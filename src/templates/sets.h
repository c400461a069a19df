// Template sets: the subdirectories of a distribution's template directory, each a whole look of a
// product. The files of the subdirectory "common" belong to every set. Install and upgrade copy and
// number the sets here.
#pragma once

#include "core/list.h"
#include "settings/store.h"

#include <cstddef>

// Copies every set of `src` into `dst`, then the files of src/common into each of these sets, where
// they replace a set's own. With `skip_words` leaves "words.dat" of common out. Returns 1; or 0 if
// an argument is null, or at the first failure.
int do_template_copy(const char *src, const char *dst, int skip_words);

// Copies the files named in `names` (separated by ", ") from `path` into each directory path/ENTRY.
// The entries are those of the current directory that match the pattern PATH/* and begin with
// `prefix`. A failed copy is logged and printed, and the next one is tried.
//
// Required: an entry's name holds no "/", so no entry matches a path from the root, and nothing is
// copied.
void words_copy(const char *path, const char *prefix, const char *names);

// Numbers the sets of `dir` and stores a line for each as `tpl_set` (`wap_tpl_set` if `dir` holds
// "wap"):
//
//     NUMBER TEMPLATES/SET VLIMG/SET SET Set
//
// The line of the default set ("marble" or "wml", else the first) is stored first. The answer
// install_dir becomes the answer templates. Nothing is asked.
//
// Returns the default set's templates path, or null without sets. Copies its images URL into `url`,
// a buffer of `len` bytes, unless that is null or there are no sets.
//
// A fixed interface; the flows call it through setup/questionnaire.
heap_text ask_template_sets(pINI_SETTINGS ini, const char *dir, char *url, std::size_t len);

// Moves all values of `key` out of the store into `list`, which is initialised here. Returns
// `list`. The caller frees its items with list_clear_dealloc.
LINK_LIST *tpl_list(LINK_LIST *list, pINI_SETTINGS ini, const char *key);
