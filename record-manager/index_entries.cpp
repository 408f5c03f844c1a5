#include "record-manager/index_entries.h"

#include "record-manager/records.h"

namespace wbtrv {

namespace {

Cursor *IndexCursor(Change *change, const Key &key, int16_t *status)
{
    Cursor *cursor = nullptr;
    *status = UseWriteCursor(change->In, IndexTree(KeyIndex(change->In->Of->Layout, key)), &cursor);
    return cursor;
}

// Whether another entry of the group lies at the given side of the entry.
int16_t HasNeighbour(const Change &change, Cursor *cursor, const Key &key, Bytes entry, Side side, bool *has)
{
    uint8_t bound[maxEntryKey + 1];
    std::memcpy(bound, entry.Data, entry.Size);
    bound[entry.Size] = 0;
    Bytes found;
    Bytes ignored;
    const size_t size = side == Side::AtOrAfter ? entry.Size + 1 : entry.Size;
    const int16_t status =
        Functions(change).Seek(PendingView(change), cursor, {bound, size}, side, &found, &ignored);
    *has = status == BtrStatusOk && BeginsWith(found, entry.Data, key.Length);
    return status == BtrStatusEndOfFile ? static_cast<int16_t>(BtrStatusOk) : status;
}

} // namespace

int16_t AddEntry(Change *change, const Key &key, const uint8_t *record, uint32_t number, uint64_t sequence)
{
    const Definition &definition = change->In->Of->Layout;
    uint8_t entry[maxEntryKey];
    const size_t size = EntryKeyOf(definition, key, record, RunningOf(key, number, sequence), entry);
    int16_t status = BtrStatusOk;
    Cursor *cursor = IndexCursor(change, key, &status);
    if (status == BtrStatusOk) status = Functions(*change).Add(cursor, {entry, size}, KeyOfRecord(number));
    if (status == BtrStatusDuplicateKey) return status;
    bool first = true;
    if (status == BtrStatusOk && key.Duplicates && Functions(*change).CountGroups == nullptr) {
        // The running number is the highest of all, so another of the group would lie just before; a record
        // number need not be, nor one that a record brings with it.
        Bytes before;
        Bytes ignored;
        status = Functions(*change).SeekPrevious(PendingView(*change), cursor, &before, &ignored);
        first = status != BtrStatusOk || !BeginsWith(before, entry, key.Length);
        if (status == BtrStatusEndOfFile) status = BtrStatusOk;
        if (status == BtrStatusOk && first && (key.Repeating || sequence <= change->In->Now.Sequence)) {
            bool after = false;
            status = HasNeighbour(*change, cursor, key, {entry, size}, Side::AtOrAfter, &after);
            first = !after;
        }
    }
    if (status != BtrStatusOk) {
        change->Damaged = true;
        return status;
    }
    if (first) change->In->Now.UniqueValues[KeyIndex(definition, key)]++;
    return BtrStatusOk;
}

int16_t RemoveEntry(Change *change, const Key &key, const uint8_t *entry)
{
    const Bytes whole{entry, EntryKeySize(key)};
    const size_t index = KeyIndex(change->In->Of->Layout, key);
    bool before = false;
    bool after = false;
    int16_t status = BtrStatusOk;
    Cursor *cursor = IndexCursor(change, key, &status);
    if (status == BtrStatusOk && key.Duplicates && Functions(*change).CountGroups == nullptr) {
        status = HasNeighbour(*change, cursor, key, whole, Side::Before, &before);
        if (status == BtrStatusOk && !before)
            status = HasNeighbour(*change, cursor, key, whole, Side::AtOrAfter, &after);
    }
    if (status == BtrStatusOk)
        status = Functions(*change).Remove(change->Store->Pending, *change->In->Of, IndexTree(index), whole);
    if (status != BtrStatusOk) {
        change->Damaged = true;
        return status == BtrStatusKeyNotFound ? static_cast<int16_t>(BtrStatusForeignFile) : status;
    }
    if (!before && !after) change->In->Now.UniqueValues[index]--;
    return BtrStatusOk;
}

int16_t AssignNumbers(Change *change, uint8_t *record, bool *assigned)
{
    const Definition &definition = change->In->Of->Layout;
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        if (!key.Autoincrement || AutoincrementOf(definition, key, record) != 0) continue;
        const bool descending = definition.Segments[key.FirstSegment].Descending;
        Bytes entry;
        Bytes ignored;
        int16_t status = BtrStatusOk;
        Cursor *cursor = IndexCursor(change, key, &status);
        if (status == BtrStatusOk) {
            status = Functions(*change).Seek(PendingView(*change), cursor, {},
                                             descending ? Side::First : Side::Last, &entry, &ignored);
        }
        if (status != BtrStatusOk && status != BtrStatusEndOfFile) return status;
        uint64_t highest = 0;
        if (status == BtrStatusOk) highest = AutoincrementFromOrdered(definition, key, entry.Data);
        if (highest >= AutoincrementMax(key)) return BtrStatusDuplicateKey;
        SetAutoincrement(definition, key, record, highest + 1);
        *assigned = true;
    }
    return BtrStatusOk;
}

} // namespace wbtrv
