// Amounts as a person reads and types them. How a field is read that holds no whole amount: amounts.h.
#pragma once

#include "src/values/amounts.h"

namespace vark {

// Display forms: "-1.234.567,89" at the longest 15 characters, a report column at the longest 24.
using FormattedAmount = char[16];
using AmountColumn = char[25];

// Writes one of the three display forms; an empty or zero `text` (negative zero included) is first replaced
// by zeroAmount or zeroRate.
//   1  fixed width: "-", "+" or, for zero, "0", then the text with a comma as mark: "+000001234,50"
//   2  plain: "-" if negative, then the text with a comma, without leading zeros: "-1234,50", "0,00"
//   3  grouped, as GroupAmount: "-1.234,50"
// Any other form, which exports refuse beforehand, gives an empty text.
void FormatAmount(int form, AmountText &text, FormattedAmount &out);
void FormatAmount(int form, RateText &text, FormattedAmount &out);

// Turns the AmountText at the head of the field into its grouped form, "-1.234.567,89", "0,00".
void GroupAmount(FormattedAmount &text);

// The same for a column of a report set in a proportional font: blanks on the left up to (n - 3) / 4 - n + 28
// characters, n being the length without the minus sign, give the figures a common right edge there.
void PadAmountColumn(AmountColumn &text);

// Turns what a person typed into an AmountText (width 12) or a RateText (width 5): leading zeros and blanks
// are skipped, dots and blanks between the digits dropped, decimals completed to two. "1.234,5" becomes
// "000001234,50", an empty text zero. With `isSigned` a "-" is accepted in front. False for any other
// character, a second comma, more than two decimals or too many digits; the text is then as it was.
// `size` is that of the whole buffer, at least width + 1; no more than that is read.
bool NormalizeAmountInput(char *text, size_t size, int width, bool isSigned);

// The fixed form of a numeric argument: up to |integerDigits| digits, filled on the left with zeros if
// integerDigits is positive and left as they stand if it is negative (all of them needed if `isStrict`);
// with `decimals` above 0 then the end or a comma and up to that many digits, filled on the right. With
// `isSigned` a first "-" or "+" is taken off, and "-" becomes the mark in place of the comma.
// True only if nothing follows. What was understood replaces the text also when something does follow; a
// text that fails earlier stays as it was. `size` is that of the whole buffer, at least
// |integerDigits| + decimals + 2; no more than that is read.
bool NormalizeDigits(char *text, size_t size, int integerDigits, int decimals, bool isStrict, bool isSigned);

// Blanks on the left up to `width` characters; a longer text is left as it is. The field has width + 1 bytes.
void RightJustify(char *text, size_t width);

// Removes leading blanks and fills the field with NUL behind the text's end. `size` is that of the field.
void TrimLeft(char *text, size_t size);

// Drops leading zeros, but not the last digit before the comma (or the end): "000,50" becomes "0,50".
// `size` is that of the field.
void StripLeadingZeros(char *text, size_t size);

// Checks an input field of a dialog and turns it into its fixed form of `width` (12 or 5) characters.
// Characters behind the last digit are cut first. Returns 0, or the number of the message to show: 1439 for
// an empty field, 1000 (width 5) or 1001 for what is no amount. `size` as in NormalizeAmountInput.
int CheckAmountField(char *text, size_t size, int width);

} // namespace vark
