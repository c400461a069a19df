// What the world does to an install: files that are missing, in the way or unreadable, full disks,
// streams that are closed.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const std::string rule =
    "\n-------------------------------------------------------------------------------\n";

// Enter throughout, but the originals and the removal of temporary files are declined.
constexpr const char *flat_install = "1\n\n\n\n\n\n\n\n\n\nno\nno\n\n";
constexpr const char *set_install = "1\n\n\n\n\n@/html/vlimg\n\n\n\n\n\n\n\nno\nno\n\n";

// The part of a transcript from the line after "Please wait" to the outcome.
std::string steps_of(const std::string &transcript) {
    const std::string_view begin = "\nPlease wait while gxsetup installs ";
    const std::size_t from = transcript.find('\n', transcript.find(begin) + 1) + 1;
    return transcript.substr(from, transcript.find(rule + "Installation ") - from);
}

std::string end_of(const std::string &transcript) {
    return transcript.substr(transcript.find(rule + "Installation "));
}

// How an install that failed ends; the two offers were declined.
std::string unsuccessful(const std::string &product) {
    return outcome("@/spool/" + product, "unsuccessful") +
           "\nShall I delete the temporary files [YES]? " +
           farewell(product, "http://example.com/cgi-bin/" + product + ".cgi",
                    "install unsuccessful");
}

TEST(Failures, MissingSampleIniIsReported) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.ini");
    const wizard_run run = run_wizard(host, {}, flat_install);
    EXPECT_EQ(steps_of(run.transcript), "\n"
                                        "Copying template files.......................\n"
                                        "Copying graphic and wav files...\n"
                                        "Copying VBS and JS files..\n"
                                        "Copying cgi files.\n"
                                        "Creating kestrel.ini file"
                                        "Error: Can't open kestrel.ini\n");
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.ini"));
    // The next run offers the upgrade all the same.
    EXPECT_NE(read_file("dist/gxsetup.dat").find("\naction upgrade\n"), std::string::npos);
}

TEST(Failures, MissingSampleOfTheWmlPartLeavesTheProductsOwn) {
    const world host("kestrel");
    std::filesystem::remove("dist/merlin.ini");
    const wizard_run run = run_wizard(host, {}, "1\n\n\n\n\n\n\n\nyes\n\nno\nno\n\n");
    EXPECT_TRUE(steps_of(run.transcript)
                    .ends_with("\n"
                               "Creating kestrel.ini file..\n"
                               "Creating merlin.ini file"
                               "Error: Can't open merlin.ini\n"))
        << run.transcript;
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n"
                                        "0770 cgi-bin/merlin.cgi\n");
}

TEST(Failures, SourceThatCannotBeReadIsReportedAndTheRestCopied) {
    const world host("tanager");
    std::filesystem::remove("dist/manuals/index.html");
    std::filesystem::create_symlink("nowhere", "dist/manuals/index.html");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_EQ(steps_of(run.transcript),
              "\n"
              "Copying template files.......\n"
              "Copying graphic and wav files........\n"
              "Copying cgi files.\n"
              "Copying manual files"
              "Error: Can't copy ./manuals/index.html: No such file or directory\n"
              "\n"
              "Copying cgi files.\n"
              "Creating tanager.ini file.");
    EXPECT_EQ(end_of(run.transcript), unsuccessful("tanager"));
}

TEST(Failures, PipeIsNotWaitedFor) {
    const world host("tanager");
    std::filesystem::remove("dist/manuals/index.html");
    ASSERT_EQ(::mkfifo("dist/manuals/pipe", 0666), 0);
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_NE(run.transcript.find("\nCopying manual files"
                                  "Error: Can't copy ./manuals/pipe: Invalid argument\n"),
              std::string::npos)
        << run.transcript;
    EXPECT_EQ(end_of(run.transcript), unsuccessful("tanager"));
}

TEST(Failures, ProgramThatIsAPipeIsNotWaitedForEither) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.cgi");
    ASSERT_EQ(::mkfifo("dist/kestrel.cgi", 0777), 0);
    const wizard_run run = run_wizard(host, {}, std::string("9\n") + flat_install);
    EXPECT_TRUE(steps_of(run.transcript)
                    .ends_with("\nCopying cgi files"
                               "Error: Can't copy kestrel.cgi: Invalid argument\n"
                               "\n"
                               "Creating kestrel.ini file."))
        << run.transcript;
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
}

