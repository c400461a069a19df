#include "customise/text_list.h"

#include "core/log.h"
#include "core/text.h"

text_list::text_list() {
    list_init(this, emsg);
}

void add_text(LINK_LIST *texts, const char *text) {
    heap_text copy(maistrdup(text));
    if (list_add(texts, copy.get()) == 1) {
        copy.release();
    }
}

void remove_text(LINK_LIST *texts, int position) {
    const heap_text removed(static_cast<char *>(list_remove_num(texts, position)));
}

void move_texts(LINK_LIST *texts, LINK_LIST *source) {
    list_list(texts, source);
    list_clear(source);
}
