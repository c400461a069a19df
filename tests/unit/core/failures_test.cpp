#include "core/failures.h"

#include "core/log.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

class Failures : public scratch_test {
  protected:
    Failures() { forget_failures(); }

    static std::vector<std::string> noted() { return {failures().begin(), failures().end()}; }
};

} // namespace

TEST_F(Failures, AreWhatErrorsShow) {
    console_of([] {
        print_emsg("Can't copy %s", "a");
        print_imsg("%s saved", "b");
    });
    EXPECT_EQ(noted(), std::vector<std::string>{"Can't copy a"});
}

TEST_F(Failures, AreNotNotedWhileTheyAreExpected) {
    {
        const expected_failures outer;
        const expected_failures inner(false);
        note_failure("one");
    }
    const expected_failures none(false);
    note_failure("two");
    EXPECT_EQ(noted(), std::vector<std::string>{"two"});
}

TEST_F(Failures, AreForgotten) {
    note_failure("one");
    forget_failures();
    EXPECT_EQ(noted(), std::vector<std::string>{});
}
