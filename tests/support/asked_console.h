// Questions of code that runs in the test's own process, answered by prompt.
#pragma once

#include "dialogue/answer_source.h"
#include "support/console_capture.h"
#include "support/console_script.h"

#include <functional>
#include <string>

// Answers what is asked while it lives. Other input of the code is not touched.
class asked_console {
  public:
    explicit asked_console(const console_script &script) : prompts_(script) {
        current = this;
        set_answer_source(source);
    }

    ~asked_console() {
        set_answer_source(before_);
        prompts_.expect_all_asked("the console");
    }

    asked_console(const asked_console &) = delete;
    asked_console &operator=(const asked_console &) = delete;

  private:
    static bool read_reply(const asked_question &asked, std::span<char> reply) {
        const std::string typed =
            current->prompts_.answer_to(std::string(asked.text) + "[" + asked.offered + "]? ");
        reply[typed.copy(reply.data(), reply.size() - 1)] = '\0';
        return true;
    }

    static void quit() { current->before_.quit(); }

    static inline asked_console *current = nullptr;
    static inline const answer_source source = {
        .read_reply = read_reply,
        .read_item = [](question_number /*quest_num*/, std::span<char> /*item*/) { return false; },
        .pause = [] {},
        .quit = quit,
    };

    prompt_reader prompts_;
    const answer_source &before_ = answers_from();
};

// Runs `code`, which must return, with its questions answered, and gives what it prints.
inline std::string console_of(const console_script &script, const std::function<void()> &code) {
    const asked_console console(script);
    return console_of(code);
}
