// Root among other users' files: what the web server's user planted before a run, or swaps during
// one, never makes root touch anything outside that user's own files, and the session's words are
// as ever. Links that root made are followed as before.

#include "support/rows.h"
#include "support/system_calls.h"
#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
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
        before_ = states_of({"private"});
    }

    // None of it has been touched.
    ~private_files() { EXPECT_TRUE(states_of({"private"}) == before_) << tree_of("private"); }

    private_files(const private_files &) = delete;
    private_files &operator=(const private_files &) = delete;

  private:
    tree_state before_;
};

// A directory in whose place the web server's user has put a link to root's private one, and the
// words of the session that meets it, on the screen or in the log.
struct planted_directory {
    const char *name;
    const char *product;
    const char *path;
    console_script answers;
    const char *words;
};

class OtherUsers : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root can plant files as another user";
        }
    }

    static void check(const planted_directory &row);
};

// A host on which 3.1 is installed for the web server's user and 3.2 unpacked. The script directory
// is that user's as well.
class site : public upgrade_world, public private_files {
  public:
    explicit site(const std::string &product = "kestrel") : upgrade_world(product) {
        for (const std::string &path :
             {"cgi-bin"s, "html"s, "html/vlimg"s, "spool"s, "spool/" + product}) {
            give_to_web_user(path);
        }
    }
};

// Puts a link of the web server's user in the place of a file or directory. A missing directory
// above it becomes that user's.
void plant_link(const world &host, const std::string &path, const std::string &target) {
    fs::remove_all(path);
    if (const fs::path above = fs::path(path).parent_path(); fs::create_directory(above)) {
        give_to_web_user(above);
    }
    fs::create_symlink(host.path(target), path);
    give_to_web_user(path);
}

// A second name of root's file.
void plant_name(const world & /*host*/, const std::string &path) {
    fs::remove_all(path);
    fs::create_hard_link("private/letter", path);
}

void plant_letter(const world &host, const std::string &path) {
    plant_link(host, path, "private/letter");
}

// Makes a private file of root's.
void add_secret(const std::string &path, const std::string &content = "secret\n") {
    fs::remove(path);
    add_file(path, content);
    ::chmod(path.c_str(), 0600);
}

void share_distribution() {
    ::chmod("dist", 0777);
    ::chmod("dist/tpl", 0777);
}

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

void OtherUsers::check(const planted_directory &row) {
    const site host(row.product);
    plant_link(host, row.path, "private/home");
    const wizard_run run = run_wizard(host, {}, row.answers);
    EXPECT_THAT(run.transcript + shown_log(host, "dist/gxsetup.log"), HasSubstr(row.words));
    EXPECT_TRUE(fs::is_symlink(row.path));
}

// --- Planted before a run ---

// Upgrades sites in each of which one of the paths is planted, all with the same words.
void expect_replaced_without_a_word(const std::vector<std::string> &paths,
                                    void (*plant)(const world &host, const std::string &path)) {
    const site twin;
    const std::string undisturbed = outcome_of(upgrade(twin, replacing));
    for (const std::string &path : paths) {
        const site host;
        plant(host, path);
        EXPECT_EQ(outcome_of(upgrade(host, replacing)), undisturbed) << path;
        EXPECT_FALSE(fs::is_symlink(path) && path.ends_with(".tpl")) << path;
    }
}

TEST_F(OtherUsers, LinksInThePlaceOfFilesAreReplacedThemselvesWithoutAWord) {
    expect_replaced_without_a_word(written, plant_letter);
}

TEST_F(OtherUsers, SecondNamesOfRootsFileAreReplacedThemselvesWithoutAWord) {
    std::vector<std::string> paths = written;
    paths.emplace_back("cgi-bin/kestrel.cgi");
    expect_replaced_without_a_word(paths, plant_name);
}

TEST_F(OtherUsers, DanglingLinksMakeNoFile) {
    for (const std::string &path : written) {
        const site host;
        plant_link(host, path, "private/made");
        upgrade(host);
        EXPECT_FALSE(is_there("private/made")) << path;
    }
}