TEST(Failures, ErrorIsReadAsAFormatOnceMoreForTheLog) {
    const world host("tanager");
    std::filesystem::create_symlink("nowhere", "dist/manuals/%s%n%d%%");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_NE(
        run.transcript.find("Error: Can't copy ./manuals/%s%n%d%%: No such file or directory\n"),
        std::string::npos)
        << run.transcript;
    const std::string log = shown_log(host, "dist/gxsetup.log");
    EXPECT_NE(log.find("Error: Can't copy ./manuals/<NULL>%n0%: No such file or directory\n"),
              std::string::npos)
        << log;
}

TEST(Failures, MissingTemplateSetsDoNotFailTheInstall) {
    const world host("osprey");
    std::filesystem::remove_all("dist/tpl");
    std::filesystem::remove_all("dist/img");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_EQ(steps_of(run.transcript), "\n"
                                        "Copying template files\n"
                                        "Copying graphic and wav files\n"
                                        "Copying cgi files.\n"
                                        "Copying manual files.\n"
                                        "Copying cgi files.\n"
                                        "Creating osprey.ini file.");
    EXPECT_NE(run.transcript.find("\nInstallation successful.\n"), std::string::npos);
    EXPECT_NE(shown_file(host, "cgi-bin/osprey.ini").find("\ntemplates @/spool/osprey\n"),
              std::string::npos);
    EXPECT_EQ(read_file("cgi-bin/osprey.ini").find("\ntpl_set "), std::string::npos);
}

TEST(Failures, FileWhereTheImagesDirectoryShouldBeIsReportedForEachPicture) {
    const world host("kestrel");
    add_file("html/vlimg", "in the way");
    const wizard_run run = run_wizard(host, {}, flat_install);
    const auto refused = [](const std::string &name) {
        return rule + "Error: Can't write to \"@/html/vlimg/" + name + "\": Not a directory\n\n";
    };
    EXPECT_EQ(steps_of(run.transcript), "\n"
                                        "Copying template files........................\n"
                                        "Copying graphic and wav files" +
                                            refused("back.jpg") + refused("bell.wav") +
                                            refused("logo.gif") +
                                            "\n"
                                            "Copying VBS and JS files" +
                                            refused("menu.vbs") + refused("menu.js") +
                                            "\n"
                                            "Copying cgi files.\n"
                                            "Creating kestrel.ini file.");
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
    EXPECT_EQ(read_file("html/vlimg"), "in the way");
}

TEST(Failures, DirectoryWhereTheProgramShouldBeIsReported) {
    const world host("kestrel");
    std::filesystem::create_directory("cgi-bin/merlin.cgi");
    const wizard_run run = run_wizard(host, {}, "1\n\n\n\n\n\n\n\nyes\n\nno\nno\n\n");
    EXPECT_TRUE(steps_of(run.transcript)
                    .ends_with("\nCreating kestrel.ini file." + rule +
                               "Error: Can't write to \"@/cgi-bin/merlin.cgi\": Is a directory\n\n"
                               "\n"
                               "Creating merlin.ini file."))
        << run.transcript;
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
}

TEST(Failures, DirectoryWhereTheIniShouldBeIsReported) {
    const world host("kestrel");
    add_file("cgi-bin/kestrel.ini/full", "");
    const wizard_run run = run_wizard(host, {}, flat_install);
    EXPECT_TRUE(steps_of(run.transcript)
                    .ends_with("\nCreating kestrel.ini file"
                               "Error: Can't open @/cgi-bin/kestrel.ini\n"))
        << run.transcript;
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
}

TEST(Failures, TemplatesDirectoryThatCannotBeMadeFailsTheInstall) {
    const world host("tanager");
    add_file("spool/tanager", "in the way");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_NE(run.transcript.find("\nInstallation unsuccessful.\n"), std::string::npos);
    EXPECT_NE(
        run.transcript.find(
            "Error: Can't write to \"@/spool/tanager/manuals/index.html\": Not a directory\n"),
        std::string::npos)
        << run.transcript;
    EXPECT_EQ(read_file("spool/tanager"), "in the way");
    EXPECT_TRUE(is_there("cgi-bin/tanager.cgi"));
    EXPECT_TRUE(is_there("dist/gxsetup.dat"));
    EXPECT_EQ(run.status, 0);
}

