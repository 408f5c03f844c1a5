// The views against the library's own figures, to the Pfennig, over books drawn at random.
#include "include/vark40.h"
#include "tests/tools/sql/connection.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

using namespace tests;
namespace fs = std::filesystem;

namespace {

// Each seed makes other books; the library is bound to one place a process.
struct SqlFigures : SqlBooks, testing::WithParamInterface<int> {
    void SetUp() override
    {
        MakeBooks({"--buchungen", "600", "--saat", std::to_string(GetParam())});
        setenv("VARK_CONFIG_DIR", Books.c_str(), 1);
        setenv("VARK_UI", "headless", 1);
    }
};

std::string Digits(const std::string &amount)
{
    std::string digits;
    std::copy_if(amount.begin(), amount.end(), std::back_inserter(digits),
                 [](char c) { return (c >= '0' && c <= '9') || c == '-'; });
    return std::to_string(std::stoll(digits));
}

struct Kind {
    int32_t Number;
    const char *Name;
    const char *Table;
};
constexpr Kind kinds[] = {{1, "Sachkonto", "sako"}, {2, "Kreditor", "kred"}, {4, "Debitor", "debi"}};

std::vector<std::string> Split(const std::string &line, char by)
{
    std::vector<std::string> parts;
    std::istringstream stream(line);
    for (std::string part; std::getline(stream, part, by);) {
        parts.push_back(part);
    }
    return parts;
}

// The named columns of the lines of a report's CSV, which begins with a mark of its encoding.
SqlRows RowsOfCsv(const std::string &csv, const std::vector<std::string> &columns)
{
    SqlRows rows;
    std::vector<size_t> places;
    std::istringstream lines(csv.substr(csv.starts_with("\xEF\xBB\xBF") ? 3 : 0));
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) line.pop_back();
        std::vector<std::string> cells = Split(line, ';');
        if (places.empty()) {
            for (const std::string &name : columns) {
                const auto found = std::find(cells.begin(), cells.end(), name);
                EXPECT_NE(cells.end(), found) << name;
                if (found == cells.end()) return {};
                places.push_back(static_cast<size_t>(found - cells.begin()));
            }
            continue;
        }
        cells.resize(std::max(cells.size(), *std::max_element(places.begin(), places.end()) + 1));
        SqlRow row;
        for (const size_t at : places) {
            row.push_back(cells[at]);
        }
        rows.push_back(row);
    }
    return rows;
}

} // namespace

TEST_P(SqlFigures, SaldenAreTheLibrarysBalances)
{
    SqlConnection sql(Books);
    int accounts = 0;
    for (int32_t mandant = 1; mandant <= 3; ++mandant) {
        for (const Kind &kind : kinds) {
            const SqlRows rows =
                sql.Rows("SELECT Konto, Saldo FROM salden WHERE Kontoart = '" + std::string(kind.Name) +
                         "' AND Mandant = " + std::to_string(mandant) + " AND Jahr = 1998");
            EXPECT_EQ(sql.Value("SELECT count(*) FROM " + std::string(kind.Table) +
                                " WHERE Jahr = 1998 AND Mandant = " + std::to_string(mandant)),
                      std::to_string(rows.size()));
            for (const SqlRow &row : rows) {
                char saldo[17] = {};
                ASSERT_EQ(1, VARK_HoleSaldo(mandant, row[0].c_str(), kind.Number, 0, 2, saldo)) << row[0];
                EXPECT_EQ(Digits(saldo), row[1]) << mandant << " " << row[0];
                ++accounts;
            }
        }
    }
    EXPECT_GT(accounts, 100);
}

