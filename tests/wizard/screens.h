// Parts of the dialogue that many transcripts begin or end with, and answers that many runs give.
// What a test is about stands in the test itself; whole screens are kept below expected/.
#pragma once

#include "support/console_script.h"

#include <string>

// An answer to the prompt that holds a text.
inline console_script answering(const std::string &prompt, const std::string &typed) {
    return {{prompt, typed}};
}

// Neither a copy of the originals nor the removal of the unpacked files.
inline const console_script no_to_both = {{"original templates", "no"}, {"temporary files", "no"}};

// For tanager and osprey, which offer a directory outside the world.
inline const console_script images_here = {{"Directory for .gif", "@/html/vlimg"}};

inline const console_script quit_at_the_menu = {{"What do you want to do", "4"}};

inline const std::string rule = "\n" + std::string(79, '-') + "\n";

inline const std::string welcome =
    "\n"
    "==============================================================================="
    "\n"
    "                        Welcome to gxsetup, version 3.0h                      \n"
    "                 Setup wizard for kestrel, plover, tanager and osprey        \n"
    "===============================================================================\n"
    "\n";

// The main menu up to its prompt; `action` is what it offers and `digit` how.
inline std::string menu(const std::string &product, const std::string &version = "3.2a",
                        const std::string &action = "install", const std::string &digit = "1") {
    return "Options:\n"
           " 1 Install " +
           product + ", version " + version +
           "\n"
           " 2 Upgrade from earlier version of " +
           product + " to " + product + ", version " + version +
           "\n"
           " 3 Remove " +
           product +
           " and associated files\n"
           " 4 Quit without " +
           action +
           "\n"
           "\n"
           "What do you want to do [" +
           digit + "]? ";
}

// What quitting at a question, and quitting from the menu, ends with.
inline const std::string quit_at_a_question = "Please press enter to quit...\n";
inline const std::string goodbye = "\n"
                                   "----------------------------------------------------------\n"
                                   "Goodbye\n"
                                   "\n"
                                   "\n"
                                   "Please press enter to quit...\n";

// The end of a session whose action went like this; the log and the answers are not copied then.
inline std::string end_of(const std::string &how) {
    return rule + how + "\n\n\nPlease press enter to quit...\n";
}

// The part of a transcript behind `begin` and before `end`.
inline std::string part_between(const std::string &transcript, const std::string &begin,
                                const std::string &end) {
    const std::size_t from = transcript.find(begin) + begin.size();
    return transcript.substr(from, transcript.find(end, from) - from);
}
