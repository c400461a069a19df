// The two shapes that the customise dialogues share: a question asked until a check accepts the
// answer, and a list edited in passes until nothing is to be changed.
#pragma once

#include "customise/text_list.h"

#include <string>

// The answers that have a meaning of their own while a list is edited.
inline constexpr const char *delete_answer = "[del]";

// Asks with `ask` until `is_accepted` takes the answer, which it gives. `refuse` tells about each
// one that is not taken.
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

// Lets `pass` go through `texts` and gather the edited texts in the list it is given, which then
// replace `texts`, until the user wants no more changes.
template <class Pass>
void edit_in_passes(LINK_LIST *texts, Pass pass) {
    do {
        text_list edited;
        pass(&edited);
        take_texts(texts, &edited);
    } while (wants_changes());
}
