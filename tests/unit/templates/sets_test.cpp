#include "templates/sets.h"

#include "files/operations.h"
#include "support/answers_test.h"
#include "support/console_capture.h"
#include "support/world.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

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

    std::string images = std::string(64, 'x');
    std::string ask(const char *directory) {
        const heap_text templates = ask_template_sets(ini, directory, images.data(), images.size());
        return templates ? templates.get() : "(none)";
    }
};

// --- Numbering ---

TEST_F(TemplateSets, LoneSetIsTheDefault) {
    std::filesystem::create_directories("tpl/green");
    std::filesystem::create_directories("tpl/common");
    write_file("tpl/file", "");
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
            const std::string line =
                std::to_string(at + 1) + " /t/" + name + " /u/" + name + " " + name + " Set\n";
            (name == "blue" || name == "red" ? others : expected) += line;
        }
        ini_remove_all(ini, "tpl_set");
        const std::string chosen = ask("./tpl");
        EXPECT_EQ(values(D_TPL_SET), expected + others);
        EXPECT_EQ(chosen, expected.substr(2, expected.find(' ', 2) - 2));
        std::filesystem::remove_all("tpl");
    }
}

TEST_F(TemplateSets, WithoutAKnownNameTheFirstListedIsTheDefault) {
    std::filesystem::create_directories("tpl/red");
    std::filesystem::create_directories("tpl/green");
    const std::vector<std::string> listed = set_names("tpl");
    EXPECT_EQ(ask("./tpl"), "/t/" + listed[0]);
    EXPECT_EQ(values(D_TPL_SET), "1 /t/" + listed[0] + " /u/" + listed[0] + " " + listed[0] +
                                     " Set\n2 /t/" + listed[1] + " /u/" + listed[1] + " " +
                                     listed[1] + " Set\n");
}

TEST_F(TemplateSets, OfSeveralKnownNamesTheLastIsTheDefault) {
    std::filesystem::create_directories("tpl/marble");
    std::filesystem::create_directories("tpl/wml");
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
    std::filesystem::create_directories("wap/wml");
    std::filesystem::create_directories("swapped/one");
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
        std::filesystem::create_directories("src/one/deep");
        std::filesystem::create_directories("src/two");
        std::filesystem::create_directories("src/common/deep");
        std::filesystem::create_directory("dst");
        write_file("src/one/own", "own of one");
        write_file("src/one/shared", "shared of one");
        write_file("src/one/deep/file", "deep");
        write_file("src/common/shared", "shared of common");
        write_file("src/common/words.dat", "words");
        write_file("src/common/deep/file", "not copied");
        write_file("src/stray", "not copied");
        dst = scratch.path("dst");
    }

    static std::string names_below(const std::string &directory) {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
            names.push_back(entry.path().string().substr(directory.size() + 1));
        }
        std::sort(names.begin(), names.end());
        std::string lines;
        for (const std::string &name : names) {
            lines += name + "\n";
        }
        return lines;
    }

    std::string dst;
};

TEST_F(SetCopy, CommonFilesReplaceASetsOwn) {
    EXPECT_EQ(console_of([&] { EXPECT_EQ(do_template_copy("src", dst.c_str(), 0), 1); }),
              "......."); // three files of one, two common ones for each set
    EXPECT_EQ(names_below("dst"), "one\n"
                                  "one/deep\n"
                                  "one/deep/file\n"
                                  "one/own\n"
                                  "one/shared\n"
                                  "one/words.dat\n"
                                  "two\n"
                                  "two/shared\n"
                                  "two/words.dat\n");
    EXPECT_EQ(read_file("dst/one/shared"), "shared of common");
    EXPECT_EQ(read_file("dst/one/own"), "own of one");
    struct stat set {};
    ASSERT_EQ(::stat("dst/two", &set), 0);
    EXPECT_EQ(set.st_mode & 07777U, 0770U);
}

TEST_F(SetCopy, WordListCanBeLeftOut) {
    console_of([&] { EXPECT_EQ(do_template_copy("src", dst.c_str(), 1), 1); });
    EXPECT_FALSE(is_there("dst/one/words.dat"));
    EXPECT_FALSE(is_there("dst/two/words.dat"));
    EXPECT_TRUE(is_there("dst/two/shared"));
}

TEST_F(SetCopy, ExistingSetIsOverwritten) {
    std::filesystem::create_directory("dst/one");
    write_file("dst/one/own", "old");
    write_file("dst/one/more", "stays");
    console_of([&] { EXPECT_EQ(do_template_copy("src", dst.c_str(), 0), 1); });
    EXPECT_EQ(read_file("dst/one/own"), "own of one");
    EXPECT_EQ(read_file("dst/one/more"), "stays");
}

TEST_F(SetCopy, ManySetsNeedFewOpenFiles) {
    for (int number = 0; number < 80; number++) {
        std::filesystem::create_directory("src/many" + std::to_string(number));
    }
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few = {40, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    console_of([&] { EXPECT_EQ(do_template_copy("src", dst.c_str(), 0), 1); });
    ::setrlimit(RLIMIT_NOFILE, &before);
    for (int number = 0; number < 80; number++) {
        EXPECT_EQ(read_file("dst/many" + std::to_string(number) + "/words.dat"), "words");
    }
}

TEST_F(SetCopy, MissingArgumentCopiesNothing) {
    EXPECT_EQ(do_template_copy(nullptr, dst.c_str(), 0), 0);
    EXPECT_EQ(do_template_copy("src", nullptr, 0), 0);
    EXPECT_EQ(names_below("dst"), "");
}

TEST_F(SetCopy, FirstFailureEndsTheCopy) {
    std::filesystem::create_symlink("nowhere", "src/one/link");
    const std::string console =
        console_of([&] { EXPECT_EQ(do_template_copy("src", dst.c_str(), 0), 0); });
    EXPECT_NE(console.find("Error: Can't copy src/one/link: No such file or directory\n"),
              std::string::npos)
        << console;
    EXPECT_FALSE(is_there("dst/one/words.dat"));
}

TEST_F(SetCopy, DestinationWithoutRootFails) {
    EXPECT_EQ(console_of([&] { EXPECT_EQ(do_template_copy("src", "relative", 0), 0); }), "");
    EXPECT_FALSE(is_there("relative"));
}

TEST_F(SetCopy, WithoutCommonFilesTheSetsAreCopiedAllTheSame) {
    std::filesystem::remove_all("src/common");
    stream_capture report(stderr);
    console_of([&] { EXPECT_EQ(do_template_copy("src", dst.c_str(), 0), 1); });
    EXPECT_EQ(report.finish(), "Could not read directory file: No such file or directory\n");
    EXPECT_EQ(read_file("dst/one/shared"), "shared of one");
}

TEST_F(SetCopy, WordsGoNowhereForAPathFromTheRoot) {
    std::filesystem::create_directory("tpl_de");
    write_file("dst/words.dat", "words");
    EXPECT_EQ(console_of([&] { words_copy(dst.c_str(), "tpl_", "words.dat"); }), "");
    EXPECT_EQ(names_below("dst"), "words.dat\n");
    EXPECT_EQ(names_below("tpl_de"), "");
    words_copy(nullptr, "tpl_", "words.dat");
    words_copy(dst.c_str(), nullptr, "words.dat");
    words_copy(dst.c_str(), "tpl_", nullptr);
}

} // namespace
