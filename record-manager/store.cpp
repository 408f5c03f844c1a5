#include "record-manager/books_file.h"
#include "record-manager/limits.h"
#include "record-manager/page_order.h"
#include "record-manager/store_private.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <unistd.h>

namespace wbtrv {

namespace {

struct StoredCounters {
    uint32_t LastRecord;
    uint32_t Records;
    uint64_t Sequence;
};
static_assert(sizeof(StoredCounters) == 16);

// "0000002at" and the like.
struct CatalogueKey {
    char Text[12];
};

CatalogueKey KeyOf(uint32_t number, char what)
{
    CatalogueKey key;
    for (int i = 7; i >= 0; --i) {
        key.Text[i] = "0123456789abcdef"[number & 15];
        number >>= 4;
    }
    key.Text[8] = what;
    key.Text[9] = 0;
    return key;
}

// The name of one of a file's trees.
CatalogueKey KeyOfTree(uint32_t number, size_t tree)
{
    CatalogueKey key = KeyOf(number, tree == recordTree ? 't' : 'i');
    if (tree == recordTree) return key;
    key.Text[9] = "0123456789abcdef"[(tree - IndexTree(0)) >> 4];
    key.Text[10] = "0123456789abcdef"[(tree - IndexTree(0)) & 15];
    key.Text[11] = 0;
    return key;
}

struct NameKey {
    char Text[BtrPathSize + 3];
};

NameKey KeyOfName(const char *name)
{
    NameKey key{};
    memcpy(key.Text, "n:", 2);
    memcpy(key.Text + 2, name, strnlen(name, BtrPathSize));
    return key;
}

} // namespace

int16_t FindFileNumber(Store *store, MDB_txn *view, const char *name, uint32_t *number)
{
    const NameKey nameKey = KeyOfName(name);
    MDB_val key = ToVal(nameKey.Text);
    MDB_val value;
    const int error = mdb_get(view, store->Catalogue, &key, &value);
    *number = 0;
    if (error == MDB_NOTFOUND) return BtrStatusOk;
    if (error != 0) return StatusOf(error);
    if (value.mv_size != sizeof *number) return BtrStatusForeignFile;
    memcpy(number, value.mv_data, sizeof *number);
    return BtrStatusOk;
}

namespace {

int16_t LoadDefinition(Store *store, MDB_txn *view, uint32_t number, Definition *definition)
{
    const CatalogueKey name = KeyOf(number, 'd');
    MDB_val key = ToVal(name.Text);
    MDB_val value;
    const int error = mdb_get(view, store->Catalogue, &key, &value);
    if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusForeignFile);
    const int16_t status = ParseDefinition(value.mv_data, value.mv_size, definition);
    return status == BtrStatusOk ? BtrStatusOk : BtrStatusForeignFile;
}

// Opens the trees of a file of `keys` keys.
int16_t OpenTrees(MDB_txn *view, uint32_t number, size_t keys, unsigned *trees)
{
    for (size_t tree = 0; tree < IndexTree(keys); ++tree) {
        MDB_dbi opened = 0;
        const int error = mdb_dbi_open(view, KeyOfTree(number, tree).Text, 0, &opened);
        if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusForeignFile);
        trees[tree] = opened;
    }
    return BtrStatusOk;
}

// A tree's handle is made in a transaction of its own, since it reaches the others only by a commit.
int16_t OpenTreesForAll(Store *store, uint32_t number, size_t keys, unsigned *trees)
{
    MDB_txn *view = nullptr;
    int16_t status = StatusOf(mdb_txn_begin(store->Environment, nullptr, MDB_RDONLY, &view));
    if (status != BtrStatusOk) return status;
    status = OpenTrees(view, number, keys, trees);
    if (status == BtrStatusOk) return StatusOf(mdb_txn_commit(view));
    mdb_txn_abort(view);
    return status;
}

// Forgets files of the name that another process has replaced, and their trees' handles with them.
void ForgetReplaced(Store *store, const char *name, uint32_t number)
{
    for (File **link = &store->Files; *link != nullptr;) {
        File *file = *link;
        if (file->Uses > 0 || file->Number == number || strcmp(file->Name, name) != 0) {
            link = &file->Next;
            continue;
        }
        for (size_t tree = 0; tree < IndexTree(file->Layout.KeyCount); ++tree) {
            mdb_dbi_close(store->Environment, file->Trees[tree]);
        }
        *link = file->Next;
        free(file);
    }
}

