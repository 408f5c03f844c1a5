// What a client locks, and what it holds as long as it has something open.
#include "record-manager/server/private.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace wbtrv {

namespace {

bool AddLocked(Connection *connection, uint32_t file, uint32_t record)
{
    if (connection->LockedCount == connection->LockedSize) {
        const size_t size = connection->LockedSize == 0 ? 32 : connection->LockedSize * 2;
        void *larger = realloc(connection->Locked, size * sizeof(LockedRecord));
        if (larger == nullptr) return false;
        connection->Locked = static_cast<LockedRecord *>(larger);
        connection->LockedSize = size;
    }
    connection->Locked[connection->LockedCount++] = {file, record};
    return true;
}

bool AddWhole(Connection *connection, uint32_t file)
{
    if (connection->WholeCount == connection->WholeSize) {
        const size_t size = connection->WholeSize == 0 ? 16 : connection->WholeSize * 2;
        void *larger = realloc(connection->Whole, size * sizeof(uint32_t));
        if (larger == nullptr) return false;
        connection->Whole = static_cast<uint32_t *>(larger);
        connection->WholeSize = size;
    }
    connection->Whole[connection->WholeCount++] = file;
    return true;
}

LockResult Grant(Connection *connection, uint32_t file, uint32_t record)
{
    // What was read before the lock may be old by now.
    connection->Checked_us = 0;
    return AddLocked(connection, file, record) ? LockResult::Granted : LockResult::NoMemory;
}

// Waits on the server, which sees who waits for whom. In a transaction the wait must not end it.
LockResult Await(Connection *connection, uint32_t file, uint32_t record, unsigned wait_ms)
{
    const bool inside = connection->InTransaction;
    const int64_t fileKey = KeyOf(connection, AdvisoryKind::File, file, 0);
    const Parameters none{};
    Parameters timeout{};
    AddNumber(&timeout, wait_ms > 0 ? wait_ms : 1);
    (void)Send(connection, inside ? Statement::Savepoint : Statement::BeginReading, none, Answer::Needed);
    (void)Send(connection, Statement::SetTimeout, timeout, Answer::Needed);
    (void)SendLock(connection, Statement::AwaitRecord, fileKey,
                   KeyOf(connection, AdvisoryKind::Record, file, record), Answer::Needed);
    if (!inside) (void)Send(connection, Statement::Commit, none, Answer::Needed);
    const int16_t status = ExchangeHere(connection, wait_ms);
    if (status == BtrStatusOk) return Grant(connection, file, record);
    if (connection->Real == nullptr) return LockResult::Failed;
    SendRelease(connection, inside ? Statement::RollbackToSavepoint : Statement::Rollback, none);
    // The file's may have been granted; one that was not is not there to be given back.
    Release(connection, Statement::UnlockShared, fileKey, 0);
    if (status == BtrStatusDeadlock) return LockResult::Deadlock;
    return status == BtrStatusRecordLocked ? LockResult::RecordBusy : LockResult::Failed;
}

LockResult ResultOf(int64_t answer)
{
    if (answer == 0) return LockResult::Granted;
    return answer == 2 ? LockResult::FileBusy : LockResult::RecordBusy;
}

} // namespace

// There is no file description; what stands for it is none that could be closed.
int16_t TakeLockDescription(Store *, int *fd)
{
    *fd = INT_MAX;
    return BtrStatusOk;
}

void GiveLockDescription(Store *, int *fd) { *fd = -1; }

LockResult LockRecord(Store *store, int, uint32_t file, uint32_t record, const LockWait &wait)
{
    Connection *connection = ConnectionOf(store);
    const int64_t fileKey = KeyOf(connection, AdvisoryKind::File, file, 0);
    const int64_t recordKey = KeyOf(connection, AdvisoryKind::Record, file, record);
    Patience patience = StartPatience(wait.Wait_ms);
    for (;;) {
        if (!connection->InTransaction && Connect(connection) != BtrStatusOk) return LockResult::Failed;
        (void)SendLock(connection, Statement::LockRecord, fileKey, recordKey, Answer::Kept);
        if (ExchangeHere(connection, 0) != BtrStatusOk) return LockResult::Failed;
        const LockResult result = ResultOf(FirstNumber(connection));
        if (result == LockResult::Granted) return Grant(connection, file, record);
        if (!WaitMore(&patience)) return result;
        if (!wait.Waits) continue;
        const LockResult awaited = Await(connection, file, record, wait.Wait_ms);
        if (awaited != LockResult::RecordBusy) return awaited;
        // Whether the record or the whole file was in the way to the end.
        patience = StartPatience(0);
    }
}

namespace {

// Asks for the lock of a file, and in the same trip for the gate where it is entered next. A gate that is not
// open is left to EnterGate, which waits for it.
LockResult TryLockFile(Connection *connection, uint32_t file, bool enters)
{
    (void)SendLock(connection, Statement::LockFile, KeyOf(connection, AdvisoryKind::File, file, 0),
                   KeyOf(connection, AdvisoryKind::WholeFile, file, 0), Answer::Kept);
    if (!enters || SendGate(connection, 0, true) != BtrStatusOk) {
        if (ExchangeHere(connection, 0) != BtrStatusOk) return LockResult::Failed;
        return ResultOf(FirstNumber(connection));
    }
    int16_t status = Exchange(connection, 0);
    if (connection->Real == nullptr) return LockResult::Failed;
    const int64_t answer = FirstNumber(connection);
    if (status == BtrStatusOk) status = TakeGate(connection, 1);
    if (connection->Real == nullptr) return LockResult::Failed;
    if (status != BtrStatusOk || answer != 0) SendRollback(connection);
    return answer < 0 ? LockResult::Failed : ResultOf(answer);
}

} // namespace

