// What the small programs beside ours have in common: their arguments, their clock, their way to give up.
#pragma once

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

struct Arguments {
    const char *Directory;
    long Count;
};

// The number that a text begins with, 0 for none.
inline long NumberOf(const char *text)
{
    long number = 0;
    std::from_chars(text, text + std::strlen(text), number);
    return number;
}

inline Arguments PeerArguments(int count, char **arguments)
{
    if (count < 3) {
        std::fprintf(stderr, "%s DIRECTORY COUNT\n", arguments[0]);
        std::exit(2);
    }
    return {arguments[1], NumberOf(arguments[2])};
}

// Ends the program for any result but 0.
inline void Must(int result)
{
    if (result == 0) return;
    std::fprintf(stderr, "failed with %d\n", result);
    std::exit(1);
}

inline uint32_t BigEndian(uint32_t number) { return __builtin_bswap32(number); }

struct Stopwatch {
    std::chrono::steady_clock::time_point Start = std::chrono::steady_clock::now();

    double Seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
    }
    void Print() const { std::printf("%.6f\n", Seconds()); }
};
