// Root among other users' files: what the web server's user planted before a run, or swaps during
// one, never makes root touch anything outside that user's own files, and the session's words are
// as ever. Links that root made are followed as before.

#include "support/system_calls.h"
#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <map>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

const passwd &web_user() {
    static const passwd user = *::getpwnam("nobody");
    return user;
}

void give_to_web_user(const std::string &path) {
    ASSERT_EQ(::lchown(path.c_str(), web_user().pw_uid, web_user().pw_gid), 0) << path;
}

// A private file and a private directory of root's, in the world that is worked in.
class private_files {
  public:
    private_files() {
        add_file("private/letter", "dear reader\n");
        add_file("private/home/notes", "notes\n");
        for (const char *name : {"one", "two", "three", "four"}) {
            add_file(std::string("private/home/") + name + "/file", "kept\n");
        }
        ::chmod("private/letter", 0600);
        ::chmod("private/home", 0700);
        before_ = state();
    }

    void expect_untouched() const { EXPECT_EQ(state(), before_); }

  private:
    // Mode, owner and content of each entry.
    static std::map<std::string, std::string> state() {
        std::map<std::string, std::string> entries;
        for (const auto &entry : fs::recursive_directory_iterator("private")) {
            struct stat status {};
            EXPECT_EQ(::lstat(entry.path().c_str(), &status), 0);
            entries[entry.path()] = std::to_string(status.st_mode) + " " +
                                    std::to_string(status.st_uid) + " " +
                                    (S_ISREG(status.st_mode) ? read_file(entry.path()) : "");
        }
        return entries;
    }

    std::map<std::string, std::string> before_;
};

class OtherUsers : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root can plant files as another user";
        }
    }
};

// A host on which kestrel 3.1 is installed for the web server's user and 3.2 unpacked. The script
// directory is that user's as well.
class site : public upgrade_world, public private_files {
  public:
    site() : upgrade_world("kestrel") {
        for (const char *directory : {"cgi-bin", "html", "html/vlimg", "spool"}) {
            give_to_web_user(directory);
        }
    }

    ~site() { expect_untouched(); }
    site(const site &) = delete;
    site &operator=(const site &) = delete;

    // Puts a link of the web server's user in the place of a file or directory.
    void plant_link(const std::string &path, const std::string &target) const {
        fs::remove_all(path);
        fs::create_symlink(this->path(target), path);
        give_to_web_user(path);
    }

    // A second name of root's file.
    void plant_name(const std::string &path) const {
        fs::remove_all(path);
        fs::create_hard_link("private/letter", path);
    }
};

// What an upgrade writes over at the installed product. The program is looked for first: a link in
// its place is no program.
const std::vector<std::string> written = {
    "spool/kestrel/edited.tpl",  "spool/kestrel/same.tpl",     "spool/kestrel/gxsetup.dat",
    "spool/kestrel/gxsetup.log", "spool/kestrel/tmptlist.txt", "html/vlimg/logo.gif",
    "cgi-bin/kestrel.new",       "spool/kestrel/kestrel.ini"};

const console_script install = no_to_both + console_script{{"What do you want to do", "1"}};

const console_script replacing = {{"replace the old templates", "yes"}};

wizard_run upgrade(const world &host, const console_script &script = {}) {
    return run_wizard(host, {},
                      console_script{{"What do you want to do", "2"}, {"temporary files", "no"}} +
                          script);
}

std::string outcome_of(const wizard_run &run) {
    return run.transcript.substr(run.transcript.find("\nPlease wait"));
}

// --- Planted before a run ---

TEST_F(OtherUsers, LinksInThePlaceOfFilesAreReplacedThemselvesWithoutAWord) {
    const site twin;
    const std::string undisturbed = outcome_of(upgrade(twin, replacing));
    for (const std::string &path : written) {
        const site host;
        host.plant_link(path, "private/letter");
        EXPECT_EQ(outcome_of(upgrade(host, replacing)), undisturbed) << path;
        EXPECT_FALSE(fs::is_symlink(path) && path.ends_with(".tpl")) << path;
    }
}

