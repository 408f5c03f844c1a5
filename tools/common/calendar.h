// Days of the ordinary calendar, and their forms in a Mandant's fiscal calendar. Counted apart from the
// library's own conversions, so that the one can be held against the other.
#pragma once

#include "src/model/text_forms.h"

#include <string>

namespace tools {

// A day as the number of days since 1 January 1970.
using Day = int;

struct CalendarDay {
    int Year;
    int Month; // 1..12
    int DayOfMonth;
};

// Between days and their dates; months from 1, years in full.
Day DayOf(int year, int month, int dayOfMonth);
CalendarDay CalendarOf(Day day);
int DaysInMonth(int year, int month);
int WeekdayOf(Day day); // 0 Monday .. 6 Sunday

// Where a day lies in a fiscal year that begins with the calendar month `firstMonth`.
struct FiscalDay {
    int Year;  // calendar year in which the fiscal year begins, in full
    int Month; // 1..12
    int DayOfMonth;
};

// The fiscal day of a day.
FiscalDay FiscalOf(Day day, int firstMonth);

// First day of a fiscal year, and of the one after it.
Day FiscalYearStart(int year, int firstMonth);

// Forms of the records. The year is counted from 1980: only days of 1980 to 2079 have them.
void MakePacked(vark::PackedDate &out, Day day, int firstMonth);
void MakeSort(vark::SortDate &out, Day day, int firstMonth);
void MakeCalendar(vark::PackedDate &out, Day day);

// The day of a PackedDate or SortDate; false for what is no day, and for an empty field.
bool DayOfPacked(const char *packed, int firstMonth, Day &day);
bool DayOfSort(const char *sort, int firstMonth, Day &day);
bool DayOfCalendar(const char *calendar, Day &day);

// "31.03.1998"
std::string DisplayDay(Day day);

} // namespace tools
