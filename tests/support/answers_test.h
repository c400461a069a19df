// A test of a module that works on the answer store: it has a scratch directory and a store of its
// own, set up as the session sets its up but without any answer.
#pragma once

#include "core/log.h"
#include "setup/answer_store.h"
#include "support/scratch_test.h"

#include <string>
#include <vector>

class answers_test : public scratch_test {
  protected:
    answers_test() {
        ini_init(ini, emsg, nullptr);
        ini_setup(ini, ans_values, ans_associations);
    }

    ~answers_test() override {
        ini_clear(ini);
        close_log();
    }

    void answer(answer_position position, const std::string &value) {
        set_answer(ini, position, value.c_str());
    }

    [[nodiscard]] std::string answer(answer_position position) const {
        return ini_value2_num(ini, position);
    }

    // All values of a name, a line each.
    [[nodiscard]] std::string values(answer_position position) const {
        std::string lines;
        for (const char *value = ini_value_num(ini, position); value != nullptr;
             value = ini_next_value_num(ini, position)) {
            lines += std::string(value) + "\n";
        }
        return lines;
    }

  private:
    INI_SETTINGS store_{};

  protected:
    pINI_SETTINGS ini = &store_;
};
