// Values of records as the check of books reads and tells them.
#pragma once

#include "src/model/tables.h"

#include <cstdint>
#include <string>

namespace books {

int64_t Pfennig(const vark::AmountText &field);
// "-1.234,56"
std::string Money(int64_t pfennig);
// An account number's eight bytes, to look it up by.
uint64_t Packed(const vark::AccountNumber &number);
// Without its blanks.
std::string Konto(const vark::AccountNumber &number);
bool IsEmpty(const vark::AccountNumber &number);
// Whether a USt-IdNr begins with the two letters of its country, by which it is told whose it is.
bool NamesCountry(const std::string &ustId);

struct Turnover {
    int64_t Soll = 0;
    int64_t Haben = 0;
};

enum class AccountKind : uint8_t { Sachkonto, Kreditor, Debitor };

// The table of its accounts.
const char *KindName(AccountKind kind);

} // namespace books
