// The rate dialog 131, and the posting that asks for a missing rate.
#include "src/pickers/rate_entry.h"
#include "src/platform/window_api.h"
#include "tests/pickers/rate_books.h"
#include "tests/support/engine_faults.h"
#include "text/fixed_text.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

void RunDialogAlone(PickBooks &books)
{
    ThreadContext &context = Bound();
    RunRateDialog(context, nullptr);
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(0, context.OpenCounts[TableKurse]);
}

// A row as the list shows it; the Kurs stands right-justified in 28 characters for a length below 7.
std::string Row(const std::string &date, const std::string &average, const std::string &kurs,
                const std::string &units)
{
    const size_t width = (kurs.size() - 3) / 4 - kurs.size() + 28;
    return date + "\t" + average + "\t" + std::string(width - kurs.size(), ' ') + kurs + "\t" + units;
}

} // namespace

// ---- Opening ----

TEST(RateDialog, OpensWithTodayAndTheListOfCurrencies)
{
    PickBooks books(R"(
        dialog 131
        expect title Fremdwährungsverwaltung
        expect label 30119 &Währung :
        expect label 22994 &Datum :
        expect label 30125 &Kurs :
        expect label 30127 &Einheitenanzahl :
        expect label 30122 E&rfaßte Kurse :
        expect focus 30119
        expect text 30119
        expect rows 30119 3
        expect rows 30127 6
        expect rows 30122 0
        expect unchecked 30126
        expect text 22994 150618
        expect text 30125
        select 30119 0
        expect text 30119 FRF
        select 30119 1
        expect text 30119 ITL
        select 30119 2
        expect text 30119 USD
        select 30127 0
        expect text 30127 1
        select 30127 5
        expect text 30127 100000
        press 2
    )");
    AddRates(books);
    RunDialogAlone(books);
}

TEST(RateDialog, OffersThePendingRateOnce)
{
    PickBooks books(R"(
        expect focus 30125
        expect text 22994 15.03.1998
        expect text 30119 USD
        expect rows 30122 2
        expect row 30122 1
        expect text 30127 1
        press 2
        expect focus 30119
        expect text 22994 150618
        expect text 30119
        close
    )");
    AddRates(books);
    ThreadContext &context = Bound();
    text::CopyText(context.PendingRateDate, "150318");
    text::CopyText(context.PendingWaehrung, "USD");
    RunRateDialog(context, nullptr);
    EXPECT_STREQ("", context.PendingRateDate);
    EXPECT_STREQ("", context.PendingWaehrung);
    RunRateDialog(context, nullptr);
    EXPECT_EQ("", books.Trouble());
}

TEST(RateDialog, APendingDateWithoutACurrencyLeavesTheFocusOnTheCurrency)
{
    PickBooks books("expect focus 30119\nexpect text 22994 15.03.1998\nexpect text 30119\npress 2\n");
    AddRates(books);
    ThreadContext &context = Bound();
    text::CopyText(context.PendingRateDate, "150318");
    RunRateDialog(context, nullptr);
    EXPECT_STREQ("", context.PendingRateDate);
    EXPECT_EQ("", books.Trouble());
}

TEST(RateDialog, ShowsDatesByTheCalendarWhateverTheFiscalYear)
{
    // With a fiscal year from July 1997 month 9 is March 1998.
    PickBooks books("expect text 22994 15.03.1998\n"
                    "text 30119 USD\n"
                    "expect row 30122 " +
                    Row("10.09.98", "", "1,80", "1") +
                    "\n"
                    "press 2\n");
    AddRates(books, 7);
    ThreadContext &context = Bound();
    text::CopyText(context.PendingRateDate, "150917");
    text::CopyText(context.PendingWaehrung, "SEK");
    RunRateDialog(context, nullptr);
    EXPECT_EQ("", books.Trouble());
}

