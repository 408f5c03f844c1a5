// Invoices that wait for their payment, as records.
#pragma once

#include "tools/books/generator.h"

namespace books {

// Writes all that are open at the end, and returns how many these are.
int64_t WriteOpenItems(const Generator &maker);

} // namespace books
