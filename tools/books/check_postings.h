// Final postings, and the months of the accounts that they add up to.
#pragma once

#include "tools/books/year_check.h"

namespace books {

void CheckPostings(YearCheck &year);

// The months of the accounts against the postings, when all of these were read.
void CompareSums(YearCheck &year);

} // namespace books
