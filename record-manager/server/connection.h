// Books in a schema of a PostgreSQL server, and a connection to them.
//
// Its sections follow its sources, of which each calls only those above it here.
//
// A client has a Store and a connection of its own to each directory's schema, which holds its locks and its
// transaction. The schema:
//
//   head       one row: mark and form of the schema, the highest file number, and how often something has
//              changed. Its row lock is the gate before the one writer.
//   files      number, name, definition as create gave it, counters
//   groups     file, tree, how many values a key with duplicates has
//   records    file, record number, stamps and record
//   entries    file, tree, ordered key, record number
//   sessions   the number of each connection's last transaction, from which a commit is told whose answer
//              was lost
//
// Whatever changes a file changes its counters, and the head's with them, so rows that were read are still
// right as long as the counters of their file are the same, and all of them as long as the head's is.
#pragma once

#include "record-manager/server_part.h"
#include "record-manager/store.h"

#include <cstddef>
#include <cstdint>
#include <libpq-fe.h>

namespace wbtrv {

inline constexpr char schemaMark[] = "WBTRVBKS";
inline constexpr int64_t schemaForm = 2;

// ---- process.cpp ----

extern const Limits *serverLimits;
int64_t Now_us();
// Writes a line about a directory to standard error; the same line not twice within seconds.
void Report(const char *directory, const char *text);

// ---- service_file.cpp ----

inline constexpr size_t connectionSize = 2048;
inline constexpr size_t schemaSize = 64;

// What books.server tells.
struct ServiceFile {
    char Connection[connectionSize]; // a connection string, without a password
    char Schema[schemaSize];
};

// Returns 0; 94 the file cannot be read, or others can write it; 30 it is not what it should be. The reason
// goes to standard error.
int16_t ReadServiceFile(int directoryFd, const char *directory, ServiceFile *service);

// ---- statements.cpp ----

// Each is prepared on a connection when it is first used.
enum class Statement : uint8_t {
    Begin,
    BeginReading,
    Commit,
    Rollback,
    BeginSnapshot,
    Savepoint,
    RollbackToSavepoint,
    SetUpSession,
    ReadHead,
    SetTimeout,
    SetAsynchronous,
    ReadChanges,
    ReadStates,
    ReadFile,
    ReadFileByName,
    ReadFileCounters,
    ReadGroups,
    ReadLastFile,
    FirstEntries,
    LastEntries,
    EntriesFrom,
    EntriesBefore,
    FirstRecords,
    LastRecords,
    RecordsFrom,
    RecordsBefore,
    OneEntry,
    OneRecord,
    AddEntry,
    AddUnique,
    AddToGroup,
    RemoveUnique,
    RemoveFromGroup,
    PutRecord,
    PutRecords,
    AddUniques,
    AddToGroups,
    ReplaceRecord,
    RemoveRecord,
    WriteCounters,
    WriteLastFile,
    CountChange,
    RemoveFile,
    RemoveGroups,
    RemoveEntries,
    RemoveRecords,
    MakeFile,
    MakeGroup,
    OpenSession,
    CloseSession,
    NoteTransaction,
    FindTransaction,
    Touch,
    // advisory.cpp
    LockRecord,
    AwaitRecord,
    UnlockRecord,
    LockFile,
    UnlockFile,
    LockShared,
    LockAlone,
    UnlockShared,
    UnlockAlone,
    EnterGate,
    TryGate,
    IsMarkedExclusive,
    UnlockAll,
    Count
};

// The statement's text, in which every @ stands for the schema's quoted name and a dot.
const char *TextOf(Statement statement);
// The statements that make a schema's tables, one after the other; null behind the last.
const char *SetupText(size_t index);
// Writes a text with the schema's quoted name and its dot for each @; false when there is no room for it.
bool WriteStatement(const char *text, const char *quotedSchema, char *out, size_t room);

// ---- values.cpp ----

inline constexpr size_t mostParameters = 8;

struct Parameters {
    int Count;
    const char *Data[mostParameters];
    int Sizes[mostParameters];
    uint8_t Numbers[mostParameters][8];
};
void AddNumber(Parameters *parameters, int64_t number);
void AddBytes(Parameters *parameters, const void *data, size_t size);

int64_t NumberAt(const PGresult *rows, int row, int column);
Bytes BytesAt(const PGresult *rows, int row, int column);

// ---- what a connection is ----

// Coming: rows that nobody waits for yet, of Connection's Coming. Change: likewise, whether files have
// changed.
enum class Answer : uint8_t { Ignored, Needed, Kept, Coming, Change };

// Something sent whose answer is still to come.
struct Awaited {
    enum class Kind : uint8_t { Prepare, Statement, Sync } What;
    Statement Which;
    Answer How;
};

inline constexpr size_t mostKept = 6;
inline constexpr size_t mostRuns = 48;
inline constexpr size_t maxBound = maxKeyLength + 16;

// Rows of a tree that lie side by side, as they were read. Those of a run that goes forward begin at its
// bound, or at the tree's beginning where it has none; those of the other kind are in falling order and begin
// below it, or at the tree's end.
struct Run {
    uint64_t Id; // 0: free
    uint32_t File;
    uint32_t Tree;
    bool Forward;
    bool Bounded;
    bool Whole;     // it goes to the end of its direction
    int Count;      // of one that is asked for, as many as may come
    PGresult *Rows; // key, record, stored record
    uint64_t Used;
    size_t BoundSize;
    uint8_t Bound[maxBound];
};

// What is known of an index as the files' states tell of it, with what this client has added since: its last
// entry, or of a key with duplicates the beginning of a group that has entries.
struct HighestKey {
    uint32_t File; // 0: free
    uint32_t Tree;
    bool Exact; // otherwise nothing lies behind it
    size_t Size;
    uint8_t Key[maxBound];
    uint32_t Record;
};
inline constexpr size_t mostHighest = 64;

// The counters of a file as they were read, or as this client has written them since.
struct FileState {
    uint32_t File;
    int64_t LastRecord;
    int64_t Records;
    int64_t Sequence; // -1: not known, since what was written was undone
    size_t CountsSize;
    uint8_t Counts[BtrMaxKeys * sizeof(uint32_t)];
};

struct HeldOpen {
    HeldOpen *Next;
    uint32_t File;
    bool Alone;
};

struct LockedRecord {
    uint32_t File;
    uint32_t Record;
};

struct Connection {
    Store *Of;
    unsigned Users;    // 0: idle
    PGconn *Real;      // null: none, or lost
    int64_t LockSpace; // from the schema, so that its locks are not another's

