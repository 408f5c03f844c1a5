#include "src/values/dates.h"

#include "src/frame/thread_context.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

using namespace vark;

struct Date {
    PackedDate Text{};

    Date() = default;
    explicit Date(const std::string &text) { text.copy(Text, sizeof Text - 1); }
    std::string Str() const { return Text; }
};

// A thread bound to a Mandant whose fiscal year begins in January, on Christmas Eve of 1997.
class Dates : public testing::Test {
protected:
    std::unique_ptr<ThreadContext> Context = std::make_unique<ThreadContext>();

    void SetUp() override
    {
        Context->FirstFiscalMonth = 1;
        SetToday("24.12.97", "24.12.1997");
        SetYears("1997", "1998");
    }

    void SetToday(const std::string &shortText, const std::string &longText)
    {
        shortText.copy(Context->TodayShort, sizeof Context->TodayShort - 1);
        longText.copy(Context->TodayLong, sizeof Context->TodayLong - 1);
    }

    void SetYears(const std::string &lower, const std::string &upper)
    {
        memset(Context->FirstOpenYear, 0, sizeof Context->FirstOpenYear);
        lower.copy(Context->FirstOpenYear, sizeof Context->FirstOpenYear - 1);
        upper.copy(Context->MandantYear, sizeof Context->MandantYear - 1);
    }

    // The PackedDate, or "code n" and the text left as it was.
    std::string Parse(const std::string &text, bool notAfterToday = false)
    {
        char buffer[32] = {};
        text.copy(buffer, sizeof buffer - 1);
        const DateFault fault = ParseDateText(*Context, buffer, sizeof buffer, notAfterToday);
        if (fault == DateGood) return buffer;
        EXPECT_EQ(text, buffer) << "a refused text stays";
        return "code " + std::to_string(fault);
    }

    std::string Format(const std::string &date, bool isFourDigitYear)
    {
        DateText out;
        FormatDate(Date(date).Text, out, isFourDigitYear, Context->FirstFiscalMonth);
        return out;
    }

    std::string Calendar(const std::string &date)
    {
        Date out;
        PackedToCalendar(Date(date).Text, out.Text, Context->FirstFiscalMonth);
        return out.Str();
    }

    std::string DayBefore(const std::string &text)
    {
        Date date(text);
        const bool isThere = PreviousDay(date.Text, Context->FirstFiscalMonth);
        return (isThere ? "" : "none, ") + date.Str();
    }

    std::string MonthEnd(const std::string &text, bool isFiscalYearEnd)
    {
        Date out;
        const bool isEnd = IsMonthEnd(isFiscalYearEnd, Date(text).Text, &out.Text, Context->FirstFiscalMonth);
        EXPECT_EQ(isEnd, IsMonthEnd(isFiscalYearEnd, Date(text).Text, nullptr, Context->FirstFiscalMonth));
        return (isEnd ? "end, " : "") + out.Str();
    }

    std::string Period(int code, int year, bool isCalendar)
    {
        FiscalPeriod period{};
        if (!PeriodOfCode(code, year, isCalendar, Context->FirstFiscalMonth, period)) return "none";
        return std::string(period.FirstDay) + "-" + period.LastDay + " " + std::to_string(period.FirstMonth) +
               "-" + std::to_string(period.LastMonth) + " " + std::to_string(period.Year);
    }
};

bool After(const std::string &a, const std::string &b) { return DateIsAfter(Date(a).Text, Date(b).Text); }

} // namespace

TEST_F(Dates, ParsesWholeDates)
{
    EXPECT_EQ("150318", Parse("15.03.98"));
    EXPECT_EQ("150318", Parse("15.3.1998"));
    EXPECT_EQ("050300", Parse("5.3.80"));
    EXPECT_EQ("311299", Parse("31.12.2079"));
    EXPECT_EQ("150318", Parse("  15.03.98"));
}

