#include "setup/owner_choice.h"

#include "unit/account_files.h"
#include "unit/files/file_world.h"

#include <cstdlib>

namespace {

class GetUid : public FileWorld {
  protected:
    // What is shown while the owner is chosen, which must be "USER:GROUP" in numbers.
    static std::string choice(const std::string &owner) {
        const std::string text = console_of([] { choose_owner(test_accounts); });
        EXPECT_EQ(formatted("%u:%u", gx_user, gx_group), owner);
        return text;
    }
};

constexpr const char *username_prompt =
    "\nWhat username shall I use for the files and directories I create\n";
constexpr const char *nobody = "nobody:x:11:12::/:\n";
constexpr const char *www = "www:x:21:22::/:\n";

} // namespace

TEST(ChosenOwner, IsRootUntilOneIsChosen) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a new process: other tests set the owner
    EXPECT_EXIT(std::exit(gx_user == 0 && gx_group == 0 ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(GetUid, TakesNobodyWithoutAQuestion) {
    write_accounts(nobody, "");
    EXPECT_EQ(choice("11:12"), "");
}

TEST_F(GetUid, TheGroupNobodyWinsOverTheUsersOwn) {
    write_accounts(std::string(nobody) + www, "nobody:x:99:\n");
    EXPECT_EQ(choice("11:99"), "");
}

TEST_F(GetUid, AsksUntilTheSystemKnowsTheUser) {
    write_accounts(www, "");
    feed_console("wwww\n\nwww\n");
    EXPECT_EQ(choice("21:22"),
              std::string("\nUser nobody is not in the passwd file. \n") + username_prompt +
                  "[nobody]? \nUser wwww is not in the passwd file. \n" + username_prompt +
                  "[wwww]? \nUser wwww is not in the passwd file. \n" + username_prompt +
                  "[wwww]? ");
}

TEST_F(GetUid, TheGroupNobodyWinsForAChosenUserToo) {
    write_accounts(www, "nobody:x:99:\n");
    feed_console("www\n");
    choice("21:99");
}

TEST_F(GetUid, TakesUsersThatAreInNoFile) {
    write_accounts("", "");
    write_getent("[ \"$1\" = passwd ] && echo nobody:x:61:62:::\n");
    EXPECT_EQ(choice("61:62"), "");
    EXPECT_EQ(asked_of_getent(), "[passwd][nobody][group][nobody]");
}

TEST_F(GetUid, BearsANameOf511Characters) {
    const std::string name(511, 'u');
    write_accounts(name + ":x:31:32::/:\n", "");
    feed_console(name + "\n");
    choice("31:32");
}

TEST_F(GetUid, KnowsTheUsersOfTheSystem) {
    feed_console("root\n");
    EXPECT_EQ(get_uid(), 1);
}
