#include "include/vark40.h"
#include "tests/booking/ledger.h"
#include "tests/support/alloc_faults.h"

#include <functional>
#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

// A Teilbuchung of 116,00 without tax.
TeilbuchungEingabe Part(const char *soll, int32_t sollArt, const char *haben, int32_t habenArt,
                        const char *brutto = "116")
{
    TeilbuchungEingabe part{};
    SetText(part.Sollkonto, soll);
    part.SollArt = sollArt;
    SetText(part.Habenkonto, haben);
    part.HabenArt = habenArt;
    SetText(part.Brutto, brutto);
    SetText(part.Text, std::string(soll) + " an " + haben);
    return part;
}

SplitEingabe SplitOf(const std::vector<TeilbuchungEingabe> &parts)
{
    SplitEingabe split{};
    split.Mandant = 1;
    split.Stapel = 16;
    SetText(split.Datum, "150598");
    SetText(split.Beleg, "S-1");
    split.Anzahl = static_cast<int32_t>(parts.size());
    for (size_t i = 0; i < parts.size(); ++i) {
        split.Teil[i] = parts[i];
    }
    return split;
}

// Three Teilbuchungen with the bank account on Soll.
SplitEingabe PlainSplit()
{
    return SplitOf(
        {Part("1200", 1, "4000", 1, "1"), Part("1200", 1, "4100", 1, "2"), Part("1200", 1, "10000", 4, "3")});
}

int32_t Post(const SplitEingabe &split) { return VARK_SplitBuchungEinfuegen(&split, 1); }

struct SplitPosting : ::testing::Test {
    Ledger books;
};

struct SplitWithCosts : ::testing::Test {
    // Gives a Sachkonto a Kostenschablone of its own.
    void Give(const char *konto, int16_t zuordnung, int32_t schablone, uint8_t mitKosten = 0)
    {
        SakoRecord record = MakeSako(konto, zuordnung);
        record.Kostenschablone = schablone;
        record.MitKosten = mitKosten;
        books.ReplaceInYears(TableSako, record);
    }

    Ledger books{{.Kostenrechnung = true, .KostenPflicht = true}};
};

// The piecemeal way, with the same fields as PlainSplit.
int32_t Start(int32_t zahlungsziel = 0)
{
    return VARK_SplitStartEx(1, 16, "15.5.98", "S-1", 0, zahlungsziel);
}
int32_t Add(const char *soll, const char *haben, const char *brutto = "1")
{
    return VARK_SplitEinfuegen(soll, 1, haben, 1, brutto, "", "",
                               (std::string(soll) + " an " + haben).c_str());
}

const std::string badCount = "Die Anzahl der Teilbuchungen ist nicht korrekt!";
const std::string oneSide = "Bei einer Splitbuchung muß entweder das Soll- oder das Habenkonto jeder "
                            "Teilbuchung gleich sein!";
const std::string bothSides = "Auf Soll- und Habenseite sind in jeder Teilbuchung die gleichen Kontonummern!";
const std::string needsCosts =
    "Bei Buchungen auf GuV-Konten muß zumindest eine Kostenstelle bebucht werden. Dazu "
    "müssen Sie eine Kostenschablone im GuV-Konto hinterlegen und die Kostenaufteilung "
    "mit <OK> abschließen.";

} // namespace

// ---- Order of the checks ----