int16_t LoadFile(Store *store, MDB_txn *view, bool writing, uint32_t number, const char *name, File **out)
{
    auto *file = static_cast<File *>(calloc(1, sizeof(File)));
    if (file == nullptr) return BtrStatusHandleTableFull;
    int16_t status = LoadDefinition(store, view, number, &file->Layout);
    if (status == BtrStatusOk) {
        const size_t keys = file->Layout.KeyCount;
        status = writing ? OpenTrees(view, number, keys, file->Trees)
                         : OpenTreesForAll(store, number, keys, file->Trees);
    }
    if (status != BtrStatusOk) {
        free(file);
        return status;
    }
    file->Number = number;
    memcpy(file->Name, name, strnlen(name, BtrPathSize));
    *out = file;
    return BtrStatusOk;
}

int16_t AcquireFileIn(Store *store, MDB_txn *view, bool writing, const char *name, File **out)
{
    uint32_t number = 0;
    int16_t status = FindFileNumber(store, view, name, &number);
    if (status != BtrStatusOk) return status;
    if (number == 0) return BtrStatusFileNotFound;
    File *file = store->Files;
    while (file != nullptr && file->Number != number) {
        file = file->Next;
    }
    if (file == nullptr) {
        if (!writing) ForgetReplaced(store, name, number);
        status = LoadFile(store, view, writing, number, name, &file);
        if (status != BtrStatusOk) return status;
        file->Next = store->Files;
        store->Files = file;
    }
    file->Uses++;
    *out = file;
    return BtrStatusOk;
}

// Takes a file that is about to be replaced out of the list; its tree's handle ends with the tree.
void ForgetFile(Store *store, uint32_t number)
{
    for (File **link = &store->Files; *link != nullptr; link = &(*link)->Next) {
        File *file = *link;
        if (file->Number != number) continue;
        *link = file->Next;
        free(file);
        return;
    }
}

// How many keys a file has; 4 when there is no such file (any more).
int16_t ReadKeyCount(const Store *store, MDB_txn *view, uint32_t number, size_t *keys)
{
    const CatalogueKey name = KeyOf(number, 'd');
    MDB_val key = ToVal(name.Text);
    MDB_val value;
    BtrFileHeader header;
    const int error = mdb_get(view, store->Catalogue, &key, &value);
    if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusKeyNotFound);
    if (value.mv_size < sizeof header) return BtrStatusForeignFile;
    memcpy(&header, value.mv_data, sizeof header);
    *keys = header.KeyCount;
    return header.KeyCount <= BtrMaxKeys ? BtrStatusOk : BtrStatusForeignFile;
}

int16_t RemoveFile(Store *store, MDB_txn *writer, uint32_t number)
{
    ForgetFile(store, number);
    store->TreesDropped = true;
    size_t keys = 0;
    const int16_t status = ReadKeyCount(store, writer, number, &keys);
    if (status != BtrStatusOk) return status;
    int error = 0;
    for (size_t tree = 0; tree < IndexTree(keys) && error == 0; ++tree) {
        MDB_dbi opened = 0;
        error = mdb_dbi_open(writer, KeyOfTree(number, tree).Text, 0, &opened);
        if (error == 0) error = mdb_drop(writer, opened, 1);
    }
    for (const char what : {'c', 'd'}) {
        const CatalogueKey name = KeyOf(number, what);
        MDB_val key = ToVal(name.Text);
        if (error == 0) error = mdb_del(writer, store->Catalogue, &key, nullptr);
    }
    return StatusOf(error);
}

int16_t NextFileNumber(Store *store, MDB_txn *writer, uint32_t *number)
{
    FormatRecord format;
    MDB_val key = ToVal(formatKey);
    MDB_val value;
    int error = mdb_get(writer, store->Catalogue, &key, &value);
    if (error != 0) return StatusOf(error);
    memcpy(&format, value.mv_data, sizeof format);
    if (format.LastFile >= maxFileNumber) return BtrStatusFileTableFull;
    *number = ++format.LastFile;
    value = {sizeof format, &format};
    error = mdb_put(writer, store->Catalogue, &key, &value, 0);
    return StatusOf(error);
}

int16_t PutCatalogue(Store *store, MDB_txn *writer, const char *name, const void *data, size_t size)
{
    MDB_val key = ToVal(name);
    MDB_val value{size, const_cast<void *>(data)};
    return StatusOf(mdb_put(writer, store->Catalogue, &key, &value, 0));
}

} // namespace

