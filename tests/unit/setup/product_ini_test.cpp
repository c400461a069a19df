#include "setup/product_ini.h"

#include "support/answers_test.h"
#include "support/console_capture.h"
#include "support/expected.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

class ProductIni : public answers_test {
  protected:
    ProductIni() {
        shell("mkdir templates cgi");
        answer(D_VERSION, "1.2");
        answer(D_DOMAIN, "d.test");
        answer(D_POPHOST, "pop.test");
        answer(D_IMAPHOST, "imap.test");
        answer(D_SMTPHOST, "smtp.test");
        answer(D_TEMPLATES, scratch.path("templates"));
        answer(D_WORKAREA, "/work");
        answer(D_VLIMG, "/img");
        answer(D_BULLETIN, "/bulletins");
        answer(D_WAP_TEMPLATES, "/wap");
        answer(D_WAP_VLIMG, "/wapimg");
        for (const char *set : {"2 two", "1 one", "3 three"}) {
            answer(D_TPL_SET, set);
        }
        answer(D_WML_TPL_SET, "1 wml");
        answer(D_ALLOW_HOST, "a.test");
        answer(D_ALLOW_HOST, "b.test");
    }

    // Writes the product's file from `sample`, which must become the kept one.
    void expect_written(const std::string &product, std::string_view sample) {
        write_file(product + ".ini", sample);
        const std::string path = scratch.path("cgi/" + product + ".ini");
        int result = 0;
        EXPECT_EQ(console_of([&] { result = write_new_gxini(ini, product.c_str(), path.c_str()); }),
                  ".");
        EXPECT_EQ(result, 1);
        EXPECT_EQ(read_file("templates/" + product + ".ini"), read_file(path));
        expect_kept(product + ".ini", replaced(read_file(path), scratch.path(), "@"));
    }

    // Asks the questions of the product; what is shown must be the kept console.
    void ask(const char *product, int is_guessed, const std::string &typed) {
        answer(D_PROD_NAME, product);
        expect_kept("console", console_of(typed, [&] { do_ini_quest(ini, is_guessed); }));
    }
};

TEST_F(ProductIni, FlatProductEndsWithItsOriginalPopHost) {
    write_file("kestrel.cgi", "");
    expect_written("kestrel", "a 1\n");
}

TEST_F(ProductIni, SetProductsListTheirSetsAndHosts) {
    write_file("tanager.cgi", "");
    expect_written("tanager", "");
    expect_written("osprey", "");
}

TEST_F(ProductIni, WmlPartOfASetProductHasItsOwnPlaces) {
    write_file("osprey.cgi", "");
    expect_written("merlin", "");
}

// No program at all counts as the early style, whatever the product.
TEST_F(ProductIni, StyleFollowsTheProgramThatIsHere) {
    expect_written("Tanager", "");
}

TEST_F(ProductIni, LinesThatAreWrittenAnewLeaveTheSample) {
    write_file("osprey.cgi", "");
    for (const char *product : {"osprey", "tanager", "merlin", "kestrel"}) {
        expect_written(product,
                       "# comment domain\ndomain x\ndomains x\n domain kept\nDomain kept\n"
                       "domai kept\npophost x\npophosts x\nimaphost x\nimaphosts x\nimaphos x\n"
                       "imapho kept\nsmtphost x\nsmtphos kept\ntemplates x\ntemplate kept\n"
                       "workarea x\nvlimg x\nvlimg_dir x\nbulletin_path x\nbulletin kept\n"
                       "allow_host_login x\ntpl_set x\ntpl_sets x\noriginal_pophost kept\n"
                       "\r\nlast kept");
    }
}

TEST_F(ProductIni, LongSampleLineIsLookedAtInPieces) {
    write_file("kestrel.cgi", "");
    expect_written("kestrel", "x " + std::string(508, 'a') + "domain of a piece\nnext 1\n");
}

TEST_F(ProductIni, MissingAnswersAreEmptyValues) {
    write_file("kestrel.cgi", "");
    ini_clear(ini);
    answer(D_TEMPLATES, scratch.path("templates"));
    expect_written("kestrel", "");
}

