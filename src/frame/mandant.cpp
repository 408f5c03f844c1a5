#include "src/frame/mandant.h"

#include "src/frame/lifecycle.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/platform/platform.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <array> // std::begin
#include <charconv>
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

// Decimal text of a number; empty where the field does not hold it.
template <size_t Size> void NumberText(char (&out)[Size], int32_t number)
{
    const std::to_chars_result result = std::to_chars(out, out + Size - 1, number);
    *(result.ec == std::errc() ? result.ptr : out) = 0;
}

void TwoDigits(char *out, int number)
{
    out[0] = static_cast<char>('0' + number / 10 % 10);
    out[1] = static_cast<char>('0' + number % 10);
}

// Tables that every call on a Mandant may need, in the order of their opening.
constexpr TableId coreTables[] = {TableSako, TableKred,  TableDebi, TableBube, TableSteke,   TableKore,
                                  TableKobu, TableSplit, TableBat,  TableUser, TableKoschaze};

} // namespace

int32_t SelectMandant(ThreadContext &context, int32_t number, FistaRecord &record)
{
    std::memset(&record, 0, sizeof record);
    record.Nummer = static_cast<int16_t>(number);
    if (context.OpenCounts[TableFista] == 0 && !OpenTable(context, TableFista)) return engineFailure;
    bool found = false;
    const KeyBuffer key = KeyOfShortNumber(static_cast<uint16_t>(record.Nummer));
    if (!GetEqual(context, &record, key, found, TableFista)) return engineFailure;
    if (record.Nummer != number) found = false; // a number that the record's field cannot hold

    char year[sizeof context.MandantYear];
    CopyText(year, record.UpperYear);
    if (found && context.CurrentMandant == number && std::strcmp(context.WorkYear, year) == 0) {
        // After an unknown Mandant MandantYear holds what the buffer held; it is set again here.
        CopyText(context.MandantYear, record.UpperYear);
        return 1;
    }
    CopyText(context.MandantYear, record.UpperYear);
    if (!found) return mandantUnknown;

    CloseAllTables(context);
    context.CurrentMandant = -1;
    context.MandantSuffix[0] = 0;
    if (number != 1) NumberText(context.MandantSuffix, number - 1);
    SelectYear(context, year);
    CopyText(context.FirstOpenYear, record.LowerYear);
    for (const TableId table : coreTables) {
        if (!OpenTable(context, table)) return engineFailure;
    }
    context.FirstFiscalMonth = record.FirstFiscalMonth != 0 ? record.FirstFiscalMonth : 1;
    context.VatIdPresent = record.UstId[0] != 0 ? 1 : 0;
    context.CurrentMandant = number;
    context.CostAccountingOn = record.Kostenrechnung;
    context.CostsRequired = record.KostenPflicht;
    CopyText(context.DefaultLand, record.Land);
    CopyText(context.MandantWaehrung, record.Waehrung);
    RefreshToday(context);
    return 1;
}

int32_t SelectMandantOrReport(ThreadContext &context, int32_t number, FistaRecord &record)
{
    const int32_t result = SelectMandant(context, number, record);
    if (result >= 1 || result == engineFailure) return result;
    return Report(context, Message::ExistiertNicht, result, "Mandant", -1);
}

bool SelectYear(ThreadContext &context, const char *year)
{
    if (std::strcmp(year, context.WorkYear) == 0) return true;
    CopyText(context.WorkYear, year);
    context.YearDirectory[0] = pathSeparator;
    std::memcpy(context.YearDirectory + 1, context.WorkYear, sizeof context.WorkYear);
    int32_t value = 0;
    std::from_chars(context.WorkYear, context.WorkYear + std::strlen(context.WorkYear), value);
    NumberText(context.PreviousYear, value - 1);

    int32_t counts[slotCount];
    std::copy(std::begin(context.OpenCounts), std::end(context.OpenCounts), counts);
    CloseAllTables(context);
    for (int slot = 0; slot <= TablePreviousSako; ++slot) {
        if (counts[slot] != 0 && !OpenTable(context, static_cast<TableKeyCode>(slot))) return false;
    }
    return true;
}

void RefreshToday(ThreadContext &context)
{
    const CalendarDate today = SystemToday();
    const int year = today.Year % 100;

    TwoDigits(context.TodayPacked, today.Day);
    TwoDigits(context.TodayPacked + 2, today.Month);
    TwoDigits(context.TodayPacked + 4, (year + 20) % 100); // counted from 1980
    context.TodayPacked[6] = 0;

    CopyText(context.TodayLong, "00.00.2000");
    TwoDigits(context.TodayLong, today.Day);
    TwoDigits(context.TodayLong + 3, today.Month);
    if (year >= 80) TwoDigits(context.TodayLong + 6, 19);
    TwoDigits(context.TodayLong + 8, year);

    std::memcpy(context.TodayShort, context.TodayLong, 6);
    TwoDigits(context.TodayShort + 6, year);
    context.TodayShort[8] = 0;
}

} // namespace vark
