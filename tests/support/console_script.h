// What is typed in a run of the program: answers by the prompts that ask for them, enter at every
// other prompt. The pipe and the terminal of support/wizard_run.h answer with it.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What is typed where a prompt holds a text. The last line feed is added. What is read on without a
// prompt, as the hosts of a list are, follows in the same text, line by line.
struct prompt_answer {
    std::string prompt;
    std::string typed;
};

// Written {{"merlin cgi", "yes"}, {"temporary files", "no"}}, and {} for enter throughout: each
// prompt is answered once, in whatever order they come.
class console_script {
  public:
    console_script() = default;
    console_script(std::initializer_list<prompt_answer> answers) : answers_(answers) {}

    friend console_script in_order(std::vector<prompt_answer> answers);
    friend console_script typed(std::string_view text);

    // The answers of both, which are of one kind.
    friend console_script operator+(console_script first, const console_script &second);

    [[nodiscard]] const std::optional<std::string> &typed_text() const { return typed_text_; }

  private:
    friend class prompt_reader;

    std::vector<prompt_answer> answers_;
    bool is_in_order_ = false;
    std::optional<std::string> typed_text_;
};

// Answers in this order. For rules that are about it, and for prompts that come again.
console_script in_order(std::vector<prompt_answer> answers);

// All of standard input as it stands, no prompt waited for. For rules about lines, bytes and the
// end of input, and for runs whose prompts cannot be seen.
console_script typed(std::string_view text);

// Finds the prompts in what a run shows and gives the answers.
class prompt_reader {
  public:
    explicit prompt_reader(console_script script);

    // What is to be typed, line feed included, when the program waits behind all that it has
    // `shown`; nothing while it does not, and after too many prompts, which is_stuck() tells. Where
    // enter would accept a directory outside the world, the test fails and "q" is typed.
    std::optional<std::string> answer(std::string_view shown);

    // What is to be typed at this prompt, which the script counts as asked.
    std::string answer_to(std::string_view prompt);

    [[nodiscard]] bool is_stuck() const;

    // Fails the test, and shows the screen, when a prompt that is named was not seen, was seen
    // again, or when the program asked without end.
    void expect_all_asked(std::string_view screen) const;

  private:
    console_script script_;
    std::vector<std::size_t> times_asked_; // of each answer's prompt
    std::size_t next_ = 0;                 // the answer that is due when they are in order
    std::size_t prompts_ = 0;
    std::size_t answered_ = 0; // how much was shown at the last answer
};
