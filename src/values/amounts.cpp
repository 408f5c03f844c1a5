#include "src/values/amounts.h"

#include <cassert>
#include <charconv>
#include <cmath>
#include <cstring>

namespace vark {

namespace {

constexpr int64_t magnitudeLimit = 100'000'000'000; // first magnitude that nine integer digits cannot hold

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

uint32_t DigitValue(char character)
{
    return IsDigit(character) ? static_cast<uint32_t>(character - '0') : 0;
}

char DigitOf(uint32_t value) { return static_cast<char>('0' + value); }

// An empty field may hold the rest of an older text where the mark would stand.
bool IsNegative(const AmountText &amount) { return amount[0] != 0 && amount[amountMark] == '-'; }

// Integer digits, mark and two decimals; the magnitude must fit. The upper digits divide as 32-bit numbers,
// which is what makes this cheaper than carrying digit by digit.
void WritePlaces(char *out, int markIndex, int64_t magnitude, char mark)
{
    auto integer = static_cast<uint32_t>(magnitude / 100);
    const auto decimals = static_cast<uint32_t>(magnitude % 100);
    for (int i = markIndex - 1; i >= 0; --i) {
        out[i] = DigitOf(integer % 10);
        integer /= 10;
    }
    out[markIndex] = mark;
    out[markIndex + 1] = DigitOf(decimals / 10);
    out[markIndex + 2] = DigitOf(decimals % 10);
    out[markIndex + 3] = 0;
}

int64_t ReadPlaces(const char *text, int markIndex)
{
    if (text[0] == 0) return 0;
    uint32_t integer = 0;
    for (int i = 0; i < markIndex; ++i) {
        integer = integer * 10 + DigitValue(text[i]);
    }
    const uint32_t decimals = DigitValue(text[markIndex + 1]) * 10 + DigitValue(text[markIndex + 2]);
    return int64_t{integer} * 100 + decimals;
}

void WriteAmount(AmountText &out, int64_t magnitude, bool isNegative)
{
    WritePlaces(out, amountMark, magnitude, isNegative ? '-' : ',');
}

void CopyAmount(AmountText &out, const AmountText &from) { memmove(out, from, sizeof out); }

// The grouped text of the places at `text`, which has room for a minus sign and the dots more.
void GroupPlaces(char *text, int markIndex)
{
    AmountText places;
    const size_t width = static_cast<size_t>(markIndex) + 3;
    const bool isNegative = text[0] != 0 && text[markIndex] == '-';
    WritePlaces(places, markIndex, ReadPlaces(text, markIndex), ',');
    int first = 0;
    while (first < markIndex - 1 && places[first] == '0') {
        ++first;
    }
    size_t length = 0;
    if (isNegative) text[length++] = '-';
    for (int i = first; i < markIndex; ++i) {
        text[length++] = places[i];
        const int digitsLeft = markIndex - 1 - i;
        if (digitsLeft > 0 && digitsLeft % 3 == 0) text[length++] = '.';
    }
    memcpy(text + length, places + markIndex, width - static_cast<size_t>(markIndex) + 1);
}

void FormatPlaces(int form, char *text, int markIndex, FormattedAmount &out)
{
    const size_t width = static_cast<size_t>(markIndex) + 3;
    const int64_t magnitude = ReadPlaces(text, markIndex);
    if (magnitude == 0) WritePlaces(text, markIndex, 0, ',');
    const bool isNegative = text[markIndex] == '-';
    out[0] = 0;
    switch (form) {
    case 1:
        out[0] = magnitude == 0 ? '0' : isNegative ? '-' : '+';
        WritePlaces(out + 1, markIndex, magnitude, ',');
        break;
    case 2:
        out[0] = '-';
        WritePlaces(out + (isNegative ? 1 : 0), markIndex, magnitude, ',');
        StripLeadingZeros(out + (isNegative ? 1 : 0), width + 1);
        break;
    case 3:
        memcpy(out, text, width + 1);
        GroupPlaces(out, markIndex);
        break;
    default: break;
    }
}

} // namespace

int64_t MagnitudeOf(const AmountText &amount) { return ReadPlaces(amount, amountMark); }

int64_t MagnitudeOf(const RateText &rate) { return ReadPlaces(rate, rateMark); }

bool AmountOfMagnitude(AmountText &out, int64_t magnitude, bool isNegative)
{
    const bool fits = magnitude >= 0 && magnitude < magnitudeLimit;
    WriteAmount(out, fits ? magnitude : 0, fits && isNegative);
    return fits;
}

// Sums go through whole Pfennig: measured against carrying along the digits this is the shorter code and the
// faster (bench/values_bench.cpp).
bool AddAmounts(AmountText &out, const AmountText &a, const AmountText &b)
{
    const int64_t magnitudeA = MagnitudeOf(a);
    const int64_t magnitudeB = MagnitudeOf(b);
    const bool isNegative = IsNegative(a);
    if (isNegative != IsNegative(b)) {
        const int64_t difference = isNegative ? magnitudeB - magnitudeA : magnitudeA - magnitudeB;
        WriteAmount(out, std::abs(difference), difference < 0);
        return true;
    }
    const int64_t sum = magnitudeA + magnitudeB;
    WriteAmount(out, sum % magnitudeLimit, isNegative);
    return sum < magnitudeLimit;
}

bool AccumulateAmount(AmountText &total, const AmountText &b)
{
    AmountText sum;
    if (!AddAmounts(sum, total, b)) return false;
    CopyAmount(total, sum);
    return true;
}

int SubtractRaw(AmountText &out, const AmountText &a, const AmountText &b)
{
    const int64_t magnitudeA = MagnitudeOf(a);
    const int64_t magnitudeB = MagnitudeOf(b);
    const bool isNegative = IsNegative(a);
    if (isNegative != IsNegative(b)) {
        WriteAmount(out, (magnitudeA + magnitudeB) % magnitudeLimit, isNegative);
        return isNegative ? habenBalance : sollBalance;
    }
    WriteAmount(out, std::abs(magnitudeA - magnitudeB), isNegative);
    const bool isSwapped = magnitudeA < magnitudeB;
    return isNegative == isSwapped ? sollBalance : habenBalance;
}

bool SubtractAmounts(AmountText &out, const AmountText &a, const AmountText &b)
{
    const bool isNegative = SubtractRaw(out, a, b) == habenBalance;
    out[amountMark] = isNegative ? '-' : ',';
    return isNegative;
}

bool IsZeroAmount(const char *text)
{
    if (text == nullptr) return true;
    const size_t length = strnlen(text, sizeof(AmountText));
    const size_t markIndex = length == rateWidth ? rateMark : amountMark;
    for (size_t i = 0; i < length && i < amountWidth; ++i) {
        if (i != markIndex && DigitValue(text[i]) != 0) return false;
    }
    return true;
}

void FormatAmount(int form, AmountText &text, FormattedAmount &out)
{
    FormatPlaces(form, text, amountMark, out);
}

void FormatAmount(int form, RateText &text, FormattedAmount &out) { FormatPlaces(form, text, rateMark, out); }

void GroupAmount(FormattedAmount &text) { GroupPlaces(text, amountMark); }

void PadAmountColumn(AmountColumn &text)
{
    GroupPlaces(text, amountMark);
    const size_t length = strlen(text) - (text[0] == '-' ? 1 : 0);
    RightJustify(text, (length - 3) / 4 + 28 - length);
}

bool NormalizeAmountInput(char *text, size_t size, int width, bool isSigned)
{
    assert(width == amountWidth || width == rateWidth);
    assert(size > static_cast<size_t>(width));
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
    memset(text, '0', static_cast<size_t>(width));
    memcpy(text + filled, kept, static_cast<size_t>(length));
    text[width - 3] = isNegative ? '-' : ',';
    text[width] = 0;
    return true;
}

bool NormalizeDigits(char *text, size_t size, int integerDigits, int decimals, bool isStrict, bool isSigned)
{
    const int limit = std::abs(integerDigits);
    assert(limit > 0 && decimals >= 0);
    assert(size >= static_cast<size_t>(limit) + static_cast<size_t>(decimals) + 2);
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
    memcpy(text, result, length < size ? length : size);
    return isWhole;
}

void RightJustify(char *text, size_t width)
{
    const size_t length = strnlen(text, width);
    if (length == width) return;
    memmove(text + width - length, text, length);
    memset(text, ' ', width - length);
    text[width] = 0;
}

void TrimLeft(char *text, size_t size)
{
    const size_t length = strnlen(text, size);
    size_t blanks = 0;
    while (blanks < length && text[blanks] == ' ') {
        ++blanks;
    }
    if (blanks == 0) return;
    memmove(text, text + blanks, length - blanks);
    text[length - blanks] = 0;
}

void StripLeadingZeros(char *text, size_t size)
{
    const size_t length = strnlen(text, size);
    size_t zeros = 0;
    while (zeros + 1 < length && text[zeros] == '0' && text[zeros + 1] != ',') {
        ++zeros;
    }
    if (zeros == 0) return;
    memmove(text, text + zeros, length - zeros);
    text[length - zeros] = 0;
}

int64_t RoundToDecimals(double value, int decimals)
{
    if (!(value >= 0.0) || !(value < 1e16)) return -1;
    // "d.dddddddddddddddde+dd": the digits before and behind the point, then the exponent.
    constexpr int significantDigits = 17;
    char text[32];
    const auto written =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, significantDigits - 1);
    assert(written.ec == std::errc());
    const char *const exponentMark = text + 1 + significantDigits;
    int exponent = 0;
    std::from_chars(exponentMark + (exponentMark[1] == '+' ? 2 : 1), written.ptr, exponent);
    const int wanted = exponent + 1 + decimals; // digits that stay
    if (wanted < 0) return 0;
    if (wanted > significantDigits) return -1;
    const auto digitAt = [&](int i) { return text[i == 0 ? 0 : i + 1]; };
    int64_t result = 0;
    for (int i = 0; i < wanted; ++i) {
        result = result * 10 + (digitAt(i) - '0');
    }
    if (wanted < significantDigits && digitAt(wanted) >= '5') ++result;
    return result;
}

