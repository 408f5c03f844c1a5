// What the sources of this store share. linux/ and windows/ have the halves that differ: on Linux each
// page carries a sum, and whoever reads finds his way through the pages himself; on Windows the store's
// own cursors do, and the map grows with the books.
#pragma once

#include "record-manager/lmdb/books_file.h"
#include "record-manager/lmdb/form.h"
#include "record-manager/lmdb/guarded.h"
#include "record-manager/lmdb/page_order.h"
#include "record-manager/store.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <lmdb.h>

namespace wbtrv {

// The catalogue lies in the store's main tree:
//   "!format"        FormatRecord
//   "n:" NAME        file number, u32
//   NNNNNNNN "c"     counters, 16 bytes and 4 per key
//   NNNNNNNN "d"     definition, as create gave it
//   NNNNNNNN "t"     the tree of its records, which the store itself keeps here
//   NNNNNNNN "iKK"   the tree of an index, KK being the key's place in the definition, in hexadecimal too
// NNNNNNNN is the file number in hexadecimal. So a file's counters, which each commit writes, share a page
// with the root of its tree, which each commit writes anyway.
struct FormatRecord {
    char Mark[8];
    uint32_t Format;
    uint32_t LastFile;
};
inline constexpr char formatKey[] = "!format";
inline constexpr char formatMark[9] = "WBTRVBKS";
inline constexpr uint32_t formatWithoutSums = 1;
inline constexpr uint32_t formatWithSums = 2;

// "0000002at" and the like.
struct CatalogueKey {
    char Text[12];
};
// ---- names.cpp ----
CatalogueKey KeyOf(uint32_t number, char what);
// The name of one of a file's trees.
CatalogueKey KeyOfTree(uint32_t number, size_t tree);

// A state of the books: a snapshot, or what the writer has made of it so far.
struct View {
    Store *Of;
    MDB_txn *Transaction;
    bool Writing;
    bool Open;
    uint64_t Number;   // of the transaction that made the snapshot; the writer's is that of its beginning
    uint64_t LastPage; // what follows is the snapshot's
    TreeHead Free;
    TreeHead Main;
};

inline constexpr unsigned deepest = 32;

// One page on the way from a tree's root to an entry.
struct Step {
    const uint8_t *Page;
    size_t At;
};

// A place in a tree of a snapshot. Without levels it stands nowhere.
struct Place {
    uint64_t Snapshot;
    TreeHead Tree;
    unsigned Levels;
    Step Level[deepest];
};

struct Cursor {
    Place At; // in a snapshot, or in a tree that the writer found Unchanged
    bool Unchanged;
    MDB_cursor *Real; // in the writer
    Writer *By;
    const File *In;
    size_t Tree;
    Cursor *Next; // of the writer's
};

// What of a tree the writer has looked at before the store may use it.
struct LookedAt {
    uint32_t File; // whose tree this is in this transaction
    uint32_t Tree;
    uint64_t During; // which of the writer's transactions this is of; of another one nothing is known
    bool Whole;
    bool Changed;   // by the transaction
    TreeHead Base;  // as the transaction found it
    uint64_t Looks; // since then
    uint64_t Pages; // in the tree now
};

struct Writer {
    View Seen;
    Cursor *Used;
    Cursor *Free; // to be used again
};

// Changing the map while nobody reads in it. On Linux it has its full size from the beginning.
struct Growth {
    pthread_mutex_t Mutex;
    unsigned Reading; // snapshots that are open
    bool Waits;       // somebody waits for their end, and no new ones begin
};

// What belongs to the store below the books of a directory.
struct Environment {
    MDB_env *Real;
    uint8_t *Map;
    size_t PageSize;
    bool Summed;
    unsigned Catalogue;
    std::atomic<uint32_t> *Marks; // by page: the sum it had when it was looked at, and `looked`; 0: never
    size_t MarkCount;
    std::atomic<bool> Dead;    // the store gave up on itself; it works again once it was closed
    std::atomic<View *> Spare; // a snapshot that nobody uses: making one costs more than a short reading
    Growth Growing;

