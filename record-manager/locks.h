// Locks seen by every thread and process: open-file-description locks on the books' file, at offsets far
// beyond its data. They are gone with the description, so with a process that died.
#pragma once

#include "record-manager/include/btrcall.h"

#include <cstddef>
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
inline constexpr int64_t wholeFile = int64_t{1} << 32; // length of a file's range

enum class LockKind : uint8_t { Read, Write };
enum class LockResult : uint8_t { Granted, RecordBusy, FileBusy, Deadlock, NoDescription, NoMemory, Failed };

// Takes or changes a lock of this description at once. What is in the way is a record, or a whole file's
// range.
LockResult TryLock(int fd, LockKind kind, int64_t offset, int64_t length);

// Tries for up to `wait_ms`.
LockResult WaitLock(int fd, LockKind kind, int64_t offset, int64_t length, unsigned wait_ms);

// Gives the range free, whatever of it is locked through this description.
void Unlock(int fd, int64_t offset, int64_t length);

// The status of a lock that was not granted.
int16_t StatusOfLock(LockResult result);

// Waiting in growing steps until a time is over.
struct Patience {
    int64_t Deadline_us;
    unsigned Step_us;
};
// Begins to wait; the first step is the shortest.
Patience StartPatience(unsigned wait_ms);
bool WaitMore(Patience *patience); // sleeps a step; false once the time is over
unsigned Remaining_ms(const Patience &patience);

// How often a client's position blocks hold each record of a file.
struct RecordCounts {
    struct Entry {
        uint32_t Record; // 0: free
        uint32_t Count;
    };
    Entry *Entries;
    size_t Capacity; // a power of two, or 0
    size_t Used;
};
uint32_t CountOf(const RecordCounts &counts, uint32_t record);
// False for lack of memory; nothing is changed then.
bool AddCount(RecordCounts *counts, uint32_t record);
// Returns what is left.
uint32_t SubtractCount(RecordCounts *counts, uint32_t record);
void ClearCounts(RecordCounts *counts);
// The lowest record held that is not below `from`; there must be one.
uint32_t NextHeld(const RecordCounts &counts, uint32_t from);

} // namespace wbtrv
