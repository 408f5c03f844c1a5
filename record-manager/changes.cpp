#include "record-manager/calls.h"
#include "record-manager/limits.h"
#include "record-manager/records.h"

#include <cstdlib>
#include <initializer_list>

namespace wbtrv {

namespace {

// A change under way: the transaction it writes in, and the lock it holds on its record.
struct Change {
    Handle *On;
    ClientStore *Store;
    ClientFile *In;
    uint32_t Locked; // record held for this change; 0: none
    bool OwnWriter;  // begun for this change alone
    bool Damaged;    // a tree may be half changed: what is pending can only be aborted
};

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

// Begins a change of `record`, or of the record to be inserted if it is 0: waits for the writer and for the
// record's lock, which the change holds to its end. The gate is not kept while the lock is waited for.
int16_t BeginChange(const Call &call, uint32_t record, Change *change)
{
    Handle *handle = call.On;
    ClientFile *file = handle->In;
    ClientStore *store = file->Home;
    Client *client = store->Owner;
    *change = {handle, store, file, 0, false, false};
    if (handle->Mode == BtrModeReadOnly || store->Books->ReadOnly) return BtrStatusAccessDenied;
    if (client->Failed != BtrStatusOk) return client->Failed;
    int16_t status = LockWholeFile(handle, call.Lock);
    if (status != BtrStatusOk) return status;
    if (client->Transaction != TransactionKind::None && client->Changed != nullptr &&
        client->Changed != store) {
        return BtrStatusNotAllowed;
    }

    Patience patience = StartPatience(call.Lock.Wait_ms);
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

// Ends a change with the status of its work. A change that stands alone is committed here.
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

Cursor *IndexCursor(Change *change, const Key &key, int16_t *status)
{
    Cursor *cursor = nullptr;
    *status = UseWriteCursor(change->In, IndexTree(KeyIndex(change->In->Of->Layout, key)), &cursor);
    return cursor;
}

const StoreFunctions &Functions(const Change &change) { return *change.In->Of->Do; }

View *PendingView(const Change &change) { return Functions(change).ViewOf(change.Store->Pending); }

// Whether another entry of the group lies at the given side of the entry.
int16_t HasNeighbour(const Change &change, Cursor *cursor, const Key &key, Bytes entry, Side side, bool *has)
{
    uint8_t bound[maxEntryKey + 1];
    memcpy(bound, entry.Data, entry.Size);
    bound[entry.Size] = 0;
    Bytes found;
    Bytes ignored;
    const size_t size = side == Side::AtOrAfter ? entry.Size + 1 : entry.Size;
    const int16_t status =
        Functions(change).Seek(PendingView(change), cursor, {bound, size}, side, &found, &ignored);
    *has = status == BtrStatusOk && BeginsWith(found, entry.Data, key.Length);
    return status == BtrStatusEndOfFile ? static_cast<int16_t>(BtrStatusOk) : status;
}

// Adds the record's entry to the index of one key; 5 when the value is there and may not be twice.
int16_t AddEntry(Change *change, const Key &key, const uint8_t *record, uint32_t number, uint64_t sequence)
{
    const Definition &definition = change->In->Of->Layout;
    uint8_t entry[maxEntryKey];
    const size_t size = EntryKeyOf(definition, key, record, RunningOf(key, number, sequence), entry);
    int16_t status = BtrStatusOk;
    Cursor *cursor = IndexCursor(change, key, &status);
    if (status == BtrStatusOk) status = Functions(*change).Add(cursor, {entry, size}, KeyOfRecord(number));
    if (status == BtrStatusDuplicateKey) return status;
    bool first = true;
    if (status == BtrStatusOk && key.Duplicates && Functions(*change).CountGroups == nullptr) {
        // The running number is the highest of all, so another of the group would lie just before; a record
        // number need not be.
        Bytes before;
        Bytes ignored;
        status = Functions(*change).SeekPrevious(PendingView(*change), cursor, &before, &ignored);
        first = status != BtrStatusOk || !BeginsWith(before, entry, key.Length);
        if (status == BtrStatusEndOfFile) status = BtrStatusOk;
        if (status == BtrStatusOk && first && key.Repeating) {
            bool after = false;
            status = HasNeighbour(*change, cursor, key, {entry, size}, Side::AtOrAfter, &after);
            first = !after;
        }
    }
    if (status != BtrStatusOk) {
        change->Damaged = true;
        return status;
    }
    if (first) change->In->Now.UniqueValues[KeyIndex(definition, key)]++;
    return BtrStatusOk;
}

int16_t RemoveEntry(Change *change, const Key &key, const uint8_t *entry)
{
    const Bytes whole{entry, EntryKeySize(key)};
    const size_t index = KeyIndex(change->In->Of->Layout, key);
    bool before = false;
    bool after = false;
    int16_t status = BtrStatusOk;
    Cursor *cursor = IndexCursor(change, key, &status);
    if (status == BtrStatusOk && key.Duplicates && Functions(*change).CountGroups == nullptr) {
        status = HasNeighbour(*change, cursor, key, whole, Side::Before, &before);
        if (status == BtrStatusOk && !before)
            status = HasNeighbour(*change, cursor, key, whole, Side::AtOrAfter, &after);
    }
    if (status == BtrStatusOk)
        status = Functions(*change).Remove(change->Store->Pending, *change->In->Of, IndexTree(index), whole);
    if (status != BtrStatusOk) {
        change->Damaged = true;
        return status == BtrStatusKeyNotFound ? static_cast<int16_t>(BtrStatusForeignFile) : status;
    }
    if (!before && !after) change->In->Now.UniqueValues[index]--;
    return BtrStatusOk;
}

// Fills the autoincrement fields that are zero. `record` is the change's own copy.
int16_t AssignNumbers(Change *change, uint8_t *record, bool *assigned)
{
    const Definition &definition = change->In->Of->Layout;
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        if (!key.Autoincrement || AutoincrementOf(definition, key, record) != 0) continue;
        const bool descending = definition.Segments[key.FirstSegment].Descending;
        Bytes entry;
        Bytes ignored;
        int16_t status = BtrStatusOk;
        Cursor *cursor = IndexCursor(change, key, &status);
        if (status == BtrStatusOk) {
            status = Functions(*change).Seek(PendingView(*change), cursor, {},
                                             descending ? Side::First : Side::Last, &entry, &ignored);
        }
        if (status != BtrStatusOk && status != BtrStatusEndOfFile) return status;
        uint64_t highest = 0;
        if (status == BtrStatusOk) highest = AutoincrementFromOrdered(definition, key, entry.Data);
        if (highest >= AutoincrementMax(key)) return BtrStatusDuplicateKey;
        SetAutoincrement(definition, key, record, highest + 1);
        *assigned = true;
    }
    return BtrStatusOk;
}

// The record as it will be stored: the caller's, or a copy with its numbers filled in.
struct NewRecord {
    const uint8_t *Data;
    size_t Size;
    uint8_t *Copy;
    bool Assigned;
};

int16_t PrepareRecord(const Call &call, Change *change, NewRecord *record)
{
    const Definition &definition = change->In->Of->Layout;
    const size_t length = *call.DataLength;
    *record = {call.Data, definition.Variable ? length : definition.RecordLength, nullptr, false};
    bool wanted = false;
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        wanted = wanted || (key.Autoincrement && AutoincrementOf(definition, key, call.Data) == 0);
    }
    if (!wanted) return BtrStatusOk;
    record->Copy = static_cast<uint8_t *>(malloc(record->Size));
    if (record->Copy == nullptr) return BtrStatusHandleTableFull;
    memcpy(record->Copy, call.Data, record->Size);
    record->Data = record->Copy;
    const int16_t status = AssignNumbers(change, record->Copy, &record->Assigned);
    if (status != BtrStatusOk) {
        free(record->Copy);
        *record = {};
    }
    return status;
}

// What insert and update refuse before they look at the file.
int16_t CheckRecord(const Call &call, const Key **key)
{
    const Definition &definition = call.On->In->Of->Layout;
    *key = nullptr;
    if (call.KeyNumber != BtrNoCurrencyChange) {
        *key = FindKey(definition, call.KeyNumber);
        // A file without keys takes any number that means its first.
        if (*key == nullptr && (definition.KeyCount > 0 || call.KeyNumber != 0)) return BtrStatusBadKeyNumber;
        if (*key != nullptr && (call.Key == nullptr || call.KeyLength < (*key)->Length)) {
            return BtrStatusKeyBufferShort;
        }
    }
    const uint32_t size = DataSize(call);
    if (call.Data == nullptr || size < definition.RecordLength) return BtrStatusDataBufferShort;
    return definition.Variable && size > maxRecordLength ? BtrStatusDataBufferShort : BtrStatusOk;
}

// The position after an insert or update that moves the currency: on the record under its key.
void FollowRecord(const Call &call, const Key &key, const uint8_t *record, uint64_t running)
{
    Handle *handle = call.On;
    const Definition &definition = handle->In->Of->Layout;
    ValueFromRecord(definition, key, record, call.Key);
    if (IsNull(definition, key, record)) return;
    handle->LogicalKey = call.KeyNumber;
    handle->AtPlace = false;
    handle->PlaceLength = EntryKeyOf(definition, key, record, running, handle->Place);
}

// The number that the next change gets as its stamp, 0 when there are no more.
uint64_t NextSequence(const ClientFile &file)
{
    const uint64_t next = file.Now.Sequence + 1;
    return next < uint64_t{1} << (8 * stampSize) ? next : 0;
}

int16_t ApplyInsert(Change *change, const NewRecord &record, uint32_t number)
{
    const Definition &definition = change->In->Of->Layout;
    Counters &now = change->In->Now;
    const uint64_t sequence = NextSequence(*change->In);
    if (number == 0 || sequence == 0) return BtrStatusDiskFull;

    // Unique keys go first: until all of them are in, a duplicate can be taken back by removing the ones
    // before.
    for (const bool duplicates : {false, true}) {
        for (size_t i = 0; i < definition.KeyCount; ++i) {
            const Key &key = definition.Keys[i];
            if (key.Duplicates != duplicates || IsNull(definition, key, record.Data)) continue;
            const int16_t status = AddEntry(change, key, record.Data, number, sequence);
            if (status == BtrStatusOk) continue;
            if (status != BtrStatusDuplicateKey || change->OwnWriter) return status;
            for (size_t done = 0; done < i; ++done) {
                const Key &other = definition.Keys[done];
                if (other.Duplicates || IsNull(definition, other, record.Data)) continue;
                uint8_t entry[maxEntryKey];
                OrderedFromRecord(definition, other, record.Data, entry);
                const int16_t undone = RemoveEntry(change, other, entry);
                if (undone != BtrStatusOk) return undone;
            }
            return status;
        }
    }

    uint8_t *place = nullptr;
    const int16_t status =
        Functions(*change).Reserve(change->Store->Pending, *change->In->Of, recordTree, KeyOfRecord(number),
                                   StampsSize(definition) + record.Size, true, &place);
    if (status != BtrStatusOk) {
        change->Damaged = true;
        return status;
    }
    for (size_t stamp = 0; stamp < StampsSize(definition); stamp += stampSize) {
        PutBigEndian(place + stamp, sequence, stampSize);
    }
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        if (key.Repeating) PutBigEndian(place + RunningOffset(key), number, stampSize);
    }
    memcpy(place + StampsSize(definition), record.Data, record.Size);
    now.Sequence = sequence;
    now.LastRecord = number;
    now.Records++;
    return BtrStatusOk;
}

} // namespace

