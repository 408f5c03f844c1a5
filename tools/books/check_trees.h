// The trees of Bilanz and GuV.
#pragma once

#include "tools/books/year_check.h"

namespace books {

// That reports reach every node once, and every account of a side.
void CheckTrees(YearCheck &year);

} // namespace books