TEST(Failures, FullDiskIsReportedAndTheOldIniStays) {
    if (!can_mount()) {
        GTEST_SKIP() << "only root may mount a small disk";
    }
    const world host("kestrel");
    const std::string disk = host.path("cgi-bin");
    const std::string program = "dist/kestrel.cgi";
    add_script(program, "echo Version: v3.2a\nexit 0\n" + std::string(20000, '#') + "\n");
    const wizard_run run =
        run_wizard(host, {}, flat_install, {.prepare = [disk] { mount_small_disk(disk, "8k"); }});
    EXPECT_TRUE(
        steps_of(run.transcript)
            .ends_with("\nCopying cgi files" + rule +
                       "Error: Problem writing \"@/cgi-bin/kestrel.cgi\": No space left on "
                       "device\n\n"
                       "\n"
                       "Creating kestrel.ini file"
                       "Error: Can't write @/cgi-bin/kestrel.ini: No space left on device\n"))
        << run.transcript;
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
    EXPECT_EQ(run.status, 0);
}

TEST(Failures, LogThatCannotBeWrittenDoesNotStopTheInstall) {
    const world host("kestrel");
    for (const char *name : {"gxsetup.log", "gxsetup1.log", "gxsetup2.log"}) {
        add_file(std::string("dist/") + name + "/full", "");
    }
    const wizard_run run = run_wizard(host, {}, flat_install);
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.transcript.starts_with("Error: log file cannot be opened\n"
                                           "Cant open logfile ./gxsetup.log\n"))
        << run.transcript;
    EXPECT_NE(run.transcript.find("\nInstallation successful.\n"), std::string::npos);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
}

TEST(Failures, FullDiskIsSaidAtEachLineOfTheLog) {
    if (!can_mount()) {
        GTEST_SKIP() << "only root may mount a small disk";
    }
    const world host("kestrel");
    const std::string disk = host.path("dist");
    const wizard_run run = run_wizard(host, {"-x"}, "", {.prepare = [disk] {
                                          mount_small_disk(disk, "4k");
                                          write_file(disk + "/full", std::string(4096, '#'));
                                      }});
    EXPECT_EQ(run.transcript, "Error printing to log file\n"
                              "Error: Invalid Argument\n"
                              "Error printing to log file\n"
                              "Error: Help file not found\n\n"
                              "Error printing to log file\n");
    EXPECT_EQ(run.status, 1);
}

TEST(Failures, FileThatMayNotGrowIsReportedAndTheInstallGoesOn) {
    const world host("kestrel");
    const std::string program = "dist/kestrel.cgi";
    add_script(program, "echo Version: v3.2a\nexit 0\n" + std::string(100'000, '#') + "\n");
    const wizard_run run = run_wizard(host, {}, flat_install, {.prepare = [] {
                                          const ::rlimit limit = {65536, 65536};
                                          ::setrlimit(RLIMIT_FSIZE, &limit);
                                      }});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(
        steps_of(run.transcript)
            .ends_with("\nCopying cgi files" + rule +
                       "Error: Problem writing \"@/cgi-bin/kestrel.cgi\": File too large\n\n"
                       "\n"
                       "Creating kestrel.ini file."))
        << run.transcript;
    EXPECT_EQ(std::filesystem::file_size("cgi-bin/kestrel.cgi"), 65536U);
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
}

TEST(Failures, OutputThatNobodyReadsDoesNotStopTheInstall) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, flat_install, {.prepare = [] {
                                          std::array<int, 2> ends{};
                                          ASSERT_EQ(::pipe(ends.data()), 0);
                                          ::dup2(ends[1], STDOUT_FILENO);
                                          ::close(ends[0]);
                                          ::close(ends[1]);
                                      }});
    EXPECT_EQ(run.transcript, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
    EXPECT_TRUE(shown_log(host, "dist/gxsetup.log")
                    .ends_with("Info:  install successful\nInfo:  * gxsetup finished *\n"));
}

TEST(Failures, FullOutputDoesNotStopTheInstall) {
    const world host("kestrel");
    const wizard_run run =
        run_wizard(host, {}, flat_install,
                   {.prepare = [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); }});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
    EXPECT_TRUE(shown_log(host, "dist/gxsetup.log").ends_with("* gxsetup finished *\n"));
}

TEST(Failures, ClosedOutputDoesNotStopStampingOrRemoval) {
    const world host("kestrel");
    const run_place place = {.prepare = [] { ::close(STDOUT_FILENO); }};
    run_wizard(host, {}, flat_install);
    EXPECT_EQ(run_wizard(host, {"-header"}, "@/dist/tpl\nset\n1\n@/dist/tpl\n\n", place).status, 0);
    EXPECT_TRUE(read_file("dist/tpl/index.tpl").starts_with("||header: modified=false"));
    const std::string removal = "3\n\nyes\nno\n\nyes\n\nno\n\nyes\n\n";
    EXPECT_EQ(run_wizard(host, {}, removal, place).status, 0);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
    EXPECT_FALSE(is_there("spool/kestrel"));
}

