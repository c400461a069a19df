// The reader of the help file, vsetup.hlp in the current directory: plain text in topics, each
// under a line "[TOPIC]". The question engine shows a topic for "?", the command line shows one for
// its own help.
#pragma once

#include "core/format.h"
#include "core/stream.h"

#include <optional>
#include <string>

// The support e-mail address printed behind every help text. The entry point sets it, the session
// again once the product is known.
extern path_text support_email;

// An open help file and the topic fetched last.
struct HELP {
    stream_handle hfile;
    std::optional<std::string> ref;       // the topic's name
    std::optional<std::string> last_help; // the topic's text
};

// Opens a help file. 1, or 0 when it cannot be opened.
int help_init(HELP *hlp, const char *filename);

// The text of a topic, owned by the record until the next help_get or help_clear. An unknown topic
// and one without text give "No specific help is available for this question.".
const char *help_get(HELP *hlp, const char *id);

// Forgets the topic and closes the file. 1, or 0 when closing failed.
int help_clear(HELP *hlp);

// Prints a topic of vsetup.hlp and the support address. 1; without the file 0, which console and
// log are told.
int help(const char *label);
