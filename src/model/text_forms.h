// The text forms in which records hold money, rates, dates and account numbers. All are of fixed width, with
// a NUL as their last byte; an empty text (first byte NUL) means "none", for an amount zero.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vark {

// "000001234,50": index 0..8 the integer digits with leading zeros, index 9 the sign mark, index 10 and 11
// the decimals. The mark is "," for a positive and "-" for a negative amount: the sign stands in the comma's
// place. "000000000-00" is a legal negative zero. The largest amount is 999999999,99.
using AmountText = char[13];

// "16,00": a percentage of two integer digits, the mark at index 2, two decimals.
using RateText = char[6];

// "DDMMJJ": the day, the month inside the fiscal year (01 is the Mandant's first fiscal month), and the
// calendar year in which the fiscal year begins, counted from 1980. With a fiscal year from July, 15.03.1998
// is "150917": the ninth month of the year that began in 1997.
using PackedDate = char[7];

// "JJMMDD": the pairs of a PackedDate reversed, so that the order of the bytes is the order of the days.
using SortDate = char[7];

// "   1200": right-justified with blanks to seven characters. Keys hold this form; callers get it without
// blanks.
using AccountNumber = char[8];

inline constexpr size_t accountDigits = sizeof(AccountNumber) - 1;

// Index of the sign mark.
inline constexpr int amountMark = 9;
inline constexpr int rateMark = 2;

// Two totals that belong together. Each is non-negative as a rule, but carries a sign mark as any amount
// does.
struct SollHaben {
    AmountText Soll;
    AmountText Haben;
};

static_assert(sizeof(SollHaben) == 26);
static_assert(offsetof(SollHaben, Haben) == 13);
static_assert(__is_trivially_copyable(SollHaben));

} // namespace vark