    // Guarded by the gate.
    Writer Writing;
    uint64_t Transactions; // that the writer has begun in this process
    LookedAt *Trees;       // by the store's own number of a tree
    uint32_t KnownFile;    // on Windows: the trees of files up to this number are open
    uint64_t OrderDue;     // number of the transaction that is to look after the order of pages
    SplitLeaves Splits;
    bool TreesDropped; // by the write transaction under way
    int64_t LastReaderCheck_s;
};

inline constexpr uint32_t looked = uint32_t{1} << 31;

// ---- calls.cpp ----

// While a thread writes, the pages that the store writes get their sums; with null no more.
void WriteSums(Environment *environment);
// The map that the store has made last in this thread.
uint8_t *LastMap();
// Whether the file that the store opened last for writing in this thread was refused.
bool WasRefused();

// ---- checking.cpp ----

// What a page that is not as it was written is answered with.
inline constexpr int16_t damaged = BtrStatusIoError;

// The page, or the run of pages, in the map, once it is known to be there as it was written. 0 or 2.
int16_t LookAtPage(const View &view, uint64_t number, const uint8_t **page);
int16_t LookAtRun(const View &view, uint64_t number, size_t size, const uint8_t **page);
// The same of every page of a tree.
int16_t LookAtTree(const View &view, const TreeHead &tree);

// ---- places.cpp ----

int16_t PlaceAt(const View &view, Bytes bound, Side side, Place &place);
int16_t PlaceNext(const View &view, Place &place);
int16_t PlacePrevious(const View &view, Place &place);
// Goes to the first entry not below the key, which is looked for close by first. 4 when it is not this.
int16_t PlaceExactly(const View &view, Bytes key, Place &place);
int16_t EntryAt(const View &view, const Place &place, Bytes *key, Bytes *value);
// What the store may touch when it looks for the key or changes its entry: the pages on the way to it and
// those beside them.
int16_t LookAround(const View &view, const TreeHead &tree, Bytes bound, Side side);
// Goes to the first entry of the leaf before or behind.
int16_t PlaceLeaf(const View &view, bool forward, Place &place);

// An entry of a tree. 4 none.
int16_t Find(const View &view, const TreeHead &tree, Bytes key, Bytes *value);
// Where a file's tree begins. 30 when it has none.
int16_t FindTree(const View &view, uint32_t file, size_t tree, TreeHead *found);
// An entry of the catalogue. 4 none.
int16_t FindInCatalogue(const View &view, const char *name, Bytes *value);

// ---- touching.cpp ----

// Looks at what the store may touch of a tree when it looks for the key or, in the second, changes its entry.
int16_t LookInWriter(Writer *writer, const File &file, size_t tree, Bytes bound, Side side);
int16_t LookToChange(Writer *writer, const File &file, size_t tree, Bytes bound, Side side);
// Where the tree begins, null when the transaction has changed it.
int16_t FindUnchanged(Writer *writer, const File &file, size_t tree, const TreeHead **head);
// After an entry was removed: where leaves were joined, the next one beside them is none of those that were
// looked at.
int16_t LookAfterRemoval(Writer *writer, const File &file, size_t tree);
// Branches and leaves of a tree now.
uint64_t PagesOf(const Writer &writer, unsigned tree);

// ---- catalogue.cpp ----

// How many keys a file has; 4 when there is no such file (any more).
int16_t ReadKeyCount(View *view, uint32_t number, size_t *keys);

// ---- handles.cpp ----

// The store numbers the trees that it has open, and goes through all of them at the beginning and end of each
// transaction. On Linux only the writer has use for them.

// No tree has this number; the store refuses it.
inline constexpr unsigned noTree = UINT32_MAX;
// Opens the trees of a file of `keys` keys.
int16_t OpenTrees(MDB_txn *transaction, uint32_t number, size_t keys, unsigned *trees);
// Opens a file's trees where they are not open. 30 when one is missing.
int16_t NeedTrees(MDB_txn *transaction, File *file);
void CloseTrees(File *file);
inline bool HasTrees(const File &file) { return file.Trees[recordTree] != noTree; }

// ---- reading.cpp ----

// Where the trees of a transaction's snapshot begin; `number` is the snapshot's. 2 when that is not told,
// or no longer.
int16_t ReadHeads(Store *store, MDB_txn *transaction, uint64_t number, View *view);
// Before somebody reads in a file that was just found. Store::Mutex is held. 0; 30 when a tree is missing, or
// a failure.
int16_t OpenTreesToRead(const View &view, File *file);
// As EndSnapshot, but nothing of it is kept for the next one.
void FreeSnapshot(View *snapshot);

// ---- statuses.cpp ----

// The status of a failure of the store or of the system.
int16_t StatusOf(int error);
// The same, with a status of its own for one error.
int16_t StatusOf(int error, int special, int16_t status);

inline MDB_val ToVal(Bytes bytes) { return {bytes.Size, const_cast<uint8_t *>(bytes.Data)}; }

inline MDB_val ToVal(const char *text) { return {std::strlen(text), const_cast<char *>(text)}; }

inline Bytes ToBytes(const MDB_val &val) { return {static_cast<const uint8_t *>(val.mv_data), val.mv_size}; }

inline Bytes ToBytes(const char *text)
{
    return {reinterpret_cast<const uint8_t *>(text), std::strlen(text)};
}

// ---- functions.cpp ----

// What store.h tells of them.
void ReleaseStore(Store *store);
int16_t TakeLockDescription(Store *store, int *fd);
void GiveLockDescription(Store *store, int *fd);
int16_t AcquireFile(View *view, const char *name, File **file);
void ReleaseFile(Store *store, File *file);
int16_t CreateFile(Writer *writer, const char *name, const Definition &definition);
void ForgetTrees(Store *store, uint32_t last);
int16_t RenewTrees(Writer *writer, uint32_t last);
int16_t ReadLastFile(View *view, uint32_t *number);
int16_t FindFileNumber(View *view, const char *name, uint32_t *number);
int16_t BeginSnapshot(Store *store, View **snapshot);
void ResetSnapshot(View *snapshot);
void EndSnapshot(View *snapshot);
int16_t HoldSnapshot(View *snapshot);
bool IsOpen(const View &snapshot);
bool IsStillWhole(const View &view);
int16_t BeginWriter(Store *store, Writer **writer);
int16_t CommitWriter(Writer *writer);
void AbortWriter(Writer *writer);
View *ViewOf(Writer *writer);
int16_t SetLoading(Store *store, bool loading);
int16_t ReadCounters(View *view, const File &file, Counters *counters);
int16_t WriteCounters(Writer *writer, const File &file, const Counters &counters);
int16_t OpenWriteCursor(Writer *writer, const File &file, size_t tree, Cursor **cursor);
int16_t UseCursor(View *snapshot, const File &file, size_t tree, Cursor **cursor, bool *stands);
void CloseCursor(Cursor *cursor);
int16_t Seek(View *view, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value);
int16_t SeekNext(View *view, Cursor *cursor, Bytes *key, Bytes *value);
int16_t SeekPrevious(View *view, Cursor *cursor, Bytes *key, Bytes *value);
int16_t SeekExactly(View *snapshot, Cursor *cursor, Bytes key, Bytes *value);
int16_t Get(View *view, const File &file, size_t tree, Bytes key, Bytes *value);
int16_t Reserve(Writer *writer, const File &file, size_t tree, Bytes key, size_t size, bool append,
                uint8_t **place);
int16_t Add(Cursor *cursor, Bytes key, Bytes value);
int16_t Remove(Writer *writer, const File &file, size_t tree, Bytes key);

// ---- format.cpp ----

struct BooksPath {
    char Text[BtrPathSize + sizeof booksName + 1];
};
BooksPath PathOfBooks(const char *directory);
// Makes the catalogue's head in new books.
int16_t WriteFormat(Store *store);
// Reads the catalogue's head. Books whose creation was cut short hold no file yet: 12.
int16_t CheckFormat(Store *store);

// ---- environment.cpp ----

// Opens the books of a directory, which this process has not opened yet, as AcquireBooks does.
int16_t OpenStore(const char *directory, bool create, const StoreFunctions *functions, Store **out);
void CloseStore(Store *store);
// Whether books that are open can still be used, by what is to be seen of them now.
int16_t CheckKnown(const Store &store, const BooksFacts &found);
// A description of the books' file for a client's locks; below 0 when there is none.
int OpenLockDescription(const Store *store);

// Whether the next write transaction may begin, by what became of the books' files meanwhile; made ready
// for it. 0, or 2.
int16_t PrepareToWrite(Store *store);
// The status of a commit that failed. Only the holder of the gate may ask.
int16_t StatusOfCommit(Store *store, int error);

// ---- trees.cpp ----

// What the writer needs open before it begins. Store::Mutex is held.
int16_t OpenTreesToWrite(Store *store);
// After its transaction was undone: trees that it has opened are closed, and the handles of those that it has
// dropped do not come back with them. Takes Store::Mutex.
void CloseUndoneTrees(Store *store);

// ---- gave_up.cpp ----

// The store gave up on itself, since it could not write the page that makes a transaction final; others
// go on from the transaction before. Makes it do the same, where its form is known.
void GoOn(Environment *environment);

} // namespace wbtrv