TEST_F(Dates, DigitsOnlyAreReadByPairs)
{
    EXPECT_EQ("150318", Parse("150398"));
    EXPECT_EQ("150317", Parse("1503"));
    EXPECT_EQ("150318", Parse("  150398"));
    EXPECT_EQ("code 1", Parse("310297"));
    EXPECT_EQ("code 1", Parse("15031998")) << "eight digits are a bad day";
    EXPECT_EQ("code 1", Parse("150"));
    EXPECT_EQ("code 1", Parse("15039"));
    EXPECT_EQ("code 2", Parse("151398"));
    EXPECT_EQ("code 3", Parse("150300"));
}

TEST_F(Dates, WhatIsMissingComesFromToday)
{
    EXPECT_EQ("151217", Parse("15"));
    EXPECT_EQ("051217", Parse("5"));
    EXPECT_EQ("150317", Parse("15.3"));
    EXPECT_EQ("311217", Parse("31"));
}

TEST_F(Dates, ABareDayMustExistInThisMonth)
{
    SetToday("15.02.97", "15.02.1997");
    EXPECT_EQ("280217", Parse("28"));
    EXPECT_EQ("code 1", Parse("29"));
    EXPECT_EQ("code 1", Parse("30"));
}

TEST_F(Dates, InTheYear2000ATextWithoutYearIsRefusedLikeTheLiteral00)
{
    SetToday("15.03.00", "15.03.2000");
    EXPECT_EQ("code 3", Parse("15"));
    EXPECT_EQ("code 3", Parse("15.3"));
    EXPECT_EQ("150320", Parse("15.3.2000"));
}

TEST_F(Dates, OneTrailingDotDoesNotMatter)
{
    EXPECT_EQ("150317", Parse("15.3."));
    EXPECT_EQ("151217", Parse("15."));
    EXPECT_EQ("150318", Parse("15.3.98."));
    EXPECT_EQ("code 2", Parse("15.."));
    EXPECT_EQ("code 3", Parse("15.3.."));
    EXPECT_EQ("150317", Parse("1503"));
    EXPECT_EQ("code 1", Parse("1503.")) << "with the dot it is a day of 1503";
}

TEST_F(Dates, RefusesABadDay)
{
    EXPECT_EQ("code 1", Parse(""));
    EXPECT_EQ("code 1", Parse("   "));
    EXPECT_EQ("code 1", Parse("."));
    EXPECT_EQ("code 1", Parse("x"));
    EXPECT_EQ("code 1", Parse("0.3.98"));
    EXPECT_EQ("code 1", Parse("32.3.98"));
    EXPECT_EQ("code 1", Parse("-1.3.98"));
    EXPECT_EQ("code 1", Parse("30.2.98"));
    EXPECT_EQ("code 1", Parse("31.4.98"));
    EXPECT_EQ("code 1", Parse("31.6.98"));
    EXPECT_EQ("code 1", Parse("31.9.98"));
    EXPECT_EQ("code 1", Parse("31.11.98"));
    EXPECT_EQ("code 1", Parse("99999999999999999999.1.98"));
}

TEST_F(Dates, RefusesABadMonth)
{
    EXPECT_EQ("code 2", Parse("15.0.98"));
    EXPECT_EQ("code 2", Parse("15.13.98"));
    EXPECT_EQ("code 2", Parse("15,3.98"));
    EXPECT_EQ("code 2", Parse("15 3 98"));
    EXPECT_EQ("code 2", Parse("15.x.98"));
    EXPECT_EQ("code 2", Parse("15 "));
}

TEST_F(Dates, RefusesABadYear)
{
    EXPECT_EQ("code 3", Parse("15.3.0"));
    EXPECT_EQ("code 3", Parse("29.02.00"));
    EXPECT_EQ("code 3", Parse("15.3.100"));
    EXPECT_EQ("code 3", Parse("15.3.1979"));
    EXPECT_EQ("code 3", Parse("15.3.2080"));
    EXPECT_EQ("code 3", Parse("15.3.x"));
    EXPECT_EQ("code 3", Parse("15.3-98"));
    EXPECT_EQ("code 3", Parse("15.3.-98"));
}

