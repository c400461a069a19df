// Lists whose items are heap texts of their own, freed by list_clear_dealloc. The customise modules
// collect new values, messages, links and footer lines in them.
#pragma once

#include "core/list.h"

// A local list of heap texts, cleared at the end of its scope.
struct text_list : LINK_LIST {
    text_list();
    ~text_list() { list_clear_dealloc(this); }
    text_list(const text_list &) = delete;
    text_list &operator=(const text_list &) = delete;
};

// Appends a copy of `text`. If memory runs out, prints an error and leaves the list as it was.
void add_text(LINK_LIST *texts, const char *text);

// Removes and frees the text at `position`, the last one for a position outside the list.
void remove_text(LINK_LIST *texts, int position);

// Appends the items of `source` to `texts` and leaves `source` empty.
void move_texts(LINK_LIST *texts, LINK_LIST *source);
