#include "include/vark40.h"
#include "src/booking/checks.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

struct SinglePosting : ::testing::Test {
    int32_t Post(const BuchungEingabe &booking) { return VARK_BuchungEinfuegen(&booking, 1); }

    Ledger books;
};

// The same with cost accounting on and costs obligatory.
struct PostingWithCosts : ::testing::Test {
    int32_t Post(const BuchungEingabe &booking) { return VARK_BuchungEinfuegen(&booking, 1); }
    // Gives a Sachkonto a Kostenschablone of its own.
    void Give(const char *konto, int16_t zuordnung, int32_t schablone, uint8_t mitKosten, unsigned steuer = 0)
    {
        SakoRecord record = MakeSako(konto, zuordnung, static_cast<uint8_t>(steuer));
        record.Kostenschablone = schablone;
        record.MitKosten = mitKosten;
        books.ReplaceInYears(TableSako, record);
    }
    void MakeCostsOptional()
    {
        books.ChangeMandant(1, [](FistaRecord &record) { record.KostenPflicht = 0; });
    }

    Ledger books{{.Kostenrechnung = true, .KostenPflicht = true}};
};

BuchungEingabe Booking(const char *soll, int32_t sollArt, const char *haben, int32_t habenArt,
                       const char *brutto, const char *satz = "", const char *steuer = "",
                       const char *datum = "150598")
{
    BuchungEingabe booking = PlainBooking();
    SetText(booking.Datum, datum);
    SetText(booking.Sollkonto, soll);
    booking.SollArt = sollArt;
    SetText(booking.Habenkonto, haben);
    booking.HabenArt = habenArt;
    SetText(booking.Brutto, brutto);
    SetText(booking.Steuersatz, satz);
    SetText(booking.Steuerbetrag, steuer);
    return booking;
}

// What is in the books of PlainBooking.
BatRecord PlainPosting(int32_t number)
{
    BatRecord bat{};
    bat.Stapel = 16;
    bat.Buchungsnummer = number;
    SetText(bat.Buchungsdatum, "150518");
    SetText(bat.ZweitesDatum, "150518");
    SetText(bat.Beleg, "R-1");
    bat.Anzahl = 1;
    SetText(bat.Teil.Sollkonto, "   4000");
    SetText(bat.Teil.Habenkonto, "   1200");
    bat.Teil.SollArt = BuchungSachkonto;
    bat.Teil.HabenArt = BuchungSachkonto;
    SetText(bat.Teil.Brutto, "000000116,00");
    SetText(bat.Teil.Netto, "000000116,00");
    SetText(bat.Teil.Text, "Büromaterial");
    return bat;
}

// Tax of a posting in one line: "key 2/0 side 1 16,00 on 1776 net 000000100,00".
std::string TaxOf(const SplitRecord &part)
{
    std::string konto = TextOf(part.Steuerkonto);
    konto.erase(0, konto.find_first_not_of(' '));
    return "key " + std::to_string(part.Steuerschluessel) + "/" + std::to_string(part.Steuerfolge) +
           " side " + std::to_string(part.Steuerseite) + " rate '" + TextOf(part.Steuersatz) + "' on '" +
           konto + "' net " + TextOf(part.Netto);
}

const std::string forbidden = "In dieser Buchung darf keine Steuer angegeben werden!";
const std::string fixedRate =
    "Der Steuersatz bei einer Buchung auf ein Erlöskonto mit festem Steuersatz darf "
    "nicht verändert werden!";
const std::string needsCosts =
    "Bei Buchungen auf GuV-Konten muß zumindest eine Kostenstelle bebucht werden. Dazu "
    "müssen Sie eine Kostenschablone im GuV-Konto hinterlegen und die Kostenaufteilung "
    "mit <OK> abschließen.";
const std::string badSteuerbetrag = "Der Steuerbetrag ist unzulässig!";
const std::string badDate = "Das Buchungsdatum ist unzulässig!";

} // namespace

