// Where a run gets its answers from: the person at the console, unless another source is put in
// its place before the first question. The question engine and the flows ask here for everything
// that is typed.
#pragma once

#include "dialogue/questions.h"

#include <span>

// A question whose prompt is on the screen.
struct asked_question {
    const QUESTIONS &row;
    const char *text;     // with its arguments filled in
    const char *offered;  // what an empty reply takes; "" if nothing is offered
    bool wants_yes_or_no; // no other reply is taken
};

struct answer_source {
    // Reads the reply to a question, with or without its line feed. Returns false if there is none,
    // which quits the run.
    bool (*read_reply)(const asked_question &asked, std::span<char> reply);
    // Reads an item of the list that follows a yes to `quest_num`. Returns false at the end of all
    // input.
    bool (*read_item)(question_number quest_num, std::span<char> item);
    // Waits where a person has something to read.
    void (*pause)();
    // Ends the program because the reply was to quit, or there was none. Never returns.
    void (*quit)();
};

// Makes `source`, which must outlive the run, the source of all further answers.
void set_answer_source(const answer_source &source);

// Returns the source of the answers.
const answer_source &answers_from();

// Ends a run at the console: asks for enter, so that its last lines can be read, closes the log and
// ends the program with status 0.
[[noreturn]] void quit_at_console();