TEST_F(OtherUsers, SecondNamesOfRootsFileAreReplacedThemselvesWithoutAWord) {
    const site twin;
    const std::string undisturbed = outcome_of(upgrade(twin, replacing));
    for (const std::string &path : written) {
        const site host;
        host.plant_name(path);
        EXPECT_EQ(outcome_of(upgrade(host, replacing)), undisturbed) << path;
    }
    const site host;
    host.plant_name("cgi-bin/kestrel.cgi");
    EXPECT_EQ(outcome_of(upgrade(host, replacing)), undisturbed);
}

TEST_F(OtherUsers, DanglingLinksMakeNoFile) {
    for (const std::string &path : written) {
        const site host;
        host.plant_link(path, "private/made");
        EXPECT_EQ(upgrade(host).status, 0);
        EXPECT_FALSE(is_there("private/made")) << path;
    }
}

TEST_F(OtherUsers, ALinkAsTheOriginalsIsADirectoryThatCannotBeCreated) {
    const site host;
    host.plant_link("spool/kestrel/originals", "private/home");
    const wizard_run run =
        run_wizard(host, {}, {{"What do you want to do", "2"}, {"original templates", "yes"}});
    EXPECT_THAT(run.transcript, HasSubstr("\nupgrade unsuccessful\n"));
    EXPECT_TRUE(fs::is_symlink("spool/kestrel/originals"));
}

TEST_F(OtherUsers, ALinkAsATreeIsADirectoryThatCannotBeCreated) {
    const world host("kestrel");
    const private_files kept;
    fs::create_directory("spool/kestrel");
    fs::create_symlink(host.path("private/home"), "spool/kestrel/tpl");
    give_to_web_user("spool/kestrel");
    give_to_web_user("spool/kestrel/tpl");
    const wizard_run run = run_wizard(host, {}, no_to_both);
    EXPECT_THAT(run.transcript, HasSubstr("Error: \nError creating template set directory tpl.\n"));
    EXPECT_TRUE(fs::is_symlink("spool/kestrel/tpl"));
    kept.expect_untouched();
}

TEST_F(OtherUsers, TheirLinkAsTheTemplatesDirectoryDoesNotExist) {
    const site host;
    host.plant_link("spool/kestrel", "private/home");
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"What do you want to do", "2"},
                                                {"template files", "@/spool/kestrel"},
                                                {"template files", "q"}}));
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                HasSubstr("Error: Not followed: \"@/spool/kestrel\" is a link that another user "
                          "made\n"));
}

TEST_F(OtherUsers, TheirLinkAsADirectoryOfTheInstallationCannotBeCreated) {
    for (const char *name : {"img", "slate"}) {
        const upgrade_world host("tanager");
        const private_files kept;
        const std::string path = std::string("spool/tanager/") + name;
        fs::remove_all(path);
        fs::create_symlink(host.path("private/home"), path);
        give_to_web_user("spool/tanager");
        give_to_web_user(path);
        const wizard_run run = run_wizard(host, {},
                                          {{"What do you want to do", "2"},
                                           {"replace the old templates", "yes"},
                                           {"Where are the .gif", "@/html/vlimg"}});
        EXPECT_THAT(run.transcript, HasSubstr("pgrade unsuccessful")) << name;
        EXPECT_TRUE(fs::is_symlink(path)) << name;
        kept.expect_untouched();
    }
}

// --- What is root's, renamed by the web server's user ---

