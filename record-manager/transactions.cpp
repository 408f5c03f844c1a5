#include "record-manager/calls.h"
#include "record-manager/limits.h"
#include "record-manager/records.h"

#include <cstdlib>

namespace wbtrv {

namespace {

// What every end of the pending changes has in common. The store frees the cursors of a writer by itself.
void LeaveWriter(ClientStore *store)
{
    for (ClientFile *file = store->Files; file != nullptr; file = file->Next) {
        if (file->Cursors) std::memset(file->WriteCursors, 0, sizeof file->WriteCursors);
        file->Cursors = false;
    }
    store->Pending = nullptr;
    store->LoadedChanges = 0;
    store->Broken = BtrStatusOk;
}

void ForgetCreated(ClientStore *store)
{
    while (store->Created != nullptr) {
        PendingCreate *created = store->Created;
        store->Created = created->Next;
        if (created->Replaced != 0) store->Books->Do->DropOpen(store->Books, created->Replaced);
        std::free(created);
    }
}

// Makes the files anew whose making was undone with the changes around it. They get their old numbers, since
// the gate was not left.
int16_t CreateAgain(ClientStore *store)
{
    Store *books = store->Books;
    Writer *writer = nullptr;
    const StoreFunctions &functions = *books->Do;
    int16_t status = functions.BeginWriter(books, &writer);
    if (status != BtrStatusOk) return status;
    uint32_t last = 0;
    status = functions.ReadLastFile(functions.ViewOf(writer), &last);
    if (status == BtrStatusOk) functions.ForgetTrees(books, last);
    for (const PendingCreate *created = store->Created; created != nullptr && status == BtrStatusOk;
         created = created->Next) {
        status = functions.CreateFile(writer, created->Name, created->Layout);
    }
    if (status == BtrStatusOk) status = functions.RenewTrees(writer, last);
    if (status == BtrStatusOk) {
        status = functions.CommitWriter(writer);
    } else {
        functions.AbortWriter(writer);
    }
    if (status != BtrStatusOk) functions.ForgetTrees(books, last);
    return status;
}

void ForgetCounters(ClientStore *store)
{
    for (ClientFile *file = store->Files; file != nullptr; file = file->Next) {
        file->Touched = false;
    }
}

// What a position block saw of changes that are undone now. Its record is gone if it was inserted by them,
// and otherwise is what it was before; a running number that will be given out again is replaced by a place
// just behind the last one that stays.
void StepBack(Handle *handle, View *view)
{
    const ClientFile &file = *handle->In;
    const Definition &definition = file.Of->Layout;
    if (handle->State != Physical::None && handle->Record > file.FirstRecord) {
        handle->State = Physical::Behind;
        handle->Record = file.FirstRecord;
    } else if (handle->State == Physical::Here && handle->Version > file.FirstSequence) {
        Bytes stored;
        if (view != nullptr && FetchStored(view, *file.Of, handle->Record, &stored) == BtrStatusOk) {
            handle->Version = VersionOf(stored);
        } else {
            handle->State = Physical::Gone;
        }
    }
    if (handle->LogicalKey < 0) return;
    const Key *key = FindKey(definition, handle->LogicalKey);
    const size_t valueEnd = key->Length;
    const uint64_t last = RunningOf(*key, file.FirstRecord, file.FirstSequence);
    if (!key->Duplicates || GetBigEndian(handle->Place + valueEnd, stampSize) <= last) return;
    PutBigEndian(handle->Place + valueEnd, last, stampSize);
    handle->Place[valueEnd + stampSize] = 1;
    handle->PlaceLength = valueEnd + stampSize + 1;
    handle->AtPlace = false;
}

void StepAllBack(ClientStore *store)
{
    const Client *client = store->Owner;
    View *view = nullptr;
    if (BeginView(store, &view) != BtrStatusOk) view = nullptr;
    for (size_t i = 0; i < client->HandleCount; ++i) {
        Handle *handle = client->Handles[i];
        if (handle != nullptr && handle->In->Home == store && handle->In->Touched) StepBack(handle, view);
    }
    if (view != nullptr) EndView(store);
}

// Files that were closed while they had changes pending, in a transaction or while loading, stayed known
// until now.
void ReleaseUnused(ClientStore *store)
{
    for (ClientFile *file = store->Files; file != nullptr;) {
        ClientFile *next = file->Next;
        ReleaseClientFile(file);
        file = next;
    }
}

void ReleaseTaken(ClientFile *file)
{
    RecordCounts &implicit = file->Implicit;
    for (size_t i = 0; i < implicit.Capacity; ++i) {
        for (uint32_t left = implicit.Entries[i].Count; left > 0; --left) {
            DropRecord(file, implicit.Entries[i].Record);
        }
    }
    ClearCounts(&implicit);
}

void ReleaseTaken(Handle *handle)
{
    if (handle->Single.Record != 0 && handle->Single.InTransaction) ReleaseSingle(handle);
    LockList &list = handle->Multiple;
    for (size_t i = 0; i < list.Count;) {
        if (list.Locks[i].InTransaction) {
            DropRecord(handle->In, list.Locks[i].Record);
            list.Locks[i] = list.Locks[--list.Count];
        } else {
            ++i;
        }
    }
}

// The transaction is over: its locks go, those from before it stay.
void LeaveTransaction(Client *client)
{
    client->Transaction = TransactionKind::None;
    client->Changed = nullptr;
    client->NoRetry = false;
    client->Failed = BtrStatusOk;
    for (size_t i = 0; i < client->HandleCount; ++i) {
        if (client->Handles[i] != nullptr) ReleaseTaken(client->Handles[i]);
    }
    for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
        for (ClientFile *file = store->Files; file != nullptr; file = file->Next) {
            ReleaseTaken(file);
            UnlockWholeFile(file);
        }
        ReleaseUnused(store);
    }
}

// What follows when the writer's changes are undone.
int16_t FinishAbort(ClientStore *store)
{
    LeaveWriter(store);
    const int16_t status = store->Created != nullptr ? CreateAgain(store) : static_cast<int16_t>(BtrStatusOk);
    store->Books->Do->LeaveGate(store->Books);
    ForgetCreated(store);
    StepAllBack(store);
    ForgetCounters(store);
    if (store->Owner->Changed == store) store->Owner->Changed = nullptr;
    if (store->Owner->Transaction == TransactionKind::None) ReleaseUnused(store);
    return status;
}

} // namespace

