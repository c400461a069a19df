#include "remove/remove.h"

#include "setup/answer_store.h"
#include "support/rows.h"
#include "unit/files/file_world.h"

#include <gmock/gmock-matchers.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// A removal of the users, "yes" or "", and the templates, "yes" or "no". "@" is the installation.
struct removal {
    const char *name;
    const char *preparation; // commands of the shell, in the installation
    const char *work_area;   // what is stored for it, below the installation
    const char *users;
    const char *templates;
    int result;
    std::string shown; // the end
    const char *left;  // in tpl, tpl2 and work
};

// An installation below `there`: cgi-bin, img, tpl and, apart, work.
class GxremoveMain : public FileWorld {
  protected:
    GxremoveMain() {
        set_loglvl(LOG_ERROR);
        shell("cd ../there; umask 022; mkdir cgi-bin img tpl work; "
              "touch cgi-bin/kestrel.cgi img/keep.txt");
        ini_init(&ini, emsg, dmsg);
        ini_setup(&ini, ans_values, ans_associations);
        set_answer(&ini, D_PROD_NAME, "kestrel");
        set_answer(&ini, D_VERSION, "3.2a");
        set_answer(&ini, D_CGI_PATH, there("cgi-bin").c_str());
        set_answer(&ini, D_CGI_NAME, "kestrel");
        set_answer(&ini, D_WML_NAME, "merlin");
        set_answer(&ini, D_VLIMG_DIR, there("img").c_str());
        set_answer(&ini, D_TEMPLATES, there("tpl").c_str());
    }

    ~GxremoveMain() override { ini_clear(&ini); }

    // What the removal shows; its result must be `result`.
    std::string remove_typed(int result, const std::string &typed) {
        feed_console(typed);
        return with_at(shown(result, [&] { return gxremove_main(&ini); }));
    }

    // The programs and images are declined; `typed` begins at the work area.
    std::string remove(int result, const std::string &typed) {
        return remove_typed(result, "\nno\nno\n\nno\n" + typed);
    }

    // The names in tpl, tpl2 and work.
    std::string left() const {
        std::string names;
        for (const std::string &name : names_below(there())) {
            if (name.starts_with("tpl") || name.starts_with("work")) {
                names += (names.empty() ? "" : " ") + name;
            }
        }
        return names;
    }

    void check(const removal &row) {
        shell("cd ../there; umask 022; " + std::string(row.preparation));
        set_answer(&ini, D_WORKAREA, there(row.work_area).c_str());
        stream_capture errors(stderr);
        EXPECT_THAT(
            remove(row.result, "\n" + std::string(row.users) + "\n\n" + row.templates + "\n"),
            EndsWith(row.shown));
        errors.finish();
        EXPECT_EQ(left(), row.left);
    }

    ini_settings ini{};
};

std::string users_questions(const std::string &offered) {
    return "\n\nWhere is your work area (this must be an existing directory)\n[" + offered +
           "]? \n\nRemove all user information from " + offered + " [NO]? ";
}

const std::string where_templates =
    "\n\nWhere are your template files (this must be an existing directory)\n[@/tpl]? ";
const std::string remove_templates = "\n\nRemove template files and subdirectories from @/tpl ";
const std::string templates_questions = where_templates + remove_templates + "[YES]? ";
const std::string noted_questions =
    where_templates + remove_templates +
    "\n(This will not include any user information directories) [YES]? ";
const std::string after_line_feed = templates_questions.substr(1);
const std::string of_work = users_questions("@/work");
const std::string not_empty = ": Directory not empty\n";

const std::vector<removal> removals = {
    // The note.
    {"GxremoveMain.WithoutDelUsersAWorkAreaBelowTheTemplatesIsNoted", "mkdir tpl/users",
     "tpl/users", "yes", "no", 1,
     users_questions("@/tpl/users") + "No user directories found.\n" + noted_questions,
     "tpl tpl/users work"},
    {"GxremoveMain.TheNoteGoesByThePathsTextNotByItsDirectories", "mkdir tpl2", "tpl2", "yes", "no",
     1, noted_questions, "tpl tpl2 work"},
    {"GxremoveMain.AWorkAreaElsewhereIsNotNoted", "", "work", "yes", "no", 1, templates_questions,
     "tpl work"},
    // The work area.
    {"GxremoveMain.UsersDirectoriesGoWithAllTheyHoldAndNothingElseDoes",
     "mkdir -p work/u_ann/mail work/other; touch work/u_ann/mail/1 work/note", "work", "yes", "no",
     1, of_work + "...\n" + after_line_feed, "tpl work work/note work/other"},
    {"GxremoveMain.ADanglingLinkNamedLikeAUserIsPassedOver", "ln -s nowhere work/u_x", "work",
     "yes", "no", 1, of_work + "\n" + after_line_feed, "tpl work work/u_x"},
    {"GxremoveMain.AUsersDirectoryInsideAUsersDirectoryIsKeptAndReported",
     "mkdir -p work/u_ann/u_bob; touch work/u_ann/mail", "work", "yes", "no", 0,
     of_work + ".Error: \nCannot remove @/work/u_ann" + not_empty + "\n" + after_line_feed,
     "tpl work work/u_ann work/u_ann/u_bob"},
    {"GxremoveMain.ALinkNamedLikeAUserIsNotEntered",
     "touch ../here/kept; ln -s ../../here work/u_x", "work", "yes", "no", 0,
     of_work + "Error: \nCannot remove @/work/u_x: Not a directory\n\n" + after_line_feed,
     "tpl work work/u_x"},
    // The templates directory. What stays does not fail the removal.
    {"GxremoveMain.TheTemplatesGoButUsersAndTheWorkAreaInItStayAndAreReported",
     "mkdir -p tpl/users/u_ann tpl/u_bob tpl/set; touch tpl/set/a.tpl tpl/users/note", "tpl/users",
     "no", "yes", 1, templates_questions + "..Error: Cannot remove @/tpl" + not_empty,
     "tpl tpl/u_bob tpl/users tpl/users/note tpl/users/u_ann work"},
    {"GxremoveMain.TheWorkAreaIsProtectedByItsExactPathTextAlone",
     "mkdir -p tpl/users/u_ann; touch tpl/users/note", "tpl/./users", "no", "yes", 0,
     "Error: \nCannot remove @/tpl/users" + not_empty + "Error: Cannot remove @/tpl" + not_empty,
     "tpl tpl/users tpl/users/u_ann work"},
    {"GxremoveMain.ALinkAmongTheTemplatesIsNotEntered",
     "touch ../here/kept; ln -s ../../here tpl/link", "work", "no", "yes", 0,
     "Error: \nCannot remove @/tpl/link: Not a directory\nError: Cannot remove @/tpl" + not_empty,
     "tpl tpl/link work"},
    {"GxremoveMain.ATemplatesDirectoryThatCannotBeRemovedDoesNotFailTheRemoval", "mkdir tpl/u_ann",
     "work", "no", "yes", 1, "Error: Cannot remove @/tpl" + not_empty, "tpl tpl/u_ann work"},
};

