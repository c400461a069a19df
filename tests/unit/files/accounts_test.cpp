#include "files/accounts.h"

#include "support/rows.h"
#include "support/scratch_test.h"
#include "support/world.h"
#include "unit/account_files.h"

namespace {

// Looks up users, or groups, after commands of the shell. A getent that is written anew answers
// whatever it is asked.
struct lookup {
    const char *name;
    bool is_of_group;
    std::vector<const char *> names;
    const char *found; // of each name: "USER:GROUP" or "GROUP" in numbers, or "unknown"
    const char *asked; // of getent
    const char *preparation = "";
};

class Accounts : public scratch_test {
  protected:
    Accounts() {
        write_accounts("root:x:0:0::/:/bin/sh\n"
                       "# a comment\n"
                       "\n"
                       "cut:x\n"
                       "web:x:21:22:Web:/:/bin/false\n"
                       "web:x:31:32::/:\n"
                       "+nis::0:0:::\n"
                       "33:x:41:42::/:\n",
                       "root:x:0:\nnobody:x:99:\n");
        write_getent("[ \"$2\" = web ] && echo wrong:x:1:1::/: && exit\n"
                     "[ \"$1 $2\" = 'passwd ANN' ] && echo ann:*:51:52:Ann:/home/ann: && exit\n"
                     "[ \"$1 $2\" = 'group staff' ] && echo staff:*:53:ann,bob && exit\n"
                     "exit 2\n");
    }

    // "USER:GROUP" in numbers.
    static std::string user(const char *name, const account_sources &sources = test_accounts) {
        const passwd *found = find_user(name, sources);
        return found == nullptr
                   ? "unknown"
                   : std::to_string(found->pw_uid) + ":" + std::to_string(found->pw_gid);
    }

    static std::string in_group(const char *name) {
        const group *found = find_group(name, test_accounts);
        return found == nullptr ? "unknown" : std::to_string(found->gr_gid);
    }

    static void check(const lookup &row) {
        shell(row.preparation);
        for (const char *name : row.names) {
            EXPECT_EQ(row.is_of_group ? in_group(name) : user(name), row.found) << name;
        }
        EXPECT_EQ(asked_of_getent(), row.asked);
        EXPECT_FALSE(is_there("seen"));
    }
};

constexpr const char *answer_root = "sed -i '3,$d' getent; echo 'echo root:x:0:0::/:' >>getent";

const std::vector<lookup> lookups = {
    {"Accounts.ALocalUserIsTheFirstOfTheName", false, {"web"}, "21:22", ""},
    {"Accounts.ALocalNameIsNotAskedOfGetent", false, {"root"}, "0:0", ""},
    {"Accounts.ALocalGroupIsFound", true, {"nobody"}, "99", ""},
    {"Accounts.LinesThatAreNoEntriesAreNotFound",
     false,
     {"# a comment", "cut"},
     "unknown",
     "[passwd][# a comment][passwd][cut]"},
    {"Accounts.AnyOtherUserIsAskedOfGetentHoweverItWritesTheName",
     false,
     {"ANN"},
     "51:52",
     "[passwd][ANN]"},
    {"Accounts.AnyOtherGroupIsAskedOfGetent", true, {"staff"}, "53", "[group][staff]"},
    {"Accounts.ANameThatNobodyKnowsIsUnknown", false, {"bob"}, "unknown", "[passwd][bob]"},
    {"Accounts.AGroupThatNobodyKnowsIsUnknown", true, {"ANN"}, "unknown", "[group][ANN]"},
    {"Accounts.ANameIsNoOption", false, {"-s", "--service=files"}, "unknown", "", answer_root},
    {"Accounts.AnEntryOfAnotherSystemIsNoUser", false, {"+nis"}, "unknown", ""},
    {"Accounts.ANumberIsANameAndNoId",
     false,
     {"0", "00021", " 0", "\t0", " +0", " -0", ""},
     "unknown",
     "",
     answer_root},
    {"Accounts.ANumberMayBeTheNameOfAnEntry", false, {"33"}, "41:42", "", answer_root},
    {"Accounts.ANameWithADigitIsAskedOfGetent", false, {"3com"}, "unknown", "[passwd][3com]"},
    {"Accounts.NoShellReadsTheName",
     false,
     {"$(touch seen); a b"},
     "unknown",
     "[passwd][$(touch seen); a b]"},
    {"Accounts.WithoutFilesGetentKnowsAll", false, {"ANN"}, "51:52", "[passwd][ANN]", "rm passwd"},
    {"Accounts.WithoutGetentOthersAreUnknown", false, {"ANN"}, "unknown", "", "rm getent"},
    {"Accounts.WithoutGetentOnlyLocalNamesAreKnown", false, {"web"}, "21:22", "", "rm getent"},
    {"Accounts.WhatIsNoEntryIsNoAnswer",
     false,
     {"bob"},
     "unknown",
     "[passwd][bob]",
     "sed -i '3,$d' getent; echo 'echo no such thing' >>getent"},
    {"Accounts.AFailedGetentHasNoAnswer",
     false,
     {"bob"},
     "unknown",
     "[passwd][bob]",
     "sed -i '3,$d' getent; echo 'echo bob:x:61:62::/:; exit 2' >>getent"},
};

const int registered = register_rows<Accounts>(lookups);

} // namespace

TEST_F(Accounts, AGetentThatCannotBeStartedIsLogged) {
    const test_log log(scratch.path("logs"));
    write_file("getent", "#!./missing\n");
    EXPECT_EQ(user("bob"), "unknown");
    EXPECT_EQ(log.text(), "Error: Cannot ask ./getent for passwd bob: No such file or directory\n");
}

TEST_F(Accounts, TheFirstGetentThatIsThereIsAsked) {
    std::filesystem::create_directory("missing");
    write_getent("echo bob:x:61:62::/:\n");
    std::filesystem::rename("getent", "missing/getent");
    write_getent("echo bob:x:71:72::/:\n");
    EXPECT_EQ(user("bob"), "61:62");
    EXPECT_EQ(asked_of_getent(), "[passwd][bob]");
}

TEST_F(Accounts, TheSystemKnowsRoot) {
    EXPECT_EQ(user("root", system_accounts), "0:0");
    EXPECT_EQ(user("no-such-user-here", system_accounts), "unknown");
}
