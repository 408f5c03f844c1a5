// Random numbers that are the same on every machine for the same seed.
#pragma once

#include <cstdint>

namespace books {

// SplitMix64: a counter through a mixing function; good enough for samples, and a seed is one number.
struct Random {
    uint64_t State;

    uint64_t Next()
    {
        State += 0x9E3779B97F4A7C15u;
        uint64_t mixed = State;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }

    // 0 .. bound - 1: the upper half of the product, put together from halves since not every machine
    // multiplies 128 bits. The bias is far below what a sample shows.
    int64_t Below(int64_t bound)
    {
        const uint64_t number = Next();
        const auto times = static_cast<uint64_t>(bound);
        constexpr uint64_t lower = 0xFFFFFFFFu;
        const uint64_t low = (number & lower) * (times & lower);
        const uint64_t mixed = (number >> 32) * (times & lower) + (low >> 32);
        const uint64_t other = (number & lower) * (times >> 32) + (mixed & lower);
        return static_cast<int64_t>((number >> 32) * (times >> 32) + (mixed >> 32) + (other >> 32));
    }

    int64_t Between(int64_t low, int64_t high) { return low + Below(high - low + 1); }

    bool Chance(int percent) { return Below(100) < percent; }

    // 0 .. bound - 1, the small ones far more often: a few customers buy most.
    int64_t Skewed(int64_t bound)
    {
        const int64_t a = Below(bound);
        const int64_t b = Below(bound);
        return (a < b ? a : b) * Below(1000) / 1000;
    }
};

} // namespace books
