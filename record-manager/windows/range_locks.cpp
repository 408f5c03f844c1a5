// The locks of ranges as Windows has them. There a range is given back only as it was taken, a lock does
// not change its kind, and nothing tells how far the one in the way reaches. So what each description
// holds is noted, and the first byte of a file's range, which is no record's, stands for the whole of it:
// who locks the file takes that byte and looks whether others hold a record; who locks a record takes its
// byte and looks whether others hold the file's.
#include "record-manager/range_locks.h"

#include "record-manager/windows/handles.h"

#include <cstdlib>
#include <windows.h>

namespace wbtrv {

namespace {

// Who takes or changes a lock of the directory's own holds this meanwhile, so that nobody comes in between.
constexpr int64_t changingOffset = lockBase + 3;
constexpr unsigned changingWait_ms = 1000;

struct HeldFile {
    HeldFile *Next;
    uint32_t Number;
    bool Whole;
    int64_t Freed;        // up to where the whole file's lock was given back
    RecordCounts Records; // locked by themselves
};

struct HeldByte {
    HeldByte *Next;
    int64_t Offset;
    LockKind Kind;
};

// What a description holds. One client at a time uses it.
struct Held {
    HeldFile *Files;
    HeldByte *Bytes;
};

// By the number of the description.
constexpr int mostDescriptions = 2048;
Held held[mostDescriptions];

enum class Taken : uint8_t { Yes, Busy, Failed };

Taken LockBytes(int fd, LockKind kind, int64_t offset, int64_t length)
{
    OVERLAPPED where{};
    where.Offset = static_cast<DWORD>(offset);
    where.OffsetHigh = static_cast<DWORD>(offset >> 32);
    const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (kind == LockKind::Write ? LOCKFILE_EXCLUSIVE_LOCK : 0u);
    if (LockFileEx(HandleOf(fd), flags, 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32),
                   &where))
        return Taken::Yes;
    const DWORD error = GetLastError();
    return error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING ? Taken::Busy : Taken::Failed;
}

void UnlockBytes(int fd, int64_t offset, int64_t length)
{
    OVERLAPPED where{};
    where.Offset = static_cast<DWORD>(offset);
    where.OffsetHigh = static_cast<DWORD>(offset >> 32);
    UnlockFileEx(HandleOf(fd), 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32), &where);
}

// Whether nobody has any of the range locked; the description itself counts, too.
Taken Probe(int fd, LockKind kind, int64_t offset, int64_t length)
{
    const Taken taken = LockBytes(fd, kind, offset, length);
    if (taken == Taken::Yes) UnlockBytes(fd, offset, length);
    return taken;
}

LockResult ResultOf(Taken taken, LockResult busy)
{
    if (taken == Taken::Failed) return LockResult::Failed;
    return taken == Taken::Yes ? LockResult::Granted : busy;
}

// ---- The directory's own ----

HeldByte **FindByte(Held &own, int64_t offset)
{
    HeldByte **link = &own.Bytes;
    while (*link != nullptr && (*link)->Offset != offset) {
        link = &(*link)->Next;
    }
    return link;
}

LockResult ChangeByte(int fd, LockKind kind, int64_t offset)
{
    HeldByte **link = FindByte(held[fd], offset);
    HeldByte *known = *link;
    if (known != nullptr && known->Kind == kind) return LockResult::Granted;
    if (known == nullptr) {
        auto *made = static_cast<HeldByte *>(calloc(1, sizeof(HeldByte)));
        if (made == nullptr) return LockResult::NoMemory;
        const Taken taken = LockBytes(fd, kind, offset, 1);
        if (taken != Taken::Yes) {
            free(made);
            return ResultOf(taken, LockResult::RecordBusy);
        }
        *made = {nullptr, offset, kind};
        *link = made;
        return LockResult::Granted;
    }
    UnlockBytes(fd, offset, 1);
    const Taken taken = LockBytes(fd, kind, offset, 1);
    if (taken == Taken::Yes) {
        known->Kind = kind;
    } else {
        (void)LockBytes(fd, known->Kind, offset, 1);
    }
    return ResultOf(taken, LockResult::RecordBusy);
}

LockResult TryByte(int fd, LockKind kind, int64_t offset)
{
    Patience patience = StartPatience(changingWait_ms);
    for (;;) {
        const Taken taken = LockBytes(fd, LockKind::Write, changingOffset, 1);
        if (taken == Taken::Yes) break;
        if (taken == Taken::Failed || !WaitMore(&patience)) return ResultOf(taken, LockResult::RecordBusy);
    }
    const LockResult result = ChangeByte(fd, kind, offset);
    UnlockBytes(fd, changingOffset, 1);
    return result;
}

void UnlockByte(int fd, int64_t offset)
{
    HeldByte **link = FindByte(held[fd], offset);
    HeldByte *known = *link;
    if (known == nullptr) return;
    *link = known->Next;
    free(known);
    UnlockBytes(fd, offset, 1);
}

// ---- Records and files ----

HeldFile *FindFile(Held &own, uint32_t number, bool make)
{
    HeldFile *file = own.Files;
    while (file != nullptr && file->Number != number) {
        file = file->Next;
    }
    if (file != nullptr || !make) return file;
    file = static_cast<HeldFile *>(calloc(1, sizeof(HeldFile)));
    if (file == nullptr) return nullptr;
    file->Next = own.Files;
    file->Number = number;
    own.Files = file;
    return file;
}

