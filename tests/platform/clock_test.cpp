#include "src/platform/platform.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace vark;

namespace {

CalendarDate TodayWith(const char *text)
{
    setenv("VARK_HEUTE", text, 1);
    return SystemToday();
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
