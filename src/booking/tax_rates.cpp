#include "src/booking/tax_rates.h"

#include "src/frame/record_store.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"

#include <algorithm>

namespace vark {

namespace {

bool FindInOpenTable(ThreadContext &context, uint16_t code, const PackedDate &date, StekeRecord &row,
                     bool &found)
{
    if (!GetGreaterEqualF(context, &row, KeyOfShortNumber(code, 0), found, taxByCodeAndSequence))
        return false;
    found = found && row.Code == code;
    while (found && DateIsAfter(row.GueltigAb, date)) {
        if (row.Folge == UINT16_MAX) {
            found = false;
            break;
        }
        const KeyBuffer older = KeyOfShortNumber(code, static_cast<uint16_t>(row.Folge + 1));
        if (!GetEqual(context, &row, older, found, taxByCodeAndSequence)) return false;
    }
    return true;
}

} // namespace

bool FindTaxRate(ThreadContext &context, uint16_t code, const PackedDate &date, StekeRecord &row, bool &found)
{
    found = false;
    if (!OpenTable(context, TableSteke)) return false;
    const bool read = FindInOpenTable(context, code, date, row, found);
    CloseTable(context, TableSteke);
    return read;
}

bool RateFromAmounts(const AmountText &soll, const AmountText &haben, RateText &rate)
{
    const int64_t net = std::min(MagnitudeOf(soll), MagnitudeOf(haben));
    const int64_t tax = std::max(MagnitudeOf(soll), MagnitudeOf(haben)) - net;
    if (net == 0) return false;
    AmountText netText;
    AmountOfMagnitude(netText, net, false);
    for (int64_t percent = 20; percent >= 1; --percent) {
        AmountText product;
        RateOfMagnitude(rate, percent * 100);
        PercentOfAmount(product, netText, rate);
        if (MagnitudeOf(product) == tax) return true;
    }
    const double quotient = static_cast<double>(tax) / 100.0 / (static_cast<double>(net) / 100.0);
    return RateOfMagnitude(rate, RoundToDecimals(quotient * 100.0, 2));
}

} // namespace vark
