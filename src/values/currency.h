// Foreign currency: rates of exchange (table kurse) by day or as the average of a month, and the conversion
// of amounts into the Mandant's currency.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/company_records.h"
#include "src/model/text_forms.h"

#include <cstdint>

namespace vark {

// How many foreign units a Kurs stands for is stored as a code: 1 and 10 as they are, and from 100 on the
// power of ten (100 is 2, 100000 is 5). Both ways leave every other number as it is, so that the plain
// numbers 2 to 5 do not survive the way there and back.
inline constexpr int32_t unitTable[] = {1, 10, 100, 1000, 10000, 100000};
inline constexpr int32_t firstIndexedCode = 2; // codes from here to the end of the table are indexes

constexpr int32_t UnitsOfCode(int32_t code)
{
    constexpr int32_t end = sizeof unitTable / sizeof unitTable[0];
    return code >= firstIndexedCode && code < end ? unitTable[code] : code;
}
int32_t CodeOfUnits(int32_t units);

// A currency's code, up to four characters.
using WaehrungText = char[sizeof KurseRecord::Waehrung];

// Key 0 of kurse: the currency filled with NUL, then the date; an empty one comes before all of them.
KeyBuffer KeyOfRate(const WaehrungText &waehrung, const SortDate &date);

// Makes a date the first day of its month.
void BeginOfMonth(SortDate &date);

// Whether a rate is one of the currency and of the month in which `date` lies.
bool IsRateOfMonth(const KurseRecord &record, const WaehrungText &waehrung, const SortDate &date);

// The rate of a currency at a date: that of the very day or, failing that, the average rate of its month. A
// rate of another day never stands in. `waehrung` is cut to four characters. False when there is none or the
// record store failed; `record` then holds nothing of use. Opens and closes kurse.
bool FindRate(ThreadContext &context, KurseRecord &record, const char *waehrung, const PackedDate &date);

// out = amount x Kurs / units, rounded half up to the Pfennig and with the mark of the amount; less than one
// Pfennig is zero. Where the result does not fit: message 1450, false, and `out` is as it was.
bool ConvertAmount(const ThreadContext &context, const KurseRecord &rate, const AmountText &amount,
                   AmountText &out);

// A line of the list of rates, "15.03.98<Tab>D<Tab>Kurs<Tab>100": date, "D" for an average rate, the Kurs as
// in a report column, the number of units.
using RateRow = char[64];
void FormatRateRow(const KurseRecord &record, RateRow &out, int firstFiscalMonth);

} // namespace vark
