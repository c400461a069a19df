#include "setup/answer_loading.h"

#include "core/log.h"
#include "support/answers_test.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;

constexpr uid_t other_user = 65534;

// A directory of another user's that holds a settings file of theirs. Only root can make one.
class LoadAnswers : public answers_test {
  protected:
    void SetUp() override {
        std::filesystem::create_directory("theirs");
        std::filesystem::create_directory("ours");
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root can make files of another user";
        }
        give("theirs");
    }

    static void give(const std::string &path) {
        ASSERT_EQ(::chown(path.c_str(), other_user, other_user), 0);
    }

    void load_theirs(const std::string &text) {
        write_file("theirs/gxsetup.dat", text);
        give("theirs/gxsetup.dat");
        EXPECT_NE(load_answers(ini, "theirs/gxsetup.dat"), 0);
    }

    void load_ours(const std::string &text) {
        write_file("ours/gxsetup.dat", text);
        EXPECT_NE(load_answers(ini, "ours/gxsetup.dat"), 0);
    }

    // The stored value, none that it borrows.
    [[nodiscard]] std::string stored(answer_position position) {
        return ini_value2(ini, ans_values[position].name, 0);
    }

    static std::string absolute(const std::string &name) {
        return std::filesystem::current_path() / name;
    }
};

} // namespace

TEST_F(LoadAnswers, AnotherUsersProductCountsOnlyIfThereIsOne) {
    load_theirs("prod_name PLOVER\n");
    EXPECT_EQ(stored(D_PROD_NAME), "PLOVER");
    load_theirs("prod_name ../evil\n");
    EXPECT_EQ(stored(D_PROD_NAME), "PLOVER");
}

TEST_F(LoadAnswers, AnotherUsersProgramCountsOnlyAsABareName) {
    set_answer(ini, D_CGI_NAME, "kestrel");
    for (const char *name :
         {"../../tmp/evil", "*", "k?", "k[a]", "a,b", "!k", "k\\", "k\x1b[8m", "a\x80"}) {
        load_theirs(std::string("cgi_name ") + name + "\nwml_name " + name + "\n");
        EXPECT_EQ(stored(D_CGI_NAME), "kestrel") << name;
        EXPECT_EQ(stored(D_WML_NAME), "") << name;
    }
    load_theirs("cgi_name mail-2.old\n");
    EXPECT_EQ(stored(D_CGI_NAME), "mail-2.old");
}

TEST_F(LoadAnswers, AHiddenDirectoryCountsOnlyIfItBelongsToTheFilesOwner) {
    std::filesystem::create_directory("theirs/templates");
    give("theirs/templates");
    const std::string theirs = absolute("theirs/templates");
    load_theirs("install_dir " + theirs + "\nmanual " + theirs + "/not/yet/there\n");
    EXPECT_EQ(stored(D_INSTALL_DIR), theirs);
    EXPECT_EQ(stored(D_MANUAL), theirs + "/not/yet/there");
    load_theirs("install_dir " + absolute("ours") + "\nbulletin_path /etc\nmanual relative\n");
    EXPECT_EQ(stored(D_INSTALL_DIR), theirs);
    EXPECT_EQ(stored(D_MANUAL), theirs + "/not/yet/there");
    EXPECT_EQ(stored(D_BULLETIN), "");
}

TEST_F(LoadAnswers, AHiddenDirectoryBehindAnotherUsersLinkDoesNotCount) {
    std::filesystem::create_directory_symlink("/etc", "theirs/link");
    ASSERT_EQ(::lchown("theirs/link", other_user, other_user), 0);
    load_theirs("install_dir " + absolute("theirs/link") + "\n");
    EXPECT_EQ(stored(D_INSTALL_DIR), "");
}

TEST_F(LoadAnswers, AFileOfOursInAnotherUsersDirectoryCountsAsThatUsersWord) {
    write_file("theirs/gxsetup.dat", "cgi_name a/b\ninstall_dir " + absolute("theirs") + "\n");
    EXPECT_NE(load_answers(ini, "theirs/gxsetup.dat"), 0);
    EXPECT_EQ(stored(D_CGI_NAME), "");
    EXPECT_EQ(stored(D_INSTALL_DIR), absolute("theirs"));
}

TEST_F(LoadAnswers, AFileInADirectoryOfOursThatOthersMayWriteIsWeighed) {
    write_file("ours/kestrel.ini", "cgi_name a/b\n");
    ASSERT_EQ(::chmod("ours/kestrel.ini", 0666), 0);
    EXPECT_NE(load_answers(ini, "ours/kestrel.ini"), 0);
    EXPECT_EQ(stored(D_CGI_NAME), "");
}

TEST_F(LoadAnswers, OurOwnFileMaySayAnything) {
    load_ours("prod_name harrier\ncgi_name a/b\ninstall_dir nowhere\n");
    EXPECT_EQ(stored(D_PROD_NAME), "harrier");
    EXPECT_EQ(stored(D_CGI_NAME), "a/b");
    EXPECT_EQ(stored(D_INSTALL_DIR), "nowhere");
}

TEST_F(LoadAnswers, TheLogSaysWhatIsNotTakenAndWhy) {
    const test_log log("log");
    set_loglvl(LOG_INFO);
    load_theirs("cgi_name a/b\n");
    EXPECT_THAT(log.text(),
                HasSubstr("Info:  cgi_name \"a/b\" of theirs/gxsetup.dat is not taken: it is no "
                          "bare file name\n"));
}

TEST_F(LoadAnswers, WhatOthersMayNotReadOfAFileIsKnown) {
    write_file("ours/kestrel.ini", "domain d.test\n");
    ASSERT_EQ(::chmod("ours/kestrel.ini", 0640), 0);
    EXPECT_NE(load_answers(ini, "ours/kestrel.ini"), 0);
    EXPECT_EQ(saved_answers_mode() & 0007U, 0U);
}

TEST(IsBareName, RefusesWhatAPatternReadsAsMoreThanItself) {
    for (const char *name : {"kestrel", "mail 2", "a.b-c_d", "x"}) {
        EXPECT_TRUE(is_bare_name(name)) << name;
    }
    for (const char *name :
         {"", " a", "a/b", "a*", "a?", "[a", "a]", "a\\", "!a", "a,b", "a\n", "\x7f"}) {
        EXPECT_FALSE(is_bare_name(name)) << name;
    }
}