TEST_F(Dates, TheDayOfTheMonthIsJudgedBeforeTheYear) { EXPECT_EQ("code 1", Parse("30.2.0")); }

TEST_F(Dates, ReadsTwoDigitYearsAroundEighty)
{
    EXPECT_EQ("010100", Parse("1.1.80"));
    EXPECT_EQ("010119", Parse("1.1.99"));
    EXPECT_EQ("010121", Parse("1.1.1"));
    EXPECT_EQ("010121", Parse("1.1.01"));
    EXPECT_EQ("010199", Parse("1.1.79"));
    EXPECT_EQ("010120", Parse("1.1.2000"));
    EXPECT_EQ("010100", Parse("1.1.1980"));
}

TEST_F(Dates, FollowsTheLeapYears)
{
    EXPECT_EQ("290220", Parse("29.02.2000"));
    EXPECT_EQ("290216", Parse("29.02.96"));
    EXPECT_EQ("code 1", Parse("29.02.97"));
    EXPECT_EQ("code 1", Parse("29.02.2001"));
}

TEST_F(Dates, WhatFollowsTheYearIsIgnored)
{
    EXPECT_EQ("150318", Parse("15.3.98 abc"));
    EXPECT_EQ("150318", Parse("15.3.1998.7"));
}

TEST_F(Dates, WithTheFlagNoDateAfterToday)
{
    EXPECT_EQ("241217", Parse("24.12.97", true));
    EXPECT_EQ("code 4", Parse("25.12.97", true));
    EXPECT_EQ("code 4", Parse("1.1.98", true));
    EXPECT_EQ("301117", Parse("30.11.97", true));
    EXPECT_EQ("311216", Parse("31.12.96", true));
    EXPECT_EQ("010100", Parse("1.1.80", true)) << "1980, not 2080";
    EXPECT_EQ("code 4", Parse("1.1.79", true)) << "2079";
    EXPECT_EQ("251217", Parse("25.12.97", false));
}

TEST_F(Dates, TheMonthIsCountedFromTheFirstOfTheFiscalYear)
{
    Context->FirstFiscalMonth = 7;
    EXPECT_EQ("150917", Parse("15.03.1998"));
    EXPECT_EQ("010118", Parse("1.7.98"));
    EXPECT_EQ("301217", Parse("30.6.98"));
    Context->FirstFiscalMonth = 12;
    EXPECT_EQ("150117", Parse("15.12.97"));
    EXPECT_EQ("151217", Parse("15.11.98"));
}

TEST_F(Dates, ADateBeforeTheFiscalYear1980IsRefused)
{
    Context->FirstFiscalMonth = 7;
    EXPECT_EQ("code 3", Parse("30.6.1980"));
    EXPECT_EQ("010100", Parse("1.7.1980"));
}

TEST_F(Dates, ASevenByteFieldIsEnough)
{
    auto field = std::make_unique<char[]>(7);
    std::string("1.3.98x").copy(field.get(), 7); // not terminated
    EXPECT_EQ(DateGood, ParseDateText(*Context, field.get(), 7, false));
    EXPECT_STREQ("010318", field.get());
}

TEST_F(Dates, WithoutATodayABareDayHasNoMonth)
{
    memset(Context->TodayShort, 0, sizeof Context->TodayShort);
    EXPECT_EQ("code 2", Parse("15"));
    EXPECT_EQ("code 3", Parse("15.3"));
    EXPECT_EQ("150318", Parse("15.3.98"));
}

