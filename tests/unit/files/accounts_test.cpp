#include "files/accounts.h"

#include "support/scratch_test.h"
#include "unit/account_files.h"

namespace {

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
};

} // namespace

TEST_F(Accounts, ALocalUserIsTheFirstOfTheName) {
    EXPECT_EQ(user("web"), "21:22");
    EXPECT_EQ(user("root"), "0:0");
}

TEST_F(Accounts, ALocalNameIsNotAskedOfGetent) {
    user("web");
    in_group("nobody");
    EXPECT_EQ(asked_of_getent(), "");
}

TEST_F(Accounts, ALocalGroupIsFound) {
    EXPECT_EQ(in_group("nobody"), "99");
}

TEST_F(Accounts, LinesThatAreNoEntriesAreNotFound) {
    EXPECT_EQ(user("# a comment"), "unknown");
    EXPECT_EQ(user("cut"), "unknown");
}

TEST_F(Accounts, AnyOtherUserIsAskedOfGetentHoweverItWritesTheName) {
    EXPECT_EQ(user("ANN"), "51:52");
    EXPECT_EQ(asked_of_getent(), "[passwd][ANN]");
}

TEST_F(Accounts, AnyOtherGroupIsAskedOfGetent) {
    EXPECT_EQ(in_group("staff"), "53");
    EXPECT_EQ(asked_of_getent(), "[group][staff]");
}

TEST_F(Accounts, ANameThatNobodyKnowsIsUnknown) {
    EXPECT_EQ(user("bob"), "unknown");
    EXPECT_EQ(in_group("ANN"), "unknown");
}

TEST_F(Accounts, ANameIsNoOption) {
    write_getent("echo root:x:0:0::/:\n");
    EXPECT_EQ(user("-s"), "unknown");
    EXPECT_EQ(user("--service=files"), "unknown");
    EXPECT_EQ(asked_of_getent(), "");
}

TEST_F(Accounts, AnEntryOfAnotherSystemIsNoUser) {
    EXPECT_EQ(user("+nis"), "unknown");
    EXPECT_EQ(asked_of_getent(), "");
}

TEST_F(Accounts, ANumberIsANameAndNoId) {
    write_getent("echo root:x:0:0::/:\n");
    for (const char *number : {"0", "00021", " 0", "\t0", " +0", " -0", ""}) {
        EXPECT_EQ(user(number), "unknown") << number;
    }
    EXPECT_EQ(asked_of_getent(), "");
    EXPECT_EQ(user("33"), "41:42");
}

TEST_F(Accounts, ANameWithADigitIsAskedOfGetent) {
    user("3com");
    EXPECT_EQ(asked_of_getent(), "[passwd][3com]");
}

TEST_F(Accounts, NoShellReadsTheName) {
    user("$(touch seen); a b");
    EXPECT_EQ(asked_of_getent(), "[passwd][$(touch seen); a b]");
    EXPECT_FALSE(std::filesystem::exists("seen"));
}

TEST_F(Accounts, WithoutFilesGetentKnowsAll) {
    std::filesystem::remove("passwd");
    EXPECT_EQ(user("ANN"), "51:52");
}

TEST_F(Accounts, WithoutGetentOnlyLocalNamesAreKnown) {
    std::filesystem::remove("getent");
    EXPECT_EQ(user("ANN"), "unknown");
    EXPECT_EQ(user("web"), "21:22");
}

TEST_F(Accounts, WhatIsNoEntryIsNoAnswer) {
    write_getent("echo no such thing\n");
    EXPECT_EQ(user("bob"), "unknown");
}

TEST_F(Accounts, AFailedGetentHasNoAnswer) {
    write_getent("echo bob:x:61:62::/:\nexit 2\n");
    EXPECT_EQ(user("bob"), "unknown");
}

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