int16_t InsertRecord(const Call &call)
{
    Handle *handle = call.On;
    const Key *key = nullptr;
    int16_t status = CheckRecord(call, &key);
    if (status == BtrStatusOk) status = CheckLockMode(handle, call.Lock.Mode);
    if (status != BtrStatusOk) return status;
    Change change;
    status = BeginChange(call, 0, &change);
    if (status != BtrStatusOk) return status;

    NewRecord record{};
    status = PrepareRecord(call, &change, &record);
    ClientFile *file = handle->In;
    const uint32_t number = file->Now.LastRecord + 1;
    const uint64_t sequence = file->Now.Sequence + 1;
    const bool locks = call.Lock.Mode != LockMode::None;
    if (status == BtrStatusOk && call.Lock.Mode == LockMode::Multiple)
        status = ReserveLock(&handle->Multiple);
    if (status == BtrStatusOk && locks) status = StatusOfLock(HoldRecordAtOnce(file, number));
    const bool held = status == BtrStatusOk && locks;
    if (status == BtrStatusOk) status = ApplyInsert(&change, record, number);
    status = EndChange(&change, status, 1u + file->Of->Layout.KeyCount);
    if (status == BtrStatusOk) {
        if (held) (void)NoteLock(handle, call.Lock.Mode, number);
        if (record.Assigned) memcpy(call.Data, record.Data, record.Size);
        handle->State = Physical::Here;
        handle->KeyOnly = false;
        handle->Record = number;
        handle->Version = sequence;
        if (key != nullptr) FollowRecord(call, *key, record.Data, RunningOf(*key, number, sequence));
    } else if (held) {
        DropRecord(file, number);
    }
    free(record.Copy);
    return status;
}

