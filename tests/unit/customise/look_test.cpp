#include "customise/look.h"

#include "files/operations.h"
#include "support/console_capture.h"
#include "support/expected.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"

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

    // Runs do_background or do_logo and compares what it shows.
    void run(int (*choose)(pINI_SETTINGS), custom_store &settings, const std::string &typed) const {
        const std::string shown = console_of(typed, [&] { EXPECT_EQ(choose(settings.get()), 1); });
        expect_kept("console", scratch.with_at(shown));
    }

    texts sets() { return values_of(store.get(), "set"); }

    const std::string picture = scratch.path("new picture.gif");
    custom_store store{{"version", "images"}, {"vlimg_dir", "/not/this"}};
};

TEST_F(Look, BackgroundWithNothingStoredOffersTheDefaultFile) {
    write_file("images/ksback.jpg", "a picture");
    run(do_background, store, "\n");
    EXPECT_EQ(sets(), texts{"background ksback.jpg"});
    EXPECT_EQ(read_file("images/ksback.jpg"), "a picture");
}

TEST_F(Look, LogoWithNothingStoredOffersTheDefaultFile) {
    write_file("images/kestrel.gif", "a picture");
    run(do_logo, store, "\n");
    EXPECT_EQ(sets(), texts{"logo kestrel.gif"});
}

TEST_F(Look, CopiesTheFileAndRecordsItsName) {
    custom_store stored{{"version", "images"},
                        {"set", "background old.jpg"},
                        {"set", "scrollmessage x"},
                        {"set", "logo old.gif"}};
    run(do_logo, stored, picture + "\n");
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
    run(do_background, stored, "\n");
    EXPECT_EQ(values_of(stored.get(), "set"),
              (texts{"a background no.jpg", "backgrounds a b.jpg", "background b.jpg"}));
}

TEST_F(Look, AFileThatIsNotThereIsRefusedAndAskedForAgain) {
    run(do_background, store, "\n/no/such.jpg\n" + picture + "\n");
    EXPECT_EQ(sets(), texts{"background new picture.gif"});
}

TEST_F(Look, AFailedCopyIsReportedAndTheNameRecordedAllTheSame) {
    custom_store stored{{"version", "nowhere"}};
    run(do_background, stored, picture + "\n");
    EXPECT_EQ(values_of(stored.get(), "set"), texts{"background new picture.gif"});
}

TEST_F(Look, WithoutAnImagesDirectoryNothingIsCopied) {
    custom_store stored{};
    std::filesystem::create_directory("pictures");
    run(do_logo, stored, "pictures\n");
    EXPECT_FALSE(is_there("<NULL>"));
}

// The lines of a footer, what is typed, and the lines then.
struct footer_edit {
    const char *name;
    texts lines;
    const char *typed;
    texts lines_then;
};

class Footer : public scratch_test {
  protected:
    static void check(const footer_edit &row) {
        custom_store store{{"set", "logo a.gif"}};
        for (const std::string &line : row.lines) {
            ini_add(store.get(), "body_add", line.c_str());
        }
        expect_kept("console",
                    console_of(row.typed, [&] { EXPECT_EQ(do_emailfoot(store.get()), 1); }));
        EXPECT_EQ(values_of(store.get(), "body_add"), row.lines_then);
        EXPECT_EQ(values_of(store.get(), "set"), texts{"logo a.gif"});
    }
};

// clang-format off
const std::vector<footer_edit> edits = {
    {"Footer.EnterKeepsALineAndDelDropsIt",
     {"One", "Two", "Three"}, "\n[del]\n\n[save]\n\n", {"One", "Three"}},
    {"Footer.TakesNewLinesAndBlankOnes",
     {"One"}, "First\n\n-- \n[save]\n\n", {"First", " ", "-- "}},
    {"Footer.SaveLeavesOutTheLinesThatWereNotReached", {"One", "Two"}, "\n[save]\n\n", {"One"}},
    {"Footer.SaveAtTheFirstPromptStoresNothing", {}, "[save]\n\n", {}},
    {"Footer.AnEmptyListLeavesTheFooterAsItWas",
     {"One", "Two"}, "[del]\n[del]\n[save]\n\n", {"One", "Two"}},
    {"Footer.InsStoresABlankLineAndTheLineAndDropsTheNextAnswer",
     {"One"}, "[ins]\ndropped\n[save]\n\n", {" ", "One"}},
    {"Footer.InsTwiceInsertsTwice",
     {"One", "Two"}, "\n[ins]\n[ins]\n\n[save]\n\n", {"One", " ", "Two", " ", "Two"}},
    {"Footer.AnotherPassOffersTheNewLinesUnderTheShortHelp",
     {"One", "Two"}, "First\n[del]\nLast\n[save]\nyes\n\n[del]\n[save]\n\n", {"First"}},
    {"Footer.RemoveAndYesRemovesAllLines", {"One", "Two"}, "\n[remove]\n\nyes\n", {}},
    {"Footer.RemoveAndNoLeavesTheFooterAsItWas",
     {"One", "Two"}, "First\n[remove]\n\n\n", {"One", "Two"}},
    {"Footer.APassAfterRemoveOffersTheOldLinesToo",
     {"One", "Two"}, "First\n[remove]\nyes\n\n\n\n[save]\n\nyes\n", {}},
};
// clang-format on

const int registered = register_rows<Footer>(edits);

} // namespace