// Mode, owner and content of each entry of a tree, whatever name it stands under.
std::vector<std::string> inside(const std::string &tree) {
    std::vector<std::string> entries;
    const auto take = [&entries](const std::string &path) {
        struct stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        entries.push_back(std::to_string(status.st_ino) + " " + std::to_string(status.st_mode) +
                          " " + std::to_string(status.st_uid) + " " +
                          (S_ISREG(status.st_mode) ? read_file(path) : ""));
    };
    take(tree);
    for (const auto &entry : fs::recursive_directory_iterator(tree)) {
        take(entry.path());
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

// Makes a private directory of root's.
void add_private_directory(const std::string &path) {
    add_file(path + "/key", "secret\n");
    ::chmod((path + "/key").c_str(), 0600);
    ::chmod(path.c_str(), 0700);
}

TEST_F(OtherUsers, RootsDirectoryUnderANameOfTheWizardsStaysRoots) {
    const struct {
        const char *product;
        const char *name;
    } rows[] = {{"kestrel", "spool/kestrel/originals"},
                {"kestrel", "html/vlimg"},
                {"tanager", "spool/tanager/img"},
                {"tanager", "spool/tanager/slate"}};
    for (const auto &row : rows) {
        const upgrade_world host(row.product);
        give_to_web_user("html");
        fs::remove_all(row.name);
        add_private_directory(row.name);
        const auto before = inside(row.name);
        console_script script = replacing + console_script{{"original templates", "yes"}};
        if (has_sets(row.product)) {
            script = script + console_script{{"Where are the .gif", "@/html/vlimg"}};
        }
        const wizard_run run = upgrade(host, script);
        EXPECT_THAT(run.transcript, HasSubstr("upgrade successful")) << row.name;
        EXPECT_THAT(inside(row.name), testing::IsSupersetOf(before)) << row.name;
        EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                    HasSubstr(std::string("Error: Not given away: \"@/") + row.name +
                              "\" could have been put there by another user\n"));
    }
}

TEST_F(OtherUsers, RootsFileUnderANameOfTheWizardsIsReplacedAndStaysAsItWas) {
    for (const std::string &path : written) {
        const site host;
        fs::remove(path);
        add_file(path, "secret\n");
        ::chmod(path.c_str(), 0600);
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(upgrade(host, replacing).status, 0);
        struct stat status {};
        EXPECT_EQ(::fstat(file, &status), 0);
        EXPECT_EQ(status.st_uid, 0U) << path;
        EXPECT_EQ(status.st_mode & 07777U, 0600U) << path;
        ::close(file);
    }
}

// The files of the site that hold the secret are root's alone.
void expect_secrets_kept() {
    for (const char *directory : {"cgi-bin", "spool", "html"}) {
        for (const auto &entry : fs::recursive_directory_iterator(directory)) {
            struct stat status {};
            EXPECT_EQ(::lstat(entry.path().c_str(), &status), 0);
            if (S_ISREG(status.st_mode) &&
                read_file(entry.path()).find("secret") != std::string::npos) {
                EXPECT_EQ(status.st_uid, 0U) << entry.path();
                EXPECT_EQ(status.st_mode & 07777U, 0600U) << entry.path();
            }
        }
    }
}

TEST_F(OtherUsers, RootsPrivateFilesInASharedDistributionStayPrivate) {
    for (const char *name : {"kestrel.ini", "gxsetup.dat", "tpl/menu.tpl", "menu.js"}) {
        const world host("kestrel");
        const std::string file = std::string("dist/") + name;
        ::chmod("dist", 0777);
        ::chmod("dist/tpl", 0777);
        add_file(file, read_file("dist/gxdflt.dat") + "secret 1\n");
        ::chmod(file.c_str(), 0600);
        EXPECT_EQ(run_wizard(host, {}, no_to_both).status, 0);
        expect_secrets_kept();
    }
}

TEST_F(OtherUsers, RootsPrivateDirectoryAsTheTemplatesGivesNothingAway) {
    const world host("kestrel");
    ::chmod("dist", 0777);
    fs::rename("dist/tpl", "dist/away");
    add_file("dist/tpl/letter.tpl", "secret\n");
    ::chmod("dist/tpl", 0700);
    EXPECT_EQ(run_wizard(host, {}, no_to_both).status, 0);
    EXPECT_EQ(read_file("spool/kestrel/letter.tpl"), "secret\n");
    expect_secrets_kept();
    EXPECT_THAT(
        shown_log(host, "dist/gxsetup.log"),
        HasSubstr("Error: Not given away: \"./tpl/letter.tpl\" is private, and another user "
                  "could have put it there\n"));
}

TEST_F(OtherUsers, RootsLinkUnderTheNameOfATemplateGivesNothingAway) {
    const site host;
    add_file("elsewhere/settings", "kept\n");
    ::chmod("elsewhere/settings", 0644);
    fs::remove("spool/kestrel/clean.tpl");
    fs::create_symlink(host.path("elsewhere/settings"), "spool/kestrel/clean.tpl");
    EXPECT_THAT(upgrade(host, replacing).transcript, HasSubstr("upgrade successful"));
    struct stat status {};
    ASSERT_EQ(::stat("elsewhere/settings", &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(status.st_mode & 07777U, 0644U);
}

// --- Removal ---

TEST_F(OtherUsers, ALinkAmongTheTemplatesIsReportedAndStays) {
    const site host;
    host.plant_link("spool/kestrel/set", "private/home");
    const wizard_run run = run_wizard(host, {},
                                      {{"What do you want to do", "3"},
                                       {"old graphics and wav", "@/html/vlimg"},
                                       {"Remove all user information", "yes"}});
    EXPECT_THAT(run.transcript,
                HasSubstr("Error: \nCannot remove @/spool/kestrel/set: Not a directory\n"));
}

TEST_F(OtherUsers, TheirLinkAsTheTemplatesDirectoryIsNotEmptied) {
    const site host;
    host.plant_link("spool/kestrel", "private/home");
    const wizard_run run = run_wizard(
        host, {},
        in_order(
            {{"What do you want to do", "3"}, {"template files", ""}, {"template files", "q"}}));
    EXPECT_THAT(run.transcript, HasSubstr("[@/spool/kestrel]? @/spool/kestrel does not exist... "
                                          "please enter a valid directory\n"));
}

// --- Swapped during a run ---

// A process that waits for something to happen and does something then.
class swapper {
  public:
    swapper(const std::function<bool()> &has_come, const std::function<void()> &swap) {
        child_ = ::fork();
        if (child_ == 0) {
            while (!has_come()) {
                ::usleep(1000);
            }
            swap();
            ::_exit(0);
        }
    }
    // Whether it came to it.
    bool has_swapped() {
        int status = 1;
        return ::waitpid(child_, &status, WNOHANG) == child_ && status == 0;
    }
    ~swapper() {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    swapper(const swapper &) = delete;
    swapper &operator=(const swapper &) = delete;

  private:
    ::pid_t child_;
};

// Stops the program for a fifth of a second at each such call.
run_place slowed(const std::string &calls, const std::string &where) {
    run_place place;
    place.wrapper = {"/usr/bin/strace",
                     "-f",
                     "-o",
                     "/dev/null",
                     "-e",
                     "trace=" + calls,
                     "-e",
                     "inject=" + calls + ":" + where + "=200000"};
    place.settings = {{"ASAN_OPTIONS", "detect_leaks=0"}, {"LSAN_OPTIONS", "detect_leaks=0"}};
    return place;
}

class OtherUsersRaces : public OtherUsers {
  protected:
    void SetUp() override {
        OtherUsers::SetUp();
        if (!IsSkipped() && !can_refuse_calls()) {
            GTEST_SKIP() << "calls can be stopped only where strace is and may trace";
        }
    }
};

TEST_F(OtherUsersRaces, ADirectorySwappedForALinkDuringItsRemovalKeepsRootsTree) {
    const site host;
    for (const char *name : {"one", "two", "three", "four"}) {
        add_file(std::string("spool/kestrel/set/") + name + "/file", "");
    }
    const std::string set = host.path("spool/kestrel/set");
    const std::string away = host.path("spool/away");
    const std::string home = host.path("private/home");
    swapper other(
        [&] {
            int files = 0;
            for (const char *name : {"one", "two", "three", "four"}) {
                files += is_there(set + "/" + name + "/file") ? 1 : 0;
            }
            return files < 4;
        },
        [&] {
            fs::rename(set, away);
            fs::create_symlink(home, set);
        });
    run_wizard(host, {},
               {{"What do you want to do", "3"},
                {"old graphics and wav", "@/html/vlimg"},
                {"Remove kestrel CGI", "no"},
                {"Remove all user information", "yes"}},
               slowed("unlinkat,unlink,rmdir", "delay_enter"));
    EXPECT_TRUE(other.has_swapped());
}

TEST_F(OtherUsersRaces, AProgramSwappedForALinkBeforeItsModeIsGivenLeavesRootsFile) {
    const site host;
    fs::remove("cgi-bin/kestrel.cgi");
    const std::string program = host.path("cgi-bin/kestrel.cgi");
    const std::string letter = host.path("private/letter");
    swapper other([&] { return is_there(program) && fs::file_size(program) > 0; },
                  [&] {
                      fs::remove(program);
                      fs::create_symlink(letter, program);
                  });
    run_wizard(host, {}, install, slowed("chmod,fchmod,chown,fchown", "delay_enter"));
    EXPECT_TRUE(other.has_swapped());
}

TEST_F(OtherUsersRaces, ADirectorySwappedForALinkOnceItIsMadeGivesNothingAway) {
    const site host;
    fs::remove_all("html/vlimg");
    const std::string images = host.path("html/vlimg");
    const std::string away = host.path("html/away");
    const std::string home = host.path("private/home");
    swapper other([&] { return is_there(images); },
                  [&] {
                      fs::rename(images, away);
                      fs::create_symlink(home, images);
                      ::lchown(images.c_str(), web_user().pw_uid, web_user().pw_gid);
                  });
    run_wizard(host, {}, install, slowed("mkdir,mkdirat", "delay_exit"));
    EXPECT_TRUE(other.has_swapped());
}

// Linux before 5.6 has no call that walks by our rules.
TEST_F(OtherUsersRaces, WithoutTheSystemsOwnWalkAllIsTheSame) {
    const world one("tanager");
    run_wizard(one, {}, images_here + no_to_both);
    const std::string installed =
        tree_of(one, "cgi-bin") + tree_of(one, "html") + tree_of(one, "spool");
    run_place old_system;
    old_system.wrapper = {"/usr/bin/strace",
                          "-f",
                          "-o",
                          "/dev/null",
                          "-e",
                          "trace=openat2",
                          "-e",
                          "inject=openat2:error=ENOSYS"};
    old_system.settings = {{"ASAN_OPTIONS", "detect_leaks=0"}, {"LSAN_OPTIONS", "detect_leaks=0"}};
    const world other("tanager");
    run_wizard(other, {}, images_here + no_to_both, old_system);
    EXPECT_EQ(tree_of(other, "cgi-bin") + tree_of(other, "html") + tree_of(other, "spool"),
              installed);
}

// --- The working directory ---

TEST_F(OtherUsers, WhatIsPlantedInASharedWorkingDirectoryIsReplacedItself) {
    for (const char *name :
         {"gxsetup.log", "gxsetup1.log", "gxsetup2.log", "init.log", "ver.txt", "tmptlist.txt"}) {
        const site host;
        ::chmod("dist", 0777);
        host.plant_link(std::string("dist/") + name, "private/letter");
        const wizard_run run = upgrade(host);
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.transcript, HasSubstr("upgrade successful")) << name;
    }
}

TEST_F(OtherUsers, TheirLinkAmongTheFilesToCopyIsNotRead) {
    for (const char *name : {"dist/menu.js", "dist/tpl/menu.tpl", "dist/kestrel.ini"}) {
        const site host;
        ::chmod("dist", 0777);
        ::chmod("dist/tpl", 0777);
        host.plant_link(name, "private/letter");
        EXPECT_EQ(upgrade(host, replacing).status, 0);
        for (const auto &entry : fs::recursive_directory_iterator("html")) {
            EXPECT_THAT(read_file(entry.path()), Not(HasSubstr("dear reader"))) << name;
        }
        for (const char *directory : {"cgi-bin", "spool"}) {
            EXPECT_THAT(tree_of(host, directory), Not(HasSubstr("dear reader"))) << name;
        }
    }
}

TEST_F(OtherUsers, TheirLinkAsTheAnswersIsNotLoaded) {
    const site host;
    ::chmod("dist", 0777);
    host.plant_link("dist/gxsetup.dat", "private/letter");
    add_answers(host, "dist/gxdflt.dat",
                "cgi_path @/cgi-bin\ntemplates @/spool/kestrel\nvlimg_dir @/html/vlimg\n");
    EXPECT_THAT(upgrade(host).transcript, HasSubstr("upgrade successful"));
    EXPECT_THAT(read_file("dist/gxsetup.dat"), Not(HasSubstr("dear reader")));
    EXPECT_THAT(read_file("spool/kestrel/gxsetup.dat"), Not(HasSubstr("dear reader")));
}

// --- What a planted file says ---

TEST_F(OtherUsers, APlantedProgramNameStartsNothing) {
    for (const char *name : {"../elsewhere/planted", "@/elsewhere/planted", "*"}) {
        const site host;
        fs::remove("dist/gxsetup.dat");
        for (const char *path : {"elsewhere/planted.cgi", "elsewhere/planted"}) {
            add_script(path, "touch " + host.path("elsewhere/started") + "\necho Version: v9\n");
        }
        add_answers(host, "dist/gxdflt.dat", "templates @/spool/kestrel\n");
        add_answers(host, "spool/kestrel/gxsetup.dat", std::string("cgi_name ") + name + "\n");
        give_to_web_user("spool/kestrel/gxsetup.dat");
        EXPECT_THAT(run_wizard(host, {}, quit_at_the_menu).transcript,
                    HasSubstr("1 Install kestrel, version 3.2a\n"));
        EXPECT_FALSE(is_there("elsewhere/started")) << name;
        EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                    HasSubstr(std::string("Info:  cgi_name \"") + name +
                              "\" of @/spool/kestrel/gxsetup.dat is not taken: it is no bare file "
                              "name\n"));
    }
}

// --- Files without an end ---

TEST_F(OtherUsers, PipesAndSparseFilesAreNotReadForEver) {
    for (const char *path :
         {"spool/kestrel/gxsetup.dat", "cgi-bin/kestrel.ini", "spool/kestrel/clean.tpl"}) {
        const site host;
        fs::resize_file(path, std::uintmax_t{1} << 40);
        EXPECT_EQ(upgrade(host).status, 0) << path;
        const site again;
        fs::remove(path);
        ASSERT_EQ(::mkfifo(path, 0660), 0);
        give_to_web_user(path);
        EXPECT_EQ(upgrade(again).status, 0) << path;
    }
}

TEST_F(OtherUsers, AProgramOfTheirsRunsAsTheirUser) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "echo Version: v$(id -u)-$(id -g)-$(id -G)\n");
    give_to_web_user("dist/kestrel.cgi");
    const std::string id = std::to_string(web_user().pw_uid) + "-" +
                           std::to_string(web_user().pw_gid) + "-" +
                           std::to_string(web_user().pw_gid);
    EXPECT_THAT(run_wizard(host, {}, quit_at_the_menu).transcript,
                HasSubstr("1 Install kestrel, version " + id + "\n"));
}