// Each row repairs one more fault of the same booking, so the first remaining one decides.
TEST_F(PostingWithCosts, ChecksComeInTheirOrder)
{
    books.AddKostenschablone(1, {"100,00"});
    books.Insert(1, TableKoscha, MakeKoscha(2, 1)); // without rows
    books.Insert(1, TableKurse, MakeKurs("USD", "180228", "999999999,99"));
    BuchungEingabe b{};
    b.Mandant = 9;
    b.Stapel = 99;
    SetText(b.Datum, "310298");
    SetText(b.Sollkonto, "10003");
    SetText(b.Habenkonto, "  10003");
    b.SollArt = 1;
    b.HabenArt = 1;
    SetText(b.Brutto, "1.16,00");
    SetText(b.Steuersatz, "100");
    SetText(b.Steuerbetrag, "1,234");
    b.Zahlungsziel = 8;
    b.Kostenschablone = 3;
    struct Row {
        const char *Repair;
        std::function<void()> Do;
        int32_t Code;
        std::string Box;
    };
    const std::vector<Row> rows = {
        {"nothing", [&] {}, -5, "Der Mandant existiert nicht!"},
        {"Mandant", [&] { b.Mandant = 1; }, -6, "Der Stapel existiert nicht!"},
        {"Stapel", [&] { b.Stapel = 17; }, -11, badDate},
        {"day", [&] { SetText(b.Datum, "280296"); }, -11, badDate},
        {"year", [&] { SetText(b.Datum, "280298"); }, -10, "Soll- und Habenkontonummern sind gleich!"},
        {"same", [&] { SetText(b.Sollkonto, "4711"); }, -8, "Die Sollkontonummer ist unzulässig!"},
        {"Sollkonto", [&] { SetText(b.Sollkonto, "70000"); }, -8, "Die Sollkontonummer ist unzulässig!"},
        {"SollArt", [&] { b.SollArt = 2; }, -9, "Die Habenkontonummer ist unzulässig!"},
        {"HabenArt of an unknown account",
         [&] {
             SetText(b.Habenkonto, "4711");
             b.HabenArt = 16;
         },
         -9, "Die Habenkontonummer ist unzulässig!"},
        {"Habenkonto",
         [&] {
             SetText(b.Habenkonto, "10003");
             b.HabenArt = 4;
         },
         -12, "Der Bruttobetrag ist unzulässig!"},
        {"Brutto", [&] { SetText(b.Brutto, "1,16"); }, -13, "Der Steuersatz ist unzulässig!"},
        {"Steuersatz", [&] { SetText(b.Steuersatz, "16"); }, -14, badSteuerbetrag},
        {"Steuerbetrag", [&] { SetText(b.Steuerbetrag, "0,16"); }, -27, "Das Zahlungsziel ist unzulässig!"},
        {"Zahlungsziel", [&] { b.Zahlungsziel = 6; }, -43, "Die Kostenschablone ist unzulässig!"},
        {"Kostenschablone", [&] { b.Kostenschablone = 1; }, -14, forbidden},
        {"no Steuerbetrag", [&] { SetText(b.Steuerbetrag, ""); }, -13, forbidden},
        {"tax on a sales account",
         [&] {
             SetText(b.Sollkonto, "8500");
             b.SollArt = 1;
         },
         -2, "Der Betrag kann nicht umgerechnet werden!"},
        {"currency, but a rate that the account does not allow",
         [&] {
             SetText(b.Habenkonto, "10000");
             SetText(b.Steuersatz, "7");
         },
         -13, fixedRate},
        {"rate, but a tax of another sign",
         [&] {
             SetText(b.Steuersatz, "");
             SetText(b.Steuerbetrag, "2");
         },
         -14, badSteuerbetrag},
        {"tax, but no GuV account",
         [&] {
             SetText(b.Steuerbetrag, "");
             SetText(b.Sollkonto, "1200");
         },
         -43, "Bei einer Kostenstellenbuchung muß mindestens ein GuV-Konto beteiligt sein!"},
        {"GuV, but no costs",
         [&] {
             SetText(b.Sollkonto, "4000");
             b.Kostenschablone = 0;
         },
         -24, needsCosts},
        {"costs that cannot be spread", [&] { b.Kostenschablone = 2; }, -24, needsCosts},
        {"costs", [&] { b.Kostenschablone = 1; }, 1, ""},
    };
    for (const Row &row : rows) {
        row.Do();
        const BuchungEingabe before = b;
        EXPECT_EQ(row.Code, VARK_BuchungEinfuegen(&b, 0)) << row.Repair;
        EXPECT_EQ(Lines{}, books.TakeBoxes()) << row.Repair;
        if (row.Code == 1) break;
        EXPECT_EQ(row.Code, VARK_BuchungEinfuegen(&b, 1)) << row.Repair;
        EXPECT_EQ(Lines{row.Box}, books.TakeBoxes()) << row.Repair;
        EXPECT_TRUE(books.IsEmpty()) << row.Repair;
        EXPECT_EQ(HexOf(before), HexOf(b)) << "the caller's structure stays as it is";
    }
    EXPECT_EQ(17, +books.OnlyPosting().Stapel);
    EXPECT_EQ(1u, books.CostLines().size());
}

// ---- The record ----

TEST_F(SinglePosting, APostingWithoutTaxIsWrittenToTheByte)
{
    EXPECT_EQ(1, Post(PlainBooking()));
    EXPECT_EQ(HexOf(PlainPosting(1)), HexOf(books.OnlyPosting()));
    EXPECT_TRUE(books.Parts().empty());
    EXPECT_TRUE(books.CostLines().empty());
    EXPECT_EQ(Lines{}, books.TakeLog());
}

TEST_F(SinglePosting, APostingWithEverythingIsWrittenToTheByte)
{
    BuchungEingabe booking = Booking("70001", 2, "3400", 1, "-116,00", "15,00", "-15,13");
    SetText(booking.Beleg, "12345678");
    SetText(booking.Text, std::string(35, 'x'));
    booking.Kennzeichen = 0xA5;
    booking.Zahlungsziel = 6;
    EXPECT_EQ(1, Post(booking));
    BatRecord expected{};
    expected.Stapel = 16;
    expected.Buchungsnummer = 1;
    SetText(expected.Buchungsdatum, "150518");
    SetText(expected.ZweitesDatum, "150518");
    SetText(expected.Beleg, "12345678");
    expected.Anzahl = 1;
    SetText(expected.Teil.Sollkonto, "  70001");
    SetText(expected.Teil.Habenkonto, "   3400");
    SetText(expected.Teil.Steuerkonto, "   1575");
    expected.Teil.SollArt = BuchungKreditor;
    expected.Teil.HabenArt = BuchungSachkonto;
    expected.Teil.Steuerseite = SteuerseiteHaben;
    expected.Teil.Steuerschluessel = 0x42;
    expected.Teil.Steuerfolge = 1;
    SetText(expected.Teil.Brutto, "000000116-00");
    SetText(expected.Teil.Netto, "000000100-87");
    SetText(expected.Teil.Steuersatz, "15,00");
    SetText(expected.Teil.Text, std::string(35, 'x'));
    expected.Kennzeichen = 0xA5;
    expected.Zahlungsziel = 6;
    EXPECT_EQ(HexOf(expected), HexOf(books.OnlyPosting()));
}

TEST_F(SinglePosting, NumbersFollowOneAnother)
{
    for (int32_t number = 1; number <= 3; ++number) {
        EXPECT_EQ(1, Post(PlainBooking()));
        EXPECT_EQ(number, +books.Postings().back().Buchungsnummer);
    }
}

TEST_F(SinglePosting, KindsOfAccountsHaveTheirOwnNumbersInTheRecord)
{
    EXPECT_EQ(1, Post(Booking("10000", 4, "70000", 2, "1")));
    EXPECT_EQ(BuchungDebitor, books.OnlyPosting().Teil.SollArt);
    EXPECT_EQ(BuchungKreditor, books.OnlyPosting().Teil.HabenArt);
}

TEST(BuchungskontoartOf, KindsOutsideOfAPostingCountAsKreditor)
{
    EXPECT_EQ(2, +BuchungskontoartOf(1));
    EXPECT_EQ(4, +BuchungskontoartOf(2));
    EXPECT_EQ(8, +BuchungskontoartOf(4));
    for (const int32_t other : {0, 8, 16, -1}) {
        EXPECT_EQ(4, +BuchungskontoartOf(other)) << other;
    }
}

TEST_F(SinglePosting, ThePostingOfAnotherMandantGoesIntoItsBooks)
{
    books.AddLedger(2);
    BuchungEingabe booking = PlainBooking();
    booking.Mandant = 2;
    EXPECT_EQ(1, Post(booking));
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(1u, books.Count(2, TableBat));
    EXPECT_EQ(1, Post(PlainBooking())) << "and back";
    EXPECT_EQ(1u, books.Count(1, TableBat));
    EXPECT_EQ(1u, books.Count(2, TableBat));
}

