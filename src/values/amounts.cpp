#include "src/values/amounts.h"

#include "src/frame/beliefs.h"
#include "src/values/digits.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace vark {

namespace {

// First magnitudes that nine and two integer digits cannot hold.
constexpr int64_t magnitudeLimit = 100'000'000'000;
constexpr int64_t rateLimit = 10'000;

char MarkOf(bool isNegative) { return isNegative ? '-' : ','; }

// Eight characters at once, which keeps the check cheap beside the sum. Digits: their upper halves are 3, and
// stay so when 6 is added to the lower.
bool AreDigits(uint64_t characters)
{
    constexpr uint64_t upperHalves = 0xF0F0'F0F0'F0F0'F0F0;
    constexpr uint64_t zeros = 0x3030'3030'3030'3030;
    constexpr uint64_t sixes = 0x0606'0606'0606'0606;
    return ((characters & upperHalves) ^ zeros) == 0 && (((characters + sixes) & upperHalves) ^ zeros) == 0;
}

bool HasAllDigits(const AmountText &amount)
{
    // Index 0 to 7 and 4 to 11; in the latter the mark is the sixth byte and passes as a digit.
    constexpr uint64_t mark = uint64_t{0xFF} << 40;
    constexpr uint64_t digit = uint64_t{'0'} << 40;
    uint64_t first = 0;
    uint64_t last = 0;
    std::memcpy(&first, amount, 8);
    std::memcpy(&last, amount + 4, 8);
    return AreDigits(first) && AreDigits((last & ~mark) | digit);
}

// The operand as it is to be read: itself or, where places hold no digits, a copy in which they hold 0. An
// empty field may have the rest of an older text behind its NUL, so it is replaced as a whole.
const AmountText &Readable(const AmountText &amount, AmountText &copy)
{
    Holds(&copy != &amount);
    if (HasAllDigits(amount)) return amount;
    if (amount[0] == 0) return zeroAmount;
    for (int i = 0; i < amountWidth; ++i) {
        copy[i] = IsDigit(amount[i]) ? amount[i] : '0';
    }
    copy[amountMark] = MarkOf(amount[amountMark] == '-');
    copy[amountWidth] = 0;
    Holds(IsWholeAmount(copy));
    return copy;
}

// out = a + b for readable operands, without regard to the marks; false if a carry is left.
bool AddDigits(AmountText &out, const AmountText &a, const AmountText &b)
{
    int carry = 0;
    for (int i = amountWidth - 1; i >= 0; --i) {
        if (i == amountMark) continue;
        const int sum = a[i] - '0' + b[i] - '0' + carry;
        carry = sum > 9 ? 1 : 0;
        out[i] = static_cast<char>('0' + sum - 10 * carry);
    }
    out[amountWidth] = 0;
    Holds(carry == 0 || carry == 1);
    Holds(IsDigit(out[0]) && IsDigit(out[amountWidth - 1]));
    Holds(carry == 1 || std::memcmp(out, b, amountMark) >= 0); // `b` may have been overwritten, not outgrown
    return carry == 0;
}

// out = |a| - |b| or, if that is negative, |b| - |a|; true if so. Leaves the mark.
bool SubtractDigits(AmountText &out, const AmountText &a, const AmountText &b)
{
    const int order = std::memcmp(a, b, amountMark);
    const bool isSwapped =
        order < 0 || (order == 0 && std::memcmp(a + amountMark + 1, b + amountMark + 1, 2) < 0);
    const char *const upper = isSwapped ? b : a;
    const char *const lower = isSwapped ? a : b;
    int borrow = 0;
    for (int i = amountWidth - 1; i >= 0; --i) {
        if (i == amountMark) continue;
        const int difference = upper[i] - lower[i] - borrow;
        borrow = difference < 0 ? 1 : 0;
        out[i] = static_cast<char>('0' + difference + 10 * borrow);
    }
    out[amountWidth] = 0;
    Holds(borrow == 0);
    Holds(IsDigit(out[0]) && IsDigit(out[amountWidth - 1]));
    Holds(std::memcmp(out, upper, amountMark) <= 0);
    return isSwapped;
}

int64_t ReadPlaces(const char *text, int markIndex)
{
    Holds(markIndex == amountMark || markIndex == rateMark);
    int64_t value = 0;
    for (int i = 0; text[0] != 0 && i < markIndex + 3; ++i) {
        if (i != markIndex) value = value * 10 + DigitValue(text[i]);
    }
    Holds(value >= 0);
    Holds(value < (markIndex == amountMark ? magnitudeLimit : rateLimit));
    return value;
}

void WritePlaces(char *out, int markIndex, int64_t magnitude)
{
    Holds(markIndex == amountMark || markIndex == rateMark);
    Holds(magnitude >= 0);
    for (int i = markIndex + 2; i >= 0; --i) {
        if (i == markIndex) continue;
        out[i] = DigitOf(static_cast<uint32_t>(magnitude % 10));
        magnitude /= 10;
    }
    out[markIndex] = ',';
    out[markIndex + 3] = 0;
    Holds(magnitude == 0); // all of it was written
    Holds(IsDigit(out[0]) && IsDigit(out[markIndex + 2]));
}

void AssignAmount(AmountText &out, const AmountText &from) { std::memmove(out, from, sizeof out); }

} // namespace

