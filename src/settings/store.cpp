#include "settings/store.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace {

constexpr const char *mask = "xxxxx";

const char *item_text(const list_struct *node) {
    return static_cast<const char *>(node->item);
}

} // namespace

// The first setting of each name: the list node of its name, found by the text of that node.
// Without it, loading n settings would cost n * n comparisons. Whoever changes the settings of a
// store calls append_setting, drop_setting or ini_clear, which keep it right.
struct ini_index {
    // Returns null if there is none.
    [[nodiscard]] list_struct *find(const char *name) const {
        const auto found = first_.find(name);
        return found != first_.end() ? found->second : nullptr;
    }

    // An earlier setting of the name stays the first. Throws std::bad_alloc.
    void add(list_struct *setting) { first_.emplace(item_text(setting), setting); }

    // `setting` is the first of its name and still in the list. The next of its name, if any,
    // becomes the first.
    void remove(const list_struct *setting) {
        const char *name = item_text(setting);
        // Reuse the map node for the next setting: no allocation.
        auto entry = first_.extract(name);
        for (list_struct *next = setting->post->post; next != nullptr; next = next->post->post) {
            if (s_strcmp(item_text(next), name) == 0) {
                entry.key() = item_text(next);
                entry.mapped() = next;
                first_.insert(std::move(entry));
                return;
            }
        }
    }

  private:
    std::unordered_map<std::string_view, list_struct *> first_;
};

