// What the sources of this store share above a connection. Its sections follow these sources, of which each
// calls only those above it here.
#pragma once

#include "record-manager/server/connection.h"

#include <initializer_list>

namespace wbtrv {

// ---- batches.cpp ----

// Exchanges in a writer: a failure is the writer's for good.
int16_t ExchangeIn(Writer *writer, unsigned wait_ms);

// Puts a row among those that are sent together: a record under its number, or the entry of a key.
int16_t AddToBatch(Writer *writer, uint32_t file, uint32_t tree, size_t groupSize, uint32_t record,
                   Bytes text);
// Sends all of them.
int16_t FlushBatches(Writer *writer);
void FreeBatches(Writer *writer);

// ---- asking.cpp ----

// Forgets the rows of a writer's view, which its change has made old.
void ForgetOwn(View *view);
// Sends what still waited for its bytes, or puts it into its batch.
int16_t Settle(Writer *writer);

// Reads while nothing is at stake: a connection that was lost is made anew, once.
// `ask` sends what is wanted.
template <typename Ask> int16_t AskIn(View *view, Ask ask)
{
    if (view->Writing) {
        auto *writer = reinterpret_cast<Writer *>(view);
        int16_t status = Settle(writer);
        if (status == BtrStatusOk) status = FlushBatches(writer);
        if (status == BtrStatusOk) {
            ask();
            status = ExchangeIn(writer, 0);
        }
        return status;
    }
    Connection *connection = view->By;
    if (view->Held && !connection->Holding) return BtrStatusIoError;
    int16_t status = BtrStatusOk;
    for (const bool again : {false, true}) {
        const bool risks = HoldsAnything(connection);
        if (!connection->Holding) status = Connect(connection);
        if (status != BtrStatusOk) return status;
        ask();
        status = Exchange(connection, 0);
        if (status == BtrStatusOk || connection->Real != nullptr || risks || again) break;
    }
    return status;
}

// ---- reading.cpp ----

struct Cursor {
    Connection *By;
    const File *In;
    uint32_t Tree;
    Cursor *Next; // of the writer's
    uint64_t Run;
    int Row;
    int Ahead; // rows that are asked for next
    size_t KeySize;
    uint8_t Key[maxBound]; // of the entry it is on
    alignas(uint32_t) uint8_t Value[4];
};

// Of StoreFunctions: store.h tells what each promises.
int16_t BeginSnapshot(Store *store, View **snapshot);
void ResetSnapshot(View *snapshot);
void EndSnapshot(View *snapshot);
int16_t HoldSnapshot(View *snapshot);
bool IsOpen(const View &snapshot);
void ForgetReads(Store *store);
void AskAhead(Store *store);
int16_t UseCursor(View *snapshot, const File &file, size_t tree, Cursor **cursor, bool *stands);
void CloseCursor(Cursor *cursor);
int16_t Seek(View *view, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value);
int16_t SeekNext(View *view, Cursor *cursor, Bytes *key, Bytes *value);
int16_t SeekPrevious(View *view, Cursor *cursor, Bytes *key, Bytes *value);
int16_t SeekExactly(View *snapshot, Cursor *cursor, Bytes key, Bytes *value);
int16_t Get(View *view, const File &file, size_t tree, Bytes key, Bytes *value);

// ---- writing.cpp ----

// Asks for the gate, and takes it when the answers are there, of which the first is at `kept`. A gate that
// was asked for in vain is given back by a rollback.
int16_t SendGate(Connection *connection, unsigned wait_ms, bool exclusive);
int16_t TakeGate(Connection *connection, size_t kept);
void SendRollback(Connection *connection);
// Of StoreFunctions: store.h tells what each promises.
int16_t EnterGate(Store *store, unsigned wait_ms, bool exclusive);
void LeaveGate(Store *store);
int16_t BeginWriter(Store *store, Writer **writer);
int16_t CommitWriter(Writer *writer);
void AbortWriter(Writer *writer);
View *ViewOf(Writer *writer);
int16_t SetLoading(Store *store, bool loading);
int16_t OpenWriteCursor(Writer *writer, const File &file, size_t tree, Cursor **cursor);
int16_t Reserve(Writer *writer, const File &file, size_t tree, Bytes key, size_t size, bool append,
                uint8_t **place);
int16_t Add(Cursor *cursor, Bytes key, Bytes value);
int16_t Remove(Writer *writer, const File &file, size_t tree, Bytes key);

// ---- files.cpp ----

// Of StoreFunctions: store.h tells what each promises.
int16_t AcquireFile(View *view, const char *name, File **file);
void ReleaseFile(Store *store, File *file);
int16_t CreateFile(Writer *writer, const char *name, const Definition &definition);
void ForgetTrees(Store *store, uint32_t last);
int16_t RenewTrees(Writer *writer, uint32_t last);
int16_t ReadLastFile(View *view, uint32_t *number);
int16_t FindFileNumber(View *view, const char *name, uint32_t *number);
int16_t ReadCounters(View *view, const File &file, Counters *counters);
int16_t WriteCounters(Writer *writer, const File &file, const Counters &counters);
int16_t CountGroups(View *view, const File &file, Counters *counters);

// ---- locking.cpp ----

// Of StoreFunctions: store.h tells what each promises.
int16_t TakeLockDescription(Store *store, int *fd);
void GiveLockDescription(Store *store, int *fd);
LockResult LockRecord(Store *store, int fd, uint32_t file, uint32_t record, const LockWait &wait);
LockResult LockFile(Store *store, int fd, uint32_t file, unsigned wait_ms, bool changes);
void Unlock(Store *store, int fd, uint32_t file, int64_t first, int64_t count);
bool HasLostLocks(Store *store);
LockResult HoldOpen(Store *store, uint32_t file, bool alone, bool holds);
void DropOpen(Store *store, uint32_t file);
LockResult HoldUsage(Store *store, bool loading, bool uses, bool loads);
void DropUsage(Store *store, bool uses, bool loads, bool wasLoading);

// ---- store.cpp ----

// Of ServerPart and StoreFunctions.
int16_t AcquireServerStore(const char *directory, bool create, bool readOnly, const void *client,
                           Store **out);
void ReleaseStore(Store *store);

} // namespace wbtrv