int16_t AcquireFile(Store *store, const char *name, MDB_txn *view, bool writing, File **file)
{
    pthread_mutex_lock(&store->Mutex);
    const int16_t status = AcquireFileIn(store, view, writing, name, file);
    pthread_mutex_unlock(&store->Mutex);
    return status;
}

void ReleaseFile(Store *store, File *file)
{
    pthread_mutex_lock(&store->Mutex);
    file->Uses--;
    pthread_mutex_unlock(&store->Mutex);
}

int16_t CreateFile(Store *store, MDB_txn *writer, const char *name, const Definition &definition)
{
    pthread_mutex_lock(&store->Mutex);
    uint32_t number = 0;
    int16_t status = FindFileNumber(store, writer, name, &number);
    if (status == BtrStatusOk && number != 0) status = RemoveFile(store, writer, number);
    if (status == BtrStatusOk) status = NextFileNumber(store, writer, &number);
    if (status == BtrStatusOk) {
        status = PutCatalogue(store, writer, KeyOfName(name).Text, &number, sizeof number);
    }
    if (status == BtrStatusOk) {
        uint8_t stored[sizeof(BtrFileHeader) + BtrMaxKeys * sizeof(BtrKeyEntry)];
        memcpy(stored, &definition.Header, sizeof(BtrFileHeader));
        memcpy(stored + sizeof(BtrFileHeader), definition.KeyEntries,
               definition.SegmentCount * sizeof(BtrKeyEntry));
        status = PutCatalogue(store, writer, KeyOf(number, 'd').Text, stored, DefinitionSize(definition));
    }
    if (status == BtrStatusOk) {
        File file{};
        file.Number = number;
        file.Layout.KeyCount = definition.KeyCount;
        status = WriteCounters(store, writer, file, Counters{});
    }
    for (size_t tree = 0; tree < IndexTree(definition.KeyCount) && status == BtrStatusOk; ++tree) {
        MDB_dbi made = 0;
        const unsigned flags = tree == recordTree ? MDB_CREATE | MDB_INTEGERKEY : MDB_CREATE;
        status = StatusOf(mdb_dbi_open(writer, KeyOfTree(number, tree).Text, flags, &made));
    }
    pthread_mutex_unlock(&store->Mutex);
    return status;
}

namespace {

// No tree has this number; the store refuses it.
constexpr unsigned noTree = UINT32_MAX;

} // namespace

void ForgetTrees(Store *store, uint32_t last)
{
    pthread_mutex_lock(&store->Mutex);
    for (File *file = store->Files; file != nullptr; file = file->Next) {
        if (file->Number <= last) continue;
        for (unsigned &tree : file->Trees) {
            tree = noTree;
        }
    }
    pthread_mutex_unlock(&store->Mutex);
}

int16_t RenewTrees(Store *store, MDB_txn *writer, uint32_t last)
{
    int16_t status = BtrStatusOk;
    pthread_mutex_lock(&store->Mutex);
    for (File *file = store->Files; file != nullptr && status == BtrStatusOk; file = file->Next) {
        if (file->Number > last) {
            status = OpenTrees(writer, file->Number, file->Layout.KeyCount, file->Trees);
        }
    }
    pthread_mutex_unlock(&store->Mutex);
    return status;
}

int16_t ReadLastFile(const Store *store, MDB_txn *view, uint32_t *number)
{
    FormatRecord format;
    MDB_val key = ToVal(formatKey);
    MDB_val value;
    const int error = mdb_get(view, store->Catalogue, &key, &value);
    if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusForeignFile);
    if (value.mv_size != sizeof format) return BtrStatusForeignFile;
    memcpy(&format, value.mv_data, sizeof format);
    *number = format.LastFile;
    return BtrStatusOk;
}

int16_t BeginSnapshot(Store *store, MDB_txn **snapshot)
{
    if (*snapshot != nullptr) return StatusOf(mdb_txn_renew(*snapshot));
    int error = mdb_txn_begin(store->Environment, nullptr, MDB_RDONLY, snapshot);
    if (error == MDB_READERS_FULL) {
        int dead = 0;
        mdb_reader_check(store->Environment, &dead);
        error = mdb_txn_begin(store->Environment, nullptr, MDB_RDONLY, snapshot);
    }
    if (error != 0) *snapshot = nullptr;
    return StatusOf(error);
}

