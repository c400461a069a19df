#include "settings/store.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>

// The first node of each name, keyed by the name text that the node holds. Without it a file of n
// settings would cost n * n comparisons to load.
struct ini_places {
    std::unordered_map<std::string_view, list_struct *> first;
};

namespace {

constexpr const char *mask = "xxxxx";

// False for a null store. A store that was never initialised ends the program: it is a programming
// fault, not a condition of the run.
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

void hand_over(message_function receiver, const char *format, std::va_list arguments) {
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
    return {name, nullptr, 0, 0};
}

const char *name_at(pINI_SETTINGS ini, int id) {
    return ini != nullptr && ini->ini_names != nullptr ? ini->ini_names[id].name : nullptr;
}

void report_no_memory(pINI_SETTINGS ini, const char *name) {
    ini_emsg(ini, "Memory Allocation Error -- for name in ini_add {%s}", name);
}

// A copy of the name of a setting or of its value; the message is the same for both.
heap_text copy_text(pINI_SETTINGS ini, const char *name, const char *text) {
    heap_text copy(::strdup(text));
    if (!copy) {
        report_no_memory(ini, name);
    }
    return copy;
}

const char *item_text(const list_struct *node) {
    return static_cast<const char *>(node->item);
}

list_struct *find_place(pINI_SETTINGS ini, const char *name) {
    if (ini->places == nullptr || name == nullptr) {
        return nullptr;
    }
    const auto found = ini->places->first.find(name);
    return found != ini->places->first.end() ? found->second : nullptr;
}

// False without memory. The place of an earlier setting of the name stays.
bool remember_place(pINI_SETTINGS ini, list_struct *node) {
    try {
        if (ini->places == nullptr) {
            ini->places = new ini_places;
        }
        ini->places->first.emplace(item_text(node), node);
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

// The setting at `node` goes: the next one of its name, if any, becomes the first.
void forget_place(pINI_SETTINGS ini, const list_struct *node) {
    const char *name = item_text(node);
    const auto place = ini->places->first.find(name);
    if (place == ini->places->first.end() || place->second != node) {
        return;
    }
    // The entry goes over to the next setting, which needs no memory.
    auto entry = ini->places->first.extract(place);
    for (list_struct *next = node->post->post; next != nullptr; next = next->post->post) {
        if (s_strcmp(item_text(next), name) == 0) {
            entry.key() = item_text(next);
            entry.mapped() = next;
            ini->places->first.insert(std::move(entry));
            return;
        }
    }
}

// Takes out the item that the iteration gave last.
heap_text take_item(pINI_SETTINGS ini) {
    return heap_text(static_cast<char *>(list_remove(&ini->settings)));
}

int replace_value(pINI_SETTINGS ini, list_struct *place, const char *name, const char *value,
                  bool is_password) {
    heap_text copy = copy_text(ini, name, value);
    if (!copy) {
        return 0;
    }
    ini->settings.current = place->post->post;
    const heap_text old_value = take_item(ini);
    if (list_add_current(&ini->settings, copy.get()) == 0) {
        ini_emsg(ini, "Adding {%s=%s} to settings failed removed setting.", name,
                 is_password ? mask : value);
        ini->places->first.erase(item_text(place));
        ini->settings.current = place->post;
        take_item(ini);
        return 0;
    }
    copy.release();
    ini_dmsg(ini, "ini settings changed {%s=%s}", name, is_password ? mask : value);
    return 1;
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
        list_last(&ini->settings);
        take_item(ini);
        return 0;
    }
    value_copy.release();
    if (!remember_place(ini, ini->settings.last->pre)) {
        report_no_memory(ini, name);
        list_last(&ini->settings);
        take_item(ini);
        take_item(ini);
        return 0;
    }
    ini_dmsg(ini, "ini settings changed {%s=%s}", name, is_password ? mask : value);
    return 1;
}

bool is_value(const list_struct *node) {
    int before = 0;
    for (; node->pre != nullptr; node = node->pre) {
        before++;
    }
    return before % 2 == 1;
}

// What the program reads as a yes in a file it did not write.
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
    delete ini->places;
    ini->places = nullptr;
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
        if (list_struct *place = find_place(ini, name)) {
            return replace_value(ini, place, name, value, entry.password != 0);
        }
        list_last(&ini->settings);
    }
    return append_setting(ini, name, value, entry.password != 0);
}

int ini_remove(pINI_SETTINGS ini, const char *want_name) {
    if (!is_usable(ini)) {
        return 0;
    }
    list_struct *place = find_place(ini, want_name);
    if (place == nullptr) {
        list_last(&ini->settings);
        return 0;
    }
    const bool is_password = names_entry(ini, want_name).password != 0;
    forget_place(ini, place);
    ini->settings.current = place->post->post;
    const heap_text value = take_item(ini);
    const heap_text name = take_item(ini);
    // The reverse of every other masked message, and meant so.
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
    const LINK_LIST &list = ini->settings;
    list_struct *node = list.current != nullptr ? list.current->pre : list.last;
    if (node == nullptr || !is_value(node)) {
        return nullptr;
    }
    heap_text copy = copy_text(ini, item_text(node->pre), value);
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
    const list_struct *place = find_place(ini, want_name);
    // A chain longer than the table itself goes in a circle.
    const char *const *pair = associations != 0 ? ini->associations : nullptr;
    for (; place == nullptr && pair != nullptr && *pair != nullptr; pair += 2) {
        want_name = ini_get_association(ini, want_name);
        if (want_name == nullptr) {
            break;
        }
        place = find_place(ini, want_name);
    }
    if (place == nullptr) {
        list_last(&ini->settings);
        return nullptr;
    }
    ini->settings.current = place->post;
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
    hand_over(ini->emsg, format, arguments);
    va_end(arguments);
    return 1;
}

int ini_dmsg(pINI_SETTINGS ini, const char *format, ...) {
    if (!is_usable(ini)) {
        return 0;
    }
    std::va_list arguments;
    va_start(arguments, format);
    hand_over(ini->dmsg, format, arguments);
    va_end(arguments);
    return 1;
}
