// Bookings that wait in a Stapel.
#pragma once

#include "tools/books/year_check.h"

namespace books {

// bat and split, with the number of their parts and of their cost lines.
void CheckBatches(YearCheck &year);

} // namespace books
