#include "dialogue/question.h"

#include "core/console.h"
#include "core/format.h"
#include "core/log.h"
#include "core/text.h"
#include "dialogue/answers.h"
#include "dialogue/help.h"
#include "dialogue/path_checks.h"

#include <cstdlib>

namespace {

path_text answer;

struct shown_action {
    const char *action;
    const char *digit;
};

// The digits are the numbers of the flows, not those of the main menu.
constexpr shown_action shown_actions[] = {
    {"install", "1"},
    {"upgrade", "2"},
    {"remove", "4"},
    {"custom", "3"},
};

[[noreturn]] void quit() {
    print("Please press enter to quit...\n");
    wait_for_enter();
    close_log();
    std::exit(0);
}

bool is_yes_or_no(const path_text &dflt) {
    return s_stricmp(dflt.c_str(), "NO") == 0 || s_stricmp(dflt.c_str(), "YES") == 0;
}

path_text prepare_default(const char *text) {
    path_text dflt(text);
    if (s_stricmp(dflt.c_str(), "FALSE") == 0) {
        dflt.assign("NO");
    } else if (s_stricmp(dflt.c_str(), "TRUE") == 0) {
        dflt.assign("YES");
    }
    for (const auto &[action, digit] : shown_actions) {
        if (dflt.view() == action) {
            dflt.assign(digit);
        }
    }
    return dflt;
}

// The questions whose flows give an empty answer a meaning; every other one asks again.
bool may_be_empty(question_number quest_num) {
    return quest_num == C_SCRMESS_Q || quest_num == C_SCRURL_Q || quest_num == C_BODY_ADD_Q;
}

void read_answer(const path_text &text, const path_text &dflt) {
    if (dflt.empty()) {
        print("\n%s? ", text.c_str());
    } else {
        print("\n%s[%s]? ", text.c_str(), dflt.c_str());
    }
    if (!read_line(answer.buffer())) {
        quit();
    }
    clean_up_answer(answer.data());
    if (answer.empty()) {
        answer = dflt;
    }
}

// A single "N" is no "no", while a single "Y" is a "yes".
bool says_no() {
    return s_stricmp(answer.c_str(), "no") == 0 || answer.view() == "n";
}

bool says_yes() {
    return s_stricmp(answer.c_str(), "yes") == 0 || s_stricmp(answer.c_str(), "y") == 0;
}

// Whether the answer is a directory that the question takes; the console is told why not.
bool accept_directory(int dir_action) {
    switch (check_valid_dir(answer.c_str())) {
    case 0:
        return true;
    case 3:
        // The root is there, though the existence test does not find it, and cannot be created.
        if ((dir_action & dir_may_be_new) != 0 && answer.view() != "/") {
            print_imsg("%s does not exist... gxsetup will create it\n", answer.c_str());
            return true;
        }
        print("%s does not exist... please enter a valid directory\n", answer.c_str());
        return false;
    case 1:
        print("please enter a directory from the root\n");
        return false;
    default:
        print("please enter a valid directory\n");
        return false;
    }
}

} // namespace

const char *question(question_number quest_num, const char *dflt, ...) {
    const QUESTIONS &row = quest_pool[static_cast<std::size_t>(quest_num)];
    const path_text suggestion = prepare_default(dflt);
    const bool wants_yes_or_no = is_yes_or_no(suggestion);
    path_text text;
    std::va_list arguments;
    va_start(arguments, dflt);
    text.vformat(row.ask, arguments);
    va_end(arguments);

    for (;;) {
        read_answer(text, suggestion);
        if (answer.empty()) {
            if (may_be_empty(quest_num)) {
                return answer.c_str();
            }
        } else if (answer.view() == "q" || answer.view() == "Q") {
            quit();
        } else if (answer.view() == "?") {
            help(row.help);
        } else if (says_no()) {
            return answer.assign("FALSE").c_str();
        } else if (says_yes()) {
            return answer.assign("TRUE").c_str();
        } else if (wants_yes_or_no) {
            print("Please enter either \"YES\" or \"NO\"\n");
        } else if ((row.dir_action & dir_must_exist) == 0 || accept_directory(row.dir_action)) {
            return answer.c_str();
        }
    }
}

bool is_yes(const char *reply) {
    return s_strcmp(reply, "TRUE") == 0;
}
