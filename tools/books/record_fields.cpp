#include "tools/books/record_fields.h"

#include "src/values/amounts.h"

#include <stdexcept>

namespace books {

using namespace vark;

void PutRate(RateText &field, int hundredths)
{
    field[0] = static_cast<char>('0' + hundredths / 1000 % 10);
    field[1] = static_cast<char>('0' + hundredths / 100 % 10);
    field[2] = ',';
    field[3] = static_cast<char>('0' + hundredths / 10 % 10);
    field[4] = static_cast<char>('0' + hundredths % 10);
    field[5] = 0;
}

int64_t Percent(int64_t amount, int hundredths)
{
    const int64_t product = (amount < 0 ? -amount : amount) * hundredths;
    const int64_t rounded = (product + 5000) / 10000;
    return amount < 0 ? -rounded : rounded;
}

void PutAmount(AmountText &field, int64_t pfennig)
{
    if (!AmountOfMagnitude(field, pfennig < 0 ? -pfennig : pfennig, pfennig < 0)) {
        throw std::runtime_error(
            "Ein Betrag wird größer als 999.999.999,99; bitte weniger Buchungen anlegen.");
    }
}

void PutDigits(char *to, int64_t number, int width)
{
    for (int i = width - 1; i >= 0; --i) {
        to[i] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

int ShareOf(const char *text)
{
    int value = 0;
    for (; *text != 0; ++text) {
        if (*text != ',') value = value * 10 + *text - '0';
    }
    return value;
}

} // namespace books
