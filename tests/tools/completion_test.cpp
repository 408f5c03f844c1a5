// What the tools offer to a shell that completes a command line.
#include "tests/tools/program.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

using namespace tests;
namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

std::vector<std::string> LinesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The names that stand at the beginning of the lines of a part of the help: "Befehle:", "Optionen:".
Words NamesInHelp(const std::string &help, const std::string &part)
{
    Words names;
    bool isInside = false;
    for (const std::string &line : LinesOf(help)) {
        if (isInside && line.empty()) break;
        if (isInside && line.starts_with("  ") && line[2] != ' ')
            names.push_back(line.substr(2, line.find(' ', 2) - 2));
        if (line == part) isInside = true;
    }
    return names;
}

// Every command of a program, as the words that lead to it; the first one is the program itself.
void AddCommands(const fs::path &program, const Words &path, std::vector<Words> &all)
{
    all.push_back(path);
    Words arguments = path;
    arguments.emplace_back("--hilfe");
    for (const std::string &name : NamesInHelp(tests::Run({program, arguments}).Out, "Befehle:")) {
        Words sub = path;
        sub.push_back(name);
        AddCommands(program, sub, all);
    }
}

struct Completion : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "buch";

    // The lines for a command line of which the last word is being typed.
    static Words Offered(const std::string &program, Words words)
    {
        words.insert(words.begin(), "--vervollstaendigen");
        const Result result = tests::Run({program, words});
        EXPECT_EQ(0, result.ExitCode);
        EXPECT_EQ("", result.Err);
        return LinesOf(result.Out);
    }
    // Of vark on sample books.
    Words Vark(Words words)
    {
        if (!fs::exists(Books)) {
            EXPECT_EQ(0, tests::Books({"beispiel", Books.string()}).ExitCode);
        }
        words.insert(words.begin(), {"--config", Books.string()});
        return Offered(VARK_PROGRAM, std::move(words));
    }
    static bool Has(const Words &lines, const std::string &line)
    {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }
};

} // namespace

TEST_F(Completion, OffersEachCommandAndEachOptionThatTheHelpNames)
{
    for (const char *program : {VARK_PROGRAM, BOOKS_PROGRAM}) {
        std::vector<Words> commands;
        AddCommands(program, {}, commands);
        ASSERT_GT(commands.size(), 7U);
        for (const Words &command : commands) {
            Words typed = command;
            typed.emplace_back("--hilfe");
            const std::string help = tests::Run({program, typed}).Out;
            SCOPED_TRACE(help.substr(0, help.find("\n\n")));
            typed.back() = "--";
            const Words options = Offered(program, typed);
            const Words named = NamesInHelp(help, "Optionen:");
            EXPECT_EQ(options.size(), named.size());
            for (const std::string &name : named) {
                const std::string option = name == "-h,--hilfe" ? "--hilfe" : name;
                EXPECT_TRUE(std::any_of(options.begin(), options.end(), [&](const std::string &line) {
                    return line.starts_with(option + "\t");
                })) << option;
            }
            typed.back() = "";
            const Words subs = NamesInHelp(help, "Befehle:");
            const Words offered = Offered(program, typed);
            if (!subs.empty()) {
                EXPECT_EQ(subs.size(), offered.size());
            }
            for (const std::string &sub : subs) {
                EXPECT_TRUE(std::any_of(offered.begin(), offered.end(), [&](const std::string &line) {
                    return line.starts_with(sub + "\t");
                })) << sub;
            }
        }
    }
}

TEST_F(Completion, MandantenStapelAndYearsComeFromTheBooks)
{
    const Words mandanten = {"1\tNordhafen Bürohandel GmbH", "2\tSonnenfeld Gartenbedarf",
                             "3\tAtelier Lindblick Werbeagentur"};
    EXPECT_EQ(mandanten, Vark({"buchen", "--mandant", ""}));
    EXPECT_EQ(mandanten, Vark({"bericht", "susa", "--mandant", ""}));
    EXPECT_EQ(Words{"2\tSonnenfeld Gartenbedarf"}, Vark({"saldo", "--mandant", "2"}));
    EXPECT_EQ((Words{"1\tEröffnung", "16\tLaufende Buchungen", "17\tKasse", "18\tLöhne und Gehälter",
                     "19\tMiete und Leasing"}),
              Vark({"buchen", "--mandant", "1", "--stapel", "1"}));
    EXPECT_EQ(Words{"17\tKasse"}, Vark({"stapel", "--mandant", "1", "17"}));
    EXPECT_EQ((Words{"1997", "1998"}), Vark({"bericht", "guv", "--mandant", "1", "--jahr", ""}));
    EXPECT_EQ(Words{"4\t30 Tage netto"}, Vark({"buchen", "--mandant", "1", "--zahlungsziel", "4"}));
    EXPECT_EQ(Words(), Vark({"buchen", "--mandant", "9", "--stapel", ""}));
}