TEST_F(Dates, FormatsWithTwoOrFourDigitsOfTheYear)
{
    EXPECT_EQ("15.03.98", Format("150318", false));
    EXPECT_EQ("15.03.1998", Format("150318", true));
    EXPECT_EQ("01.01.00", Format("010120", false));
    EXPECT_EQ("01.01.2000", Format("010120", true));
    EXPECT_EQ("01.01.09", Format("010129", false));
    EXPECT_EQ("01.01.79", Format("010199", false));
    EXPECT_EQ("", Format("", false));
    EXPECT_EQ("", Format("", true));
}

TEST_F(Dates, FormatsTheCalendarMonthOfAFiscalMonth)
{
    Context->FirstFiscalMonth = 7;
    EXPECT_EQ("15.03.1998", Format("150917", true));
    EXPECT_EQ("15.07.97", Format("150117", false));
    EXPECT_EQ("15.01.00", Format("150719", false));
    EXPECT_EQ("15.01.2080", Format("150799", true));
    EXPECT_EQ("15.01.80", Format("150799", false));
}

TEST_F(Dates, FormatCutsTheDayToItsMonth)
{
    EXPECT_EQ("30.04.98", Format("310418", false));
    EXPECT_EQ("28.02.98", Format("310218", false));
    EXPECT_EQ("29.02.96", Format("310216", false));
    EXPECT_EQ("31.03.98", Format("990318", false));
}

TEST_F(Dates, CalendarFormEqualsThePackedOneInACalendarYear)
{
    EXPECT_EQ("150318", Calendar("150318"));
    EXPECT_EQ("", Calendar(""));
}

TEST_F(Dates, CalendarFormCountsTheCalendarYear)
{
    Context->FirstFiscalMonth = 7;
    EXPECT_EQ("150318", Calendar("150917"));
    EXPECT_EQ("150717", Calendar("150117"));
    EXPECT_EQ("150618", Calendar("151217"));
    EXPECT_EQ("150100", Calendar("150799")) << "2080 loses its century";
    Date date("150917");
    PackedToCalendar(date.Text, date.Text, 7);
    EXPECT_EQ("150318", date.Str());
}

TEST_F(Dates, DaysOfAMonthByEitherCountOfYears)
{
    EXPECT_EQ(31, DaysInFiscalMonth(1, 18, 1));
    EXPECT_EQ(28, DaysInFiscalMonth(2, 18, 1));
    EXPECT_EQ(29, DaysInFiscalMonth(2, 16, 1));
    EXPECT_EQ(29, DaysInFiscalMonth(2, 1996, 1));
    EXPECT_EQ(29, DaysInFiscalMonth(2, 20, 1));
    EXPECT_EQ(28, DaysInFiscalMonth(2, 2100, 1));
    EXPECT_EQ(30, DaysInFiscalMonth(4, 18, 1));
    EXPECT_EQ(30, DaysInFiscalMonth(6, 18, 1));
    EXPECT_EQ(30, DaysInFiscalMonth(9, 18, 1));
    EXPECT_EQ(30, DaysInFiscalMonth(11, 18, 1));
    EXPECT_EQ(29, DaysInFiscalMonth(8, 15, 7)) << "February 1996 in the year from July 1995";
    EXPECT_EQ(28, DaysInFiscalMonth(8, 1996, 7)) << "February 1997";
}

TEST_F(Dates, MonthEnds)
{
    EXPECT_EQ("end, 310318", MonthEnd("310318", false));
    EXPECT_EQ("310318", MonthEnd("300318", false));
    EXPECT_EQ("end, 290216", MonthEnd("290216", false));
    EXPECT_EQ("290216", MonthEnd("280216", false));
    EXPECT_EQ("end, 280218", MonthEnd("280218", false));
    EXPECT_EQ("", MonthEnd("", false));
}

TEST_F(Dates, FiscalYearEndsInMonthTwelve)
{
    EXPECT_EQ("end, 311218", MonthEnd("311218", true));
    EXPECT_EQ("311218", MonthEnd("301218", true));
    EXPECT_EQ("311218", MonthEnd("310318", true));
    EXPECT_EQ("281218", MonthEnd("150218", true)) << "the day count is that of the date's own month";
    EXPECT_EQ("", MonthEnd("", true));
    Context->FirstFiscalMonth = 3;
    EXPECT_EQ("end, 281217", MonthEnd("281217", true)) << "February 1998 ends the year from March 1997";
}

