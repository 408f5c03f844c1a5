// books sichern, laden and kopie: out of books and into them again, byte for byte, and whole or not at all.
#include "include/vark40.h"
#include "record-manager/include/btrcall.h"
#include "tests/tools/program.h"
#include "tools/books/snapshot.h"
#include "tools/common/installation.h"
#include "tools/common/table_file.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <set>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tests;
using namespace tools;
using namespace vark;
namespace fs = std::filesystem;

namespace {

struct MoveBooks : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "b";
    fs::path Data = Books / "DB";
    fs::path Saved = Directory.Path / "s";

    void SetUp() override
    {
        ASSERT_EQ(0, tests::Books({"beispiel", Books.string(), "--buchungen", "600"}).ExitCode);
    }

    std::string At(const char *name) const { return (Directory.Path / name).string(); }

    Result Save(std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"sichern", Books.string(), Saved.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return tests::Books(std::move(arguments));
    }

    // One table of Mandant 1, last year, out of this content.
    Result LoadTable(const std::string &table, const std::string &content, std::vector<std::string> more = {})
    {
        WriteFile(At("t.seq"), content);
        std::vector<std::string> arguments = {"laden",     At("t.seq"), Books.string(), "--tabelle", table,
                                              "--mandant", "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return tests::Books(std::move(arguments));
    }

    std::string SaveTable(const std::string &table, std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"sichern", Books.string(), "-", "--tabelle",
                                              table,     "--mandant",    "1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Result result = tests::Books(std::move(arguments));
        EXPECT_EQ(0, result.ExitCode) << result.Err;
        return result.Out;
    }

    // Nothing but these lies in the test's directory, hidden leftovers included.
    void ExpectOnly(const std::set<std::string> &names) const
    {
        std::set<std::string> found;
        for (const auto &entry : fs::directory_iterator(Directory.Path)) {
            found.insert(entry.path().filename().string());
        }
        EXPECT_EQ(names, found);
        for (const auto &entry : fs::directory_iterator(Books)) {
            EXPECT_NE('.', entry.path().filename().string()[0]) << entry.path();
        }
    }
};

// Every file below a directory, by its name there.
std::map<std::string, std::string> FilesBelow(const fs::path &directory)
{
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            files[entry.path().lexically_relative(directory).string()] = ReadFile(entry.path());
        }
    }
    return files;
}

bool Has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// A record of zahlziel as a person would write it down: number, then a text, NULs to 146 bytes.
std::string Term(int number, const std::string &text)
{
    std::string record(146, '\0');
    record[0] = static_cast<char>(number);
    std::copy(text.begin(), text.end(), record.begin() + 4);
    return record;
}

std::string Entry(const std::string &record) { return std::to_string(record.size()) + "," + record + "\r\n"; }

const std::string endMark = "\x1A";

// A program run to its end, or killed at some moment.
int RunAndKill(std::vector<std::string> arguments, useconds_t after_us)
{
    const pid_t child = fork();
    if (child == 0) {
        if (freopen("/dev/null", "w", stdout) == nullptr) _exit(126);
        std::vector<char *> call = {const_cast<char *>(BOOKS_PROGRAM)};
        for (std::string &argument : arguments) {
            call.push_back(argument.data());
        }
        call.push_back(nullptr);
        execv(BOOKS_PROGRAM, call.data());
        _exit(127);
    }
    usleep(after_us);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

} // namespace

// ---- The form ----

TEST_F(MoveBooks, ARecordIsItsLengthACommaItsBytesAndALineEnd)
{
    const std::string content = Entry(Term(1, "sofort")) + Entry(Term(2, "30 Tage netto")) + endMark;
    ASSERT_EQ(0, LoadTable("zahlziel", content, {"--ersetzen"}).ExitCode);
    EXPECT_EQ("146,", SaveTable("zahlziel").substr(0, 4));
    EXPECT_EQ(content, SaveTable("zahlziel"));
}

TEST_F(MoveBooks, RecordsMayHoldLineEndsAndEndMarks)
{
    std::string record = Term(1, "sofort");
    // Behind the fields: 0D 0A 1A, digits and a comma, which a reader that searches would take for another
    // record.
    const std::string hard = "\r\n\x1A\r\n146,\x1A\xFF";
    std::copy(hard.begin(), hard.end(), record.begin() + 60);
    const std::string content = Entry(record) + Entry(Term(2, "x")) + endMark;
    ASSERT_EQ(0, LoadTable("zahlziel", content, {"--ersetzen"}).ExitCode);
    EXPECT_EQ(content, SaveTable("zahlziel"));
}

TEST_F(MoveBooks, ABlankMayStandInPlaceOfTheComma)
{
    const std::string record = Term(1, "sofort");
    ASSERT_EQ(0, LoadTable("zahlziel", "146 " + record + "\r\n" + endMark, {"--ersetzen"}).ExitCode);
    EXPECT_EQ(Entry(record) + endMark, SaveTable("zahlziel"));
}

TEST_F(MoveBooks, ATableWithoutRecordsIsAnEndMark)
{
    ASSERT_EQ(0, LoadTable("bank", endMark).ExitCode);
    EXPECT_EQ(endMark, SaveTable("bank"));
}

TEST_F(MoveBooks, RecordsComeInTheOrderOfAKeyOrAsTheyLie)
{
    const std::string content = Entry(Term(3, "c")) + Entry(Term(1, "a")) + Entry(Term(2, "b")) + endMark;
    ASSERT_EQ(0, LoadTable("zahlziel", content, {"--ersetzen"}).ExitCode);
    EXPECT_EQ(Entry(Term(1, "a")) + Entry(Term(2, "b")) + Entry(Term(3, "c")) + endMark,
              SaveTable("zahlziel"));
    EXPECT_EQ(content, SaveTable("zahlziel", {"--schluessel", "-1"}));
    const Result refused = Save({"--tabelle", "zahlziel", "--schluessel", "1"});
    EXPECT_EQ(2, refused.ExitCode);
    EXPECT_TRUE(Has(refused.Err, "Einen Schlüssel 1 hat zahlziel nicht")) << refused.Err;
}

TEST_F(MoveBooks, EqualValuesKeepTheOrderInWhichTheyCame)
{
    // Records with Id 0 of a tree: many of one value of key 0.
    const auto leaf = [](const std::string &number) {
        std::string record(64, '\0');
        const std::string text = std::string(7 - number.size(), ' ') + number;
        std::copy(text.begin(), text.end(), record.begin() + 16);
        return record;
    };
    const std::string content = Entry(leaf("900")) + Entry(leaf("100")) + Entry(leaf("500")) + endMark;
    ASSERT_EQ(0, LoadTable("guvauf", content, {"--ersetzen"}).ExitCode);
    EXPECT_EQ(content, SaveTable("guvauf"));
}