TEST_F(Completion, AccountsComeByNumberOrByKuerzelAndOfTheirKind)
{
    EXPECT_EQ(Words{"1840\tHafenbank, laufendes Konto"}, Vark({"saldo", "--mandant", "1", "184"}));
    EXPECT_EQ((Words{"1840\tHafenbank, laufendes Konto"}),
              Vark({"buchen", "--mandant", "1", "--soll", "1840"}));
    EXPECT_TRUE(Has(Vark({"op", "--mandant", "1", "--konto", "BER"}), "BERGENKO\t10400 Bergen Kontor AS"));
    // A number that begins Sachkonten and Debitoren alike.
    EXPECT_TRUE(Has(Vark({"saldo", "--mandant", "1", "10"}), "1010\tSoftware und Lizenzen"));
    EXPECT_TRUE(Has(Vark({"saldo", "--mandant", "1", "10"}), "10010\tAdler-Apotheke"));
    EXPECT_FALSE(
        Has(Vark({"saldo", "--mandant", "1", "--art", "Debitor", "10"}), "1010\tSoftware und Lizenzen"));
    // Several accounts may follow each other.
    EXPECT_EQ(Words{"10010\tAdler-Apotheke"}, Vark({"saldo", "--mandant", "1", "1840", "10010"}));
    // Whose accounts they were could only be guessed.
    EXPECT_EQ(Words(), Vark({"buchen", "--soll", "18"}));
}

TEST_F(Completion, WordsFilesAndDirectoriesAreOfferedWhereTheyBelong)
{
    EXPECT_EQ((Words{"Kreditor", "Debitor"}), Vark({"op", "--art", ""}));
    EXPECT_EQ((Words{"--art=Kreditor", "--art=Debitor"}), Vark({"op", "--art="}));
    EXPECT_EQ((Words{"aktiva", "passiva", "guv"}), Vark({"bericht", "hauptabschluss", "--liste", ""}));
    EXPECT_EQ((Words{"ja", "nein"}), Vark({"bericht", "bilanz", "--ohne-konten", ""}));
    EXPECT_EQ((Words{"mandant"}), Vark({"waehlen", "m"}));
    EXPECT_EQ(Words{":dateien"}, Vark({"buchen", "--datei", ""}));
    EXPECT_EQ(Words{":dateien"}, Vark({"bericht", "susa", "--pdf", "x"}));
    EXPECT_EQ(Words{":verzeichnisse"}, Offered(VARK_PROGRAM, {"--config", ""}));
    EXPECT_EQ(Words{":verzeichnisse"}, Offered(BOOKS_PROGRAM, {"pruefen", ""}));
    EXPECT_EQ(Words(), Vark({"buchen", "--text", ""}));
}

TEST_F(Completion, OptionsThatAreOutAreLeftOut)
{
    const Words offered = Vark({"kurse", "--mandant", "1", "--neu", "--"});
    EXPECT_FALSE(Has(offered, "--mandant\tNummer des Mandanten"));
    EXPECT_FALSE(Has(offered, "--loeschen\teinen Kurs löschen"));
    EXPECT_FALSE(Has(offered, "--dialog\tim Dialog am Bildschirm pflegen"));
    EXPECT_TRUE(Has(offered, "--kurs\tKurs"));
    // One that may come more than once stays.
    EXPECT_TRUE(Has(Vark({"split", "--teil", "8010", "--"}), "--teil\teine Teilbuchung; für jede einmal"));
    EXPECT_EQ(Words(), Vark({"saldo", "--", "--m"}));
}

TEST_F(Completion, BooksOffersTablesKeysFieldsAndYears)
{
    ASSERT_EQ(0, tests::Books({"beispiel", Books.string()}).ExitCode);
    const auto offered = [](Words words) { return Offered(BOOKS_PROGRAM, std::move(words)); };
    EXPECT_EQ(Words{"sako\tSachkonten"}, offered({"zeigen", "sak"}));
    EXPECT_EQ((Words{"0\tKonto", "1\tKuerzel"}), offered({"zeigen", "sako", "--schluessel", ""}));
    EXPECT_EQ(Words{"Konto,Kuerzel\tKürzel"}, offered({"zeigen", "sako", "--felder", "Konto,Kue"}));
    EXPECT_EQ((Words{"1997", "1998"}), offered({"sichern", Books.string(), "ziel", "--jahr", ""}));
    EXPECT_EQ(Words{"3\tAtelier Lindblick Werbeagentur"},
              offered({"sichern", Books.string(), "ziel", "--mandant", "3"}));
}

TEST_F(Completion, BooksThatAreNotThereOfferNothing)
{
    EXPECT_EQ(Words(), Offered(VARK_PROGRAM, {"--config", "/nonexistent", "buchen", "--mandant", ""}));
    EXPECT_EQ(Words(), Offered(BOOKS_PROGRAM, {"sichern", "/nonexistent", "ziel", "--mandant", ""}));
    EXPECT_EQ(Words(), Offered(VARK_PROGRAM, {"gibtesnicht", "--q"}));
    EXPECT_FALSE(Offered(VARK_PROGRAM, {}).empty());
}
