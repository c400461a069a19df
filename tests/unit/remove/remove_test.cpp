#include "remove/remove.h"

#include "setup/answer_store.h"
#include "unit/files/file_world.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// An installation below `there`: cgi-bin, img, tpl and, apart, work.
class GxremoveMain : public FileWorld {
  protected:
    GxremoveMain() {
        set_loglvl(LOG_ERROR);
        for (const char *directory : {"cgi-bin", "img", "tpl", "work"}) {
            std::filesystem::create_directory(there(directory));
        }
        write_file(there("cgi-bin/kestrel.cgi"), "");
        write_file(there("img/keep.txt"), "");
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

    std::string there(const std::string &name) const { return scratch.path("there/" + name); }

    // What the removal shows; its result must be `result`. The programs and images are declined,
    // `typed` begins at the work area.
    std::string remove(int result, const std::string &typed) {
        feed_console("\nno\nno\n\nno\n" + typed);
        return shown(result, [&] { return gxremove_main(&ini); });
    }

    // From the question for the work area on.
    static std::string from_work_area(const std::string &text) {
        return text.substr(text.find("\n\nWhere is your work area "));
    }

    std::string work_area_question(const std::string &offered) const {
        return "\n\nWhere is your work area (this must be an existing directory)\n[" +
               there(offered) + "]? ";
    }

    std::string users_question(const std::string &directory) const {
        return "\n\nRemove all user information from " + there(directory) + " [NO]? ";
    }

    std::string templates_questions(const std::string &note = "",
                                    const std::string &directory = "tpl") const {
        return "\n\nWhere are your template files (this must be an existing directory)\n[" +
               there("tpl") + "]? \n\nRemove template files and subdirectories from " +
               there(directory) + " " + note + "[YES]? ";
    }

    void add_socket(const std::string &directory, const std::string &name) const {
        const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::filesystem::path before = std::filesystem::current_path();
        std::filesystem::current_path(there(directory));
        name.copy(address.sun_path, sizeof(address.sun_path) - 1);
        ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
        ::close(socket);
        std::filesystem::current_path(before);
    }

    ini_settings ini{};
};

constexpr const char *users_note = "\n(This will not include any user information directories) ";

} // namespace

// --- The note ---

TEST_F(GxremoveMain, WithoutDelUsersAWorkAreaBelowTheTemplatesIsNoted) {
    std::filesystem::create_directory(there("tpl/users"));
    set_answer(&ini, D_WORKAREA, there("tpl/users").c_str());
    EXPECT_EQ(from_work_area(remove(1, "\nyes\n\nno\n")),
              work_area_question("tpl/users") + users_question("tpl/users") +
                  "No user directories found.\n" + templates_questions(users_note));
    EXPECT_EQ(ini_value(&ini, "del_users", 0), nullptr);
}

TEST_F(GxremoveMain, TheNoteGoesByThePathsTextNotByItsDirectories) {
    std::filesystem::create_directory(there("tpl2"));
    set_answer(&ini, D_WORKAREA, there("tpl2").c_str());
    EXPECT_TRUE(remove(1, "\nyes\n\nno\n").ends_with(templates_questions(users_note)));
}

TEST_F(GxremoveMain, AWorkAreaElsewhereIsNotNoted) {
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    EXPECT_TRUE(remove(1, "\nyes\n\nno\n").ends_with(templates_questions()));
}

TEST_F(GxremoveMain, DecliningTheUsersStoresThatAndSuppressesTheNote) {
    set_answer(&ini, D_WORKAREA, there("tpl").c_str());
    EXPECT_EQ(from_work_area(remove(1, "\n\n\nno\n")),
              work_area_question("tpl") + users_question("tpl") + templates_questions());
    EXPECT_STREQ(ini_value(&ini, "del_users", 0), "FALSE");
}

TEST_F(GxremoveMain, AnyDelUsersSuppressesTheNote) {
    set_answer(&ini, D_DEL_USERS, "TRUE");
    EXPECT_TRUE(remove(1, "\nyes\n\nno\n").ends_with(templates_questions()));
}

// --- The work area ---