TEST_F(SplitWithCosts, ChecksComeInTheirOrder)
{
    books.AddKostenschablone(1, {"100,00"});
    SplitEingabe s = SplitOf({Part("4711", 1, "1200", 1, "x"), Part("4100", 1, "1000", 1, "2")});
    s.Mandant = 9;
    s.Stapel = 99;
    SetText(s.Datum, "320598");
    s.Anzahl = 11;
    s.Zahlungsziel = 8;
    struct Row {
        const char *Repair;
        std::function<void()> Do;
        int32_t Code;
        std::string Box;
    };
    const std::vector<Row> rows = {
        {"nothing", [] {}, -5, "Der Mandant existiert nicht!"},
        {"Mandant", [&] { s.Mandant = 1; }, -6, "Der Stapel existiert nicht!"},
        {"Stapel", [&] { s.Stapel = 16; }, -11, "Das Buchungsdatum ist unzulässig!"},
        {"day", [&] { SetText(s.Datum, "310596"); }, -11, "Das Buchungsdatum ist unzulässig!"},
        {"year", [&] { SetText(s.Datum, "310598"); }, -25, badCount},
        {"too many parts", [&] { s.Anzahl = 0; }, -25, badCount},
        {"no parts", [&] { s.Anzahl = 2; }, -26, oneSide},
        {"sides", [&] { SetText(s.Teil[1].Habenkonto, "1200"); }, -27, "Das Zahlungsziel ist unzulässig!"},
        {"Zahlungsziel", [&] { s.Zahlungsziel = 6; }, -8,
         "Teilbuchung 1: Die Sollkontonummer ist unzulässig!"},
        {"first account", [&] { SetText(s.Teil[0].Sollkonto, "4000"); }, -12,
         "Teilbuchung 1: Der Bruttobetrag ist unzulässig!"},
        {"first amount",
         [&] {
             SetText(s.Teil[0].Brutto, "1");
             s.Teil[0].Kostenschablone = 1;
             SetText(s.Teil[1].Brutto, "x");
         },
         -12, "Teilbuchung 2: Der Bruttobetrag ist unzulässig!"},
        {"second amount",
         [&] {
             SetText(s.Teil[1].Brutto, "2");
             SetText(s.Teil[1].Steuersatz, "x");
         },
         -13, "Teilbuchung 2: Der Steuersatz ist unzulässig!"},
        {"rate",
         [&] {
             SetText(s.Teil[1].Steuersatz, "16");
             SetText(s.Teil[1].Steuerbetrag, "x");
         },
         -14, "Teilbuchung 2: Der Steuerbetrag ist unzulässig!"},
        {"tax amount", [&] { SetText(s.Teil[1].Steuerbetrag, "0,28"); }, -14,
         "Teilbuchung 2: In dieser Buchung darf keine Steuer angegeben werden!"},
        {"forbidden tax amount", [&] { SetText(s.Teil[1].Steuerbetrag, ""); }, -13,
         "Teilbuchung 2: In dieser Buchung darf keine Steuer angegeben werden!"},
        {"forbidden tax", [&] { SetText(s.Teil[1].Sollkonto, "8500"); }, 0, ""}, // only in between
        {"a rate that the account does not allow", [&] { SetText(s.Teil[1].Steuersatz, "7"); }, -13,
         "Teilbuchung 2: Der Steuersatz bei einer Buchung auf ein Erlöskonto mit festem Steuersatz darf "
         "nicht "
         "verändert werden!"},
        {"rate, but a tax of another sign",
         [&] {
             SetText(s.Teil[1].Steuersatz, "");
             SetText(s.Teil[1].Steuerbetrag, "3");
         },
         -14, "Teilbuchung 2: Der Steuerbetrag ist unzulässig!"},
        {"tax, but no GuV account for the costs",
         [&] {
             SetText(s.Teil[1].Steuerbetrag, "");
             SetText(s.Teil[1].Sollkonto, "1000");
             s.Teil[1].Kostenschablone = 1;
         },
         -43, "Teilbuchung 2: Bei einer Kostenstellenbuchung muß mindestens ein GuV-Konto beteiligt sein!"},
        {"GuV, but no costs",
         [&] {
             SetText(s.Teil[1].Sollkonto, "4100");
             s.Teil[1].Kostenschablone = 0;
         },
         -24, "Teilbuchung 2: " + needsCosts},
        {"costs", [&] { s.Teil[1].Kostenschablone = 1; }, 1, ""},
    };
    for (const Row &row : rows) {
        row.Do();
        if (row.Code == 0) continue;
        const SplitEingabe before = s;
        EXPECT_EQ(row.Code, VARK_SplitBuchungEinfuegen(&s, 0)) << row.Repair;
        EXPECT_EQ(Lines{}, books.TakeBoxes()) << row.Repair;
        if (row.Code == 1) break;
        EXPECT_EQ(row.Code, VARK_SplitBuchungEinfuegen(&s, 1)) << row.Repair;
        EXPECT_EQ(Lines{row.Box}, books.TakeBoxes()) << row.Repair;
        EXPECT_TRUE(books.IsEmpty()) << row.Repair;
        EXPECT_EQ(HexOf(before), HexOf(s)) << "the caller's structure stays as it is";
    }
    EXPECT_EQ(2, +books.OnlyPosting().Anzahl);
    EXPECT_EQ(1u, books.Parts().size());
    EXPECT_EQ(2u, books.CostLines().size());
}

