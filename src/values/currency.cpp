#include "src/values/currency.h"

#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <array> // std::size
#include <charconv>
#include <cstring>

namespace vark {

using text::CopyText;
using text::SameText;

namespace {

bool FindInOpenTable(ThreadContext &context, KurseRecord &record, const WaehrungText &waehrung,
                     SortDate &date)
{
    bool found = false;
    if (!GetEqual(context, &record, KeyOfRate(waehrung, date), found, TableKurse)) return false;
    if (found) return true;
    BeginOfMonth(date);
    if (!GetGreaterEqualF(context, &record, KeyOfRate(waehrung, date), found, TableKurse)) return false;
    while (found && IsRateOfMonth(record, waehrung, date)) {
        if (record.Durchschnitt != 0) return true;
        if (!GetNextF(context, &record, found, TableKurse)) return false;
    }
    return false;
}

} // namespace

KeyBuffer KeyOfRate(const WaehrungText &waehrung, const SortDate &date)
{
    KeyBuffer key{};
    CopyText(key.Bytes, sizeof waehrung, waehrung, sizeof waehrung);
    std::memcpy(key.Bytes + sizeof waehrung, date, sizeof date);
    return key;
}

void BeginOfMonth(SortDate &date)
{
    date[4] = '0';
    date[5] = '1';
}

bool IsRateOfMonth(const KurseRecord &record, const WaehrungText &waehrung, const SortDate &date)
{
    constexpr size_t yearAndMonth = 4;
    return std::memcmp(record.Datum, date, yearAndMonth) == 0 && SameText(record.Waehrung, waehrung);
}

int32_t CodeOfUnits(int32_t units)
{
    for (int32_t code = firstIndexedCode; code < static_cast<int32_t>(std::size(unitTable)); ++code) {
        if (unitTable[code] == units) return code;
    }
    return units;
}

bool FindRate(ThreadContext &context, KurseRecord &record, const char *waehrung, const PackedDate &date)
{
    if (!OpenTable(context, TableKurse)) return false;
    WaehrungText wanted;
    CopyText(wanted, waehrung);
    SortDate day;
    CopyText(day, date);
    ToSortDate(day);
    const bool found = FindInOpenTable(context, record, wanted, day);
    CloseTable(context, TableKurse);
    return found;
}

bool ConvertAmount(const ThreadContext &context, const KurseRecord &rate, const AmountText &amount,
                   AmountText &out)
{
    const bool isNegative = IsNegativeAmount(amount);
    const double amountValue = static_cast<double>(MagnitudeOf(amount)) / 100.0;
    const double rateValue = static_cast<double>(MagnitudeOf(rate.Kurs)) / 100.0;
    const double value = amountValue * rateValue / UnitsOfCode(rate.Einheit);
    AmountText converted;
    if (!AmountOfMagnitude(converted, value < 0.01 ? 0 : RoundToDecimals(value, 2), isNegative)) {
        Report(context, Message::BetragNichtUmrechenbar, 0, nullptr, -1);
        return false;
    }
    CopyText(out, converted);
    return true;
}

void FormatRateRow(const KurseRecord &record, RateRow &out, int firstFiscalMonth)
{
    PackedDate date;
    CopyText(date, record.Datum);
    ToSortDate(date);
    DateText dateText;
    FormatDate(date, dateText, false, firstFiscalMonth);
    AmountColumn kurs = {};
    CopyText(kurs, sizeof kurs, record.Kurs, sizeof record.Kurs);
    PadAmountColumn(kurs);
    char units[12] = {};
    std::to_chars(units, units + sizeof units - 1, UnitsOfCode(record.Einheit));

    const char *const parts[] = {dateText, record.Durchschnitt != 0 ? "D" : "", kurs, units};
    size_t length = 0;
    for (const char *part : parts) {
        if (part != parts[0]) out[length++] = '\t';
        CopyText(out + length, sizeof out - length, part, sizeof out);
        length += std::strlen(out + length);
    }
}

} // namespace vark