namespace {

// The current record as it is stored, if it is still what this position block has read.
int16_t FetchCurrent(const Change &change, Bytes *stored)
{
    const Handle &handle = *change.On;
    const int16_t status = FetchStored(PendingView(change), *change.In->Of, handle.Record, stored);
    if (status == BtrStatusKeyNotFound) return BtrStatusConflict;
    if (status != BtrStatusOk) return status;
    return VersionOf(*stored) == handle.Version ? BtrStatusOk : BtrStatusConflict;
}

// What an update does to each index.
struct KeyChange {
    bool Leaves;
    bool Joins;
};

// Refuses what must not change or be there twice; nothing is changed yet.
int16_t CompareKeys(Change *change, const uint8_t *from, const uint8_t *to, KeyChange *changes)
{
    const Definition &definition = change->In->Of->Layout;
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        changes[i] = {false, false};
        if (SameBytes(definition, key, from, to)) continue;
        if (!key.Modifiable) return BtrStatusNotModifiable;
        const bool wasNull = IsNull(definition, key, from);
        const bool isNull = IsNull(definition, key, to);
        uint8_t before[maxEntryKey];
        uint8_t after[maxEntryKey];
        const size_t size = EntryKeyOf(definition, key, from, 0, before);
        EntryKeyOf(definition, key, to, 0, after);
        if (wasNull == isNull && memcmp(before, after, size) == 0) continue;
        changes[i] = {!wasNull, !isNull};
    }
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        if (!changes[i].Joins || key.Duplicates) continue;
        uint8_t entry[maxEntryKey];
        Bytes value;
        const size_t size = EntryKeyOf(definition, key, to, 0, entry);
        const int16_t status = Functions(*change).Get(PendingView(*change), *change->In->Of, IndexTree(i),
                                                      {entry, size}, &value);
        if (status == BtrStatusOk) return BtrStatusDuplicateKey;
        if (status != BtrStatusKeyNotFound) return status;
    }
    return BtrStatusOk;
}

