#include "templates/sets.h"

#include "core/log.h"
#include "core/paths.h"
#include "core/text.h"
#include "files/operations.h"
#include "files/search.h"

#include <cstring>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr std::string_view common_directory = "common";
constexpr std::string_view word_list = "words.dat";

bool is_directory(const std::string &path) {
    struct stat entry {};
    return ::stat(path.c_str(), &entry) == 0 && S_ISDIR(entry.st_mode);
}

bool is_plain_file(const std::string &path) {
    struct stat entry {};
    return ::stat(path.c_str(), &entry) == 0 && !S_ISDIR(entry.st_mode);
}

// The names of the set directories of `dir`, in the order the directory gives them.
std::vector<std::string> find_sets(const char *dir) {
    found_names names;
    const int count = wild_find2(dir, "*", names);
    std::vector<std::string> sets;
    for_each_name(names, count, [&](const char *name) {
        if (name != common_directory && is_directory(path_in(dir, name))) {
            sets.emplace_back(name);
        }
    });
    return sets;
}

bool copy_common(const std::string &common, const std::vector<std::string> &copied_sets,
                 bool skip_words) {
    found_names names;
    const int count = wild_find2(common.c_str(), "*", names);
    bool is_complete = true;
    for_each_name(names, count, [&](const char *name) {
        const std::string file = path_in(common.c_str(), name);
        if ((skip_words && name == word_list) || !is_plain_file(file)) {
            return;
        }
        for (std::size_t set = 0; is_complete && set < copied_sets.size(); set++) {
            is_complete = do_copy(file.c_str(), copied_sets[set].c_str(), 1) != 0;
        }
    });
    return is_complete;
}

bool is_default_name(const std::string &name) {
    return s_stricmp(name.c_str(), "marble") == 0 || s_stricmp(name.c_str(), "wml") == 0;
}

// Stores a line for each set of `dir`; gives the number of the default set.
int store_sets(pINI_SETTINGS ini, const char *dir, const char *key) {
    int number = 1;
    int default_number = 1;
    for (const std::string &set : find_sets(dir)) {
        if (is_default_name(set)) {
            default_number = number;
        }
        const char *name = set.c_str();
        const char *templates = ini_value2(ini, "templates", 1);
        const char *vlimg = ini_value2(ini, "vlimg", 1);
        const std::string line =
            formatted("%d %s%c%s %s/%s %s Set", number, templates, '/', name, vlimg, name, name);
        ini_add(ini, key, line.c_str());
        number++;
    }
    return default_number;
}

// Takes the line whose first character is `digit` out of the list: set 10 passes for set 1. Beyond
// 9 it is no digit, and in the end no character at all.
heap_text take_line(LINK_LIST *lines, int digit) {
    list_start(lines);
    while (const auto *line = static_cast<const char *>(list_get(lines))) {
        if (*line == digit) {
            return heap_text(static_cast<char *>(list_remove(lines)));
        }
    }
    return nullptr;
}

// The piece of a set line behind its first `number` blanks.
std::string set_line_piece(std::string_view line, int number) {
    for (; number > 0; number--) {
        line = text_after(line, ' ');
    }
    return std::string(line.substr(0, line.find(' ')));
}

} // namespace

int do_template_copy(const char *src, const char *dst, int skip_words) {
    if (src == nullptr || dst == nullptr) {
        return 0;
    }
    std::vector<std::string> copied_sets;
    for (const std::string &set : find_sets(src)) {
        std::string target = path_in(dst, set.c_str());
        if (make_owned_dir(target.c_str(), directory_mode) == 0 ||
            do_xcopy2(path_in(src, set.c_str()).c_str(), "*", target.c_str(), 1) == 0) {
            return 0;
        }
        copied_sets.push_back(std::move(target));
    }
    const std::string common = path_in(src, common_directory.data());
    return copy_common(common, copied_sets, skip_words != 0) ? 1 : 0;
}

void words_copy(const char *path, const char *prefix, const char *names) {
    if (path == nullptr || prefix == nullptr || names == nullptr) {
        return;
    }
    found_names entries;
    const int count = wild_find(formatted("%s%c*", path, '/').c_str(), entries);
    for_each_name(entries, count, [&](const char *entry) {
        if (s_strncmp(entry, prefix, std::strlen(prefix)) != 0) {
            return;
        }
        const std::string target = path_in(path, entry);
        for (const char *name = s_strtoken(names, ", "); name != nullptr;
             name = s_strtoken(nullptr, ", ")) {
            const std::string file = path_in(path, name);
            if (*name != '\0' && do_copy(file.c_str(), target.c_str(), 1) == 0) {
                print_emsg("Error copying %s->%s", file.c_str(), target.c_str());
            }
        }
    });
}

heap_text ask_template_sets(pINI_SETTINGS ini, const char *dir, char *url, std::size_t len) {
    const char *key = s_strstr(dir, "wap") != nullptr ? "wap_tpl_set" : "tpl_set";
    const int default_number = store_sets(ini, dir, key);
    ini_add(ini, "install_dir", ini_value(ini, "templates", 1));

    LINK_LIST lines;
    tpl_list(&lines, ini, key);
    heap_text templates;
    if (const heap_text line = take_line(&lines, '0' + default_number)) {
        ini_add(ini, key, line.get());
        templates.reset(maistrdup(set_line_piece(line.get(), 1).c_str()));
        lcpy(url, set_line_piece(line.get(), 2).c_str(), len);
    }
    list_start(&lines);
    while (const auto *line = static_cast<const char *>(list_get(&lines))) {
        ini_add(ini, key, line);
    }
    list_clear_dealloc(&lines);
    return templates;
}

LINK_LIST *tpl_list(LINK_LIST *list, pINI_SETTINGS ini, const char *key) {
    list_init(list, emsg);
    LINK_LIST values = ini_get_multi_value(ini, key);
    list_start(&values);
    while (const auto *value = static_cast<const char *>(list_get(&values))) {
        list_add(list, maistrdup(value));
    }
    list_clear(&values);
    ini_remove_all(ini, key);
    return list;
}
