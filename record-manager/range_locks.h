// Locks on ranges of the books' file, at offsets far beyond its data, seen by every thread and process. They
// belong to a description of the open file and are gone with it, so with a process that died.
#pragma once

#include "record-manager/locks.h"

#include <cstdint>

namespace wbtrv {

// Where the locks lie. The first three belong to the directory, then a byte for each file's opens, then a
// range of 2^32 bytes for each file's records; record numbers start at 1.
inline constexpr int64_t lockBase = int64_t{1} << 62;
inline constexpr int64_t setupOffset = lockBase;           // write: opening or closing the books
inline constexpr int64_t presenceOffset = BtrPresenceByte; // read: a process has the books open
inline constexpr int64_t usageOffset =
    lockBase + 2; // read: a client has files open; write: a client is loading
constexpr int64_t OpensOffset(uint32_t file) { return lockBase + 0x1000000 + file; }
constexpr int64_t RecordOffset(uint32_t file, uint32_t record)
{
    return lockBase + ((int64_t{file} + 1) << 32) + record;
}

enum class LockKind : uint8_t { Read, Write };

// Takes or changes a lock of this description at once: one byte, or the whole range of a file's records. What
// is in the way is a record, or a whole file's range.
LockResult TryLock(int fd, LockKind kind, int64_t offset, int64_t length);

// Tries for up to `wait_ms`.
LockResult WaitLock(int fd, LockKind kind, int64_t offset, int64_t length, unsigned wait_ms);

// Gives the range free, whatever of it is locked through this description. What a whole file's lock covered
// is given free from its beginning on, in rising order; records that are left out stay locked.
void Unlock(int fd, int64_t offset, int64_t length);

// Closes the description, with its locks.
void CloseDescription(int fd);

} // namespace wbtrv