TEST(RateDialog, WithoutItsTableThereIsNoDialog)
{
    Books books;
    MandantOptions options;
    options.Without = {TableKurse};
    books.AddMandant(1, options);
    RunRateDialog(Bound(), nullptr);
    EXPECT_EQ(Lines{"box File " + books.TablePath(1, TableKurse) + " not found"}, books.TakeLog());
}

// ---- Choosing a currency ----

TEST(RateDialog, ShowsTheRatesOfACurrencyByDateWithTheLastSelected)
{
    PickBooks books("text 30119 FRF\n"
                    "expect rows 30122 3\n"
                    "expect row 30122 " +
                    Row("01.04.98", "", "29,81", "10") +
                    "\n"
                    "expect text 30127 10\n"
                    "select 30122 0\n"
                    "expect row 30122 " +
                    Row("01.06.97", "", "29,83", "100") +
                    "\n"
                    "select 30122 1\n"
                    "expect row 30122 " +
                    Row("05.01.98", "", "29,79", "100") +
                    "\n"
                    "select 30119 \"ITL\"\n"
                    "expect rows 30122 1\n"
                    "expect row 30122 " +
                    Row("28.02.98", "D", "1,01", "1000") +
                    "\n"
                    "expect text 30127 1000\n"
                    "key Down\n"
                    "expect text 30119 USD\n"
                    "expect rows 30122 2\n"
                    "text 30119\n"
                    "expect rows 30122 2\n"
                    "press 2\n");
    AddRates(books);
    RunDialogAlone(books);
}

TEST(RateDialog, ANewCurrencyEntersTheListOnceItIsTyped)
{
    PickBooks books(R"(
        expect focus 30119
        key S
        key E
        key K
        expect text 30119 SEK
        expect rows 30122 0
        expect rows 30119 4
        expect text 30127 100
        key X
        key Y
        expect text 30119 SEKX
        expect rows 30119 4
        text 30119 USD
        expect rows 30119 3
        text 30119 CHF
        expect rows 30119 4
        text 30119
        select 30119 "CHF"
        expect rows 30122 0
        expect rows 30119 4
        press 2
    )");
    AddRates(books);
    RunDialogAlone(books);
}

TEST(RateDialog, AFullListIsSaidAndFillingStops)
{
    PickBooks books("text 30119 FRF\n"
                    "box ok Die Listbox kann nicht vollständig gefüllt werden!\n"
                    "expect rows 30122 3\n"
                    "expect row 30122 " +
                    Row("01.04.98", "", "29,81", "10") +
                    "\n"
                    "expect text 30127 1000\n" // of the last rate read, which found no room
                    "press 2\n");
    AddRates(books);
    books.Insert(1, TableKurse, MakeKurs("FRF", "180402", "000000029,81", 3));
    books.Insert(1, TableKurse, MakeKurs("FRF", "180403", "000000029,81", 4));
    VarkUiLimitLists(3); // there are three currencies
    RunDialogAlone(books);
}

TEST(RateDialog, AFullListOfCurrenciesIsSaid)
{
    PickBooks books(R"(
        box ok Die Listbox kann nicht vollständig gefüllt werden!
        dialog 131
        expect rows 30119 2
        text 30119 USD
        expect rows 30122 2
        press 2
    )");
    AddRates(books);
    VarkUiLimitLists(2);
    RunDialogAlone(books);
}

// ---- A new rate ----

TEST(RateDialog, StoresARateOfADay)
{
    PickBooks books(
        "text 30119 USD\n"
        "text 22994 15.3.98\n"
        "text 30125 1,8123\n"
        "press 1\n"
        "box ok Bitte geben Sie Beträge im folgenden Format ein : <bis zu 9 Vorkommastellen>,<bis zu 2 "
        "Nachkommastellen>\n"
        "expect focus 30125\n"
        "text 30125 1,81\n"
        "key Enter\n"
        "expect focus 30119\n"
        "expect rows 30122 3\n"
        "select 30122 2\n"
        "expect row 30122 " +
        Row("15.03.98", "", "1,81", "1") +
        "\n"
        "press 2\n");
    AddRates(books);
    RunDialogAlone(books);
    EXPECT_EQ("USD 180315 000000001,81 0 1", RatesOf(books).back());
    KurseRecord expected = MakeKurs("USD", "180315", "000000001,81", 1);
    EXPECT_EQ(HexOf(expected), HexOf(books.Read<KurseRecord>(1, TableKurse).back()));
}

