// Sums over the pairs and months of an account's record. An empty amount counts as zero. Every addition is
// checked: false is an overflow, and the total then holds nothing of use. Months are fiscal ones, 1 to 12,
// both ends included; a range that ends before it begins adds nothing, one beyond 1 to 12 is false.
#pragma once

#include "src/model/account_records.h"

#include <cstdint>

namespace vark {

// An empty amount goes out as the zero amount.
void CopyAmounts(SollHaben &to, const SollHaben &from);
void CopyAmount(AmountText &to, const AmountText &from);

// True unless both sides are zero, empty, or a negative zero.
bool HasAmount(const SollHaben &pair);

// total += more, each side by itself.
bool AddPair(SollHaben &total, const SollHaben &more);

// balance += Soll - Haben, and balance += Haben - Soll.
bool AddBalance(AmountText &balance, const SollHaben &pair);
bool DeductBalance(AmountText &balance, const SollHaben &pair);

// total += the pairs of the months.
bool SumMonths(SollHaben &total, const AccountSums &sums, int von, int bis);

// total += the amounts of the months, as a Kostenstelle has them.
bool SumMonths(AmountText &total, const AmountText (&months)[12], int von, int bis);

// total += one side of the months.
bool SumMonthsSoll(AmountText &total, const AccountSums &sums, int von, int bis);
bool SumMonthsHaben(AmountText &total, const AccountSums &sums, int von, int bis);

// balance += Soll - Haben of the months, and balance += Haben - Soll.
bool AddMonthBalances(AmountText &balance, const AccountSums &sums, int von, int bis);
bool DeductMonthBalances(AmountText &balance, const AccountSums &sums, int von, int bis);

// Postings of the months, counts being signed as the record holds them; none for months beyond 1 to 12.
int32_t CountPostings(const AccountSums &sums, int von, int bis);

} // namespace vark
