// What a year begins with against what the year before left.
#pragma once

#include "tools/books/year_check.h"

namespace books {

// Assets, Debitoren and Kreditoren take over what they held. Equity takes the result over.
void CheckOpening(YearCheck &year);

} // namespace books
