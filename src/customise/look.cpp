#include "customise/look.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/text.h"
#include "customise/editing.h"
#include "customise/ini_update.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "files/search.h"
#include "setup/answer_store.h"

#include <cstring>
#include <string>

namespace {

// Returns the `set` value that begins with `mode`, or null.
const char *find_image(pINI_SETTINGS settings, const char *mode) {
    const char *value = ini_value(settings, "set", 1);
    while (value != nullptr && s_strncmp(value, mode, std::strlen(mode)) != 0) {
        value = ini_next_value(settings, "set");
    }
    return value;
}

int replace_image(pINI_SETTINGS settings, const char *mode, const char *default_file) {
    // Formatted, since the answer may be missing, which then shows as <NULL>.
    const std::string images = formatted("%s", ini_value_num(settings, D_VLIMG_DIR));
    const char *stored = find_image(settings, mode);
    const std::string suggestion =
        path_in(images, stored != nullptr ? get_set(stored) : default_file);
    const std::string file =
        ask_until([&] { return question(C_IMGFILE_Q, suggestion.c_str(), mode); },
                  [](const char *answer) { return file_exists(answer) == 1; },
                  [](const char *answer) { print_emsg("cannot find %s\n", answer); });
    do_copy(file.c_str(), images.c_str(), 1);
    text_list name;
    add_text(&name, strip_directory(file.c_str()));
    return update_values(settings, "set", mode, &name);
}

// A blank line of the footer: a setting cannot be empty.
constexpr const char *blank_line = " ";

void print_long_help() {
    print("\n\n\n");
    print("NOTE : This footer will be added to the end of every message sent.\n");
    print("->Defaults are shown [thus], if no default is given a <return> will\n"
          "  insert a blank line.\n");
    print("->Otherwise type [ins] to insert a blank line, [del] to remove a line,\n");
    print("  type [save] to save & exit, type [remove] to remove all Email footers.\n");
}

void print_short_help() {
    print("[ins] = insert blank line\t: [del] = delete line\n"
          "[remove] = remove footers\t: [save] = save and exit.\n");
}

// Edits the lines of the footer in passes until the user wants no more changes.
class footer_editor {
  public:
    explicit footer_editor(LINK_LIST *lines) : lines_(lines) {}

    void edit() {
        print_long_help();
        run_pass();
        while (wants_changes()) {
            print_short_help();
            run_pass();
        }
    }

    // Whether [remove] was typed in any pass.
    [[nodiscard]] bool wants_all_removed() const { return wants_all_removed_; }

  private:
    // Replaces the lines by the edited ones. After [remove] they are only added: the next pass
    // offers the old lines again.
    void run_pass() {
        text_list edited;
        edit_lines(&edited);
        if (!wants_all_removed_) {
            list_clear_dealloc(lines_);
        }
        move_texts(lines_, &edited);
    }

    void edit_lines(LINK_LIST *edited) {
        int number = 0;
        list_start(lines_);
        for (;;) {
            if (!is_line_stored_) {
                const auto *line = static_cast<const char *>(list_get(lines_));
                suggestion_ = line != nullptr ? line : "";
            }
            const std::string answer = question(C_BODY_ADD_Q, suggestion_.c_str(), number);
            if (answer == "[remove]") {
                wants_all_removed_ = true;
            }
            if (answer == "[save]" || answer == "[remove]") {
                return;
            }
            if (answer != delete_answer) {
                number++;
                store_line(answer, edited);
            }
        }
    }

    void store_line(const std::string &answer, LINK_LIST *edited) {
        if (answer.empty()) {
            add_text(edited, blank_line);
        } else if (answer == "[ins]") {
            add_text(edited, blank_line);
            add_text(edited, suggestion_.c_str());
            is_line_stored_ = true;
        } else {
            if (!is_line_stored_) {
                add_text(edited, answer.c_str());
            }
            is_line_stored_ = false;
        }
    }

    LINK_LIST *lines_;
    bool wants_all_removed_ = false;
    // [ins] stored the suggested line as well: it is offered once more and the answer dropped.
    bool is_line_stored_ = false;
    std::string suggestion_; // the line offered last
};

} // namespace

int do_background(pINI_SETTINGS settings) {
    return replace_image(settings, "background", "ksback.jpg");
}

int do_logo(pINI_SETTINGS settings) {
    return replace_image(settings, "logo", "kestrel.gif");
}

int do_emailfoot(pINI_SETTINGS settings) {
    text_list lines;
    for (const char *line = ini_value(settings, "body_add", 1); line != nullptr;
         line = ini_next_value(settings, "body_add")) {
        add_text(&lines, line);
    }
    footer_editor editor(&lines);
    editor.edit();
    if (!editor.wants_all_removed()) {
        update_values(settings, "body_add", nullptr, &lines);
    } else if (wants_removal("Email footer")) {
        ini_remove_all(settings, "body_add");
    }
    return 1;
}
