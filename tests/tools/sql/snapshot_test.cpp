// A statement sees the books of one moment, keeps nobody from writing, and writes nothing.
#include "tests/tools/sql/connection.h"
#include "tools/common/table_file.h"

#include <atomic>
#include <cstring>
#include <thread>

using namespace tests;
using namespace tools;
using namespace vark;
namespace fs = std::filesystem;

namespace {

struct SqlSnapshot : SqlBooks {
    fs::path Year = Data / "1998";

    void SetUp() override { MakeBooks({"--buchungen", "600"}); }

    // Adds a Zahlungsziel and a Stapel together, in one transaction.
    void AddPair(int32_t number) const
    {
        TableFile terms(LayoutOf(TableZahlziel), Year, OpenMode::Normal);
        TableFile batches(LayoutOf(TableStapel), Year, OpenMode::Normal);
        EngineTransaction transaction;
        ZahlzielRecord term{};
        term.Nummer = number;
        terms.Insert(&term);
        StapelRecord batch{};
        batch.Nummer = number;
        std::memcpy(batch.Name, "Paar", 4);
        batches.Insert(&batch);
        transaction.Finish();
    }
};

} // namespace

TEST_F(SqlSnapshot, AStatementThatHasBegunDoesNotSeeWhatIsWrittenMeanwhile)
{
    SqlConnection sql(Books);
    const int64_t before = sql.Number("SELECT count(*) FROM zahlziel_1998");
    sqlite3_stmt *statement = sql.Prepare(
        "SELECT z.Nummer, (SELECT count(*) FROM stapel_1998 WHERE Nummer >= 900) FROM zahlziel_1998 z");
    ASSERT_TRUE(sql.Step(statement));
    AddPair(900);
    int64_t rows = 1;
    do {
        EXPECT_EQ("0", SqlConnection::RowOf(statement)[1])
            << "a table that is opened later is of the moment too";
    } while (sql.Step(statement) && ++rows > 0);
    EXPECT_EQ(before, rows);
    sqlite3_finalize(statement);
    EXPECT_EQ(before + 1, sql.Number("SELECT count(*) FROM zahlziel_1998")) << "the next one sees it";
    EXPECT_EQ("1", sql.Value("SELECT count(*) FROM stapel_1998 WHERE Nummer >= 900"));
}

TEST_F(SqlSnapshot, APosterIsNeverKeptWaitingAndItsTransactionsAreSeenWhole)
{
    SqlConnection sql(Books);
    constexpr int32_t first = 1000;
    constexpr int32_t pairs = 150;
    std::atomic<bool> isDone{false};
    std::thread poster([&] {
        for (int32_t i = 0; i < pairs; ++i) {
            AddPair(first + i);
        }
        StopEngine();
        isDone = true;
    });
    // One statement stands in the middle all the while, and another asks again and again.
    sqlite3_stmt *standing = sql.Prepare("SELECT Konto FROM sako_1998");
    SqlConnection asking(Books);
    EXPECT_TRUE(sql.Step(standing));
    int64_t last = 0;
    while (!isDone) {
        const SqlRow seen = asking.Rows("SELECT (SELECT count(*) FROM zahlziel_1998 WHERE Nummer >= 1000), "
                                        "(SELECT count(*) FROM stapel_1998 WHERE Nummer >= 1000)")[0];
        ASSERT_EQ(seen[0], seen[1]);
        EXPECT_GE(std::stoll(seen[0]), last);
        last = std::stoll(seen[0]);
    }
    poster.join();
    sqlite3_finalize(standing);
    EXPECT_EQ(std::to_string(pairs), asking.Value("SELECT count(*) FROM stapel_1998 WHERE Nummer >= 1000"));
}

TEST_F(SqlSnapshot, NothingStaysOpenBetweenStatements)
{
    SqlConnection sql(Books);
    EXPECT_NE("0", sql.Value("SELECT count(*) FROM sako"));
    // Alone: refused while anybody has the table open.
    EXPECT_NO_THROW(TableFile(LayoutOf(TableSako), Year, OpenMode::Exclusive));
    sqlite3_stmt *statement = sql.Prepare("SELECT * FROM sako_1998");
    EXPECT_TRUE(sql.Step(statement));
    EXPECT_THROW(TableFile(LayoutOf(TableSako), Year, OpenMode::Exclusive), EngineError);
    sqlite3_finalize(statement);
    EXPECT_NO_THROW(TableFile(LayoutOf(TableSako), Year, OpenMode::Exclusive));
}