const console_script removal = {{"What do you want to do", "3"},
                                {"old graphics and wav", "@/html/vlimg"},
                                {"Remove all user information", "yes"}};
const console_script replacing_sets =
    replacing +
    console_script{{"What do you want to do", "2"}, {"Where are the .gif", "@/html/vlimg"}};

const console_script installing_sets =
    images_here + console_script{{"What do you want to do", "1"}, {"upgrade questions", "no"}};

const std::vector<planted_directory> planted_directories = {
    {"OtherUsers.ALinkAsTheOriginalsIsADirectoryThatCannotBeCreated",
     "kestrel",
     "spool/kestrel/originals",
     {{"What do you want to do", "2"}, {"original templates", "yes"}},
     "\nupgrade unsuccessful\n"},
    {"OtherUsers.TheirLinkAsTheOriginalsOfSetsCannotBeCreated", "tanager",
     "spool/tanager/originals/tpl", installing_sets, "\ninstall unsuccessful\n"},
    {"OtherUsers.TheirLinkAsTheOriginalsOfWmlSetsCannotBeCreated", "tanager",
     "spool/tanager/originals/wap", installing_sets, "\ninstall unsuccessful\n"},
    {"OtherUsers.TheirLinkAsTheTemplatesDirectoryDoesNotExist", "kestrel", "spool/kestrel",
     in_order({{"What do you want to do", "2"},
               {"template files", "@/spool/kestrel"},
               {"template files", "q"}}),
     "Error: Not followed: \"@/spool/kestrel\" is a link that another user made\n"},
    {"OtherUsers.TheirLinkAsADirectoryOfTheInstallationCannotBeCreated", "tanager",
     "spool/tanager/img", replacing_sets, "pgrade unsuccessful"},
    {"OtherUsers.TheirLinkAsATemplateSetCannotBeCreated", "tanager", "spool/tanager/slate",
     replacing_sets, "pgrade unsuccessful"},
    {"OtherUsers.ALinkAmongTheTemplatesIsReportedAndStays", "kestrel", "spool/kestrel/set", removal,
     "Error: \nCannot remove @/spool/kestrel/set: Not a directory\n"},
    {"OtherUsers.TheirLinkAsTheTemplatesDirectoryIsNotEmptied", "kestrel", "spool/kestrel",
     in_order({{"What do you want to do", "3"}, {"template files", ""}, {"template files", "q"}}),
     "[@/spool/kestrel]? @/spool/kestrel does not exist... please enter a valid directory\n"},
};

const int registered = register_rows<OtherUsers>(planted_directories);

TEST_F(OtherUsers, ALinkAsATreeIsADirectoryThatCannotBeCreated) {
    const world host("kestrel");
    const private_files kept;
    fs::create_directory("spool/kestrel");
    give_to_web_user("spool/kestrel");
    plant_link(host, "spool/kestrel/tpl", "private/home");
    const wizard_run run = run_wizard(host, {}, no_to_both);
    EXPECT_THAT(run.transcript, HasSubstr("Error: \nError creating template set directory tpl.\n"));
    EXPECT_TRUE(fs::is_symlink("spool/kestrel/tpl"));
}

// --- What is root's, renamed by the web server's user ---

TEST_F(OtherUsers, RootsDirectoryUnderANameOfTheWizardsStaysRoots) {
    const std::vector<std::pair<const char *, std::string>> rows = {
        {"kestrel", "spool/kestrel/originals"},
        {"kestrel", "html/vlimg"},
        {"tanager", "spool/tanager/img"},
        {"tanager", "spool/tanager/slate"}};
    for (const auto &[product, name] : rows) {
        const upgrade_world host(product);
        give_to_web_user("html");
        fs::remove_all(name);
        add_secret(name + "/key");
        ::chmod(name.c_str(), 0700);
        const tree_state before = states_of({name});
        console_script script = replacing + console_script{{"original templates", "yes"}};
        if (has_sets(product)) {
            script = script + console_script{{"Where are the .gif", "@/html/vlimg"}};
        }
        const wizard_run run = upgrade(host, script);
        EXPECT_THAT(run.transcript, HasSubstr("upgrade successful")) << name;
        EXPECT_THAT(states_of({name}), testing::IsSupersetOf(before)) << name;
        EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                    HasSubstr("Error: Not given away: \"@/" + name +
                              "\" could have been put there by another user\n"));
    }
}

