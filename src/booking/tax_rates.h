// The rate that a tax code had on a day.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/account_records.h"

#include <cstdint>

namespace vark {

// The key of steke that holds code and sequence number.
inline constexpr TableKeyCode taxByCodeAndSequence = KeyCode(TableSteke, 2);

// The rate of `code` (1 to 31) that was valid at `date`: the newest one that had begun by then. `row` gets
// its record. False for a failure of the record store; `found` tells whether there is such a rate. Opens and
// closes steke.
bool FindTaxRate(ThreadContext &context, uint16_t code, const PackedDate &date, StekeRecord &row,
                 bool &found);

// The rate that a posting of `date` takes for the code of its tax key. Other than FindTaxRate it takes the
// first row at or behind (code, 0) whatever its code, and where that began later it looks at (code, 0) next.
// `folge` counts the rows on the way from the first one's sequence number on. False for a failure of the
// record store.
bool FindPostingRate(ThreadContext &context, uint16_t code, const PackedDate &date, StekeRecord &row,
                     uint16_t &folge, bool &found);

// The rate that makes the smaller of two amounts, a net one, the greater. Whole percents are tried first, as
// the tax was rounded to Pfennig. False when no rate can be told: a net of zero, or beyond 99,99.
bool RateFromAmounts(const AmountText &soll, const AmountText &haben, RateText &rate);

} // namespace vark
