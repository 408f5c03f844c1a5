#include "src/booking/tax_rates.h"

#include "src/frame/beliefs.h"
#include "src/frame/held_tables.h"
#include "src/frame/record_store.h"
#include "src/values/amounts.h"
#include "src/values/dates.h"

#include <algorithm>

namespace vark {

namespace {

// How a search for the rate of a day goes on from a row that began later.
enum class OlderRates {
    // With the next older row of the code. A first row of another code is none.
    Next,
    // With (code, 0) again, whatever row came first; no code is compared. Where (code, 0) is the row that
    // came first, this would never end: there it goes on like the other.
    FromZero,
};

// `folge` counts the rows from the first one's sequence number on.
bool FindRow(ThreadContext &context, uint16_t code, const PackedDate &date, OlderRates older,
             StekeRecord &row, uint16_t &folge, bool &found)
{
    if (!GetGreaterEqualF(context, &row, KeyOfShortNumber(code, 0), found, taxByCodeAndSequence))
        return false;
    if (older == OlderRates::Next) found = found && row.Code == code;
    if (!found) return true;
    folge = row.Folge;
    bool asksForZero = older == OlderRates::FromZero && (row.Code != code || row.Folge != 0);
    while (found && DateIsAfter(row.GueltigAb, date)) {
        if (folge == UINT16_MAX) {
            found = false;
            break;
        }
        ++folge;
        const KeyBuffer key = KeyOfShortNumber(code, asksForZero ? 0 : folge);
        if (!GetEqual(context, &row, key, found, taxByCodeAndSequence)) return false;
        Holds(!found || row.Code == code);
        asksForZero = false;
    }
    Holds(!found || !DateIsAfter(row.GueltigAb, date));
    return true;
}

bool FindRate(ThreadContext &context, uint16_t code, const PackedDate &date, OlderRates older,
              StekeRecord &row, uint16_t &folge, bool &found)
{
    found = false;
    Holds(code <= SteuerCodeMaske);
    Holds(date[0] != 0);
    HeldTables held(context);
    return Hold(held, TableSteke) && FindRow(context, code, date, older, row, folge, found);
}

} // namespace

bool FindTaxRate(ThreadContext &context, uint16_t code, const PackedDate &date, StekeRecord &row, bool &found)
{
    uint16_t folge = 0;
    const bool read = FindRate(context, code, date, OlderRates::Next, row, folge, found);
    Holds(!found || row.Code == code);
    return read;
}

bool FindPostingRate(ThreadContext &context, uint16_t code, const PackedDate &date, StekeRecord &row,
                     uint16_t &folge, bool &found)
{
    return FindRate(context, code, date, OlderRates::FromZero, row, folge, found);
}

bool RateFromAmounts(const AmountText &soll, const AmountText &haben, RateText &rate)
{
    const int64_t net = std::min(MagnitudeOf(soll), MagnitudeOf(haben));
    const int64_t tax = std::max(MagnitudeOf(soll), MagnitudeOf(haben)) - net;
    Holds(net >= 0);
    Holds(tax >= 0);
    if (net == 0) return false;
    AmountText netText;
    AmountOfMagnitude(netText, net, false);
    for (int64_t percent = 20; percent >= 1; --percent) {
        AmountText product;
        RateOfMagnitude(rate, percent * 100);
        PercentOfAmount(product, netText, rate);
        if (MagnitudeOf(product) == tax) return true;
    }
    Holds(net > 0);
    Holds(IsWholeAmount(netText));
    const double quotient = static_cast<double>(tax) / 100.0 / (static_cast<double>(net) / 100.0);
    return RateOfMagnitude(rate, RoundToDecimals(quotient * 100.0, 2));
}

} // namespace vark