TEST_F(OtherUsers, RootsFileUnderANameOfTheWizardsIsReplacedAndStaysAsItWas) {
    for (const std::string &path : written) {
        const site host;
        add_secret(path);
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        upgrade(host, replacing);
        struct stat status {};
        EXPECT_EQ(::fstat(file, &status), 0);
        EXPECT_EQ(status.st_uid, 0U) << path;
        EXPECT_EQ(status.st_mode & 07777U, 0600U) << path;
        ::close(file);
    }
}

// The files of the site that hold the secret are root's alone.
void expect_secrets_kept() {
    for (const auto &[path, entry] : states_of({"cgi-bin", "spool", "html"})) {
        if (entry.content.find("secret") != std::string::npos) {
            EXPECT_EQ(entry.user, 0U) << path;
            EXPECT_EQ(entry.permissions(), 0600U) << path;
        }
    }
}

TEST_F(OtherUsers, RootsPrivateFilesInASharedDistributionStayPrivate) {
    for (const char *name : {"kestrel.ini", "gxsetup.dat", "tpl/menu.tpl", "menu.js"}) {
        const world host("kestrel");
        share_distribution();
        add_secret(std::string("dist/") + name, read_file("dist/gxdflt.dat") + "secret 1\n");
        run_wizard(host, {}, no_to_both);
        expect_secrets_kept();
    }
}

TEST_F(OtherUsers, RootsPrivateDirectoryAsTheTemplatesGivesNothingAway) {
    const world host("kestrel");
    ::chmod("dist", 0777);
    fs::rename("dist/tpl", "dist/away");
    add_file("dist/tpl/letter.tpl", "secret\n");
    ::chmod("dist/tpl", 0700);
    run_wizard(host, {}, no_to_both);
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
    EXPECT_EQ(state_of("elsewhere/settings").user, 0U);
    EXPECT_EQ(state_of("elsewhere/settings").permissions(), 0644U);
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
    return under_strace({"-f", "-o", "/dev/null", "-e", "trace=" + calls, "-e",
                         "inject=" + calls + ":" + where + "=200000"});
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
    swapper other(
        [] {
            constexpr std::array names = {"one", "two", "three", "four"};
            return !std::all_of(names.begin(), names.end(), [](const std::string &name) {
                return is_there("spool/kestrel/set/" + name + "/file");
            });
        },
        [&host] {
            fs::rename("spool/kestrel/set", "spool/away");
            fs::create_symlink(host.path("private/home"), "spool/kestrel/set");
        });
    run_wizard(host, {}, removal + console_script{{"Remove kestrel CGI", "no"}},
               slowed("unlinkat,unlink,rmdir", "delay_enter"));
    EXPECT_TRUE(other.has_swapped());
}

TEST_F(OtherUsersRaces, AProgramSwappedForALinkBeforeItsModeIsGivenLeavesRootsFile) {
    const site host;
    fs::remove("cgi-bin/kestrel.cgi");
    const char *program = "cgi-bin/kestrel.cgi";
    swapper other([&] { return is_there(program) && fs::file_size(program) > 0; },
                  [&] {
                      fs::remove(program);
                      fs::create_symlink(host.path("private/letter"), program);
                  });
    run_wizard(host, {}, install, slowed("chmod,fchmod,chown,fchown", "delay_enter"));
    EXPECT_TRUE(other.has_swapped());
}

TEST_F(OtherUsersRaces, ADirectorySwappedForALinkOnceItIsMadeGivesNothingAway) {
    const site host;
    fs::remove_all("html/vlimg");
    swapper other([] { return is_there("html/vlimg"); },
                  [&host] {
                      fs::rename("html/vlimg", "html/away");
                      plant_link(host, "html/vlimg", "private/home");
                  });
    run_wizard(host, {}, install, slowed("mkdir,mkdirat", "delay_exit"));
    EXPECT_TRUE(other.has_swapped());
}

