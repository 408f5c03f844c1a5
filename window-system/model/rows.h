// The rows of a list box or combo box: texts with a value each, in the order of their insertion or sorted.
// Made for 100,000 rows: inserting anywhere, reading by number and finding by beginning stay fast.
#pragma once

#include <cstddef>

#include "window-system/include/varkui.h"

namespace varkui {

struct Row {
    LONG_PTR Data;
    size_t TextLength;
    size_t KeyLength; // 0 in a list that is not sorted
    char *Text;
    unsigned char *Key;
};

// A run of neighbouring rows. A full one is split, an empty one taken out.
constexpr int chunkRows = 256;

struct RowChunk {
    int Count;
    Row *Items[chunkRows];
};

// Invariants, checked by CheckRows:
// R1  The counts of all chunks add up to Count.
// R2  No chunk is empty or holds more than chunkRows.
// R3  Starts[i] is the number of rows before chunk i.
// R4  In a sorted list that is in order no key lies below the one before.
struct Rows {
    RowChunk **Chunks;
    LONG *Starts;
    int ChunkCount;
    int ChunkCapacity;
    LONG Count;
    bool Sorted;
    bool OutOfOrder; // a row was put where the caller wanted it; new ones still look for their place
};

// Adds a row at `index` (-1: at its sorted place, or at the end). Returns its number; LB_ERR for an index
// beyond the end, LB_ERRSPACE when memory or the limit is reached.
LONG InsertRow(Rows &rows, LONG index, const char *text, bool atSortedPlace);

// The row of a number, null beyond the end.
Row *RowAt(const Rows &rows, LONG index);

// False when there is no such row.
bool RemoveRow(Rows &rows, LONG index);

// Empties the list and frees what it holds.
void RemoveAllRows(Rows &rows);

// The first row after number `after` (-1: from the start), going round, that begins with `text` (or reads it,
// when `whole`) without regard to case; LB_ERR when there is none.
LONG FindRow(const Rows &rows, LONG after, const char *text, bool whole);

// How many rows a list holds at most; 0 for as many as memory holds.
void LimitRows(LONG limit);

// Stops, in builds with assertions, where R1 to R4 do not hold.
void CheckRows(const Rows &rows);

} // namespace varkui
