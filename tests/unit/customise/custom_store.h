// The customise store as the tests of the customise modules fill it.
#pragma once

#include "customise/ini_update.h"
#include "support/store_texts.h"

#include <initializer_list>
#include <string>
#include <utility>

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
