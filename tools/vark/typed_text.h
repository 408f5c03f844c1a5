// Texts that a person types, on their way into the books.
#pragma once

#include <string>

namespace cli {

// Why a text cannot go into the books: characters that Windows-1252 lacks, or that steer a terminal. German;
// empty for a good one. `utf8` is as it was typed.
std::string FaultOfText(const std::string &utf8);

// A currency as the books have it: in capitals.
std::string CurrencyOf(const std::string &typed);

} // namespace cli
