// The seam between the record manager and the ordered stores below it: the books of one directory, their
// files, and reading and writing them in transactions. It knows bytes and files; records' currency and
// statuses of calls are the business of those above. What is behind it stands in folders of their own (lmdb/,
// server/), whose headers nobody else includes; StoreFunctions is what each of them gives.
//
// A file has trees of entries, ordered by the bytes of their keys: its records under their numbers, and an
// index for each key. A view is a state of all of them; a writer, of which a directory has one at a time,
// makes the next one.
#pragma once

#include "record-manager/definition.h"
#include "record-manager/gate.h"
#include "record-manager/shared_locks.h"

#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace wbtrv {

// The store's own.
struct Environment;
struct View;
struct Writer;
struct Cursor;

struct Bytes {
    const uint8_t *Data;
    size_t Size;
};

// What changes in a file beside its records. Every write transaction that touches the file stores it anew.
struct Counters {
    uint32_t LastRecord; // highest record number given so far; they are never reused
    uint32_t Records;
    uint64_t Sequence; // of changes; stamps records and orders duplicates
    uint32_t UniqueValues[BtrMaxKeys];
};

// A file that is or was open in this process. `Uses` and the list are guarded by the store's mutex, the rest
// does not change.
struct File {
    File *Next;
    uint32_t Number;
    unsigned Uses;
    const struct StoreFunctions *Do;
    unsigned Trees[1 + BtrMaxKeys]; // the store's numbers of recordTree, and of IndexTree of each key
    char Name[BtrPathSize + 1];
    Definition Layout;
};

// The tree of the records, whose keys are their numbers as the machine holds them, and those of the keys.
inline constexpr size_t recordTree = 0;
constexpr size_t IndexTree(size_t key) { return key + 1; }

// The books of a directory, once per process, or on a server once per client.
struct Store {
    const struct StoreFunctions *Do;
    Store *Next;
    Environment *Own;
    Gate *WriteGate; // null when ReadOnly
    int DirectoryFd;
    int PresenceFd; // books.mdb, holding the lock that tells others of us
    uint64_t Device;
    uint64_t Inode;
    uint64_t LockInode;
    unsigned Users; // clients; guarded by the registry's mutex
    bool ReadOnly;
    bool Unseen;           // nor may we write where readers are noted, so writers do not know of us
    pthread_mutex_t Mutex; // Files, and every opening and closing of a tree
    File *Files;
    SharedLocks Shared;
};

struct StoreFunctions;

// Names of the files of which one stands in a directory: its books, or where on a server they are.
inline constexpr char booksName[] = "books.mdb";
inline constexpr char serverName[] = "books.server";

// Gives the books of `directory`, opened if this process has not yet done so, for one more client.
// With `create` they are made if there are none. Where they may not be written they can be read; `readOnly`
// asks for no more.
// Returns 0; 12 no directory or no books; 94 no rights or a network file system; 30 not ours, cut off, of a
// later form, or both kinds of books in one place; 2 the lock file of running users is gone; 20 no server;
// 18, 86, 87, 85.
// A store on a server is the `client`'s alone.
int16_t AcquireStore(const char *directory, bool create, bool readOnly, const void *client, Store **store);

// The same of the store in the process, whose books are in the directory itself.
int16_t AcquireBooks(const char *directory, bool create, const StoreFunctions *functions, Store **store);
extern const StoreFunctions booksFunctions;
// In a forked child: forgets every store without touching what belongs to the parent.
void ForgetStores();
void LockRegistry();
void UnlockRegistry();
void BeforeFork();
void AfterForkInParent();

enum class Side : uint8_t { First, Last, AtOrAfter, Before };

// Who waits for a record, and how long. `Waits`: it may wait for itself by way of others, and is told so.
struct LockWait {
    unsigned Wait_ms;
    bool Waits;
    bool (*Holds)(const void *who, uint32_t file, uint32_t record); // whether the client holds a record
    const void *Who;
};

// What a store does. Everything that reads returns 2 where the books were damaged, beside what it names; a
// store on a server returns 2 also when the connection was lost, 20 when there is none, and 94 where rights
// are missing. Members that may be null say so.
struct StoreFunctions {
    // One client less. Books that nobody uses stay open for a while.
    void (*ReleaseStore)(Store *store);

    // Gives what a client's locks hang on into `*fd`, where a fork finds it, and takes it back without locks.
    // 0 or 86.
    int16_t (*TakeLockDescription)(Store *store, int *fd);
    void (*GiveLockDescription)(Store *store, int *fd);
    // Locks a record, or a file with all of its records. RecordBusy and FileBusy tell what is in the way.
    LockResult (*LockRecord)(Store *store, int fd, uint32_t file, uint32_t record, const LockWait &wait);
    // `changes`: the gate is entered next, by an exclusive transaction, which a store may do at once.
    LockResult (*LockFile)(Store *store, int fd, uint32_t file, unsigned wait_ms, bool changes);
    // Gives back records from `first` on; with those up to the end the lock of the whole file.
    void (*Unlock)(Store *store, int fd, uint32_t file, int64_t first, int64_t count);
    // May be null. Whether the calling client's locks went with its connection since this was last asked.
    bool (*HasLostLocks)(Store *store);

    // Which files are open and how (shared_locks.h).
    LockResult (*HoldOpen)(Store *store, uint32_t file, bool alone, bool holds);
    void (*DropOpen)(Store *store, uint32_t file);
    LockResult (*HoldUsage)(Store *store, bool loading, bool uses, bool loads);
    void (*DropUsage)(Store *store, bool uses, bool loads, bool wasLoading);

