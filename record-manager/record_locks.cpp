// The locks that a client holds on records and whole files, and which of its position blocks holds them.
#include "record-manager/client.h"

#include <cstdlib>

namespace wbtrv {

namespace {

// Whether a client holds a record of its directory; `who` is the client's part of it.
bool Holds(const void *who, uint32_t number, uint32_t record)
{
    const auto *store = static_cast<const ClientStore *>(who);
    for (const ClientFile *file = store->Files; file != nullptr; file = file->Next) {
        if (file->Of->Number == number) return file->Whole || CountOf(file->Held, record) > 0;
    }
    return false;
}

LockResult LockRecord(const ClientFile *file, uint32_t record, const LockRequest &request)
{
    ClientStore *store = file->Home;
    if (NeedLockDescription(store) != BtrStatusOk) return LockResult::NoDescription;
    const LockWait wait{request.Wait_ms, request.Waits, Holds, store};
    return store->Books->Do->LockRecord(store->Books, store->LockFd, file->Of->Number, record, wait);
}

void Unlock(const ClientFile *file, int64_t first, int64_t count)
{
    file->Of->Do->Unlock(file->Home->Books, file->Home->LockFd, file->Of->Number, first, count);
}

} // namespace

LockResult HoldRecord(ClientFile *file, uint32_t record, const LockRequest &request)
{
    if (!file->Whole && CountOf(file->Held, record) == 0) {
        const LockResult result = LockRecord(file, record, request);
        if (result != LockResult::Granted) return result;
    }
    if (AddCount(&file->Held, record)) return LockResult::Granted;
    if (!file->Whole && CountOf(file->Held, record) == 0) {
        Unlock(file, record, 1);
    }
    return LockResult::Failed;
}

LockResult HoldRecordAtOnce(ClientFile *file, uint32_t record)
{
    return HoldRecord(file, record, {LockMode::None, false, false, 0});
}

void DropRecord(ClientFile *file, uint32_t record)
{
    if (SubtractCount(&file->Held, record) > 0 || file->Whole) return;
    Unlock(file, record, 1);
}

int16_t LockWholeFile(Handle *handle, const LockRequest &request, bool changes)
{
    ClientFile *file = handle->In;
    if (file->Home->Owner->Transaction != TransactionKind::Exclusive || file->Whole) return BtrStatusOk;
    if (NeedLockDescription(file->Home) != BtrStatusOk) return BtrStatusFileTableFull;
    const LockResult result = file->Of->Do->LockFile(file->Home->Books, file->Home->LockFd, file->Of->Number,
                                                     request.Wait_ms, changes);
    if (result != LockResult::Granted) return StatusOfLock(result);
    file->Whole = true;
    ReleaseSingle(handle);
    ReleaseAllMultiple(handle);
    return BtrStatusOk;
}

void UnlockWholeFile(ClientFile *file)
{
    if (!file->Whole) return;
    file->Whole = false;
    // Locks from before the transaction stay; only what lies between them is given back. They are few, so the
    // next one is looked for each time, without memory that might not be there.
    int64_t from = 0;
    for (size_t left = file->Held.Used; left > 0; --left) {
        const int64_t next = NextHeld(file->Held, static_cast<uint32_t>(from));
        if (next > from) Unlock(file, from, next - from);
        from = next + 1;
    }
    if (from < wholeFile) Unlock(file, from, wholeFile - from);
}

int16_t ReserveLock(LockList *list)
{
    if (list->Count < list->Capacity) return BtrStatusOk;
    const size_t capacity = list->Capacity == 0 ? 8 : list->Capacity * 2;
    void *larger = std::realloc(list->Locks, capacity * sizeof(HeldLock));
    if (larger == nullptr) return BtrStatusHandleTableFull;
    list->Locks = static_cast<HeldLock *>(larger);
    list->Capacity = capacity;
    return BtrStatusOk;
}

bool AppendLock(LockList *list, HeldLock lock)
{
    if (ReserveLock(list) != BtrStatusOk) return false;
    list->Locks[list->Count++] = lock;
    return true;
}

int16_t CheckLockMode(const Handle *handle, LockMode mode)
{
    const bool mixed = (mode == LockMode::Single && handle->Multiple.Count > 0) ||
                       (mode == LockMode::Multiple && handle->Single.Record != 0);
    return mixed ? BtrStatusBadLockType : BtrStatusOk;
}

int16_t NoteLock(Handle *handle, LockMode mode, uint32_t record)
{
    const bool inTransaction = handle->In->Home->Owner->Transaction != TransactionKind::None;
    if (mode == LockMode::Single) {
        // A lock from before the transaction that is asked for again stays one from before.
        const bool again = handle->Single.Record == record;
        const bool since = again ? handle->Single.InTransaction : inTransaction;
        ReleaseSingle(handle);
        handle->Single = {record, since};
        return BtrStatusOk;
    }
    for (size_t i = 0; i < handle->Multiple.Count; ++i) {
        if (handle->Multiple.Locks[i].Record != record) continue;
        DropRecord(handle->In, record);
        return BtrStatusOk;
    }
    if (AppendLock(&handle->Multiple, {record, inTransaction})) return BtrStatusOk;
    DropRecord(handle->In, record);
    return BtrStatusHandleTableFull;
}

void ReleaseSingle(Handle *handle)
{
    if (handle->Single.Record == 0) return;
    DropRecord(handle->In, handle->Single.Record);
    handle->Single.Record = 0;
}

bool ReleaseMultiple(Handle *handle, uint32_t record)
{
    LockList &list = handle->Multiple;
    for (size_t i = 0; i < list.Count; ++i) {
        if (list.Locks[i].Record != record) continue;
        DropRecord(handle->In, record);
        list.Locks[i] = list.Locks[--list.Count];
        return true;
    }
    return false;
}

void ReleaseAllMultiple(Handle *handle)
{
    for (size_t i = 0; i < handle->Multiple.Count; ++i) {
        DropRecord(handle->In, handle->Multiple.Locks[i].Record);
    }
    handle->Multiple.Count = 0;
}

} // namespace wbtrv
