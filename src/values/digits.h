// Decimal digits, and what is read where one should stand.
#pragma once

#include "src/frame/beliefs.h"

#include <cstdint>

namespace vark {

inline bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// Anything but a digit counts as 0.
inline uint32_t DigitValue(char character)
{
    return IsDigit(character) ? static_cast<uint32_t>(character - '0') : 0;
}

inline char DigitOf(uint32_t value)
{
    Holds(value <= 9);
    return static_cast<char>('0' + value);
}

} // namespace vark
