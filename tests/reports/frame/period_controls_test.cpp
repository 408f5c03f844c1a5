// The period group of a report's dialog: what it starts with, in fiscal years from every month, with the year
// of the calendar shown, in archives; what it takes and refuses.
#include "src/reports/frame/period_controls.h"

#include "tests/reports/frame/played_dialog.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

// The groups of other reports.
constexpr ReportDialog monthsDialog = {
    .Id = 117, .Title = "Kostensalden", .HelpContext = 10004, .PeriodOptions = 0x0E};
constexpr ReportDialog yearDialog = {
    .Id = 112, .Title = "Hauptabschlussübersicht", .HelpContext = 3042, .PeriodOptions = 0x08};
constexpr ReportDialog bilanzDialog = {
    .Id = 126, .Title = "Bilanz", .HelpContext = 3044, .PeriodOptions = 0x0B};
constexpr ReportDialog quartersDialog = {
    .Id = 900, .Title = "Quartale", .HelpContext = 0, .PeriodOptions = 0x0C};

ReportParams Archive(int32_t code, int32_t year)
{
    ReportParams params = PeriodCode(code, year - 1980);
    params.ParamFlags |= ParamArchivJahr;
    params.ArchivJahr = year;
    return params;
}

ReportParams Dates(int32_t code, const char *von, const char *bis)
{
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamDaten;
    params.Zeitraum = code;
    std::memcpy(params.VonDatum, von, 7);
    std::memcpy(params.BisDatum, bis, 7);
    return params;
}

std::string Id(int number) { return std::to_string(number); }

// Runs a script to OK and tells what did not fit.
void Plays(const std::string &script, const ReportDialog &dialog, const ReportParams &params,
           int16_t firstMonth = 1, bool setzeJahr = false)
{
    Played run(script, dialog, params, firstMonth, setzeJahr);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
}

struct FirstMonths : testing::TestWithParam<int16_t> {
    // 1 for January in a year from January; a fiscal month of the calendar month.
    static int FiscalMonth(int calendarMonth)
    {
        return calendarMonth >= GetParam() ? calendarMonth - GetParam() + 1 : calendarMonth - GetParam() + 13;
    }
};

} // namespace

// ---- Fiscal years from each month ----

TEST_P(FirstMonths, ClearedBlockStartsWithTheMonthOfToday)
{
    // 15 June 1998.
    Played run("dialog 114\nexpect checked 20006\npress 1\n", fullDialog, {}, GetParam());
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_EQ(FiscalMonth(6), run.Choice.Period.Code);
    ReportParams back{};
    GatherReportParams(*run.Context, back, &run.Choice.Period, nullptr, nullptr);
    EXPECT_STREQ("010698", back.VonDatum);
    EXPECT_STREQ("300698", back.BisDatum);
}

TEST_P(FirstMonths, EachMonthButtonIsItsCalendarMonth)
{
    // The fiscal year 1997. Its months from January on show the next calendar year.
    std::string script = "dialog 114\n";
    for (int month = 12; month >= 1; --month) {
        const int year = month >= GetParam() ? 1997 : 1998;
        script += "check " + Id(20000 + month) + "\nexpect checked " + Id(20000 + month) +
                  "\nexpect text 20000 " + Id(year) + "\n";
    }
    Played run(script + "press 1\n", fullDialog, PeriodCode(1, 17), GetParam(), true);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_EQ(FiscalMonth(1), run.Choice.Period.Code);
    EXPECT_EQ(17, run.Choice.Period.Jahr);
    ReportParams back{};
    GatherReportParams(*run.Context, back, &run.Choice.Period, nullptr, nullptr);
    EXPECT_STREQ(GetParam() == 1 ? "010197" : "010198", back.VonDatum);
    EXPECT_STREQ(GetParam() == 1 ? "310197" : "310198", back.BisDatum);
}

TEST_P(FirstMonths, EachFiscalMonthShowsItsButtonAndItsYear)
{
    for (const int code : {1, 12}) {
        if (code == 12 && GetParam() % 2 == 1) continue; // one process shows one of them
        if (code == 1 && GetParam() % 2 == 0) continue;
        const int month = (GetParam() + code - 2) % 12 + 1;
        const int year = GetParam() + code > 13 ? 1998 : 1997;
        Plays("dialog 114\nexpect checked " + Id(20000 + month) + "\nexpect text 20000 " + Id(year) +
                  "\npress 1\n",
              fullDialog, PeriodCode(code, 17), GetParam());
    }
}

