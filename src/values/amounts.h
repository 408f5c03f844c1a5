// Money and percentages as decimal text. Sums are formed digit by digit on that text, so addition and
// subtraction never round; binary floating point appears only where amounts are multiplied or divided, and
// its result is turned back into text at once.
//
// AmountText is "000000000,00": nine integer digits, the sign mark at index 9, two decimals. The mark stands
// where the decimal comma would: "," for a positive amount, "-" for a negative one. A negative zero is legal.
// RateText is "00,00", with its mark at index 2.
//
// How fields are read: an empty field (first byte NUL) is zero. Otherwise each digit place is read by itself
// and anything there that is no digit counts as 0; any mark but "-" is a plus. So nothing that a damaged
// record holds can carry a reader past its field or give anything but some amount.
// Every result has all its places and its NUL, and may lie in the same field as an operand.
#pragma once

#include "src/model/text_forms.h"

#include <cstddef>
#include <cstdint>

namespace vark {

inline constexpr int amountWidth = 12; // characters of an AmountText, without its NUL
inline constexpr int rateWidth = 5;    // characters of a RateText, without its NUL
inline constexpr char zeroAmount[13] = "000000000,00";
inline constexpr char zeroRate[6] = "00,00";

// Codes of a difference: on which side of an account a balance stands.
inline constexpr int sollBalance = 83;  // "S": positive
inline constexpr int habenBalance = 72; // "H": negative

// out = a + b. False on overflow; out then holds the digits without the carry that was lost. The sum of two
// negative amounts is negative, also when it is zero; amounts of different sign that cancel give plus zero.
bool AddAmounts(AmountText &out, const AmountText &a, const AmountText &b);

// total = total + b. False on overflow, and total is as it was.
bool AccumulateAmount(AmountText &total, const AmountText &b);

// total = total - b, with the mark of SubtractAmounts. False on overflow, and total is as it was.
bool DeductAmount(AmountText &total, const AmountText &b);

// out = a - b as digits, and the side of the result as code: sollBalance or habenBalance. For equal signs and
// a smaller than b the mark in `out` is NOT that of the result: SubtractAmounts is what callers want. For
// different signs the absolute values are added, and a tenth integer digit is lost. A borrow cannot remain,
// since places without a digit are read as 0 before the two are compared.
int SubtractRaw(AmountText &out, const AmountText &a, const AmountText &b);

// out = a - b with its mark. True if negative. Equal negative amounts give a negative zero. For different
// signs the lost digit of SubtractRaw applies; DeductAmount tells it.
bool SubtractAmounts(AmountText &out, const AmountText &a, const AmountText &b);

// Whether a field has the whole form that every result here has: digits in all places, a mark, its NUL. An
// empty field has not.
bool IsWholeAmount(const AmountText &amount);
bool IsWholeRate(const RateText &rate); // with the mark ","

// True for null, an empty text, and one whose digits are all zero whatever the mark. A text of 5 characters
// is read as RateText, any other as AmountText; at most 13 bytes are read, and none behind a NUL.
bool IsZeroAmount(const char *text);

// out = amount x rate / 100, rounded half up to the Pfennig and with the mark of the amount; less than one
// Pfennig is zero. The rate's mark does not enter.
void PercentOfAmount(AmountText &out, const AmountText &amount, const RateText &rate);

// out = gross x 100 / (100 + rate), with the mark of the gross. The quotient is rounded half up to four
// decimals and then, by the third of them, to two: 1,00496 becomes 1,0050 and so 1,01. False, and out is the
// gross unchanged, where the gross or the rate reads as zero but its first decimal is no "0".
bool NetFromGross(AmountText &out, const AmountText &gross, const RateText &rate);

// The amount without its mark, in Pfennig; of a RateText in hundredths of a percent. 0..99999999999.
int64_t MagnitudeOf(const AmountText &amount);
int64_t MagnitudeOf(const RateText &rate);

// True for the mark "-", also on a zero; false for an empty text.
bool IsNegativeAmount(const AmountText &amount);

// Writes a magnitude below 100000000000 with the given mark. False, and out is zeroAmount, for another one.
bool AmountOfMagnitude(AmountText &out, int64_t magnitude, bool isNegative);

// The same for a rate: a magnitude of 0..9999, else false and zeroRate.
bool RateOfMagnitude(RateText &out, int64_t magnitude);

// A non-negative value in units of 10^-decimals, rounded as the accounting application rounds: the value's 17
// significant decimal digits, half up at the wanted decimal. So 0.125 with two decimals is 13, and 1.005,
// whose digits are 1.0049999999999999, is 100. -1 for a value that is negative, no number, or too large.
int64_t RoundToDecimals(double value, int decimals);

} // namespace vark
