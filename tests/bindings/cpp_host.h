// Uses of vark40.hpp that are compiled without exceptions and without types at run time.
#pragma once

#include <string>
#include <vector>

#include <vark40.hpp>

// The numbers of all Debitoren outside of the country "D", by a pipeline over the range.
std::vector<std::string> ForeignDebitoren(const vark40::Buecher &books);

// The sum of the open items of a kind, or what went wrong.
vark40::Result<vark40::Betrag> SumOfOpenItems(const vark40::Buecher &books, vark40::Kontoart art);