int16_t AbortChanges(ClientStore *store)
{
    if (store->Pending == nullptr) return BtrStatusOk;
    store->Books->Do->AbortWriter(store->Pending);
    return FinishAbort(store);
}

int16_t CommitChanges(ClientStore *store)
{
    if (store->Pending == nullptr) return BtrStatusOk;
    int16_t status = store->Broken;
    for (ClientFile *file = store->Files; file != nullptr && status == BtrStatusOk; file = file->Next) {
        if (file->Touched) status = file->Of->Do->WriteCounters(store->Pending, *file->Of, file->Now);
    }
    if (status != BtrStatusOk) {
        (void)AbortChanges(store);
        return status;
    }
    status = store->Books->Do->CommitWriter(store->Pending);
    if (status != BtrStatusOk) {
        (void)FinishAbort(store);
        return status;
    }
    LeaveWriter(store);
    // Who is let in next may want the same files.
    for (ClientFile *file = store->Files; file != nullptr; file = file->Next) {
        UnlockWholeFile(file);
    }
    store->Books->Do->LeaveGate(store->Books);
    ForgetCreated(store);
    ForgetCounters(store);
    if (store->Owner->Transaction == TransactionKind::None) ReleaseUnused(store);
    return BtrStatusOk;
}

int16_t BeginTransaction(const Call &call, TransactionKind kind, bool noRetry)
{
    Client *client = call.Caller;
    if (client->Group == GroupState::Lost) return BtrStatusNoTransaction;
    if (client->Group == GroupState::Between) {
        client->Group = GroupState::Inside;
        return BtrStatusOk;
    }
    if (client->Transaction != TransactionKind::None) return BtrStatusTransactionActive;
    // What was loaded before is no part of the transaction.
    for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
        const int16_t status = CommitChanges(store);
        if (status != BtrStatusOk) return status;
        if (store->Books->Do->ForgetReads != nullptr) store->Books->Do->ForgetReads(store->Books);
    }
    client->Transaction = kind;
    client->Inherited = call.Lock;
    client->NoRetry = noRetry;
    client->Changed = nullptr;
    return BtrStatusOk;
}