// ---- Dates ----

TEST_F(SinglePosting, TheFirstOpenYearIsPostedIntoTheMandantsStapelWithItsOwnAccounts)
{
    books.Insert(1, TableSako, MakeSako("4200", ZuordnungGuv), "1997");
    EXPECT_EQ(1, Post(Booking("4200", 1, "1200", 1, "1", "", "", "311297")));
    EXPECT_EQ("311217", TextOf(books.OnlyPosting().Buchungsdatum));
    EXPECT_EQ(0u, books.Count(1, TableBat, "1997"));
    EXPECT_EQ(-8, Post(Booking("4200", 1, "1200", 1, "1", "", "", "010198"))) << "back in the last year";
    EXPECT_EQ(1, Post(PlainBooking()));
}

TEST_F(SinglePosting, YearsOutsideThePostableOnesAreRefused)
{
    EXPECT_EQ(-11, Post(Booking("4000", 1, "1200", 1, "1", "", "", "311296")));
    EXPECT_EQ(-11, Post(Booking("4000", 1, "1200", 1, "1", "", "", "010199")));
    EXPECT_EQ((Lines{badDate, badDate}), books.TakeBoxes());
    books.ChangeMandant(1, [](FistaRecord &record) { SetText(record.LowerYear, ""); });
    VARK_SchliesseDB();
    EXPECT_EQ(-11, Post(Booking("4000", 1, "1200", 1, "1", "", "", "311297")));
    EXPECT_EQ(1, Post(PlainBooking()));
}

TEST_F(SinglePosting, AYearWhoseTablesAreMissingIsAFailureThatIsAlwaysShown)
{
    ASSERT_EQ(1, Post(PlainBooking()));
    std::filesystem::remove_all(books.YearDirectory(1, "1997"));
    const BuchungEingabe booking = Booking("4000", 1, "1200", 1, "1", "", "", "311297");
    EXPECT_EQ(-3, VARK_BuchungEinfuegen(&booking, 0));
    EXPECT_EQ(Lines{"File " + books.TablePath(1, TableSako, "1997") + " not found"}, books.TakeBoxes());
    EXPECT_EQ(1, Post(PlainBooking())) << "the thread finds back";
    EXPECT_EQ(2u, books.Postings().size());
}

TEST(SinglePostingDates, AFiscalYearFromJulyIsNamedByItsBeginning)
{
    Ledger books({.FirstFiscalMonth = 7});
    BuchungEingabe booking = Booking("4000", 1, "1200", 1, "1", "", "", "300699");
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    EXPECT_EQ("301218", TextOf(books.OnlyPosting().Buchungsdatum));
    SetText(booking.Datum, "010799");
    EXPECT_EQ(-11, VARK_BuchungEinfuegen(&booking, 0));
    SetText(booking.Datum, "300697");
    EXPECT_EQ(-11, VARK_BuchungEinfuegen(&booking, 0));
    SetText(booking.Datum, "010797");
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    EXPECT_EQ("010117", TextOf(books.Postings().back().Buchungsdatum));
}

TEST(SinglePostingDates, TheYear2000CannotBeNamedInTwoDigits)
{
    Ledger books({.LowerYear = "2000", .UpperYear = "2001"});
    BuchungEingabe booking = Booking("4000", 1, "1200", 1, "1", "", "", "150300");
    EXPECT_EQ(-11, VARK_BuchungEinfuegen(&booking, 0));
    const auto post = [](const char *date) {
        return VARK_BuchungEinfuegenDirekt(0, 1, 16, date, "", "", "4000", 1, "1200", 1, "1", "", "");
    };
    EXPECT_EQ(-11, post("15.03.2000"));
    EXPECT_EQ(1, post("15.03.2001"));
    EXPECT_EQ("150321", TextOf(books.OnlyPosting().Buchungsdatum));
}

// ---- Amounts ----

TEST_F(SinglePosting, AmountsAreTakenInAllTheirForms)
{
    const struct {
        const char *Text;
        const char *Amount; // null: refused
    } rows[] = {
        {"1", "000000001,00"},   {"0,5", "000000000,50"}, {"-7,25", "000000007-25"},
        {"+7,", "000000007,00"}, {"0", "000000000,00"},   {"999999999,99", "999999999,99"},
        {"1234567890", nullptr}, {"1,234", nullptr},      {"1.000", nullptr},
        {"", nullptr},           {"-", nullptr},          {" 1", nullptr},
        {"1 ", nullptr},         {",50", nullptr},        {"--1", nullptr},
        {"0x10", nullptr},       {"1e3", nullptr},
    };
    size_t written = 0;
    for (const auto &row : rows) {
        const int32_t code = Post(Booking("4000", 1, "1200", 1, row.Text));
        EXPECT_EQ(row.Amount != nullptr ? 1 : -12, code) << row.Text;
        if (row.Amount != nullptr) {
            EXPECT_EQ(row.Amount, TextOf(books.Postings().back().Teil.Brutto));
            ++written;
        }
    }
    EXPECT_EQ(written, books.Postings().size());
}

TEST_F(SinglePosting, AccountsMayBeGivenWithOrWithoutBlanks)
{
    EXPECT_EQ(1, Post(Booking("   4000", 1, "1200", 1, "1")));
    EXPECT_EQ(1, Post(Booking("  4000", 1, "   1200", 1, "1")));
    EXPECT_EQ(-8, Post(Booking("4000 ", 1, "1200", 1, "1"))) << "blanks behind are part of the number";
    EXPECT_EQ(-10, Post(Booking("", 1, "", 1, "1"))) << "no account on both sides is the same one";
    EXPECT_EQ(-8, Post(Booking("", 1, "1200", 1, "1")));
}

// ---- Tax ----

