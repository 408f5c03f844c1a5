// What the tables show: every field of every record, as the tools read it, in the types of SQL.
#include "tests/tools/sql/connection.h"
#include "tools/books/place.h"
#include "tools/common/fields.h"
#include "tools/common/installation.h"

#include <algorithm>
#include <cstring>

using namespace tests;
using namespace tools;
using namespace vark;
namespace fs = std::filesystem;

namespace {

struct SqlValues : SqlBooks {
    void SetUp() override { MakeBooks({"--buchungen", "600"}); }
};

std::string Without(std::string text, char unwanted)
{
    text.erase(std::remove(text.begin(), text.end(), unwanted), text.end());
    return text;
}

// "1.234,50" as Pfennig.
std::string PfennigOf(const std::string &amount)
{
    return amount.empty() ? "0" : std::to_string(std::stoll(Without(Without(amount, '.'), ',')));
}

// A field's value as people read it, turned into what SQL is to show.
std::string ExpectedOf(const FieldLayout &field, const char *record, int firstMonth)
{
    std::string value = FieldValue(field, record, firstMonth);
    switch (field.Type) {
    case Form::Amount: return PfennigOf(value);
    case Form::PackedDay:
    case Form::SortDay:
    case Form::Calendar:
        if (value.empty()) return "NULL";
        return value.substr(6) + "-" + value.substr(3, 2) + "-" + value.substr(0, 2);
    case Form::Konto:
    case Form::Year: return value.empty() ? "NULL" : value;
    case Form::Rate:
    case Form::Share: {
        if (value.empty()) return "NULL";
        const size_t comma = value.find(',');
        return std::to_string(std::stoi(value.substr(0, comma))) + "." + value.substr(comma + 1);
    }
    default: return value;
    }
}

// "\"Konto\", hex(\"Rest\"), …" of the fields alone.
std::string FieldList(const TableLayout &layout)
{
    std::string list;
    for (const FieldLayout &field : layout.Fields) {
        if (!list.empty()) list += ", ";
        const std::string name = "\"" + field.Name + "\"";
        list += field.Type == Form::Bytes ? "hex(" + name + ")" : name;
    }
    return list;
}

// Records of a table as SQL is to show them, in the order in which they lie.
SqlRows ExpectedRows(const TableLayout &layout, const fs::path &directory, int firstMonth)
{
    SqlRows rows;
    TableFile table(layout, directory, OpenMode::ReadOnly);
    std::string record(layout.RecordLength, '\0');
    for (bool found = table.StepFirst(record.data()); found; found = table.StepNext(record.data())) {
        SqlRow &row = rows.emplace_back();
        for (const FieldLayout &field : layout.Fields) {
            row.push_back(ExpectedOf(field, record.data(), firstMonth));
        }
    }
    return rows;
}

} // namespace

TEST_F(SqlValues, EveryFieldOfEveryRecordIsShownInItsForm)
{
    SqlConnection sql(Books);
    size_t records = 0;
    for (const std::string &name : books::YearDirectories(Data)) {
        int year = 0;
        int number = 0;
        ASSERT_TRUE(books::ParseYearDirectory(name, year, number));
        const int firstMonth = FindMandant(Data, number)->FirstMonth;
        for (const TableLayout &layout : Tables()) {
            if (!IsYearTable(layout)) continue;
            const SqlRows expected = ExpectedRows(layout, Data / name, firstMonth);
            ASSERT_EQ(expected, sql.Rows("SELECT " + FieldList(layout) + " FROM " + layout.Stem + "_" + name))
                << name << " " << layout.Stem;
            ASSERT_EQ(expected, sql.Rows("SELECT " + FieldList(layout) + " FROM " + layout.Stem +
                                         " WHERE Mandant = " + std::to_string(number) +
                                         " AND Jahr = " + std::to_string(year)))
                << name << " " << layout.Stem;
            records += expected.size();
        }
    }
    EXPECT_GT(records, 1000u) << "the sample books fill the tables";
    const TableLayout &fista = LayoutOf(TableFista);
    EXPECT_EQ(ExpectedRows(fista, Data, 1), sql.Rows("SELECT " + FieldList(fista) + " FROM fista"));
}

