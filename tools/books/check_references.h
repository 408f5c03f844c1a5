// What the fields of a record refer to must be there, by the description of the tables.
#pragma once

#include "tools/books/year_check.h"
#include "tools/common/layout.h"

namespace books {

// Nodes of trees, bookings and their parts are followed where these are read. Nothing is missing in a table
// that could not be read.
void CheckReferences(YearCheck &year, const tools::TableLayout &layout, const char *record);

template <typename Record> void CheckReferences(YearCheck &year, vark::TableId id, const Record &record)
{
    CheckReferences(year, tools::LayoutOf(id), reinterpret_cast<const char *>(&record));
}

} // namespace books