TEST_P(FirstMonths, DatesGoThereAndBack)
{
    Played run("dialog 111\nexpect text 22991 28.02.1998\npress 1\n", perDialog, Dates(0, "280298", "280298"),
               GetParam());
    EXPECT_EQ("", run.Refusals());
    ReportParams back{};
    GatherReportParams(*run.Context, back, &run.Choice.Period, nullptr, nullptr);
    EXPECT_STREQ("280298", back.BisDatum);
    EXPECT_EQ(FiscalMonth(2),
              (run.Choice.Period.BisDatum[2] - '0') * 10 + run.Choice.Period.BisDatum[3] - '0');
    EXPECT_STREQ(GetParam() <= 2 ? "1998" : "1997", run.Choice.Period.JahrText);
}

INSTANTIATE_TEST_SUITE_P(OfTheYear, FirstMonths, testing::Range(int16_t{1}, int16_t{13}));

// ---- What a dialog starts with that does not offer what was chosen ----

TEST(PeriodControls, FreeDateBecomesItsMonthWhereNoneIsOffered)
{
    Played run("dialog 117\nexpect checked 20003\npress 1\n", monthsDialog, Dates(0, "010198", "150398"));
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(3, run.Choice.Period.Code);
    EXPECT_STREQ("310318", run.Choice.Period.BisDatum);
}

