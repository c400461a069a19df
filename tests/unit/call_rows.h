// Calls of the list and the store written as text, for tests that are rows:
// "add cgi_name kestrel; number".
#pragma once

#include "unit/failing_memory.h"

#include <optional>
#include <sstream>
#include <string>

// Makes the calls, each with make(call); gives their results. From "only texts 1" or "only nodes 1"
// on there is memory for one more of these.
template <typename Make>
std::string results_of(const std::string &calls, const Make &make) {
    std::istringstream input(calls);
    std::optional<failing_memory> memory;
    std::string results;
    for (std::string call; std::getline(input >> std::ws, call, ';');) {
        if (call.starts_with("only ")) {
            memory.reset();
            memory.emplace(call.starts_with("only texts") ? memory_of::texts : memory_of::nodes,
                           call.back() - '0');
            continue;
        }
        const std::string result = make(call);
        results += (results.empty() || result.empty() ? "" : " ") + result;
    }
    return results;
}
