// Unsigned numbers of 128 bits where the compiler has none of its own: as much of their arithmetic as tests
// use.
#pragma once

#include <compare>
#include <cstdint>

namespace exact {

struct HalvedNumber {
    uint64_t High;
    uint64_t Low;

    constexpr HalvedNumber(uint64_t low = 0) : High(0), Low(low) {}
    constexpr HalvedNumber(uint64_t high, uint64_t low) : High(high), Low(low) {}
    constexpr explicit operator uint64_t() const { return Low; }
    constexpr explicit operator int64_t() const { return static_cast<int64_t>(Low); }
    constexpr auto operator<=>(const HalvedNumber &) const = default;
};

constexpr HalvedNumber operator<<(HalvedNumber a, int bits)
{
    if (bits == 0) return a;
    if (bits >= 64) return {a.Low << (bits - 64), 0};
    return {a.High << bits | a.Low >> (64 - bits), a.Low << bits};
}

constexpr HalvedNumber operator>>(HalvedNumber a, int bits)
{
    if (bits == 0) return a;
    if (bits >= 64) return {0, a.High >> (bits - 64)};
    return {a.High >> bits, a.Low >> bits | a.High << (64 - bits)};
}

constexpr HalvedNumber operator&(HalvedNumber a, HalvedNumber b) { return {a.High & b.High, a.Low & b.Low}; }

constexpr HalvedNumber operator+(HalvedNumber a, HalvedNumber b)
{
    const uint64_t low = a.Low + b.Low;
    return {a.High + b.High + (low < a.Low ? 1 : 0), low};
}

constexpr HalvedNumber operator-(HalvedNumber a, HalvedNumber b)
{
    return {a.High - b.High - (a.Low < b.Low ? 1 : 0), a.Low - b.Low};
}

// Two halves of 64 bits, each in two of 32.
constexpr HalvedNumber ProductOfHalves(uint64_t a, uint64_t b)
{
    constexpr uint64_t half = 0xFFFFFFFF;
    const uint64_t low = (a & half) * (b & half);
    const uint64_t between = (a >> 32) * (b & half) + (low >> 32);
    const uint64_t other = (a & half) * (b >> 32) + (between & half);
    return {(a >> 32) * (b >> 32) + (between >> 32) + (other >> 32), other << 32 | (low & half)};
}

constexpr HalvedNumber operator*(HalvedNumber a, HalvedNumber b)
{
    HalvedNumber product = ProductOfHalves(a.Low, b.Low);
    product.High += a.High * b.Low + a.Low * b.High;
    return product;
}

struct Division {
    HalvedNumber Quotient;
    HalvedNumber Rest;
};

// Digit by digit, as on paper. The divisor has to be below 2^127.
constexpr Division Divided(HalvedNumber a, HalvedNumber b)
{
    Division division;
    for (int bit = 127; bit >= 0; --bit) {
        division.Rest = (division.Rest << 1) + ((a >> bit) & 1);
        division.Quotient = division.Quotient << 1;
        if (division.Rest < b) continue;
        division.Rest = division.Rest - b;
        division.Quotient = division.Quotient + 1;
    }
    return division;
}

constexpr HalvedNumber operator/(HalvedNumber a, HalvedNumber b) { return Divided(a, b).Quotient; }

constexpr HalvedNumber operator%(HalvedNumber a, HalvedNumber b) { return Divided(a, b).Rest; }

constexpr HalvedNumber &operator<<=(HalvedNumber &a, int bits) { return a = a << bits; }

constexpr HalvedNumber &operator>>=(HalvedNumber &a, int bits) { return a = a >> bits; }

constexpr HalvedNumber &operator*=(HalvedNumber &a, HalvedNumber b) { return a = a * b; }

constexpr HalvedNumber &operator/=(HalvedNumber &a, HalvedNumber b) { return a = a / b; }

constexpr HalvedNumber &operator++(HalvedNumber &a) { return a = a + 1; }

// 10^20, by way of its halves and back; by a calculator 5 * 2^64 + 7766279631452241920.
static_assert(HalvedNumber{10'000'000'000} * 10'000'000'000 == HalvedNumber{5, 7766279631452241920});
static_assert(HalvedNumber{5, 7766279631452241920} / 10'000'000'000 == HalvedNumber{10'000'000'000});
static_assert(HalvedNumber{5, 7766279631452241927} % 10 == HalvedNumber{7});
static_assert((HalvedNumber{1} << 127 >> 126) == HalvedNumber{2});

} // namespace exact
