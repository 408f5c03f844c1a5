#include "record-manager/locks.h"

#include "record-manager/include/btrcall.h"

#include <cstdlib>
#include <ctime>

namespace wbtrv {

namespace {

int64_t Clock_us()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

constexpr unsigned firstStep_us = 100;
constexpr unsigned longestStep_us = 5000;

} // namespace

int16_t StatusOfLock(LockResult result)
{
    switch (result) {
    case LockResult::Granted: return BtrStatusOk;
    case LockResult::RecordBusy: return BtrStatusRecordLocked;
    case LockResult::FileBusy: return BtrStatusFileLocked;
    case LockResult::Deadlock: return BtrStatusDeadlock;
    case LockResult::NoDescription: return BtrStatusFileTableFull;
    case LockResult::NoMemory: return BtrStatusHandleTableFull;
    case LockResult::Failed: break;
    }
    return BtrStatusIoError;
}

Patience StartPatience(unsigned wait_ms) { return {Clock_us() + int64_t{wait_ms} * 1000, firstStep_us}; }

bool WaitMore(Patience *patience)
{
    const int64_t left = patience->Deadline_us - Clock_us();
    if (left <= 0) return false;
    const int64_t step = left < patience->Step_us ? left : patience->Step_us;
    const timespec pause{0, static_cast<long>(step) * 1000};
    nanosleep(&pause, nullptr);
    if (patience->Step_us < longestStep_us) patience->Step_us *= 2;
    return true;
}

unsigned Remaining_ms(const Patience &patience)
{
    const int64_t left = patience.Deadline_us - Clock_us();
    return left <= 0 ? 0 : static_cast<unsigned>((left + 999) / 1000);
}

namespace {

size_t Slot(const RecordCounts &counts, uint32_t record)
{
    size_t slot = (record * size_t{2654435761}) & (counts.Capacity - 1);
    while (counts.Entries[slot].Record != 0 && counts.Entries[slot].Record != record) {
        slot = (slot + 1) & (counts.Capacity - 1);
    }
    return slot;
}

bool Grow(RecordCounts *counts)
{
    RecordCounts larger{nullptr, counts->Capacity == 0 ? 16 : counts->Capacity * 2, counts->Used};
    larger.Entries =
        static_cast<RecordCounts::Entry *>(std::calloc(larger.Capacity, sizeof(RecordCounts::Entry)));
    if (larger.Entries == nullptr) return false;
    for (size_t i = 0; i < counts->Capacity; ++i) {
        const RecordCounts::Entry &entry = counts->Entries[i];
        if (entry.Record != 0) larger.Entries[Slot(larger, entry.Record)] = entry;
    }
    std::free(counts->Entries);
    *counts = larger;
    return true;
}

} // namespace

uint32_t CountOf(const RecordCounts &counts, uint32_t record)
{
    return counts.Used == 0 ? 0 : counts.Entries[Slot(counts, record)].Count;
}

bool AddCount(RecordCounts *counts, uint32_t record)
{
    if (counts->Used * 2 >= counts->Capacity && !Grow(counts)) return false;
    RecordCounts::Entry &entry = counts->Entries[Slot(*counts, record)];
    if (entry.Count == 0) counts->Used++;
    entry.Record = record;
    entry.Count++;
    return true;
}

uint32_t SubtractCount(RecordCounts *counts, uint32_t record)
{
    if (counts->Used == 0) return 0;
    size_t slot = Slot(*counts, record);
    if (counts->Entries[slot].Count == 0) return 0;
    if (--counts->Entries[slot].Count > 0) return counts->Entries[slot].Count;
    counts->Used--;
    counts->Entries[slot].Record = 0;
    // What was pushed along by this entry moves up, so that no gap lies before it.
    for (size_t next = (slot + 1) & (counts->Capacity - 1); counts->Entries[next].Record != 0;
         next = (next + 1) & (counts->Capacity - 1)) {
        const RecordCounts::Entry moved = counts->Entries[next];
        counts->Entries[next] = {0, 0};
        counts->Entries[Slot(*counts, moved.Record)] = moved;
    }
    return 0;
}

void ClearCounts(RecordCounts *counts)
{
    for (size_t i = 0; i < counts->Capacity; ++i) {
        counts->Entries[i] = {0, 0};
    }
    counts->Used = 0;
}

uint32_t NextHeld(const RecordCounts &counts, uint32_t from)
{
    uint32_t next = UINT32_MAX;
    for (size_t i = 0; i < counts.Capacity; ++i) {
        const RecordCounts::Entry &entry = counts.Entries[i];
        if (entry.Count > 0 && entry.Record >= from && entry.Record < next) next = entry.Record;
    }
    return next;
}

} // namespace wbtrv
