#include "record-manager/change.h"

#include "record-manager/limits.h"

namespace wbtrv {

namespace {

bool Pending(const ClientStore *store)
{
    return store->Owner->Transaction != TransactionKind::None || store->LoadingOpens > 0;
}

int16_t TouchFile(ClientFile *file)
{
    if (file->Touched) return BtrStatusOk;
    const int16_t status =
        file->Of->Do->ReadCounters(file->Of->Do->ViewOf(file->Home->Pending), *file->Of, &file->Now);
    if (status != BtrStatusOk) return status;
    file->FirstSequence = file->Now.Sequence;
    file->FirstRecord = file->Now.LastRecord;
    file->Touched = true;
    return BtrStatusOk;
}

// Drops what this change alone has begun; pending changes before it stay.
void Withdraw(Change *change)
{
    if (change->Locked != 0) DropRecord(change->In, change->Locked);
    change->Locked = 0;
    if (change->OwnWriter) (void)AbortChanges(change->Store);
    change->OwnWriter = false;
}

int16_t EnterWriter(Change *change, unsigned wait_ms)
{
    ClientStore *store = change->Store;
    if (store->Pending != nullptr) return store->Broken;
    const bool exclusive = store->Owner->Transaction == TransactionKind::Exclusive;
    const StoreFunctions &functions = *store->Books->Do;
    int16_t status = functions.EnterGate(store->Books, wait_ms, exclusive);
    if (status != BtrStatusOk) return status;
    status = functions.BeginWriter(store->Books, &store->Pending);
    if (status != BtrStatusOk) {
        store->Pending = nullptr;
        functions.LeaveGate(store->Books);
        return status;
    }
    store->Broken = BtrStatusOk;
    change->OwnWriter = true;
    return BtrStatusOk;
}

} // namespace

int16_t BeginChange(const Call &call, uint32_t record, Change *change)
{
    Handle *handle = call.On;
    ClientFile *file = handle->In;
    ClientStore *store = file->Home;
    Client *client = store->Owner;
    *change = {handle, store, file, 0, false, false};
    if (handle->Mode == BtrModeReadOnly || store->Books->ReadOnly) return BtrStatusAccessDenied;
    if (client->Failed != BtrStatusOk) return client->Failed;
    const bool elsewhere = client->Transaction != TransactionKind::None && client->Changed != nullptr &&
                           client->Changed != store;
    Patience patience = StartPatience(call.Lock.Wait_ms);
    int16_t status = LockWholeFile(handle, call.Lock, store->Pending == nullptr && !elsewhere);
    if (status != BtrStatusOk) return status;
    if (elsewhere) return BtrStatusNotAllowed;

    for (;;) {
        status = EnterWriter(change, Remaining_ms(patience));
        if (status == BtrStatusOk) status = TouchFile(file);
        if (status != BtrStatusOk) break;
        if (store->LoadingOpens > 0) break;
        const uint32_t wanted = record != 0 ? record : file->Now.LastRecord + 1;
        const LockResult result = HoldRecordAtOnce(file, wanted);
        if (result == LockResult::Granted) {
            change->Locked = wanted;
            break;
        }
        status = StatusOfLock(result);
        if (result == LockResult::Failed) break;
        Withdraw(change);
        if (!WaitMore(&patience)) break;
    }
    if (status != BtrStatusOk) {
        Withdraw(change);
        return status;
    }
    if (client->Transaction != TransactionKind::None) client->Changed = store;
    return BtrStatusOk;
}

namespace {

// In a concurrent transaction the lock of a changed record stays until the end.
int16_t KeepLock(Change *change)
{
    ClientFile *file = change->In;
    const bool keeps = file->Home->Owner->Transaction == TransactionKind::Concurrent;
    if (change->Locked == 0 || !keeps || CountOf(file->Implicit, change->Locked) > 0) return BtrStatusOk;
    if (!AddCount(&file->Implicit, change->Locked)) return BtrStatusHandleTableFull;
    change->Locked = 0;
    return BtrStatusOk;
}

} // namespace

int16_t EndChange(Change *change, int16_t status, unsigned treeChanges)
{
    ClientStore *store = change->Store;
    if (status == BtrStatusOk) {
        status = KeepLock(change);
        change->Damaged = change->Damaged || status != BtrStatusOk;
    }
    if (status != BtrStatusOk) {
        if (change->Damaged && !change->OwnWriter) store->Broken = status;
        Withdraw(change);
        return status;
    }
    if (store->LoadingOpens > 0 && store->Owner->Transaction == TransactionKind::None) {
        store->LoadedChanges += treeChanges;
        if (store->LoadedChanges >= limits.LoadingChanges) status = CommitChanges(store);
    } else if (!Pending(store)) {
        status = CommitChanges(store);
    }
    change->OwnWriter = false;
    if (change->Locked != 0) DropRecord(change->In, change->Locked);
    return status;
}

} // namespace wbtrv
