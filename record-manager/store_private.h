// What the two halves of the store share: stores.cpp, which opens and closes books, and store.cpp, which
// reads and writes them.
#pragma once

#include "record-manager/store.h"

#include <cstdint>
#include <cstring>
#include <lmdb.h>

namespace wbtrv {

// The catalogue lies in the store's main tree:
//   "!format"        FormatRecord
//   "n:" NAME        file number, u32
//   NNNNNNNN "c"     counters, 16 bytes and 4 per key
//   NNNNNNNN "d"     definition, as create gave it
//   NNNNNNNN "t"     the tree of its records, which the store itself keeps here
//   NNNNNNNN "iKK"   the tree of an index, KK being the key's place in the definition, in hexadecimal too
// NNNNNNNN is the file number in hexadecimal. So a file's counters, which each commit writes, share a page
// with the root of its tree, which each commit writes anyway.
struct FormatRecord {
    char Mark[8];
    uint32_t Format;
    uint32_t LastFile;
};
inline constexpr char formatKey[] = "!format";
inline constexpr char formatMark[9] = "WBTRVBKS";
inline constexpr uint32_t formatNumber = 1;

// The status of a failure of the store or of the system.
int16_t StatusOf(int error);
// The same, with a status of its own for one error.
int16_t StatusOf(int error, int special, int16_t status);

inline MDB_val ToVal(Bytes bytes) { return {bytes.Size, const_cast<uint8_t *>(bytes.Data)}; }

inline MDB_val ToVal(const char *text) { return {strlen(text), const_cast<char *>(text)}; }

inline Bytes ToBytes(const MDB_val &val) { return {static_cast<const uint8_t *>(val.mv_data), val.mv_size}; }

// Whether the lock file by which this process works is still the one that newcomers find.
bool HasLockFile(const Store *store);

} // namespace wbtrv