TEST_F(Dates, StepsOneDayBack)
{
    EXPECT_EQ("140318", DayBefore("150318"));
    EXPECT_EQ("280218", DayBefore("010318"));
    EXPECT_EQ("290216", DayBefore("010316"));
    EXPECT_EQ("311217", DayBefore("010118"));
    EXPECT_EQ("none, 010100", DayBefore("010100"));
    EXPECT_EQ("010100", DayBefore("020100"));
    EXPECT_EQ("none, ", DayBefore(""));
    Context->FirstFiscalMonth = 7;
    EXPECT_EQ("301217", DayBefore("010118"));
    EXPECT_EQ("280817", DayBefore("010917"));
}

TEST(DateIsAfter, ComparesYearMonthDay)
{
    EXPECT_TRUE(After("010119", "311218"));
    EXPECT_FALSE(After("311218", "010119"));
    EXPECT_TRUE(After("010218", "310118"));
    EXPECT_TRUE(After("020118", "010118"));
    EXPECT_FALSE(After("010118", "010118"));
}

TEST(DateIsAfter, AnEmptyDateIsBeforeAllOthers)
{
    EXPECT_FALSE(After("", "010118"));
    EXPECT_TRUE(After("010118", ""));
    EXPECT_FALSE(After("", ""));
}

TEST_F(Dates, PostableIsFromTheLowerToTheUpperYear)
{
    EXPECT_EQ(0, PostableYear(*Context, 16));
    EXPECT_EQ(1997, PostableYear(*Context, 17));
    EXPECT_EQ(1998, PostableYear(*Context, 18));
    EXPECT_EQ(0, PostableYear(*Context, 19));
}

TEST_F(Dates, WithoutALowerYearOnlyTheUpperOneIsPostable)
{
    SetYears("", "1998");
    EXPECT_EQ(0, PostableYear(*Context, 17));
    EXPECT_EQ(1998, PostableYear(*Context, 18));
    EXPECT_EQ(0, PostableYear(*Context, 19));
}

TEST(ToSortDate, ReversesThePairsAndBack)
{
    Date date("150318");
    ToSortDate(date.Text);
    EXPECT_EQ("180315", date.Str());
    ToSortDate(date.Text);
    EXPECT_EQ("150318", date.Str());
    Date empty;
    ToSortDate(empty.Text);
    EXPECT_EQ("", empty.Str());
}

TEST(CalendarYearOf, GrowsWithinTheFiscalYear)
{
    EXPECT_EQ(1998, CalendarYearOf(12, 18, 1));
    EXPECT_EQ(1997, CalendarYearOf(6, 17, 7));
    EXPECT_EQ(1998, CalendarYearOf(7, 17, 7));
}

TEST_F(Dates, PeriodsOfMonthsQuartersAndTheYear)
{
    EXPECT_EQ("010218-280218 2-2 18", Period(2, 18, false));
    EXPECT_EQ("010118-310318 1-3 18", Period(13, 18, false));
    EXPECT_EQ("010418-300618 4-6 18", Period(14, 18, false));
    EXPECT_EQ("010718-300918 7-9 18", Period(15, 18, false));
    EXPECT_EQ("011018-311218 10-12 18", Period(16, 18, false));
    EXPECT_EQ("010118-311218 1-12 18", Period(17, 18, false));
    EXPECT_EQ("none", Period(0, 18, false));
    EXPECT_EQ("none", Period(18, 18, false));
    EXPECT_EQ("none", Period(-1, 18, false));
}

