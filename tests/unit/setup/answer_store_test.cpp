#include "setup/answer_store.h"

#include "support/answers_test.h"

#include <gtest/gtest.h>

namespace {

class AnswerStore : public answers_test {};

TEST_F(AnswerStore, PositionsAndNamesAgree) {
    const std::vector<const char *> names = {
        "install_dir",      "wap_templates", "wap_vlimg",   "templates",
        "workarea",         "vlimg_dir",     "cgi_name",    "cgi_path",
        "version",          "prod_name",     "op_system",   "manual",
        "bulletin_path",    "wml",           "del_users",   "replace_tmplts",
        "replace_ini",      "action",        "wml_name",    "tpl_set",
        "wap_tpl_set",      "pophost",       "imaphost",    "smtphost",
        "domain",           "vlimg",         "set",         "body_add",
        "allow_host_login", "bramble",       "admin_email", "log_lvl"};
    ASSERT_EQ(names.size(), static_cast<std::size_t>(D_LAST));
    for (int position = 0; position < D_LAST; position++) {
        EXPECT_STREQ(ans_values[position].name, names[static_cast<std::size_t>(position)]);
        EXPECT_EQ(ans_values[position].password, 0) << names[static_cast<std::size_t>(position)];
    }
    EXPECT_EQ(ans_values[D_LAST].name, nullptr);
    EXPECT_EQ(D_TEMPLATES, 3);
    EXPECT_EQ(D_WORKAREA, 4);
}

TEST_F(AnswerStore, FiveNamesHaveManyValues) {
    for (int position = 0; position < D_LAST; position++) {
        const bool is_multi = position == D_TPL_SET || position == D_WML_TPL_SET ||
                              position == D_SET || position == D_BODY_ADD ||
                              position == D_ALLOW_HOST;
        EXPECT_EQ(ans_values[position].multi_lines != 0, is_multi) << ans_values[position].name;
    }
}

TEST_F(AnswerStore, NothingIsAnsweredAtFirst) {
    EXPECT_EQ(ini_number(ini), 0);
}

TEST_F(AnswerStore, WorkAreaAndInstallDirectoryReadAsTheTemplatesDirectory) {
    answer(D_TEMPLATES, "/t");
    EXPECT_EQ(answer(D_WORKAREA), "/t");
    EXPECT_EQ(answer(D_INSTALL_DIR), "/t");
    answer(D_WORKAREA, "/w");
    answer(D_INSTALL_DIR, "/i");
    EXPECT_EQ(answer(D_WORKAREA), "/w");
    EXPECT_EQ(answer(D_INSTALL_DIR), "/i");
}

TEST_F(AnswerStore, PlaceholdersShowTheFormOfAnAnswer) {
    add_placeholder_hosts(ini);
    EXPECT_EQ(answer(D_DOMAIN), "example.com");
    EXPECT_EQ(answer(D_POPHOST), "pop.example.com");
    EXPECT_EQ(answer(D_IMAPHOST), "imap.example.com");
    EXPECT_EQ(answer(D_SMTPHOST), "smtp.example.com");
}

TEST_F(AnswerStore, OnlyTheStoredYesIsTrue) {
    EXPECT_FALSE(is_true_answer(ini, D_WML));
    for (const char *value : {"FALSE", "NO", "YES", "true", "TRUE "}) {
        answer(D_WML, value);
        EXPECT_FALSE(is_true_answer(ini, D_WML)) << value;
    }
    answer(D_WML, "TRUE");
    EXPECT_TRUE(is_true_answer(ini, D_WML));
}

} // namespace
