// Values as records hold them and as people read them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rs {

// An amount field of a record (12 characters, the mark at index 9 "," or "-") in Pfennig. An empty field is
// zero; a place that holds no digit counts as 0.
int64_t PfennigOf(const char *field);

// A rate field of a record ("16,00") in hundredths of a per cent; false for an empty one.
bool HundredthsOf(const char *field, int64_t &hundredths);

// A date field of a record, DDMMJJ with the year counted from 1980, as TT.MM.JJJJ; empty for an empty field,
// and what holds no six digits as it stands. `out` has at least 16 bytes.
void DateText(const char *field, char *out);

// How an amount looks.
enum class Look {
    plain,   // -1234,50
    grouped, // -1.234,50
    printed, // the same with the minus sign of typesetting, as wide as a digit
    machine  // -1234.50
};

inline constexpr size_t amountSize = 40; // of any look, NUL included

// Writes a number of hundredths; returns its length.
size_t WriteHundredths(int64_t value, Look look, char (&out)[amountSize]);

// Writes a whole number, "printed" with its minus sign, ungrouped in every look (numbers are names here).
size_t WriteNumber(int64_t value, Look look, char (&out)[amountSize]);

} // namespace rs
