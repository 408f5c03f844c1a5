// The small tables: terms, users, Stapel, rates of exchange, and those whose records belong to the accounting
// application.
#pragma once

#include "tools/books/year_check.h"

namespace books {

// What other tables refer to, out of the last year, which holds these tables.
void ReadReferences(YearCheck &year);

void CheckSmallTables(YearCheck &year);
void CheckExchangeRates(YearCheck &year);

// Tables whose records nothing here refers to, and those that an older year keeps without use.
void CheckUnused(YearCheck &year);

} // namespace books
