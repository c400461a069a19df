// The answers that were named for an unattended run, in files and on the command line. Its main
// reads them; the replies to the questions are looked up here.
#pragma once

#include "dialogue/questions.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// The list that follows a yes to `restrict_hosts`: the one name that takes many values.
inline constexpr std::string_view list_of_hosts = "allow_host_login";

// Whether the action of the run answers a question already, so that no answer can be named for it.
bool is_answered_by_action(const QUESTIONS &row);

// The values of each name.
using named_answers = std::map<std::string, std::vector<std::string>, std::less<>>;

// Reads what the command line gave, each a FILE or NAME=VALUE. A later file wins over an earlier
// one, NAME=VALUE over every file; a list takes all the values that the winner gives. Returns what
// is wrong with them; "" if nothing.
//
// A file has the settings format. One that others than root and the caller may write, or of more
// than 16 MiB, is refused, and so is a line that a settings file would pass over or cut: without a
// value, with a NUL byte, of more than 509 characters.
std::string read_answers(const std::vector<std::string> &given, named_answers &answers);

// The value of a name, or null.
const std::string *answer_named(const named_answers &answers, std::string_view name);
