#include "unattended/transcript.h"

#include "core/console.h"

#include <cstdio>

namespace {

// Set by keep_transcript: what was printed since. Set by mark_transcript: how much of it there was.
std::string kept;
std::size_t mark = 0;

} // namespace

std::string in_one_line(std::string_view text) {
    std::string line;
    for (const char character : text) {
        const bool is_blank = character == '\n' || character == ' ';
        if (!is_blank) {
            line += character;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

void keep_transcript() {
    gather_output(&kept);
}

void end_transcript(bool is_wanted) {
    gather_output(nullptr);
    if (is_wanted) {
        std::fwrite(kept.data(), 1, kept.size(), stdout);
    }
}

std::string said_since_mark(const std::string &end) {
    std::string text = kept.substr(mark);
    if (text.ends_with(end)) {
        text.resize(text.size() - end.size());
    }
    return in_one_line(text);
}

void mark_transcript() {
    mark = kept.size();
}
