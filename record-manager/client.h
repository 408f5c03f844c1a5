// Who calls: a client is a thread, with its position blocks, its locks and its transaction.
//
// What holds between calls (BrokenInvariant checks it):
//  1. A client store's Snapshot is reset: no call leaves one open, unless the client Holds what it sees.
//  2. Pending is set only inside a transaction that has changed something, or while loading; the gate is
//     then held.
//  3. A client file is Touched only while Pending is set; its Counters are then no older than the stored.
//  4. Every lock in a position block's list, and every one in Implicit, is counted once in Held of its file.
//  5. WriteCursors of a file are set only while Pending of its store is, and Cursors tells that some are.
//  6. Opens of stores and files, and LoadingOpens, are the numbers of their position blocks.
//  7. A client store has a description of its own exactly as long as records or whole files are locked.
//  8. A client that Holds has neither a transaction nor pending changes.
#pragma once

#include "record-manager/limits.h"
#include "record-manager/locks.h"
#include "record-manager/store.h"

namespace wbtrv {

struct Client;
struct ClientFile;

// A file made while changes are pending; making a file is not undone with them.
struct PendingCreate {
    PendingCreate *Next;
    uint32_t Replaced; // file number; nobody may open it until it is gone
    Definition Layout;
    char Name[BtrPathSize + 1];
};

// What was read of a view that others may write over.
struct Keeping {
    uint8_t *Memory;
    size_t Size;
};

// A client in a directory.
struct ClientStore {
    ClientStore *Next;
    Client *Owner;
    Store *Books;
    ClientFile *Files;
    View *Snapshot;
    Writer *Pending; // set: the changes that are not yet committed
    int LockFd;      // below 0 as long as no record and no whole file is locked
    int16_t Broken;  // status that ended the pending changes; they can only be aborted
    unsigned Opens;  // position blocks
    unsigned LoadingOpens;
    unsigned LoadedChanges; // of trees, since the last commit while loading
    PendingCreate *Created; // in this order
    Keeping Kept;
    char Directory[BtrPathSize + 1]; // where it was found last
};

struct HeldLock {
    uint32_t Record;
    bool InTransaction; // taken there, and so ending with it
};

struct LockList {
    HeldLock *Locks;
    size_t Count;
    size_t Capacity;
};

// A client in a file.
struct ClientFile {
    ClientFile *Next;
    ClientStore *Home;
    File *Of;
    unsigned Opens;
    bool OpenedAlone; // exclusively
    bool Whole;       // locked as a whole by the exclusive transaction
    bool Touched;
    bool Cursors; // some of WriteCursors
    Counters Now;
    uint64_t FirstSequence; // the last one before the pending changes
    uint32_t FirstRecord;   // the last one before the pending changes
    RecordCounts Held;
    RecordCounts Implicit; // of Held, what ends with the transaction and is in no position block's list
    Cursor *WriteCursors[1 + BtrMaxKeys]; // as File::Trees
};

enum class Physical : uint8_t {
    None, // no record was touched yet
    Here,
    Gone,  // the record was deleted; its neighbours can still be stepped to
    Behind // it was never there, since its insertion was undone: the place just behind Record
};

inline constexpr int8_t noLogicalKey = -1;
inline constexpr int8_t mixedLogicalKey = -2; // changed under another key than it was read by
inline constexpr size_t maxPlace = maxKeyLength + 6 + 2;

// A position block in use.
struct Handle {
    uint64_t Check;
    uint32_t Index;
    int8_t Mode;
    ClientFile *In;
    Cursor **Cursors;  // as File::Trees
    bool AtPlace;      // the logical key's, if it still stands, is on the entry of Place
    uint32_t AtRecord; // and the records' on this one

    Physical State;
    bool KeyOnly; // the record itself was not read, so it cannot be changed
    uint32_t Record;
    uint64_t Version;

    int8_t LogicalKey;
    size_t PlaceLength;
    uint8_t Place[maxPlace]; // the index entry last touched, or one that would lie there

