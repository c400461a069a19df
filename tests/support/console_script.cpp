#include "support/console_script.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace {

constexpr std::size_t most_prompts = 100;

// Whether the program waits behind this: its console shows nothing in part before it reads, and
// every prompt ends like one of these.
bool ends_in_prompt(std::string_view shown) {
    constexpr std::array<std::string_view, 3> ends = {"? ", "Please press enter to quit...\n",
                                                      "continue with the upgrade..."};
    return std::any_of(ends.begin(), ends.end(),
                       [shown](std::string_view end) { return shown.ends_with(end); });
}

// The last question: what stands behind the last empty line.
std::string_view last_paragraph(std::string_view shown) {
    const std::size_t empty_line = shown.rfind("\n\n");
    return empty_line == std::string_view::npos ? shown : shown.substr(empty_line + 2);
}

// Whether enter would accept one of the built-in directories, which are real ones.
bool offers_real_directory(std::string_view prompt) {
    return prompt.find("[/home/") != std::string_view::npos ||
           prompt.find("[/var/") != std::string_view::npos;
}

} // namespace

console_script in_order(std::vector<prompt_answer> answers) {
    console_script script;
    script.answers_ = std::move(answers);
    script.is_in_order_ = true;
    return script;
}

console_script typed(std::string_view text) {
    console_script script;
    script.typed_text_ = text;
    return script;
}

console_script operator+(console_script first, const console_script &second) {
    first.answers_.insert(first.answers_.end(), second.answers_.begin(), second.answers_.end());
    return first;
}

prompt_reader::prompt_reader(console_script script)
    : script_(std::move(script)), times_asked_(script_.answers_.size()) {}

std::optional<std::string> prompt_reader::answer(std::string_view shown) {
    if (shown.size() == answered_ || !ends_in_prompt(shown) || is_stuck()) {
        return std::nullopt;
    }
    prompts_++;
    const std::string prompt(last_paragraph(shown.substr(answered_)));
    answered_ = shown.size();
    const std::string typed = answer_to(prompt);
    if (typed.empty() && offers_real_directory(prompt)) {
        ADD_FAILURE() << "not accepted: " << prompt;
        return "q\n";
    }
    return typed + "\n";
}

std::string prompt_reader::answer_to(std::string_view prompt) {
    const auto is_meant = [prompt](const prompt_answer &one) {
        return prompt.find(one.prompt) != std::string_view::npos;
    };
    const std::vector<prompt_answer> &answers = script_.answers_;
    if (script_.is_in_order_) {
        const bool is_due = next_ < answers.size() && is_meant(answers[next_]);
        return is_due ? answers[next_++].typed : "";
    }
    std::string typed;
    for (std::size_t number = 0; number < answers.size(); number++) {
        if (is_meant(answers[number])) {
            times_asked_[number]++;
            typed = answers[number].typed;
        }
    }
    return typed;
}

bool prompt_reader::is_stuck() const {
    return prompts_ > most_prompts;
}

void prompt_reader::expect_all_asked(std::string_view screen) const {
    for (std::size_t number = 0; number < script_.answers_.size(); number++) {
        const std::string &prompt = script_.answers_[number].prompt;
        if (script_.is_in_order_) {
            EXPECT_LT(number, next_) << "no prompt \"" << prompt << "\" in its turn on\n" << screen;
        } else {
            EXPECT_EQ(times_asked_[number], 1U) << "prompts \"" << prompt << "\" on\n" << screen;
        }
    }
    EXPECT_FALSE(is_stuck()) << "asked without end on\n" << screen;
}
