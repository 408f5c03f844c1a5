#include "src/values/currency.h"

#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <charconv>
#include <cstring>
#include <iterator>

namespace vark {

using text::CopyText;

namespace {

// Key 0: the currency in five bytes filled with NUL, then the date.
struct RateKey {
    char Waehrung[sizeof KurseRecord::Waehrung];
    SortDate Datum;
};

KeyBuffer KeyOf(const RateKey &rate)
{
    KeyBuffer key{};
    std::memcpy(key.Bytes, rate.Waehrung, sizeof rate.Waehrung);
    std::memcpy(key.Bytes + sizeof rate.Waehrung, rate.Datum, sizeof rate.Datum);
    return key;
}

bool IsInMonth(const KurseRecord &record, const RateKey &wanted)
{
    constexpr size_t yearAndMonth = 4;
    return std::memcmp(record.Datum, wanted.Datum, yearAndMonth) == 0 &&
           std::strncmp(record.Waehrung, wanted.Waehrung, sizeof record.Waehrung) == 0;
}

bool FindInOpenTable(ThreadContext &context, KurseRecord &record, RateKey &wanted)
{
    bool found = false;
    if (!GetEqual(context, &record, KeyOf(wanted), found, TableKurse)) return false;
    if (found) return true;
    wanted.Datum[4] = '0';
    wanted.Datum[5] = '1';
    if (!GetGreaterEqualF(context, &record, KeyOf(wanted), found, TableKurse)) return false;
    while (found && IsInMonth(record, wanted)) {
        if (record.Durchschnitt != 0) return true;
        if (!GetNextF(context, &record, found, TableKurse)) return false;
    }
    return false;
}

} // namespace

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
    RateKey wanted;
    CopyText(wanted.Waehrung, waehrung);
    CopyText(wanted.Datum, date);
    ToSortDate(wanted.Datum);
    const bool found = FindInOpenTable(context, record, wanted);
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
        Report(context, 1450, 0, nullptr, -1);
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
