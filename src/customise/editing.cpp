#include "customise/editing.h"

#include "dialogue/question.h"

bool wants_changes() {
    return is_yes(question(YN_CHANS_Q, "NO"));
}

bool wants_removal(const char *what) {
    return is_yes(question(C_REMOVE_Q, "NO", what));
}
