#include "src/values/sums.h"

#include "src/values/amounts.h"
#include "text/fixed_text.h"

namespace vark {

namespace {

// Calls `add` with each month's index; false as soon as it is, and for months that no record has.
template <typename Add> bool ForMonths(int von, int bis, Add add)
{
    if (von > bis) return true;
    if (von < 1 || bis > 12) return false;
    for (int month = von; month <= bis; ++month) {
        if (!add(month - 1)) return false;
    }
    return true;
}

} // namespace

void CopyAmount(AmountText &to, const AmountText &from)
{
    text::CopyText(to, from[0] != 0 ? from : zeroAmount);
}

void CopyAmounts(SollHaben &to, const SollHaben &from)
{
    CopyAmount(to.Soll, from.Soll);
    CopyAmount(to.Haben, from.Haben);
}

bool HasAmount(const SollHaben &pair) { return !IsZeroAmount(pair.Soll) || !IsZeroAmount(pair.Haben); }

bool AddPair(SollHaben &total, const SollHaben &more)
{
    return AccumulateAmount(total.Soll, more.Soll) && AccumulateAmount(total.Haben, more.Haben);
}

bool AddBalance(AmountText &balance, const SollHaben &pair)
{
    return AccumulateAmount(balance, pair.Soll) && DeductAmount(balance, pair.Haben);
}

bool DeductBalance(AmountText &balance, const SollHaben &pair)
{
    return DeductAmount(balance, pair.Soll) && AccumulateAmount(balance, pair.Haben);
}

bool SumMonths(SollHaben &total, const AccountSums &sums, int von, int bis)
{
    return ForMonths(von, bis, [&](int month) { return AddPair(total, sums.Monat[month]); });
}

bool SumMonths(AmountText &total, const AmountText (&months)[12], int von, int bis)
{
    return ForMonths(von, bis, [&](int month) { return AccumulateAmount(total, months[month]); });
}

bool SumMonthsSoll(AmountText &total, const AccountSums &sums, int von, int bis)
{
    return ForMonths(von, bis, [&](int month) { return AccumulateAmount(total, sums.Monat[month].Soll); });
}

bool SumMonthsHaben(AmountText &total, const AccountSums &sums, int von, int bis)
{
    return ForMonths(von, bis, [&](int month) { return AccumulateAmount(total, sums.Monat[month].Haben); });
}

bool AddMonthBalances(AmountText &balance, const AccountSums &sums, int von, int bis)
{
    return ForMonths(von, bis, [&](int month) { return AddBalance(balance, sums.Monat[month]); });
}

bool DeductMonthBalances(AmountText &balance, const AccountSums &sums, int von, int bis)
{
    return ForMonths(von, bis, [&](int month) { return DeductBalance(balance, sums.Monat[month]); });
}

int32_t CountPostings(const AccountSums &sums, int von, int bis)
{
    int32_t count = 0;
    ForMonths(von, bis, [&](int month) {
        count += sums.Buchungszahl[month];
        return true;
    });
    return count;
}

} // namespace vark