namespace {

struct TaxRow {
    const char *Soll;
    int32_t SollArt;
    const char *Haben;
    int32_t HabenArt;
    const char *Brutto;
    const char *Satz;
    const char *Steuer;
    const char *Datum;
    const char *Tax; // null: refused with Code and Box
    int32_t Code = 1;
    std::string Box = {};
};

void CheckTax(Ledger &books, const std::vector<TaxRow> &rows)
{
    size_t written = books.Postings().size();
    for (const TaxRow &row : rows) {
        const std::string what = std::string(row.Soll) + " to " + row.Haben + " " + row.Brutto + " rate '" +
                                 row.Satz + "' tax '" + row.Steuer + "' on " + row.Datum;
        const BuchungEingabe booking = Booking(row.Soll, row.SollArt, row.Haben, row.HabenArt, row.Brutto,
                                               row.Satz, row.Steuer, row.Datum);
        EXPECT_EQ(row.Code, VARK_BuchungEinfuegen(&booking, 1)) << what;
        EXPECT_EQ(row.Box.empty() ? Lines{} : Lines{row.Box}, books.TakeBoxes()) << what;
        const std::vector<BatRecord> postings = books.Postings();
        written += row.Tax != nullptr ? 1 : 0;
        ASSERT_EQ(written, postings.size()) << what;
        if (row.Tax != nullptr) {
            EXPECT_EQ(row.Tax, TaxOf(postings.back().Teil)) << what;
        }
    }
}

} // namespace