// After this point the update must succeed, or what is pending is lost.
int16_t ApplyUpdate(Change *change, Bytes old, const NewRecord &record, const KeyChange *changes,
                    uint64_t sequence)
{
    const Definition &definition = change->In->Of->Layout;
    const uint32_t number = change->On->Record;
    change->Damaged = true;
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        int16_t status = BtrStatusOk;
        if (changes[i].Leaves) {
            uint8_t entry[maxEntryKey];
            EntryKeyOf(definition, key, old, entry);
            status = RemoveEntry(change, key, entry);
        }
        if (status == BtrStatusOk && changes[i].Joins) {
            status = AddEntry(change, key, record.Data, number, sequence);
        }
        if (status != BtrStatusOk) return status;
    }
    uint8_t *place = nullptr;
    const int16_t status =
        Functions(*change).Reserve(change->Store->Pending, *change->In->Of, recordTree, KeyOfRecord(number),
                                   StampsSize(definition) + record.Size, false, &place);
    if (status != BtrStatusOk) return status;
    memcpy(place, old.Data, StampsSize(definition));
    PutBigEndian(place, sequence, stampSize);
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &changed = definition.Keys[i];
        if (changes[i].Joins && changed.Duplicates) {
            PutBigEndian(place + RunningOffset(changed), RunningOf(changed, number, sequence), stampSize);
        }
    }
    memcpy(place + StampsSize(definition), record.Data, record.Size);
    change->In->Now.Sequence = sequence;
    change->Damaged = false;
    return BtrStatusOk;
}

