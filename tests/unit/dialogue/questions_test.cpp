#include "dialogue/questions.h"

#include "support/scratch_directory.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// A text in quotes, as a source would have it.
std::string quoted(const std::string &text) {
    std::string result;
    for (const char character : text) {
        result += character == '\n' ? "\\n" : character == '"' ? "\\\"" : std::string(1, character);
    }
    return "\"" + result + "\"";
}

const char *directory_rule(int dir_action) {
    constexpr std::array rules = {"any text", "existing directory", "(no such rule)",
                                  "existing or new directory"};
    return rules.at(static_cast<std::size_t>(dir_action));
}

// The table as questions.txt shows it.
std::string shown_table() {
    std::string table;
    for (const QUESTIONS &row : quest_pool) {
        table += std::to_string(row.quest_num) + "  " + row.name + ", " +
                 directory_rule(row.dir_action) + ", " +
                 (*row.help == '\0' ? "no topic" : row.help) + "\n    " + quoted(row.ask) + "\n";
    }
    return table;
}

} // namespace

TEST(QuestPool, ReadsLikeItsTextFile) {
    EXPECT_EQ(shown_table(), read_file(QUESTIONS_TEXT));
}

TEST(QuestPool, NamesWhatIsAnsweredLikeASetting) {
    for (const QUESTIONS &row : quest_pool) {
        EXPECT_EQ(std::string(row.name).find_first_not_of("abcdefghijklmnopqrstuvwxyz_"),
                  std::string::npos)
            << row.name;
    }
}
