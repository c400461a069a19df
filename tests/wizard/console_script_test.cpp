// Answers by prompt: what the tests rely on when they type.

#include "support/console_script.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

constexpr const char *domain = "\n\nWhat is your domain name [example.com]? ";

TEST(PromptReader, AnswersWhereTheProgramWaitsAndOnce) {
    prompt_reader prompts({{"domain name", "site.test"}});
    EXPECT_EQ(prompts.answer("\n\nWhat is your domain"), std::nullopt);
    EXPECT_EQ(prompts.answer(domain), "site.test\n");
    EXPECT_EQ(prompts.answer(domain), std::nullopt);
    prompts.expect_all_asked(domain);
}

TEST(PromptReader, PressesEnterWhereNoAnswerIsNamed) {
    prompt_reader prompts({});
    EXPECT_EQ(prompts.answer(domain), "\n");
    EXPECT_EQ(prompts.answer(domain + std::string("\nPlease press enter to quit...\n")), "\n");
}

TEST(PromptReader, LooksForANameInTheLastParagraphOnly) {
    prompt_reader prompts({{"domain name", "site.test"}});
    EXPECT_EQ(prompts.answer("domain name:  x\n\nDo you want to change any [NO]? "), "\n");
}

TEST(PromptReader, FailsForAPromptThatDoesNotCome) {
    prompt_reader prompts({{"domain name", "site.test"}});
    EXPECT_NONFATAL_FAILURE(prompts.expect_all_asked("the screen"), "the screen");
}

TEST(PromptReader, FailsForAPromptThatComesAgain) {
    prompt_reader prompts({{"domain name", "site.test"}});
    prompts.answer(domain);
    prompts.answer(std::string(domain) + domain);
    EXPECT_NONFATAL_FAILURE(prompts.expect_all_asked("the screen"), "the screen");
}

TEST(PromptReader, InOrderAnswersAPromptEachTimeItComes) {
    prompt_reader prompts(in_order({{"domain name", "?"}, {"domain name", "q"}}));
    EXPECT_EQ(prompts.answer(domain), "?\n");
    EXPECT_NONFATAL_FAILURE(prompts.expect_all_asked("the screen"), "the screen");
    EXPECT_EQ(prompts.answer(std::string(domain) + "help" + domain), "q\n");
    prompts.expect_all_asked("the screen");
}

TEST(PromptReader, FailsWhenTheProgramAsksWithoutEnd) {
    prompt_reader prompts({});
    std::string shown;
    while (prompts.answer(shown += domain)) {
    }
    EXPECT_TRUE(prompts.is_stuck());
    EXPECT_NONFATAL_FAILURE(prompts.expect_all_asked("the screen"), "the screen");
}

TEST(PromptReader, NeverAcceptsARealDirectory) {
    prompt_reader prompts({});
    std::optional<std::string> typed;
    EXPECT_NONFATAL_FAILURE(typed = prompts.answer("\nDirectory [/var/spool/kestrel]? "),
                            "not accepted");
    EXPECT_EQ(typed, "q\n");
}

} // namespace
