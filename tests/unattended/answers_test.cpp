// Which answers are taken, and what is said of those that are not.

#include "unattended/unattended_run.h"
#include "wizard/fixtures.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr int not_begun = 2;

struct refusal {
    std::string arguments; // between blanks
    std::string message;
};

std::vector<std::string> words_of(const std::string &text) {
    std::istringstream words(text);
    std::vector<std::string> result;
    for (std::string word; std::getline(words, word, ' ');) {
        result.push_back(word);
    }
    return result;
}

// Every one of these is refused before anything is changed.
void expect_refusals(const world &host, const std::vector<refusal> &refusals) {
    const std::string before = state_of(host);
    for (const refusal &one : refusals) {
        SCOPED_TRACE(one.arguments);
        const wizard_run run = run_unattended(host, words_of(one.arguments), {.status = not_begun});
        EXPECT_EQ(run.transcript, "");
        EXPECT_THAT(run.errors, StartsWith("gxsetup-unattended: " + one.message));
        EXPECT_EQ(state_of(host), before);
    }
}

} // namespace

using Refusals = unpacked_test<kestrel>;
using OspreyRefusals = unpacked_test<osprey>;
using AnswerFiles = Refusals;
using OspreyAnswerFiles = OspreyRefusals;

TEST_F(Refusals, OfAnInstallation) {
    const std::string directory_words = " does not exist... please enter a valid directory\n";
    expect_refusals(
        host,
        {{"install cgi_path=@/none", "cgi_path: @/none is refused: @/none" + directory_words},
         {"install cgi_path=cgi-bin",
          "cgi_path: cgi-bin is refused: No root given! please enter a directory from the "
          "root\n"},
         {"install templates=/", "templates: / is refused: /" + directory_words},
         {"install templates=no", "templates: no is a yes or a no, which is not asked for: "},
         {"install vlimg_dir=@/spool/kestrel",
          "vlimg_dir: @/spool/kestrel is refused: @/spool/kestrel does not exist... gxsetup "
          "will create it For efficiency, kestrel now source graphic and wav files from "},
         {"install wml=perhaps",
          "wml: perhaps is refused: Please enter either \"YES\" or \"NO\"\n"},
         {"install wml=N", "wml: N is refused: Please enter either \"YES\" or \"NO\"\n"},
         {"install keep_originals=maybe",
          "keep_originals: maybe is refused: Please enter either \"YES\" or \"NO\"\n"},
         {"install delete_temporary=1", "delete_temporary: 1 is refused: "},
         {"install domain=", "domain: no value is given\n"},
         {"install domain=q", "domain: q is a request to the wizard and no answer\n"},
         {"install domain=?", "domain: ? is a request to the wizard and no answer\n"},
         {"install domain=a\nb", "domain: the value has more than one line\n"},
         {"install domain=" + std::string(512, 'd'),
          "domain: the value has more than 511 characters\n"},
         {"install domian=example.org", "domian: no question has this name\n"},
         {"install action=upgrade", "action: no question has this name\n"},
         {"install change_answers=yes", "change_answers: no question has this name\n"},
         {"install imaphost=a.example", "imaphost: nothing asks for it in this install of kestrel"},
         {"install manual=@/m", "manual: nothing asks for it in this install of kestrel"},
         {"install replace_templates=yes", "replace_templates: nothing asks for it in this "},
         {"install remove_programs=yes", "remove_programs: nothing asks for it in this "},
         {"install view_list=yes", "view_list: nothing asks for it in this "},
         {"install prod_name=plover", "prod_name: plover is not asked for here: it is kestrel\n"},
         {"install version=3.1", "version: 3.1 is not asked for here: it is 3.2a\n"},
         {"install --expect-product osprey", "osprey was expected, but this is kestrel\n"},
         {"install --expect-version=3.2", "version 3.2 was expected, but this is 3.2a\n"},
         {"upgrade", "kestrel is not in @/cgi-bin, where the last run has put it: "},
         {"remove", "kestrel is not in @/cgi-bin, and cgi_name names no other program\n"},
         {"remove cgi_name=other", "cgi_name: other is refused: gxsetup cannot find an old "},
         {"reinstall", "there is no action 'reinstall'\n"},
         {"", "install, upgrade or remove?\n"},
         {"-C @/none install", "@/none: No such file or directory\n"},
         {"-C @/html install", "there is no distribution of a product here\n"},
         {"-C @/html install prod_name=kestrel",
          "version is missing, and nothing is offered for it: What version of kestrel is it\n"}});
}

TEST_F(Refusals, NameWhatIsOffered) {
    std::filesystem::remove("cgi-bin");
    expect_refusals(host,
                    {{"install", "cgi_path: what is offered, @/cgi-bin, is refused: @/cgi-bin does "
                                 "not exist"}});
}

TEST_F(Refusals, ComeBeforeAnythingIsDoneWhereSignalsOfChildrenAreIgnored) {
    const std::string ignoring = "env --ignore-signal=CHLD";
    const std::string before = state_of(host);
    const wizard_run refused =
        run_unattended(host, {"install", "cgi_path=@/none"}, {.status = not_begun}, ignoring);
    EXPECT_THAT(refused.errors, StartsWith("gxsetup-unattended: cgi_path: @/none is refused: "));
    run_unattended(host, {"--rehearse", "install"}, {}, ignoring);
    EXPECT_EQ(state_of(host), before);
}

