// What locks have in common, of whatever kind: results, waiting, and how often each is held.
#pragma once

#include "record-manager/include/btrcall.h"

#include <cstddef>
#include <cstdint>

namespace wbtrv {

inline constexpr int64_t wholeFile = int64_t{1} << 32; // length of the range of a file's records

enum class LockResult : uint8_t { Granted, RecordBusy, FileBusy, Deadlock, NoDescription, NoMemory, Failed };

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