TEST_F(SqlValues, AmountsAreWholePfennigAndExactText)
{
    SqlConnection sql(Books);
    EXPECT_EQ("0", sql.Value("SELECT count(*) FROM bube WHERE typeof(Soll) <> 'integer'"));
    EXPECT_EQ("0", sql.Value("SELECT count(*) FROM bube WHERE Soll_Text <> dezimal(Soll) OR "
                             "round(CAST(Soll_Text AS REAL) * 100) <> Soll"));
    EXPECT_EQ((SqlRow{"1.234,50", "-1.234.567,89", "0,07", "0,00", "NULL", "12.50", "-0.05"}),
              sql.Rows("SELECT betrag(123450), betrag(-123456789), betrag(7), betrag(0), betrag(NULL), "
                       "dezimal(1250), dezimal(-5)")[0]);
}

TEST_F(SqlValues, NumbersAreNumbersAndBytesAreBytes)
{
    SqlConnection sql(Books);
    EXPECT_EQ("integer", sql.Value("SELECT typeof(Buchungsnummer) FROM bube LIMIT 1"));
    EXPECT_EQ("integer", sql.Value("SELECT typeof(UpperYear) FROM fista LIMIT 1"));
    EXPECT_EQ("text", sql.Value("SELECT typeof(Konto) FROM sako LIMIT 1"));
    EXPECT_EQ("BLOB", sql.Value("SELECT type FROM pragma_table_info('butext') WHERE name = 'Rest'"));
    EXPECT_EQ("INTEGER", sql.Value("SELECT type FROM pragma_table_info('bube') WHERE name = 'Soll'"));
    EXPECT_EQ("TEXT", sql.Value("SELECT type FROM pragma_table_info('bube') WHERE name = 'Datum'"));
}

namespace {

// A rate whose amount is none, and whose day is none.
void AddDamagedRate(const fs::path &directory)
{
    TableFile rates(LayoutOf(TableKurse), directory, OpenMode::Normal);
    KurseRecord record{};
    std::memcpy(record.Waehrung, "QQQ", 3);
    std::memcpy(record.Datum, "181399", 6);
    std::memcpy(record.Kurs, "00000x001,80", 12);
    rates.Insert(&record);
    rates.Close();
    StopEngine();
}

} // namespace

TEST_F(SqlValues, ADamagedAmountEndsASumAndIsShownAsText)
{
    AddDamagedRate(Data / "1998");
    SqlConnection sql(Books);
    EXPECT_EQ("In Kurs steht kein Betrag; was noch, zeigt: books pruefen",
              sql.Refusal("SELECT sum(Kurs) FROM kurse_1998"));
    EXPECT_EQ((SqlRow{"QQQ", "181399", "00000x001,80"}),
              sql.Rows("SELECT Waehrung, Datum, Kurs_Text FROM kurse_1998 WHERE Waehrung = 'QQQ'")[0]);
}

TEST_F(SqlValues, ARecordKeepsItsRowid)
{
    SqlConnection sql(Books);
    EXPECT_EQ(sql.Value("SELECT count(*) FROM sako"), sql.Value("SELECT count(DISTINCT rowid) FROM sako"));
    EXPECT_EQ(sql.Rows("SELECT Mandant, Jahr, Konto, rowid FROM sako ORDER BY 1, 2, 3"),
              sql.Rows("SELECT s.Mandant, s.Jahr, s.Konto, (SELECT rowid FROM sako x WHERE x.Mandant = "
                       "s.Mandant AND x.Jahr = s.Jahr AND x.Konto = s.Konto) FROM sako s ORDER BY 1, 2, 3"));
}
