#include "core/list.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

// Returns false for a null list. Ends the program if the list was never initialised: that is a
// fault of the program, and going on would follow wild pointers.
bool is_usable(LINK_LIST *list) {
    if (list == nullptr) {
        return false;
    }
    if (list->init_value != list_init_value) {
        list_init(list, nullptr);
        std::perror("Error Using Link List before Init\n");
        std::exit(1);
    }
    return true;
}

// Makes `node` follow `pre`; without one it is the first of the list.
void set_next(LINK_LIST *list, list_struct *pre, list_struct *node) {
    if (pre != nullptr) {
        pre->post = node;
    } else {
        list->first = node;
    }
}

// Makes `node` precede `post`; without one it is the last of the list.
void set_previous(LINK_LIST *list, list_struct *post, list_struct *node) {
    if (post != nullptr) {
        post->pre = node;
    } else {
        list->last = node;
    }
}

// Puts `item` between two neighbours, either of which may be missing.
bool link(LINK_LIST *list, list_struct *pre, void *item, list_struct *post) {
    auto *node = new (std::nothrow) list_struct;
    if (node == nullptr) {
        list_emsg(list, "Error - add item to list failed\n");
        return false;
    }
    *node = {pre, item, post};
    set_next(list, pre, node);
    set_previous(list, post, node);
    list->num++;
    return true;
}

// Makes the header that of an empty list.
void reset(LINK_LIST *list) {
    list->num = 0;
    list->first = nullptr;
    list->current = nullptr;
    list->last = nullptr;
}

// Frees a node that is linked to no more. Returns its item.
void *release(LINK_LIST *list, list_struct *node) {
    void *item = node->item;
    delete node;
    list->num--;
    return item;
}

} // namespace

int list_init(LINK_LIST *list, message_function emsg) {
    if (list == nullptr) {
        return 0;
    }
    list->init_value = list_init_value;
    list->emsg = emsg;
    reset(list);
    return 1;
}

int list_start(LINK_LIST *list) {
    if (!is_usable(list)) {
        return 0;
    }
    list->current = list->first;
    return 1;
}

int list_last(LINK_LIST *list) {
    if (!is_usable(list)) {
        return 0;
    }
    list->current = nullptr;
    return 1;
}

int list_forward(LINK_LIST *list) {
    if (!is_usable(list)) {
        return 0;
    }
    list->current = list->current != nullptr ? list->current->post : list->first;
    return list->current != nullptr ? 1 : -1;
}

int list_back(LINK_LIST *list) {
    if (!is_usable(list)) {
        return 0;
    }
    list->current = list->current != nullptr ? list->current->pre : list->last;
    return list->current != nullptr ? 1 : -1;
}

int list_forward_num(LINK_LIST *list, int n) {
    if (!is_usable(list)) {
        return 0;
    }
    for (; n > 0; n--) {
        if (list_forward(list) == -1) {
            return -1;
        }
    }
    return 1;
}

int list_back_num(LINK_LIST *list, int n) {
    if (!is_usable(list)) {
        return 0;
    }
    for (; n > 0; n--) {
        if (list_back(list) == -1) {
            return -1;
        }
    }
    return 1;
}

void *list_get(LINK_LIST *list) {
    if (!is_usable(list) || list->current == nullptr) {
        return nullptr;
    }
    void *item = list->current->item;
    list->current = list->current->post;
    return item;
}

void *list_get_back(LINK_LIST *list) {
    if (!is_usable(list) || list->current == nullptr) {
        return nullptr;
    }
    void *item = list->current->item;
    list->current = list->current->pre;
    return item;
}

void *list_get_num(LINK_LIST *list, int id) {
    if (!is_usable(list)) {
        return nullptr;
    }
    list_start(list);
    list_forward_num(list, id);
    return list_get(list);
}

int list_is_last(LINK_LIST *list, const void *item) {
    return is_usable(list) && list->last != nullptr && list->last->item == item ? 1 : 0;
}

int list_is_first(LINK_LIST *list, const void *item) {
    return is_usable(list) && list->first != nullptr && list->first->item == item ? 1 : 0;
}

int list_add(LINK_LIST *list, void *item) {
    if (!is_usable(list) || item == nullptr) {
        return 0;
    }
    return link(list, list->last, item, nullptr) ? 1 : 0;
}

int list_add_current(LINK_LIST *list, void *item) {
    if (!is_usable(list)) {
        return 0;
    }
    if (list->current == nullptr) {
        return list_add(list, item);
    }
    return link(list, list->current->pre, item, list->current) ? 1 : 0;
}

void *list_remove(LINK_LIST *list) {
    if (!is_usable(list)) {
        return nullptr;
    }
    // Required: removes the last node if the cursor is on the first or past the end.
    list_struct *node = list->current != nullptr ? list->current->pre : nullptr;
    if (node == nullptr) {
        node = list->last;
    }
    if (node == nullptr) {
        return nullptr;
    }
    set_next(list, node->pre, node->post);
    set_previous(list, node->post, node->pre);
    list->current = node->post;
    return release(list, node);
}

void *list_remove_num(LINK_LIST *list, int id) {
    if (!is_usable(list)) {
        return nullptr;
    }
    list_start(list);
    if (id >= list->num) {
        list_last(list);
    } else {
        // One too far, as after list_get: list_remove removes the node before the cursor.
        list_forward_num(list, id + 1);
    }
    return list_remove(list);
}

void *list_remove_next(LINK_LIST *list) {
    if (!is_usable(list)) {
        return nullptr;
    }
    list_struct *node = list->current != nullptr ? list->current : list->last;
    if (node == nullptr) {
        return nullptr;
    }
    // Required: neither the start of the list nor the cursor moves.
    if (node->pre != nullptr) {
        node->pre->post = node->post;
    }
    set_previous(list, node->post, node->pre);
    return release(list, node);
}

int list_clear(LINK_LIST *list) {
    if (!is_usable(list)) {
        return 0;
    }
    for (list_struct *node = list->first; node != nullptr;) {
        list_struct *next = node->post;
        delete node;
        node = next;
    }
    reset(list);
    return 1;
}

int list_clear_dealloc(LINK_LIST *list) {
    if (!is_usable(list)) {
        return 0;
    }
    // Required: goes from the tail, and stops at a null item.
    for (const list_struct *node = list->last; node != nullptr && node->item != nullptr;
         node = node->pre) {
        std::free(node->item);
    }
    return list_clear(list);
}

int list_num(LINK_LIST *list) {
    return is_usable(list) ? list->num : 0;
}

int list_list(LINK_LIST *list, LINK_LIST *list2) {
    if (!is_usable(list) || !is_usable(list2)) {
        return 0;
    }
    list_start(list2);
    while (void *item = list_get(list2)) {
        if (list_add(list, item) == 0) {
            return 0;
        }
    }
    return list->num;
}

int list_emsg(LINK_LIST *list, const char *format, ...) {
    if (!is_usable(list)) {
        return 0;
    }
    if (list->emsg != nullptr) {
        path_text whole_format; // required: its 511 characters bound the format too
        whole_format.format("LIST: %s", format);
        std::va_list arguments;
        va_start(arguments, format);
        bounded_text<1024> message;
        message.vformat(whole_format.c_str(), arguments);
        va_end(arguments);
        // The receiver reads the message as a format.
        list->emsg(double_percents(message.view()).c_str());
    }
    return 1;
}
