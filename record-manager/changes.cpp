#include "record-manager/index_entries.h"
#include "record-manager/records.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>

namespace wbtrv {

namespace {

// The record as it will be stored: the caller's, or a copy with its numbers filled in.
struct NewRecord {
    const uint8_t *Data;
    size_t Size;
    uint8_t *Copy;
    bool Assigned;
    const uint8_t *Stamps; // null: those of this change
};

int16_t PrepareRecord(const Call &call, Change *change, NewRecord *record)
{
    const Definition &definition = change->In->Of->Layout;
    const size_t length = *call.DataLength;
    *record = {call.Data, definition.Variable ? length : definition.RecordLength, nullptr, false, nullptr};
    bool wanted = false;
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        wanted = wanted || (key.Autoincrement && AutoincrementOf(definition, key, call.Data) == 0);
    }
    if (!wanted) return BtrStatusOk;
    record->Copy = static_cast<uint8_t *>(std::malloc(record->Size));
    if (record->Copy == nullptr) return BtrStatusHandleTableFull;
    std::memcpy(record->Copy, call.Data, record->Size);
    record->Data = record->Copy;
    const int16_t status = AssignNumbers(change, record->Copy, &record->Assigned);
    if (status != BtrStatusOk) {
        std::free(record->Copy);
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

// The running number with which an inserted record joins its group.
uint64_t RunningOfNew(const Key &key, const NewRecord &record, uint32_t number, uint64_t sequence)
{
    const bool kept = record.Stamps != nullptr && key.Duplicates && !key.Repeating;
    return kept ? GetBigEndian(record.Stamps + RunningOffset(key), stampSize)
                : RunningOf(key, number, sequence);
}

int16_t ApplyInsert(Change *change, const NewRecord &record, uint32_t number, uint64_t *version)
{
    const Definition &definition = change->In->Of->Layout;
    Counters &now = change->In->Now;
    const uint64_t sequence = NextSequence(*change->In);
    if (number == 0 || sequence == 0) return BtrStatusDiskFull;
    *version = record.Stamps != nullptr ? GetBigEndian(record.Stamps, stampSize) : sequence;
    uint64_t highest = record.Stamps != nullptr ? std::max(now.Sequence, *version) : sequence;

    // Unique keys go first: until all of them are in, a duplicate can be taken back by removing the ones
    // before.
    for (const bool duplicates : {false, true}) {
        for (size_t i = 0; i < definition.KeyCount; ++i) {
            const Key &key = definition.Keys[i];
            if (key.Duplicates != duplicates || IsNull(definition, key, record.Data)) continue;
            const uint64_t running = RunningOfNew(key, record, number, sequence);
            if (key.Duplicates && !key.Repeating) highest = std::max(highest, running);
            const int16_t status = AddEntry(change, key, record.Data, number, running);
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
    PutBigEndian(place, *version, stampSize);
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &key = definition.Keys[i];
        if (!key.Duplicates) continue;
        PutBigEndian(place + RunningOffset(key), RunningOfNew(key, record, number, sequence), stampSize);
    }
    std::memcpy(place + StampsSize(definition), record.Data, record.Size);
    now.Sequence = highest;
    now.LastRecord = number;
    now.Records++;
    return BtrStatusOk;
}

// `stamps`: those of the record in the file that it comes from, or null.
int16_t Insert(const Call &call, const uint8_t *stamps)
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
    record.Stamps = stamps;
    ClientFile *file = handle->In;
    const uint32_t number = file->Now.LastRecord + 1;
    uint64_t version = 0;
    const bool locks = call.Lock.Mode != LockMode::None;
    if (status == BtrStatusOk && call.Lock.Mode == LockMode::Multiple)
        status = ReserveLock(&handle->Multiple);
    if (status == BtrStatusOk && locks) status = StatusOfLock(HoldRecordAtOnce(file, number));
    const bool held = status == BtrStatusOk && locks;
    if (status == BtrStatusOk) status = ApplyInsert(&change, record, number, &version);
    status = EndChange(&change, status, 1u + file->Of->Layout.KeyCount);
    if (status == BtrStatusOk) {
        if (held) (void)NoteLock(handle, call.Lock.Mode, number);
        if (record.Assigned) std::memcpy(call.Data, record.Data, record.Size);
        handle->State = Physical::Here;
        handle->KeyOnly = false;
        handle->Record = number;
        handle->Version = version;
        if (key != nullptr) FollowRecord(call, *key, record.Data, RunningOf(*key, number, version));
    } else if (held) {
        DropRecord(file, number);
    }
    std::free(record.Copy);
    return status;
}

} // namespace

int16_t InsertRecord(const Call &call) { return Insert(call, nullptr); }

int16_t InsertStored(const Call &call)
{
    const size_t stamps = StampsSize(call.On->In->Of->Layout);
    if (DataSize(call) < stamps) return BtrStatusDataBufferShort;
    Call plain = call;
    auto length = static_cast<uint32_t>(DataSize(call) - stamps);
    plain.Operation = BtrOpInsert;
    plain.Data = call.Data + stamps;
    plain.DataLength = &length;
    plain.KeyNumber = BtrNoCurrencyChange;
    return Insert(plain, call.Data);
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
        if (wasNull == isNull && std::memcmp(before, after, size) == 0) continue;
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
    std::memcpy(place, old.Data, StampsSize(definition));
    PutBigEndian(place, sequence, stampSize);
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        const Key &changed = definition.Keys[i];
        if (changes[i].Joins && changed.Duplicates) {
            PutBigEndian(place + RunningOffset(changed), RunningOf(changed, number, sequence), stampSize);
        }
    }
    std::memcpy(place + StampsSize(definition), record.Data, record.Size);
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
        copy = static_cast<uint8_t *>(std::malloc(old.Size));
        if (copy == nullptr) {
            status = BtrStatusHandleTableFull;
        } else {
            std::memcpy(copy, old.Data, old.Size);
            old.Data = copy;
        }
    }
    if (status == BtrStatusOk) status = PrepareRecord(call, &change, &record);
    if (status == BtrStatusOk) status = CompareKeys(&change, RecordOf(definition, old), record.Data, changes);
    if (status == BtrStatusOk) status = ApplyUpdate(&change, old, record, changes, sequence);
    status = EndChange(&change, status, 1u + definition.KeyCount);
    if (status == BtrStatusOk) {
        if (record.Assigned) std::memcpy(call.Data, record.Data, record.Size);
        handle->Version = sequence;
        if (handle->Single.Record == handle->Record) ReleaseSingle(handle);
        if (key != nullptr) {
            MoveWithRecord(call, *key, record, old, changes[KeyIndex(definition, *key)], sequence);
        }
    }
    std::free(record.Copy);
    std::free(copy);
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
        uint8_t *copy = static_cast<uint8_t *>(std::malloc(old.Size));
        if (copy == nullptr) {
            status = BtrStatusHandleTableFull;
        } else {
            std::memcpy(copy, old.Data, old.Size);
            old.Data = copy;
            for (size_t i = 0; i < definition.KeyCount && status == BtrStatusOk; ++i) {
                const Key &key = definition.Keys[i];
                if (IsNull(definition, key, RecordOf(definition, old))) continue;
                uint8_t entry[maxEntryKey];
                EntryKeyOf(definition, key, old, entry);
                status = RemoveEntry(&change, key, entry);
            }
            std::free(copy);
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
