#include "customise/look.h"

#include "files/operations.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"

#include <gtest/gtest.h>

namespace {

// A store whose images directory (the value `version`) is "images".
class Look : public scratch_test {
  protected:
    Look() {
        std::filesystem::create_directory("images");
        // Copies are given to the owner; the one who runs the test may always keep them.
        gx_user = ::geteuid();
        gx_group = ::getegid();
    }

    custom_store store{{"version", "images"}, {"vlimg_dir", "/not/this"}};
};

constexpr const char *background_question =
    "\nPlease enter the full path to the file you want as a background\n"
    "(this image will be copied to the images directory)\n";
constexpr const char *logo_question =
    "\nPlease enter the full path to the file you want as a logo\n"
    "(this image will be copied to the images directory)\n";

TEST_F(Look, BackgroundWithNothingStoredOffersTheDefaultFile) {
    write_file("images/ksback.jpg", "a picture");

    EXPECT_EQ(console_of("\n", [&] { EXPECT_EQ(do_background(store.get()), 1); }),
              background_question + std::string("[images/ksback.jpg]? "));

    EXPECT_EQ(values_of(store.get(), "set"), texts{"background ksback.jpg"});
    EXPECT_EQ(read_file("images/ksback.jpg"), "a picture");
}

TEST_F(Look, LogoWithNothingStoredOffersTheDefaultFile) {
    write_file("images/kestrel.gif", "a picture");

    EXPECT_EQ(console_of("\n", [&] { EXPECT_EQ(do_logo(store.get()), 1); }),
              logo_question + std::string("[images/kestrel.gif]? "));

    EXPECT_EQ(values_of(store.get(), "set"), texts{"logo kestrel.gif"});
}

TEST_F(Look, CopiesTheFileAndRecordsItsName) {
    custom_store stored{{"version", "images"},
                        {"set", "background old.jpg"},
                        {"set", "scrollmessage x"},
                        {"set", "logo old.gif"}};
    const std::string file = scratch.path("new picture.gif");
    write_file(file, "a picture");

    EXPECT_EQ(console_of(file + "\n", [&] { EXPECT_EQ(do_logo(stored.get()), 1); }),
              logo_question + std::string("[images/old.gif]? ."));

    EXPECT_EQ(read_file("images/new picture.gif"), "a picture");
    EXPECT_EQ(values_of(stored.get(), "set"),
              (texts{"background old.jpg", "scrollmessage x", "logo new picture.gif"}));
}

TEST_F(Look, ReplacesAnImageOfTheSameName) {
    const std::string file = scratch.path("a.gif");
    write_file(file, "new");
    write_file("images/a.gif", "old and longer");

    console_of(file + "\n", [&] { EXPECT_EQ(do_logo(store.get()), 1); });

    EXPECT_EQ(read_file("images/a.gif"), "new");
}

TEST_F(Look, OffersTheLastWordOfTheFirstValueThatBeginsWithTheMode) {
    custom_store stored{{"version", "images"},
                        {"set", "a background no.jpg"},
                        {"set", "backgrounds a b.jpg"},
                        {"set", "background c.jpg"}};
    write_file("images/b.jpg", "a picture");

    EXPECT_EQ(console_of("\n", [&] { EXPECT_EQ(do_background(stored.get()), 1); }),
              background_question + std::string("[images/b.jpg]? "));

    EXPECT_EQ(values_of(stored.get(), "set"),
              (texts{"a background no.jpg", "backgrounds a b.jpg", "background b.jpg"}));
}

TEST_F(Look, AFileThatIsNotThereIsRefusedAndAskedForAgain) {
    const std::string file = scratch.path("a.jpg");
    write_file(file, "a picture");

    EXPECT_EQ(console_of("\n/no/such.jpg\n" + file + "\n",
                         [&] { EXPECT_EQ(do_background(store.get()), 1); }),
              background_question +
                  std::string("[images/ksback.jpg]? "
                              "Error: cannot find images/ksback.jpg\n\n") +
                  background_question +
                  "[images/ksback.jpg]? "
                  "Error: cannot find /no/such.jpg\n\n" +
                  background_question + "[images/ksback.jpg]? .");
    EXPECT_EQ(values_of(store.get(), "set"), texts{"background a.jpg"});
}

TEST_F(Look, AFailedCopyIsReportedAndTheNameRecordedAllTheSame) {
    custom_store stored{{"version", "nowhere"}};
    const std::string file = scratch.path("a.jpg");
    write_file(file, "a picture");

    EXPECT_EQ(console_of(file + "\n", [&] { EXPECT_EQ(do_background(stored.get()), 1); }),
              background_question +
                  std::string("[nowhere/ksback.jpg]? "
                              "\n-----------------------------------------------------------------"
                              "--------------\n"
                              "Error: Can't write to \"nowhere/a.jpg\": No such file or "
                              "directory\n\n"));
    EXPECT_EQ(values_of(stored.get(), "set"), texts{"background a.jpg"});
}

TEST_F(Look, WithoutAnImagesDirectoryNothingIsCopied) {
    custom_store stored{};
    std::filesystem::create_directory("pictures");

    EXPECT_EQ(console_of("pictures\n", [&] { EXPECT_EQ(do_logo(stored.get()), 1); }),
              logo_question +
                  std::string("[<NULL>/kestrel.gif]? Error: \nError creating template set "
                              "directory pictures.\n\n"));
    EXPECT_FALSE(is_there("<NULL>"));
}

constexpr const char *footer_help =
    "\n\n\n"
    "NOTE : This footer will be added to the end of every message sent.\n"
    "->Defaults are shown [thus], if no default is given a <return> will\n"
    "  insert a blank line.\n"
    "->Otherwise type [ins] to insert a blank line, [del] to remove a line,\n"
    "  type [save] to save & exit, type [remove] to remove all Email footers.\n";
constexpr const char *short_help = "[ins] = insert blank line\t: [del] = delete line\n"
                                   "[remove] = remove footers\t: [save] = save and exit.\n";
constexpr const char *no_changes = "\nDo you want to change any of your answers [NO]? ";

class Footer : public scratch_test {
  protected:
    // Edits the footer of these lines with these answers; gives what the console shows.
    std::string edit(const texts &lines, std::string_view answers) {
        for (const std::string &line : lines) {
            ini_add(store.get(), "body_add", line.c_str());
        }
        return console_of(answers, [&] { EXPECT_EQ(do_emailfoot(store.get()), 1); });
    }

