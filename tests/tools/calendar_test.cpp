#include "tools/common/calendar.h"

#include <gtest/gtest.h>

using namespace tools;

TEST(ToolCalendar, LeapYearsFollowTheGregorianRule)
{
    EXPECT_EQ(29, DaysInMonth(1996, 2));
    EXPECT_EQ(28, DaysInMonth(1997, 2));
    EXPECT_EQ(29, DaysInMonth(2000, 2));
    EXPECT_EQ(28, DaysInMonth(2100, 2));
}

TEST(ToolCalendar, WeekdayOfAKnownDay)
{
    EXPECT_EQ(2, WeekdayOf(DayOf(1998, 4, 1))); // a Wednesday
    EXPECT_EQ(3, WeekdayOf(DayOf(1970, 1, 1))); // a Thursday
    EXPECT_EQ(6, WeekdayOf(DayOf(1969, 12, 28)));
}

TEST(ToolCalendar, PackedDateCountsMonthsOfTheFiscalYear)
{
    vark::PackedDate packed;
    MakePacked(packed, DayOf(1998, 3, 15), 7);
    EXPECT_STREQ("150917", packed);
    MakePacked(packed, DayOf(1998, 3, 15), 1);
    EXPECT_STREQ("150318", packed);
    MakePacked(packed, DayOf(1998, 7, 1), 7);
    EXPECT_STREQ("010118", packed);
}

TEST(ToolCalendar, SortDateIsThePairsReversed)
{
    vark::SortDate sort;
    MakeSort(sort, DayOf(1998, 3, 15), 7);
    EXPECT_STREQ("170915", sort);
}

TEST(ToolCalendar, EveryDayComesBackFromItsForms)
{
    for (const int firstMonth : {1, 4, 7, 12}) {
        for (Day day = DayOf(1981, 1, 1); day <= DayOf(2078, 12, 31); day += 3) {
            vark::PackedDate packed;
            vark::SortDate sort;
            MakePacked(packed, day, firstMonth);
            MakeSort(sort, day, firstMonth);
            Day back = 0;
            ASSERT_TRUE(DayOfPacked(packed, firstMonth, back));
            ASSERT_EQ(day, back);
            ASSERT_TRUE(DayOfSort(sort, firstMonth, back));
            ASSERT_EQ(day, back);
        }
    }
}

TEST(ToolCalendar, WhatIsNoDayIsRefused)
{
    Day day = 0;
    constexpr char emptyField[7] = {};
    EXPECT_FALSE(DayOfPacked(emptyField, 1, day));
    EXPECT_FALSE(DayOfPacked("310218", 1, day));
    EXPECT_FALSE(DayOfPacked("011318", 1, day));
    EXPECT_FALSE(DayOfPacked("000118", 1, day));
    EXPECT_FALSE(DayOfPacked("0a0118", 1, day));
}

TEST(ToolCalendar, DisplayHasTwoDigitsAndFour) { EXPECT_EQ("05.01.1998", DisplayDay(DayOf(1998, 1, 5))); }
