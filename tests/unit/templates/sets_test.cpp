#include "templates/sets.h"

#include "files/operations.h"
#include "support/answers_test.h"
#include "support/console_capture.h"
#include "support/expected.h"
#include "support/tree.h"
#include "unit/process_limit.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

class TemplateSets : public answers_test {
  protected:
    TemplateSets() {
        answer(D_TEMPLATES, "/t");
        answer(D_VLIMG, "/u");
        gx_user = ::geteuid();
        gx_group = ::getegid();
    }

    // Makes sets of which "marble" is the last in the listing and has the number `last`, whatever
    // order the file system lists them in: more than enough are made, and those behind it or too
    // far before it removed again. The names of the others are varied, and whether it is made first
    // or last.
    static void list_marble_last(std::size_t last) {
        for (int attempt = 0; set_number("tpl", "marble") != std::to_string(last); attempt++) {
            std::filesystem::remove_all("tpl");
            std::filesystem::create_directories(attempt % 2 == 0 ? "tpl/marble" : "tpl");
            for (std::size_t number = 1; number < 3 * last; number++) {
                std::filesystem::create_directory("tpl/set" + std::to_string(attempt) + "_" +
                                                  std::to_string(number));
            }
            std::filesystem::create_directories("tpl/marble");
            const std::vector<std::string> listed = set_names("tpl");
            const auto marble = std::find(listed.begin(), listed.end(), "marble");
            for (auto name = listed.begin(); name != listed.end(); name++) {
                if (name > marble || marble - name >= static_cast<std::ptrdiff_t>(last)) {
                    std::filesystem::remove("tpl/" + *name);
                }
            }
        }
    }

    // The line of the set that is listed behind so many.
    static std::string set_line(std::size_t before, const std::string &name) {
        return std::to_string(before + 1) + " /t/" + name + " /u/" + name + " " + name + " Set\n";
    }

    std::string images = std::string(64, 'x');
    std::string ask(const char *directory) {
        const heap_text templates = ask_template_sets(ini, directory, images.data(), images.size());
        return templates ? templates.get() : "(none)";
    }
};

// --- Numbering ---

TEST_F(TemplateSets, LoneSetIsTheDefault) {
    shell("mkdir -p tpl/green tpl/common; touch tpl/file");
    EXPECT_EQ(ask("./tpl"), "/t/green");
    EXPECT_STREQ(images.c_str(), "/u/green");
    EXPECT_EQ(values(D_TPL_SET), "1 /t/green /u/green green Set\n");
    EXPECT_EQ(values(D_WML_TPL_SET), "");
}

TEST_F(TemplateSets, MarbleIsStoredFirstWhereverItIsListed) {
    for (const std::vector<std::string> &order :
         {std::vector<std::string>{"marble", "blue"}, std::vector<std::string>{"blue", "marble"},
          std::vector<std::string>{"blue", "MARBLE", "red"}}) {
        for (const std::string &name : order) {
            std::filesystem::create_directories("tpl/" + name);
        }
        const std::vector<std::string> listed = set_names("tpl");
        std::string expected;
        std::string others;
        for (std::size_t at = 0; at < listed.size(); at++) {
            const std::string &name = listed[at];
            (name == "blue" || name == "red" ? others : expected) += set_line(at, name);
        }
        ini_remove_all(ini, "tpl_set");
        const std::string chosen = ask("./tpl");
        EXPECT_EQ(values(D_TPL_SET), expected + others);
        EXPECT_EQ(chosen, expected.substr(2, expected.find(' ', 2) - 2));
        std::filesystem::remove_all("tpl");
    }
}

TEST_F(TemplateSets, WithoutAKnownNameTheFirstListedIsTheDefault) {
    shell("mkdir -p tpl/red tpl/green");
    const std::vector<std::string> listed = set_names("tpl");
    EXPECT_EQ(ask("./tpl"), "/t/" + listed[0]);
    EXPECT_EQ(values(D_TPL_SET), set_line(0, listed[0]) + set_line(1, listed[1]));
}

TEST_F(TemplateSets, OfSeveralKnownNamesTheLastIsTheDefault) {
    shell("mkdir -p tpl/marble tpl/wml");
    const std::vector<std::string> listed = set_names("tpl");
    EXPECT_EQ(ask("./tpl"), "/t/" + listed[1]);
}

