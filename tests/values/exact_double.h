// IEEE double arithmetic done in integers: every step says itself how it rounds, so that results of the
// library's floating point can be judged by something that uses none.
#pragma once

#ifndef __SIZEOF_INT128__
#include "tests/values/wide.h"
#endif

#include <cstdint>

namespace exact {

#ifdef __SIZEOF_INT128__
using Wide = unsigned __int128;
#else
using Wide = HalvedNumber;
#endif

// mantissa x 2^exponent, the mantissa of exactly 53 bits, or 0.
struct Double {
    uint64_t Mantissa;
    int Exponent;
};

// The double nearest to value x 2^exponent, ties to even; `sticky` tells that the true value is a little
// more.
inline Double Round(Wide value, int exponent, bool sticky)
{
    if (value == 0) return {0, 0};
    constexpr Wide limit = Wide{1} << 53;
    while (value < limit / 2) {
        value <<= 1;
        --exponent;
    }
    bool half = false;
    while (value >= limit) {
        sticky = sticky || half;
        half = (value & 1) != 0;
        value >>= 1;
        ++exponent;
    }
    if (half && (sticky || (value & 1) != 0)) ++value;
    if (value == limit) {
        value >>= 1;
        ++exponent;
    }
    return {static_cast<uint64_t>(value), exponent};
}

// The double nearest to a / b, for a below 2^60.
inline Double Ratio(uint64_t a, uint64_t b)
{
    const Wide scaled = Wide{a} << 67;
    return Round(scaled / b, -67, scaled % b != 0);
}

inline Double Multiply(Double a, Double b)
{
    return Round(Wide{a.Mantissa} * b.Mantissa, a.Exponent + b.Exponent, false);
}

inline Double Divide(Double a, Double b)
{
    if (a.Mantissa == 0) return {0, 0};
    const Wide scaled = Wide{a.Mantissa} << 70;
    return Round(scaled / b.Mantissa, a.Exponent - b.Exponent - 70, scaled % b.Mantissa != 0);
}

// For operands of similar size (exponents less than 70 apart).
inline Double Add(Double a, Double b)
{
    if (a.Mantissa == 0) return b;
    if (b.Mantissa == 0) return a;
    const int low = a.Exponent < b.Exponent ? a.Exponent : b.Exponent;
    return Round((Wide{a.Mantissa} << (a.Exponent - low)) + (Wide{b.Mantissa} << (b.Exponent - low)), low,
                 false);
}

// The value in units of 10^-decimals: first its 17 significant decimal digits (ties to even), then half up
// at the wanted decimal. For values from about 10^-3 to 10^10.
inline int64_t RoundedDecimals(Double value, int decimals)
{
    if (value.Mantissa == 0) return 0;
    const auto scaledBy = [&](int power, bool &half, bool &rest) {
        Wide scaled = value.Mantissa;
        for (int i = 0; i < power; ++i) {
            scaled *= 10;
        }
        const int shift = -value.Exponent; // all values here are below 2^52
        const Wide below = scaled & ((Wide{1} << shift) - 1);
        half = (below >> (shift - 1)) != 0;
        rest = (below & ((Wide{1} << (shift - 1)) - 1)) != 0;
        return scaled >> shift;
    };
    Wide lowest = 1;
    for (int i = 0; i < 16; ++i) {
        lowest *= 10;
    }
    int power = 0;
    bool half = false;
    bool rest = false;
    while (scaledBy(power, half, rest) < lowest) {
        ++power;
    }
    Wide digits = scaledBy(power, half, rest);
    if (half && (rest || (digits & 1) != 0)) ++digits;
    for (; power > decimals + 1; --power) {
        digits /= 10;
    }
    if (power == decimals + 1) digits = digits / 10 + (digits % 10 >= 5 ? 1 : 0);
    for (; power < decimals; ++power) {
        digits *= 10;
    }
    return static_cast<int64_t>(digits);
}

} // namespace exact
