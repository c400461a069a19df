// A receiver of messages that keeps them for a test to look at.
#pragma once

#include "core/format.h"

#include <cstdarg>
#include <string>
#include <vector>

// Give the list or the store &keep_in<kept>.
template <std::vector<std::string> &kept>
int keep_in(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    kept.push_back(vformatted(format, arguments));
    va_end(arguments);
    return 1;
}