TEST_F(OtherUsers, AProgramOfRootsRunsAsRootAlsoWhereOthersMayWrite) {
    const world host("kestrel");
    ::chmod("dist", 0777);
    add_script("dist/kestrel.cgi", "echo Version: v$(id -u)\n");
    EXPECT_THAT(run_wizard(host, {}, quit_at_the_menu).transcript,
                HasSubstr("1 Install kestrel, version 0\n"));
}

TEST_F(OtherUsers, AProgramOfRootsThatOthersMayWriteIsNotStarted) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "echo Version: v8\n");
    ::chmod("dist/kestrel.cgi", 0777);
    EXPECT_THAT(
        run_wizard(host, {}, console_script{{"What version", "6"}} + quit_at_the_menu).transcript,
        HasSubstr("1 Install kestrel, version 6\n"));
}

// --- Stamping ---

TEST_F(OtherUsers, StampingReadsNeitherTheirLinksNorSecondNames) {
    const site host;
    const std::string stamped = "checksum=";
    host.plant_link("spool/kestrel/link.tpl", "private/letter");
    host.plant_name("spool/kestrel/name.tpl");
    host.plant_link("spool/kestrel/temp.tpl", "private/letter");
    const wizard_run run =
        run_wizard(host, {"-checksum"}, {{"Directory for templates", "@/spool/kestrel"}});
    EXPECT_THAT(run.transcript, HasSubstr("x"));
    EXPECT_THAT(read_file("spool/kestrel/clean.tpl"), HasSubstr(stamped));
    EXPECT_TRUE(fs::is_symlink("spool/kestrel/link.tpl"));
}

