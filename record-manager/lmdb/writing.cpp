// The writer of a directory. The store goes through pages that it has not written itself without looking at
// them, so whatever it will touch is looked at first.
#include "record-manager/lmdb/private.h"

#include <cstdlib>
#include <ctime>

namespace wbtrv {

namespace {

// Whatever the store looks at of itself: its lists of free pages, and the catalogue, where it tells of trees.
int16_t LookAtOwn(Store *store, MDB_txn *transaction)
{
    View &seen = store->Own->Writing.Seen;
    const int16_t status = ReadHeads(store, transaction, mdb_txn_id(transaction) - 1, &seen);
    seen.Writing = true;
    if (status != BtrStatusOk) return status;
    const int16_t lists = LookAtTree(seen, seen.Free);
    return lists == BtrStatusOk ? LookAtTree(seen, seen.Main) : lists;
}

int16_t Begin(Store *store)
{
    Environment *own = store->Own;
    int16_t status = OpenTreesToWrite(store);
    if (status != BtrStatusOk) return status;
    MDB_txn *transaction = nullptr;
    const int error = mdb_txn_begin(own->Real, nullptr, 0, &transaction);
    if (error == MDB_PANIC) own->Dead = true;
    if (error != 0) return StatusOf(error);
    status = LookAtOwn(store, transaction);
    if (status != BtrStatusOk) {
        Guarded<mdb_txn_abort>(transaction);
        return status;
    }
    ++own->Transactions;
    WriteSums(own);
    return BtrStatusOk;
}

// A transaction that cannot even be aborted keeps the writer's place until the books are closed.
void AbortTransaction(Store *store, MDB_txn *transaction)
{
    if (Guarded<mdb_txn_abort>(transaction) == brokenStore) store->Own->Dead = true;
}

// False: the transaction is of no use any more.
bool OrderPages(Store *store, Writer *writer)
{
    bool ordered = false;
    return OrderFreePages(writer, store->PresenceFd, &ordered) && (!ordered || MoveSplitLeaves(writer));
}

// The cursors end with the transaction; what stands for them is used again.
void LeaveWriter(Writer *writer)
{
    WriteSums(nullptr);
    writer->Seen.Transaction = nullptr;
    while (writer->Used != nullptr) {
        Cursor *cursor = writer->Used;
        writer->Used = cursor->Next;
        cursor->Next = writer->Free;
        writer->Free = cursor;
    }
}

} // namespace

View *ViewOf(Writer *writer) { return &writer->Seen; }

int16_t BeginWriter(Store *store, Writer **writer)
{
    Environment *own = store->Own;
    *writer = nullptr;
    int16_t status = PrepareToWrite(store);
    if (status != BtrStatusOk) return status;
    // The snapshot of a process that died while reading keeps space from being reused until it is cleared.
    const int64_t now_s = std::time(nullptr);
    if (now_s != own->LastReaderCheck_s) {
        own->LastReaderCheck_s = now_s;
        int dead = 0;
        mdb_reader_check(own->Real, &dead);
    }
    pthread_mutex_lock(&store->Mutex);
    status = Begin(store);
    if (status == BtrStatusOk && !OrderPages(store, &own->Writing)) {
        AbortTransaction(store, own->Writing.Seen.Transaction);
        LeaveWriter(&own->Writing);
        status = Begin(store);
    }
    pthread_mutex_unlock(&store->Mutex);
    if (status == BtrStatusOk) *writer = &own->Writing;
    own->TreesDropped = false;
    return status;
}

int16_t CommitWriter(Writer *writer)
{
    Store *store = writer->Seen.Of;
    Environment *own = store->Own;
    WriteSums(own);
    const int error = Guarded<mdb_txn_commit>(writer->Seen.Transaction);
    // A commit that fails has undone the transaction itself, unless it was left in its middle.
    if (error == brokenStore) AbortTransaction(store, writer->Seen.Transaction);
    LeaveWriter(writer);
    if (error == 0) return BtrStatusOk;
    CloseUndoneTrees(store);
    GoOn(own);
    return StatusOfCommit(store, error);
}

void AbortWriter(Writer *writer)
{
    Store *store = writer->Seen.Of;
    AbortTransaction(store, writer->Seen.Transaction);
    LeaveWriter(writer);
    CloseUndoneTrees(store);
}

int16_t SetLoading(Store *store, bool loading)
{
    MDB_env *real = store->Own->Real;
    if (loading) return StatusOf(mdb_env_set_flags(real, MDB_NOSYNC, 1));
    const int error = mdb_env_sync(real, 1);
    mdb_env_set_flags(real, MDB_NOSYNC, 0);
    return StatusOf(error);
}

int16_t OpenWriteCursor(Writer *writer, const File &file, size_t tree, Cursor **cursor)
{
    Cursor *made = writer->Free;
    if (made == nullptr) {
        made = static_cast<Cursor *>(std::calloc(1, sizeof(Cursor)));
        if (made == nullptr) return BtrStatusHandleTableFull;
    } else {
        writer->Free = made->Next;
    }
    made->By = writer;
    made->In = &file;
    made->Tree = tree;
    const int error = mdb_cursor_open(writer->Seen.Transaction, file.Trees[tree], &made->Real);
    Cursor **list = error == 0 ? &writer->Used : &writer->Free;
    made->Next = *list;
    *list = made;
    if (error == 0) *cursor = made;
    return StatusOf(error);
}

int16_t Reserve(Writer *writer, const File &file, size_t tree, Bytes key, size_t size, bool append,
                uint8_t **place)
{
    const int16_t status = LookToChange(writer, file, tree, key, append ? Side::Last : Side::AtOrAfter);
    if (status != BtrStatusOk) return status;
    MDB_val where = ToVal(key);
    MDB_val value{size, nullptr};
    const unsigned number = file.Trees[tree];
    const uint64_t pages = PagesOf(*writer, number);
    const unsigned flags = MDB_RESERVE | (append ? MDB_APPEND : 0u);
    const int error = Guarded<mdb_put>(writer->Seen.Transaction, number, &where, &value, flags);
    if (error != 0) return StatusOf(error);
    if (PagesOf(*writer, number) > pages) NoteSplit(&writer->Seen.Of->Own->Splits, file, tree, key);
    *place = static_cast<uint8_t *>(value.mv_data);
    return BtrStatusOk;
}

int16_t Add(Cursor *cursor, Bytes key, Bytes value)
{
    Writer *writer = cursor->By;
    const int16_t status = LookToChange(writer, *cursor->In, cursor->Tree, key, Side::AtOrAfter);
    if (status != BtrStatusOk) return status;
    MDB_val newKey = ToVal(key);
    MDB_val newValue = ToVal(value);
    cursor->Unchanged = false;
    const unsigned number = cursor->In->Trees[cursor->Tree];
    const uint64_t pages = PagesOf(*writer, number);
    const int error = Guarded<mdb_cursor_put>(cursor->Real, &newKey, &newValue, MDB_NOOVERWRITE);
    if (error == 0 && PagesOf(*writer, number) > pages)
        NoteSplit(&writer->Seen.Of->Own->Splits, *cursor->In, cursor->Tree, key);
    return StatusOf(error, MDB_KEYEXIST, BtrStatusDuplicateKey);
}

int16_t Remove(Writer *writer, const File &file, size_t tree, Bytes key)
{
    const int16_t status = LookToChange(writer, file, tree, key, Side::AtOrAfter);
    if (status != BtrStatusOk) return status;
    MDB_val where = ToVal(key);
    const int error = Guarded<mdb_del>(writer->Seen.Transaction, file.Trees[tree], &where, nullptr);
    if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusKeyNotFound);
    return LookAfterRemoval(writer, file, tree);
}

} // namespace wbtrv