// ---- What is written ----

TEST_F(SplitPosting, IsWrittenToTheByte)
{
    SplitEingabe split = PlainSplit();
    split.Kennzeichen = 0x7F;
    split.Zahlungsziel = 6;
    ASSERT_EQ(1, Post(split));
    BatRecord bat{};
    bat.Stapel = 16;
    bat.Buchungsnummer = 1;
    SetText(bat.Buchungsdatum, "150518");
    SetText(bat.ZweitesDatum, "150518");
    SetText(bat.Beleg, "S-1");
    bat.Splitseite = SplitseiteSoll;
    bat.Anzahl = 3;
    bat.Kennzeichen = 0x7F;
    bat.Zahlungsziel = 6;
    const auto fill = [](SplitRecord &image, const char *haben, uint8_t habenArt, const char *amount,
                         const char *text) {
        SetText(image.Sollkonto, "   1200");
        SetText(image.Habenkonto, haben);
        image.SollArt = BuchungSachkonto;
        image.HabenArt = habenArt;
        SetText(image.Brutto, amount);
        SetText(image.Netto, amount);
        SetText(image.Text, text);
    };
    fill(bat.Teil, "   4000", BuchungSachkonto, "000000001,00", "1200 an 4000");
    EXPECT_EQ(HexOf(bat), HexOf(books.OnlyPosting()));
    SplitRecord parts[2] = {};
    fill(parts[0], "   4100", BuchungSachkonto, "000000002,00", "1200 an 4100");
    fill(parts[1], "  10000", BuchungDebitor, "000000003,00", "1200 an 10000");
    const std::vector<SplitRecord> written = books.Parts();
    ASSERT_EQ(2u, written.size());
    for (int32_t i = 0; i < 2; ++i) {
        parts[i].Buchungsnummer = 1;
        parts[i].Splitnummer = i + 1;
        EXPECT_EQ(HexOf(parts[i]), HexOf(written[static_cast<size_t>(i)]));
    }
    EXPECT_EQ(Lines{}, books.TakeLog());
}

TEST_F(SplitPosting, EveryTeilbuchungHasItsOwnTax)
{
    SplitEingabe split = SplitOf({Part("10000", 4, "8400", 1, "116"), Part("10000", 4, "8300", 1, "107"),
                                  Part("10000", 4, "8400", 1, "115")});
    SetText(split.Teil[2].Steuersatz, "15");
    ASSERT_EQ(1, Post(split));
    const BatRecord bat = books.OnlyPosting();
    EXPECT_EQ(2, +bat.Teil.Steuerschluessel);
    EXPECT_EQ("   1776", TextOf(bat.Teil.Steuerkonto));
    EXPECT_EQ("000000100,00", TextOf(bat.Teil.Netto));
    const std::vector<SplitRecord> parts = books.Parts();
    EXPECT_EQ(4, +parts[0].Steuerschluessel);
    EXPECT_EQ("07,00", TextOf(parts[0].Steuersatz));
    EXPECT_EQ("000000100,00", TextOf(parts[0].Netto));
    EXPECT_EQ(0x42, +parts[1].Steuerschluessel);
    EXPECT_EQ(1, +parts[1].Steuerfolge);
    EXPECT_EQ("   1775", TextOf(parts[1].Steuerkonto));
    EXPECT_EQ("000000100,00", TextOf(parts[1].Netto));
}

