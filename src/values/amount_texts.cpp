#include "src/values/amount_texts.h"

#include "src/frame/beliefs.h"
#include "src/frame/message_names.h"
#include "src/values/digits.h"

#include <cstdlib>
#include <cstring>

namespace vark {

namespace {

bool IsZero(const char *text, int markIndex)
{
    Holds(markIndex == amountMark || markIndex == rateMark);
    if (text[0] == 0) return true;
    for (int i = 0; i < markIndex + 3; ++i) {
        if (i != markIndex && DigitValue(text[i]) != 0) return false;
    }
    return true;
}

// Writes "-" for a negative amount, then the digits without leading zeros, with `dot` (if not 0) between
// groups of three, and a comma. `places` must be a text of its own.
void WriteDisplay(char *out, const char *places, int markIndex, char dot)
{
    Holds(out != places);
    Holds(dot == 0 || dot == '.');
    Holds(markIndex == amountMark || markIndex == rateMark);
    const char *const begin = out;
    if (places[markIndex] == '-') *out++ = '-';
    int i = 0;
    while (i < markIndex - 1 && DigitValue(places[i]) == 0) {
        ++i;
    }
    for (; i < markIndex; ++i) {
        *out++ = DigitOf(DigitValue(places[i]));
        const int digitsLeft = markIndex - 1 - i;
        if (dot != 0 && digitsLeft > 0 && digitsLeft % 3 == 0) *out++ = dot;
    }
    *out++ = ',';
    *out++ = DigitOf(DigitValue(places[markIndex + 1]));
    *out++ = DigitOf(DigitValue(places[markIndex + 2]));
    *out = 0;
    Holds(out[-3] == ',');
    Holds(out - begin >= 4 && out - begin < static_cast<ptrdiff_t>(sizeof(FormattedAmount)));
}

void FormatPlaces(int form, char *text, int markIndex, FormattedAmount &out)
{
    Holds(markIndex == amountMark || markIndex == rateMark);
    Holds(out != text);
    const bool isZero = IsZero(text, markIndex);
    if (isZero) std::memcpy(text, zeroAmount + amountMark - markIndex, static_cast<size_t>(markIndex) + 4);
    switch (form) {
    case 1:
        out[0] = isZero ? '0' : text[markIndex] == '-' ? '-' : '+';
        for (int i = 0; i < markIndex + 3; ++i) {
            out[i + 1] = i == markIndex ? ',' : DigitOf(DigitValue(text[i]));
        }
        out[markIndex + 4] = 0;
        Holds(std::strlen(out) == static_cast<size_t>(markIndex) + 4);
        break;
    case 2: WriteDisplay(out, text, markIndex, 0); break;
    case 3: WriteDisplay(out, text, markIndex, '.'); break;
    default: out[0] = 0; break;
    }
    Holds(strnlen(out, sizeof out) < sizeof out);
}

// The AmountText at the head of `text`, grouped.
void GroupInPlace(char *text)
{
    AmountText places;
    std::memcpy(places, text, sizeof places);
    WriteDisplay(text, places[0] != 0 ? places : zeroAmount, amountMark, '.');
    Holds(std::strlen(text) < sizeof(FormattedAmount));
    Holds((text[0] == '-') == (places[0] != 0 && places[amountMark] == '-'));
}

} // namespace

void FormatAmount(int form, AmountText &text, FormattedAmount &out)
{
    FormatPlaces(form, text, amountMark, out);
}

void FormatAmount(int form, RateText &text, FormattedAmount &out) { FormatPlaces(form, text, rateMark, out); }

void GroupAmount(FormattedAmount &text) { GroupInPlace(text); }

void PadAmountColumn(AmountColumn &text)
{
    GroupInPlace(text);
    const size_t length = std::strlen(text) - (text[0] == '-' ? 1 : 0);
    Holds(length >= 4); // "0,00"
    Holds((length - 3) / 4 + 28 - length < sizeof text);
    RightJustify(text, (length - 3) / 4 + 28 - length);
    Holds(std::strlen(text) < sizeof text);
    Holds(text[std::strlen(text) - 3] == ',');
}

bool NormalizeAmountInput(char *text, size_t size, int width, bool isSigned)
{
    Holds(width == amountWidth || width == rateWidth);
    Holds(size > static_cast<size_t>(width));
    const char *from = text;
    const char *const end = text + strnlen(text, size);
    while (from < end && (*from == '0' || *from == ' ')) {
        ++from;
    }
    const bool isNegative = isSigned && from < end && *from == '-';
    if (isNegative) ++from;
    char kept[amountWidth]; // digits and the comma
    int length = 0;
    int decimals = -1; // none until the comma is met
    for (; from < end; ++from) {
        if (*from == '.' || *from == ' ') continue;
        if (*from == ',' ? decimals >= 0 : !IsDigit(*from)) return false;
        if (length == width || decimals == 2) return false;
        if (*from == ',' || decimals >= 0) ++decimals;
        kept[length++] = *from;
    }
    const int missing = decimals < 0 ? 3 : 2 - decimals; // of comma and decimals
    if (length + missing > width) return false;
    const int filled = width - length - missing;
    Holds(missing >= 0 && missing <= 3);
    Holds(length >= 0 && length <= width);
    Holds(filled >= 0);
    std::memset(text, '0', static_cast<size_t>(width));
    std::memcpy(text + filled, kept, static_cast<size_t>(length));
    text[width - 3] = isNegative ? '-' : ',';
    text[width] = 0;
    Holds(std::strlen(text) == static_cast<size_t>(width));
    Holds(IsDigit(text[0]) && IsDigit(text[width - 1]));
    return true;
}

bool NormalizeDigits(char *text, size_t size, int integerDigits, int decimals, bool isStrict, bool isSigned)
{
    const int limit = std::abs(integerDigits);
    Holds(limit > 0 && decimals >= 0);
    Holds(size >= static_cast<size_t>(limit) + static_cast<size_t>(decimals) + 2);
    const char *from = text;
    const char *const end = text + strnlen(text, size);
    bool isNegative = false;
    if (isSigned && from < end && (*from == '-' || *from == '+')) isNegative = *from++ == '-';

    const char *const integer = from;
    while (from < end && from - integer < limit && IsDigit(*from)) {
        ++from;
    }
    const int found = static_cast<int>(from - integer);
    if (found == 0 || (isStrict && found < limit)) return false;
    if (decimals > 0 && from < end && *from != ',') return false;

    // The parts are moved from the back, so that nothing is overwritten before it is read.
    const char *fraction = from;
    int foundDecimals = 0;
    if (decimals > 0 && from < end) {
        fraction = ++from;
        while (from < end && foundDecimals < decimals && IsDigit(*from)) {
            ++from;
            ++foundDecimals;
        }
    }
    const bool isWhole = from == end;
    Holds(integer + found <= end);
    Holds(found > 0 && found <= limit);
    Holds(foundDecimals >= 0 && foundDecimals <= decimals);
    char result[32];
    size_t length = 0;
    const auto append = [&](char character) {
        if (length < sizeof result - 1) result[length++] = character;
    };
    for (int i = found; i < integerDigits; ++i) {
        append('0');
    }
    for (int i = 0; i < found; ++i) {
        append(integer[i]);
    }
    if (decimals > 0) append(isNegative ? '-' : ',');
    for (int i = 0; i < decimals; ++i) {
        append(i < foundDecimals ? fraction[i] : '0');
    }
    result[length++] = 0;
    Holds(length <= size);
    std::memcpy(text, result, length < size ? length : size);
    Holds(strnlen(text, size) == length - 1);
    Holds(decimals == 0 || text[length - 2 - static_cast<size_t>(decimals)] == (isNegative ? '-' : ','));
    return isWhole;
}

void RightJustify(char *text, size_t width)
{
    const size_t length = strnlen(text, width);
    if (length == width) return;
    std::memmove(text + width - length, text, length);
    std::memset(text, ' ', width - length);
    text[width] = 0;
    Holds(std::strlen(text) == width);
    Holds(text[0] == ' ');
}

void TrimLeft(char *text, size_t size)
{
    const size_t length = strnlen(text, size);
    size_t blanks = 0;
    while (blanks < length && text[blanks] == ' ') {
        ++blanks;
    }
    std::memmove(text, text + blanks, length - blanks);
    std::memset(text + length - blanks, 0, size - (length - blanks));
    Holds(size == 0 || text[0] != ' ');
    Holds(strnlen(text, size) == length - blanks);
}

void StripLeadingZeros(char *text, size_t size)
{
    const size_t length = strnlen(text, size);
    size_t zeros = 0;
    while (zeros + 1 < length && text[zeros] == '0' && text[zeros + 1] != ',') {
        ++zeros;
    }
    if (zeros == 0) return;
    std::memmove(text, text + zeros, length - zeros);
    text[length - zeros] = 0;
    Holds(text[0] != 0 && text[0] != ',');
    Holds(strnlen(text, size) == length - zeros);
}

int CheckAmountField(char *text, size_t size, int width)
{
    Holds(width == amountWidth || width == rateWidth);
    Holds(size > static_cast<size_t>(width));
    size_t length = strnlen(text, size);
    if (length == 0) return Message::EingabeFehlt;
    while (length > 0 && !IsDigit(text[length - 1])) {
        --length;
    }
    if (length < size) text[length] = 0;
    if (NormalizeAmountInput(text, size, width, false)) {
        Holds(strnlen(text, size) == static_cast<size_t>(width));
        return 0;
    }
    return width == rateWidth ? Message::ProzentsatzErwartet : Message::BetragErwartet;
}

} // namespace vark
