// Reading: snapshots, in which this process finds its way itself, and what the writer has made, in which the
// store does.
#include "record-manager/lmdb/private.h"

#include <cstdlib>
#include <ctime>

namespace wbtrv {

namespace {

// Copies one of the meta pages out of the map. False while it is being written.
bool CopyMeta(const Environment &own, uint64_t number, MetaPage *meta)
{
    *meta = GetField<MetaPage>(own.Map + (number & 1) * own.PageSize);
    return meta->Transaction == number &&
           (!own.Summed || meta->Sum == SumOfMeta(reinterpret_cast<const uint8_t *>(meta) + metaBegin));
}

} // namespace

int16_t ReadHeads(Store *store, MDB_txn *transaction, uint64_t number, View *view)
{
    view->Of = store;
    view->Transaction = transaction;
    MetaPage meta;
    view->Number = UINT64_MAX;
    if (!CopyMeta(*store->Own, number, &meta)) return damaged;
    view->Number = number;
    view->LastPage = meta.LastPage;
    view->Free = meta.Free;
    view->Main = meta.Main;
    return BtrStatusOk;
}

namespace {

// The snapshot of a transaction may be two commits old before its heads were read; then there is a newer one.
constexpr unsigned mostAttempts = 1000;

int16_t BeginTransaction(Store *store, View *view)
{
    MDB_env *real = store->Own->Real;
    if (view->Transaction != nullptr) return StatusOf(mdb_txn_renew(view->Transaction));
    int error = mdb_txn_begin(real, nullptr, MDB_RDONLY, &view->Transaction);
    if (error == MDB_READERS_FULL) {
        int dead = 0;
        mdb_reader_check(real, &dead);
        error = mdb_txn_begin(real, nullptr, MDB_RDONLY, &view->Transaction);
    }
    if (error != 0) view->Transaction = nullptr;
    return StatusOf(error);
}

// Without sums a meta page that was being written is told by the number of the snapshot: the page is written
// by the second transaction from here, which begins when the first one's number is known.
bool IsStillNewest(const View &view, uint64_t number)
{
    std::atomic_thread_fence(std::memory_order_acquire);
    mdb_txn_reset(view.Transaction);
    return mdb_txn_renew(view.Transaction) == 0 && mdb_txn_id(view.Transaction) == number;
}

int16_t Renew(Store *store, View *view)
{
    for (unsigned attempt = 0;; ++attempt) {
        const int16_t status = BeginTransaction(store, view);
        if (status != BtrStatusOk) return status;
        const uint64_t number = mdb_txn_id(view->Transaction);
        const bool known = view->Of == store && view->Number == number;
        const bool read = known || ReadHeads(store, view->Transaction, number, view) == BtrStatusOk;
        if (read && (store->Own->Summed || IsStillNewest(*view, number))) {
            view->Open = true;
            return BtrStatusOk;
        }
        view->Number = UINT64_MAX;
        mdb_txn_reset(view->Transaction);
        if (attempt == mostAttempts) return damaged;
    }
}

int16_t MakeSnapshot(Store *store, View **snapshot)
{
    View *made = store->Own->Spare.exchange(nullptr);
    if (made == nullptr) made = static_cast<View *>(std::calloc(1, sizeof(View)));
    if (made == nullptr) return BtrStatusHandleTableFull;
    const int16_t status = Renew(store, made);
    if (status == BtrStatusOk) {
        *snapshot = made;
    } else {
        FreeSnapshot(made);
    }
    return status;
}

} // namespace

int16_t BeginSnapshot(Store *store, View **snapshot)
{
    return *snapshot == nullptr ? MakeSnapshot(store, snapshot) : Renew(store, *snapshot);
}

void ResetSnapshot(View *snapshot)
{
    snapshot->Open = false;
    mdb_txn_reset(snapshot->Transaction);
}

int16_t HoldSnapshot(View *) { return BtrStatusOk; }

bool IsOpen(const View &snapshot) { return snapshot.Open; }

// What a snapshot shows is freed by the next transaction at the earliest, and used anew by the third after
// that one has seen it so, which begins when the second is over.
bool IsStillWhole(const View &view)
{
    if (!view.Of->Unseen || view.Writing) return true;
    std::atomic_thread_fence(std::memory_order_acquire);
    MDB_envinfo info;
    return mdb_env_info(view.Of->Own->Real, &info) == 0 && info.me_last_txnid <= view.Number + 1;
}

void EndSnapshot(View *snapshot)
{
    if (snapshot->Transaction != nullptr) {
        if (snapshot->Open) ResetSnapshot(snapshot);
        View *none = nullptr;
        if (snapshot->Of->Own->Spare.compare_exchange_strong(none, snapshot)) return;
    }
    FreeSnapshot(snapshot);
}

void FreeSnapshot(View *snapshot)
{
    if (snapshot->Transaction != nullptr) Guarded<mdb_txn_abort>(snapshot->Transaction);
    std::free(snapshot);
}

int16_t OpenTreesToRead(const View &view, File *file)
{
    TreeHead ignored;
    int16_t status = BtrStatusOk;
    for (size_t tree = 0; tree < IndexTree(file->Layout.KeyCount) && status == BtrStatusOk; ++tree) {
        status = FindTree(view, file->Number, tree, &ignored);
    }
    return status;
}

int16_t UseCursor(View *snapshot, const File &file, size_t tree, Cursor **cursor, bool *stands)
{
    if (*cursor == nullptr) {
        *cursor = static_cast<Cursor *>(std::calloc(1, sizeof(Cursor)));
        if (*cursor == nullptr) return BtrStatusHandleTableFull;
    }
    // Two snapshots of one number are the same, page by page.
    Place &place = (*cursor)->At;
    *stands = place.Snapshot == snapshot->Number;
    if (*stands) return BtrStatusOk;
    place.Levels = 0;
    const int16_t status = FindTree(*snapshot, file.Number, tree, &place.Tree);
    place.Snapshot = status == BtrStatusOk ? snapshot->Number : 0;
    return status;
}

void CloseCursor(Cursor *cursor) { std::free(cursor); }

namespace {

// The writer may read from pages that nobody has looked at: runs, which the way to an entry leaves out.
int16_t LookAtValue(const View &view, Bytes key, Bytes value)
{
    const Environment &own = *view.Of->Own;
    const auto offset = reinterpret_cast<uintptr_t>(value.Data) - reinterpret_cast<uintptr_t>(own.Map);
    const bool big =
        sizeof(NodeHead) + key.Size + value.Size > (own.PageSize - sizeof(PageHead)) / 2 - sizeof(uint16_t);
    if (!big || offset >= (view.LastPage + 1) * own.PageSize) return BtrStatusOk;
    const uint8_t *ignored = nullptr;
    return LookAtRun(view, offset / own.PageSize, value.Size, &ignored);
}

int16_t GiveEntry(const View &view, int error, const MDB_val &foundKey, const MDB_val &foundValue, Bytes *key,
                  Bytes *value)
{
    if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusEndOfFile);
    *key = ToBytes(foundKey);
    *value = ToBytes(foundValue);
    return LookAtValue(view, *key, *value);
}

int16_t GivePlace(const View &view, int16_t status, const Place &place, Bytes *key, Bytes *value)
{
    return status == BtrStatusOk ? EntryAt(view, place, key, value) : status;
}

int16_t MoveReal(const View &view, Cursor *cursor, MDB_cursor_op where, Bytes *key, Bytes *value)
{
    MDB_val foundKey;
    MDB_val foundValue;
    const int error = Guarded<mdb_cursor_get>(cursor->Real, &foundKey, &foundValue, where);
    return GiveEntry(view, error, foundKey, foundValue, key, value);
}

int16_t SeekReal(const View &view, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value)
{
    const int16_t status = LookInWriter(cursor->By, *cursor->In, cursor->Tree, bound, side);
    if (status != BtrStatusOk) return status;
    MDB_val foundKey = ToVal(bound);
    MDB_val foundValue;
    int error = 0;
    switch (side) {
    case Side::First: return MoveReal(view, cursor, MDB_FIRST, key, value);
    case Side::Last: return MoveReal(view, cursor, MDB_LAST, key, value);
    case Side::AtOrAfter:
        error = Guarded<mdb_cursor_get>(cursor->Real, &foundKey, &foundValue, MDB_SET_RANGE);
        break;
    case Side::Before:
        error = Guarded<mdb_cursor_get>(cursor->Real, &foundKey, &foundValue, MDB_SET_RANGE);
        if (error != 0 && error != MDB_NOTFOUND) return StatusOf(error);
        return MoveReal(view, cursor, error == 0 ? MDB_PREV : MDB_LAST, key, value);
    }
    return GiveEntry(view, error, foundKey, foundValue, key, value);
}

// A tree that the transaction has not changed is searched as everybody searches it.
int16_t SeekInWriter(const View &view, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value)
{
    const TreeHead *unchanged = nullptr;
    const int16_t status = FindUnchanged(cursor->By, *cursor->In, cursor->Tree, &unchanged);
    if (status != BtrStatusOk) return status;
    cursor->Unchanged = unchanged != nullptr;
    if (!cursor->Unchanged) return SeekReal(view, cursor, bound, side, key, value);
    cursor->At.Tree = *unchanged;
    return GivePlace(view, PlaceAt(view, bound, side, cursor->At), cursor->At, key, value);
}

int16_t MoveInWriter(const View &view, Cursor *cursor, bool forward, Bytes *key, Bytes *value)
{
    if (!cursor->Unchanged) return MoveReal(view, cursor, forward ? MDB_NEXT : MDB_PREV, key, value);
    const int16_t status = forward ? PlaceNext(view, cursor->At) : PlacePrevious(view, cursor->At);
    return GivePlace(view, status, cursor->At, key, value);
}

} // namespace