bool IsWholeAmount(const AmountText &amount)
{
    return HasAllDigits(amount) && (amount[amountMark] == ',' || amount[amountMark] == '-') &&
           amount[amountWidth] == 0;
}

bool IsWholeRate(const RateText &rate)
{
    return IsDigit(rate[0]) && IsDigit(rate[1]) && rate[rateMark] == ',' && IsDigit(rate[3]) &&
           IsDigit(rate[4]) && rate[rateWidth] == 0;
}

int64_t MagnitudeOf(const AmountText &amount) { return ReadPlaces(amount, amountMark); }

bool IsNegativeAmount(const AmountText &amount) { return amount[0] != 0 && amount[amountMark] == '-'; }

int64_t MagnitudeOf(const RateText &rate) { return ReadPlaces(rate, rateMark); }

bool AmountOfMagnitude(AmountText &out, int64_t magnitude, bool isNegative)
{
    const bool fits = magnitude >= 0 && magnitude < magnitudeLimit;
    WritePlaces(out, amountMark, fits ? magnitude : 0);
    out[amountMark] = MarkOf(fits && isNegative);
    Holds(IsWholeAmount(out));
    Holds(MagnitudeOf(out) == (fits ? magnitude : 0));
    Holds(IsNegativeAmount(out) == (fits && isNegative));
    return fits;
}

bool RateOfMagnitude(RateText &out, int64_t magnitude)
{
    const bool fits = magnitude >= 0 && magnitude < rateLimit;
    WritePlaces(out, rateMark, fits ? magnitude : 0);
    Holds(IsWholeRate(out));
    Holds(MagnitudeOf(out) == (fits ? magnitude : 0));
    return fits;
}

// Digit by digit is the simplest way and, measured against whole Pfennig, the faster one too: eleven small
// steps cost less than the multiplications and divisions of two conversions (bench/values_bench.cpp).
bool AddAmounts(AmountText &out, const AmountText &a, const AmountText &b)
{
    AmountText copyA;
    AmountText copyB;
    const AmountText &readA = Readable(a, copyA);
    const AmountText &readB = Readable(b, copyB);
    const bool isNegative = readA[amountMark] == '-';
    bool fits = true;
    bool isSumNegative = isNegative;
    if (isNegative == (readB[amountMark] == '-')) {
        fits = AddDigits(out, readA, readB);
    } else {
        isSumNegative = isNegative ? SubtractDigits(out, readB, readA) : SubtractDigits(out, readA, readB);
    }
    Holds(fits || isSumNegative == isNegative); // only amounts of one sign outgrow the field
    out[amountMark] = MarkOf(isSumNegative);
    Holds(IsWholeAmount(out));
    return fits;
}

bool AccumulateAmount(AmountText &total, const AmountText &b)
{
    AmountText sum;
    if (!AddAmounts(sum, total, b)) return false;
    const bool isGrowing = IsNegativeAmount(total) == IsNegativeAmount(b);
    Holds(!isGrowing || MagnitudeOf(sum) >= MagnitudeOf(b));
    Holds(!isGrowing || IsNegativeAmount(sum) == IsNegativeAmount(b));
    AssignAmount(total, sum);
    return true;
}

bool DeductAmount(AmountText &total, const AmountText &b)
{
    AmountText difference;
    if (IsNegativeAmount(total) == IsNegativeAmount(b)) {
        SubtractAmounts(difference, total, b);
    } else if (!AmountOfMagnitude(difference, MagnitudeOf(total) + MagnitudeOf(b), IsNegativeAmount(total))) {
        return false;
    }
    Holds(MagnitudeOf(difference) <= MagnitudeOf(total) + MagnitudeOf(b));
    AssignAmount(total, difference);
    return Holds(IsWholeAmount(total));
}