void ResetSnapshot(MDB_txn *snapshot) { mdb_txn_reset(snapshot); }
void EndSnapshot(MDB_txn *snapshot) { mdb_txn_abort(snapshot); }

namespace {

// Opens the trees of all files; numbers whose file was replaced have none.
int16_t OpenAllTrees(Store *store, uint32_t last)
{
    MDB_txn *view = nullptr;
    int16_t status = StatusOf(mdb_txn_begin(store->Environment, nullptr, MDB_RDONLY, &view));
    if (status != BtrStatusOk) return status;
    for (uint32_t number = store->KnownFile + 1; number <= last && status == BtrStatusOk; ++number) {
        size_t keys = 0;
        unsigned trees[1 + BtrMaxKeys];
        status = ReadKeyCount(store, view, number, &keys);
        if (status == BtrStatusOk) status = OpenTrees(view, number, keys, trees);
        if (status == BtrStatusKeyNotFound) status = BtrStatusOk;
    }
    if (status != BtrStatusOk) {
        mdb_txn_abort(view);
        return status;
    }
    status = StatusOf(mdb_txn_commit(view));
    if (status == BtrStatusOk) store->KnownFile = last;
    return status;
}

// A write transaction knows the trees that were open when it began, and one opened later would get the number
// of another. So all there are are opened before; as long as the gate is held, no process makes new ones.
int16_t BeginWithAllTrees(Store *store, MDB_txn **writer)
{
    for (;;) {
        const int error = mdb_txn_begin(store->Environment, nullptr, 0, writer);
        if (error == MDB_PANIC) store->Dead = true;
        if (error != 0) return StatusOf(error);
        uint32_t last = 0;
        int16_t status = ReadLastFile(store, *writer, &last);
        if (status == BtrStatusOk && last <= store->KnownFile) return BtrStatusOk;
        mdb_txn_abort(*writer);
        if (status == BtrStatusOk) status = OpenAllTrees(store, last);
        if (status != BtrStatusOk) return status;
    }
}

// False: the transaction is of no use any more.
bool OrderPages(Store *store, MDB_txn *writer)
{
    bool ordered = false;
    return OrderFreePages(store->Environment, writer, store->Catalogue, store->PresenceFd, &store->OrderDue,
                          &ordered) &&
           (!ordered || MoveSplitLeaves(store->Environment, writer, &store->Splits));
}

} // namespace

int16_t BeginWriter(Store *store, MDB_txn **writer)
{
    // Newcomers would not find the lock file by which we are told from them.
    if (!HasLockFile(store)) return BtrStatusIoError;
    // The snapshot of a process that died while reading keeps space from being reused until it is cleared.
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    if (now.tv_sec != store->LastReaderCheck_s) {
        store->LastReaderCheck_s = now.tv_sec;
        int dead = 0;
        mdb_reader_check(store->Environment, &dead);
    }
    pthread_mutex_lock(&store->Mutex);
    int16_t status = BeginWithAllTrees(store, writer);
    if (status == BtrStatusOk && !OrderPages(store, *writer)) {
        mdb_txn_abort(*writer);
        status = BeginWithAllTrees(store, writer);
    }
    pthread_mutex_unlock(&store->Mutex);
    if (status != BtrStatusOk) *writer = nullptr;
    store->TreesDropped = false;
    return status;
}

namespace {

// How the store's own structure begins; only its flags tell, and only there, that it gave up.
struct EnvironmentHead {
    int BooksFd;
    int LockFd;
    int HeadFd;
    uint32_t Flags;
};
constexpr uint32_t gaveUp = 0x80000000;

// When it cannot write the page that makes a transaction final, the store refuses every later call of this
// process, while others go on: what they see is the transaction before. This process does as they do, once
// there is space again. Should the structure not be the one that is known here, the books stay closed until
// their last user has left.
void GoOn(const Store *store)
{
    EnvironmentHead head;
    int booksFd = -1;
    unsigned known = 0;
    memcpy(&head, store->Environment, sizeof head);
    if (mdb_env_get_fd(store->Environment, &booksFd) != 0 || head.BooksFd != booksFd) return;
    if (mdb_env_get_flags(store->Environment, &known) != 0 || (head.Flags & known) != known) return;
    head.Flags &= ~gaveUp;
    memcpy(store->Environment, &head, sizeof head);
}

// Whether the books could not grow by a page. The store tells of a write that was cut short as of any other
// failure; only the holder of the gate may ask.
bool IsDiskFull(const Store *store)
{
    const uint8_t page[4096] = {};
    BooksFacts found;
    if (!ReadFacts(store->PresenceFd, &found)) return false;
    const ssize_t written = pwrite(store->PresenceFd, page, sizeof page, found.Size);
    const bool full =
        written < 0 ? StatusOf(errno) == BtrStatusDiskFull : static_cast<size_t>(written) < sizeof page;
    if (written > 0) (void)!ftruncate(store->PresenceFd, found.Size);
    return full;
}

} // namespace