TEST_F(MoveBooks, NumbersThatTheEngineGivesAreLoadedAsTheyStand)
{
    std::string batch(64, '\0');
    batch[0] = 77;
    batch[4] = 'x';
    ASSERT_EQ(0, LoadTable("stapel", Entry(batch) + endMark, {"--ersetzen"}).ExitCode);
    EXPECT_EQ(Entry(batch) + endMark, SaveTable("stapel"));
    batch[0] = 0;
    const Result refused = LoadTable("stapel", Entry(batch) + endMark, {"--ersetzen"});
    EXPECT_EQ(1, refused.ExitCode);
    EXPECT_TRUE(Has(refused.Out, "t.seq, Satz 1 (ab Byte 0) [0] Nummer: die laufende Nummer ist 0\n"))
        << refused.Out;
}

// ---- Round trips ----

TEST_F(MoveBooks, AllTablesComeBackByteForByte)
{
    const Result saved = Save();
    ASSERT_EQ(0, saved.ExitCode) << saved.Err;
    const std::string again = At("again");
    const Result loaded = tests::Books({"laden", Saved.string(), again});
    ASSERT_EQ(0, loaded.ExitCode) << loaded.Out << loaded.Err;
    ASSERT_EQ(0, tests::Books({"sichern", again, At("s2")}).ExitCode);
    const auto before = FilesBelow(Saved);
    EXPECT_EQ(before, FilesBelow(At("s2")));
    // Three Mandanten, two years each, 26 tables, and fista.
    EXPECT_EQ(size_t{3 * 2 * 26 + 1}, before.size());
    const Result checked = tests::Books({"pruefen", again});
    EXPECT_EQ(0, checked.ExitCode) << checked.Out;
    ExpectOnly({"b", "s", "again", "s2"});
    // The new installation has ini files and templates of its own.
    EXPECT_EQ(0, Vark(again, {"status"}).ExitCode);
    EXPECT_TRUE(fs::is_directory(fs::path(again) / "reports"));
}

TEST_F(MoveBooks, AMandantGoesIntoOtherBooks)
{
    ASSERT_EQ(0, Save({"--mandant", "2"}).ExitCode);
    const auto saved = FilesBelow(Saved);
    EXPECT_EQ(size_t{2 * 26 + 1}, saved.size());
    EXPECT_EQ(size_t{4 + 998 + 2 + 1}, saved.at("fista.seq").size());

    // Books that differ: another seed, and without Mandant 2.
    const fs::path other = Directory.Path / "o";
    ASSERT_EQ(0, tests::Books({"beispiel", other.string(), "--buchungen", "0"}).ExitCode);
    const Result there = tests::Books({"laden", Saved.string(), other.string(), "--mandant", "2"});
    EXPECT_EQ(3, there.ExitCode);
    EXPECT_TRUE(Has(there.Err, "Den Mandanten 2 gibt es schon.")) << there.Err;

    const Result loaded =
        tests::Books({"laden", Saved.string(), other.string(), "--mandant", "2", "--ersetzen"});
    ASSERT_EQ(0, loaded.ExitCode) << loaded.Out << loaded.Err;
    ASSERT_EQ(0, tests::Books({"sichern", other.string(), At("s2"), "--mandant", "2"}).ExitCode);
    EXPECT_EQ(saved, FilesBelow(At("s2")));
    const Result checked = tests::Books({"pruefen", other.string()});
    EXPECT_EQ(0, checked.ExitCode) << checked.Out;
    EXPECT_EQ(3u, ReadMandanten(other / "DB").size());
    ExpectOnly({"b", "s", "o", "s2"});
}

TEST_F(MoveBooks, AMandantThatWasNotThereIsAdded)
{
    ASSERT_EQ(0, Save({"--mandant", "3"}).ExitCode);
    const fs::path other = Directory.Path / "o";
    ASSERT_EQ(0, tests::Books({"sichern", Books.string(), At("m1"), "--mandant", "1"}).ExitCode);
    ASSERT_EQ(0, tests::Books({"laden", At("m1"), other.string()}).ExitCode);
    ASSERT_EQ(1u, ReadMandanten(other / "DB").size());
    StopEngine();

    ASSERT_EQ(0, tests::Books({"laden", Saved.string(), other.string(), "--mandant", "3"}).ExitCode);
    EXPECT_EQ(2u, ReadMandanten(other / "DB").size());
    StopEngine();
    EXPECT_EQ(0, tests::Books({"pruefen", other.string()}).ExitCode);
    // What stands beside the Mandant's is as it was.
    ASSERT_EQ(0, tests::Books({"sichern", other.string(), At("m1again"), "--mandant", "1"}).ExitCode);
    EXPECT_EQ(FilesBelow(At("m1")), FilesBelow(At("m1again")));
}

TEST_F(MoveBooks, TheTableOfTheMandantenIsLoadedAlone)
{
    const std::string companies = SaveTable("fista");
    // Without its last record: 4 digits and comma, 998 bytes, line end.
    const std::string fewer = companies.substr(0, size_t{2} * (4 + 998 + 2)) + endMark;
    ASSERT_EQ(0, LoadTable("fista", fewer, {"--ersetzen"}).ExitCode);
    EXPECT_EQ(fewer, SaveTable("fista"));
    ASSERT_EQ(0, LoadTable("fista", companies, {"--ersetzen"}).ExitCode);
    EXPECT_EQ(0, tests::Books({"pruefen", Books.string()}).ExitCode);
}

TEST_F(MoveBooks, ExistingBooksAreReplacedOnlyWhenTold)
{
    ASSERT_EQ(0, Save().ExitCode);
    WriteFile(Books / "reports" / "eigen.txt", "x");
    const Result refused = tests::Books({"laden", Saved.string(), Books.string()});
    EXPECT_EQ(3, refused.ExitCode);
    EXPECT_TRUE(Has(refused.Err, "liegen schon Bücher. Mit --ersetzen")) << refused.Err;
    const std::string lessTerms = Entry(Term(1, "sofort")) + endMark;
    ASSERT_EQ(0, LoadTable("zahlziel", lessTerms, {"--ersetzen"}).ExitCode);
    ASSERT_EQ(0, tests::Books({"laden", Saved.string(), Books.string(), "--ersetzen"}).ExitCode);
    ASSERT_EQ(0, tests::Books({"sichern", Books.string(), At("s2")}).ExitCode);
    EXPECT_EQ(FilesBelow(Saved), FilesBelow(At("s2")));
    // Templates and ini files are not the books.
    EXPECT_TRUE(fs::exists(Books / "reports" / "eigen.txt"));
}

TEST_F(MoveBooks, WhatWasSavedIsReplacedOnlyWhenTold)
{
    ASSERT_EQ(0, Save().ExitCode);
    const Result refused = Save();
    EXPECT_EQ(3, refused.ExitCode);
    EXPECT_TRUE(Has(refused.Err, "liegen schon gesicherte Bücher")) << refused.Err;
    EXPECT_EQ(0, Save({"--ersetzen"}).ExitCode);
    const Result other = tests::Books({"sichern", Books.string(), Books.string(), "--ersetzen"});
    EXPECT_EQ(3, other.ExitCode);
    EXPECT_TRUE(Has(other.Err, "enthält anderes als gesicherte Bücher")) << other.Err;
    const Result file = Save({"--tabelle", "sako", "--mandant", "1"});
    EXPECT_EQ(3, file.ExitCode);
    EXPECT_TRUE(Has(file.Err, "das ist ein Verzeichnis")) << file.Err;
    EXPECT_EQ(0, tests::Books({"sichern", Books.string(), At("t"), "--tabelle", "sako"}).ExitCode);
    EXPECT_EQ(3, tests::Books({"sichern", Books.string(), At("t"), "--tabelle", "sako"}).ExitCode);
    EXPECT_EQ(0,
              tests::Books({"sichern", Books.string(), At("t"), "--tabelle", "sako", "--ersetzen"}).ExitCode);
}

