// What every month brings, and the year's end.
#pragma once

#include "tools/books/generator.h"

namespace books {

// The postings of these days of the month that the generator has come to, and of the year's last one.
void MonthBegins(Generator &maker);
void MonthMiddle(Generator &maker);
void MonthWages(Generator &maker);
void MonthEnds(Generator &maker);
void YearEnds(Generator &maker);

// Brings the collective accounts up to what happened on Debitoren and Kreditoren this month.
void Reconcile(Generator &maker);

} // namespace books
