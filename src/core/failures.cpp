#include "core/failures.h"

#include <vector>

namespace {

std::vector<std::string> noted;

// Set by expected_failures.
bool is_expected = false;

} // namespace

void note_failure(std::string_view shown) {
    if (!is_expected) {
        noted.emplace_back(shown);
    }
}

std::span<const std::string> failures() {
    return noted;
}

void forget_failures() {
    noted.clear();
}

expected_failures::expected_failures(bool are_expected) : before_(is_expected) {
    is_expected = is_expected || are_expected;
}

expected_failures::~expected_failures() {
    is_expected = before_;
}
