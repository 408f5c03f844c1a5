// How records and index entries lie in a file's trees.
//
//   tree            key                                 value
//   records         record number, u32                  stamps · record
//   each index      ordered value · running number (6)  record number, u32    duplicates allowed
//                   ordered value                       record number, u32    otherwise
//
// The numbers in the keys of an index are big-endian, so that the order of its bytes is theirs. The stamps
// are six bytes each: the change that last wrote the record, from which a conflict is told, then per key with
// duplicates the running number of its index entry. All are drawn from the file's sequence, so the youngest
// of a group of duplicates comes last in it; a key with repeating duplicates has the record number instead.
#pragma once

#include "record-manager/fields.h"
#include "record-manager/keys.h"
#include "record-manager/limits.h"
#include "record-manager/store.h"

#include <cstring>

namespace wbtrv {

inline constexpr size_t stampSize = 6;
inline constexpr size_t maxEntryKey = maxKeyLength + stampSize;

inline void PutBigEndian(uint8_t *to, uint64_t value, size_t size)
{
    for (size_t i = size; i-- > 0; value >>= 8) {
        to[i] = static_cast<uint8_t>(value);
    }
}

inline uint64_t GetBigEndian(const uint8_t *from, size_t size)
{
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i) {
        value = value << 8 | from[i];
    }
    return value;
}

inline Bytes KeyOfRecord(const uint32_t &record)
{
    return {reinterpret_cast<const uint8_t *>(&record), sizeof record};
}

// The record number that a tree gives, as a record's key or an entry's value; 0 when it is none.
inline uint32_t RecordNumber(Bytes bytes)
{
    return bytes.Size == sizeof(uint32_t) ? GetField<uint32_t>(bytes.Data) : 0;
}

inline size_t StampsSize(const Definition &definition) { return stampSize * (1u + definition.DuplicateKeys); }

inline const uint8_t *RecordOf(const Definition &definition, Bytes stored)
{
    return stored.Data + StampsSize(definition);
}

inline uint64_t VersionOf(Bytes stored) { return GetBigEndian(stored.Data, stampSize); }

// Where the running number of a key with duplicates lies in the stamps.
inline size_t RunningOffset(const Key &key) { return stampSize * (1u + key.DuplicateIndex); }

// The running number of a record that joins its group of duplicates by this change.
inline uint64_t RunningOf(const Key &key, uint32_t record, uint64_t sequence)
{
    return key.Repeating ? record : sequence;
}

inline size_t EntryKeySize(const Key &key) { return key.Length + (key.Duplicates ? stampSize : 0); }

// Whether an entry's key begins with the first `size` bytes of `bound`.
inline bool BeginsWith(Bytes key, const uint8_t *bound, size_t size)
{
    return key.Size >= size && std::memcmp(key.Data, bound, size) == 0;
}

// The index entry of a record under one of its keys; returns its size.
inline size_t EntryKeyOf(const Definition &definition, const Key &key, const uint8_t *record,
                         uint64_t running, uint8_t *out)
{
    OrderedFromRecord(definition, key, record, out);
    if (key.Duplicates) PutBigEndian(out + key.Length, running, stampSize);
    return EntryKeySize(key);
}

// The same of a stored record, which carries its running numbers.
inline size_t EntryKeyOf(const Definition &definition, const Key &key, Bytes stored, uint8_t *out)
{
    const uint64_t running = key.Duplicates ? GetBigEndian(stored.Data + RunningOffset(key), stampSize) : 0;
    return EntryKeyOf(definition, key, RecordOf(definition, stored), running, out);
}

// The four bytes by which callers know a record: the more significant half first, each half little-endian.
inline void PositionFromRecord(uint32_t record, uint8_t *out)
{
    out[0] = static_cast<uint8_t>(record >> 16);
    out[1] = static_cast<uint8_t>(record >> 24);
    out[2] = static_cast<uint8_t>(record);
    out[3] = static_cast<uint8_t>(record >> 8);
}

inline uint32_t RecordFromPosition(const uint8_t *position)
{
    return uint32_t{position[0]} << 16 | uint32_t{position[1]} << 24 | uint32_t{position[2]} |
           uint32_t{position[3]} << 8;
}

// A stored record that is too short for its file is damage.
inline bool IsWhole(const Definition &definition, Bytes stored)
{
    return stored.Size >= StampsSize(definition) + definition.RecordLength;
}

// Returns 0, 4 none, or a failure.
inline int16_t FetchStored(View *view, const File &file, uint32_t record, Bytes *stored)
{
    const int16_t status = file.Do->Get(view, file, recordTree, KeyOfRecord(record), stored);
    if (status != BtrStatusOk) return status;
    return IsWhole(file.Layout, *stored) ? BtrStatusOk : BtrStatusForeignFile;
}

} // namespace wbtrv
