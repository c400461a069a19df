#include "customise/look.h"

#include "files/operations.h"
#include "support/console_capture.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"
#include "unit/customise/screens.h"

#include <gtest/gtest.h>

namespace {

// A store whose images directory (the value `version`) is "images", and a picture to choose.
class Look : public scratch_test {
  protected:
    Look() {
        std::filesystem::create_directory("images");
        // Copies are given to the owner; the one who runs the test may always keep them.
        gx_user = ::geteuid();
        gx_group = ::getegid();
        write_file(picture, "a picture");
    }

    // Runs do_background or do_logo; gives what it shows.
    static std::string run(int (*choose)(pINI_SETTINGS), custom_store &settings,
                           const std::string &typed) {
        return console_of(typed, [&] { EXPECT_EQ(choose(settings.get()), 1); });
    }

    texts sets() { return values_of(store.get(), "set"); }

    const std::string picture = scratch.path("new picture.gif");
    custom_store store{{"version", "images"}, {"vlimg_dir", "/not/this"}};
};

TEST_F(Look, BackgroundWithNothingStoredOffersTheDefaultFile) {
    write_file("images/ksback.jpg", "a picture");
    EXPECT_EQ(run(do_background, store, "\n"), image_question("background", "images/ksback.jpg"));
    EXPECT_EQ(sets(), texts{"background ksback.jpg"});
    EXPECT_EQ(read_file("images/ksback.jpg"), "a picture");
}

TEST_F(Look, LogoWithNothingStoredOffersTheDefaultFile) {
    write_file("images/kestrel.gif", "a picture");
    EXPECT_EQ(run(do_logo, store, "\n"), image_question("logo", "images/kestrel.gif"));
    EXPECT_EQ(sets(), texts{"logo kestrel.gif"});
}

TEST_F(Look, CopiesTheFileAndRecordsItsName) {
    custom_store stored{{"version", "images"},
                        {"set", "background old.jpg"},
                        {"set", "scrollmessage x"},
                        {"set", "logo old.gif"}};
    EXPECT_EQ(run(do_logo, stored, picture + "\n"), image_question("logo", "images/old.gif") + ".");
    EXPECT_EQ(read_file("images/new picture.gif"), "a picture");
    EXPECT_EQ(values_of(stored.get(), "set"),
              (texts{"background old.jpg", "scrollmessage x", "logo new picture.gif"}));
}

TEST_F(Look, ReplacesAnImageOfTheSameName) {
    write_file("images/new picture.gif", "old and longer");
    run(do_logo, store, picture + "\n");
    EXPECT_EQ(read_file("images/new picture.gif"), "a picture");
}

TEST_F(Look, OffersTheLastWordOfTheFirstValueOfItsMode) {
    custom_store stored{{"version", "images"},
                        {"set", "a background no.jpg"},
                        {"set", "backgrounds a b.jpg"},
                        {"set", "background c.jpg"}};
    write_file("images/b.jpg", "a picture");
    EXPECT_EQ(run(do_background, stored, "\n"), image_question("background", "images/b.jpg"));
    EXPECT_EQ(values_of(stored.get(), "set"),
              (texts{"a background no.jpg", "backgrounds a b.jpg", "background b.jpg"}));
}

TEST_F(Look, AFileThatIsNotThereIsRefusedAndAskedForAgain) {
    const std::string question = image_question("background", "images/ksback.jpg");
    EXPECT_EQ(run(do_background, store, "\n/no/such.jpg\n" + picture + "\n"),
              question + "Error: cannot find images/ksback.jpg\n\n" + question +
                  "Error: cannot find /no/such.jpg\n\n" + question + ".");
    EXPECT_EQ(sets(), texts{"background new picture.gif"});
}

TEST_F(Look, AFailedCopyIsReportedAndTheNameRecordedAllTheSame) {
    custom_store stored{{"version", "nowhere"}};
    EXPECT_EQ(run(do_background, stored, picture + "\n"),
              image_question("background", "nowhere/ksback.jpg") + "\n" + dashes +
                  "Error: Can't write to \"nowhere/new picture.gif\": No such file or "
                  "directory\n\n");
    EXPECT_EQ(values_of(stored.get(), "set"), texts{"background new picture.gif"});
}

TEST_F(Look, WithoutAnImagesDirectoryNothingIsCopied) {
    custom_store stored{};
    std::filesystem::create_directory("pictures");
    EXPECT_EQ(run(do_logo, stored, "pictures\n"),
              image_question("logo", "<NULL>/kestrel.gif") +
                  "Error: \nError creating template set directory pictures.\n\n");
    EXPECT_FALSE(is_there("<NULL>"));
}

constexpr const char *short_help = "[ins] = insert blank line\t: [del] = delete line\n"
                                   "[remove] = remove footers\t: [save] = save and exit.\n";

// The lines of a footer, what is typed, what is shown behind the help, and the lines then.
struct footer_edit {
    const char *name;
    texts lines;
    const char *typed;
    std::string shown;
    texts lines_then;
};

class Footer : public scratch_test {
  protected:
    static void check(const footer_edit &row) {
        custom_store store{{"set", "logo a.gif"}};
        for (const std::string &line : row.lines) {
            ini_add(store.get(), "body_add", line.c_str());
        }
        EXPECT_EQ(console_of(row.typed, [&] { EXPECT_EQ(do_emailfoot(store.get()), 1); }),
                  footer_help + row.shown);
        EXPECT_EQ(values_of(store.get(), "body_add"), row.lines_then);
        EXPECT_EQ(values_of(store.get(), "set"), texts{"logo a.gif"});
    }
};

// clang-format off
const std::vector<footer_edit> edits = {
    {"Footer.EnterKeepsALineAndDelDropsIt", {"One", "Two", "Three"}, "\n[del]\n\n[save]\n\n",
     asked({"Line 0:[One]", "Line 1:[Two]", "Line 1:[Three]", "Line 2:", changes}),
     {"One", "Three"}},
    {"Footer.TakesNewLinesAndBlankOnes", {"One"}, "First\n\n-- \n[save]\n\n",
     asked({"Line 0:[One]", "Line 1:", "Line 2:", "Line 3:", changes}), {"First", " ", "-- "}},
    {"Footer.SaveLeavesOutTheLinesThatWereNotReached", {"One", "Two"}, "\n[save]\n\n",
     asked({"Line 0:[One]", "Line 1:[Two]", changes}), {"One"}},
    {"Footer.SaveAtTheFirstPromptStoresNothing", {}, "[save]\n\n", asked({"Line 0:", changes}), {}},
    {"Footer.AnEmptyListLeavesTheFooterAsItWas", {"One", "Two"}, "[del]\n[del]\n[save]\n\n",
     asked({"Line 0:[One]", "Line 0:[Two]", "Line 0:", changes}), {"One", "Two"}},
    {"Footer.InsStoresABlankLineAndTheLineAndDropsTheNextAnswer", {"One"},
     "[ins]\ndropped\n[save]\n\n",
     asked({"Line 0:[One]", "Line 1:[One]", "Line 2:", changes}), {" ", "One"}},
    {"Footer.InsTwiceInsertsTwice", {"One", "Two"}, "\n[ins]\n[ins]\n\n[save]\n\n",
     asked({"Line 0:[One]", "Line 1:[Two]", "Line 2:[Two]", "Line 3:[Two]", "Line 4:", changes}),
     {"One", " ", "Two", " ", "Two"}},
    {"Footer.AnotherPassOffersTheNewLinesUnderTheShortHelp", {"One", "Two"},
     "First\n[del]\nLast\n[save]\nyes\n\n[del]\n[save]\n\n",
     asked({"Line 0:[One]", "Line 1:[Two]", "Line 1:", "Line 2:", changes}) + short_help +
         asked({"Line 0:[First]", "Line 1:[Last]", "Line 1:", changes}), {"First"}},
    {"Footer.RemoveAndYesRemovesAllLines", {"One", "Two"}, "\n[remove]\n\nyes\n",
     asked({"Line 0:[One]", "Line 1:[Two]", changes, "Remove Email footers [NO]"}), {}},
    {"Footer.RemoveAndNoLeavesTheFooterAsItWas", {"One", "Two"}, "First\n[remove]\n\n\n",
     asked({"Line 0:[One]", "Line 1:[Two]", changes, "Remove Email footers [NO]"}),
     {"One", "Two"}},
    {"Footer.APassAfterRemoveOffersTheOldLinesToo", {"One", "Two"},
     "First\n[remove]\nyes\n\n\n\n[save]\n\nyes\n",
     asked({"Line 0:[One]", "Line 1:[Two]", changes}) + short_help +
         asked({"Line 0:[One]", "Line 1:[Two]", "Line 2:[First]", "Line 3:", changes,
                "Remove Email footers [NO]"}), {}},
};
// clang-format on

const int registered = register_rows<Footer>(edits);

} // namespace
