// Dates as the books hold them, and the fiscal calendar behind them.
//
// PackedDate is six digits "DDMMJJ" and NUL. MM is the month inside the fiscal year: 01 is the calendar month
// `firstFiscalMonth` (1..12). JJ is the calendar year in which the fiscal year begins, counted from 1980.
// With firstFiscalMonth 7 the 15 March 1998 is "150917". An empty text (first byte NUL) is no date. SortDate
// is the same digits as "JJMMDD", so that byte order is the order of time. CalendarPacked is "DDMMJJ" with
// the calendar month and the calendar year from 1980.
//
// How fields are read: a place that holds no digit counts as 0. Days and months that no calendar knows give
// some date or text, never a write outside the result.
#pragma once

#include "src/model/text_forms.h"

#include <cstddef>

namespace vark {

struct ThreadContext;

using DateText = char[11]; // "TT.MM.JJJJ" or "TT.MM.JJ"

inline constexpr int firstYear = 1980;

// The parts of a PackedDate as numbers 0..99.
int DayOf(const PackedDate &date);
int FiscalMonthOf(const PackedDate &date);
int FiscalYearOf(const PackedDate &date); // from 1980

// Writes "DDMMJJ"; each number is taken modulo 100. The year counts from 1980.
void MakePackedDate(PackedDate &date, int day, int fiscalMonth, int year);

// What is wrong with a date text.
enum DateFault : int { DateGood = 0, DateBadDay = 1, DateBadMonth = 2, DateBadYear = 3, DateAfterToday = 4 };

// Reads what a person or a caller wrote and puts its PackedDate in the same buffer; a refused text is left
// as it is. Leading blanks and one trailing dot do not matter. "15" is the 15th of this month, "15.3" and
// "1503" are in this year, "150398", "15.3.98" and "15.3.1998" are whole; what follows the year is ignored.
// Years 80..99 are 19xx and 1..79 are 20xx; a year 0 is refused, and so is a date before `firstFiscalMonth`
// of 1980, which no PackedDate can hold. With `notAfterToday` a date after TodayLong is refused as well.
// Takes FirstFiscalMonth, TodayShort and TodayLong from the context. `size` is that of the whole buffer, at
// least 7; no more than that is read. Whether the year can be posted to is PostableYear's question.
DateFault ParseDateText(const ThreadContext &context, char *text, size_t size, bool notAfterToday);

// "15.03.98" or, with `isFourDigitYear`, "15.03.1998"; an empty date gives an empty text. A day beyond the
// end of its month is shown as the last of it.
void FormatDate(const PackedDate &date, DateText &out, bool isFourDigitYear, int firstFiscalMonth);

// The CalendarPacked form; empty for an empty date. `out` may be `date`. A year after 2079 loses its century.
void PackedToCalendar(const PackedDate &date, PackedDate &out, int firstFiscalMonth);

// 28..31, for a month inside the fiscal year that began in `year`, counted from 1980 or in full.
int DaysInFiscalMonth(int fiscalMonth, int year, int firstFiscalMonth);

// True if the date is the last day of its month or, with `isFiscalYearEnd`, the last day of the fiscal year.
// `monthEnd`, if not null, gets the date with its month's last day and, with the flag, month 12 (the day is
// still that of the date's own month). False for an empty date, with an empty `monthEnd`.
bool IsMonthEnd(bool isFiscalYearEnd, const PackedDate &date, PackedDate *monthEnd, int firstFiscalMonth);

// Goes one day back. False, and the date stays, if that would be before the fiscal year 1980, or for an
// empty date.
bool PreviousDay(PackedDate &date, int firstFiscalMonth);

// True if a is later than b. An empty date is before all others.
bool DateIsAfter(const PackedDate &a, const PackedDate &b);

// The full year of `year` (counted from 1980) if it can be posted to, else 0: from FirstOpenYear to
// MandantYear or, when FirstOpenYear is empty, MandantYear alone.
int PostableYear(const ThreadContext &context, int year);

// PackedDate to SortDate in the same field, and a SortDate back to a PackedDate. An empty one stays empty.
void ToSortDate(PackedDate &date);

// The calendar year, in full, in which a month of the fiscal year `year` (from 1980) lies.
int CalendarYearOf(int fiscalMonth, int year, int firstFiscalMonth);

// A reporting period by its code: 1..12 a fiscal month, 13..16 a quarter, 17 the whole year.
struct FiscalPeriod {
    int FirstMonth; // fiscal months
    int LastMonth;
    int Year; // fiscal year of the first day, from 1980
    PackedDate FirstDay;
    PackedDate LastDay;
};

// The period of `code` in the year `year` (from 1980). With `isCalendar`, quarters and the year are those of
// the calendar year 1980 + year, wherever the fiscal year begins. False, and `period` stays, for a code
// outside 1..17: code 0 is a free pair of dates.
bool PeriodOfCode(int code, int year, bool isCalendar, int firstFiscalMonth, FiscalPeriod &period);

// Checks of dialog fields. Each returns 0 or the number of the message to show.

// A date field: 1439 when empty, 1440..1442 for a bad day, month or year. In place as ParseDateText; `size`
// likewise.
int CheckDateField(const ThreadContext &context, char *text, size_t size);

// A fiscal year, from 1980: 1438 if it cannot be posted to; for a report on an archive (`archiveYear` in
// full, 0 for the current books) 1460 if it is not that year.
int CheckYear(const ThreadContext &context, int year, int archiveYear);

// A pair of dates: 1457 if not of one fiscal year, else 1443 if `from` lies after `to`.
int CheckDatePair(const PackedDate &from, const PackedDate &to);

// A year field, in full or counted from 1980: 1437 for what is no number or gives a year outside 0..99.
// `year` gets the year from 1980 on success only.
int CheckYearField(const char *text, size_t size, int &year);

} // namespace vark
