// What failed in this run. Every error that is shown counts; a run that must tell how it went asks
// here afterwards.
#pragma once

#include <span>
#include <string>
#include <string_view>

// Notes that something failed, in the words that were shown.
void note_failure(std::string_view shown);

// All that failed since the run began, or since it was forgotten.
std::span<const std::string> failures();
void forget_failures();

// While one of these lives, and `are_expected` was true, what fails is part of the plan and is not
// noted.
class expected_failures {
  public:
    explicit expected_failures(bool are_expected = true);
    ~expected_failures();
    expected_failures(const expected_failures &) = delete;
    expected_failures &operator=(const expected_failures &) = delete;

  private:
    bool before_;
};