int16_t EndTransaction(Client *client)
{
    if (client->Transaction == TransactionKind::None) return BtrStatusNoTransaction;
    if (client->Group == GroupState::Between) return BtrStatusNoTransaction;
    if (client->Group == GroupState::Inside) {
        client->Group = GroupState::Between;
        return BtrStatusOk;
    }
    if (client->Failed == BtrStatusOk && client->Changed != nullptr) {
        for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
            const StoreFunctions &functions = *store->Books->Do;
            if (store != client->Changed && functions.AskAhead != nullptr) functions.AskAhead(store->Books);
        }
        const int16_t status = CommitChanges(client->Changed);
        client->Failed = status == BtrStatusIoError ? static_cast<int16_t>(BtrStatusTransactionIo) : status;
    }
    // A transaction that could not be ended is still there to be aborted.
    if (client->Failed != BtrStatusOk) return client->Failed;
    LeaveTransaction(client);
    return BtrStatusOk;
}

int16_t AbortTransaction(Client *client)
{
    if (client->Transaction == TransactionKind::None) return BtrStatusNoTransaction;
    if (client->Group == GroupState::Between) return BtrStatusNoTransaction;
    if (client->Group == GroupState::Inside) client->Group = GroupState::Lost;
    const int16_t status =
        client->Changed != nullptr ? AbortChanges(client->Changed) : static_cast<int16_t>(BtrStatusOk);
    LeaveTransaction(client);
    return status;
}

int16_t BeginGroup(const Call &call)
{
    Client *client = call.Caller;
    if (client->Group != GroupState::None) return BtrStatusTransactionActive;
    const int16_t status = BeginTransaction(call, TransactionKind::Concurrent, false);
    if (status == BtrStatusOk) client->Group = GroupState::Between;
    return status;
}

int16_t EndGroup(Client *client)
{
    const GroupState was = client->Group;
    if (was == GroupState::None) return BtrStatusNoTransaction;
    client->Group = GroupState::None;
    if (was == GroupState::Lost) return BtrStatusNoTransaction;
    // A transaction in the middle has no end: nothing of the group is kept that lacks a part.
    int16_t status = BtrStatusNoTransaction;
    if (was == GroupState::Between) status = EndTransaction(client);
    if (status != BtrStatusOk) (void)AbortTransaction(client);
    return status;
}

int16_t BeginHolding(Client *client)
{
    if (client->Holds || client->Transaction != TransactionKind::None) return BtrStatusTransactionActive;
    // What was loaded before is seen like everything else.
    for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
        const int16_t status = CommitChanges(store);
        if (status != BtrStatusOk) return status;
    }
    client->Holds = true;
    return BtrStatusOk;
}

int16_t EndHolding(Client *client)
{
    if (!client->Holds) return BtrStatusNoTransaction;
    client->Holds = false;
    for (ClientStore *store = client->Stores; store != nullptr; store = store->Next) {
        const StoreFunctions &functions = *store->Books->Do;
        if (store->Snapshot != nullptr && functions.IsOpen(*store->Snapshot))
            functions.ResetSnapshot(store->Snapshot);
    }
    return BtrStatusOk;
}

int16_t UnlockRecords(const Call &call)
{
    Handle *handle = call.On;
    if (call.KeyNumber >= 0) {
        if (handle->Single.Record == 0) return BtrStatusUnlockMismatch;
        ReleaseSingle(handle);
        return BtrStatusOk;
    }
    if (call.KeyNumber == BtrUnlockOne) {
        if (DataSize(call) < 4) return BtrStatusDataBufferShort;
        const uint32_t record = RecordFromPosition(call.Data);
        return record != 0 && ReleaseMultiple(handle, record) ? BtrStatusOk : BtrStatusUnlockMismatch;
    }
    if (call.KeyNumber != BtrUnlockAll || handle->Multiple.Count == 0) return BtrStatusUnlockMismatch;
    ReleaseAllMultiple(handle);
    return BtrStatusOk;
}

} // namespace wbtrv