TEST_F(SqlSnapshot, TheFilesAreAsTheyWere)
{
    const auto contents = [&] {
        std::string all;
        for (const fs::directory_entry &entry : fs::recursive_directory_iterator(Data)) {
            if (entry.path().filename() == "books.mdb") all += ReadFile(entry.path());
        }
        return all;
    };
    const std::string before = contents();
    {
        SqlConnection sql(Books);
        for (const char *view : {"buchungen", "stapelbuchungen", "salden", "offene_posten", "kosten"}) {
            sql.Rows(std::string("SELECT * FROM ") + view);
        }
        EXPECT_EQ("table bube may not be modified", sql.Refusal("DELETE FROM bube"));
        EXPECT_EQ("table sako_1998 may not be modified", sql.Refusal("UPDATE sako_1998 SET Name = 'x'"));
        EXPECT_EQ("table user may not be modified", sql.Refusal("INSERT INTO user (Name) VALUES ('x')"));
        sql.Rows("DROP TABLE temp.sako");
    }
    StopEngine();
    EXPECT_TRUE(before == contents()) << "of " << before.size() << " bytes";
    SqlConnection again(Books);
    EXPECT_NE("0", again.Value("SELECT count(*) FROM sako"));
}

TEST_F(SqlSnapshot, OtherBooksTakeThePlaceOfTheFirst)
{
    TemporaryDirectory other;
    ASSERT_EQ(0, tests::Books({"beispiel", (other.Path / "b").string(), "--buchungen", "0"}).ExitCode);
    SqlConnection sql(Books);
    EXPECT_NE("0", sql.Value("SELECT count(*) FROM bube"));
    EXPECT_EQ((other.Path / "b" / "DB").string(),
              sql.Value("SELECT buecher_oeffnen('" + (other.Path / "b").string() + "')"));
    EXPECT_EQ("0", sql.Value("SELECT count(*) FROM bube"));
    EXPECT_NE("", sql.Refusal("SELECT buecher_oeffnen('" + (other.Path / "nirgends").string() + "')"));
    EXPECT_EQ("0", sql.Value("SELECT count(*) FROM bube")) << "what was open stays open";
}

TEST_F(SqlSnapshot, AnEmptyDirectoryHasNoBooks)
{
    SqlConnection sql(Books);
    fs::create_directory(Directory.Path / "leer");
    const std::string empty = (Directory.Path / "leer").string();
    EXPECT_EQ("In " + empty + " liegen keine Bücher.",
              sql.Refusal("SELECT buecher_oeffnen('" + empty + "')"));
    EXPECT_EQ("Das Verzeichnis der Bücher fehlt.", sql.Refusal("SELECT buecher_oeffnen('')"));
}

TEST_F(SqlSnapshot, BooksThatWereExchangedAreReadAnew)
{
    SqlConnection sql(Books);
    EXPECT_NE("0", sql.Value("SELECT count(*) FROM bube"));
    MakeBooks({"--buchungen", "0"});
    EXPECT_EQ("0", sql.Value("SELECT count(*) FROM bube"));
}

TEST_F(SqlSnapshot, AConnectionMayGoFromThreadToThread)
{
    SqlConnection sql(Books);
    const std::string here = sql.Value("SELECT count(*) FROM sako");
    std::string there;
    std::thread([&] { there = sql.Value("SELECT count(*) FROM sako"); }).join();
    EXPECT_EQ(here, there);
}

TEST_F(SqlSnapshot, ATableOfOnesOwnMakingTakesADirectory)
{
    SqlConnection sql(Books);
    const std::string data = Data.string();
    sql.Rows("CREATE VIRTUAL TABLE temp.konten USING buecher('" + data + "', sako, '1997')");
    EXPECT_EQ(sql.Value("SELECT count(*) FROM sako_1997"), sql.Value("SELECT count(*) FROM konten"));
    EXPECT_NE(std::string::npos,
              sql.Refusal("CREATE VIRTUAL TABLE x USING buecher('" + data + "')").find("TABELLE"));
    EXPECT_NE(
        std::string::npos,
        sql.Refusal("CREATE VIRTUAL TABLE x USING buecher('" + data + "', nix)").find("haben Bücher nicht"));
    EXPECT_NE(std::string::npos,
              sql.Refusal("CREATE VIRTUAL TABLE x USING buecher('" + data + "', fista, '1998')")
                  .find("gibt es nicht"));
    sql.Rows("CREATE VIRTUAL TABLE temp.spaeter USING buecher('" + data + "', sako, '2005')");
    EXPECT_NE(std::string::npos, sql.Refusal("SELECT * FROM spaeter").find("2005/sako.btr"));
}

TEST_F(SqlSnapshot, ASchemaThatSomebodyElseWroteReadsNoBooks)
{
    SqlConnection sql(Books);
    sql.Rows("CREATE VIRTUAL TABLE main.konten USING buecher('" + Data.string() + "', sako)");
    sql.Rows("CREATE VIEW main.versteckt AS SELECT Konto FROM konten");
    EXPECT_NE(std::string::npos, sql.Refusal("SELECT * FROM versteckt").find("unsafe use"));
}
