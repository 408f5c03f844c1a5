// What the books say of an account: sums up to a day from its month slots. The export VARK_HoleSaldo is
// defined here.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/account_records.h"
#include "src/model/tables.h"

#include <cstdint>

namespace vark {

// What the sums of an account contain besides the month of the date.
enum SumOption : uint32_t {
    SumEarlierMonths = 1, // the months of the fiscal year before it
    SumVortrag = 2,       // what was carried forward
};

// The Soll and Haben sums of an account (number right-justified, and the sums of its record) at the end of
// the day `date`: the date's month, less its postings after that day, and what the option bits add. On the
// last day of month 12 slot 0 is in it as well. Postings that are not yet in the month's slot don't count.
// The postings are read from `bube`: TableBube, or a free slot under which the caller has opened the bube of
// another year. False when the record store failed, a sum has no room in an amount, or the date has no month
// 1 to 12; `soll` and `haben` then hold nothing of use.
bool AccountSumsToDate(ThreadContext &context, const AccountNumber &konto, const AccountSums &sums,
                       const PackedDate &date, uint32_t options, TableId bube, SollHaben &result);

} // namespace vark
