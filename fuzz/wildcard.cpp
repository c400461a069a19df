// The wildcard matcher and the pattern lists. The input is a pattern (or list), a NUL, and a name.
// Promised: the answers of a plain matcher written from the grammar, and those of a plain list
// reader; run it with a time limit, since no pattern may take more than the product of the lengths.
#include "support.h"

#include "files/search.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace {

// Matches by a table: which ends of the name each beginning of the pattern can reach.
class plain_matcher {
  public:
    plain_matcher(std::string_view pattern, std::string_view name)
        : pattern_(pattern), name_(name), reached_(name.size() + 1, false) {
        reached_[0] = true;
    }

    bool matches() {
        while (at_ < pattern_.size()) {
            if (!step()) {
                return false;
            }
        }
        return reached_.back();
    }

  private:
    // False for a pattern that is cut off in an element.
    bool step() {
        const char first = pattern_[at_];
        if (first == '*') {
            at_++;
            const auto begin = std::find(reached_.begin(), reached_.end(), true);
            std::fill(begin, reached_.end(), true);
            return true;
        }
        std::vector<bool> taken(256, false);
        if (first == '?') {
            at_++;
            taken.assign(256, true);
        } else if (first == '\\') {
            if (at_ + 1 == pattern_.size()) {
                return false;
            }
            take(taken, pattern_[at_ + 1]);
            at_ += 2;
        } else if (first == '[') {
            if (!read_set(taken)) {
                return false;
            }
        } else {
            at_++;
            take(taken, first);
        }
        advance(taken);
        return true;
    }

    static void take(std::vector<bool> &taken, char character) {
        taken[static_cast<unsigned char>(character)] = true;
    }

    bool read_set(std::vector<bool> &taken) {
        std::size_t at = at_ + 1;
        const bool negated = at < pattern_.size() && pattern_[at] == '^';
        at += negated ? 1 : 0;
        char previous = '\0';
        for (bool first = true; at < pattern_.size(); first = false) {
            if (pattern_[at] == ']' && !first) {
                at_ = at + 1;
                if (negated) {
                    taken.flip();
                }
                return true;
            }
            if (!first && pattern_[at] == '-' && at + 1 < pattern_.size() &&
                pattern_[at + 1] != ']') {
                at++;
                for (int member = static_cast<unsigned char>(previous);
                     member <= static_cast<unsigned char>(pattern_[at]); member++) {
                    take(taken, static_cast<char>(member));
                }
            } else {
                take(taken, pattern_[at]);
            }
            previous = pattern_[at++];
        }
        return false;
    }

    void advance(const std::vector<bool> &taken) {
        for (std::size_t end = name_.size(); end > 0; end--) {
            reached_[end] = reached_[end - 1] && taken[static_cast<unsigned char>(name_[end - 1])];
        }
        reached_[0] = false;
    }

    std::string_view pattern_;
    std::string_view name_;
    std::size_t at_ = 0;
    std::vector<bool> reached_;
};

std::string lower_case(std::string text) {
    for (char &character : text) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return text;
}

bool plain_list(std::string_view list, std::string name) {
    name = lower_case(name.substr(0, 511));
    bool result = false;
    while (!list.empty()) {
        std::string element(list.substr(0, list.find(',')));
        list.remove_prefix(std::min(element.size() + 1, list.size()));
        while (element.starts_with(' ') || element.starts_with('\t')) {
            element.erase(0, 1);
        }
        element = lower_case(element.substr(0, 100));
        while (element.ends_with('\r') || element.ends_with('\n')) {
            element.pop_back();
        }
        const bool exclusion = element.starts_with('!');
        if (plain_matcher(element.substr(exclusion ? 1 : 0), name).matches()) {
            result = !exclusion;
        }
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz_input input(data, size);
    const std::string pattern = input.text();
    const std::string name = input.text();
    const int expected = plain_matcher(pattern, name).matches() ? 1 : 0;
    require(domatch(name.c_str(), pattern.c_str()) == expected, "a pattern matches by its grammar");
    require(match_wild(pattern.c_str(), name.c_str()) == expected, "so does a single pattern");
    require(match_list(pattern.c_str(), name.c_str()) == (plain_list(pattern, name) ? 1 : 0),
            "the last element that matches decides");
    return 0;
}