TEST_F(OtherUsers, TwoStampingsAtOnceLeaveEveryTemplateWhole) {
    const world host("kestrel");
    for (int number = 0; number < 60; number++) {
        add_file("dist/tpl/page" + std::to_string(number) + ".tpl",
                 std::string(20000, static_cast<char>('a' + number % 26)) + "\n");
    }
    const auto stamp = [&host] {
        return run_wizard(host, {"-checksum"}, {{"Directory for templates", "@/dist/tpl"}});
    };
    const ::pid_t other = ::fork();
    if (other == 0) {
        ::_exit(stamp().transcript.find('x', 60) == std::string::npos ? 0 : 1);
    }
    const wizard_run run = stamp();
    int status = 1;
    ::waitpid(other, &status, 0);
    for (int number = 0; number < 60; number++) {
        const std::string text = read_file("dist/tpl/page" + std::to_string(number) + ".tpl");
        const std::string content(20000, static_cast<char>('a' + number % 26));
        EXPECT_EQ(text.substr(0, text.find("||checksum=")), content + "\n\n\n") << number;
        EXPECT_TRUE(text.ends_with("||\n") && text.size() < content.size() + 40) << number;
    }
    EXPECT_FALSE(is_there("dist/tpl/temp.tpl"));
}

// --- What root made is followed as before ---

