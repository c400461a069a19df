#include "unattended/named_answers.h"

#include "support/scratch_test.h"

#include <gtest/gtest.h>

namespace {

class NamedAnswers : public scratch_test {
  protected:
    // What is wrong with the answers given.
    std::string read(const std::vector<std::string> &given) { return read_answers(given, answers); }

    [[nodiscard]] std::string value(std::string_view name) const {
        const std::string *found = answer_named(answers, name);
        return found != nullptr ? *found : "(none)";
    }

    named_answers answers;
};

} // namespace

TEST_F(NamedAnswers, OfTheCommandLineKeepTheirBlanksAndSigns) {
    EXPECT_EQ(read({"vlimg= /a=b c ", "domain=x"}), "");
    EXPECT_EQ(value("vlimg"), " /a=b c ");
    EXPECT_EQ(value("domain"), "x");
    EXPECT_EQ(value("pophost"), "(none)");
}

TEST_F(NamedAnswers, ThatAreGivenTwiceHaveTheLastValue) {
    EXPECT_EQ(read({"domain=first", "domain=second"}), "");
    EXPECT_EQ(value("domain"), "second");
}

TEST_F(NamedAnswers, OfAListAreAllKept) {
    write_file("hosts", "allow_host_login in.file\n");
    EXPECT_EQ(read({"hosts"}), "");
    EXPECT_EQ(value("allow_host_login"), "in.file");
    EXPECT_EQ(read({"allow_host_login=one", "hosts", "allow_host_login=two"}), "");
    EXPECT_EQ(answers["allow_host_login"], (std::vector<std::string>{"one", "two"}));
}

TEST_F(NamedAnswers, AreReadFromAFileNamedWithAnEqualsSign) {
    write_file("a=b", "domain x\n");
    EXPECT_EQ(read({"./a=b"}), "");
    EXPECT_EQ(value("domain"), "x");
    EXPECT_EQ(read({"a=b"}), "a: no question has this name");
}

TEST_F(NamedAnswers, GoOnOverSeveralLines) {
    write_file("answers", "domain exam /\n  ple.org\n# comment /\n\npophost b\n");
    EXPECT_EQ(read({"answers"}), "");
    EXPECT_EQ(value("domain"), "example.org");
    EXPECT_EQ(value("pophost"), "b");
}

TEST_F(NamedAnswers, HoldOneValueOf511Characters) {
    EXPECT_EQ(read({"domain=" + std::string(511, 'd')}), "");
    EXPECT_EQ(read({"domain=" + std::string(512, 'd')}),
              "domain: the value has more than 511 characters");
}

TEST_F(NamedAnswers, AreNotNamedForWhatTheActionTells) {
    for (const QUESTIONS &row : quest_pool) {
        const std::string fault = read({std::string(row.name) + "=x"});
        EXPECT_EQ(fault.empty(), !is_answered_by_action(row)) << row.name;
    }
}
