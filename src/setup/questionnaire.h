// What the questions of the flows share: banners, asking for an answer and storing it, the choice
// of template sets.
#pragma once

#include "dialogue/questions.h"
#include "setup/answer_store.h"

#include <string>

// --- Banners ---

// Prints how to answer. With `offers_changes` also prints that all answers can be changed at the
// end.
void print_notes(bool offers_changes);

// Prints the banner of a questionnaire: rule, "... so I can VERB PRODUCT ...", notes, rule.
void print_questions_banner(pINI_SETTINGS ini, const char *verb);

// --- Answers ---

// Asks `quest_num` with the stored answer as default and stores the reply. Returns the stored
// answer.
const char *ask_answer(pINI_SETTINGS ini, answer_position position, question_number quest_num);

// Asks for the images directory with question `quest_num` until it is another directory than the
// templates', and stores it.
void ask_images_directory(pINI_SETTINGS ini, question_number quest_num);

// Asks whether the WML program is wanted and stores the reply.
void ask_wml(pINI_SETTINGS ini);

// Asks question `quest_num` for the name of the installed program until the program is found. Calls
// `explain` with the product's name before each question.
void ask_program_name(pINI_SETTINGS ini, question_number quest_num,
                      void (*explain)(const char *prod_name));

// --- Template sets ---

// The default template set. A missing part is empty, and leaves the answer as it is when stored.
struct default_set {
    std::string templates; // its directory
    std::string vlimg;     // the URL of its images
};

// Numbers the distribution's template sets. Returns the default one.
default_set number_sets(pINI_SETTINGS ini);

// Numbers the WML template sets. Stores the default one as `wap_templates` and `wap_vlimg`.
void number_wap_sets(pINI_SETTINGS ini);

// Stores the set as the answers `templates` and `vlimg`.
void store_default_set(pINI_SETTINGS ini, const default_set &set);
