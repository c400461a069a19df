#include "setup/defaults.h"

#include "setup/answer_store.h"
#include "support/asked_console.h"
#include "support/expected.h"
#include "support/scratch_test.h"

#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char *comment = "# file written by gxsetup, version 3.0h\n"
                                "# library: INI v1.3c\n\n"
                                "# Lines starting with # are comments\n\n";

// The answers that every file needs.
console_script file_of(const std::string &product, const std::string &system,
                       const std::string &file) {
    return {{"Version", "1"},
            {"Product Name", product},
            {"Operating System", system},
            {"Enter file", file}};
}

console_script plover_file(const std::string &file) {
    return file_of("", "UNIX", file);
}

class DefaultsTest : public scratch_test {
  protected:
    DefaultsTest() { ini_init(&gxvalues, nullptr, nullptr); }

    ~DefaultsTest() override { ini_clear(&gxvalues); }

    int make(const console_script &answers) {
        int result = -1;
        console = console_of(answers, [&] { result = make_dflt(); });
        return result;
    }

    // What stands behind the comment of the file.
    static std::string settings_of(const std::string &file) {
        const std::string text = read_file(file);
        EXPECT_THAT(text, StartsWith(comment));
        return text.substr(std::min(std::string_view(comment).size(), text.size()));
    }

    // Makes "mine.dat" with a domain and this host; looks at what is asked then and what is
    // written.
    void expect_hosts(const console_script &file, const prompt_answer &host,
                      const std::string &asked, const std::string &settings) {
        ASSERT_EQ(make(file + console_script{{"default suggested .ini", "yes"},
                                             {"Suggested domain", "varnel.example"},
                                             host}),
                  1);
        EXPECT_THAT(console, HasSubstr(asked));
        EXPECT_THAT(settings_of("mine.dat"), StartsWith(settings));
    }

    [[nodiscard]] std::string log() const { return log_.text(); }

    std::string console;

  private:
    test_log log_{"."};
};

TEST_F(DefaultsTest, EverySuggestionAcceptedOnUnixForPlover) {
    EXPECT_EQ(make({{"Version", "3.2a"}, {"Operating System", "UNIX"}}), 1);
    expect_kept("console", console);
    expect_kept("gxdflt_UNIX.dat", read_file("gxdflt_UNIX.dat"));
}

TEST_F(DefaultsTest, EveryQuestionAsked) {
    EXPECT_EQ(make({{"Version", "1.0"},
                    {"Product Name", "kestrel"},
                    {"Operating System", "Linux"},
                    {"default suggested directories", "yes"},
                    {"Suggested templates", "/t"},
                    {"Suggested image", "/i"},
                    {"Suggested cgi", "/c"},
                    {"default suggested .ini", "yes"},
                    {"Suggested domain", "varnel.example"},
                    {"Suggested pop host", "mx.varnel.example"},
                    {"Suggested smtp host", "out.varnel.example"},
                    {"install/upgrade", "yes"},
                    {"Enter file", "mine.dat"}}),
              1);
    expect_kept("console", console);
    expect_kept("mine.dat", read_file("mine.dat"));
}

TEST_F(DefaultsTest, DirectoriesByProductAndSystem) {
    std::string all;
    for (const char *product : {"kestrel", "KESTREL", "Plover", "Tanager", "osprey", "another"}) {
        for (const char *system : {"Solaris", "nt", "NT", "Nt"}) {
            EXPECT_EQ(make(file_of(product, system, "mine.dat")), 1);
            const std::string settings = settings_of("mine.dat");
            const std::size_t from = settings.find("cgi_path ");
            all += "- "s + product + " " + system + "\n" +
                   settings.substr(from, settings.find("wml ") - from);
        }
    }
    expect_kept("directories", all);
}

TEST_F(DefaultsTest, OnlyWindowsMakesTanagersFileOneForImap) {
    const std::string smtp = "\nsmtphost smtp.example.com\n";
    const auto hosts_of = [&](const char *product, const char *system) {
        EXPECT_EQ(make(file_of(product, system, "mine.dat")), 1);
        const std::string settings = settings_of("mine.dat");
        return settings.substr(0, settings.find("domain "));
    };
    EXPECT_EQ(hosts_of("tanager", "NT"), "imaphost imap.example.com" + smtp);
    EXPECT_EQ(hosts_of("tanager", "UNIX"), "pophost pop.example.com" + smtp);
    EXPECT_EQ(hosts_of("osprey", "NT"), "pophost pop.example.com" + smtp);
}

TEST_F(DefaultsTest, AnImapFileAsksForTheImapHost) {
    // The placeholder of the POP host begins with "pop".
    expect_hosts(file_of("tanager", "nt", "mine"), {"Suggested imap host", "IMAP.varnel.example"},
                 "\nSuggested imap host[mail.varnel.example]? "
                 "\nSuggested smtp host [smtp.varnel.example]? ",
                 "imaphost IMAP.varnel.example\nsmtphost smtp.varnel.example\n"
                 "domain varnel.exampl");
}

