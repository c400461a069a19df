#include "dialogue/answer_source.h"

#include "core/console.h"
#include "core/log.h"

#include <cstdlib>

namespace {

constexpr answer_source console = {
    .read_reply = [](const asked_question & /*asked*/,
                     std::span<char> reply) { return read_line(reply); },
    .read_item = [](question_number /*quest_num*/,
                    std::span<char> item) { return read_line(item); },
    .pause = wait_for_enter,
    .quit = quit_at_console,
};

// Set by set_answer_source.
const answer_source *current = &console;

} // namespace

void set_answer_source(const answer_source &source) {
    current = &source;
}

const answer_source &answers_from() {
    return *current;
}

void quit_at_console() {
    print("Please press enter to quit...\n");
    wait_for_enter();
    close_log();
    std::exit(0);
}