int SubtractRaw(AmountText &out, const AmountText &a, const AmountText &b)
{
    AmountText copyA;
    AmountText copyB;
    const AmountText &readA = Readable(a, copyA);
    const AmountText &readB = Readable(b, copyB);
    const bool isNegative = readA[amountMark] == '-';
    bool isSwapped = false;
    if (isNegative == (readB[amountMark] == '-')) {
        isSwapped = SubtractDigits(out, readA, readB);
    } else {
        AddDigits(out, readA, readB);
    }
    out[amountMark] = MarkOf(isNegative);
    Holds(IsWholeAmount(out));
    return isNegative == isSwapped ? sollBalance : habenBalance;
}

bool SubtractAmounts(AmountText &out, const AmountText &a, const AmountText &b)
{
    const bool isNegative = SubtractRaw(out, a, b) == habenBalance;
    out[amountMark] = MarkOf(isNegative);
    Holds(IsNegativeAmount(out) == isNegative);
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

int64_t RoundToDecimals(double value, int decimals)
{
    Holds(decimals >= 0);
    if (!(value >= 0.0) || !(value < 1e16)) return -1;
    // "d.dddddddddddddddde+dd": the digits before and behind the point, then the exponent.
    constexpr int significantDigits = 17;
    char text[32];
    const auto written =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, significantDigits - 1);
    Holds(written.ec == std::errc());
    const char *const exponentMark = text + 1 + significantDigits;
    int exponent = 0;
    std::from_chars(exponentMark + (exponentMark[1] == '+' ? 2 : 1), written.ptr, exponent);
    Holds(text[1] == '.' && *(exponentMark) == 'e');
    Holds(exponent <= 16);                      // the value is below 10 to that
    const int wanted = exponent + 1 + decimals; // digits that stay
    if (wanted < 0) return 0;
    if (wanted > significantDigits) return -1;
    const auto digitAt = [&](int i) { return text[i == 0 ? 0 : i + 1]; };
    int64_t result = 0;
    for (int i = 0; i < wanted; ++i) {
        result = result * 10 + (digitAt(i) - '0');
    }
    if (wanted < significantDigits && digitAt(wanted) >= '5') ++result;
    Holds(result >= 0);
    Holds(wanted != 0 || result <= 1);
    return result;
}

void PercentOfAmount(AmountText &out, const AmountText &amount, const RateText &rate)
{
    // Hundredths divided by 100 are the doubles nearest to the texts, as reading the texts would give them.
    const int64_t magnitude = MagnitudeOf(amount);
    const double amountValue = static_cast<double>(magnitude) / 100.0;
    const double rateValue = static_cast<double>(MagnitudeOf(rate)) / 100.0;
    const double product = rateValue * 0.01 * amountValue;
    // At most 99,99 % of an amount: it always fits.
    const bool isNegative = IsNegativeAmount(amount);
    Holds(product >= 0.0);
    Holds(product <= amountValue);
    const bool fits = AmountOfMagnitude(out, product < 0.01 ? 0 : RoundToDecimals(product, 2), isNegative);
    Holds(fits);
    Holds(MagnitudeOf(out) <= magnitude);
    Holds(IsNegativeAmount(out) == isNegative);
}

bool NetFromGross(AmountText &out, const AmountText &gross, const RateText &rate)
{
    const auto isUnreadable = [](const char *text, int64_t magnitude, int markIndex) {
        return text[0] != 0 && magnitude == 0 && text[markIndex + 1] != '0';
    };
    const int64_t magnitude = MagnitudeOf(gross);
    const int64_t rateMagnitude = MagnitudeOf(rate);
    if (isUnreadable(gross, magnitude, amountMark) || isUnreadable(rate, rateMagnitude, rateMark)) {
        AssignAmount(out, gross);
        return false;
    }
    const double grossValue = static_cast<double>(magnitude) / 100.0;
    const double rateValue = static_cast<double>(rateMagnitude) / 100.0;
    const int64_t net = RoundToDecimals(100.0 / (rateValue + 100.0) * grossValue, 4);
    // A rate is not negative, so the net is no larger than the gross and fits.
    const int64_t roundUp = net / 10 % 10 >= 5 ? 1 : 0;
    const bool isNegative = IsNegativeAmount(gross);
    Holds(net >= 0);
    const bool fits = AmountOfMagnitude(out, net / 100 + roundUp, isNegative);
    Holds(fits);
    Holds(MagnitudeOf(out) <= magnitude);
    Holds(IsNegativeAmount(out) == isNegative);
    return true;
}

} // namespace vark
