#include "files/accounts.h"

#include "support/rows.h"
#include "support/scratch_test.h"
#include "support/world.h"
#include "unit/account_files.h"

namespace {

// Looks up a user or a group after commands of the shell.
struct lookup {
    const char *name;
    std::string (*find)(const char *name);
    const char *searched;
    const char *found; // "USER:GROUP" or "GROUP" in numbers, or "unknown"
    const char *asked; // of getent
    const char *preparation = "";
};

// "USER:GROUP" in numbers.
std::string user_of(const char *name, const account_sources &sources) {
    const passwd *found = find_user(name, sources);
    return found == nullptr ? "unknown"
                            : std::to_string(found->pw_uid) + ":" + std::to_string(found->pw_gid);
}

std::string user(const char *name) {
    return user_of(name, test_accounts);
}

std::string in_group(const char *name) {
    const group *found = find_group(name, test_accounts);
    return found == nullptr ? "unknown" : std::to_string(found->gr_gid);
}

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

    static void check(const lookup &row) {
        shell(row.preparation);
        EXPECT_EQ(row.find(row.searched), row.found);
        EXPECT_EQ(asked_of_getent(), row.asked);
        EXPECT_FALSE(is_there("seen"));
    }
};

// Write a getent anew that answers whatever it is asked.
constexpr const char *with_root = "sed -i '3,$d' getent; echo 'echo root:x:0:0::/:' >>getent";
constexpr const char *with_noise = "sed -i '3,$d' getent; echo 'echo no such thing' >>getent";
constexpr const char *with_failure =
    "sed -i '3,$d' getent; echo 'echo bob:x:61:62::/:; exit 2' >>getent";

const std::vector<lookup> lookups = {
    {"Accounts.ALocalUserIsTheFirstOfTheName", user, "web", "21:22", ""},
    {"Accounts.ALocalNameIsNotAskedOfGetent", user, "root", "0:0", "", with_failure},
    {"Accounts.ALocalGroupIsFound", in_group, "nobody", "99", ""},
    {"Accounts.LinesThatAreNoEntriesAreNotFound", user, "cut", "unknown", "[passwd][cut]"},
    {"Accounts.ACommentIsNotFound", user, "# a comment", "unknown", "[passwd][# a comment]"},
    {"Accounts.AnyOtherUserIsAskedOfGetentHoweverItWritesTheName", user, "ANN", "51:52",
     "[passwd][ANN]"},
    {"Accounts.AnyOtherGroupIsAskedOfGetent", in_group, "staff", "53", "[group][staff]"},
    {"Accounts.ANameThatNobodyKnowsIsUnknown", user, "bob", "unknown", "[passwd][bob]"},
    {"Accounts.AGroupThatNobodyKnowsIsUnknown", in_group, "ANN", "unknown", "[group][ANN]"},
    {"Accounts.ANameIsNoOption", user, "-s", "unknown", "", with_root},
    {"Accounts.ANameIsNoLongOption", user, "--service=files", "unknown", "", with_root},
    {"Accounts.AnEntryOfAnotherSystemIsNoUser", user, "+nis", "unknown", ""},
    {"Accounts.ANumberIsANameAndNoId", user, "0", "unknown", "", with_root},
    {"Accounts.ANumberWithZerosIsNoId", user, "00021", "unknown", "", with_root},
    {"Accounts.ANumberBehindABlankIsNoId", user, " 0", "unknown", "", with_root},
    {"Accounts.ANumberBehindATabIsNoId", user, "\t0", "unknown", "", with_root},
    {"Accounts.ANumberBehindAPlusIsNoId", user, " +0", "unknown", "", with_root},
    {"Accounts.ANumberBehindAMinusIsNoId", user, " -0", "unknown", "", with_root},
    {"Accounts.NoNameIsNoUser", user, "", "unknown", "", with_root},
    {"Accounts.ANumberMayBeTheNameOfAnEntry", user, "33", "41:42", "", with_root},
    {"Accounts.ANameWithADigitIsAskedOfGetent", user, "3com", "unknown", "[passwd][3com]"},
    {"Accounts.NoShellReadsTheName", user, "$(touch seen); a b", "unknown",
     "[passwd][$(touch seen); a b]"},
    {"Accounts.WithoutFilesGetentKnowsAll", user, "ANN", "51:52", "[passwd][ANN]", "rm passwd"},
    {"Accounts.WithoutGetentOthersAreUnknown", user, "ANN", "unknown", "", "rm getent"},
    {"Accounts.WithoutGetentOnlyLocalNamesAreKnown", user, "web", "21:22", "", "rm getent"},
    {"Accounts.WhatIsNoEntryIsNoAnswer", user, "bob", "unknown", "[passwd][bob]", with_noise},
    {"Accounts.AFailedGetentHasNoAnswer", user, "bob", "unknown", "[passwd][bob]", with_failure},
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
    EXPECT_EQ(user_of("root", system_accounts), "0:0");
    EXPECT_EQ(user_of("no-such-user-here", system_accounts), "unknown");
}
