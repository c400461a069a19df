#include "customise/editing.h"

#include "core/text.h"
#include "dialogue/question.h"

bool wants_changes() {
    return s_strcmp(question(YN_CHANS_Q, "NO"), "FALSE") != 0;
}

bool wants_removal(const char *what) {
    return is_yes(question(C_REMOVE_Q, "NO", what));
}