TEST_F(SplitPosting, TheSideThatAllShareIsMarked)
{
    ASSERT_EQ(1, Post(SplitOf({Part("4000", 1, "1200", 1), Part("4100", 1, "1200", 1)})));
    EXPECT_EQ(SplitseiteHaben, +books.Postings().back().Splitseite);
    ASSERT_EQ(1, Post(SplitOf({Part("1200", 1, "4000", 1), Part("1200", 1, "4100", 1)})));
    EXPECT_EQ(SplitseiteSoll, +books.Postings().back().Splitseite);
}

TEST_F(SplitPosting, OneTeilbuchungAloneHasNoSide)
{
    ASSERT_EQ(1, Post(SplitOf({Part("4000", 1, "1200", 1)})));
    EXPECT_EQ(SplitseiteKeine, +books.OnlyPosting().Splitseite);
    EXPECT_EQ(1, +books.OnlyPosting().Anzahl);
    EXPECT_TRUE(books.Parts().empty());
}

TEST_F(SplitPosting, TheSameAccountsOnBothSidesAreRefused)
{
    EXPECT_EQ(-26, Post(SplitOf({Part("4000", 1, "1200", 1), Part("4000", 1, "1200", 1)})));
    EXPECT_EQ(Lines{bothSides}, books.TakeBoxes());
}

TEST_F(SplitPosting, DifferentAccountsOnBothSidesAreRefused)
{
    EXPECT_EQ(-26, Post(SplitOf({Part("4000", 1, "1200", 1), Part("4000", 1, "1000", 1),
                                 Part("4100", 1, "1200", 1)})));
    EXPECT_EQ(Lines{oneSide}, books.TakeBoxes());
}

TEST_F(SplitPosting, SidesAreComparedAsTheyAreWritten)
{
    EXPECT_EQ(-26, Post(SplitOf({Part("4000", 1, "1200", 1), Part("4100", 1, "   1200", 1)})));
    EXPECT_EQ(Lines{oneSide}, books.TakeBoxes());
    EXPECT_EQ(1, Post(SplitOf({Part("4000", 1, "1200", 1), Part("   4000", 1, "1200", 1)})))
        << "so the same accounts pass where one is written otherwise";
}

TEST_F(SplitPosting, UpToTenTeilbuchungenComeInAStructure)
{
    std::vector<TeilbuchungEingabe> parts;
    parts.reserve(10);
    for (int i = 0; i < 10; ++i) {
        parts.push_back(Part(i % 2 == 0 ? "4000" : "4100", 1, "1200", 1));
    }
    SplitEingabe split = SplitOf(parts);
    ASSERT_EQ(1, Post(split));
    EXPECT_EQ(10, +books.OnlyPosting().Anzahl);
    EXPECT_EQ(9u, books.Parts().size());
    for (const int32_t count : {11, 0, -1, INT32_MAX, INT32_MIN}) {
        split.Anzahl = count;
        EXPECT_EQ(-25, Post(split)) << count;
    }
    EXPECT_EQ(Lines(5, badCount), books.TakeBoxes());
    EXPECT_EQ(1u, books.Postings().size());
}

TEST_F(SplitPosting, TheZahlungszielIsTheFirstThatIsFoundUnlessTheCallerNamesOne)
{
    SplitEingabe split =
        SplitOf({Part("1200", 1, "10000", 4), Part("1200", 1, "70001", 2), Part("1200", 1, "10002", 4)});
    ASSERT_EQ(1, Post(split));
    EXPECT_EQ(7, +books.Postings().back().Zahlungsziel);
    split.Zahlungsziel = 6;
    ASSERT_EQ(1, Post(split));
    EXPECT_EQ(6, +books.Postings().back().Zahlungsziel);
}

