// The reader of the help file, vsetup.hlp in the current directory: plain text in topics, each
// under a line "[TOPIC]". The question engine shows a topic for "?", the command line shows one for
// its own help.
#pragma once

#include "core/format.h"
#include "core/stream.h"

#include <optional>
#include <string>

// The support e-mail address, printed after every help text. `main` sets it; the session sets it
// again once the product is known.
extern path_text support_email;

// An open help file and the topic fetched last.
struct HELP {
    stream_handle hfile;
    std::optional<std::string> ref;       // the topic's name
    std::optional<std::string> last_help; // the topic's text
};

// Opens a help file. Returns 1, or 0 if it cannot be opened.
int help_init(HELP *hlp, const char *filename);

// Returns the text of a topic, or "No specific help is available for this question." for an unknown
// or empty topic. The record owns the text until the next help_get or help_clear.
const char *help_get(HELP *hlp, const char *id);

// Forgets the topic and closes the file. Returns 1, or 0 if closing fails.
int help_clear(HELP *hlp);

// Prints a topic of vsetup.hlp and the support address. Returns 1. If the file cannot be opened,
// prints and logs that and returns 0.
int help(const char *label);
