// What the questions of the flows share: banners, asking for an answer and storing it, the choice
// of template sets.
#pragma once

#include "core/format.h"
#include "core/text.h"
#include "dialogue/questions.h"
#include "setup/answer_store.h"

// --- Banners ---

// Prints the lines that tell how to answer; the last one, that all answers can be changed at the
// end, where `offers_changes` is set.
void print_notes(bool offers_changes);

// Prints the banner of a questionnaire: rule, "... so I can VERB PRODUCT ...", notes, rule.
void print_questions_banner(pINI_SETTINGS ini, const char *verb);

// --- Answers ---

// Asks `quest_num` with the stored answer as default and stores the reply. The stored answer.
const char *ask_answer(pINI_SETTINGS ini, answer_position position, question_number quest_num);

// Asks for the images directory with question `quest_num` until it is another directory than the
// templates', and stores it.
void ask_images_directory(pINI_SETTINGS ini, question_number quest_num);

// Asks whether the WML program is wanted and stores the reply.
void ask_wml(pINI_SETTINGS ini);

// --- Template sets ---

// The default set of a questionnaire. A part that is missing leaves the answer as it is.
struct set_choice {
    heap_text templates;
    path_text vlimg;
};

// Numbers the distribution's template sets; gives the default one.
set_choice number_sets(pINI_SETTINGS ini);

// Numbers the WML template sets; the default one becomes `wap_templates` and `wap_vlimg`.
void number_wap_sets(pINI_SETTINGS ini);

// Makes the choice the answers `templates` and `vlimg`.
void store_choice(pINI_SETTINGS ini, const set_choice &choice);
