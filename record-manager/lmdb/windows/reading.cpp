// Reading, with the cursors of the store: in snapshots and in what the writer has made alike.
#include "record-manager/lmdb/private.h"
#include "record-manager/lmdb/windows/growth.h"
#include "record-manager/lmdb/windows/trees.h"

#include <cstdlib>

namespace wbtrv {

int16_t ReadHeads(Store *store, MDB_txn *transaction, uint64_t number, View *view)
{
    MDB_stat catalogue;
    if (mdb_env_stat(store->Own->Real, &catalogue) != 0) return BtrStatusIoError;
    view->Of = store;
    view->Transaction = transaction;
    view->Number = number;
    view->Main.Root = catalogue.ms_entries == 0 ? noPage : 0;
    return BtrStatusOk;
}

namespace {

int BeginOrRenew(MDB_env *real, View *view)
{
    if (view->Transaction != nullptr) return mdb_txn_renew(view->Transaction);
    const int error = mdb_txn_begin(real, nullptr, MDB_RDONLY, &view->Transaction);
    if (error != 0) view->Transaction = nullptr;
    return error;
}

int16_t Begin(Store *store, View *view)
{
    MDB_env *real = store->Own->Real;
    for (unsigned attempt = 0;; ++attempt) {
        int16_t status = EnterMap(store->Own);
        if (status != BtrStatusOk) return status;
        int error = store->Own->Dead ? MDB_PANIC : BeginOrRenew(real, view);
        if (error == MDB_READERS_FULL) {
            int dead = 0;
            mdb_reader_check(real, &dead);
            error = BeginOrRenew(real, view);
        }
        if (error == 0) return BtrStatusOk;
        LeaveMap(store->Own);
        // Each time other processes can have made the books twice as large.
        if (error != MDB_MAP_RESIZED || attempt == 16) return StatusOf(error);
        status = FollowMap(store);
        if (status != BtrStatusOk) return status;
    }
}

} // namespace

int16_t BeginSnapshot(Store *store, View **snapshot)
{
    const bool made = *snapshot == nullptr;
    if (made) *snapshot = static_cast<View *>(calloc(1, sizeof(View)));
    if (*snapshot == nullptr) return BtrStatusHandleTableFull;
    View *view = *snapshot;
    int16_t status = Begin(store, view);
    view->Of = store;
    view->Open = status == BtrStatusOk;
    if (status == BtrStatusOk)
        status = ReadHeads(store, view->Transaction, mdb_txn_id(view->Transaction), view);
    if (status == BtrStatusOk) return status;
    if (made) {
        EndSnapshot(view);
        *snapshot = nullptr;
    } else if (view->Open) {
        ResetSnapshot(view);
    }
    return status;
}

void ResetSnapshot(View *snapshot)
{
    mdb_txn_reset(snapshot->Transaction);
    snapshot->Open = false;
    LeaveMap(snapshot->Of->Own);
}

// While it is held files may be opened whose trees it has to know.
int16_t HoldSnapshot(View *snapshot)
{
    Store *store = snapshot->Of;
    pthread_mutex_lock(&store->Mutex);
    uint32_t last = 0;
    int16_t status = ReadLastFile(snapshot, &last);
    const bool missing = status == BtrStatusOk && last > store->Own->KnownFile;
    if (missing) status = OpenAllTrees(store, last);
    pthread_mutex_unlock(&store->Mutex);
    if (!missing || status != BtrStatusOk) return status;
    ResetSnapshot(snapshot);
    return BeginSnapshot(store, &snapshot);
}

bool IsOpen(const View &snapshot) { return snapshot.Open; }

bool IsStillWhole(const View &) { return true; }

void EndSnapshot(View *snapshot)
{
    if (snapshot->Transaction != nullptr) mdb_txn_abort(snapshot->Transaction);
    if (snapshot->Open) LeaveMap(snapshot->Of->Own);
    free(snapshot);
}

// A tree's handle is made in a transaction of its own, since it reaches the others only by a commit.
int16_t OpenTreesToRead(const View &view, File *file)
{
    View *own = nullptr;
    int16_t status = BeginSnapshot(view.Of, &own);
    if (status != BtrStatusOk) return status;
    status = OpenTrees(own->Transaction, file->Number, file->Layout.KeyCount, file->Trees);
    if (status == BtrStatusOk) {
        status = StatusOf(Guarded<mdb_txn_commit>(own->Transaction));
        own->Transaction = nullptr;
    }
    EndSnapshot(own);
    return status;
}

// A cursor is to be led to where it stood: it does not know whether something was committed since.
int16_t UseCursor(View *snapshot, const File &file, size_t tree, Cursor **cursor, bool *stands)
{
    *stands = false;
    if (*cursor == nullptr) {
        *cursor = static_cast<Cursor *>(calloc(1, sizeof(Cursor)));
        if (*cursor == nullptr) return BtrStatusHandleTableFull;
    }
    Cursor &used = **cursor;
    used.In = &file;
    used.Tree = tree;
    if (used.Real != nullptr) return StatusOf(mdb_cursor_renew(snapshot->Transaction, used.Real));
    return StatusOf(mdb_cursor_open(snapshot->Transaction, file.Trees[tree], &used.Real));
}

// The writer's cursors end with its transaction.
void CloseCursor(Cursor *cursor)
{
    if (cursor->Real != nullptr && cursor->By == nullptr) mdb_cursor_close(cursor->Real);
    free(cursor);
}

namespace {

int Move(Cursor *cursor, MDB_cursor_op where, Bytes *key, Bytes *value)
{
    MDB_val foundKey = ToVal(*key);
    MDB_val foundValue;
    const int error = Guarded<mdb_cursor_get>(cursor->Real, &foundKey, &foundValue, where);
    if (error == 0) {
        *key = ToBytes(foundKey);
        *value = ToBytes(foundValue);
    }
    return error;
}

int16_t StatusOfEnd(int error) { return StatusOf(error, MDB_NOTFOUND, BtrStatusEndOfFile); }

} // namespace

int16_t Seek(View *, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value)
{
    Bytes found = bound;
    int error = 0;
    switch (side) {
    case Side::First: error = Move(cursor, MDB_FIRST, &found, value); break;
    case Side::Last: error = Move(cursor, MDB_LAST, &found, value); break;
    case Side::AtOrAfter: error = Move(cursor, MDB_SET_RANGE, &found, value); break;
    case Side::Before:
        error = Move(cursor, MDB_SET_RANGE, &found, value);
        if (error == 0 || error == MDB_NOTFOUND)
            error = Move(cursor, error == 0 ? MDB_PREV : MDB_LAST, &found, value);
        break;
    }
    if (error == 0) *key = found;
    return StatusOfEnd(error);
}

int16_t SeekNext(View *, Cursor *cursor, Bytes *key, Bytes *value)
{
    *key = {};
    return StatusOfEnd(Move(cursor, MDB_NEXT, key, value));
}

int16_t SeekPrevious(View *, Cursor *cursor, Bytes *key, Bytes *value)
{
    *key = {};
    return StatusOfEnd(Move(cursor, MDB_PREV, key, value));
}

int16_t SeekExactly(View *, Cursor *cursor, Bytes key, Bytes *value)
{
    return StatusOf(Move(cursor, MDB_SET_KEY, &key, value), MDB_NOTFOUND, BtrStatusKeyNotFound);
}

int16_t Get(View *view, const File &file, size_t tree, Bytes key, Bytes *value)
{
    MDB_val wanted = ToVal(key);
    MDB_val found;
    const int error = Guarded<mdb_get>(view->Transaction, file.Trees[tree], &wanted, &found);
    if (error == 0) *value = ToBytes(found);
    return StatusOf(error, MDB_NOTFOUND, BtrStatusKeyNotFound);
}

int16_t FindInCatalogue(const View &view, const char *name, Bytes *value)
{
    MDB_val key = ToVal(name);
    MDB_val found;
    const int error = Guarded<mdb_get>(view.Transaction, view.Of->Own->Catalogue, &key, &found);
    if (error == 0) *value = ToBytes(found);
    return StatusOf(error, MDB_NOTFOUND, BtrStatusKeyNotFound);
}

} // namespace wbtrv
