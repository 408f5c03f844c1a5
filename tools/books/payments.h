// Payments of customers and to suppliers: whole, in part, late, ahead of the invoice, with discount.
#pragma once

#include "tools/books/generator.h"

namespace books {

// The tax of what was paid moves from the account for tax that is not yet due.
void BookTaxDue(Generator &maker, uint8_t key, tools::Day invoiced, int64_t net, int64_t tax,
                const char *prefix, int64_t voucher);

// The oldest open item is paid, in at most `room` records.
void CustomerPays(Generator &maker, int64_t room);
void SupplierIsPaid(Generator &maker, int64_t room);

} // namespace books
