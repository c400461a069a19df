// The scrolling-message applet: its HTML is kept as one `set` value of the customise store. It is
// read back into a record, edited in the dialogue and written anew. The customise menu calls
// do_scrollmsg; the steps are declared for the tests and the fuzz target.
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

// Makes `data` an applet without messages, 40 high, 80% wide, moving by 1 pixel. 1; 0 when a list
// cannot be initialised.
int scroll_init(SCROLLMSG *data);

// Frees what the record holds.
void scroll_clear(SCROLLMSG *data);

// Reads the stored applet, the first `set` value whose first word is "scrollmessage", into an
// initialised record; what it does not tell stays as it is. Any text is borne, in time linear in
// its length. Always 1.
//
// Every "=" makes an attribute, whose name is the last word (of letters and digits) before it. The
// value of a height or width begins at the next digit. The name of a parameter is the word behind
// the next double quote; its value belongs to the "=" after that, begins at the next letter or
// digit (so what stands in front is lost) and ends at the next double quote. What is not there
// before the text ends counts for nothing.
int scroll_load(SCROLLMSG *data, pINI_SETTINGS settings);

// The applet as it is stored: the word scrollmessage and the HTML. Each piece of it (the head, each
// message, the tail) is cut at 511 characters.
std::string scroll_html(SCROLLMSG *data);

// Edit the messages and their links in passes, the rest in questions. get_messages gives the number
// of messages, the others 1. In a pass over the messages the positions go on counting behind one
// that is deleted, while its link is taken out of the links at once, with list_remove_num.
int get_messages(SCROLLMSG *data);
int get_urls(SCROLLMSG *data);
int get_properties(SCROLLMSG *data);

// Edits the applet of the customise store. Without messages the removal of the applet is offered,
// which changes nothing in the store. 1, or 0 when there is no memory for the edited applet.
int do_scrollmsg(pINI_SETTINGS settings);
