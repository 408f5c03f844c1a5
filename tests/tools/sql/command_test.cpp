// books sql as a person and a script use it, and the extension in SQLite's own shell.
#include "tests/tools/program.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <pty.h>
#include <rapidjson/document.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

struct SqlCommand : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "b ' \"";

    void SetUp() override
    {
        ASSERT_EQ(0, tests::Books({"beispiel", Books.string(), "--buchungen", "600"}).ExitCode);
    }
    Result Ask(const std::vector<std::string> &arguments, const std::string &input = {}) const
    {
        std::vector<std::string> all = {"sql", Books.string()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return tests::Run({BOOKS_PROGRAM, all, input});
    }
    void ExpectRefused(const std::string &statement, int exitCode, const std::string &why) const
    {
        const Result result = Ask({statement});
        EXPECT_EQ(exitCode, result.ExitCode) << statement;
        EXPECT_EQ("books: " + why + "\n", result.Err) << statement;
        EXPECT_EQ("", result.Out) << statement;
    }
};

} // namespace

TEST_F(SqlCommand, ATableIsAsWideAsItsRows)
{
    const Result result =
        Ask({"SELECT 1 AS Zahl, 'Ä' AS Text, NULL AS Nichts UNION ALL SELECT 100, 'bc', NULL"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("Zahl  Text  Nichts\n"
              "────  ────  ──────\n"
              "   1  Ä\n"
              " 100  bc\n",
              result.Out);
}

TEST_F(SqlCommand, CsvAndJsonKeepNumbersTextsAndNothingApart)
{
    const std::string statement = "SELECT 1 AS a, 2.5 AS b, 'x;\"y' AS c, NULL AS d, x'0AFF' AS e";
    EXPECT_EQ("a;b;c;d;e\n1;2.5;\"x;\"\"y\";;0AFF\n", Ask({statement, "--csv"}).Out);
    rapidjson::Document json;
    json.Parse(Ask({statement, "--json"}).Out.c_str());
    ASSERT_FALSE(json.HasParseError());
    EXPECT_EQ(1, json[0]["a"].GetInt());
    EXPECT_EQ(2.5, json[0]["b"].GetDouble());
    EXPECT_STREQ("x;\"y", json[0]["c"].GetString());
    EXPECT_TRUE(json[0]["d"].IsNull());
    EXPECT_STREQ("0AFF", json[0]["e"].GetString());
}

TEST_F(SqlCommand, SeveralStatementsAreAnsweredInTurn)
{
    EXPECT_EQ("a\n1\nb\n2\n", Ask({"SELECT 1 AS a; -- und\nSELECT 2 AS b;", "--csv"}).Out);
    EXPECT_EQ("a\n1\nb\n2\n", Ask({"--csv"}, "SELECT 1\nAS a;\n\nSELECT 2 AS b").Out);
}

TEST_F(SqlCommand, TheInputIsReadToTheFirstThatFails)
{
    const Result result = Ask({"--csv"}, "SELECT 1 AS a;\nSELECT x;\nSELECT 2;\n");
    EXPECT_EQ(2, result.ExitCode);
    EXPECT_EQ("a\n1\n", result.Out);
    EXPECT_EQ("books: Eine Spalte „x“ gibt es nicht.\n", result.Err);
}

TEST_F(SqlCommand, WhatSqliteDoesNotUnderstandIsAWrongCall)
{
    ExpectRefused("SELEC 1", 2, "Bei „SELEC“ ist die Anweisung nicht zu verstehen.");
    ExpectRefused("SELECT 1 FROM nix", 2,
                  "Eine Tabelle „nix“ gibt es nicht. Die Tabellen nennt: books aufbau");
    ExpectRefused("SELECT x FROM sako", 2, "Eine Spalte „x“ gibt es nicht.");
    ExpectRefused("SELECT nix(1)", 2, "Eine Funktion „nix“ gibt es nicht.");
    ExpectRefused("SELECT abs(1, 2)", 2, "Die Funktion „abs“ nimmt eine andere Zahl von Werten.");
    ExpectRefused("SELECT Konto FROM sako, debi", 2,
                  "Die Spalte „Konto“ haben mehrere Tabellen; setzen Sie den Namen der Tabelle davor.");
    ExpectRefused("SELECT", 2, "Die Anweisung ist nicht vollständig.");
    ExpectRefused("SELECT sum(x) FROM (SELECT 9223372036854775807 AS x UNION ALL SELECT 1)", 3,
                  "Die Summe ist zu groß.");
}

TEST_F(SqlCommand, NothingIsEverChanged)
{
    const std::string file = (Directory.Path / "x.db").string();
    const std::string why = "books sql liest die Bücher nur; diese Anweisung würde etwas ändern.";
    for (const std::string &statement :
         {std::string("DELETE FROM bube"), std::string("UPDATE sako_1998 SET Name = ''"),
          std::string("INSERT INTO salden VALUES (1)"), std::string("CREATE TABLE x (a)"),
          std::string("DROP VIEW salden"), "ATTACH '" + file + "' AS x", "VACUUM INTO '" + file + "'"}) {
        ExpectRefused(statement, 1, why);
    }
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(SqlCommand, PlacesWithoutBooksAreNamed)
{
    const auto askAt = [](const fs::path &place) {
        return tests::Run({BOOKS_PROGRAM, {"sql", place.string(), "SELECT 1"}});
    };
    const fs::path missing = Directory.Path / "nirgends";
    EXPECT_EQ(3, askAt(missing).ExitCode);
    EXPECT_EQ("books: " + missing.string() + " ist kein Verzeichnis.\n", askAt(missing).Err);

    const fs::path empty = Directory.Path / "leer";
    fs::create_directory(empty);
    EXPECT_EQ(3, askAt(empty).ExitCode);
    EXPECT_EQ("books: In " + empty.string() + " liegen keine Bücher.\n", askAt(empty).Err);

    const fs::path foreign = Directory.Path / "fremd";
    fs::create_directory(foreign);
    WriteFile(foreign / "books.mdb", std::string(8192, 'x'));
    EXPECT_EQ(3, askAt(foreign).ExitCode);
    EXPECT_NE(std::string::npos, askAt(foreign).Err.find("die Datei gehört nicht zu dieser Datenbank"))
        << askAt(foreign).Err;

    const fs::path year = Books / "DB" / "1998";
    EXPECT_EQ(3, askAt(year).ExitCode);
    EXPECT_NE(std::string::npos, askAt(year).Err.find("fista.btr: Öffnen nicht möglich")) << askAt(year).Err;
}

TEST_F(SqlCommand, WhoMayNotReadIsToldSo)
{
    const fs::path data = Books / "DB";
    fs::permissions(data / "1998" / "books.mdb", fs::perms::none);
    // The superuser may read everything: somebody else asks.
    std::string program = BOOKS_PROGRAM;
    std::vector<std::string> arguments = {"sql", data.string(), "SELECT count(*) FROM sako"};
    if (geteuid() == 0) {
        fs::permissions(Directory.Path, fs::perms::all);
        arguments.insert(arguments.begin(),
                         {"--reuid=65534", "--regid=65534", "--clear-groups", BOOKS_PROGRAM});
        program = "/usr/bin/setpriv";
    }
    const Result result = tests::Run({program, arguments});
    EXPECT_EQ(3, result.ExitCode) << result.Out;
    EXPECT_NE(std::string::npos, result.Err.find("nicht erlaubt")) << result.Err;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SKIP_WITH_SANITIZERS()                                                                               \
    GTEST_SKIP() << "SQLite's own program has no sanitizer, which the extension needs"
#else
#define SKIP_WITH_SANITIZERS() static_cast<void>(0)
#endif

// ---- At a terminal ----

namespace {

// Runs books sql at a terminal of its own, with `input` typed, and gives back all that stands on it.
std::string AtTerminal(const fs::path &books, const fs::path &path, const std::string &input)
{
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        setenv("PATH", path.c_str(), 1);
        execl(BOOKS_PROGRAM, "books", "sql", books.c_str(), nullptr);
        _exit(127);
    }
    (void)!write(terminal, input.data(), input.size());
    std::string shown;
    char piece[4096];
    for (ssize_t got; (got = read(terminal, piece, sizeof piece)) > 0;) {
        shown.append(piece, static_cast<size_t>(got));
    }
    close(terminal);
    int status = 0;
    waitpid(child, &status, 0);
    return shown + "\nstatus " + std::to_string(WEXITSTATUS(status));
}

} // namespace

TEST_F(SqlCommand, AtATerminalWithoutAShellLinesAreRead)
{
    const std::string shown =
        AtTerminal(Books, Directory.Path, "SELECT nix;\nSELECT 40 +\n2 AS Antwort;\n\x04");
    EXPECT_NE(std::string::npos, shown.find("books> ")) << shown;
    EXPECT_NE(std::string::npos, shown.find("  ...> ")) << shown;
    EXPECT_NE(std::string::npos, shown.find("Eine Spalte „nix“ gibt es nicht.")) << shown;
    EXPECT_NE(std::string::npos, shown.find("     42")) << shown;
    EXPECT_TRUE(shown.ends_with("status 0")) << shown;
}

TEST_F(SqlCommand, AtATerminalSqlitesOwnShellHasTheBooksOpen)
{
    SKIP_WITH_SANITIZERS();
    ASSERT_TRUE(fs::exists("/usr/bin/sqlite3"));
    const std::string shown =
        AtTerminal(Books, "/usr/bin", ".mode csv\nSELECT count(*) AS Mandanten FROM fista;\n.quit\n");
    EXPECT_NE(std::string::npos, shown.find("Mandanten\r\r\n3\r\r\n")) << shown;
    EXPECT_TRUE(shown.ends_with("status 0")) << shown;
}

TEST_F(SqlCommand, AnyProgramOfSqliteLoadsTheExtension)
{
    SKIP_WITH_SANITIZERS();
    const Result result =
        tests::Run({"/usr/bin/sqlite3",
                    {"-box", "-cmd", ".load " SQL_EXTENSION, ":memory:"},
                    ".once /dev/null\nSELECT buecher_oeffnen('" + (Directory.Path / "c").string() +
                        "');\nSELECT Nummer FROM fista WHERE Nummer < 3;\n",
                    {}});
    EXPECT_NE(std::string::npos, result.Err.find("ist kein Verzeichnis")) << result.Err;

    fs::rename(Books, Directory.Path / "c");
    const Result good =
        tests::Run({"/usr/bin/sqlite3",
                    {"-box", "-cmd", ".load " SQL_EXTENSION, ":memory:"},
                    ".once /dev/null\nSELECT buecher_oeffnen('" + (Directory.Path / "c").string() +
                        "');\nSELECT Nummer FROM fista WHERE Nummer < 3;\n",
                    {}});
    EXPECT_EQ("┌────────┐\n│ Nummer │\n├────────┤\n│ 1      │\n│ 2      │\n└────────┘\n", good.Out)
        << good.Err;
    EXPECT_EQ("", good.Err);
}

TEST_F(SqlCommand, AnExtensionBesideAnotherRecordManagerIsNotLoaded)
{
    SKIP_WITH_SANITIZERS();
    const fs::path built = fs::path(SQL_EXTENSION).parent_path();
    const fs::path place = Directory.Path / "teile";
    fs::create_directory(place);
    fs::copy_file(built / "vark_sql.so", place / "vark_sql.so");
    const auto load = [&] {
        return tests::Run({"/usr/bin/sqlite3", {":memory:", ".load " + (place / "vark_sql").string()}});
    };
    const Result alone = load();
    EXPECT_NE(0, alone.ExitCode);
    EXPECT_NE(std::string::npos, alone.Err.find("libwbtrv32.so: cannot open shared object file"))
        << alone.Err;

    // One that lacks what this extension calls.
    fs::copy_file(built / "libvarkui.so", place / "libwbtrv32.so");
    const Result other = load();
    EXPECT_NE(0, other.ExitCode);
    EXPECT_NE(std::string::npos, other.Err.find("undefined symbol: Btr")) << other.Err;
}