TEST_F(SinglePosting, TaxOfTheAccountApplies)
{
    CheckTax(
        books,
        {
            {"10000", 4, "8400", 1, "116", "", "", "150598",
             "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
            {"10000", 4, "8400", 1, "115", "", "", "150398",
             "key 2/1 side 1 rate '15,00' on '1775' net 000000100,00"},
            {"10000", 4, "8300", 1, "107", "", "", "150598",
             "key 4/0 side 1 rate '07,00' on '1771' net 000000100,00"},
            {"3400", 1, "70000", 2, "116", "", "", "150598",
             "key 2/0 side 2 rate '16,00' on '1576' net 000000100,00"},
            {"3300", 1, "1200", 1, "107", "", "", "150598",
             "key 4/0 side 2 rate '07,00' on '1571' net 000000100,00"},
            {"10000", 4, "8100", 1, "116", "", "", "150598",
             "key 8/0 side 1 rate '00,00' on '' net 000000116,00"},
            {"10000", 4, "8900", 1, "116", "", "", "150598",
             "key 16/0 side 1 rate '' on '' net 000000116,00"},
            {"8400", 1, "10000", 4, "-116", "", "", "150598",
             "key 2/0 side 2 rate '16,00' on '1776' net 000000100-00"},
            {"3400", 1, "8400", 1, "116", "", "", "150598", "key 0/0 side 0 rate '' on '' net 000000116,00"},
            {"4000", 1, "8400", 1, "116", "", "", "150598", "key 0/0 side 0 rate '' on '' net 000000116,00"},
            {"1200", 1, "1750", 1, "116", "", "", "150598", "key 0/0 side 0 rate '' on '' net 000000116,00"},
            {"1700", 1, "8400", 1, "116", "", "", "150598",
             "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
        });
}

TEST_F(SinglePosting, AGivenRateIsThatOfTheKeyTheOneBeforeOrAFreeOne)
{
    CheckTax(books, {
                        {"10000", 4, "8400", 1, "116", "16", "", "150598",
                         "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
                        {"10000", 4, "8400", 1, "115", "15", "", "150598",
                         "key 66/1 side 1 rate '15,00' on '1775' net 000000100,00"},
                        {"3400", 1, "70000", 2, "115", "15", "", "150598",
                         "key 66/1 side 2 rate '15,00' on '1575' net 000000100,00"},
                        {"10000", 4, "8300", 1, "106,50", "6,5", "", "150598",
                         "key 68/1 side 1 rate '06,50' on '1770' net 000000100,00"},
                        // Two steps back is none of the key's any more.
                        {"10000", 4, "8400", 1, "114", "14", "", "150598",
                         "key 16/0 side 1 rate '14,00' on '1790' net 000000100,00"},
                        {"3400", 1, "70000", 2, "114", "14", "", "150598",
                         "key 16/0 side 2 rate '14,00' on '1590' net 000000100,00"},
                        // From an older date on the step before counts from there.
                        {"10000", 4, "8400", 1, "114", "14", "", "150398",
                         "key 66/2 side 1 rate '14,00' on '1774' net 000000100,00"},
                        // The oldest rate has none before it.
                        {"10000", 4, "8300", 1, "107", "7", "", "150398",
                         "key 16/0 side 1 rate '07,00' on '1790' net 000000100,00"},
                        {"10000", 4, "8400", 1, "116", "0", "", "150598",
                         "key 16/0 side 1 rate '00,00' on '' net 000000116,00"},
                    });
}

TEST_F(SinglePosting, AnAccountWithRateZeroOrAnyRateTakesTheKeyThatFits)
{
    CheckTax(books, {
                        {"10000", 4, "8100", 1, "116", "16", "", "150598",
                         "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
                        {"10000", 4, "8900", 1, "107", "7", "", "150598",
                         "key 4/0 side 1 rate '07,00' on '1771' net 000000100,00"},
                        {"10000", 4, "8900", 1, "106,5", "6,5", "", "150398",
                         "key 4/1 side 1 rate '06,50' on '1770' net 000000100,00"},
                        {"10000", 4, "8100", 1, "115", "15", "", "150598",
                         "key 16/0 side 1 rate '15,00' on '1790' net 000000100,00"},
                        {"10000", 4, "8100", 1, "116", "0", "", "150598",
                         "key 8/0 side 1 rate '00,00' on '' net 000000116,00"},
                        {"10000", 4, "8900", 1, "116", "0", "", "150598",
                         "key 16/0 side 1 rate '00,00' on '' net 000000116,00"},
                    });
}

TEST_F(SinglePosting, AGivenTaxAmountDecidesTheNetAmount)
{
    CheckTax(books,
             {
                 {"10000", 4, "8400", 1, "116", "", "10", "150598",
                  "key 2/0 side 1 rate '16,00' on '1776' net 000000106,00"},
                 {"10000", 4, "8400", 1, "116", "16", "15,99", "150598",
                  "key 2/0 side 1 rate '16,00' on '1776' net 000000100,01"},
                 {"10000", 4, "8400", 1, "-116", "", "-16", "150598",
                  "key 2/0 side 1 rate '16,00' on '1776' net 000000100-00"},
                 {"10000", 4, "8400", 1, "-116", "", "16", "150598",
                  "key 2/0 side 1 rate '16,00' on '1776' net 000000132-00"},
                 {"10000", 4, "8900", 1, "116", "16", "16", "150598",
                  "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
                 {"10000", 4, "8400", 1, "116", "", "116", "150598",
                  "key 2/0 side 1 rate '16,00' on '1776' net 000000000,00"},
                 {"10000", 4, "8400", 1, "116", "", "116,01", "150598", nullptr, -14, badSteuerbetrag},
                 {"10000", 4, "8400", 1, "-116", "", "-116,01", "150598", nullptr, -14, badSteuerbetrag},
             });
}

TEST_F(SinglePosting, AZeroTaxAmountIsNoWishForTax)
{
    CheckTax(books, {
                        {"4000", 1, "1200", 1, "116", "", "0", "150598",
                         "key 0/0 side 0 rate '' on '' net 000000116,00"},
                        {"4000", 1, "1200", 1, "116", "0", "0", "150598",
                         "key 0/0 side 0 rate '00,00' on '' net 000000116,00"},
                        {"10000", 4, "8100", 1, "116", "", "0", "150598",
                         "key 8/0 side 1 rate '00,00' on '' net 000000116,00"},
                        {"10000", 4, "8400", 1, "116", "", "0", "150598",
                         "key 2/0 side 1 rate '16,00' on '1776' net 000000116,00"},
                    });
    BuchungEingabe booking = Booking("4000", 1, "1200", 1, "116");
    SetText(booking.Steuerbetrag, "000000000,00");
    EXPECT_EQ(1, Post(booking));
}

TEST_F(SinglePosting, TaxIsForbiddenWithoutAKey)
{
    CheckTax(books, {
                        {"4000", 1, "1200", 1, "116", "16", "", "150598", nullptr, -13, forbidden},
                        {"4000", 1, "1200", 1, "116", "", "16", "150598", nullptr, -14, forbidden},
                        {"4000", 1, "1200", 1, "116", "16", "0", "150598", nullptr, -14, forbidden},
                        {"3400", 1, "8400", 1, "116", "16", "", "150598", nullptr, -13, forbidden},
                    });
}

TEST_F(SinglePosting, ATaxAmountNeedsARateWhereTheRateIsFree)
{
    CheckTax(books, {
                        {"10000", 4, "8900", 1, "116", "", "16", "150598", nullptr, -14, badSteuerbetrag},
                        {"10000", 4, "8100", 1, "116", "", "16", "150598", nullptr, -14, badSteuerbetrag},
                    });
}

TEST_F(SinglePosting, AFixedRateMayBeTheRateBeforeButNoOther)
{
    CheckTax(books, {
                        {"10000", 4, "8500", 1, "116", "", "", "150598",
                         "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
                        {"10000", 4, "8500", 1, "116", "16", "", "150598",
                         "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
                        {"10000", 4, "8500", 1, "115", "15", "", "150598",
                         "key 66/1 side 1 rate '15,00' on '1775' net 000000100,00"},
                        {"10000", 4, "8500", 1, "116", "14", "", "150598", nullptr, -13, fixedRate},
                        {"10000", 4, "8500", 1, "116", "0", "", "150598",
                         "key 16/0 side 1 rate '00,00' on '' net 000000116,00"},
                        {"8500", 1, "10000", 4, "116", "14", "", "150598", nullptr, -13, fixedRate},
                        {"10000", 4, "8510", 1, "116", "", "", "150598",
                         "key 8/0 side 1 rate '00,00' on '' net 000000116,00"},
                        {"10000", 4, "8510", 1, "116", "16", "", "150598",
                         "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
                        {"10000", 4, "8510", 1, "116", "15", "", "150598", nullptr, -13, fixedRate},
                        {"10000", 4, "8510", 1, "116", "0", "", "150598",
                         "key 8/0 side 1 rate '00,00' on '' net 000000116,00"},
                    });
}

TEST_F(SinglePosting, OnlyTheAccountThatGaveTheKeyFixesTheRate)
{
    SakoRecord record = MakeSako("1000", ZuordnungAktiva);
    record.FesterSatz = 1;
    books.ReplaceInYears(TableSako, record);
    CheckTax(books, {
                        {"1000", 1, "8400", 1, "112", "12", "", "150598",
                         "key 16/0 side 1 rate '12,00' on '1790' net 000000100,00"},
                        {"3400", 1, "1000", 1, "112", "12", "", "150598",
                         "key 16/0 side 2 rate '12,00' on '1590' net 000000100,00"},
                    });
}

TEST_F(SinglePosting, AFixedRateOfAnAccountForOtherRatesIsTheCallers)
{
    SakoRecord record = MakeSako("8900", ZuordnungGuv, SteuerSonstigerSatz);
    record.FesterSatz = 1;
    books.ReplaceInYears(TableSako, record);
    CheckTax(books, {
                        {"10000", 4, "8900", 1, "112", "12", "", "150598",
                         "key 16/0 side 1 rate '12,00' on '1790' net 000000100,00"},
                    });
}

TEST_F(SinglePosting, InputTaxAtAnyRateTakesItsOwnTaxAccount)
{
    books.ReplaceInYears(TableSako, MakeSako("4100", ZuordnungGuv, SteuerSonstigerSatz | SteuerVorsteuer));
    CheckTax(books, {
                        {"4100", 1, "70000", 2, "107", "7", "", "150598",
                         "key 4/0 side 2 rate '07,00' on '1571' net 000000100,00"},
                        {"4100", 1, "70000", 2, "112", "12", "", "150598",
                         "key 16/0 side 2 rate '12,00' on '1590' net 000000100,00"},
                        {"4100", 1, "70000", 2, "112", "", "", "150598",
                         "key 16/0 side 2 rate '' on '' net 000000112,00"},
                    });
}

TEST_F(SinglePosting, AFreeRateThatIsBothTheRegularAndTheReducedOneIsTheRegularOne)
{
    books.ReplaceInYears(TableSteke, MakeSteke(4, 0, "010418", "16,00", "1771", "1571"));
    CheckTax(books, {
                        {"10000", 4, "8900", 1, "116", "16", "", "150598",
                         "key 2/0 side 1 rate '16,00' on '1776' net 000000100,00"},
                    });
}

TEST_F(SinglePosting, AFreeRateIsLookedForAmongTheReducedOnesWhereThereIsNoRegularOne)
{
    for (const std::string &year : books.years) {
        books.EmptyTable(1, TableSteke, year);
    }
    books.InsertInYears(TableSteke, MakeSteke(2, 0, "010818", "16,00", "1776", "1576"));
    books.InsertInYears(TableSteke, MakeSteke(4, 0, "", "07,00", "1771", "1571"));
    CheckTax(books, {
                        {"10000", 4, "8900", 1, "107", "7", "", "150598",
                         "key 4/0 side 1 rate '07,00' on '1771' net 000000100,00"},
                    });
}

TEST_F(SinglePosting, AnEuAccountHasNoTaxForAMandantWithoutUstId)
{
    CheckTax(books, {
                        {"10000", 4, "8125", 1, "116", "", "", "150598",
                         "key 0/0 side 1 rate '' on '' net 000000116,00"},
                        {"10001", 4, "8125", 1, "116", "16", "", "150598",
                         "key 0/0 side 1 rate '16,00' on '' net 000000100,00"},
                    });
}

TEST(SinglePostingEu, APartnerWithUstIdIsFreeOfTaxAndOthersPay)
{
    Ledger books({.UstId = "DE123456789"});
    CheckTax(
        books,
        {
            {"10001", 4, "8125", 1, "116", "", "", "150598", "key 0/0 side 1 rate '' on '' net 000000116,00"},
            {"10001", 4, "8125", 1, "116", "7", "", "150598",
             "key 0/0 side 1 rate '07,00' on '' net 000000116,00"},
            {"10000", 4, "8125", 1, "116", "", "", "150598",
             "key 0/0 side 1 rate '16,00' on '1776' net 000000100,00"},
            {"10000", 4, "8125", 1, "107", "7", "", "150598",
             "key 0/0 side 1 rate '07,00' on '1776' net 000000100,00"},
            {"8125", 1, "10001", 4, "116", "", "", "150598", "key 0/0 side 2 rate '' on '' net 000000116,00"},
            // Without a row for the code the first of all rows is asked for, and it is not valid yet.
            {"10000", 4, "8125", 1, "116", "", "", "150398", nullptr, -3, ""},
        });
}

TEST_F(SinglePosting, ANeededRateThatIsNotThereIsASilentFailure)
{
    books.EmptyTable(1, TableSteke);
    CheckTax(books, {
                        {"10000", 4, "8400", 1, "116", "", "", "150598", nullptr, -3, ""},
                        {"10000", 4, "8100", 1, "116", "", "", "150598", nullptr, -3, ""},
                        {"10000", 4, "8900", 1, "116", "16", "", "150598", nullptr, -3, ""},
                    });
}

TEST_F(PostingWithCosts, TablesAreAsOpenAfterwardsAsBefore)
{
    BoundContext();
    const ThreadContext &context = BoundContext(); // a second time, for which fista stays open
    const auto counts = [&context] {
        return std::vector<int32_t>(std::begin(context.OpenCounts), std::end(context.OpenCounts));
    };
    const std::vector<int32_t> before = counts();
    EXPECT_EQ(-6, Post([] {
        BuchungEingabe booking = PlainBooking();
        booking.Stapel = 99;
        return booking;
    }()));
    EXPECT_EQ(before, counts());
    EXPECT_EQ(-12, Post(Booking("4000", 1, "1200", 1, "x")));
    EXPECT_EQ(before, counts());
    EXPECT_EQ(-24, Post(Booking("4000", 1, "1200", 1, "1")));
    EXPECT_EQ(before, counts());
}

TEST_F(SinglePosting, ARecordThatIsNotFoundHasTheCodeOfItsStep)
{
    // Get Equal number n finds nothing: the posting on Debitor 10003 reads fista, Stapel, its account as
    // Sachkonto and as Debitor, the account on Haben, the account once more for its currency, and its rate.
    books.Insert(1, TableKurse, MakeKurs("USD", "180515", "000000001,75"));
    BoundContext();
    const BuchungEingabe booking = Booking("10003", 4, "1200", 1, "100");
    std::vector<int32_t> codes;
    for (int n = 1; n <= 7; ++n) {
        FailEngineOperation(5, n, 4);
        codes.push_back(Post(booking));
        StopEngineFaults();
    }
    EXPECT_EQ((std::vector<int32_t>{-5, -6, 1, -8, -9, -3, 0}), codes);
}

// ---- Zahlungsziel ----

TEST_F(SinglePosting, TheZahlungszielOfTheFirstPersonalAccountApplies)
{
    const auto ziel = [this](BuchungEingabe booking, int32_t wanted) {
        booking.Zahlungsziel = wanted;
        EXPECT_EQ(1, Post(booking));
        return books.Postings().back().Zahlungsziel;
    };
    EXPECT_EQ(0, ziel(PlainBooking(), 0));
    EXPECT_EQ(5, ziel(Booking("10002", 4, "70001", 2, "1"), 0));
    EXPECT_EQ(7, ziel(Booking("70001", 2, "10002", 4, "1"), 0));
    EXPECT_EQ(7, ziel(Booking("10000", 4, "70001", 2, "1"), 0));
    EXPECT_EQ(6, ziel(Booking("10002", 4, "70001", 2, "1"), 6));
    EXPECT_EQ(6, ziel(PlainBooking(), 6));
}

// ---- Costs ----

TEST_F(PostingWithCosts, TheSollAccountsKostenschabloneSpreadsTheNetAmount)
{
    books.AddKostenschablone(1, {"050,00", "050,00"});
    Give("3400", ZuordnungGuv, 1, 0, SteuerRegelsatz | SteuerVorsteuer);
    EXPECT_EQ(1, Post(Booking("3400", 1, "70000", 2, "116,02")));
    const BatRecord bat = books.OnlyPosting();
    EXPECT_EQ(1, +bat.Teil.Kostenschablone);
    EXPECT_EQ(2, +bat.Teil.Kostenzeilen);
    EXPECT_EQ("000000100,02", TextOf(bat.Teil.Netto));
    const std::vector<KobuRecord> lines = books.CostLines();
    ASSERT_EQ(2u, lines.size());
    for (size_t i = 0; i < 2; ++i) {
        KobuRecord expected{};
        expected.Buchungsnummer = bat.Buchungsnummer;
        SetText(expected.Datum, "180515");
        SetText(expected.Kostenobjekt1, i == 0 ? "    100" : "    101");
        SetText(expected.Kostenobjekt2, i == 0 ? "    200" : "    201");
        expected.Flag = static_cast<uint8_t>(i);
        SetText(expected.Betrag, "000000050,01");
        SetText(expected.Text, "Zeile " + std::to_string(i));
        EXPECT_EQ(HexOf(expected), HexOf(lines[i]));
    }
}

TEST_F(PostingWithCosts, TheHabenAccountsLinesCarryTheHabenFlag)
{
    books.AddKostenschablone(1, {"050,00", "050,00"});
    Give("8400", ZuordnungGuv, 1, 0, SteuerRegelsatz);
    EXPECT_EQ(1, Post(Booking("10000", 4, "8400", 1, "116")));
    const std::vector<KobuRecord> lines = books.CostLines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(0x20, lines[0].Flag);
    EXPECT_EQ(0x21, lines[1].Flag);
}

TEST_F(PostingWithCosts, TheSollAccountsKostenschabloneComesFirst)
{
    books.AddKostenschablone(1, {"100,00"});
    books.AddKostenschablone(2, {"100,00"});
    Give("4000", ZuordnungGuv, 1, 0);
    Give("4100", ZuordnungGuv, 2, 0);
    EXPECT_EQ(1, Post(Booking("4000", 1, "4100", 1, "1")));
    EXPECT_EQ(1, +books.OnlyPosting().Teil.Kostenschablone);
    EXPECT_EQ(1u, books.CostLines().size());
}

TEST_F(PostingWithCosts, TheCallersKostenschabloneReplacesTheAccountsOwn)
{
    books.AddKostenschablone(1, {"100,00"});
    books.AddKostenschablone(2, {"050,00", "050,00"});
    Give("4100", ZuordnungGuv, 1, 0);
    BuchungEingabe booking = Booking("4000", 1, "4100", 1, "1");
    booking.Kostenschablone = 2;
    EXPECT_EQ(1, Post(booking));
    EXPECT_EQ(2, +books.OnlyPosting().Teil.Kostenschablone);
    const std::vector<KobuRecord> lines = books.CostLines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(0x20, lines[0].Flag) << "it went to the account that has one";
    for (const SakoRecord &record : books.Read<SakoRecord>(1, TableSako)) {
        const int32_t own = TextOf(record.Konto) == "   4100" ? 1 : 0;
        EXPECT_EQ(own, +record.Kostenschablone) << "the accounts' records stay";
    }
}

TEST_F(PostingWithCosts, AMarkWithoutANumberSatisfiesTheDuty)
{
    Give("4000", ZuordnungGuv, 0, 1);
    EXPECT_EQ(1, Post(PlainBooking()));
    EXPECT_EQ(0, +books.OnlyPosting().Teil.Kostenzeilen);
    EXPECT_EQ(HexOf(PlainPosting(1)), HexOf(books.OnlyPosting()));
}

TEST_F(PostingWithCosts, TheDutyLooksAtPostingsWithASachkontoOnSollOnly)
{
    EXPECT_EQ(-24, Post(Booking("4000", 1, "1200", 1, "1")));
    EXPECT_EQ(-24, Post(Booking("1200", 1, "4000", 1, "1")));
    EXPECT_EQ(-24, Post(Booking("4000", 1, "70000", 2, "1")));
    EXPECT_EQ(1, Post(Booking("70000", 2, "4000", 1, "1")));
    EXPECT_EQ(1, Post(Booking("1000", 1, "1200", 1, "1")));
    EXPECT_EQ(1, Post(Booking("1200", 1, "10000", 4, "1")));
    EXPECT_EQ(1, Post(Booking("10000", 4, "70000", 2, "1")));
}

TEST_F(PostingWithCosts, AKostenschabloneThatCannotBeSpreadCountsOnlyWhereCostsAreObligatory)
{
    books.Insert(1, TableKoscha, MakeKoscha(2, 1)); // without rows
    Give("4000", ZuordnungGuv, 2, 0);
    Give("4100", ZuordnungGuv, 3, 0); // not there at all
    EXPECT_EQ(-24, Post(Booking("4000", 1, "1200", 1, "1")));
    EXPECT_EQ(-24, Post(Booking("4100", 1, "1200", 1, "1")));
    EXPECT_EQ(-24, Post(Booking("10000", 4, "4100", 1, "1")));
    EXPECT_EQ((Lines{needsCosts, needsCosts, needsCosts}), books.TakeBoxes());
    EXPECT_TRUE(books.IsEmpty());
    MakeCostsOptional();
    VARK_SchliesseDB();
    EXPECT_EQ(1, Post(Booking("4000", 1, "1200", 1, "1")));
    EXPECT_EQ(2, +books.Postings().back().Teil.Kostenschablone);
    EXPECT_EQ(1, Post(Booking("4100", 1, "1200", 1, "1")));
    EXPECT_EQ(0, +books.Postings().back().Teil.Kostenschablone);
    EXPECT_EQ(0u, books.CostLines().size());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(PostingWithCosts, CostLinesOfAnEarlierYearStandBesideTheirPosting)
{
    books.AddKostenschablone(1, {"100,00"});
    Give("4000", ZuordnungGuv, 1, 0);
    EXPECT_EQ(1, Post(Booking("4000", 1, "1200", 1, "1", "", "", "150597")));
    ASSERT_EQ(1u, books.CostLines("1998").size());
    EXPECT_EQ("170515", TextOf(books.CostLines("1998")[0].Datum));
    EXPECT_EQ(0u, books.CostLines("1997").size());
}

TEST_F(SinglePosting, WithoutCostAccountingAKostenschabloneIsOnlyChecked)
{
    books.AddKostenschablone(1, {"100,00"});
    BuchungEingabe booking = Booking("1000", 1, "1200", 1, "1");
    booking.Kostenschablone = 1;
    EXPECT_EQ(1, Post(booking));
    EXPECT_EQ(0, +books.OnlyPosting().Teil.Kostenschablone);
    EXPECT_EQ(0u, books.CostLines().size());
    booking.Kostenschablone = 2;
    EXPECT_EQ(-43, Post(booking));
}

// ---- Arguments one by one ----

TEST_F(SinglePosting, DirektPostsLikeTheStructure)
{
    EXPECT_EQ(1, VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.05.1998", "R-1", "B\xFCromaterial", "4000", 1,
                                             "1200", 1, "116", "", ""));
    EXPECT_EQ(HexOf(PlainPosting(1)), HexOf(books.OnlyPosting()));
}

TEST_F(SinglePosting, DirektExTakesKostenschabloneAndZahlungsziel)
{
    EXPECT_EQ(-27, VARK_BuchungEinfuegenDirektEx(1, 1, 16, "150598", "", "", "4000", 1, "1200", 1, "1", "",
                                                 "", 0, 8));
    EXPECT_EQ(-43, VARK_BuchungEinfuegenDirektEx(1, 1, 16, "150598", "", "", "4000", 1, "1200", 1, "1", "",
                                                 "", 8, 6));
    EXPECT_EQ(1, VARK_BuchungEinfuegenDirektEx(1, 1, 16, "150598", "", "", "4000", 1, "1200", 1, "1", "", "",
                                               0, 6));
    EXPECT_EQ(6, +books.OnlyPosting().Zahlungsziel);
}

TEST_F(SinglePosting, DirektTakesDatesInAllForms)
{
    const struct {
        const char *Text;
        const char *Date; // null: refused. Today is 15 June 1998.
    } rows[] = {
        {"3.4.98", "030418"},   {"03.04.1998", "030418"},
        {"030498", "030418"},   {"0304", "030418"},
        {"3.4.", "030418"},     {"3", "030618"},
        {"  3.4.98", "030418"}, {"03.04.1998 und mehr", "030418"},
        {"03041998", nullptr},  {"31.2.98", nullptr},
        {"3.13.98", nullptr},   {"", nullptr},
        {"heute", nullptr},     {"3-4-98", nullptr},
        {nullptr, nullptr},     {"03.04.1998 und mehr!", nullptr},
    };
    for (const auto &row : rows) {
        const size_t before = books.Postings().size();
        const int32_t code =
            VARK_BuchungEinfuegenDirekt(1, 1, 16, row.Text, "", "", "4000", 1, "1200", 1, "1", "", "");
        const char *what = row.Text != nullptr ? row.Text : "null";
        EXPECT_EQ(row.Date != nullptr ? 1 : -11, code) << what;
        EXPECT_EQ(row.Date != nullptr ? Lines{} : Lines{badDate}, books.TakeBoxes()) << what;
        ASSERT_EQ(before + (row.Date != nullptr ? 1 : 0), books.Postings().size()) << what;
        if (row.Date != nullptr) {
            EXPECT_EQ(row.Date, TextOf(books.Postings().back().Buchungsdatum)) << what;
        }
    }
}

TEST_F(SinglePosting, DirektFindsABadDateBeforeAnUnknownMandant)
{
    EXPECT_EQ(-11, VARK_BuchungEinfuegenDirekt(1, 9, 99, "32.5.98", "", "", "", 0, "", 0, "", "", ""));
    EXPECT_EQ(-5, VARK_BuchungEinfuegenDirekt(1, 9, 99, "31.5.98", "", "", "", 0, "", 0, "", "", ""));
    EXPECT_EQ((Lines{badDate, "Der Mandant existiert nicht!"}), books.TakeBoxes());
}

TEST_F(SinglePosting, DirektReadsTheDateInTheCalendarWhateverFiscalYearCameBefore)
{
    books.AddLedger(2, {.FirstFiscalMonth = 7});
    ASSERT_EQ(1, VARK_BuchungEinfuegenDirekt(1, 2, 16, "15.5.98", "", "", "4000", 1, "1200", 1, "1", "", ""));
    EXPECT_EQ("151117", TextOf(books.Read<BatRecord>(2, TableBat)[0].Buchungsdatum));
    ASSERT_EQ(1, VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.5.98", "", "", "4000", 1, "1200", 1, "1", "", ""));
    EXPECT_EQ("150518", TextOf(books.OnlyPosting().Buchungsdatum));
    ASSERT_EQ(1,
              VARK_BuchungEinfuegenDirekt(1, 2, 16, "31.12.98", "", "", "4000", 1, "1200", 1, "1", "", ""));
    EXPECT_EQ("310618", TextOf(books.Read<BatRecord>(2, TableBat)[1].Buchungsdatum));
}

TEST_F(SinglePosting, DirektCutsLongTextsToTheirFields)
{
    EXPECT_EQ(1, VARK_BuchungEinfuegenDirekt(1, 1, 16, "150598", "123456789", std::string(50, 't').c_str(),
                                             "   84001", 1, "   12001", 1, "123456789,001", "16,000", ""));
    const BatRecord bat = books.OnlyPosting();
    EXPECT_EQ("12345678", TextOf(bat.Beleg));
    EXPECT_EQ(std::string(35, 't'), TextOf(bat.Teil.Text));
    EXPECT_EQ("   8400", TextOf(bat.Teil.Sollkonto));
    EXPECT_EQ("   1200", TextOf(bat.Teil.Habenkonto));
    EXPECT_EQ("123456789,00", TextOf(bat.Teil.Brutto));
    EXPECT_EQ("16,00", TextOf(bat.Teil.Steuersatz));
}

TEST_F(SinglePosting, DirektRefusesAnAmountThatIsTooLongEvenWhenCut)
{
    EXPECT_EQ(-12, VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", "", "", "4000", 1, "1200", 1,
                                               "1000000000,00", "", ""));
}

TEST_F(SinglePosting, DirektTakesNullTextsAsEmptyOnes)
{
    EXPECT_EQ(1, VARK_BuchungEinfuegenDirekt(1, 1, 16, "150598", nullptr, nullptr, "4000", 1, "1200", 1, "1",
                                             nullptr, nullptr));
    EXPECT_EQ("", TextOf(books.OnlyPosting().Beleg));
    EXPECT_EQ(-10, VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", nullptr, nullptr, nullptr, 1, nullptr, 1,
                                               nullptr, nullptr, nullptr));
    EXPECT_EQ(-12, VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", nullptr, nullptr, "4000", 1, "1200", 1,
                                               nullptr, nullptr, nullptr));
}

TEST_F(SinglePosting, AShortDateOnTheFirstCallOfAThreadMeansThisMonth)
{
    std::thread([] {
        EXPECT_EQ(1, VARK_BuchungEinfuegenDirekt(0, 1, 16, "3", "", "", "4000", 1, "1200", 1, "1", "", ""));
    }).join();
    EXPECT_EQ("030618", TextOf(books.OnlyPosting().Buchungsdatum));
}
