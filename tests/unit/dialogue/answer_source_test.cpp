#include "dialogue/answer_source.h"

#include "dialogue/question.h"
#include "support/console_capture.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct quit_run : std::runtime_error {
    quit_run() : std::runtime_error("quit") {}
};

// What the source was asked, and what it replies.
struct {
    std::vector<std::string> heard;
    std::string reply;
    bool has_reply = true;
} other;

constexpr answer_source other_source = {
    .read_reply =
        [](const asked_question &asked, std::span<char> reply) {
            other.heard.push_back(std::string(asked.row.name) + "|" + asked.text + "|" +
                                  asked.offered + (asked.wants_yes_or_no ? "|yes or no" : "|any"));
            other.reply.copy(reply.data(), reply.size());
            reply[other.reply.size()] = '\0';
            return other.has_reply;
        },
    .read_item = [](question_number /*quest_num*/, std::span<char> /*item*/) { return false; },
    .pause = [] { other.heard.emplace_back("pause"); },
    .quit = [] { throw quit_run(); },
};

class AnswerSource : public testing::Test {
  protected:
    AnswerSource() {
        other = {};
        set_answer_source(other_source);
    }
    ~AnswerSource() override { set_answer_source(before_); }

  private:
    const answer_source &before_ = answers_from();
};

} // namespace

TEST_F(AnswerSource, IsAskedWithTheNameTheTextAndWhatIsOffered) {
    other.reply = "/srv\n";
    std::string answer;
    const std::string shown =
        console_of([&] { answer = question(YN_RCGI_Q, "yes please", "kestrel", "/cgi"); });
    EXPECT_EQ(other.heard,
              std::vector<std::string>{
                  "remove_programs|Remove kestrel CGI files from /cgi |yes please|any"});
    EXPECT_EQ(shown, "\nRemove kestrel CGI files from /cgi [yes please]? ");
    EXPECT_EQ(answer, "/srv");
}

TEST_F(AnswerSource, IsToldWhereOnlyYesOrNoIsTaken) {
    console_of([] { question(YN_WML_Q, "TRUE", "merlin"); });
    EXPECT_EQ(other.heard, std::vector<std::string>{
                               "wml|Do you want to install/upgrade the merlin cgi |YES|yes or no"});
}

TEST_F(AnswerSource, TakesWhatIsOfferedByAnEmptyReply) {
    console_of([] { EXPECT_STREQ(question(I_DOM_Q, "example.org"), "example.org"); });
}

TEST_F(AnswerSource, QuitsTheRunWhereItHasNoReplyOrOneThatQuits) {
    other.has_reply = false;
    console_of([] { EXPECT_THROW(question(I_DOM_Q, "example.org"), quit_run); });
    other = {.heard = {}, .reply = "Q"};
    console_of([] { EXPECT_THROW(question(I_DOM_Q, "example.org"), quit_run); });
}