TEST_F(DefaultsTest, APopHostOfThatNameSuggestsAnSmtpHost) {
    expect_hosts(plover_file("mine"), {"Suggested pop host", "POP.example"},
                 "\nSuggested pop host [mail.varnel.example]? "
                 "\nSuggested smtp host [smtp.varnel.example]? ",
                 "pophost pop.example\nsmtphost smtp.varnel.example\n");
}

TEST_F(DefaultsTest, AnyOtherPopHostIsLowerCasedToo) {
    expect_hosts(plover_file("mine"), {"Suggested pop host", "Mail.POP.Example"},
                 "\nSuggested smtp host [mail.varnel.example]? ",
                 "pophost mail.pop.example\nsmtphost mail.varnel.example\n");
}

TEST_F(DefaultsTest, ANameWithoutEndingGetsOne) {
    EXPECT_EQ(make(plover_file("mydefaults")), 1);
    EXPECT_TRUE(is_there("mydefaults.dat"));
    EXPECT_FALSE(is_there("mydefaults"));
    EXPECT_THAT(console, HasSubstr("mydefaults.dat saved\n\n"));
    EXPECT_EQ(log(), "");
}

TEST_F(DefaultsTest, TheEndingIsJudgedIgnoringCase) {
    EXPECT_EQ(make(plover_file("mine.DAT")), 1);
    EXPECT_TRUE(is_there("mine.DAT"));
}

TEST_F(DefaultsTest, AnyOtherEndingIsRefused) {
    set_loglvl(LOG_INFO);
    for (const char *name : {"mydefaults.txt", "a.b.dat", "./mine.dat", "mine.", "mine.datx"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(make(plover_file(name)), 0);
        EXPECT_THAT(console, EndsWith(std::string(name) +
                                      " not valid: gxsetup will only read .dat files\n"));
        EXPECT_FALSE(is_there(name));
        EXPECT_STREQ(ini_value(&gxvalues, "prod_name", 0), "plover");
        ini_clear(&gxvalues);
    }
    EXPECT_THAT(log(),
                StartsWith("Info:  mydefaults.txt not valid: gxsetup will only read .dat files\n"));
}

TEST_F(DefaultsTest, AFileThatCannotBeWrittenIsReported) {
    EXPECT_EQ(make(plover_file("missing/mine")), 0);
    EXPECT_THAT(console, EndsWith("Error: cannot write to missing/mine.dat\n\n"));
    EXPECT_STREQ(ini_value(&gxvalues, "prod_name", 0), "plover");
    EXPECT_THAT(log(), HasSubstr("Error: cannot write to missing/mine.dat\n"));
}

TEST_F(DefaultsTest, ANameThatTheEndingDoesNotFitIsNotWritten) {
    EXPECT_EQ(make(plover_file(std::string(509, 'a'))), 0);
    EXPECT_THAT(console, HasSubstr("Error: cannot write to aaaa"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."),
                            std::filesystem::directory_iterator()),
              1); // the log
}

TEST_F(DefaultsTest, TheStoreIsClearedWhenTheFileIsSaved) {
    set_loglvl(LOG_DEBUG);
    ASSERT_EQ(make(plover_file("mine")), 1);
    EXPECT_EQ(ini_number(&gxvalues), 0);
    EXPECT_THAT(log(), HasSubstr("Info:  mine.dat saved\nDebug: Clear gxvalues\n"));
}

TEST_F(DefaultsTest, AssociationsAreNotUsed) {
    make(plover_file("mine.txt"));
    EXPECT_EQ(ini_value(&gxvalues, "workarea", 1), nullptr);
}

TEST_F(DefaultsTest, TheFileLoadsAsAStore) {
    ASSERT_EQ(make(file_of("tanager", "nt", "gxdflt")), 1);
    INI_SETTINGS ini{};
    ini_init(&ini, nullptr, nullptr);
    ini_setup(&ini, ans_values, ans_associations);
    EXPECT_EQ(ini_load(&ini, "gxdflt.dat"), 11);
    EXPECT_STREQ(ini_value_num(&ini, D_TEMPLATES), R"(\tanager)");
    EXPECT_STREQ(ini_value_num(&ini, D_WORKAREA), R"(\tanager)");
    EXPECT_STREQ(ini_value_num(&ini, D_IMAPHOST), "imap.example.com");
    EXPECT_EQ(ini_value_num(&ini, D_POPHOST), nullptr);
    ini_clear(&ini);
}

TEST_F(DefaultsTest, QuittingSavesNothing) {
    feed_console("1\nq\n\n");
    EXPECT_EXIT(make_dflt(), testing::ExitedWithCode(0), "");
    EXPECT_FALSE(is_there("gxdflt_UNIX.dat"));
}

} // namespace
