// The reports there are and the size of each kind of their records. Records come without a length, so this
// table decides how many bytes of one are read, and a template that declares more is refused.
#pragma once

#include <cstddef>

namespace rs {

inline constexpr int kindCount = 9;           // 0 the header, 1 to 8 data
inline constexpr size_t maxRecordSize = 1000; // of any

// Bytes of the records of `kind` of the report `id`; 0 for a kind that the report does not have.
// A text at the end of a record whose width nothing else settles has 30 bytes for a range of accounts ("von
// 1234567 bis 1234567" is the longest), 50 for a title, 31 for the name of a Kostenstelle.
struct CatalogueRow {
    const char *Id;
    size_t RecordSizes[kindCount];
};

// The row of a report id, null for an unknown one (or null).
const CatalogueRow *FindInCatalogue(const char *id);

} // namespace rs
