// Decimal digits, and what is read where one should stand.
#pragma once

#include "src/frame/beliefs.h"

#include <cstdint>

namespace vark {

// '0' to '9', in no locale.
inline bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// Anything but a digit counts as 0.
inline uint32_t DigitValue(char character)
{
    return IsDigit(character) ? static_cast<uint32_t>(character - '0') : 0;
}

// The digit of a value up to 9.
inline char DigitOf(uint32_t value)
{
    Holds(value <= 9);
    return static_cast<char>('0' + value);
}

} // namespace vark