TEST_F(MoveBooks, RecordsAreAddedToThoseThatAreThere)
{
    ASSERT_EQ(0, LoadTable("zahlziel", Entry(Term(1, "a")) + endMark, {"--ersetzen"}).ExitCode);
    const Result refused = LoadTable("zahlziel", Entry(Term(2, "b")) + endMark);
    EXPECT_EQ(3, refused.ExitCode);
    EXPECT_TRUE(Has(refused.Err, "1998/zahlziel enthält schon 1 Satz.")) << refused.Err;
    ASSERT_EQ(0, LoadTable("zahlziel", Entry(Term(2, "b")) + endMark, {"--anfuegen"}).ExitCode);
    EXPECT_EQ(Entry(Term(1, "a")) + Entry(Term(2, "b")) + endMark, SaveTable("zahlziel"));
    const Result twice =
        LoadTable("zahlziel", Entry(Term(3, "c")) + Entry(Term(2, "B")) + endMark, {"--anfuegen"});
    EXPECT_EQ(1, twice.ExitCode);
    EXPECT_TRUE(Has(twice.Out,
                    "t.seq, Satz 2 (ab Byte 152) [2] Nummer: der Wert des Schlüssels 0 ist schon vergeben\n"))
        << twice.Out;
    EXPECT_EQ(Entry(Term(1, "a")) + Entry(Term(2, "b")) + endMark, SaveTable("zahlziel"));
}

TEST_F(MoveBooks, LoadingATableLeavesTheOthersOfItsYear)
{
    ASSERT_EQ(0, Save().ExitCode);
    ASSERT_EQ(0, LoadTable("zahlziel", ReadFile(Saved / "1998" / "zahlziel.seq"), {"--ersetzen"}).ExitCode);
    ASSERT_EQ(0, tests::Books({"sichern", Books.string(), At("s2")}).ExitCode);
    EXPECT_EQ(FilesBelow(Saved), FilesBelow(At("s2")));
}

// ---- What is refused ----

namespace {

struct BadFile {
    const char *Name;
    std::string Content;
    const char *Told;
};

void PrintTo(const BadFile &bad, std::ostream *out) { *out << bad.Name; }

const std::string good = Entry(Term(1, "sofort"));

const std::vector<BadFile> badFiles = {
    {"Empty", "", "t.seq, Satz 1 (ab Byte 0): die Datei endet ohne das Endezeichen 1A"},
    {"NoEndMark", good,
     "Satz 2 (ab Byte 152): die Datei endet ohne das Endezeichen 1A; sie ist abgeschnitten"},
    {"BehindTheEnd", good + endMark + "x", "hinter dem Endezeichen stehen noch Bytes"},
    {"SecondEndMark", good + endMark + endMark, "hinter dem Endezeichen stehen noch Bytes"},
    {"CutInLength", good + "14", "Satz 2 (ab Byte 152): mitten in der Satzlänge endet die Datei"},
    {"CutInRecord", good + "146,abc", "mitten im Satz endet die Datei; sie ist abgeschnitten"},
    {"CutBehindRecord", "146," + Term(1, "x"), "hinter dem Satz endet die Datei; sie ist abgeschnitten"},
    {"CutInLineEnd", "146," + Term(1, "x") + "\r", "hinter dem Satz endet die Datei; sie ist abgeschnitten"},
    {"NoLineEnd", "146," + Term(1, "x") + endMark + endMark, "hinter dem Satz fehlt das Zeilenende"},
    {"UnixLineEnd", "146," + Term(1, "x") + "\n" + endMark, "hinter dem Satz fehlt das Zeilenende"},
    {"NoLength", "," + Term(1, "x") + "\r\n" + endMark, "statt einer Satzlänge steht hier etwas anderes"},
    {"Text", "Das ist ein Brief.\n", "statt einer Satzlänge steht hier etwas anderes"},
    {"Negative", "-146," + Term(1, "x") + "\r\n" + endMark, "statt einer Satzlänge steht hier etwas anderes"},
    {"NoSeparator", "146;" + Term(1, "x") + "\r\n" + endMark, "hinter der Satzlänge fehlt das Komma"},
    {"HugeLength", "99999," + Term(1, "x") + "\r\n" + endMark, "eine Satzlänge von 99999 gibt es nicht"},
    {"LongerThanAnything", "99999999999999999999," + Term(1, "x") + "\r\n" + endMark,
     "hinter der Satzlänge fehlt das Komma"},
    {"NoBytes", "0,\r\n" + endMark, "eine Satzlänge von 0 gibt es nicht"},
    {"Shorter", good + "145," + Term(2, "x").substr(0, 145) + "\r\n" + endMark,
     "Satz 2 (ab Byte 152): der Satz hat 145 statt 146 Bytes"},
    {"Longer", "147," + Term(2, "x") + "!\r\n" + endMark, "der Satz hat 147 statt 146 Bytes"},
    {"Twice", good + Entry(Term(2, "x")) + good + endMark,
     "Satz 3 (ab Byte 304) [1] Nummer: der Wert des Schlüssels 0 ist schon vergeben"},
    {"TextWithoutEnd", Entry(Term(1, std::string(41, 'x'))) + endMark,
     "[1] Text: der Text füllt das Feld ohne Ende"},
};

struct BadFiles : MoveBooks, testing::WithParamInterface<BadFile> {};

} // namespace

TEST_P(BadFiles, AreRefusedAndTheBooksStay)
{
    const std::string before = SaveTable("zahlziel");
    const Result result = LoadTable("zahlziel", GetParam().Content, {"--ersetzen"});
    EXPECT_EQ(1, result.ExitCode) << result.Err;
    EXPECT_TRUE(Has(result.Out, GetParam().Told)) << result.Out;
    EXPECT_TRUE(result.Out.ends_with("Nichts geladen: 1 Grund.\n")) << result.Out;
    EXPECT_EQ(before, SaveTable("zahlziel"));
    ExpectOnly({"b", "t.seq"});
}

INSTANTIATE_TEST_SUITE_P(EveryKind, BadFiles, testing::ValuesIn(badFiles),
                         [](const auto &one) { return std::string(one.param.Name); });

