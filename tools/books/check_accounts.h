// Accounts of a year, and the tax keys that they name.
#pragma once

#include "tools/books/year_check.h"

namespace books {

// steke; its accounts follow once these are known.
void CheckRates(YearCheck &year);
void CheckRateRows(YearCheck &year);

// sako, debi and kred, and the openings and closings of all of them together.
void CheckAccounts(YearCheck &year);

} // namespace books