TEST_F(Refusals, OfAnUpgradeAndOfARemoval) {
    install_31_and_unpack_32(host);
    expect_refusals(
        host,
        {{"upgrade domain=a.example", "domain: nothing asks for it in this upgrade of kestrel 3.2"},
         {"upgrade replace_safe=some", "replace_safe: some is refused: "},
         {"upgrade view_list=some", "view_list: some is refused: "},
         {"upgrade templates=@/none", "templates: @/none is refused: @/none does not exist"},
         {"remove remove_programs=all", "remove_programs: all is refused: "},
         {"remove remove_programs=yes templates=@/none", "templates: @/none is refused: "},
         {"remove remove_programs=yes keep_originals=no", "keep_originals: nothing asks for "},
         {"remove cgi_name=other", "cgi_name: other is not asked for here: it is kestrel\n"}});
}

TEST_F(OspreyRefusals, OfTheHostsOfAList) {
    const std::string images = "install vlimg_dir=@/html/vlimg ";
    expect_refusals(host, {{images + "restrict_hosts=yes",
                            "allow_host_login is missing: restrict_hosts is yes\n"},
                           {images + "allow_host_login=a.example",
                            "allow_host_login: nothing asks for it in this install of osprey"},
                           {images + "restrict_hosts=yes allow_host_login=.",
                            "allow_host_login: . ends the list and is no host\n"}});
}

TEST_F(Refusals, OfAVersionThatNothingTells) {
    add_program("dist/kestrel.cgi", "no version\n");
    expect_refusals(
        host, {{"install", "version is missing, and nothing is offered for it: What version of "
                           "kestrel is it\n"}});
    run_unattended(host, {"-n", "install", "version=3.9"});
}

TEST_F(AnswerFiles, GiveWayToTheCommandLineAndToLaterFiles) {
    write_file("first", "domain first.example\npophost first.example\nsmtphost first.example\n");
    write_file("second", "# comment\n\npophost second.example\nsmtphost second.example\n");
    const wizard_run run =
        run_unattended(host, {"-n", "install", "smtphost=third.example", "@/first", "@/second"});
    EXPECT_THAT(run.transcript, HasSubstr("pop host:            second.example\n"
                                          "smtp host:           third.example\n"
                                          "domain name:         first.example\n"));
}

TEST_F(AnswerFiles, OfTheExamplesFitTheirProducts) {
    for (const std::string &product : product_names()) {
        SCOPED_TRACE(product);
        const world one(product);
        write_file("answers", read_file(EXAMPLES + product + "/answers"));
        std::vector<std::string> arguments = {"-n",
                                              "install",
                                              "@/answers",
                                              "cgi_path=@/cgi-bin",
                                              "templates=@/spool/new",
                                              "vlimg_dir=@/html/vlimg"};
        if (has_sets(product)) {
            arguments.insert(arguments.end(), {"manual=@/spool/m", "bulletin_path=@/spool/b"});
        }
        run_unattended(one, arguments);
    }
}

TEST_F(AnswerFiles, ThatOthersMayWriteAreRefused) {
    write_file("answers", "domain example.org\n");
    for (const mode_t mode : {0664U, 0646U}) {
        ::chmod("answers", mode);
        expect_refusals(host, {{"install @/answers", "@/answers: others may write it\n"}});
    }
    ::chmod("answers", 0600);
    run_unattended(host, {"-n", "install", "@/answers"});
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give a file away";
    }
    ASSERT_EQ(::chown("answers", 1, 0), 0);
    expect_refusals(host, {{"install @/answers", "@/answers: it belongs to another user\n"}});
}

TEST_F(AnswerFiles, ThatASettingsFileWouldReadOtherwiseAreRefused) {
    const std::vector<std::pair<std::string, std::string>> files = {
        {std::string("domain a\0b\n", 11), "line 1 has a NUL byte\n"},
        {"# comment\ndomain\n", "line 2 has no value\n"},
        {"domain \n", "line 1 has no value\n"},
        {"domain " + std::string(503, 'd') + "\n", "line 1 has more than 509 characters\n"},
        {"domain " + std::string(10000, 'd') + "\n", "line 1 has more than 509 characters\n"},
        {"domain q\n", "domain: q is a request to the wizard and no answer\n"},
        {"domian a.example\n", "domian: no question has this name\n"},
    };
    for (const auto &[content, message] : files) {
        write_file("answers", content);
        expect_refusals(host, {{"install @/answers", "@/answers: " + message}});
    }
}

TEST_F(AnswerFiles, ThatAreNoPlainFilesOrTooLargeAreRefused) {
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    write_file("large", "domain example.org\n");
    std::filesystem::resize_file("large", (16 << 20) + 1);
    expect_refusals(host, {{"install @/none", "@/none: No such file or directory\n"},
                           {"install @/pipe", "@/pipe: Invalid argument\n"},
                           {"install @/html", "@/html: Is a directory\n"},
                           {"install @/large", "@/large: File too large\n"}});
}

TEST_F(OspreyAnswerFiles, OfAHundredThousandLinesAreTaken) {
    std::string hosts = "restrict_hosts yes\nvlimg_dir " + host.path("html/vlimg") + "\n";
    for (int number = 0; number < 100000; number++) {
        hosts += "allow_host_login host" + std::to_string(number) + ".example\n";
    }
    write_file("answers", hosts);
    const wizard_run run = run_unattended(host, {"-q", "install", "@/answers"});
    EXPECT_THAT(read_file("cgi-bin/osprey.ini"),
                HasSubstr("\nallow_host_login host99999.example\n"));
}