TEST(Failures, ClosedOutputDoesNotStopTheInstall) {
    const world host("kestrel");
    const wizard_run run =
        run_wizard(host, {}, flat_install, {.prepare = [] { ::close(STDOUT_FILENO); }});
    EXPECT_EQ(run.transcript, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n");
    EXPECT_TRUE(read_file("dist/gxsetup.dat").starts_with("# file written by gxsetup"));
    EXPECT_TRUE(shown_log(host, "dist/gxsetup.log")
                    .ends_with("Info:  install successful\nInfo:  * gxsetup finished *\n"));
}

TEST(Failures, ClosedInputIsTheEndOfInput) {
    const world host("kestrel");
    const wizard_run run =
        run_wizard(host, {}, flat_install, {.prepare = [] { ::close(STDIN_FILENO); }});
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + quit_at_a_question);
    EXPECT_EQ(run.status, 0);
}

TEST(Failures, AllStreamsClosedLeavesEveryFileAsItShouldBe) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, "", {.prepare = [] {
                                          for (int stream = 0; stream <= 2; stream++) {
                                              ::close(stream);
                                          }
                                      }});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini "
              "settings\n");
}

// --- Permissions ---

void set_mode(const std::string &path, unsigned mode) {
    std::filesystem::permissions(path, std::filesystem::perms(mode));
}

TEST(Permissions, UnreadableSourceIsReportedAndTheRestCopied) {
    const world host("tanager");
    set_mode("dist/manuals/index.html", 0);
    const wizard_run run = run_wizard(host, {}, set_install, as_ordinary_user(host));
    EXPECT_EQ(steps_of(run.transcript),
              "\n"
              "Copying template files.......\n"
              "Copying graphic and wav files........\n"
              "Copying cgi files.\n"
              "Copying manual files"
              "Error: Can't copy ./manuals/index.html: Permission denied\n"
              "\n"
              "Copying cgi files.\n"
              "Creating tanager.ini file.");
    EXPECT_EQ(end_of(run.transcript), unsuccessful("tanager"));
}

TEST(Permissions, ProgramsDirectoryThatMayNotBeWrittenFailsTheInstall) {
    const world host("kestrel");
    set_mode("cgi-bin", 0555);
    const wizard_run run = run_wizard(host, {}, flat_install, as_ordinary_user(host));
    EXPECT_TRUE(
        steps_of(run.transcript)
            .ends_with("\nCopying cgi files" + rule +
                       "Error: Can't write to \"@/cgi-bin/kestrel.cgi\": Permission denied\n\n"
                       "\n"
                       "Creating kestrel.ini file"
                       "Error: Can't open @/cgi-bin/kestrel.ini\n"))
        << run.transcript;
    EXPECT_EQ(end_of(run.transcript), unsuccessful("kestrel"));
    EXPECT_EQ(run.status, 0);
}

TEST(Permissions, IniThatMayNotBeWrittenStaysAsItWas) {
    const world host("kestrel");
    add_file("cgi-bin/kestrel.ini", "old 1\n");
    set_mode("cgi-bin/kestrel.ini", 0444);
    const wizard_run run = run_wizard(host, {}, flat_install, as_ordinary_user(host));
    EXPECT_TRUE(steps_of(run.transcript)
                    .ends_with("\nCreating kestrel.ini file"
                               "Error: Can't open @/cgi-bin/kestrel.ini\n"))
        << run.transcript;
    EXPECT_EQ(read_file("cgi-bin/kestrel.ini"), "old 1\n");
}

TEST(Permissions, DistributionThatMayNotBeWrittenHasNoLogAndNoVersion) {
    const world host("kestrel");
    set_mode("dist", 0555);
    const wizard_run run = run_wizard(host, {}, "7\n4\n\n", as_ordinary_user(host));
    EXPECT_EQ(run.transcript, "Error: log file cannot be opened\n"
                              "Cant open logfile ./gxsetup.log\n"
                              "Cant open logfile ./gxsetup.log\n"
                              "\nWhat version of kestrel is it? " +
                                  welcome + menu("kestrel", "7") + goodbye);
    EXPECT_EQ(run.status, 0);
}

TEST(Permissions, FilesOfAnInstallWithoutRootStayTheUsersOwn) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, flat_install, as_ordinary_user(host));
    EXPECT_NE(run.transcript.find("\nInstallation successful.\n"), std::string::npos);
    struct stat templates {};
    struct stat distribution {};
    ASSERT_EQ(::stat("spool/kestrel/index.tpl", &templates), 0);
    ASSERT_EQ(::stat("dist", &distribution), 0);
    EXPECT_EQ(templates.st_uid, distribution.st_uid);
    EXPECT_EQ(templates.st_mode & 07777U, 0660U);
}

