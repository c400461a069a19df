#include "dialogue/question.h"

#include "core/console.h"
#include "core/format.h"
#include "core/log.h"
#include "core/text.h"
#include "dialogue/answer_source.h"
#include "dialogue/answers.h"
#include "dialogue/help.h"
#include "dialogue/path_checks.h"

namespace {

// The reply to the last question, which the caller of `question` looks at.
path_text reply;

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

// Line feeds belong to the notes, and to no name or answer.
std::string shown_argument(std::string_view text) {
    const bool is_note = text == keeps_templates_note || text == keeps_users_note;
    return is_note ? std::string(text) : as_shown(text);
}

// Shows the prompt and reads the reply, an empty one giving way to what is offered.
void read_reply(const asked_question &asked) {
    print("\n");
    print_lines(asked.text);
    if (*asked.offered == '\0') {
        print("? ");
    } else {
        print("[%s]? ", asked.offered);
    }
    if (!answers_from().read_reply(asked, reply.buffer())) {
        answers_from().quit();
    }
    clean_up_answer(reply.data());
    if (reply.empty()) {
        reply.assign(asked.offered);
    }
}

// Whether the reply is a directory that the question takes; prints why not.
bool accept_directory(int dir_action) {
    switch (check_valid_dir(reply.c_str())) {
    case directory_is_there:
        return true;
    case directory_is_missing:
        // The root always counts as missing: never offer to create it.
        if ((dir_action & dir_may_be_new) != 0 && reply.view() != "/") {
            print_imsg("%s does not exist... gxsetup will create it\n", reply.c_str());
            return true;
        }
        print("%s does not exist... please enter a valid directory\n", reply.c_str());
        return false;
    case directory_lacks_root:
        print("please enter a directory from the root\n");
        return false;
    default: // no result of today's check (kept)
        print("please enter a valid directory\n");
        return false;
    }
}

} // namespace

const char *question(question_number quest_num, const char *dflt, ...) {
    const QUESTIONS &row = quest_pool[static_cast<std::size_t>(quest_num)];
    std::va_list arguments;
    va_start(arguments, dflt);
    const path_text text(vformatted(row.ask, arguments, shown_argument));
    va_end(arguments);
    const path_text offered = prepare_default(dflt);
    const asked_question asked = {row, text.c_str(), offered.c_str(), is_yes_or_no(offered)};

    for (;;) {
        read_reply(asked);
        if (reply.empty()) {
            if (may_be_empty(quest_num)) {
                return reply.c_str();
            }
        } else if (reply.view() == "q" || reply.view() == "Q") {
            answers_from().quit();
        } else if (reply.view() == "?") {
            help(row.help);
        } else if (says_no(reply.c_str())) {
            return reply.assign("FALSE").c_str();
        } else if (says_yes(reply.c_str())) {
            return reply.assign("TRUE").c_str();
        } else if (asked.wants_yes_or_no) {
            print("Please enter either \"YES\" or \"NO\"\n");
        } else if ((row.dir_action & dir_must_exist) == 0 || accept_directory(row.dir_action)) {
            return reply.c_str();
        }
    }
}

bool is_yes(const char *given) {
    return s_strcmp(given, "TRUE") == 0;
}