TEST(RateDialog, StoresAnAverageRateWithItsUnits)
{
    PickBooks books(R"(
        text 30119 JPY
        expect text 30127 100
        check 30126
        text 22994 31.05.1998
        text 30125 1,29
        press 1
        expect rows 30122 1
        select 30127 "100000"
        text 22994 01.04.98
        text 30125 1.289,5
        press 1
        expect rows 30122 2
        text 30127 10
        uncheck 30126
        text 22994 01.03.1998
        text 30125 0,1
        press 1
        expect rows 30122 3
        expect rows 30119 4
        text 30119 USD
        expect rows 30119 4
        press 2
    )");
    AddRates(books);
    RunDialogAlone(books);
    const std::vector<std::string> rates = RatesOf(books);
    ASSERT_EQ(9u, rates.size());
    EXPECT_EQ("JPY 180301 000000000,10 0 10", rates[4]);
    EXPECT_EQ("JPY 180401 000001289,50 1 5", rates[5]);
    EXPECT_EQ("JPY 180531 000000001,29 1 2", rates[6]);
}

TEST(RateDialog, ChecksItsFieldsInOrder)
{
    PickBooks books(R"(
        text 22994
        press 1
        box ok Wählen Sie bitte eine Währung aus.
        expect focus 30119
        text 30119 USD
        press 1
        box ok Zur weiteren Bearbeitung müssen Sie in dem Feld, in welches die Einfügemarke
        expect focus 22994
        text 22994 32.01.98
        press 1
        box ok Unzulässige Tagesangabe!
        expect focus 22994
        text 22994 01.13.98
        press 1
        box ok Unzulässige Monatsangabe!
        text 22994 01.03.00
        text 30127
        press 1
        box ok Unzulässige Jahresangabe!
        text 22994 1.3.98
        press 1
        box ok Zur weiteren Bearbeitung
        expect focus 30127
        text 30127 0
        press 1
        box ok Zur weiteren Bearbeitung
        text 30127 50000
        press 1
        box ok Zur weiteren Bearbeitung
        text 30127 1
        press 1
        box ok Zu dem angegebenen Datum wurde bereits ein Kurs erfaßt.
        text 22994 1.3.2005
        press 1
        box ok Zur weiteren Bearbeitung müssen Sie in dem Feld
        expect focus 30125
        text 30125 1,2,3
        press 1
        box ok Bitte geben Sie Beträge
        expect focus 30125
        press 2
    )");
    AddRates(books);
    RunDialogAlone(books);
    EXPECT_EQ(6u, books.Count(1, TableKurse));
}

TEST(RateDialog, OneRateADayAndOneAverageAMonth)
{
    PickBooks books(R"(
        text 30119 USD
        text 30125 1,80
        # a day rate where there is one
        text 22994 10.03.98
        press 1
        box ok Zu dem angegebenen Datum wurde bereits ein Kurs erfaßt.
        # an average on a day that has its rate
        check 30126
        press 1
        box ok Zu dem angegebenen Datum wurde bereits ein Kurs erfaßt.
        # an average in a month whose first rate is one of a day
        text 22994 20.03.98
        press 1
        box ok Zu dem angegebenen Datum wurde bereits ein Kurs erfaßt.
        # an average where there is one
        text 30119 ITL
        text 22994 01.02.98
        press 1
        box ok Sie haben in diesem Monat bereits einen Durchschnittskurs erfaßt.
        text 22994 28.02.98
        press 1
        box ok Sie haben in diesem Monat bereits einen Durchschnittskurs erfaßt.
        # a day rate in a month with an average
        uncheck 30126
        text 22994 03.02.98
        press 1
        box ok Zu dem angegebenen Datum wurde bereits ein Kurs erfaßt.
        # other months and other currencies do not count
        text 22994 01.03.98
        press 1
        expect rows 30122 2
        press 2
    )");
    AddRates(books);
    RunDialogAlone(books);
    EXPECT_EQ(7u, books.Count(1, TableKurse));
}