TEST(PeriodControls, MonthBecomesItsQuarterWhereNoneIsOffered)
{
    Played run("dialog 900\nexpect checked 20015\npress 1\n", quartersDialog, PeriodCode(8, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(15, run.Choice.Period.Code);
}

TEST(PeriodControls, NothingChosenIsTheFirstQuarterWhereNoMonthIsOffered)
{
    // Today lies in the second; the quarter is worked out from what was chosen, which was nothing.
    Played run("dialog 900\nexpect checked 20013\npress 1\n", quartersDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(13, run.Choice.Period.Code);
}

TEST(PeriodControls, QuarterBecomesTheYearWhereNoneIsOffered)
{
    Played run("dialog 126\nexpect checked 20017\npress 1\n", bilanzDialog, PeriodCode(14, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(17, run.Choice.Period.Code);
}

TEST(PeriodControls, TheYearAloneIsAFieldWithoutAButton)
{
    Played run("dialog 112\nexpect text 20000 1998\npress 1\n", yearDialog);
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(17, run.Choice.Period.Code);
    EXPECT_STREQ("010118", run.Choice.Period.VonDatum);
    EXPECT_STREQ("311218", run.Choice.Period.BisDatum);
}

TEST(PeriodControls, YearBecomesAFreeDateWhereNoneIsOffered)
{
    Played run("dialog 111\nexpect text 22991 31.03.1998\npress 1\n", perDialog,
               Dates(17, "010198", "310398"));
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(0, run.Choice.Period.Code);
    EXPECT_STREQ("310318", run.Choice.Period.BisDatum);
}

TEST(PeriodControls, PeriodWithoutADateLeavesTheFieldEmpty)
{
    Plays("dialog 111\nexpect text 22991\npress 1\nbox ok eine Eingabe vornehmen\nexpect focus 22991\n"
          "text 22991 1.1.98\npress 1\n",
          perDialog, PeriodCode(17, 18));
}

TEST(PeriodControls, FreeDateOfAPerDialogKeepsItsLastDayAndBeginsWithTheYear)
{
    Played run("dialog 111\nexpect text 22991 31.03.1998\npress 1\n", perDialog,
               Dates(0, "150298", "310398"));
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("010118", run.Choice.Period.VonDatum);
    EXPECT_STREQ("310318", run.Choice.Period.BisDatum);
}

TEST(PeriodControls, DatesBesideAChosenMonthAreTheMonthOfToday)
{
    Plays("dialog 114\nexpect text 22990 01.06.1998\nexpect text 22991 15.06.1998\npress 1\n", fullDialog,
          PeriodCode(3, 18));
}

TEST(PeriodControls, YearThatCannotBePostedToBecomesTheCurrentOne)
{
    Plays("dialog 114\nexpect text 20000 1998\npress 1\n", fullDialog, PeriodCode(3, 16));
}

TEST(PeriodControls, YearIndexBelowTenIsNeverBookable)
{
    // Seen as two characters 9 is no year, whatever 1989 may be.
    Plays("dialog 114\nexpect text 20000 1998\npress 1\n", fullDialog, PeriodCode(3, 9));
}

TEST(PeriodControls, DatesOfAYearThatCannotBePostedToTakeTheCurrentOne)
{
    Plays("dialog 114\nexpect text 22990 15.01.1998\nexpect text 22991 31.03.1998\npress 1\n", fullDialog,
          Dates(0, "150193", "310393"));
}

// ---- Archives ----

TEST(PeriodControls, ArchivePutsItsYearIntoBothDates)
{
    ReportParams params = Archive(0, 1992);
    params.ParamFlags |= ParamDaten;
    std::memcpy(params.VonDatum, "150198", 7);
    std::memcpy(params.BisDatum, "310398", 7);
    Played run(
        "dialog 114\nexpect text 22990 15.01.1992\nexpect text 22991 31.03.1992\nexpect disabled 20000\n"
        "press 1\n",
        fullDialog, params);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("1992", run.Choice.Period.JahrText);
    EXPECT_STREQ("310312", run.Choice.Period.BisDatum);
}

TEST(PeriodControls, ArchiveWithAChosenMonthShowsTodayInItsYear)
{
    Plays("dialog 114\nexpect text 22990 01.06.1992\nexpect text 22991 15.06.1992\nexpect text 20000 1992\n"
          "expect disabled 20000\npress 1\n",
          fullDialog, Archive(3, 1992));
}

TEST(PeriodControls, ArchiveDisablesTheYearWhereNoFreeDateIsOffered)
{
    Played run("dialog 117\nexpect text 20000 1992\nexpect disabled 20000\ncheck 20016\npress 1\n",
               monthsDialog, Archive(3, 1992));
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("311212", run.Choice.Period.BisDatum);
}

TEST(PeriodControls, DateOutsideTheArchiveIsTold)
{
    Plays("dialog 111\ntext 22991 31.3.98\npress 1\nbox ok Das Datum muß innerhalb des Archivjahres liegen!\n"
          "expect focus 22991\ntext 22991 31.3.92\npress 1\n",
          perDialog, Archive(0, 1992));
}

TEST(PeriodControls, CalendarQuarterOfTheYearBeforeLiesOutsideTheArchive)
{
    // From April: the first calendar quarter of 1992 lies wholly in the business year 1991.
    Plays("dialog 122\npress 1\nbox ok Das Datum muß innerhalb des Archivjahres liegen!\ncheck 20014\npress "
          "1\n",
          taxDialog, Archive(13, 1992), 4);
}

// ---- The calendar's quarters and year ----

TEST(PeriodControls, CalendarPeriodNeedsOneDayThatCanBePostedTo)
{
    Plays("dialog 122\ntext 20000 1990\npress 1\nbox ok innerhalb der bebuchbaren Geschäftsjahre\n"
          "text 20000 1997\npress 1\n",
          taxDialog, PeriodCode(17, 18), 4);
}

TEST(PeriodControls, WholeCalendarYearMayBeginBeforeTheBooks)
{
    // From April: January 1997 belongs to 1996, which is closed; December 1997 to 1997.
    Played run("dialog 122\nexpect checked 20017\ntext 20000 1997\npress 1\n", taxDialog, PeriodCode(17, 18),
               4);
    EXPECT_EQ("", run.Refusals());
    EXPECT_TRUE(run.Accepted);
    EXPECT_STREQ("011016", run.Choice.Period.VonDatum);
    EXPECT_STREQ("310917", run.Choice.Period.BisDatum);
}

// ---- The year's field ----

TEST(PeriodControls, YearMayBeTypedAsItsIndex)
{
    Played run("dialog 114\ntext 20000 17\npress 1\n", fullDialog, PeriodCode(3, 18));
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("1997", run.Choice.Period.JahrText);
}

TEST(PeriodControls, YearThatIsNoneIsToldAndFocused)
{
    std::string script = "dialog 114\n";
    for (const char *const year : {"", "-1", "1979", "2080", "99999999999", "x"}) {
        script += std::string("text 20000 ") + year +
                  "\npress 1\nbox ok Die Jahresangabe ist unzulässig!\nexpect focus 20000\n";
    }
    Plays(script + "text 20000 1998\npress 1\n", fullDialog, PeriodCode(3, 18));
}

TEST(PeriodControls, YearOfALateMonthIsThatOfItsCalendar)
{
    // From April, month 10 is January: the field shows 1998 for the business year 1997.
    Played run("dialog 114\nexpect checked 20001\nexpect text 20000 1998\npress 1\n", fullDialog,
               PeriodCode(10, 17), 4);
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("1997", run.Choice.Period.JahrText);
}

TEST(PeriodControls, YearOfTheWholeYearIsTheBusinessYear)
{
    Played run("dialog 114\nexpect checked 20017\nexpect text 20000 1997\npress 1\n", fullDialog,
               PeriodCode(17, 17), 4);
    EXPECT_EQ("", run.Refusals());
    EXPECT_STREQ("1997", run.Choice.Period.JahrText);
}

// ---- The calendar year of the chosen month ----

TEST(PeriodControls, WithoutSetzeJahrTheYearStaysWhateverMonthIsChosen)
{
    Plays("dialog 114\ncheck 20001\nexpect text 20000 1997\ncheck 20004\nexpect text 20000 1997\ntext 20000 "
          "1998\n"
          "press 1\n",
          fullDialog, PeriodCode(1, 17), 4);
}

TEST(PeriodControls, SetzeJahrTakesTwoDigitsForThisCentury)
{
    Plays("dialog 114\ntext 20000 97\ncheck 20005\nexpect text 20000 1997\npress 1\n", fullDialog,
          PeriodCode(1, 17), 1, true);
}

TEST(PeriodControls, SetzeJahrShowsTheCurrentYearForOneThatIsNone)
{
    Plays("dialog 114\ntext 20000 x\ncheck 20005\nexpect text 20000 1998\ntext 20000 \ncheck 20006\n"
          "expect text 20000 1998\npress 1\n",
          fullDialog, PeriodCode(1, 17), 1, true);
}

TEST(PeriodControls, SetzeJahrGoesBackFromALateMonthToTheYear)
{
    Plays("dialog 114\nexpect text 20000 1998\ncheck 20017\nexpect text 20000 1997\ncheck 20014\n"
          "expect text 20000 1997\ncheck 20018\nexpect text 20000 1997\ncheck 20017\npress 1\n",
          fullDialog, PeriodCode(10, 17), 4, true);
}

// ---- The dates ----

TEST(PeriodControls, DateThatCanBeReadIsShownInFullWhenItIsLeft)
{
    Plays(
        "dialog 114\ncheck 20018\nfocus 22990\ntext 22990 1.2.98\nfocus 22991\nexpect text 22990 01.02.1998\n"
        "text 22991 x\nfocus 22990\nexpect text 22991 x\ntext 22991 1.3.98\npress 1\n",
        fullDialog, PeriodCode(3, 18));
}

TEST(PeriodControls, FirstDateIsToldBeforeTheSecond)
{
    Plays("dialog 114\ncheck 20018\ntext 22990 \ntext 22991 32.1.98\npress 1\nbox ok eine Eingabe vornehmen\n"
          "expect focus 22990\ntext 22990 1.1.98\npress 1\nbox ok Unzulässige Tagesangabe!\nexpect focus "
          "22991\n"
          "text 22991 1.1.98\npress 1\n",
          fullDialog, PeriodCode(3, 18));
}

TEST(PeriodControls, RefusedPairFocusesTheDateThatIsToBlame)
{
    Plays("dialog 114\ncheck 20018\ntext 22990 1.6.97\ntext 22991 1.2.98\npress 1\nbox ok im gleichen "
          "Geschäftsjahr\n"
          "expect focus 22991\ntext 22990 1.6.98\npress 1\nbox ok darf nicht hinter dem Bis-Datum\n"
          "expect focus 22990\ntext 22990 1.2.98\npress 1\n",
          fullDialog, PeriodCode(3, 18));
}

TEST(PeriodControls, FreeDatesLeaveTheYearUnchecked)
{
    Plays("dialog 114\ntext 20000 x\ncheck 20018\ntext 22990 1.1.98\ntext 22991 1.2.98\npress 1\n",
          fullDialog, PeriodCode(3, 18));
}

// ---- Messages ----

TEST(PeriodControls, ClickCountsOnlyWhileTheDialogIsActive)
{
    Played run("dialog 114\nexpect checked 20003\npress 1\n", fullDialog, PeriodCode(3, 18), 1, false,
               [](HWND dialog) {
                   // Another window of the host takes over while a click is on its way.
                   HWND other = CreateWindowExA(0, "Onlooker", "", WS_POPUP | WS_VISIBLE, 0, 0, 10, 10,
                                                nullptr, nullptr, nullptr, nullptr);
                   SetActiveWindow(other);
                   SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(20005, BN_CLICKED),
                                reinterpret_cast<LPARAM>(GetDlgItem(dialog, 20005)));
                   SetActiveWindow(dialog);
                   DestroyWindow(other);
               });
    EXPECT_EQ("", run.Refusals());
    EXPECT_EQ(3, run.Choice.Period.Code);
}

TEST(PeriodControls, HelpContextHangsOnTheOpenDialog)
{
    INT_PTR help = 0;
    HWND opened = nullptr;
    Played run("dialog 111\npress 2\n", perDialog, {}, 1, false, [&](HWND dialog) {
        opened = dialog;
        help = reinterpret_cast<INT_PTR>(GetPropA(dialog, "tervoTKHelp"));
    });
    EXPECT_EQ(3008, help);
    EXPECT_EQ(nullptr, GetPropA(opened, "tervoTKHelp"));
}
