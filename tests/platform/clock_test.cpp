#include "src/platform/platform.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

using namespace vark;

namespace {

CalendarDate TodayWith(const char *text)
{
    setenv("VARK_HEUTE", text, 1);
    return SystemToday();
}

CalendarDate MachineToday()
{
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    localtime_r(&now, &fields);
    return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday};
}

void ExpectDate(const CalendarDate &wanted, const CalendarDate &date)
{
    EXPECT_EQ(wanted.Year, date.Year);
    EXPECT_EQ(wanted.Month, date.Month);
    EXPECT_EQ(wanted.Day, date.Day);
}

} // namespace

TEST(Clock, VarkHeuteReplacesTheMachinesDate)
{
    ExpectDate({1997, 12, 24}, TodayWith("24.12.1997"));
    ExpectDate({2000, 2, 29}, TodayWith("29.02.2000"));
}

TEST(Clock, TextThatNamesNoDayLeavesTheMachinesDate)
{
    for (const char *text :
         {"", "heute", "24.12.97", "31.02.1998", "29.02.1997", "00.01.1998", "24-12-1997", "24.12.1997x"}) {
        SCOPED_TRACE(text);
        ExpectDate(MachineToday(), TodayWith(text));
    }
}
