// Records that wait until the last of their run has come, and come back in the order of their keys; those
// with the same key as they came. What memory cannot hold waits in temporary files without a name.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rs {

inline constexpr size_t maxKeyWidth = 256;

struct Ordering {
    size_t KeyWidth;
    size_t RecordSize;
    size_t EntrySize; // key, place in the run, record
    uint64_t Count;   // entries of the run
    uint64_t Taken;   // entries that have come back

    char *Buffer; // owned, null before the first record; so are the two after it
    char *Merged; // an entry
    const char **Places;
    size_t Held; // entries in Buffer

    int Files[2];     // sorted stretches of the run, -1 before there are any; the other is written next
    int Source;       // of the two, the one that holds them
    uint64_t Stretch; // entries of each of them but the last
    uint64_t Stored;  // entries in them together

    struct MergeState *Merge; // owned, null while everything fits into Buffer
    int Error;                // errno of what failed
};

void InitOrdering(Ordering &ordering);
void FreeOrdering(Ordering &ordering);

// Begins a run; the one before has come back whole, or is given up.
void StartRun(Ordering &ordering, size_t keyWidth, size_t recordSize);

// Takes an entry of the run. False on failure, with Error.
bool AddToRun(Ordering &ordering, const char *key, const void *record);

// Ends the run: from now on entries come back. False on failure, with Error.
bool EndRun(Ordering &ordering);

// The next record in order, which stays until the next call; null behind the last, or on failure with Error.
const char *NextOfRun(Ordering &ordering);

} // namespace rs
