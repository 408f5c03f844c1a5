// The table that the report benchmark and its peer both lay out: the lines of a Summen- und Saldenliste, as
// they come from books of that many accounts. The same seed gives both the same figures.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

struct BenchLine {
    std::string Konto;
    std::string Name;
    int64_t Amounts[8]; // Vortrag, month, cumulated, sums: Soll and Haben each, in Pfennig
};

inline BenchLine MakeBenchLine(int number, uint32_t &state)
{
    constexpr const char *words[] = {
        "Forderungen", "Geschäftsausstattung", "Sparkasse", "Mieten", "Löhne",   "Büromaterial",
        "Erlöse",      "Wareneingang",         "Postbank",  "Kasse",  "Steuern", "Versicherungen"};
    const auto next = [&state] { return state = state * 1664525u + 1013904223u; };
    BenchLine line;
    line.Konto = std::to_string(number);
    line.Name = std::string(words[(next() >> 16) % 12]) + " " + words[(next() >> 16) % 12] + " " +
                std::to_string(number);
    for (int64_t &amount : line.Amounts) {
        amount = (next() >> 8) % 3 == 0 ? 0 : next() % 900'000'000;
    }
    return line;
}