TEST_F(SplitPosting, ACurrencyOfItsOwnIsNotLookedAt)
{
    ASSERT_EQ(1, Post(SplitOf({Part("1200", 1, "10003", 4), Part("1200", 1, "4000", 1)})));
    EXPECT_EQ("", TextOf(books.OnlyPosting().Waehrung));
}

TEST_F(SplitPosting, TheFirstOpenYearIsPostedIntoTheMandantsStapel)
{
    SplitEingabe split = PlainSplit();
    SetText(split.Datum, "311297");
    ASSERT_EQ(1, Post(split));
    EXPECT_EQ("311217", TextOf(books.OnlyPosting().Buchungsdatum));
    EXPECT_EQ(2u, books.Parts().size());
    ASSERT_EQ(1, Post(PlainSplit()));
    EXPECT_EQ(2u, books.Postings().size());
}

TEST_F(SplitPosting, AnUnknownKostenschabloneIsShownAndAnsweredWithSuccess)
{
    SplitEingabe split = PlainSplit();
    split.Teil[1].Kostenschablone = 9;
    EXPECT_EQ(1, Post(split));
    EXPECT_EQ(Lines{"Teilbuchung 2: Die Kostenschablone ist unzulässig!"}, books.TakeBoxes());
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(1, VARK_SplitBuchungEinfuegen(&split, 0));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_TRUE(books.IsEmpty());
}

TEST_F(SplitPosting, ANullStructureIsAnUnknownMandant)
{
    EXPECT_EQ(-5, VARK_SplitBuchungEinfuegen(nullptr, 1));
    EXPECT_EQ(Lines{"Der Mandant existiert nicht!"}, books.TakeBoxes());
}

// ---- Costs ----

TEST_F(SplitWithCosts, LinesOfFurtherTeilbuchungenCarryTheSplitNumber)
{
    books.AddKostenschablone(1, {"050,00", "050,00"});
    Give("4000", ZuordnungGuv, 1);
    Give("4100", ZuordnungGuv, 1);
    ASSERT_EQ(1, Post(SplitOf({Part("4000", 1, "1200", 1, "2"), Part("4100", 1, "1200", 1, "4")})));
    const std::vector<KobuRecord> lines = books.CostLines();
    ASSERT_EQ(4u, lines.size());
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(i < 2 ? 1 : 0, +lines[i].Buchungsnummer);
        EXPECT_EQ(i < 2 ? 0 : 1, +lines[i].Splitnummer);
        EXPECT_EQ(i < 2 ? "000000001,00" : "000000002,00", TextOf(lines[i].Betrag));
        EXPECT_EQ("180515", TextOf(lines[i].Datum));
        EXPECT_EQ(i % 2, lines[i].Flag);
    }
    EXPECT_EQ(2, +books.OnlyPosting().Teil.Kostenzeilen);
    EXPECT_EQ(2, +books.Parts()[0].Kostenzeilen);
    EXPECT_EQ(1, +books.Parts()[0].Kostenschablone);
}

TEST_F(SplitWithCosts, EverythingHangsOnASachkontoOnSoll)
{
    books.AddKostenschablone(1, {"100,00"});
    Give("4000", ZuordnungGuv, 1);
    ASSERT_EQ(1, Post(SplitOf({Part("10000", 4, "4000", 1), Part("10000", 4, "4100", 1)})));
    EXPECT_EQ(0u, books.CostLines().size()) << "no lines, though the Haben account has a Kostenschablone";
    ASSERT_EQ(1, Post(SplitOf({Part("1200", 1, "4000", 1), Part("1200", 1, "1000", 1)})));
    const std::vector<KobuRecord> lines = books.CostLines();
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ(0x20, lines[0].Flag) << "here it is spread on the Haben side";
}

