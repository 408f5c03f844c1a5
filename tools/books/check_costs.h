// Cost centres, their lines, and the Kostenschablonen that spread costs.
#pragma once

#include "tools/books/year_check.h"

namespace books {

void CheckCostObjects(YearCheck &year);

// The lines, and the months of the cost centres that the final ones add up to.
void CheckCostLines(YearCheck &year);

void CheckTemplates(YearCheck &year);

} // namespace books
