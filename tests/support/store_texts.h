// What stores and lists hold, as texts.
#pragma once

#include "settings/store.h"

#include <string>
#include <vector>

using texts = std::vector<std::string>;

// The items of a list of texts, in order.
inline texts items_of(LINK_LIST *list) {
    texts items;
    list_start(list);
    while (const auto *item = static_cast<const char *>(list_get(list))) {
        items.emplace_back(item);
    }
    return items;
}

// The values of a name, in order.
inline texts values_of(pINI_SETTINGS settings, const char *name) {
    texts values;
    for (const char *value = ini_value(settings, name, 0); value != nullptr;
         value = ini_next_value(settings, name)) {
        values.emplace_back(value);
    }
    return values;
}

// name=value of every setting, in order.
inline texts settings_of(pINI_SETTINGS settings) {
    texts all;
    ini_start(settings);
    while (const char *name = ini_get(settings)) {
        const char *value = ini_get(settings);
        all.push_back(std::string(name) + "=" + (value != nullptr ? value : "(none)"));
    }
    return all;
}
