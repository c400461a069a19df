// Lists that own their texts, as the customise rooms gather new values, messages, links and footer
// lines in them: every item is a heap text, freed by list_clear_dealloc.
#pragma once

#include "core/list.h"

// A local list of heap texts, freed when it goes.
struct text_list : LINK_LIST {
    text_list();
    ~text_list() { list_clear_dealloc(this); }
    text_list(const text_list &) = delete;
    text_list &operator=(const text_list &) = delete;
};

// Appends a copy of `text`. Without memory, which the console is told, the list stays as it was.
void add_text(LINK_LIST *texts, const char *text);

// Replaces the items of `texts` by those of `source`, which is empty afterwards.
void take_texts(LINK_LIST *texts, LINK_LIST *source);
