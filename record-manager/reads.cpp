#include "record-manager/calls.h"
#include "record-manager/limits.h"
#include "record-manager/records.h"

namespace wbtrv {

namespace {

// A record that a search has come to: its index entry (none for physical searches) and what is stored.
struct Found {
    uint32_t Record;
    Bytes Entry;
    Bytes Stored;
};

// Where to search: the entries on one side of a bound that begin as the bound does for `Prefix` bytes.
struct Search {
    size_t Tree;
    Side Where;
    bool FromHere; // the bound is where the position block stands
    int16_t None;  // status when nothing is there
    size_t Size;
    size_t Prefix;
    alignas(uint32_t) uint8_t Bound[maxPlace + 1];
};

// Searches with a cursor; one that stands where the search begins only moves on.
int16_t SeekOrMove(const StoreFunctions &store, View *view, Cursor *cursor, bool stands, const Search &search,
                   Bytes *key, Bytes *value)
{
    if (!stands) return store.Seek(view, cursor, {search.Bound, search.Size}, search.Where, key, value);
    return search.Where == Side::Before ? store.SeekPrevious(view, cursor, key, value)
                                        : store.SeekNext(view, cursor, key, value);
}

// Searches one of the file's trees. `stands` tells that the cursor, if it still stands, is where the search
// begins.
int16_t Find(Handle *handle, View *view, const Search &search, bool stands, Bytes *key, Bytes *value)
{
    ClientFile *file = handle->In;
    const StoreFunctions &store = *file->Of->Do;
    int16_t status = BtrStatusOk;
    if (file->Home->Pending != nullptr) {
        Cursor *cursor = nullptr;
        status = UseWriteCursor(file, search.Tree, &cursor);
        if (status == BtrStatusOk) status = SeekOrMove(store, view, cursor, false, search, key, value);
    } else {
        Cursor **cursor = &handle->Cursors[search.Tree];
        bool unmoved = false;
        status = store.UseCursor(view, *file->Of, search.Tree, cursor, &unmoved);
        if (status == BtrStatusOk)
            status = SeekOrMove(store, view, *cursor, stands && unmoved, search, key, value);
    }
    if (status == BtrStatusEndOfFile) return search.None;
    if (status != BtrStatusOk) return status;
    return BeginsWith(*key, search.Bound, search.Prefix) ? static_cast<int16_t>(BtrStatusOk) : search.None;
}

int16_t FindRecord(Handle *handle, View *view, const Search &search, Found *found)
{
    Bytes key{};
    const bool stands =
        search.FromHere && handle->State == Physical::Here && handle->AtRecord == handle->Record;
    handle->AtRecord = 0;
    const int16_t status = Find(handle, view, search, stands, &key, &found->Stored);
    if (status != BtrStatusOk) return status;
    found->Record = RecordNumber(key);
    if (found->Record == 0 || !IsWhole(handle->In->Of->Layout, found->Stored)) return BtrStatusForeignFile;
    if (handle->In->Home->Pending == nullptr) handle->AtRecord = found->Record;
    return BtrStatusOk;
}

// The record of an index entry; next to it lies, more often than not, the one that was read before.
int16_t FetchIndexed(Handle *handle, View *view, uint32_t record, Bytes *stored)
{
    const File &file = *handle->In->Of;
    if (handle->In->Home->Pending != nullptr) return FetchStored(view, file, record, stored);
    bool unmoved = false;
    handle->AtRecord = 0;
    int16_t status = file.Do->UseCursor(view, file, recordTree, &handle->Cursors[recordTree], &unmoved);
    if (status != BtrStatusOk) return status;
    status = file.Do->SeekExactly(view, handle->Cursors[recordTree], KeyOfRecord(record), stored);
    if (status != BtrStatusOk) return status;
    handle->AtRecord = record;
    return IsWhole(file.Layout, *stored) ? BtrStatusOk : BtrStatusForeignFile;
}

int16_t FindEntry(Handle *handle, View *view, const Search &search, Found *found)
{
    Bytes value{};
    const bool stands = search.FromHere && handle->AtPlace;
    handle->AtPlace = false;
    int16_t status = Find(handle, view, search, stands, &found->Entry, &value);
    if (status != BtrStatusOk) return status;
    found->Record = RecordNumber(value);
    if (found->Record == 0 || found->Entry.Size > maxEntryKey) return BtrStatusForeignFile;
    status = FetchIndexed(handle, view, found->Record, &found->Stored);
    // An entry without its record is damage.
    return status == BtrStatusKeyNotFound ? static_cast<int16_t>(BtrStatusForeignFile) : status;
}

// Searches, and with a lock request searches again once the lock is granted: until then the record may have
// been changed, moved or deleted. On success the view is open.
template <typename Find>
int16_t FindAndLock(const Call &call, const LockRequest &request, Find find, Found *found)
{
    Handle *handle = call.On;
    ClientStore *store = handle->In->Home;
    if (request.Mode != LockMode::None) {
        if (store->Books->ReadOnly) return BtrStatusAccessDenied;
        const int16_t status = CheckLockMode(handle, request.Mode);
        if (status != BtrStatusOk) return status;
    }
    uint32_t locked = 0;
    for (unsigned attempt = 0;;) {
        View *view = nullptr;
        int16_t status = BeginView(store, &view);
        const bool reads = status == BtrStatusOk;
        if (reads) status = find(view, found);
        if (reads && store->Books->Unseen) {
            if (status == BtrStatusOk && !Keep(store, &found->Entry, &found->Stored))
                status = BtrStatusHandleTableFull;
            if (!IsStillWhole(*store, *view)) {
                EndView(store);
                if (++attempt == mostViews) return BtrStatusConflict;
                continue;
            }
        }
        if (status != BtrStatusOk) {
            EndView(store);
            if (locked != 0) DropRecord(handle->In, locked);
            return status;
        }
        if (request.Mode == LockMode::None) return BtrStatusOk;
        if (found->Record == locked) {
            status = NoteLock(handle, request.Mode, locked);
            if (status != BtrStatusOk) EndView(store);
            return status;
        }
        EndView(store);
        if (locked != 0) DropRecord(handle->In, locked);
        locked = 0;
        const LockResult result = HoldRecord(handle->In, found->Record, request);
        if (result != LockResult::Granted) return StatusOfLock(result);
        locked = found->Record;
    }
}

// Hands the record over. A buffer too short for the fixed part gets nothing, one too short for the rest of a
// variable record gets what fits; the position moves nevertheless.
int16_t Deliver(const Call &call, const Found &found)
{
    const Definition &definition = call.On->In->Of->Layout;
    const size_t length = found.Stored.Size - StampsSize(definition);
    const size_t room = DataSize(call);
    if (room < definition.RecordLength) return BtrStatusDataBufferShort;
    std::memcpy(call.Data, RecordOf(definition, found.Stored), length < room ? length : room);
    if (length > room) return BtrStatusDataBufferShort;
    *call.DataLength = static_cast<uint32_t>(length);
    return BtrStatusOk;
}

void SetPhysical(const Call &call, const Found &found)
{
    Handle *handle = call.On;
    handle->State = Physical::Here;
    handle->KeyOnly = call.KeyOnly;
    handle->Record = found.Record;
    handle->Version = VersionOf(found.Stored);
}

// A transaction that has changed something is the only writer of its directory, so what it reads there stays
// as it is without a lock, for which it would wait until nobody else has a record of the file locked.
int16_t LockForReading(Handle *handle, const LockRequest &request)
{
    return handle->In->Home->Pending != nullptr ? static_cast<int16_t>(BtrStatusOk)
                                                : LockWholeFile(handle, request, false);
}

const LockRequest &RequestOf(const Call &call)
{
    const Client &client = *call.Caller;
    const bool inherits = !call.Lock.Biased && client.Transaction == TransactionKind::Concurrent;
    return inherits ? client.Inherited : call.Lock;
}

// The bound of a keyed read, from the key buffer or from the position.
void MakeSearch(const Call &call, const Key &key, Search *search)
{
    const Handle &handle = *call.On;
    const Definition &definition = handle.In->Of->Layout;
    search->Tree = IndexTree(KeyIndex(definition, key));
    search->FromHere = call.Operation == BtrOpGetNext || call.Operation == BtrOpGetPrevious;
    search->None = BtrStatusEndOfFile;
    search->Size = 0;
    search->Prefix = 0;
    switch (call.Operation) {
    case BtrOpGetFirst: search->Where = Side::First; return;
    case BtrOpGetLast: search->Where = Side::Last; return;
    case BtrOpGetNext:
    case BtrOpGetPrevious:
        std::memcpy(search->Bound, handle.Place, handle.PlaceLength);
        search->Size = handle.PlaceLength;
        search->Where = Side::Before;
        if (call.Operation == BtrOpGetPrevious) return;
        search->Bound[search->Size++] = 0;
        search->Where = Side::AtOrAfter;
        return;
    default: break;
    }
    OrderedFromValue(definition, key, call.Key, search->Bound);
    search->Size = key.Length;
    search->Where = Side::AtOrAfter;
    if (call.Operation == BtrOpGetEqual) {
        search->Prefix = key.Length;
        search->None = BtrStatusKeyNotFound;
    }
    if (call.Operation == BtrOpGetGreater || call.Operation == BtrOpGetLessOrEqual) {
        // Sorts behind every entry of the value, whatever its running number.
        std::memset(search->Bound + search->Size, 0xFF, stampSize + 1);
        search->Size += stampSize + 1;
    }
    if (call.Operation == BtrOpGetLess || call.Operation == BtrOpGetLessOrEqual) search->Where = Side::Before;
}

} // namespace

int16_t ReadByKey(const Call &call)
{
    Handle *handle = call.On;
    const Definition &definition = handle->In->Of->Layout;
    const Key *key = FindKey(definition, call.KeyNumber);
    if (key == nullptr) return BtrStatusBadKeyNumber;
    if (call.Operation == BtrOpGetNext || call.Operation == BtrOpGetPrevious) {
        if (handle->LogicalKey == noLogicalKey) return BtrStatusNoPosition;
        if (handle->LogicalKey != call.KeyNumber) return BtrStatusKeyNumberChanged;
    }
    if (call.Key == nullptr || call.KeyLength < key->Length) return BtrStatusKeyBufferShort;
    const LockRequest &request = RequestOf(call);
    int16_t status = LockForReading(handle, request);
    if (status != BtrStatusOk) return status;

    Search search;
    MakeSearch(call, *key, &search);
    Found found{};
    status = FindAndLock(
        call, request, [&](View *view, Found *out) { return FindEntry(handle, view, search, out); }, &found);
    if (status != BtrStatusOk) return status;

    SetPhysical(call, found);
    handle->LogicalKey = call.KeyNumber;
    handle->AtPlace = handle->In->Home->Pending == nullptr;
    handle->PlaceLength = found.Entry.Size;
    std::memcpy(handle->Place, found.Entry.Data, found.Entry.Size);
    if (!call.KeyOnly) status = Deliver(call, found);
    if (status == BtrStatusOk) {
        ValueFromRecord(definition, *key, RecordOf(definition, found.Stored), call.Key);
    }
    EndView(handle->In->Home);
    return status;
}

namespace {

// Hands the record over as it is stored.
int16_t DeliverStored(const Call &call, const Found &found)
{
    if (DataSize(call) < found.Stored.Size) return BtrStatusDataBufferShort;
    memcpy(call.Data, found.Stored.Data, found.Stored.Size);
    *call.DataLength = static_cast<uint32_t>(found.Stored.Size);
    return BtrStatusOk;
}

int16_t StepTo(const Call &call, int16_t (*deliver)(const Call &call, const Found &found))
{
    Handle *handle = call.On;
    const LockRequest &request = RequestOf(call);
    int16_t status = LockForReading(handle, request);
    if (status != BtrStatusOk) return status;

    Search search;
    search.Tree = recordTree;
    search.FromHere = false;
    search.None = BtrStatusEndOfFile;
    search.Size = 0;
    search.Prefix = 0;
    const bool forward = call.Operation == BtrOpStepFirst || call.Operation == BtrOpStepNext;
    search.Where = forward ? Side::First : Side::Last;
    const bool relative = call.Operation == BtrOpStepNext || call.Operation == BtrOpStepPrevious;
    if (relative && handle->State != Physical::None) {
        uint32_t bound = handle->Record;
        if (forward || handle->State == Physical::Behind) ++bound;
        // Behind the highest number there is nothing.
        if (forward && bound == 0) return BtrStatusEndOfFile;
        PutField(search.Bound, bound);
        search.Size = sizeof bound;
        search.Where = forward ? Side::AtOrAfter : Side::Before;
        search.FromHere = true;
    }

    Found found{};
    status = FindAndLock(
        call, request, [&](View *view, Found *out) { return FindRecord(handle, view, search, out); }, &found);
    if (status != BtrStatusOk) return status;
    SetPhysical(call, found);
    if (call.Operation == BtrOpStepFirst || call.Operation == BtrOpStepLast)
        handle->LogicalKey = noLogicalKey;
    status = deliver(call, found);
    EndView(handle->In->Home);
    return status;
}

} // namespace

int16_t ReadByStep(const Call &call) { return StepTo(call, Deliver); }

int16_t StepStored(const Call &call)
{
    Call plain = call;
    plain.Operation = call.Operation == BtrOpStepFirstStored ? BtrOpStepFirst : BtrOpStepNext;
    return StepTo(plain, DeliverStored);
}

int16_t TellPosition(const Call &call)
{
    const Handle *handle = call.On;
    if (handle->State != Physical::Here) return BtrStatusNoPosition;
    if (DataSize(call) < 4) return BtrStatusDataBufferShort;
    PositionFromRecord(handle->Record, call.Data);
    *call.DataLength = 4;
    return BtrStatusOk;
}

int16_t ReadDirect(const Call &call)
{
    Handle *handle = call.On;
    const Definition &definition = handle->In->Of->Layout;
    const Key *key = nullptr;
    if (call.KeyNumber != BtrNoLogicalPosition) {
        key = FindKey(definition, call.KeyNumber);
        if (key == nullptr) return BtrStatusBadKeyNumber;
        if (call.Key == nullptr || call.KeyLength < key->Length) return BtrStatusKeyBufferShort;
    }
    if (DataSize(call) < 4) return BtrStatusDataBufferShort;
    const LockRequest &request = RequestOf(call);
    int16_t status = LockForReading(handle, request);
    if (status != BtrStatusOk) return status;

    const uint32_t record = RecordFromPosition(call.Data);
    Found found{};
    status = FindAndLock(
        call, request,
        [&](View *view, Found *out) -> int16_t {
            const int16_t fetched = record == 0 ? static_cast<int16_t>(BtrStatusKeyNotFound)
                                                : FetchStored(view, *handle->In->Of, record, &out->Stored);
            out->Record = record;
            if (fetched == BtrStatusKeyNotFound) return BtrStatusBadPosition;
            if (fetched != BtrStatusOk) return fetched;
            const bool indexed =
                key == nullptr || !IsNull(definition, *key, RecordOf(definition, out->Stored));
            return indexed ? BtrStatusOk : BtrStatusNotInIndex;
        },
        &found);
    if (status == BtrStatusBadPosition) handle->LogicalKey = noLogicalKey;
    if (status != BtrStatusOk) return status;

    SetPhysical(call, found);
    handle->LogicalKey = noLogicalKey;
    if (key != nullptr) {
        handle->LogicalKey = call.KeyNumber;
        handle->AtPlace = false;
        handle->PlaceLength = EntryKeyOf(definition, *key, found.Stored, handle->Place);
    }
    if (!call.KeyOnly) status = Deliver(call, found);
    if (status == BtrStatusOk && key != nullptr) {
        ValueFromRecord(definition, *key, RecordOf(definition, found.Stored), call.Key);
    }
    EndView(handle->In->Home);
    return status;
}

} // namespace wbtrv
