// What happens on a working day: sales, purchases, payments, cash.
#pragma once

#include "tools/books/generator.h"

namespace books {

// One thing of a working day, at most `room` records.
void Anything(Generator &maker, int64_t room);

void SmallExpense(Generator &maker);

} // namespace books
