// The manual pages that the tools write of themselves.
#include "tests/tools/program.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace tests;
namespace fs = std::filesystem;

namespace {

constexpr const char *date = "2026-11-22";

struct Manual : testing::Test {
    TemporaryDirectory Directory;

    void SetUp() override
    {
        for (const char *program : {VARK_PROGRAM, BOOKS_PROGRAM}) {
            const Result result = tests::Run({program, {"--handbuchseiten", Directory.Path.string(), date}});
            ASSERT_EQ(0, result.ExitCode) << result.Err;
        }
    }
    // As a person reads it, with each run of blanks and line ends as one blank.
    std::string Shown(const std::string &page) const
    {
        const Result result =
            tests::Run({"/usr/bin/man",
                        {"--encoding=UTF-8", "-P", "cat", "-l", (Directory.Path / page).string()},
                        "",
                        {{"MANWIDTH", "80"}, {"LC_ALL", "C.UTF-8"}}});
        EXPECT_EQ(0, result.ExitCode) << result.Err;
        std::istringstream words(result.Out);
        std::string text;
        for (std::string word; words >> word;) {
            text += word + " ";
        }
        return text;
    }
};

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(Manual, EachCommandHasAPage)
{
    for (const char *page : {"vark.1",
                             "vark-status.1",
                             "vark-mandanten.1",
                             "vark-buchen.1",
                             "vark-split.1",
                             "vark-stapel.1",
                             "vark-peko.1",
                             "vark-peko-neu.1",
                             "vark-peko-aendern.1",
                             "vark-peko-loeschen.1",
                             "vark-waehlen.1",
                             "vark-konten.1",
                             "vark-konto-frei.1",
                             "vark-saldo.1",
                             "vark-journal.1",
                             "vark-op.1",
                             "vark-kurse.1",
                             "vark-bericht.1",
                             "vark-bericht-susa.1",
                             "vark-bericht-kostenaufteilung.1",
                             "books.1",
                             "books-beispiel.1",
                             "books-pruefen.1",
                             "books-sichern.1",
                             "books-laden.1",
                             "books-kopie.1",
                             "books-zeigen.1",
                             "books-aufbau.1"}) {
        EXPECT_TRUE(fs::exists(Directory.Path / page)) << page;
    }
}

TEST_F(Manual, APageSaysWhatTheHelpSays)
{
    const std::string page = Shown("vark-peko-aendern.1");
    for (const char *part :
         {"VARK-PEKO-AENDERN(1)", "vark-peko-aendern - An Debitoren und Kreditoren ändern, was genannt wird",
          "vark peko aendern [OPTIONEN]", "--mandant N Nummer des Mandanten; nötig",
          "Ohne --konto bekommt ein neues Konto die nächste freie Nummer.", "--datei DATEI",
          "--json Ausgabe für Programme; nicht mit --csv",
          "vark peko loeschen --mandant 1 --art Kreditor --kuerzel SPEDNORD", "vark-peko(1)",
          "1 etwas wurde abgelehnt", date}) {
        EXPECT_TRUE(Contains(page, part)) << part << "\n" << page;
    }
    // A backslash of an example is text.
    EXPECT_TRUE(Contains(Shown("vark-buchen.1"), "--beleg RE4711 \\ --soll"));
}

TEST_F(Manual, EveryPageIsWellFormed)
{
    for (const fs::directory_entry &page : fs::directory_iterator(Directory.Path)) {
        const std::string path = page.path().string();
        const Result man = tests::Run({"/usr/bin/man",
                                       {"--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", path},
                                       "",
                                       {{"MANWIDTH", "80"}, {"LC_ALL", "C.UTF-8"}}});
        EXPECT_EQ(0, man.ExitCode) << path;
        EXPECT_EQ("", man.Err) << path;
        const Result lint = tests::Run({"/usr/bin/mandoc", {"-T", "lint", "-W", "warning", path}});
        EXPECT_EQ(0, lint.ExitCode) << lint.Out;
    }
}

TEST_F(Manual, ADirectoryThatIsNotThereIsRefused)
{
    const Result result = tests::Run({VARK_PROGRAM, {"--handbuchseiten", "/nonexistent", date}});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_EQ("vark: /nonexistent/vark.1 läßt sich nicht schreiben.\n", result.Err);
}
