#include "templates/sets.h"

#include "core/log.h"
#include "core/paths.h"
#include "core/place.h"
#include "core/text.h"
#include "files/operations.h"
#include "files/search.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace {

constexpr const char *common_name = "common";
constexpr std::string_view word_list = "words.dat";

bool is_directory(const place &above, const char *name) {
    struct stat entry {};
    return above.look(name, entry) && S_ISDIR(entry.st_mode);
}

// Returns whether `name` is anything but a directory; false if it cannot be examined.
bool is_file(const place &above, const char *name) {
    struct stat entry {};
    return above.look(name, entry) && !S_ISDIR(entry.st_mode);
}

// Returns the names of the set directories of `dir`, in the order the directory lists them.
std::vector<std::string> find_sets(const char *dir) {
    const place directory(dir);
    found_names names;
    plain_files plain{};
    const int count = wild_find2(directory, dir, "*", names, plain);
    std::vector<std::string> sets;
    for_each_name(names, count, plain, [&](const char *name, bool is_plain) {
        if (!is_plain && s_strcmp(name, common_name) != 0 && is_directory(directory, name)) {
            sets.emplace_back(name);
        }
    });
    return sets;
}

// The directory that a set was copied to. Only the first ones stay open: a process may open few
// files, and there may be many sets.
class set_target {
  public:
    set_target(std::string path, place directory, std::size_t number)
        : path_(std::move(path)), directory_(number < most_open ? std::move(directory) : place()) {}

    bool copy(const place &from, const char *name, bool is_plain) const {
        const auto copy_to = [&](const place &directory) {
            return do_copy_opened(from, name, is_plain, directory, path_.c_str()) != 0;
        };
        return directory_.is_open() ? copy_to(directory_) : copy_to(place(path_));
    }

  private:
    static constexpr std::size_t most_open = 16;

    std::string path_;
    place directory_;
};

// Copies a set. Returns whether that was done without a failure; `target` is left open.
bool copy_set(const std::string &source, const std::string &target, place &directory) {
    made_directory made = make_owned_directory(target.c_str(), directory_mode);
    if (made.result == 0) {
        return false;
    }
    directory = made.directory.is_open() ? std::move(made.directory) : place(target);
    return do_xcopy_opened(place(source), source.c_str(), "*", directory, target.c_str(), 1) != 0;
}

bool copy_to_all(const place &common, const char *name, bool is_plain,
                 const std::vector<set_target> &sets) {
    return std::all_of(sets.begin(), sets.end(),
                       [&](const set_target &set) { return set.copy(common, name, is_plain); });
}

bool copy_common(const std::string &common, const std::vector<set_target> &copied_sets,
                 bool skip_words) {
    const place directory(common);
    found_names names;
    plain_files plain{};
    const int count = wild_find2(directory, common.c_str(), "*", names, plain);
    bool is_complete = true;
    for_each_name(names, count, plain, [&](const char *name, bool is_plain) {
        if ((is_plain || is_file(directory, name)) && !(skip_words && name == word_list)) {
            // After a failure copies nothing more; the loop goes on to free the names.
            is_complete = is_complete && copy_to_all(directory, name, is_plain, copied_sets);
        }
    });
    return is_complete;
}

bool is_default_name(const std::string &name) {
    return s_stricmp(name.c_str(), "marble") == 0 || s_stricmp(name.c_str(), "wml") == 0;
}

// Stores a line for each set of `dir`. Returns the number of the default set.
int store_sets(pINI_SETTINGS ini, const char *dir, const char *key) {
    int number = 1;
    int default_number = 1;
    for (const std::string &set : find_sets(dir)) {
        if (is_default_name(set)) { // the last one counts
            default_number = number;
        }
        const char *name = set.c_str();
        const char *templates = ini_value2(ini, "templates", 1);
        const char *vlimg = ini_value2(ini, "vlimg", 1);
        const std::string line =
            formatted("%d %s/%s %s/%s %s Set", number, templates, name, vlimg, name, name);
        ini_add(ini, key, line.c_str());
        number++;
    }
    return default_number;
}

// Takes the line of set `number` out of the list. Returns null if there is none.
heap_text remove_line(LINK_LIST *lines, int number) {
    // Required: only the first character is compared. The line of set 10 matches 1; for a number
    // above 9 nothing sensible matches.
    const int digit = '0' + number;
    list_start(lines);
    while (const auto *line = static_cast<const char *>(list_get(lines))) {
        if (*line == digit) {
            return heap_text(static_cast<char *>(list_remove(lines)));
        }
    }
    return nullptr;
}

// Returns the word that follows the first `blanks` blanks of a set line.
std::string word_after(std::string_view line, int blanks) {
    for (; blanks > 0; blanks--) {
        line = text_after(line, ' ');
    }
    return std::string(line.substr(0, line.find(' ')));
}

} // namespace

int do_template_copy(const char *src, const char *dst, int skip_words) {
    if (src == nullptr || dst == nullptr) {
        return 0;
    }
    std::vector<set_target> copied_sets;
    for (const std::string &set : find_sets(src)) {
        std::string target = path_in(dst, set.c_str());
        place directory;
        if (!copy_set(path_in(src, set.c_str()), target, directory)) {
            return 0;
        }
        copied_sets.emplace_back(std::move(target), std::move(directory), copied_sets.size());
    }
    const std::string common = path_in(src, common_name);
    return copy_common(common, copied_sets, skip_words != 0) ? 1 : 0;
}

void words_copy(const char *path, const char *prefix, const char *names) {
    if (path == nullptr || prefix == nullptr || names == nullptr) {
        return;
    }
    found_names entries;
    const int count = wild_find(path_in(path, "*").c_str(), entries);
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
    // The default set's line goes first: that makes it the product's default.
    if (const heap_text line = remove_line(&lines, default_number)) {
        ini_add(ini, key, line.get());
        templates.reset(maistrdup(word_after(line.get(), 1).c_str()));
        lcpy(url, word_after(line.get(), 2).c_str(), len);
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
    list_clear(&values); // its texts are the store's
    ini_remove_all(ini, key);
    return list;
}
