#include "src/booking/tax_rates.h"

#include "src/frame/record_store.h"
#include "src/values/dates.h"

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

} // namespace vark
