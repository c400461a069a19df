// The question engine. Every question of the program goes through `question`: it shows the text
// with its default, gets one line from the source of the answers and returns the answer in one
// form, with the same three ways out of every question: an empty line takes the default, "?" shows
// the help topic, "q" ends the program.
#pragma once

#include "dialogue/questions.h"

// What the text of a question may end with, given as its last argument.
inline constexpr const char *keeps_templates_note =
    "\n(This will not overwrite any templates already in this directory) ";
inline constexpr const char *keeps_users_note =
    "\n(This will not include any user information directories) ";

// Asks question `quest_num` until its answer is accepted.
//
// `dflt` is the suggested answer; null or "" means none. TRUE and FALSE are shown as YES and NO and
// make it a yes/no question, as YES and NO do; the actions install, upgrade, custom and remove are
// shown as 1, 2, 3 and 4. The further arguments fill the question's text.
//
// Returns the answer in a buffer of 512 bytes that the next call overwrites: "TRUE" or "FALSE" for
// a yes or a no, else the line as typed (511 characters at most) or the default. Where the table
// asks for a directory, that is one from the root that exists, or may be created (printed and
// logged).
//
// "q" and the end of input quit: at the console the program ends with status 0, the log closed.
const char *question(question_number quest_num, const char *dflt, ...);

// Whether a reply of `question` is a yes.
bool is_yes(const char *given);