TEST_F(SplitWithCosts, TheSollAccountsKostenschabloneComesFirst)
{
    books.AddKostenschablone(1, {"100,00"});
    books.AddKostenschablone(2, {"100,00"});
    Give("4000", ZuordnungGuv, 1);
    Give("4100", ZuordnungGuv, 2);
    ASSERT_EQ(1, Post(SplitOf({Part("4000", 1, "4100", 1)})));
    EXPECT_EQ(1, +books.OnlyPosting().Teil.Kostenschablone);
    ASSERT_EQ(1u, books.CostLines().size());
    EXPECT_EQ(0, books.CostLines()[0].Flag);
}

TEST_F(SplitWithCosts, TheDutyLooksAtEitherAccountOfASachkontoOnSoll)
{
    EXPECT_EQ(-24, Post(SplitOf({Part("4000", 1, "70000", 2)})));
    EXPECT_EQ(-24, Post(SplitOf({Part("1200", 1, "4000", 1)})));
    EXPECT_EQ(Lines(2, "Teilbuchung 1: " + needsCosts), books.TakeBoxes());
    EXPECT_EQ(1, Post(SplitOf({Part("70000", 2, "4000", 1)})));
    EXPECT_EQ(1, Post(SplitOf({Part("1200", 1, "1000", 1)})));
    Give("4000", ZuordnungGuv, 0, 1);
    EXPECT_EQ(1, Post(SplitOf({Part("4000", 1, "1200", 1)}))) << "a mark without a number satisfies it";
}

TEST_F(SplitWithCosts, AKostenschabloneThatCannotBeSpreadCountsOnlyWhereCostsAreObligatory)
{
    Give("4000", ZuordnungGuv, 3); // not there
    EXPECT_EQ(-24, Post(SplitOf({Part("1000", 1, "1200", 1), Part("4000", 1, "1200", 1)})));
    EXPECT_EQ(Lines{"Teilbuchung 2: " + needsCosts}, books.TakeBoxes());
    EXPECT_TRUE(books.IsEmpty());
    books.ChangeMandant(1, [](FistaRecord &record) { record.KostenPflicht = 0; });
    VARK_SchliesseDB();
    EXPECT_EQ(1, Post(SplitOf({Part("1000", 1, "1200", 1), Part("4000", 1, "1200", 1)})));
    EXPECT_EQ(0u, books.CostLines().size());
}

// ---- Piece by piece ----

TEST_F(SplitPosting, PieceByPieceWritesTheSameAsTheStructure)
{
    ASSERT_EQ(1, Start(6));
    ASSERT_EQ(1, Add("1200", "4000", "1"));
    ASSERT_EQ(1, Add("1200", "4100", "2"));
    ASSERT_EQ(1, VARK_SplitEnde(1, 1));
    SplitEingabe split = SplitOf({Part("1200", 1, "4000", 1, "1"), Part("1200", 1, "4100", 1, "2")});
    split.Zahlungsziel = 6;
    ASSERT_EQ(1, Post(split));
    std::vector<BatRecord> postings = books.Postings();
    ASSERT_EQ(2u, postings.size());
    postings[1].Buchungsnummer = 1;
    EXPECT_EQ(HexOf(postings[0]), HexOf(postings[1]));
    std::vector<SplitRecord> parts = books.Parts();
    ASSERT_EQ(2u, parts.size());
    parts[1].Buchungsnummer = 1;
    parts[1].Splitnummer = 1;
    EXPECT_EQ(HexOf(parts[0]), HexOf(parts[1]));
}

TEST_F(SplitPosting, StartWithoutExHasNoZahlungsziel)
{
    ASSERT_EQ(1, VARK_SplitStart(1, 17, "15.5.98", "123456789", 0x91));
    ASSERT_EQ(1, VARK_SplitEinfuegenEx("1200", 1, "4000", 1, "1", "", "", std::string(50, 't').c_str(), 0));
    ASSERT_EQ(1, VARK_SplitEnde(1, 1));
    const BatRecord bat = books.OnlyPosting();
    EXPECT_EQ(17, +bat.Stapel);
    EXPECT_EQ("12345678", TextOf(bat.Beleg));
    EXPECT_EQ(0x91, bat.Kennzeichen);
    EXPECT_EQ(0, +bat.Zahlungsziel);
    EXPECT_EQ(std::string(35, 't'), TextOf(bat.Teil.Text));
}

