// Every day that a PackedDate can hold, under every first month of a fiscal year, against the calendar of the
// standard library.
#include "src/values/dates.h"

#include "src/frame/thread_context.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <string>

namespace {

using namespace vark;
using namespace std::chrono;

std::string TwoDigits(int value)
{
    std::string text = std::to_string(value % 100);
    return text.size() < 2 ? "0" + text : text;
}

struct Day {
    int DayOfMonth;
    int Month;
    int Year;
    bool IsLastOfMonth;
    std::string Packed; // "DDMMJJ" by the rules of the fiscal year
};

Day MakeDay(sys_days at, int firstFiscalMonth)
{
    const year_month_day date(at);
    Day day{static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(static_cast<unsigned>(date.month())), static_cast<int>(date.year()), false, ""};
    day.IsLastOfMonth = year_month_day(at + days(1)).day() == std::chrono::day(1);
    const year_month month = date.year() / date.month();
    const year_month begin =
        month - months(firstFiscalMonth - 1); // shifted so that the year begins in January
    day.Packed = TwoDigits(day.DayOfMonth) +
                 TwoDigits(static_cast<int>(static_cast<unsigned>(begin.month()))) +
                 TwoDigits(static_cast<int>(begin.year()) - 1980);
    return day;
}

void Copy(PackedDate &to, const std::string &text)
{
    memset(to, 0, sizeof to);
    text.copy(to, sizeof to - 1);
}

class EveryDay : public testing::TestWithParam<int> {};

} // namespace

TEST_P(EveryDay, AgreesWithTheCalendar)
{
    const int firstFiscalMonth = GetParam();
    auto context = std::make_unique<ThreadContext>();
    context->FirstFiscalMonth = firstFiscalMonth;
    const auto month = std::chrono::month(static_cast<unsigned>(firstFiscalMonth));
    const sys_days first = year(1980) / month / 1;
    const sys_days end = year(2080) / month / 1;

    PackedDate before{};
    std::string sortBefore;
    for (sys_days at = first; at < end; at += days(1)) {
        const Day day = MakeDay(at, firstFiscalMonth);
        SCOPED_TRACE(day.Packed);
        PackedDate packed;
        Copy(packed, day.Packed);

        // Text and back; the years 2080 and, in short, 2000 cannot be written.
        DateText text;
        FormatDate(packed, text, true, firstFiscalMonth);
        const std::string dotted = TwoDigits(day.DayOfMonth) + "." + TwoDigits(day.Month) + ".";
        ASSERT_EQ(dotted + std::to_string(day.Year), text);
        char input[11];
        memcpy(input, text, sizeof input);
        const DateFault fault = ParseDateText(*context, input, sizeof input, false);
        ASSERT_EQ(day.Year > 2079 ? DateBadYear : DateGood, fault);
        if (fault == DateGood) {
            ASSERT_EQ(day.Packed, input);
        }

        FormatDate(packed, text, false, firstFiscalMonth);
        ASSERT_EQ(dotted + TwoDigits(day.Year), text);
        memcpy(input, text, sizeof input);
        if (day.Year == 2000) {
            ASSERT_EQ(DateBadYear, ParseDateText(*context, input, sizeof input, false));
        } else if (day.Year <= 2079) {
            ASSERT_EQ(DateGood, ParseDateText(*context, input, sizeof input, false));
            ASSERT_EQ(day.Packed, input);
            char digits[9] = {};
            (TwoDigits(day.DayOfMonth) + TwoDigits(day.Month) + TwoDigits(day.Year)).copy(digits, 8);
            ASSERT_EQ(DateGood, ParseDateText(*context, digits, sizeof digits, false));
            ASSERT_EQ(day.Packed, digits);
        }

        PackedDate calendar;
        PackedToCalendar(packed, calendar, firstFiscalMonth);
        ASSERT_EQ(TwoDigits(day.DayOfMonth) + TwoDigits(day.Month) + TwoDigits(day.Year - 1980), calendar);
        ASSERT_EQ(day.Year, CalendarYearOf(FiscalMonthOf(packed), FiscalYearOf(packed), firstFiscalMonth));

        const year_month_day_last lastDay(year(day.Year) / day.Month / last);
        ASSERT_EQ(static_cast<int>(static_cast<unsigned>(lastDay.day())),
                  DaysInFiscalMonth(FiscalMonthOf(packed), FiscalYearOf(packed), firstFiscalMonth));
        PackedDate monthEnd;
        ASSERT_EQ(day.IsLastOfMonth, IsMonthEnd(false, packed, &monthEnd, firstFiscalMonth));
        ASSERT_EQ(TwoDigits(static_cast<int>(static_cast<unsigned>(lastDay.day()))) + day.Packed.substr(2),
                  monthEnd);
        const bool isYearEnd = FiscalMonthOf(packed) == 12 && day.IsLastOfMonth;
        ASSERT_EQ(isYearEnd, IsMonthEnd(true, packed, nullptr, firstFiscalMonth));

        PackedDate stepped;
        memcpy(stepped, packed, sizeof stepped);
        ASSERT_EQ(at != first, PreviousDay(stepped, firstFiscalMonth));
        ASSERT_STREQ(at != first ? before : packed, stepped);

        PackedDate sort;
        memcpy(sort, packed, sizeof sort);
        ToSortDate(sort);
        ASSERT_LT(sortBefore, sort);
        ASSERT_TRUE(DateIsAfter(packed, before));
        ASSERT_FALSE(DateIsAfter(before, packed));
        ASSERT_FALSE(DateIsAfter(packed, packed));
        sortBefore = sort;
        memcpy(before, packed, sizeof before);
    }
}

TEST_P(EveryDay, NoDayIsAcceptedThatTheCalendarDoesNotKnow)
{
    auto context = std::make_unique<ThreadContext>();
    context->FirstFiscalMonth = GetParam();
    for (int y = 1981; y <= 2079; ++y) {
        for (int m = 0; m <= 13; ++m) {
            for (int d = 0; d <= 33; ++d) {
                char input[16] = {};
                (std::to_string(d) + "." + std::to_string(m) + "." + std::to_string(y)).copy(input, 15);
                const bool isGood = ParseDateText(*context, input, sizeof input, false) == DateGood;
                ASSERT_EQ((year(y) / m / d).ok(), isGood) << d << "." << m << "." << y;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(FirstFiscalMonth, EveryDay, testing::Range(1, 13));
