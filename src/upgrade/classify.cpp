#include "upgrade/classify.h"

#include "core/console.h"
#include "core/failures.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/program.h"
#include "core/stream.h"
#include "dialogue/answer_source.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "files/search.h"
#include "setup/distribution.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char *list_file = "tmptlist.txt";

constexpr const char *dashes_78 =
    "------------------------------------------------------------------------------";
constexpr const char *dashes_77 =
    "-----------------------------------------------------------------------------";

// A section of the list on the screen.
struct section {
    int category;
    const char *title;
};

constexpr section sections[] = {
    {3, "Templates that belong to a different template set from the ones currently in\n"
        "the distribution set:\n\n"},
    {2, "Templates that have been modified but have an upgrade available and should be\n"
        "inspected for any changes:\n\n"},
    {1, "Templates that have not been modified but have an upgrade available and can be\n"
        "upgraded safely:\n\n"},
};

std::vector<TMPLT_INFO> classify_all(pINI_SETTINGS ini) {
    const char *install_dir = ini_value_num(ini, D_INSTALL_DIR);
    found_names names;
    const int count = wild_find2(install_dir, "*.tpl", names);
    if (count == 0) {
        print_imsg("No files found in %s", install_dir);
    }
    std::vector<TMPLT_INFO> templates;
    templates.reserve(static_cast<std::size_t>(count));
    for_each_name(names, count,
                  [&](const char *name) { templates.push_back(classify_template(ini, name)); });
    return templates;
}

void print_section(const section &shown, std::span<const TMPLT_INFO> templates) {
    bool is_empty = true;
    print("\n%s\n", dashes_77);
    print_lines(shown.title);
    for (const TMPLT_INFO &entry : templates) {
        if (entry.category == shown.category) {
            print("%-14.14s     Current template set: %s version %s\n", entry.name.c_str(),
                  entry.old_tmplt_set.c_str(), entry.old_tmplt_vers.c_str());
            print("              Distribution template set: %s version %s\n",
                  entry.new_tmplt_set.c_str(), entry.new_tmplt_vers.c_str());
            is_empty = false;
        }
    }
    if (is_empty) {
        print("No files in this category\n");
    }
}

void write_header(std::FILE *file) {
    format_file(file, "# \"tmptlist.txt\" created by %s\n#\n", program_version);
    format_file(file, "# Categories:\n"
                      "# 1. These files have not been modified, are from the same template set\n"
                      "#    as those in the distribution set and have an upgrade available.\n"
                      "#    - Files can be easily upgraded to the new template.\n"
                      "# 2. These files have been modified, are from the same template set as\n"
                      "#    those in the distribution set and have an upgrade available\n"
                      "#    - Files should be inspected for changes.\n"
                      "# 3. These files belong to a different template set to the one that is\n"
                      "#    in the current distribution set\n\n");
}

// On the screen and in the file a name is cut to its column.
void write_entry(std::FILE *file, const TMPLT_INFO &entry) {
    format_file(file, "%d. %-14.14s     Current template set: %s version %s\n", entry.category,
                entry.name.c_str(), entry.old_tmplt_set.c_str(), entry.old_tmplt_vers.c_str());
    format_file(file, "                 Distribution template set: %s version %s\n",
                entry.new_tmplt_set.c_str(), entry.new_tmplt_vers.c_str());
}

bool has_category(const TMPLT_INFO &entry) {
    return entry.category != 0;
}

void offer_safe_save(pINI_SETTINGS ini, std::span<TMPLT_INFO> templates) {
    if (is_yes(question(YN_SAFE_Q, "YES")) && safe_save(ini, templates) == 0) {
        const expected_failures summed_up; // each was noted already
        print_emsg("Can't do safe save");
    }
}

} // namespace

TMPLT_INFO classify_template(pINI_SETTINGS ini, const char *name) {
    const char *prod_name = ini_value_num(ini, D_PROD_NAME);
    const std::string installed = path_in(ini_value_num(ini, D_INSTALL_DIR), name);
    const std::string distributed = path_in(templates_source, name);
    TMPLT_INFO entry;
    entry.name = name;
    tpl_load(&entry, installed.c_str(), prod_name, 0);
    tpl_load(&entry, distributed.c_str(), prod_name, 1);
    entry.category = tpl_category(&entry, installed.c_str());
    return entry;
}

int do_upgrade_list(pINI_SETTINGS ini) {
    std::vector<TMPLT_INFO> templates = classify_all(ini);
    if (std::none_of(templates.begin(), templates.end(), has_category)) {
        return 0;
    }
    print_upgrade_list(templates);
    if (std::any_of(templates.begin(), templates.end(),
                    [](const TMPLT_INFO &entry) { return entry.category == safe_category; })) {
        offer_safe_save(ini, templates);
    }
    if (save_upgrade_list(ini, templates) != 0) {
        print("\n");
        print_imsg("A copy of the list has been saved to your templates directory as "
                   "\"tmptlist.txt\"\n");
    }
    print("\nPlease press enter to continue with the upgrade...");
    answers_from().pause();
    return 0;
}

int print_upgrade_list(std::span<const TMPLT_INFO> templates) {
    print("%s\n", dashes_78);
    print("gxsetup has scanned your template directory, comparing them to the templates\n"
          "in the current distribution set and has found some templates that have an\n"
          "upgraded template available. These templates have been put into one of three\n"
          "categories:\n"
          "1. Templates that have not been modified and are safe to change now.\n"
          "2. Templates have been modified but need to be inspected for any changes.\n"
          // The full stop after "currently" is kept.
          "3. Templates belonging to a different template set from the ones currently.\n"
          "   in the distribution set.\n");
    if (is_yes(question(YN_VIEWLIST_Q, "YES"))) {
        for (const section &shown : sections) {
            print_section(shown, templates);
        }
        print("%s", dashes_77);
    }
    return 1;
}

int safe_save(pINI_SETTINGS ini, std::span<TMPLT_INFO> templates) {
    int result = 1;
    print("\nUpdating unmodified template files");
    for (TMPLT_INFO &entry : templates) {
        if (entry.category != safe_category) {
            continue;
        }
        const std::string path = path_in(templates_source, entry.name.c_str());
        // One that the new version has dropped is reported, but nothing went wrong.
        const expected_failures dropped(file_exists(path.c_str()) == 0);
        if (do_copy(path.c_str(), ini_value_num(ini, D_INSTALL_DIR), 1) == 0) {
            print_emsg("Can't copy %s", path.c_str());
            result = 0;
        } else {
            entry.category = 0; // up to date: the list leaves it out
        }
    }
    return result;
}

int save_upgrade_list(pINI_SETTINGS ini, std::span<const TMPLT_INFO> templates) {
    replacement_file file(list_file);
    if (file.stream() == nullptr) {
        print_emsg("Can't open \"tmptlist.txt\": %s", std::strerror(errno));
        return 0;
    }
    if (std::none_of(templates.begin(), templates.end(), has_category)) {
        place(".").remove(list_file); // an older run's
        return 0;
    }
    write_header(file.stream());
    for (const TMPLT_INFO &entry : templates) {
        if (has_category(entry)) {
            write_entry(file.stream(), entry);
        }
    }
    if (!file.commit()) {
        print_emsg("Can't write \"tmptlist.txt\": %s", std::strerror(errno));
        return 0;
    }
    return do_copy(list_file, ini_value_num(ini, D_INSTALL_DIR), 1);
}