// Linux before 5.6 has no call that walks by our rules.
TEST_F(OtherUsersRaces, WithoutTheSystemsOwnWalkAllIsTheSame) {
    const world one("tanager");
    run_wizard(one, {}, images_here + no_to_both);
    const std::string installed = site_tree(one);
    const world other("tanager");
    run_wizard(other, {}, images_here + no_to_both,
               under_strace({"-f", "-o", "/dev/null", "-e", "trace=openat2", "-e",
                             "inject=openat2:error=ENOSYS"}));
    EXPECT_EQ(site_tree(other), installed);
}

// --- The working directory ---

TEST_F(OtherUsers, WhatIsPlantedInASharedWorkingDirectoryIsReplacedItself) {
    for (const char *name :
         {"gxsetup.log", "gxsetup1.log", "gxsetup2.log", "init.log", "ver.txt", "tmptlist.txt"}) {
        const site host;
        ::chmod("dist", 0777);
        plant_letter(host, std::string("dist/") + name);
        EXPECT_THAT(upgrade(host).transcript, HasSubstr("upgrade successful")) << name;
    }
}

// No file that was written holds what root's letter says.
void expect_letter_unread(const std::string &planted) {
    for (const auto &[path, entry] : states_of({"dist", "cgi-bin", "html", "spool"})) {
        EXPECT_THAT(entry.content, Not(HasSubstr("dear reader"))) << path << " by " << planted;
    }
}

TEST_F(OtherUsers, TheirLinkAmongTheFilesToCopyIsNotRead) {
    for (const char *name : {"dist/menu.js", "dist/tpl/menu.tpl", "dist/kestrel.ini"}) {
        const site host;
        share_distribution();
        plant_letter(host, name);
        upgrade(host, replacing);
        expect_letter_unread(name);
    }
}

TEST_F(OtherUsers, TheirLinkAsTheAnswersIsNotLoaded) {
    const site host;
    share_distribution();
    plant_letter(host, "dist/gxsetup.dat");
    add_answers(host, "dist/gxdflt.dat",
                "cgi_path @/cgi-bin\ntemplates @/spool/kestrel\nvlimg_dir @/html/vlimg\n");
    EXPECT_THAT(upgrade(host).transcript, HasSubstr("upgrade successful"));
    expect_letter_unread("dist/gxsetup.dat");
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
        SCOPED_TRACE(path);
        const site host;
        fs::resize_file(path, std::uintmax_t{1} << 40);
        upgrade(host);
        const site again;
        fs::remove(path);
        ASSERT_EQ(::mkfifo(path, 0660), 0);
        give_to_web_user(path);
        upgrade(again);
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
    plant_letter(host, "spool/kestrel/link.tpl");
    plant_name(host, "spool/kestrel/name.tpl");
    plant_letter(host, "spool/kestrel/temp.tpl");
    const wizard_run run =
        run_wizard(host, {"-checksum"}, {{"Directory for templates", "@/spool/kestrel"}});
    EXPECT_THAT(run.transcript, HasSubstr("x"));
    EXPECT_THAT(read_file("spool/kestrel/clean.tpl"), HasSubstr("checksum="));
    EXPECT_TRUE(fs::is_symlink("spool/kestrel/link.tpl"));
    EXPECT_TRUE(fs::equivalent("spool/kestrel/name.tpl", "private/letter"));
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
    upgrade(host);
    EXPECT_EQ(tree_of(host, "backup"), before);
}

TEST_F(OtherUsers, AnEmptyDirectoryInsideThatRootMadeIsGivenAway) {
    const site host;
    fs::create_directory("spool/kestrel/originals");
    upgrade(host, {{"original templates", "yes"}});
    EXPECT_TRUE(is_there("spool/kestrel/originals/clean.tpl"));
    EXPECT_EQ(state_of("spool/kestrel/originals").user, web_user().pw_uid);
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
            EXPECT_EQ(state_of(std::string("spool/tanager") + directory).user, web_user().pw_uid)
                << former << directory;
        }
    }
}

} // namespace
