// What this store gives the record manager; its locks are those of ranges of the books' file.
#include "record-manager/lmdb/private.h"
#include "record-manager/range_locks.h"
#include "record-manager/shared_locks.h"
#include "record-manager/waits.h"

namespace wbtrv {

namespace {

LockResult LockRecord(Store *store, int fd, uint32_t file, uint32_t record, const LockWait &request)
{
    const int64_t offset = RecordOffset(file, record);
    Patience patience = StartPatience(request.Wait_ms);
    LockResult result = TryLock(fd, LockKind::Write, offset, 1);
    if (result == LockResult::Granted || result == LockResult::Failed) return result;
    WaitTable *table = WaitsOf(store->WriteGate);
    Wait *wait = request.Waits ? EnterWait(table, file, record) : nullptr;
    while (result != LockResult::Granted && result != LockResult::Failed && WaitMore(&patience)) {
        result = TryLock(fd, LockKind::Write, offset, 1);
        if (result == LockResult::Granted || wait == nullptr) continue;
        if (MustGiveWay(table, wait, request.Holds, request.Who)) {
            result = LockResult::Deadlock;
            break;
        }
    }
    if (wait != nullptr) LeaveWait(wait);
    return result;
}

// The store whose gate this thread has entered on its way to a file's lock, and is about to enter.
thread_local const Store *enteredAhead = nullptr;

// Who is going to write waits for its turn at the gate, where there is a queue: a range has none, and whoever
// looks in the right moment gets it. Somebody inside may still have the file, to read it or to lock a record;
// that is waited for outside. Where nothing can be written the lock cannot be one for writing either.
LockResult LockFileOfBooks(Store *store, int fd, uint32_t file, unsigned wait_ms, bool changes)
{
    const LockKind kind = store->ReadOnly ? LockKind::Read : LockKind::Write;
    const int64_t offset = RecordOffset(file, 0);
    const Patience patience = StartPatience(wait_ms);
    if (changes && !store->ReadOnly && EnterGate(store->WriteGate, wait_ms, true) == BtrStatusOk) {
        const LockResult result = TryLock(fd, kind, offset, wholeFile);
        if (result == LockResult::Granted) {
            enteredAhead = store;
            return result;
        }
        LeaveGate(store->WriteGate);
    }
    return WaitLock(fd, kind, offset, wholeFile, Remaining_ms(patience));
}

void UnlockRecords(Store *, int fd, uint32_t file, int64_t first, int64_t count)
{
    Unlock(fd, RecordOffset(file, 0) + first, count);
}

LockResult HoldOpenBooks(Store *store, uint32_t file, bool alone, bool holds)
{
    return HoldOpen(store->Shared, file, alone, holds);
}

void DropOpenBooks(Store *store, uint32_t file) { DropOpen(store->Shared, file); }

LockResult HoldUsageBooks(Store *store, bool loading, bool uses, bool loads)
{
    return HoldUsage(store->Shared, loading, uses, loads);
}

void DropUsageBooks(Store *store, bool uses, bool loads, bool wasLoading)
{
    DropUsage(store->Shared, uses, loads, wasLoading);
}

int16_t EnterGateOfBooks(Store *store, unsigned wait_ms, bool exclusive)
{
    if (enteredAhead == store) {
        enteredAhead = nullptr;
        return BtrStatusOk;
    }
    return EnterGate(store->WriteGate, wait_ms, exclusive);
}

void LeaveGateOfBooks(Store *store) { LeaveGate(store->WriteGate); }

} // namespace

const StoreFunctions booksFunctions = {
    .ReleaseStore = ReleaseStore,
    .TakeLockDescription = TakeLockDescription,
    .GiveLockDescription = GiveLockDescription,
    .LockRecord = LockRecord,
    .LockFile = LockFileOfBooks,
    .Unlock = UnlockRecords,
    .HasLostLocks = nullptr,
    .HoldOpen = HoldOpenBooks,
    .DropOpen = DropOpenBooks,
    .HoldUsage = HoldUsageBooks,
    .DropUsage = DropUsageBooks,
    .EnterGate = EnterGateOfBooks,
    .LeaveGate = LeaveGateOfBooks,
    .AcquireFile = AcquireFile,
    .ReleaseFile = ReleaseFile,
    .CreateFile = CreateFile,
    .ForgetTrees = ForgetTrees,
    .RenewTrees = RenewTrees,
    .ReadLastFile = ReadLastFile,
    .FindFileNumber = FindFileNumber,
    .BeginSnapshot = BeginSnapshot,
    .ResetSnapshot = ResetSnapshot,
    .EndSnapshot = EndSnapshot,
    .HoldSnapshot = HoldSnapshot,
    .IsOpen = IsOpen,
    .IsStillWhole = IsStillWhole,
    .ForgetReads = nullptr,
    .AskAhead = nullptr,
    .BeginWriter = BeginWriter,
    .CommitWriter = CommitWriter,
    .AbortWriter = AbortWriter,
    .ViewOf = ViewOf,
    .SetLoading = SetLoading,
    .ReadCounters = ReadCounters,
    .WriteCounters = WriteCounters,
    .CountGroups = nullptr,
    .OpenWriteCursor = OpenWriteCursor,
    .UseCursor = UseCursor,
    .CloseCursor = CloseCursor,
    .Seek = Seek,
    .SeekNext = SeekNext,
    .SeekPrevious = SeekPrevious,
    .SeekExactly = SeekExactly,
    .Get = Get,
    .Reserve = Reserve,
    .Add = Add,
    .Remove = Remove,
};

} // namespace wbtrv
