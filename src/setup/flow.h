// What the four flows share: the notes of their banners, asking for an answer and storing it, the
// files of an installed product and what it remembers, and the closing lines.
#pragma once

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

// --- An installed product ---

// CGI_PATH/NAME.EXTENSION, NAME being the answer `name`.
std::string cgi_file(pINI_SETTINGS ini, answer_position name, const char *extension);

// The product's program in the current directory.
std::string product_program(pINI_SETTINGS ini);

// Load the .ini of the product installed as cgi_name, and the answers saved in its templates
// directory. False when the file could not be opened, which the log is told.
bool load_installed_ini(pINI_SETTINGS ini);
bool load_installed_answers(pINI_SETTINGS ini);

// Copies the product's program into the cgi directory under the WML name. 1, or 0 when the copy
// failed.
int copy_wml_program(pINI_SETTINGS ini);

// --- Closing lines ---

// Prints how it went ("Installation successful." and so on; `job` is the same word inside a
// sentence) and where the log and the answers are.
void print_outcome(pINI_SETTINGS ini, const char *title, const char *job, bool success);

// Prints the thanks ("Thank-you for JOB-ing PRODUCT") and the URL of the product.
void print_thanks(pINI_SETTINGS ini, const char *doing);