TEST_F(GxremoveMain, AnEmptyWorkAreaBecomesTheTemplatesDirectory) {
    EXPECT_TRUE(from_work_area(remove(1, "\nno\n\nno\n")).starts_with(work_area_question("tpl")));
    EXPECT_EQ(ini_value(&ini, "workarea", 0), there("tpl"));
}

TEST_F(GxremoveMain, UsersDirectoriesGoWithAllTheyHoldAndNothingElseDoes) {
    std::filesystem::create_directories(there("work/u_ann/mail"));
    write_file(there("work/u_ann/mail/1"), "");
    std::filesystem::create_directory(there("work/other"));
    write_file(there("work/note"), "");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    EXPECT_EQ(from_work_area(remove(1, "\nyes\n\nno\n")), work_area_question("work") +
                                                              users_question("work") + "...\n" +
                                                              templates_questions().substr(1));
    EXPECT_EQ(names_below(there("work")), (string_set{"other", "note"}));
}

TEST_F(GxremoveMain, AFileThatIsNamedLikeAUserIsLeftAloneAndLogged) {
    write_file(there("work/u_x"), "");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    set_loglvl(LOG_DEBUG);
    remove(1, "\nyes\n\nno\n");
    EXPECT_TRUE(is_there(there("work/u_x")));
    EXPECT_NE(log().find("Debug: u_ file found weird?\n"), std::string::npos);
}

TEST_F(GxremoveMain, ADanglingLinkNamedLikeAUserIsPassedOver) {
    std::filesystem::create_symlink("nowhere", there("work/u_x"));
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    EXPECT_EQ(from_work_area(remove(1, "\nyes\n\nno\n")), work_area_question("work") +
                                                              users_question("work") + "\n" +
                                                              templates_questions().substr(1));
    EXPECT_EQ(names_below(there("work")), string_set{"u_x"});
}

TEST_F(GxremoveMain, ASocketNamedLikeAUserIsTakenForADirectoryByItsModeBit) {
    add_socket("work", "u_x");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    stream_capture errors(stderr);
    const std::string text = remove(0, "\nyes\n\nno\n");
    EXPECT_EQ(errors.finish(), "Could not read directory file: Not a directory\n");
    EXPECT_EQ(from_work_area(text), work_area_question("work") + users_question("work") +
                                        "Error: \nCannot remove " + there("work/u_x") +
                                        ": Not a directory\n\n" + templates_questions().substr(1));
    EXPECT_TRUE(is_there(there("work/u_x")));
}

TEST_F(GxremoveMain, AUsersDirectoryInsideAUsersDirectoryIsKeptAndReported) {
    std::filesystem::create_directories(there("work/u_ann/u_bob"));
    write_file(there("work/u_ann/mail"), "");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    EXPECT_NE(
        remove(0, "\nyes\n\nno\n")
            .find(".Error: \nCannot remove " + there("work/u_ann") + ": Directory not empty\n"),
        std::string::npos);
    EXPECT_EQ(names_below(there("work")), (string_set{"u_ann", "u_ann/u_bob"}));
}

TEST_F(GxremoveMain, ALinkNamedLikeAUserIsNotEntered) {
    write_file(scratch.path("here/kept"), "");
    std::filesystem::create_directory_symlink(scratch.path("here"), there("work/u_x"));
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    EXPECT_NE(remove(0, "\nyes\n\nno\n")
                  .find("Error: \nCannot remove " + there("work/u_x") + ": Not a directory\n"),
              std::string::npos);
    EXPECT_TRUE(is_there(scratch.path("here/kept")));
    EXPECT_TRUE(is_there(there("work/u_x")));
}

// --- The templates directory ---

TEST_F(GxremoveMain, TheTemplatesGoButUsersAndTheWorkAreaInItStayAndAreReported) {
    for (const char *directory : {"tpl/users/u_ann", "tpl/u_bob", "tpl/set"}) {
        std::filesystem::create_directories(there(directory));
    }
    write_file(there("tpl/set/a.tpl"), "");
    write_file(there("tpl/users/note"), "");
    set_answer(&ini, D_WORKAREA, there("tpl/users").c_str());
    // What stays does not fail the removal.
    EXPECT_TRUE(remove(1, "\nno\n\nyes\n")
                    .ends_with(templates_questions() + "..Error: Cannot remove " + there("tpl") +
                               ": Directory not empty\n"));
    EXPECT_EQ(names_below(there("tpl")),
              (string_set{"users", "users/u_ann", "users/note", "u_bob"}));
}