    texts footer() { return values_of(store.get(), "body_add"); }

    custom_store store{{"set", "logo a.gif"}};
};

TEST_F(Footer, EnterKeepsALineAndDelDropsIt) {
    EXPECT_EQ(edit({"One", "Two", "Three"}, "\n[del]\n\n[save]\n\n"),
              footer_help +
                  std::string("\nLine 0:[One]? "
                              "\nLine 1:[Two]? "
                              "\nLine 1:[Three]? "
                              "\nLine 2:? ") +
                  no_changes);
    EXPECT_EQ(footer(), (texts{"One", "Three"}));
    EXPECT_EQ(values_of(store.get(), "set"), texts{"logo a.gif"});
}

TEST_F(Footer, TakesNewLinesAndBlankOnes) {
    EXPECT_EQ(edit({"One"}, "First\n\n-- \n[save]\n\n"), footer_help +
                                                             std::string("\nLine 0:[One]? "
                                                                         "\nLine 1:? "
                                                                         "\nLine 2:? "
                                                                         "\nLine 3:? ") +
                                                             no_changes);
    EXPECT_EQ(footer(), (texts{"First", " ", "-- "}));
}

TEST_F(Footer, SaveLeavesOutTheLinesThatWereNotReached) {
    edit({"One", "Two"}, "\n[save]\n\n");
    EXPECT_EQ(footer(), texts{"One"});
}

TEST_F(Footer, SaveAtTheFirstPromptStoresNothing) {
    EXPECT_EQ(edit({}, "[save]\n\n"), footer_help + std::string("\nLine 0:? ") + no_changes);
    EXPECT_EQ(footer(), texts{});
}

TEST_F(Footer, AnEmptyListLeavesTheFooterAsItWas) {
    edit({"One", "Two"}, "[del]\n[del]\n[save]\n\n");
    EXPECT_EQ(footer(), (texts{"One", "Two"}));
}

TEST_F(Footer, InsStoresABlankLineAndTheLineAndDropsTheNextAnswer) {
    EXPECT_EQ(edit({"One"}, "[ins]\ndropped\n[save]\n\n"), footer_help +
                                                               std::string("\nLine 0:[One]? "
                                                                           "\nLine 1:[One]? "
                                                                           "\nLine 2:? ") +
                                                               no_changes);
    EXPECT_EQ(footer(), (texts{" ", "One"}));
}

TEST_F(Footer, InsTwiceInsertsTwice) {
    edit({"One", "Two"}, "\n[ins]\n[ins]\n\n[save]\n\n");
    EXPECT_EQ(footer(), (texts{"One", " ", "Two", " ", "Two"}));
}

TEST_F(Footer, AnotherPassOffersTheNewLinesUnderTheShortHelp) {
    EXPECT_EQ(edit({"One", "Two"}, "First\n[del]\nLast\n[save]\nyes\n\n[del]\n[save]\n\n"),
              footer_help +
                  std::string("\nLine 0:[One]? "
                              "\nLine 1:[Two]? "
                              "\nLine 1:? "
                              "\nLine 2:? ") +
                  no_changes + short_help +
                  "\nLine 0:[First]? "
                  "\nLine 1:[Last]? "
                  "\nLine 1:? " +
                  no_changes);
    EXPECT_EQ(footer(), texts{"First"});
}

TEST_F(Footer, RemoveAndYesRemovesAllLines) {
    EXPECT_EQ(edit({"One", "Two"}, "\n[remove]\n\nyes\n"), footer_help +
                                                               std::string("\nLine 0:[One]? "
                                                                           "\nLine 1:[Two]? ") +
                                                               no_changes +
                                                               "\nRemove Email footers [NO]? ");
    EXPECT_EQ(footer(), texts{});
}

TEST_F(Footer, RemoveAndNoLeavesTheFooterAsItWas) {
    edit({"One", "Two"}, "First\n[remove]\n\n\n");
    EXPECT_EQ(footer(), (texts{"One", "Two"}));
}

TEST_F(Footer, APassAfterRemoveOffersTheOldLinesAndThoseOfThePass) {
    EXPECT_EQ(edit({"One", "Two"}, "First\n[remove]\nyes\n\n\n\n[save]\n\nyes\n"),
              footer_help +
                  std::string("\nLine 0:[One]? "
                              "\nLine 1:[Two]? ") +
                  no_changes + short_help +
                  "\nLine 0:[One]? "
                  "\nLine 1:[Two]? "
                  "\nLine 2:[First]? "
                  "\nLine 3:? " +
                  no_changes + "\nRemove Email footers [NO]? ");
    EXPECT_EQ(footer(), texts{});
}

} // namespace
