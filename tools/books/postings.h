// A year and a half of final postings for one Mandant: invoices and payments, splits, cash sales, wages,
// taxes and what a year's end brings, with the sums of the accounts, the cost lines and the open items that
// follow from them.
#pragma once

#include "tools/books/ledger.h"
#include "tools/books/sample.h"

#include <cstdint>
#include <filesystem>

namespace books {

struct PostingPlan {
    int64_t Count;     // records of bube
    int64_t OpenItems; // that are left at the end, about
    uint64_t Seed;
};

// Fewer can't hold what each month brings.
inline constexpr int64_t postingsMin = 600;
// The running number of a day has four digits.
inline constexpr int64_t postingsMax = 3000000;

// Writes bube and kobu of both years and the open items below `data`, whose tables must exist and be empty,
// and adds to the ledger what the accounts' records must hold. The ledger's openings must stand, unbalanced:
// open items of earlier years are added to them here. Memory does not grow with the number of postings.
// Returns the records written.
int64_t WritePostings(Ledger &ledger, const PostingPlan &plan, const std::filesystem::path &data,
                      const Progress &progress);

} // namespace books
