#include "unattended/installed_state.h"

#include "core/format.h"
#include "core/paths.h"
#include "core/place.h"
#include "core/stream.h"
#include "dialogue/answers.h"
#include "files/search.h"
#include "products/product.h"
#include "setup/distribution.h"
#include "setup/installed.h"
#include "upgrade/classify.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

bool are_alike(const std::string &one, const std::string &other) {
    const stream_handle first = open_plain_file(one.c_str());
    const stream_handle second = open_plain_file(other.c_str());
    if (!first || !second) {
        return false;
    }
    std::array<char, 65536> block{};
    std::array<char, 65536> other_block{};
    for (;;) {
        const std::size_t count = std::fread(block.data(), 1, block.size(), first.get());
        if (std::fread(other_block.data(), 1, block.size(), second.get()) != count ||
            !std::equal(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count),
                        other_block.begin())) {
            return false;
        }
        if (count == 0) {
            return std::ferror(first.get()) == 0 && std::ferror(second.get()) == 0;
        }
    }
}

bool are_programs_there(pINI_SETTINGS ini) {
    const std::string program = product_program(ini);
    return are_alike(program, cgi_file(ini, D_PROD_NAME, "cgi")) &&
           file_exists(cgi_file(ini, D_PROD_NAME, "ini").c_str()) == 1 &&
           (!is_true_answer(ini, D_WML) || are_alike(program, cgi_file(ini, D_WML_NAME, "cgi")));
}

// Whether each file below the directory `source` that matches `wild` is at the same place below
// `target`. The files of "common" are copied into the sets and have no place of their own.
bool are_files_there(const std::string &source, const char *wild, const std::string &target) {
    found_names names;
    const int count = wild_find2(source.c_str(), "*", names);
    bool are_there = true;
    for_each_name(names, count, [&](const char *name) {
        const std::string file = path_in(source, name);
        const std::string place_of_file = path_in(target, name);
        if (dir_exists(file.c_str()) == 1) {
            are_there = are_there && (std::string_view(name) == "common" ||
                                      are_files_there(file, wild, place_of_file));
        } else if (match_list(wild, name) == 1) {
            are_there = are_there && file_exists(place_of_file.c_str()) == 1;
        }
    });
    return are_there;
}

bool are_all_files_there(pINI_SETTINGS ini) {
    const char *images = ini_value2_num(ini, D_VLIMG_DIR);
    const bool has_sets = has_template_sets(ini_value_num(ini, D_PROD_NAME));
    return are_files_there(templates_source, "*", ini_value2_num(ini, D_INSTALL_DIR)) &&
           (has_sets ? are_files_there(images_source, "*", images)
                     : are_files_there(templates_source, "*.jpg,*.wav,*.gif", images));
}

// Whether a template that was never edited is older than the distribution's.
bool is_outdated(pINI_SETTINGS ini, const char *name) {
    return file_exists(path_in(templates_source, name).c_str()) == 1 &&
           classify_template(ini, name).category == safe_category;
}

bool are_safe_templates_new(pINI_SETTINGS ini, const named_answers &named) {
    const std::string *replaces = answer_named(named, "replace_safe");
    if (replaces != nullptr && says_no(replaces->c_str())) {
        return true;
    }
    found_names names;
    const int count = wild_find2(ini_value2_num(ini, D_INSTALL_DIR), "*.tpl", names);
    bool are_new = true;
    for_each_name(names, count,
                  [&](const char *name) { are_new = are_new && !is_outdated(ini, name); });
    return are_new;
}

std::vector<std::string> values_of(pINI_SETTINGS ini, const std::string &name) {
    std::vector<std::string> values;
    for (const char *value = ini_value(ini, name.c_str(), 0); value != nullptr;
         value = ini_next_value(ini, name.c_str())) {
        values.emplace_back(value);
    }
    return values;
}

// An installation of template sets saves the URL of its default set, one level below the answer.
bool is_saved_url(const std::string &saved, const std::string &answer) {
    return saved == answer || saved.substr(0, saved.rfind('/')) == answer;
}

bool is_saved(pINI_SETTINGS ini, pINI_SETTINGS saved, const std::string &name) {
    const bool is_setting =
        std::any_of(std::begin(ans_values), std::end(ans_values) - 1,
                    [&](const INI_NAMES_INFO &setting) { return name == setting.name; });
    // The saved answers were found in the templates directory, and the program tells the version.
    if (!is_setting || name == "templates" || name == "version") {
        return true;
    }
    const std::vector<std::string> before = values_of(saved, name);
    const std::vector<std::string> now = values_of(ini, name);
    if (name == "vlimg" && !before.empty() && !now.empty()) {
        return is_saved_url(before.front(), now.front());
    }
    return before == now;
}

bool are_answers_saved(pINI_SETTINGS ini, const named_answers &named) {
    INI_SETTINGS saved{};
    ini_init(&saved, nullptr, nullptr);
    ini_setup(&saved, ans_values, nullptr);
    const std::string file = path_in(ini_value2_num(ini, D_INSTALL_DIR), answers_file);
    const bool are_saved = ini_load(&saved, file.c_str()) != 0 &&
                           std::all_of(named.begin(), named.end(), [&](const auto &answer) {
                               return is_saved(ini, &saved, answer.first);
                           });
    ini_clear(&saved);
    return are_saved;
}

} // namespace

bool is_installed_with(pINI_SETTINGS ini, const named_answers &named) {
    return are_programs_there(ini) && are_all_files_there(ini) &&
           are_safe_templates_new(ini, named) && are_answers_saved(ini, named);
}