TEST(RateDialog, OnlyTheFirstRateOfTheMonthIsLookedAt)
{
    // 5 March a day rate, 20 March an average that came from elsewhere: a day rate of the 20th passes the
    // checks, and the engine refuses the second rate of one day.
    PickBooks books(R"(
        text 30119 SEK
        text 22994 20.03.98
        text 30125 22,10
        press 1
        box ok Duplicate key value
        dialog 131
        expect rows 30122 2
        text 22994 21.03.98
        press 1
        expect rows 30122 3
        press 2
    )");
    AddRates(books);
    books.Insert(1, TableKurse, MakeKurs("SEK", "180305", "000000022,00", 2));
    books.Insert(1, TableKurse, MakeKurs("SEK", "180320", "000000022,05", 2, true));
    RunDialogAlone(books);
    EXPECT_EQ(9u, books.Count(1, TableKurse));
}

// ---- Deletion ----

TEST(RateDialog, DeletesTheSelectedRate)
{
    PickBooks books("press 30121\n"
                    "box ok Wählen Sie bitte einen Kurs aus.\n"
                    "expect focus 30122\n"
                    "text 30119 FRF\n"
                    "select 30122 1\n"
                    "press 30121\n"
                    "expect rows 30122 2\n"
                    "expect row 30122 " +
                    Row("01.06.97", "", "29,83", "100") +
                    "\n"
                    "press 30121\n"
                    "expect row 30122 " +
                    Row("01.04.98", "", "29,81", "10") +
                    "\n"
                    "press 30121\n"
                    "expect rows 30122 0\n"
                    "press 30121\n"
                    "box ok Wählen Sie bitte einen Kurs aus.\n"
                    "press 2\n");
    AddRates(books);
    RunDialogAlone(books);
    EXPECT_EQ(
        (Lines{"ITL 180228 000000001,01 1 3", "USD 180301 000000001,79 0 1", "USD 180310 000000001,80 0 1"}),
        RatesOf(books));
}

TEST(RateDialog, CannotDeleteRatesOfTheYear2000WhoseRowsShowNoYearThatCanBeRead)
{
    PickBooks books("text 30119 USD\n"
                    "expect row 30122 " +
                    Row("29.02.00", "", "2,05", "1") +
                    "\n"
                    "press 30121\n"
                    "box ok Der Kurs kann nicht gelöscht werden.\n"
                    "expect rows 30122 3\n"
                    "press 2\n");
    AddRates(books);
    books.Insert(1, TableKurse, MakeKurs("USD", "200229", "000000002,05", 1));
    RunDialogAlone(books);
    EXPECT_EQ(7u, books.Count(1, TableKurse));
}

TEST(RateDialog, ARateThatCannotBeDeletedIsSaid)
{
    PickBooks books(R"(
        text 30119 FRF
        select 30122 0
        press 30121
        box ok I/O Error
        box ok Der Kurs kann nicht gelöscht werden.
        expect rows 30122 3
        expect row 30122 0
        press 2
    )");
    AddRates(books);
    FailEngineOperation(4, 1, 2);
    RunDialogAlone(books);
    StopEngineFaults();
    EXPECT_EQ(6u, books.Count(1, TableKurse));
}

TEST(RateDialog, TheListKeepsItsCurrencyWhileTheFieldIsEmpty)
{
    PickBooks books(R"(
        text 30119 ITL
        text 30119
        press 30121
        expect rows 30122 0
        press 2
    )");
    AddRates(books);
    RunDialogAlone(books);
    EXPECT_EQ(5u, books.Count(1, TableKurse));
}

