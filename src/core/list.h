// LINK_LIST, the program's one container: a doubly linked list of untyped items with a cursor. The
// settings store keeps its values in one; template sets and scrolling messages are gathered in
// others. A loop over a list calls list_start, then list_get until it returns null.
//
// The caller provides the header. The list owns its nodes, never its items: list_clear leaves them
// alone, list_clear_dealloc frees them (free, ISO C 7.22.3.3).
//
// Every procedure returns 0 or null for a null list. For a list that was never initialised it
// prints the system's error report and ends the process with status 1.
#pragma once

#include "core/format.h"

struct list_struct {
    list_struct *pre = nullptr;  // null at the head
    void *item = nullptr;        // the caller's
    list_struct *post = nullptr; // null at the tail
};

struct LINK_LIST {
    int init_value = 0;              // list_init_value once initialised
    int num = 0;                     // items
    message_function emsg = nullptr; // receives errors; may be null
    list_struct *first = nullptr;
    list_struct *current = nullptr; // the cursor: what list_get returns next; null past the end
    list_struct *last = nullptr;
};

inline constexpr int list_init_value = 32000;

// Makes `list` an empty list. `emsg` may be null. Returns 1.
int list_init(LINK_LIST *list, message_function emsg);

// --- The cursor ---

// Move the cursor to the first node, and past the end (from where list_back reaches the last node).
// Return 1.
int list_start(LINK_LIST *list);
int list_last(LINK_LIST *list);

// Moves one node forward; from past the end to the first. Returns 1 if the cursor is on a node
// afterwards, else -1.
int list_forward(LINK_LIST *list);

// Moves n nodes forward; from past the end the first step reaches the first node. Stops and returns
// -1 at a step that leaves the list, else returns 1.
int list_forward_num(LINK_LIST *list, int n);

// Returns the item under the cursor, null past the end, and moves the cursor on by one.
void *list_get(LINK_LIST *list);

// --- Items ---

// Appends; the cursor stays. Returns 1, or 0 for a null item or, with an error message, if memory
// runs out.
int list_add(LINK_LIST *list, void *item);

// Inserts before the node under the cursor, which stays there; past the end it is list_add. Returns
// 1, or 0 if memory runs out.
int list_add_current(LINK_LIST *list, void *item);

// Removes the item that the last list_get returned: the node before the cursor, or the last node if
// the cursor is on the first or past the end (so right after list_start the last item is removed).
// The cursor ends on the node after it. Returns the item, null if the list is empty.
void *list_remove(LINK_LIST *list);

// Removes and returns the item at position `id`; the last item for any id outside the list.
void *list_remove_num(LINK_LIST *list, int id);

// Empty the list, without and with freeing the items. Return 1.
int list_clear(LINK_LIST *list);
int list_clear_dealloc(LINK_LIST *list);

int list_num(LINK_LIST *list);

// Appends every item of `list2` (the pointers, not copies) to `list`. Returns the new number of
// items, 0 if an append fails.
int list_list(LINK_LIST *list, LINK_LIST *list2);

// Passes "LIST: " and the formatted message to the list's error receiver, if it has one. Returns 1.
[[gnu::format(printf, 2, 3)]] int list_emsg(LINK_LIST *list, const char *format, ...);

// --- Part of the fixed interface; the program itself does not call these ---

// list_forward and list_forward_num the other way.
int list_back(LINK_LIST *list);
int list_back_num(LINK_LIST *list, int n);

// Returns the item under the cursor and moves the cursor back by one.
void *list_get_back(LINK_LIST *list);

// Returns the item at position `id`, counted from 0: null after the last, the first for a negative
// id. The cursor ends on the node after it.
void *list_get_num(LINK_LIST *list, int id);

// Return 1 if `item` is the item of the last or first node, else 0.
int list_is_last(LINK_LIST *list, const void *item);
int list_is_first(LINK_LIST *list, const void *item);

// Removes the node under the cursor, or the last, and returns its item. Updates neither `first` nor
// `current`: call list_start before anything else, and never use it on the first node.
void *list_remove_next(LINK_LIST *list);