TEST_F(MoveBooks, FieldsOfNoGoodFormAreTakenWhenTold)
{
    const std::string content = Entry(Term(1, std::string(41, 'x'))) + endMark;
    const Result result = LoadTable("zahlziel", content, {"--ersetzen", "--trotzdem"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Has(result.Out, "1 Feld mit ungewöhnlicher Form übernommen.\n")) << result.Out;
    EXPECT_EQ(content, SaveTable("zahlziel"));
}

TEST_F(MoveBooks, WhatProgramsTakeAsItComesGoesThroughEveryTool)
{
    const std::string text = "so\x1B[31m\tfort;\n\"weiter\"";
    const std::string content = Entry(Term(1, text)) + endMark;
    const Result loaded = LoadTable("zahlziel", content, {"--ersetzen"});
    EXPECT_EQ(0, loaded.ExitCode) << loaded.Out;
    EXPECT_TRUE(Has(loaded.Out, "[1] Text: der Text enthält ein Steuerzeichen: „so?[31m?fort;?"))
        << loaded.Out;
    EXPECT_TRUE(Has(loaded.Out, "1 Feld mit ungewöhnlicher Form übernommen.\n")) << loaded.Out;
    EXPECT_EQ(content, SaveTable("zahlziel"));
    // A whole backup of such books loads again.
    ASSERT_EQ(0, Save().ExitCode);
    const Result again = tests::Books({"laden", Saved.string(), At("n")});
    EXPECT_EQ(0, again.ExitCode) << again.Out;
    ASSERT_EQ(0, tests::Books({"sichern", At("n"), At("s2")}).ExitCode);
    EXPECT_EQ(FilesBelow(Saved), FilesBelow(At("s2")));

    const std::vector<std::string> show = {"zeigen", "zahlziel", Books.string(), "--felder", "Nummer,Text"};
    const auto shown = [&](const char *form) {
        std::vector<std::string> arguments = show;
        arguments.emplace_back(form);
        return tests::Books(std::move(arguments)).Out;
    };
    rapidjson::Document json;
    json.Parse(shown("--json").c_str());
    ASSERT_FALSE(json.HasParseError());
    EXPECT_EQ(text, json[0]["Text"].GetString());
    EXPECT_EQ("Nummer;Text\n1;\"so\x1B[31m\tfort;\n\"\"weiter\"\"\"\n", shown("--csv"));
}

// What a host program hands to the library is in the books as it came, and every tool carries it on.
TEST_F(MoveBooks, WhatTheExportsTakeComesBackFromEveryTool)
{
    setenv("VARK_CONFIG_DIR", Books.c_str(), 1);
    setenv("VARK_UI", "headless", 1);
    const std::string name = "Ab\x1B[1m\tc\n\"d\";\x7F";
    const auto makeAccount = [&](const char *konto, const char *kuerzel, const char *currency) {
        return VARK_PekoDirekt(1, 2, 0, 1, konto, kuerzel, name.c_str(), "", "", "", currency, "", "", "", "",
                               "", "", "", 0, 0, "", 0, 0);
    };
    EXPECT_EQ(1, makeAccount("70777", "STEUER", "XQX"));
    EXPECT_EQ(1, makeAccount("", "LEER", ""));
    EXPECT_EQ(1, makeAccount("ABC", "OHNEZIFF", ""));
    EXPECT_EQ(1, VARK_BuchungEinfuegenDirekt(0, 1, 16, "15.4.98", "B\t1", name.c_str(), "8010", 1, "1840", 1,
                                             "1,00", "", ""));
    VARK_SchliesseDB();

    const Result checked = tests::Books({"pruefen", Books.string()});
    EXPECT_EQ(0, checked.ExitCode) << checked.Out;
    EXPECT_TRUE(Has(checked.Out, "der Text enthält ein Steuerzeichen")) << checked.Out;
    EXPECT_TRUE(Has(checked.Out, "alles stimmt überein, ")) << checked.Out;

    const Result saved = Save();
    EXPECT_EQ(0, saved.ExitCode) << saved.Err;
    const Result loaded = tests::Books({"laden", Saved.string(), At("n")});
    EXPECT_EQ(0, loaded.ExitCode) << loaded.Out << loaded.Err;
    EXPECT_EQ(0, tests::Books({"sichern", At("n"), At("s2")}).ExitCode);
    EXPECT_EQ(FilesBelow(Saved), FilesBelow(At("s2")));

    // Names as they stand in a CSV field: the quotation marks doubled.
    const std::string quoted = "Ab\x1B[1m\tc\n\"\"d\"\";\x7F";
    const std::vector<std::string> accounts = {"konten", "--mandant", "1", "--art", "Kreditor"};
    const auto listed = [&](const char *form) {
        std::vector<std::string> arguments = accounts;
        arguments.emplace_back(form);
        return Vark(At("n"), arguments).Out;
    };
    EXPECT_TRUE(Has(listed("--csv"), quoted)) << listed("--csv");
    // The account with the unknown currency, by the name that its row of JSON has for the account's name.
    const auto nameIn = [](const std::string &text, const char *rows, const char *key) {
        rapidjson::Document json;
        json.Parse(text.c_str());
        EXPECT_FALSE(json.HasParseError()) << text;
        std::string found;
        for (const rapidjson::Value &row : (rows[0] != 0 ? json[rows] : json).GetArray()) {
            if (row["waehrung"] == "XQX") found = row[key].GetString();
        }
        return found;
    };
    EXPECT_EQ(name, nameIn(listed("--json"), "", "name"));

    const std::string stapel = Vark(At("n"), {"stapel", "--mandant", "1", "16", "--csv"}).Out;
    EXPECT_TRUE(Has(stapel, quoted)) << stapel;
    const auto reported = [&](const std::string &form) {
        const std::string file = At("k.") + form;
        const Result result = Vark(
            At("n"), {"bericht", "kontenplan", "--mandant", "1", "--art", "Kreditor", "--" + form, file});
        EXPECT_EQ(0, result.ExitCode) << result.Err;
        return ReadFile(file);
    };
    const std::string csv = reported("csv");
    EXPECT_TRUE(Has(csv, "70777;STEUER;\"" + quoted + "\";")) << csv;
    EXPECT_TRUE(Has(csv, ";XQX;")) << csv;
    EXPECT_EQ(name, nameIn(reported("json"), "rows", "name1"));
}

TEST_F(MoveBooks, ATrialChangesNothing)
{
    const std::string before = SaveTable("zahlziel");
    const Result result =
        LoadTable("zahlziel", Entry(Term(1, "x")) + endMark, {"--ersetzen", "--nur-pruefen"});
    EXPECT_EQ(0, result.ExitCode);
    EXPECT_EQ("Geprüft: 1 Tabelle, 1 Satz, alles ließe sich laden.\n", result.Out);
    EXPECT_EQ(before, SaveTable("zahlziel"));
    ExpectOnly({"b", "t.seq"});
}

TEST_F(MoveBooks, EveryReasonIsCountedAndTheFirstAreTold)
{
    std::string content;
    for (int i = 1; i <= 9; ++i) {
        content += Entry(Term(i, std::string(41, 'x')));
    }
    content += endMark;
    const Result result = LoadTable("zahlziel", content, {"--ersetzen", "--hoechstens", "2"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_TRUE(Has(result.Out, "\nNoch 7 weitere; --hoechstens zeigt mehr.\n\nNichts geladen: 9 Gründe.\n"))
        << result.Out;

    const Result json = LoadTable("zahlziel", content, {"--ersetzen", "--hoechstens", "2", "--json"});
    rapidjson::Document document;
    document.Parse(json.Out.c_str());
    ASSERT_FALSE(document.HasParseError()) << json.Out;
    EXPECT_FALSE(document["geladen"].GetBool());
    EXPECT_EQ(9, document["abgelehnt"].GetInt());
    ASSERT_EQ(2u, document["gruende"].Size());
    EXPECT_STREQ("t.seq", document["gruende"][1]["datei"].GetString());
    EXPECT_EQ(2, document["gruende"][1]["satz"].GetInt());
    EXPECT_EQ(152, document["gruende"][1]["byte"].GetInt());
    EXPECT_STREQ("2", document["gruende"][1]["schluessel"].GetString());
    EXPECT_STREQ("Text", document["gruende"][1]["feld"].GetString());
}

TEST_F(MoveBooks, OneBadRecordKeepsAWholeInstallationOut)
{
    ASSERT_EQ(0, Save().ExitCode);
    // A Debitor that is there twice, and a cut table in another year.
    const std::string partners = ReadFile(Saved / "1998" / "debi.seq");
    const std::string first = partners.substr(0, 4 + 956 + 2);
    WriteFile(Saved / "1998" / "debi.seq", first + partners);
    const Result twice = tests::Books({"laden", Saved.string(), At("n")});
    EXPECT_EQ(1, twice.ExitCode);
    EXPECT_TRUE(
        Has(twice.Out, "1998/debi.seq, Satz 2 (ab Byte 962) [10010] Konto: der Wert des Schlüssels 0"))
        << twice.Out;
    EXPECT_FALSE(fs::exists(At("n")));
    fs::resize_file(Saved / "19971" / "sako.seq", 2000);
    const Result cut = tests::Books({"laden", Saved.string(), At("n")});
    EXPECT_EQ(1, cut.ExitCode);
    EXPECT_TRUE(Has(cut.Out, "19971/sako.seq, Satz 3 (ab Byte 1.504): mitten im Satz endet die Datei"))
        << cut.Out;
    ExpectOnly({"b", "s"});
}

TEST_F(MoveBooks, AYearWithoutItsMandantIsRefused)
{
    ASSERT_EQ(0, Save().ExitCode);
    fs::rename(Saved / "1998", Saved / "19988");
    const Result result = tests::Books({"laden", Saved.string(), At("n")});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_TRUE(Has(result.Out, "19988: zu dem Verzeichnis gibt es keinen Mandanten 9\n")) << result.Out;
    EXPECT_FALSE(fs::exists(At("n")));
}

TEST_F(MoveBooks, NamesOfFilesMayBeLarge)
{
    ASSERT_EQ(0, Save().ExitCode);
    fs::rename(Saved / "fista.seq", Saved / "FISTA.SEQ");
    fs::rename(Saved / "1998" / "sako.seq", Saved / "1998" / "SAKO.SEQ");
    ASSERT_EQ(0, tests::Books({"laden", Saved.string(), At("n")}).ExitCode);
    EXPECT_EQ(0, tests::Books({"pruefen", At("n")}).ExitCode);
}

TEST_F(MoveBooks, WhatIsAskedForMustBeThere)
{
    const auto refused = [](int code, std::vector<std::string> arguments, const char *reason) {
        const Result result = tests::Books(std::move(arguments));
        EXPECT_EQ(code, result.ExitCode) << result.Err;
        EXPECT_EQ("", result.Out);
        EXPECT_TRUE(Has(result.Err, reason)) << result.Err;
    };
    const std::string books = Books.string();
    refused(3, {"sichern", At("nein"), At("x")}, "ist kein Verzeichnis");
    refused(3, {"sichern", Directory.Path.string(), At("x")}, "liegen keine Bücher");
    refused(2, {"sichern", books, At("x"), "--mandant", "9"}, "Den Mandanten 9 gibt es nicht.");
    refused(2, {"sichern", books, At("x"), "--tabelle", "kasse"}, "Eine Tabelle kasse gibt es nicht.");
    refused(2, {"sichern", books, At("x"), "--tabelle", "sako", "--jahr", "2001"},
            "Das Jahr 2001 des Mandanten 1");
    refused(2, {"sichern", books, At("x"), "--jahr", "1998"}, "Die Angabe --jahr gibt es nur mit --tabelle.");
    refused(3, {"sichern", books, At("nein/x"), "--tabelle", "sako"}, "das gibt es nicht");
    refused(3, {"laden", At("nein"), books, "--tabelle", "bank", "--mandant", "1"}, "das gibt es nicht");
    refused(3, {"laden", books, books, "--tabelle", "bank", "--mandant", "1"}, "das ist ein Verzeichnis");
    refused(2, {"laden", At("nein"), books, "--tabelle", "bank"}, "--mandant sagt, in wessen Bücher");
    refused(3, {"laden", At("nein"), At("n")}, "ist kein Verzeichnis");
    refused(3, {"laden", books, At("n")}, "es fehlt fista.seq");
    refused(2, {"laden", At("x"), books, "--mandant", "0"}, "„0“ ist keine Zahl von 1 bis 32767");
    refused(2, {"laden", At("x"), books, "--hoechstens", "x"}, "„x“ ist keine Zahl ab 0");
    refused(2, {"laden", At("x"), books, "--anfuegen"}, "Die Angabe --anfuegen gibt es nur mit --tabelle.");
    refused(3, {"kopie", At("nein"), At("x")}, "ist kein Verzeichnis");
    refused(3, {"kopie", books, books}, "auf sich selbst");
    refused(3, {"kopie", books, At("b/DB/kopie")}, "liegt zwischen den Jahren der Bücher");
    refused(3, {"sichern", books, At("b/DB/1998/sicherung")}, "liegt zwischen den Jahren der Bücher");
    for (const char *file : {"b/DB/books.mdb", "b/DB/1998/books.mdb-lock", "b/DB/1998/books.mdb-gate"}) {
        refused(3, {"sichern", books, At(file), "--tabelle", "fista", "--ersetzen"}, "gehört zu Büchern");
    }
    EXPECT_EQ(0, tests::Books({"pruefen", books}).ExitCode);
    refused(3, {"kopie", books, At(".")}, "enthält anderes als Bücher");
    WriteFile(At("brief"), "x");
    refused(3, {"kopie", books, At("brief")}, "ist kein Verzeichnis");
    refused(3, {"sichern", books, At("brief")}, "ist kein Verzeichnis");
    ExpectOnly({"b", "brief"});
}

TEST_F(MoveBooks, WhoWorksInTheBooksIsNotDisturbed)
{
    ASSERT_EQ(0, Save().ExitCode);
    const TableFile held(LayoutOf(TableSako), Data / "1998", OpenMode::Normal);
    const std::string terms = ReadFile(Saved / "1998" / "zahlziel.seq");
    for (const Result &result :
         {LoadTable("zahlziel", terms, {"--ersetzen"}),
          LoadTable("fista", ReadFile(Saved / "fista.seq"), {"--ersetzen"}),
          tests::Books({"laden", Saved.string(), Books.string(), "--ersetzen"}),
          tests::Books({"laden", Saved.string(), Books.string(), "--mandant", "2", "--ersetzen"})}) {
        EXPECT_EQ(3, result.ExitCode) << result.Out;
        EXPECT_TRUE(Has(result.Err, "in einer anderen Anwendung geöffnet")) << result.Err;
    }
    // Saving and copying go on beside them.
    EXPECT_EQ(0, Save({"--ersetzen"}).ExitCode);
    EXPECT_EQ(0, tests::Books({"kopie", Books.string(), At("k")}).ExitCode);
}

// ---- What may happen on the way ----

TEST_F(MoveBooks, AFullDiskLeavesNothing)
{
    ASSERT_EQ(0, Save().ExitCode);
    // A shell that lets no file grow beyond 300 KiB, which the store reports as a full disk.
    const auto limited = [](const std::string &command) {
        return tests::Run(
            {"/bin/bash", {"-c", "trap '' XFSZ; ulimit -f 300; exec " BOOKS_PROGRAM " " + command}});
    };
    const auto before = FilesBelow(Saved);
    for (const std::string &command :
         {"laden " + Saved.string() + " " + At("n"),
          "laden " + Saved.string() + " " + Books.string() + " --ersetzen",
          "kopie " + Books.string() + " " + At("n"), "sichern " + Books.string() + " " + At("n"),
          "sichern " + Books.string() + " " + At("n") + " --tabelle bat --mandant 1"}) {
        const Result result = limited(command);
        if (Has(command, "--tabelle bat")) {
            EXPECT_EQ(0, result.ExitCode) << result.Err; // small enough
            fs::remove(At("n"));
            continue;
        }
        EXPECT_EQ(3, result.ExitCode) << command << result.Out << result.Err;
        // The store tells a write that was cut short by a full disk from any other failure only sometimes.
        EXPECT_TRUE(Has(result.Err, "der Datenträger ist voll") ||
                    Has(result.Err, "die Datei läßt sich nicht lesen oder schreiben"))
            << command << result.Err;
        EXPECT_FALSE(fs::exists(At("n"))) << command;
    }
    ExpectOnly({"b", "s"});
    EXPECT_EQ(before, FilesBelow(Saved));
    EXPECT_EQ(0, tests::Books({"pruefen", Books.string()}).ExitCode);
}

TEST_F(MoveBooks, AKilledLoadIsAbsentOrWhole)
{
    ASSERT_EQ(0, Save().ExitCode);
    const std::string other = At("o");
    ASSERT_EQ(0, tests::Books({"beispiel", other, "--buchungen", "0"}).ExitCode);
    ASSERT_EQ(0, tests::Books({"sichern", other, At("empty")}).ExitCode);
    const auto full = FilesBelow(Saved);
    const auto empty = FilesBelow(At("empty"));
    int wholes = 0;
    int absents = 0;
    for (useconds_t after_us = 2000; after_us < 2000000; after_us = after_us * 3 / 2) {
        const int ended = RunAndKill({"laden", Saved.string(), other, "--ersetzen"}, after_us);
        ASSERT_EQ(0, tests::Books({"sichern", other, At("now"), "--ersetzen"}).ExitCode);
        const auto now = FilesBelow(At("now"));
        ASSERT_TRUE(now == full || now == empty) << "killed after " << after_us << " µs";
        ++(now == full ? wholes : absents);
        if (ended == 0) break;
    }
    EXPECT_GT(absents, 0);
    // The next one clears away what the killed ones left.
    ASSERT_EQ(0, tests::Books({"laden", Saved.string(), other, "--ersetzen"}).ExitCode);
    for (const auto &entry : fs::directory_iterator(other)) {
        EXPECT_NE('.', entry.path().filename().string()[0]) << entry.path();
    }
    EXPECT_EQ(0, tests::Books({"pruefen", other}).ExitCode);
}

TEST_F(MoveBooks, AnInterruptedLoadClearsUpBehindItself)
{
    ASSERT_EQ(0, Save().ExitCode);
    const pid_t child = fork();
    if (child == 0) {
        if (freopen("/dev/null", "w", stderr) == nullptr) _exit(126);
        execl(BOOKS_PROGRAM, BOOKS_PROGRAM, "beispiel", At("gross").c_str(), "--buchungen", "500000",
              nullptr);
        _exit(127);
    }
    // Until it has begun.
    const std::string hidden = At((".gross.neu-" + std::to_string(child)).c_str());
    for (int i = 0; i < 5000 && !fs::exists(hidden); ++i) {
        usleep(1000);
    }
    EXPECT_TRUE(fs::exists(hidden));
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(130, WEXITSTATUS(status));
    ExpectOnly({"b", "s"});
}

TEST_F(MoveBooks, ADirectoryThatCannotBeWrittenIsTold)
{
    // Nobody may make anything here, not even root.
    const std::string closed = "/sys/";
    ASSERT_EQ(0, Save().ExitCode);
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{"sichern", Books.string(), closed + "s"},
          std::vector<std::string>{"sichern", Books.string(), closed + "t", "--tabelle", "sako"},
          std::vector<std::string>{"laden", Saved.string(), closed + "n"},
          std::vector<std::string>{"kopie", Books.string(), closed + "k"},
          std::vector<std::string>{"beispiel", closed + "b"}}) {
        const Result result = tests::Books(arguments);
        EXPECT_EQ(3, result.ExitCode);
        EXPECT_TRUE(Has(result.Err, "der Zugriff ist nicht erlaubt") ||
                    Has(result.Err, "der Datenträger läßt sich nur lesen"))
            << result.Err;
    }
}

TEST_F(MoveBooks, DamagedBooksAreNotSavedInPart)
{
    fs::resize_file(Data / "1998" / "books.mdb", 40960);
    for (const char *command : {"sichern", "kopie"}) {
        const Result result = tests::Books({command, Books.string(), At("x")});
        EXPECT_EQ(3, result.ExitCode);
        EXPECT_TRUE(Has(result.Err, "1998")) << result.Err;
        EXPECT_FALSE(fs::exists(At("x")));
    }
    ExpectOnly({"b"});
}

TEST_F(MoveBooks, OverwrittenPagesEndReadingWithAWord)
{
    const std::string whole = ReadFile(Data / "1998" / "books.mdb");
    for (const char filler : {'\xEE', '\0', '\xFF'}) {
        WriteFile(Data / "1998" / "books.mdb",
                  whole.substr(0, 8192) + std::string(whole.size() - 8192, filler));
        for (const std::vector<std::string> &arguments :
             {std::vector<std::string>{"zeigen", "bube", Books.string()},
              std::vector<std::string>{"sichern", Books.string(), At("x"), "--tabelle", "bube"},
              std::vector<std::string>{"sichern", Books.string(), At("y")}}) {
            const Result result = tests::Books(arguments);
            EXPECT_EQ(3, result.ExitCode) << arguments[0] << int{filler};
            EXPECT_TRUE(Has(result.Err, "books: ")) << result.Err;
            EXPECT_FALSE(fs::exists(At("x")));
            EXPECT_FALSE(fs::exists(At("y")));
        }
    }
}

TEST_F(MoveBooks, OverwrittenPagesEndOnlyTheCopy)
{
    // The pages behind the first two are nonsense.
    const std::string whole = ReadFile(Data / "1998" / "books.mdb");
    WriteFile(Data / "1998" / "books.mdb", whole.substr(0, 8192) + std::string(whole.size() - 8192, '\xEE'));
    const Result result = tests::Books({"kopie", Books.string(), At("x")});
    EXPECT_EQ(3, result.ExitCode) << result.Err;
    EXPECT_FALSE(fs::exists(At("x")));
    ExpectOnly({"b"});
}

// ---- Copying ----

TEST_F(MoveBooks, ACopyHasIniFilesOfItsOwnAndKeepsTheRest)
{
    WriteFile(Books / "vark.ini", ReadFile(Books / "vark.ini") + "; Notiz\nStapel1=16\n");
    const Result result = tests::Books({"kopie", Books.string(), At("k")});
    ASSERT_EQ(0, result.ExitCode) << result.Err;
    const std::string ini = ReadFile(Directory.Path / "k" / "vark.ini");
    EXPECT_TRUE(Has(ini, "Pfad=" + At("k") + "/DB\n")) << ini;
    EXPECT_TRUE(Has(ini, "; Notiz\n")) << ini;
    EXPECT_TRUE(Has(ini, "Stapel1=16\n")) << ini;
    EXPECT_TRUE(Has(Vark(At("k"), {"status"}).Out, "Daten: " + At("k") + "/DB\n"));
    ASSERT_EQ(0, Save().ExitCode);
    ASSERT_EQ(0, tests::Books({"sichern", At("k"), At("s2")}).ExitCode);
    EXPECT_EQ(FilesBelow(Saved), FilesBelow(At("s2")));

    EXPECT_EQ(3, tests::Books({"kopie", Books.string(), At("k")}).ExitCode);
    EXPECT_EQ(0, tests::Books({"kopie", Books.string(), At("k"), "--ersetzen"}).ExitCode);
    ExpectOnly({"b", "k", "s", "s2"});
}

TEST_F(MoveBooks, CopiesTakenWhileOthersPostAreConsistent)
{
    // Bookings come in as lines, with tax, costs and splits left to the program, until the copies are done.
    std::string bookings = "Datum;Beleg;Sollkonto;Habenkonto;Betrag;Text\n";
    for (int i = 0; i < 100000; ++i) {
        bookings += "15.04.1998;B" + std::to_string(i) + ";10010;5010;116,00;Verkauf\n";
    }
    WriteFile(At("buchungen.csv"), bookings);
    const pid_t poster = fork();
    if (poster == 0) {
        if (freopen("/dev/null", "w", stdout) == nullptr || freopen("/dev/null", "w", stderr) == nullptr)
            _exit(126);
        setenv("VARK_UI", "headless", 1);
        execl(VARK_PROGRAM, VARK_PROGRAM, "--config", Books.c_str(), "buchen", "--mandant", "1", "--stapel",
              "16", "--datei", At("buchungen.csv").c_str(), nullptr);
        _exit(127);
    }
    const auto count = [&](const std::string &books) {
        const Result shown = tests::Books({"zeigen", "bat", books, "--felder", "Buchungsnummer", "--csv"});
        EXPECT_EQ(0, shown.ExitCode) << shown.Err;
        return std::count(shown.Out.begin(), shown.Out.end(), '\n') - 1;
    };
    int64_t last = 0;
    int grown = 0;
    for (int i = 0; i < 5; ++i) {
        const Result copied = tests::Books({"kopie", Books.string(), At("k"), "--ersetzen"});
        ASSERT_EQ(0, copied.ExitCode) << copied.Err;
        const Result checked = tests::Books({"pruefen", At("k")});
        EXPECT_EQ(0, checked.ExitCode) << checked.Out;
        const int64_t now = count(At("k"));
        EXPECT_GE(now, last);
        if (now > last) ++grown;
        last = now;
    }
    // The books themselves agree at any moment, too.
    for (int i = 0; i < 8; ++i) {
        const Result checked = tests::Books({"pruefen", Books.string()});
        EXPECT_EQ(0, checked.ExitCode) << checked.Out.substr(0, 2000) << checked.Err;
    }
    // What is saved while others post loads again, and agrees as well.
    ASSERT_EQ(0, Save().ExitCode);
    ASSERT_EQ(0, tests::Books({"laden", Saved.string(), At("n")}).ExitCode);
    EXPECT_EQ(0, tests::Books({"pruefen", At("n")}).ExitCode);
    kill(poster, SIGTERM);
    waitpid(poster, nullptr, 0);
    EXPECT_GT(grown, 1) << "nobody posted meanwhile";
}

// How many open descriptions hold the lock that says that a process is in these books.
int PresenceOf(const fs::path &store)
{
    struct stat facts = {};
    if (stat(store.c_str(), &facts) != 0) return 0;
    const std::string inode = ":" + std::to_string(facts.st_ino) + " ";
    const std::string byte = " " + std::to_string(BtrPresenceByte) + " ";
    int count = 0;
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (Has(line, "OFDLCK") && Has(line, "READ") && Has(line, inode) && Has(line, byte)) ++count;
    }
    return count;
}