TEST_F(SplitPosting, PieceByPieceThereIsNoUpperLimit)
{
    for (const int count : {11, 15, 16, 20, 21, 137}) {
        ASSERT_EQ(1, Start());
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(1, Add(i % 2 == 0 ? "4000" : "4100", "1200", std::to_string(i).c_str()));
        }
        ASSERT_EQ(1, VARK_SplitEnde(1, 1)) << count;
        const BatRecord bat = books.OnlyPosting();
        EXPECT_EQ(count, +bat.Anzahl);
        const std::vector<SplitRecord> parts = books.Parts();
        ASSERT_EQ(static_cast<size_t>(count - 1), parts.size());
        for (size_t i = 0; i < parts.size(); ++i) {
            char amount[16];
            std::snprintf(amount, sizeof amount, "%09d,00", static_cast<int>(i + 1));
            EXPECT_EQ(amount, TextOf(parts[i].Brutto));
            EXPECT_EQ(bat.Buchungsnummer, +parts[i].Buchungsnummer);
        }
        VARK_SchliesseDB();
        books.EmptyTable(1, TableBat);
        books.EmptyTable(1, TableSplit);
    }
}

TEST_F(SplitPosting, AFaultBehindTheTenthPartNamesIt)
{
    ASSERT_EQ(1, Start());
    for (int i = 0; i < 12; ++i) {
        ASSERT_EQ(1, Add("4000", i % 2 == 0 ? "1200" : "1000", i == 11 ? "x" : "1"));
    }
    EXPECT_EQ(-12, VARK_SplitEnde(1, 1));
    EXPECT_EQ(Lines{"Teilbuchung 12: Der Bruttobetrag ist unzulässig!"}, books.TakeBoxes());
    EXPECT_TRUE(books.IsEmpty());
}

TEST_F(SplitPosting, TheSideTestReachesBehindTheTenthPart)
{
    ASSERT_EQ(1, Start());
    for (int i = 0; i < 12; ++i) {
        ASSERT_EQ(1, Add(i == 11 ? "4100" : "4000", i % 2 == 0 ? "1200" : "1000"));
    }
    EXPECT_EQ(-26, VARK_SplitEnde(1, 1));
    EXPECT_EQ(Lines{oneSide}, books.TakeBoxes());
}