TEST_F(OtherUsers, ASiteIsReachedThroughLinksThatRootMade) {
    const site host;
    fs::rename("spool/kestrel", "private/elsewhere");
    fs::create_symlink(host.path("private/elsewhere"), "spool/kestrel");
    fs::rename("private/elsewhere/clean.tpl", "dist/clean");
    fs::create_symlink(host.path("dist/clean"), "private/elsewhere/clean.tpl");
    EXPECT_THAT(upgrade(host).transcript, HasSubstr("upgrade successful"));
    EXPECT_TRUE(fs::is_symlink("spool/kestrel"));
    EXPECT_TRUE(fs::is_symlink("private/elsewhere/clean.tpl"));
    EXPECT_THAT(read_file("dist/clean"), HasSubstr("new clean"));
    fs::rename("private/elsewhere", "elsewhere");
}

TEST_F(OtherUsers, ABackupOfSecondNamesKeepsItsOldContent) {
    const site host;
    ASSERT_EQ(std::system("cp -al spool/kestrel backup"), 0);
    const std::string before = tree_of(host, "backup");
    EXPECT_EQ(upgrade(host).status, 0);
    EXPECT_EQ(tree_of(host, "backup"), before);
}

uid_t owner_of(const std::string &path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_uid;
}

TEST_F(OtherUsers, AnEmptyDirectoryInsideThatRootMadeIsGivenAway) {
    const site host;
    fs::create_directory("spool/kestrel/originals");
    upgrade(host, {{"original templates", "yes"}});
    EXPECT_TRUE(is_there("spool/kestrel/originals/clean.tpl"));
    EXPECT_EQ(owner_of("spool/kestrel/originals"), web_user().pw_uid);
}

// As an older installation for another user, or root's own, left it.
TEST_F(OtherUsers, ATreeOfRootsOrOfAFormerUserIsGivenAwayAsAWhole) {
    for (const uid_t former : {uid_t{0}, uid_t{4711}}) {
        const upgrade_world host("tanager");
        for (const auto &entry : fs::recursive_directory_iterator("spool/tanager")) {
            ASSERT_EQ(::lchown(entry.path().c_str(), former, former), 0);
        }
        ASSERT_EQ(::chown("spool/tanager", former, former), 0);
        ASSERT_EQ(::chmod("spool/tanager", 0755), 0);
        run_wizard(host, {},
                   images_here + install + console_script{{"switch to the upgrade", "no"}});
        for (const char *directory : {"", "/img", "/img/marble", "/manuals", "/marble", "/slate"}) {
            EXPECT_EQ(owner_of(std::string("spool/tanager") + directory), web_user().pw_uid)
                << former << directory;
        }
    }
}

} // namespace