    HeldLock Single; // Record 0: none
    LockList Multiple;
};

enum class TransactionKind : uint8_t { None, Exclusive, Concurrent };
enum class GroupState : uint8_t { None, Between, Inside, Lost }; // of the transactions of a group
enum class LockMode : uint8_t { None, Single, Multiple };

// What a bias asks for.
struct LockRequest {
    LockMode Mode;
    bool Biased;
    bool Waits; // and so may wait for itself
    unsigned Wait_ms;
};

struct Client {
    Client *Next;
    Client **Link;
    ClientStore *Stores;
    Handle **Handles;
    size_t HandleCount;
    TransactionKind Transaction; // a group is one transaction to everything but its own steps
    GroupState Group;
    LockRequest Inherited; // by unbiased reads in a concurrent transaction
    bool NoRetry;
    ClientStore *Changed; // where the transaction has changed something
    int16_t Failed;       // status of an end that failed; the transaction can only be aborted
    bool Holds;           // sees each directory as it was at its first use
    unsigned Process;     // which of the processes that forked this one it belongs to
};

// The handle of a position block, or null if it is none of this client's.
Handle *FindHandle(const Client *client, const void *positionBlock);

// A new handle whose position block is filled; null for lack of memory.
Handle *AddHandle(Client *client, ClientFile *file, void *positionBlock);
void RemoveHandle(Client *client, Handle *handle);

// The client's part of the books, opened or found. It ends with the call that leaves it no open files.
int16_t AcquireClientStore(Client *client, const char *directory, bool create, bool readOnly,
                           ClientStore **out);
void EndClientStore(ClientStore *store);
// Gives back the descriptions through which nothing is locked any more, and leaves the directories where
// nothing is open. Every call ends with it.
void ReleaseIdle(Client *client);
// Makes sure of a description for locks. 0 or 86.
int16_t NeedLockDescription(ClientStore *store);

// Forgets a file that the client has neither open nor locked nor changed.
void ReleaseClientFile(ClientFile *file);

// Where to read: the pending changes, or a fresh snapshot until EndView, or the one that the client holds.
int16_t BeginView(ClientStore *store, View **view);
void EndView(ClientStore *store);
// Whether what was read in the view is of one state.
inline bool IsStillWhole(const ClientStore &store, const View &view)
{
    return !store.Books->Unseen || store.Books->Do->IsStillWhole(view);
}
// Times that a view is read anew when writers have overtaken it.
inline constexpr unsigned mostViews = 100;
// Reads in a view, and anew where that did not stay whole. 80 where it never did, or is held.
template <typename Read> int16_t ReadView(ClientStore *store, Read read)
{
    for (unsigned attempt = 0; attempt < mostViews; ++attempt) {
        View *view = nullptr;
        int16_t status = BeginView(store, &view);
        if (status != BtrStatusOk) return status;
        status = read(view);
        const bool isWhole = IsStillWhole(*store, *view);
        EndView(store);
        if (isWhole) return status;
    }
    return BtrStatusConflict;
}
// Moves both into the client's own memory, until the next time. False for lack of it.
bool Keep(ClientStore *store, Bytes *first, Bytes *second);
// The cursor on one of the file's trees in the pending changes.
int16_t UseWriteCursor(ClientFile *file, size_t tree, Cursor **cursor);

// Locks a record for a position block or a pending change, or counts one more holder.
LockResult HoldRecord(ClientFile *file, uint32_t record, const LockRequest &request);
LockResult HoldRecordAtOnce(ClientFile *file, uint32_t record);
void DropRecord(ClientFile *file, uint32_t record);

// In an exclusive transaction the first use of a file locks all of it. `changes`: a change comes next, for
// which the gate may be entered with it.
int16_t LockWholeFile(Handle *handle, const LockRequest &request, bool changes);
void UnlockWholeFile(ClientFile *file);

// Notes a lock that HoldRecord has granted; releases the single lock it replaces. 93 when single and multiple
// locks would be mixed (ask first), 87 for lack of memory.
int16_t CheckLockMode(const Handle *handle, LockMode mode);
int16_t NoteLock(Handle *handle, LockMode mode, uint32_t record);
void ReleaseSingle(Handle *handle);
bool ReleaseMultiple(Handle *handle, uint32_t record);
void ReleaseAllMultiple(Handle *handle);
// Makes room for one more, so that the next AppendLock succeeds. 0 or 87.
int16_t ReserveLock(LockList *list);
bool AppendLock(LockList *list, HeldLock lock);

// The number of the first of the invariants above that does not hold; 0 when all do.
unsigned BrokenInvariant(const Client &client);

} // namespace wbtrv
