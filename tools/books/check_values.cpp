#include "tools/books/check_values.h"

#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"

#include <cstring>

namespace books {

using namespace tools;
using namespace vark;

int64_t Pfennig(const AmountText &field)
{
    return field[0] != 0 && field[amountMark] == '-' ? -MagnitudeOf(field) : MagnitudeOf(field);
}

std::string Money(int64_t pfennig)
{
    AmountText field{};
    if (!AmountOfMagnitude(field, pfennig < 0 ? -pfennig : pfennig, pfennig < 0))
        return Grouped(pfennig) + " Pfennig";
    FormattedAmount text{};
    std::memcpy(text, field, sizeof field);
    GroupAmount(text);
    return text;
}

uint64_t Packed(const AccountNumber &number)
{
    uint64_t packed;
    std::memcpy(&packed, number, sizeof packed);
    return packed;
}

std::string Konto(const AccountNumber &number) { return std::string(Trimmed(FieldText(number))); }

bool IsEmpty(const AccountNumber &number) { return number[0] == 0; }

const char *KindName(AccountKind kind)
{
    switch (kind) {
    case AccountKind::Sachkonto: return "sako";
    case AccountKind::Kreditor: return "kred";
    case AccountKind::Debitor: return "debi";
    }
    return "";
}

bool NamesCountry(const std::string &ustId)
{
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    return ustId.size() > 2 && isLetter(ustId[0]) && isLetter(ustId[1]);
}

} // namespace books