// --- Places that are one ---

TEST(Places, InstallingWhereTheDistributionLiesDeletesNothing) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, "1\n\n@/dist\n@/html/vlimg\n\n\n\n\n\n\nno\n\n");
    EXPECT_EQ(steps_of(run.transcript), "\n"
                                        "Copying template files......\n"
                                        "Copying graphic and wav files...\n"
                                        "Copying VBS and JS files..\n"
                                        "Copying cgi files.\n"
                                        "Creating kestrel.ini file.");
    // The log and the answers lie in place already: no dots stand for their copies.
    EXPECT_EQ(end_of(run.transcript),
              outcome("@/dist") +
                  "\n"
                  "\n"
                  "Thank-you for installing kestrel\n"
                  "\n"
                  "To connect to kestrel enter the following URL on your web browser\n"
                  "\n"
                  "    http://example.com/cgi-bin/kestrel.cgi\n" +
                  rule + "install successful\n\n\nPlease press enter to quit...\n");
    EXPECT_TRUE(is_there("dist/tpl/index.tpl"));
    EXPECT_EQ(read_file("dist/index.tpl"), "index template\n");
    EXPECT_EQ(read_file("dist/kestrel.ini"), read_file("cgi-bin/kestrel.ini"));
    EXPECT_FALSE(read_file("dist/gxsetup.dat").empty());
}

TEST(Places, TheRunningSetupInTheDistributionIsInPlaceAlready) {
    const world host("kestrel");
    // A program that runs cannot be opened to be written.
    const run_place own_program = {
        .wrapper = {"/bin/sh", "-c",
                    "cp -f \"$0\" gxsetup && chmod 755 gxsetup && exec ./gxsetup"}};
    const wizard_run run =
        run_wizard(host, {}, "1\n\n@/dist\n@/html/vlimg\n\n\n\n\n\n\nno\n\n", own_program);
    EXPECT_TRUE(steps_of(run.transcript).starts_with("\nCopying template files......\n"))
        << run.transcript;
    EXPECT_NE(run.transcript.find("\nInstallation successful.\n"), std::string::npos)
        << run.transcript;
}

TEST(Places, ProgramsDirectoryThatIsTheDistributionKeepsItsProgram) {
    const world host("kestrel");
    const std::string program = read_file("dist/kestrel.cgi");
    const wizard_run run =
        run_wizard(host, {}, "1\n@/dist\nno\n\n@/html/vlimg\n\n\n\n\n\n\nno\nno\n\n");
    EXPECT_NE(run.transcript.find("\nInstallation successful.\n"), std::string::npos)
        << run.transcript;
    EXPECT_EQ(read_file("dist/kestrel.cgi"), program);
    EXPECT_EQ(read_file("dist/kestrel.ini").substr(0, 32), "# kestrel.ini created by gxsetup");
    EXPECT_NE(read_file("dist/kestrel.ini").find("timeout 30\n"), std::string::npos);
}

TEST(Places, UsersDirectoriesAndTheSetupsOwnFilesOutliveTheTemporaryFiles) {
    const world host("kestrel");
    add_file("dist/u_carol/mail", "mail\n");
    add_file("dist/gxsetup-notes.txt", "notes\n");
    add_file("dist/tpl/u_dave/mail", "mail\n");
    const wizard_run run = run_wizard(host, {}, "1\n\n\n\n\n\n\n\n\n\nno\nyes\n\n");
    EXPECT_NE(run.transcript.find("Error: \nCannot remove tpl: Directory not empty\n"),
              std::string::npos)
        << run.transcript;
    EXPECT_EQ(tree_of(host, "dist"), "0644 dist/gxsetup \"the setup program\"\n"
                                     "0644 dist/gxsetup-notes.txt \"notes\"\n"
                                     "0644 dist/gxsetup.dat\n"
                                     "0644 dist/gxsetup.log\n"
                                     "0644 dist/gxsetup1.log \"\"\n"
                                     "0755 dist/tpl/\n"
                                     "0755 dist/tpl/u_dave/\n"
                                     "0644 dist/tpl/u_dave/mail \"mail\"\n"
                                     "0755 dist/u_carol/\n"
                                     "0644 dist/u_carol/mail \"mail\"\n");
    // The outcome was shown before; the end tells.
    EXPECT_NE(run.transcript.find("\nInstallation successful.\n"), std::string::npos);
    EXPECT_NE(run.transcript.find("\ninstall unsuccessful\n"), std::string::npos);
}

} // namespace
