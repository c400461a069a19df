// A store that keeps its messages for a test to look at.
#pragma once

#include "core/format.h"
#include "settings/store.h"

#include <cstdarg>
#include <string>
#include <vector>

using texts = std::vector<std::string>;

inline texts errors;
inline texts debug_messages;

inline std::string message_of(const char *format, std::va_list arguments) {
    bounded_text<4096> message;
    message.vformat(format, arguments);
    return message.c_str();
}

inline int keep_error(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    errors.push_back(message_of(format, arguments));
    va_end(arguments);
    return 1;
}

inline int keep_debug_message(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    debug_messages.push_back(message_of(format, arguments));
    va_end(arguments);
    return 1;
}

// Initialised, without names; cleared at the end of its scope.
class recording_store {
  protected:
    recording_store() {
        ini_init(&ini, keep_error, keep_debug_message);
        errors.clear();
        debug_messages.clear();
    }

    ~recording_store() { ini_clear(&ini); }

    // name=value of every setting in the store's order.
    texts settings() {
        texts all;
        ini_start(&ini);
        while (const char *name = ini_get(&ini)) {
            const char *value = ini_get(&ini);
            all.push_back(std::string(name) + "=" + (value != nullptr ? value : "(none)"));
        }
        return all;
    }

    ini_settings ini{};
};
