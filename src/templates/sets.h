// Template sets: the directories of a distribution's template directory, each a whole look of a
// product, beside "common", whose files belong to every set. Install and upgrade copy and number
// them here.
#pragma once

#include "core/list.h"
#include "settings/store.h"

#include <cstddef>

// Copies every set of `src` into `dst`, then the files of src/common into each of these sets, where
// they replace a set's own. With `skip_words` "words.dat" of common is left out. 1; 0 for a missing
// argument or at the first failure.
int do_template_copy(const char *src, const char *dst, int skip_words);

// For every entry of the current directory that matches PATH/* and begins with `prefix`: copies the
// files named in `names` (separated by ", ") from `path` into the directory path/entry. Entries are
// bare names, which hold no "/": for a path from the root none matches and nothing is copied.
void words_copy(const char *path, const char *prefix, const char *names);

// Numbers the sets of `dir` and stores a line for each as `tpl_set` (`wap_tpl_set` when the path
// holds "wap"), the default set ("marble" or "wml", else the first) in front:
// NUMBER TEMPLATES/SET VLIMG/SET SET Set. The answer install_dir becomes the answer templates.
// Gives the default set's templates path, null without sets; its images URL goes into `url`, a
// buffer of `len` bytes, unless that is null. Nothing is asked.
heap_text ask_template_sets(pINI_SETTINGS ini, const char *dir, char *url, std::size_t len);

// Moves all values of `key` out of the store into `list`, which is initialised here; its items are
// the caller's, to be freed with list_clear_dealloc. Gives `list`.
LINK_LIST *tpl_list(LINK_LIST *list, pINI_SETTINGS ini, const char *key);
