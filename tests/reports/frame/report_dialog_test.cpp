// The parameter dialog of a report, played by scripts on the dialog of the Summen- und Saldenliste and on one
// that has every control.
#include "tests/reports/frame/played_dialog.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

TEST(ReportDialogs, ClearedBlockStartsFromToday)
{
    Played run(
        "dialog 111\nexpect text 22991 15.06.1998\nexpect checked 20050\nexpect checked 20100\npress 1\n",
        perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("150618", run.Choice.Period.BisDatum);
    EXPECT_STREQ("010118", run.Choice.Period.VonDatum) << "the first of the business year";
    EXPECT_STREQ("1998", run.Choice.Period.JahrText);
    EXPECT_EQ(0, run.Choice.Period.Code);
    EXPECT_EQ(1, run.Choice.Range.KontoArt);
}

TEST(ReportDialogs, DateOfAPerDialogTakesItsYearFromTheDate)
{
    Played run("dialog 111\ntext 22991 31.3.97\npress 1\n", perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("310317", run.Choice.Period.BisDatum);
    EXPECT_STREQ("010117", run.Choice.Period.VonDatum);
    EXPECT_STREQ("1997", run.Choice.Period.JahrText);
}

TEST(ReportDialogs, EachBadDateIsToldAndKeepsTheDialogOpen)
{
    Played run("dialog 111\n"
               "text 22991 \npress 1\nbox ok eine Eingabe vornehmen\n"
               "text 22991 32.1.98\npress 1\nbox ok Unzulässige Tagesangabe!\n"
               "text 22991 1.13.98\npress 1\nbox ok Unzulässige Monatsangabe!\n"
               "text 22991 1.1.1970\npress 1\nbox ok Unzulässige Jahresangabe!\n"
               "text 22991 1.1.96\npress 1\nbox ok innerhalb der bebuchbaren Geschäftsjahre\n"
               "text 22991 1.1.98\npress 1\n",
               perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("010118", run.Choice.Period.BisDatum);
}

TEST(ReportDialogs, HaveANameForEachField)
{
    Played per("dialog 111\nexpect label 22991 &per:\nexpect label 20054 vo&n:\nexpect label 20055 b&is:\n"
               "press 1\n",
               perDialog);
    EXPECT_EQ("", per.Refusals());
}

TEST(ReportDialogs, CancelChangesNothing)
{
    Played run("dialog 111\ntext 22991 31.3.97\npress 2\n", perDialog);
    EXPECT_FALSE(run.Accepted);
    EXPECT_EQ(-1, run.Choice.Period.Code);
}

TEST(ReportDialogs, NobodyBeforeTheScreenPressesOkThroughTheSameChecks)
{
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamDaten;
    std::memcpy(params.VonDatum, "010198", 7);
    std::memcpy(params.BisDatum, "310398", 7);
    Played run("", perDialog, params);
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("310318", run.Choice.Period.BisDatum);
}

TEST(ReportDialogs, MonthButtonFollowsTheFiscalYear)
{
    // The first fiscal month is April.
    Played run("dialog 114\nexpect checked 20004\npress 1\n", fullDialog, PeriodCode(1, 18), 4);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(1, run.Choice.Period.VonPeriode);
    EXPECT_STREQ("010118", run.Choice.Period.VonDatum);
}

TEST(ReportDialogs, ChosenMonthBecomesItsFiscalMonth)
{
    Played run("dialog 114\ncheck 20001\nexpect checked 20001\nexpect unchecked 20004\n"
               "text 20000 1998\npress 1\n",
               fullDialog, PeriodCode(1, 17), 4);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_EQ(10, run.Choice.Period.Code); // January in a year from April
}

TEST(ReportDialogs, DatesAreEnabledForFreeDatesAndTheYearOtherwise)
{
    Played run("dialog 114\nexpect disabled 22990\nexpect disabled 22991\nexpect enabled 20000\n"
               "check 20018\nexpect enabled 22990\nexpect enabled 22991\nexpect disabled 20000\n"
               "check 20017\nexpect disabled 22990\nexpect enabled 20000\npress 1\n",
               fullDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(17, run.Choice.Period.Code);
    EXPECT_STREQ("311218", run.Choice.Period.BisDatum);
}

TEST(ReportDialogs, PairOfDatesIsChecked)
{
    Played run("dialog 114\ncheck 20018\n"
               "text 22990 1.6.97\ntext 22991 1.2.98\npress 1\nbox ok im gleichen Geschäftsjahr\n"
               "text 22990 1.6.98\npress 1\nbox ok darf nicht hinter dem Bis-Datum\n"
               "text 22990 1.1.98\npress 1\n",
               fullDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("010218", run.Choice.Period.BisDatum);
}

TEST(ReportDialogs, YearFieldIsChecked)
{
    Played run("dialog 114\n"
               "text 20000 abc\npress 1\nbox ok Die Jahresangabe ist unzulässig!\n"
               "text 20000 1979\npress 1\nbox ok Die Jahresangabe ist unzulässig!\n"
               "text 20000 1996\npress 1\nbox ok innerhalb der bebuchbaren Geschäftsjahre\n"
               "text 20000 1997\npress 1\n",
               fullDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("1997", run.Choice.Period.JahrText);
}

TEST(ReportDialogs, ArchiveYearPinsTheDialog)
{
    ReportParams params = PeriodCode(17, 18);
    params.ParamFlags |= ParamArchivJahr;
    params.ArchivJahr = 1992;
    Played run("dialog 114\nexpect text 20000 1992\nexpect disabled 20000\ncheck 20018\n"
               "text 22990 1.1.98\npress 1\nbox ok innerhalb des Archivjahres\n"
               "text 22990 1.1.92\ntext 22991 2.1.92\npress 1\n",
               fullDialog, params);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("1992", run.Choice.Period.JahrText);
}

TEST(ReportDialogs, SetzeJahrShowsTheCalendarYearOfTheMonth)
{
    Played run("dialog 114\nexpect text 20000 1997\ncheck 20001\nexpect text 20000 1998\ncheck 20004\n"
               "expect text 20000 1997\npress 2\n",
               fullDialog, PeriodCode(1, 17), 4, true);
    EXPECT_EQ("", run.Refusals());
}

TEST(ReportDialogs, CalendarQuarterNeedsOneBookableDay)
{
    Played run("dialog 122\nexpect checked 20013\npress 1\n", taxDialog, PeriodCode(13, 18), 4);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_EQ(10, run.Choice.Period.VonPeriode);
    EXPECT_EQ(17, run.Choice.Period.Jahr);
}

TEST(ReportDialogs, BeginningOfAKuerzelBecomesItsNumber)
{
    Played run("dialog 111\nfocus 20054\ntext 20054 K12\nfocus 20055\nexpect text 20054 1200\npress 1\n",
               perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("1200", run.Choice.Range.Sachkonto.Von);
}

TEST(ReportDialogs, UnknownLimitStaysAsTyped)
{
    Played run("dialog 111\ntext 20054 xyz\ntext 20055 5555\npress 1\n", perDialog);
    EXPECT_STREQ("xyz", run.Choice.Range.Sachkonto.Von);
    EXPECT_STREQ("5555", run.Choice.Range.Sachkonto.Bis);
}

TEST(ReportDialogs, EachKindKeepsItsOwnLimits)
{
    Played run("dialog 111\ntext 20054 1000\ncheck 20052\nexpect text 20054 \ntext 20054 70000\ncheck 20050\n"
               "expect text 20054 1000\npress 1\n",
               perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(1, run.Choice.Range.KontoArt);
    EXPECT_STREQ("1000", run.Choice.Range.Sachkonto.Von);
    EXPECT_STREQ("70000", run.Choice.Range.Debitor.Von);
}

TEST(ReportDialogs, KindWithoutAButtonGivesWayToTheNext)
{
    constexpr ReportDialog costs = {
        .Id = 118, .Title = "Kostenstellenliste", .HelpContext = 10003, .Kontoarten = KontoartKostenstelle};
    ReportParams params{};
    params.ParamFlags = ParamKontoArt;
    params.KontoArt = 1;
    Played run("dialog 118\nexpect hidden 20053\npress 1\n", costs, params);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(8, run.Choice.Range.KontoArt);
}

TEST(ReportDialogs, SingleAccountTakesTheKindOfItsNumber)
{
    Played run(
        "dialog 114\ncheck 20056\nexpect hidden 20055\nexpect disabled 20050\ntext 20054 70000\npress 1\n",
        fullDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_EQ(2, run.Choice.Range.KontoArt) << "Kreditoren are looked through before Debitoren";
    EXPECT_EQ(1u, run.Choice.Range.Einzeln);
}

TEST(ReportDialogs, SingleAccountThatDoesNotExistIsTold)
{
    Played run("dialog 114\ncheck 20056\ntext 20054 9999\npress 1\nbox ok kein Konto mit dieser "
               "Kontonummer\npress 2\n",
               fullDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_FALSE(run.Accepted);
}

TEST(ReportDialogs, PrinterIsChosen)
{
    Played run("dialog 111\ncheck 20101\nexpect unchecked 20100\npress 1\n", perDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(1, run.Choice.Ausgabe);
}

TEST(ReportDialogs, OutputOutsideItsRangeIsTheScreen)
{
    ReportParams params{};
    params.ParamFlags = ParamAusgabe;
    params.Ausgabe = 7;
    Played run("dialog 111\nexpect checked 20100\npress 1\n", perDialog, params);
    EXPECT_EQ(0, run.Choice.Ausgabe);
}
