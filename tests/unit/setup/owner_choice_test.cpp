#include "setup/owner_choice.h"

#include "unit/user_database.h"

#include "unit/files/file_world.h"

namespace {

using GetUid = FileWorld;

constexpr const char *username_prompt =
    "\nWhat username shall I use for the files and directories I create\n";

} // namespace

TEST_F(GetUid, TakesNobodyWithoutAQuestion) {
    const user_database users({{"nobody", {11, 12}}}, {});
    EXPECT_EQ(shown(1, get_uid), "");
    EXPECT_EQ(gx_user, 11U);
    EXPECT_EQ(gx_group, 12U);
}

TEST_F(GetUid, TheGroupNobodyWinsOverTheUsersOwn) {
    const user_database users({{"nobody", {11, 12}}, {"www", {21, 22}}}, {{"nobody", 99}});
    EXPECT_EQ(get_uid(), 1);
    EXPECT_EQ(gx_user, 11U);
    EXPECT_EQ(gx_group, 99U);
}

TEST_F(GetUid, AsksUntilTheSystemKnowsTheUser) {
    const user_database users({{"www", {21, 22}}}, {});
    feed_console("wwww\n\nwww\n");
    EXPECT_EQ(shown(1, get_uid),
              std::string("\nUser nobody is not in the passwd file. \n") + username_prompt +
                  "[nobody]? \nUser wwww is not in the passwd file. \n" + username_prompt +
                  "[wwww]? \nUser wwww is not in the passwd file. \n" + username_prompt +
                  "[wwww]? ");
    EXPECT_EQ(gx_user, 21U);
    EXPECT_EQ(gx_group, 22U);
}

TEST_F(GetUid, TheGroupNobodyWinsForAChosenUserToo) {
    const user_database users({{"www", {21, 22}}}, {{"nobody", 99}});
    feed_console("www\n");
    console_of([] { get_uid(); });
    EXPECT_EQ(gx_user, 21U);
    EXPECT_EQ(gx_group, 99U);
}

TEST_F(GetUid, BearsANameOf511Characters) {
    const std::string name(511, 'u');
    const user_database users({{name, {31, 32}}}, {});
    feed_console(name + "\n");
    console_of([] { get_uid(); });
    EXPECT_EQ(gx_user, 31U);
}