TEST_F(Dates, FiscalQuartersFollowTheFiscalYear)
{
    Context->FirstFiscalMonth = 7;
    EXPECT_EQ("010117-300317 1-3 17", Period(13, 17, false)); // July to September
    EXPECT_EQ("010117-301217 1-12 17", Period(17, 17, false));
    EXPECT_EQ("010817-280817 8-8 17", Period(8, 17, false)); // February 1998
}

TEST_F(Dates, CalendarQuartersMayLieInTwoFiscalYears)
{
    Context->FirstFiscalMonth = 4;
    EXPECT_EQ("011017-311217 10-12 17", Period(13, 18, true)); // January to March 1998
    EXPECT_EQ("010118-300318 1-3 18", Period(14, 18, true));
    EXPECT_EQ("011017-310918 10-9 17", Period(17, 18, true));
    Context->FirstFiscalMonth = 2;
    EXPECT_EQ("011217-310218 12-2 17", Period(13, 18, true)); // January to March 1998
    Context->FirstFiscalMonth = 1;
    EXPECT_EQ("010118-310318 1-3 18", Period(13, 18, true));
    EXPECT_EQ("010118-311218 1-12 18", Period(17, 18, true));
}

TEST_F(Dates, CalendarWordingDoesNotTouchSingleMonths)
{
    Context->FirstFiscalMonth = 4;
    EXPECT_EQ("010118-300118 1-1 18", Period(1, 18, true)); // April
}

TEST_F(Dates, ADateFieldNamesItsMessage)
{
    const auto check = [&](const std::string &text) {
        char field[21] = {};
        text.copy(field, sizeof field - 1);
        return CheckDateField(*Context, field, sizeof field);
    };
    EXPECT_EQ(1439, check(""));
    EXPECT_EQ(1440, check("32.1.98"));
    EXPECT_EQ(1441, check("1.13.98"));
    EXPECT_EQ(1442, check("1.1.0"));
    EXPECT_EQ(0, check("1.1.98"));
    EXPECT_EQ(0, check("31.12.2050")) << "it may lie after today";
}

TEST_F(Dates, AYearMustBePostableOrThatOfTheArchive)
{
    EXPECT_EQ(0, CheckYear(*Context, 18, 0));
    EXPECT_EQ(1438, CheckYear(*Context, 19, 0));
    EXPECT_EQ(0, CheckYear(*Context, 10, 1990));
    EXPECT_EQ(1460, CheckYear(*Context, 18, 1990));
}

TEST(CheckDatePair, OneFiscalYearAndInOrder)
{
    EXPECT_EQ(0, CheckDatePair(Date("010118").Text, Date("310118").Text));
    EXPECT_EQ(0, CheckDatePair(Date("010118").Text, Date("010118").Text));
    EXPECT_EQ(1443, CheckDatePair(Date("020118").Text, Date("010118").Text));
    EXPECT_EQ(1457, CheckDatePair(Date("311217").Text, Date("010118").Text));
    EXPECT_EQ(1457, CheckDatePair(Date("010118").Text, Date("311217").Text));
}

TEST(CheckYearField, TakesFullYearsAndYearsFrom1980)
{
    const auto check = [](const std::string &text) {
        char field[12] = {};
        text.copy(field, sizeof field - 1);
        int year = -7;
        const int message = CheckYearField(field, sizeof field, year);
        return message == 0 ? year : message == 1437 && year == -7 ? -1 : -2;
    };
    EXPECT_EQ(18, check("1998"));
    EXPECT_EQ(18, check(" 18"));
    EXPECT_EQ(0, check("1980"));
    EXPECT_EQ(99, check("2079"));
    EXPECT_EQ(0, check("0"));
    EXPECT_EQ(-1, check(""));
    EXPECT_EQ(-1, check("x"));
    EXPECT_EQ(-1, check("-1"));
    EXPECT_EQ(-1, check("1998x"));
    EXPECT_EQ(-1, check("100"));
    EXPECT_EQ(-1, check("1979"));
    EXPECT_EQ(-1, check("2080"));
    EXPECT_EQ(-1, check("99999999999"));
}