TEST(RateDialog, KeysReachEveryControl)
{
    PickBooks books(R"(
        expect focus 30119
        key Tab
        expect focus 30126
        key Tab
        expect focus 22994
        key Tab
        expect focus 30125
        key Tab
        expect focus 30127
        key Tab
        expect focus 30122
        key Tab
        expect focus 1
        key Tab
        expect focus 30121
        key Tab
        expect focus 2
        key Alt+w
        expect focus 30119
        key Alt+s
        expect checked 30126
        key Alt+d
        expect focus 22994
        key Alt+k
        expect focus 30125
        key Alt+e
        expect focus 30127
        key Alt+r
        expect focus 30122
        key Alt+l
        box ok Wählen Sie bitte einen Kurs aus.
        key Alt+n
        box ok Wählen Sie bitte eine Währung aus.
        key Alt+b
    )");
    AddRates(books);
    RunDialogAlone(books);
}

// ---- The posting that needs a rate ----

TEST(MissingRate, IsAskedForAndUsed)
{
    PickBooks books(std::string("box yes ") + rateQuestion + R"(
        dialog 131
        expect focus 30125
        expect text 22994 15.03.1998
        expect text 30119 SEK
        expect text 30127 100
        text 30125 22,07
        key Enter
        press 2
    )");
    AddForeignDebitor(books);
    EXPECT_EQ(1, PostForeign(0)) << "a question is asked also of a silent caller's user";
    EXPECT_EQ("", books.Trouble());
    const std::vector<BatRecord> postings = books.Read<BatRecord>(1, TableBat);
    ASSERT_EQ(1u, postings.size());
    EXPECT_EQ("SEK", TextOf(postings[0].Waehrung));
    EXPECT_EQ("000000025,60", TextOf(postings[0].Waehrungsbetrag)); // 116 x 22,07 / 100 = 25,6012
    EXPECT_EQ("000000116,00", TextOf(postings[0].Teil.Brutto));
    EXPECT_EQ("000000025,60", TextOf(postings[0].Teil.Netto));
}

TEST(MissingRate, IsAskedForAsLongAsThereIsNone)
{
    PickBooks books(R"(
        box yes Wechselkurs
        dialog 131
        expect text 30119 SEK
        press 2
        box yes Wechselkurs
        expect text 30119 SEK
        text 22994 16.03.98
        text 30125 22,07
        press 1
        press 2
        box no Wechselkurs
    )");
    AddForeignDebitor(books);
    EXPECT_EQ(0, PostForeign(1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(0u, books.Count(1, TableBat));
    EXPECT_EQ(7u, books.Count(1, TableKurse)) << "what was entered meanwhile stays";
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableKurse]);
}

TEST(MissingRate, WithNobodyThereThePostingIsDeclined)
{
    Books books;
    AddForeignDebitor(books);
    EXPECT_EQ(0, PostForeign(1));
    EXPECT_EQ(Lines{std::string("box ") + rateQuestion}, books.TakeLog());
    EXPECT_EQ(0u, books.Count(1, TableBat));
}

TEST(MissingRate, NobodyIsAskedWhereTheBooksHaveOne)
{
    Books books;
    AddForeignDebitor(books);
    books.Insert(1, TableKurse, MakeKurs("SEK", "180302", "000000022,00", 2, true));
    EXPECT_EQ(1, PostForeign(1));
    EXPECT_EQ(Lines{}, books.TakeLog());
    EXPECT_EQ("000000025,52", TextOf(books.Read<BatRecord>(1, TableBat).at(0).Waehrungsbetrag));
}

TEST(MissingRate, AnAmountThatDoesNotFitIsRefused)
{
    Books books;
    AddForeignDebitor(books);
    books.Insert(1, TableKurse, MakeKurs("SEK", "180315", "999999999,00", 1));
    EXPECT_EQ(-2, PostForeign(1));
    EXPECT_EQ(Lines{"box Der Betrag kann nicht umgerechnet werden!"}, books.TakeLog());
    EXPECT_EQ(0u, books.Count(1, TableBat));
}
