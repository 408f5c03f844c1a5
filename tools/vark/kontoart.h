// Numbers of accounts and their kinds, as the exports count them and as a person writes them.
#pragma once

#include "include/vark40.h"

#include <cstddef>
#include <optional>
#include <string>

namespace cli {

inline constexpr size_t kontoDigits = 7;

enum Kontoart : int {
    ArtSachkonto = VARK_SACHKONTO,
    ArtKreditor = VARK_KREDITOR,
    ArtDebitor = VARK_DEBITOR,
    ArtKostenstelle = VARK_KOSTENSTELLE
};

// "Debitor", "Debitoren", "d" or "4", without regard to case; nothing for what is no kind.
std::optional<int> ReadKontoart(const std::string &text);

// The same; what is no kind is a UsageError.
int KontoartOf(const std::string &text);

// "S", "K", "D", "KSt"; empty for any other number.
const char *KindLetter(int art);
// "Sachkonto" …
const char *KindName(int art);

// "Sachkonto, Kreditor oder Debitor": those of a set.
std::string KindNames(unsigned kinds);

// The kind of an account by its number (Windows-1252). Sachkonto for one that is unknown: the library then
// says what is wrong with it.
int FindKind(int mandant, const std::string &konto);

} // namespace cli