int16_t CommitWriter(Store *store, MDB_txn *writer)
{
    const int error = mdb_txn_commit(writer);
    if (error == 0) return BtrStatusOk;
    if (store->TreesDropped) store->KnownFile = 0;
    GoOn(store);
    return error == EIO && IsDiskFull(store) ? static_cast<int16_t>(BtrStatusDiskFull) : StatusOf(error);
}

void AbortWriter(Store *store, MDB_txn *writer)
{
    mdb_txn_abort(writer);
    // The trees that it has dropped are back, their handles are not.
    if (store->TreesDropped) store->KnownFile = 0;
}

int16_t SetLoading(Store *store, bool loading)
{
    if (!loading) {
        const int error = mdb_env_sync(store->Environment, 1);
        mdb_env_set_flags(store->Environment, MDB_NOSYNC, 0);
        return StatusOf(error);
    }
    return StatusOf(mdb_env_set_flags(store->Environment, MDB_NOSYNC, 1));
}

int16_t ReadCounters(Store *store, MDB_txn *view, const File &file, Counters *counters)
{
    const CatalogueKey name = KeyOf(file.Number, 'c');
    MDB_val key = ToVal(name.Text);
    MDB_val value;
    const int error = mdb_get(view, store->Catalogue, &key, &value);
    if (error != 0) return StatusOf(error);
    StoredCounters stored;
    const size_t values = file.Layout.KeyCount * sizeof(uint32_t);
    if (value.mv_size != sizeof stored + values) return BtrStatusForeignFile;
    memcpy(&stored, value.mv_data, sizeof stored);
    counters->LastRecord = stored.LastRecord;
    counters->Records = stored.Records;
    counters->Sequence = stored.Sequence;
    memcpy(counters->UniqueValues, static_cast<const uint8_t *>(value.mv_data) + sizeof stored, values);
    return BtrStatusOk;
}

int16_t WriteCounters(Store *store, MDB_txn *writer, const File &file, const Counters &counters)
{
    uint8_t bytes[sizeof(StoredCounters) + sizeof counters.UniqueValues];
    const StoredCounters stored{counters.LastRecord, counters.Records, counters.Sequence};
    const size_t values = file.Layout.KeyCount * sizeof(uint32_t);
    memcpy(bytes, &stored, sizeof stored);
    memcpy(bytes + sizeof stored, counters.UniqueValues, values);
    return PutCatalogue(store, writer, KeyOf(file.Number, 'c').Text, bytes, sizeof stored + values);
}

int16_t OpenWriteCursor(MDB_txn *writer, unsigned tree, MDB_cursor **cursor)
{
    return StatusOf(mdb_cursor_open(writer, tree, cursor));
}

int16_t UseCursor(MDB_txn *snapshot, unsigned tree, SnapshotCursor *cursor, bool *stands)
{
    // Two snapshots of one number are the same, page by page, and what a cursor holds is pages: as long as
    // nothing was committed it need not be renewed, which would cost it its place and a search from the root.
    const uint64_t number = mdb_txn_id(snapshot);
    *stands = cursor->Cursor != nullptr && cursor->Snapshot == number;
    if (*stands) return BtrStatusOk;
    const int error = cursor->Cursor == nullptr ? mdb_cursor_open(snapshot, tree, &cursor->Cursor)
                                                : mdb_cursor_renew(snapshot, cursor->Cursor);
    if (error == 0) cursor->Snapshot = number;
    return StatusOf(error);
}

void CloseCursor(MDB_cursor *cursor) { mdb_cursor_close(cursor); }