    // Waits up to `wait_ms` to be the one writer of the directory, in the order of the calls. `exclusive` is
    // told to who waits in vain. Returns 0; 84, or 85 when the writer is in an exclusive transaction; 78; 2.
    int16_t (*EnterGate)(Store *store, unsigned wait_ms, bool exclusive);
    void (*LeaveGate)(Store *store);

    // Finds `name` among the files of the view for one more use. Returns 0, 12, 30 (also when the books were
    // cut off), 86.
    int16_t (*AcquireFile)(View *view, const char *name, File **file);
    void (*ReleaseFile)(Store *store, File *file);
    // Makes a file in place of one of the same name, which nobody may have open. Returns 0, 18, 86.
    int16_t (*CreateFile)(Writer *writer, const char *name, const Definition &definition);
    // After a transaction that made files was undone: takes the trees from the files that are no more, and,
    // when the files were made anew in another one, gives them back. `last`: the highest number of a file
    // that stayed.
    void (*ForgetTrees)(Store *store, uint32_t last);
    int16_t (*RenewTrees)(Writer *writer, uint32_t last);
    // The highest file number given so far.
    int16_t (*ReadLastFile)(View *view, uint32_t *number);
    // The number of a file of this name, 0 if there is none.
    int16_t (*FindFileNumber)(View *view, const char *name, uint32_t *number);

    // A snapshot for reading, made once per client and store, and renewed and given back by each call: a
    // snapshot that idles would keep the store from reusing space. *snapshot null: made, otherwise renewed.
    int16_t (*BeginSnapshot)(Store *store, View **snapshot);
    void (*ResetSnapshot)(View *snapshot);
    void (*EndSnapshot)(View *snapshot);
    // May be null. The snapshot that was just begun stays as it is until it is reset, over many calls.
    int16_t (*HoldSnapshot)(View *snapshot);
    bool (*IsOpen)(const View &snapshot); // made or renewed, and not given back since
    // Asked where the store is Unseen. Whether what was read from the view is of one state; others who have
    // committed twice meanwhile end that.
    bool (*IsStillWhole)(const View &view);
    // May be null. A transaction begins: nothing that was read before it is served from memory.
    void (*ForgetReads)(Store *store);
    // May be null. A transaction ends elsewhere: asks, without waiting, whether what was read here lately is
    // still right, since the next one begins by reading it.
    void (*AskAhead)(Store *store);

    // The write transaction of the directory. The caller holds the gate. Every file there is can be used in
    // it.
    int16_t (*BeginWriter)(Store *store, Writer **writer);
    // Durable when this returns, except while loading. On failure everything is undone. The writer is gone,
    // and its cursors with it.
    int16_t (*CommitWriter)(Writer *writer);
    void (*AbortWriter)(Writer *writer);
    // What the writer has made so far.
    View *(*ViewOf)(Writer *writer);
    // Commits between this and its end are not awaited by the disk; the end awaits all of them.
    int16_t (*SetLoading)(Store *store, bool loading);

    int16_t (*ReadCounters)(View *view, const File &file, Counters *counters);
    int16_t (*WriteCounters)(Writer *writer, const File &file, const Counters &counters);
    // May be null. The store itself keeps the UniqueValues of keys with duplicates, which ReadCounters leaves
    // out and this fills in; nobody else needs to look for an entry's neighbours then.
    int16_t (*CountGroups)(View *view, const File &file, Counters *counters);

    // A cursor on one of a file's trees in what the writer has made.
    int16_t (*OpenWriteCursor)(Writer *writer, const File &file, size_t tree, Cursor **cursor);
    // A cursor that outlives the snapshots it is used in, made at its first use. `*stands` tells that it
    // still stands where it stood, since nothing was committed since. 87 for lack of memory.
    int16_t (*UseCursor)(View *snapshot, const File &file, size_t tree, Cursor **cursor, bool *stands);
    void (*CloseCursor)(Cursor *cursor);

    // The first or last entry, or the one nearest to `bound` on one side of it. Keys and values stay where
    // they are until the transaction's next change or end. Returns 0, 9 none, or a failure.
    int16_t (*Seek)(View *view, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value);
    // The entry beside the one the cursor is on. In a writer only right after Seek or Add.
    int16_t (*SeekNext)(View *view, Cursor *cursor, Bytes *key, Bytes *value);
    int16_t (*SeekPrevious)(View *view, Cursor *cursor, Bytes *key, Bytes *value);
    // The entry of the key in a snapshot, and the cursor on it. Fast when it lies near. Returns 0, 4 none, or
    // a failure.
    int16_t (*SeekExactly)(View *snapshot, Cursor *cursor, Bytes key, Bytes *value);
    // Returns 0, 4 none, or a failure.
    int16_t (*Get)(View *view, const File &file, size_t tree, Bytes key, Bytes *value);

    // Writes an entry of `size` bytes, whose place to be filled is given back; it is filled before the next
    // call. `append`: the key lies behind all others.
    int16_t (*Reserve)(Writer *writer, const File &file, size_t tree, Bytes key, size_t size, bool append,
                       uint8_t **place);
    // Adds an entry; 5 when the key exists, and nothing is changed. The cursor then stands on it.
    int16_t (*Add)(Cursor *cursor, Bytes key, Bytes value);
    // Returns 0, 4 none, or a failure.
    int16_t (*Remove)(Writer *writer, const File &file, size_t tree, Bytes key);
};

} // namespace wbtrv
