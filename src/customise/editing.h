// What the customise dialogues share: asking until an answer is accepted, and editing a list again
// and again until the user wants no more changes.
#pragma once

#include "customise/text_list.h"

#include <string>

// Typed in place of a text, deletes it from the edited list.
inline constexpr const char *delete_answer = "[del]";

// Calls `ask` until `is_accepted` returns true for the answer, and `refuse` after each other
// answer. Returns the accepted one.
template <class Ask, class IsAccepted, class Refuse>
std::string ask_until(Ask ask, IsAccepted is_accepted, Refuse refuse) {
    std::string answer = ask();
    while (!is_accepted(answer.c_str())) {
        refuse(answer.c_str());
        answer = ask();
    }
    return answer;
}

// Asks whether any answer is to be changed.
bool wants_changes();

// Asks whether all of `what` is to be removed.
bool wants_removal(const char *what);

// Calls `pass` until the user wants no more changes. It goes through `texts` and adds the edited
// texts to the list it is given, which then replace `texts`.
template <class Pass>
void edit_in_passes(LINK_LIST *texts, Pass pass) {
    do {
        text_list edited;
        pass(&edited);
        list_clear_dealloc(texts);
        move_texts(texts, &edited);
    } while (wants_changes());
}
