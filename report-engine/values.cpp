#include "report-engine/values.h"

#include <cstring>

namespace rs {

namespace {

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

int DigitOf(char character) { return IsDigit(character) ? character - '0' : 0; }

// Writes the digits of a magnitude from the end of `out` backwards; returns where they begin.
char *WriteDigits(uint64_t value, char *end, int decimals, char point, bool isGrouped)
{
    int place = 0;
    do {
        if (decimals > 0 && place == decimals) *--end = point;
        const int whole = place - decimals;
        if (isGrouped && whole > 0 && whole % 3 == 0) *--end = '.';
        *--end = static_cast<char>('0' + value % 10);
        value /= 10;
        ++place;
    } while (value > 0 || place <= decimals);
    return end;
}

size_t Finish(char *begin, const char *end, bool isNegative, Look look, char (&out)[amountSize])
{
    constexpr char minus[] = "\u2212";
    size_t length = 0;
    if (isNegative) {
        const char *sign = look == Look::printed ? minus : "-";
        length = std::strlen(sign);
        std::memcpy(out, sign, length);
    }
    const auto digits = static_cast<size_t>(end - begin);
    std::memmove(out + length, begin, digits);
    length += digits;
    out[length] = 0;
    return length;
}

size_t Write(int64_t value, int decimals, Look look, bool isGrouped, char (&out)[amountSize])
{
    char digits[amountSize];
    char *const end = digits + sizeof digits;
    const bool isNegative = value < 0;
    const uint64_t magnitude =
        isNegative ? uint64_t{0} - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    const char point = look == Look::machine ? '.' : ',';
    char *begin = WriteDigits(magnitude, end, decimals, point, isGrouped);
    return Finish(begin, end, isNegative, look, out);
}

} // namespace

int64_t PfennigOf(const char *field)
{
    if (field[0] == 0) return 0;
    int64_t value = 0;
    for (int i = 0; i < 12; ++i) {
        if (i != 9) value = value * 10 + DigitOf(field[i]);
    }
    return field[9] == '-' ? -value : value;
}

bool HundredthsOf(const char *field, int64_t &hundredths)
{
    if (field[0] == 0) return false;
    hundredths =
        DigitOf(field[0]) * 1000 + DigitOf(field[1]) * 100 + DigitOf(field[3]) * 10 + DigitOf(field[4]);
    if (field[2] == '-') hundredths = -hundredths;
    return true;
}

void DateText(const char *field, char *out)
{
    const size_t length = strnlen(field, 7);
    bool isDate = length == 6;
    for (size_t i = 0; i < length; ++i) {
        if (!IsDigit(field[i])) isDate = false;
    }
    if (!isDate) {
        std::memcpy(out, field, length);
        out[length] = 0;
        return;
    }
    const int year = 1980 + DigitOf(field[4]) * 10 + DigitOf(field[5]);
    const char text[11] = {field[0],
                           field[1],
                           '.',
                           field[2],
                           field[3],
                           '.',
                           static_cast<char>('0' + year / 1000),
                           static_cast<char>('0' + year / 100 % 10),
                           static_cast<char>('0' + year / 10 % 10),
                           static_cast<char>('0' + year % 10),
                           0};
    std::memcpy(out, text, sizeof text);
}

size_t WriteHundredths(int64_t value, Look look, char (&out)[amountSize])
{
    return Write(value, 2, look, look == Look::grouped || look == Look::printed, out);
}

size_t WriteNumber(int64_t value, Look look, char (&out)[amountSize])
{
    return Write(value, 0, look, false, out);
}

} // namespace rs