    // What was sent and not yet answered, in this order.
    Awaited *Queue;
    size_t QueueFirst;
    size_t QueueCount;
    size_t QueueSize;
    bool Prepared[static_cast<size_t>(Statement::Count)];
    int16_t Failure; // the first since the last exchange
    size_t KeptCount;
    PGresult *Kept[mostKept];

    // What is held on the server.
    HeldOpen *Opens;
    bool UsageShared;
    bool UsageAlone;
    bool Loading;
    LockedRecord *Locked;
    size_t LockedCount;
    size_t LockedSize;
    uint32_t *Whole; // files
    size_t WholeCount;
    size_t WholeSize;
    bool LostLocks;
    bool Owes;     // releases are on their way, whose answers the end of the call waits for
    bool Leaks;    // a release was not carried out
    bool Unsynced; // something was sent since the last sync

    // The transaction.
    bool InTransaction;
    bool Holding; // of a snapshot
    uint32_t LastFile;
    bool HasSession;
    uint8_t Session[16];
    int64_t Transactions;
    Writer *Writing;

    // What was read.
    bool HasStates;
    FileState *States; // of all files, in the order of their numbers
    size_t StateCount;
    size_t StateRoom;
    bool StatesAreOld;   // something has changed since
    int64_t Changes;     // the head's count of changes with which the states were read
    bool AskedForChange; // whether that is still the same is asked, not for states
    int64_t Checked_us;
    int64_t Asked_us;  // when the answer was asked for that is on its way
    bool ChangeComing; // likewise, but nobody waits for it yet
    bool AheadIsOld;   // a transaction has begun since that was asked for
    int64_t Ahead_us;  // when it was
    Run Runs[mostRuns];
    uint64_t LastRun;
    uint64_t Clock;
    bool IsComing;       // a run that is fetched while the one before it is served
    Run Coming;          // that run, without rows; file 0: it is not wanted any more
    PGresult *FoundFile; // number, name, definition
    bool FoundFileHeld;  // read after its open lock was granted
    bool Doubts;         // a file was not the one that was known
    HighestKey Highest[mostHighest];
    size_t LastHighest;
};

struct View {
    Store *Of;
    Connection *By;
    bool Writing;
    bool Open;
    bool Held;
    uint64_t LastRun; // holding the entry that was given last, and its record; 0: Own does
    int LastRow;
    uint32_t LastFile;
    uint32_t LastRecord; // 0: none
    PGresult *Own;       // in a writer: rows that were read last
};

// Elements of an array as the server takes it; the head is filled in when it is sent.
struct ElementArray {
    uint8_t *Bytes;
    size_t Size;
    size_t Room;
};

// Rows that wait to be sent into a tree: record numbers, and keys or records.
struct Batch {
    uint32_t File;
    uint32_t Tree;
    size_t GroupSize; // of a key with duplicates, what entries of a group have in common; 0: unique
    int Count;
    ElementArray Numbers;
    ElementArray Texts;
};
inline constexpr size_t mostBatches = 64;
inline constexpr size_t mostTouched = 64;

struct Writer {
    View Seen;
    Cursor *Used;
    int16_t Failed;  // nothing more can come of it
    bool Unfinished; // Record below waits to be sent
    bool Appends;
    uint32_t File;
    uint32_t Record;
    uint8_t *Place;
    size_t PlaceSize;
    size_t PlaceRoom;
    uint32_t Touched[mostTouched]; // files; more are all
    size_t TouchedCount;
    bool WritesCounters;
    Batch *Batches; // null but while loading
    unsigned BatchesSent;
};

// What a store is here: the schema of a directory, for one client.
struct Environment {
    ServiceFile Service;
    char Directory[BtrPathSize + 1];
    char QuotedSchema[schemaSize + 4];
    int64_t Written_ns; // when the service file was
    const void *Client; // whose it is, or was last
    Connection *Link;
    bool Create;
};

inline Connection *ConnectionOf(Store *store) { return store->Own->Link; }

// ---- runs.cpp ----

struct Entry {
    const Run *In;
    int Row;
};

// Looks for the entry in what was read. False: it has to be asked for. `*found` without a run: there is none.
bool FindInRuns(Connection *connection, uint32_t file, uint32_t tree, Bytes bound, Side side, Entry *found);
// The state of a file; null when it is not known.
FileState *FindState(Connection *connection, uint32_t file);
// A row of number, last record, records, sequence and counts; behind them the head's count of changes.
void StateOfRow(const PGresult *rows, int row, FileState *state);
// Whether what was read may be served.
bool AreFresh(const Connection *connection);
// Takes the answer to SendStates; rows of files that have changed are forgotten. False: something has
// changed, and which files did is what SendStates asks for next.
bool TakeStates(Connection *connection, PGresult *answer);
// Takes the answer to SendAhead; null: it did not come.
void TakeAhead(Connection *connection, PGresult *answer);
HighestKey *FindHighest(Connection *connection, uint32_t file, uint32_t tree);
void SetHighest(Connection *connection, uint32_t file, uint32_t tree, Bytes key, uint32_t record);
// Forgets what was read of a file.
void ForgetRuns(Connection *connection, uint32_t file);
void ForgetHighest(Connection *connection, uint32_t file);
void ForgetAllRuns(Connection *connection);
// Keeps rows, in place of the run that was not used for the longest time; `asked` tells what they are.
const Run *KeepRun(Connection *connection, const Run &asked, PGresult *rows);
// Takes the rows of the run that was coming; null: it did not come.
void TakeComing(Connection *connection, PGresult *rows);
const Run *FindRun(Connection *connection, uint64_t id);

// ---- pipeline.cpp ----

// Puts a statement behind what is already on its way. 0 or 2, 87; a failure is also in Failure.
int16_t Send(Connection *connection, Statement statement, const Parameters &parameters, Answer how);
// Sends all of it and waits for the answers, `wait_ms` longer than for a quick one. Returns the first failure
// since the last exchange. Results of kept statements are in Kept, in their order, until the next exchange.
int16_t Exchange(Connection *connection, unsigned wait_ms);
// Sends all of it without waiting.
void Post(Connection *connection);
// Asks for a run that nobody waits for yet. One that is still coming stays the only one.
void SendComing(Connection *connection, Statement statement, const Parameters &parameters, const Run &asked);
// Waits for the run and the answer that are coming, which are taken then. 0, or 2 when the connection was
// lost.
int16_t AwaitComing(Connection *connection);
// Puts a release behind what is on its way, whatever becomes of that.
void SendRelease(Connection *connection, Statement statement, const Parameters &parameters);
// Waits until what was released is free for others.
void Repay(Connection *connection);
// Takes over a kept result.
PGresult *TakeKept(Connection *connection, size_t index);
// Asks whether something has changed, or where that is known which files have; the answer is kept, for
// TakeStates.
void SendStates(Connection *connection);
// Asks whether something has changed, and nobody waits for it yet.
void SendAhead(Connection *connection);

// The connection is no good any more: says so, and forgets what hung on it. Returns what failed first, or 2.
int16_t Lose(Connection *connection);
// Forgets what hung on a connection; the client's opens are kept for the next one.
void Drop(Connection *connection);
// Writes a failure of the server and the status that it becomes to standard error.
void ReportFailure(const Connection *connection, const char *message, int16_t status);
uint64_t CountRoundTrips();

// ---- schema.cpp ----

// Makes the session as this part needs it, and reads whose the schema is. Returns 0, 30, 12, 2.
int16_t ReadHead(Connection *connection);
// Makes the tables of the schema, which must not be there. Returns 0, 94, 30, 2, 18.
int16_t MakeSchema(Connection *connection);

// ---- advisory.cpp: what only this server has ----

enum class AdvisoryKind : uint64_t { File = 1, WholeFile, Record, Open, Usage, Exclusive };
int64_t KeyOf(const Connection *connection, AdvisoryKind kind, uint32_t file, uint32_t record);
// A statement of one key, or of two; a second one of 0 is none.
int16_t SendLock(Connection *connection, Statement statement, int64_t first, int64_t second, Answer how);
void Release(Connection *connection, Statement statement, int64_t first, int64_t second);
// What an exchange's first kept answer says; -1 when there is none.
int64_t FirstNumber(const Connection *connection);
// In a transaction an exchange's failure is the writer's.
int16_t ExchangeHere(Connection *connection, unsigned wait_ms);
// One lock of those that clients hold as long as they have something open.
LockResult TryHold(Connection *connection, AdvisoryKind kind, uint32_t file, bool alone);
void ReleaseHeld(Connection *connection, AdvisoryKind kind, uint32_t file, bool alone);
// After connecting anew: takes what the client still has open. 0 or 2.
int16_t RestoreOpens(Connection *connection);
// Asks for the gate, whose `exclusive` holder is seen by others as such. Who does not wait is refused at
// once.
int16_t SendGateLock(Connection *connection, bool waits, bool exclusive);
bool IsHolderExclusive(Connection *connection);
// Gives back every file that is locked whole, if what goes before it succeeds.
void SendUnlockFiles(Connection *connection);
bool HoldsAnything(const Connection *connection);

// ---- connection.cpp ----

// Connects, as a connection string tells; null for lack of memory. `reads`: any of several hosts will do.
PGconn *OpenServer(const ServiceFile &service, bool reads);
// Makes sure of a connection: connects, and takes again what the client has open. 0, 20, 94, 30, 12 or 2.
int16_t Connect(Connection *connection);
// Frees everything, and says good-bye to the server.
void EndConnection(Connection *connection);

} // namespace wbtrv
