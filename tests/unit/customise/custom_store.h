// The customise store as the tests of the customise modules fill it and look at it.
#pragma once

#include "customise/ini_update.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

using setting = std::pair<const char *, std::string>;

// A customise store with these settings.
class custom_store : public scoped_store {
  public:
    custom_store(std::initializer_list<setting> settings) : scoped_store(custom_values) {
        for (const auto &[name, value] : settings) {
            ini_add(get(), name, value.c_str());
        }
    }
};

using texts = std::vector<std::string>;

// The values of a name, in order.
inline texts values_of(pINI_SETTINGS settings, const char *name) {
    texts values;
    for (const char *value = ini_value(settings, name, 0); value != nullptr;
         value = ini_next_value(settings, name)) {
        values.emplace_back(value);
    }
    return values;
}

// The items of a list of texts, in order.
inline texts items_of(LINK_LIST *list) {
    texts items;
    list_start(list);
    while (const auto *item = static_cast<const char *>(list_get(list))) {
        items.emplace_back(item);
    }
    return items;
}