TEST_F(MoveBooks, AKilledCopyEndsWithItsReaderAndTheNextClearsUp)
{
    const std::string large = At("gross");
    ASSERT_EQ(0, tests::Books({"beispiel", large, "--buchungen", "100000"}).ExitCode);
    const fs::path store = fs::path(large) / "DB" / "1997" / "books.mdb";
    // What the killed program leaves running becomes a child of this one.
    ASSERT_EQ(0, prctl(PR_SET_CHILD_SUBREAPER, 1));
    for (const char *command : {"kopie", "sichern"}) {
        const pid_t child = fork();
        if (child == 0) {
            execl(BOOKS_PROGRAM, BOOKS_PROGRAM, command, large.c_str(), At("ziel").c_str(), nullptr);
            _exit(127);
        }
        // The program holds the books open, and its reader for itself.
        bool isReading = false;
        for (int i = 0; i < 100000 && !isReading && waitpid(child, nullptr, WNOHANG) == 0; ++i) {
            isReading = PresenceOf(store) >= 2;
        }
        ASSERT_TRUE(isReading) << command;
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        while (waitpid(-1, &status, 0) > 0) {
            EXPECT_TRUE(WIFSIGNALED(status)) << command << ": the reader went on to its end";
        }
        EXPECT_EQ(0, PresenceOf(store));
        EXPECT_FALSE(fs::exists(At("ziel")));
        EXPECT_EQ(0, tests::Books({"pruefen", large}).ExitCode);
    }
    prctl(PR_SET_CHILD_SUBREAPER, 0);
    ASSERT_EQ(0, tests::Books({"kopie", Books.string(), At("ziel")}).ExitCode);
    ExpectOnly({"b", "gross", "ziel"});
}

