// The tables of the books as constant data, from which the layouts are made.
#pragma once

#include "tools/common/layout.h"

#include <span>

namespace tools {

// A structure that lies inside of a record, its fields under "Name.".
enum class Nest : uint8_t { None, Sums, Part };

struct FieldRow {
    const char *Name;
    size_t Offset;
    size_t Width;
    Form Type;
    Reference Target;
    const char *Meaning; // of an array, the number follows; of what lies inside, it goes before
    bool IsNeeded = false;
    size_t Count = 0; // of an array: "Name[0]", "Name[1]" …
    Nest Inside = Nest::None;
};

struct KeyRow {
    bool Duplicates;
    bool Modifiable;
    KeySegment Segments[2]; // a length of 0 is none
};

struct TableRow {
    vark::TableId Id;
    const char *Stem;
    size_t RecordLength;
    const char *Content;
    std::span<const KeyRow> Keys;
    std::span<const FieldRow> Fields;
    Reference Personal = Reference::None; // what the fields for any personal account lead to here
};

// All tables, in the order of their files' numbers.
std::span<const TableRow> TableRows();

// The fields of the structures that lie inside of records: a pair of sums, the counters of an account, a part
// of a split posting.
std::span<const FieldRow> SumFields();
std::span<const FieldRow> CountFields();
std::span<const FieldRow> PartFields();

} // namespace tools