int16_t Seek(MDB_cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value)
{
    MDB_val foundKey = ToVal(bound);
    MDB_val foundValue;
    int error = 0;
    switch (side) {
    case Side::First: error = mdb_cursor_get(cursor, &foundKey, &foundValue, MDB_FIRST); break;
    case Side::Last: error = mdb_cursor_get(cursor, &foundKey, &foundValue, MDB_LAST); break;
    case Side::AtOrAfter: error = mdb_cursor_get(cursor, &foundKey, &foundValue, MDB_SET_RANGE); break;
    case Side::Before:
        error = mdb_cursor_get(cursor, &foundKey, &foundValue, MDB_SET_RANGE);
        if (error != 0 && error != MDB_NOTFOUND) return StatusOf(error);
        error = mdb_cursor_get(cursor, &foundKey, &foundValue, error == 0 ? MDB_PREV : MDB_LAST);
        break;
    }
    if (error != 0) return StatusOf(error, MDB_NOTFOUND, BtrStatusEndOfFile);
    *key = ToBytes(foundKey);
    *value = ToBytes(foundValue);
    return BtrStatusOk;
}

namespace {

int16_t Move(MDB_cursor *cursor, MDB_cursor_op where, Bytes *key, Bytes *value)
{
    MDB_val foundKey;
    MDB_val foundValue;
    const int error = mdb_cursor_get(cursor, &foundKey, &foundValue, where);
    if (error == MDB_NOTFOUND) return BtrStatusEndOfFile;
    if (error != 0) return StatusOf(error);
    *key = ToBytes(foundKey);
    *value = ToBytes(foundValue);
    return BtrStatusOk;
}

} // namespace

int16_t SeekNext(MDB_cursor *cursor, Bytes *key, Bytes *value) { return Move(cursor, MDB_NEXT, key, value); }

int16_t SeekPrevious(MDB_cursor *cursor, Bytes *key, Bytes *value)
{
    return Move(cursor, MDB_PREV, key, value);
}

int16_t SeekExactly(MDB_cursor *cursor, Bytes key, Bytes *value)
{
    MDB_val wanted = ToVal(key);
    MDB_val found;
    const int error = mdb_cursor_get(cursor, &wanted, &found, MDB_SET);
    if (error == MDB_NOTFOUND) return BtrStatusKeyNotFound;
    if (error != 0) return StatusOf(error);
    *value = ToBytes(found);
    return BtrStatusOk;
}

int16_t Get(MDB_txn *view, unsigned tree, Bytes key, Bytes *value)
{
    MDB_val wanted = ToVal(key);
    MDB_val found;
    const int error = mdb_get(view, tree, &wanted, &found);
    if (error == MDB_NOTFOUND) return BtrStatusKeyNotFound;
    if (error != 0) return StatusOf(error);
    *value = ToBytes(found);
    return BtrStatusOk;
}

namespace {

size_t LeavesOf(MDB_txn *writer, unsigned tree)
{
    MDB_stat shape;
    return mdb_stat(writer, tree, &shape) == 0 ? shape.ms_leaf_pages : 0;
}

} // namespace

int16_t Reserve(Store *store, MDB_txn *writer, unsigned tree, Bytes key, size_t size, bool append,
                uint8_t **place)
{
    MDB_val where = ToVal(key);
    MDB_val value{size, nullptr};
    const size_t leaves = LeavesOf(writer, tree);
    const int error = mdb_put(writer, tree, &where, &value, MDB_RESERVE | (append ? MDB_APPEND : 0u));
    if (error != 0) return StatusOf(error);
    if (LeavesOf(writer, tree) > leaves) NoteSplit(&store->Splits, tree, key.Data, key.Size);
    *place = static_cast<uint8_t *>(value.mv_data);
    return BtrStatusOk;
}

int16_t Add(Store *store, MDB_cursor *cursor, Bytes key, Bytes value)
{
    MDB_val newKey = ToVal(key);
    MDB_val newValue = ToVal(value);
    MDB_txn *writer = mdb_cursor_txn(cursor);
    const MDB_dbi tree = mdb_cursor_dbi(cursor);
    const size_t leaves = LeavesOf(writer, tree);
    const int error = mdb_cursor_put(cursor, &newKey, &newValue, MDB_NOOVERWRITE);
    if (error == 0 && LeavesOf(writer, tree) > leaves) NoteSplit(&store->Splits, tree, key.Data, key.Size);
    return StatusOf(error, MDB_KEYEXIST, BtrStatusDuplicateKey);
}

int16_t Remove(MDB_txn *writer, unsigned tree, Bytes key)
{
    MDB_val where = ToVal(key);
    const int error = mdb_del(writer, tree, &where, nullptr);
    return StatusOf(error, MDB_NOTFOUND, BtrStatusKeyNotFound);
}

} // namespace wbtrv
