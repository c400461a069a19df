// The work of a flow: what it works on, and the steps that install and upgrade both take.
#pragma once

#include "setup/answer_store.h"

#include <string>

// What a flow returns, beside 1 and 0, if the administrator wants the other flow instead.
inline constexpr int switch_to_upgrade = -1;
inline constexpr int switch_to_install = -2;

// One run of the steps. `has_sets` and `wants_wml` are fixed when the job starts.
struct setup_job {
    explicit setup_job(pINI_SETTINGS answers);

    pINI_SETTINGS ini;
    bool has_sets;
    bool wants_wml;
    bool success = true; // cleared by each checked step that fails

    [[nodiscard]] const char *answer(answer_position position) const;

    // INSTALL_DIR/NAME.
    [[nodiscard]] std::string below_install_dir(const char *name) const;

    // Clears `success` for a result of 0.
    void check(int result);
};

// Starts a progress line with `shown` and logs it, or `logged`, at debug level.
void announce(const char *shown);
void announce(const char *shown, const char *logged);

// Copies images and scripts of a product without template sets into the images directory.
void copy_flat_images(setup_job &job, int overwrite);

// Copies the distribution's manuals.
void copy_manuals(setup_job &job);

// Copy the product's program into the cgi directory, under its own name and under the WML name.
void copy_program(setup_job &job);
void copy_wml_program(setup_job &job);

// Writes the .ini of the WML program.
void write_wml_ini(setup_job &job);

// Prints how it went ("Installation successful." and so on) and where the log and the answers are.
// `work` is the title as it reads inside a sentence.
void print_outcome(const setup_job &job, const char *title, const char *work);

// Offers to keep the distribution's templates in INSTALL_DIR/originals. `note` ends the question.
// On a yes makes that directory and calls `copy` with it, which returns false if it could not
// create a directory. Returns false if any could not be created.
bool offer_originals(const setup_job &job, const char *note,
                     bool (*copy)(const setup_job &job, const std::string &originals));

// Whether the distribution lies apart from the installation, so that it can be deleted.
bool can_clean_up(const setup_job &job);

// Prints the thanks ("Thank-you for DOING PRODUCT") and the URL of the product.
void print_thanks(const setup_job &job, const char *doing);