TEST_F(TemplateSets, OnlyTheFirstCharacterOfTheNumberIsCompared) {
    // For set 10 the character behind '9' is looked for, and no line begins with that.
    std::filesystem::create_directory("tpl");
    list_marble_last(10);
    images = "untouched";
    EXPECT_EQ(ask("./tpl"), "(none)");
    EXPECT_EQ(images, "untouched");
    const std::string lines = values(D_TPL_SET);
    EXPECT_TRUE(lines.starts_with("1 /t/set")) << lines;
    EXPECT_TRUE(lines.ends_with("\n10 /t/marble /u/marble marble Set\n")) << lines;
}

TEST_F(TemplateSets, OfAHugeNumberNoFirstCharacterIsLeft) {
    // What is looked for then is no character at all, and none of the digits.
    std::filesystem::create_directory("tpl");
    list_marble_last(257);
    EXPECT_EQ(ask("./tpl"), "(none)");
    EXPECT_TRUE(values(D_TPL_SET).starts_with("1 /t/set")) << values(D_TPL_SET);
}

TEST_F(TemplateSets, EarlierLinesAreSearchedToo) {
    std::filesystem::create_directories("tpl/marble");
    answer(D_TPL_SET, "1 /old/set /url/old old Set");
    EXPECT_EQ(ask("./tpl"), "/old/set");
    EXPECT_STREQ(images.c_str(), "/url/old");
    EXPECT_EQ(values(D_TPL_SET), "1 /old/set /url/old old Set\n"
                                 "1 /t/marble /u/marble marble Set\n");
}

TEST_F(TemplateSets, PathThatHoldsWapFillsTheOtherAnswer) {
    shell("mkdir -p wap/wml swapped/one");
    answer(D_TPL_SET, "7 kept");
    EXPECT_EQ(ask("./wap"), "/t/wml");
    EXPECT_EQ(values(D_WML_TPL_SET), "1 /t/wml /u/wml wml Set\n");
    EXPECT_EQ(values(D_TPL_SET), "7 kept\n");
    ini_remove_all(ini, "wap_tpl_set");
    EXPECT_EQ(ask("./swapped"), "/t/one");
    EXPECT_EQ(values(D_WML_TPL_SET), "1 /t/one /u/one one Set\n");
}

TEST_F(TemplateSets, WithoutSetsThereIsNoDefaultAndTheUrlStays) {
    std::filesystem::create_directories("tpl/common");
    images = "untouched";
    EXPECT_EQ(ask("./tpl"), "(none)");
    EXPECT_EQ(images, "untouched");
    EXPECT_EQ(answer(D_INSTALL_DIR), "/t");
}

TEST_F(TemplateSets, InstallDirectoryBecomesTheTemplatesDirectory) {
    std::filesystem::create_directories("tpl/marble");
    answer(D_INSTALL_DIR, "/elsewhere");
    ask("./tpl");
    EXPECT_EQ(answer(D_INSTALL_DIR), "/t");
}

TEST_F(TemplateSets, UrlIsCutAtTheBuffersEnd) {
    std::filesystem::create_directories("tpl/marble");
    images = std::string(6, 'x') + "after";
    const heap_text templates = ask_template_sets(ini, "./tpl", images.data(), 6);
    EXPECT_EQ(images, std::string("/u/ma\0after", 11));
    EXPECT_STREQ(ask_template_sets(ini, "./tpl", nullptr, 0).get(), "/t/marble");
}

TEST_F(TemplateSets, ListTakesEveryValueOutOfTheStore) {
    answer(D_TPL_SET, "one");
    answer(D_WML, "kept");
    answer(D_TPL_SET, "two");
    LINK_LIST list;
    EXPECT_EQ(tpl_list(&list, ini, "tpl_set"), &list);
    list_start(&list);
    EXPECT_STREQ(static_cast<const char *>(list_get(&list)), "one");
    EXPECT_STREQ(static_cast<const char *>(list_get(&list)), "two");
    EXPECT_EQ(list_get(&list), nullptr);
    EXPECT_EQ(values(D_TPL_SET), "");
    EXPECT_EQ(answer(D_WML), "kept");
    list_clear_dealloc(&list);
}