TEST_P(SqlFigures, FinalCostsAreTheSumsOfTheKostenstellen)
{
    SqlConnection sql(Books);
    for (const SqlRow &row : sql.Rows("SELECT Nummer FROM kore WHERE Mandant = 1 AND Jahr = 1998")) {
        char sum[17] = {};
        ASSERT_EQ(1, VARK_HoleSaldo(1, row[0].c_str(), 8, 0, 2, sum));
        EXPECT_EQ(
            Digits(sum),
            sql.Value("SELECT coalesce(sum(Betrag), 0) FROM (SELECT Betrag FROM kosten WHERE Endgueltig "
                      "AND Mandant = 1 AND Jahr = 1998 AND Kostenstelle = '" +
                      row[0] +
                      "' UNION ALL SELECT Betrag FROM kosten WHERE Endgueltig AND Mandant = 1 AND "
                      "Jahr = 1998 AND Kostenstelle2 = '" +
                      row[0] + "')"))
            << row[0];
    }
}

TEST_P(SqlFigures, BuchungenAreThoseOfThePostingCursor)
{
    SqlConnection sql(Books);
    for (int32_t mandant = 1; mandant <= 3; ++mandant) {
        const SqlRows rows = sql.Rows(
            "SELECT strftime('%d.%m.%Y', Belegdatum), Beleg, Sollkonto, Habenkonto, Betrag, Steuer FROM "
            "buchungen WHERE Jahr = 1998 AND Mandant = " +
            std::to_string(mandant));
        const char *const begin = mandant == 2 ? "01.07.1998" : "01.01.1998";
        ASSERT_EQ(1, VARK_InitHoleBube(mandant, begin, 0));
        size_t at = 0;
        for (int32_t left = 1; left == 1; ++at) {
            char datum[11];
            char beleg[9];
            char soll[8];
            char haben[8];
            char betrag[17];
            char steuer[17];
            left = VARK_HoleBube(nullptr, datum, beleg, nullptr, soll, nullptr, haben, nullptr, 2, betrag,
                                 nullptr, steuer);
            ASSERT_GT(left, 0);
            ASSERT_LT(at, rows.size());
            EXPECT_EQ((SqlRow{datum, beleg, soll, haben, Digits(betrag), Digits(steuer)}), rows[at]);
        }
        EXPECT_EQ(rows.size(), at);
    }
}

TEST_P(SqlFigures, TheSumsOfTheLedgerAreThoseOfItsPostings)
{
    SqlConnection sql(Books);
    // What the accounts have been charged with in their months is what the postings say.
    EXPECT_EQ("0", sql.Value("SELECT sum(Soll) - sum(Haben) FROM salden"));
    EXPECT_EQ("0", sql.Value("SELECT sum(Saldo) FROM salden WHERE Mandant = 2 AND Jahr = 1997"));
}

TEST_P(SqlFigures, TheSummenUndSaldenlisteHasTheSameBalances)
{
    SqlConnection sql(Books);
    const Result list = Vark(Books, {"bericht", "susa", "--mandant", "1", "--per", "31.12.98", "--csv"});
    ASSERT_EQ(0, list.ExitCode) << list.Err;
    int compared = 0;
    for (const SqlRow &row : RowsOfCsv(list.Out, {"Art", "Konto", "Saldo Soll", "Saldo Haben"})) {
        if (row[0] != "Zeile") continue;
        const auto pfennig = [&](size_t at) { return row[at].empty() ? 0 : std::stoll(Digits(row[at])); };
        EXPECT_EQ(sql.Number("SELECT Saldo FROM salden WHERE Kontoart = 'Sachkonto' AND Mandant = 1 AND "
                             "Jahr = 1998 AND Konto = '" +
                             row[1] + "'"),
                  pfennig(2) - pfennig(3))
            << row[1];
        ++compared;
    }
    EXPECT_GT(compared, 50) << list.Out;
}

