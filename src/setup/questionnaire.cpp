#include "setup/questionnaire.h"

#include "core/console.h"
#include "core/format.h"
#include "core/text.h"
#include "dialogue/answers.h"
#include "dialogue/question.h"
#include "setup/answer_loading.h"
#include "setup/distribution.h"
#include "setup/installed.h"
#include "templates/sets.h"

namespace {

default_set number_sets_of(pINI_SETTINGS ini, const char *directory) {
    path_text vlimg;
    const heap_text templates =
        ask_template_sets(ini, directory, vlimg.data(), vlimg.buffer().size());
    return {.templates = templates != nullptr ? templates.get() : "", .vlimg = vlimg.c_str()};
}

} // namespace

void print_notes(bool offers_changes) {
    print("Notes: Defaults are shown [thus], just press enter to accept default\n");
    print("       Type 'q' then press enter to quit at anytime\n");
    print("       Type '?' then press enter at any time for help on a particular question\n");
    print("       All directory names must be entered from the root\n");
    if (offers_changes) {
        print("       There will be the option to change any answers at the end\n");
    }
}

void print_questions_banner(pINI_SETTINGS ini, const char *verb) {
    print("%s\n", dashed_rule);
    print("Please answer the following questions so I can %s %s\ncorrectly on your system\n", verb,
          ini_value_num(ini, D_PROD_NAME));
    print_notes(true);
    print("%s\n", dashed_rule);
}

const char *ask_answer(pINI_SETTINGS ini, answer_position position, question_number quest_num) {
    set_answer(ini, position, question(quest_num, ini_value_num(ini, position)));
    // A directory that was typed stays, whatever a file says that is loaded later.
    if (quest_pool[static_cast<std::size_t>(quest_num)].dir_action != 0) {
        mark_typed(position);
    }
    return ini_value_num(ini, position);
}

void ask_images_directory(pINI_SETTINGS ini, question_number quest_num) {
    const char *reply = question(quest_num, ini_value_num(ini, D_VLIMG_DIR));
    while (s_strcmp(reply, ini_value_num(ini, D_TEMPLATES)) == 0) {
        print("For efficiency, %s now source graphic and wav files from an images directory\n",
              ini_value_num(ini, D_PROD_NAME));
        print("that can be accessed from the cgi.\n");
        print("Please enter a directory with such a path. For more information type '?' then press "
              "enter.\n");
        reply = question(quest_num, ini_value_num(ini, D_VLIMG_DIR));
    }
    set_answer(ini, D_VLIMG_DIR, reply);
}

void ask_wml(pINI_SETTINGS ini) {
    const char *wanted = ini_value_num(ini, D_WML);
    set_answer(ini, D_WML, question(YN_WML_Q, wanted, ini_value_num(ini, D_WML_NAME)));
}

void ask_program_name(pINI_SETTINGS ini, question_number quest_num,
                      void (*explain)(const char *prod_name)) {
    while (!is_program_installed(ini)) {
        explain(ini_value_num(ini, D_PROD_NAME));
        path_text name(question(quest_num, ""));
        set_answer(ini, D_CGI_NAME, clean_up_name(name.data()));
    }
}

default_set number_sets(pINI_SETTINGS ini) {
    return number_sets_of(ini, templates_source);
}

void number_wap_sets(pINI_SETTINGS ini) {
    const default_set set = number_sets_of(ini, wap_source);
    set_answer(ini, D_WAP_TEMPLATES, set.templates.c_str());
    set_answer(ini, D_WAP_VLIMG, set.vlimg.c_str());
}

void store_default_set(pINI_SETTINGS ini, const default_set &set) {
    set_answer(ini, D_TEMPLATES, set.templates.c_str());
    set_answer(ini, D_VLIMG, set.vlimg.c_str());
}
