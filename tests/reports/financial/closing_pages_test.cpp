// Bilanz and GuV as they are read: what the templates make of the records, through the real report engine.
#include "tests/reports/financial/closing_books.h"

using namespace vark;
using namespace vark::test;

namespace {

struct ClosingPages : testing::Test {
    Books books;

    void SetUp() override
    {
        books.AddMandant(1);
        books.ChangeMandant(1, [](FistaRecord &mandant) { SetText(mandant.Name, "Musterbetrieb"); });
        ASSERT_EQ(1, VARK_Status());
        CopyClosingTemplates();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void Account(const std::string &konto, const std::string &name, int16_t zuordnung,
                 const std::string &soll, const std::string &haben, const std::string &year = "")
    {
        SakoRecord record = SakoWith(konto, zuordnung, soll, haben);
        SetText(record.Name, name);
        record.Umsaetze.Vortrag = record.Umsaetze.Monat[0];
        if (zuordnung == ZuordnungGuv) PutPair(record.Umsaetze.Vortrag, "000000000,00", "000000000,00");
        books.Insert(1, TableSako, record, year);
    }
    Lines Export(VarkWindow view, const std::string &form) { return ExportLines(books, view, form); }
    static Lines Below(const Lines &lines, const std::string &line)
    {
        Lines below;
        bool isBelow = false;
        for (const std::string &each : lines) {
            if (isBelow) below.push_back(each);
            isBelow = isBelow || each == line;
        }
        EXPECT_TRUE(isBelow) << "no line " << line;
        return below;
    }
};

} // namespace

TEST_F(ClosingPages, LeafBehindASubgroupBelongsToTheGroupAndTheSidesAgree)
{
    Account("0100", "Patente", ZuordnungAktiva, "000000100,00", "000000000,00");
    Account("0200", "Maschinen", ZuordnungAktiva, "000000020,00", "000000000,00");
    Account("0300", "Beteiligung", ZuordnungAktiva, "000000003,00", "000000000,00");
    Account("0400", "Außerhalb", ZuordnungAktiva, "000000000,50", "000000000,00");
    Account("0800", "Kapital", ZuordnungPassiva, "000000000,00", "000000110,00");
    InsertTree(
        books, 1, TableBilaktau,
        {"Anlagen", "  Immaterielle", "    0100", "  Sachanlagen +", "    0200", "  0300", "ohne 0400"});
    InsertTree(books, 1, TableBilpasau, {"0800"});
    ReportParams params = PeriodBlock(1, 18);
    const Lines text = Export(VARK_Bilanz(1, 0, nullptr, &params), "txt");
    // Every balance is twice its month: what was carried forward, and January.
    EXPECT_EQ((Lines{"Anlagen 246,00", "Immaterielle 200,00", "Patente 200,00", "Sachanlagen",
                     "Maschinen 40,00", "Summe Sachanlagen 40,00", "Beteiligung 6,00", "ohne Zuordnung",
                     "Außerhalb 1,00", "Summe Aktiva 247,00", "Passiva", "ohne Zuordnung", "Kapital 220,00",
                     "Jahresüberschuß 27,00", "Summe Passiva 247,00"}),
              Below(text, "Aktiva"));
}

TEST_F(ClosingPages, LossStandsBelowZeroAmongThePassiva)
{
    Account("0100", "Kasse", ZuordnungAktiva, "000000010,00", "000000000,00");
    Account("0800", "Kapital", ZuordnungPassiva, "000000000,00", "000000015,00");
    InsertTree(books, 1, TableBilaktau, {"0100"});
    InsertTree(books, 1, TableBilpasau, {"Eigenkapital", "  0800"});
    ReportParams params = PeriodBlock(1, 18);
    EXPECT_EQ(
        (Lines{"Eigenkapital 30,00", "Kapital 30,00", "Jahresfehlbetrag -10,00", "Summe Passiva 20,00"}),
        Below(Export(VARK_Bilanz(1, 0, nullptr, &params), "txt"), "Passiva"));
}

TEST_F(ClosingPages, SidesThatAgreeHaveNoResult)
{
    Account("0100", "Kasse", ZuordnungAktiva, "000000010,00", "000000000,00");
    Account("0800", "Kapital", ZuordnungPassiva, "000000000,00", "000000010,00");
    InsertTree(books, 1, TableBilaktau, {"0100"});
    InsertTree(books, 1, TableBilpasau, {"0800"});
    ReportParams params = PeriodBlock(1, 18);
    EXPECT_EQ((Lines{"ohne Zuordnung", "Kapital 20,00", "Summe Passiva 20,00"}),
              Below(Export(VARK_Bilanz(1, 0, nullptr, &params), "txt"), "Passiva"));
}

TEST_F(ClosingPages, DifferenceOfAnEroeffnungIsNoResult)
{
    Account("0100", "Kasse", ZuordnungAktiva, "000000010,00", "000000000,00");
    Account("0800", "Kapital", ZuordnungPassiva, "000000000,00", "000000007,00");
    InsertTree(books, 1, TableBilaktau, {"0100"});
    InsertTree(books, 1, TableBilpasau, {"0800"});
    ReportParams params = PeriodBlock(17, 18);
    const Lines text = Export(VARK_Bilanz(1, 1, nullptr, &params), "txt");
    EXPECT_EQ("zum 01.01.1998", text.at(1));
    EXPECT_EQ((Lines{"ohne Zuordnung", "Kapital 7,00", "Differenz 3,00", "Summe Passiva 10,00"}),
              Below(text, "Passiva"));
}

TEST_F(ClosingPages, ComparisonNamesItsYearAndShowsTheChange)
{
    Account("0100", "Kasse", ZuordnungAktiva, "000000010,00", "000000000,00");
    Account("0100", "Kasse", ZuordnungAktiva, "000000004,00", "000000000,00", "1997");
    Account("0800", "Kapital", ZuordnungPassiva, "000000000,00", "000000010,00");
    InsertTree(books, 1, TableBilaktau, {"Umlauf", "  0100"});
    InsertTree(books, 1, TableBilpasau, {"0800"});
    ReportParams params = PeriodBlock(1, 18);
    CompareWith("1997");
    const Lines text = Export(VARK_Bilanz(1, 0, nullptr, &params), "txt");
    EXPECT_EQ("Bezeichnung Januar 1998 Januar 1997 Veränderung", text.at(2));
    EXPECT_EQ((Lines{"Umlauf 20,00 8,00 12,00", "Kasse 20,00 8,00 12,00", "Summe Aktiva 20,00 8,00 12,00",
                     "Passiva", "ohne Zuordnung", "Kapital 20,00 0,00 20,00",
                     "Jahresüberschuß 0,00 8,00 -8,00", "Summe Passiva 20,00 8,00 12,00"}),
              Below(text, "Aktiva"));
}

TEST_F(ClosingPages, LevelsShowTheSameTotals)
{
    Account("0100", "Patente", ZuordnungAktiva, "000000100,00", "000000000,00");
    Account("0200", "Maschinen", ZuordnungAktiva, "000000020,00", "000000000,00");
    Account("0300", "Kasse", ZuordnungAktiva, "000000003,00", "000000000,00");
    InsertTree(books, 1, TableBilaktau,
               {"Anlagen +", "  Sachanlagen +", "    Maschinen", "      0100", "      0200", "  0300"});
    InsertTree(books, 1, TableBilpasau, {});
    const auto play = [&](int level, bool withAccounts) {
        ReportParams params = PeriodBlock(1, 18);
        ChooseLevel(level, withAccounts);
        Lines lines = Below(Export(VARK_Bilanz(1, 0, nullptr, &params), "txt"), "Aktiva");
        lines.resize(lines.size() - 3); // the Passiva, which are the Jahresüberschuß alone
        return lines;
    };
    EXPECT_EQ((Lines{"Anlagen 246,00", "Summe Aktiva 246,00"}), play(1, true));
    EXPECT_EQ((Lines{"Anlagen 246,00", "Summe Aktiva 246,00"}), play(1, false));
    EXPECT_EQ(
        (Lines{"Anlagen", "Sachanlagen 240,00", "Kasse 6,00", "Summe Anlagen 246,00", "Summe Aktiva 246,00"}),
        play(2, true));
    EXPECT_EQ((Lines{"Anlagen", "Sachanlagen 240,00", "Summe Anlagen 246,00", "Summe Aktiva 246,00"}),
              play(2, false));
    EXPECT_EQ(
        (Lines{"Anlagen", "Sachanlagen", "Maschinen 240,00", "Patente 200,00", "Maschinen 40,00",
               "Summe Sachanlagen 240,00", "Kasse 6,00", "Summe Anlagen 246,00", "Summe Aktiva 246,00"}),
        play(3, true));
    EXPECT_EQ((Lines{"Anlagen", "Sachanlagen", "Maschinen 240,00", "Summe Sachanlagen 240,00",
                     "Summe Anlagen 246,00", "Summe Aktiva 246,00"}),
              play(3, false));
}

TEST_F(ClosingPages, DataIsOneRowAnAccountAndTheResult)
{
    Account("0100", "Kasse", ZuordnungAktiva, "000000010,00", "000000000,00");
    Account("0800", "Kapital", ZuordnungPassiva, "000000000,00", "000000007,00");
    InsertTree(books, 1, TableBilaktau, {"Umlauf", "  Geld", "    0100"});
    InsertTree(books, 1, TableBilpasau, {"0800"});
    ReportParams params = PeriodBlock(1, 18);
    Lines csv = Export(VARK_Bilanz(1, 0, nullptr, &params), "csv");
    csv.erase(csv.begin());
    EXPECT_EQ((Lines{"Aktiva;Umlauf;Geld;;0100;K0100;Kasse;20,00;;", "Passiva;;;;0800;K0800;Kapital;14,00;;",
                     "Passiva;;;;;;Jahresüberschuß;6,00;;"}),
              csv);
}

TEST_F(ClosingPages, GuvShowsBothSidesAndTheResultByName)
{
    Account("4100", "Löhne", ZuordnungGuv, "000000100,00", "000000001,00");
    Account("8400", "Erlöse", ZuordnungGuv, "000000000,00", "000000025,00");
    Account("8900", "Sonstiges", ZuordnungGuv, "000000000,00", "000000004,00");
    InsertTree(books, 1, TableGuvauf,
               {"Ertrag +", "  8400", "Aufwand", "  Personal", "    4100", "ohne 8900"});
    ReportParams params = PeriodBlock(1, 18);
    const Lines text = Export(VARK_GUV(1, nullptr, &params), "txt");
    EXPECT_EQ((Lines{"Ertrag", "Erlöse 25,00 25,00", "Summe Ertrag 0,00 25,00 25,00",
                     "Aufwand 100,00 1,00 -99,00", "Personal 100,00 1,00 -99,00", "Löhne 100,00 1,00 -99,00",
                     "ohne Zuordnung", "Sonstiges 4,00 4,00", "Jahresfehlbetrag 100,00 30,00 -70,00"}),
              Lines(text.begin() + 4, text.end()));
}

TEST_F(ClosingPages, EmptyGuvSaysSo)
{
    InsertTree(books, 1, TableGuvauf, {});
    ReportParams params = PeriodBlock(1, 18);
    EXPECT_EQ("Keine Konten in der Gewinn- und Verlustrechnung.",
              Export(VARK_GUV(1, nullptr, &params), "txt").back());
}
