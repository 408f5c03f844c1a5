#include "tools/common/calendar.h"

#include <chrono>

namespace tools {

namespace {

void PutPair(char *to, int value)
{
    to[0] = static_cast<char>('0' + value / 10 % 10);
    to[1] = static_cast<char>('0' + value % 10);
}

// Two digits as a number, -1 for anything else.
int Pair(const char *from)
{
    if (from[0] < '0' || from[0] > '9' || from[1] < '0' || from[1] > '9') return -1;
    return (from[0] - '0') * 10 + from[1] - '0';
}

bool DayOfParts(int dayOfMonth, int fiscalMonth, int year, int firstMonth, Day &day)
{
    if (year < 0 || fiscalMonth < 1 || fiscalMonth > 12 || dayOfMonth < 1) return false;
    const int months = fiscalMonth - 1 + firstMonth - 1;
    const int calendarYear = 1980 + year + months / 12;
    const int calendarMonth = months % 12 + 1;
    if (dayOfMonth > DaysInMonth(calendarYear, calendarMonth)) return false;
    day = DayOf(calendarYear, calendarMonth, dayOfMonth);
    return true;
}

} // namespace

Day DayOf(int year, int month, int dayOfMonth)
{
    using namespace std::chrono;
    return static_cast<Day>(
        sys_days{std::chrono::year{year} / month / dayOfMonth}.time_since_epoch().count());
}

CalendarDay CalendarOf(Day day)
{
    using namespace std::chrono;
    const year_month_day date{sys_days{days{day}}};
    return {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day()))};
}

int DaysInMonth(int year, int month)
{
    return month == 12 ? 31 : DayOf(year, month + 1, 1) - DayOf(year, month, 1);
}

int WeekdayOf(Day day) { return ((day + 3) % 7 + 7) % 7; }

FiscalDay FiscalOf(Day day, int firstMonth)
{
    const CalendarDay date = CalendarOf(day);
    const int month = date.Month - firstMonth + 1;
    if (month < 1) return {date.Year - 1, month + 12, date.DayOfMonth};
    return {date.Year, month, date.DayOfMonth};
}

Day FiscalYearStart(int year, int firstMonth) { return DayOf(year, firstMonth, 1); }

void MakePacked(vark::PackedDate &out, Day day, int firstMonth)
{
    const FiscalDay fiscal = FiscalOf(day, firstMonth);
    PutPair(out, fiscal.DayOfMonth);
    PutPair(out + 2, fiscal.Month);
    PutPair(out + 4, fiscal.Year - 1980);
    out[6] = 0;
}

void MakeSort(vark::SortDate &out, Day day, int firstMonth)
{
    const FiscalDay fiscal = FiscalOf(day, firstMonth);
    PutPair(out, fiscal.Year - 1980);
    PutPair(out + 2, fiscal.Month);
    PutPair(out + 4, fiscal.DayOfMonth);
    out[6] = 0;
}

void MakeCalendar(vark::PackedDate &out, Day day) { MakePacked(out, day, 1); }

bool DayOfPacked(const char *packed, int firstMonth, Day &day)
{
    return DayOfParts(Pair(packed), Pair(packed + 2), Pair(packed + 4), firstMonth, day);
}

bool DayOfSort(const char *sort, int firstMonth, Day &day)
{
    return DayOfParts(Pair(sort + 4), Pair(sort + 2), Pair(sort), firstMonth, day);
}

bool DayOfCalendar(const char *calendar, Day &day) { return DayOfPacked(calendar, 1, day); }

std::string DisplayDay(Day day)
{
    const CalendarDay date = CalendarOf(day);
    char text[] = "00.00.0000";
    PutPair(text, date.DayOfMonth);
    PutPair(text + 3, date.Month);
    PutPair(text + 6, date.Year / 100);
    PutPair(text + 8, date.Year % 100);
    return text;
}

} // namespace tools
