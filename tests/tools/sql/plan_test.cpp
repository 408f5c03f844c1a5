// Conditions are pushed down to the keys: a lookup reads what it needs, and none changes what is found.
#include "tests/tools/sql/connection.h"
#include "tools/common/layout.h"

#include <algorithm>
#include <random>

using namespace tests;
using namespace tools;

namespace {

struct SqlPlan : SqlBooks {
    void SetUp() override { MakeBooks({"--buchungen", "2000"}); }
};

} // namespace

TEST_F(SqlPlan, OneAccountOfOneYearIsOneRecord)
{
    SqlConnection sql(Books);
    EXPECT_EQ(1, sql.Reads("SELECT * FROM sako WHERE Mandant = 1 AND Jahr = 1998 AND Konto = '1840'"));
    EXPECT_EQ(1, sql.Reads("SELECT * FROM sako_1998 WHERE Konto = '1840'"));
    EXPECT_LE(sql.Reads("SELECT * FROM sako_1998 WHERE Konto = '1841'"), 1) << "there is none";
    EXPECT_EQ(0, sql.Reads("SELECT * FROM sako_1998 WHERE Konto = 'zu lange Nummer'"));
    EXPECT_EQ(0, sql.Reads("SELECT * FROM sako_1998 WHERE Konto = NULL"));
}

TEST_F(SqlPlan, OneAccountOfAllYearsIsOneRecordOfEach)
{
    SqlConnection sql(Books);
    const int64_t years = sql.Number("SELECT count(*) FROM sako WHERE Konto = '1840'");
    EXPECT_EQ(6, years) << "three Mandanten, two years each";
    EXPECT_EQ(years, sql.Reads("SELECT * FROM sako WHERE Konto = '1840'"));
}

TEST_F(SqlPlan, ARangeOfDaysReadsOneRecordMoreThanItHas)
{
    SqlConnection sql(Books);
    for (const std::string range :
         {"\"Schluessel.Tag\" BETWEEN '1997-12-24' AND '1997-12-31'", "\"Schluessel.Tag\" = '1997-12-24'",
          "\"Schluessel.Tag\" < '1997-02-01'", "\"Schluessel.Tag\" >= '1997-12'",
          "Buchungsdatum BETWEEN '1997-03-01' AND '1997-03-31'"}) {
        const int64_t found = sql.Number("SELECT count(*) FROM bube_1997 WHERE " + range);
        const int64_t more = range.find('<') != std::string::npos ? 40 : 1; // those of the bound itself
        EXPECT_GT(found, 0) << range;
        EXPECT_LE(sql.Reads("SELECT * FROM bube_1997 WHERE " + range), found + more) << range;
    }
}

TEST_F(SqlPlan, PostingsOfAnAccountOnADayGoByTheAccountsKey)
{
    SqlConnection sql(Books);
    const std::string postings = "FROM bube_1997 WHERE Sollkonto = '1840' AND \"Schluessel.Tag\" BETWEEN "
                                 "'1997-05-01' AND '1997-05-31'";
    const int64_t found = sql.Number("SELECT count(*) " + postings);
    EXPECT_GT(found, 0);
    EXPECT_LE(sql.Reads("SELECT * " + postings), found + 1);
    const std::string both = "FROM buchungen WHERE Mandant = 1 AND Jahr = 1997 AND (Sollkonto = '1840' OR "
                             "Habenkonto = '1840')";
    const int64_t ofBoth = sql.Number("SELECT count(*) " + both);
    EXPECT_LE(sql.Reads("SELECT * " + both), ofBoth + 2 +
                                                 sql.Number("SELECT count(*) FROM bube_1997 WHERE "
                                                            "Status & 8"));
}

TEST_F(SqlPlan, AYearReadsItsOwnDirectoryAlone)
{
    SqlConnection sql(Books);
    EXPECT_EQ(sql.Number("SELECT count(*) FROM bube_19981"),
              sql.Reads("SELECT sum(Soll) FROM bube WHERE Mandant = 2 AND Jahr = 1998"));
    EXPECT_EQ(sql.Number("SELECT count(*) FROM kore WHERE Jahr = 1997"),
              sql.Reads("SELECT * FROM kore WHERE Jahr < 1998"));
    EXPECT_EQ(0, sql.Reads("SELECT * FROM bube WHERE Jahr = 2005"));
}

