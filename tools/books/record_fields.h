// Writing the fields of records of the sample books.
#pragma once

#include "src/model/tables.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace books {

// Half up, which is what rounding of a positive or negative amount means in the books.
int64_t Percent(int64_t amount, int hundredths);

// Writes a field; an amount that does not fit is an exception.
void PutAmount(vark::AmountText &field, int64_t pfennig);

void PutRate(vark::RateText &field, int hundredths);

// `width` digits of a number, without a NUL.
void PutDigits(char *to, int64_t number, int width);

template <size_t Width> void PutText(char (&field)[Width], const char *windows1252)
{
    std::memcpy(field, windows1252, std::min(std::strlen(windows1252), Width - 1));
}

// "16,00" in hundredths.
int ShareOf(const char *text);

} // namespace books
