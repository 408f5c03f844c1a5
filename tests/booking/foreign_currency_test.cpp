#include "include/vark40.h"
#include "tests/booking/ledger.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

const std::string noRate =
    "Zu dem angegebenen Datum wurde noch kein Wechselkurs erfaßt. Wollen Sie diesen gleich "
    "erfassen?";

BuchungEingabe InDollars(const char *haben, const char *brutto, const char *datum = "150598")
{
    BuchungEingabe booking = PlainBooking();
    SetText(booking.Datum, datum);
    SetText(booking.Sollkonto, "10003");
    booking.SollArt = 4;
    SetText(booking.Habenkonto, haben);
    SetText(booking.Brutto, brutto);
    return booking;
}

int32_t Post(const BuchungEingabe &booking, int32_t showMessages = 1)
{
    return VARK_BuchungEinfuegen(&booking, showMessages);
}

struct ForeignCurrency : ::testing::Test {
    void Rate(const char *sortDate, const char *kurs, int16_t einheit = 1, bool durchschnitt = false)
    {
        books.Insert(1, TableKurse, MakeKurs("USD", sortDate, kurs, einheit, durchschnitt));
    }

    Ledger books;
};

} // namespace

TEST_F(ForeignCurrency, TheAmountIsConvertedAtTheRateOfTheDay)
{
    Rate("180515", "000000001,75");
    ASSERT_EQ(1, Post(InDollars("1200", "100")));
    BatRecord expected{};
    expected.Stapel = 16;
    expected.Buchungsnummer = 1;
    SetText(expected.Buchungsdatum, "150518");
    SetText(expected.ZweitesDatum, "150518");
    SetText(expected.Beleg, "R-1");
    expected.Anzahl = 1;
    SetText(expected.Teil.Sollkonto, "  10003");
    SetText(expected.Teil.Habenkonto, "   1200");
    expected.Teil.SollArt = BuchungDebitor;
    expected.Teil.HabenArt = BuchungSachkonto;
    SetText(expected.Teil.Brutto, "000000100,00");
    SetText(expected.Teil.Netto, "000000175,00");
    SetText(expected.Teil.Text, "Büromaterial");
    SetText(expected.Waehrung, "USD");
    SetText(expected.Waehrungsbetrag, "000000175,00");
    EXPECT_EQ(HexOf(expected), HexOf(books.OnlyPosting()));
    EXPECT_EQ(Lines{}, books.TakeLog());
}

TEST_F(ForeignCurrency, TaxIsTakenFromTheUnconvertedAmount)
{
    Rate("180515", "000000001,75");
    ASSERT_EQ(1, Post(InDollars("8400", "116")));
    EXPECT_EQ("000000100,00", TextOf(books.Postings().back().Teil.Netto));
    EXPECT_EQ("000000203,00", TextOf(books.Postings().back().Waehrungsbetrag));
    ASSERT_EQ(1, Post(InDollars("8100", "116")));
    EXPECT_EQ("000000203,00", TextOf(books.Postings().back().Teil.Netto))
        << "rate zero leaves the converted one";
    BuchungEingabe booking = InDollars("8400", "116");
    SetText(booking.Steuerbetrag, "10");
    ASSERT_EQ(1, Post(booking));
    EXPECT_EQ("000000106,00", TextOf(books.Postings().back().Teil.Netto));
}

TEST_F(ForeignCurrency, AKursMayStandForManyUnits)
{
    Rate("180515", "000000178,26", 2); // for 100
    ASSERT_EQ(1, Post(InDollars("1200", "-10")));
    EXPECT_EQ("000000017-83", TextOf(books.OnlyPosting().Waehrungsbetrag));
}

TEST_F(ForeignCurrency, TheAverageOfTheMonthServesDaysWithoutARate)
{
    Rate("180510", "000000009,00");
    Rate("180520", "000000002,00", 1, true);
    ASSERT_EQ(1, Post(InDollars("1200", "1", "150598")));
    EXPECT_EQ("000000002,00", TextOf(books.Postings().back().Waehrungsbetrag));
    ASSERT_EQ(1, Post(InDollars("1200", "1", "100598")));
    EXPECT_EQ("000000009,00", TextOf(books.Postings().back().Waehrungsbetrag));
}