TEST_F(ProductIni, SampleThatCannotBeOpenedIsReportedAndNothingWritten) {
    EXPECT_EQ(console_of([&] { EXPECT_EQ(write_new_gxini(ini, "plover", "cgi/plover.ini"), 0); }),
              "Error: Can't open plover.ini\n");
    EXPECT_FALSE(is_there("cgi/plover.ini"));
}

TEST_F(ProductIni, FileThatCannotBeOpenedIsReported) {
    write_file("plover.ini", "");
    EXPECT_EQ(console_of([&] { EXPECT_EQ(write_new_gxini(ini, "plover", "none/x.ini"), 0); }),
              "Error: Can't open none/x.ini\n");
}

TEST_F(ProductIni, CopyAmongTheTemplatesMayFail) {
    write_file("plover.ini", "");
    answer(D_TEMPLATES, "/dev/null");
    console_of([&] { EXPECT_EQ(write_new_gxini(ini, "plover", "cgi/plover.ini"), 1); });
    EXPECT_TRUE(is_there("cgi/plover.ini"));
}

// --- Questions ---

TEST_F(ProductIni, AddressIsItsOwnHost) {
    answer(D_PROD_NAME, "plover");
    const auto host_of = [&](const std::string &domain) {
        console_of(domain + "\n\n\n", [&] { do_ini_quest(ini, 1); });
        return answer(D_POPHOST);
    };
    for (const std::string domain : {"192.0.2.1", "...", "7"}) {
        EXPECT_EQ(host_of(domain), domain);
    }
    for (const std::string domain : {"192.0.2.1a", "1-2", " 1"}) {
        EXPECT_EQ(host_of(domain), "mail." + domain);
    }
}

TEST_F(ProductIni, WithoutGuessTheStoredHostsAreOffered) {
    ask("tanager", 0, "x.test\n\n\n\n");
    EXPECT_EQ(answer(D_DOMAIN), "x.test");
    EXPECT_EQ(answer(D_POPHOST), "pop.test");
    EXPECT_EQ(answer(D_SMTPHOST), "imap.test");
}

TEST_F(ProductIni, AllowedHostsEndAtAPointOrAtTheEndOfInput) {
    ask("Osprey", 0, "\n\nyes\n  two.blanks\t \r\n\n \t\n . \nlast\n. \t\nsmtp.x\n");
    EXPECT_EQ(values(D_ALLOW_HOST), "a.test\nb.test\n  two.blanks\n .\nlast\n");
    EXPECT_EQ(answer(D_SMTPHOST), "smtp.x");
    EXPECT_EXIT(
        {
            feed_console("\n\nyes\nunfinished");
            do_ini_quest(ini, 0);
        },
        testing::ExitedWithCode(0), "");
}

// --- URL of the images ---

TEST_F(ProductIni, UrlIsTheImagesPathBelowTheCommonTree) {
    const auto url_of = [&](const char *cgi_path, const char *images) {
        ini_clear(ini);
        answer(D_CGI_PATH, cgi_path);
        answer(D_VLIMG_DIR, images);
        path_text url;
        EXPECT_STREQ(get_URL(ini, url), url.c_str());
        return std::string(url.c_str());
    };
    EXPECT_EQ(url_of("/home/httpd/cgi-bin", "/home/httpd/html/vlimg"), "/vlimg");
    EXPECT_EQ(url_of("/home/httpd/cgi-bin/", "/home/httpd/html/vlimg"), "/vlimg");
    EXPECT_EQ(url_of("/home/httpd/cgi-bin", "/home/httpd/html/vlimg/"), "/vlimg/");
    EXPECT_EQ(url_of("/cgi-bin", "/html/a/b"), "/a/b");
    EXPECT_EQ(url_of("/srv/a/cgi", "/var/html/img"), "/html/img");
    EXPECT_EQ(url_of("/home/httpd/cgi-bin", "/home/httpd"), "/");
    EXPECT_EQ(url_of("/a/b/cgi", "/a/bc/d/e"), "/e"); // a prefix of text, not of components
    EXPECT_EQ(url_of("no root/x/cgi", "stray/x/html/img"), "/img");
    EXPECT_EQ(url_of("", "/html/img"), "/html/img");
    EXPECT_EQ(url_of("/a/cgi", ""), "/");
}

} // namespace
