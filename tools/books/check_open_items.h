// Open items against the accounts that owe or are owed them.
#pragma once

#include "tools/books/year_check.h"

namespace books {

void CheckOpenItems(YearCheck &year);

} // namespace books