TEST_F(ForeignCurrency, WithoutARateTheUserIsAskedWhateverTheCallerWished)
{
    Rate("180510", "000000009,00");
    EXPECT_EQ(0, Post(InDollars("1200", "1"), 0));
    EXPECT_EQ(Lines{noRate}, books.TakeBoxes());
    EXPECT_TRUE(books.IsEmpty());
}

TEST(ForeignCurrencyAsked, AYesOpensTheDialogInWhichTheRateIsEntered)
{
    Ledger books({}, "box yes Wechselkurs\ndialog 131\ntext 30125 1,75\ntext 30127 1\npress 1\npress 2\n");
    EXPECT_EQ(1, Post(InDollars("1200", "100")));
    EXPECT_EQ("000000175,00", TextOf(books.OnlyPosting().Waehrungsbetrag));
    EXPECT_EQ(1u, books.Count(1, TableKurse));
}

TEST_F(ForeignCurrency, AnAmountThatDoesNotFitIsRefused)
{
    Rate("180515", "000000002,00");
    EXPECT_EQ(-2, Post(InDollars("1200", "500000000")));
    EXPECT_EQ(Lines{"Der Betrag kann nicht umgerechnet werden!"}, books.TakeBoxes());
    EXPECT_EQ(-2, Post(InDollars("1200", "500000000"), 0));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(1, Post(InDollars("1200", "499999999,99")));
    EXPECT_EQ("999999999,98", TextOf(books.OnlyPosting().Waehrungsbetrag));
}

TEST_F(ForeignCurrency, TheFirstPersonalAccountsCurrencyCounts)
{
    BuchungEingabe booking = InDollars("70000", "1");
    booking.HabenArt = 2;
    EXPECT_EQ(0, Post(booking));
    EXPECT_EQ(Lines{noRate}, books.TakeBoxes());
    std::swap(booking.Sollkonto, booking.Habenkonto);
    std::swap(booking.SollArt, booking.HabenArt);
    EXPECT_EQ(1, Post(booking)) << "the one on Haben is not looked at";
    EXPECT_EQ("", TextOf(books.OnlyPosting().Waehrung));
}

TEST_F(ForeignCurrency, AKreditorOnHabenIsConvertedToo)
{
    Rate("180515", "000000001,75");
    PersonalRecord kreditor = MakePersonal("70003");
    SetText(kreditor.Waehrung, "USD");
    books.Insert(1, TableKred, kreditor);
    BuchungEingabe booking = PlainBooking();
    SetText(booking.Habenkonto, "70003");
    booking.HabenArt = 2;
    ASSERT_EQ(1, Post(booking));
    EXPECT_EQ("USD", TextOf(books.OnlyPosting().Waehrung));
    EXPECT_EQ("000000203,00", TextOf(books.OnlyPosting().Waehrungsbetrag));
}

TEST_F(ForeignCurrency, RatesAreThoseOfTheMandantsYear)
{
    Rate("170515", "000000003,00");
    ASSERT_EQ(1, Post(InDollars("1200", "1", "150597")));
    EXPECT_EQ("000000003,00", TextOf(books.OnlyPosting().Waehrungsbetrag));
}

TEST_F(ForeignCurrency, CostsAreSpreadFromTheConvertedNetAmount)
{
    books.ChangeMandant(1, [](FistaRecord &record) { record.Kostenrechnung = 1; });
    books.AddKostenschablone(1, {"050,00", "050,00"});
    Rate("180515", "000000002,00");
    BuchungEingabe booking = InDollars("4000", "10");
    booking.Kostenschablone = 1;
    ASSERT_EQ(1, Post(booking));
    ASSERT_EQ(2u, books.CostLines().size());
    EXPECT_EQ("000000010,00", TextOf(books.CostLines()[0].Betrag));
}
