// Tests that are rows of a table. Each row is a test of its own and is run by its name, like any
// other.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

// The test of one row: check() of the fixture, called with the row.
template <typename Fixture, typename Row>
class row_test : public Fixture {
  public:
    explicit row_test(const Row &row) : row_(row) {}
    void TestBody() override { this->check(row_); }

  private:
    const Row &row_;
};

// Makes a test of each row, whose `name` is "Suite.Test". The rows must live as long as the
// program. Gives 1, so that a table can be registered where it stands:
//
//   const int registered = register_rows<Fixture>(rows);
template <typename Fixture, typename Row>
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