LockResult LockFile(Store *store, int, uint32_t file, unsigned wait_ms, bool changes)
{
    Connection *connection = ConnectionOf(store);
    Patience patience = StartPatience(wait_ms);
    for (bool first = true;; first = false) {
        if (!connection->InTransaction && Connect(connection) != BtrStatusOk) return LockResult::Failed;
        const LockResult result =
            TryLockFile(connection, file, changes && first && !connection->InTransaction);
        if (result == LockResult::Granted) {
            connection->Checked_us = 0;
            return AddWhole(connection, file) ? result : LockResult::NoMemory;
        }
        if (!WaitMore(&patience)) return result;
    }
}

void Unlock(Store *store, int, uint32_t file, int64_t first, int64_t count)
{
    Connection *connection = ConnectionOf(store);
    const int64_t fileKey = KeyOf(connection, AdvisoryKind::File, file, 0);
    for (size_t i = 0; i < connection->LockedCount;) {
        const LockedRecord locked = connection->Locked[i];
        if (locked.File != file || locked.Record < first || locked.Record >= first + count) {
            ++i;
            continue;
        }
        Release(connection, Statement::UnlockRecord, fileKey,
                KeyOf(connection, AdvisoryKind::Record, file, locked.Record));
        connection->Locked[i] = connection->Locked[--connection->LockedCount];
    }
    for (size_t i = 0; i < connection->WholeCount && first + count >= wholeFile; ++i) {
        if (connection->Whole[i] != file) continue;
        Release(connection, Statement::UnlockFile, fileKey,
                KeyOf(connection, AdvisoryKind::WholeFile, file, 0));
        connection->Whole[i] = connection->Whole[--connection->WholeCount];
        break;
    }
}

bool HasLostLocks(Store *store)
{
    Connection *connection = ConnectionOf(store);
    Repay(connection);
    const bool lost = connection->LostLocks;
    connection->LostLocks = false;
    return lost;
}

namespace {

HeldOpen *FindOpen(Connection *connection, uint32_t file)
{
    HeldOpen *found = connection->Opens;
    while (found != nullptr && found->File != file) {
        found = found->Next;
    }
    return found;
}

LockResult Hold(Connection *connection, AdvisoryKind kind, uint32_t file, bool alone)
{
    if (!connection->InTransaction && Connect(connection) != BtrStatusOk) return LockResult::Failed;
    return TryHold(connection, kind, file, alone);
}

} // namespace

LockResult HoldOpen(Store *store, uint32_t file, bool alone, bool)
{
    Connection *connection = ConnectionOf(store);
    HeldOpen *open = FindOpen(connection, file);
    if (open != nullptr && open->Alone == alone) return LockResult::Granted;
    HeldOpen *made = nullptr;
    if (open == nullptr) {
        made = static_cast<HeldOpen *>(calloc(1, sizeof(HeldOpen)));
        if (made == nullptr) return LockResult::NoMemory;
    }
    const LockResult result = Hold(connection, AdvisoryKind::Open, file, alone);
    if (result != LockResult::Granted) {
        free(made);
        return result;
    }
    if (made != nullptr) {
        *made = {connection->Opens, file, alone};
        connection->Opens = made;
    } else {
        ReleaseHeld(connection, AdvisoryKind::Open, file, open->Alone);
        open->Alone = alone;
    }
    return LockResult::Granted;
}

void DropOpen(Store *store, uint32_t file)
{
    Connection *connection = ConnectionOf(store);
    HeldOpen **link = &connection->Opens;
    while (*link != nullptr && (*link)->File != file) {
        link = &(*link)->Next;
    }
    HeldOpen *open = *link;
    if (open == nullptr) return;
    ReleaseHeld(connection, AdvisoryKind::Open, file, open->Alone);
    *link = open->Next;
    free(open);
}

LockResult HoldUsage(Store *store, bool loading, bool uses, bool loads)
{
    Connection *connection = ConnectionOf(store);
    if (!uses) {
        const LockResult result = Hold(connection, AdvisoryKind::Usage, 0, false);
        if (result != LockResult::Granted) return result;
        connection->UsageShared = true;
    }
    if (!loading || loads) return LockResult::Granted;
    const LockResult result = Hold(connection, AdvisoryKind::Usage, 0, true);
    connection->UsageAlone = result == LockResult::Granted;
    if (result != LockResult::Granted && !uses) DropUsage(store, false, false, false);
    return result;
}

void DropUsage(Store *store, bool uses, bool loads, bool wasLoading)
{
    Connection *connection = ConnectionOf(store);
    if (wasLoading && !loads && connection->UsageAlone) {
        ReleaseHeld(connection, AdvisoryKind::Usage, 0, true);
        connection->UsageAlone = false;
    }
    if (!uses && connection->UsageShared) {
        ReleaseHeld(connection, AdvisoryKind::Usage, 0, false);
        connection->UsageShared = false;
    }
}

} // namespace wbtrv