TEST_F(GxremoveMain, TheWorkAreaIsProtectedByItsExactPathTextAlone) {
    std::filesystem::create_directories(there("tpl/users/u_ann"));
    write_file(there("tpl/users/note"), "");
    set_answer(&ini, D_WORKAREA, there("tpl/./users").c_str());
    EXPECT_NE(remove(0, "\nno\n\nyes\n")
                  .find("Error: \nCannot remove " + there("tpl/users") + ": Directory not empty\n"),
              std::string::npos);
    EXPECT_EQ(names_below(there("tpl")), (string_set{"users", "users/u_ann"}));
}

TEST_F(GxremoveMain, TheTemplatesDirectoryIsProtectedWhereAnotherPartHoldsIt) {
    write_file(there("tpl/logo.gif"), "");
    write_file(there("img/logo.gif"), "");
    write_file(there("work/logo.gif"), "");
    std::filesystem::create_directory(there("other"));
    write_file(there("other/logo.gif"), "");
    set_answer(&ini, D_WORKAREA, there("work").c_str());
    // The images directory is the one above them all; the templates are declined.
    feed_console("\nno\nno\n" + scratch.path("there") + "\nyes\n\nno\n" + there("img") + "\nno\n");
    shown(0, [&] { return gxremove_main(&ini); });
    EXPECT_EQ(names_below(scratch.path("there")),
              (string_set{"cgi-bin", "cgi-bin/kestrel.cgi", "img", "img/keep.txt", "tpl",
                          "tpl/logo.gif", "work", "work/logo.gif"}));
}

TEST_F(GxremoveMain, ALinkAmongTheTemplatesIsNotEntered) {
    write_file(scratch.path("here/kept"), "");
    std::filesystem::create_directory_symlink(scratch.path("here"), there("tpl/link"));
    EXPECT_NE(remove(0, "\nno\n\nyes\n")
                  .find("Error: \nCannot remove " + there("tpl/link") + ": Not a directory\n"),
              std::string::npos);
    EXPECT_TRUE(is_there(scratch.path("here/kept")));
}

TEST_F(GxremoveMain, ATemplatesDirectoryThatCannotBeRemovedDoesNotFailTheRemoval) {
    std::filesystem::create_directory(there("tpl/u_ann"));
    EXPECT_TRUE(remove(1, "\nno\n\nyes\n")
                    .ends_with("Error: Cannot remove " + there("tpl") + ": Directory not empty\n"));
}

TEST_F(GxremoveMain, RunInTheTemplatesDirectoryItKeepsTheSetupButNotItsAnswers) {
    for (const char *name : {"gxsetup", "gxsetup.dat", "gxsetup.log", "a.tpl"}) {
        write_file(name, "");
    }
    std::filesystem::create_directory("u_ann");
    EXPECT_TRUE(remove(1, there("work") + "\nno\n" + scratch.path("here") + "\nyes\n")
                    .ends_with("[YES]? ."));
    EXPECT_EQ(names_below("."), (string_set{"gxsetup", "gxsetup.log", "u_ann"}));
    EXPECT_TRUE(is_there(there("tpl")));
}

// --- The run ---

TEST_F(GxremoveMain, EveryCallLooksUpTheOldIniButSavedAnswersAreLoadedOnceARun) {
    // In a process of its own: the flag lives as long as that.
    EXPECT_EXIT(
        {
            const std::string no_to_all = "no\n\nno\n\nno\n";
            write_file(there("cgi-bin/kestrel.ini"), "smtphost first\n");
            write_file(there("tpl/gxsetup.dat"), "domain first\n");
            remove(1, "\n" + no_to_all);
            write_file(there("cgi-bin/kestrel.ini"), "smtphost second\n");
            write_file(there("tpl/gxsetup.dat"), "domain second\n");
            remove(1, "\n" + no_to_all);
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