TEST_P(SqlFigures, OpenItemsAreThoseOfTheCursor)
{
    SqlConnection sql(Books);
    for (const Kind &kind : {kinds[1], kinds[2]}) {
        const SqlRows rows = sql.Rows("SELECT Konto, Referenz, strftime('%d.%m.%Y', Termin), Betrag_Mandant, "
                                      "Waehrung FROM offene_posten "
                                      "WHERE Mandant = 1 AND Kontoart = '" +
                                      std::string(kind.Name) + "' ORDER BY Nummer");
        ASSERT_EQ(1, VARK_InitHoleOP(1, "", kind.Number, 0));
        size_t at = 0;
        for (int32_t left = 1; left == 1; ++at) {
            char konto[8];
            char referenz[10];
            char termin[11];
            char betrag[17];
            char waehrung[5];
            left = VARK_HoleOP(konto, referenz, nullptr, nullptr, termin, nullptr, nullptr, nullptr, 2,
                               betrag, nullptr, waehrung);
            ASSERT_GT(left, 0);
            ASSERT_LT(at, rows.size());
            EXPECT_EQ((SqlRow{konto, referenz, termin, Digits(betrag), waehrung}), rows[at]);
        }
        EXPECT_EQ(rows.size(), at);
    }
}

TEST_P(SqlFigures, OpenItemsAreThoseOfTheOpListe)
{
    SqlConnection sql(Books);
    const std::vector<std::string> columns = {"Konto", "Beleg 1", "Datum",          "Fällig", "Skonto bis",
                                              "Name",  "Text",    "Offener Betrag", "Währung"};
    size_t compared = 0;
    for (int32_t mandant = 1; mandant <= 3; ++mandant) {
        for (const Kind &kind : {kinds[1], kinds[2]}) {
            const Result list = Vark(
                Books, {"bericht", "op", "--mandant", std::to_string(mandant), "--art", kind.Name, "--csv"});
            ASSERT_EQ(0, list.ExitCode) << list.Err;
            SqlRows ofReport = RowsOfCsv(list.Out, columns);
            for (SqlRow &row : ofReport) {
                row[7] = Digits(row[7]);
            }
            SqlRows ofView =
                sql.Rows("SELECT Konto, Referenz, strftime('%d.%m.%Y', Datum), strftime('%d.%m.%Y', Termin), "
                         "strftime('%d.%m.%Y', Skontodatum), Name, Text, Betrag, Waehrung FROM offene_posten "
                         "WHERE Kontoart = '" +
                         std::string(kind.Name) + "' AND Mandant = " + std::to_string(mandant));
            std::sort(ofReport.begin(), ofReport.end());
            std::sort(ofView.begin(), ofView.end());
            EXPECT_EQ(ofReport, ofView) << mandant << " " << kind.Name;
            compared += ofView.size();
        }
    }
    EXPECT_GT(compared, 20U);
}

INSTANTIATE_TEST_SUITE_P(RandomBooks, SqlFigures, testing::Values(1, 2, 3));

namespace {

struct SqlStapel : SqlBooks {
    void SetUp() override { MakeBooks({"--buchungen", "600"}); }
};

} // namespace

TEST_F(SqlStapel, ABookingIsSeenInTheStapelAsSoonAsItIsMade)
{
    SqlConnection sql(Books);
    const std::string own = "FROM stapelbuchungen WHERE Mandant = 1 AND Beleg = 'SQL1'";
    EXPECT_EQ("0", sql.Value("SELECT count(*) " + own));
    const Result booked =
        Vark(Books, {"buchen", "--mandant", "1", "--stapel", "16", "--datum", "15.04.1998", "--beleg", "SQL1",
                     "--text", "Miete", "--soll", "8010", "--haben", "1840", "--betrag", "1500,00"});
    ASSERT_EQ(0, booked.ExitCode) << booked.Err;
    EXPECT_EQ(
        (SqlRow{"16", "1998-04-15", "8010", "1840", "150000", "1500.00", "Miete", "1"}),
        sql.Rows("SELECT Stapel, Datum, Sollkonto, Habenkonto, Brutto, Brutto_Text, Text, Teil " + own)[0]);
}
