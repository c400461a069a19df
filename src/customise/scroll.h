// The scrolling-message applet. Its HTML is one `set` value of the customise store, which is read
// into a record, edited in a dialogue and written again. The customise menu calls do_scrollmsg; the
// steps are declared for the tests and the fuzz target.
#pragma once

#include "core/list.h"
#include "settings/store.h"

#include <string>

struct SCROLLMSG {
    std::string height; // a number or a percentage
    std::string width;
    LINK_LIST messages;  // heap texts
    LINK_LIST urls;      // heap texts, the link of the message at the same position; "" for none
    int look_3d = 0;     // 3D frame, 1 or 0
    int look_shadow = 0; // shadow of the text, 1 or 0
    int direction = 0;   // 1 up, 0 left
    int delay = 0;       // between messages
    int delta = 0;       // pixels of a step
};

// Makes `data` an applet without messages, 40 high, 80% wide, moving by 1 pixel. Returns 1, or 0 if
// a list cannot be initialised.
int scroll_init(SCROLLMSG *data);

// Frees what the record holds.
void scroll_clear(SCROLLMSG *data);

// Reads the stored applet, the first `set` value whose first word is "scrollmessage", into an
// initialised record. Members that the text does not mention keep their values. Accepts any text,
// in time linear in its length. Returns 1.
//
// - The attribute of a "=" has the last word (letters and digits) before it as its name, in any
//   case.
// - A height or width begins at the next digit, ends with its word (after 511 characters at the
//   latest) and includes a "%" that follows.
// - The attribute "name" makes a parameter. Its name is the word right after the next double quote.
// - The first "=" after that name which no earlier parameter has taken belongs to its value and
//   makes no attribute.
// - The value begins at the next letter or digit, so that characters in front of it are lost, and
//   ends before the next double quote, after 510 characters at the latest.
// - What is incomplete at the end of the text is ignored.
int scroll_load(SCROLLMSG *data, pINI_SETTINGS settings);

// Returns the applet as it is stored: the word scrollmessage and the HTML. Each piece of it (the
// head, each message with its link, the tail) is cut at 511 characters.
std::string scroll_html(SCROLLMSG *data);

// Edit the messages and their links in passes, the rest in questions. get_messages returns the
// number of messages, the others 1. After [del] the number of the message goes on, but its link is
// removed at once, so that the later links move up: a second [del] in one pass removes the link of
// a later message (kept).
int get_messages(SCROLLMSG *data);
int get_urls(SCROLLMSG *data);
int get_properties(SCROLLMSG *data);

// Edits the applet of the customise store. If it ends up without messages, offers to remove it; a
// yes changes nothing in the store (kept). Returns 1, or 0 if memory runs out.
int do_scrollmsg(pINI_SETTINGS settings);