int16_t Seek(View *view, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value)
{
    if (view->Writing) return SeekInWriter(*view, cursor, bound, side, key, value);
    return GivePlace(*view, PlaceAt(*view, bound, side, cursor->At), cursor->At, key, value);
}

int16_t SeekNext(View *view, Cursor *cursor, Bytes *key, Bytes *value)
{
    if (view->Writing) return MoveInWriter(*view, cursor, true, key, value);
    return GivePlace(*view, PlaceNext(*view, cursor->At), cursor->At, key, value);
}

int16_t SeekPrevious(View *view, Cursor *cursor, Bytes *key, Bytes *value)
{
    if (view->Writing) return MoveInWriter(*view, cursor, false, key, value);
    return GivePlace(*view, PlacePrevious(*view, cursor->At), cursor->At, key, value);
}

int16_t SeekExactly(View *snapshot, Cursor *cursor, Bytes key, Bytes *value)
{
    Bytes found;
    return GivePlace(*snapshot, PlaceExactly(*snapshot, key, cursor->At), cursor->At, &found, value);
}

int16_t Get(View *view, const File &file, size_t tree, Bytes key, Bytes *value)
{
    if (!view->Writing) {
        TreeHead head;
        const int16_t status = FindTree(*view, file.Number, tree, &head);
        return status == BtrStatusOk ? Find(*view, head, key, value) : status;
    }
    Writer *writer = &view->Of->Own->Writing;
    const TreeHead *unchanged = nullptr;
    int16_t status = FindUnchanged(writer, file, tree, &unchanged);
    if (status == BtrStatusOk && unchanged != nullptr) return Find(*view, *unchanged, key, value);
    if (status == BtrStatusOk) status = LookInWriter(writer, file, tree, key, Side::AtOrAfter);
    if (status != BtrStatusOk) return status;
    MDB_val wanted = ToVal(key);
    MDB_val found;
    const int error = Guarded<mdb_get>(view->Transaction, file.Trees[tree], &wanted, &found);
    if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusKeyNotFound);
    *value = ToBytes(found);
    return LookAtValue(*view, key, *value);
}

} // namespace wbtrv
