// The layout of the books' records, written out: for a terminal, for programs, and as a page.
#pragma once

#include <cstdint>
#include <string>

namespace books {

enum class DescribeAs : uint8_t { Table, Csv, Json, Html };

// One table, or all where `table` is empty: as a list of tables, with their fields in the other forms.
// Returns the exit code; throws where there is no such table.
int DescribeTables(const std::string &table, DescribeAs as);

} // namespace books