// The logical position moves with the record only under the key by which it was read.
void MoveWithRecord(const Call &call, const Key &key, const NewRecord &record, Bytes old,
                    const KeyChange &changed, uint64_t sequence)
{
    Handle *handle = call.On;
    const Definition &definition = handle->In->Of->Layout;
    if (handle->LogicalKey == call.KeyNumber) {
        const uint64_t kept = key.Duplicates ? GetBigEndian(old.Data + RunningOffset(key), stampSize) : 0;
        const uint64_t joined = RunningOf(key, handle->Record, sequence);
        FollowRecord(call, key, record.Data, changed.Joins ? joined : kept);
        return;
    }
    if (handle->LogicalKey != noLogicalKey) handle->LogicalKey = mixedLogicalKey;
    ValueFromRecord(definition, key, record.Data, call.Key);
}

} // namespace

int16_t UpdateRecord(const Call &call)
{
    Handle *handle = call.On;
    const Key *key = nullptr;
    int16_t status = CheckRecord(call, &key);
    if (status != BtrStatusOk) return status;
    if (handle->State != Physical::Here || handle->KeyOnly) return BtrStatusNoPosition;
    Change change;
    status = BeginChange(call, handle->Record, &change);
    if (status != BtrStatusOk) return status;

    const Definition &definition = handle->In->Of->Layout;
    NewRecord record{};
    Bytes old{};
    uint8_t *copy = nullptr;
    KeyChange changes[BtrMaxKeys];
    const uint64_t sequence = NextSequence(*handle->In);
    status = FetchCurrent(change, &old);
    if (status == BtrStatusOk && sequence == 0) status = BtrStatusDiskFull;
    if (status == BtrStatusOk) {
        // The stored record moves as soon as the tree is changed.
        copy = static_cast<uint8_t *>(malloc(old.Size));
        if (copy == nullptr) {
            status = BtrStatusHandleTableFull;
        } else {
            memcpy(copy, old.Data, old.Size);
            old.Data = copy;
        }
    }
    if (status == BtrStatusOk) status = PrepareRecord(call, &change, &record);
    if (status == BtrStatusOk) status = CompareKeys(&change, RecordOf(definition, old), record.Data, changes);
    if (status == BtrStatusOk) status = ApplyUpdate(&change, old, record, changes, sequence);
    status = EndChange(&change, status, 1u + definition.KeyCount);
    if (status == BtrStatusOk) {
        if (record.Assigned) memcpy(call.Data, record.Data, record.Size);
        handle->Version = sequence;
        if (handle->Single.Record == handle->Record) ReleaseSingle(handle);
        if (key != nullptr) {
            MoveWithRecord(call, *key, record, old, changes[KeyIndex(definition, *key)], sequence);
        }
    }
    free(record.Copy);
    free(copy);
    return status;
}

int16_t DeleteRecord(const Call &call)
{
    Handle *handle = call.On;
    if (handle->State != Physical::Here || handle->KeyOnly) return BtrStatusNoPosition;
    Change change;
    int16_t status = BeginChange(call, handle->Record, &change);
    if (status != BtrStatusOk) return status;

    const Definition &definition = handle->In->Of->Layout;
    Bytes old{};
    status = FetchCurrent(change, &old);
    if (status == BtrStatusOk) {
        uint8_t *copy = static_cast<uint8_t *>(malloc(old.Size));
        if (copy == nullptr) {
            status = BtrStatusHandleTableFull;
        } else {
            memcpy(copy, old.Data, old.Size);
            old.Data = copy;
            for (size_t i = 0; i < definition.KeyCount && status == BtrStatusOk; ++i) {
                const Key &key = definition.Keys[i];
                if (IsNull(definition, key, RecordOf(definition, old))) continue;
                uint8_t entry[maxEntryKey];
                EntryKeyOf(definition, key, old, entry);
                status = RemoveEntry(&change, key, entry);
            }
            free(copy);
        }
    }
    if (status == BtrStatusOk) {
        status = Functions(change).Remove(change.Store->Pending, *handle->In->Of, recordTree,
                                          KeyOfRecord(handle->Record));
        if (status == BtrStatusOk) {
            handle->In->Now.Records--;
        } else {
            change.Damaged = true;
        }
    }
    status = EndChange(&change, status, 1u + definition.KeyCount);
    if (status != BtrStatusOk) return status;
    handle->State = Physical::Gone;
    if (handle->Single.Record == handle->Record) ReleaseSingle(handle);
    ReleaseMultiple(handle, handle->Record);
    return BtrStatusOk;
}

} // namespace wbtrv
