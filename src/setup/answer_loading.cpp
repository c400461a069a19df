#include "setup/answer_loading.h"

#include "core/log.h"
#include "core/paths.h"
#include "core/place.h"
#include "products/product.h"
#include "settings/store.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace {

// Set by mark_typed. Lives for the run.
std::set<answer_position> typed;

// Narrowed by load_answers. Lives for the run.
mode_t narrowest_mode = all_mode_bits;

// Set by load_answers. Lives for the run.
bool is_private_file_loaded = false;

// A settings file and who answers for what it says.
struct loaded_file {
    const char *path;
    bool is_foreign; // somebody else can write or replace it
    uid_t owner;     // the one who can
};

constexpr std::array hidden_directories = {D_INSTALL_DIR, D_MANUAL, D_BULLETIN};

template <class Set>
bool is_in(const Set &set, answer_position position) {
    return std::find(set.begin(), set.end(), position) != set.end();
}

std::optional<std::string> stored_answer(pINI_SETTINGS ini, answer_position position) {
    const char *value = ini_value(ini, ans_values[position].name, 0);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

// Whoever owns the file can write it; a file of ours in another user's directory, that user can
// replace.
loaded_file look_at_file(const char *path, const open_file &file, const place &directory) {
    const bool is_own = is_of_ours(file.status.st_uid);
    return {.path = path,
            .is_foreign = file.is_shared || !is_ours(file.status),
            .owner = is_own ? directory.status().st_uid : file.status.st_uid};
}

// Whether the directory, or the nearest one above it that is there, can be reached and belongs to
// `user`.
bool belongs_to(std::string path, uid_t user) {
    place directory(path);
    while (!directory.is_open() && directory.error() == ENOENT && path.size() > 1) {
        path.resize(std::max<std::size_t>(path.find_last_of('/', path.size() - 2), 1));
        directory = place(path);
    }
    return directory.is_open() && directory.status().st_uid == user;
}

// Returns why the file's word for an answer does not count, or null.
const char *reason_against(answer_position position, const std::string &value,
                           const loaded_file &file) {
    if (typed.contains(position)) {
        return "another directory was typed";
    }
    if (!file.is_foreign) {
        return nullptr;
    }
    if (position == D_PROD_NAME) {
        return find_product(value.c_str()) == nullptr ? "there is no such product" : nullptr;
    }
    if (position == D_CGI_NAME || position == D_WML_NAME) {
        return is_bare_name(value.c_str()) ? nullptr : "it is no bare file name";
    }
    if (is_in(hidden_directories, position)) {
        const bool is_rooted = check_for_root(value.c_str()) == 1;
        return is_rooted && belongs_to(value, file.owner)
                   ? nullptr
                   : "the directory belongs to another user than the file";
    }
    return nullptr;
}

void restore(pINI_SETTINGS ini, answer_position position, const std::optional<std::string> &value) {
    if (value) {
        set_answer(ini, position, value->c_str());
    } else {
        remove_answer(ini, position);
    }
}

// What the answers that are weighed were before a file was loaded.
using stored_answers = std::map<answer_position, std::optional<std::string>>;

bool is_weighed(answer_position position) {
    return typed.contains(position) || position == D_PROD_NAME || position == D_CGI_NAME ||
           position == D_WML_NAME || is_in(hidden_directories, position);
}

template <class Use>
void for_each_weighed(Use use) {
    for (int number = 0; number < D_LAST; number++) {
        const auto position = static_cast<answer_position>(number);
        if (is_weighed(position)) {
            use(position);
        }
    }
}

void restore_what_does_not_count(pINI_SETTINGS ini, const stored_answers &before,
                                 const loaded_file &file) {
    for_each_weighed([&](answer_position position) {
        const std::optional<std::string> now = stored_answer(ini, position);
        if (!now || now == before.at(position)) {
            return;
        }
        if (const char *reason = reason_against(position, *now, file)) {
            imsg("%s \"%s\" of %s is not taken: %s", ans_values[position].name, now->c_str(),
                 file.path, reason);
            restore(ini, position, before.at(position));
        }
    });
}

} // namespace

int load_answers(pINI_SETTINGS ini, const char *path) {
    const named_place where = locate(path);
    open_file opened = open_settings(where);
    const loaded_file file = look_at_file(path, opened, where.directory);
    const mode_t mode = opened.status.st_mode;
    const bool is_private = opened.is_private;
    stored_answers before;
    for_each_weighed(
        [&](answer_position position) { before[position] = stored_answer(ini, position); });

    const int result = ini_load_opened(ini, path, std::move(opened));
    if (result != 0) {
        narrowest_mode &= mode;
        is_private_file_loaded = is_private_file_loaded || is_private;
        restore_what_does_not_count(ini, before, file);
    }
    return result;
}

void mark_typed(answer_position position) {
    typed.insert(position);
}

bool is_bare_name(const char *name) {
    constexpr std::string_view pattern_characters = "*?[]\\!,";
    const std::string_view text = name;
    const auto is_harmless = [&](char character) {
        return character >= ' ' && character <= '~' && character != '/' &&
               pattern_characters.find(character) == std::string_view::npos;
    };
    // A list of patterns drops the blanks before a pattern.
    return !text.empty() && text.front() != ' ' &&
           std::all_of(text.begin(), text.end(), is_harmless);
}

mode_t saved_answers_mode() {
    if (is_private_file_loaded) {
        return private_mode;
    }
    mode_t mode = all_mode_bits;
    if ((narrowest_mode & S_IRGRP) == 0) {
        mode &= ~mode_t{S_IRWXG};
    }
    if ((narrowest_mode & S_IROTH) == 0) {
        mode &= ~mode_t{S_IRWXO};
    }
    return mode;
}