// Files of which nothing is locked are few, and stay until the description is closed.
LockResult TryRecord(int fd, HeldFile *file, uint32_t record)
{
    const int64_t offset = RecordOffset(file->Number, record);
    const int64_t whole = RecordOffset(file->Number, 0);
    Taken taken = LockBytes(fd, LockKind::Write, offset, 1);
    if (taken != Taken::Yes) {
        const bool fileBusy = !file->Whole && Probe(fd, LockKind::Read, whole, 1) == Taken::Busy;
        return ResultOf(taken, fileBusy ? LockResult::FileBusy : LockResult::RecordBusy);
    }
    taken = file->Whole ? Taken::Yes : Probe(fd, LockKind::Read, whole, 1);
    LockResult result = ResultOf(taken, LockResult::FileBusy);
    if (result == LockResult::Granted && !AddCount(&file->Records, record)) result = LockResult::NoMemory;
    if (result != LockResult::Granted) UnlockBytes(fd, offset, 1);
    return result;
}

// Nobody else holds a record of the file: none of those between the description's own.
Taken ProbeOthers(int fd, const HeldFile &file)
{
    int64_t from = 1;
    Taken taken = Taken::Yes;
    for (size_t left = file.Records.Used; left > 0 && taken == Taken::Yes; --left) {
        const int64_t next = NextHeld(file.Records, static_cast<uint32_t>(from));
        if (next > from) taken = Probe(fd, LockKind::Write, RecordOffset(file.Number, 0) + from, next - from);
        from = next + 1;
    }
    if (taken == Taken::Yes && from < wholeFile)
        taken = Probe(fd, LockKind::Write, RecordOffset(file.Number, 0) + from, wholeFile - from);
    return taken;
}

LockResult TryWhole(int fd, HeldFile *file)
{
    if (file->Whole) return LockResult::Granted;
    const int64_t whole = RecordOffset(file->Number, 0);
    Taken taken = LockBytes(fd, LockKind::Write, whole, 1);
    if (taken != Taken::Yes) return ResultOf(taken, LockResult::FileBusy);
    taken = ProbeOthers(fd, *file);
    if (taken != Taken::Yes) {
        UnlockBytes(fd, whole, 1);
        return ResultOf(taken, LockResult::RecordBusy);
    }
    file->Whole = true;
    file->Freed = 0;
    return LockResult::Granted;
}

// Locks by itself what the whole file's lock has covered so far. Others try it for a moment only, before
// they see that lock.
void KeepRecord(int fd, HeldFile *file, uint32_t record)
{
    if (record == 0 || CountOf(file->Records, record) > 0) return;
    Patience patience = StartPatience(changingWait_ms);
    for (;;) {
        const LockResult result = TryRecord(fd, file, record);
        if (result == LockResult::Granted || result == LockResult::Failed || !WaitMore(&patience)) return;
    }
}

void FreeRecords(int fd, HeldFile *file, int64_t first, int64_t end)
{
    for (size_t left = file->Records.Used; left > 0; --left) {
        const int64_t next = NextHeld(file->Records, static_cast<uint32_t>(first));
        if (next >= end || CountOf(file->Records, static_cast<uint32_t>(next)) == 0) return;
        UnlockBytes(fd, RecordOffset(file->Number, static_cast<uint32_t>(next)), 1);
        SubtractCount(&file->Records, static_cast<uint32_t>(next));
    }
}

void UnlockRange(int fd, HeldFile *file, int64_t first, int64_t count)
{
    if (file->Whole) {
        for (int64_t stays = file->Freed; stays < first; ++stays) {
            KeepRecord(fd, file, static_cast<uint32_t>(stays));
        }
        file->Freed = first + count;
    }
    if (count == 1) {
        const auto record = static_cast<uint32_t>(first);
        if (CountOf(file->Records, record) > 0) {
            UnlockBytes(fd, RecordOffset(file->Number, record), 1);
            SubtractCount(&file->Records, record);
        }
    } else {
        FreeRecords(fd, file, first, first + count);
    }
    if (!file->Whole || file->Freed < wholeFile) return;
    file->Whole = false;
    UnlockBytes(fd, RecordOffset(file->Number, 0), 1);
}

bool IsOfDirectory(int64_t offset) { return offset < RecordOffset(0, 0); }
uint32_t FileAt(int64_t offset) { return static_cast<uint32_t>((offset - lockBase) >> 32) - 1; }
uint32_t RecordAt(int64_t offset) { return static_cast<uint32_t>(offset - lockBase); }

bool IsDescription(int fd) { return fd >= 0 && fd < mostDescriptions; }

} // namespace

LockResult TryLock(int fd, LockKind kind, int64_t offset, int64_t length)
{
    if (!IsDescription(fd)) return LockResult::Failed;
    if (IsOfDirectory(offset)) return TryByte(fd, kind, offset);
    HeldFile *file = FindFile(held[fd], FileAt(offset), true);
    if (file == nullptr) return LockResult::NoMemory;
    return length == wholeFile ? TryWhole(fd, file) : TryRecord(fd, file, RecordAt(offset));
}

void Unlock(int fd, int64_t offset, int64_t length)
{
    if (!IsDescription(fd)) return;
    if (IsOfDirectory(offset)) {
        UnlockByte(fd, offset);
        return;
    }
    HeldFile *file = FindFile(held[fd], FileAt(offset), false);
    if (file != nullptr) UnlockRange(fd, file, RecordAt(offset), length);
}

void CloseDescription(int fd)
{
    if (!IsDescription(fd)) return;
    Held &own = held[fd];
    while (own.Bytes != nullptr) {
        UnlockByte(fd, own.Bytes->Offset);
    }
    while (own.Files != nullptr) {
        HeldFile *file = own.Files;
        own.Files = file->Next;
        if (file->Whole) UnlockBytes(fd, RecordOffset(file->Number, 0), 1);
        file->Whole = false;
        FreeRecords(fd, file, 0, wholeFile);
        free(file->Records.Entries);
        free(file);
    }
    CloseDescriptor(fd);
}

} // namespace wbtrv
