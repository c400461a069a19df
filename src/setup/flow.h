// What the questions of the four flows share: the notes of their banners, asking for an answer and
// storing it, the choice of template sets, the files of an installed product and what it remembers.
#pragma once

#include "core/format.h"
#include "core/text.h"
#include "dialogue/questions.h"
#include "setup/answer_store.h"

#include <string>

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

// The distribution's directories of sets.
inline constexpr const char *templates_source = "./tpl";
inline constexpr const char *wap_source = "./wap";

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

// --- An installed product ---

// CGI_PATH/NAME.EXTENSION, NAME being the answer `name`.
std::string cgi_file(pINI_SETTINGS ini, answer_position name, const char *extension);

// The product's program in the current directory.
std::string product_program(pINI_SETTINGS ini);

// Load the .ini of the product installed as cgi_name, and the answers saved in its templates
// directory. False when the file could not be opened, which the log is told.
bool load_installed_ini(pINI_SETTINGS ini);
bool load_installed_answers(pINI_SETTINGS ini);