void PercentOfAmount(AmountText &out, const AmountText &amount, const RateText &rate)
{
    // Hundredths divided by 100 are the doubles nearest to the texts, as reading the texts would give them.
    const double amountValue = static_cast<double>(MagnitudeOf(amount)) / 100.0;
    const double rateValue = static_cast<double>(MagnitudeOf(rate)) / 100.0;
    const double product = rateValue * 0.01 * amountValue;
    // At most 99,99 % of an amount: it always fits.
    AmountOfMagnitude(out, product < 0.01 ? 0 : RoundToDecimals(product, 2), IsNegative(amount));
}

bool NetFromGross(AmountText &out, const AmountText &gross, const RateText &rate)
{
    const auto isUnreadable = [](const char *text, int64_t magnitude, int markIndex) {
        return text[0] != 0 && magnitude == 0 && text[markIndex + 1] != '0';
    };
    const int64_t magnitude = MagnitudeOf(gross);
    const int64_t rateMagnitude = MagnitudeOf(rate);
    if (isUnreadable(gross, magnitude, amountMark) || isUnreadable(rate, rateMagnitude, rateMark)) {
        CopyAmount(out, gross);
        return false;
    }
    const double grossValue = static_cast<double>(magnitude) / 100.0;
    const double rateValue = static_cast<double>(rateMagnitude) / 100.0;
    const int64_t net = RoundToDecimals(100.0 / (rateValue + 100.0) * grossValue, 4);
    // A rate is not negative, so the net is no larger than the gross and fits.
    const int64_t roundUp = net / 10 % 10 >= 5 ? 1 : 0;
    AmountOfMagnitude(out, net / 100 + roundUp, IsNegative(gross));
    return true;
}

int CheckAmountField(char *text, size_t size, int width)
{
    size_t length = strnlen(text, size);
    if (length == 0) return 1439;
    while (length > 0 && !IsDigit(text[length - 1])) {
        --length;
    }
    if (length < size) text[length] = 0;
    if (NormalizeAmountInput(text, size, width, false)) return 0;
    return width == rateWidth ? 1000 : 1001;
}

} // namespace vark
