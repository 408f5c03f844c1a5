// The partners of the sample books. Plain data; sample.cpp turns it into records.
#pragma once

#include "tools/books/chart.h"

namespace books {

struct PartnerRow {
    const char *Kuerzel; // at most 8 characters
    const char *Name1;   // at most 25
    const char *Name2;
    const char *Street; // at most 30
    const char *Plz;
    const char *Place;
    const char *Land;
    const char *UstId;
    int Zahlungsziel;
    const char *Skonto;
    const char *Waehrung; // Kreditoren only; empty: that of the Mandant
    uint8_t Mandanten;
};

// In the order of their numbers, which begin at firstDebitor and firstKreditor.
std::span<const PartnerRow> Debitoren();
std::span<const PartnerRow> Kreditoren();

inline constexpr int firstDebitor = 10010;
inline constexpr int firstKreditor = 70010;
inline constexpr int partnerStep = 10;

} // namespace books
