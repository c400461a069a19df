// LINK_LIST, the program's one container: a doubly linked list of untyped items with a cursor. The
// settings store keeps its values in one; template sets and scrolling messages are gathered in
// others.
//
// The caller provides the header's storage. The list owns its nodes, never its items: `list_clear`
// leaves the items alone, `list_clear_dealloc` frees them (free, ISO C 7.22.3.3).
//
// Typical use: list_start, then list_get until it gives null. A null list gives 0 (or a null item)
// and nothing happens. A list that was never initialised is a fault of the program: the system's
// error report says so and the process ends with status 1.
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
    list_struct *current = nullptr; // whose item list_get gives next; null past the end
    list_struct *last = nullptr;
};

inline constexpr int list_init_value = 32000;

// Makes `list` an empty list. `emsg` may be null. 1, or 0 for a null list.
int list_init(LINK_LIST *list, message_function emsg);

// --- The cursor ---

// To the first node; past the end (from where list_back reaches the last node). Give 1.
int list_start(LINK_LIST *list);
int list_last(LINK_LIST *list);

// One step; from past the end to the first or the last node. 1 when the cursor is on a node
// afterwards, else -1.
int list_forward(LINK_LIST *list);
int list_back(LINK_LIST *list);

// n steps; -1 as soon as one step gives -1, else 1 (also for no steps).
int list_forward_num(LINK_LIST *list, int n);
int list_back_num(LINK_LIST *list, int n);

// The item under the cursor, null past the end; the cursor then moves on (or back) by one.
void *list_get(LINK_LIST *list);
void *list_get_back(LINK_LIST *list);

// The item at position `id`, counted from 0: null behind the last, the first for a negative id.
// The cursor ends behind it.
void *list_get_num(LINK_LIST *list, int id);

// Non-zero when `item` is the item of the last or first node; 0 for an empty list.
int list_is_last(LINK_LIST *list, const void *item);
int list_is_first(LINK_LIST *list, const void *item);

// --- Items ---

// Appends; the cursor stays. 1, or 0 for a null item or when no node can be had, which is
// reported as an error.
int list_add(LINK_LIST *list, void *item);

// Inserts before the node under the cursor, which stays there; past the end it is list_add. 1, or
// 0 when no node can be had.
int list_add_current(LINK_LIST *list, void *item);

// Takes out the item that the last list_get gave: the node before the cursor, or the last node when
// the cursor is on the first node or past the end (so right after list_start the last item goes).
// The cursor ends behind it. Gives the item, null when there was none.
void *list_remove(LINK_LIST *list);

// Takes out the item at position `id`; any id outside the list takes the last item.
void *list_remove_num(LINK_LIST *list, int id);

// Takes out the node under the cursor, or the last. Neither `first` nor `current` is brought up to
// date: call list_start before anything else, and never use it on the first node.
void *list_remove_next(LINK_LIST *list);

// Empty the list, without and with freeing the items. Give 1.
int list_clear(LINK_LIST *list);
int list_clear_dealloc(LINK_LIST *list);

int list_num(LINK_LIST *list);

// Appends every item of `list2` (the pointers, not copies) to `list`. The new number of items, 0
// when an append fails.
int list_list(LINK_LIST *list, LINK_LIST *list2);

// Hands "LIST: " and the formatted message to the list's error receiver, if it has one. 1, or 0 for
// a null list.
[[gnu::format(printf, 2, 3)]] int list_emsg(LINK_LIST *list, const char *format, ...);