TEST_F(SqlPlan, JoinsAndViewsLookUpWhatTheyNeed)
{
    SqlConnection sql(Books);
    EXPECT_LE(sql.Reads("SELECT Saldo FROM salden WHERE Mandant = 1 AND Jahr = 1998 AND Konto = '1840'"), 3);
    const std::string first = sql.Value("SELECT min(Buchungsnummer) FROM bube_1997");
    EXPECT_LE(
        sql.Reads("SELECT s.Name, b.Text FROM bube b JOIN sako s ON s.Konto = b.Sollkonto AND s.Mandant = "
                  "b.Mandant AND s.Jahr = b.Jahr WHERE b.Mandant = 1 AND b.Jahr = 1997 AND "
                  "b.Buchungsnummer = " +
                  first),
        2);
    const int64_t items = sql.Number("SELECT count(*) FROM opdebi_1998");
    EXPECT_LE(sql.Reads("SELECT Konto, Name FROM offene_posten WHERE Mandant = 1 AND Kontoart = 'Debitor'"),
              2 * items + 6);
}

// ---- Nothing is lost ----

namespace {

// Conditions drawn at random, on columns with and without keys, of every type and with odd values.
struct Draw {
    std::mt19937 Random;
    SqlConnection &Sql;

    size_t Below(size_t count) { return Random() % count; }
    template <typename List> const auto &One(const List &list) { return list[Below(list.size())]; }

    // A value of the column, or something beside it.
    std::string Value(const std::string &table, const std::string &column)
    {
        const SqlRows known = Sql.Rows("SELECT quote(" + column + ") FROM " + table + " LIMIT 200");
        static const std::vector<std::string> odd = {
            "NULL",   "''",      "'1998'", "'1998-02'",   "'1998-02-30'", "'1998-07-01x'", "1840",
            "1840.0", "5.5",     "-1",     "99999999999", "'M'",          "'m'",           "'Ä'",
            "'ü'",    "'10000'", "70000",  "x'31'",       "'0840'",       "840",           "'A B'"};
        if (known.empty() || Below(3) == 0) return One(odd);
        return One(known)[0];
    }

    std::string Condition(const std::string &table, const std::string &column)
    {
        static const std::vector<std::string> operators = {"=", "=", "=", "<", "<=", ">", ">="};
        const std::string value = Value(table, column);
        switch (Below(6)) {
        case 0: return " BETWEEN " + value + " AND " + Value(table, column);
        case 1: return " IN (" + value + ", " + Value(table, column) + ")";
        default: return " " + One(operators) + " " + value;
        }
    }
};

} // namespace

TEST_F(SqlPlan, NoConditionChangesWhatIsFound)
{
    SqlConnection sql(Books);
    const unsigned seed = 4711;
    Draw draw{std::mt19937(seed), sql};
    int64_t narrowed = 0;
    for (int round = 0; round < 400; ++round) {
        const TableLayout &layout = draw.One(Tables());
        const std::string table = layout.Stem;
        std::string pushed;
        const size_t conditions = 1 + draw.Below(3);
        for (size_t i = 0; i < conditions; ++i) {
            const KeyLayout &key = draw.One(layout.Keys);
            const FieldLayout *field = FieldOf(layout, draw.One(key.Segments));
            std::string name = field != nullptr ? field->Name : layout.Fields[0].Name;
            if (name == "Schluessel.Folge" && draw.Below(2) == 0) name = "Schluessel.Tag";
            if (IsYearTable(layout) && draw.Below(4) == 0) name = draw.Below(2) == 0 ? "Mandant" : "Jahr";
            const std::string column = "\"" + name + "\"";
            const std::string condition = draw.Condition(table, column);
            pushed += (i == 0 ? " WHERE " : " AND ") + column + condition;
        }
        const std::string select = "SELECT rowid FROM " + table;
        SqlRows found = sql.Rows(select + pushed);
        // Nothing is pushed down into a query with a limit.
        SqlRows all =
            sql.Rows("SELECT r FROM (SELECT rowid AS r, * FROM " + table + " LIMIT -1 OFFSET 0)" + pushed);
        std::sort(found.begin(), found.end());
        std::sort(all.begin(), all.end());
        ASSERT_EQ(all, found) << "seed " << seed << ", round " << round << ": " << select << pushed;
        narrowed += !found.empty() ? 1 : 0;
    }
    EXPECT_GT(narrowed, 100) << "conditions find something";
}

TEST_F(SqlPlan, AnAccountThatEqualsANumberIsFoundWithItsZeros)
{
    SqlConnection sql(Books);
    sql.Rows("CREATE TABLE n (k INTEGER)");
    sql.Rows("INSERT INTO n VALUES (1840)");
    EXPECT_EQ("6", sql.Value("SELECT count(*) FROM n JOIN sako ON sako.Konto = n.k"));
    EXPECT_EQ("6", sql.Value("SELECT count(*) FROM sako WHERE Konto = 1840"));
}
