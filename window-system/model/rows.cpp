#include "window-system/model/rows.h"

#include <atomic>
#include <cassert>
#include <cstring>

#include "window-system/model/collation.h"
#include "window-system/model/memory.h"

namespace varkui {

namespace {

std::atomic<LONG> rowLimit{0};

constexpr size_t rowSize = sizeof(void *); // of a place in a chunk

int CompareKeys(const unsigned char *left, size_t leftLength, const unsigned char *right, size_t rightLength)
{
    const int order = memcmp(left, right, leftLength < rightLength ? leftLength : rightLength);
    if (order != 0) return order;
    return leftLength < rightLength ? -1 : leftLength > rightLength ? 1 : 0;
}

// A row with its text and key in one block; null when there is no memory.
Row *MakeRow(const char *text, bool sorted)
{
    const size_t length = strlen(text);
    Row *row = static_cast<Row *>(Allocate(sizeof(Row) + length + 1 + (sorted ? SortKeySize(length) : 0)));
    if (row == nullptr) return nullptr;
    row->Text = reinterpret_cast<char *>(row + 1);
    row->TextLength = length;
    memcpy(row->Text, text, length + 1);
    row->Key = reinterpret_cast<unsigned char *>(row->Text + length + 1);
    if (sorted) row->KeyLength = MakeSortKey(text, row->Key);
    return row;
}

// The chunk that holds row `index`; the last one for the end.
int ChunkOf(const Rows &rows, LONG index)
{
    int low = 0;
    int high = rows.ChunkCount - 1;
    while (low < high) {
        const int middle = (low + high + 1) / 2;
        if (rows.Starts[middle] <= index) {
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    return low;
}

// Makes room for one more chunk at `place`, which is left empty for the caller to fill.
RowChunk *AddChunk(Rows &rows, int place)
{
    if (rows.ChunkCount == rows.ChunkCapacity) {
        const int capacity = rows.ChunkCapacity == 0 ? 4 : rows.ChunkCapacity * 2;
        auto *chunks =
            static_cast<RowChunk **>(Reallocate(rows.Chunks, static_cast<size_t>(capacity) * sizeof(void *)));
        if (chunks == nullptr) return nullptr;
        rows.Chunks = chunks;
        auto *starts =
            static_cast<LONG *>(Reallocate(rows.Starts, static_cast<size_t>(capacity) * sizeof(LONG)));
        if (starts == nullptr) return nullptr;
        rows.Starts = starts;
        rows.ChunkCapacity = capacity;
    }
    auto *chunk = static_cast<RowChunk *>(Allocate(sizeof(RowChunk)));
    if (chunk == nullptr) return nullptr;
    for (int i = rows.ChunkCount; i > place; --i) {
        rows.Chunks[i] = rows.Chunks[i - 1];
        rows.Starts[i] = rows.Starts[i - 1];
    }
    rows.Chunks[place] = chunk;
    ++rows.ChunkCount;
    return chunk;
}

// Makes sure that row `index` can be put into its chunk. A chunk that is full at its end is followed by a new
// one, so that appending fills chunks; any other is halved.
bool MakeRoom(Rows &rows, LONG index)
{
    if (rows.ChunkCount == 0) {
        if (AddChunk(rows, 0) == nullptr) return false;
        rows.Starts[0] = 0;
        return true;
    }
    const int place = ChunkOf(rows, index);
    RowChunk *full = rows.Chunks[place];
    if (full->Count < chunkRows) return true;
    const LONG within = index - rows.Starts[place];
    const int kept = within == chunkRows ? chunkRows - 1 : chunkRows / 2;
    RowChunk *rest = AddChunk(rows, place + 1);
    if (rest == nullptr) return false;
    rest->Count = chunkRows - kept;
    memcpy(static_cast<void *>(rest->Items), full->Items + kept, static_cast<size_t>(rest->Count) * rowSize);
    full->Count = kept;
    rows.Starts[place + 1] = rows.Starts[place] + kept;
    return true;
}

// The number that a row of `key` gets: behind all that do not come after it.
LONG SortedPlace(const Rows &rows, const Row &row)
{
    if (rows.ChunkCount == 0) return 0;
    int low = 0;
    int high = rows.ChunkCount - 1;
    while (low < high) {
        const int middle = (low + high + 1) / 2;
        const Row &first = *rows.Chunks[middle]->Items[0];
        if (CompareKeys(first.Key, first.KeyLength, row.Key, row.KeyLength) <= 0) {
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    const RowChunk &chunk = *rows.Chunks[low];
    int from = 0;
    int to = chunk.Count;
    while (from < to) {
        const int middle = (from + to) / 2;
        const Row &item = *chunk.Items[middle];
        if (CompareKeys(item.Key, item.KeyLength, row.Key, row.KeyLength) <= 0) {
            from = middle + 1;
        } else {
            to = middle;
        }
    }
    return rows.Starts[low] + from;
}

bool Matches(const Row &row, const char *text, size_t length, bool whole)
{
    if (whole ? row.TextLength != length : row.TextLength < length) return false;
    return BeginsWithoutCase(row.Text, text);
}

// The first row of a sorted list whose key does not lie below the letters of `text`: only from there on, and
// only while the letters agree, can rows begin with it.
LONG FirstCandidate(const Rows &rows, const unsigned char *letters, size_t length)
{
    LONG low = 0;
    LONG high = rows.Count;
    while (low < high) {
        const LONG middle = low + (high - low) / 2;
        const Row &row = *RowAt(rows, middle);
        const int order = CompareKeys(row.Key, row.KeyLength, letters, length);
        if (order < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

LONG FindSorted(const Rows &rows, LONG after, const char *text, bool whole)
{
    const size_t length = strlen(text);
    auto *letters = static_cast<unsigned char *>(Allocate(SortKeySize(length)));
    if (letters == nullptr) return LB_ERR;
    MakeSortKey(text, letters);
    const size_t letterCount = strlen(reinterpret_cast<const char *>(letters)); // the first level alone
    LONG first = LB_ERR;
    LONG next = LB_ERR;
    for (LONG i = FirstCandidate(rows, letters, letterCount); i < rows.Count; ++i) {
        const Row &row = *RowAt(rows, i);
        if (memcmp(row.Key, letters, letterCount < row.KeyLength ? letterCount : row.KeyLength) != 0) break;
        if (!Matches(row, text, length, whole)) continue;
        if (first == LB_ERR) first = i;
        if (i > after) {
            next = i;
            break;
        }
    }
    Release(letters);
    return next != LB_ERR ? next : first;
}

} // namespace

LONG InsertRow(Rows &rows, LONG index, const char *text, bool atSortedPlace)
{
    if (index < -1 || index > rows.Count) return LB_ERR;
    const LONG limit = rowLimit.load(std::memory_order_relaxed);
    if ((limit > 0 && rows.Count >= limit) || rows.Count == INT32_MAX) return LB_ERRSPACE;
    Row *row = MakeRow(text, rows.Sorted);
    if (row == nullptr) return LB_ERRSPACE;
    if (index == -1) index = rows.Sorted && atSortedPlace ? SortedPlace(rows, *row) : rows.Count;
    if (!MakeRoom(rows, index)) {
        Release(row);
        return LB_ERRSPACE;
    }
    const int place = ChunkOf(rows, index);
    RowChunk &chunk = *rows.Chunks[place];
    const LONG within = index - rows.Starts[place];
    memmove(static_cast<void *>(chunk.Items + within + 1), chunk.Items + within,
            static_cast<size_t>(chunk.Count - within) * rowSize);
    chunk.Items[within] = row;
    ++chunk.Count;
    ++rows.Count;
    for (int i = place + 1; i < rows.ChunkCount; ++i) {
        ++rows.Starts[i];
    }
    if (!atSortedPlace) rows.OutOfOrder = true;
    return index;
}

Row *RowAt(const Rows &rows, LONG index)
{
    if (index < 0 || index >= rows.Count) return nullptr;
    const int place = ChunkOf(rows, index);
    return rows.Chunks[place]->Items[index - rows.Starts[place]];
}

bool RemoveRow(Rows &rows, LONG index)
{
    Row *row = RowAt(rows, index);
    if (row == nullptr) return false;
    const int place = ChunkOf(rows, index);
    RowChunk &chunk = *rows.Chunks[place];
    const LONG within = index - rows.Starts[place];
    memmove(static_cast<void *>(chunk.Items + within), chunk.Items + within + 1,
            static_cast<size_t>(chunk.Count - within - 1) * rowSize);
    Release(row);
    --chunk.Count;
    --rows.Count;
    for (int i = place + 1; i < rows.ChunkCount; ++i) {
        --rows.Starts[i];
    }
    if (chunk.Count > 0) return true;
    Release(&chunk);
    --rows.ChunkCount;
    for (int i = place; i < rows.ChunkCount; ++i) {
        rows.Chunks[i] = rows.Chunks[i + 1];
        rows.Starts[i] = rows.Starts[i + 1];
    }
    return true;
}

void RemoveAllRows(Rows &rows)
{
    for (int i = 0; i < rows.ChunkCount; ++i) {
        for (int j = 0; j < rows.Chunks[i]->Count; ++j) {
            Release(rows.Chunks[i]->Items[j]);
        }
        Release(rows.Chunks[i]);
    }
    Release(static_cast<void *>(rows.Chunks));
    Release(rows.Starts);
    rows = Rows{nullptr, nullptr, 0, 0, 0, rows.Sorted, false};
}

LONG FindRow(const Rows &rows, LONG after, const char *text, bool whole)
{
    if (rows.Count == 0) return LB_ERR;
    if (after < -1 || after >= rows.Count - 1) after = -1;
    if (rows.Sorted && !rows.OutOfOrder) return FindSorted(rows, after, text, whole);
    const size_t length = strlen(text);
    LONG wrapped = LB_ERR; // the first match at or before `after`
    LONG index = 0;
    for (int i = 0; i < rows.ChunkCount; ++i) {
        const RowChunk &chunk = *rows.Chunks[i];
        for (int j = 0; j < chunk.Count; ++j, ++index) {
            if (!Matches(*chunk.Items[j], text, length, whole)) continue;
            if (index > after) return index;
            if (wrapped == LB_ERR) wrapped = index;
        }
    }
    return wrapped;
}

void LimitRows(LONG limit) { rowLimit = limit; }

void CheckRows(const Rows &rows)
{
    LONG count = 0;
    [[maybe_unused]] const Row *previous = nullptr;
    for (int i = 0; i < rows.ChunkCount; ++i) {
        const RowChunk &chunk = *rows.Chunks[i];
        assert(chunk.Count > 0);
        assert(chunk.Count <= chunkRows);
        assert(rows.Starts[i] == count);
        count += chunk.Count;
        for (int j = 0; rows.Sorted && !rows.OutOfOrder && j < chunk.Count; ++j) {
            assert(previous == nullptr || CompareKeys(previous->Key, previous->KeyLength, chunk.Items[j]->Key,
                                                      chunk.Items[j]->KeyLength) <= 0);
            previous = chunk.Items[j];
        }
    }
    assert(rows.Count == count);
}

} // namespace varkui

void VarkUiLimitLists(LONG rows) { varkui::LimitRows(rows); }