TEST_F(MoveBooks, LeftoversGoWhenNobodyHoldsThemWhoeverHasTheirNumber)
{
    // There is always a process 1, and it is none of ours.
    fs::create_directory(At(".k.neu-1"));
    WriteFile(At(".k.neu-1") + "/rest", "x");
    fs::create_directory(At(".k.neu-2"));
    const int held = open(At(".k.neu-2").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(0, flock(held, LOCK_EX));
    fs::create_directory(At(".k.neu-eigenes"));
    ASSERT_EQ(0, tests::Books({"kopie", Books.string(), At("k")}).ExitCode);
    EXPECT_FALSE(fs::exists(At(".k.neu-1")));
    EXPECT_TRUE(fs::exists(At(".k.neu-2")));
    EXPECT_TRUE(fs::exists(At(".k.neu-eigenes")));
    close(held);
    ASSERT_EQ(0, tests::Books({"kopie", Books.string(), At("k"), "--ersetzen"}).ExitCode);
    EXPECT_FALSE(fs::exists(At(".k.neu-2")));
}

TEST_F(MoveBooks, WhoMayOnlyReadBooksSavesAndCopiesThem)
{
    const std::string nobody = geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
    const auto run = [&](const std::string &arguments) {
        return tests::Run({"/bin/sh", {"-c", nobody + "'" BOOKS_PROGRAM "' " + arguments}});
    };
    if (run("--version").ExitCode != 0) GTEST_SKIP() << "the program is not for everybody here";
    const fs::path open = At("offen");
    fs::create_directory(open);
    tests::Run({"/bin/sh",
                {"-c", "chmod 755 '" + At(".") + "'; chmod 777 '" + open.string() + "'; chmod -R a+rX,a-w '" +
                           Books.string() + "'"}});
    const Result saved = run("sichern '" + Books.string() + "' '" + (open / "s").string() + "'");
    EXPECT_EQ(0, saved.ExitCode) << saved.Err;
    const Result copied = run("kopie '" + Books.string() + "' '" + (open / "k").string() + "'");
    EXPECT_EQ(0, copied.ExitCode) << copied.Err;
    EXPECT_EQ(0, tests::Books({"pruefen", (open / "k").string()}).ExitCode);
    ASSERT_EQ(0, Save().ExitCode);
    EXPECT_EQ(
        0, tests::Run({"/bin/sh", {"-c", "diff -r '" + Saved.string() + "' '" + (open / "s").string() + "'"}})
               .ExitCode)
        << "the same comes of it";
    tests::Run({"/bin/sh", {"-c", "chmod -R u+w '" + At(".") + "'"}});
}

TEST_F(MoveBooks, ClosedStandardDescriptorsHarmNoBooks)
{
    const std::string program = BOOKS_PROGRAM;
    for (const char *closed : {"0<&- 1>&- 2>&-", "0<&- 2>&-", "1>&- 2>&-"}) {
        const auto run = [&](const std::string &arguments) {
            tests::Run({"/bin/sh", {"-c", "'" + program + "' " + arguments + " " + closed}});
        };
        run("beispiel '" + At("zu") + "' --buchungen 600 --ersetzen");
        EXPECT_EQ(0, tests::Books({"pruefen", At("zu")}).ExitCode) << closed;
        run("pruefen '" + At("zu") + "'");
        run("kopie '" + At("zu") + "' '" + At("k") + "' --ersetzen");
        EXPECT_EQ(0, tests::Books({"pruefen", At("k")}).ExitCode) << closed;
        run("laden '" + At("keine") + "' '" + At("zu") + "' --ersetzen");
        EXPECT_EQ(0, tests::Books({"pruefen", At("zu")}).ExitCode) << closed;
    }
}

TEST_F(MoveBooks, AnIniFileThatCannotBeReadIsNamed)
{
    fs::create_directories(At("config/vark"));
    fs::create_symlink("vark.ini", At("config/vark/vark.ini")); // leads to itself
    const Call call{BOOKS_PROGRAM, {"zeigen", "fista"}, {}, {{"XDG_CONFIG_HOME", At("config")}}};
    const Result circle = tests::Run(call);
    EXPECT_EQ(3, circle.ExitCode);
    EXPECT_TRUE(Has(circle.Err, At("config/vark/vark.ini") + ": Lesen der Einstellungen nicht möglich"))
        << circle.Err;
    fs::remove(At("config/vark/vark.ini"));
    fs::create_directory(At("config/vark/tolka.ini"));
    const Result directory = tests::Run(call);
    EXPECT_EQ(3, directory.ExitCode);
    EXPECT_TRUE(Has(directory.Err, At("config/vark/tolka.ini") +
                                       ": Lesen der Einstellungen nicht möglich, das "
                                       "ist keine Datei"))
        << directory.Err;
}

TEST_F(MoveBooks, SummariesAreJsonForPrograms)
{
    const auto number = [](const Result &result, const char *name) {
        rapidjson::Document json;
        json.Parse(result.Out.c_str());
        EXPECT_FALSE(json.HasParseError()) << result.Out;
        return json.HasParseError() ? -1 : json[name].GetInt64();
    };
    EXPECT_EQ(157, number(Save({"--json"}), "tabellen"));
    EXPECT_EQ(157, number(tests::Books({"laden", Saved.string(), At("n"), "--json"}), "tabellen"));
    EXPECT_EQ(7, number(tests::Books({"kopie", Books.string(), At("k"), "--json"}), "verzeichnisse"));
    EXPECT_EQ(6, number(tests::Books({"beispiel", At("m"), "--buchungen", "0", "--json"}), "verzeichnisse"));
}

TEST_F(MoveBooks, HelpHasAnExampleForEachCommand)
{
    for (const char *command : {"sichern", "laden", "kopie", "zeigen", "aufbau", "pruefen", "beispiel"}) {
        const Result help = tests::Books({command, "--hilfe"});
        EXPECT_EQ(0, help.ExitCode);
        EXPECT_TRUE(Has(help.Out, std::string("books ") + command)) << help.Out;
        EXPECT_TRUE(Has(help.Out, "Beispiel")) << help.Out;
    }
}

// A writer that has stopped in the middle of its work keeps the place of the only writer, which a copy needs
// for a moment.
TEST_F(MoveBooks, ACopyBesideAWriterThatHasStoppedComesToAnEnd)
{
    const fs::path to = Directory.Path / "to";
    fs::create_directory(to);
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    const pid_t writer = fork();
    if (writer == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        char block[128] = {};
        char data[1400] = {};
        char key[255] = {};
        uint32_t length = 0;
        (Data / "fista.btr").string().copy(key, 254);
        bool writes = BTRCALL(BtrOpOpen, block, data, &length, key, 255, 0) == BtrStatusOk &&
                      BTRCALL(BtrOpBegin, block, data, &length, key, 255, 0) == BtrStatusOk;
        length = sizeof data;
        writes = writes && BTRCALL(BtrOpGetFirst, block, data, &length, key, 255, 0) == BtrStatusOk &&
                 BTRCALL(BtrOpUpdate, block, data, &length, key, 255, 0) == BtrStatusOk;
        if (write(ready[1], writes ? "y" : "n", 1) == 1) raise(SIGSTOP);
        _exit(0);
    }
    char answer = 0;
    ASSERT_EQ(1, read(ready[0], &answer, 1));
    EXPECT_EQ('y', answer);
    ::books::longestStandstill_ms = 200;
    EXPECT_THROW(::books::CopyStore(Data, to), std::runtime_error);
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    fs::remove(to / "books.mdb");
    ::books::longestStandstill_ms = 30'000;
    EXPECT_NO_THROW(::books::CopyStore(Data, to)) << "its place is free again";
    EXPECT_TRUE(fs::exists(to / "books.mdb"));
    close(ready[0]);
    close(ready[1]);
    StopEngine();
}