const int registered = register_rows<GxremoveMain>(removals);

} // namespace

TEST_F(GxremoveMain, DecliningTheUsersStoresThatAndSuppressesTheNote) {
    set_answer(&ini, D_WORKAREA, there("tpl").c_str());
    EXPECT_THAT(remove(1, "\n\n\nno\n"), EndsWith(users_questions("@/tpl") + templates_questions));
    EXPECT_STREQ(ini_value(&ini, "del_users", 0), "FALSE");
}

TEST_F(GxremoveMain, AYesToTheUsersIsNotStored) {
    remove(1, "\nyes\n\nno\n");
    EXPECT_EQ(ini_value(&ini, "del_users", 0), nullptr);
}

TEST_F(GxremoveMain, AnyDelUsersSuppressesTheNote) {
    set_answer(&ini, D_DEL_USERS, "TRUE");
    EXPECT_THAT(remove(1, "\nyes\n\nno\n"), EndsWith(templates_questions));
}

TEST_F(GxremoveMain, AnEmptyWorkAreaBecomesTheTemplatesDirectory) {
    EXPECT_THAT(remove(1, "\nno\n\nno\n"), HasSubstr(users_questions("@/tpl")));
    EXPECT_EQ(ini_value(&ini, "workarea", 0), there("tpl"));
}

TEST_F(GxremoveMain, AFileThatIsNamedLikeAUserIsLeftAloneAndLogged) {
    write_file(there("work/u_x"), "");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    set_loglvl(LOG_DEBUG);
    remove(1, "\nyes\n\nno\n");
    EXPECT_EQ(left(), "tpl work work/u_x");
    EXPECT_THAT(log(), HasSubstr("Debug: u_ file found weird?\n"));
}

TEST_F(GxremoveMain, ASocketNamedLikeAUserIsTakenForADirectoryByItsModeBit) {
    make_socket("../there/work/u_x");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    stream_capture errors(stderr);
    const std::string text = remove(0, "\nyes\n\nno\n");
    EXPECT_EQ(errors.finish(), "Could not read directory file: Not a directory\n");
    EXPECT_THAT(text, EndsWith(of_work + "Error: \nCannot remove @/work/u_x: Not a directory\n\n" +
                               after_line_feed));
    EXPECT_EQ(left(), "tpl work work/u_x");
}

TEST_F(GxremoveMain, TheTemplatesDirectoryIsProtectedWhereAnotherPartHoldsIt) {
    shell(
        "cd ../there; mkdir other; for name in tpl img work other; do touch $name/logo.gif; done");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    // The images directory is the one above them all; the templates are declined.
    remove_typed(0, "\nno\nno\n" + there() + "\nyes\n\nno\n" + there("img") + "\nno\n");
    EXPECT_EQ(names_below(there()),
              (string_set{"cgi-bin", "cgi-bin/kestrel.cgi", "img", "img/keep.txt", "tpl",
                          "tpl/logo.gif", "work", "work/logo.gif"}));
}

TEST_F(GxremoveMain, RunInTheTemplatesDirectoryItKeepsTheSetupButNotItsAnswers) {
    shell("touch gxsetup gxsetup.dat gxsetup.log a.tpl; mkdir u_ann");
    EXPECT_THAT(remove(1, there("work") + "\nno\n" + scratch.path("here") + "\nyes\n"),
                EndsWith("[YES]? ."));
    EXPECT_EQ(names_below("."), (string_set{"gxsetup", "gxsetup.log", "u_ann"}));
    EXPECT_TRUE(is_there(there("tpl")));
}

TEST_F(GxremoveMain, EveryCallLooksUpTheOldIniButSavedAnswersAreLoadedOnceARun) {
    // In a process of its own: the flag lives as long as that.
    EXPECT_EXIT(
        {
            for (const std::string text : {"first", "second"}) {
                write_file(there("cgi-bin/kestrel.ini"), "smtphost " + text + "\n");
                write_file(there("tpl/gxsetup.dat"), "domain " + text + "\n");
                remove(1, "\nno\n\nno\n\nno\n");
            }
            EXPECT_STREQ(ini_value_num(&ini, D_SMTPHOST), "second");
            EXPECT_STREQ(ini_value_num(&ini, D_DOMAIN), "first");
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(GxremoveMain, LeavesTheActionRemove) {
    remove(1, "\nno\n\nno\n");
    EXPECT_STREQ(ini_value_num(&ini, D_ACTION), "remove");
}
