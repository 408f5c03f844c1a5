// What waits in a Stapel of the sample books.
#pragma once

#include "tools/books/ledger.h"

#include <cstdint>
#include <filesystem>

namespace books {

// Writes the bookings of the Mandant that wait in a Stapel, with their cost lines, into the directory of its
// last year, whose tables must exist. Returns the records written.
int64_t WriteBatches(Ledger &ledger, const std::filesystem::path &directory);

} // namespace books