// --- Copying ---

class SetCopy : public TemplateSets {
  protected:
    SetCopy() {
        shell("umask 022; mkdir -p src/one/deep src/two src/common/deep dst\n"
              "printf 'own of one' >src/one/own; printf 'shared of one' >src/one/shared\n"
              "printf deep >src/one/deep/file; printf 'shared of common' >src/common/shared\n"
              "printf words >src/common/words.dat; touch src/common/deep/left src/left");
    }

    // What the copy shows; its result must be `result`.
    static std::string copied(int result, const std::string &to, int skip_words = 0) {
        return console_of(
            [&] { EXPECT_EQ(do_template_copy("src", to.c_str(), skip_words), result); });
    }

    const std::string dst = scratch.path("dst");
};

TEST_F(SetCopy, CommonFilesReplaceASetsOwn) {
    EXPECT_EQ(copied(1, dst), "......."); // three files of one, two common ones for each set
    expect_kept("tree", tree_of("dst"));
}

TEST_F(SetCopy, WordListCanBeLeftOut) {
    copied(1, dst, 1);
    EXPECT_FALSE(is_there("dst/one/words.dat"));
    EXPECT_EQ(listed_names("dst/two"), std::vector<std::string>{"shared"});
}

TEST_F(SetCopy, ExistingSetIsOverwritten) {
    shell("mkdir dst/one; echo old >dst/one/own; printf stays >dst/one/more");
    copied(1, dst);
    EXPECT_EQ(read_file("dst/one/own"), "own of one");
    EXPECT_EQ(read_file("dst/one/more"), "stays");
}

TEST_F(SetCopy, ManySetsNeedFewOpenFiles) {
    for (int number = 0; number < 80; number++) {
        std::filesystem::create_directory("src/many" + std::to_string(number));
    }
    {
        const process_limit few(RLIMIT_NOFILE, 40);
        copied(1, dst);
    }
    for (int number = 0; number < 80; number++) {
        EXPECT_EQ(read_file("dst/many" + std::to_string(number) + "/words.dat"), "words");
    }
}

TEST_F(SetCopy, MissingArgumentCopiesNothing) {
    EXPECT_EQ(do_template_copy(nullptr, dst.c_str(), 0), 0);
    EXPECT_EQ(do_template_copy("src", nullptr, 0), 0);
    EXPECT_EQ(tree_of("dst"), "");
}

TEST_F(SetCopy, FirstFailureEndsTheCopy) {
    std::filesystem::create_symlink("nowhere", "src/one/link");
    EXPECT_THAT(copied(0, dst),
                HasSubstr("Error: Can't copy src/one/link: No such file or directory\n"));
    EXPECT_FALSE(is_there("dst/one/words.dat"));
}

TEST_F(SetCopy, DestinationWithoutRootFails) {
    EXPECT_EQ(copied(0, "relative"), "");
    EXPECT_FALSE(is_there("relative"));
}

TEST_F(SetCopy, WithoutCommonFilesTheSetsAreCopiedAllTheSame) {
    std::filesystem::remove_all("src/common");
    stream_capture report(stderr);
    copied(1, dst);
    EXPECT_EQ(report.finish(), "Could not read directory file: No such file or directory\n");
    EXPECT_EQ(read_file("dst/one/shared"), "shared of one");
}

TEST_F(SetCopy, WordsGoNowhereForAPathFromTheRoot) {
    shell("mkdir tpl_de; touch dst/words.dat");
    const test_log log(".");
    set_loglvl(LOG_DEBUG);
    EXPECT_EQ(console_of([&] { words_copy(dst.c_str(), "tpl_", "words.dat"); }), "");
    EXPECT_EQ(listed_names("dst"), std::vector<std::string>{"words.dat"});
    EXPECT_EQ(tree_of("tpl_de"), "");
    words_copy(nullptr, "tpl_", "words.dat");
    words_copy(dst.c_str(), nullptr, "words.dat");
    words_copy(dst.c_str(), "tpl_", nullptr);
    EXPECT_EQ(log.text(), "Debug: Wild finding [" + dst + "/*]\n");
}

} // namespace
