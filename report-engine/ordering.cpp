#include "report-engine/ordering.h"

#include "report-engine/spool.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace rs {

namespace {

constexpr size_t bufferSize = size_t{2} << 20;
constexpr int fanIn = 32;
constexpr size_t windowSize = bufferSize / fanIn; // of each stretch that is merged
constexpr size_t placeWidth = sizeof(uint64_t);

} // namespace

// Merges up to `fanIn` stretches, each through a window of its own in the ordering's buffer.
struct MergeState {
    int Count;
    struct Input {
        uint64_t Next; // entry that is read next, and the end of the stretch
        uint64_t End;
        char *Begin; // what the window still holds
        char *Limit;
    } Inputs[fanIn];
};

namespace {

size_t ComparedWidth(const Ordering &ordering) { return ordering.KeyWidth + placeWidth; }

bool Fail(Ordering &ordering, int error)
{
    ordering.Error = error;
    return false;
}

size_t CapacityOf(const Ordering &ordering, size_t bytes) { return bytes / ordering.EntrySize; }

void SortHeld(const Ordering &ordering)
{
    const size_t width = ComparedWidth(ordering);
    for (size_t i = 0; i < ordering.Held; ++i) {
        ordering.Places[i] = ordering.Buffer + i * ordering.EntrySize;
    }
    const auto isBefore = [width](const char *a, const char *b) { return std::memcmp(a, b, width) < 0; };
    std::sort(ordering.Places, ordering.Places + ordering.Held, isBefore);
}

bool WriteAt(Ordering &ordering, int file, const char *bytes, size_t size, uint64_t offset)
{
    while (size > 0) {
        const ssize_t written = pwrite(file, bytes, size, static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return Fail(ordering, written < 0 ? errno : ENOSPC);
        bytes += written;
        size -= static_cast<size_t>(written);
        offset += static_cast<uint64_t>(written);
    }
    return true;
}

bool ReadAt(Ordering &ordering, int file, char *bytes, size_t size, uint64_t offset)
{
    while (size > 0) {
        const ssize_t count = pread(file, bytes, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return Fail(ordering, count < 0 ? errno : EIO);
        bytes += count;
        size -= static_cast<size_t>(count);
        offset += static_cast<uint64_t>(count);
    }
    return true;
}

int FileFor(Ordering &ordering, int number)
{
    int &file = ordering.Files[number];
    if (file < 0) {
        file = OpenNamelessFile();
        if (file < 0) ordering.Error = errno;
    }
    return file;
}

// Entries on their way into a file, gathered to larger writes.
struct Outlet {
    int File;
    uint64_t Offset;
    size_t Used;
    char Bytes[16'384];
};

bool FlushOutlet(Ordering &ordering, Outlet &outlet)
{
    if (!WriteAt(ordering, outlet.File, outlet.Bytes, outlet.Used, outlet.Offset)) return false;
    outlet.Offset += outlet.Used;
    outlet.Used = 0;
    return true;
}

bool WriteEntry(Ordering &ordering, Outlet &outlet, const char *entry)
{
    if (outlet.Used + ordering.EntrySize > sizeof outlet.Bytes && !FlushOutlet(ordering, outlet))
        return false;
    std::memcpy(outlet.Bytes + outlet.Used, entry, ordering.EntrySize);
    outlet.Used += ordering.EntrySize;
    return true;
}

// Writes what the buffer holds as a sorted stretch.
bool StoreHeld(Ordering &ordering)
{
    SortHeld(ordering);
    Outlet outlet;
    outlet.File = FileFor(ordering, ordering.Source);
    outlet.Offset = ordering.Stored * ordering.EntrySize;
    outlet.Used = 0;
    if (outlet.File < 0) return false;
    for (size_t i = 0; i < ordering.Held; ++i) {
        if (!WriteEntry(ordering, outlet, ordering.Places[i])) return false;
    }
    ordering.Stored += ordering.Held;
    ordering.Held = 0;
    return FlushOutlet(ordering, outlet);
}

// ---- Merging ----

// Makes the window of an input hold an entry, unless its stretch has ended.
bool FillInput(Ordering &ordering, int number)
{
    MergeState::Input &input = ordering.Merge->Inputs[number];
    if (input.Begin < input.Limit || input.Next == input.End) return true;
    char *window = ordering.Buffer + static_cast<size_t>(number) * windowSize;
    const uint64_t count = std::min<uint64_t>(CapacityOf(ordering, windowSize), input.End - input.Next);
    const size_t size = static_cast<size_t>(count) * ordering.EntrySize;
    if (!ReadAt(ordering, ordering.Files[ordering.Source], window, size, input.Next * ordering.EntrySize)) {
        return false;
    }
    input.Next += count;
    input.Begin = window;
    input.Limit = window + size;
    return true;
}

bool StartMerge(Ordering &ordering, uint64_t firstEntry)
{
    MergeState &merge = *ordering.Merge;
    merge.Count = 0;
    for (uint64_t begin = firstEntry; begin < ordering.Stored && merge.Count < fanIn;
         begin += ordering.Stretch) {
        merge.Inputs[merge.Count] = {begin, std::min(begin + ordering.Stretch, ordering.Stored), nullptr,
                                     nullptr};
        if (!FillInput(ordering, merge.Count++)) return false;
    }
    return true;
}

// The lowest entry of all inputs, copied; null when they have ended, or with Error.
const char *NextMerged(Ordering &ordering)
{
    MergeState &merge = *ordering.Merge;
    const size_t width = ComparedWidth(ordering);
    int lowest = -1;
    for (int i = 0; i < merge.Count; ++i) {
        const MergeState::Input &input = merge.Inputs[i];
        if (input.Begin == input.Limit) continue;
        if (lowest < 0 || std::memcmp(input.Begin, merge.Inputs[lowest].Begin, width) < 0) lowest = i;
    }
    if (lowest < 0) return nullptr;
    std::memcpy(ordering.Merged, merge.Inputs[lowest].Begin, ordering.EntrySize);
    merge.Inputs[lowest].Begin += ordering.EntrySize;
    return FillInput(ordering, lowest) ? ordering.Merged : nullptr;
}

// Merges every `fanIn` stretches into one, in the other file.
bool MergeOnce(Ordering &ordering)
{
    Outlet outlet;
    outlet.File = FileFor(ordering, 1 - ordering.Source);
    outlet.Offset = 0;
    outlet.Used = 0;
    if (outlet.File < 0) return false;
    for (uint64_t first = 0; first < ordering.Stored; first += fanIn * ordering.Stretch) {
        if (!StartMerge(ordering, first)) return false;
        while (const char *entry = NextMerged(ordering)) {
            if (!WriteEntry(ordering, outlet, entry)) return false;
        }
        if (ordering.Error != 0) return false;
    }
    if (!FlushOutlet(ordering, outlet)) return false;
    // What was merged is not needed any more: the disk holds the run twice at the most.
    if (ftruncate(ordering.Files[ordering.Source], 0) != 0) return Fail(ordering, errno);
    ordering.Source = 1 - ordering.Source;
    ordering.Stretch *= fanIn;
    return true;
}

bool Reserve(Ordering &ordering)
{
    if (ordering.Buffer != nullptr) return true;
    ordering.Buffer = static_cast<char *>(std::malloc(bufferSize));
    ordering.Merged = static_cast<char *>(std::malloc(windowSize));
    // An entry has a key and a place at least.
    ordering.Places = static_cast<const char **>(std::malloc(bufferSize / placeWidth * sizeof(char *)));
    return (ordering.Buffer != nullptr && ordering.Merged != nullptr && ordering.Places != nullptr) ||
           Fail(ordering, ENOMEM);
}

} // namespace

void InitOrdering(Ordering &ordering)
{
    ordering = {};
    ordering.Files[0] = ordering.Files[1] = -1;
}

void FreeOrdering(Ordering &ordering)
{
    std::free(ordering.Buffer);
    std::free(ordering.Merged);
    std::free(ordering.Places);
    std::free(ordering.Merge);
    for (const int file : ordering.Files) {
        if (file >= 0) close(file);
    }
    InitOrdering(ordering);
}

void StartRun(Ordering &ordering, size_t keyWidth, size_t recordSize)
{
    ordering.KeyWidth = keyWidth;
    ordering.RecordSize = recordSize;
    ordering.EntrySize = keyWidth + placeWidth + recordSize;
    ordering.Count = ordering.Taken = ordering.Stored = 0;
    ordering.Held = 0;
    ordering.Error = 0;
}

bool AddToRun(Ordering &ordering, const char *key, const void *record)
{
    if (!Reserve(ordering)) return false;
    if (ordering.Held == CapacityOf(ordering, bufferSize) && !StoreHeld(ordering)) return false;
    char *entry = ordering.Buffer + ordering.Held * ordering.EntrySize;
    std::memcpy(entry, key, ordering.KeyWidth);
    uint64_t place = ordering.Count;
    for (size_t i = placeWidth; i-- > 0; place >>= 8) {
        entry[ordering.KeyWidth + i] = static_cast<char>(place & 0xFF);
    }
    std::memcpy(entry + ComparedWidth(ordering), record, ordering.RecordSize);
    ++ordering.Held;
    ++ordering.Count;
    return true;
}

bool EndRun(Ordering &ordering)
{
    if (ordering.Stored == 0) {
        SortHeld(ordering);
        return true;
    }
    if (!StoreHeld(ordering)) return false;
    if (ordering.Merge == nullptr) {
        ordering.Merge = static_cast<MergeState *>(std::malloc(sizeof(MergeState)));
        if (ordering.Merge == nullptr) return Fail(ordering, ENOMEM);
    }
    ordering.Stretch = CapacityOf(ordering, bufferSize);
    while (ordering.Stretch * fanIn < ordering.Stored) {
        if (!MergeOnce(ordering)) return false;
    }
    return StartMerge(ordering, 0);
}

const char *NextOfRun(Ordering &ordering)
{
    if (ordering.Taken == ordering.Count) return nullptr;
    const char *entry = ordering.Stored == 0 ? ordering.Places[ordering.Taken] : NextMerged(ordering);
    if (entry == nullptr) return nullptr;
    ++ordering.Taken;
    return entry + ComparedWidth(ordering);
}

} // namespace rs
