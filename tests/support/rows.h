// Tests that are rows of a table. Each row is a test of its own and is run by its name, like any
// other.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

// The test of one row: its own check(), or that of the fixture, called with the row.
template <typename Fixture, typename Row>
class row_test : public Fixture {
  public:
    explicit row_test(const Row &row) : row_(row) {}

    void TestBody() override {
        if constexpr (requires { row_.check(); }) {
            row_.check();
        } else {
            this->check(row_);
        }
    }

  private:
    const Row &row_;
};

// Makes a test of each row, whose `name` is "Suite.Test". The rows must live as long as the
// program. Gives 1, so that a table can be registered where it stands:
//
//   const int registered = register_rows<Fixture>(rows);
template <typename Fixture = testing::Test, typename Row>
int register_rows(const std::vector<Row> &rows) {
    for (const Row &row : rows) {
        const std::string name = row.name;
        const std::size_t point = name.find('.');
        testing::RegisterTest(name.substr(0, point).c_str(), name.substr(point + 1).c_str(),
                              nullptr, nullptr, __FILE__, __LINE__,
                              [&row]() -> Fixture * { return new row_test<Fixture, Row>(row); });
    }
    return 1;
}

// What a table holds for a result: for a text that may be null a text or `null`.
constexpr auto null = std::nullopt;

template <typename Result>
using result_in_table = std::conditional_t<std::is_convertible_v<Result, const char *>,
                                           std::optional<std::string>, std::decay_t<Result>>;

template <typename Result>
result_in_table<Result> in_table(const Result &result) {
    if constexpr (std::is_convertible_v<Result, const char *>) {
        return result != nullptr ? result_in_table<Result>(result) : null;
    } else {
        return result;
    }
}

// A row about what a function gives for some arguments:
//
//   {"Suite.Rule", function, {{{argument, argument}, result}, ...}}
class rule {
  public:
    template <typename Result, typename... Arguments>
    struct call {
        std::tuple<std::decay_t<Arguments>...> given;
        result_in_table<Result> result;
    };

    template <typename Result, typename... Arguments>
    rule(const char *test_name, Result (*function)(Arguments...),
         std::type_identity_t<std::vector<call<Result, Arguments...>>> calls,
         const char *file = __builtin_FILE(), int line = __builtin_LINE())
        : name(test_name), check([=] {
              for (const auto &[given, result] : calls) {
                  const testing::ScopedTrace row(file, line, testing::PrintToString(given));
                  EXPECT_EQ(in_table(std::apply(function, given)), result);
              }
          }) {}

    const char *name;
    std::function<void()> check;
};
