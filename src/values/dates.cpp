#include "src/values/dates.h"

#include "src/frame/message_names.h"
#include "src/frame/thread_context.h"
#include "src/values/digits.h"

#include <cstring>

namespace vark {

namespace {

int TwoDigits(const char *text)
{
    const int tens = IsDigit(text[0]) ? text[0] - '0' : 0;
    const int units = IsDigit(text[1]) ? text[1] - '0' : 0;
    return tens * 10 + units;
}

void WriteTwoDigits(char *text, int value)
{
    const int rest = (value % 100 + 100) % 100;
    text[0] = static_cast<char>('0' + rest / 10);
    text[1] = static_cast<char>('0' + rest % 10);
}

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysInCalendarMonth(int month, int year)
{
    if (month == 4 || month == 6 || month == 9 || month == 11) return 30;
    if (month != 2) return 31;
    return IsLeapYear(year) ? 29 : 28;
}

// A text that is read from the left and never beyond its end.
struct Reader {
    const char *At;
    const char *End;
};

char Peek(const Reader &reader) { return reader.At < reader.End ? *reader.At : '\0'; }

// The digits at the reader as a number, 0 for none; a number too large to be a year or a day stays too large.
int ReadNumber(Reader &reader)
{
    int value = 0;
    for (; IsDigit(Peek(reader)); ++reader.At) {
        value = value * 10 + (*reader.At - '0');
        if (value > 99'999) value = 99'999;
    }
    return value;
}

Reader ReaderOf(const char *text, size_t size) { return {text, text + strnlen(text, size)}; }

// Goes over to `other`, the part of a text of today that stands for what was not written.
void ReadOn(Reader &reader, const char *other, size_t size, size_t offset)
{
    const Reader whole = ReaderOf(other, size);
    reader = {whole.At + offset < whole.End ? whole.At + offset : whole.End, whole.End};
}

// Year, month and day of today from "TT.MM.JJJJ" as one number that grows with time.
int TodayOrder(const ThreadContext &context)
{
    Reader reader = ReaderOf(context.TodayLong, sizeof context.TodayLong);
    const int day = ReadNumber(reader);
    if (Peek(reader) == '.') ++reader.At;
    const int month = ReadNumber(reader);
    if (Peek(reader) == '.') ++reader.At;
    return (ReadNumber(reader) * 100 + month) * 100 + day;
}

} // namespace

int DayOf(const PackedDate &date) { return TwoDigits(date); }

int FiscalMonthOf(const PackedDate &date) { return TwoDigits(date + 2); }

int FiscalYearOf(const PackedDate &date) { return TwoDigits(date + 4); }

void MakePackedDate(PackedDate &date, int day, int fiscalMonth, int year)
{
    WriteTwoDigits(date, day);
    WriteTwoDigits(date + 2, fiscalMonth);
    WriteTwoDigits(date + 4, year);
    date[6] = 0;
}

DateFault ParseDateText(const ThreadContext &context, char *text, size_t size, bool notAfterToday)
{
    Reader reader = ReaderOf(text, size);
    while (Peek(reader) == ' ') {
        ++reader.At;
    }
    // Four and six digits without dots are day, month and year by pairs.
    char dotted[8];
    const auto length = reader.End - reader.At;
    Reader digits = reader;
    ReadNumber(digits);
    if (digits.At == reader.End && (length == 4 || length == 6)) {
        std::memcpy(dotted, reader.At, 2);
        dotted[2] = '.';
        std::memcpy(dotted + 3, reader.At + 2, 2);
        dotted[5] = '.';
        if (length == 6) std::memcpy(dotted + 6, reader.At + 4, 2);
        reader = {dotted, dotted + (length == 6 ? 8 : 5)};
    } else if (length > 0 && reader.End[-1] == '.') {
        --reader.End;
    }

    const int day = ReadNumber(reader);
    if (day < 1 || day > 31) return DateBadDay;
    if (reader.At == reader.End) ReadOn(reader, context.TodayShort, sizeof context.TodayShort, 2);
    if (Peek(reader) != '.') return DateBadMonth;
    ++reader.At;
    const int month = ReadNumber(reader);
    if (month < 1 || month > 12) return DateBadMonth;
    if (day > (month == 2 ? 29 : DaysInCalendarMonth(month, 0))) return DateBadDay;
    if (reader.At == reader.End) ReadOn(reader, context.TodayShort, sizeof context.TodayShort, 5);
    if (Peek(reader) != '.') return DateBadYear;
    ++reader.At;
    int year = ReadNumber(reader);
    if (year < 1 || year > 2079 || (year >= 100 && year < firstYear)) return DateBadYear;
    if (year < 100) year += year >= 80 ? 1900 : 2000;
    if (day > DaysInCalendarMonth(month, year)) return DateBadDay;
    if (notAfterToday && (year * 100 + month) * 100 + day > TodayOrder(context)) return DateAfterToday;

    int fiscalMonth = month - context.FirstFiscalMonth + 1;
    int fiscalYear = year - firstYear;
    if (fiscalMonth < 1) {
        fiscalMonth += 12;
        --fiscalYear;
    }
    if (fiscalYear < 0) return DateBadYear;
    PackedDate date;
    MakePackedDate(date, day, fiscalMonth, fiscalYear);
    std::memcpy(text, date, size < sizeof date ? size : sizeof date);
    return DateGood;
}

void FormatDate(const PackedDate &date, DateText &out, bool isFourDigitYear, int firstFiscalMonth)
{
    out[0] = 0;
    if (date[0] == 0) return;
    const int daysInMonth = DaysInFiscalMonth(FiscalMonthOf(date), FiscalYearOf(date), firstFiscalMonth);
    const int day = DayOf(date) < daysInMonth ? DayOf(date) : daysInMonth;
    int month = FiscalMonthOf(date) + firstFiscalMonth - 1;
    int year = firstYear + FiscalYearOf(date);
    if (month > 12) {
        month -= 12;
        ++year;
    }
    WriteTwoDigits(out, day);
    out[2] = '.';
    WriteTwoDigits(out + 3, month);
    out[5] = '.';
    if (isFourDigitYear) {
        WriteTwoDigits(out + 6, year / 100);
        WriteTwoDigits(out + 8, year);
        out[10] = 0;
    } else {
        WriteTwoDigits(out + 6, year);
        out[8] = 0;
    }
}

void PackedToCalendar(const PackedDate &date, PackedDate &out, int firstFiscalMonth)
{
    if (date[0] == 0) {
        out[0] = 0;
        return;
    }
    const int month = (FiscalMonthOf(date) + firstFiscalMonth + 10) % 12 + 1;
    const int year = FiscalYearOf(date) + (month < firstFiscalMonth ? 1 : 0);
    MakePackedDate(out, DayOf(date), month, year);
}

int DaysInFiscalMonth(int fiscalMonth, int year, int firstFiscalMonth)
{
    int month = fiscalMonth + firstFiscalMonth - 1;
    if (month > 12) {
        month -= 12;
        ++year;
    }
    return DaysInCalendarMonth(month, year < firstYear ? year + firstYear : year);
}

bool IsMonthEnd(bool isFiscalYearEnd, const PackedDate &date, PackedDate *monthEnd, int firstFiscalMonth)
{
    PackedDate copy{};
    if (date[0] != 0) {
        const int fiscalMonth = FiscalMonthOf(date);
        MakePackedDate(copy, DaysInFiscalMonth(fiscalMonth, FiscalYearOf(date), firstFiscalMonth),
                       isFiscalYearEnd ? 12 : fiscalMonth, FiscalYearOf(date));
    }
    const bool isEnd = copy[0] != 0 && std::memcmp(copy, date, sizeof copy - 1) == 0;
    if (monthEnd != nullptr) std::memcpy(*monthEnd, copy, sizeof copy);
    return isEnd;
}

bool PreviousDay(PackedDate &date, int firstFiscalMonth)
{
    if (date[0] == 0) return false;
    int day = DayOf(date) - 1;
    int fiscalMonth = FiscalMonthOf(date);
    int year = FiscalYearOf(date);
    if (day < 1) {
        --fiscalMonth;
        if (fiscalMonth < 1) {
            fiscalMonth = 12;
            --year;
        }
        if (year < 0) return false;
        day = DaysInFiscalMonth(fiscalMonth, year, firstFiscalMonth);
    }
    MakePackedDate(date, day, fiscalMonth, year);
    return true;
}

bool DateIsAfter(const PackedDate &a, const PackedDate &b)
{
    if (a[0] == 0) return false;
    if (b[0] == 0) return true;
    const auto order = [](const PackedDate &date) {
        return (FiscalYearOf(date) * 100 + FiscalMonthOf(date)) * 100 + DayOf(date);
    };
    return order(a) > order(b);
}

int PostableYear(const ThreadContext &context, int year)
{
    const auto yearOf = [](const char *text, size_t size) {
        Reader reader = ReaderOf(text, size);
        return ReadNumber(reader);
    };
    const int fullYear = firstYear + year;
    const int upperYear = yearOf(context.MandantYear, sizeof context.MandantYear);
    const int lowerYear = context.FirstOpenYear[0] == 0
                              ? upperYear
                              : yearOf(context.FirstOpenYear, sizeof context.FirstOpenYear);
    return lowerYear <= fullYear && fullYear <= upperYear ? fullYear : 0;
}

void ToSortDate(PackedDate &date)
{
    if (date[0] == 0) return;
    char pair[2];
    std::memcpy(pair, date, 2);
    std::memcpy(date, date + 4, 2);
    std::memcpy(date + 4, pair, 2);
}

int CalendarYearOf(int fiscalMonth, int year, int firstFiscalMonth)
{
    return firstYear + year + (fiscalMonth + firstFiscalMonth > 13 ? 1 : 0);
}

bool PeriodOfCode(int code, int year, bool isCalendar, int firstFiscalMonth, FiscalPeriod &period)
{
    if (code < 1 || code > 17) return false;
    int first = code;
    int last = code;
    if (code == 17) {
        first = 1;
        last = 12;
    } else if (code > 12) {
        first = 3 * code - 38;
        last = 3 * code - 36;
    }
    if (isCalendar && code > 12) {
        if (first < firstFiscalMonth) --year;
        first = (first - firstFiscalMonth + 12) % 12 + 1;
        last = (last - firstFiscalMonth + 12) % 12 + 1;
    }
    const int lastYear = first > last ? year + 1 : year;
    period.FirstMonth = first;
    period.LastMonth = last;
    period.Year = year;
    MakePackedDate(period.FirstDay, 1, first, year);
    MakePackedDate(period.LastDay, DaysInFiscalMonth(last, lastYear, firstFiscalMonth), last, lastYear);
    return true;
}

int CheckDateField(const ThreadContext &context, char *text, size_t size)
{
    if (text[0] == 0) return Message::EingabeFehlt;
    switch (ParseDateText(context, text, size, false)) {
    case DateGood: return 0;
    case DateBadDay: return Message::TagUnzulaessig;
    case DateBadMonth: return Message::MonatUnzulaessig;
    case DateBadYear:
    case DateAfterToday: break; // which was not asked for
    }
    return Message::JahrUnzulaessig;
}

int CheckYear(const ThreadContext &context, int year, int archiveYear)
{
    if (archiveYear != 0) return firstYear + year == archiveYear ? 0 : Message::DatumAusserhalbDesArchivjahrs;
    return PostableYear(context, year) != 0 ? 0 : Message::DatumNichtBebuchbar;
}

int CheckDatePair(const PackedDate &from, const PackedDate &to)
{
    if (FiscalYearOf(from) != FiscalYearOf(to)) return Message::GeschaeftsjahreVerschieden;
    return DateIsAfter(from, to) ? Message::VonHinterBis : 0;
}

int CheckYearField(const char *text, size_t size, int &year)
{
    Reader reader = ReaderOf(text, size);
    while (Peek(reader) == ' ') {
        ++reader.At;
    }
    if (!IsDigit(Peek(reader))) return Message::JahresangabeUnzulaessig;
    int value = ReadNumber(reader);
    if (reader.At != reader.End) return Message::JahresangabeUnzulaessig;
    if (value >= 100) value -= firstYear;
    if (value < 0 || value > 99) return Message::JahresangabeUnzulaessig;
    year = value;
    return 0;
}

} // namespace vark