TEST_F(SplitPosting, ADroppedSplitLeavesNothing)
{
    ASSERT_EQ(1, Start());
    ASSERT_EQ(1, Add("4000", "1200"));
    EXPECT_EQ(1, VARK_SplitEnde(0, 1));
    EXPECT_EQ(-40, VARK_SplitEnde(1, 1));
    EXPECT_EQ(-40, Add("4000", "1200"));
    EXPECT_EQ(1, VARK_SplitEnde(0, 1)) << "dropping nothing is no failure";
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(SplitPosting, AStartDropsTheSplitBefore)
{
    ASSERT_EQ(1, Start());
    ASSERT_EQ(1, Add("4000", "1200", "5"));
    ASSERT_EQ(1, Start());
    ASSERT_EQ(1, Add("4000", "1200", "7"));
    ASSERT_EQ(1, VARK_SplitEnde(1, 1));
    EXPECT_EQ("000000007,00", TextOf(books.OnlyPosting().Teil.Brutto));
    EXPECT_EQ(1, +books.OnlyPosting().Anzahl);
}

TEST_F(SplitPosting, AfterARefusalAndAfterAPostTheSplitIsOver)
{
    ASSERT_EQ(1, Start());
    EXPECT_EQ(-25, VARK_SplitEnde(1, 0)) << "no Teilbuchung";
    EXPECT_EQ(-40, VARK_SplitEnde(1, 0));
    ASSERT_EQ(1, Start());
    ASSERT_EQ(1, Add("4000", "1200"));
    ASSERT_EQ(1, VARK_SplitEnde(1, 0));
    EXPECT_EQ(-40, VARK_SplitEnde(1, 0));
    EXPECT_EQ(-40, Add("4000", "1200"));
    EXPECT_EQ(1u, books.Postings().size());
}

TEST_F(SplitPosting, ADirectPostingInBetweenIsLimitedToTenAndLeavesTheSplitAlone)
{
    ASSERT_EQ(1, Start());
    ASSERT_EQ(1, Add("4000", "1200", "5"));
    SplitEingabe split = PlainSplit();
    ASSERT_EQ(1, Post(split));
    split.Anzahl = 11;
    EXPECT_EQ(-25, Post(split));
    ASSERT_EQ(1, Add("4100", "1200", "6"));
    ASSERT_EQ(1, VARK_SplitEnde(1, 1));
    EXPECT_EQ(2, +books.Postings().back().Anzahl);
    EXPECT_EQ("000000005,00", TextOf(books.Postings().back().Teil.Brutto));
}

TEST_F(SplitPosting, ABadDateAtTheStartIsSilentAndOpensNothing)
{
    ASSERT_EQ(1, Start());
    for (const char *date : {"32.5.98", "", "15.05.1998 und mehr!", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(-11, VARK_SplitStart(1, 16, date, "", 0));
        EXPECT_EQ(-40, Add("4000", "1200"));
    }
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_EQ(1, VARK_SplitStart(1, 16, "15.05.1998 und mehr", "", 0)) << "19 characters, the year is read";
}

TEST_F(SplitPosting, NothingButTheDateIsCheckedBeforeTheEnd)
{
    ASSERT_EQ(1, VARK_SplitStart(9, 99, "15.5.98", nullptr, 0));
    ASSERT_EQ(1, VARK_SplitEinfuegen(nullptr, 77, nullptr, -1, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(-5, VARK_SplitEnde(1, 1));
    EXPECT_EQ(Lines{"Der Mandant existiert nicht!"}, books.TakeBoxes());
}

TEST_F(SplitPosting, TwoThreadsBuildTwoSplitsAtOnce)
{
    ASSERT_EQ(1, Start());
    ASSERT_EQ(1, Add("4000", "1200", "1"));
    std::thread([] {
        EXPECT_EQ(-40, Add("4000", "1200", "9")) << "this thread has begun none";
        ASSERT_EQ(1, Start());
        ASSERT_EQ(1, Add("4000", "1200", "2"));
        ASSERT_EQ(1, Add("4100", "1200", "3"));
        ASSERT_EQ(1, VARK_SplitEnde(1, 0));
    }).join();
    ASSERT_EQ(1, VARK_SplitEnde(1, 1));
    ASSERT_EQ(2u, books.Postings().size());
    EXPECT_EQ(2, +books.Postings()[0].Anzahl);
    EXPECT_EQ(1, +books.Postings()[1].Anzahl);
}

TEST_F(SplitPosting, WithoutMemoryTheTeilbuchungenBeforeStay)
{
    ASSERT_EQ(1, Start());
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(1, Add(i % 2 == 0 ? "4000" : "4100", "1200"));
    }
    FailAllocation(1);
    EXPECT_EQ(-2, Add("4000", "1200"));
    StopAllocationFaults();
    ASSERT_EQ(1, VARK_SplitEnde(1, 1));
    EXPECT_EQ(10, +books.OnlyPosting().Anzahl);
}

TEST_F(SplitPosting, TheMostPartsAreWhatTheRecordCanCount)
{
    ASSERT_EQ(1, Start());
    for (int i = 0; i < INT16_MAX; ++i) {
        if (Add("4000", "1200") != 1) FAIL() << i;
    }
    EXPECT_EQ(-2, Add("4000", "1200"));
    EXPECT_EQ(1, VARK_SplitEnde(0, 0));
}