namespace {

// Returns false for a null store. Ends the program if the store was never initialised: that is a
// fault of the program, not a condition of the run.
bool is_usable(pINI_SETTINGS ini) {
    if (ini == nullptr) {
        return false;
    }
    if (ini->init_value != ini_init_value) {
        ini_init(ini, nullptr, nullptr);
        std::perror("Error Using ini before Init\n");
        std::exit(1);
    }
    return true;
}

using message_text = bounded_text<1024>;

void send(message_function receiver, const char *format, std::va_list arguments) {
    if (receiver == nullptr) {
        return;
    }
    message_text text;
    text.vformat(format, arguments);
    message_text message("INI: ");
    message.append(text.view());
    receiver(double_percents(message.view()).c_str());
}

INI_NAMES_INFO names_entry(pINI_SETTINGS ini, const char *name) {
    for (const INI_NAMES_INFO *entry = ini->ini_names; entry != nullptr && entry->name != nullptr;
         entry++) {
        if (s_strcmp(entry->name, name) == 0) {
            return *entry;
        }
    }
    return {name, nullptr, 0, 0}; // any other name: one value, no default, no secret
}

const char *name_at(pINI_SETTINGS ini, int id) {
    return ini != nullptr && ini->ini_names != nullptr ? ini->ini_names[id].name : nullptr;
}

void log_no_memory(pINI_SETTINGS ini, const char *name) {
    ini_emsg(ini, "Memory Allocation Error -- for name in ini_add {%s}", name);
}

// Copies the name of a setting or its value. Returns null and logs the name if memory runs out.
heap_text copy_text(pINI_SETTINGS ini, const char *name, const char *text) {
    heap_text copy(::strdup(text));
    if (!copy) {
        log_no_memory(ini, name);
    }
    return copy;
}

list_struct *find_setting(pINI_SETTINGS ini, const char *name) {
    return ini->index != nullptr && name != nullptr ? ini->index->find(name) : nullptr;
}

// Removes the item before the iteration point, or the last one if the point is past the end.
heap_text remove_item(pINI_SETTINGS ini) {
    return heap_text(static_cast<char *>(list_remove(&ini->settings)));
}

heap_text remove_last_item(pINI_SETTINGS ini) {
    list_last(&ini->settings);
    return remove_item(ini);
}

// Returns false if memory runs out.
bool add_to_index(pINI_SETTINGS ini, list_struct *setting) {
    try {
        if (ini->index == nullptr) {
            ini->index = new ini_index;
        }
        ini->index->add(setting);
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

int append_setting(pINI_SETTINGS ini, const char *name, const char *value, bool is_password) {
    heap_text name_copy = copy_text(ini, name, name);
    heap_text value_copy = name_copy ? copy_text(ini, name, value) : nullptr;
    if (!value_copy) {
        return 0;
    }
    if (list_add(&ini->settings, name_copy.get()) == 0) {
        ini_emsg(ini, "'name' failed to be added to ini settings {%s}", name);
        return 0;
    }
    name_copy.release();
    if (list_add(&ini->settings, value_copy.get()) == 0) {
        // This masked form has six letters where the others have five.
        ini_emsg(ini, "'%s' value failed to be added to ini settings {%s}", name,
                 is_password ? "xxxxxx" : value);
        remove_last_item(ini);
        return 0;
    }
    value_copy.release();
    if (!add_to_index(ini, ini->settings.last->pre)) {
        log_no_memory(ini, name);
        remove_last_item(ini);
        remove_last_item(ini);
        return 0;
    }
    ini_dmsg(ini, "ini settings changed {%s=%s}", name, is_password ? mask : value);
    return 1;
}

struct dropped_setting {
    heap_text name;
    heap_text value;
};

// Removes a setting, the first of its name. The iteration point is then after its place.
dropped_setting drop_setting(pINI_SETTINGS ini, list_struct *setting) {
    ini->index->remove(setting);
    ini->settings.current = setting->post->post;
    heap_text value = remove_item(ini);
    heap_text name = remove_item(ini);
    return {std::move(name), std::move(value)};
}

int replace_value(pINI_SETTINGS ini, list_struct *setting, const char *value, bool is_password) {
    const char *name = item_text(setting);
    heap_text copy = copy_text(ini, name, value);
    if (!copy) {
        return 0;
    }
    // Inserts the new value before the old one, moves past that and removes it: the iteration point
    // is then right after the new value, where a lookup would leave it.
    ini->settings.current = setting->post;
    if (list_add_current(&ini->settings, copy.get()) == 0) {
        ini_emsg(ini, "Adding {%s=%s} to settings failed removed setting.", name,
                 is_password ? mask : value);
        drop_setting(ini, setting);
        return 0;
    }
    copy.release();
    list_forward(&ini->settings);
    const heap_text old_value = remove_item(ini);
    ini_dmsg(ini, "ini settings changed {%s=%s}", name, is_password ? mask : value);
    return 1;
}

// Returns the value that the iteration returned last; null if that was a name or nothing.
list_struct *value_returned_last(const LINK_LIST &settings) {
    for (list_struct *name = settings.first; name != nullptr; name = name->post->post) {
        if (name->post->post == settings.current) {
            return name->post;
        }
    }
    return nullptr;
}

std::size_t association_count(pINI_SETTINGS ini) {
    std::size_t texts = 0;
    while (ini->associations != nullptr && ini->associations[texts] != nullptr) {
        texts += 2;
    }
    return texts / 2;
}

// Returns the first setting of the name's substitute, of that one's substitute, and so on.
list_struct *find_substitute(pINI_SETTINGS ini, const char *name) {
    list_struct *setting = nullptr;
    // At most one step a pair: more means a circle.
    for (std::size_t steps = association_count(ini); setting == nullptr && steps > 0; steps--) {
        name = ini_get_association(ini, name);
        if (name == nullptr) {
            return nullptr;
        }
        setting = find_setting(ini, name);
    }
    return setting;
}

// Files that this program did not write may spell a yes in several ways.
bool means_yes(const char *value) {
    return s_strnicmp(value, "yes", 3) == 0 || s_strnicmp(value, "on", 2) == 0;
}

const char *or_empty(const char *text) {
    return text != nullptr ? text : "";
}

} // namespace

int ini_init(pINI_SETTINGS ini, message_function emsg, message_function dmsg) {
    if (ini == nullptr) {
        return 0;
    }
    *ini = {};
    ini->init_value = ini_init_value;
    ini->emsg = emsg;
    ini->dmsg = dmsg;
    return list_init(&ini->settings, emsg);
}

int ini_setup(pINI_SETTINGS ini, const INI_NAMES_INFO *names,
              const char *const *associations_list) {
    if (!is_usable(ini)) {
        return 0;
    }
    ini->ini_names = names;
    ini->associations = associations_list;
    return ini_default(ini);
}

int ini_default(pINI_SETTINGS ini) {
    if (!is_usable(ini)) {
        return 0;
    }
    int ok = 1;
    for (const INI_NAMES_INFO *entry = ini->ini_names; entry != nullptr && entry->name != nullptr;
         entry++) {
        if (ini_add(ini, entry->name, entry->default_value) == 0) {
            ini_emsg(ini, "Setting up ini Defaults failed {%s=%s}", entry->name,
                     entry->default_value);
            ok = 0;
        }
    }
    return ok;
}

int ini_clear(pINI_SETTINGS ini) {
    if (!is_usable(ini)) {
        return 0;
    }
    delete ini->index;
    ini->index = nullptr;
    return list_clear_dealloc(&ini->settings);
}

int ini_add(pINI_SETTINGS ini, const char *name, const char *value) {
    if (!is_usable(ini) || name == nullptr) {
        return 0;
    }
    if (value == nullptr || *value == '\0') {
        ini_dmsg(ini, "Blank INI Setting for {%s} not added", name);
        return 1;
    }
    const INI_NAMES_INFO entry = names_entry(ini, name);
    if (entry.multi_lines == 0) {
        if (list_struct *setting = find_setting(ini, name)) {
            return replace_value(ini, setting, value, entry.password != 0);
        }
        // As every lookup that finds nothing leaves it.
        list_last(&ini->settings);
    }
    return append_setting(ini, name, value, entry.password != 0);
}

int ini_remove(pINI_SETTINGS ini, const char *want_name) {
    if (!is_usable(ini)) {
        return 0;
    }
    list_struct *setting = find_setting(ini, want_name);
    if (setting == nullptr) {
        list_last(&ini->settings);
        return 0;
    }
    const bool is_password = names_entry(ini, want_name).password != 0;
    const auto [name, value] = drop_setting(ini, setting);
    // The reverse of every other masked message (kept).
    ini_dmsg(ini, "ini setting removed {%s=%s}", name.get(), is_password ? value.get() : mask);
    return 1;
}

void ini_remove_all(pINI_SETTINGS ini, const char *want_name) {
    while (ini_remove(ini, want_name) == 1) {
    }
}

heap_text ini_update(pINI_SETTINGS ini, const char *value) {
    if (ini == nullptr || value == nullptr) {
        return nullptr;
    }
    list_struct *node = value_returned_last(ini->settings);
    heap_text copy = node != nullptr ? copy_text(ini, item_text(node->pre), value) : nullptr;
    if (!copy) {
        return nullptr;
    }
    heap_text old(static_cast<char *>(node->item));
    node->item = copy.release();
    return old;
}

int ini_number(pINI_SETTINGS ini) {
    return is_usable(ini) ? list_num(&ini->settings) : 0;
}

int ini_start(pINI_SETTINGS ini) {
    return is_usable(ini) ? list_start(&ini->settings) : 0;
}

const char *ini_get(pINI_SETTINGS ini) {
    return is_usable(ini) ? static_cast<const char *>(list_get(&ini->settings)) : nullptr;
}

const char *ini_get_association(pINI_SETTINGS ini, const char *want_name) {
    if (!is_usable(ini) || ini->associations == nullptr) {
        return nullptr;
    }
    for (const char *const *pair = ini->associations; pair[0] != nullptr; pair += 2) {
        if (s_strcmp(pair[0], want_name) == 0) {
            ini_dmsg(ini, "replace located {%s}={%s}", pair[0], pair[1]);
            return pair[1];
        }
    }
    return nullptr;
}

const char *ini_value(pINI_SETTINGS ini, const char *want_name, int associations) {
    if (!is_usable(ini)) {
        return nullptr;
    }
    const list_struct *setting = find_setting(ini, want_name);
    if (setting == nullptr && associations != 0) {
        setting = find_substitute(ini, want_name);
    }
    if (setting == nullptr) {
        list_last(&ini->settings);
        return nullptr;
    }
    ini->settings.current = setting->post;
    return ini_get(ini);
}

const char *ini_next_value(pINI_SETTINGS ini, const char *want_name) {
    if (!is_usable(ini)) {
        return nullptr;
    }
    while (const char *name = ini_get(ini)) {
        const char *value = ini_get(ini);
        if (s_strcmp(name, want_name) == 0) {
            return value;
        }
    }
    return nullptr;
}

LINK_LIST ini_get_multi_value(pINI_SETTINGS ini, const char *want_name) {
    LINK_LIST values;
    list_init(&values, ini != nullptr ? ini->emsg : nullptr);
    for (const char *value = ini_value(ini, want_name, 1); value != nullptr;
         value = ini_next_value(ini, want_name)) {
        list_add(&values, const_cast<char *>(value));
    }
    return values;
}

const char *ini_value_num(pINI_SETTINGS ini, int id) {
    return ini_value(ini, name_at(ini, id), 1);
}

const char *ini_next_value_num(pINI_SETTINGS ini, int id) {
    return ini_next_value(ini, name_at(ini, id));
}

LINK_LIST ini_get_multi_value_num(pINI_SETTINGS ini, int id) {
    return ini_get_multi_value(ini, name_at(ini, id));
}

const char *ini_value2(pINI_SETTINGS ini, const char *want_name, int associations) {
    return or_empty(ini_value(ini, want_name, associations));
}

const char *ini_next_value2(pINI_SETTINGS ini, const char *want_name) {
    return or_empty(ini_next_value(ini, want_name));
}

const char *ini_value2_num(pINI_SETTINGS ini, int id) {
    return or_empty(ini_value_num(ini, id));
}

const char *ini_next_value2_num(pINI_SETTINGS ini, int id) {
    return or_empty(ini_next_value_num(ini, id));
}

int ini_true(pINI_SETTINGS ini, const char *want_name) {
    if (!is_usable(ini)) {
        return 0;
    }
    return means_yes(ini_value(ini, want_name, 1)) ? 1 : -1;
}

int ini_true_num(pINI_SETTINGS ini, int id) {
    return ini_true(ini, name_at(ini, id));
}

int ini_emsg(pINI_SETTINGS ini, const char *format, ...) {
    if (!is_usable(ini)) {
        return 0;
    }
    std::va_list arguments;
    va_start(arguments, format);
    send(ini->emsg, format, arguments);
    va_end(arguments);
    return 1;
}

int ini_dmsg(pINI_SETTINGS ini, const char *format, ...) {
    if (!is_usable(ini)) {
        return 0;
    }
    std::va_list arguments;
    va_start(arguments, format);
    send(ini->dmsg, format, arguments);
    va_end(arguments);
    return 1;
}
