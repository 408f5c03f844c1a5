// The records that stand in the books before and beside the postings.
#pragma once

#include "tools/books/ledger.h"
#include "tools/common/table_file.h"

#include <filesystem>

namespace books {

// One year directory of a Mandant: every table but those of the postings. Returns how many records were
// written.
int64_t WriteYear(const Ledger &ledger, int yearIndex, const std::filesystem::path &directory);

// The Mandant's record in fista.
void WriteCompany(const Ledger &ledger, tools::TableFile &fista);

} // namespace books
